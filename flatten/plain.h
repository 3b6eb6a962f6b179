// What a plain deck holds: one mesh of triangles or of tetrahedra, final numbers and names, groups that share nothing.
#ifndef KIVOM_FLATTEN_PLAIN_H
#define KIVOM_FLATTEN_PLAIN_H

#include <cstddef>
#include <string>
#include <vector>

namespace flatten {

// One *ELEMENT section, which is one cell group.
struct CellSection {
    std::string name;
    const char *type;       // for TYPE=
    std::vector<int> cells; // positions, in the order of their rows
};

struct List {
    std::string name;
    std::vector<int> members; // positions of nodes or of cells
};

struct CellFace {
    int cell;
    int face; // 0 is S1
};

struct FaceList {
    std::string name;
    std::vector<CellFace> faces;
};

struct Plain {
    int dimension = 0;

    std::vector<int> nodeNumber;
    std::vector<double> x, y, z;

    std::vector<int> cellNumber;
    std::vector<std::size_t> cellFirst{0}; // cell c has the nodes cellNodes[cellFirst[c]] up to cellFirst[c + 1]
    std::vector<int> cellNodes;            // positions: corners, then middles of the sides in the order of the deck

    std::vector<CellSection> sections;
    std::vector<List> nodeSets, elementSets;
    std::vector<FaceList> surfaces;
};

} // namespace flatten

#endif
