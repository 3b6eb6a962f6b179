// The translation, on meshes made in the store: among them what no deck can bring.
#include "tests/support/capture.h"
#include "tests/support/meshes.h"

#include "support/frame.h"
#include "translate/MeshAll.h"

#include <cmath>
#include <limits>

namespace {

using Ints = std::vector<int>;

class Translate : public CleanStore {
  protected:
    // The log between its first line and the summary.
    static std::string Messages() {
        const std::string log = Printed(MeshAll);
        const std::string begin = "\nTranslating mesh ... \n";
        const std::size_t end = log.find("  Mesh summary:\n");
        EXPECT_EQ(log.substr(0, begin.size()), begin);
        EXPECT_NE(end, std::string::npos);
        return log.substr(begin.size(), end - begin.size());
    }
};

constexpr char kCorrected1[] = "  Numbering order of 1 elements has been corrected.\n";
constexpr char kOrderType[] = "\n  Error> Undesirable cell type detected in ChckCellsOrde.\n";
constexpr char kLengthType[] = "\n  Error> Undesirable cell type detected in CalLength.\n";
constexpr char kCharacType[] = "\n  Error> Undesirable cell type detected in CalCharac.\n";
constexpr char kFacesType[] = "\n  Error> Undesirable cell type in ApFaces.\n";

const std::vector<At> kSquare{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}};

const GRcell *Group(const std::string &name) {
    const GRcell *group = GetCOM()->GRcell;
    while (group != nullptr && name != group->c1Name) {
        group = group->next;
    }
    return group;
}

void ExpectLengths(const GRcell *group, double smallest, double largest, double characteristic) {
    ASSERT_NE(group, nullptr);
    EXPECT_DOUBLE_EQ(group->dMinEdge, smallest) << group->c1Name;
    EXPECT_DOUBLE_EQ(group->dMaxEdge, largest) << group->c1Name;
    EXPECT_DOUBLE_EQ(group->dCharLen, characteristic) << group->c1Name;
}

void ExpectMeshLengths(double smallest, double largest, double characteristic) {
    EXPECT_DOUBLE_EQ(GetCOM()->Nodes->dMinEdge, smallest);
    EXPECT_DOUBLE_EQ(GetCOM()->Nodes->dMaxEdge, largest);
    EXPECT_DOUBLE_EQ(GetCOM()->Nodes->dCharLen, characteristic);
}

// Whole ------------------------------------------------------------------------------------------------

TEST_F(Translate, WithoutAMeshNothingIsPrinted) {
    EXPECT_EQ(Printed(MeshAll), "");
}

TEST_F(Translate, TheSummaryInItsOrder) {
    AddMesh(2, kSquare);
    AddCell(kTRI3, 1, {1, 2, 3});
    COM_ArchGRcell(1, "A");
    COM_ArchGRcell(2, "B");
    COM_ArchGRnode(1, "N");
    for (const char *name : {"F", "G", "H"}) {
        COM_ArchGRface(1, name);
    }
    const std::string log = Printed(MeshAll);
    const std::string wanted = "\nTranslating mesh ... \n"
                               "  Mesh summary:\n"
                               "    Number of dimensions  = 2\n"
                               "    Number of nodes       = 3\n" // the fourth is used by nothing
                               "    Number of elements    = 1\n"
                               "    Number of node groups = 1\n"
                               "    Number of face groups = 3\n"
                               "    Number of cell groups = 2\n"
                               "    Maximum edge length   = 1.414214e+00\n"
                               "    Minimum edge length   = 1.000000e+00\n"
                               "    Characteristic length = 7.071068e-01\n"
                               "Elapsed Time: ";
    EXPECT_EQ(log.substr(0, wanted.size()), wanted);
    double seconds = -1;
    char end[20] = "";
    EXPECT_EQ(std::sscanf(log.c_str() + wanted.size(), "%lf %19s", &seconds, end), 2);
    EXPECT_GE(seconds, 0);
    EXPECT_STREQ(end, "sec.");
    EXPECT_EQ(log.back(), '\n');
}

TEST_F(Translate, WithoutCellsAllNodesAreDroppedAndTheLengthsAreThoseOfNone) {
    AddMesh(2, kSquare);
    EXPECT_EQ(Messages(), "");
    EXPECT_EQ(GetCOM()->Nodes->nNum, 0);
    ExpectMeshLengths(1e15, 0, 1e15);
}

TEST_F(Translate, AnEmptyStoreGoesThrough) {
    COM_ArchnDim(3);
    COM_ArchGRcell(1, "C_NONE");
    EXPECT_EQ(Messages(), "");
    ExpectLengths(Group("C_NONE"), 1e15, 0, 1e15);
}

