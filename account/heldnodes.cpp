// Ordering the reader's nodes as the translation orders them.
#include "account/heldnodes.h"

#include "support/frame.h"

#include <algorithm>

namespace account {

HeldNodes::HeldNodes() {
    for (const ABQNodeBlock *block = ABQDeck()->nodeBlocks; block != nullptr; block = block->next) {
        if (block->count > 0) {
            blocks_.push_back(block);
            firsts_.push_back(static_cast<int>(numbers_.size()));
            numbers_.insert(numbers_.end(), block->i1GID, block->i1GID + block->count);
        }
    }
    order_.resize(numbers_.size());
    if (!OrderRows(static_cast<int>(numbers_.size()), numbers_.data(), order_.data())) {
        std::vector<int>().swap(order_);
    }
    BuildIDIndex(&index_, static_cast<int>(numbers_.size()), numbers_.data());
}

HeldNodes::~HeldNodes() {
    ReleaseIDIndex(&index_);
}

HeldNode HeldNodes::Find(int number) const {
    int at = PositionOf(number);
    if (at == -1) {
        return {};
    }
    at = order_.empty() ? at : order_[static_cast<std::size_t>(at)];
    const auto block =
        static_cast<std::size_t>(std::upper_bound(firsts_.begin(), firsts_.end(), at) - firsts_.begin() - 1);
    return {blocks_[block], at - firsts_[block]};
}

int HeldNodes::TagOf(int number) const {
    const HeldNode node = Find(number);
    return node.block == nullptr ? -1 : node.block->i1Tag[node.row];
}

} // namespace account
