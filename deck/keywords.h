// Which keyword or parameter a word means: in full, cut short, or misspelt.
#ifndef KIVOM_DECK_KEYWORDS_H
#define KIVOM_DECK_KEYWORDS_H

#include "deck/card.h"

#include <string>
#include <string_view>

namespace deck {

enum class Spelling { full, abbreviated, misspelt, unknown };

struct KeywordMeant {
    Keyword keyword = Keyword::other;
    std::string name; // as meant; the word written, folded, when unknown
    Spelling spelling = Spelling::unknown;
};

// What stands behind the '*', up to the first comma. Keywords count from four letters of a word; shorter ones and those
// that are a slip away from a keyword of the mesh are misspelt. keyword is other for misspelt ones too, but where they
// only begin or end a scope: what they mean is taken, so that one slip does not make the scopes after it wrong.
KeywordMeant FindKeyword(std::string_view text);

struct ParameterMeant {
    std::string name;
    Spelling spelling = Spelling::unknown;
};

// Parameters count from three letters, where they are unique among the keyword's. Keywords without a list of their own
// (sections, others) know ELSET, MATERIAL and INPUT only in full.
ParameterMeant FindParameterName(Keyword keyword, const std::string &folded);

// Whether the keyword has a list of its parameters, so that others are unknown.
bool HasParameterList(Keyword keyword);

} // namespace deck

#endif
