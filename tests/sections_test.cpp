// Sections one by one: without a stream, and for a caller that makes no mesh of them.
#include "capture.h"
#include "fakesystem.h"

#include "abaqus/abqdeck.h"
#include "abaqus/abqline.h"

#include "store/COM.h"
#include "support/frame.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

namespace {

// Reads the section of that keyword line without a stream: its record, alone in the list, must be empty, and no line
// be left in hand. Returns what was printed.
template <class Record> std::string ReadNothing(void (*read)(LineSource *, Record **), const char *keywordLine) {
    Record *list = nullptr;
    std::strcpy(ABQLine(), keywordLine);
    const std::string log = Printed([&] { read(nullptr, &list); });
    EXPECT_STREQ(ABQLine(), "");
    if (list == nullptr) {
        ADD_FAILURE() << "nothing was pushed for " << keywordLine;
        return log;
    }
    EXPECT_EQ(list->next, nullptr);
    EXPECT_EQ(list->count, 0);
    allocate(list, 0);
    return log;
}

TEST(WithoutAStream, EverySectionIsEmptyAndItsKeywordLineUsedUp) {
    EXPECT_EQ(ReadNothing(ReadNodes, "*NODE,NSET=ALL"), "  Reading Nodes ALL ... done with 0 nodes.\n");
    EXPECT_EQ(ReadNothing(ReadCells, "*ELEMENT,TYPE=C3D4,ELSET=E"), "  Reading Elements E ... done with 0 C3D4s.\n");
    EXPECT_EQ(ReadNothing(ReadNodeSets, "*NSET,NSET=N"), "  Reading NSET N ... done with 0 nodes.\n");
    EXPECT_EQ(ReadNothing(ReadCellSets, "*ELSET,ELSET=E"), "  Reading ELSET E ... done with 0 cells.\n");
    EXPECT_EQ(ReadNothing(ReadSurfaces, "*SURFACE,NAME=S"), "  Reading Surface S ... done with 0 elsets.\n");
}

// Comments, blank lines, data of a keyword of no interest, a keyword line in two parts; the last line has no end.
const char kDeck[] = "** c\n\n*NODE\n1,0,0\n2,1,0\n3,0,1\n*STEP\n\nx\n*ELEMENT, TYPE=CPS3,\nELSET=A\n7,1,2,3\n"
                     "*NSET, NSET=G, GENERATE\n1,3,1\n*ELSET, ELSET=E\n9,7\n*SURFACE, NAME=S\nE,S1";

struct Step {
    std::string keyword;
    long long line;   // of the keyword line
    long long offset; // bytes before it
    long long until;  // lines used up once the section is read
};

std::vector<Step> StepsThrough(LineSource *stream) {
    std::vector<Step> steps;
    while (ABQFindSection(stream)) {
        const Step step{std::string(ABQLine()).substr(0, 5), ABQLineNumber(), ABQLineOffset(), 0};
        ABQReadSection(stream);
        steps.push_back(step);
        steps.back().until = stream->nLines;
    }
    return steps;
}

class OneByOne : public testing::TestWithParam<std::size_t> {
  protected:
    void SetUp() override {
        fake::Reset();
        held = fake::BlocksHeld();
        fake::PutFile("deck.inp", kDeck);
        fake::ShortReads(GetParam());
    }

    void TearDown() override {
        ABQReleaseDeck();
        EXPECT_EQ(fake::BlocksHeld(), held);
        EXPECT_EQ(fake::FilesOpen(), 0);
        EXPECT_EQ(GetCOM(), nullptr);
    }

    long held = 0;
    LineSource stream;
};

TEST_P(OneByOne, TellsWhereEachSectionStandsAndLeavesItsRecord) {
    ASSERT_TRUE(ABQOpenDeck(&stream, "deck.inp"));
    std::vector<Step> steps;
    Printed([&] { steps = StepsThrough(&stream); });
    EXPECT_FALSE(stream.bFailed);
    EXPECT_EQ(BytesTaken(&stream), static_cast<long long>(sizeof kDeck - 1));
    CloseLines(&stream);
    const std::vector<Step> expected{{"*NODE", 3, 6, 7},    {"*STEP", 7, 30, 7},    {"*ELEM", 10, 39, 13},
                                     {"*NSET", 13, 76, 14}, {"*ELSE", 15, 106, 17}, {"*SURF", 17, 126, 18}};
    ASSERT_EQ(steps.size(), expected.size());
    for (std::size_t i = 0; i < steps.size(); ++i) {
        EXPECT_EQ(steps[i].keyword, expected[i].keyword) << i;
        EXPECT_EQ(steps[i].line, expected[i].line) << i;
        EXPECT_EQ(steps[i].offset, expected[i].offset) << i;
        EXPECT_EQ(steps[i].until, expected[i].until) << i;
    }
    ABQResolveDeck();
    const ABQModel *deck = ABQDeck();
    EXPECT_EQ(deck->nDim, 2);
    ASSERT_NE(deck->cellBlocks, nullptr);
    EXPECT_EQ(deck->nodeBlocks->nLine, 3);
    EXPECT_EQ(deck->cellBlocks->nLine, 10);
    EXPECT_EQ(deck->cellBlocks->i2FaceTag[0][0], 1);
    EXPECT_EQ(deck->nodeSets, nullptr); // refused
    EXPECT_EQ(deck->cellSets->nLine, 15);
    EXPECT_EQ(deck->cellSets->numbers[0], 7); // ordered
    EXPECT_EQ(deck->surfaces->nLine, 17);
}

TEST_P(OneByOne, ADeckThatCannotBeReadToItsEndEndsThere) {
    fake::FailReadsAfter(50);
    ASSERT_TRUE(ABQOpenDeck(&stream, "deck.inp"));
    ABQDeck()->bReadOn = true;
    Printed([&] { EXPECT_EQ(StepsThrough(&stream).size(), 3u); });
    EXPECT_TRUE(stream.bFailed);
    EXPECT_EQ(fake::ReadFaults(), 1);
    CloseLines(&stream);
}

INSTANTIATE_TEST_SUITE_P(ReadsOf, OneByOne, testing::Values(1, 7, 0));

TEST(OneByOneClosed, HoldsNothingWhereTheDeckCannotBeOpened) {
    fake::Reset();
    const long held = fake::BlocksHeld();
    LineSource stream;
    EXPECT_FALSE(ABQOpenDeck(&stream, "no.inp"));
    EXPECT_EQ(ABQDeck(), nullptr);
    EXPECT_EQ(fake::BlocksHeld(), held);
}

} // namespace
