// The one mesh of a deck: sets, parts and instances, surfaces, groups.
#include "decks.h"

#include <algorithm>

namespace {

using deck::Code;
using decks::Found;
using decks::Ints;
using decks::NodesTo;
using decks::Read;
using Point = std::vector<double>;
using Names = std::vector<std::string>;

// Two tetrahedra that share the face 1 2 3: 4 below (element 1), 5 above (element 2).
const std::string kTwoTets =
    "*NODE\n1, 0., 0., 0.\n2, 1., 0., 0.\n3, 0., 1., 0.\n4, 0., 0., -1.\n5, 0., 0., 1.\n"
    "*ELEMENT, TYPE=C3D4, ELSET=LOW\n1, 1, 2, 3, 4\n*ELEMENT, TYPE=C3D4, ELSET=HIGH\n2, 1, 2, 3, 5\n"; // 10 lines

// Sets -------------------------------------------------------------------------------------------------------

TEST(Sets, OfOneNameAddUp) {
    const auto r =
        Read(NodesTo(9) + "*NSET, NSET=A\n9, 3\n*Nset, nset=a, generate\n1, 5, 2\n*NSET, NSET=A\n2, 3, 2,\n");
    EXPECT_EQ(r.Nodes("A"), (Ints{1, 2, 3, 5, 9}));
    EXPECT_EQ(r.mesh.nodeSets.size(), 1u);
    EXPECT_EQ(r.deck.scopes[0].nodeSets.sets[0].sections.size(), 3u);
    EXPECT_EQ(r.Findings(), Found{});
}

TEST(Sets, OfRangesTakeWhatIsThere) {
    const auto r = Read("*NODE\n1, 0.\n3, 0.\n7, 0.\n1000000, 0.\n*NSET, GENERATE, INTERNAL, NSET=A\n1, 99999999, "
                        "2\n*NSET, NSET=B, GENERATE\n"
                        "7, 1, -2\n*NSET, NSET=C, GENERATE\n3, 3\n*NSET, NSET=D, GENERATE\n1, 7\n2, 6, 1\n");
    EXPECT_EQ(r.Nodes("A"), (Ints{1, 3, 7}));
    EXPECT_EQ(r.Nodes("B"), (Ints{1, 3, 7}));
    EXPECT_EQ(r.Nodes("C"), Ints{3});
    EXPECT_EQ(r.Nodes("D"), (Ints{1, 3, 7}));
    EXPECT_TRUE(r.mesh.nodeSets[0].internal);
    EXPECT_FALSE(r.mesh.nodeSets[1].internal);
    EXPECT_EQ(r.Findings(), Found{});
}

TEST(Sets, OfRangesThatAreNoneAreSaid) {
    const auto r = Read(NodesTo(9) + "*NSET, NSET=A, GENERATE\n1, 6, 2\n1, 5, -1\n5, 1\n1, 5, 0\n1\n2, 3, 1\n");
    EXPECT_EQ(r.Nodes("A"), (Ints{2, 3}));
    EXPECT_EQ(r.Findings(), (Found{{Code::badNumber, 12},
                                   {Code::badNumber, 13},
                                   {Code::badNumber, 14},
                                   {Code::badNumber, 15},
                                   {Code::badNumber, 16}}));
    const auto most = Read(NodesTo(3) + "*NSET, NSET=A, GENERATE\n2, 100000001, 1\n1, 100000001, 1\n");
    EXPECT_EQ(most.Nodes("A"), (Ints{2, 3})); // the first row makes as many entries as a range may
    EXPECT_EQ(most.Findings(), (Found{{Code::tooMany, 7}}));
}

TEST(Sets, OfSetsTakeThemAsTheyAreThere) {
    const auto r = Read(NodesTo(6) + "*NSET, NSET=A\n1\n*NSET, NSET=B\nA, 5\n*NSET, NSET=A\n2\n*NSET, NSET=C\nA, "
                                     "D\n*NSET, NSET=D\n6\n*NSET, NSET=D\n4\n");
    EXPECT_EQ(r.Nodes("B"), (Ints{1, 5}));
    EXPECT_EQ(r.Nodes("C"), (Ints{1, 2, 4, 6})); // D comes later: all of it
    EXPECT_EQ(r.Findings(), (Found{{Code::setLater, 15}}));
}

TEST(Sets, ThatWaitForOthersPassItOn) {
    const auto r = Read(NodesTo(6) + "*NSET, NSET=A\nD\n*NSET, NSET=B\nA\n*NSET, NSET=D\n3\n");
    EXPECT_EQ(r.Nodes("A"), Ints{3});
    EXPECT_EQ(r.Nodes("B"), Ints{3});
}

TEST(Sets, ThatNameEachOtherAreSaid) {
    const auto r = Read(NodesTo(3) + "*NSET, NSET=A\n1, B\n*NSET, NSET=B\n2, A\n*NSET, NSET=C\nC, 3\n");
    Found cycles;
    for (const auto &found : r.Findings()) {
        if (found.first == Code::setCycle) {
            cycles.push_back(found);
        }
    }
    EXPECT_EQ(cycles, (Found{{Code::setCycle, 8}, {Code::setCycle, 10}}));
    EXPECT_EQ(r.Nodes("A"), (Ints{1, 2}));
    EXPECT_EQ(r.Nodes("B"), (Ints{1, 2}));
    EXPECT_EQ(r.Nodes("C"), Ints{3});
}

TEST(Sets, OfNodesAndElementsOfOneNameAreTwo) {
    const auto r = Read(kTwoTets + "*NSET, NSET=LOW\n5\n*ELSET, ELSET=BOTH\nLOW, 2\n*NSET, NSET=X\nHIGH\n");
    EXPECT_EQ(r.Nodes("LOW"), Ints{5});
    EXPECT_EQ(r.Elements("LOW"), Ints{1});
    EXPECT_EQ(r.Elements("BOTH"), (Ints{1, 2}));
    EXPECT_EQ(r.Findings(), (Found{{Code::missingMember, 16}}));
}

TEST(Sets, OfAnElementSetHoldItsNodesAsItIsThere) {
    const auto r = Read(kTwoTets + "*ELSET, ELSET=E\n1\n*NSET, NSET=A, ELSET=E\n*ELSET, ELSET=E\n2\n*NSET, NSET=B, "
                                   "ELSET=E\n*NSET, NSET=C, ELSET=F\n"
                                   "1\n*ELSET, ELSET=F\n2\n*NSET, NSET=D, ELSET=NONE\n");
    EXPECT_EQ(r.Nodes("A"), (Ints{1, 2, 3, 4}));
    EXPECT_EQ(r.Nodes("B"), (Ints{1, 2, 3, 4, 5}));
    EXPECT_EQ(r.Nodes("C"), (Ints{1, 2, 3, 5}));
    EXPECT_EQ(r.Findings(), (Found{{Code::strayRow, 18}, {Code::setLater, 17}, {Code::missingMember, 21}}));
}

TEST(Sets, OfASurfaceHoldItsNodes) {
    const auto r = Read(
        kTwoTets + "*NSET, NSET=A, SURFACE=S\n*NSET, NSET=B\nA\n*SURFACE, NAME=S\n1, S2\n*NSET, NSET=C, SURFACE=T\n");
    EXPECT_EQ(r.Nodes("A"), (Ints{1, 2, 4}));
    EXPECT_EQ(r.Nodes("B"), (Ints{1, 2, 4}));
    EXPECT_EQ(r.Findings(), (Found{{Code::missingMember, 16}}));
}

TEST(Sets, OfASurfaceHoldItsMiddleNodes) {
    const auto r = Read(
        NodesTo(10) +
        "*ELEMENT, TYPE=C3D10\n1, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10\n*SURFACE, NAME=S\n1, S3\n*NSET, NSET=A, SURFACE=S\n");
    EXPECT_EQ(r.Nodes("A"), (Ints{2, 3, 4, 6, 9, 10}));
}

TEST(Sets, MayBeDefinedInAStep) {
    const auto r = Read(NodesTo(2) + "*STEP\n*STATIC\n1., 1.\n*NSET, NSET=A\n2\n*END STEP\n");
    EXPECT_EQ(r.Nodes("A"), Ints{2});
}

TEST(Sets, CountTheMembersThatNameNothing) {
    const auto r = Read(NodesTo(2) + "*NSET, NSET=A\n1, 77, 88, NONE\n");
    EXPECT_EQ(r.Nodes("A"), Ints{1});
    ASSERT_EQ(r.mesh.findings.size(), 1u);
    EXPECT_EQ(r.mesh.findings[0].code, Code::missingMember);
    EXPECT_EQ(r.mesh.findings[0].place.line, 5);
    EXPECT_EQ(r.mesh.findings[0].words, (Names{"77", "A"}));
    EXPECT_EQ(r.mesh.findings[0].count, 3);
}

TEST(Sets, MayNameEachOtherTwentyThousandDeep) {
    std::string names = NodesTo(2) + "*NSET, NSET=S0\n1\n";
    for (int i = 1; i <= 20000; ++i) {
        names += "*NSET, NSET=S" + std::to_string(i) + "\nS" + std::to_string(i - 1) + "\n";
    }
    EXPECT_EQ(Read(names).Nodes("S20000"), Ints{1});
    std::string backwards = NodesTo(2);
    for (int i = 0; i < 20000; ++i) {
        backwards += "*NSET, NSET=S" + std::to_string(i) + "\nS" + std::to_string(i + 1) + "\n";
    }
    EXPECT_EQ(Read(backwards + "*NSET, NSET=S20000\n2\n").Nodes("S0"), Ints{2});
}

// Parts and instances ----------------------------------------------------------------------------------------

const std::string kPart = "*PART, NAME=P\n*NODE, NSET=N\n1, 1., 0., 0.\n2, 2., 0., 0.\n3, 1., 1., 0.\n"
                          "*ELEMENT, TYPE=CPS3, ELSET=E\n1, 1, 2, 3\n*SURFACE, NAME=S\nE, S1\n*END PART\n"; // 10 lines

TEST(Instances, AreShiftedThenTurned) {
    const auto r = Read(kPart + "*ASSEMBLY, NAME=A\n*INSTANCE, NAME=I, PART=P\n10., 0., 0.\n0., 0., 0., 0., 0., 1., "
                                "90.\n*END INSTANCE\n*END ASSEMBLY\n");
    EXPECT_EQ(r.At(1), (Point{0, 11, 0}));
    EXPECT_EQ(r.At(3), (Point{-1, 11, 0}));
    EXPECT_TRUE(r.deck.instances[0].moved);
    EXPECT_TRUE(r.deck.instances[0].turned);
    EXPECT_EQ(r.Findings(), Found{});
    const auto beside =
        Read(kPart + "*ASSEMBLY, NAME=A\n*INSTANCE, NAME=I, PART=P\n0., 0., 0.\n1., 0., 0., 1., 0., 1., "
                     "180.\n*END INSTANCE\n*END ASSEMBLY\n");
    EXPECT_EQ(beside.At(1), (Point{1, 0, 0})); // on the axis
    EXPECT_EQ(beside.At(3), (Point{1, -1, 0}));
}

TEST(Instances, OfBlanksForCommas) {
    const auto r = Read(kPart + "*ASSEMBLY\n*INSTANCE, NAME=I, PART=P\n10 0 0\n*END INSTANCE\n*END ASSEMBLY\n");
    EXPECT_EQ(r.At(1), (Point{11, 0, 0}));
}

TEST(Instances, HaveNumbersAndNamesOfTheirOwn) {
    const auto r = Read(kPart + "*ASSEMBLY, NAME=A\n*INSTANCE, NAME=I1, PART=P\n*END INSTANCE\n*INSTANCE, NAME=I2, "
                                "PART=P\n5., 0., 0.\n*END INSTANCE\n"
                                "*NODE\n1, 0., 0., 9.\n*NSET, NSET=N\n1\n*NSET, NSET=BOTH, INSTANCE=I1\n1, 2\n*NSET, "
                                "NSET=BOTH, INSTANCE=I2\nN\n"
                                "*NSET, NSET=C\nI2.N, I1.3, Assembly.N\n*ELSET, ELSET=EE\nI2.1, I1.E\n*SURFACE, "
                                "NAME=T\nI2.E, S2\nEE, S3\n*END ASSEMBLY\n");
    EXPECT_EQ(r.mesh.nodeNumber, (Ints{1, 2, 3, 1, 2, 3, 1}));
    EXPECT_EQ(r.At(1, 2), (Point{6, 0, 0}));
    EXPECT_EQ(r.At(1, 3), (Point{0, 0, 9}));
    EXPECT_EQ(r.mesh.nodes, (Ints{0, 1, 2, 3, 4, 5}));
    EXPECT_EQ(r.Nodes("I1.N"), (Ints{1, 2, 3}));
    EXPECT_EQ(r.mesh.nodeSets[1].members, (Ints{3, 4, 5}));
    EXPECT_EQ(r.mesh.nodeSets[2].name, "N");
    EXPECT_EQ(r.mesh.nodeSets[2].members, Ints{6});
    EXPECT_EQ(r.mesh.nodeSets[3].members, (Ints{0, 1, 3, 4, 5}));
    EXPECT_EQ(r.mesh.nodeSets[4].members, (Ints{2, 3, 4, 5, 6}));
    EXPECT_EQ(r.mesh.elementSets[2].members, (Ints{0, 1}));
    EXPECT_EQ(r.Faces("I2.S"), Ints{11});
    EXPECT_EQ(r.Faces("T"), (Ints{12, 13, 13}));
    EXPECT_EQ(r.Groups(), (Names{"I1.E", "I2.E"}));
    EXPECT_EQ(r.Findings(), Found{});
}

TEST(Instances, AloneNeedNoPrefixUnlessTheAssemblyHasTheName) {
    const std::string assembly = "*ASSEMBLY\n*INSTANCE, NAME=I, PART=P\n*END INSTANCE\n";
    auto r = Read(kPart + assembly + "*END ASSEMBLY\n");
    EXPECT_EQ(r.Nodes("N"), (Ints{1, 2, 3}));
    EXPECT_EQ(r.Faces("S"), Ints{11});
    r = Read(kPart + assembly + "*NSET, NSET=N, INSTANCE=I\n2\n*END ASSEMBLY\n");
    EXPECT_EQ(r.Nodes("I.N"), (Ints{1, 2, 3}));
    EXPECT_EQ(r.Nodes("N"), Ints{2});
    EXPECT_EQ(r.Faces("S"), Ints{11}); // another kind
    r = Read(kPart + "*ASSEMBLY\n*INSTANCE, NAME=I.J, PART=P\n*END INSTANCE\n*NSET, NSET=M\nI.J.2, I.J.N\n"
                     "*NSET, NSET=O\nI.J.3\n*END ASSEMBLY\n");
    EXPECT_EQ(r.Nodes("M"), (Ints{1, 2, 3}));
    EXPECT_EQ(r.Nodes("O"), Ints{3});
    EXPECT_EQ(r.Findings(), Found{});
}

TEST(Instances, KeepALeadingCInFrontAndMakeNone) {
    const auto r = Read("*PART, NAME=P\n*NODE, NSET=C_GLUE\n1, 0.\n*NODE, NSET=N\n2, 0.\n*END "
                        "PART\n*ASSEMBLY\n*INSTANCE, NAME=C_I, PART=P\n*END INSTANCE\n"
                        "*INSTANCE, NAME=J, PART=P\n*END INSTANCE\n*END ASSEMBLY\n");
    Names names;
    for (const auto &set : r.mesh.nodeSets) {
        names.push_back(set.name);
    }
    EXPECT_EQ(names, (Names{"C_C_I.GLUE", "_C_I.N", "C_J.GLUE", "J.N"}));
}

TEST(Instances, MayHoldTheMeshThemselves) {
    const auto r =
        Read("*PART, NAME=P\n*END PART\n*ASSEMBLY\n*INSTANCE, NAME=I, PART=P\n0., 0., 7.\n*NODE, NSET=N\n1, 1., 0., "
             "0.\n2, 2., 0., 0.\n3, 1., 1., 0.\n"
             "*ELEMENT, TYPE=CPS3\n1, 1, 2, 3\n*END INSTANCE\n*NSET, NSET=A, INSTANCE=I\n3\n*END ASSEMBLY\n");
    EXPECT_EQ(r.At(1), (Point{1, 0, 7}));
    EXPECT_EQ(r.Nodes("N"), (Ints{1, 2, 3}));
    EXPECT_EQ(r.Nodes("A"), Ints{3});
    EXPECT_EQ(r.Groups(), Names{"I"});
    EXPECT_EQ(r.Findings(), Found{});
}

TEST(Instances, AddTheirOwnToTheirPart) {
    const auto r = Read(kPart + "*ASSEMBLY\n*INSTANCE, NAME=I, PART=P\n*NODE, NSET=N\n4, 0., 5., 0.\n*ELEMENT, "
                                "TYPE=CPS3, ELSET=E\n2, 1, 2, 4\n*END INSTANCE\n*END ASSEMBLY\n");
    EXPECT_EQ(r.Nodes("N"), (Ints{1, 2, 3, 4}));
    EXPECT_EQ(r.Elements("E"), (Ints{1, 2}));
    EXPECT_EQ(r.Connectivity(2), (Ints{1, 2, 4}));
}

TEST(Parts, WithoutAnyInstanceStandForThemselves) {
    const auto r = Read(kPart + "*NSET, NSET=A\nP.2\n");
    EXPECT_EQ(r.Nodes("N"), (Ints{1, 2, 3}));
    EXPECT_EQ(r.Nodes("A"), Ints{2});
    EXPECT_EQ(r.Groups(), Names{"E"});
    EXPECT_EQ(r.mesh.placed[0].name, "P");
}

TEST(Parts, ThatNoInstanceUsesAreNotInTheMesh) {
    const auto r = Read(
        kPart +
        "*PART, NAME=Q\n*NODE\n7, 0.\n*END PART\n*ASSEMBLY\n*INSTANCE, NAME=I, PART=P\n*END INSTANCE\n*END ASSEMBLY\n");
    EXPECT_EQ(r.mesh.nodeNumber, (Ints{1, 2, 3}));
    EXPECT_EQ(r.Findings(), (Found{{Code::partUnused, 11}}));
}

TEST(Parts, AndInstancesThatDoNotFitAreSaid) {
    const auto r = Read(kPart + "*PART, NAME=P\n*PART, NAME=Q\n*END INSTANCE\n*END PART\n*END PART\n*INSTANCE, NAME=I, "
                                "PART=P\n1., 2., 3., 4.\n0., 0., 0., 0., 0., 0., 9.\n"
                                "1.\n*END INSTANCE\n*ASSEMBLY\n*INSTANCE, NAME=I, PART=NO\n*END INSTANCE\n*INSTANCE, "
                                "NAME=J, INSTANCE=X, LIBRARY=Y\n*END INSTANCE\n*PART\n");
    EXPECT_EQ(r.Findings(), (Found{{Code::instanceTwice, 11},
                                   {Code::scopeEnd, 12},
                                   {Code::scopeEnd, 13},
                                   {Code::scopeEnd, 15},
                                   {Code::strayRow, 17},
                                   {Code::strayRow, 19},
                                   {Code::uncertain, 16},
                                   {Code::unknownPart, 22},
                                   {Code::instanceTwice, 22},
                                   {Code::notMesh, 24},
                                   {Code::missingParameter, 26},
                                   {Code::scopeOpen, 26},
                                   {Code::scopeOpen, 21},
                                   {Code::partUnused, 11},
                                   {Code::partUnused, 12},
                                   {Code::partUnused, 26}}));
}

TEST(Parts, OfTheAssemblyNeedAnInstanceToNameTheirMembers) {
    const auto r = Read(kPart + "*ASSEMBLY\n*INSTANCE, NAME=I, PART=P\n*END INSTANCE\n*NSET, NSET=A\n1\n*NSET, NSET=B, "
                                "INSTANCE=NO\n1\n*NSET, NSET=C\nI.0, I.4, I., .1\n*END ASSEMBLY\n");
    EXPECT_EQ(r.Nodes("A"), Ints{});
    EXPECT_EQ(r.Nodes("C"), Ints{});
    EXPECT_EQ(
        r.Findings(),
        (Found{
            {Code::badNumber, 19}, {Code::missingMember, 15}, {Code::missingMember, 16}, {Code::missingMember, 19}}));
}

// Surfaces ---------------------------------------------------------------------------------------------------

TEST(Surfaces, AreRowsOfSetsOrNumbersAndLabels) {
    const auto r = Read("*SURFACE, NAME=LOW, TYPE=ELEMENT\n LOW , s2 \n2, S3,\nBOTH, S4\n" + kTwoTets +
                        "*ELSET, ELSET=BOTH\n1, 2\n");
    EXPECT_EQ(r.Faces("LOW"), (Ints{12, 23, 14, 24}));
    EXPECT_EQ(r.mesh.surfaces[0].faces[1].line, 3);
    EXPECT_EQ(r.Findings(), Found{});
}

TEST(Surfaces, WithoutLabelAreTheFreeFaces) {
    auto r = Read(kTwoTets + "*ELSET, ELSET=BOTH\n1, 2\n*SURFACE, NAME=S\nBOTH,\n*Surface, NAME=T\nLOW\n");
    EXPECT_EQ(r.Faces("S"), (Ints{12, 13, 14, 22, 23, 24}));
    EXPECT_EQ(r.Faces("T"), (Ints{12, 13, 14}));
    EXPECT_EQ(r.Findings(), (Found{{Code::noLabel, 16}})); // S1 is free in the set alone
    EXPECT_EQ(r.mesh.findings[0].count, 1);
    r = Read(NodesTo(4) + "*ELEMENT, TYPE=CPS3, ELSET=E\n1, 1, 2, 3\n2, 3, 2, 4\n*ELEMENT, TYPE=S3, ELSET=F\n3, 1, 2, "
                          "3\n*SURFACE, NAME=S\nE,\n*SURFACE, NAME=T\nF,\n");
    EXPECT_EQ(r.Faces("S"), (Ints{11, 13, 22, 23}));
    EXPECT_EQ(r.Faces("T"), Ints{37});
}

TEST(Surfaces, OfSetsOfSeveralTypesTakeTheFacesThatAreThere) {
    const auto r = Read(kTwoTets + "*NODE\n6, 2.\n*ELEMENT, TYPE=C3D5\n3, 1, 2, 3, 4, 6\n*ELSET, ELSET=ALL\n1, 2, "
                                   "3\n*SURFACE, NAME=S\nALL, S5\nLOW, S5\n3, S6\nLOW, SPOS\n1, TOP\n");
    EXPECT_EQ(r.Faces("S"), Ints{35});
    EXPECT_EQ(
        r.Findings(),
        (Found{
            {Code::unknownLabel, 19}, {Code::unknownLabel, 20}, {Code::unknownLabel, 21}, {Code::unknownLabel, 22}}));
    EXPECT_EQ(r.mesh.findings[3].words, (Names{"TOP", "S"}));
}

TEST(Surfaces, OfShellsAreSidesAndEdges) {
    const auto r = Read(NodesTo(8) + "*ELEMENT, TYPE=S3R, ELSET=E\n1, 1, 2, 3\n*ELEMENT, TYPE=S4, ELSET=Q\n2, 1, 2, 3, "
                                     "4\n*ELEMENT, TYPE=STRI3\n3, 1, 2, 4\n"
                                     "*ELEMENT, TYPE=CPS3\n4, 1, 2, 4\n*SURFACE, NAME=S\nE, SPOS\nQ, SNEG\nE, E3\nQ, "
                                     "E4\n3, S2\n4, S3\n*SURFACE, NAME=BAD\nE, E4\nQ, S1\n4, E1\n4, SPOS\n");
    EXPECT_EQ(r.Faces("S"), (Ints{19, 28, 13, 24, 32, 43}));
    EXPECT_EQ(r.Faces("BAD"), Ints{});
    EXPECT_EQ(
        r.Findings(),
        (Found{
            {Code::unknownLabel, 26}, {Code::unknownLabel, 27}, {Code::unknownLabel, 28}, {Code::unknownLabel, 29}}));
}

TEST(Surfaces, OfNodesAreNodeLists) {
    const auto r = Read(NodesTo(5) + "*NSET, NSET=A\n4, 2\n*SURFACE, TYPE=NODE, NAME=S\nA, 1.\n5\n77\n");
    ASSERT_EQ(r.mesh.surfaces.size(), 1u);
    EXPECT_TRUE(r.mesh.surfaces[0].ofNodes);
    EXPECT_EQ(r.mesh.surfaces[0].nodes, (Ints{1, 3, 4}));
    EXPECT_EQ(r.Findings(), (Found{{Code::missingMember, 12}}));
}

TEST(Surfaces, AreCombined) {
    const auto r = Read(kTwoTets + "*SURFACE, NAME=U, COMBINE=UNION\nA, B\nD\n*SURFACE, NAME=I, "
                                   "COMBINE=INTERSECTION\nA, B\n*SURFACE, NAME=D, COMBINE=DIFFERENCE\nA, B\n"
                                   "*SURFACE, NAME=A\n1, S2\n1, S3\n1, S2\n*SURFACE, NAME=B\n1, S3\n2, S4\n");
    EXPECT_EQ(r.Faces("U"), (Ints{12, 13, 24}));
    EXPECT_EQ(r.Faces("I"), Ints{13});
    EXPECT_EQ(r.Faces("D"), Ints{12});
    EXPECT_EQ(r.Findings(), Found{});
}

TEST(Surfaces, ThatHoldNothingForCertainAreSaid) {
    const auto r = Read(kTwoTets + "*SURFACE, NAME=A, COMBINE=UNION\nB\n*SURFACE, NAME=B, COMBINE=UNION\nA, "
                                   "NONE\n*SURFACE, NAME=C, TYPE=CUTTING SURFACE\n1., 2.\n"
                                   "*SURFACE, NAME=D\nNONE, S1\n9, S1\n*SURFACE, NAME=D\n1, S2\n*SURFACE, NAME=E\n");
    EXPECT_EQ(r.Faces("C"), Ints{});
    EXPECT_TRUE(r.mesh.surfaces[2].refused);
    EXPECT_EQ(r.Faces("D"), Ints{12});
    EXPECT_EQ(r.Faces("E"), Ints{});
    EXPECT_EQ(r.Findings(), (Found{{Code::notMesh, 15},
                                   {Code::surfaceTwice, 20},
                                   {Code::missingMember, 18},
                                   {Code::missingMember, 19},
                                   {Code::missingMember, 14},
                                   {Code::setCycle, 13}}));
    const auto cut = Read(kTwoTets + "*SURFACE, NAME=A, TYPE=ELE\n1, S2\n*SURFACE, NAME=B, TYPE=EL\n1, S2\n");
    EXPECT_EQ(cut.Faces("A"), Ints{12});
    EXPECT_TRUE(cut.mesh.surfaces[1].refused);
    EXPECT_EQ(cut.Findings(), (Found{{Code::notMesh, 13}}));
}

// Groups -----------------------------------------------------------------------------------------------------

TEST(Groups, ComeFromTheElementLineElseTheLastSectionElseAreAll) {
    const auto r = Read(NodesTo(4) + "*ELEMENT, TYPE=CPS3, ELSET=E\n1, 1, 2, 3\n*ELEMENT, TYPE=CPS3\n2, 1, 2, 4\n3, 1, "
                                     "3, 4\n4, 2, 3, 4\n*ELSET, ELSET=X\n1, 2, 3\n"
                                     "*ELSET, ELSET=Y\n3\n*SOLID SECTION, ELSET=X, MATERIAL=M\n*Solid Section, "
                                     "els=Y, mater=M2\n1.\n*SHELL SECTION, ELSET=NO, COMPOSITE\n");
    EXPECT_EQ(r.Groups(), (Names{"E", "X", "Y", "ALL"}));
    EXPECT_EQ(r.mesh.assignment, (Ints{0, 0, 1, -1}));
    EXPECT_EQ(r.Findings(), (Found{{Code::missingMember, 19}}));
}

TEST(Groups, OfSectionsOfCellsMayBeEmpty) {
    const auto r =
        Read(NodesTo(4) + "*ELEMENT, TYPE=CPS3, ELSET=A\n*ELEMENT, TYPE=CPS3, ELSET=B\n1, 1, 2, 3\n*ELEMENT, "
                          "TYPE=CPS4R, ELSET=A\n*ELEMENT, TYPE=MASS, ELSET=M\n*ELEMENT, TYPE=CPS3\n"
                          "*ELEMENT, TYPE=CPE3, ELSET=C\n");
    Names names;
    for (const deck::CellGroup &group : r.mesh.groups) {
        names.push_back(group.name);
    }
    EXPECT_EQ(names, (Names{"A", "B", "C"}));
    EXPECT_EQ(r.mesh.group, Ints{1});
    EXPECT_EQ(r.Findings(), Found{});
}

TEST(Groups, OfASectionBehindTheInstancesAreThoseOfTheSet) {
    const auto r =
        Read("*PART, NAME=P\n" + NodesTo(3) +
             "*ELEMENT, TYPE=CPS3\n1, 1, 2, 3\n*ELSET, ELSET=X\n1\n*END PART\n*ASSEMBLY\n*INSTANCE, NAME=I, "
             "PART=P\n*END INSTANCE\n"
             "*INSTANCE, NAME=J, PART=P\n*END INSTANCE\n*END ASSEMBLY\n*SOLID SECTION, ELSET=I.X, MATERIAL=M\n");
    EXPECT_EQ(r.Groups(), (Names{"I.X", "J"}));
}

TEST(Dimension, IsThatOfTheLargestShape) {
    const std::string nodes = NodesTo(4);
    EXPECT_EQ(Read(kTwoTets).mesh.dimension, 3);
    EXPECT_EQ(Read(nodes + "*ELEMENT, TYPE=S4R\n1, 1, 2, 3, 4\n*ELEMENT, TYPE=B31\n2, 1, 2\n").mesh.dimension, 2);
    EXPECT_EQ(Read(nodes + "*ELEMENT, TYPE=B31\n2, 1, 2\n").mesh.dimension, 0);
    EXPECT_EQ(Read(nodes + "*ELEMENT, TYPE=C3D4\n").mesh.dimension, 0);
}

// Places -----------------------------------------------------------------------------------------------------

TEST(Places, OfNodesAndElementsAreTheirRows) {
    const auto r = Read(kTwoTets);
    EXPECT_EQ(deck::PlaceOfNode(r.deck, r.mesh, 4).line, 6);
    EXPECT_EQ(deck::PlaceOfElement(r.deck, r.mesh, 1).line, 10);
    EXPECT_EQ(r.mesh.elementRuns[1].section, 1);
    EXPECT_EQ(r.deck.scopes[0].elements.sections[1].elset, "HIGH");
    EXPECT_EQ(r.deck.cards[static_cast<std::size_t>(r.deck.scopes[0].elements.sections[1].card)].place.line, 9);
}

TEST(Size, OfTenThousandInstancesAndManySectionsIsRead) {
    std::string text = "*PART, NAME=P\n*NODE, NSET=N\n1, 1., 0., 0.\n*END PART\n*ASSEMBLY\n";
    for (int i = 0; i <= 10000; ++i) {
        text += "*INSTANCE, NAME=I" + std::to_string(i) + ", PART=P\n" + std::to_string(i) + ".\n*END INSTANCE\n";
    }
    const auto r = Read(text + "*NSET, NSET=LAST\nI9999.1\n*END ASSEMBLY\n");
    EXPECT_EQ(r.mesh.nodeNumber.size(), 10000u);
    EXPECT_EQ(r.Nodes("LAST"), Ints{1});
    EXPECT_EQ(r.mesh.x.back(), 10000.0);
    ASSERT_FALSE(r.Findings().empty());
    EXPECT_EQ(r.Findings()[0].first, Code::tooMany);
    std::string sections;
    for (int i = 1; i <= 200000; ++i) {
        sections += "*NODE\n" + std::to_string(i) + ",1.\n";
    }
    EXPECT_EQ(Read(sections).mesh.nodeRuns.size(), 200000u);
}

} // namespace
