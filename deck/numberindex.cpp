// Look-up of numbers, ascending or not.
#include "deck/numberindex.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

namespace deck {

std::vector<int> AscendingOrder(const std::vector<int> &numbers) {
    std::vector<int> order;
    if (std::adjacent_find(numbers.begin(), numbers.end(), [](int a, int b) { return a >= b; }) == numbers.end()) {
        return order;
    }
    constexpr int kPositionBits = 32;
    std::vector<std::uint64_t> keys(numbers.size());
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        keys[i] = (static_cast<std::uint64_t>(numbers[i]) << kPositionBits) | i;
    }
    std::sort(keys.begin(), keys.end());
    order.resize(numbers.size());
    for (std::size_t i = 0; i < keys.size(); ++i) {
        order[i] = static_cast<int>(keys[i] & 0xFFFFFFFFu);
    }
    return order;
}

NumberIndex::~NumberIndex() {
    ReleaseIDIndex(&index_);
}

void NumberIndex::Build(const std::vector<int> &numbers) {
    order_ = AscendingOrder(numbers);
    sorted_.resize(order_.size());
    for (std::size_t i = 0; i < order_.size(); ++i) {
        sorted_[i] = numbers[static_cast<std::size_t>(order_[i])];
    }
    BuildIDIndex(&index_, static_cast<int>(numbers.size()), order_.empty() ? numbers.data() : sorted_.data());
}

std::size_t NumberIndex::CountLooks(const int *range) const {
    const int low = std::min(range[0], range[1]);
    const int high = std::max(range[0], range[1]);
    const int *end = index_.list + index_.n;
    const int *from = std::lower_bound(index_.list, end, low);
    return static_cast<std::size_t>(
        std::min<std::ptrdiff_t>(std::upper_bound(from, end, high) - from, (high - low) / std::abs(range[2]) + 1));
}

void NumberIndex::AddRange(const int *range, int shift, std::vector<int> *positions) const {
    const int low = std::min(range[0], range[1]);
    const int high = std::max(range[0], range[1]);
    const int step = std::abs(range[2]);
    const int *end = index_.list + index_.n;
    const int *from = std::lower_bound(index_.list, end, low);
    const int *to = std::upper_bound(from, end, high);
    if (to - from > (high - low) / step) { // fewer numbers in the range than rows between its ends
        for (long long number = low; number <= high; number += step) {
            const int at = Find(static_cast<int>(number));
            if (at >= 0) {
                positions->push_back(shift + at);
            }
        }
        return;
    }
    for (; from != to; ++from) {
        if ((*from - low) % step == 0) {
            const auto at = static_cast<std::size_t>(from - index_.list);
            positions->push_back(shift + (order_.empty() ? static_cast<int>(at) : order_[at]));
        }
    }
}

} // namespace deck
