// Which data lines are taken straight from the block, and that the others are left where they are. That what is taken
// is right is the business of the fuzz target of rows.
#include "tests/support/fakesystem.h"

#include "abaqus/abqrows.h"

#include "support/lines.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using Ints = std::vector<int>;

// A text and the place in it.
class Text {
  public:
    explicit Text(const std::string &text) {
        fake::PutFile("text", text);
        EXPECT_TRUE(OpenLines(&stream, "text"));
    }
    ~Text() {
        CloseLines(&stream);
    }
    Text(const Text &) = delete;
    Text &operator=(const Text &) = delete;
    std::string Rest() const {
        return std::string(stream.at, stream.end);
    }
    LineSource stream{};
};

TEST(Rows, OfNodesInThePlainFormAreTaken) {
    for (const char *row : {"7,0.5,-1.25e-3,2.5\nrest", " 7 , 0.5\t, -1.25e-3,2.5\r\nrest"}) {
        Text text(row);
        int number;
        double x, y, z;
        ASSERT_TRUE(TakeNodeRow(&text.stream, &number, &x, &y, &z)) << row;
        EXPECT_EQ(number, 7);
        EXPECT_EQ(x, 0.5);
        EXPECT_EQ(y, -1.25e-3);
        EXPECT_EQ(z, 2.5);
        EXPECT_EQ(text.Rest(), "rest");
        EXPECT_EQ(text.stream.nLines, 1);
    }
}

TEST(Rows, OfElementsInThePlainFormAreTaken) {
    Text text("12,1, 2,3\n13,4,5,6\n");
    int numbers[4];
    for (const Ints &wanted : {Ints{12, 1, 2, 3}, Ints{13, 4, 5, 6}}) {
        ASSERT_TRUE(TakeElementRow(&text.stream, 4, numbers));
        EXPECT_EQ(Ints(numbers, numbers + 4), wanted);
    }
    EXPECT_EQ(text.stream.nLines, 2);
}

TEST(Rows, OfSetsInThePlainFormAreTaken) {
    Text text("12,1, 2,3,\n4\n");
    int numbers[4];
    ASSERT_EQ(TakeSetRow(&text.stream, 4, numbers), 4);
    EXPECT_EQ(Ints(numbers, numbers + 4), (Ints{12, 1, 2, 3}));
    EXPECT_EQ(TakeSetRow(&text.stream, 4, numbers), 1);
}

TEST(Rows, OfSetsAreLeftWhereTheLineIsLongerThanALineMayBe) {
    std::string row;
    for (int i = 0; i < 511; ++i) {
        row += "123456789,"; // ten characters each
    }
    int numbers[600];
    Text longest(row + "123456789\n"); // 5119 characters
    EXPECT_EQ(TakeSetRow(&longest.stream, 600, numbers), 512);
    EXPECT_EQ(longest.Rest(), "");
    row += "1234567890\n";
    Text over(row);
    EXPECT_EQ(TakeSetRow(&over.stream, 600, numbers), -1);
    EXPECT_EQ(over.Rest(), row);
}

TEST(Rows, OfAnyOtherFormAreLeft) {
    for (const char *row : {"*NODE\n", "x,1,2,3\n", "1,2,3,\n", "7,1,2,3 ** c\n", "7,0x1p3,2,3\n", "7,1,2,3"}) {
        Text text(row);
        int number;
        double x;
        EXPECT_FALSE(TakeNodeRow(&text.stream, &number, &x, &x, &x)) << row;
        EXPECT_EQ(text.Rest(), row) << "nothing taken: nothing moved";
        Text set(row);
        int numbers[8];
        EXPECT_EQ(TakeSetRow(&set.stream, 2, numbers), -1) << row;
        EXPECT_EQ(set.Rest(), row);
    }
}

} // namespace
