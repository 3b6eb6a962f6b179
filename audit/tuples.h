// Small sets of nodes, in order: those of faces, of edges, of cells. Equal ones come to stand side by side.
#ifndef KIVOM_AUDIT_TUPLES_H
#define KIVOM_AUDIT_TUPLES_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <utility>
#include <vector>

namespace audit {

// Puts the nodes in ascending order. True when that took an odd number of exchanges.
inline bool SortNodes(int (&nodes)[2]) {
    const bool odd = nodes[1] < nodes[0];
    if (odd) {
        std::swap(nodes[0], nodes[1]);
    }
    return odd;
}

inline bool SortNodes(int (&nodes)[3]) {
    bool odd = false;
    const auto order = [&](int a, int b) {
        if (nodes[b] < nodes[a]) {
            std::swap(nodes[a], nodes[b]);
            odd = !odd;
        }
    };
    order(0, 1);
    order(1, 2);
    order(0, 1);
    return odd;
}

// The nodes behind the first one, and whose tuple it is, with one bit to spare.
template <std::size_t kNodes> struct Tuple {
    int rest[kNodes - 1];
    std::uint32_t owner; // 2 * entry + bit
};

inline bool IsBefore(const Tuple<2> &a, const Tuple<2> &b) {
    return a.rest[0] != b.rest[0] ? a.rest[0] < b.rest[0] : a.owner < b.owner;
}

inline bool IsBefore(const Tuple<3> &a, const Tuple<3> &b) {
    const auto key = [](const Tuple<3> &t) {
        return static_cast<std::uint64_t>(static_cast<std::uint32_t>(t.rest[0])) << 32 |
               static_cast<std::uint32_t>(t.rest[1]);
    };
    return key(a) != key(b) ? key(a) < key(b) : a.owner < b.owner;
}

template <std::size_t kNodes> bool AreSame(const Tuple<kNodes> &a, const Tuple<kNodes> &b) {
    return std::equal(std::begin(a.rest), std::end(a.rest), std::begin(b.rest));
}

inline int EntryOf(std::uint32_t owner) {
    return static_cast<int>(owner >> 1);
}

inline int BitOf(std::uint32_t owner) {
    return static_cast<int>(owner & 1);
}

// Tuples in order of their nodes: the bucket of node n, tuples[first[n]] up to tuples[first[n + 1]], holds those whose
// smallest node is n.
template <std::size_t kNodes> struct Tuples {
    std::vector<std::size_t> first;
    std::vector<Tuple<kNodes>> tuples;
};

// `forEach(take)` calls take(nodes, owner) for every tuple, nodes in ascending order and below nNodes; it is called
// twice and has to say the same.
template <std::size_t kNodes, class ForEach> Tuples<kNodes> SortTuples(std::size_t nNodes, ForEach forEach) {
    Tuples<kNodes> all;
    all.first.assign(nNodes + 2, 0);
    // Counted two places on: after the sums first[n + 1] is where bucket n begins, and moves to its end while filling.
    forEach([&all](const int(&nodes)[kNodes], std::uint32_t) { ++all.first[static_cast<std::size_t>(nodes[0]) + 2]; });
    for (std::size_t n = 2; n < all.first.size(); ++n) {
        all.first[n] += all.first[n - 1];
    }
    all.tuples.resize(all.first.back());
    forEach([&all](const int(&nodes)[kNodes], std::uint32_t owner) {
        Tuple<kNodes> &tuple = all.tuples[all.first[static_cast<std::size_t>(nodes[0]) + 1]++];
        std::copy_n(nodes + 1, kNodes - 1, tuple.rest);
        tuple.owner = owner;
    });
    all.first.pop_back();
    for (std::size_t n = 0; n < nNodes; ++n) {
        std::sort(all.tuples.data() + all.first[n], all.tuples.data() + all.first[n + 1],
                  [](const Tuple<kNodes> &a, const Tuple<kNodes> &b) { return IsBefore(a, b); });
    }
    return all;
}

// Calls take(smallest node, begin, end) for every run of equal tuples.
template <std::size_t kNodes, class Take> void ForRuns(const Tuples<kNodes> &all, Take take) {
    for (std::size_t n = 0; n + 1 < all.first.size(); ++n) {
        const Tuple<kNodes> *at = all.tuples.data() + all.first[n];
        const Tuple<kNodes> *end = all.tuples.data() + all.first[n + 1];
        while (at < end) {
            const Tuple<kNodes> *next = at + 1;
            while (next < end && AreSame(*at, *next)) {
                ++next;
            }
            take(static_cast<int>(n), at, next);
            at = next;
        }
    }
}

} // namespace audit

#endif