TEST_F(Translate, NodesEndInTheOrderOfTheirNumbersAndCellsHoldPositions) {
    COM_ArchnDim(2);
    COM_ArchNode(30, 3, 0, 0, 0.5);
    COM_ArchNode(10, 1, 1, 0, 1.5);
    COM_ArchNode(20, 2, 0, 1, 2.5);
    AddCell(kTRI3, 1, {30, 10, 20});
    EXPECT_EQ(Messages(), "");
    EXPECT_EQ(NodesOfCell(0), (Ints{2, 0, 1}));
    const Nodes *nodes = GetCOM()->Nodes;
    const double wanted[3][4] = {{1, 1, 0, 1.5}, {2, 0, 1, 2.5}, {3, 0, 0, 0.5}};
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(nodes->i1GID[i], i);
        EXPECT_EQ(nodes->i1Tag[i], wanted[i][0]);
        EXPECT_TRUE(PointOf(i) == (At{wanted[i][1], wanted[i][2], wanted[i][3]}));
        EXPECT_EQ(nodes->i1OnB[i], 1);
    }
}

// Orientation ------------------------------------------------------------------------------------------

TEST_F(Translate, ATriangleThatRunsTheWrongWayIsTurnedWithItsTags) {
    AddMesh(2, {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}});
    AddCell(kTRI3, 1, {1, 2, 3}, {0, 0, 0});
    AddCell(kTRI3, 1, {1, 3, 2}, {0, 7, 8});
    EXPECT_EQ(Messages(), kCorrected1);
    EXPECT_EQ(NodesOfCell(0), (Ints{0, 1, 2}));
    EXPECT_EQ(NodesOfCell(1), (Ints{0, 1, 2}));
    EXPECT_EQ(GetCOM()->Cells->i2FaceTag[0][1], 0);
    EXPECT_EQ(GetCOM()->Cells->i2FaceTag[1][1], 8);
    EXPECT_EQ(GetCOM()->Cells->i2FaceTag[2][1], 7);
}

TEST_F(Translate, DegenerateCellsAreTurnedAndCountedToo) {
    AddMesh(2, {{0, 0, 0}, {1, 0, 0}, {2, 0, 0}});
    AddCell(kTRI3, 1, {1, 2, 3});
    AddCell(kTRI3, 1, {1, 1, 1});
    EXPECT_EQ(Messages(), "  Numbering order of 2 elements has been corrected.\n");
    EXPECT_EQ(NodesOfCell(0), (Ints{0, 2, 1}));
}

TEST_F(Translate, TheThresholdIsAbsoluteAndBelongsToTheGoodSide) {
    AddMesh(2, {{0, 0, 0}, {1e-10, 0, 0}, {0, 1, 0}, {0.99e-10, 0, 0}});
    AddCell(kTRI3, 1, {1, 2, 3}); // measure 1e-10
    AddCell(kTRI3, 1, {1, 4, 3}); // 0.99e-10
    EXPECT_EQ(Messages(), kCorrected1);
    EXPECT_EQ(NodesOfCell(0), (Ints{0, 1, 2}));
    EXPECT_EQ(NodesOfCell(1), (Ints{0, 2, 3}));
}

TEST_F(Translate, CellsWithoutAMeasureAreLeftAlone) {
    COM_ArchnDim(2);
    const double nan = std::numeric_limits<double>::quiet_NaN();
    AddNodes({{0, 0, 0}, {nan, 0, 0}, {0, 1, 0}});
    AddCell(kTRI3, 1, {1, 2, 3});
    EXPECT_EQ(Messages(), "");
    EXPECT_EQ(NodesOfCell(0), (Ints{0, 1, 2}));
}

TEST_F(Translate, AnUnsupportedTypeEndsTheOrientationCheckWithoutACount) {
    AddMesh(2, kSquare);
    AddCell(kTRI3, 1, {1, 3, 2});
    AddCell(kQUA4, 2, {1, 2, 3, 4});
    AddCell(kTRI3, 1, {1, 3, 2});
    EXPECT_EQ(Messages(), kOrderType) << "no group: the lengths look at no cell; quadrilaterals have faces";
    EXPECT_EQ(NodesOfCell(0), (Ints{0, 1, 2})) << "corrected before";
    EXPECT_EQ(NodesOfCell(2), (Ints{0, 2, 1})) << "not examined";
}

TEST_F(Translate, EveryOtherTypeIsUnsupportedInAllSteps) {
    for (const int type : {0, -1, 7, 19, 20, 22, 31, 32, 33, 36, 37, 38, 100}) {
        AddMesh(2, kSquare);
        AddCell(type, 1, {1, 2, 3});
        COM_ArchGRcell(1, "A");
        EXPECT_EQ(Messages(), std::string(kOrderType) + kLengthType + kCharacType + kFacesType) << type;
        FreeCOM();
    }
}

