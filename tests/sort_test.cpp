// Sorting by splitting the range of values.
#include "tests/support/plain/plain.h"

#include "support/frame.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <numeric>
#include <vector>

namespace {

Ints Positions(std::size_t n) {
    Ints positions(n);
    std::iota(positions.begin(), positions.end(), 0);
    return positions;
}

// All four sorts of one array against the library's sort and the stated algorithm.
void ExpectSorted(const Ints &keys) {
    const int n = static_cast<int>(keys.size());
    Ints wanted = keys;
    std::sort(wanted.begin(), wanted.end());
    Ints plain = keys;
    const Ints companions = PlainSort(&plain);
    ASSERT_EQ(plain, wanted) << "the plain sort itself";

    Ints sorted = keys;
    BinarySort(n, sorted.data());
    ASSERT_EQ(sorted, wanted);

    Ints first = keys;
    Ints second = Positions(keys.size());
    SortByFirstArray2(n, first.data(), second.data());
    ASSERT_EQ(first, wanted);
    ASSERT_EQ(second, companions);

    Ints rows = keys;
    Ints order(keys.size(), -9);
    if (OrderRows(n, rows.data(), order.data())) {
        ASSERT_EQ(rows, wanted);
        ASSERT_EQ(order, companions);
    } else {
        ASSERT_EQ(rows, keys);
        ASSERT_TRUE(std::is_sorted(keys.begin(), keys.end()));
        ASSERT_EQ(order, Ints(keys.size(), -9));
    }
}

TEST(Sort, NoneAndOneAreLeftAlone) {
    int one[] = {5};
    int companion[] = {50};
    BinarySort(0, one);
    BinarySort(1, one);
    SortByFirstArray2(0, one, companion);
    SortByFirstArray2(1, one, companion);
    EXPECT_EQ(one[0], 5);
    EXPECT_EQ(companion[0], 50);
    BinarySort(0, nullptr);
    SortByFirstArray2(0, nullptr, nullptr);
}

TEST(Sort, EqualKeysKeepTheirCompanions) {
    int keys[] = {4, 4, 4};
    int companions[] = {3, 1, 2};
    SortByFirstArray2(3, keys, companions);
    EXPECT_EQ(Ints(companions, companions + 3), (Ints{3, 1, 2}));
}

TEST(Sort, TheExample) {
    int keys[] = {5, 1, 4, 1, 3};
    int companions[] = {50, 10, 40, 11, 30};
    SortByFirstArray2(5, keys, companions);
    EXPECT_EQ(Ints(keys, keys + 5), (Ints{1, 1, 3, 4, 5}));
    EXPECT_EQ(Ints(companions, companions + 5), (Ints{11, 10, 30, 40, 50}));
}

TEST(Sort, AnyNumbersOf32Bits) {
    ExpectSorted({INT_MAX, INT_MIN});
    ExpectSorted({INT_MAX, INT_MAX - 1});
    ExpectSorted({INT_MIN + 1, INT_MIN});
    ExpectSorted({-1, -2});
    ExpectSorted({0, -1, 0, -1});
    ExpectSorted({1, 0, -1, INT_MIN, INT_MAX, 0});
    ExpectSorted({-3, -4, -3, -5, -4});
}

TEST(Sort, ManyLevelsOfHalving) {
    Ints keys; // every split takes one key off
    for (int i = 0; i < 31; ++i) {
        keys.push_back(INT_MIN + (1 << i));
        keys.push_back(INT_MIN);
    }
    keys.push_back(INT_MAX);
    std::reverse(keys.begin(), keys.end());
    ExpectSorted(keys);
}

TEST(Sort, Patterns) {
    Ints falling, saw, blocks, swapped = Positions(1000);
    for (int i = 0; i < 1000; ++i) {
        falling.push_back(1000 - i);
        saw.push_back(i % 7);
        blocks.push_back((i + 500) % 1000);
    }
    std::swap(swapped[10], swapped[900]);
    for (const Ints &keys : {falling, saw, blocks, swapped, Positions(1000), Ints(1000, 3)}) {
        ExpectSorted(keys);
    }
}

TEST(Sort, DenseNumbersWithOneMissingAndOneTwiceAreNotTakenForDense) {
    ExpectSorted({3, 1, 1, 4, 5, 2, 7, 6});
    ExpectSorted({INT_MAX, INT_MAX - 2, INT_MAX - 1});
    ExpectSorted({INT_MIN + 2, INT_MIN, INT_MIN + 1});
}

TEST(Sort, ColumnsAreRearrangedByTheOrder) {
    const int order[] = {2, 0, 1};
    int ints[] = {10, 11, 12};
    int spareInts[3];
    ReorderINT(3, ints, order, spareInts);
    EXPECT_EQ(Ints(ints, ints + 3), (Ints{12, 10, 11}));
    double reals[] = {0.5, 1.5, 2.5};
    double spareReals[3];
    ReorderDBL(3, reals, order, spareReals);
    EXPECT_EQ(std::vector<double>(reals, reals + 3), (std::vector<double>{2.5, 0.5, 1.5}));
}

} // namespace
