// Node sets: who of their members carries their tag in the end. Element sets: whether anything comes of them.
#include "account/account.h"
#include "account/records.h"

#include "deck/text.h"

#include <algorithm>
#include <map>
#include <set>

namespace account {

namespace {

using deck::MeshSet;
using deck::SetSection;
using deck::SetSource;

const SetSection &SectionAt(const deck::SetTable &table, int section) {
    return table.sections[static_cast<std::size_t>(section)];
}

// One set of the mesh with the reader's records of it.
struct HeldSet {
    std::vector<const ABQSet *> records;
    std::vector<int> cards;   // of the records
    std::vector<int> tags;    // of the records, ascending
    std::vector<int> numbers; // that the records list, ascending; of a single one the record's own do
    bool whole = true;        // every section of it is held, and its rows are alike
};

HeldSet FindRecords(const Account &account, const MeshSet &set, const ByLine<ABQSet> &byLine, bool ofNodes) {
    HeldSet held;
    for (const deck::Origin &origin : set.origins) {
        const deck::Scope &scope = account.deck.scopes[static_cast<std::size_t>(origin.scope)];
        const deck::SetTable &table = ofNodes ? scope.nodeSets : scope.elementSets;
        for (const int s : table.sets[static_cast<std::size_t>(origin.index)].sections) {
            const SetSection &section = SectionAt(table, s);
            const CardUse &use = account.cards[static_cast<std::size_t>(section.card)];
            const bool list = section.source == SetSource::rows || section.source == SetSource::ranges;
            const ABQSet *record = list && use.state == CardState::held ? byLine.Find(use.readLine) : nullptr;
            held.whole = held.whole && record != nullptr && !use.flawed;
            if (record != nullptr && (held.cards.empty() || held.cards.back() != section.card)) {
                held.records.push_back(record);
                held.cards.push_back(section.card);
            }
        }
    }
    return held;
}

// A set may have as many records as members.
void SortRecords(HeldSet *held) {
    for (const ABQSet *record : held->records) {
        held->tags.push_back(record->tag);
        if (held->records.size() > 1) {
            held->numbers.insert(held->numbers.end(), record->numbers, record->numbers + record->count);
        }
    }
    std::sort(held->tags.begin(), held->tags.end());
    std::sort(held->numbers.begin(), held->numbers.end());
}

bool HasTag(const HeldSet &held, int tag) {
    return std::binary_search(held.tags.begin(), held.tags.end(), tag);
}

// Whether one of the reader's records lists the number.
bool Lists(const HeldSet &held, int number) {
    const ABQSet &first = *held.records.front();
    return held.records.size() > 1 ? std::binary_search(held.numbers.begin(), held.numbers.end(), number)
                                   : std::binary_search(first.numbers, first.numbers + first.count, number);
}

// What became of a set's members.
struct Fate {
    std::map<int, long long> taken; // by the tag of the set that has them
    long long unused = 0;           // no element names them
    long long lost = 0;             // for no reason that is known
    long long held = 0;             // they carry the set's tag
};

Fate FateOf(Account *account, const MeshSet &set, const HeldSet &held) {
    Fate fate;
    const bool tellUnused = !account->mayBeMissing && !account->mesh.elementNumber.empty();
    for (const int node : set.members) {
        const auto at = static_cast<std::size_t>(node);
        const int number = account->mesh.nodeNumber[at];
        if (account->nodeUsed[at] != kUsed && tellUnused) {
            ++fate.unused;
            account->nodeUsed[at] = kToldUnused;
        }
        const int tag = account->heldNodes->TagOf(number);
        const bool mine = HasTag(held, tag);
        fate.held += mine ? 1 : 0;
        if (mine || !HoldsNode(*account, node) || !Lists(held, number)) {
            continue;
        }
        if (tag > 0) {
            ++fate.taken[tag];
        } else if (!std::binary_search(account->repeatedNodes.begin(), account->repeatedNodes.end(), number)) {
            ++fate.lost;
        }
    }
    return fate;
}

// The reader's node sets by their tag.
struct TaggedSets {
    std::vector<const ABQSet *> sets;
    std::vector<long long> counts; // nodes that carry the tag