// Lengths ----------------------------------------------------------------------------------------------

TEST_F(Translate, LengthsOfTriangles) {
    AddMesh(2, {{0, 0, 5}, {1, 0, 6}, {0, 1, 7}, {0.5, 0, 0}, {0.5, 0.5, 0}, {0, 0.5, 0}}); // z is not looked at
    AddCell(kTRI3, 1, {1, 2, 3});
    AddCell(kTRI6, 2, {1, 4, 2, 5, 3, 6});
    COM_ArchGRcell(1, "LINEAR");
    COM_ArchGRcell(2, "QUADRATIC");
    EXPECT_EQ(Messages(), "");
    ExpectLengths(Group("LINEAR"), 1, std::sqrt(2), std::sqrt(2) / 2);
    ExpectLengths(Group("QUADRATIC"), 1, std::sqrt(2), std::sqrt(2) / 4);
    ExpectMeshLengths(1, std::sqrt(2), std::sqrt(2) / 4);
}

TEST_F(Translate, NoHalvedStandInForACharacteristicLength) {
    // Half an altitude of 4e15/sqrt(2) is above 1e15, and altitudes over a corner that is no number are none: 1e15, no
    // value yet, stays. Half of 1e15 would look like a length.
    const double nan = std::nan("");
    AddMesh(2, {{0, 0, 0}, {4e15, 0, 0}, {0, 4e15, 0}, {nan, 0, 0}});
    AddCell(kTRI6, 1, {1, 1, 2, 2, 3, 3});
    AddCell(kTRI6, 2, {1, 1, 4, 2, 3, 3});
    COM_ArchGRcell(1, "HUGE");
    COM_ArchGRcell(2, "NOWHERE");
    EXPECT_EQ(Messages(), "");
    EXPECT_EQ(Group("HUGE")->dCharLen, 1e15);
    EXPECT_EQ(Group("NOWHERE")->dCharLen, 1e15);
    EXPECT_EQ(GetCOM()->Nodes->dCharLen, 1e15);
}

TEST_F(Translate, LengthsOfTetrahedra) {
    AddMesh(3, {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}});
    AddCell(kTET4, 1, {1, 2, 3, 4});
    AddCell(kTETX, 2, {1, 2, 3, 4, 1, 1, 1, 1, 1, 1}); // mid-edge nodes take no part
    COM_ArchGRcell(1, "LINEAR");
    COM_ArchGRcell(2, "QUADRATIC");
    EXPECT_EQ(Messages(), "");
    const double altitude = 1 / (std::sqrt(3) + 1e-10); // over the face x + y + z = 1
    ExpectLengths(Group("LINEAR"), 1, std::sqrt(2), altitude);
    ExpectLengths(Group("QUADRATIC"), 1, std::sqrt(2), altitude / 2);
}

TEST_F(Translate, AllSixEdgesOfATetrahedronCount) {
    // One edge longer than the others, each in turn: the two corners are moved apart along the edge's line.
    const std::vector<At> corners{{1, 1, 1}, {1, -1, -1}, {-1, 1, -1}, {-1, -1, 1}}; // regular, edges sqrt(8)
    for (std::size_t a = 0; a < 4; ++a) {
        for (std::size_t b = a + 1; b < 4; ++b) {
            std::vector<At> moved = corners;
            moved[a] = corners[a] + 0.5 * (corners[a] - corners[b]);
            moved[b] = corners[b] + 0.5 * (corners[b] - corners[a]);
            AddMesh(3, moved);
            AddCell(kTET4, 1, {1, 2, 3, 4});
            COM_ArchGRcell(1, "A");
            Messages();
            EXPECT_DOUBLE_EQ(Group("A")->dMaxEdge, 2 * std::sqrt(8)) << a << b;
            FreeCOM();
        }
    }
}

TEST_F(Translate, AllFourAltitudesOfATetrahedronCount) {
    // One corner of a regular tetrahedron stands a quarter of its height over the others' face, each in turn. Height
    // of the regular one: its edges sqrt(8) times sqrt(2 / 3).
    const std::vector<At> corners{{1, 1, 1}, {1, -1, -1}, {-1, 1, -1}, {-1, -1, 1}};
    for (std::size_t low = 0; low < 4; ++low) {
        std::vector<At> moved = corners;
        const At foot = (-1.0 / 3) * corners[low]; // the four corners add up to nothing
        moved[low] = foot + 0.25 * (corners[low] - foot);
        AddMesh(3, moved);
        AddCell(kTET4, 1, {1, 2, 3, 4});
        COM_ArchGRcell(1, "A");
        Messages();
        EXPECT_NEAR(Group("A")->dCharLen, std::sqrt(8) * std::sqrt(2.0 / 3) / 4, 1e-9) << low;
        FreeCOM();
    }
}

