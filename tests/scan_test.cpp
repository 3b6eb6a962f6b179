// Lines, fields and numbers.
#include "tests/support/fakesystem.h"
#include "tests/support/plain/plain.h"

#include "support/frame.h"
#include "support/lines.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace {

// A line in a buffer that can be written to.
struct Line {
    explicit Line(const std::string &text) : buffer(text.begin(), text.end()) {
        buffer.push_back('\0');
        cursor = buffer.data();
    }
    char *Text() {
        return buffer.data();
    }
    std::vector<char> buffer;
    char *cursor;
};

// Fields -----------------------------------------------------------------------------------------------

std::vector<int> GrabAllInts(const std::string &text, int calls) {
    Line line(text);
    std::vector<int> results;
    for (int i = 0; i < calls; ++i) {
        int value = -7;
        results.push_back(GrabNextINTFromCHR(&value, line.Text(), ','));
        results.push_back(value);
    }
    return results;
}

TEST(Fields, BlanksInsideAFieldAreSqueezedOut) {
    EXPECT_EQ(GrabAllInts("12 34, 5", 3), (std::vector<int>{1, 1234, 1, 5, 0, 0}));
}

TEST(Fields, NothingIsFoundInEmptyLines) {
    EXPECT_EQ(GrabAllInts("", 1), (std::vector<int>{0, 0}));
    EXPECT_EQ(GrabAllInts("   ", 1), (std::vector<int>{0, 0}));
    EXPECT_EQ(GrabAllInts(",", 2), (std::vector<int>{0, 0, 0, 0}));
}

TEST(Fields, AnEmptyFieldBeforeTheSeparatorIsNotFoundButTheNextOneIs) {
    EXPECT_EQ(GrabAllInts(",7", 2), (std::vector<int>{0, 0, 1, 7}));
}

TEST(Fields, ANumberThatCannotBeReadIsZeroAndCountsAsFound) {
    EXPECT_EQ(GrabAllInts("abc", 1), (std::vector<int>{1, 0}));
    double value = 3;
    Line line("x1");
    EXPECT_EQ(GrabNextDBLFromCHR(&value, line.Text(), ','), 1);
    EXPECT_EQ(value, 0);
}

TEST(Fields, OnlyTheSpaceIsABlank) {
    char field[kNameBuffer];
    Line line("a\t b\r,c");
    EXPECT_EQ(GrabNextCHRFromCHR(field, line.Text(), ','), 1);
    EXPECT_STREQ(field, "a\tb\r");
}

TEST(Fields, WithoutASeparatorTheWholeLineIsOneField) {
    char field[kNameBuffer];
    Line line(" ab c;d ");
    EXPECT_EQ(GrabNextCHRFromCHR(field, line.Text(), ','), 1);
    EXPECT_STREQ(field, "abc;d");
    EXPECT_STREQ(line.Text(), "        ");
}

TEST(Fields, TheEndOfTheLineMayBeTheSeparator) {
    char field[kNameBuffer];
    Line line("ab,c");
    EXPECT_EQ(GrabNextCHRFromCHR(field, line.Text(), '\0'), 1);
    EXPECT_STREQ(field, "ab,c");
    EXPECT_EQ(GrabNextCHRFromCHR(field, line.Text(), '\0'), 0);
}

TEST(Fields, ALongFieldIsTakenIn256CharactersAndItsRestIsTheNext) {
    char field[kNameBuffer];
    Line line(std::string(256, 'a') + std::string(44, 'b'));
    EXPECT_EQ(GrabNextCHRFromCHR(field, line.Text(), ','), 1);
    EXPECT_EQ(std::string(field), std::string(256, 'a'));
    EXPECT_EQ(GrabNextCHRFromCHR(field, line.Text(), ','), 1);
    EXPECT_EQ(std::string(field), std::string(44, 'b'));
    EXPECT_EQ(GrabNextCHRFromCHR(field, line.Text(), ','), 0);
}

// Numbers ----------------------------------------------------------------------------------------------

void ExpectSameInt(const std::string &text) {
    ASSERT_EQ(ReadINT(text.c_str()), PlainINT(text)) << "\"" << text << "\"";
}

void ExpectSameDouble(const std::string &text) {
    const double wanted = PlainDBL(text);
    const double got = ReadDBL(text.c_str());
    ASSERT_EQ(std::memcmp(&got, &wanted, sizeof got), 0) << "\"" << text << "\" " << got << " " << wanted;
}

