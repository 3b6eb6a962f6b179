// What sections of a deck define: nodes and their systems, element rows, types, generators.
#include "decks.h"

#include "deck/placement.h"

#include <cmath>

namespace {

using deck::Code;
using deck::Shape;
using deck::TypeClass;
using decks::Found;
using decks::Ints;
using decks::NodesTo;
using decks::Read;
using decks::Reading;
using Point = std::vector<double>;

// Types and shapes -------------------------------------------------------------------------------------------

TEST(Types, AreFoundByTheirWholeName) {
    const struct {
        const char *names; // blanks between them
        Shape shape;
        TypeClass kind;
        bool shell;
    } rows[] = {
        {"CPS3 CPE3", Shape::tri3, TypeClass::cell, false},
        {"STRI3", Shape::tri3, TypeClass::cell, true},
        {"CPS3T CPS3E CPE3H CPE3T CPE3E CPEG3 CPEG3H CAX3 CAX3H CGAX3 DC2D3 DCAX3 AC2D3 ACAX3 WARP2D3", Shape::tri3,
         TypeClass::sameShape, false},
        {"S3 S3R S3RS S3T DS3 M3D3 SFM3D3 R3D3", Shape::tri3, TypeClass::sameShape, true},
        {"CPS6 CPE6", Shape::tri6, TypeClass::cell, false},
        {"STRI65", Shape::tri6, TypeClass::cell, true},
        {"CPS6M CPE6M CPE6H CPE6MH CPE6MT CPEG6 CPEG6M CAX6 CAX6M CGAX6 DC2D6 DCAX6 AC2D6", Shape::tri6,
         TypeClass::sameShape, false},
        {"M3D6 SFM3D6 S6", Shape::tri6, TypeClass::sameShape, true},
        {"C3D4", Shape::tet4, TypeClass::cell, false},
        {"C3D4H C3D4T C3D4E C3D4P DC3D4 AC3D4 EMC3D4 FC3D4 C3D4R C3D4I", Shape::tet4, TypeClass::sameShape, false},
        {"C3D10", Shape::tet10, TypeClass::cell, false},
        {"C3D10M C3D10H C3D10MH C3D10MT C3D10MP C3D10I C3D10HS C3D10E C3D10T C3D10R DC3D10 AC3D10", Shape::tet10,
         TypeClass::sameShape, false},
        {"CPS4 CPS4R CPS4I CPE4RH CAX4P CAX4R", Shape::quad4, TypeClass::split, false},
        {"S4 S4R S4RS M3D4 M3D4R R3D4", Shape::quad4, TypeClass::split, true},
        {"CPS8 CPS8R CPE8RH CAX8", Shape::quad8, TypeClass::split, false},
        {"S8R S8R5", Shape::quad8, TypeClass::split, true},
        {"C3D5", Shape::pyramid5, TypeClass::split, false},
        {"C3D6 C3D6H SC6R DC3D6", Shape::wedge6, TypeClass::split, false},
        {"C3D8 C3D8R C3D8I C3D8RH C3D8RT SC8R DC3D8", Shape::hex8, TypeClass::split, false},
        {"C3D15 C3D15H", Shape::wedge15, TypeClass::split, false},
        {"C3D20 C3D20R C3D20RH", Shape::hex20, TypeClass::split, false},
        {"C3D13", Shape::pyramid13, TypeClass::uncertain, false},
        {"C3D27 C3D27R", Shape::hex27, TypeClass::uncertain, false},
        {"MASS ROTARYI SPRINGA SPRING1 DASHPOTA CONN3D2 GAPUNI JOINTC DCOUP3D ITT21 ISL21A", Shape::none,
         TypeClass::noCell, false},
        {"T3D2 B31 B21H B33 PIPE31 FRAME3D", Shape::line2, TypeClass::cannotKeep, false},
        {"T3D3 B32 B22 PIPE32", Shape::line3, TypeClass::cannotKeep, false},
        {"COH3D8 COH2D4 GK3D8 INTER4", Shape::none, TypeClass::cannotKeep, false},
        {"C3D9 STRI S5 STRI3R TRI3 CPS33 C3D C3D4ZZ X", Shape::none, TypeClass::unknown, false},
    };
    for (const auto &row : rows) {
        std::string names = row.names;
        for (std::size_t at = 0; at < names.size();) {
            const std::size_t end = std::min(names.find(' ', at), names.size());
            const std::string name = names.substr(at, end - at);
            const deck::ElementType type = deck::FindType(name);
            EXPECT_EQ(type.shape, row.shape) << name;
            EXPECT_EQ(type.kind, row.kind) << name;
            EXPECT_EQ(type.shell, row.shell) << name;
            at = end + 1;
        }
    }
}

TEST(Shapes, HaveTheFacesOfTheirLabels) {
    const struct {
        Shape shape;
        int nNodes;
        std::vector<Ints> faces; // corners counted from 1, as the labels S1 ... name them
    } rows[] = {
        {Shape::tet4, 4, {{1, 2, 3}, {1, 4, 2}, {2, 4, 3}, {3, 4, 1}}},
        {Shape::tet10, 10, {{1, 2, 3}, {1, 4, 2}, {2, 4, 3}, {3, 4, 1}}},
        {Shape::pyramid5, 5, {{1, 2, 3, 4}, {1, 5, 2}, {2, 5, 3}, {3, 5, 4}, {4, 5, 1}}},
        {Shape::wedge6, 6, {{1, 2, 3}, {4, 6, 5}, {1, 4, 5, 2}, {2, 5, 6, 3}, {3, 6, 4, 1}}},
        {Shape::wedge15, 15, {{1, 2, 3}, {4, 6, 5}, {1, 4, 5, 2}, {2, 5, 6, 3}, {3, 6, 4, 1}}},
        {Shape::hex8, 8, {{1, 2, 3, 4}, {5, 8, 7, 6}, {1, 5, 6, 2}, {2, 6, 7, 3}, {3, 7, 8, 4}, {4, 8, 5, 1}}},
        {Shape::hex20, 20, {{1, 2, 3, 4}, {5, 8, 7, 6}, {1, 5, 6, 2}, {2, 6, 7, 3}, {3, 7, 8, 4}, {4, 8, 5, 1}}},
        {Shape::tri3, 3, {{1, 2}, {2, 3}, {3, 1}}},
        {Shape::tri6, 6, {{1, 2}, {2, 3}, {3, 1}}},
        {Shape::quad4, 4, {{1, 2}, {2, 3}, {3, 4}, {4, 1}}},
        {Shape::quad8, 8, {{1, 2}, {2, 3}, {3, 4}, {4, 1}}},
        {Shape::line2, 2, {}},
        {Shape::none, 0, {}},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(deck::NodesOf(row.shape), row.nNodes);
        ASSERT_EQ(static_cast<std::size_t>(deck::FacesOf(row.shape)), row.faces.size()) << deck::ShapeName(row.shape);
        for (std::size_t f = 0; f < row.faces.size(); ++f) {
            const deck::FaceRow &face = deck::FaceOf(row.shape, static_cast<int>(f));
            Ints corners;
            for (int i = 0; i < face.nCorners; ++i) {
                corners.push_back(face.corner[i] + 1);
            }
            EXPECT_EQ(corners, row.faces[f]) << deck::ShapeName(row.shape) << " S" << f + 1;
        }
    }
}

TEST(Shapes, HaveTheirMiddleNodes) {
    EXPECT_EQ(deck::MidNodeOf(Shape::tet10, 1, 0), 4);
    EXPECT_EQ(deck::MidNodeOf(Shape::tet10, 2, 3), 9);
    EXPECT_EQ(deck::MidNodeOf(Shape::hex20, 3, 0), 11);
    EXPECT_EQ(deck::MidNodeOf(Shape::hex20, 7, 4), 15);
    EXPECT_EQ(deck::MidNodeOf(Shape::hex20, 3, 7), 19);
    EXPECT_EQ(deck::MidNodeOf(Shape::hex20, 0, 6), -1);
    EXPECT_EQ(deck::MidNodeOf(Shape::wedge15, 5, 3), 11);
    EXPECT_EQ(deck::MidNodeOf(Shape::wedge15, 2, 5), 14);
    EXPECT_EQ(deck::MidNodeOf(Shape::quad8, 0, 3), 7);
    EXPECT_EQ(deck::MidNodeOf(Shape::tri6, 0, 2), 5);
    EXPECT_EQ(deck::MidNodeOf(Shape::tet4, 0, 1), -1);
}

// Element rows -----------------------------------------------------------------------------------------------

TEST(ElementRows, EndByTheirNumberOfNodesNotByCommas) {
    const auto r =
        Read(NodesTo(10) + "*ELEMENT, TYPE=C3D4\n1, 1, 2, 3, 4,\n2, 2, 3, 4, 5\n3, 3, 4,\n5, 6\n4, 4, 5\n6, 7\n");
    EXPECT_EQ(r.mesh.elementNumber, (Ints{1, 2, 3, 4}));
    EXPECT_EQ(r.Connectivity(3), (Ints{3, 4, 5, 6}));
    EXPECT_EQ(r.Connectivity(4), (Ints{4, 5, 6, 7}));
    EXPECT_EQ(r.mesh.elementLine, (Ints{13, 14, 15, 17}));
    EXPECT_EQ(r.Remarks(), (Found{{Code::rowEndComma, 13}}));
    EXPECT_EQ(r.Findings(), Found{});
}

TEST(ElementRows, OfTwentyNodesGoOverTwoLines) {
    const auto r = Read(NodesTo(20) + "*ELEMENT, TYPE=C3D20R\n1, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15,\n"
                                      "16, 17, 18, 19, 20\n");
    EXPECT_EQ(r.Connectivity(1), (Ints{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20}));
    EXPECT_EQ(r.Findings(), Found{});
}

TEST(ElementRows, WithTooManyOrTooFewNodesAreSaid) {
    const auto r =
        Read(NodesTo(9) + "*ELEMENT, TYPE=CPS3\n1, 1, 2, 3, 4\n2, 1, 2\n3, 2, 3, 4\n4, 1, x, 3\n5, 1, 2, 77\n"
                          "*ELEMENT, TYPE=CPS9\n6, 1, 2\n7, 1\n*ELEMENT, TYPE=CONN3D2\n8, , I.5\n");
    EXPECT_EQ(r.mesh.elementNumber, (Ints{1, 3, 5, 6, 7, 8}));
    EXPECT_EQ(r.Connectivity(1), (Ints{1, 2, 3}));
    EXPECT_EQ(r.Connectivity(5), (Ints{1, 2, 0}));
    EXPECT_EQ(r.Connectivity(7), (Ints{1, 0}));
    EXPECT_EQ(r.Connectivity(8), (Ints{0, 0}));
    EXPECT_EQ(r.Findings(), (Found{{Code::moreNodes, 12},
                                   {Code::fewerNodes, 13},
                                   {Code::badNumber, 15},
                                   {Code::unknownType, 17},
                                   {Code::missingNode, 16}}));
}

TEST(ElementRows, MayBeSpelledInManyWays) {
    const auto r = Read(NodesTo(4) + "*ELEMENT, TYPE=CPS3\n1 1 2 3\n2.0, 2., 3, 4\n");
    EXPECT_EQ(r.Connectivity(1), (Ints{1, 2, 3}));
    EXPECT_EQ(r.Connectivity(2), (Ints{2, 3, 4}));
    EXPECT_EQ(r.Findings(), Found{});
}

TEST(ElementRows, MayEndOnALineThatIsSpelledOddly) {
    const auto r = Read(NodesTo(4) + "*ELEMENT, TYPE=C3D4\n1, 1, 2,\n3., 4.\n2, 1, 2, 4, 3\n");
    EXPECT_EQ(r.Connectivity(1), (Ints{1, 2, 3, 4}));
    EXPECT_EQ(r.Connectivity(2), (Ints{1, 2, 4, 3}));
    EXPECT_EQ(r.Findings(), Found{});
}

TEST(ElementRows, DefinedTwiceCountAsTheyStandLast) {
    const auto r =
        Read("*NODE, NSET=N\n1, 1., 0., 0.\n2, 2., 0., 0.\n3, 3., 0., 0.\n4, 4., 0., 0.\n*NODE\n1, 9., 0., 0.\n"
             "2, 2., 0., 0.\n*ELEMENT, TYPE=CPS3, ELSET=A\n7, 1, 2, 3\n8, 2, 3, 4\n*ELEMENT, TYPE=CPS3\n7, 4, 3, 2\n");
    EXPECT_EQ(r.mesh.nodeNumber, (Ints{3, 4, 1, 2}));
    EXPECT_EQ(r.At(1), (Point{9, 0, 0}));
    EXPECT_EQ(r.Nodes("N"), (Ints{3, 4, 1, 2}));
    EXPECT_EQ(r.mesh.elementNumber, (Ints{8, 7}));
    EXPECT_EQ(r.Connectivity(7), (Ints{4, 3, 2}));
    EXPECT_EQ(r.Elements("A"), (Ints{8, 7}));
    EXPECT_EQ(r.Findings(), (Found{{Code::nodeTwice, 7}, {Code::nodeAgain, 8}, {Code::elementTwice, 13}}));
}

// Systems ----------------------------------------------------------------------------------------------------

TEST(Systems, OfANodeSectionAreCylindricalOrNone) {
    const auto r =
        Read("*NODE, SYSTEM=C\n1, 2., 90., 5.\n*NODE, SYSTEM=R\n2, 2., 90., 5.\n*NODE, SYSTEM=S\n3, 1., 2., 3.\n");
    EXPECT_EQ(r.At(1), (Point{0, 2, 5}));
    EXPECT_EQ(r.At(2), (Point{2, 90, 5}));
    EXPECT_EQ(r.mesh.nodeNumber, (Ints{1, 2}));
    EXPECT_EQ(r.Findings(), (Found{{Code::uncertain, 5}}));
}

TEST(Systems, ShiftTurnAndEnd) {
    const std::string node = "*NODE\n1, 1., 2., 3.\n";
    EXPECT_EQ(Read("*SYSTEM\n10., 20., 30.\n" + node).At(1), (Point{11, 22, 33}));
    EXPECT_EQ(Read("*SYSTEM\n10., 0., 0., 10., 1., 0.\n" + node).At(1), (Point{8, 1, 3})); // x along Y
    EXPECT_EQ(Read("*SYSTEM\n0., 0., 0., 7., 0., 5.\n" + node).At(1), (Point{1, 2, 3}));   // x laid into X-Y
    EXPECT_EQ(Read("*SYSTEM\n0., 0., 0., 0., 0., 1.\n1., 0., 0.\n" + node).At(1), (Point{2, 3, 1}));
    EXPECT_EQ(Read("*SYSTEM\n10., 20., 30.\n*SYSTEM\n" + node).At(1), (Point{1, 2, 3}));
    EXPECT_EQ(Read("*SYSTEM\n10., 0., 0.\n*NODE, SYSTEM=C\n1, 2., 180., 5.\n").At(1), (Point{8, 0, 5}));
    EXPECT_EQ(Read("*TRANSFORM, NSET=A\n0., 1., 0., 1., 0., 0.\n" + node).At(1), (Point{1, 2, 3}));
    EXPECT_EQ(Read("*SYSTEM\n1., 1., 1., 1., 1., 1.\n" + node).Findings(), (Found{{Code::uncertain, 1}}));
}

TEST(Systems, EndWithTheirPart) {
    const auto r = Read("*PART, NAME=A\n*SYSTEM\n10., 0., 0.\n*NODE\n1, 1., 0., 0.\n*END PART\n*PART, NAME=B\n*NODE\n"
                        "2, 1., 0., 0.\n*END PART\n");
    EXPECT_EQ(r.At(1), (Point{11, 0, 0}));
    EXPECT_EQ(r.At(2), (Point{1, 0, 0}));
}

// Generators -------------------------------------------------------------------------------------------------

void ExpectNear(const Point &point, const Point &wanted) {
    ASSERT_EQ(point.size(), 3u);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_NEAR(point[i], wanted[i], 1e-12) << "coordinate " << i;
    }
}

