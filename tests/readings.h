// Whether a report's `reading` is what the translator's mesh then holds: the property that tests and a fuzz target
// share.
#ifndef KIVOM_TESTS_READINGS_H
#define KIVOM_TESTS_READINGS_H

#include "account/check.h"
#include "account/log.h"

#include "abaqus/LoadABQ.h"
#include "store/COM.h"
#include "translate/MeshAll.h"

#include <cstring>
#include <string>
#include <vector>

namespace readings {

// Groups of the store, in the order of the deck, with the number of members of each.
template <class Group>
std::vector<account::Count> CountGroups(const Group *list, const std::vector<long long> &counts) {
    std::vector<account::Count> groups;
    for (; list != nullptr; list = list->next) {
        groups.push_back({list->c1Name, "", counts[static_cast<std::size_t>(list->iTag)]});
    }
    return groups;
}

inline std::string Compare(const char *what, const std::vector<account::Count> &reading,
                           const std::vector<account::Count> &held, bool sorted) {
    std::vector<account::Count> wanted = held;
    std::string differences;
    if (reading.size() != wanted.size()) {
        return std::string(what) + ": " + std::to_string(reading.size()) + " and " + std::to_string(wanted.size());
    }
    for (const account::Count &count : reading) {
        std::size_t i = 0;
        while (i < wanted.size() && (wanted[i].name != count.name || wanted[i].count != count.count)) {
            if (!sorted) {
                break;
            }
            ++i;
        }
        if (i == wanted.size() || wanted[i].name != count.name || wanted[i].count != count.count) {
            differences += std::string(what) + " " + count.name + ": " + std::to_string(count.count) + "\n";
        } else {
            wanted.erase(wanted.begin() + static_cast<std::ptrdiff_t>(i));
        }
    }
    return differences;
}

inline bool HasLooseGroup(const Mesh &mesh) {
    for (const GRcell *group = mesh.GRcell; group != nullptr; group = group->next) {
        if (std::strncmp(group->c1Name, "C_", 2) == 0) {
            return true;
        }
    }
    return false;
}

// Translates the deck in this process, without writing files: where the mesh and the report's reading part; empty when
// they do not. The deck can be read.
inline std::string DifferenceToMesh(const std::string &path, const account::Summary &reading) {
    const account::LogCatcher silence([](const std::string &) {});
    LoadABQ(path.c_str());
    const Mesh *mesh = GetCOM();
    std::string differences;
    std::vector<long long> faces(1 << 16, 0);
    std::vector<long long> cells(1 << 16, 0);
    for (int c = 0; c < mesh->Cells->nNum; ++c) {
        ++cells[static_cast<std::size_t>(mesh->Cells->i1Tag[c])];
        for (int k = 0; k < mesh->Cells->i1NumNodes[c]; ++k) {
            ++faces[static_cast<std::size_t>(mesh->Cells->i2FaceTag[k][c])];
        }
    }
    if (mesh->nDim != reading.dimension || mesh->Cells->nNum != reading.elements ||
        mesh->Nodes->nNum != reading.nodes) {
        differences += "dimension, nodes or elements\n";
    }
    MeshAll();
    if (!HasLooseGroup(*mesh)) { // copies of nodes carry tags, too
        std::vector<long long> nodes(1 << 16, 0);
        for (int i = 0; i < mesh->Nodes->nNum; ++i) {
            ++nodes[static_cast<std::size_t>(mesh->Nodes->i1Tag[i])];
        }
        differences += Compare("node set", reading.nodeSets, CountGroups(mesh->GRnode, nodes), false);
    }
    differences += Compare("surface", reading.surfaces, CountGroups(mesh->GRface, faces), false);
    differences += Compare("cell group", reading.cellGroups, CountGroups(mesh->GRcell, cells), true);
    FreeCOM();
    return differences;
}

} // namespace readings

#endif
