// The steps of a whole run and what they hand on: reader.cpp, resolve.cpp, mesh.cpp and files.cpp.
#ifndef KIVOM_TESTS_SUPPORT_PLAIN_DECK_H
#define KIVOM_TESTS_SUPPORT_PLAIN_DECK_H

#include "tests/support/plain/plain.h"

#include <cstddef>
#include <string>
#include <vector>

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

struct Surface {
    std::string name;
    std::vector<SurfaceEntry> entries;
};

// Sections in the order of the deck while it is read; afterwards newest first.
struct PlainDeck {
    PlainText text;
    PlainLine line;
    std::string log;
    std::vector<NodeBlock> nodeBlocks;
    std::vector<CellBlock> cellBlocks;
    std::vector<NumberSet> nodeSets, cellSets;
    std::vector<Surface> surfaces;
};

// Shortest and longest edge, smallest altitude.
struct Lengths {
    double least = 1e15, most = 0, altitude = 1e15;
};

struct Cell {
    int type, tag;
    Ints nodes;    // store order
    Ints faceTags; // by store slot
};

struct Face {
    int type, tag;
    Ints nodes;
};

struct PlainMesh {
    int nDim = 0;
    std::vector<Node> nodes;
    std::vector<Cell> cells;
    std::vector<Face> faces;
    Lengths lengths;                   // of the whole mesh
    std::vector<Lengths> groupLengths; // by cell block
};

PlainDeck PlainRead(const std::string &text);
void PlainResolve(PlainDeck *deck); // order, and tags of nodes and faces
PlainMesh PlainMakeMesh(const PlainDeck &deck, std::string *log);
bool PlainDump(const PlainDeck &deck, const PlainMesh &mesh, bool bVTK, const PlainPut &put, std::string *log);

// Keys ascending, rows with them.
template <class Row> void PlainSortRows(Ints *keys, std::vector<Row> *rows) {
    std::vector<Row> sorted;
    for (const int row : PlainSort(keys)) {
        sorted.push_back((*rows)[static_cast<std::size_t>(row)]);
    }
    *rows = sorted;
}

#endif