    TaggedSets(const ByLine<ABQSet> &byLine, const HeldNodes &nodes)
        : sets(byLine.all().size() + 1, nullptr), counts(byLine.all().size() + 1, 0) {
        for (const ABQSet *record : byLine.all()) {
            sets[static_cast<std::size_t>(record->tag)] = record;
        }
        for (std::size_t i = 0; i < nodes.numbers().size() && !byLine.all().empty(); ++i) {
            if (i == 0 || nodes.numbers()[i] != nodes.numbers()[i - 1]) {
                ++counts[static_cast<std::size_t>(nodes.TagOf(nodes.numbers()[i]))];
            }
        }
    }
};

// Nodes that carry the set's tag though the deck does not mean them, where nothing that has been told explains it.
void TellStrangers(Account *account, const MeshSet &set, const HeldSet &held, long long nHeld,
                   const TaggedSets &tagged) {
    long long nTagged = 0;
    for (const ABQSet *record : held.records) {
        nTagged += tagged.counts[static_cast<std::size_t>(record->tag)];
    }
    const int first = PlaceOf(*account, held.cards.front()).line;
    const int last = LastLineOf(*account, held.cards.back());
    const bool explained = !held.whole || account->mayBeMissing || account->rowsTakenIn ||
                           !account->clashingNodes.empty() ||
                           DeckSays(*account, deck::Code::missingMember, first, last) ||
                           DeckSays(*account, deck::Code::badNumber, first, last) ||
                           DeckSays(*account, deck::Code::numberRange, first, last);
    if (nTagged > nHeld && !explained) {
        Add(account, Code::differs, PlaceOf(*account, held.cards.front()),
            {"the translator puts more nodes into node set " + deck::Clip(set.plain) + " than the deck does"},
            nTagged - nHeld);
    }
}

void TellFate(Account *account, const MeshSet &set, const HeldSet &held, const TaggedSets &tagged) {
    const Fate fate = FateOf(account, set, held);
    const int card = held.cards.back();
    TellStrangers(account, set, held, fate.held, tagged);
    for (const auto &[tag, count] : fate.taken) {
        Add(account, Code::overlapNodes, PlaceOf(*account, card),
            {deck::Clip(set.plain), tagged.sets[static_cast<std::size_t>(tag)]->name}, count);
    }
    if (fate.unused > 0) {
        Add(account, Code::unusedNodeSet, PlaceOf(*account, held.cards.front()), {deck::Clip(set.plain)}, fate.unused);
    }
    if (fate.lost > 0) {
        Add(account, Code::differs, PlaceOf(*account, card),
            {std::to_string(fate.lost) + " members of node set " + deck::Clip(set.plain) + " do not carry its tag"},
            fate.lost);
    }
}

// What *NODE lines put into a set.
struct OnNodes {
    int card = -1; // the first of them that is held
    std::size_t count = 0;
    bool alone = true; // no other line makes the set
};

OnNodes FindOnNodes(const Account &account, const deck::Scope &scope, const deck::Set &set) {
    OnNodes found;
    for (const int s : set.sections) {
        const SetSection &section = SectionAt(scope.nodeSets, s);
        if (section.source != SetSource::nodes) {
            found.alone = false;
            continue;
        }
        found.count += scope.nodes.sections[static_cast<std::size_t>(section.rowsOf)].count;
        const bool held = account.cards[static_cast<std::size_t>(section.card)].state == CardState::held;
        found.card = found.card == -1 && held ? section.card : found.card;
    }
    return found;
}

// NSET= on *NODE lines.
void AccountSetsOnNodes(Account *account) {
    for (const deck::Scope &scope : account->deck.scopes) {
        std::size_t nNodes = 0;
        for (const deck::NodeSection &section : scope.nodes.sections) {
            nNodes += section.count;
        }
        for (const deck::Set &set : scope.nodeSets.sets) {
            const OnNodes on = FindOnNodes(*account, scope, set);
            if (on.card == -1 || (on.count == 0 && !on.alone)) {
                continue;
            }
            const bool all = on.count == nNodes && nNodes > 0;
            Add(account, all ? Code::allNodesSet : Code::setOnNode, PlaceOf(*account, on.card, "NSET"), {set.name},
                static_cast<long long>(on.count));
        }
    }
}

void AccountNodeSets(Account *account) {
    const ByLine<ABQSet> byLine(ABQDeck()->nodeSets);
    const TaggedSets tagged(byLine, *account->heldNodes);
    for (const MeshSet &set : account->mesh.nodeSets) {
        if (account->placedHeld[static_cast<std::size_t>(set.placed)] == 0) {
            continue;
        }
        HeldSet held = FindRecords(*account, set, byLine, true);
        if (held.records.empty()) {
            continue; // what became of its sections has been told
        }
        SortRecords(&held);
        const deck::Place place = PlaceOf(*account, held.cards.front());
        if (set.members.empty()) {
            if (held.whole &&
                !DeckSays(*account, deck::Code::missingMember, place.line, LastLineOf(*account, held.cards.back()))) {
                Add(account, Code::emptySet, place, {"node set", deck::Clip(set.plain)});
            }
            continue;
        }
        TellFate(account, set, held, tagged);
    }
}

// Names of element sets that rows of surfaces, other sets, groups or sections make use of.
std::set<std::string> UsedNames(const deck::Scope &scope) {
    std::set<std::string> used(scope.surfaces.names.begin(), scope.surfaces.names.end());
    used.insert(scope.elementSets.names.begin(), scope.elementSets.names.end());
    for (const deck::ElementSection &section : scope.elements.sections) {
        used.insert(section.elset);
    }
    for (const SetSection &section : scope.nodeSets.sections) {
        used.insert(section.sourceName);
    }
    for (const deck::Assignment &assignment : scope.assignments) {
        used.insert(assignment.elset);
    }
    return used;
}

void AccountElementSets(Account *account) {
    const ByLine<ABQSet> byLine(ABQDeck()->cellSets);
    std::map<int, std::set<std::string>> usedOf;
    std::set<std::string> ofRoot; // from outside a part its sets are called INSTANCE.NAME
    for (const std::string &name : UsedNames(account->deck.scopes[0])) {
        ofRoot.insert(name.substr(name.find('.') + 1));
    }
    for (const MeshSet &set : account->mesh.elementSets) {
        const HeldSet held = FindRecords(*account, set, byLine, false);
        if (account->placedHeld[static_cast<std::size_t>(set.placed)] == 0 || held.records.empty()) {
            continue;
        }
        const deck::Place place = PlaceOf(*account, held.cards.front());
        const int scope = set.origins.front().scope;
        if (usedOf.count(scope) == 0) {
            usedOf[scope] = UsedNames(account->deck.scopes[static_cast<std::size_t>(scope)]);
        }
        if (set.members.empty() && held.whole &&
            !DeckSays(*account, deck::Code::missingMember, place.line, LastLineOf(*account, held.cards.back()))) {
            Add(account, Code::emptySet, place, {"element set", deck::Clip(set.plain)});
        } else if (usedOf[scope].count(set.plain) == 0 && ofRoot.count(set.plain) == 0) {
            Add(account, Code::setWithoutGroup, place, {deck::Clip(set.plain)});
        }
    }
}

} // namespace

void AccountSets(Account *account) {
    AccountSetsOnNodes(account);
    AccountNodeSets(account);
    AccountElementSets(account);
}

} // namespace account
