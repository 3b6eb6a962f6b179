// Decimal digits taken out of text eight at a time.
#ifndef KIVOM_SUPPORT_EIGHTDIGITS_H
#define KIVOM_SUPPORT_EIGHTDIGITS_H

#include <cstdint>
#include <cstring>

constexpr int kEight = 8; // characters that are looked at, whatever they are

// The digits that eight characters begin with.
struct LeadingDigits {
    int count;            // 0 to 8
    std::uint64_t number; // 0 without digits
};

#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__

// The first character is the lowest byte of a word. Bytes of digits become their values, and neighbours are put
// together by pairs: ones to tens, tens to thousands, thousands to eight digits.
inline LeadingDigits TakeEightDigits(const char *at) {
    std::uint64_t bytes;
    std::memcpy(&bytes, at, sizeof bytes);
    bytes ^= 0x3030303030303030u; // '0' to '9' are 0x30 to 0x39: all other characters become 10 or more
    // The highest bit of each byte of 10 or more. A carry out of such a byte spoils only those behind it.
    const std::uint64_t others = ((bytes + 0x7676767676767676u) | bytes) & 0x8080808080808080u;
    const int bits = others == 0 ? 64 : __builtin_ctzll(others) & ~7; // of the digits
    if (bits == 0) {
        return {0, 0};
    }
    bytes <<= 64 - bits; // what is not a digit goes out at the top; zeros come in before the first
    bytes = (bytes * 10 + (bytes >> 8)) & 0x00ff00ff00ff00ffu;
    bytes = (bytes * 100 + (bytes >> 16)) & 0x0000ffff0000ffffu;
    bytes = (bytes * 10000 + (bytes >> 32)) & 0x00000000ffffffffu;
    return {bits / 8, bytes};
}

#else

inline LeadingDigits TakeEightDigits(const char *at) {
    LeadingDigits digits{0, 0};
    for (; digits.count < kEight && at[digits.count] >= '0' && at[digits.count] <= '9'; ++digits.count) {
        digits.number = digits.number * 10 + static_cast<std::uint64_t>(at[digits.count] - '0');
    }
    return digits;
}

#endif

#endif