TEST_F(Translate, AShortEdgeInThePlaneIsUsedWithoutNormalising) {
    // The apex stands 1e-5 over an edge of 1e-11: the altitude over that edge is 1e-11 times 1e-5. Normalised it would
    // be 1e-5, and the smallest altitude that over the long edges, 1e-11.
    AddMesh(2, {{0, 0, 0}, {1e-11, 0, 0}, {0, 1e-5, 0}});
    AddCell(kTRI3, 1, {1, 2, 3});
    COM_ArchGRcell(1, "A");
    Messages();
    EXPECT_DOUBLE_EQ(Group("A")->dCharLen, 1e-16);
}

TEST_F(Translate, InSpaceTheGuardIsAlwaysAdded) {
    // Legs of 1e-5: the normals of the three faces at the right angle have the length 1e-10, that of the slanted face
    // sqrt(3) times it. Its altitude is 1e-15 / (sqrt(3) 1e-10 + 1e-10).
    AddMesh(3, {{0, 0, 0}, {1e-5, 0, 0}, {0, 1e-5, 0}, {0, 0, 1e-5}});
    AddCell(kTET4, 1, {1, 2, 3, 4});
    COM_ArchGRcell(1, "A");
    EXPECT_EQ(Messages(), kCorrected1) << "its measure, 1e-15, is below the threshold";
    EXPECT_NEAR(Group("A")->dCharLen, 1e-5 / (std::sqrt(3) + 1), 1e-19);
}

TEST_F(Translate, DegenerateCellsHaveLengthsOfNought) {
    AddMesh(2, {{0, 0, 0}, {1, 0, 0}});
    AddCell(kTRI3, 1, {1, 2, 2});
    COM_ArchGRcell(1, "A");
    Messages();
    ExpectLengths(Group("A"), 0, 1, 0);
}

TEST_F(Translate, GroupsTakeTheCellsOfTheirTagAndCellsWithoutAGroupNowhereCount) {
    AddMesh(2, {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {4, 0, 0}, {0, 4, 0}, {0.125, 0, 0}, {0, 0.125, 0}});
    AddCell(kTRI3, 1, {1, 2, 3});
    AddCell(kTRI3, 2, {1, 4, 5});
    AddCell(kTRI3, 9, {1, 6, 7}); // no group
    COM_ArchGRcell(1, "ONE");
    COM_ArchGRcell(2, "TWO");
    COM_ArchGRcell(2, "ALSO TWO");
    COM_ArchGRcell(3, "NONE");
    EXPECT_EQ(Messages(), "");
    ExpectLengths(Group("ONE"), 1, std::sqrt(2), std::sqrt(2) / 2);
    ExpectLengths(Group("TWO"), 4, 4 * std::sqrt(2), 2 * std::sqrt(2));
    ExpectLengths(Group("ALSO TWO"), 4, 4 * std::sqrt(2), 2 * std::sqrt(2));
    ExpectLengths(Group("NONE"), 1e15, 0, 1e15);
    ExpectMeshLengths(1, 4 * std::sqrt(2), std::sqrt(2) / 2);
}

// Cells of tags 1 to 3, the second of a type that cannot be measured; groups newest first are 3, 2, 1.
TEST_F(Translate, AnUnmeasurableCellStopsTheLengthsAtItsGroup) {
    AddMesh(2, {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {4, 0, 0}, {0, 4, 0}});
    AddCell(kTRI3, 1, {1, 2, 3});
    AddCell(kTRI3, 2, {1, 2, 3});
    AddCell(kQUA4, 2, {1, 2, 3, 4});
    AddCell(kTRI3, 3, {1, 4, 5});
    COM_ArchGRcell(1, "OLD");
    COM_ArchGRcell(2, "MIDDLE");
    COM_ArchGRcell(3, "NEW");
    GetCOM()->GRcell->next->dMinEdge = 5; // must not change
    EXPECT_EQ(Messages(), std::string(kOrderType) + kLengthType + kCharacType);
    ExpectLengths(Group("NEW"), 4, 4 * std::sqrt(2), 2 * std::sqrt(2));
    ExpectLengths(Group("MIDDLE"), 5, 0, 0);
    ExpectLengths(Group("OLD"), 0, 0, 0);
    ExpectMeshLengths(4, 4 * std::sqrt(2), 2 * std::sqrt(2));
}

