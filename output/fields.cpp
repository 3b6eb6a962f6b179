// Number fields, exactly as the C library's formats give them.
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

// Coordinates recur: planes, grids, extruded layers, the same node in several files. A field that was made not
// long ago is taken from here.
struct RecentField {
    std::uint64_t bits; // of the value
    char text[24];      // NUL first: not in use
};

constexpr unsigned kRecentFields = 4096;

std::uint64_t BitsOf(double value) {
    std::uint64_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

RecentField *RecentPlace(RecentField *fields, std::uint64_t bits) {
    return fields + ((bits * 0x9e3779b97f4a7c15u) >> 52); // top 12 bits of a multiplicative hash
}

template <int kPrecision, int kWidth> char *FieldRecent(char *at, double value) {
    static_assert(kWidth <= 24, "a recent field holds 24 characters");
    static RecentField fields[kRecentFields];
    const std::uint64_t bits = BitsOf(value);
    RecentField *recent = RecentPlace(fields, bits);
    if (recent->bits != bits || recent->text[0] == '\0') {
        char text[kMostField];
        FieldScientific(text, value, kPrecision, kWidth); // never wider: sign and three exponent digits fit
        recent->bits = bits;
        std::memcpy(recent->text, text, kWidth);
    }
    std::memcpy(at, recent->text, kWidth);
    return at + kWidth;
}

} // namespace

char *FieldWide(char *at, int value, int width) {
    char text[kMostField];
    const std::to_chars_result result = std::to_chars(text, text + sizeof text, value);
    return RightAligned(at, text, static_cast<int>(result.ptr - text), width);
}

char *FieldReal24(char *at, double value) {
    return FieldRecent<15, 24>(at, value);
}

char *FieldReal15(char *at, double value) {
    return FieldRecent<7, 15>(at, value);
}
