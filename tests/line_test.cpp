// The reader's line in hand.
#include "capture.h"
#include "fakesystem.h"

#include "abaqus/abqline.h"

#include "support/lines.h"

#include <cctype>
#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace {

std::string Compressed(const std::string &text) {
    std::vector<char> line(text.begin(), text.end());
    line.push_back('\0');
    const int length = ABQCompressLine(line.data());
    EXPECT_EQ(static_cast<std::size_t>(length), std::strlen(line.data()));
    return line.data();
}

TEST(CompressLine, DropsBlanksAndFoldsToUpperCase) {
    EXPECT_EQ(Compressed("*Node, nset=All"), "*NODE,NSET=ALL");
    EXPECT_EQ(Compressed("1, 0.5, 2.0"), "1,0.5,2.0");
    EXPECT_EQ(Compressed("*Element, type=c3d4, elset=Solid"), "*ELEMENT,TYPE=C3D4,ELSET=SOLID");
    EXPECT_EQ(Compressed(""), "");
    EXPECT_EQ(Compressed("  \t "), "");
}

TEST(CompressLine, CutsAtTheFirstTwoAsterisksSideBySide) {
    EXPECT_EQ(Compressed("** a comment"), "");
    EXPECT_EQ(Compressed("*NODE ** all nodes"), "*NODE");
    EXPECT_EQ(Compressed("***"), "");
    EXPECT_EQ(Compressed("a*b**c**d"), "A*B");
    EXPECT_EQ(Compressed("1,2**"), "1,2");
    EXPECT_EQ(Compressed("*"), "*");
    EXPECT_EQ(Compressed("a*"), "A*");
    EXPECT_EQ(Compressed("* *"), "**") << "side by side before anything is dropped";
    EXPECT_EQ(Compressed("*\t*x"), "**X");
}

TEST(CompressLine, DropsTabsReturnsSemicolonsAndBackslashes) {
    EXPECT_EQ(Compressed("a\tb\rc;d\\e\x7F"
                         "f\x80g\xFFh\x01i"),
              "ABCDEFGHI");
}

TEST(CompressLine, KeepsTheOtherPrintableCharacters) {
    const std::string kept = "*+,-.=_'\"!#$%&()/:<>?@[]^`{|}~0123456789ABCXYZ\n";
    EXPECT_EQ(Compressed(kept), kept);
}

// The rule word for word.
std::string PlainCompress(std::string text) {
    const std::size_t comment = text.find("**");
    text = text.substr(0, comment);
    std::string kept;
    for (const char c : text) {
        if (c >= 'a' && c <= 'z') {
            kept += static_cast<char>(std::toupper(c));
        } else if ((c >= '!' && c <= '~' && c != ';' && c != '\\') || c == '\n') {
            kept += c;
        }
    }
    return kept;
}

TEST(CompressLine, FollowsTheRuleOnRandomBytes) {
    std::mt19937 random(7);
    for (int run = 0; run < 30000; ++run) {
        std::string text;
        for (unsigned left = static_cast<unsigned>(random() % 50); left > 0; --left) {
            text += random() % 8 == 0 ? '*' : static_cast<char>(1 + random() % 255);
        }
        ASSERT_EQ(Compressed(text), PlainCompress(text));
    }
}

// Lines of a deck --------------------------------------------------------------------------------------

constexpr std::size_t kBlocks[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 300000};

class DeckLines : public testing::Test {
  protected:
    void SetUp() override {
        fake::Reset();
        ABQDropLine();
    }
    void TearDown() override {
        if (open) {
            CloseLines(&stream);
        }
    }

    void Begin(const std::string &text, std::size_t block = kLineBlockSize) {
        if (open) {
            CloseLines(&stream);
        }
        fake::PutFile("deck", text);
        open = OpenLines(&stream, "deck", block);
        ASSERT_TRUE(open);
    }

    // The next logical line, or "(end)".
    std::string Next() {
        if (!ABQNextLine(&stream)) {
            EXPECT_STREQ(ABQLine(), "") << "at the end the line in hand is empty";
            return "(end)";
        }
        ABQLinkContLines(&stream);
        return ABQLine();
    }

    LineSource stream{};
    bool open = false;
};

TEST_F(DeckLines, ContinueWhileTheyEndInACommaWithBlocksOfAnySize) {
    for (const std::size_t block : kBlocks) {
        Begin("1,2,3,\n\n** comment\n4,5\n\n6 , ** more\n  7,\n8\nx", block);
        EXPECT_EQ(Next(), "1,2,3,4,5") << block;
        EXPECT_EQ(Next(), "6,7,8") << block;
        EXPECT_EQ(Next(), "X") << block;
        EXPECT_EQ(Next(), "(end)") << block;
        EXPECT_EQ(Next(), "(end)") << block;
    }
}

