// The exchange ordering of blocks, without its quadratic number of comparisons.
//
// Seen from place B, the exchanges insert its block into the sorted row of the blocks before it: of the numbers
// carried past, it lets those not above its own pass, then keeps the first larger one and hands its own on, and
// from there on each number is kept until a strictly larger one comes by. So an insertion
//   - puts the new block behind all blocks of the same number, and
//   - moves the first block of every run of larger equal numbers to that run's end.
// A run of equal numbers is therefore a queue to which blocks are appended and which is turned by one place for
// every smaller number inserted in between. Taken backwards, each block of the run finds its final place among
// the places still free; two counting trees make both steps logarithmic.
#include "abaqus/abqexchange.h"

#include "support/frame.h"

#include <algorithm>

namespace {

// A counting tree (Fenwick) over places 0..n-1: tree[1..n].
struct CountTree {
    int n;
    int *tree;
};

void AddAt(CountTree counts, int place, int amount) {
    for (int i = place + 1; i <= counts.n; i += i & -i) {
        counts.tree[i] += amount;
    }
}

// Sum over places before `place`.
int SumBefore(CountTree counts, int place) {
    int sum = 0;
    for (int i = place; i > 0; i -= i & -i) {
        sum += counts.tree[i];
    }
    return sum;
}

// The place of the rank-th (from 0) unit.
int PlaceOfRank(CountTree counts, int rank) {
    int step = 1;
    while (step <= counts.n / 2) {
        step *= 2;
    }
    int at = 0;
    for (; step > 0; step /= 2) {
        if (at + step <= counts.n && counts.tree[at + step] <= rank) {
            at += step;
            rank -= counts.tree[at];
        }
    }
    return at;
}

void FillWithOnes(CountTree counts) {
    for (int i = 1; i <= counts.n; ++i) {
        counts.tree[i] = i & -i;
    }
}

// Positions by number, equal numbers by position.
void SortPositions(int n, const int *firsts, int *positions) {
    for (int i = 0; i < n; ++i) {
        positions[i] = i;
    }
    std::sort(positions, positions + n,
              [firsts](int a, int b) { return firsts[a] != firsts[b] ? firsts[a] < firsts[b] : a < b; });
}

// smaller[i] = how many of the blocks before i begin with a smaller number.
void CountSmallerBefore(int n, const int *firsts, const int *sorted, CountTree seen, int *smaller) {
    std::fill(seen.tree, seen.tree + n + 1, 0);
    for (int i = 0; i < n;) { // run by run, ascending: the tree holds the positions of all smaller numbers
        int end = i;
        while (end < n && firsts[sorted[end]] == firsts[sorted[i]]) {
            smaller[sorted[end]] = SumBefore(seen, sorted[end]);
            ++end;
        }
        for (; i < end; ++i) {
            AddAt(seen, sorted[i], 1);
        }
    }
}

// Final places of the `size` blocks of one run, run[0..size-1] by arrival. turns[k] is how often the run is turned
// between the arrival of block k and that of the next (or the end). The tree has `size` places.
void PlaceRun(int size, const int *run, const int *turns, CountTree freePlaces, int *places) {
    FillWithOnes(freePlaces);
    int start = 0; // rank, among the free places, of the run's first block at this moment
    for (int k = size - 1; k >= 0; --k) {
        const int nFree = k + 1;
        start = (start - turns[k] % nFree + nFree) % nFree; // before the turns
        const int rank = (start + nFree - 1) % nFree;       // the newest block was the run's last
        const int place = PlaceOfRank(freePlaces, rank);
        places[place] = run[k];
        AddAt(freePlaces, place, -1);
        start = start == 0 ? 0 : start - 1;
    }
}

} // namespace

void ABQExchangeOrder(int n, const int *firsts, int *order) {
    SortPositions(n, firsts, order);
    bool repeated = false;
    for (int i = 1; i < n; ++i) {
        repeated = repeated || firsts[order[i - 1]] == firsts[order[i]];
    }
    if (!repeated) {
        return;
    }
    auto *smaller = NewArray<int>(n);
    auto *run = NewArray<int>(n);
    auto *turns = NewArray<int>(n);
    CountTree tree{n, NewArray<int>(n + 1)};
    CountSmallerBefore(n, firsts, order, tree, smaller);
    int nSmallerInAll = 0; // numbers below the run's own
    for (int i = 0; i < n;) {
        int size = 0;
        while (i + size < n && firsts[order[i + size]] == firsts[order[i]]) {
            run[size] = order[i + size];
            ++size;
        }
        for (int k = 0; k < size; ++k) {
            const int until = k + 1 < size ? smaller[run[k + 1]] : nSmallerInAll;
            turns[k] = until - smaller[run[k]];
        }
        tree.n = size;
        PlaceRun(size, run, turns, tree, order + i);
        nSmallerInAll += size;
        i += size;
    }
    AllocINT1D(tree.tree, 0);
    AllocINT1D(turns, 0);
    AllocINT1D(run, 0);
    AllocINT1D(smaller, 0);
}
