// Questions that all steps of an account ask.
#include "account/account.h"

#include "deck/text.h"

#include <algorithm>
#include <charconv>
#include <limits>

namespace account {

namespace {

using deck::Keyword;

const char *KindName(Keyword keyword) {
    switch (keyword) {
    case Keyword::node:
        return "node section";
    case Keyword::element:
        return "element section";
    case Keyword::nset:
        return "node set";
    case Keyword::elset:
        return "element set";
    default:
        return "surface";
    }
}

const char *NameParameter(Keyword keyword) {
    switch (keyword) {
    case Keyword::node:
    case Keyword::nset:
        return "NSET";
    case Keyword::element:
    case Keyword::elset:
        return "ELSET";
    default:
        return "NAME";
    }
}

bool Contains(const std::vector<int> &sorted, int value) {
    return std::binary_search(sorted.begin(), sorted.end(), value);
}

// The first finding with the code on those lines, or null.
const deck::Finding *FindOnLines(const SaidByCode &said, deck::Code code, int first, int last) {
    const std::vector<const deck::Finding *> &sorted = said[static_cast<std::size_t>(code)];
    const auto at = std::lower_bound(sorted.begin(), sorted.end(), first,
                                     [](const deck::Finding *finding, int line) { return finding->place.line < line; });
    return at != sorted.end() && (*at)->place.line <= last ? *at : nullptr;
}

// Findings that tell of rows, sections or files which the deck means and which are not there.
bool TellsOfLoss(const deck::Finding &finding) {
    switch (finding.code) {
    case deck::Code::includeMissing:
    case deck::Code::includeCycle:
    case deck::Code::includeEncrypted:
    case deck::Code::misspelt:
    case deck::Code::misspeltParameter:
    case deck::Code::missingParameter:
    case deck::Code::badNumber:
    case deck::Code::numberRange:
    case deck::Code::fewerNodes:
    case deck::Code::uncertain:
    case deck::Code::generatorEnds:
    case deck::Code::tooMany:
    case deck::Code::unknownPart:
        return true;
    default:
        return false;
    }
}

} // namespace

void Add(Account *account, Code code, deck::Place place, std::vector<std::string> words, long long count) {
    account->findings.push_back({code, place, std::move(words), count});
}

deck::Place PlaceOf(const Account &account, int card) {
    return account.deck.cards[static_cast<std::size_t>(card)].place;
}

deck::Place PlaceOf(const Account &account, int card, const char *parameter) {
    deck::Place place = PlaceOf(account, card);
    if (const deck::Parameter *found = FindParameter(account.deck.cards[static_cast<std::size_t>(card)], parameter)) {
        place.line = found->line;
        place.column = found->column;
    }
    return place;
}

deck::Place PlaceOfLine(int line) {
    return {0, line, 1};
}

void SortWhatDeckSays(Account *account) {
    const auto collect = [](SaidByCode *to, const std::vector<deck::Finding> &from) {
        for (const deck::Finding &finding : from) {
            if (finding.place.file == 0) {
                (*to)[static_cast<std::size_t>(finding.code)].push_back(&finding);
            }
        }
        for (std::vector<const deck::Finding *> &list : *to) {
            std::stable_sort(list.begin(), list.end(), [](const deck::Finding *a, const deck::Finding *b) {
                return a->place.line < b->place.line;
            });
        }
    };
    account->remarks = {};
    account->told = {};
    collect(&account->remarks, account->deck.remarks);
    collect(&account->told, account->deck.findings);
    collect(&account->told, account->mesh.findings);
    account->mayBeMissing = std::any_of(account->deck.findings.begin(), account->deck.findings.end(), TellsOfLoss) ||
                            std::any_of(account->mesh.findings.begin(), account->mesh.findings.end(), TellsOfLoss);
}

const deck::Finding *RemarkOn(const Account &account, int card, deck::Code code) {
    return FindOnLines(account.remarks, code, PlaceOf(account, card).line, LastLineOf(account, card));
}

bool DeckSays(const Account &account, deck::Code code, int first, int last) {
    return FindOnLines(account.told, code, first, last) != nullptr;
}

int LastLineOf(const Account &account, int card) {
    const int next = account.cards[static_cast<std::size_t>(card)].next;
    return next == -1 ? std::numeric_limits<int>::max() : PlaceOf(account, next).line - 1;
}

std::string SectionName(const Account &account, int card) {
    const deck::Card &keywordLine = account.deck.cards[static_cast<std::size_t>(card)];
    std::string name = KindName(keywordLine.keyword);
    if (const deck::Parameter *parameter = FindParameter(keywordLine, NameParameter(keywordLine.keyword))) {
        name += " " + deck::Clip(parameter->value);
    }
    return name;
}

bool HoldsRow(const Account &account, int card, int file, int line) {
    return file == 0 && account.cards[static_cast<std::size_t>(card)].state == CardState::held &&
           !Contains(account.lostRows, line);
}

bool HoldsNode(const Account &account, int node) {
    const deck::NodeRun &run = account.mesh.nodeRuns[static_cast<std::size_t>(RunOfNode(account.mesh, node))];
    const deck::NodeSection &section =
        account.deck.scopes[static_cast<std::size_t>(run.scope)].nodes.sections[static_cast<std::size_t>(run.section)];
    const auto at = static_cast<std::size_t>(node);
    return account.placedHeld[static_cast<std::size_t>(run.placed)] != 0 &&
           HoldsRow(account, section.card, section.file, account.mesh.nodeLine[at]) &&
           !Contains(account.clashingNodes, account.mesh.nodeNumber[at]);
}

bool HoldsElement(const Account &account, int element) {
    const deck::ElementRun &run =
        account.mesh.elementRuns[static_cast<std::size_t>(RunOfElement(account.mesh, element))];
    const deck::ElementSection &section = account.deck.scopes[static_cast<std::size_t>(run.scope)]
                                              .elements.sections[static_cast<std::size_t>(run.section)];
    const auto at = static_cast<std::size_t>(element);
    return account.placedHeld[static_cast<std::size_t>(run.placed)] != 0 &&
           HoldsRow(account, section.card, section.file, account.mesh.elementLine[at]) &&
           !Contains(account.clashingElements, account.mesh.elementNumber[at]);
}

std::string NumberText(double value) {
    char text[40];
    const std::to_chars_result result = std::to_chars(text, text + sizeof text, value);
    return std::string(text, result.ptr);
}

} // namespace account
