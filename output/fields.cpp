// Number fields, exactly as the C library's formats give them.
#include "output/decimal.h"
#include "output/textout.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace {

// `length` characters at the end of a field of `width`, blanks before them.
char *RightAligned(char *at, const char *text, int length, int width) {
    for (int i = length; i < width; ++i) {
        *at++ = ' ';
    }
    return FieldBytes(at, text, static_cast<std::size_t>(length));
}

// "%*.*e". to_chars rounds as the C library does and writes the exponent with at least two digits like it; only
// its words for infinities and NaN are left to the C library.
char *FieldScientific(char *at, double value, int precision, int width) {
    char text[kMostField];
    if (!std::isfinite(value)) {
        return RightAligned(at, text, std::snprintf(text, sizeof text, "%e", value), width);
    }
    const std::to_chars_result result =
        std::to_chars(text, text + sizeof text, value, std::chars_format::scientific, precision);
    return RightAligned(at, text, static_cast<int>(result.ptr - text), width);
}

// Four digits at a time, with leading zeros.
char *FourDigits(char *at, std::uint64_t number) {
    return FieldBytes(at, kDigits.zeros[number], 4);
}

template <int nDigits> char *ZeroFilledDigits(char *at, std::uint64_t number) {
    if constexpr (nDigits > 4) {
        constexpr std::uint64_t kLast = 10000;
        at = ZeroFilledDigits<nDigits - 4>(at, number / kLast);
        number %= kLast;
    }
    return FourDigits(at, number);
}

// "%*.*e" with nDigits digits, a multiple of four: sign, digit, point, the other digits, and an exponent of two digits.
template <int nDigits, int kWidth> char *FieldReal(char *at, double value) {
    constexpr int kBlanks = kWidth - (1 + 1 + nDigits + 4);
    ScaledReal scaled;
    if (!ScaleReal(value, &scaled)) {
        return FieldScientific(at, value, nDigits - 1, kWidth);
    }
    const Digits digits = RoundedToDigits<nDigits>(scaled);
    std::memset(at, ' ', kBlanks);
    char *sign = at + kBlanks;
    *sign = std::signbit(value) ? '-' : ' ';
    char *first = sign + 1;
    char *e = ZeroFilledDigits<nDigits>(first + 1, digits.number);
    first[0] = first[1]; // the point comes between it and the others
    first[1] = '.';
    e[0] = 'e';
    e[1] = digits.exponent < 0 ? '-' : '+';
    return FieldBytes(e + 2, kDigits.zeros[std::abs(digits.exponent)] + 2, 2);
}

} // namespace

char *FieldWide(char *at, int value, int width) {
    char text[kMostField];
    const std::to_chars_result result = std::to_chars(text, text + sizeof text, value);
    return RightAligned(at, text, static_cast<int>(result.ptr - text), width);
}

char *FieldReal24(char *at, double value) {
    return FieldReal<16, 24>(at, value);
}

char *FieldReal15(char *at, double value) {
    return FieldReal<8, 15>(at, value);
}
