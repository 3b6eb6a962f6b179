// Names and groups: what the reader makes of the names on keyword lines, and which groups come of elements.
#include "account/account.h"
#include "account/records.h"

#include <algorithm>
#include <cstring>
#include <map>

namespace account {

namespace {

using deck::Keyword;

// A record of the reader with the keyword line that it came from.
struct Named {
    const char *name; // as the reader has it
    int card;
    bool operator<(const Named &other) const {
        const int order = std::strcmp(name, other.name);
        return order != 0 ? order < 0 : card < other.card;
    }
};

const char *NameParameter(Keyword keyword) {
    return keyword == Keyword::nset ? "NSET" : (keyword == Keyword::surface ? "NAME" : "ELSET");
}

std::string UpperCase(std::string text) {
    for (char &c : text) {
        c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    }
    return text;
}

// A name that is another one in the mesh file.
void CompareName(Account *account, const Named &named) {
    const deck::Card &card = account->deck.cards[static_cast<std::size_t>(named.card)];
    const char *parameterName = NameParameter(card.keyword);
    const deck::Parameter *parameter = FindParameter(card, parameterName);
    if (parameter == nullptr || UpperCase(parameter->value) == named.name) {
        return;
    }
    const deck::Place place = PlaceOf(*account, named.card, parameterName);
    if (RemarkOn(*account, named.card, deck::Code::commentInside) != nullptr) {
        Add(account, Code::commentInside, place);
        account->cards[static_cast<std::size_t>(named.card)].flawed = true; // what asks for the name does not find it
    } else if (const deck::Finding *remark = RemarkOn(*account, named.card, deck::Code::abbreviatedParameter)) {
        Add(account, Code::abbreviatedParameter, remark->place, remark->words);
        account->cards[static_cast<std::size_t>(named.card)].flawed = true;
    } else {
        Add(account, Code::nameChanged, place, {parameter->text, named.name});
    }
}

template <class Record> std::vector<Named> NamesOf(const Account &account, Record *list, Keyword keyword) {
    const ByLine<Record> records(list);
    std::vector<Named> names;
    for (std::size_t c = 0; c < account.cards.size(); ++c) {
        if (account.deck.cards[c].keyword == keyword && account.cards[c].state == CardState::held) {
            if (const Record *record = records.Find(account.cards[c].readLine)) {
                names.push_back({record->name, static_cast<int>(c)});
            }
        }
    }
    return names;
}

std::string MeantName(const Account &account, int card) {
    const deck::Card &keywordLine = account.deck.cards[static_cast<std::size_t>(card)];
    const deck::Parameter *parameter = FindParameter(keywordLine, NameParameter(keywordLine.keyword));
    return parameter != nullptr ? parameter->value : "";
}

// Records of one name: sections of one set, which the deck unites, or things that are two.
void CompareTwice(Account *account, std::vector<Named> names, Keyword keyword) {
    std::sort(names.begin(), names.end());
    for (std::size_t i = 1; i < names.size(); ++i) {
        if (std::strcmp(names[i - 1].name, names[i].name) != 0 || names[i].name[0] == '\0') {
            continue;
        }
        const CardUse &use = account->cards[static_cast<std::size_t>(names[i].card)];
        const CardUse &before = account->cards[static_cast<std::size_t>(names[i - 1].card)];
        const bool isSet = keyword == Keyword::nset || keyword == Keyword::elset;
        const bool oneSet = isSet && use.scope == before.scope &&
                            MeantName(*account, names[i].card) == MeantName(*account, names[i - 1].card);
        const deck::Place place = PlaceOf(*account, names[i].card);
        if (oneSet) {
            Add(account, Code::setRepeated, place, {SectionName(*account, names[i].card)});
        } else if (!DeckSays(*account, deck::Code::surfaceTwice, place.line, place.line)) {
            Add(account, Code::nameTwice, PlaceOf(*account, names[i].card, NameParameter(keyword)), {names[i].name});
        }
    }
}

// Sections of elements: each makes a group.
void AccountElementGroups(Account *account) {
    const ByLine<ABQCellBlock> blocks(ABQDeck()->cellBlocks);
    for (std::size_t c = 0; c < account->cards.size(); ++c) {
        const ABQCellBlock *block =
            account->deck.cards[c].keyword == Keyword::element && account->cards[c].state == CardState::held
                ? blocks.Find(account->cards[c].readLine)
                : nullptr;
        if (block == nullptr || block->count == 0) {
            continue;
        }
        const int card = static_cast<int>(c);
        const deck::Parameter *elset = FindParameter(account->deck.cards[c], "ELSET");
        if (block->name[0] == '\0' && (elset == nullptr || elset->text.empty())) {
            Add(account, Code::noGroupName, PlaceOf(*account, card), {}, block->count);
        } else if (std::strncmp(block->name, "C_", 2) == 0) {
            Add(account, Code::cutLoose, PlaceOf(*account, card, "ELSET"), {block->name}, block->count);
        }
    }
}

// Groups whose elements several sections assign.
void AccountDividedGroups(Account *account) {
    const deck::Mesh &mesh = account->mesh;
    for (const deck::DividedGroup &divided : FindDividedGroups(account->deck, mesh, [](std::size_t) { return true; })) {
        const deck::CellGroup &group = mesh.groups[static_cast<std::size_t>(divided.group)];
        if (account->placedHeld[static_cast<std::size_t>(group.placed)] != 0) {
            Add(account, Code::dividedGroup, PlaceOf(*account, divided.card), {group.plain});
        }
    }
}

} // namespace

void AccountGroups(Account *account) {
    const auto compare = [&](const std::vector<Named> &names, Keyword keyword) {
        for (const Named &named : names) {
            CompareName(account, named);
        }
        CompareTwice(account, names, keyword);
    };
    compare(NamesOf(*account, ABQDeck()->cellBlocks, Keyword::element), Keyword::element);
    compare(NamesOf(*account, ABQDeck()->nodeSets, Keyword::nset), Keyword::nset);
    compare(NamesOf(*account, ABQDeck()->cellSets, Keyword::elset), Keyword::elset);
    compare(NamesOf(*account, ABQDeck()->surfaces, Keyword::surface), Keyword::surface);
    AccountElementGroups(account);
    AccountDividedGroups(account);
}

} // namespace account
