// Number fields, taken apart by their places.
#include "meshfile/fields.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <system_error>

namespace meshfile {

namespace {

constexpr int kPrecision = 15;

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

bool AreDigits(const char *at, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
        if (!IsDigit(at[i])) {
            return false;
        }
    }
    return true;
}

// Places of "%24.15e" when it writes a number: blanks, a sign or one more blank, and from `first` on the digits.
struct RealPlaces {
    std::size_t first; // leading digit
    std::size_t e;     // the letter
};

// Two digits of the exponent, or three that do not begin with 0; no sign of minus on a zero exponent.
bool FindPlaces(const char *at, RealPlaces *places) {
    if (at[20] == 'e') {
        *places = {3, 20};
    } else if (at[19] == 'e' && at[21] != '0') {
        *places = {2, 19};
    } else {
        return false;
    }
    const std::size_t first = places->first;
    const char *exponent = at + places->e + 1;
    for (std::size_t i = 0; i + 1 < first; ++i) {
        if (at[i] != ' ') {
            return false;
        }
    }
    return (at[first - 1] == ' ' || at[first - 1] == '-') && IsDigit(at[first]) && at[first + 1] == '.' &&
           AreDigits(at + first + 2, kPrecision) &&
           (exponent[0] == '+' || (exponent[0] == '-' && std::memcmp(exponent, "-00", 3) != 0)) &&
           AreDigits(exponent + 1, 5 - first);
}

// True when the digits are sure to be those that the value is written with: then doubles lie closer together, at the
// value, than numbers of 16 digits do, so that half a step between doubles never reaches the next such number. With
// f the value's binary mantissa and m its decimal one, that is f > m * 2^-52 / 1e-15. Just above a power of ten the
// value may lie below it, where numbers of 16 digits are denser; zeros, subnormal values and a leading 0 are apart.
bool AreSurelyItsDigits(const char *first, double value) {
    constexpr double kRatio = 0.22204461; // 2^-52 / 1e-15, rounded up
    const std::uint64_t bits = BitsOf(value);
    if ((bits >> 52 & 0x7ff) == 0 || first[0] == '0' || (first[0] == '1' && first[2] == '0')) {
        return false;
    }
    const double binary = 1 + static_cast<double>(bits & 0xfffffffffffffu) * std::numeric_limits<double>::epsilon();
    const double decimalAtMost = (first[0] - '0') + (first[2] - '0' + 1) * 0.1;
    return binary > decimalAtMost * kRatio;
}

bool AreItsDigits(const char *begin, const char *end, double value) {
    char text[kRealWidth + 8];
    const auto made = std::to_chars(text, text + sizeof text, value, std::chars_format::scientific, kPrecision);
    return made.ec == std::errc() && made.ptr - text == end - begin &&
           std::memcmp(text, begin, static_cast<std::size_t>(end - begin)) == 0;
}

// The field's number is the nearest double's, or that of one beside it: just below a power of ten 16 digits tell more
// numbers apart than doubles do just above, so 1.000000000000000e-11 is nearest to a double that is written
// 9.999999999999999e-12 and is what the next one is written as.
bool FindValue(const char *begin, const char *end, double *value) {
    const double nearest = *value;
    for (const double one : {nearest, std::nextafter(nearest, HUGE_VAL), std::nextafter(nearest, -HUGE_VAL)}) {
        if (AreItsDigits(begin, end, one)) {
            *value = one;
            return true;
        }
    }
    return false;
}

// inf and nan of either sign.
bool WordField(const char *at, double *value) {
    const double infinity = std::numeric_limits<double>::infinity();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const struct {
        const char *text;
        double value;
    } words[] = {{"                     inf", infinity},
                 {"                    -inf", -infinity},
                 {"                     nan", std::copysign(nan, 1.0)},
                 {"                    -nan", std::copysign(nan, -1.0)}};
    for (const auto &word : words) {
        if (std::memcmp(at, word.text, kRealWidth) == 0) {
            *value = word.value;
            return true;
        }
    }
    return false;
}

} // namespace

bool IntField(const char *at, std::size_t width, int *value) {
    const char *end = at + width;
    while (at < end && *at == ' ') {
        ++at;
    }
    const bool isNegative = at < end && *at == '-';
    const char *digits = at + (isNegative ? 1 : 0);
    std::int64_t number = 0; // ten digits at most
    for (at = digits; at < end; ++at) {
        if (!IsDigit(*at)) {
            return false;
        }
        number = number * 10 + (*at - '0');
    }
    const bool isPlain = digits < end && (*digits != '0' || (end - digits == 1 && !isNegative));
    if (!isPlain || number > std::numeric_limits<int>::max()) {
        return false;
    }
    *value = static_cast<int>(isNegative ? -number : number);
    return true;
}

bool RealField(const char *at, double *value) {
    RealPlaces places{};
    if (!FindPlaces(at, &places)) {
        return WordField(at, value);
    }
    const char *begin = at + places.first - (at[places.first - 1] == '-' ? 1 : 0);
    const char *end = at + kRealWidth;
    if (std::from_chars(begin, end, *value).ec == std::errc()) {
        return AreSurelyItsDigits(at + places.first, *value) || FindValue(begin, end, value);
    }
    // The largest doubles round up, at 16 digits, to a number that no double reaches.
    *value = std::copysign(std::numeric_limits<double>::max(), *begin == '-' ? -1.0 : 1.0);
    return AreItsDigits(begin, end, *value);
}

} // namespace meshfile