TEST_F(Translate, QuadrilateralsInTheNewestGroupLeaveAllLengthsAlone) {
    AddMesh(2, kSquare);
    AddCell(kTRI3, 1, {1, 2, 3});
    AddCell(kQUA4, 2, {1, 2, 3, 4});
    COM_ArchGRcell(1, "OLD");
    COM_ArchGRcell(2, "NEW");
    EXPECT_EQ(Messages(), std::string(kOrderType) + kLengthType + kCharacType);
    ExpectLengths(Group("NEW"), 0, 0, 0);
    ExpectLengths(Group("OLD"), 0, 0, 0);
    ExpectMeshLengths(1e15, 0, 1e15);
}

TEST_F(Translate, AnUnmeasurableCellWithoutAGroupStopsNothing) {
    AddMesh(2, kSquare);
    AddCell(kQUA4, 9, {1, 2, 3, 4});
    AddCell(kTRI3, 1, {1, 2, 3});
    COM_ArchGRcell(1, "A");
    EXPECT_EQ(Messages(), kOrderType);
    ExpectLengths(Group("A"), 1, std::sqrt(2), std::sqrt(2) / 2);
}

// Missing nodes ----------------------------------------------------------------------------------------

TEST_F(Translate, ReferencesToMissingNodesAreCountedAndCarriedAlong) {
    AddMesh(2, {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}});
    AddCell(kTRI3, 1, {1, 99, 2}, {5, 0, 6});
    AddCell(kTRI3, 1, {1, 2, 3});
    AddCell(kTRI3, 1, {-5, 0, 4});
    COM_ArchGRcell(1, "C_A");
    EXPECT_EQ(Messages(), "\n  Error> 4 references of elements name no node of the deck.\n");
    ExpectLengths(Group("C_A"), 1, std::sqrt(2), std::sqrt(2) / 2);
    EXPECT_EQ(NodesOfCell(0)[1], -1);
    EXPECT_EQ(NodesOfCell(2), (Ints{-1, -1, -1}));
    EXPECT_EQ(GetCOM()->Nodes->nNum, 5) << "two copies for the first cell, three for the second; no source is left";
    ASSERT_EQ(GetCOM()->Faces->nNum, 2);
    EXPECT_EQ(NodesOfFace(0), (Ints{-1, NodesOfCell(0)[2]}));
    EXPECT_EQ(NodesOfFace(1), (Ints{NodesOfCell(0)[0], -1}));
}

TEST_F(Translate, AMissingMidSideNodeDoesNotKeepACellFromBeingTurnedAndMeasured) {
    AddMesh(2, {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0.5, 0, 0}});
    AddCell(kTRI6, 1, {1, 99, 3, 99, 2, 4}); // the wrong way round
    COM_ArchGRcell(1, "A");
    EXPECT_EQ(Messages(), std::string("\n  Error> 2 references of elements name no node of the deck.\n") + kCorrected1);
    EXPECT_EQ(NodesOfCell(0), (Ints{0, 3, 1, -1, 2, -1}));
    ExpectLengths(Group("A"), 1, std::sqrt(2), std::sqrt(2) / 4);
}

// Cohesive groups --------------------------------------------------------------------------------------

// Two triangles of the square, of tags 1 and 2.
void AddTwoTriangles(const char *first, const char *second) {
    AddMesh(2, kSquare);
    AddCell(kTRI3, 1, {1, 2, 3});
    AddCell(kTRI3, 2, {1, 3, 4});
    COM_ArchGRcell(1, first);
    COM_ArchGRcell(2, second);
}

int SharedNodes(int a, int b) {
    int shared = 0;
    for (const int node : NodesOfCell(a)) {
        const Ints others = NodesOfCell(b);
        shared += static_cast<int>(std::count(others.begin(), others.end(), node));
    }
    return shared;
}

TEST_F(Translate, CohesiveCellsGetNodesOfTheirOwn) {
    AddTwoTriangles("C_glue", "C_glue2");
    EXPECT_EQ(Messages(), "");
    EXPECT_EQ(SharedNodes(0, 1), 0);
    EXPECT_EQ(GetCOM()->Nodes->nNum, 6) << "no source node is used any more";
    const std::vector<At> first = PointsOfCell(0), second = PointsOfCell(1);
    EXPECT_TRUE(first[0] == kSquare[0] && first[1] == kSquare[1] && first[2] == kSquare[2]);
    EXPECT_TRUE(second[0] == kSquare[0] && second[1] == kSquare[2] && second[2] == kSquare[3]);
    const Ints sources{0, 1, 2, 0, 2, 3}; // copies in cell order keep the number of their source
    EXPECT_EQ(Ints(GetCOM()->Nodes->i1GID, GetCOM()->Nodes->i1GID + 6), sources);
}

