// Fields, numbers and names.
#include "deck/text.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace deck {

namespace {

// Longest text of a number that is looked at: beyond it no digit counts, and a line may be of any length.
constexpr std::size_t kLongestNumber = 1000;

bool IsExponentLetter(char c) {
    return c == 'e' || c == 'E' || c == 'd' || c == 'D';
}

// The end of the quote that begins at `at`, or npos.
std::size_t QuoteEnd(std::string_view text, std::size_t at) {
    return text.find('"', at + 1);
}

// The number as the C++ library reads it: no plus sign in front, an E before the exponent. `*odd` tells that an
// exponent had another letter or none.
std::string Respell(std::string_view text, bool *odd) {
    std::string spelt;
    for (std::size_t i = text[0] == '+' ? 1 : 0; i < text.size(); ++i) {
        const char c = text[i];
        const char before = i == 0 ? '\0' : text[i - 1];
        if (c == 'd' || c == 'D') {
            spelt += 'e';
            *odd = true;
        } else if ((c == '+' || c == '-') && (IsDigit(before) || before == '.')) {
            spelt += 'e';
            *odd = true;
            if (c == '-') {
                spelt += '-';
            }
        } else if (c == '+' && IsExponentLetter(before)) {
            continue; // the library takes it, but so the rule is one
        } else {
            spelt += c;
        }
    }
    return spelt;
}

bool IsNumberText(std::string_view text) {
    if (text.size() > 1 && text[0] == '+' && (text[1] == '+' || text[1] == '-')) {
        return false;
    }
    return !text.empty() && text.size() <= kLongestNumber && std::all_of(text.begin(), text.end(), [](char c) {
        return IsDigit(c) || c == '.' || c == '+' || c == '-' || IsExponentLetter(c);
    });
}

} // namespace

std::string_view Trim(std::string_view text) {
    while (!text.empty() && IsBlank(text.front())) {
        text.remove_prefix(1);
    }
    while (!text.empty() && IsBlank(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

char ToUpper(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

std::string Clip(std::string_view text) {
    constexpr std::size_t kMostShown = 100;
    return text.size() <= kMostShown ? std::string(text) : std::string(text.substr(0, kMostShown)) + "...";
}

std::string Fold(std::string_view text) {
    std::string folded;
    for (const char c : text) {
        if (!IsBlank(c)) {
            folded += ToUpper(c);
        }
    }
    return folded;
}

std::string MeantName(std::string_view text) {
    std::string name;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const std::size_t quoteEnd = text[i] == '"' ? QuoteEnd(text, i) : std::string_view::npos;
        if (quoteEnd != std::string_view::npos) {
            name.append(text.substr(i + 1, quoteEnd - i - 1));
            i = quoteEnd;
        } else if (!IsBlank(text[i])) {
            name += ToUpper(text[i]);
        }
    }
    return name;
}

void SplitFields(std::string_view row, std::vector<Field> *fields) {
    fields->clear();
    std::size_t begin = 0;
    bool openQuote = false; // seen once that has no end: no search for further ones
    for (std::size_t i = 0; i <= row.size(); ++i) {
        if (i < row.size() && row[i] == '"' && !openQuote) {
            const std::size_t quoteEnd = QuoteEnd(row, i);
            openQuote = quoteEnd == std::string_view::npos;
            i = openQuote ? i : quoteEnd;
        } else if (i == row.size() || row[i] == ',') {
            const std::string_view text = Trim(row.substr(begin, i - begin));
            const std::size_t at = text.empty() ? i : static_cast<std::size_t>(text.data() - row.data());
            fields->push_back({text, static_cast<int>(at) + 1});
            begin = i + 1;
        }
    }
}

bool SplitAtBlanks(std::string_view row, std::vector<Field> *fields) {
    std::vector<Field> words;
    double value = 0;
    for (std::size_t i = 0; i < row.size();) {
        if (IsBlank(row[i])) {
            ++i;
            continue;
        }
        std::size_t end = i;
        while (end < row.size() && !IsBlank(row[end])) {
            ++end;
        }
        const std::string_view word = row.substr(i, end - i);
        if (ReadReal(word, &value) == NumberForm::none) {
            return false;
        }
        words.push_back({word, static_cast<int>(i) + 1});
        i = end;
    }
    if (words.size() < 2) {
        return false;
    }
    fields->swap(words);
    return true;
}

NumberForm ReadReal(std::string_view text, double *value) {
    text = Trim(text);
    if (!IsNumberText(text)) {
        return NumberForm::none;
    }
    bool odd = false;
    const std::string spelt = Respell(text, &odd);
    const char *last = spelt.data() + spelt.size();
    const std::from_chars_result result = std::from_chars(spelt.data(), last, *value);
    if (result.ptr != last || result.ec == std::errc::invalid_argument) {
        return NumberForm::none;
    }
    if (result.ec == std::errc::result_out_of_range) {
        *value = std::strtod(spelt.c_str(), nullptr); // too small is 0 or nearly so; too large is no number
        if (!std::isfinite(*value)) {
            return NumberForm::none;
        }
    }
    return odd ? NumberForm::exponent : NumberForm::plain;
}

NumberForm ReadWhole(std::string_view text, long long *value) {
    constexpr double kMostExact = 9007199254740992.0; // 2^53: whole numbers up to here are doubles
    text = Trim(text);
    if (!IsNumberText(text)) {
        return NumberForm::none;
    }
    const std::string_view digits = text.substr(text[0] == '+' ? 1 : 0);
    const char *last = digits.data() + digits.size();
    const std::from_chars_result result = std::from_chars(digits.data(), last, *value);
    if (result.ptr == last && result.ec == std::errc()) {
        return NumberForm::plain;
    }
    double real = 0;
    if (ReadReal(text, &real) == NumberForm::none || std::floor(real) != real || std::abs(real) > kMostExact) {
        return NumberForm::none;
    }
    *value = static_cast<long long>(real);
    return NumberForm::real;
}

int EditDistance(const std::string &a, const std::string &b, int most) {
    const std::size_t longer = std::max(a.size(), b.size());
    if (longer - std::min(a.size(), b.size()) > static_cast<std::size_t>(most)) {
        return most + 1;
    }
    std::vector<int> two(b.size() + 1), one(b.size() + 1), row(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j) {
        one[j] = static_cast<int>(j);
    }
    for (std::size_t i = 1; i <= a.size(); ++i) {
        row[0] = static_cast<int>(i);
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const int other = a[i - 1] == b[j - 1] ? 0 : 1;
            row[j] = std::min({one[j] + 1, row[j - 1] + 1, one[j - 1] + other});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
                row[j] = std::min(row[j], two[j - 2] + 1);
            }
        }
        two.swap(one);
        one.swap(row);
    }
    return one[b.size()];
}

} // namespace deck
