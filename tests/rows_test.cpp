// Which data lines are taken straight from the block, and that the others are left where they are. That what is taken
// is right is the business of the fuzz target of rows.
#include "tests/support/fakesystem.h"

#include "abaqus/abqrows.h"

#include "support/lines.h"

#include <gtest/gtest.h>

#include <cmath>
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

TEST(Rows, OfWholeNumbersOfUpToTenDigitsAreTaken) {
    Text text("1,1234567,12345678,123456789,2147483647,0000000001\n");
    int numbers[6];
    ASSERT_TRUE(TakeElementRow(&text.stream, 6, numbers));
    EXPECT_EQ(Ints(numbers, numbers + 6), (Ints{1, 1234567, 12345678, 123456789, 2147483647, 1}));
    for (const char *row : {"1,2147483648\n", "1,9999999999\n", "1,00000000001\n", "1,18446744073709551617\n"}) {
        Text over(row);
        EXPECT_FALSE(TakeElementRow(&over.stream, 2, numbers)) << row;
        EXPECT_EQ(over.Rest(), row);
    }
}

TEST(Rows, OfDecimalsAreTakenExactly) {
    const struct {
        const char *text;
        double value;
    } decimals[] = {{"0", 0.0},
                    {"-0.", -0.0},
                    {".5", 0.5},
                    {"-.5", -0.5},
                    {"5.", 5.0},
                    {"12345678", 12345678.0},
                    {"1.2345678", 1.2345678},
                    {"123456789.012345", 123456789.012345},       // 15 digits
                    {"0.12345678901234", 0.12345678901234},       // 15 with the 0
                    {"1234567890.123456", 1234567890.123456},     // 16
                    {"0.12345678901234567", 0.12345678901234567}, // 18
                    {"0.1234567890123456789", 0.1234567890123456789},
                    {"9007199254740993.", 9007199254740992.0}, // 2^53 + 1: to even
                    {"1e5", 1e5},
                    {"1.5E-3", 1.5e-3},
                    {"0.000000000000000000000001", 1e-24},
                    {"1000000000000000000000000", 1e24}};
    for (const auto &decimal : decimals) {
        Text text(std::string("7,") + decimal.text + "," + decimal.text + "\n");
        int number;
        double x, y, z;
        ASSERT_TRUE(TakeNodeRow(&text.stream, &number, &x, &y, &z)) << decimal.text;
        EXPECT_EQ(x, decimal.value) << decimal.text;
        EXPECT_EQ(std::signbit(x), std::signbit(decimal.value)) << decimal.text;
        EXPECT_EQ(y, decimal.value) << decimal.text;
        EXPECT_EQ(z, 0);
    }
}

TEST(Rows, OfAnyOtherFormAreLeft) {
    for (const char *row :
         {"*NODE\n", "7,.,2,3\n", "7,-,2,3\n", "7,1.5.2,2,3\n", "7,1.5D+02,2,3\n", "7:,1,2,3\n", "7,1:,2,3\n",
          "7,1e,2,3\n", "7,+1,2,3\n", "x,1,2,3\n", "1,2,3,\n", "7,1,2,3 ** c\n", "7,0x1p3,2,3\n", "7,1,2,3"}) {
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
