// Fields and numbers taken out of a line of text.
#include "support/frame.h"

#include "support/lines.h"

#include <charconv>
#include <cstring>

namespace {

// The field at *cursor into `field` (257 bytes); the cursor moves behind its separator. Returns its length.
//
// A field of more than 256 characters leaves its rest in the line. The separator behind it is blanked and no
// longer separates, so the rest runs on into the text that follows: the rule of the blanking functions below,
// where each call begins at the start of the line again.
int TakeField(char *field, char **cursor, char separator) {
    char *rest = nullptr;
    int length = 0;
    char *at = *cursor;
    for (; *at != '\0' && *at != separator; ++at) {
        if (*at == ' ') {
            continue;
        }
        if (length < kNameLength) {
            field[length++] = *at;
        } else if (rest == nullptr) {
            rest = at;
        }
    }
    field[length] = '\0';
    if (*at == separator && *at != '\0') {
        *at++ = ' ';
    }
    *cursor = rest != nullptr ? rest : at;
    return length;
}

// TakeField from the start of the line, blanking what it took.
int BlankField(char *field, char *line, char separator) {
    char *cursor = line;
    const int length = TakeField(field, &cursor, separator);
    for (char *at = line; at != cursor; ++at) {
        *at = ' ';
    }
    return length;
}

int ConvertINT(int *out, const char *field, int length) {
    *out = 0;
    if (length == 0) {
        return 0;
    }
    *out = ReadINT(field);
    return 1;
}

int ConvertDBL(double *out, const char *field, int length) {
    *out = 0;
    if (length == 0) {
        return 0;
    }
    *out = ReadDBL(field);
    return 1;
}

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

} // namespace

void fgetportableline(LineSource *stream, char *line) {
    const char *begin;
    const char *end;
    bool last = false;
    while (!last && NextPiece(stream, &begin, &end, &last)) {
        const auto size = static_cast<std::size_t>(end - begin);
        std::memcpy(line, begin, size);
        line += size;
    }
    *line = '\0';
}

int GrabNextINTFromCHR(int *out, char *line, char separator) {
    char field[kNameBuffer];
    return ConvertINT(out, field, BlankField(field, line, separator));
}

int GrabNextDBLFromCHR(double *out, char *line, char separator) {
    char field[kNameBuffer];
    return ConvertDBL(out, field, BlankField(field, line, separator));
}

int GrabNextCHRFromCHR(char *out, char *line, char separator) {
    return BlankField(out, line, separator) > 0 ? 1 : 0;
}

int NextINT(int *out, char **cursor, char separator) {
    char field[kNameBuffer];
    return ConvertINT(out, field, TakeField(field, cursor, separator));
}

int NextDBL(double *out, char **cursor, char separator) {
    char field[kNameBuffer];
    return ConvertDBL(out, field, TakeField(field, cursor, separator));
}

int NextCHR(char *out, char **cursor, char separator) {
    return TakeField(out, cursor, separator) > 0 ? 1 : 0;
}

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