// Each ends in a "|".
const std::string kPickedNumbers =
    "| |0|-0|+0|00|7|-7|+7|++7|+-7|-|+|007|7x|x7| 7|\t7|7 8|999999999|1000000000|0999999999|"
    "000000000000000000000012|2147483647|2147483648|-2147483648|-2147483649|4294967295|4294967296|4294967303|"
    "9223372036854775807|9223372036854775808|-9223372036854775808|-9223372036854775809|"
    "99999999999999999999999999|0x10|-0x10|0x|0x1p4|0x1.8p1|0X1P-1074|1.|.1|.|-.|-.5|+.5|1.5.2|1e|1e+|1e-|1e5|"
    "1E5|1e+05|1e-05|1.e3|.e3|1d5|1e5x|1e400|-1e400|1e-400|-1e-400|4.9e-324|2.4703282292062327e-324|"
    "2.4703282292062328e-324|2.2250738585072011e-308|2.2250738585072014e-308|1.7976931348623157e308|"
    "1.7976931348623158e308|1.7976931348623159e308|9007199254740993|9007199254740992.5|0.1|0.3|"
    "1.00000000000000011102230246251565404236316680908203125|"
    "1.00000000000000011102230246251565404236316680908203124|"
    "1.00000000000000011102230246251565404236316680908203126|inf|-inf|INF|infinity|infinit|nan|-nan|nan(12)|nan(|"
    "NAN(x y)|1_000|1,5|1e99999999999999999999|1e-99999999999999999999|0e99999999999999999999|"
    "0.000000000000000000000000000000000000000000000001|1\r|1\n|";

TEST(Numbers, PickedTextsReadAsTheCLibraryReadsThem) {
    int n = 0;
    for (std::size_t at = 0, end; (end = kPickedNumbers.find('|', at)) != std::string::npos; at = end + 1, ++n) {
        ExpectSameInt(kPickedNumbers.substr(at, end - at));
        ExpectSameDouble(kPickedNumbers.substr(at, end - at));
    }
    EXPECT_GT(n, 90);
}

TEST(Numbers, IntegersAre64BitsWithSaturationAndThenTheLow32) {
    EXPECT_EQ(ReadINT("4294967303"), 7);
    EXPECT_EQ(ReadINT("99999999999999999999"), -1);
    EXPECT_EQ(ReadINT("-99999999999999999999"), 0);
    EXPECT_EQ(ReadINT("abc"), 0);
}

std::string RandomText(std::mt19937_64 *random, const char *characters, unsigned longest) {
    const std::size_t n = std::strlen(characters);
    std::string text;
    for (unsigned left = static_cast<unsigned>((*random)() % (longest + 1)); left > 0; --left) {
        text += characters[(*random)() % n];
    }
    return text;
}

TEST(Numbers, AMillionRandomTextsReadAsTheCLibraryReadsIntegers) {
    std::mt19937_64 random(2);
    for (int run = 0; run < 1000000 && !HasFatalFailure(); ++run) {
        switch (run % 3) {
        case 0:
            ExpectSameInt(RandomText(&random, "0123456789", 21));
            break;
        case 1:
            ExpectSameInt(RandomText(&random, "-+01239 \txX.e", 8));
            break;
        default:
            ExpectSameInt(std::to_string(static_cast<std::int64_t>(random() >> (random() % 64))));
            break;
        }
    }
}

// The shortest to the longest spellings of a double of any size.
std::string RandomDoubleText(std::mt19937_64 *random) {
    const std::uint64_t bits = (*random)();
    double value;
    std::memcpy(&value, &bits, sizeof value);
    if ((*random)() % 2 == 0) {
        value = static_cast<double>(static_cast<std::int64_t>(bits) >> ((*random)() % 64)) / 1000;
    }
    char text[1200];
    static const char *const kFormats[] = {"%.17g", "%.16e", "%g", "%.3f", "%.9E", "%+.15e", "%a", "%.40g", "%20.8f"};
    std::snprintf(text, sizeof text, kFormats[(*random)() % 9], value);
    return text;
}

TEST(Numbers, AMillionRandomTextsReadAsTheCLibraryReadsReals) {
    std::mt19937_64 random(3);
    for (int run = 0; run < 1000000 && !HasFatalFailure(); ++run) {
        switch (run % 4) {
        case 0:
            ExpectSameDouble(RandomText(&random, "0123456789.", 25));
            break;
        case 1:
            ExpectSameDouble(RandomText(&random, "-+0123.eExXpPnNaAiIfF() \t", 12));
            break;
        case 2:
            ExpectSameDouble(RandomText(&random, "0123456789", 4) + "." + RandomText(&random, "0123456789", 20) + "e" +
                             RandomText(&random, "+-", 1) + RandomText(&random, "0123456789", 3));
            break;
        default:
            ExpectSameDouble(RandomDoubleText(&random));
            break;
        }
    }
}

