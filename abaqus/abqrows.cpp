// The plain form of data lines.
#include "abaqus/abqrows.h"

#include "abaqus/abqline.h"
#include "support/eightdigits.h"

#include <charconv>
#include <climits>

namespace {

// The block's text ends in a '\n' (support/lines.h), so every scan below stops at the end of a line at the
// latest; a line end at the end of the block shows that the line is not whole.

inline const char *SkipDropped(const char *at) {
    // By far the most characters that are looked at are above all that is dropped.
    while (static_cast<unsigned char>(*at) <= ' ' && (*at == ' ' || *at == '\t' || *at == '\r')) {
        ++at;
    }
    return at;
}

unsigned DigitValue(char c) {
    return static_cast<unsigned>(static_cast<unsigned char>(c)) - '0'; // above 9 for anything but a digit
}

// Digits at `at` as a number; the place behind them and any blanks, or null when it is not a plain number within
// an int.
inline const char *PlainInteger(const char *at, int *value) {
    constexpr int kMostDigits = 10; // of an int; that many fit the sum below, whatever they are
    const LeadingDigits digits = TakeEightDigits(at);
    if (digits.count == 0) {
        return nullptr;
    }
    const char *first = at;
    std::uint64_t number = digits.number;
    at += digits.count;
    if (digits.count == kEight) {
        for (unsigned digit = DigitValue(*at); digit <= 9; digit = DigitValue(*++at)) {
            number = number * 10 + digit; // may wrap when there are too many
        }
        if (at - first > kMostDigits || number > INT_MAX) {
            return nullptr;
        }
    }
    *value = static_cast<int>(number);
    return SkipDropped(at);
}

// Digits with at most one point among or around them.
struct Decimal {
    std::uint64_t number; // without the point; of no meaning when there are too many
    int nDigits;          // 0: no decimal
    int nBehind;          // behind the point
};

// The place behind the digits at `at`, which are appended to the decimal.
const char *AppendDigits(const char *at, Decimal *decimal) {
    constexpr std::uint64_t kScale[kEight + 1] = {1, 10, 100, 1000, 10000, 100000, 1000000, 10000000, 100000000};
    LeadingDigits digits;
    do {
        digits = TakeEightDigits(at);
        decimal->number = decimal->number * kScale[digits.count] + digits.number;
        decimal->nDigits += digits.count;
        at += digits.count;
    } while (digits.count == kEight);
    return at;
}

const char *TakeDecimal(const char *at, Decimal *decimal) {
    *decimal = {0, 0, 0};
    at = AppendDigits(at, decimal);
    if (*at == '.') {
        decimal->nBehind = -decimal->nDigits;
        at = AppendDigits(at + 1, decimal);
        decimal->nBehind += decimal->nDigits;
    }
    return at;
}

// A decimal of so few digits is a double, and so is the power of ten that it is divided by: one rounding, as it should
// be.
constexpr int kExactDigits = 15;
constexpr double kTens[kExactDigits + 1] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                            1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};

const char *PlainReal(const char *at, const char *end, double *value) {
    at = SkipDropped(at);
    const bool negative = *at == '-';
    Decimal decimal;
    const char *behind = TakeDecimal(at + (negative ? 1 : 0), &decimal);
    if (decimal.nDigits == 0) { // no "inf", no "nan"
        return nullptr;
    }
    if (decimal.nDigits <= kExactDigits && *behind != 'e' && *behind != 'E') {
        const double size = static_cast<double>(decimal.number) / kTens[decimal.nBehind];
        *value = negative ? -size : size;
        return SkipDropped(behind);
    }
    const std::from_chars_result result = std::from_chars(at, end, *value);
    if (result.ec != std::errc() || result.ptr - at > kNameLength) { // longer fields are cut in two
        return nullptr;
    }
    return SkipDropped(result.ptr);
}

bool IsWholeLine(const LineSource *stream, const char *lineEnd) {
    return lineEnd != stream->end && lineEnd - stream->at <= kLineLength; // no logical line passes the limit
}

} // namespace

bool TakeNodeRow(LineSource *stream, int *number, double *x, double *y, double *z) {
    if (stream == nullptr) {
        return false;
    }
    const char *at = PlainInteger(SkipDropped(stream->at), number);
    if (at == nullptr || *at != ',') {
        return false;
    }
    at = PlainReal(at + 1, stream->end, x);
    if (at == nullptr || *at != ',') {
        return false;
    }
    at = PlainReal(at + 1, stream->end, y);
    if (at == nullptr) {
        return false;
    }
    *z = 0;
    if (*at == ',') {
        at = PlainReal(at + 1, stream->end, z);
    }
    if (at == nullptr || *at != '\n' || !IsWholeLine(stream, at)) {
        return false;
    }
    TakenLines(stream, at + 1, 1);
    return true;
}

bool TakeElementRow(LineSource *stream, int count, int *numbers) {
    if (stream == nullptr) {
        return false;
    }
    int lines = 1;
    const char *at = SkipDropped(stream->at);
    for (int i = 0; i < count; ++i) {
        at = PlainInteger(at, &numbers[i]);
        if (at == nullptr) {
            return false;
        }
        if (i == count - 1) {
            break;
        }
        if (*at != ',') {
            return false;
        }
        at = SkipDropped(at + 1);
        if (*at == '\n') {
            if (at == stream->end) {
                return false;
            }
            at = SkipDropped(at + 1);
            ++lines;
        }
    }
    if (*at != '\n' || !IsWholeLine(stream, at)) {
        return false;
    }
    TakenLines(stream, at + 1, lines);
    return true;
}

int TakeSetRow(LineSource *stream, int room, int *numbers) {
    if (stream == nullptr) {
        return -1;
    }
    const char *at = SkipDropped(stream->at);
    int count = 0;
    while (count < room) {
        at = PlainInteger(at, &numbers[count]);
        if (at == nullptr) {
            return -1;
        }
        ++count;
        if (*at == ',') {
            at = SkipDropped(at + 1);
        } else if (*at != '\n') {
            return -1;
        }
        if (*at == '\n') {
            break;
        }
    }
    if (*at != '\n' || !IsWholeLine(stream, at)) {
        return -1;
    }
    TakenLines(stream, at + 1, 1);
    return count;
}
