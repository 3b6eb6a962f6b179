// Replacing characters and words, and telling names apart.
#include "flatten/names.h"

#include "abaqus/RefusedWords.h"

#include <algorithm>

namespace flatten {

namespace {

// The translator keeps as much of a name; room for what tells it from others is left.
constexpr std::size_t kLongest = 248;

bool IsPlain(char c) {
    constexpr const char *kReplaced = "\"/*,=;\\";
    return c > ' ' && c < 127 && std::string(kReplaced).find(c) == std::string::npos;
}

// Whether the byte goes on with the character that the one before it began or went on with, in UTF-8.
bool GoesOn(char before, char c) {
    const auto at = [](char byte) { return static_cast<unsigned char>(byte); };
    return at(before) >= 0x80 && at(c) >= 0x80 && at(c) < 0xc0;
}

// The words with a '-' in their middle, as often as they occur.
template <std::size_t nWords> void BreakWords(std::string *name, const char *const (&words)[nWords]) {
    for (const char *const refused : words) {
        const std::string word = refused;
        for (std::size_t at = name->find(word); at != std::string::npos; at = name->find(word)) {
            name->insert(at + word.size() / 2, "-");
        }
    }
}

void BreakRefusedWords(std::string *name, unsigned where) {
    if ((where & kOnElement) != 0) {
        BreakWords(name, kRefusedCells);
    }
    if ((where & kOnElset) != 0) {
        BreakWords(name, kRefusedCellSet);
    }
    if ((where & kOnNset) != 0) {
        BreakWords(name, kRefusedNodeSet);
    }
    if ((where & kOnSurface) != 0) {
        BreakWords(name, kRefusedSurface);
    }
}

} // namespace

std::string PlainName(const std::string &name, unsigned where) {
    std::string plain;
    for (std::size_t i = 0; i < name.size(); ++i) {
        const char c = name[i];
        const char upper = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
        if (i == 0 || !GoesOn(name[i - 1], c)) {
            plain += IsPlain(upper) ? upper : '_';
        }
    }
    BreakRefusedWords(&plain, where);
    const bool isNumber =
        std::all_of(plain.begin(), plain.end(), [](char c) { return c >= '0' && c <= '9'; }); // or nothing at all
    if (plain.empty() || (isNumber && (where & kOnElset) != 0)) {
        plain = "_" + plain; // on a row of a surface it would be an element's number
    }
    return plain.substr(0, kLongest);
}

std::string Names::Give(const std::string &name) {
    int &last = last_[name];
    if (last == 0) {
        last = 1;
        return name;
    }
    std::string other;
    do {
        other = name + "~" + std::to_string(++last);
    } while (last_.count(other) != 0);
    last_[other] = 1;
    return other;
}

} // namespace flatten