// Lines ------------------------------------------------------------------------------------------------

class Lines : public testing::Test {
  protected:
    void SetUp() override {
        fake::Reset();
    }

    // All lines of the text, and then some calls more.
    static std::vector<std::string> Read(const std::string &text, std::size_t blockSize, int calls) {
        fake::PutFile("text", text);
        LineSource source;
        EXPECT_TRUE(OpenLines(&source, "text", blockSize));
        std::vector<std::string> lines;
        for (int i = 0; i < calls; ++i) {
            std::vector<char> line(text.size() + 1, 'x');
            fgetportableline(&source, line.data());
            lines.push_back(line.data());
        }
        CloseLines(&source);
        EXPECT_EQ(fake::FilesOpen(), 0);
        return lines;
    }
};

TEST_F(Lines, AreTheSameWithBlocksOfAnySize) {
    const std::string text = "abc\r\n\nlonger than any of the blocks\n\n\nx\n no end";
    const std::vector<std::string> wanted{"abc\r", "", "longer than any of the blocks", "", "", "x", " no end", "", ""};
    for (std::size_t block = 1; block <= 20; ++block) {
        fake::ShortReads(0);
        EXPECT_EQ(Read(text, block, 9), wanted) << "blocks of " << block;
        fake::ShortReads(block);
        EXPECT_EQ(Read(text, 1000, 9), wanted) << "reads of " << block;
    }
}

TEST_F(Lines, OfAnEmptyFileAreEmpty) {
    EXPECT_EQ(Read("", 8, 2), (std::vector<std::string>{"", ""}));
}

TEST_F(Lines, ALastLineWithoutEndIsALineAndNothingStandsBehindALastEnd) {
    for (std::size_t block = 1; block <= 5; ++block) {
        for (const char *text : {"ab\ncd", "ab\ncd\n"}) {
            fake::PutFile("text", text);
            LineSource source;
            ASSERT_TRUE(OpenLines(&source, "text", block));
            const char *begin;
            const char *end;
            bool last;
            int lines = 0;
            while (NextPiece(&source, &begin, &end, &last)) {
                lines += last ? 1 : 0;
            }
            EXPECT_EQ(source.nLines, 2) << text;
            EXPECT_FALSE(NextPiece(&source, &begin, &end, &last)) << text;
            EXPECT_EQ(source.nLines, 2) << text;
            CloseLines(&source);
        }
    }
}

TEST_F(Lines, ATextThatCannotBeOpenedOrReadHoldsNothing) {
    const long held = fake::BlocksHeld();
    LineSource source;
    EXPECT_FALSE(OpenLines(&source, "none"));
    fake::PutFile("text", "abc");
    fake::FailReadsAfter(0);
    EXPECT_FALSE(OpenLines(&source, "text"));
    EXPECT_EQ(fake::ReadFaults(), 1);
    EXPECT_EQ(fake::BlocksHeld(), held);
    EXPECT_EQ(fake::FilesOpen(), 0);
}

TEST_F(Lines, AReadThatFailsHalfWayEndsTheTextAndIsKnown) {
    fake::PutFile("text", "abcdef\ngh\n");
    fake::FailReadsAfter(5);
    LineSource source;
    ASSERT_TRUE(OpenLines(&source, "text", 4));
    char line[20];
    fgetportableline(&source, line);
    EXPECT_STREQ(line, "abcde");
    EXPECT_TRUE(source.bFailed);
    EXPECT_EQ(fake::ReadFaults(), 1);
    CloseLines(&source);
}

TEST(StreamLines, ComeWithoutTheirEndsAndAreEmptyBehindTheLast) {
    std::FILE *stream = std::tmpfile();
    ASSERT_NE(stream, nullptr);
    const char text[] = "abc\r\n\nlast";
    std::fwrite(text, 1, sizeof text - 1, stream);
    std::rewind(stream);
    for (const char *wanted : {"abc\r", "", "last", "", ""}) {
        char line[20] = "unset";
        fgetportableline(stream, line);
        EXPECT_STREQ(line, wanted);
    }
    std::fclose(stream);
}

} // namespace
