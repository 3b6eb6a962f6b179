// The reader's nodes as the translator's mesh will take them: one for each number.
#ifndef KIVOM_ACCOUNT_HELDNODES_H
#define KIVOM_ACCOUNT_HELDNODES_H

#include "abaqus/abqdeck.h"
#include "support/lookup.h"

#include <cstddef>
#include <vector>

namespace account {

// Where a node stands among the reader's records; no block: there is none of that number.
struct HeldNode {
    const ABQNodeBlock *block = nullptr;
    int row = 0;
};

// Where a number is given several times, the translator's order and look-up decide which of them elements get: this
// does as the translation does, by the same functions. Made after Reading::Resolve.
class HeldNodes {
  public:
    HeldNodes();
    ~HeldNodes();
    HeldNodes(const HeldNodes &) = delete;
    HeldNodes &operator=(const HeldNodes &) = delete;

    HeldNode Find(int number) const;

    // Tag of the node of that number; -1 when there is none.
    int TagOf(int number) const;

    // All numbers, ascending; those that repeat stand there as often as they are given.
    const std::vector<int> &numbers() const {
        return numbers_;
    }
    int PositionOf(int number) const {
        return FindIDByIndex(&index_, number);
    }

  private:
    std::vector<const ABQNodeBlock *> blocks_;
    std::vector<int> firsts_; // position of each block's first node
    std::vector<int> numbers_;
    std::vector<int> order_; // former position of each; empty where they were in order
    IDIndex index_{};
};

} // namespace account

#endif
