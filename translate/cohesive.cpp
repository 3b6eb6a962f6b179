// Cohesive groups: the cells of groups whose names begin with "C_" are cut loose, each with nodes of its own.
#include "translate/steps.h"

#include "store/COM.h"
#include "store/tags.h"
#include "support/frame.h"

#include <algorithm>
#include <climits>
#include <cstring>

namespace {

constexpr char kCohesivePrefix[] = "C_";

bool IsCohesive(const GRcell *group) {
    return std::strncmp(group->c1Name, kCohesivePrefix, sizeof kCohesivePrefix - 1) == 0;
}

// The newest group of a name stands for all of that name: COM_GetGRcellTagByName gives its tag. Asking it once per
// group would compare every name with every other, so groups are sorted by name first. That needs names without
// blanks, which all deck names are; others are looked up one by one.
struct NamedGroup {
    const GRcell *group;
    int place; // in the list; the newest group is the first
};

bool AnyBlank(const GRcell *group) {
    for (; group != nullptr; group = group->next) {
        if (std::strchr(group->c1Name, ' ') != nullptr) {
            return true;
        }
    }
    return false;
}

int CountCohesive(const GRcell *group) {
    int n = 0;
    for (; group != nullptr; group = group->next) {
        n += IsCohesive(group) ? 1 : 0;
    }
    return n;
}

void NewestTagsByName(const GRcell *groups, SortedTags *found, int nCohesive) {
    auto *named = NewArray<NamedGroup>(nCohesive);
    int n = 0;
    for (const GRcell *group = groups; group != nullptr; group = group->next) {
        if (IsCohesive(group)) {
            named[n] = {group, n};
            ++n;
        }
    }
    std::sort(named, named + n, [](const NamedGroup &a, const NamedGroup &b) {
        const int order = std::strcmp(a.group->c1Name, b.group->c1Name);
        return order != 0 ? order < 0 : a.place < b.place;
    });
    for (int i = 0; i < n; ++i) {
        if (i == 0 || std::strcmp(named[i - 1].group->c1Name, named[i].group->c1Name) != 0) {
            found->tags[found->n++] = named[i].group->iTag;
        }
    }
    allocate(named, 0);
}

// The cohesive groups' tags.
SortedTags CohesiveTags(const Mesh *mesh) {
    const int nCohesive = CountCohesive(mesh->GRcell);
    SortedTags found{0, NewArray<int>(nCohesive)};
    if (AnyBlank(mesh->GRcell)) {
        for (const GRcell *group = mesh->GRcell; group != nullptr; group = group->next) {
            if (IsCohesive(group)) {
                found.tags[found.n++] = COM_GetGRcellTagByName(group->c1Name);
            }
        }
    } else {
        NewestTagsByName(mesh->GRcell, &found, nCohesive);
    }
    SortTags(&found);
    return found;
}

// Marks the cells of cohesive groups; the number of node copies they need.
long long MarkCells(const Mesh *mesh, const SortedTags &cohesive) {
    const Cells *cells = mesh->Cells;
    std::fill_n(cells->i1Mark, cells->nNum, 0);
    long long copies = 0;
    for (int c = 0; c < cells->nNum && cohesive.n > 0; ++c) {
        if (FindTag(cohesive, cells->i1Tag[c]) == -1) {
            continue;
        }
        cells->i1Mark[c] = 1;
        for (int k = 0; k < cells->i1NumNodes[c]; ++k) {
            copies += cells->i2Conn[k][c] >= 0 ? 1 : 0;
        }
    }
    return copies;
}

// All seven values, the number too: from here on numbers may repeat.
void CopyNode(const Nodes *nodes, int from, int to) {
    nodes->i1Mark[to] = nodes->i1Mark[from];
    nodes->i1GID[to] = nodes->i1GID[from];
    nodes->i1Tag[to] = nodes->i1Tag[from];
    nodes->d1X[to] = nodes->d1X[from];
    nodes->d1Y[to] = nodes->d1Y[from];
    nodes->d1Z[to] = nodes->d1Z[from];
    nodes->i1OnB[to] = nodes->i1OnB[from];
}

// Gives every marked cell a copy of each of its nodes, also where marked cells share one.
void SplitNodes(const Mesh *mesh, int copy) {
    const Cells *cells = mesh->Cells;
    for (int c = 0; c < cells->nNum; ++c) {
        if (cells->i1Mark[c] != 1) {
            continue;
        }
        for (int k = 0; k < cells->i1NumNodes[c]; ++k) {
            int &node = cells->i2Conn[k][c];
            if (node >= 0) { // -1 names no node and stays
                CopyNode(mesh->Nodes, node, copy);
                node = copy++;
            }
        }
    }
}

} // namespace

void SplitCohesiveCells(Mesh *mesh) {
    if (mesh->Cells->nNum == 0) {
        return;
    }
    const SortedTags cohesive = CohesiveTags(mesh);
    const long long copies = MarkCells(mesh, cohesive);
    AllocINT1D(cohesive.tags, 0);
    if (copies > INT_MAX) {
        EndForTooMany();
    }
    if (copies > 0) {
        Nodes *nodes = mesh->Nodes;
        std::fill_n(nodes->i1Mark, nodes->nNum, 0);
        std::fill_n(nodes->i1OnB, nodes->nNum, 0);
        const int first = ReserveNodes(nodes, static_cast<int>(copies));
        SplitNodes(mesh, first);
    }
}