TEST(Generators, NgenPutsNodesOnALine) {
    const auto r =
        Read("*NODE\n1, 0., 0., 0.\n5, 4., 8., 0.\n20, 0., 0., 1.\n16, 0., 0., 3.\n*NGEN, NSET=A\n1, 5\n20, 16, -2\n");
    EXPECT_EQ(r.At(2), (Point{1, 2, 0}));
    EXPECT_EQ(r.At(4), (Point{3, 6, 0}));
    EXPECT_EQ(r.At(18), (Point{0, 0, 2}));
    EXPECT_EQ(r.mesh.nodeNumber, (Ints{1, 5, 20, 16, 2, 3, 4, 18}));
    EXPECT_EQ(r.Nodes("A"), (Ints{1, 5, 20, 16, 2, 3, 4, 18})); // the end nodes too
    EXPECT_EQ(r.Findings(), Found{});
}

TEST(Generators, NgenPutsNodesOnAnArc) {
    const std::string ends = "*NODE\n1, 1., 0., 0.\n3, 0., 1., 0.\n5, -1., 0., 0.\n9, 0., 0., 0.\n*NGEN, LINE=C\n";
    const double half = std::sqrt(0.5);
    ExpectNear(Read(ends + "1, 3, 1, , 0., 0., 0.\n").At(2), {half, half, 0});
    ExpectNear(Read(ends + "1, 3, 1, 9\n").At(2), {half, half, 0});
    ExpectNear(Read(ends + "1, 3, 1, 9, , , , 0., 0., -1.\n").At(2), {-half, -half, 0}); // the long way
    ExpectNear(Read(ends + "1, 5, 2, 9, , , , 0., 0., 1.\n").At(3, 1), {0, 1, 0});
    EXPECT_EQ(Read(ends + "1, 5, 2, 9\n").Findings(), (Found{{Code::generatorEnds, 7}})); // which half?
}

