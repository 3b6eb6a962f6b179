// What the reader passes over on the way from rows to a mesh: included files, generators, instances.
#include "account/account.h"
#include "account/records.h"

#include <algorithm>

namespace account {

namespace {

using deck::Keyword;

// For each file, whether anything of a mesh comes from it.
std::vector<char> FilesWithMesh(const deck::Deck &deck) {
    std::vector<char> holds(deck.files.size(), 0);
    const auto note = [&](int file) { holds[static_cast<std::size_t>(file)] = 1; };
    for (const deck::Card &card : deck.cards) {
        if (card.keyword != Keyword::include && card.keyword != Keyword::section && card.place.file > 0) {
            note(card.place.file);
        }
    }
    for (const deck::Scope &scope : deck.scopes) {
        const auto noteAll = [&](const auto &sections) {
            for (const auto &section : sections) {
                note(section.file);
            }
        };
        noteAll(scope.nodes.sections);
        noteAll(scope.elements.sections);
        noteAll(scope.nodeSets.sections);
        noteAll(scope.elementSets.sections);
        noteAll(scope.surfaces.sections);
    }
    for (std::size_t f = deck.files.size(); f-- > 1;) { // an included file comes behind the one that includes it
        if (holds[f] != 0 && deck.files[f].includedFrom > 0) {
            note(deck.files[f].includedFrom);
        }
    }
    return holds;
}

bool IsGenerator(Keyword keyword, Code *code) {
    switch (keyword) {
    case Keyword::ngen:
        *code = Code::noNgen;
        return true;
    case Keyword::nfill:
        *code = Code::noNfill;
        return true;
    case Keyword::ncopy:
        *code = Code::noNcopy;
        return true;
    case Keyword::elgen:
        *code = Code::noElgen;
        return true;
    case Keyword::elcopy:
        *code = Code::noElcopy;
        return true;
    default:
        return false;
    }
}

constexpr int kNoInstance = -1; // Numbered::placed of what stands in a part without instance

struct Numbered {
    int number;
    int placed;
    bool operator<(const Numbered &other) const {
        return number != other.number ? number < other.number : placed < other.placed;
    }
};

struct Clash {
    int with = -1; // placed
    long long count = 0;
};

// Numbers that several parts have; for each part but the first of them, how many.
std::vector<Clash> FindClashes(std::vector<Numbered> *numbers, std::size_t nPlaced, std::vector<int> *clashing) {
    std::vector<Clash> clashes(nPlaced);
    std::sort(numbers->begin(), numbers->end());
    for (std::size_t i = 1; i < numbers->size(); ++i) {
        const Numbered &a = (*numbers)[i - 1];
        const Numbered &b = (*numbers)[i];
        if (a.number == b.number && a.placed != b.placed) {
            if (a.placed != kNoInstance) { // else the part without instance is what is told
                Clash &clash = clashes[static_cast<std::size_t>(b.placed)];
                clash.with = clash.with == -1 ? a.placed : clash.with;
                ++clash.count;
            }
            if (clashing->empty() || clashing->back() != a.number) {
                clashing->push_back(a.number);
            }
        }
    }
    return clashes;
}

std::string PlacedName(const deck::Mesh &mesh, int placed) {
    const deck::Placed &part = mesh.placed[static_cast<std::size_t>(placed)];
    return part.name.empty() ? "the deck itself" : part.name;
}

// Whether rows of nodes or elements stand in the scope.
bool HasRows(const Account &account, int scope) {
    if (scope < 0) {
        return false;
    }
    const deck::Scope &at = account.deck.scopes[static_cast<std::size_t>(scope)];
    return !at.nodes.sections.empty() || !at.elements.sections.empty();
}

// The keyword line of the part (or of the instance that holds the rows itself); of the deck itself that of its first
// nodes, or elements.
deck::Place PlaceOfPlaced(const Account &account, const deck::Placed &placed, bool nodes) {
    if (placed.part == 0) {
        const deck::Scope &root = account.deck.scopes[0];
        return PlaceOf(account, nodes ? root.nodes.sections[0].card : root.elements.sections[0].card);
    }
    const int scope = HasRows(account, placed.part) ? placed.part : placed.own;
    return PlaceOf(account, account.deck.scopes[static_cast<std::size_t>(scope)].card);
}

// The numbers that the reader holds of a section in a part without instance.
template <class Record, class Sections>
void AddNumbers(const Account &account, const ByLine<Record> &records, const Sections &sections,
                std::vector<Numbered> *numbers) {
    for (const auto &section : sections) {
        const CardUse &use = account.cards[static_cast<std::size_t>(section.card)];
        const Record *record =
            use.state == CardState::held && !section.continued ? records.Find(use.readLine) : nullptr;
        for (int i = 0; record != nullptr && i < record->count; ++i) {
            numbers->push_back({record->i1GID[i], kNoInstance});
        }
    }
}

void AddNumbersWithoutInstance(const Account &account, std::vector<Numbered> *nodes, std::vector<Numbered> *elements) {
    std::vector<char> isPlaced(account.deck.scopes.size(), 0);
    for (const deck::Placed &placed : account.mesh.placed) {
        for (const int scope : {placed.part, placed.own}) {
            if (scope >= 0) {
                isPlaced[static_cast<std::size_t>(scope)] = 1;
            }
        }
    }
    const ByLine<ABQNodeBlock> nodeBlocks(ABQDeck()->nodeBlocks);
    const ByLine<ABQCellBlock> cellBlocks(ABQDeck()->cellBlocks);
    for (std::size_t s = 1; s < isPlaced.size(); ++s) {
        if (isPlaced[s] == 0) {
            AddNumbers(account, nodeBlocks, account.deck.scopes[s].nodes.sections, nodes);
            AddNumbers(account, cellBlocks, account.deck.scopes[s].elements.sections, elements);
        }
    }
}

// The numbers of a run whose section the reader holds.
template <class Run, class Sections>
void AddHeld(const Account &account, const Run &run, const Sections &sections, const std::vector<int> &column,
             std::vector<Numbered> *numbers) {
    const auto &section = sections[static_cast<std::size_t>(run.section)];
    if (account.placedHeld[static_cast<std::size_t>(run.placed)] == 0 || section.file != 0 ||
        account.cards[static_cast<std::size_t>(section.card)].state != CardState::held) {
        return;
    }
    for (std::size_t i = run.first; i < run.first + run.count; ++i) {
        numbers->push_back({column[i], run.placed});
    }
}

void AccountClashes(Account *account) {
    const deck::Mesh &mesh = account->mesh;
    std::vector<Numbered> nodes;
    std::vector<Numbered> elements;
    AddNumbersWithoutInstance(*account, &nodes, &elements);
    const auto nHeld = std::count(account->placedHeld.begin(), account->placedHeld.end(), 1);
    if (nHeld <= 1 && nodes.empty() && elements.empty()) {
        return;
    }
    for (const deck::NodeRun &run : mesh.nodeRuns) {
        const deck::Scope &scope = account->deck.scopes[static_cast<std::size_t>(run.scope)];
        AddHeld(*account, run, scope.nodes.sections, mesh.nodeNumber, &nodes);
    }
    for (const deck::ElementRun &run : mesh.elementRuns) {
        const deck::Scope &scope = account->deck.scopes[static_cast<std::size_t>(run.scope)];
        AddHeld(*account, run, scope.elements.sections, mesh.elementNumber, &elements);
    }
    const std::vector<Clash> ofNodes = FindClashes(&nodes, mesh.placed.size(), &account->clashingNodes);
    const std::vector<Clash> ofElements = FindClashes(&elements, mesh.placed.size(), &account->clashingElements);
    for (std::size_t p = 0; p < mesh.placed.size(); ++p) {
        const long long count = ofNodes[p].count + ofElements[p].count;
        if (count > 0) {
            const int with = ofNodes[p].count > 0 ? ofNodes[p].with : ofElements[p].with;
            Add(account, Code::numberClash, PlaceOfPlaced(*account, mesh.placed[p], ofNodes[p].count > 0),
                {std::to_string(ofNodes[p].count), std::to_string(ofElements[p].count),
                 PlacedName(mesh, static_cast<int>(p)), PlacedName(mesh, with)},
                count);
        }
    }
}

} // namespace

void AccountFiles(Account *account) {
    const deck::Deck &deck = account->deck;
    const std::vector<char> holds = FilesWithMesh(deck);
    account->passedOver.assign(deck.files.size(), 0);
    std::vector<const deck::Card *> includes; // of the deck's own file, by line
    for (const deck::Card &card : deck.cards) {
        if (card.keyword == Keyword::include && card.place.file == 0) {
            includes.push_back(&card);
        }
    }
    for (std::size_t f = 1; f < deck.files.size(); ++f) {
        const int from = deck.files[f].includedFrom;
        account->passedOver[f] = from == 0 ? holds[f] : account->passedOver[static_cast<std::size_t>(from)];
        if (from != 0 || holds[f] == 0) {
            continue;
        }
        const auto found = std::lower_bound(includes.begin(), includes.end(), deck.files[f].line,
                                            [](const deck::Card *card, int line) { return card->lastLine < line; });
        if (found != includes.end() && (*found)->place.line <= deck.files[f].line) {
            Add(account, Code::include, (*found)->place, {deck.files[f].path});
        }
    }
}

void AccountGenerators(Account *account) {
    const deck::Deck &deck = account->deck;
    std::vector<long long> made(deck.cards.size(), 0);
    for (const deck::Scope &scope : deck.scopes) {
        for (const deck::NodeSection &section : scope.nodes.sections) {
            made[static_cast<std::size_t>(section.card)] += static_cast<long long>(section.count);
        }
        for (const deck::ElementSection &section : scope.elements.sections) {
            made[static_cast<std::size_t>(section.card)] += static_cast<long long>(section.count);
        }
    }
    for (std::size_t c = 0; c < deck.cards.size(); ++c) {
        Code code;
        if (made[c] > 0 && deck.cards[c].place.file == 0 && IsGenerator(deck.cards[c].keyword, &code)) {
            Add(account, code, deck.cards[c].place, {}, made[c]);
        }
    }
}

// The reader has the rows of a part once, where they stand. They count for the first instance of the part. An instance
// of an empty part brings rows of its own.
void AccountInstances(Account *account) {
    const deck::Mesh &mesh = account->mesh;
    account->placedHeld.assign(mesh.placed.size(), 1);
    std::vector<char> partSeen(account->deck.scopes.size(), 0);
    for (std::size_t p = 0; p < mesh.placed.size(); ++p) {
        const deck::Placed &placed = mesh.placed[p];
        if (placed.instance == -1) {
            continue;
        }
        const deck::Instance &instance = account->deck.instances[static_cast<std::size_t>(placed.instance)];
        const bool ofPart = placed.part > 0 && HasRows(*account, placed.part);
        const bool again = ofPart && partSeen[static_cast<std::size_t>(placed.part)] != 0;
        if (ofPart) {
            partSeen[static_cast<std::size_t>(placed.part)] = 1;
        }
        account->placedHeld[p] = again ? 0 : 1;
        if (PlaceOf(*account, instance.card).file != 0) {
            continue; // that of the include has been told
        }
        if (again) {
            Add(account, Code::instanceCopied, PlaceOf(*account, instance.card),
                {placed.name, account->deck.scopes[static_cast<std::size_t>(placed.part)].name},
                static_cast<long long>(placed.nElements));
        } else if ((instance.moved || instance.turned) && placed.nNodes > 0) {
            Add(account, Code::instanceMoved, PlaceOf(*account, instance.card), {placed.name},
                static_cast<long long>(placed.nNodes));
        }
    }
    AccountClashes(account);
}

} // namespace account
