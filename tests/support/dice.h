// Chance for tests: the same seed gives the same throws.
#ifndef KIVOM_TESTS_SUPPORT_DICE_H
#define KIVOM_TESTS_SUPPORT_DICE_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <random>
#include <utility>
#include <vector>

class Dice {
  public:
    explicit Dice(std::uint64_t seed) : random_(seed * 2654435761u + 1) {}
    int Below(int n) { // n > 0
        return static_cast<int>(random_() % static_cast<std::uint64_t>(n));
    }
    int From(int least, int most) {
        return least + Below(most - least + 1);
    }
    double Between(double least, double most) {
        return least + (most - least) * static_cast<double>(random_() >> 11) * 0x1p-53;
    }
    bool Chance(double share) {
        return Between(0, 1) < share;
    }
    int Any() {
        return static_cast<int>(random_());
    }
    template <class List> const auto &Of(const List &list) {
        return list[static_cast<std::size_t>(Below(static_cast<int>(list.size())))];
    }
    template <class T> T Of(std::initializer_list<T> list) {
        return *(list.begin() + Below(static_cast<int>(list.size())));
    }
    template <class List> void Shuffle(List *list) {
        for (std::size_t i = list->size(); i > 1; --i) {
            std::swap((*list)[i - 1], (*list)[static_cast<std::size_t>(Below(static_cast<int>(i)))]);
        }
    }
    // The list in `count` parts, of which some may be empty.
    template <class List> std::vector<List> Deal(const List &list, int count) {
        std::vector<int> cuts = {0, static_cast<int>(list.size())};
        for (int i = 1; i < count; ++i) {
            cuts.push_back(Below(static_cast<int>(list.size()) + 1));
        }
        std::sort(cuts.begin(), cuts.end());
        std::vector<List> parts;
        for (std::size_t i = 1; i < cuts.size(); ++i) {
            parts.emplace_back(list.begin() + cuts[i - 1], list.begin() + cuts[i]);
        }
        return parts;
    }

  private:
    std::mt19937_64 random_;
};

#endif