TEST(Generators, NgenWhoseRowDoesNotFitIsSaid) {
    const auto r = Read(NodesTo(3) + "*NGEN\n1, 9\n1, 3, 3\n3, 1, 1\n1, 3, 0\nx, 3\n");
    EXPECT_EQ(r.mesh.nodeNumber, (Ints{1, 2, 3}));
    EXPECT_EQ(r.Findings(), (Found{{Code::generatorEnds, 6},
                                   {Code::generatorEnds, 7},
                                   {Code::generatorEnds, 8},
                                   {Code::generatorEnds, 9},
                                   {Code::badNumber, 10}}));
}

TEST(Generators, NfillFillsBetweenSetsAsTheyAreThere) {
    const auto r = Read(
        "*NODE, NSET=A\n1, 0., 0., 0.\n2, 1., 0., 0.\n*NODE, NSET=B\n11, 0., 10., 0.\n12, 1., 10., 0.\n13, 5., 5., 5.\n"
        "*NFILL, NSET=F\nA, B, 5, 2\n*NODE, NSET=A\n30, 7., 7., 7.\n");
    EXPECT_EQ(r.mesh.nodeNumber, (Ints{1, 2, 11, 12, 13, 3, 5, 7, 9, 4, 6, 8, 10, 30}));
    EXPECT_EQ(r.At(3), (Point{0, 2, 0}));
    EXPECT_EQ(r.At(10), (Point{1, 8, 0}));
    EXPECT_EQ(r.Nodes("F"), (Ints{1, 2, 11, 12, 3, 5, 7, 9, 4, 6, 8, 10}));
    EXPECT_EQ(r.Findings(), Found{});
}

