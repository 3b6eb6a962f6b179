// Node sets and element sets: sections in the order of the deck, so that a set that names another takes what that one
// holds there; what is defined later is waited for.
#include "deck/assembling.h"

#include <algorithm>
#include <utility>

namespace deck {

namespace {

enum { kNodes, kElements, kWanted, kCodesASet };

int CodeOf(int kind, int index) {
    return index * kCodesASet + kind;
}

std::vector<MeshSet> *SetsOf(Assembling *a, int kind) {
    return kind == kNodes ? &a->mesh->nodeSets : &a->mesh->elementSets;
}

NameMap PlacedNames::*NamesOf(int kind) {
    return kind == kNodes ? &PlacedNames::nodeSets : &PlacedNames::elementSets;
}

const SetTable &TableOf(const Scope &scope, int kind) {
    return kind == kNodes ? scope.nodeSets : scope.elementSets;
}

// A section of a set that takes its turn.
struct Step {
    int order;
    int kind;
    Slot slot;
    int section;
    int set; // position in the mesh's list
};

// What a step works on.
struct At {
    Assembling *a;
    int placed;  // whose set it is
    int members; // whose numbers and names its rows hold: the same, or that of INSTANCE=
    Step step;
    const SetTable *table;
    const SetSection *section;

    MeshSet &Set() const {
        return (*SetsOf(a, step.kind))[static_cast<std::size_t>(step.set)];
    }
    Place PlaceOfRow(std::size_t row) const {
        return {section->file, table->rowLine[row], 1};
    }
    Place PlaceOfCard() const {
        return a->deck->cards[static_cast<std::size_t>(section->card)].place;
    }
};

void Wait(const At &at, int on, const Place &place) {
    const int code = CodeOf(at.step.kind, at.step.set);
    at.a->waiting.on[code].insert(on);
    at.a->waiting.place.emplace(code, place);
}

// Before a list must grow it gives up what it has twice: rows may name one large set many times.
void MakeRoom(std::vector<int> *list, std::size_t more) {
    if (list->size() + more > list->capacity() && !list->empty()) {
        SortOnce(list);
        list->reserve(std::max(list->size() + more, 2 * list->size()));
    }
}

// Takes what the other set (a code) holds now and waits for what that one waits for.
void Take(const At &at, int kind, int index, const Place &place) {
    std::vector<int> &from = (*SetsOf(at.a, kind))[static_cast<std::size_t>(index)].members;
    std::vector<int> &to = at.Set().members;
    if (&from == &to) {
        return; // itself
    }
    const auto waits = at.a->waiting.on.find(CodeOf(kind, index));
    const std::size_t nWaits = waits == at.a->waiting.on.end() ? 0 : waits->second.size();
    if (!at.a->MayTake(from.size() + nWaits, place, at.Set().plain)) {
        return;
    }
    SortOnce(&from);
    if (kind == at.step.kind) {
        MakeRoom(&to, from.size());
        to.insert(to.end(), from.begin(), from.end());
    } else {
        MakeRoom(&to, from.size());
        for (const int element : from) {
            AddNodesOfElement(*at.a->mesh, element, &to);
        }
    }
    if (nWaits > 0) {
        for (const int on : std::set<int>(waits->second)) {
            Wait(at, on, place);
        }
    }
}

// The set of that kind that a row names. False where there is none.
bool TakeNamed(const At &at, int kind, const std::string &name, const Place &place) {
    const Named named = FindNamed(*at.a, at.members, NamesOf(kind), name);
    if (named.placed < 0) {
        return false;
    }
    if (named.number != 0) {
        const int position = kind == kNodes ? FindNode(*at.a, named.placed, named.number)
                                            : FindElement(*at.a, named.placed, named.number);
        if (position >= 0 && kind == at.step.kind) {
            at.Set().members.push_back(position);
        }
        return position >= 0 && kind == at.step.kind;
    }
    if (named.placed == at.placed && at.a->waiting.begun[kind][static_cast<std::size_t>(named.index)] == 0) {
        at.a->Find(Code::setLater, place, {Clip(name), Clip(at.Set().plain)});
        Wait(at, CodeOf(kind, named.index), place);
        return true;
    }
    Take(at, kind, named.index, place);
    return true;
}

// The entries of one row; those that name nothing are one finding.
void TakeRow(const At &at, std::size_t row) {
    const SetTable &table = *at.table;
    std::vector<int> &members = at.Set().members;
    long long nMissing = 0;
    std::string missing;
    for (std::size_t i = table.rowFirst[row]; i < table.rowFirst[row + 1]; ++i) {
        const int entry = table.entries[i];
        if (entry > 0) {
            const int position =
                at.step.kind == kNodes ? FindNode(*at.a, at.members, entry) : FindElement(*at.a, at.members, entry);
            if (position >= 0) {
                members.push_back(position);
            } else if (nMissing++ == 0) {
                missing = std::to_string(entry);
            }
            continue;
        }
        const std::string &name = table.names[static_cast<std::size_t>(-1 - entry)];
        if (!TakeNamed(at, at.step.kind, name, at.PlaceOfRow(row)) && nMissing++ == 0) {
            missing = name;
        }
    }
    if (nMissing > 0) {
        at.a->Find(Code::missingMember, at.PlaceOfRow(row), {Clip(missing), Clip(at.Set().plain)}, nMissing);
    }
}

void TakeRange(const At &at, std::size_t row) {
    const int *range = &at.table->entries[at.table->rowFirst[row]];
    for (const Slot &slot : at.a->slots[static_cast<std::size_t>(at.members)]) {
        const auto scope = static_cast<std::size_t>(slot.scope);
        std::vector<int> &members = at.Set().members;
        const bool ofNodes = at.step.kind == kNodes;
        const NumberIndex &index = (ofNodes ? at.a->nodeIndex : at.a->elementIndex)[scope];
        if (at.a->MayTake(index.CountLooks(range), at.PlaceOfRow(row), at.Set().plain)) {
            index.AddRange(range, static_cast<int>(ofNodes ? slot.firstNode : slot.firstElement), &members);
        }
    }
}

// The rows of a section of nodes or elements that names the set.
void TakeSection(const At &at) {
    const Scope &scope = at.a->At(at.step.slot.scope);
    const auto index = static_cast<std::size_t>(at.section->rowsOf);
    const bool ofNodes = at.step.kind == kNodes;
    const std::size_t first = ofNodes ? at.step.slot.firstNode + scope.nodes.sections[index].first
                                      : at.step.slot.firstElement + scope.elements.sections[index].first;
    const std::size_t count = ofNodes ? scope.nodes.sections[index].count : scope.elements.sections[index].count;
    std::vector<int> &members = at.Set().members;
    for (std::size_t i = 0; i < count; ++i) {
        members.push_back(static_cast<int>(first + i));
    }
    const std::vector<Dropped> &dropped =
        (ofNodes ? at.a->droppedNodes : at.a->droppedElements)[static_cast<std::size_t>(at.step.slot.scope)];
    auto row = std::lower_bound(dropped.begin(), dropped.end(), at.section->rowsOf,
                                [](const Dropped &d, int section) { return d.section < section; });
    for (; row != dropped.end() && row->section == at.section->rowsOf; ++row) {
        const int position =
            ofNodes ? FindNode(*at.a, at.placed, row->number) : FindElement(*at.a, at.placed, row->number);
        members.push_back(position);
    }
}

void TakeSource(const At &at) {
    const SetSection &section = *at.section;
    if (section.source == SetSource::surface) {
        Waiting &waiting = at.a->waiting;
        Wait(at, CodeOf(kWanted, static_cast<int>(waiting.wanted.size())), at.PlaceOfCard());
        waiting.wanted.push_back({at.members, section.sourceName, at.Set().plain, at.PlaceOfCard(), {}});
        return;
    }
    if (section.source == SetSource::elset) {
        if (!TakeNamed(at, kElements, section.sourceName, at.PlaceOfCard())) {
            at.a->Find(Code::missingMember, at.PlaceOfCard(), {Clip(section.sourceName), Clip(at.Set().plain)});
        }
        return;
    }
    if (section.source == SetSource::nodes || section.source == SetSource::elements) {
        TakeSection(at);
        return;
    }
    for (std::size_t row = section.firstRow; row < section.firstRow + section.rowCount; ++row) {
        if (section.source == SetSource::ranges) {
            TakeRange(at, row);
        } else {
            TakeRow(at, row);
        }
    }
}

void TakeStep(Assembling *a, int placed, const Step &step) {
    const SetTable &table = TableOf(a->At(step.slot.scope), step.kind);
    const SetSection &section = table.sections[static_cast<std::size_t>(step.section)];
    At at{a, placed, placed, step, &table, &section};
    if (!section.instance.empty()) {
        const auto instance = a->placedByName.find(section.instance);
        if (instance == a->placedByName.end()) {
            a->Find(Code::missingMember, at.PlaceOfCard(), {Clip(section.instance), Clip(at.Set().plain)});
            return;
        }
        at.members = instance->second;
    }
    TakeSource(at);
    a->waiting.begun[step.kind][static_cast<std::size_t>(step.set)] = 1;
}

// The sets of one table become sets of the mesh, with a step for each section.
void ListSets(Assembling *a, int placed, const Slot &slot, int kind, std::vector<Step> *steps) {
    std::vector<MeshSet> &sets = *SetsOf(a, kind);
    const SetTable &table = TableOf(a->At(slot.scope), kind);
    NameMap &names = a->names[static_cast<std::size_t>(placed)].*NamesOf(kind);
    for (std::size_t i = 0; i < table.sets.size(); ++i) {
        const Set &set = table.sets[i];
        const auto put = names.emplace(set.name, static_cast<int>(sets.size()));
        if (put.second) {
            sets.push_back({"", set.name, placed, {}, {}, true});
        }
        MeshSet &made = sets[static_cast<std::size_t>(put.first->second)];
        made.origins.push_back({slot.scope, static_cast<int>(i)});
        for (const int section : set.sections) {
            const SetSection &at = table.sections[static_cast<std::size_t>(section)];
            made.internal = made.internal && at.internal;
            steps->push_back({at.order, kind, slot, section, put.first->second});
        }
    }
}

void TakeSets(Assembling *a, int placed) {
    std::vector<Step> steps;
    for (const Slot &slot : a->slots[static_cast<std::size_t>(placed)]) {
        ListSets(a, placed, slot, kNodes, &steps);
        ListSets(a, placed, slot, kElements, &steps);
    }
    std::sort(steps.begin(), steps.end(), [](const Step &p, const Step &q) { return p.order < q.order; });
    a->waiting.begun[kNodes].resize(a->mesh->nodeSets.size(), 0);
    a->waiting.begun[kElements].resize(a->mesh->elementSets.size(), 0);
    for (const Step &step : steps) {
        TakeStep(a, placed, step);
    }
}

// The sets and surfaces that the one of that code waits for, taken in.
void TakeWaited(Assembling *a, int code) {
    std::vector<int> &to = (*SetsOf(a, code % kCodesASet))[static_cast<std::size_t>(code / kCodesASet)].members;
    for (const int on : a->waiting.on[code]) {
        const int kind = on % kCodesASet;
        const auto index = static_cast<std::size_t>(on / kCodesASet);
        const std::vector<int> &from =
            kind == kWanted ? a->waiting.wanted[index].nodes : (*SetsOf(a, kind))[index].members;
        if (!a->MayTake(from.size(), a->waiting.place[code], "")) {
            continue;
        }
        if (kind == kElements && code % kCodesASet == kNodes) {
            for (const int element : from) {
                AddNodesOfElement(*a->mesh, element, &to);
            }
        } else if (on != code) {
            to.insert(to.end(), from.begin(), from.end());
        }
    }
    SortOnce(&to);
}

// Those that are waited for come first. Where the way comes back to a set, sets name each other.
void Settle(Assembling *a, int first, std::unordered_map<int, int> *states) {
    enum { kNew, kOpen, kDone };
    struct Level {
        int code;
        std::set<int>::const_iterator next;
    };
    std::vector<Level> levels;
    const auto open = [&](int code) {
        (*states)[code] = kOpen;
        levels.push_back({code, a->waiting.on[code].begin()});
    };
    open(first);
    while (!levels.empty()) {
        Level &level = levels.back();
        if (level.next == a->waiting.on[level.code].end()) {
            TakeWaited(a, level.code);
            (*states)[level.code] = kDone;
            levels.pop_back();
            continue;
        }
        const int on = *level.next++;
        if (on % kCodesASet == kWanted || a->waiting.on.count(on) == 0) {
            continue;
        }
        const int state = (*states)[on];
        if (state == kOpen) {
            const MeshSet &set =
                (*SetsOf(a, level.code % kCodesASet))[static_cast<std::size_t>(level.code / kCodesASet)];
            a->Find(Code::setCycle, a->waiting.place[level.code], {Clip(set.plain)});
        } else if (state == kNew) {
            open(on);
        }
    }
}

void SettleAll(Assembling *a, int kind) {
    std::unordered_map<int, int> states;
    std::vector<int> codes;
    for (const auto &waits : a->waiting.on) {
        codes.push_back(waits.first);
    }
    std::sort(codes.begin(), codes.end());
    for (const int code : codes) {
        if (code % kCodesASet == kind && states[code] == 0) {
            Settle(a, code, &states);
        }
    }
    for (MeshSet &set : *SetsOf(a, kind)) {
        SortOnce(&set.members);
        set.members.shrink_to_fit();
        set.name = FullName(*a, set.placed, set.plain, NamesOf(kind));
    }
}

void TakeSurfaceNodes(Assembling *a, SurfaceWanted *wanted) {
    const Named named = FindNamed(*a, wanted->placed, &PlacedNames::surfaces, wanted->surface);
    if (named.index < 0) {
        a->Find(Code::missingMember, wanted->place, {Clip(wanted->surface), Clip(wanted->set)});
        return;
    }
    const std::vector<Face> &faces = a->mesh->surfaces[static_cast<std::size_t>(named.index)].faces;
    if (!a->MayTake(faces.size(), wanted->place, wanted->set)) {
        return;
    }
    for (const Face &face : faces) {
        AddNodesOfFace(*a, face, &wanted->nodes);
    }
    SortOnce(&wanted->nodes);
}

void TakeNodesOfSurfaces(Assembling *a) {
    for (MeshSurface &surface : a->mesh->surfaces) {
        if (surface.ofNodes) {
            AddNodeRows(a, &surface);
        }
    }
}

} // namespace

void AssembleElementSets(Assembling *a) {
    for (int placed = 0; placed <= a->Root(); ++placed) {
        TakeSets(a, placed);
    }
    SettleAll(a, kElements);
}

void AssembleNodeSets(Assembling *a) {
    for (SurfaceWanted &wanted : a->waiting.wanted) {
        TakeSurfaceNodes(a, &wanted);
    }
    SettleAll(a, kNodes);
    TakeNodesOfSurfaces(a);
}

} // namespace deck
