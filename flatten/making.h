// A plain deck in the making: what the steps share.
#ifndef KIVOM_FLATTEN_MAKING_H
#define KIVOM_FLATTEN_MAKING_H

#include "flatten/flatten.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace flatten {

inline bool IsSecondOrder(deck::Shape shape) {
    return NodesOf(shape) > CornersOf(shape);
}

// What becomes of an element.
enum class Role : char {
    lost, // said elsewhere, or in a finding
    cell,
    skin, // one dimension below the cells: on their faces, or an error
    line  // a line in three dimensions: along an edge, or an error
};

struct Making {
    const deck::Deck &deck;
    deck::Mesh &mesh;
    const Options &options;
    Flat &flat;
    Plain &plain;
    bool wantsChanges;
    bool severalInstances;

    std::vector<Role> role;        // of each element
    std::vector<int> firstCell;    // of element e: cells [firstCell[e], firstCell[e + 1])
    std::vector<long long> offset; // of each placed part, for nodes and elements
    std::vector<std::string> groupNames;
    std::vector<int> group; // of each element: position in groupNames; -1 without

    // Faces below skins, by element; skinFirst[i] belongs to skinElement[i] and ends at skinFirst[i + 1].
    std::vector<int> skinElement;
    std::vector<std::size_t> skinFirst{0};
    std::vector<CellFace> skinFaces;

    std::vector<std::string> setNames; // final names of the mesh's element sets

    void Find(Code code, const deck::Place &place, std::vector<std::string> words, long long count = 1) {
        flat.findings.push_back({code, place, std::move(words), count});
    }
    const deck::ElementType &TypeOf(const deck::ElementRun &run) const {
        return deck.types[static_cast<std::size_t>(run.type)].type;
    }
    deck::Place PlaceOf(int element) const {
        return PlaceOfElement(deck, mesh, element);
    }
    // On the run's keyword line.
    deck::Place PlaceOfParameter(const deck::ElementRun &run, const char *word) const {
        const deck::ElementSection &section =
            deck.scopes[static_cast<std::size_t>(run.scope)].elements.sections[static_cast<std::size_t>(run.section)];
        const deck::Card &card = deck.cards[static_cast<std::size_t>(section.card)];
        const deck::Parameter *parameter = FindParameter(card, word);
        return parameter == nullptr ? card.place : deck::Place{card.place.file, parameter->line, parameter->column};
    }
    const std::string &InstanceOf(int placed) const {
        return mesh.placed[static_cast<std::size_t>(placed)].name;
    }
    int NumCells() const {
        return static_cast<int>(plain.cellNumber.size());
    }
    const int *NodesOfCell(int cell) const {
        return &plain.cellNodes[plain.cellFirst[static_cast<std::size_t>(cell)]];
    }
};

// Calls f(run, element, nodes) for each element whose role is the one asked for, in the order of the mesh.
template <class F> void ForElements(const Making &m, Role role, F f) {
    for (const deck::ElementRun &run : m.mesh.elementRuns) {
        for (std::size_t e = run.first; e < run.first + run.count; ++e) {
            if (m.role[e] == role) {
                f(run, static_cast<int>(e),
                  m.mesh.nodes.data() + run.firstNode + (e - run.first) * static_cast<std::size_t>(run.width));
            }
        }
    }
}

// A new node in the middle of the diagonal between two nodes, and where it comes from.
struct Diagonal {
    std::uint64_t key; // both ends
    int element;
    int face; // of the element's shape; -1: through the body; -2: the element itself, in two dimensions
};
constexpr int kThroughBody = -1;
constexpr int kThroughPlane = -2;

std::uint64_t KeyOfEnds(int a, int b);

// The steps, in this order --------------------------------------------------------------------------------

void GiveRoles(Making *m);                                            // roles.cpp
void NumberNodes(Making *m);                                          // numbers.cpp
void ScaleNodes(Making *m);                                           // numbers.cpp
std::vector<Diagonal> MakeCells(Making *m);                           // cells.cpp
void NumberCells(Making *m);                                          // numbers.cpp
void FindSkins(Making *m);                                            // skins.cpp
void MakeGroups(Making *m);                                           // groups.cpp: element sets, too
void MakeNodeSets(Making *m, const std::vector<Diagonal> &diagonals); // sets.cpp
void MakeSurfaces(Making *m);                                         // surfaces.cpp

} // namespace flatten

#endif