TEST(Generators, NfillTakesUnsortedSetsAsTheyAreAndMissingNodesAtTheOrigin) {
    const auto r = Read(
        "*NODE\n1, 0., 0., 0.\n2, 8., 0., 0.\n21, 0., 4., 0.\n*NSET, NSET=A, UNSORTED\n2, 1\n*NSET, NSET=B, UNSORTED\n"
        "22, 21\n*NFILL\nA, B, 2, 10\n");
    EXPECT_EQ(r.At(12), (Point{4, 0, 0})); // from 2 to 22, which is nowhere
    EXPECT_EQ(r.At(11), (Point{0, 2, 0}));
    EXPECT_EQ(r.Findings(), (Found{{Code::missingMember, 8}}));
}

// The order of OLD SET goes on into a new set only: here 11 comes before 12, as it stands beside 1.
TEST(Generators, NcopySortsASetThatIsThere) {
    const auto r = Read("*NODE\n1, 0., 0., 0.\n2, 1., 0., 0.\n3, 5., 5., 0.\n*NSET, NSET=OLD, UNSORTED\n2, 1\n"
                        "*NSET, NSET=NEW, UNSORTED\n3\n*NCOPY, CHANGE NUMBER=10, OLD SET=OLD, SHIFT, NEW SET=NEW\n"
                        "0., 10., 0.\n*NSET, NSET=A, UNSORTED\n3, 1, 2\n*NFILL\nA, NEW, 2, 5\n");
    EXPECT_EQ(r.Findings(), Found{});
    EXPECT_EQ(r.At(6), (Point{0, 5, 0}));
    EXPECT_EQ(r.At(7), (Point{1, 5, 0}));
}

