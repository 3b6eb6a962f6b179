// Number fields, exactly as the C library's formats give them.
#include "output/decimal.h"
#include "output/textout.h"

#include <charconv>
#include <cmath>
#include <cstdio>

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

char *EightDigits(char *at, std::uint64_t number) {
    return FourDigits(FourDigits(at, number / 10000), number % 10000);
}

// "%*.*e" of the digits that were laid at `first` + 1: their first moves one place to the left, and the point comes
// between.
char *FinishScientific(char *first, int nDigits, bool negative, int exponent) {
    first[-1] = negative ? '-' : ' ';
    first[0] = first[1];
    first[1] = '.';
    char *at = first + 1 + nDigits;
    at[0] = 'e';
    at[1] = exponent < 0 ? '-' : '+';
    std::memcpy(at + 2, kDigits.zeros[exponent < 0 ? -exponent : exponent] + 2, 2);
    return at + 4;
}

} // namespace

char *FieldWide(char *at, int value, int width) {
    char text[kMostField];
    const std::to_chars_result result = std::to_chars(text, text + sizeof text, value);
    return RightAligned(at, text, static_cast<int>(result.ptr - text), width);
}

char *FieldReal24(char *at, double value) {
    constexpr int kDigitsOf24 = 16;
    ScaledReal scaled;
    if (!ScaleReal(value, &scaled)) {
        return FieldScientific(at, value, kDigitsOf24 - 1, 24);
    }
    const Digits digits = RoundedToDigits<kDigitsOf24>(scaled);
    char *first = FieldBytes(at, "   ", 3);
    EightDigits(EightDigits(first + 1, digits.number / 100000000), digits.number % 100000000);
    return FinishScientific(first, kDigitsOf24, std::signbit(value), digits.exponent);
}

char *FieldReal15(char *at, double value) {
    constexpr int kDigitsOf15 = 8;
    ScaledReal scaled;
    if (!ScaleReal(value, &scaled)) {
        return FieldScientific(at, value, kDigitsOf15 - 1, 15);
    }
    const Digits digits = RoundedToDigits<kDigitsOf15>(scaled);
    char *first = FieldBytes(at, "  ", 2);
    EightDigits(first + 1, digits.number);
    return FinishScientific(first, kDigitsOf15, std::signbit(value), digits.exponent);
}
