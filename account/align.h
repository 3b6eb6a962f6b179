// Laying two lists of rows side by side by their numbers.
#ifndef KIVOM_ACCOUNT_ALIGN_H
#define KIVOM_ACCOUNT_ALIGN_H

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

namespace account {

// Rows [meant, meantEnd) of the one list stand against rows [read, readEnd) of the other, and are not the same.
struct Gap {
    std::size_t meant, meantEnd;
    std::size_t read, readEnd;
};

// How far to look around for the next row that both lists have, before the whole list is searched.
constexpr std::size_t kNear = 16;

// Where numbers of the first list stand, for looking far ahead. Made when first needed.
template <class Number> class Positions {
  public:
    Positions(std::size_t count, const Number &number) : count_(count), number_(number) {}

    // The first position from `from` on that has the number, or the count.
    std::size_t From(std::size_t from, int number) {
        if (order_.empty()) {
            for (std::size_t i = 0; i < count_; ++i) {
                order_.push_back({number_(i), i});
            }
            std::sort(order_.begin(), order_.end());
        }
        const auto found = std::lower_bound(order_.begin(), order_.end(), std::make_pair(number, from));
        return found != order_.end() && found->first == number ? found->second : count_;
    }

  private:
    std::size_t count_;
    const Number &number_;
    std::vector<std::pair<int, std::size_t>> order_;
};

// The gaps between list `meant` of nMeant numbers and list `read` of nRead, both in order. Steps: n log n at most.
template <class Meant, class Read>
std::vector<Gap> FindGaps(std::size_t nMeant, const Meant &meant, std::size_t nRead, const Read &read) {
    std::vector<Gap> gaps;
    Positions<Meant> positions(nMeant, meant);
    std::size_t i = 0;
    std::size_t j = 0;
    const auto nextBoth = [&](std::size_t *a, std::size_t *b) { // the nearest pair of equal rows from (i, j) on
        for (std::size_t distance = 1; distance <= kNear; ++distance) {
            for (std::size_t less = distance / 2 + 1; less-- > 0;) { // rows altered come before rows lost
                for (const std::size_t more : {distance - less, less}) {
                    *a = more;
                    *b = distance - more;
                    if (i + *a < nMeant && j + *b < nRead && meant(i + *a) == read(j + *b)) {
                        return;
                    }
                }
            }
        }
        for (*b = 0; *b < kNear && j + *b < nRead; ++*b) {
            *a = positions.From(i, read(j + *b)) - i;
            if (i + *a < nMeant) {
                return;
            }
        }
        *a = j + *b < nRead ? std::min(nMeant - i, *b) : nMeant - i; // the lists have no more in common
    };
    while (i < nMeant && j < nRead) {
        if (meant(i) == read(j)) {
            ++i;
            ++j;
            continue;
        }
        std::size_t a = 0;
        std::size_t b = 0;
        nextBoth(&a, &b);
        gaps.push_back({i, i + a, j, j + b});
        i += a;
        j += b;
    }
    if (i < nMeant || j < nRead) {
        gaps.push_back({i, nMeant, j, nRead});
    }
    return gaps;
}

} // namespace account

#endif