TEST(Generators, NcopyShiftsNodes) {
    const auto r =
        Read(NodesTo(3) + "*NSET, NSET=A\n1, 3\n*NCOPY, CHANGE NUMBER=100, OLD SET=A, SHIFT, NEW SET=B\n1., 2., 3.\n"
                          "*NSET, NSET=A\n2\n");
    EXPECT_EQ(r.At(103), (Point{4, 2, 3}));
    EXPECT_EQ(r.Nodes("B"), (Ints{101, 103}));
    EXPECT_EQ(r.mesh.nodeNumber, (Ints{1, 2, 3, 101, 103}));
    EXPECT_EQ(r.Findings(), Found{});
}

TEST(Generators, ElgenRepeatsAMasterInThreeDirections) {
    const auto r =
        Read("*ELEMENT, TYPE=CPS4, ELSET=M\n1, 1, 2, 12, 11\n*ELGEN, ELSET=E\n1, 2, 1, 1, 2, 10, 10, 2, 100, 1000\n");
    EXPECT_EQ(r.mesh.elementNumber, (Ints{1, 2, 11, 12, 1001, 1002, 1011, 1012}));
    EXPECT_EQ(r.Elements("E"), (Ints{1, 2, 11, 12, 1001, 1002, 1011, 1012}));
    EXPECT_EQ(r.Elements("M"), Ints{1});
    EXPECT_EQ(r.Groups(), (std::vector<std::string>{"M", "E", "E", "E", "E", "E", "E", "E"}));
    const auto nodes = Read(
        NodesTo(123) + "*ELEMENT, TYPE=CPS4, ELSET=M\n1, 1, 2, 12, 11\n*ELGEN\n1, 2, , , 2, 10, 10, 2, 100, 1000\n");
    EXPECT_EQ(nodes.Connectivity(2), (Ints{2, 3, 13, 12}));
    EXPECT_EQ(nodes.Connectivity(1012), (Ints{112, 113, 123, 122}));
    EXPECT_EQ(nodes.Groups(), (std::vector<std::string>(8, "M"))); // as the master
    EXPECT_EQ(nodes.Findings(), Found{});
}

