// A whole deck, read under bad conditions.
#include "tests/support/capture.h"
#include "tests/support/fakesystem.h"

#include "abaqus/LoadABQ.h"
#include "store/COM.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>
#include <string>

#include <unistd.h>

namespace {

const char kDeck[] =
    "*Heading\n a deck\n*Node, nset=All\n  11, 0.5, 0.25, -1e-3\n 12, 1., 2.\n 3, 1.5,2.5,3.5\n14,0,0,\n1\n"
    "*Element, type=C3D4, elset=Solid\n 5, 11, 12,\n 3, 14\n2,3,11,12,14\n"
    "*Element, type=CPS3, elset=Flat\n1,11,12,3\n"
    "*Nset, nset=Some\n3, 12,\n14\n*Elset, elset=E\n5,2\n"
    "*Surface, name=S\nE, S1\n1, S2\n";

// The store in words.
std::string Describe() {
    std::string text;
    const auto add = [&text](double value) {
        char number[40];
        std::snprintf(number, sizeof number, " %.17g", value);
        text += number;
    };
    const Mesh *mesh = GetCOM();
    add(mesh->nDim);
    for (int i = 0; i < mesh->Nodes->nNum; ++i) {
        text += "\nnode";
        add(mesh->Nodes->i1GID[i]);
        add(mesh->Nodes->i1Tag[i]);
        add(mesh->Nodes->d1X[i]);
        add(mesh->Nodes->d1Y[i]);
        add(mesh->Nodes->d1Z[i]);
    }
    for (int c = 0; c < mesh->Cells->nNum; ++c) {
        text += "\ncell";
        add(mesh->Cells->i1Type[c]);
        add(mesh->Cells->i1Tag[c]);
        for (int k = 0; k < mesh->Cells->i1NumNodes[c]; ++k) {
            add(mesh->Cells->i2Conn[k][c]);
        }
        text += " |";
        for (int k = 0; k < mesh->Cells->i1NumNodes[c]; ++k) {
            add(mesh->Cells->i2FaceTag[k][c]);
        }
    }
    for (const GRnode *group = mesh->GRnode; group != nullptr; group = group->next) {
        text += "\nnodes " + std::string(group->c1Name);
        add(group->iTag);
    }
    for (const GRface *group = mesh->GRface; group != nullptr; group = group->next) {
        text += "\nfaces " + std::string(group->c1Name);
        add(group->iTag);
    }
    for (const GRcell *group = mesh->GRcell; group != nullptr; group = group->next) {
        text += "\ncells " + std::string(group->c1Name);
        add(group->iTag);
    }
    return text;
}

// Face label S1 of a tetrahedron is slot 3; S2 of a triangle is slot 0.
const char kStore[] = " 3"
                      "\nnode 3 1 1.5 2.5 3.5\nnode 11 0 0.5 0.25 -0.001\nnode 12 1 1 2 0\nnode 14 1 0 0 1"
                      "\ncell 3 1 11 12 3 | 1 0 0\ncell 5 2 3 11 12 14 | 0 0 0 1\ncell 5 2 11 12 3 14 | 0 0 0 1"
                      "\nnodes SOME 1\nfaces S 1\ncells SOLID 2\ncells FLAT 1";

class Reader : public testing::Test {
  protected:
    void SetUp() override {
        fake::Reset();
        held = fake::BlocksHeld();
        fake::PutFile("deck.inp", kDeck);
    }
    void TearDown() override {
        FreeCOM();
        EXPECT_EQ(fake::BlocksHeld(), held) << "the reader keeps nothing";
        EXPECT_EQ(fake::FilesOpen(), 0);
    }
    long held = 0;
};

TEST_F(Reader, TheStoreHoldsTheDeckInTheOrderOfItsNumbers) {
    Printed([] { LoadABQ("deck.inp"); });
    EXPECT_EQ(Describe(), kStore);
}

TEST_F(Reader, ReadsOfAnyLengthGiveTheSameStoreAndTheSameLog) {
    const std::string log = Printed([] { LoadABQ("deck.inp"); });
    FreeCOM();
    for (std::size_t most = 1; most <= 60; ++most) {
        const long before = fake::Reads();
        fake::ShortReads(most);
        EXPECT_EQ(Printed([] { LoadABQ("deck.inp"); }), log) << most;
        EXPECT_EQ(Describe(), kStore) << most;
        EXPECT_GE(fake::Reads() - before, static_cast<long>((sizeof kDeck - 1) / most));
        FreeCOM();
    }
}

// What the call prints on standard output goes to standard error, where a test of a process's end can see it.
void Load(const char *name) {
    std::fflush(stdout);
    dup2(2, 1);
    LoadABQ(name);
    std::fflush(stdout);
}

constexpr int kUnreadable = 255; // -1 as the shell sees it

TEST_F(Reader, ADeckThatCannotBeOpenedEndsTheProcess) {
    fake::RefuseToOpen("deck.inp", EACCES);
    EXPECT_EXIT(Load("deck.inp"), testing::ExitedWithCode(kUnreadable), "^\n Error> cannot open file deck.inp\n$");
    EXPECT_EXIT(Load("none"), testing::ExitedWithCode(kUnreadable), "^\n Error> cannot open file none\n$");
}

TEST_F(Reader, ADeckThatCannotBeReadToItsEndEndsTheProcess) {
    for (const long bytes : {0L, 1L, 60L, static_cast<long>(sizeof kDeck - 1)}) {
        fake::FailReadsAfter(bytes);
        EXPECT_EXIT(Load("deck.inp"), testing::ExitedWithCode(kUnreadable), "\n Error> cannot open file deck.inp\n$")
            << bytes;
    }
}

TEST_F(Reader, WithoutMemoryTheProcessEndsWithStatus1) {
    Printed([] { LoadABQ("deck.inp"); });
    FreeCOM();
    fake::FailAllocationsFrom(1);
    EXPECT_EXIT(Load("deck.inp"), testing::ExitedWithCode(1), "Error> failed to allocate storage with ");
}

TEST_F(Reader, AHeadingAloneGivesAnEmptyStoreOfDimension0) {
    fake::PutFile("deck.inp", "*HEADING\n** a comment\n text\n");
    EXPECT_EQ(Printed([] { LoadABQ("deck.inp"); }), "Reading Abaqus mesh from deck.inp ...\n");
    EXPECT_EQ(Describe(), " 0");
}

} // namespace
