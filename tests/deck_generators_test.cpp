// Generators and other cards that go wrong: each is said once, at its line. And what sets hold in the middle of a deck.
#include "decks.h"

namespace {

using deck::Code;
using decks::Found;
using decks::Ints;
using decks::NodesTo;
using decks::Read;
using decks::Reading;

// A triangle of nodes 1, 2 and 3 of four on the x axis; sets A (1, 2), C (3, 4) and E (the element).
std::string Base() {
    return NodesTo(4) + "*ELEMENT, TYPE=CPS3, ELSET=E\n1, 1, 2, 3\n*NSET, NSET=A\n1, 2\n*NSET, NSET=C\n3, 4\n";
}
constexpr int kBaseLines = 11;

constexpr char kTurnedSystem[] = "*SYSTEM\n0., 0., 0., 0., 1., 0., -1., 0., 0.\n";

struct Mistake {
    const char *cards;
    Code code;
    int line; // of the cards
};

TEST(Mistakes, InGeneratorsAreSaidAtTheirLine) {
    const Mistake mistakes[] = {
        // *NGEN
        {"*NGEN\n1, 2x, 1\n", Code::badNumber, 2},
        {"*NGEN\n,\n", Code::generatorEnds, 2},
        {"*NGEN, LINE=P\n1, 2, 1\n", Code::uncertain, 1},
        {"*NGEN, SYSTEM=S\n1, 2, 1\n", Code::uncertain, 1},
        {"*NGEN, LINE=C\n1, 2, 1, 99\n", Code::generatorEnds, 2},
        {"*NGEN, LINE=C\n1, 2, 1, x\n", Code::badNumber, 2},
        {"*NGEN, LINE=C\n1, 2, 1, , 0., x\n", Code::badNumber, 2},
        {"*NGEN, LINE=C\n1, 2, 1, 3, , , , x\n", Code::badNumber, 2},
        {"*NGEN, LINE=C\n1, 2, 1, 1\n", Code::generatorEnds, 2}, // an arc without radius
        {"*NGEN\n1, 2, 2\n", Code::generatorEnds, 2},
        // *NFILL
        {"*NFILL\nA, NONE, 2\n", Code::generatorEnds, 2},
        {"*NFILL\nA\n", Code::generatorEnds, 2},
        {"*NFILL\nA, C, x\n", Code::badNumber, 2},
        {"*NFILL\nA, C, 0\n", Code::generatorEnds, 2},
        {"*NFILL\nA, C, 2, 0\n", Code::generatorEnds, 2},
        {"*NFILL\nA, C, 2, 7\n", Code::generatorEnds, 2},
        {"*NFILL, BIAS=2.\nA, C, 2, 1\n", Code::uncertain, 1},
        {"*NFILL\nA, C, 500000000, 1\n", Code::tooMany, 2},
        // *NCOPY
        {"*NCOPY, OLD SET=A, SHIFT\n0., 0., 1.\n", Code::missingParameter, 1},
        {"*NCOPY, CHANGE NUMBER=x, OLD SET=A, SHIFT\n0., 0., 1.\n", Code::missingParameter, 1},
        {"*NCOPY, CHANGE NUMBER=9999999999, OLD SET=A, SHIFT\n0., 0., 1.\n", Code::missingParameter, 1},
        {"*NCOPY, CHANGE NUMBER=10, OLD SET=NONE, SHIFT\n0., 0., 1.\n", Code::generatorEnds, 1},
        {"*NCOPY, CHANGE NUMBER=10, OLD SET=A, SHIFT\n0., x, 1.\n", Code::badNumber, 2},
        {"*NCOPY, CHANGE NUMBER=10, OLD SET=A, SHIFT\n0., 0., 1.\n0., 0., 0., 0., 0., 1., 90.\n", Code::uncertain, 3},
        {"*NCOPY, CHANGE NUMBER=10, OLD SET=A, REFLECT=LINE\n0., 0., 1.\n", Code::uncertain, 1},
        {"*NCOPY, CHANGE NUMBER=999999998, OLD SET=A, SHIFT\n0., 0., 1.\n", Code::generatorEnds, 1}, // of node 2
        // *ELGEN
        {"*ELGEN\n,\n", Code::badNumber, 2},
        {"*ELGEN\nx, 2\n", Code::badNumber, 2},
        {"*ELGEN\n99, 2\n", Code::generatorEnds, 2},
        {"*ELGEN\n1, x\n", Code::badNumber, 2},
        {"*ELGEN\n1, 0\n", Code::generatorEnds, 2},
        {"*ELGEN\n1, 2, 0, 999999999\n", Code::generatorEnds, 2},
        {"*ELGEN\n1, 100000, 0, 1, 100000, 0, 1\n", Code::tooMany, 2},
        // *ELCOPY
        {"*ELCOPY, ELEMENT SHIFT=10, OLD SET=E\n", Code::missingParameter, 1},
        {"*ELCOPY, ELEMENT SHIFT=10, OLD SET=NONE, SHIFT NODES=0\n", Code::generatorEnds, 1},
        {"*ELCOPY, ELEMENT SHIFT=999999999, OLD SET=E, SHIFT NODES=0\n", Code::generatorEnds, 1},
        {"*ELSET, ELSET=F\n1, 9\n*ELCOPY, ELEMENT SHIFT=10, OLD SET=F, SHIFT NODES=0\n", Code::generatorEnds, 3},
        // What is not certain under a turned system, and parameters of other cards
        {"*SURFACE, NAME=S, COMBINE=NONSENSE\n", Code::uncertain, 1},
        {"*INCLUDE\n", Code::missingParameter, 1},
    };
    for (const Mistake &mistake : mistakes) {
        const Reading r = Read(Base() + mistake.cards);
        EXPECT_EQ(Reading::Of(r.deck.findings), (Found{{mistake.code, kBaseLines + mistake.line}})) << mistake.cards;
    }
    for (const std::string cards : {"*NGEN, LINE=C\n1, 2, 1, 3, , , , 0., 0., 1.\n",
                                    "*NCOPY, CHANGE NUMBER=10, OLD SET=A, SHIFT\n0., 0., 1.\n"}) {
        const Reading r = Read(Base() + kTurnedSystem + cards);
        const int line = kBaseLines + (cards[1] == 'N' && cards[2] == 'G' ? 4 : 3); // the row, the card
        EXPECT_EQ(Reading::Of(r.deck.findings), (Found{{Code::uncertain, line}})) << cards;
    }
}

// Numbers of the nodes that a copy of the set S makes at this point of the deck.
Ints CopiedFrom(const std::string &sets) {
    return Read(Base() + sets + "*NCOPY, CHANGE NUMBER=100, OLD SET=S, SHIFT, NEW SET=T\n0., 0., 1.\n").Nodes("T");
}

TEST(SetsNow, HoldWhatTheyNameSoFar) {
    EXPECT_EQ(CopiedFrom("*NSET, NSET=S, ELSET=E\n"), (Ints{101, 102, 103}));
    EXPECT_EQ(CopiedFrom("*ELSET, ELSET=F\n1, 7\n*NSET, NSET=S, ELSET=F\n"), (Ints{101, 102, 103})) << "no element 7";
    EXPECT_EQ(CopiedFrom("*NSET, NSET=S, GENERATE\n1, 4, 3\n"), (Ints{101, 104}));
    EXPECT_EQ(CopiedFrom("*NSET, NSET=S, GENERATE\n1, 999999, 2\n"), (Ints{101, 103})) << "a range beyond the deck";
    EXPECT_EQ(CopiedFrom("*NSET, NSET=S\nA, 4\n"), (Ints{101, 102, 104}));
    EXPECT_EQ(CopiedFrom("*NSET, NSET=S\nA, S\n"), (Ints{101, 102})) << "a set that names itself";
}

TEST(SetsNow, OfManyNodesAreFoundByNumber) {
    const Reading r = Read("*NODE\n1, 0., 0., 0.\n5001, 5000., 0., 0.\n*NGEN, NSET=S\n1, 5001\n"
                           "*NCOPY, CHANGE NUMBER=10000, OLD SET=S, SHIFT\n0., 2., 0.\n"
                           "*NGEN\n10001, 15001, 2500\n");
    ASSERT_EQ(r.mesh.nodeNumber.size(), 2 * 5001u);
    for (const int number : {1, 2, 2500, 5001}) {
        EXPECT_EQ(r.At(number), (std::vector<double>{number - 1., 0, 0}));
        EXPECT_EQ(r.At(10000 + number), (std::vector<double>{number - 1., 2, 0}));
    }
    EXPECT_EQ(r.Findings(), (Found{{Code::nodeAgain, 9}})) << "12501, alike";
}

} // namespace
