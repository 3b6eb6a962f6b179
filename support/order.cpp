// Ordering the rows of a table by their numbers.
#include "support/frame.h"

#include <algorithm>

namespace {

// Sorts keys that are exactly first, first + 1, ..., first + n - 1 in some order, each straight to its place.
// False when they are not: `order` is then undefined and the keys are unchanged.
bool OrderDense(int n, int *keys, int *order) {
    const int smallest = *std::min_element(keys, keys + n);
    const int largest = *std::max_element(keys, keys + n);
    if (static_cast<long long>(largest) - smallest != n - 1) {
        return false;
    }
    for (int p = 0; p < n; ++p) {
        order[p] = -1;
    }
    for (int i = 0; i < n; ++i) {
        int &place = order[keys[i] - smallest];
        if (place != -1) {
            return false;
        }
        place = i;
    }
    for (int p = 0; p < n; ++p) {
        keys[p] = smallest + p;
    }
    return true;
}

template <class T> void Reorder(int n, T *column, const int *order, T *spare) {
    for (int p = 0; p < n; ++p) {
        spare[p] = column[order[p]];
    }
    for (int p = 0; p < n; ++p) {
        column[p] = spare[p];
    }
}

} // namespace

bool OrderRows(int n, int *keys, int *order) {
    if (std::is_sorted(keys, keys + n)) {
        return false;
    }
    if (OrderDense(n, keys, order)) {
        return true;
    }
    for (int i = 0; i < n; ++i) {
        order[i] = i;
    }
    SortByFirstArray2(n, keys, order);
    return true;
}

void ReorderINT(int n, int *column, const int *order, int *spare) {
    Reorder(n, column, order, spare);
}

void ReorderDBL(int n, double *column, const int *order, double *spare) {
    Reorder(n, column, order, spare);
}
