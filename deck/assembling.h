// A mesh in the making: what the steps of assembling share.
#ifndef KIVOM_DECK_ASSEMBLING_H
#define KIVOM_DECK_ASSEMBLING_H

#include "deck/assemble.h"
#include "deck/numberindex.h"
#include "deck/tally.h"
#include "deck/text.h"

#include <algorithm>
#include <deque>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

namespace deck {

using NameMap = std::unordered_map<std::string, int>;

// Names of one placed part (or the root): positions in the mesh's lists.
struct PlacedNames {
    NameMap nodeSets, elementSets, surfaces;
};

// One scope of a placed part: where its tables stand in the mesh.
struct Slot {
    int scope;
    std::size_t firstNode;
    std::size_t firstElement;
};

// A row that was dropped because its number is given again: its section's set still holds that number.
struct Dropped {
    int section;
    int number;
};

// A node set that asks for the nodes of a surface.
struct SurfaceWanted {
    int placed;
    std::string surface;
    std::string set;
    Place place;
    std::vector<int> nodes;
};

// Sets that wait for others: those that a set names before they are defined, and all of them. A set is a code: three
// times its position for a node set, one more for an element set; two more for a position in `wanted`.
struct Waiting {
    std::vector<char> begun[2]; // of node sets, of element sets: a section has been seen
    std::unordered_map<int, std::set<int>> on;
    std::unordered_map<int, Place> place; // of the row that made a set wait
    std::vector<SurfaceWanted> wanted;
};

struct Assembling {
    Assembling(Deck *deckGiven, Mesh *meshMade) : deck(deckGiven), mesh(meshMade) {}

    Deck *deck;
    Mesh *mesh;
    Tally tally;
    std::deque<NumberIndex> nodeIndex, elementIndex; // by scope
    std::vector<std::vector<Slot>> slots;            // by placed: the part, then the instance's own lines
    std::vector<PlacedNames> names;                  // by placed
    NameMap placedByName;
    std::vector<std::vector<Dropped>> droppedNodes, droppedElements; // by scope, sections ascending
    Waiting waiting;
    long long taken = 0;    // see MayTake
    std::size_t nNamed = 0; // placed that are not the root, which comes last

    Scope &At(int scope) {
        return deck->scopes[static_cast<std::size_t>(scope)];
    }
    // Whether so many more members or faces may be taken out of sets, ranges and surfaces: what names them may be
    // short, and stand in a deck many times. A finding where not.
    bool MayTake(std::size_t count, const Place &place, const std::string &name) {
        taken += static_cast<long long>(count);
        if (taken > MostTaken()) {
            Find(Code::tooMany, place, {Clip(name), std::to_string(taken)});
        }
        return taken <= MostTaken();
    }
    // In proportion to the mesh: each of its nodes and elements may be in some fifty sets and surfaces.
    long long MostTaken() const {
        constexpr std::size_t kAlways = 4000000;
        constexpr std::size_t kOfEach = 50;
        const std::size_t most = kAlways + kOfEach * (mesh->nodeNumber.size() + mesh->elementNumber.size());
        return std::min(kMostInRange, static_cast<long long>(most));
    }
    int Root() const {
        return static_cast<int>(mesh->placed.size()) - 1;
    }
    void Find(Code code, const Place &place, std::vector<std::string> words, long long count = 1) {
        tally.Add(&mesh->findings, {code, place, std::move(words), count});
    }
};

// Positions in the mesh of a number of that placed part; -1.
int FindNode(const Assembling &a, int placed, int number);
int FindElement(const Assembling &a, int placed, int number);

// What a name in the rows of a placed part means: a name or number of its own or, from the root, INSTANCE.NAME and
// INSTANCE.NUMBER. `placed` is -1 where it names nothing; number is 0 where a name is meant.
struct Named {
    int placed = -1;
    int index = -1; // position in the map's list
    int number = 0;
};
Named FindNamed(const Assembling &a, int placed, NameMap PlacedNames::*kind, const std::string &name);

// INSTANCE.NAME, or NAME where that is enough: of the root, and of the only instance unless the root has one too.
std::string FullName(const Assembling &a, int placed, const std::string &plain, NameMap PlacedNames::*kind);

void SortOnce(std::vector<int> *list);
void AddNodesOfElement(const Mesh &mesh, int element, std::vector<int> *nodes);

// Corner and mid-side nodes of a face, those of the whole element for a side of a shell.
void AddNodesOfFace(const Assembling &a, const Face &face, std::vector<int> *nodes);

// The nodes that the rows of a surface of nodes name.
void AddNodeRows(Assembling *a, MeshSurface *surface);

// The steps, in this order --------------------------------------------------------------------------------

void DropRepeated(Assembling *a);        // the last definition of a number counts
void PlaceParts(Assembling *a);          // nodes, elements and their runs
void ConnectElements(Assembling *a);     // numbers of nodes become positions
void AssembleElementSets(Assembling *a); // and node sets as far as they need no surface
void AssembleSurfaces(Assembling *a);    // those of elements
void AssembleNodeSets(Assembling *a);    // what is left of them, and surfaces of nodes
void AssembleGroups(Assembling *a);

} // namespace deck

#endif
