// The store's records, their growth, and the interface that fills them.
#include "tests/support/capture.h"
#include "tests/support/fakesystem.h"

#include "store/COM.h"
#include "store/sys.h"

#include "support/frame.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

namespace {

constexpr char kFacesMceno[] = "\n  Error> unmatched mceno in Alloc_Faces.\n";
constexpr char kCellsMceno[] = "\n  Error> unmatched mceno in Alloc_Cells.\n";

class Store : public testing::Test {
  protected:
    void SetUp() override {
        fake::Reset();
        ForgetColumnCounts();
        held = fake::BlocksHeld();
    }
    void TearDown() override {
        FreeCOM();
        EXPECT_EQ(fake::BlocksHeld(), held) << "something was not released";
    }
    long held = 0;
};

// Records ----------------------------------------------------------------------------------------------

TEST_F(Store, ANewMeshIsEmpty) {
    Mesh *mesh = NewMesh();
    EXPECT_EQ(mesh->nDim, 0);
    EXPECT_EQ(mesh->GRcell, nullptr);
    EXPECT_EQ(mesh->GRface, nullptr);
    EXPECT_EQ(mesh->GRnode, nullptr);
    const Nodes *nodes = mesh->Nodes;
    EXPECT_EQ(nodes->nMax, 0);
    EXPECT_EQ(nodes->nNum, 0);
    for (const int *column : {nodes->i1Mark, nodes->i1GID, nodes->i1Tag, nodes->i1OnB}) {
        EXPECT_EQ(column, nullptr);
    }
    for (const double *column : {nodes->d1X, nodes->d1Y, nodes->d1Z}) {
        EXPECT_EQ(column, nullptr);
    }
    const Faces *faces = mesh->Faces;
    EXPECT_EQ(faces->nMax + faces->nNum + faces->nNodesPerFace, 0);
    EXPECT_EQ(faces->i2Conn, nullptr);
    const Cells *cells = mesh->Cells;
    EXPECT_EQ(cells->nMax + cells->nNum + cells->nNodesPerCell, 0);
    EXPECT_EQ(cells->i2Conn, nullptr);
    EXPECT_EQ(cells->i2FaceTag, nullptr);
    DelNodes(mesh->Nodes); // records whose arrays were never made
    DelFaces(mesh->Faces);
    DelCells(mesh->Cells);
    allocate(mesh, 0);
}

TEST_F(Store, NewGroupsAreNamelessWithTagMinusOne) {
    GRcell *cell = NewGRcell();
    EXPECT_EQ(cell->next, nullptr);
    EXPECT_STREQ(cell->c1Name, "");
    EXPECT_EQ(cell->iTag, -1);
    EXPECT_EQ(cell->iAux, 0);
    EXPECT_EQ(cell->dMaxEdge, 0.0);
    EXPECT_EQ(cell->dMinEdge, 0.0);
    EXPECT_EQ(cell->dCharLen, 0.0);
    GRface *face = NewGRface();
    GRnode *node = NewGRnode();
    for (const GRnode *group : {face, node}) {
        EXPECT_EQ(group->next, nullptr);
        EXPECT_STREQ(group->c1Name, "");
        EXPECT_EQ(group->iTag, -1);
    }
    DelGRcell(cell);
    DelGRface(face);
    DelGRnode(node);
    DelGRcell(nullptr);
    DelGRface(nullptr);
    DelGRnode(nullptr);
}

// Growth -----------------------------------------------------------------------------------------------

TEST_F(Store, TheLastFreeEntryGrowsTheArrays) {
    Nodes *nodes = NewNodes();
    EXPECT_EQ(GetNextAviableNode(nodes), 0);
    EXPECT_EQ(nodes->nMax, 100000);
    nodes->i1GID[0] = 17;
    nodes->d1Z[0] = 0.5;
    for (int i = 1; i < 99999; ++i) {
        ASSERT_EQ(GetNextAviableNode(nodes), i);
    }
    EXPECT_EQ(nodes->nMax, 100000);
    EXPECT_EQ(GetNextAviableNode(nodes), 99999);
    EXPECT_EQ(nodes->nMax, 200000);
    EXPECT_EQ(nodes->nNum, 100000);
    EXPECT_EQ(nodes->i1GID[0], 17);
    EXPECT_EQ(nodes->d1Z[0], 0.5);
    nodes->i1OnB[199999] = 1; // every column has the new length
    nodes->d1X[199999] = 1;
    DelNodes(nodes);
}

TEST_F(Store, CapacitiesFollowTheSteps) {
    Nodes *nodes = NewNodes();
    for (const int capacity : {100000, 200000, 400000, 800000, 1600000, 2600000}) {
        nodes->nNum = nodes->nMax > 0 ? nodes->nMax - 1 : 0; // as after so many reservations
        const int next = nodes->nNum;
        EXPECT_EQ(GetNextAviableNode(nodes), next);
        EXPECT_EQ(nodes->nMax, capacity);
    }
    nodes->nNum = 999999;
    nodes->nMax = 1000000;
    EXPECT_EQ(GetNextAviableNode(nodes), 999999);
    EXPECT_EQ(nodes->nMax, 2000000);
    DelNodes(nodes);
}

TEST_F(Store, CellsGrowInAllColumns) {
    Cells *cells = NewCells();
    SetNumNodesCells(4, cells);
    SetNumNodesCells(3, cells);
    EXPECT_EQ(cells->nNodesPerCell, 4);
    EXPECT_EQ(GetNextAviableCell(cells), 0);
    EXPECT_EQ(cells->nMax, 100000);
    cells->i2Conn[3][0] = 5;
    cells->i2FaceTag[3][0] = 6;
    cells->nNum = 99999;
    EXPECT_EQ(GetNextAviableCell(cells), 99999);
    EXPECT_EQ(cells->nMax, 200000);
    EXPECT_EQ(cells->i2Conn[3][0], 5);
    EXPECT_EQ(cells->i2FaceTag[3][0], 6);
    for (int k = 0; k < 4; ++k) {
        cells->i2Conn[k][199999] = cells->i2FaceTag[k][199999] = k;
    }
    cells->i1Mark[199999] = cells->i1Type[199999] = cells->i1Tag[199999] = cells->i1NumNodes[199999] = 1;
    DelCells(cells);
}

TEST_F(Store, SeveralEntriesAtOnceLeaveTheStoreThatSingleOnesLeave) {
    for (const int count : {1, 99998, 99999, 100000, 100001, 250000, 399999, 400000}) {
        Nodes *one = NewNodes();
        Nodes *many = NewNodes();
        GetNextAviableNode(one);
        GetNextAviableNode(many);
        EXPECT_EQ(ReserveNodes(many, count), 1);
        for (int i = 0; i < count; ++i) {
            GetNextAviableNode(one);
        }
        EXPECT_EQ(many->nMax, one->nMax) << count;
        EXPECT_EQ(many->nNum, one->nNum) << count;
        EXPECT_EQ(ReserveNodes(many, 0), many->nNum) << "none reserved: nothing changes";
        EXPECT_EQ(many->nMax, one->nMax) << count;
        DelNodes(one);
        DelNodes(many);
    }
}

TEST_F(Store, FacesReportALateColumnOnceAtEachGrowth) {
    Faces *faces = NewFaces();
    SetNumNodesFaces(2, faces);
    EXPECT_EQ(Printed([&] { GetNextAviableFace(faces); }), "");
    SetNumNodesFaces(3, faces);
    EXPECT_EQ(Printed([&] { GetNextAviableFace(faces); }), "") << "no growth yet";
    faces->nNum = 99999;
    EXPECT_EQ(Printed([&] { EXPECT_EQ(GetNextAviableFace(faces), 99999); }), kFacesMceno);
    EXPECT_EQ(Printed([&] { EXPECT_EQ(GetNextAviableFace(faces), 100000); }), "");
    faces->nNum = 199999;
    EXPECT_EQ(Printed([&] { EXPECT_EQ(GetNextAviableFace(faces), 199999); }), kFacesMceno);
    faces->i2Conn[2][399999] = 1;
    DelFaces(faces);
}

TEST_F(Store, CellsReportALateColumnOnceAtEachGrowth) {
    Cells *cells = NewCells();
    SetNumNodesCells(3, cells);
    EXPECT_EQ(Printed([&] { GetNextAviableCell(cells); }), "");
    SetNumNodesCells(6, cells);
    cells->nNum = 99999;
    EXPECT_EQ(Printed([&] { EXPECT_EQ(GetNextAviableCell(cells), 99999); }), kCellsMceno);
    cells->nNum = 199999;
    EXPECT_EQ(Printed([&] { EXPECT_EQ(GetNextAviableCell(cells), 199999); }), kCellsMceno);
    cells->i2Conn[5][399999] = 1;
    cells->i2FaceTag[5][399999] = 1;
    DelCells(cells);
}

TEST_F(Store, FacesAndCellsRememberTheirColumnsApart) {
    Faces *faces = NewFaces();
    Cells *cells = NewCells();
    SetNumNodesFaces(2, faces);
    SetNumNodesCells(10, cells);
    EXPECT_EQ(Printed([&] {
                  GetNextAviableFace(faces);
                  GetNextAviableCell(cells);
              }),
              "");
    DelFaces(faces);
    DelCells(cells);
}

TEST_F(Store, AFirstGrowthWithoutColumnsDoesNotCountAsSeen) {
    Cells *cells = NewCells();
    EXPECT_EQ(Printed([&] { GetNextAviableCell(cells); }), "");
    SetNumNodesCells(3, cells);
    cells->nNum = 99999;
    EXPECT_EQ(Printed([&] { GetNextAviableCell(cells); }), "") << "0 columns seen: the count is only now taken";
    DelCells(cells);
}

// The interface ----------------------------------------------------------------------------------------

TEST_F(Store, ThereIsNoMeshBeforeTheFirstCallAndNoneAfterItsRelease) {
    EXPECT_EQ(GetCOM(), nullptr);
    FreeCOM();
    COM_ArchnDim(3);
    ASSERT_NE(GetCOM(), nullptr);
    FreeCOM();
    EXPECT_EQ(GetCOM(), nullptr);
    COM_ArchNode(1, 0, 0, 0, 0);
    EXPECT_EQ(GetCOM()->nDim, 0) << "a new store is empty";
    EXPECT_EQ(GetCOM()->Nodes->nNum, 1);
}

TEST_F(Store, EveryOperationMakesTheMesh) {
    const int conn[] = {1};
    const double zero[] = {0};
    const std::vector<void (*)()> operations{
        [] { COM_ArchnDim(2); },        [] { COM_ArchNode(1, 2, 3, 4, 5); },
        [] { COM_ArchGRcell(1, "A"); }, [] { COM_ArchGRface(1, "A"); },
        [] { COM_ArchGRnode(1, "A"); }, [] { COM_ArchCell(1, 3, 1, 0, nullptr, nullptr); },
    };
    for (const auto operation : operations) {
        operation();
        EXPECT_NE(GetCOM(), nullptr);
        FreeCOM();
    }
    COM_ArchNodes(1, conn, conn, zero, zero, zero);
    EXPECT_NE(GetCOM(), nullptr);
    FreeCOM();
}

TEST_F(Store, TheLastDimensionCounts) {
    COM_ArchnDim(2);
    COM_ArchnDim(3);
    EXPECT_EQ(GetCOM()->nDim, 3);
}

TEST_F(Store, NodesAreStoredAsTheyCome) {
    COM_ArchNode(7, 1, 0.5, 1.5, 2.5);
    COM_ArchNode(7, 2, 3.5, 4.5, 5.5); // the same number again
    const int numbers[] = {-3, 100};
    const int tags[] = {3, 4};
    const double x[] = {6.5, 7.5}, y[] = {8.5, 9.5}, z[] = {10.5, 11.5};
    COM_ArchNodes(2, numbers, tags, x, y, z);
    const Nodes *nodes = GetCOM()->Nodes;
    ASSERT_EQ(nodes->nNum, 4);
    const double wanted[4][5] = {
        {7, 1, 0.5, 1.5, 2.5}, {7, 2, 3.5, 4.5, 5.5}, {-3, 3, 6.5, 8.5, 10.5}, {100, 4, 7.5, 9.5, 11.5}};
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(nodes->i1GID[i], wanted[i][0]);
        EXPECT_EQ(nodes->i1Tag[i], wanted[i][1]);
        EXPECT_EQ(nodes->d1X[i], wanted[i][2]);
        EXPECT_EQ(nodes->d1Y[i], wanted[i][3]);
        EXPECT_EQ(nodes->d1Z[i], wanted[i][4]);
    }
}

