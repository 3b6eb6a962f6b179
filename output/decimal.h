// Doubles as decimal digits, exactly rounded.
#ifndef KIVOM_OUTPUT_DECIMAL_H
#define KIVOM_OUTPUT_DECIMAL_H

#include <cstdint>

// |value| = quarters / 4 * 10^(exponent - 15), where quarters / 4 has 16 or 17 digits before the point (or is 0). The
// last bit stands for all that lies below, too: set where anything does.
struct ScaledReal {
    std::uint64_t quarters;
    int exponent;
};

// False, and nothing scaled, for what is left to the C library: below 1e-40 (but zero), from 1e16 on, and no numbers.
bool ScaleReal(double value, ScaledReal *scaled);

// The first digits of a value, as one whole number that has all of them, and the exponent of the first one.
struct Digits {
    std::uint64_t number;
    int exponent;
};

constexpr std::uint64_t PowerOfTen(int n) {
    return n == 0 ? 1 : 10 * PowerOfTen(n - 1);
}

// quarters / (4 * kUnit), rounded to the nearest, ties to even.
template <std::uint64_t kUnit> std::uint64_t RoundedToUnit(std::uint64_t quarters) {
    constexpr std::uint64_t kQuarters = 4 * kUnit;
    const std::uint64_t whole = quarters / kQuarters;
    const std::uint64_t rest = quarters % kQuarters;
    return whole + (rest + whole % 2 > kQuarters / 2 ? 1 : 0);
}

// The value to n digits, 1 to 16. Zero has the number 0.
template <int n> Digits RoundedToDigits(const ScaledReal &scaled) {
    constexpr std::uint64_t kUnit = PowerOfTen(16 - n);
    const bool longer = scaled.quarters >= 4 * PowerOfTen(16); // 17 digits
    Digits digits{longer ? RoundedToUnit<10 * kUnit>(scaled.quarters) : RoundedToUnit<kUnit>(scaled.quarters),
                  scaled.exponent + (longer ? 1 : 0)};
    if (digits.number == PowerOfTen(n)) { // 99...9 rounded up
        digits.number = PowerOfTen(n - 1);
        ++digits.exponent;
    }
    return digits;
}

#endif
