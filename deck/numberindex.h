// Positions by number in a table that is whole, where each number stands once.
#ifndef KIVOM_DECK_NUMBERINDEX_H
#define KIVOM_DECK_NUMBERINDEX_H

#include "support/lookup.h"

#include <vector>

namespace deck {

// The order that puts the numbers into ascending order, equal ones as they come; empty where they stand so, each once.
std::vector<int> AscendingOrder(const std::vector<int> &numbers);

class NumberIndex {
  public:
    NumberIndex() = default;
    ~NumberIndex();
    NumberIndex(const NumberIndex &) = delete;
    NumberIndex &operator=(const NumberIndex &) = delete;

    // The numbers' memory must stay as it is (the vector may be moved).
    void Build(const std::vector<int> &numbers);

    // The position of the number, or -1.
    int Find(int number) const {
        const int at = FindIDByIndex(&index_, number);
        return at < 0 || order_.empty() ? at : order_[static_cast<std::size_t>(at)];
    }

    // How many numbers AddRange has to look at.
    std::size_t CountLooks(const int *range) const;

    // Adds `shift` + the positions of what is there of first, first + step ... last to the list.
    void AddRange(const int *range, int shift, std::vector<int> *positions) const;

  private:
    IDIndex index_{};
    std::vector<int> sorted_; // empty where the table is in order itself
    std::vector<int> order_;
};

} // namespace deck

#endif
