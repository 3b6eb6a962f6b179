// A list of findings that stays short however often a deck repeats itself.
#ifndef KIVOM_DECK_TALLY_H
#define KIVOM_DECK_TALLY_H

#include "deck/finding.h"

#include <utility>
#include <vector>

namespace deck {

class Tally {
  public:
    // Puts the finding on the list; beyond ten thousand of a code the last one counts the rest. One list a code.
    void Add(std::vector<Finding> *list, Finding finding) {
        const auto kind = static_cast<std::size_t>(finding.code);
        if (++count_[kind] > kMostOfACode) {
            (*list)[last_[kind]].count += finding.count;
            return;
        }
        last_[kind] = list->size();
        list->push_back(std::move(finding));
    }

  private:
    static constexpr long long kMostOfACode = 10000;

    std::vector<long long> count_ = std::vector<long long>(kCodes, 0);
    std::vector<std::size_t> last_ = std::vector<std::size_t>(kCodes, 0); // the last one of a code in its list
};

} // namespace deck

#endif
