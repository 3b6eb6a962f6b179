// Finding a number among all blocks.
#include "abaqus/abqfind.h"

#include "tests/support/plain/plain.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using Blocks = std::vector<std::vector<int>>;

// The rule: the first block in list order that holds the number, and the position there.
ABQPlace FindPlace(const Blocks &blocks, int number) {
    for (std::size_t b = 0; b < blocks.size(); ++b) {
        const int row = PlainFind(blocks[b], number);
        if (row != -1) {
            return {static_cast<int>(b), row};
        }
    }
    return {-1, -1};
}

void ExpectFinds(const Blocks &blocks, int lowest, int highest, bool backwards) {
    std::vector<const int *> columns;
    std::vector<int> counts;
    for (const auto &block : blocks) {
        columns.push_back(block.data());
        counts.push_back(static_cast<int>(block.size()));
    }
    ABQFinder finder;
    ABQBuildFinder(&finder, static_cast<int>(blocks.size()), columns.data(), counts.data());
    for (int i = lowest; i <= highest; ++i) {
        const int number = backwards ? highest - (i - lowest) : i;
        const ABQPlace wanted = FindPlace(blocks, number);
        const ABQPlace found = ABQFind(&finder, number);
        ASSERT_EQ(found.block, wanted.block) << number;
        if (wanted.block != -1) {
            ASSERT_EQ(found.row, wanted.row) << number;
        }
    }
    ABQReleaseFinder(&finder);
}

TEST(FindNumber, InBlocksThatFollowOneAnother) {
    ExpectFinds({{1, 2, 3}, {5, 9}, {10}}, -2, 14, false);
    ExpectFinds({{1, 2, 3}, {5, 9}, {10}}, -2, 14, true);
}

TEST(FindNumber, InBlocksThatOverlapOrAreEmpty) {
    ExpectFinds({}, -1, 1, false);
    ExpectFinds({{}, {}}, -1, 1, false);
    ExpectFinds({{}, {1, 5}, {}, {2, 5, 7}}, -1, 9, false);
    ExpectFinds({{3, 3, 3}, {3}}, 0, 5, false);
    ExpectFinds({{9}, {}, {1}}, 0, 10, false); // an empty block may keep others from being in order
}

} // namespace
