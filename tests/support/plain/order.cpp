// Sorting, look-up, the order of blocks.
#include "tests/support/plain/plain.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace {

// Sorts the keys low to high, both included, and the rows with them.
void OrderRange(Ints *keys, Ints *rows, long low, long high) {
    while (high > low) {
        const auto bounds = std::minmax_element(keys->begin() + low, keys->begin() + high + 1);
        const long long most = *bounds.second;
        if (*bounds.first == most) {
            return;
        }
        long long pivot = (*bounds.first + most) / 2;
        pivot = pivot == most ? pivot - 1 : pivot;
        long i = low;
        long j = high;
        for (;;) {
            while ((*keys)[static_cast<std::size_t>(i)] <= pivot) {
                ++i;
            }
            while (j > i && (*keys)[static_cast<std::size_t>(j)] > pivot) {
                --j;
            }
            if (i >= j) {
                break;
            }
            std::swap((*keys)[static_cast<std::size_t>(i)], (*keys)[static_cast<std::size_t>(j)]);
            std::swap((*rows)[static_cast<std::size_t>(i)], (*rows)[static_cast<std::size_t>(j)]);
        }
        OrderRange(keys, rows, low, i - 1);
        low = i;
    }
}

} // namespace

Ints PlainSort(Ints *keys) {
    Ints rows(keys->size());
    std::iota(rows.begin(), rows.end(), 0);
    OrderRange(keys, &rows, 0, static_cast<long>(keys->size()) - 1);
    return rows;
}

int PlainFind(const Ints &list, int id) {
    long lo = 0;
    long hi = static_cast<long>(list.size()) - 1;
    while (hi - lo > 1) {
        const long mid = (lo + hi) / 2;
        (list[static_cast<std::size_t>(mid)] < id ? lo : hi) = mid;
    }
    if (hi < 0) {
        return -1;
    }
    return list[static_cast<std::size_t>(hi)] == id   ? static_cast<int>(hi)
           : list[static_cast<std::size_t>(lo)] == id ? static_cast<int>(lo)
                                                      : -1;
}

Ints PlainExchange(Ints firsts) {
    Ints order(firsts.size());
    std::iota(order.begin(), order.end(), 0);
    for (std::size_t a = 0; a < firsts.size(); ++a) {
        for (std::size_t b = a + 1; b < firsts.size(); ++b) {
            if (firsts[a] > firsts[b]) {
                std::swap(firsts[a], firsts[b]);
                std::swap(order[a], order[b]);
            }
        }
    }
    return order;
}