TEST(Generators, ElcopyShiftsElementsAndNodes) {
    const auto r = Read(
        NodesTo(6) +
        "*ELEMENT, TYPE=CPS3, ELSET=E\n1, 1, 2, 3\n*ELCOPY, ELEMENT SHIFT=50, OLD SET=E, SHIFT NODES=3, NEW SET=F\n");
    EXPECT_EQ(r.Connectivity(51), (Ints{4, 5, 6}));
    EXPECT_EQ(r.Elements("F"), Ints{51});
    EXPECT_EQ(r.Elements("E"), Ints{1});
    EXPECT_EQ(r.Findings(), Found{});
}

TEST(Generators, WhoseEndsAreMissingAreSaid) {
    const auto r =
        Read(NodesTo(2) + "*NFILL\nA, B, 2, 1\n*NCOPY, CHANGE NUMBER=5, OLD SET=A, SHIFT\n1., 0., 0.\n*ELGEN\n3, 2\n"
                          "*ELCOPY, ELEMENT SHIFT=1, OLD SET=A, SHIFT NODES=1\n*NCOPY, OLD SET=A, SHIFT\n");
    EXPECT_EQ(r.Findings(), (Found{{Code::generatorEnds, 5},
                                   {Code::generatorEnds, 6},
                                   {Code::generatorEnds, 9},
                                   {Code::generatorEnds, 10},
                                   {Code::missingParameter, 11}}));
}