TEST_F(Store, CellsOfAnyFamilyAreStoredColumnByColumn) {
    const int conn[] = {11, 12, 13, 14, 15, 16, 17, 18};
    const int faceTags[] = {1, 2, 3, 4, 5, 6, 0, 0};
    COM_ArchCell(8, kQUA4, 5, 4, conn, faceTags);
    COM_ArchCell(8, kHEX8, 6, 8, conn, faceTags);
    const Cells *cells = GetCOM()->Cells;
    ASSERT_EQ(cells->nNum, 2);
    EXPECT_EQ(cells->nNodesPerCell, 8);
    EXPECT_EQ(cells->i1Type[0], 52);
    EXPECT_EQ(cells->i1Type[1], 55);
    EXPECT_EQ(cells->i1Tag[0], 5);
    EXPECT_EQ(cells->i1Tag[1], 6);
    EXPECT_EQ(cells->i1NumNodes[0], 4);
    EXPECT_EQ(cells->i1NumNodes[1], 8);
    for (int p = 0; p < 8; ++p) {
        EXPECT_EQ(cells->i2Conn[p][1], conn[p]);
        EXPECT_EQ(cells->i2FaceTag[p][1], faceTags[p]);
        EXPECT_EQ(cells->i2Conn[p][0], p < 4 ? conn[p] : fake::kFreshInt) << "columns behind the last are not touched";
        EXPECT_EQ(cells->i2FaceTag[p][0], p < 4 ? faceTags[p] : fake::kFreshInt);
    }
}