TEST_F(Translate, CellsOfOneCohesiveGroupAreCutFromEachOther) {
    AddMesh(2, kSquare);
    AddCell(kTRI3, 1, {1, 2, 3});
    AddCell(kTRI3, 1, {1, 3, 4});
    COM_ArchGRcell(1, "C_");
    Messages();
    EXPECT_EQ(SharedNodes(0, 1), 0);
}

TEST_F(Translate, SourceNodesSurviveWhereAnotherCellUsesThem) {
    AddTwoTriangles("C_glue", "solid");
    Messages();
    EXPECT_EQ(SharedNodes(0, 1), 0);
    EXPECT_EQ(GetCOM()->Nodes->nNum, 6);
    EXPECT_EQ(NodesOfCell(1), (Ints{0, 1, 2})) << "node 2 was the first cell's alone and is dropped";
    EXPECT_EQ(NodesOfCell(0), (Ints{3, 4, 5}));
}

TEST_F(Translate, CellsThatCameWithAMarkAreNotCutLoose) {
    AddTwoTriangles("C_glue", "solid");
    GetCOM()->Cells->i1Mark[1] = 1;
    Messages();
    EXPECT_EQ(NodesOfCell(1), (Ints{0, 1, 2}));
    EXPECT_EQ(GetCOM()->Nodes->nNum, 6);
}

TEST_F(Translate, CopiesCarryTagsToo) {
    AddTwoTriangles("C_glue", "solid");
    GetCOM()->Nodes->i1Tag[1] = 42;
    Messages();
    EXPECT_EQ(GetCOM()->Nodes->i1Tag[NodesOfCell(0)[1]], 42);
}

TEST_F(Translate, OnlyNamesThatBeginWithCapitalCAndUnderscoreAreCohesive) {
    for (const char *name : {"c_glue", "C", "", "_C_", " C_", "AC_", "C-"}) {
        AddTwoTriangles(name, "solid");
        Messages();
        EXPECT_EQ(SharedNodes(0, 1), 2) << name;
        EXPECT_EQ(GetCOM()->Nodes->nNum, 4) << name;
        FreeCOM();
    }
}

TEST_F(Translate, OfEqualNamesTheNewestGroupStandsForAll) {
    for (const char *older : {"C_A", "C_ A"}) { // the same but for a blank
        AddTwoTriangles(older, "C_A");
        Messages();
        EXPECT_EQ(NodesOfCell(0), (Ints{0, 1, 2})) << "the older group's cells are left alone";
        EXPECT_EQ(NodesOfCell(1), (Ints{3, 4, 5}));
        FreeCOM();
    }
}

TEST_F(Translate, AGroupWhoseNameEndsInABlankIsNotFoundByIt) {
    // The name is looked up among all groups, and blanks that end a group's own name count: only tag -1 is left.
    AddMesh(2, kSquare);
    AddCell(kTRI3, 1, {1, 2, 3});
    AddCell(kTRI3, -1, {1, 3, 4});
    COM_ArchGRcell(1, "C_A ");
    Messages();
    EXPECT_EQ(NodesOfCell(0), (Ints{0, 1, 2}));
    EXPECT_EQ(NodesOfCell(1), (Ints{3, 4, 5}));
}

TEST_F(Translate, QuadrilateralsAndHexahedraAreSplitToo) {
    AddMesh(2, kSquare);
    AddCell(kQUA4, 1, {1, 2, 3, 4});
    AddCell(kTRI3, 2, {1, 2, 3});
    COM_ArchGRcell(1, "C_Q");
    EXPECT_EQ(Messages(), std::string(kOrderType) + kLengthType + kCharacType);
    EXPECT_EQ(SharedNodes(0, 1), 0);
    EXPECT_EQ(GetCOM()->Nodes->nNum, 7);
}

// Faces ------------------------------------------------------------------------------------------------

TEST_F(Translate, ATaggedSlotGivesAFaceAndAnUntaggedOrNegativeOneDoesNot) {
    AddMesh(2, kSquare);
    AddCell(kTRI3, 1, {1, 2, 3}, {0, -4, 7});
    EXPECT_EQ(Messages(), "");
    const Faces *faces = GetCOM()->Faces;
    ASSERT_EQ(faces->nNum, 1);
    EXPECT_EQ(faces->i1Type[0], 31);
    EXPECT_EQ(faces->i1Tag[0], 7);
    EXPECT_EQ(faces->i1NumNodes[0], 2);
    EXPECT_EQ(NodesOfFace(0), (Ints{0, 1}));
}

