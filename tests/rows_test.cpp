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

// Spellings of numbers, the plain ones first, and what stands around them.
const std::vector<std::string> kNumbers{"1", "23",  "456789",    "2147483647", "2147483648", "-7", "+7",
                                        "0", "007", "123456789", "1234567890", "1 2",        "",   "x"};
const std::vector<std::string> kReals{
    "0.5",   "-1.25e-3", "1.", ".5", "+2.5", "1e5",  "1E+05", "1d5", "0x1p3", "inf", "123456789012345678901234567890",
    "1e400", "-0.",      "7",  "1e", "-",    "1 .5", ""};
constexpr std::size_t kPlainNumbers = 4;
constexpr std::size_t kPlainReals = 6;
const std::vector<std::string> kBlanks{"", "", "", " ", "  ", "\t", "\r"};
const std::vector<std::string> kEnds{",\n", "\r\n", " ** comment\n", "", "\n", "\n", "\n", "\n", "\n", "\n"};
const std::vector<std::string> kBeginnings{"*", "\n", "", "", "", "", "", "", "", ""};

using Random = std::mt19937;

const std::string &Any(const std::vector<std::string> &of, Random *random) {
    return of[(*random)() % of.size()];
}

// Plain rows, spoilt here and there.
std::string RandomText(Random *random, bool reals) {
    std::string text;
    for (unsigned rows = 1 + static_cast<unsigned>((*random)() % 3); rows > 0; --rows) {
        text += Any(kBeginnings, random);
        const unsigned fields = 1 + static_cast<unsigned>((*random)() % 6);
        for (unsigned i = 0; i < fields; ++i) {
            const bool real = reals && i > 0;
            const bool plain = (*random)() % 3 != 0;
            const auto &spellings = real ? kReals : kNumbers;
            const std::size_t n = !plain ? spellings.size() : real ? kPlainReals : kPlainNumbers;
            text += (i > 0 ? "," : "") + Any(kBlanks, random) + spellings[(*random)() % n] + Any(kBlanks, random);
        }
        text += Any(kEnds, random);
    }
    return text;
}

// Random texts, each read twice. `take` takes the first row of the one, or moves nothing and says so; `check` holds
// what was taken against the line in hand, which the general way has prepared of the other.
template <class Take, class Check> void CheckRows(unsigned seed, bool reals, bool joined, Take take, Check check) {
    constexpr int kRuns = 60000;
    Random random(seed);
    int taken = 0;
    for (int run = 0; run < kRuns && !testing::Test::HasFatalFailure(); ++run) {
        const std::string text = RandomText(&random, reals);
        SCOPED_TRACE(text);
        const unsigned choice = static_cast<unsigned>(random());
        Text fast(text);
        if (!take(&fast.stream, choice)) {
            ASSERT_EQ(fast.Rest(), text) << "nothing taken: nothing moved";
            continue;
        }
        ++taken;
        Text plain(text);
        const bool any = ABQNextLine(&plain.stream);
        ASSERT_FALSE(any && ABQAtKeyword());
        if (joined) { // lines of a set are taken one by one
            ASSERT_TRUE(any);
            ABQLinkContLines(&plain.stream);
        }
        check(ABQLine(), choice);
        ASSERT_EQ(fast.Rest(), plain.Rest());
        ASSERT_EQ(fast.stream.nLines, plain.stream.nLines);
    }
    EXPECT_GT(taken, kRuns / 50) << "the plain form must be met often enough";
    EXPECT_LT(taken, kRuns) << "and other forms too";
}

TEST(Rows, OfNodes) {
    int number;
    double xyz[3];
    CheckRows(
        13, true, true,
        [&](LineSource *stream, unsigned) { return TakeNodeRow(stream, &number, &xyz[0], &xyz[1], &xyz[2]); },
        [&](char *cursor, unsigned) {
            int wantedNumber;
            double wanted[3];
            ASSERT_EQ(NextINT(&wantedNumber, &cursor, ','), 1);
            ASSERT_EQ(NextDBL(&wanted[0], &cursor, ','), 1);
            ASSERT_EQ(NextDBL(&wanted[1], &cursor, ','), 1);
            NextDBL(&wanted[2], &cursor, ',');
            ASSERT_EQ(number, wantedNumber);
            ASSERT_EQ(std::memcmp(xyz, wanted, sizeof xyz), 0);
        });
}

TEST(Rows, OfElements) {
    const auto count = [](unsigned choice) { return 2 + static_cast<int>(choice % 5); };
    int numbers[8];
    CheckRows(
        14, false, true,
        [&](LineSource *stream, unsigned choice) { return TakeElementRow(stream, count(choice), numbers); },
        [&](char *cursor, unsigned choice) {
            for (int i = 0; i < count(choice); ++i) {
                int wanted;
                ASSERT_EQ(NextINT(&wanted, &cursor, ','), 1);
                ASSERT_EQ(numbers[i], wanted);
            }
        });
}

TEST(Rows, OfSets) {
    int numbers[8];
    int count;
    CheckRows(
        15, false, false,
        [&](LineSource *stream, unsigned choice) {
            const int room = 1 + static_cast<int>(choice % 8);
            count = TakeSetRow(stream, room, numbers);
            EXPECT_GE(count, -1);
            EXPECT_LE(count, room);
            return count >= 0;
        },
        [&](char *cursor, unsigned) {
            int wanted;
            int n = 0;
            while (NextINT(&wanted, &cursor, ',') != 0) {
                ASSERT_LT(n, count);
                ASSERT_EQ(numbers[n++], wanted);
            }
            ASSERT_EQ(n, count);
        });
}

} // namespace
