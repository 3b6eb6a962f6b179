// A double is m * 2^e. Times 10^k, with the k that leaves 16 or 17 digits before the point, it is m * 5^k * 2^(e + k):
// one whole product, shifted. Powers of five up to 5^55 fit 128 bits, so the product is exact, and so is every decision
// on how to round it. That covers what coordinates are; the rest has no table.
#include "output/decimal.h"

#include <cstring>

namespace {

__extension__ using Wide = unsigned __int128;

constexpr int kMostPower = 55; // 5^55 < 2^128 < 5^56
constexpr int kWholeDigits = 16;

// 5^k = (high * 2^64 + low) * 2^-shift, the highest bit of `high` being set.
struct PowerOfFive {
    std::uint64_t high;
    std::uint64_t low;
    int shift;
};

struct PowersOfFive {
    PowerOfFive of[kMostPower + 1];
};

constexpr PowersOfFive MakePowersOfFive() {
    PowersOfFive powers{};
    Wide power = 1;
    for (int k = 0; k <= kMostPower; ++k) {
        Wide top = power;
        int shift = 0;
        for (; (top >> 127) == 0; top <<= 1) {
            ++shift;
        }
        powers.of[k] = {static_cast<std::uint64_t>(top >> 64), static_cast<std::uint64_t>(top), shift};
        power *= 5; // the last product is not used
    }
    return powers;
}

constexpr PowersOfFive kPowersOfFive = MakePowersOfFive();

constexpr int kMantissaBits = 52;
constexpr int kBias = 1023;
constexpr std::uint64_t kTopBit = std::uint64_t{1} << 63;

// The whole number of tens in 2^binary, for every exponent of a double: floor(binary * log10(2)).
int TensIn(int binary) {
    constexpr int kLog = 78913; // log10(2) * 2^18
    return (binary * kLog) >> 18;
}

} // namespace

bool ScaleReal(double value, ScaledReal *scaled) {
    std::uint64_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    bits &= ~kTopBit; // the sign
    if (bits == 0) {
        *scaled = {0, 0};
        return true;
    }
    const int binary = static_cast<int>(bits >> kMantissaBits) - kBias;
    const int exponent = TensIn(binary);
    const int k = kWholeDigits - 1 - exponent;
    if (k < 0 || k > kMostPower) {
        return false;
    }
    const PowerOfFive &power = kPowersOfFive.of[k];
    const std::uint64_t mantissa = kTopBit | bits << (63 - kMantissaBits);
    const Wide lower = static_cast<Wide>(mantissa) * power.low;
    const Wide upper = static_cast<Wide>(mantissa) * power.high + static_cast<std::uint64_t>(lower >> 64);
    // The product is mantissa * 2^(binary - 63) * 5^k * 2^k, with `power.shift` places more; 128 of its places are not
    // in `high`.
    const auto high = static_cast<std::uint64_t>(upper >> 64);
    const int drop = power.shift + 63 - binary - k - 128 - 2; // 6 to 12
    const bool more = (high & ((std::uint64_t{1} << drop) - 1)) != 0 || static_cast<std::uint64_t>(upper) != 0 ||
                      static_cast<std::uint64_t>(lower) != 0;
    *scaled = {high >> drop | (more ? 1u : 0u), exponent};
    return true;
}
