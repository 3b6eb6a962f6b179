// Sorting of deck numbers by splitting the range of their values.
//
// A range of the array is split at the mean of its smallest and largest key: keys not above it go left, keys
// above it right. Each split halves the range of values, so 32-bit keys need at most 33 levels whatever their
// order and however often they repeat; a range of equal keys is done after one scan.
//
// Where equal keys carry different companions, the order in which they end up shows in the program's results
// (a deck may give one node twice). The partition is therefore fixed to the letter: one index runs up over
// keys not above the pivot, one down over keys above it, and the two entries they stop at are exchanged.
#include "support/frame.h"

#include <utility>

namespace {

constexpr int kMaxPending = 52; // at most 33 are ever in use

struct Range {
    int low;
    int high;
};

struct Bounds {
    int smallest;
    int largest;
};

Bounds KeyBounds(const int *keys, Range range) {
    int smallest = keys[range.low];
    int largest = smallest;
    for (int i = range.low + 1; i <= range.high; ++i) {
        smallest = keys[i] < smallest ? keys[i] : smallest;
        largest = keys[i] > largest ? keys[i] : largest;
    }
    return {smallest, largest};
}

// The mean, truncated toward zero; one less where that is the largest key itself (-2 and -1, say), because
// the right part would then be empty and the split would never end.
int Pivot(Bounds bounds) {
    const long long sum = static_cast<long long>(bounds.smallest) + bounds.largest;
    const int mean = static_cast<int>(sum / 2);
    return mean == bounds.largest ? mean - 1 : mean;
}

// First index of the right part. `swap(i, j)` exchanges two entries.
template <class Swap> int Partition(const int *keys, Range range, int pivot, Swap swap) {
    int i = range.low;
    int j = range.high;
    for (;;) {
        while (keys[i] <= pivot) { // stops at the latest at the largest key, which is above the pivot
            ++i;
        }
        while (j > i && keys[j] > pivot) {
            --j;
        }
        if (i >= j) {
            return i;
        }
        swap(i, j);
    }
}

template <class Swap> void SplitSort(int n, const int *keys, Swap swap) {
    Range pending[kMaxPending];
    int nPending = 0;
    pending[nPending++] = {0, n - 1};
    while (nPending > 0) {
        const Range range = pending[nPending - 1];
        if (range.high <= range.low) {
            --nPending;
            continue;
        }
        const Bounds bounds = KeyBounds(keys, range);
        if (bounds.smallest == bounds.largest) {
            --nPending;
            continue;
        }
        const int right = Partition(keys, range, Pivot(bounds), swap);
        pending[nPending - 1] = {right, range.high};
        pending[nPending++] = {range.low, right - 1};
    }
}

bool IsAscending(int n, const int *keys) {
    for (int i = 1; i < n; ++i) {
        if (keys[i - 1] > keys[i]) {
            return false;
        }
    }
    return true;
}

} // namespace

void BinarySort(int n, int *a) {
    if (IsAscending(n, a)) {
        return;
    }
    SplitSort(n, a, [a](int i, int j) { std::swap(a[i], a[j]); });
}

void SortByFirstArray2(int n, int *a, int *b) {
    if (IsAscending(n, a)) { // the partition exchanges nothing in an ascending range
        return;
    }
    SplitSort(n, a, [a, b](int i, int j) {
        std::swap(a[i], a[j]);
        std::swap(b[i], b[j]);
    });
}
