// Replacing characters and words, and telling names apart.
#include "flatten/names.h"

#include <algorithm>

namespace flatten {

namespace {

// The translator keeps as much of a name; room for what tells it from others is left.
constexpr std::size_t kLongest = 248;

// ORDER: kOnElement ... Each list is that of the translator's section.
constexpr const char *kRefused[][12] = {
    {"FILE", "INPUT", "OFFSET", "SOLIDELEMENTNUMBERING"},
    {"GENERATE", "INSTANCE", "INTERNAL", "UNSORTED"},
    {"ELSET", "GENERATE", "INSTANCE", "INTERNAL", "UNSORTED"},
    {"COMBINE", "CROP", "DEFINITION", "FILLETRADIUS", "INTERNAL", "REGIONTYPE", "TRIM", "MAXRATIO", "NOOFFSET",
     "NOTHICK", "SCALETHICK"},
};

bool IsPlain(char c) {
    constexpr const char *kReplaced = "\"/*,=;\\";
    return c > ' ' && c < 127 && std::string(kReplaced).find(c) == std::string::npos;
}

// Whether the byte goes on with the character that the one before it began or went on with, in UTF-8.
bool GoesOn(char before, char c) {
    const auto at = [](char byte) { return static_cast<unsigned char>(byte); };
    return at(before) >= 0x80 && at(c) >= 0x80 && at(c) < 0xc0;
}

// The word with a '-' in its middle, as often as it occurs.
void BreakWord(std::string *name, const std::string &word) {
    for (std::size_t at = name->find(word); at != std::string::npos; at = name->find(word)) {
        name->insert(at + word.size() / 2, "-");
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
    for (unsigned list = 0; list < 4; ++list) {
        for (int i = 0; (where >> list & 1U) != 0 && i < 12 && kRefused[list][i] != nullptr; ++i) {
            BreakWord(&plain, kRefused[list][i]);
        }
    }
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
