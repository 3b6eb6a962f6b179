// The tables of keywords and their parameters.
#include "deck/keywords.h"

#include "deck/text.h"

#include <cstring>
#include <vector>

namespace deck {

namespace {

constexpr std::size_t kShortestKeyword = 4; // letters of an abbreviated keyword's words
constexpr std::size_t kShortestParameter = 3;
constexpr std::size_t kLongestShortWord = 5; // words up to here forgive one slip, longer ones two
constexpr std::size_t kLongestWord = 64;     // no keyword is as long: nothing else is compared letter by letter

struct KeywordRow {
    const char *name;
    const char *parameters; // "|A|B C|": null where any are taken
};

// ORDER: Keyword, from the second on.
constexpr KeywordRow kKeywords[] = {
    {"NODE", "|NSET|INPUT|SYSTEM|"},
    {"ELEMENT", "|TYPE|ELSET|INPUT|FILE|OFFSET|SOLID ELEMENT NUMBERING|"},
    {"NSET", "|NSET|GENERATE|INTERNAL|INSTANCE|UNSORTED|ELSET|SURFACE|"},
    {"ELSET", "|ELSET|GENERATE|INTERNAL|INSTANCE|UNSORTED|"},
    {"SURFACE", "|NAME|TYPE|INTERNAL|COMBINE|CROP|DEFINITION|FILLET RADIUS|REGION TYPE|TRIM|MAX RATIO|NO OFFSET|"
                "NO THICK|SCALE THICK|PROPERTY|"},
    {"PART", "|NAME|"},
    {"END PART", nullptr},
    {"INSTANCE", "|NAME|PART|INSTANCE|LIBRARY|"},
    {"END INSTANCE", nullptr},
    {"ASSEMBLY", "|NAME|"},
    {"END ASSEMBLY", nullptr},
    {"INCLUDE", "|INPUT|PASSWORD|"},
    {"SYSTEM", nullptr},
    {"TRANSFORM", nullptr},
    {"NGEN", "|NSET|LINE|SYSTEM|"},
    {"NFILL", "|NSET|BIAS|SINGULAR|TWO STEP|"},
    {"NCOPY", "|CHANGE NUMBER|OLD SET|NEW SET|SHIFT|MULTIPLE|REFLECT|POLE|"},
    {"NMAP", nullptr},
    {"ELGEN", "|ELSET|ALL NODES|"},
    {"ELCOPY", "|ELEMENT SHIFT|OLD SET|NEW SET|SHIFT NODES|REFLECT|"},
    {"PARAMETER", nullptr},
};

// Parameters of sections and of keywords without a list: what any reader of a mesh asks for.
constexpr const char *kCommonParameters = "|ELSET|MATERIAL|COMPOSITE|INPUT|PASSWORD|";

// Sections that a slip is measured against; any other "... SECTION" counts when it is written in full.
constexpr const char *kSections[] = {"SOLID SECTION", "SHELL SECTION", "MEMBRANE SECTION", "BEAM SECTION"};
constexpr const char *kSectionWord = "SECTION";

Keyword KeywordOfRow(std::size_t row) {
    return static_cast<Keyword>(row + 1);
}

std::vector<std::string> Words(std::string_view text) {
    std::vector<std::string> words(1);
    for (const char c : text) {
        if (!IsBlank(c)) {
            words.back() += ToUpper(c);
        } else if (!words.back().empty()) {
            words.emplace_back();
        }
    }
    if (words.back().empty()) {
        words.pop_back();
    }
    return words;
}

std::string Joined(const std::vector<std::string> &words, const char *between) {
    std::string text;
    for (const std::string &word : words) {
        text += (text.empty() ? "" : between) + word;
    }
    return text;
}

bool IsPrefix(const std::string &shorter, const std::string &word) {
    return word.compare(0, shorter.size(), shorter) == 0;
}

// Whether each word is the other's or long enough a beginning of it.
bool AreWordsCutShort(const std::vector<std::string> &written, const std::vector<std::string> &meant) {
    if (written.size() != meant.size()) {
        return false;
    }
    for (std::size_t i = 0; i < written.size(); ++i) {
        if (written[i] != meant[i] && (written[i].size() < kShortestKeyword || !IsPrefix(written[i], meant[i]))) {
            return false;
        }
    }
    return true;
}

bool EndsAsSection(const std::string &joined) {
    const std::size_t length = std::strlen(kSectionWord);
    return joined.size() > length && joined.compare(joined.size() - length, length, kSectionWord) == 0;
}

// Whether the word, not found otherwise, is a slip away from the one meant.
bool IsSlip(const std::string &written, const std::string &meant, std::size_t shortest) {
    if (written.size() < shortest && written.size() + 1 >= shortest && IsPrefix(written, meant)) {
        return true;
    }
    const int most = meant.size() <= kLongestShortWord ? 1 : 2;
    return written.size() > 2 && EditDistance(written, meant, most) <= most;
}

// The keyword whose words were cut short; other when there is none.
KeywordMeant FindAbbreviated(const std::vector<std::string> &words) {
    for (std::size_t row = 0; row < std::size(kKeywords); ++row) {
        if (AreWordsCutShort(words, Words(kKeywords[row].name))) {
            return {KeywordOfRow(row), kKeywords[row].name, Spelling::abbreviated};
        }
    }
    if (words.size() > 1 && words.back().size() >= kShortestKeyword && IsPrefix(words.back(), kSectionWord)) {
        std::vector<std::string> meant = words;
        meant.back() = kSectionWord;
        return {Keyword::section, Joined(meant, " "), Spelling::abbreviated};
    }
    return {};
}

bool IsScopeKeyword(Keyword keyword) {
    return keyword >= Keyword::part && keyword <= Keyword::endAssembly;
}

// The keyword of the mesh that was meant by a misspelt one.
KeywordMeant FindMisspelt(const std::string &joined) {
    for (std::size_t row = 0; row < std::size(kKeywords); ++row) {
        // Half of two words is no slip: "*END" ends nothing of a mesh.
        const bool half = std::strchr(kKeywords[row].name, ' ') != nullptr && joined.size() < kShortestKeyword;
        if (!half && IsSlip(joined, Fold(kKeywords[row].name), kShortestKeyword)) {
            const Keyword keyword = KeywordOfRow(row);
            return {IsScopeKeyword(keyword) ? keyword : Keyword::other, kKeywords[row].name, Spelling::misspelt};
        }
    }
    for (const char *section : kSections) {
        if (IsSlip(joined, Fold(section), kShortestKeyword)) {
            return {Keyword::other, section, Spelling::misspelt};
        }
    }
    return {};
}

const char *ParametersOf(Keyword keyword) {
    if (keyword == Keyword::other || keyword == Keyword::section) {
        return nullptr;
    }
    return kKeywords[static_cast<int>(keyword) - 1].parameters;
}

std::vector<std::string> ListedNames(const char *list) {
    std::vector<std::string> names;
    for (const char *at = list + 1; *at != '\0';) {
        const std::size_t n = std::strcspn(at, "|");
        names.emplace_back(at, n);
        at += n + 1;
    }
    return names;
}

} // namespace

KeywordMeant FindKeyword(std::string_view text) {
    const std::vector<std::string> words = Words(text.substr(0, 4 * kLongestWord));
    const std::string joined = Joined(words, "");
    for (std::size_t row = 0; row < std::size(kKeywords); ++row) {
        if (joined == Fold(kKeywords[row].name)) {
            return {KeywordOfRow(row), kKeywords[row].name, Spelling::full};
        }
    }
    if (EndsAsSection(joined)) {
        return {Keyword::section, Joined(words, " "), Spelling::full};
    }
    KeywordMeant meant = FindAbbreviated(words);
    if (meant.spelling == Spelling::unknown && joined.size() <= kLongestWord) {
        meant = FindMisspelt(joined);
    }
    if (meant.spelling == Spelling::unknown) {
        meant.name = Joined(words, " ");
    }
    return meant;
}

bool HasParameterList(Keyword keyword) {
    return ParametersOf(keyword) != nullptr;
}

ParameterMeant FindParameterName(Keyword keyword, const std::string &folded) {
    const bool listed = HasParameterList(keyword);
    const std::vector<std::string> names = ListedNames(listed ? ParametersOf(keyword) : kCommonParameters);
    const std::string *longer = nullptr;
    const std::string *near = nullptr;
    int nLonger = 0;
    for (const std::string &name : names) {
        const std::string meant = Fold(name);
        if (folded == meant) {
            return {name, Spelling::full};
        }
        if (folded.size() > kLongestWord || (!listed && keyword != Keyword::section)) {
            continue;
        }
        if (folded.size() >= kShortestParameter && IsPrefix(folded, meant)) {
            longer = &name;
            ++nLonger;
        } else if (listed && IsSlip(folded, meant, kShortestParameter)) {
            near = near == nullptr ? &name : near;
        }
    }
    if (nLonger == 1) {
        return {*longer, Spelling::abbreviated};
    }
    if (nLonger > 1 || near != nullptr) { // a beginning of several means none of them for certain
        return {near != nullptr ? *near : *longer, Spelling::misspelt};
    }
    return {folded, Spelling::unknown};
}

} // namespace deck