TEST_F(Store, ACellWithoutNodesTouchesNoColumn) {
    COM_ArchCell(3, kTRI3, 9, 0, nullptr, nullptr);
    const Cells *cells = GetCOM()->Cells;
    EXPECT_EQ(cells->i1Type[0], 3);
    EXPECT_EQ(cells->i1Tag[0], 9);
    EXPECT_EQ(cells->i1NumNodes[0], 0);
    for (int p = 0; p < 3; ++p) {
        EXPECT_EQ(cells->i2Conn[p][0], fake::kFreshInt);
        EXPECT_EQ(cells->i2FaceTag[p][0], fake::kFreshInt);
    }
}

TEST_F(Store, SeveralCellsAtOnceAreStoredLikeSingleOnes) {
    const int first[] = {1, 4}, second[] = {2, 5}, third[] = {3, 6}, tags[] = {7, 8};
    const int *conn[] = {first, second, third};
    const int *faceTags[] = {nullptr, tags, nullptr};
    COM_ArchCells(3, kTRI3, 2, 3, 2, conn, faceTags);
    COM_ArchCells(3, kTRI3, 3, 3, 1, conn, nullptr);
    const Cells *cells = GetCOM()->Cells;
    ASSERT_EQ(cells->nNum, 3);
    const int nodes[3][3] = {{1, 2, 3}, {4, 5, 6}, {1, 2, 3}};
    const int slots[3][3] = {{0, 7, 0}, {0, 8, 0}, {0, 0, 0}};
    for (int c = 0; c < 3; ++c) {
        EXPECT_EQ(cells->i1Tag[c], c < 2 ? 2 : 3);
        EXPECT_EQ(cells->i1NumNodes[c], 3);
        for (int k = 0; k < 3; ++k) {
            EXPECT_EQ(cells->i2Conn[k][c], nodes[c][k]);
            EXPECT_EQ(cells->i2FaceTag[k][c], slots[c][k]);
        }
    }
}

