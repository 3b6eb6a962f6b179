// Random doubles of every class as number fields: what is laid is what the C library's formats give.
//
//     random_fields_test [--count N] [--seed S]
#include "tests/support/dice.h"

#include "output/textout.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

double FromBits(std::uint64_t bits) {
    double value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

std::uint64_t Bits(Dice *dice) {
    return static_cast<std::uint64_t>(static_cast<unsigned>(dice->Any())) << 32 | static_cast<unsigned>(dice->Any());
}

double AnyPattern(Dice *dice) {
    return FromBits(Bits(dice));
}

double Subnormal(Dice *dice) {
    return FromBits(Bits(dice) >> dice->From(12, 63));
}

// Where the digits come from a product, and a little beyond on both sides: 2^-145 to 2^60.
double OfEveryScale(Dice *dice) {
    return FromBits(static_cast<std::uint64_t>(1023 + dice->From(-145, 60)) << 52 | Bits(dice) >> 12);
}

double WholeNumber(Dice *dice) {
    return static_cast<double>(Bits(dice) >> dice->From(0, 63));
}

// Few binary places: many lie just half way between two texts.
double BinaryFraction(Dice *dice) {
    return std::ldexp(static_cast<double>(Bits(dice) >> dice->From(11, 60)), -dice->From(0, 60));
}

// What a deck spells: few decimal digits.
double Spelt(Dice *dice) {
    char text[64];
    std::snprintf(text, sizeof text, "%d.%0*de%d", dice->Below(10), dice->From(1, 9), dice->Below(1000000000),
                  dice->From(-45, 20));
    return std::strtod(text, nullptr);
}

// The neighbours of decimals with 17 digits, the last of which is a 5: half way, but for what a double cannot hold.
double NearHalfWay(Dice *dice) {
    char text[64];
    std::snprintf(text, sizeof text, "%d%06d%09d5e%d", dice->From(1, 9), dice->Below(1000000), dice->Below(1000000000),
                  dice->From(-60, 10));
    const double value = std::strtod(text, nullptr);
    return dice->Chance(0.3) ? std::nextafter(value, dice->Chance(0.5) ? HUGE_VAL : 0) : value;
}

// 99...9 of any length, and its neighbours: rounding it up makes one digit more.
double NearPowerOfTen(Dice *dice) {
    const std::string text = "1e" + std::to_string(dice->From(-45, 20));
    double value = std::strtod(text.c_str(), nullptr);
    for (int i = dice->Below(4); i > 0; --i) {
        value = std::nextafter(value, 0);
    }
    return value * (1 - std::ldexp(1.0, -dice->From(20, 60)));
}

using Class = double (*)(Dice *);
constexpr Class kClasses[] = {AnyPattern,     Subnormal, OfEveryScale, WholeNumber,
                              BinaryFraction, Spelt,     NearHalfWay,  NearPowerOfTen};

template <class Lay> bool IsLaid(const char *format, double value, Lay lay) {
    char wanted[64];
    char laid[64];
    std::snprintf(wanted, sizeof wanted, format, value);
    *lay(laid, value) = '\0';
    if (std::strcmp(wanted, laid) == 0) {
        return true;
    }
    std::printf("%a: wanted \"%s\", laid \"%s\"\n", value, wanted, laid);
    return false;
}

} // namespace

int main(int argc, char **argv) {
    std::uint64_t count = 1000000, seed = 1;
    for (int i = 1; i + 1 < argc; i += 2) {
        const std::string word = argv[i];
        (word == "--count" ? count : seed) = std::strtoull(argv[i + 1], nullptr, 10);
    }
    Dice dice(seed);
    std::uint64_t nFailed = 0;
    for (std::uint64_t i = 0; i < count; ++i) {
        const double size = kClasses[i % (sizeof kClasses / sizeof *kClasses)](&dice);
        const double value = dice.Chance(0.5) ? -size : size;
        const bool good = IsLaid("%24.15e", value, FieldReal24) && IsLaid("%15.7e", value, FieldReal15);
        nFailed += good ? 0 : 1;
    }
    std::printf("%llu doubles, %llu failed\n", static_cast<unsigned long long>(count),
                static_cast<unsigned long long>(nFailed));
    return nFailed == 0 ? 0 : 1;
}