TEST_F(Translate, ASharedEdgeTaggedFromBothSidesIsMadeTwiceInOppositeOrder) {
    AddMesh(2, kSquare);
    AddCell(kTRI3, 1, {1, 2, 3}, {0, 5, 0}); // edge 3-1
    AddCell(kTRI3, 1, {1, 3, 4}, {0, 0, 6}); // edge 1-3
    Messages();
    ASSERT_EQ(GetCOM()->Faces->nNum, 2);
    EXPECT_EQ(NodesOfFace(0), (Ints{2, 0}));
    EXPECT_EQ(NodesOfFace(1), (Ints{0, 2}));
    EXPECT_EQ(GetCOM()->Faces->i1Tag[0], 5);
    EXPECT_EQ(GetCOM()->Faces->i1Tag[1], 6);
}

TEST_F(Translate, MixedFacesNeedNoLateColumns) {
    AddMesh(3, {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {0, 0, 1}, {1, 0, 1}, {1, 1, 1}, {0, 1, 1}});
    AddCell(kTRI3, 1, {1, 2, 3}, {1, 0, 0});
    AddCell(kTET4, 1, {1, 2, 4, 5}, {2, 0, 0, 0});
    AddCell(kHEX8, 1, {1, 2, 3, 4, 5, 6, 7, 8}, {0, 0, 0, 0, 0, 3});
    EXPECT_EQ(Messages(), kOrderType) << "and no message about columns";
    const Faces *faces = GetCOM()->Faces;
    EXPECT_EQ(faces->nNodesPerFace, 4);
    ASSERT_EQ(faces->nNum, 3);
    EXPECT_EQ(NodesOfFace(0), (Ints{1, 2}));
    EXPECT_EQ(NodesOfFace(1), (Ints{1, 4, 3}));
    EXPECT_EQ(NodesOfFace(2), (Ints{3, 7, 4, 0}));
}

TEST_F(Translate, TheWidestFaceCountsWhereverItsCellStands) {
    AddMesh(3, {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}});
    AddCell(kTET4, 1, {1, 2, 3, 4}, {2, 0, 0, 0});
    AddCell(kTRI3, 1, {1, 2, 3}, {1, 0, 0});
    EXPECT_EQ(Messages(), "");
    EXPECT_EQ(GetCOM()->Faces->nNodesPerFace, 3);
    ASSERT_EQ(GetCOM()->Faces->nNum, 2);
    EXPECT_EQ(NodesOfFace(0), (Ints{1, 3, 2}));
    EXPECT_EQ(NodesOfFace(1), (Ints{1, 2}));
}

TEST_F(Translate, AnUnsupportedTypeEndsTheFacesButNotWhatFollows) {
    AddMesh(2, {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {9, 9, 9}});
    AddCell(kTRI3, 1, {1, 2, 3}, {1, 0, 0});
    AddCell(99, 1, {1, 2, 3}, {2, 2, 2});
    AddCell(kTRI3, 1, {1, 3, 4}, {3, 0, 0});
    EXPECT_EQ(Messages(), std::string(kOrderType) + kFacesType);
    ASSERT_EQ(GetCOM()->Faces->nNum, 1);
    EXPECT_EQ(GetCOM()->Faces->i1Tag[0], 1);
    EXPECT_EQ(GetCOM()->Nodes->nNum, 4) << "the unused node is dropped";
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(GetCOM()->Nodes->i1OnB[i], 1);
    }
}

// The first time the table has no column for the fourth node, the second time another cell makes it wide enough.
TEST_F(Translate, ACellWithFewerNodesThanItsTypeHasNoShape) {
    for (const int nOthers : {0, 1}) {
        AddMesh(3, {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}});
        if (nOthers == 1) {
            AddCell(kTET4, 2, {1, 2, 3, 4});
        }
        AddCell(kTET4, 1, {1, 3, 2}, {7, 0, 0});
        COM_ArchGRcell(1, "SHORT");
        EXPECT_EQ(Messages(), "");
        ExpectLengths(Group("SHORT"), 1e15, 0, 1e15);
        EXPECT_EQ(NodesOfCell(nOthers), (Ints{0, 2, 1}));
        EXPECT_EQ(NodesOfFace(0), (Ints{2, -1, 1})) << "the face opposite the first node needs the fourth";
        FreeCOM();
        ForgetColumnCounts();
    }
}

TEST_F(Translate, FacesAreAppendedToThoseInTheStore) {
    AddMesh(2, kSquare);
    AddFace(kS1D2, 50, {3, 0}); // positions: of the fourth node, which no cell uses, and the first
    AddCell(kTRI3, 1, {1, 2, 3}, {0, 0, 7});
    EXPECT_EQ(Messages(), "");
    const Faces *faces = GetCOM()->Faces;
    ASSERT_EQ(faces->nNum, 2);
    EXPECT_EQ(faces->i1Tag[0], 50);
    EXPECT_EQ(NodesOfFace(0), (Ints{3, 0}));
    EXPECT_EQ(NodesOfFace(1), (Ints{0, 1}));
    EXPECT_EQ(GetCOM()->Nodes->nNum, 4) << "a node that only a face uses stays";
}

