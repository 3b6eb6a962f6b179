// Small decks and the plain decks that must come of them, worked out by hand.
#include "tests/support/fakesystem.h"

#include "kivodeck/flat.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <string>
#include <vector>

namespace {

using flatten::Groups;
using flatten::Overlaps;
using Strings = std::vector<std::string>;

struct Outcome {
    bool made;
    std::string text;
    std::string map;
    Strings findings; // "line code: text"

    // The part of the plain deck that begins with this keyword line and ends before the next one.
    std::string Section(const std::string &keyword) const {
        const std::size_t at = text.find(keyword + "\n");
        return at == std::string::npos ? "none" : text.substr(at, text.find("\n*", at) + 1 - at);
    }
    bool Has(const std::string &finding) const {
        for (const std::string &told : findings) {
            if (told == finding) {
                return true;
            }
        }
        return false;
    }
    Strings BesideSplits() const {
        Strings others;
        std::copy_if(findings.begin(), findings.end(), std::back_inserter(others),
                     [](const std::string &told) { return told.find(" split: ") == std::string::npos; });
        return others;
    }
};

std::ostream &operator<<(std::ostream &out, const Outcome &outcome) {
    for (const std::string &finding : outcome.findings) {
        out << finding << "\n";
    }
    return out << outcome.text << outcome.map;
}

struct Asked {
    flatten::Options options{};
    bool map = false;
    bool allowLoss = false;
};

Outcome Flat(const std::string &deck, const Asked &asked = {}) {
    fake::Reset();
    fake::PutFile("deck.inp", deck);
    const kivodeck::FlatResult result =
        kivodeck::MakeFlat({"deck.inp", "flat.inp", asked.map ? "map.tsv" : "", asked.options, asked.allowLoss});
    Outcome outcome{result.made, fake::GetFile("flat.inp"), fake::GetFile("map.tsv"), {}};
    for (const account::Finding &finding : result.report.findings) {
        outcome.findings.push_back(std::to_string(finding.place.line) + " " + KindOf(finding.code).word + ": " +
                                   TextOf(finding));
    }
    return outcome;
}

Asked With(Groups groups) {
    Asked asked;
    asked.options.groups = groups;
    return asked;
}

Asked With(Overlaps overlaps) {
    Asked asked;
    asked.options.overlaps = overlaps;
    return asked;
}

const std::string kSquare = "*Node\n1, 0., 0.\n2, 1., 0.\n3, 1., 1.\n4, 0., 1.\n";
const std::string kPlate = kSquare + "*Element, type=CPS3, elset=Plate\n1, 1, 2, 3\n2, 1, 3, 4\n";
const std::string kPart = "*Part, name=P\n" + kPlate;
const std::string kTwice = "*End Part\n*Assembly, name=A\n*Instance, name=I, part=P\n*End Instance\n"
                           "*Instance, name=J, part=P\n5., 0., 0.\n*End Instance\n";
const std::string kTet = "*Node\n1, 0., 0., 0.\n2, 1., 0., 0.\n3, 0., 1., 0.\n4, 0., 0., 1.\n"
                         "*Element, type=C3D4, elset=Body\n1, 1, 2, 3, 4\n";
const std::string kCube = "*Node\n1, 0., 0., 0.\n2, 1., 0., 0.\n3, 1., 1., 0.\n4, 0., 1., 0.\n"
                          "5, 0., 0., 1.\n6, 1., 0., 1.\n7, 1., 1., 1.\n8, 0., 1., 1.\n"
                          "*Element, type=C3D8R, elset=Body\n1, 1, 2, 3, 4, 5, 6, 7, 8\n";

// What stays -----------------------------------------------------------------------------------------------

TEST(Flatten, ADeckThatLosesNothingStaysWhatItIs) {
    const Outcome flat =
        Flat(kPlate + "*Nset, nset=Left\n1, 4\n*Elset, elset=Lower\n1\n*Surface, name=Bottom\nLower, S1\n");
    EXPECT_TRUE(flat.made);
    EXPECT_TRUE(flat.findings.empty()) << flat;
    EXPECT_EQ(flat.text, "*Heading\n plain deck\n*Node\n1, 0, 0\n2, 1, 0\n3, 1, 1\n4, 0, 1\n"
                         "*Element, type=CPS3, elset=PLATE\n1, 1, 2, 3\n2, 1, 3, 4\n"
                         "*Nset, nset=LEFT\n1, 4\n*Elset, elset=LOWER\n1\n"
                         "*Surface, type=ELEMENT, name=BOTTOM\n1, S1\n");
}

TEST(Flatten, CoordinatesAreTheShortestDigitsOfTheSameDoubles) {
    const Outcome flat = Flat("*Node\n1, 0.1, -0.\n2, 1.5D+02, 1e-300\n3, 0.30000000000000004, 12345678901234567.\n"
                              "*Element, type=CPS3, elset=A\n1, 1, 2, 3\n");
    EXPECT_EQ(flat.Section("*Node"), "*Node\n1, 0.1, -0\n2, 150, 1e-300\n3, 0.30000000000000004, 12345678901234568\n");
    // A plane deck needs its z where it is a zero that no missing field would give.
    const Outcome below =
        Flat("*Node\n1, 0., 0., -0.\n2, 1., 0., -0.\n3, 0., 1., -0.\n*Element, type=CPS3, elset=A\n1, 1, 2, 3\n");
    EXPECT_EQ(below.Section("*Node"), "*Node\n1, 0, 0, -0\n2, 1, 0, -0\n3, 0, 1, -0\n");
}

TEST(Flatten, ScaleMultipliesCoordinates) {
    Asked asked;
    asked.options.scale = 1e6;
    const Outcome flat =
        Flat("*Node\n1, 0., 0.\n2, 1e-6, 0.\n3, 0., 1e-6\n*Element, type=CPS3, elset=A\n1, 1, 2, 3\n", asked);
    EXPECT_TRUE(flat.made);
    EXPECT_EQ(flat.Section("*Node"), "*Node\n1, 0, 0\n2, 1, 0\n3, 0, 1\n");
    EXPECT_TRUE(Flat("*Node\n1, 0., 0.\n2, 1e-6, 0.\n3, 0., 1e-6\n*Element, type=CPS3, elset=A\n1, 1, 2, 3\n")
                    .Has("6 too-small: 1 element is so small that the translator turns it inside out"));
    asked.options.scale = 1e308;
    const Outcome far =
        Flat("*Node\n1, 0., 0.\n2, 10., 0.\n3, 0., 1.\n*Element, type=CPS3, elset=A\n1, 1, 2, 3\n", asked);
    EXPECT_FALSE(far.made);
    EXPECT_NE(far.findings.at(0).find("scaled-too-far"), std::string::npos);
}

TEST(Flatten, ScaleMayTurnTheMeshRound) {
    Asked asked;
    asked.options.scale = -2;
    const Outcome flat = Flat(kTet, asked);
    EXPECT_TRUE(flat.made);
    EXPECT_EQ(flat.Section("*Node"), "*Node\n1, -0, -0, -0\n2, -2, -0, -0\n3, -0, -2, -0\n4, -0, -0, -2\n");
}

// Areas and volumes of such meshes are 0 or infinite as doubles.
TEST(Flatten, ScaleToTheEndsOfTheRange) {
    Asked asked;
    for (const std::string &deck : {kPlate, kTet, kCube}) {
        asked.options.scale = 1e200;
        const Outcome large = Flat(deck, asked);
        EXPECT_TRUE(large.made);
        EXPECT_EQ(large.BesideSplits().size(), 0u) << large;
        asked.options.scale = 1e-200;
        const Outcome small = Flat(deck, asked);
        EXPECT_FALSE(small.made);
        ASSERT_EQ(small.BesideSplits().size(), 1u) << small;
        EXPECT_NE(small.BesideSplits()[0].find(" too-small: "), std::string::npos) << small;
    }
}

// Instances, numbers and names -----------------------------------------------------------------------------

TEST(Flatten, InstancesAreNumberedBehindOneAnother) {
    const Outcome flat = Flat(kPart + kTwice + "*End Assembly\n", {{}, true, false});
    EXPECT_TRUE(flat.made);
    EXPECT_TRUE(flat.findings.empty()) << flat;
    EXPECT_EQ(flat.Section("*Node"),
              "*Node\n1, 0, 0\n2, 1, 0\n3, 1, 1\n4, 0, 1\n11, 5, 0\n12, 6, 0\n13, 6, 1\n14, 5, 1\n");
    EXPECT_EQ(flat.Section("*Element, type=CPS3, elset=I.PLATE"),
              "*Element, type=CPS3, elset=I.PLATE\n1, 1, 2, 3\n2, 1, 3, 4\n");
    EXPECT_NE(flat.text.find("*Element, type=CPS3, elset=J.PLATE\n11, 11, 12, 13\n12, 11, 13, 14\n"),
              std::string::npos);
    EXPECT_EQ(flat.map, "kind\tinstance\told\tnew\n"
                        "node\tJ\t1\t11\nnode\tJ\t2\t12\nnode\tJ\t3\t13\nnode\tJ\t4\t14\n"
                        "element\tJ\t1\t11\nelement\tJ\t2\t12\n"
                        "elset\tI\tPLATE\tI.PLATE\nelset\tJ\tPLATE\tJ.PLATE\n");
}

TEST(Flatten, LargeNumbersGetRoundOffsets) {
    std::string part = kPart;
    part.insert(part.find("*Element"), "1234, 9., 9.\n");
    const Outcome flat = Flat(part + kTwice + "*End Assembly\n");
    EXPECT_NE(flat.text.find("\n10001, 5, 0\n"), std::string::npos) << flat;
    EXPECT_NE(flat.text.find("\n10001, 10001, 10002, 10003\n"), std::string::npos);
}

TEST(Flatten, OffsetsAreAboveElementsToo) {
    std::string part = kPart;
    part.replace(part.find("1, 1, 2, 3\n2, 1, 3, 4\n"), std::string::npos, "101, 1, 2, 3\n102, 1, 3, 4\n");
    const Outcome flat = Flat(part + kTwice + "*End Assembly\n");
    EXPECT_EQ(flat.Section("*Element, type=CPS3, elset=J.PLATE"),
              "*Element, type=CPS3, elset=J.PLATE\n1101, 1001, 1002, 1003\n1102, 1001, 1003, 1004\n")
        << flat;
}

// Offsets that are multiples of a thousand million leave no room below it.
TEST(Flatten, OffsetsAreFinerWhereNumbersWouldRunOut) {
    std::string part = kPart;
    part.insert(part.find("*Element"), "400000000, 9., 9.\n");
    const Outcome flat = Flat(part + kTwice + "*End Assembly\n");
    EXPECT_TRUE(flat.made) << flat;
    EXPECT_NE(flat.text.find("\n400000001, 5, 0\n"), std::string::npos) << flat;
}

TEST(Flatten, OneInstanceAndItsAssemblyKeepTheirNumbers) {
    const Outcome flat = Flat(kPart + "*End Part\n*Assembly, name=A\n*Instance, name=I, part=P\n*End Instance\n"
                                      "*Node\n9, 5., 5.\n*Nset, nset=Ref\n9\n*End Assembly\n",
                              {{}, true, false});
    EXPECT_NE(flat.text.find("\n9, 5, 5\n"), std::string::npos) << flat;
    EXPECT_EQ(flat.map, "kind\tinstance\told\tnew\n");
}

TEST(Flatten, SetsOfInstancesHaveTheirName) {
    const std::string part = kPart + "*Nset, nset=Left\n1, 4\n*Nset, nset=C_Glue\n2\n";
    const std::string set = "*Nset, nset=Left, instance=J\n2\n*End Assembly\n";
    const Outcome flat = Flat(part + kTwice + set);
    EXPECT_EQ(flat.Section("*Nset, nset=I.LEFT"), "*Nset, nset=I.LEFT\n1, 4\n") << flat;
    EXPECT_EQ(flat.Section("*Nset, nset=C_J.GLUE"), "*Nset, nset=C_J.GLUE\n12\n");
    EXPECT_EQ(flat.Section("*Nset, nset=LEFT"), "*Nset, nset=LEFT\n"); // as large, and behind it
    EXPECT_EQ(flat.Section("*Nset, nset=C_I.GLUE"), "*Nset, nset=C_I.GLUE\n2\n");
    EXPECT_EQ(flat.Section("*Nset, nset=J.LEFT"), "*Nset, nset=J.LEFT\n11, 14\n");
}

TEST(Flatten, NamesThatTheTranslatorWouldChangeAreReplaced) {
    const Outcome flat =
        Flat(kPlate + "*Nset, nset=\"left side\"\n1\n*Nset, nset=Old_Instance\n4\n*Nset, nset=L\xc3\xa4ngs\n2\n"
                      "*Nset, nset=left_side\n3\n",
             {{}, true, false});
    EXPECT_TRUE(flat.made) << flat;
    EXPECT_EQ(flat.Section("*Nset, nset=LEFT_SIDE"), "*Nset, nset=LEFT_SIDE\n1\n");
    EXPECT_EQ(flat.Section("*Nset, nset=OLD_INST-ANCE"), "*Nset, nset=OLD_INST-ANCE\n4\n");
    EXPECT_EQ(flat.Section("*Nset, nset=L_NGS"), "*Nset, nset=L_NGS\n2\n");
    EXPECT_NE(flat.text.find("*Nset, nset=LEFT_SIDE~2\n3\n"), std::string::npos);
    EXPECT_NE(flat.map.find("nset\t\tleft side\tLEFT_SIDE\n"), std::string::npos);
    EXPECT_TRUE(flat.Has("11 name-replaced: the name OLD_INSTANCE is OLD_INST-ANCE in the plain deck"));
    const Outcome third =
        Flat(kPlate + "*Nset, nset=left_side~2\n1\n*Nset, nset=left_side\n2\n*Nset, nset=\"left side\"\n3\n");
    EXPECT_NE(third.text.find("nset=LEFT_SIDE~2\n1\n*Nset, nset=LEFT_SIDE\n2\n*Nset, nset=LEFT_SIDE~3\n3\n"),
              std::string::npos)
        << third;
}

TEST(Flatten, NamesMayBeLongNumbersOrHoldATab) {
    const std::string longName(300, 'A');
    const Outcome flat = Flat(kPlate + "*Nset, nset=" + longName + "1\n1\n*Nset, nset=" + longName +
                                  "2\n2\n*Nset, nset=\"a\tb\"\n3\n*Elset, elset=12\n1\n",
                              {{}, true, false});
    const std::string kept = longName.substr(0, 248);
    EXPECT_NE(flat.text.find("nset=" + kept + "\n1\n*Nset, nset=" + kept + "~2\n2\n"), std::string::npos) << flat;
    EXPECT_NE(flat.map.find("nset\t\ta b\tA_B\n"), std::string::npos) << flat;
    EXPECT_EQ(flat.Section("*Elset, elset=_12"), "*Elset, elset=_12\n1\n"); // on a row of a surface it is no element
}

TEST(Flatten, RowsOfSetsHaveSixteenMembers) {
    std::string nodes = "*Node\n";
    std::string numbers;
    for (int i = 5; i <= 21; ++i) {
        nodes += std::to_string(i) + ", 9., 9.\n";
        numbers += std::to_string(i) + (i < 20 ? ", " : "\n");
    }
    EXPECT_EQ(Flat(kPlate + nodes + "*Nset, nset=A, generate\n5, 21, 1\n").Section("*Nset, nset=A"),
              "*Nset, nset=A\n" + numbers);
}

// Groups ---------------------------------------------------------------------------------------------------

const std::string kTwoMaterials = kPlate +
                                  "*Elset, elset=Low\n1\n*Elset, elset=High\n1, 2\n"
                                  "*Solid Section, elset=High, material=A\n*Solid Section, elset=Low, material=B\n";

TEST(Groups, ComeFromElementLines) {
    const Outcome flat = Flat(kTwoMaterials);
    EXPECT_EQ(flat.Section("*Element, type=CPS3, elset=PLATE"),
              "*Element, type=CPS3, elset=PLATE\n1, 1, 2, 3\n2, 1, 3, 4\n");
    EXPECT_EQ(flat.findings, Strings{"14 divided-group: group PLATE has several sections: its elements "
                                     "may differ in material (flatten --groups=sections separates them)"});
}

TEST(Groups, ComeFromTheLastSectionWhenAskedFor) {
    const Outcome flat = Flat(kTwoMaterials, With(Groups::sections));
    EXPECT_EQ(flat.Section("*Element, type=CPS3, elset=LOW"), "*Element, type=CPS3, elset=LOW\n1, 1, 2, 3\n") << flat;
    EXPECT_EQ(flat.Section("*Element, type=CPS3, elset=HIGH"), "*Element, type=CPS3, elset=HIGH\n2, 1, 3, 4\n");
    EXPECT_EQ(flat.Section("*Elset, elset=PLATE"), "*Elset, elset=PLATE\n1, 2\n"); // still a set
}

TEST(Groups, ComeFromAllSetsOfAnElementWhenAskedFor) {
    const Outcome flat = Flat(kTwoMaterials, With(Groups::sets));
    EXPECT_EQ(flat.Section("*Element, type=CPS3, elset=LOW+HIGH"), "*Element, type=CPS3, elset=LOW+HIGH\n1, 1, 2, 3\n")
        << flat;
    EXPECT_EQ(flat.Section("*Element, type=CPS3, elset=HIGH"), "*Element, type=CPS3, elset=HIGH\n2, 1, 3, 4\n");
}

TEST(Groups, ThatSetsShareAreCutLooseAsAWhole) {
    const Outcome flat = Flat(kPlate + "*Elset, elset=C_A\n1, 2\n*Elset, elset=C_B\n1\n", With(Groups::sets));
    EXPECT_EQ(flat.Section("*Element, type=CPS3, elset=C_A+B"), "*Element, type=CPS3, elset=C_A+B\n1, 1, 2, 3\n")
        << flat;
    EXPECT_EQ(flat.Section("*Element, type=CPS3, elset=C_A"), "*Element, type=CPS3, elset=C_A\n2, 1, 3, 4\n");
}

TEST(Groups, WithoutElementsAreWrittenOnce) {
    const std::string spare = "*Element, type=CPS3, elset=SPARE\n";
    const Outcome flat = Flat(kPlate + spare + spare);
    ASSERT_NE(flat.text.find(spare), std::string::npos) << flat;
    EXPECT_EQ(flat.text.find(spare), flat.text.rfind(spare)) << flat;
}

TEST(Groups, WithoutAnythingAreAll) {
    const Outcome flat = Flat(kSquare + "*Element, type=CPS3\n1, 1, 2, 3\n2, 1, 3, 4\n");
    EXPECT_EQ(flat.Section("*Element, type=CPS3, elset=ALL"),
              "*Element, type=CPS3, elset=ALL\n1, 1, 2, 3\n2, 1, 3, 4\n");
}

// The elements are those of the plain deck, which are what the translator cuts.
TEST(Groups, WhoseNamesBeginWithCAreToldOf) {
    const Outcome flat = Flat(kSquare + "*Element, type=CPS4, elset=c_a\n1, 1, 2, 3, 4\n");
    EXPECT_EQ(flat.findings,
              (Strings{"6 split: 1 element of type CPS4 is split into 2 triangles",
                       "6 cut-loose: the 2 elements of group C_A get their own nodes: the name begins with C_"}));
}

TEST(Groups, OfAnInstanceAreNotCutLooseByItsName) {
    std::string deck =
        kPart + "*End Part\n*Assembly, name=A\n*Instance, name=C_1, part=P\n*End Instance\n*End Assembly\n";
    deck.replace(deck.find(", elset=Plate"), 13, "");
    const Outcome flat = Flat(deck);
    EXPECT_EQ(flat.Section("*Element, type=CPS3, elset=_C_1"),
              "*Element, type=CPS3, elset=_C_1\n1, 1, 2, 3\n2, 1, 3, 4\n")
        << flat;
}

TEST(Groups, OfBothOrdersAreTwo) {
    const Outcome flat =
        Flat(kPlate + "*Node\n5, 2., 0.\n6, 1.5, 0.\n7, 1.5, 0.5\n8, 1., 0.5\n*Element, type=CPS6, elset=Plate\n"
                      "3, 2, 5, 3, 6, 7, 8\n",
             {{}, true, false});
    EXPECT_TRUE(
        flat.Has("15 mixed-orders: group PLATE has elements of first and of second order: one kind is group PLATE~2"))
        << flat;
    EXPECT_EQ(flat.Section("*Element, type=CPS6, elset=PLATE~2"),
              "*Element, type=CPS6, elset=PLATE~2\n3, 2, 5, 3, 6, 7, 8\n");
    EXPECT_EQ(flat.Section("*Elset, elset=PLATE"), "*Elset, elset=PLATE\n1, 2, 3\n");
    EXPECT_EQ(flat.map, "kind\tinstance\told\tnew\ngroup\t\tPLATE\tPLATE~2\n");
}

// Overlaps -------------------------------------------------------------------------------------------------

const std::string kOverlap = kPlate + "*Nset, nset=All, generate\n1, 4, 1\n*Nset, nset=Low\n1, 2\n"
                                      "*Surface, name=Big\n1, S1\n2, S2\n*Surface, name=Small\n1, S1\n";

TEST(Overlaps, AreWonByTheSmallest) {
    const Outcome flat = Flat(kOverlap);
    EXPECT_EQ(flat.Section("*Nset, nset=ALL"), "*Nset, nset=ALL\n3, 4\n") << flat;
    EXPECT_EQ(flat.Section("*Nset, nset=LOW"), "*Nset, nset=LOW\n1, 2\n");
    EXPECT_EQ(flat.Section("*Surface, type=ELEMENT, name=BIG"), "*Surface, type=ELEMENT, name=BIG\n2, S2\n");
    EXPECT_TRUE(flat.Has("9 overlap-nodes: 2 nodes of set ALL belong to set LOW as well, which keeps them"));
    EXPECT_TRUE(flat.Has("13 overlap-faces: 1 face of surface BIG belongs to surface SMALL as well, which keeps it"));
}

TEST(Overlaps, AreWonByTheFirst) {
    const Outcome flat = Flat(kOverlap, With(Overlaps::first));
    EXPECT_EQ(flat.Section("*Nset, nset=ALL"), "*Nset, nset=ALL\n1, 2, 3, 4\n");
    EXPECT_EQ(flat.Section("*Nset, nset=LOW"), "*Nset, nset=LOW\n");
    EXPECT_TRUE(flat.Has("11 overlap-nodes: 2 nodes of set LOW belong to set ALL as well, which keeps them")) << flat;
}

TEST(Overlaps, AreDividedWithoutLoss) {
    const Outcome flat = Flat(kPlate + "*Nset, nset=A\n1, 2\n*Nset, nset=B\n2, 3\n", With(Overlaps::split));
    const std::string sets = "*Nset, nset=A\n1\n*Nset, nset=A+B\n2\n*Nset, nset=B\n3\n";
    EXPECT_NE(flat.text.find(sets), std::string::npos) << flat;
    const Outcome parts = Flat(kPart + "*Nset, nset=A\n1, 2\n*Nset, nset=B\n2\n" + kTwice + "*End Assembly\n",
                               {With(Overlaps::split).options, true, false});
    EXPECT_NE(parts.map.find("nset\tI\tA\tI.A\n"), std::string::npos) << parts;
    EXPECT_EQ(parts.map.find('+'), std::string::npos) << parts; // the deck has no set of that name
    const Outcome empty = Flat(kPlate + "*Nset, nset=None\n*Nset, nset=A\n1, 2\n", With(Overlaps::split));
    EXPECT_NE(empty.text.find("*Nset, nset=NONE\n*Nset, nset=A\n1, 2\n"), std::string::npos) << empty;
}

// Both have four triangles in the end; of faces as the deck has them B has three and A two.
TEST(Overlaps, AreWonByTheFewestFacesBeforeTheCut) {
    const Outcome flat = Flat(kCube + "*Node\n11, 5., 0., 0.\n12, 6., 0., 0.\n13, 5., 1., 0.\n14, 5., 0., 1.\n"
                                      "*Element, type=C3D4, elset=Body\n2, 11, 12, 13, 14\n"
                                      "*Surface, name=B\n1, S1\n2, S1\n2, S2\n*Surface, name=A\n1, S1\n1, S2\n");
    EXPECT_EQ(flat.Section("*Surface, type=ELEMENT, name=B"), "*Surface, type=ELEMENT, name=B\n2, S1\n2, S2\n") << flat;
}

// Skins and what is no cell --------------------------------------------------------------------------------

TEST(Skins, OfTetrahedraAreSurfaces) {
    const Outcome flat = Flat(kTet + "*Element, type=S3, elset=Base\n11, 3, 2, 1\n");
    EXPECT_EQ(flat.Section("*Surface, type=ELEMENT, name=BASE"), "*Surface, type=ELEMENT, name=BASE\n1, S1\n") << flat;
    EXPECT_EQ(flat.findings, Strings{"9 skin-surface: 1 element of group BASE lies on a face of a cell: it "
                                     "is surface BASE"});
}

TEST(Skins, ThatAreASurfaceAlreadyMakeNone) {
    const Outcome flat = Flat(kTet + "*Element, type=CPS3, elset=Base\n11, 3, 2, 1\n*Surface, name=Foot\n1, S1\n");
    EXPECT_NE(flat.text.find("*Surface, type=ELEMENT, name=FOOT\n1, S1\n"), std::string::npos) << flat;
    EXPECT_EQ(flat.text.find("BASE"), std::string::npos);
}

TEST(Skins, ComeBehindTheSurfacesOfTheDeck) {
    const Outcome flat = Flat(kTet + "*Element, type=S3, elset=Base\n11, 3, 2, 1\n*Surface, name=Foot\n1, S1\n1, S2\n",
                              With(Overlaps::first));
    EXPECT_EQ(flat.Section("*Surface, type=ELEMENT, name=FOOT"), "*Surface, type=ELEMENT, name=FOOT\n1, S1\n1, S2\n")
        << flat;
    EXPECT_EQ(flat.Section("*Surface, type=ELEMENT, name=BASE"), "*Surface, type=ELEMENT, name=BASE\n");
}

TEST(Skins, BetweenTwoCellsAreFacesOfTheFirst) {
    const Outcome flat =
        Flat(kTet + "2, 2, 3, 4, 5\n*Node\n5, 1., 1., 1.\n*Element, type=S3, elset=Base\n11, 2, 3, 4\n");
    EXPECT_EQ(flat.Section("*Surface, type=ELEMENT, name=BASE"), "*Surface, type=ELEMENT, name=BASE\n1, S3\n") << flat;
}

TEST(Skins, GiveTheirSidesToSurfaces) {
    const Outcome flat = Flat(kTet + "*Element, type=S3, elset=Base\n11, 1, 4, 2\n*Surface, name=Side\nBase, SPOS\n");
    EXPECT_NE(flat.text.find("*Surface, type=ELEMENT, name=SIDE\n1, S2\n"), std::string::npos) << flat;
}

TEST(Skins, OnNobodysFaceAreAnError) {
    const Outcome flat = Flat(kTet + "*Node\n5, 9., 9., 9.\n*Element, type=S3, elset=Base\n11, 1, 2, 5\n");
    EXPECT_FALSE(flat.made);
    EXPECT_EQ(flat.text, "");
    EXPECT_TRUE(flat.Has("11 stray-triangles: 1 triangle or quadrilateral lies on no face of a solid")) << flat;
}

TEST(Skins, OnNobodysFaceAreToldOfEachSection) {
    const Outcome flat = Flat(kTet + "*Node\n5, 9., 9., 9.\n*Element, type=S3, elset=Base\n11, 1, 2, 5\n"
                                     "*Element, type=S3, elset=Side\n12, 1, 3, 5\n13, 2, 3, 5\n");
    ASSERT_EQ(flat.findings.size(), 2u) << flat;
    EXPECT_EQ(flat.findings[0].substr(0, 21), "11 stray-triangles: 1") << flat;
    EXPECT_EQ(flat.findings[1].substr(0, 21), "13 stray-triangles: 2") << flat;
}

TEST(Skins, OfAPlaneMeshAreLines) {
    const Outcome flat = Flat(kPlate + "*Element, type=T2D2, elset=Bottom\n11, 2, 1\n");
    EXPECT_NE(flat.text.find("*Surface, type=ELEMENT, name=BOTTOM\n1, S1\n"), std::string::npos) << flat;
}

// The middle node stands between the ends or behind them.
TEST(Skins, OfSecondOrderAreLinesOfThreeNodes) {
    const std::string nodes = "*Node\n1, 0., 0.\n2, 2., 0.\n3, 0., 2.\n4, 1., 0.\n5, 1., 1.\n6, 0., 1.\n";
    const Outcome flat = Flat(nodes + "*Element, type=CPS6, elset=A\n1, 1, 2, 3, 4, 5, 6\n"
                                      "*Element, type=T2D3, elset=Low\n11, 1, 4, 2\n"
                                      "*Element, type=B22, elset=Slope\n12, 3, 2, 5\n");
    EXPECT_TRUE(flat.made) << flat;
    EXPECT_NE(flat.text.find("*Surface, type=ELEMENT, name=LOW\n1, S1\n*Surface, type=ELEMENT, name=SLOPE\n1, S2\n"),
              std::string::npos)
        << flat;
    // Beside two edges of first order in a row it lies on neither.
    const Outcome stray = Flat(nodes + "*Element, type=CPS3, elset=A\n1, 1, 4, 6\n2, 4, 2, 5\n3, 4, 5, 6\n"
                                       "*Element, type=T2D3, elset=Low\n11, 1, 4, 2\n");
    EXPECT_FALSE(stray.made) << stray;
    EXPECT_EQ(stray.findings.at(0).substr(0, 18), "13 cannot-be-kept:") << stray;
}

TEST(Skins, OfHexahedraAreCutLikeThem) {
    const Outcome flat = Flat(kCube + "*Element, type=S4R, elset=Base\n11, 4, 3, 2, 1\n*Surface, name=Foot\n1, S1\n");
    EXPECT_TRUE(flat.made) << flat;
    EXPECT_EQ(flat.text.find("name=BASE"), std::string::npos); // the same two triangles
}

TEST(NoCells, AreToldByWhatTheyCarry) {
    EXPECT_TRUE(Flat(kTet + "*Element, type=B31, elset=Edge\n11, 1, 2\n")
                    .Has("9 lines-on-edges: 1 element of type B31 lies on an edge of a cell: it is passed over"));
    const std::string curved = kTet + "*Node\n5, 0.5, 0., 0.\n*Element, type=B32, elset=Edge\n";
    for (const std::string &deck :
         {curved + "11, 1, 5, 2\n", curved + "11, 1, 2, 5\n"}) { // the middle one between, last
        EXPECT_TRUE(
            Flat(deck).Has("11 lines-on-edges: 1 element of type B32 lies on an edge of a cell: it is passed over"));
    }
    EXPECT_TRUE(Flat(kTet + "*Element, type=MASS, elset=Edge\n11, 1\n")
                    .Has("8 no-cell: 1 element of type MASS is ignored: it has no shape"));
    const Outcome beam = Flat(kTet + "*Node\n5, 9., 9., 9.\n*Element, type=B31, elset=Edge\n11, 1, 5\n");
    EXPECT_FALSE(beam.made);
    EXPECT_NE(beam.findings.at(0).find("cannot-be-kept"), std::string::npos) << beam;
}

TEST(NoCells, OutOfThePlaneAreAnError) {
    const Outcome flat = Flat("*Node\n1, 0., 0., 0.\n2, 1., 0., 0.\n3, 1., 1., 1.\n4, 0., 1., 0.\n"
                              "*Element, type=S3, elset=A\n1, 1, 2, 4\n2, 2, 3, 4\n");
    EXPECT_FALSE(flat.made);
    EXPECT_EQ(flat.findings.size(), 1u) << flat;
    EXPECT_EQ(flat.findings.at(0).substr(0, 14), "8 out-of-plane") << flat;
    const Outcome small = Flat("*Node\n1, 0., 0., 0.\n2, 1e-3, 0., 0.\n3, 1e-3, 1e-3, 1e-10\n"
                               "*Element, type=S3, elset=A\n1, 1, 2, 3\n"); // it lies out by its own measure
    EXPECT_EQ(small.findings.at(0).substr(0, 14), "6 out-of-plane") << small;
}

TEST(NoCells, AloneMakeNoPlainDeck) {
    const Outcome flat = Flat("*Node\n1, 0., 0., 0.\n*Element, type=MASS, elset=M\n1, 1\n");
    EXPECT_FALSE(flat.made);
    EXPECT_EQ(flat.text, "");
    EXPECT_EQ(flat.findings.at(0).substr(0, 13), "0 empty-deck:") << flat;
}

// Splitting ------------------------------------------------------------------------------------------------

TEST(Splitting, CutsSquaresThroughTheSmallestNumber) {
    const Outcome flat =
        Flat(kSquare + "*Element, type=CPE4R, elset=Plate\n1, 2, 3, 4, 1\n*Surface, name=Right\n1, S1\n");
    EXPECT_EQ(flat.Section("*Element, type=CPE3, elset=PLATE"),
              "*Element, type=CPE3, elset=PLATE\n1, 1, 2, 3\n2, 1, 3, 4\n");
    EXPECT_NE(flat.text.find("name=RIGHT\n1, S2\n"), std::string::npos) << flat;
    EXPECT_EQ(flat.findings, Strings{"6 split: 1 element of type CPE4R is split into 2 triangles"});
}

// 1 is the smallest; opposite to it is 7. Faces 5876 and 3784 are cut through 5 and 3, so 5-7 ends in 7.
TEST(Splitting, CutsACubeAndItsFace) {
    const Outcome flat = Flat(kCube + "*Surface, name=Top\n1, S2\n");
    EXPECT_EQ(flat.Section("*Element, type=C3D4, elset=BODY"),
              "*Element, type=C3D4, elset=BODY\n"
              "1, 5, 8, 7, 1\n2, 5, 7, 6, 1\n3, 2, 6, 7, 1\n4, 2, 7, 3, 1\n5, 3, 7, 8, 1\n6, 3, 8, 4, 1\n")
        << flat;
    EXPECT_NE(flat.text.find("name=TOP\n1, S1\n2, S1\n"), std::string::npos);
}

TEST(Splitting, PutsANodeIntoTheMiddleOfASecondOrderDiagonal) {
    const Outcome flat =
        Flat("*Node\n1, 0., 0.\n2, 2., 0.\n3, 2., 2.\n4, 0., 2.\n5, 1., -0.5\n6, 2., 1.\n7, 1., 2.\n8, 0., 1.\n"
             "*Element, type=CPS8, elset=A\n1, 1, 2, 3, 4, 5, 6, 7, 8\n*Nset, nset=All, generate\n1, 8, 1\n");
    // -1/4 of the corners' sum (4, 4) and 1/2 of the mid-sides' (4, 3.5): (1, 0.75)
    EXPECT_NE(flat.text.find("\n9, 1, 0.75\n"), std::string::npos) << flat;
    EXPECT_EQ(flat.Section("*Element, type=CPS6, elset=A"),
              "*Element, type=CPS6, elset=A\n1, 1, 2, 3, 5, 6, 9\n2, 1, 3, 4, 9, 7, 8\n");
    EXPECT_NE(flat.text.find("nset=ALL\n1, 2, 3, 4, 5, 6, 7, 8, 9\n"), std::string::npos);
}

// Six diagonals of faces and one through the body, numbered by their ends: 1-3, 1-6, 1-7, 1-8, 2-7, 3-8, 5-7. One edge
// is bent: the middle node of 1-2 lies at y = -0.5, which moves the middles of both its faces by half and that of the
// body by a quarter as much.
TEST(Splitting, PutsNodesIntoTheMiddleOfFacesAndOfTheBody) {
    std::string deck = kCube.substr(0, kCube.find("*Element"));
    deck += "9, 0.5, -0.5, 0.\n10, 1., 0.5, 0.\n11, 0.5, 1., 0.\n12, 0., 0.5, 0.\n13, 0.5, 0., 1.\n14, 1., 0.5, 1.\n"
            "15, 0.5, 1., 1.\n16, 0., 0.5, 1.\n17, 0., 0., 0.5\n18, 1., 0., 0.5\n19, 1., 1., 0.5\n20, 0., 1., 0.5\n"
            "*Element, type=C3D20R, elset=Body\n1, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15,\n16, 17, 18, 19, "
            "20\n*Nset, nset=Corners\n1, 2, 3, 4\n*Nset, nset=Top\n5, 6, 7, 8, 13, 14, 15, 16\n";
    const Outcome flat = Flat(deck);
    EXPECT_TRUE(flat.made) << flat;
    EXPECT_NE(flat.text.find("\n21, 0.5, 0.25, 0\n22, 0.5, -0.25, 0.5\n23, 0.5, 0.375, 0.5\n24, 0, 0.5, 0.5\n"
                             "25, 1, 0.5, 0.5\n26, 0.5, 1, 0.5\n27, 0.5, 0.5, 1\n*Element, type=C3D10, elset=BODY\n"),
              std::string::npos)
        << flat;
    // The first piece is 5, 8, 7, 1: edges 5-8, 8-7, 7-5, 5-1, 8-1, 7-1.
    EXPECT_NE(flat.text.find("\n1, 5, 8, 7, 1, 16, 15, 27, 17, 24, 23\n"), std::string::npos) << flat;
    // A new node is in a set that holds all eight nodes of its face.
    EXPECT_NE(flat.text.find("nset=CORNERS\n1, 2, 3, 4\n*Nset, nset=TOP\n5, 6, 7, 8, 13, 14, 15, 16, 27\n"),
              std::string::npos)
        << flat;
}

// Corners 4 and 8 are 3 and 7. Of the wedge left the top 5-7-6 and the side 2-6-7-3, cut through 2, see node 1. New
// middles lie on 1-6, 1-7 and 2-7; the middle node of 1-5 is out by 0.5, which moves those of its two faces by half.
TEST(Splitting, OfASecondOrderHexahedronThatIsAWedge) {
    const Outcome flat =
        Flat("*Node\n1, 0., 0., 0.\n2, 2., 0., 0.\n3, 0., 2., 0.\n5, 0., 0., 2.\n6, 2., 0., 2.\n7, 0., 2., 2.\n"
             "9, 1., 0., 0.\n10, 1., 1., 0.\n12, 0., 1., 0.\n13, 1., 0., 2.\n14, 1., 1., 2.\n16, 0., 1., 2.\n"
             "17, 0., -0.5, 1.\n18, 2., 0., 1.\n19, 0., 2., 1.\n*Element, type=C3D20, elset=Body\n"
             "1, 1, 2, 3, 3, 5, 6, 7, 7, 9, 10, 3, 12, 13, 14, 7,\n16, 17, 18, 19, 19\n"
             "*Surface, name=Slope\n1, S4\n");
    EXPECT_TRUE(flat.made) << flat;
    EXPECT_EQ(flat.findings, Strings{"17 split: 1 element of type C3D20 is split into 3 tetrahedra"});
    EXPECT_NE(flat.text.find("\n20, 1, -0.25, 1\n21, 0, 0.75, 1\n22, 1, 1, 1\n*Element"), std::string::npos) << flat;
    EXPECT_EQ(flat.Section("*Element, type=C3D10, elset=BODY"), "*Element, type=C3D10, elset=BODY\n"
                                                                "1, 5, 7, 6, 1, 16, 14, 13, 17, 21, 20\n"
                                                                "2, 2, 6, 7, 1, 18, 14, 22, 9, 20, 21\n"
                                                                "3, 2, 7, 3, 1, 22, 19, 10, 9, 21, 12\n");
    EXPECT_NE(flat.text.find("name=SLOPE\n2, S1\n3, S1\n"), std::string::npos) << flat;
}

// As at the tip of a crack: the fourth edge is one point.
TEST(Splitting, OfASecondOrderSquareThatIsATriangle) {
    const Outcome flat = Flat("*Node\n1, 0., 0.\n2, 2., 0.\n3, 0., 2.\n5, 0.5, 0.\n6, 1., 1.\n7, 0., 0.5\n"
                              "*Element, type=CPS8, elset=A\n1, 1, 2, 3, 1, 5, 6, 7, 1\n*Surface, name=Left\n1, S3\n");
    EXPECT_EQ(flat.findings, Strings{"8 split: 1 element of type CPS8 is split into 1 triangle"});
    EXPECT_NE(flat.text.find("\n7, 0, 0.5\n*Element, type=CPS6, elset=A\n1, 1, 2, 3, 5, 6, 7\n"), std::string::npos)
        << flat;
    EXPECT_NE(flat.text.find("name=LEFT\n1, S3\n"), std::string::npos);
}

// Two wedges share the side 2-3-6-5: both are cut from 2 to 6, and only second order has a node there.
TEST(Splitting, OfBothOrdersSideBySideGivesTheSameTriangles) {
    const Outcome flat =
        Flat("*Node\n1, 0., 0., 0.\n2, 1., 0., 0.\n3, 0., 1., 0.\n4, 0., 0., 1.\n5, 1., 0., 1.\n6, 0., 1., 1.\n"
             "7, 1., 1., 0.\n8, 1., 1., 1.\n9, 1., 0.5, 0.\n10, 0.5, 1., 0.\n11, 0.5, 0.5, 0.\n12, 1., 0.5, 1.\n"
             "13, 0.5, 1., 1.\n14, 0.5, 0.5, 1.\n15, 1., 0., 0.5\n16, 1., 1., 0.5\n17, 0., 1., 0.5\n"
             "*Element, type=C3D6, elset=First\n1, 1, 2, 3, 4, 5, 6\n*Element, type=C3D15, elset=Second\n"
             "2, 2, 7, 3, 5, 8, 6, 9, 10, 11, 12, 13, 14, 15, 16, 17\n"
             "*Surface, name=A\n1, S4\n*Surface, name=B\n2, S5\n");
    EXPECT_TRUE(flat.made) << flat;
    EXPECT_EQ(flat.findings, (Strings{"19 split: 1 element of type C3D6 is split into 3 tetrahedra",
                                      "21 split: 1 element of type C3D15 is split into 3 tetrahedra"}));
    EXPECT_NE(flat.text.find("\n18, 0.5, 0.5, 0.5\n19, 1, 0.5, 0.5\n20, 0.5, 1, 0.5\n*Element"), std::string::npos);
    EXPECT_EQ(flat.Section("*Element, type=C3D4, elset=FIRST"),
              "*Element, type=C3D4, elset=FIRST\n1, 4, 6, 5, 1\n3, 2, 5, 6, 1\n4, 2, 6, 3, 1\n");
    EXPECT_EQ(flat.Section("*Element, type=C3D10, elset=SECOND"), "*Element, type=C3D10, elset=SECOND\n"
                                                                  "2, 5, 6, 8, 2, 14, 13, 12, 15, 18, 19\n"
                                                                  "5, 3, 7, 8, 2, 10, 16, 20, 11, 9, 19\n"
                                                                  "6, 3, 8, 6, 2, 20, 13, 17, 11, 19, 18\n");
    EXPECT_NE(flat.text.find("name=A\n3, S1\n4, S1\n"), std::string::npos) << flat; // 2-5-6 and 2-6-3
    EXPECT_NE(flat.text.find("name=B\n2, S2\n6, S4\n"), std::string::npos) << flat; // 5-6-2 and 3-6-2
}

// A tetrahedron of the deck has the diagonal 2-6 for an edge: its middle node is the wedge's as well.
TEST(Splitting, TakesTheMiddleNodeThatANeighbourHas) {
    const Outcome flat =
        Flat("*Node\n2, 1., 0., 0.\n3, 0., 1., 0.\n5, 1., 0., 1.\n6, 0., 1., 1.\n"
             "7, 1., 1., 0.\n8, 1., 1., 1.\n9, 1., 0.5, 0.\n10, 0.5, 1., 0.\n11, 0.5, 0.5, 0.\n12, 1., 0.5, 1.\n"
             "13, 0.5, 1., 1.\n14, 0.5, 0.5, 1.\n15, 1., 0., 0.5\n16, 1., 1., 0.5\n17, 0., 1., 0.5\n"
             "21, 0., 0., 0.\n22, 0.5, 0.5, 0.5\n23, 0.5, 0., 0.\n24, 0., 0.5, 0.\n25, 0., 0.5, 0.5\n"
             "*Element, type=C3D15, elset=Second\n2, 2, 7, 3, 5, 8, 6, 9, 10, 11, 12, 13, 14, 15, 16, 17\n"
             "*Element, type=C3D10, elset=Second\n3, 2, 3, 21, 6, 11, 24, 23, 22, 17, 25\n");
    EXPECT_TRUE(flat.made) << flat;
    // New are the middles of 2-8 and 3-8 only.
    EXPECT_NE(flat.text.find("\n25, 0, 0.5, 0.5\n26, 1, 0.5, 0.5\n27, 0.5, 1, 0.5\n*Element"), std::string::npos)
        << flat;
    EXPECT_NE(flat.text.find("\n2, 5, 6, 8, 2, 14, 13, 12, 15, 22, 26\n"), std::string::npos) << flat;
}

TEST(Splitting, FailsOnBentElementsAndCountsWhatAnotherDiagonalSaves) {
    // Node 3 is pushed in below the line 2-4: cut from 1 to 3 both halves are right, from 2 to 4 they are not.
    const Outcome flat =
        Flat("*Node\n1, 0., 0.\n2, 1., 0.\n13, 0.2, 0.2\n4, 0., 1.\n3, 5., 5.\n"
             "*Element, type=CPS4, elset=A\n7, 13, 4, 1, 2\n*Element, type=CPS4, elset=B\n8, 4, 13, 2, 3\n");
    EXPECT_TRUE(flat.made) << flat; // 1 is the smallest of element 7, 2 of element 8 with 4
    const Outcome bent =
        Flat("*Node\n11, 0., 0.\n2, 1., 0.\n13, 0.2, 0.2\n4, 0., 1.\n*Element, type=CPS4, elset=A\n7, 11, 2, 13, 4\n");
    EXPECT_FALSE(bent.made);
    EXPECT_EQ(bent.findings,
              (Strings{"7 split-fails: element 7 cannot be split: its diagonals make pieces of both signs; "
                       "another diagonal would do",
                       "7 split-saved: elements that cannot be split: 1; another diagonal would save 1 of them"}));
}

TEST(Splitting, TurnsWhatRunsTheWrongWayRound) {
    const Outcome flat = Flat(kSquare + "*Element, type=CPS4, elset=A\n1, 1, 4, 3, 2\n");
    EXPECT_NE(flat.text.find("elset=A\n1, 4, 1, 3\n"), std::string::npos) << flat;
    EXPECT_EQ(flat.findings, Strings{"6 split: 1 element of type CPS4 is split into 2 triangles"});
}

TEST(Splitting, IsRefusedWhenAskedFor) {
    Asked asked;
    asked.options.split = false;
    const Outcome flat = Flat(kCube, asked);
    EXPECT_FALSE(flat.made);
    EXPECT_TRUE(flat.Has("10 must-be-split: 1 element is lost: type C3D8R is neither triangle nor tetrahedron"))
        << flat;
}

// Errors ---------------------------------------------------------------------------------------------------

TEST(Errors, LetNothingBeWritten) {
    const std::string deck = kPlate + "*Nsett, nset=Left\n1\n";
    const Outcome flat = Flat(deck);
    EXPECT_FALSE(flat.made);
    EXPECT_EQ(flat.text, "");
    const Outcome lossy = Flat(deck, {{}, false, true});
    EXPECT_TRUE(lossy.made);
    EXPECT_NE(lossy.text.find("elset=PLATE\n1, 1, 2, 3\n"), std::string::npos);
}

TEST(Errors, OfTheDiskAreTold) {
    fake::Reset();
    fake::PutFile("deck.inp", kPlate);
    fake::FailWritesAfter(40);
    const kivodeck::FlatResult result = kivodeck::MakeFlat({"deck.inp", "flat.inp", "", {}, false});
    EXPECT_FALSE(result.made);
    EXPECT_EQ(result.failure.substr(0, 29), "flat.inp cannot be written: N") << result.failure;
    EXPECT_GT(fake::WriteFaults(), 0);
    EXPECT_EQ(fake::FilesOpen(), 0);
}

TEST(Errors, OfDefinitionsThatComeTwiceAreWarnings) {
    const Outcome flat = Flat(
        kPlate + "*Element, type=CPS3, elset=Plate\n2, 1, 2, 4\n*Surface, name=A\n1, S1\n*Surface, name=A\n2, S2\n");
    EXPECT_TRUE(flat.made) << flat;
    EXPECT_TRUE(flat.Has("10 element-redefined: element 2 is defined again elsewhere: the last definition counts"));
    EXPECT_NE(flat.text.find("name=A\n1, S1\n2, S2\n"), std::string::npos);
}

} // namespace
