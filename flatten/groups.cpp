// Cell groups and element sets: which group an element belongs to, and the names of both, which are of one kind.
#include "flatten/names.h"
#include "flatten/origins.h"
#include "flatten/overlaps.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <numeric>
#include <utility>

namespace flatten {

namespace {

using deck::ElementRun;
using deck::MeshSet;

constexpr int kNoSet = -1;

// A group with the element set that it is, where it is one.
struct Group {
    std::string name;
    int set = kNoSet;
    bool used = false; // by a cell
    long long cells = 0;
    bool ofOrder[2] = {false, false}; // it has cells of first, of second order
    std::string given;                // final name
};

using SetIndex = std::map<std::pair<int, std::string>, int>; // by placed part and name

// A section that the translator will cut loose.
struct Loose {
    std::size_t section;
    deck::Place place;
};

struct Grouping {
    Making *m;
    std::vector<Group> groups;
    std::vector<long long> setCells; // of each element set: elements that are cells
    std::vector<char> own;           // it has a section of its own
    std::vector<char> listed;        // it is written as a set
    std::vector<Loose> loose;
    Names names;
};

SetIndex IndexSets(const deck::Mesh &mesh) {
    SetIndex index;
    for (std::size_t s = 0; s < mesh.elementSets.size(); ++s) {
        index.emplace(std::make_pair(mesh.elementSets[s].placed, mesh.elementSets[s].plain), static_cast<int>(s));
    }
    return index;
}

// The groups as the mesh has them. The name of an instance alone cuts nothing loose.
void GroupByLines(Grouping *g) {
    const deck::Mesh &mesh = g->m->mesh;
    const SetIndex sets = IndexSets(mesh);
    for (const deck::CellGroup &group : mesh.groups) {
        const auto found = sets.find({group.placed, group.plain});
        const bool isSet = group.from != deck::GroupFrom::scope && found != sets.end();
        const bool loose = !isSet && group.from == deck::GroupFrom::scope && group.name.compare(0, 2, "C_") == 0;
        g->groups.push_back(
            {(loose ? "_" : "") + group.name, isSet ? found->second : kNoSet, false, 0, {false, false}, ""});
    }
    g->m->group = mesh.group;
}

// The set's group, made where it is not there.
int GroupOfSet(Grouping *g, int set, std::map<int, int> *bySet) {
    const auto put = bySet->emplace(set, static_cast<int>(g->groups.size()));
    if (put.second) {
        g->groups.push_back(
            {g->m->mesh.elementSets[static_cast<std::size_t>(set)].name, set, false, 0, {false, false}, ""});
    }
    return put.first->second;
}

std::map<int, int> GroupsBySet(const Grouping &g) {
    std::map<int, int> bySet;
    for (std::size_t i = 0; i < g.groups.size(); ++i) {
        if (g.groups[i].set != kNoSet) {
            bySet.emplace(g.groups[i].set, static_cast<int>(i));
        }
    }
    return bySet;
}

// What a section assigns goes to the group of its set.
void RegroupBySections(Grouping *g) {
    const deck::Mesh &mesh = g->m->mesh;
    std::map<int, int> bySet = GroupsBySet(*g);
    for (std::size_t e = 0; e < mesh.assignment.size(); ++e) {
        if (mesh.assignment[e] >= 0) {
            const int set = mesh.assignments[static_cast<std::size_t>(mesh.assignment[e])].set;
            g->m->group[e] = GroupOfSet(g, set, &bySet);
        }
    }
}

// The name of what several sets share. One that cuts cells loose does so for the whole.
std::string JoinNames(const deck::Mesh &mesh, const std::vector<int> &sets) {
    std::string loose;
    std::string name;
    for (const int set : sets) {
        std::string part = mesh.elementSets[static_cast<std::size_t>(set)].name;
        if (part.compare(0, 2, "C_") == 0) {
            loose = "C_";
            part.erase(0, 2);
        }
        name += (name.empty() ? "" : "+") + part;
    }
    return loose + name;
}

// Elements of sets go to the group of all sets that hold them.
void RegroupBySets(Grouping *g) {
    const deck::Mesh &mesh = g->m->mesh;
    std::vector<Claim> sets(mesh.elementSets.size());
    for (std::size_t s = 0; s < sets.size(); ++s) {
        if (g->own[s] != 0) {
            sets[s].items = mesh.elementSets[s].members;
        }
    }
    const Holders holders(static_cast<int>(mesh.elementNumber.size()), sets);
    std::map<int, int> bySet = GroupsBySet(*g);
    std::map<std::vector<int>, int> shared;
    for (std::size_t e = 0; e < mesh.elementNumber.size(); ++e) {
        const std::vector<int> who = holders.Of(e);
        if (who.size() == 1) {
            g->m->group[e] = GroupOfSet(g, who[0], &bySet);
        } else if (!who.empty()) {
            const auto put = shared.emplace(who, static_cast<int>(g->groups.size()));
            if (put.second) {
                g->groups.push_back({JoinNames(mesh, who), kNoSet, false, 0, {false, false}, ""});
            }
            g->m->group[e] = put.first->second;
        }
    }
}

void TellDivided(Grouping *g) {
    Making *m = g->m;
    for (const deck::DividedGroup &divided :
         FindDividedGroups(m->deck, m->mesh, [m](std::size_t e) { return m->role[e] == Role::cell; })) {
        m->Find(Code::dividedGroup, m->deck.cards[static_cast<std::size_t>(divided.card)].place,
                {g->groups[static_cast<std::size_t>(divided.group)].name});
    }
}

void CountCells(Grouping *g) {
    const Making &m = *g->m;
    for (const ElementRun &run : m.mesh.elementRuns) {
        const bool second = IsSecondOrder(m.TypeOf(run).shape);
        for (std::size_t e = run.first; e < run.first + run.count; ++e) {
            if (m.group[e] >= 0 && m.role[e] == Role::cell) {
                Group &group = g->groups[static_cast<std::size_t>(m.group[e])];
                group.used = true;
                group.ofOrder[second ? 1 : 0] = true;
                ++group.cells;
            }
        }
    }
    for (const MeshSet &set : m.mesh.elementSets) {
        g->setCells.push_back(std::count_if(set.members.begin(), set.members.end(), [&](int element) {
            return m.role[static_cast<std::size_t>(element)] == Role::cell;
        }));
    }
}

// Whether the group's section says all of a set with so many cells.
bool IsWhole(const Group &group, long long setCells) {
    return group.cells == setCells && !(group.ofOrder[0] && group.ofOrder[1]);
}

// The group that each element set is; -1 where it is none.
std::vector<int> GroupsOfSets(const Grouping &g) {
    std::vector<int> groupOf(g.m->mesh.elementSets.size(), -1);
    for (std::size_t i = 0; i < g.groups.size(); ++i) {
        if (g.groups[i].set != kNoSet && g.groups[i].used) {
            groupOf[static_cast<std::size_t>(g.groups[i].set)] = static_cast<int>(i);
        }
    }
    return groupOf;
}

// Whether the group holds elements that its set does not: copies belong to the group of what they are copies of.
bool HoldsMore(const Grouping &g, const MeshSet &set, int group) {
    const auto inGroup = std::count_if(set.members.begin(), set.members.end(), [&](int element) {
        const auto e = static_cast<std::size_t>(element);
        return g.m->group[e] == group && g.m->role[e] == Role::cell;
    });
    return inGroup < g.groups[static_cast<std::size_t>(group)].cells;
}

std::string NameGroup(Grouping *g, const std::string &name) {
    return NameOne(g->m, &g->names, {name, name, "", {}, 0, {0, 0, 0}, "group"}, kOnElement);
}

// Sets come first: a group that is a set has its name, and no other group has. Where the group holds more it has the
// name, and the set another one.
void GiveNames(Grouping *g) {
    Making *m = g->m;
    const deck::Mesh &mesh = m->mesh;
    const std::vector<int> groupOf = GroupsOfSets(*g);
    for (std::size_t s = 0; s < mesh.elementSets.size(); ++s) {
        const MeshSet &set = mesh.elementSets[s];
        const bool holdsMore = groupOf[s] >= 0 && HoldsMore(*g, set, groupOf[s]);
        if (holdsMore) {
            g->groups[static_cast<std::size_t>(groupOf[s])].given = NameGroup(g, set.name);
        }
        const bool isGroup = groupOf[s] >= 0 && !holdsMore;
        const bool whole = isGroup && IsWhole(g->groups[static_cast<std::size_t>(groupOf[s])], g->setCells[s]);
        const bool listed = g->own[s] != 0 || (!whole && g->setCells[s] > 0);
        const Claim claim{set.name, set.plain, m->InstanceOf(set.placed), {}, 0, StandingOf(*m, set, false).place,
                          "elset"};
        m->setNames.push_back(
            listed || isGroup || set.members.empty()
                ? NameOne(m, &g->names, claim, (listed ? kOnElset : 0) | (isGroup || !listed ? kOnElement : 0))
                : "");
        g->listed.push_back(listed ? 1 : 0);
        if (isGroup) {
            g->groups[static_cast<std::size_t>(groupOf[s])].given = m->setNames.back();
        }
    }
    for (std::size_t i = 0; i < g->groups.size(); ++i) {
        Group &group = g->groups[i];
        if (group.used && group.given.empty()) {
            group.given = NameGroup(g, group.name);
        }
        m->groupNames.push_back(group.name);
    }
}

bool BeginsWith(const std::string &text, const char *with) {
    return text.compare(0, std::strlen(with), with) == 0;
}

// The translator's name for cells of that type. One of another dimension than the mesh has no cells, but a section
// without rows may decide the dimension.
const char *TypeFor(const Making &m, int type) {
    const deck::TypeName &name = m.deck.types[static_cast<std::size_t>(type)];
    const bool second = IsSecondOrder(name.type.shape);
    if ((m.mesh.dimension == 0 ? DimensionOf(name.type.shape) : m.mesh.dimension) == 3) {
        return second ? "C3D10" : "C3D4";
    }
    if (name.type.shell) {
        return second ? "STRI65" : "STRI3";
    }
    return BeginsWith(name.name, "CPE") ? (second ? "CPE6" : "CPE3") : (second ? "CPS6" : "CPS3");
}

// The sections of a group: one for each order.
struct Orders {
    int section[2] = {-1, -1};
};

int SectionFor(Grouping *g, std::vector<Orders> *orders, const ElementRun &run, int element, int group) {
    Making *m = g->m;
    const int second = IsSecondOrder(m->TypeOf(run).shape) ? 1 : 0;
    Orders &made = (*orders)[static_cast<std::size_t>(group)];
    if (made.section[second] < 0) {
        made.section[second] = static_cast<int>(m->plain.sections.size());
        std::string name = g->groups[static_cast<std::size_t>(group)].given;
        if (made.section[1 - second] >= 0) {
            const std::string other = g->names.Give(name);
            m->Find(Code::mixedOrders, m->PlaceOf(element), {name, other});
            if (m->wantsChanges) {
                m->flat.changes.push_back({"group", "", name, other});
            }
            name = other;
        }
        if (BeginsWith(name, "C_")) {
            g->loose.push_back({static_cast<std::size_t>(made.section[second]), m->PlaceOfParameter(run, "ELSET")});
        }
        m->plain.sections.push_back({name, TypeFor(*m, run.type), {}});
    }
    return made.section[second];
}

void FillRun(Grouping *g, std::vector<Orders> *orders, const ElementRun &run) {
    Making *m = g->m;
    int before = -1;
    int section = -1;
    for (std::size_t e = run.first; e < run.first + run.count; ++e) {
        if (m->role[e] != Role::cell || m->group[e] < 0) {
            continue;
        }
        if (m->group[e] != before) {
            before = m->group[e];
            section = SectionFor(g, orders, run, static_cast<int>(e), before);
        }
        for (int c = m->firstCell[e]; c < m->firstCell[e + 1]; ++c) {
            m->plain.sections[static_cast<std::size_t>(section)].cells.push_back(c);
        }
    }
}

// A section of cells without rows is a group without cells, once. Sets that are written leave the index.
void AddEmpty(Grouping *g, int placed, const deck::ElementSection &section, SetIndex *sets) {
    Making *m = g->m;
    const deck::ElementType &type = m->deck.types[static_cast<std::size_t>(section.type)].type;
    const bool isCell = type.kind == deck::TypeClass::cell || type.kind == deck::TypeClass::sameShape ||
                        type.kind == deck::TypeClass::split;
    const auto set = sets->find({placed, section.elset});
    if (isCell && m->options.groups == Groups::lines && set != sets->end() && !section.elset.empty() &&
        m->mesh.elementSets[static_cast<std::size_t>(set->second)].members.empty()) {
        m->plain.sections.push_back(
            {m->setNames[static_cast<std::size_t>(set->second)], TypeFor(*m, section.type), {}});
        sets->erase(set);
    }
}

// Sections of cells in the order of the deck.
void FillSections(Grouping *g) {
    Making *m = g->m;
    std::vector<Orders> orders(g->groups.size());
    SetIndex sets = IndexSets(m->mesh);
    std::size_t run = 0;
    for (std::size_t p = 0; p < m->mesh.placed.size(); ++p) {
        const deck::Placed &placed = m->mesh.placed[p];
        for (const int scope : {placed.part, placed.own}) {
            for (std::size_t s = 0;
                 scope >= 0 && s < m->deck.scopes[static_cast<std::size_t>(scope)].elements.sections.size(); ++s) {
                const deck::ElementSection &section =
                    m->deck.scopes[static_cast<std::size_t>(scope)].elements.sections[s];
                if (section.count > 0) {
                    FillRun(g, &orders, m->mesh.elementRuns[run++]);
                } else if (!section.continued) {
                    AddEmpty(g, static_cast<int>(p), section, &sets);
                }
            }
        }
    }
}

void TellLoose(const Grouping &g) {
    for (const Loose &loose : g.loose) {
        const CellSection &section = g.m->plain.sections[loose.section];
        g.m->Find(Code::cutLoose, loose.place, {section.name}, static_cast<long long>(section.cells.size()));
    }
}

// A set that holds nothing but skins is no set of cells any more: it may be the surface that they make. Where sets make
// the groups their names are in those of the surfaces.
void TellSetOfSkins(const Grouping &g, const MeshSet &set, int index) {
    if (g.m->options.groups == Groups::sets) {
        return;
    }
    const auto isSkinOfOther = [&](int element) {
        const auto e = static_cast<std::size_t>(element);
        return g.m->role[e] == Role::skin && g.groups[static_cast<std::size_t>(g.m->group[e])].set != index;
    };
    if (std::any_of(set.members.begin(), set.members.end(), isSkinOfOther)) {
        g.m->Find(Code::skinSet, StandingOf(*g.m, set, false).place, {set.name});
    }
}

// The cells of the set's elements, by their numbers.
void AddSet(const Grouping &g, std::size_t index) {
    const MeshSet &set = g.m->mesh.elementSets[index];
    if (g.setCells[index] == 0 && !set.members.empty()) {
        TellSetOfSkins(g, set, static_cast<int>(index));
        return;
    }
    if (g.listed[index] == 0) {
        return;
    }
    List list{g.m->setNames[index], {}};
    for (const int element : set.members) {
        const auto e = static_cast<std::size_t>(element);
        for (int c = g.m->firstCell[e]; c < g.m->firstCell[e + 1]; ++c) {
            list.members.push_back(c);
        }
    }
    const std::vector<int> &number = g.m->plain.cellNumber;
    std::sort(list.members.begin(), list.members.end(),
              [&](int a, int b) { return number[static_cast<std::size_t>(a)] < number[static_cast<std::size_t>(b)]; });
    g.m->plain.elementSets.push_back(std::move(list));
}

// Sets in the order of the deck.
void AddSets(const Grouping &g) {
    std::vector<std::pair<DeckOrder, std::size_t>> order;
    for (std::size_t s = 0; s < g.m->mesh.elementSets.size(); ++s) {
        order.emplace_back(StandingOf(*g.m, g.m->mesh.elementSets[s], false).order, s);
    }
    std::stable_sort(order.begin(), order.end(), [](const auto &a, const auto &b) { return a.first < b.first; });
    for (const auto &at : order) {
        AddSet(g, at.second);
    }
}

} // namespace

void MakeGroups(Making *m) {
    Grouping g{m, {}, {}, {}, {}, {}, {}};
    for (const MeshSet &set : m->mesh.elementSets) {
        g.own.push_back(HasOwnSection(*m, set, false) ? 1 : 0);
    }
    GroupByLines(&g);
    if (m->options.groups == Groups::lines) {
        TellDivided(&g);
    } else if (m->options.groups == Groups::sections) {
        RegroupBySections(&g);
    } else {
        RegroupBySets(&g);
    }
    CountCells(&g);
    GiveNames(&g);
    FillSections(&g);
    TellLoose(g);
    AddSets(g);
}

} // namespace flatten
