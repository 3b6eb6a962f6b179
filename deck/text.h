// The text of a line: fields, numbers and names as decks spell them.
//
// A line's last character is followed by '\n', so that a scan that stops there needs no other bound.
#ifndef KIVOM_DECK_TEXT_H
#define KIVOM_DECK_TEXT_H

#include <charconv>
#include <string>
#include <string_view>
#include <vector>

namespace deck {

// Blanks, tabs, carriage returns and NUL bytes: all that counts as a blank outside quotes.
inline bool IsBlank(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\0' || c == '\v' || c == '\f';
}

inline bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

inline const char *SkipBlanks(const char *at) {
    while (IsBlank(*at)) {
        ++at;
    }
    return at;
}

std::string_view Trim(std::string_view text);
char ToUpper(char c); // letters of ASCII only

// The text for a message: its beginning where it is long.
std::string Clip(std::string_view text);

// The text in upper case with blanks left out.
std::string Fold(std::string_view text);

// A name as meant: quotes off and what they enclose kept; elsewhere in upper case with blanks left out.
std::string MeantName(std::string_view text);

// A quote has no end on the line: it is a character like others then.
struct Field {
    std::string_view text; // trimmed
    int column;            // of its first character, from 1; of the separator where it is empty
};

// The fields of the row, cut at the commas outside quotes. An empty row has one empty field.
void SplitFields(std::string_view row, std::vector<Field> *fields);

// The row's fields where it has no comma and more than one number, and nothing else, between blanks. False, and the
// fields stay, where it is not so.
bool SplitAtBlanks(std::string_view row, std::vector<Field> *fields);

enum class NumberForm {
    none,     // no number
    plain,    // as any reader takes it
    exponent, // a real with D, or without a letter, before its exponent
    real      // a whole number written as a real
};

// Exact doubles; the exponent's letter may be E, D or missing. Overflow is no number.
NumberForm ReadReal(std::string_view text, double *value);

// A whole number within 64 bits, also as a real ("2.0", "1e3").
NumberForm ReadWhole(std::string_view text, long long *value);

// The ordinary form of a number at `at`, up to the '\n' at the latest: the place behind it and behind blanks, or null
// where it is written in any other way (the functions above decide then).
inline const char *PlainWhole(const char *at, int *value) {
    constexpr int kMostDigits = 9; // of a deck number; fits an int
    at = SkipBlanks(at);
    const char *first = at;
    int number = 0;
    for (; IsDigit(*at) && at - first < kMostDigits; ++at) {
        number = number * 10 + (*at - '0');
    }
    if (at == first || IsDigit(*at)) {
        return nullptr;
    }
    *value = number;
    return SkipBlanks(at);
}

inline const char *PlainReal(const char *at, const char *end, double *value) {
    at = SkipBlanks(at);
    const char *digits = *at == '-' ? at + 1 : at;
    if (!IsDigit(*digits) && *digits != '.') { // no "inf", no "nan"
        return nullptr;
    }
    const std::from_chars_result result = std::from_chars(at, end, *value);
    return result.ec == std::errc() ? SkipBlanks(result.ptr) : nullptr;
}

// Changes that turn one word into the other: letters put in, left out, exchanged or swapped with the next one. Words
// whose lengths differ by more than `most` are that far apart at least; the answer is `most` + 1 then.
int EditDistance(const std::string &a, const std::string &b, int most);

} // namespace deck

#endif
