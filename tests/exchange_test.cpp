// The order in which blocks end up by their first numbers.
#include "tests/support/plain/plain.h"

#include "abaqus/abqexchange.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

Ints Order(const Ints &firsts) {
    Ints order(firsts.size());
    ABQExchangeOrder(static_cast<int>(firsts.size()), firsts.data(), order.data());
    return order;
}

TEST(ExchangeOrder, OfDifferentNumbersIsAscending) {
    EXPECT_EQ(Order({}), Ints{});
    EXPECT_EQ(Order({5}), (Ints{0}));
    EXPECT_EQ(Order({101, 1}), (Ints{1, 0}));
    EXPECT_EQ(Order({3, -1, 2}), (Ints{1, 2, 0}));
}

TEST(ExchangeOrder, OfEqualNumbersIsWhatTheExchangesLeave) {
    // By hand: [2a 2b 1] -> [1 2b 2a].
    EXPECT_EQ(Order({2, 2, 1}), (Ints{2, 1, 0}));
    EXPECT_EQ(Order({2, 2}), (Ints{0, 1}));
    // [3a 3b 2 1]: A=0: 2 3b 3a 1 -> 1 3b 3a 2; A=1: 3b > 2 -> 1 2 3a 3b.
    EXPECT_EQ(Order({3, 3, 2, 1}), (Ints{3, 2, 0, 1}));
}

TEST(ExchangeOrder, OfAllShortListsOfThreeNumbers) {
    std::vector<Ints> lists{{}};
    for (std::size_t i = 0; lists[i].size() < 7; ++i) {
        for (const int number : {1, 2, 3}) {
            lists.push_back(lists[i]);
            lists.back().push_back(number);
        }
    }
    EXPECT_EQ(lists.size(), 3280u);
    for (const Ints &firsts : lists) {
        ASSERT_EQ(Order(firsts), PlainExchange(firsts)) << testing::PrintToString(firsts);
    }
}

} // namespace
