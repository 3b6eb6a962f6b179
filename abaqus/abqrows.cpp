// The plain form of data lines.
#include "abaqus/abqrows.h"

#include "abaqus/abqline.h"

#include <charconv>
#include <climits>

namespace {

// The block's text ends in a '\n' (support/lines.h), so every scan below stops at the end of a line at the
// latest; a line end at the end of the block shows that the line is not whole.

const char *SkipDropped(const char *at) {
    while (*at == ' ' || *at == '\t' || *at == '\r') {
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
    at = SkipDropped(at);
    const char *first = at;
    unsigned digit = DigitValue(*at);
    if (digit > 9) {
        return nullptr;
    }
    unsigned long long number = 0;
    for (; digit <= 9; digit = DigitValue(*++at)) {
        number = number * 10 + digit; // may wrap when there are too many
    }
    if (at - first > kMostDigits || number > INT_MAX) {
        return nullptr;
    }
    *value = static_cast<int>(number);
    return SkipDropped(at);
}

const char *PlainReal(const char *at, const char *end, double *value) {
    at = SkipDropped(at);
    const char *digits = *at == '-' ? at + 1 : at;
    if (DigitValue(*digits) > 9 && *digits != '.') { // no "inf", no "nan"
        return nullptr;
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
    const char *at = PlainInteger(stream->at, number);
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
    const char *at = stream->at;
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
            ++at;
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
    const char *at = stream->at;
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