TEST_F(Store, NoCellsAtAllChangeNothing) {
    const int *const *none = nullptr;
    EXPECT_EXIT(
        {
            COM_ArchCells(3, kTRI3, 1, 3, 0, none, nullptr);
            std::exit(GetCOM()->Cells->nNum == 0 ? 0 : 2);
        },
        testing::ExitedWithCode(0), "");
}

TEST_F(Store, GroupsStandNewestFirst) {
    COM_ArchGRnode(1, "N1");
    COM_ArchGRnode(2, "N2");
    COM_ArchGRface(3, "F1");
    COM_ArchGRface(4, "F2");
    COM_ArchGRcell(5, "E1");
    COM_ArchGRcell(6, "E2");
    const Mesh *mesh = GetCOM();
    EXPECT_STREQ(mesh->GRnode->c1Name, "N2");
    EXPECT_EQ(mesh->GRnode->iTag, 2);
    EXPECT_STREQ(mesh->GRnode->next->c1Name, "N1");
    EXPECT_EQ(mesh->GRnode->next->next, nullptr);
    EXPECT_STREQ(mesh->GRface->c1Name, "F2");
    EXPECT_EQ(mesh->GRface->next->iTag, 3);
    EXPECT_STREQ(mesh->GRcell->c1Name, "E2");
    EXPECT_EQ(mesh->GRcell->next->iTag, 5);
    EXPECT_EQ(mesh->GRcell->dMinEdge, 0.0);
}

