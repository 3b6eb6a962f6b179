// Numbers out of text, exactly as the C library reads them.
#include "support/frame.h"

#include <charconv>
#include <cstring>

namespace {

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

} // namespace

int ReadINT(const char *text) {
    constexpr int kSafeDigits = 9; // 999,999,999 fits an int; more digits are left to the C library
    int value = 0;
    int n = 0;
    while (n <= kSafeDigits && IsDigit(text[n])) {
        value = n < kSafeDigits ? value * 10 + (text[n] - '0') : value;
        ++n;
    }
    if (n >= 1 && n <= kSafeDigits) {
        return value;
    }
    value = 0;
    std::sscanf(text, "%d", &value);
    return value;
}

double ReadDBL(const char *text) {
    // from_chars reads the plain decimal form, and reads it exactly. It differs from "%le" on a leading "+",
    // on hexadecimal numbers, on infinities and NaN, on text that ends inside an exponent, on what is out of
    // range and on leading white space: all that goes to the C library.
    double value = 0;
    const char *digits = text[0] == '-' ? text + 1 : text;
    if (IsDigit(digits[0]) || digits[0] == '.') {
        const char *end = text + std::strlen(text);
        const std::from_chars_result result = std::from_chars(text, end, value);
        if (result.ec == std::errc() && result.ptr == end) {
            return value;
        }
    }
    value = 0;
    std::sscanf(text, "%le", &value);
    return value;
}