TEST_F(DeckLines, AnOpenLastLineIsLeftAsItIs) {
    for (const std::size_t block : kBlocks) {
        Begin("1,2,\n\n** nothing more\n", block);
        EXPECT_EQ(Next(), "1,2,");
        Begin("1,2,", block);
        EXPECT_EQ(Next(), "1,2,");
    }
}

TEST_F(DeckLines, AKeywordLineAfterACommaIsJoinedLikeAnyOther) {
    Begin("1,\n*NODE\n");
    EXPECT_EQ(Next(), "1,*NODE");
}

TEST_F(DeckLines, WithoutAStreamNothingIsJoined) {
    Begin("1,\n2\n");
    ASSERT_TRUE(ABQNextLine(&stream));
    ABQLinkContLines(nullptr);
    EXPECT_STREQ(ABQLine(), "1,");
    EXPECT_FALSE(ABQNextLine(nullptr));
    EXPECT_STREQ(ABQLine(), "");
}

TEST_F(DeckLines, ANulByteEndsTheTextOfItsLine) {
    for (const std::size_t block : kBlocks) {
        Begin(std::string("ab\0cd,\nef\n*\0*\nx\n", 16), block);
        EXPECT_EQ(Next(), "AB") << block;
        EXPECT_EQ(Next(), "EF") << block;
        EXPECT_EQ(Next(), "*") << block;
        EXPECT_EQ(Next(), "X") << block;
    }
}

TEST_F(DeckLines, CommentsAreCutWhereverABlockEnds) {
    for (const std::size_t block : kBlocks) {
        Begin("12*34**56,\n78\n* *\n", block);
        EXPECT_EQ(Next(), "12*34") << block;
        EXPECT_EQ(Next(), "78") << block;
        EXPECT_EQ(Next(), "**") << block;
    }
}

TEST_F(DeckLines, KeywordLinesBeginWithAnAsterisk) {
    Begin(" *node\n1*\n");
    ABQNextLine(&stream);
    EXPECT_TRUE(ABQAtKeyword());
    ABQNextLine(&stream);
    EXPECT_FALSE(ABQAtKeyword());
    ABQDropLine();
    EXPECT_FALSE(ABQAtKeyword());
}

// The limit --------------------------------------------------------------------------------------------

std::string TooLong(int line) {
    return "\n  Error> line " + std::to_string(line) + " is longer than 5119 characters.\n";
}

std::string Repeated(char c, int n) {
    return std::string(static_cast<std::size_t>(n), c);
}

// Tiny blocks, and ones that end around the limit.
constexpr std::size_t kBlocksAroundTheLimit[] = {1, 7, 19, 64, 5118, 5119, 5120, 5121, 300000};

TEST_F(DeckLines, ALineOf5119CharactersFits) {
    for (const std::size_t block : kBlocksAroundTheLimit) {
        Begin(Repeated('a', 5119) + "\nb\n", block);
        EXPECT_EQ(Printed([&] { EXPECT_EQ(Next(), Repeated('A', 5119)); }), "");
        EXPECT_EQ(Next(), "B");
    }
}

TEST_F(DeckLines, ALongerLineKeepsItsBeginningAndIsReportedOnce) {
    for (const std::size_t block : kBlocksAroundTheLimit) {
        Begin("** comment\n\n" + Repeated('a', 5119) + Repeated('b', 9000) + "\nc\n", block);
        EXPECT_EQ(Printed([&] { EXPECT_EQ(Next(), Repeated('A', 5119)); }), TooLong(3)) << block;
        EXPECT_EQ(Next(), "C");
    }
}

TEST_F(DeckLines, WhatCountsIsTheCompressedLine) {
    Begin(Repeated(' ', 9000) + Repeated('a', 5119) + Repeated('\t', 9000) + "**" + Repeated('b', 9000) + "\n", 64);
    EXPECT_EQ(Printed([&] { EXPECT_EQ(Next(), Repeated('A', 5119)); }), "");
}

TEST_F(DeckLines, AContinuationThatDoesNotFitIsDroppedWholeAndWhatFollowsToo) {
    for (const std::size_t block : kBlocksAroundTheLimit) {
        Begin(Repeated('1', 5000) + ",\n" + Repeated('2', 200) + ",\n3,\n4\n5\n", block);
        EXPECT_EQ(Printed([&] { EXPECT_EQ(Next(), Repeated('1', 5000) + ","); }), TooLong(2)) << block;
        EXPECT_EQ(Next(), "5") << "the logical line ends behind the first line without a comma";
    }
}

