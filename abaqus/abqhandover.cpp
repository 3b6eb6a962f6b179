// Handing the deck over to the store.
#include "abaqus/abqdeck.h"

#include "store/COM.h"

#include <algorithm>
#include <cstdio>

namespace {

// Node order: store node k is deck node map[k]. The deck lists a 6-node triangle's corners before its mid-side
// nodes; the store has them in turn around the triangle.
// clang-format off
constexpr int i1MapC2NTRI3[] = {0, 1, 2};
constexpr int i1MapC2NTRI6[] = {0, 3, 1, 4, 2, 5};
constexpr int i1MapC2NTET4[] = {0, 1, 2, 3};
constexpr int i1MapC2NTETX[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9};

// Face order: the deck's face label row k (S1 is row 0) is store face slot map[k]. Slot k is the face opposite
// corner k; the deck's edge 1 is corners 1-2 (opposite corner 3: slot 2), its face 1 corners 1-2-3 (slot 3). No
// label reaches the entries behind the last face.
constexpr int i1MapCFTTRI3[] = {2, 0, 1};
constexpr int i1MapCFTTRI6[] = {2, 0, 1, 3, 4, 5};
constexpr int i1MapCFTTET4[] = {3, 2, 0, 1};
constexpr int i1MapCFTTETX[] = {3, 2, 0, 1, 4, 5, 6, 7, 8, 9};

struct Family {
    int type;
    int nDim;
    const int *i1MapC2N;
    const int *i1MapCFT;
};

constexpr Family kFamilies[] = {
    {kTRI3, 2, i1MapC2NTRI3, i1MapCFTTRI3},
    {kTRI6, 2, i1MapC2NTRI6, i1MapCFTTRI6},
    {kTET4, 3, i1MapC2NTET4, i1MapCFTTET4},
    {kTETX, 3, i1MapC2NTETX, i1MapCFTTETX},
};
// clang-format on

constexpr int kMostNodes = 10;

const Family *FamilyOf(int type) {
    for (const Family &family : kFamilies) {
        if (family.type == type) {
            return &family;
        }
    }
    return nullptr;
}

int LargestNodeCount(const ABQCellBlock *block) {
    int largest = 0;
    for (; block != nullptr; block = block->next) {
        largest = std::max(largest, block->nNodes);
    }
    return largest;
}

// All cells of the block in the store's order of nodes and face slots.
void ArchiveBlock(const ABQCellBlock *block, int columns) {
    if (block->i1MapC2N == nullptr || block->count == 0) {
        return;
    }
    const int *conn[kMostNodes];
    const int *faceTags[kMostNodes] = {};
    for (int k = 0; k < block->nNodes; ++k) {
        conn[k] = block->i2Conn[block->i1MapC2N[k]];
    }
    for (int k = 0; k < ABQNumFaces(block->type) && block->i2FaceTag != nullptr; ++k) {
        faceTags[block->i1MapCFT[k]] = block->i2FaceTag[k];
    }
    COM_ArchCells(columns, block->type, block->tag, block->nNodes, block->count, conn, faceTags);
}

} // namespace

void ABQ_AssignSystDim() {
    for (const ABQCellBlock *block = ABQDeck()->cellBlocks; block != nullptr; block = block->next) {
        const Family *family = FamilyOf(block->type);
        if (family == nullptr) {
            std::printf("\n  Error> Undesirable cell type detected in ABQ_AssignSystDim.\n");
            continue;
        }
        ABQDeck()->nDim = family->nDim; // in a deck that mixes them the last block decides
    }
}

void ABQ_AssignCellMap() {
    for (ABQCellBlock *block = ABQDeck()->cellBlocks; block != nullptr; block = block->next) {
        const Family *family = FamilyOf(block->type);
        if (family == nullptr) {
            std::printf("\n  Error> Undesirable cell type detected in ABQ_AssignCellMap.\n");
            continue;
        }
        block->i1MapC2N = family->i1MapC2N;
        block->i1MapCFT = family->i1MapCFT;
    }
}

void ABQ2COM_Node() {
    for (ABQNodeBlock *block = ABQDeck()->nodeBlocks; block != nullptr; block = block->next) {
        if (block->count > 0) {
            COM_ArchNodes(block->count, block->i1GID, block->i1Tag, block->d1X, block->d1Y, block->d1Z);
        }
        ABQReleaseNodeColumns(block);
    }
}

void ABQ2COM_Cell() {
    const int columns = LargestNodeCount(ABQDeck()->cellBlocks);
    for (ABQCellBlock *block = ABQDeck()->cellBlocks; block != nullptr; block = block->next) {
        ArchiveBlock(block, columns);
        ABQReleaseCellColumns(block);
    }
}

void ABQ2COM_Groups() {
    for (const ABQSet *set = ABQDeck()->nodeSets; set != nullptr; set = set->next) {
        COM_ArchGRnode(set->tag, set->name);
    }
    for (const ABQSurface *surface = ABQDeck()->surfaces; surface != nullptr; surface = surface->next) {
        COM_ArchGRface(surface->tag, surface->name);
    }
    for (const ABQCellBlock *block = ABQDeck()->cellBlocks; block != nullptr; block = block->next) {
        COM_ArchGRcell(block->tag, block->name);
    }
}