TEST_F(Store, GroupNamesAreKeptUpTo259Characters) {
    const std::string name(259, 'n');
    COM_ArchGRnode(1, name.c_str());
    EXPECT_EQ(GetCOM()->GRnode->c1Name, name);
    COM_ArchGRnode(2, (name + "x").c_str());
    EXPECT_EQ(GetCOM()->GRnode->c1Name, name) << "never beyond the record";
    COM_ArchGRnode(3, "");
    EXPECT_STREQ(GetCOM()->GRnode->c1Name, "");
}

TEST_F(Store, ACellGroupIsFoundByNameWithoutBlanksAndTheNewestWins) {
    COM_ArchnDim(2);
    EXPECT_EQ(COM_GetGRcellTagByName("A"), -1) << "no groups";
    COM_ArchGRcell(1, "SET 1");
    COM_ArchGRcell(2, "SET1");
    COM_ArchGRcell(3, "set1");
    EXPECT_EQ(COM_GetGRcellTagByName("SET 1"), 2);
    EXPECT_EQ(COM_GetGRcellTagByName("SET1"), 2);
    EXPECT_EQ(COM_GetGRcellTagByName("S E T 1 "), 2) << "blanks that end the name asked for do no harm";
    EXPECT_EQ(COM_GetGRcellTagByName("set1"), 3);
    EXPECT_EQ(COM_GetGRcellTagByName("SET"), -1);
    COM_ArchGRcell(4, "SET1 ");
    EXPECT_EQ(COM_GetGRcellTagByName("SET1"), 2) << "blanks that end the group's name count";
    EXPECT_EQ(COM_GetGRcellTagByName("SET1 "), 2);
}

TEST_F(Store, NodeAndFaceGroupsAreNoCellGroups) {
    COM_ArchGRnode(1, "A");
    COM_ArchGRface(2, "A");
    EXPECT_EQ(COM_GetGRcellTagByName("A"), -1);
}

TEST_F(Store, ReleasingLeavesTheColumnCountsOfTheProcessAlone) {
    const int conn[] = {1, 2, 3, 4};
    const int tags[] = {0, 0, 0, 0};
    COM_ArchCell(3, kTRI3, 1, 3, conn, tags);
    FreeCOM();
    EXPECT_EQ(Printed([&] { COM_ArchCell(4, kTET4, 1, 4, conn, tags); }), kCellsMceno) << "a second mesh, wider";
    FreeCOM();
    EXPECT_EQ(Printed([&] { COM_ArchCell(3, kTRI3, 1, 3, conn, tags); }), "") << "as wide as the first";
    FreeCOM();
    ForgetColumnCounts();
    EXPECT_EQ(Printed([&] { COM_ArchCell(4, kTET4, 1, 4, conn, tags); }), "");
}

TEST_F(Store, ReleasingPassesOverRecordsThatAreAbsent) {
    COM_ArchnDim(2);
    DelNodes(GetCOM()->Nodes);
    DelFaces(GetCOM()->Faces);
    DelCells(GetCOM()->Cells);
    GetCOM()->Nodes = nullptr;
    GetCOM()->Faces = nullptr;
    GetCOM()->Cells = nullptr;
    FreeCOM();
    EXPECT_EQ(GetCOM(), nullptr);
    EXPECT_EQ(fake::BlocksHeld(), held);
}

TEST_F(Store, NoGroupIsFoundWithoutAMesh) {
    EXPECT_EQ(COM_GetGRcellTagByName("A"), -1);
    EXPECT_EQ(GetCOM(), nullptr) << "asking makes none";
}

// Tables made by the caller ----------------------------------------------------------------------------

// Two triangles in arrays of three entries, with tags by slot where `tagged`.
void FillByHand(Cells *cells, bool tagged) {
    cells->nMax = 3;
    cells->nNum = 2;
    cells->nNodesPerCell = 3;
    cells->i1Type = AllocINT1D(nullptr, 3);
    cells->i1Tag = AllocINT1D(nullptr, 3);
    cells->i1NumNodes = AllocINT1D(nullptr, 3);
    cells->i2Conn = AllocINT2D(nullptr, 3, 3);
    cells->i2FaceTag = tagged ? AllocINT2D(nullptr, 3, 3) : nullptr;
    for (int c = 0; c < 2; ++c) {
        cells->i1Type[c] = kTRI3;
        cells->i1Tag[c] = 1;
        cells->i1NumNodes[c] = 3;
        for (int k = 0; k < 3; ++k) {
            cells->i2Conn[k][c] = 10 * c + k;
            if (tagged) {
                cells->i2FaceTag[k][c] = 100 + 10 * c + k;
            }
        }
    }
}

