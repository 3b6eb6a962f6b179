// Finding a number among all blocks of the deck.
#include "abaqus/abqfind.h"

#include "support/frame.h"

#include <algorithm>
#include <climits>

namespace {

// Keeps the blocks that hold anything.
void TakeBlocks(ABQFinder *finder, int nBlocks, const int *const *columns, const int *counts) {
    finder->columns = NewArray<const int *>(nBlocks);
    finder->counts = NewArray<int>(nBlocks);
    finder->positions = NewArray<int>(nBlocks);
    for (int i = 0; i < nBlocks; ++i) {
        if (counts[i] > 0) {
            finder->columns[finder->nBlocks] = columns[i];
            finder->counts[finder->nBlocks] = counts[i];
            finder->positions[finder->nBlocks] = i;
            ++finder->nBlocks;
        }
    }
}

bool BlocksOverlap(const ABQFinder *finder) {
    for (int i = 1; i < finder->nBlocks; ++i) {
        if (finder->columns[i - 1][finder->counts[i - 1] - 1] >= finder->columns[i][0]) {
            return true;
        }
    }
    return false;
}

// All numbers of all blocks, ascending, each with the first block that holds it.
void MergeBlocks(ABQFinder *finder) {
    long long n = 0;
    for (int i = 0; i < finder->nBlocks; ++i) {
        n += finder->counts[i];
    }
    if (n > INT_MAX) {
        EndForTooMany();
    }
    struct Entry {
        int number;
        int block;
    };
    auto *entries = NewArray<Entry>(static_cast<int>(n));
    Entry *next = entries;
    for (int i = 0; i < finder->nBlocks; ++i) {
        for (int row = 0; row < finder->counts[i]; ++row) {
            *next++ = {finder->columns[i][row], i};
        }
    }
    std::sort(entries, next, [](const Entry &a, const Entry &b) {
        return a.number != b.number ? a.number < b.number : a.block < b.block;
    });
    finder->allNumbers = NewArray<int>(static_cast<int>(n));
    finder->allBlocks = NewArray<int>(static_cast<int>(n));
    for (const Entry *entry = entries; entry != next; ++entry) {
        if (finder->nAll == 0 || finder->allNumbers[finder->nAll - 1] != entry->number) {
            finder->allNumbers[finder->nAll] = entry->number;
            finder->allBlocks[finder->nAll] = entry->block;
            ++finder->nAll;
        }
    }
    allocate(entries, 0);
}

int BlockInMerged(const ABQFinder *finder, int number) {
    const int *end = finder->allNumbers + finder->nAll;
    const int *found = std::lower_bound<const int *>(finder->allNumbers, end, number);
    return found != end && *found == number ? finder->allBlocks[found - finder->allNumbers] : -1;
}

// The last block whose first number is not above `number`: the only one that can hold it.
int BlockByRange(ABQFinder *finder, int number) {
    const int last = finder->lastBlock;
    if (number >= finder->firsts[last] && (last + 1 == finder->nBlocks || number < finder->firsts[last + 1])) {
        return last;
    }
    const int *end = finder->firsts + finder->nBlocks;
    const int *above = std::upper_bound<const int *>(finder->firsts, end, number);
    if (above == finder->firsts) {
        return -1;
    }
    finder->lastBlock = static_cast<int>(above - finder->firsts) - 1;
    return finder->lastBlock;
}

} // namespace

void ABQBuildFinder(ABQFinder *finder, int nBlocks, const int *const *columns, const int *counts) {
    *finder = ABQFinder{};
    if (nBlocks == 0) {
        return;
    }
    TakeBlocks(finder, nBlocks, columns, counts);
    if (finder->nBlocks == 0) {
        return;
    }
    finder->indices = NewArray<IDIndex>(finder->nBlocks);
    for (int i = 0; i < finder->nBlocks; ++i) {
        BuildIDIndex(&finder->indices[i], finder->counts[i], finder->columns[i]);
    }
    finder->bOverlap = BlocksOverlap(finder);
    if (finder->bOverlap) {
        MergeBlocks(finder);
        return;
    }
    finder->firsts = NewArray<int>(finder->nBlocks);
    for (int i = 0; i < finder->nBlocks; ++i) {
        finder->firsts[i] = finder->columns[i][0];
    }
}

void ABQReleaseFinder(ABQFinder *finder) {
    for (int i = 0; i < finder->nBlocks; ++i) {
        ReleaseIDIndex(&finder->indices[i]);
    }
    allocate(finder->indices, 0);
    allocate(finder->columns, 0);
    AllocINT1D(finder->counts, 0);
    AllocINT1D(finder->positions, 0);
    AllocINT1D(finder->firsts, 0);
    AllocINT1D(finder->allNumbers, 0);
    AllocINT1D(finder->allBlocks, 0);
}

ABQPlace ABQFind(ABQFinder *finder, int number) {
    if (finder->nBlocks == 0) {
        return {-1, -1};
    }
    const int block = finder->bOverlap ? BlockInMerged(finder, number) : BlockByRange(finder, number);
    if (block == -1) {
        return {-1, -1};
    }
    const int row = FindIDByIndex(&finder->indices[block], number);
    return row == -1 ? ABQPlace{-1, -1} : ABQPlace{finder->positions[block], row};
}
