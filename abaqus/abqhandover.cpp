// Handing the deck over to the store.
#include "abaqus/abqdeck.h"

#include "store/COM.h"
#include "store/families.h"

#include <algorithm>
#include <cstdio>

namespace {

// The family of a block that a deck can hold, or null.
const ElementFamily *FamilyOfBlock(const ABQCellBlock *block) {
    const ElementFamily *family = FamilyOf(block->type);
    return family != nullptr && family->deck.bKnown ? family : nullptr;
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
    const int *faceTags[kMostNodes] = {}; // no family has more faces than nodes
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
        const ElementFamily *family = FamilyOfBlock(block);
        if (family == nullptr) {
            std::printf("\n  Error> Undesirable cell type detected in ABQ_AssignSystDim.\n");
            continue;
        }
        ABQDeck()->nDim = family->nDim; // in a deck that mixes them the last block decides
    }
}

void ABQ_AssignCellMap() {
    for (ABQCellBlock *block = ABQDeck()->cellBlocks; block != nullptr; block = block->next) {
        const ElementFamily *family = FamilyOfBlock(block);
        if (family == nullptr) {
            std::printf("\n  Error> Undesirable cell type detected in ABQ_AssignCellMap.\n");
            continue;
        }
        block->i1MapC2N = family->deck.i1MapC2N;
        block->i1MapCFT = family->deck.i1MapCFT;
    }
}

void ABQArchNodes() {
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

void ABQArchGroups() {
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