TEST_F(Store, CellsMadeByHandAreKeptByGrowthAndOthersGoOnBehindThem) {
    const int conn[] = {21, 22, 23, 24};
    const int tags[] = {1, 2, 3, 4};
    for (const bool tagged : {true, false}) {
        COM_ArchnDim(2);
        Cells *cells = GetCOM()->Cells;
        FillByHand(cells, tagged);
        EXPECT_EQ(Printed([&] { COM_ArchCell(3, kTRI3, 2, 3, conn, tags); }), "");
        EXPECT_EQ(cells->nMax, 6);
        COM_ArchCell(4, kTET4, 3, 4, conn, tags); // wider than the tables, in the room that is left
        ASSERT_EQ(cells->nNum, 4);
        for (int k = 0; k < 3; ++k) {
            for (int c = 0; c < 2; ++c) {
                EXPECT_EQ(cells->i2Conn[k][c], 10 * c + k);
                EXPECT_EQ(cells->i2FaceTag[k][c], tagged ? 100 + 10 * c + k : 0);
            }
            EXPECT_EQ(cells->i2Conn[k][2], conn[k]);
            EXPECT_EQ(cells->i2FaceTag[k][2], tags[k]);
        }
        EXPECT_EQ(cells->i1NumNodes[3], 4);
        EXPECT_EQ(cells->i2Conn[3][3], 24);
        EXPECT_EQ(cells->i2FaceTag[3][3], 4);
        cells->i1Mark[5] = cells->i2Conn[3][5] = cells->i2FaceTag[3][5] = 1; // every array has the new length
        FreeCOM();                                                           // TearDown counts what it releases
        ForgetColumnCounts();
    }
}

TEST_F(Store, FacesMadeByHandAreKeptByGrowthAlsoWhereTheyBecomeWider) {
    Faces *faces = NewFaces();
    faces->nMax = 2;
    faces->nNum = 1;
    faces->nNodesPerFace = 2;
    faces->i2Conn = AllocINT2D(nullptr, 2, 2);
    faces->i2Conn[0][0] = 5;
    faces->i2Conn[1][0] = 6;
    SetNumNodesFaces(3, faces);
    EXPECT_EQ(GetNextAviableFace(faces), 1);
    EXPECT_EQ(faces->nMax, 4);
    EXPECT_EQ(faces->i2Conn[0][0], 5);
    EXPECT_EQ(faces->i2Conn[1][0], 6);
    faces->i1Type[3] = faces->i1Tag[3] = faces->i1NumNodes[3] = faces->i2Conn[2][3] = 1;
    DelFaces(faces);
}

TEST_F(Store, TablesWithoutColumnsAndTablesThatAreAbsentAreMadeWhole) {
    for (const int columns : {0, 2}) {
        Faces *faces = NewFaces();
        Cells *cells = NewCells();
        faces->nMax = cells->nMax = 2;
        faces->nNodesPerFace = cells->nNodesPerCell = columns;
        ReserveFaces(faces, 0);
        ReserveCells(cells, 0);
        faces->i1Type[1] = faces->i1Tag[1] = faces->i1NumNodes[1] = cells->i1Mark[1] = cells->i1NumNodes[1] = 1;
        for (const int *const *table : {faces->i2Conn, cells->i2Conn, cells->i2FaceTag}) {
            EXPECT_EQ(table != nullptr, columns > 0);
        }
        const long allocations = fake::Allocations();
        ReserveFaces(faces, 0);
        ReserveCells(cells, 0);
        EXPECT_EQ(fake::Allocations(), allocations) << "nothing is absent any more";
        DelFaces(faces);
        DelCells(cells);
    }
}

TEST_F(Store, NodesMadeByHandGetTheArraysThatAreAbsent) {
    Nodes *nodes = NewNodes();
    nodes->nMax = 4;
    nodes->nNum = 1;
    nodes->i1GID = AllocINT1D(nullptr, 4);
    nodes->i1GID[0] = 17;
    EXPECT_EQ(GetNextAviableNode(nodes), 1);
    EXPECT_EQ(nodes->nMax, 4);
    EXPECT_EQ(nodes->i1GID[0], 17);
    nodes->i1Mark[3] = nodes->i1Tag[3] = nodes->i1OnB[3] = 1;
    nodes->d1X[3] = nodes->d1Y[3] = nodes->d1Z[3] = 1;
    DelNodes(nodes);
}

} // namespace