TEST_F(DeckLines, AContinuationThatJustFitsIsKept) {
    Begin(Repeated('1', 5000) + ",\n" + Repeated('2', 118) + "\n");
    EXPECT_EQ(Printed([&] { EXPECT_EQ(Next(), Repeated('1', 5000) + "," + Repeated('2', 118)); }), "");
    Begin(Repeated('1', 5000) + ",\n" + Repeated('2', 119) + "\n5\n");
    EXPECT_EQ(Printed([&] { EXPECT_EQ(Next(), Repeated('1', 5000) + ","); }), TooLong(2));
    EXPECT_EQ(Next(), "5");
}

TEST_F(DeckLines, ALongFirstLineThatEndsInACommaGoesOnToBeDropped) {
    for (const std::size_t block : kBlocksAroundTheLimit) {
        Begin(Repeated('1', 6000) + ",\n2,\n" + Repeated('3', 7000) + "\n4\n", block);
        EXPECT_EQ(Printed([&] { EXPECT_EQ(Next(), Repeated('1', 5119)); }), TooLong(1)) << "reported once";
        EXPECT_EQ(Next(), "4");
    }
}

TEST_F(DeckLines, EachLongLogicalLineIsReported) {
    Begin(Repeated('1', 6000) + "\n" + Repeated('2', 6000) + "\n");
    EXPECT_EQ(Printed([&] {
                  Next();
                  Next();
              }),
              TooLong(1) + TooLong(2));
}

// Parameters -------------------------------------------------------------------------------------------

TEST_F(DeckLines, ParametersAreFoundAnywhereOnTheLine) {
    const struct {
        const char *line;
        const char *name;
        int found;
        const char *value;
    } cases[] = {
        {"*Element, type=c3d4, elset=Solid", "TYPE", 1, "C3D4"},
        {"*Element, type=c3d4, elset=Solid", "ELSET", 1, "SOLID"},
        {"*Element, type=c3d4, elset=Solid", "NSET", 0, ""},
        {"*Element, elset=", "ELSET", 1, ""},
        {"*Element, elset=, type=x", "ELSET", 1, ""},
        {"*Node, nset=a, nset=b", "NSET", 1, "A"},
        {"*Node, nset=a=b", "NSET", 1, "A=B"},
        {"*Node, mynset=a", "NSET", 1, "A"}, // inside a longer word too
        {"*Node, nset", "NSET", 0, ""},
        {"*N", "NSET", 0, ""},
        {"*Node, nset=a", "", 1, "A"}, // an empty name: the first "="
        {"*Node=", "", 1, ""},
        {"*Node", "", 0, ""},
        {"", "", 0, ""},
        {"", "NSET", 0, ""},
    };
    for (const auto &wanted : cases) {
        Begin(wanted.line);
        Next();
        char value[kNameBuffer] = "unset";
        EXPECT_EQ(ABQParseLabel(value, wanted.name), wanted.found) << wanted.line;
        EXPECT_STREQ(value, wanted.value) << wanted.line;
    }
}

TEST_F(DeckLines, ALongValueIsCutAndReported) {
    char value[kNameBuffer];
    Begin("*NODE,NSET=" + Repeated('A', 256) + ",X");
    Next();
    EXPECT_EQ(Printed([&] { EXPECT_EQ(ABQParseLabel(value, "NSET"), 1); }), "");
    EXPECT_EQ(value, Repeated('A', 256));
    Begin("*NODE,NSET=" + Repeated('A', 257));
    Next();
    EXPECT_EQ(Printed([&] { EXPECT_EQ(ABQParseLabel(value, "NSET"), 1); }),
              "\n  Error> the value of NSET is longer than 256 characters.\n");
    EXPECT_EQ(value, Repeated('A', 256));
}

TEST_F(DeckLines, OnlyTheFirstRefusedWordInListOrderIsReportedAndOneLineIsUsed) {
    constexpr const char *kWords[] = {"INPUT", "SYSTEM"};
    Begin("*NODE,SYSTEM,NSET=MYINPUTS\n\n** comment\n1,2\n3,4\n");
    Next();
    EXPECT_EQ(Printed([&] { EXPECT_TRUE(ABQRefuse(&stream, kWords, 2)); }),
              "\n  Error> Undesirable parameters: INPUT.\n");
    EXPECT_STREQ(ABQLine(), "1,2");
    EXPECT_EQ(Printed([&] { EXPECT_FALSE(ABQRefuse(&stream, kWords, 2)); }), "");
    EXPECT_STREQ(ABQLine(), "1,2") << "nothing refused: the line stays";
}

TEST_F(DeckLines, ARefusalAtTheEndOfTheDeckLeavesTheLineEmpty) {
    constexpr const char *kWords[] = {"INPUT"};
    Begin("*NODE,INPUT=X\n");
    Next();
    Printed([&] { EXPECT_TRUE(ABQRefuse(&stream, kWords, 1)); });
    EXPECT_STREQ(ABQLine(), "");
}

} // namespace
