// Handing the deck over: what no deck can bring, blocks of a type that the reader does not know.
#include "abaqus/abqdeck.h"
#include "abaqus/abqrecord.h"

#include "store/COM.h"
#include "tests/support/capture.h"

#include <gtest/gtest.h>

namespace {

// A deck of two empty blocks, in list order: triangles, then quadrilaterals.
class HandOver : public testing::Test {
  protected:
    void SetUp() override {
        ABQModel *deck = ABQMakeDeck("deck.inp");
        Push(deck, kQUA4, 4);
        Push(deck, kTRI3, 3);
    }

    void TearDown() override {
        ABQReleaseDeck();
        FreeCOM();
    }

  private:
    static void Push(ABQModel *deck, int type, int nNodes) {
        auto *block = ABQNewRecord<ABQCellBlock>();
        block->type = type;
        block->nNodes = nNodes;
        ABQPush(&deck->cellBlocks, block);
    }
};

TEST_F(HandOver, ReportsABlockWithoutADimensionAndKeepsThatOfTheOthers) {
    EXPECT_EQ(Printed(ABQ_AssignSystDim), "\n  Error> Undesirable cell type detected in ABQ_AssignSystDim.\n");
    EXPECT_EQ(ABQDeck()->nDim, 2);
}

TEST_F(HandOver, ReportsABlockWithoutMapsAndGivesTheOthersTheirs) {
    EXPECT_EQ(Printed(ABQ_AssignCellMap), "\n  Error> Undesirable cell type detected in ABQ_AssignCellMap.\n");
    const ABQCellBlock *triangles = ABQDeck()->cellBlocks;
    ASSERT_NE(triangles->i1MapC2N, nullptr);
    EXPECT_EQ(triangles->i1MapCFT[0], 2); // edge 1 of the deck lies opposite corner 2
    EXPECT_EQ(triangles->next->i1MapC2N, nullptr);
    EXPECT_EQ(triangles->next->i1MapCFT, nullptr);
}

TEST_F(HandOver, GivesATypeThatNobodyKnowsNoFaces) {
    EXPECT_EQ(ABQNumFaces(kTRI3), 3);
    EXPECT_EQ(ABQNumFaces(kQUA4), 4);
    EXPECT_EQ(ABQNumFaces(98), 0);
    ABQDeck()->cellBlocks->type = 98;
    EXPECT_EQ(Printed(ABQ_AssignCellMap), "\n  Error> Undesirable cell type detected in ABQ_AssignCellMap.\n"
                                          "\n  Error> Undesirable cell type detected in ABQ_AssignCellMap.\n");
}

TEST_F(HandOver, MakingTheDeckAgainKeepsItsRecords) {
    const ABQCellBlock *first = ABQDeck()->cellBlocks;
    EXPECT_EQ(ABQMakeDeck("other.inp")->cellBlocks, first);
    EXPECT_STREQ(ABQDeckName(), "other.inp");
}

TEST_F(HandOver, PassesOverABlockWithoutMaps) {
    ABQDeck()->cellBlocks->next->count = 1; // one quadrilateral, though without columns
    Printed(ABQ_AssignCellMap);
    COM_ArchnDim(2);
    ABQ2COM_Cell();
    EXPECT_EQ(GetCOM()->Cells->nNum, 0);
}

} // namespace
