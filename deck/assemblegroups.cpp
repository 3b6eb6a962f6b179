// Cell groups, and the sections that assign elements.
#include "deck/assembling.h"

#include <algorithm>
#include <map>
#include <utility>

namespace deck {

namespace {

constexpr const char *kAll = "ALL"; // group of elements that nothing names, in a deck without instances

constexpr int kNotYet = -2; // no assignment, and not "none" either

// Groups by the placed part and the name.
using GroupMap = std::map<std::pair<int, std::string>, int>;

// Lists the assignment with the set that it is about.
void Assign(Assembling *a, int placed, int scope, int index) {
    Mesh &mesh = *a->mesh;
    const Assignment &assignment = a->At(scope).assignments[static_cast<std::size_t>(index)];
    const Named named = FindNamed(*a, placed, &PlacedNames::elementSets, assignment.elset);
    mesh.assignments.push_back({placed, scope, index, named.index});
    if (named.index < 0) {
        const Card &card = a->deck->cards[static_cast<std::size_t>(assignment.card)];
        a->Find(Code::missingMember, card.place, {Clip(assignment.elset), Clip(card.name)});
    }
}

// Marks the sets' elements with the assignment that they are in; later ones take over. A set that is assigned again
// later need not be looked at before.
void MarkAssigned(Mesh *mesh) {
    std::vector<int> lastOf(mesh->elementSets.size(), -1);
    for (std::size_t i = 0; i < mesh->assignments.size(); ++i) {
        if (mesh->assignments[i].set >= 0) {
            lastOf[static_cast<std::size_t>(mesh->assignments[i].set)] = static_cast<int>(i);
        }
    }
    for (std::size_t i = 0; i < mesh->assignments.size(); ++i) {
        const int set = mesh->assignments[i].set;
        if (set < 0 || lastOf[static_cast<std::size_t>(set)] != static_cast<int>(i)) {
            continue;
        }
        for (const int element : mesh->elementSets[static_cast<std::size_t>(set)].members) {
            mesh->assignment[static_cast<std::size_t>(element)] = static_cast<int>(i);
        }
    }
}

int GroupNamed(Assembling *a, GroupMap *groups, int placed, const std::string &plain, GroupFrom from) {
    const auto put = groups->emplace(std::make_pair(placed, plain), static_cast<int>(a->mesh->groups.size()));
    if (put.second) {
        const std::string name =
            from == GroupFrom::scope ? plain : FullName(*a, placed, plain, &PlacedNames::elementSets);
        a->mesh->groups.push_back({name, plain, placed, from});
    }
    return put.first->second;
}

// Groups by name, and those that sets have made: neighbours may lie in sets with long names, in turn.
struct Groups {
    GroupMap named;
    GroupMap scopes; // a set may have the name of an instance
    std::vector<int> ofSet;
};

// The group of a section's set.
int GroupOfSet(Assembling *a, Groups *groups, int assigned) {
    const auto at = static_cast<std::size_t>(a->mesh->assignments[static_cast<std::size_t>(assigned)].set);
    groups->ofSet.resize(a->mesh->elementSets.size(), -1);
    if (groups->ofSet[at] == -1) {
        const MeshSet &set = a->mesh->elementSets[at];
        groups->ofSet[at] = GroupNamed(a, &groups->named, set.placed, set.plain, GroupFrom::section);
    }
    return groups->ofSet[at];
}

void GroupRun(Assembling *a, const ElementRun &run, Groups *groups) {
    Mesh &mesh = *a->mesh;
    const ElementSection &section = a->At(run.scope).elements.sections[static_cast<std::size_t>(run.section)];
    const int whole =
        section.elset.empty() ? -1 : GroupNamed(a, &groups->named, run.placed, section.elset, GroupFrom::elset);
    const std::string &instance = mesh.placed[static_cast<std::size_t>(run.placed)].name;
    int before = kNotYet; // neighbours mostly have one section
    int group = whole;
    for (std::size_t e = run.first; e < run.first + run.count; ++e) {
        const int assigned = mesh.assignment[e];
        if (whole < 0 && assigned != before) {
            group = assigned < 0 ? GroupNamed(a, &groups->scopes, run.placed, instance.empty() ? kAll : instance,
                                              GroupFrom::scope)
                                 : GroupOfSet(a, groups, assigned);
            before = assigned;
        }
        mesh.group[e] = group;
    }
}

// Whether the section, which has no rows, makes a group all the same: the *ELEMENT line of a type that makes cells.
bool MakesEmptyGroup(const Assembling &a, const ElementSection &section) {
    const TypeClass kind = a.deck->types[static_cast<std::size_t>(section.type)].type.kind;
    const bool cells = kind == TypeClass::cell || kind == TypeClass::sameShape || kind == TypeClass::split;
    return cells && !section.elset.empty() &&
           a.deck->cards[static_cast<std::size_t>(section.card)].keyword == Keyword::element;
}

// The groups of one scope's sections; returns the run behind theirs.
std::size_t GroupSections(Assembling *a, int placed, int scope, std::size_t run, Groups *groups) {
    for (const ElementSection &section : a->At(scope).elements.sections) {
        if (section.count > 0) {
            GroupRun(a, a->mesh->elementRuns[run++], groups);
        } else if (MakesEmptyGroup(*a, section)) {
            GroupNamed(a, &groups->named, placed, section.elset, GroupFrom::elset);
        }
    }
    return run;
}

} // namespace

void AssembleGroups(Assembling *a) {
    Mesh &mesh = *a->mesh;
    mesh.assignment.assign(mesh.elementNumber.size(), -1);
    mesh.group.assign(mesh.elementNumber.size(), -1);
    for (int placed = 0; placed <= a->Root(); ++placed) {
        for (const Slot &slot : a->slots[static_cast<std::size_t>(placed)]) {
            for (std::size_t i = 0; i < a->At(slot.scope).assignments.size(); ++i) {
                Assign(a, placed, slot.scope, static_cast<int>(i));
            }
        }
    }
    MarkAssigned(&mesh);
    Groups groups;
    std::size_t run = 0; // they stand in the order of the sections that have rows
    for (int placed = 0; placed <= a->Root(); ++placed) {
        for (const Slot &slot : a->slots[static_cast<std::size_t>(placed)]) {
            run = GroupSections(a, placed, slot.scope, run, &groups);
        }
    }
}

std::vector<DividedGroup> FindDividedGroups(const Deck &deck, const Mesh &mesh,
                                            const std::function<bool(std::size_t element)> &counts) {
    std::vector<int> first(mesh.groups.size(), -1);  // assignment of the group's first element that has one
    std::vector<int> second(mesh.groups.size(), -1); // another one
    for (std::size_t e = 0; e < mesh.group.size() && !mesh.assignments.empty(); ++e) {
        const auto group = static_cast<std::size_t>(mesh.group[e]);
        const int assignment = mesh.assignment[e];
        if (mesh.group[e] < 0 || assignment < 0 || mesh.groups[group].from != GroupFrom::elset || !counts(e)) {
            continue;
        }
        if (first[group] == -1) {
            first[group] = assignment;
        } else if (first[group] != assignment && second[group] == -1) {
            second[group] = std::max(first[group], assignment);
        }
    }
    std::vector<DividedGroup> divided;
    for (std::size_t g = 0; g < second.size(); ++g) {
        if (second[g] != -1) {
            const Mesh::Assigned &by = mesh.assignments[static_cast<std::size_t>(second[g])];
            divided.push_back(
                {static_cast<int>(g),
                 deck.scopes[static_cast<std::size_t>(by.scope)].assignments[static_cast<std::size_t>(by.index)].card});
        }
    }
    return divided;
}

} // namespace deck
