// One mesh out of a deck's scopes and instances: everything placed, every name whole, and for everything in it the
// place that it came from.
#ifndef KIVOM_DECK_ASSEMBLE_H
#define KIVOM_DECK_ASSEMBLE_H

#include "deck/model.h"

#include <functional>

namespace deck {

// A part placed (or the root): its nodes and elements are contiguous in the mesh.
struct Placed {
    std::string name;  // as meant; "" for the root
    int instance = -1; // position in Deck::instances; -1 for the root and for a part that stands for itself
    int part = -1;     // scope of the part (or 0, the root), -1 without
    int own = -1;      // scope of the instance's own lines, -1 without
    std::size_t firstNode = 0, nNodes = 0;
    std::size_t firstElement = 0, nElements = 0;
};

// Nodes [first, first + count) of the mesh come from one section of the deck.
struct NodeRun {
    int placed;
    int scope;
    int section; // of that scope's node table
    std::size_t first, count;
};

struct ElementRun {
    int placed;
    int scope;
    int section;
    int type; // position in Deck::types
    int width;
    std::size_t first, count;
    std::size_t firstNode; // row r's nodes at Mesh::nodes[firstNode + r * width]
};

// Where a set or surface of the mesh was defined: the tables of Deck::scopes[scope].
struct Origin {
    int scope;
    int index;
};

struct MeshSet {
    std::string name;            // full: INSTANCE.NAME, or NAME where that is enough
    std::string plain;           // NAME
    int placed;                  // position in Mesh::placed
    std::vector<Origin> origins; // of the part, then of the instance's own lines
    std::vector<int> members;    // positions, ascending, each once
    bool internal = false;       // every section of it says INTERNAL
};

// Sides of shells that no label S names.
constexpr int kSidePositive = -1;
constexpr int kSideNegative = -2;
constexpr int kSideBoth = -3; // a shell without label

struct Face {
    int element; // position
    int side;    // FaceOf(shape, side), or one of the above
    int line;    // of the row that names it
};

struct MeshSurface {
    std::string name;
    std::string plain;
    int placed;
    std::vector<Origin> origins;
    bool ofNodes = false;    // TYPE=NODE
    bool refused = false;    // of a type that has no faces (see the findings): it is empty
    std::vector<Face> faces; // in the order of the rows, each once
    std::vector<int> nodes;  // of TYPE=NODE: positions, ascending, each once
    bool internal = false;
};

enum class GroupFrom { elset, section, scope };

struct CellGroup {
    std::string name;
    std::string plain;
    int placed;
    GroupFrom from;
};

struct Mesh {
    int dimension = 0; // 3 with a solid, 2 with a triangle or quadrilateral, else 0
    std::vector<Placed> placed;

    std::vector<int> nodeNumber; // in its scope
    std::vector<double> x, y, z;
    std::vector<int> nodeLine;
    std::vector<NodeRun> nodeRuns;

    std::vector<int> elementNumber;
    std::vector<int> elementLine;
    std::vector<int> nodes; // connectivity as positions of nodes, -1 where there is none
    std::vector<ElementRun> elementRuns;
    std::vector<int> group;      // of each element: position in groups
    std::vector<int> assignment; // of each element: the last section that assigns it, in assignments; -1 without

    std::vector<CellGroup> groups; // in the order of their first section; one that names its group may be empty
    std::vector<MeshSet> nodeSets;
    std::vector<MeshSet> elementSets;
    std::vector<MeshSurface> surfaces;
    struct Assigned {
        int placed;
        int scope;
        int index; // in Scope::assignments
        int set;   // in elementSets; -1 where ELSET= names none
    };
    std::vector<Assigned> assignments;

    std::vector<Finding> findings; // of what only shows in the whole: missing members, missing nodes ...
};

// Takes the node and element tables out of the deck (their numbers, coordinates, lines and connectivity are empty
// afterwards; the sections stay) and makes the mesh. The definition that comes last counts where a number is given
// twice.
Mesh Assemble(Deck &deck);

// The run that the node or element belongs to: a position in nodeRuns or elementRuns.
int RunOfNode(const Mesh &mesh, int node);
int RunOfElement(const Mesh &mesh, int element);

// Its nodes: a row of its run's width.
const int *NodesOfElement(const Mesh &mesh, const ElementRun &run, int element);

// A cell group of *ELEMENT lines whose elements are assigned by several sections, most often of several materials.
struct DividedGroup {
    int group; // in Mesh::groups
    int card;  // in Deck::cards: of a section that divides it
};

// They stand in the order of the groups. Elements count where the call says so.
std::vector<DividedGroup> FindDividedGroups(const Deck &deck, const Mesh &mesh,
                                            const std::function<bool(std::size_t element)> &counts);

Place PlaceOfNode(const Deck &deck, const Mesh &mesh, int node);
Place PlaceOfElement(const Deck &deck, const Mesh &mesh, int element);

} // namespace deck

#endif
