// Finding a number among all blocks of the deck.
//
// The rule: the first block in list order whose sorted column holds the number, and there the position that
// FindIDPositionInTheList gives. Blocks are ordered by their first number, so as long as they do not overlap one
// halving finds the block. Where they do, a list of all numbers with the block each is first found in decides.
#ifndef KIVOM_ABAQUS_ABQFIND_H
#define KIVOM_ABAQUS_ABQFIND_H

#include "support/lookup.h"

struct ABQFinder {
    int nBlocks;
    const int **columns; // [nBlocks] sorted numbers of each block that is not empty
    int *counts;         // [nBlocks]
    int *positions;      // [nBlocks] the block's position in the list
    IDIndex *indices;    // [nBlocks] prepared look-ups
    bool bOverlap;       // two blocks share a range of numbers
    int *firsts;         // [nBlocks] smallest numbers, when no two blocks overlap
    int lastBlock;       // found last: neighbours in a set mostly lie in the same block
    int nAll;            // the following when blocks overlap
    int *allNumbers;     // [nAll] all numbers, ascending, each once
    int *allBlocks;      // [nAll] the first block that holds it
};

// Where a number was found.
struct ABQPlace {
    int block; // position in the list of blocks; -1: not found
    int row;
};

// Prepares the finder for `nBlocks` blocks in list order; column[i] holds count[i] ascending numbers.
void ABQBuildFinder(ABQFinder *finder, int nBlocks, const int *const *columns, const int *counts);
void ABQReleaseFinder(ABQFinder *finder);

ABQPlace ABQFind(ABQFinder *finder, int number);

#endif
