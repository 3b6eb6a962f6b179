// Looking findings up, and putting their texts together.
#include "account/findings.h"

#include "account/kinds.h"

#include <cstring>

namespace account {

namespace {

constexpr const char *kLevels[] = {"error", "warning", "note"};

// ORDER: deck::Code, up to its spellings, which are no findings by themselves.
constexpr Code kFromDeck[] = {
    Code::unreadable,   Code::includeMissing,    Code::includeCycle,     Code::includeEncrypted, Code::includeElsewhere,
    Code::misspelt,     Code::misspeltParameter, Code::unknownParameter, Code::missingParameter, Code::badNumber,
    Code::numberRange,  Code::rowBeforeKeyword,  Code::strayRow,         Code::uncertain,        Code::notMesh,
    Code::tooMany,      Code::unknownType,       Code::moreNodes,        Code::missingNumber,    Code::missingNode,
    Code::nodeRepeated, Code::nodeTwice,         Code::elementTwice,     Code::generatorEnds,    Code::missingMember,
    Code::setLater,     Code::setCycle,          Code::nameTwice,        Code::unknownLabel,     Code::freeFaces,
    Code::scopeEnds,    Code::scopeEnds,         Code::unknownPart,      Code::nameTwice,        Code::partUnused,
    Code::emptyDeck,
};
static_assert(sizeof kFromDeck / sizeof kFromDeck[0] == static_cast<int>(deck::Code::abbreviated),
              "each of the deck's findings has a row");

} // namespace

const FindingKind &KindOf(Code code) {
    return kKinds[static_cast<int>(code)];
}

bool FindCode(const std::string &word, Code *code) {
    for (int i = 0; i < kCodes; ++i) {
        if (word == kKinds[i].word) {
            *code = kKinds[i].code;
            return true;
        }
    }
    return false;
}

const char *LevelWord(Level level) {
    return kLevels[static_cast<int>(level)];
}

std::string FilledText(const FindingKind &kind, bool one, const std::function<std::string(char)> &fill) {
    std::string text;
    for (const char *at = kind.text; *at != '\0'; ++at) {
        if (*at != '%') {
            text += *at;
        } else if (*++at != '(') {
            text += fill(*at);
        } else {
            const char *bar = std::strchr(at, '|');
            const char *end = std::strchr(bar, ')');
            text += one ? std::string(at + 1, bar) : std::string(bar + 1, end);
            at = end;
        }
    }
    return text;
}

std::string TextOf(const Finding &finding) {
    return FilledText(KindOf(finding.code), finding.count == 1, [&finding](char place) {
        const auto word = static_cast<std::size_t>(place - '1');
        return place == 'n'                  ? std::to_string(finding.count)
               : word < finding.words.size() ? finding.words[word]
                                             : std::string();
    });
}

Finding FromDeck(const deck::Finding &finding) {
    Finding own{kFromDeck[static_cast<int>(finding.code)], finding.place, finding.words, finding.count};
    if (finding.code == deck::Code::badNumber && !finding.words.empty() && finding.words[0].empty()) {
        own.code = Code::emptyField;
    }
    if (finding.code == deck::Code::scopeOpen) {
        own.words.push_back("it is never ended");
    }
    return own;
}

} // namespace account
