// The reader's records by the line of their keyword line.
#ifndef KIVOM_ACCOUNT_RECORDS_H
#define KIVOM_ACCOUNT_RECORDS_H

#include <algorithm>
#include <cstddef>
#include <vector>

namespace account {

template <class Record> class ByLine {
  public:
    explicit ByLine(Record *list) {
        for (; list != nullptr; list = list->next) {
            records_.push_back(list);
        }
        std::sort(records_.begin(), records_.end(),
                  [](const Record *a, const Record *b) { return a->nLine < b->nLine; });
    }

    // The record of that line, or null.
    Record *Find(long long line) const {
        const auto found = std::lower_bound(records_.begin(), records_.end(), line,
                                            [](const Record *record, long long at) { return record->nLine < at; });
        return found != records_.end() && (*found)->nLine == line ? *found : nullptr;
    }

    // All of them, in the order of the deck.
    const std::vector<Record *> &all() const {
        return records_;
    }

  private:
    std::vector<Record *> records_;
};

} // namespace account

#endif