TEST(Generators, ThatWouldMakeTooMuchAreRefused) {
    const auto r =
        Read("*NODE\n1, 0., 0., 0.\n999999999, 1., 0., 0.\n*NGEN\n1, 999999999\n*ELEMENT, TYPE=MASS\n1, 1\n*ELGEN\n"
             "1, 99999, 0, 1, 99999, 0, 99999\n*NSET, NSET=A, GENERATE\n1, 999999999, 1\n1, 999999999, 2\n");
    EXPECT_EQ(r.mesh.nodeNumber, (Ints{1, 999999999}));
    EXPECT_EQ(r.mesh.elementNumber, Ints{1});
    EXPECT_EQ(r.Findings(), (Found{{Code::tooMany, 5}, {Code::tooMany, 9}, {Code::tooMany, 11}, {Code::tooMany, 12}}));
}

TEST(Uncertain, FormsAreRefused) {
    const std::string before =
        NodesTo(4) + "*NSET, NSET=A\n1, 2\n*NSET, NSET=B\n3, 4\n*ELEMENT, TYPE=CPS3, ELSET=E\n1, 1, 2, 3\n";
    const char *const forms[] = {
        "*NFILL, BIAS=2.\nA, B, 2, 1\n",
        "*NFILL, SINGULAR=1\nA, B, 2, 1\n",
        "*NFILL, TWO STEP\nA, B, 2, 1\n",
        "*NCOPY, CHANGE NUMBER=10, OLD SET=A, SHIFT, MULTIPLE=3\n1., 0., 0.\n",
        "*NCOPY, CHANGE NUMBER=10, OLD SET=A, REFLECT=MIRROR\n1., 0., 0., 0., 1., 0.\n",
        "*NCOPY, CHANGE NUMBER=10, OLD SET=A, POLE\n1\n",
        "*NCOPY, CHANGE NUMBER=10, OLD SET=A, SHIFT\n1., 0., 0.\n0., 0., 0., 0., 0., 1., 90.\n",
        "*ELCOPY, ELEMENT SHIFT=10, OLD SET=E, SHIFT NODES=1, REFLECT\n",
        "*NGEN, LINE=P\n1, 3, 1, , 0., 0., 0.\n",
        "*NGEN, LINE=C, SYSTEM=S\n1, 3, 1, , 0., 0., 0.\n",
        "*NODE, SYSTEM=S\n9, 1., 1., 1.\n",
        "*NMAP, NSET=A\n0., 0., 0.\n",
        "*PARAMETER\na = 2\n",
        "*ELEMENT, TYPE=C3D13\n",
        "*ELEMENT, TYPE=C3D27\n",
        "*SURFACE, NAME=S, CROP\nT\n0., 0., 0., 1., 1., 1.\n",
    };
    for (const char *form : forms) {
        const Reading r = Read(before + form);
        ASSERT_FALSE(r.deck.findings.empty()) << form;
        EXPECT_EQ(r.deck.findings[0].code, Code::uncertain) << form;
        EXPECT_EQ(r.Findings().size(), 1u) << form;
        EXPECT_EQ(r.mesh.nodeNumber, (Ints{1, 2, 3, 4})) << form;
        EXPECT_EQ(r.mesh.elementNumber, Ints{1}) << form;
    }
}

// Placing ----------------------------------------------------------------------------------------------------

TEST(Placing, TurnsByTheRightHandAndExactlyAtQuarters) {
    deck::Turn turn;
    ASSERT_TRUE(deck::MakeTurn({0, 0, 0}, {0, 0, 2}, 90, &turn));
    EXPECT_EQ(deck::Turned(turn, {11, 0, 0}), (deck::Point{0, 11, 0}));
    ASSERT_TRUE(deck::MakeTurn({1, 0, 0}, {1, 0, 1}, -450, &turn));
    EXPECT_EQ(deck::Turned(turn, {2, 0, 5}), (deck::Point{1, -1, 5}));
    for (const double half : {-180., 180., 540.}) {
        ASSERT_TRUE(deck::MakeTurn({0, 0, 0}, {0, 0, 2}, half, &turn));
        EXPECT_EQ(deck::Turned(turn, {3, 4, 5}), (deck::Point{-3, -4, 5})) << half;
    }
    ASSERT_TRUE(deck::MakeTurn({0, 0, 0}, {1, 1, 1}, 120, &turn)); // x to y, y to z
    const deck::Point p = deck::Turned(turn, {1, 2, 3});
    ExpectNear({p[0], p[1], p[2]}, {3, 1, 2});
    EXPECT_FALSE(deck::MakeTurn({1, 2, 3}, {1, 2, 3}, 90, &turn));
}

} // namespace
