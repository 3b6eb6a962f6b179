// Data lines taken straight from the block read the same as by the general way, or are not taken at all.
#include "fakesystem.h"

#include "abaqus/abqline.h"
#include "abaqus/abqrows.h"

#include "support/frame.h"
#include "support/lines.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace {

// A text and the place in it.
class Text {
  public:
    explicit Text(const std::string &text) {
        fake::PutFile("text", text);
        EXPECT_TRUE(OpenLines(&stream, "text", 1024)); // blocks longer than any text here
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

// Plain rows, spoilt here and there.
std::string RandomRow(std::mt19937 *random, bool reals) {
    static const char *const kNumbers[] = {"1", "23",  "456789",    "2147483647", "2147483648", "-7", "+7",
                                           "0", "007", "123456789", "1234567890", "1 2",        "",   "x"};
    static const char *const kReals[] = {"0.5",
                                         "-1.25e-3",
                                         "1.",
                                         ".5",
                                         "+2.5",
                                         "1e5",
                                         "1E+05",
                                         "1d5",
                                         "0x1p3",
                                         "inf",
                                         "123456789012345678901234567890",
                                         "1e400",
                                         "-0.",
                                         "7",
                                         "1e",
                                         "-",
                                         "1 .5",
                                         ""};
    static const char *const kBlanks[] = {"", "", "", " ", "  ", "\t", "\r"};
    std::string row;
    const unsigned fields = 1 + static_cast<unsigned>((*random)() % 6);
    for (unsigned i = 0; i < fields; ++i) {
        row += i > 0 ? "," : "";
        row += kBlanks[(*random)() % 7];
        row += reals && i > 0 ? kReals[(*random)() % ((*random)() % 3 == 0 ? 18 : 6)]
                              : kNumbers[(*random)() % ((*random)() % 4 == 0 ? 14 : 4)];
        row += kBlanks[(*random)() % 7];
    }
    switch ((*random)() % 12) {
    case 0:
        return row + ",\n";
    case 1:
        return row + "\r\n";
    case 2:
        return row + " ** comment\n";
    case 3:
        return "*" + row + "\n";
    case 4:
        return "\n" + row + "\n";
    case 5:
        return row; // the end of the text
    default:
        return row + "\n";
    }
}

std::string RandomText(std::mt19937 *random, bool reals) {
    std::string text;
    for (unsigned left = 1 + static_cast<unsigned>((*random)() % 3); left > 0; --left) {
        text += RandomRow(random, reals);
    }
    return text;
}

constexpr int kRuns = 60000;

TEST(Rows, OfNodes) {
    std::mt19937 random(13);
    int taken = 0;
    for (int run = 0; run < kRuns; ++run) {
        const std::string text = RandomText(&random, true);
        Text fast(text);
        int number = -1;
        double xyz[3] = {-1, -1, -1};
        if (!TakeNodeRow(&fast.stream, &number, &xyz[0], &xyz[1], &xyz[2])) {
            ASSERT_EQ(fast.Rest(), text) << "nothing taken: nothing moved";
            continue;
        }
        ++taken;
        Text plain(text);
        ASSERT_TRUE(ABQNextLine(&plain.stream));
        ASSERT_FALSE(ABQAtKeyword()) << text;
        ABQLinkContLines(&plain.stream);
        char *cursor = ABQLine();
        int wantedNumber;
        double wanted[3];
        ASSERT_EQ(NextINT(&wantedNumber, &cursor, ','), 1) << text;
        ASSERT_EQ(NextDBL(&wanted[0], &cursor, ','), 1) << text;
        ASSERT_EQ(NextDBL(&wanted[1], &cursor, ','), 1) << text;
        NextDBL(&wanted[2], &cursor, ',');
        ASSERT_EQ(number, wantedNumber) << text;
        ASSERT_EQ(std::memcmp(xyz, wanted, sizeof xyz), 0) << text;
        ASSERT_EQ(fast.Rest(), plain.Rest()) << text;
        ASSERT_EQ(fast.stream.nLines, plain.stream.nLines) << text;
    }
    EXPECT_GT(taken, kRuns / 50) << "the plain form must be met often enough";
    EXPECT_LT(taken, kRuns) << "and other forms too";
}

TEST(Rows, OfElements) {
    std::mt19937 random(14);
    int taken = 0;
    for (int run = 0; run < kRuns; ++run) {
        const std::string text = RandomText(&random, false);
        const int count = 2 + static_cast<int>(random() % 5);
        Text fast(text);
        int numbers[8];
        if (!TakeElementRow(&fast.stream, count, numbers)) {
            ASSERT_EQ(fast.Rest(), text) << "nothing taken: nothing moved";
            continue;
        }
        ++taken;
        Text plain(text);
        ASSERT_TRUE(ABQNextLine(&plain.stream));
        ASSERT_FALSE(ABQAtKeyword()) << text;
        ABQLinkContLines(&plain.stream);
        char *cursor = ABQLine();
        for (int i = 0; i < count; ++i) {
            int wanted;
            ASSERT_EQ(NextINT(&wanted, &cursor, ','), 1) << text;
            ASSERT_EQ(numbers[i], wanted) << text;
        }
        ASSERT_EQ(fast.Rest(), plain.Rest()) << text;
        ASSERT_EQ(fast.stream.nLines, plain.stream.nLines) << text;
    }
    EXPECT_GT(taken, kRuns / 50);
    EXPECT_LT(taken, kRuns);
}

TEST(Rows, OfSets) {
    std::mt19937 random(15);
    int taken = 0;
    for (int run = 0; run < kRuns; ++run) {
        const std::string text = RandomText(&random, false);
        const int room = 1 + static_cast<int>(random() % 8);
        Text fast(text);
        int numbers[8];
        const int count = TakeSetRow(&fast.stream, room, numbers);
        if (count < 0) {
            ASSERT_EQ(count, -1);
            ASSERT_EQ(fast.Rest(), text) << "nothing taken: nothing moved";
            continue;
        }
        ++taken;
        ASSERT_LE(count, room);
        Text plain(text);
        const bool any = ABQNextLine(&plain.stream);
        ASSERT_FALSE(any && ABQAtKeyword()) << text;
        char *cursor = ABQLine();
        int wanted;
        int n = 0;
        while (any && NextINT(&wanted, &cursor, ',') != 0) { // lines of a set are taken one by one
            ASSERT_LT(n, count) << text;
            ASSERT_EQ(numbers[n++], wanted) << text;
        }
        ASSERT_EQ(n, count) << text;
        ASSERT_EQ(fast.Rest(), plain.Rest()) << text;
        ASSERT_EQ(fast.stream.nLines, plain.stream.nLines) << text;
    }
    EXPECT_GT(taken, kRuns / 50);
    EXPECT_LT(taken, kRuns);
}

} // namespace
