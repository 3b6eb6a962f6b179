// Rows ordered by the plain sort, whatever their numbers.
#include "support/frame.h"

#include <algorithm>
#include <numeric>

namespace {

template <class T> void Reorder(int n, T *column, const int *order, T *spare) {
    std::copy(column, column + n, spare);
    for (int p = 0; p < n; ++p) {
        column[p] = spare[order[p]];
    }
}

} // namespace

bool OrderRows(int n, int *keys, int *order) {
    std::iota(order, order + n, 0);
    SortByFirstArray2(n, keys, order);
    return true;
}

void ReorderINT(int n, int *column, const int *order, int *spare) {
    Reorder(n, column, order, spare);
}

void ReorderDBL(int n, double *column, const int *order, double *spare) {
    Reorder(n, column, order, spare);
}
