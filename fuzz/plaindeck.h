// What the plain rules collect of a deck, and the steps from there to the mesh file: shared by plainreader.cpp,
// plainresolve.cpp and plainmesh.cpp.
#ifndef KIVOM_FUZZ_PLAINDECK_H
#define KIVOM_FUZZ_PLAINDECK_H

#include "fuzz/plain.h"
#include "fuzz/plainreader.h"

#include <cstddef>
#include <string>
#include <vector>

using Ints = std::vector<int>;

struct Node {
    double x, y, z;
    int tag;
};

struct NodeBlock {
    Ints numbers;
    std::vector<Node> nodes;
};

struct CellBlock {
    std::string name;
    int type = 0;
    std::size_t nNodes = 0;
    Ints numbers;
    std::vector<Ints> conn;     // by element, in the deck's order
    std::vector<Ints> faceTags; // by element, by the deck's face label
};

struct NumberSet {
    std::string name;
    Ints numbers;
};

struct SurfaceEntry {
    std::string name;
    int row;
};

// Sections in the order of the deck while it is read; afterwards newest first.
struct PlainDeck {
    PlainText text;
    PlainLine line;
    std::string log;
    std::vector<NodeBlock> nodeBlocks;
    std::vector<CellBlock> cellBlocks;
    std::vector<NumberSet> nodeSets, cellSets;
    std::vector<std::vector<SurfaceEntry>> surfaces;
};

// plainresolve.cpp
Ints PlainSortKeys(Ints *keys);          // by the stated sort: the order in which the rows end
int PlainFind(const Ints &list, int id); // by the stated halving: a position, or -1
void PlainResolve(PlainDeck *deck);      // order, and tags of nodes and faces

// plainmesh.cpp
void PlainTranslate(const PlainDeck &deck, PlainResult *result);

// Keys ascending, rows with them.
template <class Row> void PlainSortRows(Ints *keys, std::vector<Row> *rows) {
    std::vector<Row> sorted;
    for (const int row : PlainSortKeys(keys)) {
        sorted.push_back((*rows)[static_cast<std::size_t>(row)]);
    }
    *rows = sorted;
}

#endif
