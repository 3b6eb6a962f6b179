// Putting the deck in order: rows by number inside each block, blocks by their first number, numbers inside sets.
#include "abaqus/abqdeck.h"
#include "abaqus/abqexchange.h"

#include "store/sys.h"
#include "support/lists.h"

#include <utility>

namespace {

// Exchanges the contents of the blocks until position p of the list holds what stood at order[p]. `order` is
// used up.
template <class Block> void ArrangeBlocks(Block **blocks, int n, int *order, void (*swap)(Block *, Block *)) {
    for (int p = 0; p < n; ++p) {
        int at = p;
        while (order[at] != p) { // along the cycle, each exchange puts one block where it belongs
            const int from = order[at];
            swap(blocks[at], blocks[from]);
            order[at] = at;
            at = from;
        }
        order[at] = at;
    }
}

// The blocks of the list by their first number. An empty block has none: it is never exchanged with another and
// keeps its place, while the others order around it.
template <class Block> void OrderBlocks(Block *list, void (*swap)(Block *, Block *)) {
    Block **blocks = ListArray(list);
    const int nAll = ListLength(list);
    int n = 0;
    for (int i = 0; i < nAll; ++i) {
        if (blocks[i]->count > 0) {
            blocks[n++] = blocks[i];
        }
    }
    if (n > 1) {
        auto *firsts = NewArray<int>(n);
        auto *order = NewArray<int>(n);
        for (int i = 0; i < n; ++i) {
            firsts[i] = blocks[i]->i1GID[0];
        }
        ABQExchangeOrder(n, firsts, order);
        ArrangeBlocks(blocks, n, order, swap);
        AllocINT1D(order, 0);
        AllocINT1D(firsts, 0);
    }
    allocate(blocks, 0);
}

void SortNumbers(ABQSet *set) {
    for (; set != nullptr; set = set->next) {
        BinarySort(set->count, set->numbers);
    }
}

template <class Block> void SwapContents(Block *a, Block *b) {
    std::swap(*a, *b);
    std::swap(a->next, b->next); // each block keeps its place in the list
}

} // namespace

void ABQ_SortNodesByGID(int count, int *i1GID, int *i1Tag, double *d1X, double *d1Y, double *d1Z) {
    OrderNodes(count, i1GID, i1Tag, d1X, d1Y, d1Z);
}

void ABQ_SortCellsByGID(int count, int nNodes, int *i1GID, int *i1Tag, int **i2Conn, int **i2FaceTag) {
    if (count < 2) {
        return;
    }
    auto *order = NewArray<int>(count);
    if (OrderRows(count, i1GID, order)) {
        auto *spare = NewArray<int>(count);
        if (i1Tag != nullptr) {
            ReorderINT(count, i1Tag, order, spare);
        }
        for (int k = 0; k < nNodes; ++k) {
            ReorderINT(count, i2Conn[k], order, spare);
            if (i2FaceTag != nullptr) {
                ReorderINT(count, i2FaceTag[k], order, spare);
            }
        }
        AllocINT1D(spare, 0);
    }
    AllocINT1D(order, 0);
}

void SwapNodeStructures(ABQNodeBlock *a, ABQNodeBlock *b) {
    SwapContents(a, b);
}

void SwapCellStructures(ABQCellBlock *a, ABQCellBlock *b) {
    SwapContents(a, b);
}

void ABQOrderDeck() {
    for (ABQNodeBlock *block = ABQDeck()->nodeBlocks; block != nullptr; block = block->next) {
        ABQ_SortNodesByGID(block->count, block->i1GID, block->i1Tag, block->d1X, block->d1Y, block->d1Z);
    }
    for (ABQCellBlock *block = ABQDeck()->cellBlocks; block != nullptr; block = block->next) {
        // No tags yet: they are set when the order is final.
        ABQ_SortCellsByGID(block->count, block->nNodes, block->i1GID, nullptr, block->i2Conn, nullptr);
    }
    OrderBlocks(ABQDeck()->nodeBlocks, SwapNodeStructures);
    OrderBlocks(ABQDeck()->cellBlocks, SwapCellStructures);
    SortNumbers(ABQDeck()->nodeSets);
    SortNumbers(ABQDeck()->cellSets);
}