TEST_F(Translate, DroppedNodesCloseTheGaps) {
    AddMesh(2, {{9, 9, 9}, {0, 0, 1}, {8, 8, 8}, {1, 0, 2}, {0, 1, 3}, {7, 7, 7}});
    for (int i = 0; i < 6; ++i) {
        GetCOM()->Nodes->i1Tag[i] = 10 + i;
    }
    AddCell(kTRI3, 1, {2, 4, 5}, {1, 0, 0});
    Messages();
    const Nodes *nodes = GetCOM()->Nodes;
    ASSERT_EQ(nodes->nNum, 3);
    EXPECT_EQ(NodesOfCell(0), (Ints{0, 1, 2}));
    EXPECT_EQ(NodesOfFace(0), (Ints{1, 2}));
    EXPECT_EQ(Ints(nodes->i1Tag, nodes->i1Tag + 3), (Ints{11, 13, 14}));
    EXPECT_EQ(Ints(nodes->i1Mark, nodes->i1Mark + 3), (Ints{0, 1, 2}));
    EXPECT_TRUE(PointOf(0) == (At{0, 0, 1}) && PointOf(1) == (At{1, 0, 2}) && PointOf(2) == (At{0, 1, 3}));
}

// A store filled by hand -------------------------------------------------------------------------------

// Nodes 10 (unused), 20, 30, 40; a triangle of 40, 20, 30 and a face from node 30 to node 40 as positions 2, 3.
TEST_F(CleanStore, TablesMadeByHandAreResolvedCompactedAndReleased) {
    COM_ArchnDim(2);
    COM_ArchNode(10, 0, 9, 9, 0);
    COM_ArchNode(20, 0, 0, 0, 0);
    COM_ArchNode(30, 0, 1, 0, 0);
    COM_ArchNode(40, 0, 0, 1, 0);
    Cells *cells = GetCOM()->Cells;
    cells->nMax = cells->nNum = 1;
    cells->nNodesPerCell = 3;
    cells->i1Type = AllocINT1D(nullptr, 1);
    cells->i1Tag = AllocINT1D(nullptr, 1);
    cells->i1NumNodes = AllocINT1D(nullptr, 1);
    cells->i2Conn = AllocINT2D(nullptr, 3, 1);
    cells->i1Type[0] = kTRI3;
    cells->i1Tag[0] = 1;
    cells->i1NumNodes[0] = 3;
    cells->i2Conn[0][0] = 40;
    cells->i2Conn[1][0] = 20;
    cells->i2Conn[2][0] = 30;
    Faces *faces = GetCOM()->Faces;
    faces->nMax = faces->nNum = 1;
    faces->nNodesPerFace = 2;
    faces->i1Type = AllocINT1D(nullptr, 1);
    faces->i1Tag = AllocINT1D(nullptr, 1);
    faces->i1NumNodes = AllocINT1D(nullptr, 1);
    faces->i2Conn = AllocINT2D(nullptr, 2, 1);
    faces->i1Type[0] = kS1D2;
    faces->i1Tag[0] = 7;
    faces->i1NumNodes[0] = 2;
    faces->i2Conn[0][0] = 2;
    faces->i2Conn[1][0] = 3;
    const std::string log = Printed(MeshAll);
    EXPECT_EQ(log.find("Error>"), std::string::npos) << log;
    EXPECT_EQ(GetCOM()->Nodes->nNum, 3);
    const int wanted[] = {2, 0, 1};
    for (int k = 0; k < 3; ++k) {
        EXPECT_EQ(cells->i2Conn[k][0], wanted[k]);
    }
    ASSERT_EQ(faces->nNum, 1) << "no surface tags";
    EXPECT_EQ(faces->i2Conn[0][0], 1);
    EXPECT_EQ(faces->i2Conn[1][0], 2);
}

// Column counts without entries: no table is there to be walked through.
TEST_F(CleanStore, ColumnCountsWithoutEntriesAreNoTables) {
    COM_ArchnDim(2);
    COM_ArchNode(10, 0, 9, 9, 0);
    SetNumNodesCells(3, GetCOM()->Cells);
    SetNumNodesFaces(2, GetCOM()->Faces);
    const std::string log = Printed(MeshAll);
    EXPECT_EQ(log.find("Error>"), std::string::npos) << log;
    EXPECT_EQ(GetCOM()->Nodes->nNum, 0) << "nothing uses the node";
}

} // namespace
