// Ordering the rows of a section and the sections themselves.
#include "abaqus/abqdeck.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

namespace {

using Ints = std::vector<int>;
using Reals = std::vector<double>;

TEST(SortRows, OfANodeBlockCarriesAllColumnsAlong) {
    Ints numbers{30, 10, 20}, tags{3, 1, 2};
    Reals x{3.5, 1.5, 2.5}, y{-3, -1, -2}, z{9, 7, 8};
    ABQ_SortNodesByGID(3, numbers.data(), tags.data(), x.data(), y.data(), z.data());
    EXPECT_EQ(numbers, (Ints{10, 20, 30}));
    EXPECT_EQ(tags, (Ints{1, 2, 3}));
    EXPECT_EQ(x, (Reals{1.5, 2.5, 3.5}));
    EXPECT_EQ(y, (Reals{-1, -2, -3}));
    EXPECT_EQ(z, (Reals{7, 8, 9}));
}

TEST(SortRows, OfACellBlockCarriesBothTablesAlong) {
    Ints numbers{9, 4, 7, 1}, tags{90, 40, 70, 10};
    Ints conn0{91, 41, 71, 11}, conn1{92, 42, 72, 12}, face0{5, 6, 7, 8}, face1{1, 2, 3, 4};
    int *conn[] = {conn0.data(), conn1.data()};
    int *faces[] = {face0.data(), face1.data()};
    ABQ_SortCellsByGID(4, 2, numbers.data(), tags.data(), conn, faces);
    EXPECT_EQ(numbers, (Ints{1, 4, 7, 9}));
    EXPECT_EQ(tags, (Ints{10, 40, 70, 90}));
    EXPECT_EQ(conn0, (Ints{11, 41, 71, 91}));
    EXPECT_EQ(conn1, (Ints{12, 42, 72, 92}));
    EXPECT_EQ(face0, (Ints{8, 6, 7, 5}));
    EXPECT_EQ(face1, (Ints{4, 2, 3, 1}));
}

TEST(SortRows, OfEqualNumbersIsThatOfThePartition) {
    // The pivot 3 exchanges 5 with 3 and 4 with the second 1: [3 1 1 | 4 5]. The pivot 2 then exchanges 3 with that 1.
    Ints numbers{5, 1, 4, 1, 3}, tags{50, 10, 40, 11, 30};
    Reals x{50, 10, 40, 11, 30}, y = x, z = x;
    ABQ_SortNodesByGID(5, numbers.data(), tags.data(), x.data(), y.data(), z.data());
    EXPECT_EQ(tags, (Ints{11, 10, 30, 40, 50}));
    EXPECT_EQ(x, (Reals{11, 10, 30, 40, 50}));
}

TEST(SwapBlocks, ExchangesTheContentsAndKeepsTheLinks) {
    ABQNodeBlock a{}, b{};
    a.next = &b;
    std::strcpy(a.name, "A");
    std::strcpy(b.name, "B");
    a.count = 1;
    b.count = 2;
    SwapNodeStructures(&a, &b);
    EXPECT_EQ(a.next, &b);
    EXPECT_EQ(b.next, nullptr);
    EXPECT_STREQ(a.name, "B");
    EXPECT_STREQ(b.name, "A");
    EXPECT_EQ(a.count, 2);
    ABQCellBlock c{}, d{};
    c.next = &d;
    c.type = 3;
    d.type = 5;
    SwapCellStructures(&c, &d);
    EXPECT_EQ(c.next, &d);
    EXPECT_EQ(d.next, nullptr);
    EXPECT_EQ(c.type, 5);
    EXPECT_EQ(d.type, 3);
}

// The names, "a" for the first, of a list of blocks of one entry each, in the order that the deck's ordering gives
// them; a number 0 stands for an empty block.
template <class Block> std::string Ordered(Block *ABQModel::*list, Ints numbers) {
    std::vector<Block> blocks(numbers.size(), Block{});
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        blocks[i].next = i + 1 < numbers.size() ? &blocks[i + 1] : nullptr;
        blocks[i].count = numbers[i] == 0 ? 0 : 1;
        blocks[i].i1GID = numbers[i] == 0 ? nullptr : &numbers[i];
        blocks[i].name[0] = static_cast<char>('a' + i);
    }
    ABQMakeDeck("")->*list = blocks.data();
    ABQOrderDeck();
    std::string names;
    for (const Block *block = ABQDeck()->*list; block != nullptr; block = block->next) {
        names += block->name;
    }
    ABQDeck()->*list = nullptr; // the blocks are the test's own
    ABQReleaseDeck();
    return names;
}

TEST(OrderBlocks, ByTheirFirstNumbersAndEmptyOnesKeepTheirPlace) {
    const struct {
        Ints numbers;
        const char *names;
    } cases[] = {{{101, 1}, "ba"}, {{2, 2, 1}, "cba"}, {{0, 9, 0, 5, 1, 0}, "aecdbf"},
                 {{0, 0}, "ab"},   {{5, 0, 2}, "cba"}, {{7}, "a"}};
    for (const auto &wanted : cases) {
        EXPECT_EQ(Ordered(&ABQModel::nodeBlocks, wanted.numbers), wanted.names);
        EXPECT_EQ(Ordered(&ABQModel::cellBlocks, wanted.numbers), wanted.names);
    }
}

} // namespace
