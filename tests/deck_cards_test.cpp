// Lines, keywords, parameters, fields and includes of a deck.
#include "decks.h"

#include "deck/keywords.h"
#include "deck/text.h"

namespace {

using deck::Code;
using decks::Found;
using decks::Ints;
using decks::NodesTo;
using decks::Read;

// Lines ------------------------------------------------------------------------------------------------------

TEST(Lines, ACommentStandsInTheFirstTwoColumnsOnly) {
    const auto r = Read("** *NODE\n*NODE\n** 9, 0, 0, 0\n1, 0., 0., 0.\n*NSET, NSET=A**B\n1\n");
    EXPECT_EQ(r.mesh.nodeNumber, Ints{1});
    EXPECT_EQ(r.Nodes("A**B"), Ints{1});
    EXPECT_EQ(r.Remarks(), (Found{{Code::commentInside, 5}}));
    EXPECT_EQ(r.Findings(), Found{});
}

TEST(Lines, ACommentBehindAKeywordIsPartOfIt) {
    const auto r = Read("*NODE ** all of them\n1, 0., 0., 0.\n*NODE\n2, 0., 0., 0.\n");
    EXPECT_EQ(r.mesh.nodeNumber, Ints{2});
    EXPECT_EQ(r.Findings(), (Found{{Code::misspelt, 1}}));
}

TEST(Lines, BlanksTabsReturnsAndNulBytesDoNotCount) {
    std::string text = "\t *Node , nset = A b \r\n\r\n \t1 ,\t2. , 3.,4. \r\n  \n";
    text += std::string("2,1.,\0 2.,3.\n", 13);
    const auto r = Read(text);
    EXPECT_EQ(r.Nodes("AB"), (Ints{1, 2}));
    EXPECT_EQ(r.At(1), (std::vector<double>{2, 3, 4}));
    EXPECT_EQ(r.At(2), (std::vector<double>{1, 2, 3}));
    EXPECT_EQ(r.Findings(), Found{});
}

TEST(Lines, AByteOrderMarkIsPassedOver) {
    EXPECT_EQ(Read("\xEF\xBB\xBF*NODE\n1, 0., 0., 0.\n").mesh.nodeNumber, Ints{1});
}

TEST(Lines, TheLastNeedsNoEnd) {
    EXPECT_EQ(Read("*NODE\n1, 0., 0., 7").At(1), (std::vector<double>{0, 0, 7}));
}

TEST(Lines, ThoseCutByABlockOfTheFileAreWhole) {
    const std::string text = "*NODE, NSET=ALL\n" + std::string(300000, ' ') + "1, 0., 0.," + std::string(300000, ' ') +
                             "5.\n2, 0., 0., 0.\n";
    const auto r = Read(text);
    EXPECT_EQ(r.At(1), (std::vector<double>{0, 0, 5}));
    EXPECT_EQ(r.Nodes("ALL"), (Ints{1, 2}));
}

TEST(Lines, OneOfTenMegabytesIsReadAsAnyOther) {
    std::string row = "1";
    while (row.size() < 10000000) {
        row += ",1";
    }
    const auto r = Read(NodesTo(1) + "*NSET, NSET=A\n" + row);
    EXPECT_EQ(r.Nodes("A"), Ints{1});
    EXPECT_EQ(Read(std::string(10000000, 'x')).Findings(), (Found{{Code::rowBeforeKeyword, 1}, {Code::emptyDeck, 0}}));
}

TEST(Lines, ARowWithoutKeywordIsSaidOnce) {
    EXPECT_EQ(Read("1, 2\n3, 4\n" + NodesTo(1)).Findings(), (Found{{Code::rowBeforeKeyword, 1}}));
}

TEST(Lines, EveryPlaceIsLineAndColumn) {
    const auto r = Read("*NODE\n1, 0., 0., 0.\n  2 , 0., zero, 0.\n");
    ASSERT_EQ(r.deck.findings.size(), 1u);
    EXPECT_EQ(r.deck.findings[0].code, Code::badNumber);
    EXPECT_EQ(r.deck.findings[0].words, std::vector<std::string>{"zero"});
    EXPECT_EQ(r.deck.findings[0].place.file, 0);
    EXPECT_EQ(r.deck.findings[0].place.line, 3);
    EXPECT_EQ(r.deck.findings[0].place.column, 11);
}

TEST(Lines, AKeywordSaidTenThousandTimesIsCounted) {
    std::string text = NodesTo(1);
    for (int i = 0; i < 10500; ++i) {
        text += "*NODD\n";
    }
    const auto r = Read(text);
    ASSERT_EQ(r.deck.findings.size(), 10000u);
    EXPECT_EQ(r.deck.findings.back().count, 501);
}

// Keywords and parameters ------------------------------------------------------------------------------------

TEST(Keywords, AreCutShortFromFourLettersAndMisspeltBelow) {
    struct {
        const char *written;
        const char *meant;
        deck::Spelling spelling;
    } const rows[] = {
        {"Node", "NODE", deck::Spelling::full},
        {"ELEM", "ELEMENT", deck::Spelling::abbreviated},
        {"surf", "SURFACE", deck::Spelling::abbreviated},
        {"INCL", "INCLUDE", deck::Spelling::abbreviated},
        {"INST", "INSTANCE", deck::Spelling::abbreviated},
        {"ASSEM", "ASSEMBLY", deck::Spelling::abbreviated},
        {"END PART", "END PART", deck::Spelling::full},
        {"ENDPART", "END PART", deck::Spelling::full},
        {"END INST", "END INSTANCE", deck::Spelling::abbreviated},
        {"SOLID SECT", "SOLID SECTION", deck::Spelling::abbreviated},
        {"Shell  Section", "SHELL SECTION", deck::Spelling::full},
        {"ELE", "ELEMENT", deck::Spelling::misspelt},
        {"NSETT", "NSET", deck::Spelling::misspelt},
        {"ELMENT", "ELEMENT", deck::Spelling::misspelt},
        {"SURAFCE", "SURFACE", deck::Spelling::misspelt},
        {"NDOE", "NODE", deck::Spelling::misspelt},
        {"SOLID SECTOIN", "SOLID SECTION", deck::Spelling::misspelt},
        {"END", "END", deck::Spelling::unknown},
        {"NODE OUTPUT", "NODE OUTPUT", deck::Spelling::unknown},
        {"ELEMENT OUTPUT", "ELEMENT OUTPUT", deck::Spelling::unknown},
        {"SURFACE INTERACTION", "SURFACE INTERACTION", deck::Spelling::unknown},
        {"STEP", "STEP", deck::Spelling::unknown},
        {"ELASTIC", "ELASTIC", deck::Spelling::unknown},
        {"", "", deck::Spelling::unknown},
    };
    for (const auto &row : rows) {
        const deck::KeywordMeant meant = deck::FindKeyword(row.written);
        EXPECT_EQ(meant.name, row.meant) << row.written;
        EXPECT_EQ(meant.spelling, row.spelling) << row.written;
    }
}

TEST(Keywords, OtherOnesAreCounted) {
    const auto r = Read(NodesTo(1) + "*Material, name=A\n*Elastic\n1., 0.3\n*material, name=B\n");
    EXPECT_EQ(r.deck.otherKeywords, (std::map<std::string, long long>{{"ELASTIC", 1}, {"MATERIAL", 2}}));
    EXPECT_EQ(r.Findings(), Found{});
}

TEST(Keywords, AMisspeltOneLosesItsRows) {
    const auto r = Read(NodesTo(2) + "*NSETT, NSET=A\n1, 2\n*NSET, NSET=A\n2\n");
    EXPECT_EQ(r.Nodes("A"), Ints{2});
    EXPECT_EQ(r.Findings(), (Found{{Code::misspelt, 4}}));
    EXPECT_EQ(r.deck.findings[0].words, (std::vector<std::string>{"NSETT", "NSET"}));
    EXPECT_TRUE(r.deck.otherKeywords.empty());
}

TEST(Parameters, AreCutShortFromThreeLettersAndMisspeltBelow) {
    const auto r =
        Read(NodesTo(4) + "*NSET, NSET=A, GEN\n1, 4, 1\n*NSET, NSET=B, GE\n1, 3, 1\n*NSET, NSET=C, INTRENAL\n2\n"
                          "*NSET, NSET=D, COLOUR=RED\n2\n");
    EXPECT_EQ(r.Nodes("A"), (Ints{1, 2, 3, 4}));
    EXPECT_EQ(r.Nodes("B"), (Ints{1, 2, 3}));
    EXPECT_EQ(r.Remarks(), (Found{{Code::abbreviatedParameter, 6}}));
    EXPECT_EQ(r.Findings(),
              (Found{{Code::misspeltParameter, 8}, {Code::misspeltParameter, 10}, {Code::unknownParameter, 12}}));
}

TEST(Parameters, GoOnBehindACommaWhereTheNextLineLooksLikeThem) {
    const auto r = Read("*NODE,\n1, 0., 0., 0.\n*NODE, NSET=N,\nSYSTEM=R\n2, 0., 0., 0.\n*NSET,\n** here\nNSET=A,\n"
                        "GENERATE\n1, 2, 1\n*NSET, NSET=B,\nA\n");
    EXPECT_EQ(r.mesh.nodeNumber, (Ints{1, 2}));
    EXPECT_EQ(r.Nodes("N"), Ints{2});
    EXPECT_EQ(r.Nodes("A"), (Ints{1, 2}));
    EXPECT_EQ(r.Nodes("B"), (Ints{1, 2}));
    EXPECT_EQ(r.Remarks(), (Found{{Code::keywordEndComma, 1}, {Code::keywordEndComma, 11}}));
    EXPECT_EQ(r.Findings(), Found{});
}

TEST(Parameters, AreMissed) {
    const auto r = Read("*NSET\n1\n*ELSET, ELSET=\n1\n*SURFACE\n1, S1\n*ELEMENT\n1, 1\n*INCLUDE\n" + NodesTo(1));
    EXPECT_EQ(r.Findings(), (Found{{Code::missingParameter, 1},
                                   {Code::missingParameter, 3},
                                   {Code::missingParameter, 5},
                                   {Code::missingParameter, 7},
                                   {Code::missingParameter, 9}}));
}

TEST(Names, InQuotesKeepBlanksCaseAndCommas) {
    const auto r = Read(NodesTo(2) + "*NSET, NSET=\"a b, c\"\n1\n*NSET, NSET=ab\n2\n*NSET, NSET=C\n\"a b, c\", ab\n");
    EXPECT_EQ(r.Nodes("a b, c"), Ints{1});
    EXPECT_EQ(r.Nodes("AB"), Ints{2});
    EXPECT_EQ(r.Nodes("C"), (Ints{1, 2}));
    EXPECT_EQ(r.Remarks(), (Found{{Code::quotedName, 4}}));
    EXPECT_EQ(deck::MeantName("Part-1 .\"Set 1\""), "PART-1.Set 1");
    EXPECT_EQ(deck::MeantName("\"open"), "\"OPEN");
}

TEST(Names, MayHoldAnyBytes) {
    EXPECT_EQ(Read(NodesTo(1) + "*NSET, NSET=gr\xC3\xBCn\n1\n").Nodes("GR\xC3\xBCN"), Ints{1});
}

// Numbers ----------------------------------------------------------------------------------------------------

TEST(Numbers, MayHaveDOrNoLetterBeforeTheirExponent) {
    const struct {
        const char *text;
        double value;
        deck::NumberForm form;
    } rows[] = {
        {"1.5D+02", 150, deck::NumberForm::exponent},
        {"0.0d0", 0, deck::NumberForm::exponent},
        {"1.5+02", 150, deck::NumberForm::exponent},
        {"-2.5-1", -0.25, deck::NumberForm::exponent},
        {"1.5e+2", 150, deck::NumberForm::plain},
        {"+.5", 0.5, deck::NumberForm::plain},
        {"1e-400", 0, deck::NumberForm::plain},
        {"1e400", 0, deck::NumberForm::none},
        {"1.5D", 0, deck::NumberForm::none},
        {"inf", 0, deck::NumberForm::none},
        {"nan", 0, deck::NumberForm::none},
        {"0x10", 0, deck::NumberForm::none},
        {"+-1", 0, deck::NumberForm::none},
        {"1 2", 0, deck::NumberForm::none},
        {"", 0, deck::NumberForm::none},
        {"<par>", 0, deck::NumberForm::none},
    };
    for (const auto &row : rows) {
        double value = -1;
        EXPECT_EQ(deck::ReadReal(row.text, &value), row.form) << row.text;
        if (row.form != deck::NumberForm::none) {
            EXPECT_EQ(value, row.value) << row.text;
        }
    }
}

TEST(Numbers, MayBeWrittenAsReals) {
    const struct {
        const char *text;
        long long value;
        deck::NumberForm form;
    } rows[] = {
        {"12", 12, deck::NumberForm::plain},   {"+7", 7, deck::NumberForm::plain},
        {"-3", -3, deck::NumberForm::plain},   {"2.0", 2, deck::NumberForm::real},
        {"100.", 100, deck::NumberForm::real}, {"1e3", 1000, deck::NumberForm::real},
        {"2.5", 0, deck::NumberForm::none},    {"1e30", 0, deck::NumberForm::none},
        {"two", 0, deck::NumberForm::none},
    };
    for (const auto &row : rows) {
        long long value = 0;
        EXPECT_EQ(deck::ReadWhole(row.text, &value), row.form) << row.text;
        EXPECT_EQ(row.form == deck::NumberForm::none ? 0 : value, row.value) << row.text;
    }
}

TEST(Numbers, OfADeckAreBetween1And999999999) {
    const auto r = Read("*NODE\n999999999, 1., 0., 0.\n1000000000, 2., 0., 0.\n0, 3., 0., 0.\n-1, 4., 0., 0.\n"
                        "1.5, 5., 0., 0.\n*NSET, NSET=A\n999999999, 5000000000\n");
    EXPECT_EQ(r.mesh.nodeNumber, Ints{999999999});
    EXPECT_EQ(r.Nodes("A"), Ints{999999999});
    EXPECT_EQ(r.Findings(), (Found{{Code::numberRange, 3},
                                   {Code::numberRange, 4},
                                   {Code::numberRange, 5},
                                   {Code::badNumber, 6},
                                   {Code::numberRange, 8}}));
}

TEST(Numbers, OfANodeRowInEverySpelling) {
    const auto r =
        Read("*NODE\n1.0, 1.5D+02, 1.5+02, -2.\n2 3. 4. 5.\n3, , 1.\n4\n5, 1., 2., 3., 0., 0., 1.\n6, 1., 2., 3.,\n");
    EXPECT_EQ(r.At(1), (std::vector<double>{150, 150, -2}));
    EXPECT_EQ(r.At(2), (std::vector<double>{3, 4, 5}));
    EXPECT_EQ(r.At(3), (std::vector<double>{0, 1, 0}));
    EXPECT_EQ(r.At(4), (std::vector<double>{0, 0, 0}));
    EXPECT_EQ(r.At(5), (std::vector<double>{1, 2, 3}));
    EXPECT_EQ(r.At(6), (std::vector<double>{1, 2, 3}));
    EXPECT_EQ(r.Remarks(), (Found{{Code::wholeNumberAsReal, 2},
                                  {Code::dExponent, 2},
                                  {Code::dExponent, 2},
                                  {Code::blanksForCommas, 3},
                                  {Code::rowEndComma, 7}}));
    EXPECT_EQ(r.Findings(), Found{});
}

// Includes ---------------------------------------------------------------------------------------------------

TEST(Includes, StandAnywhereAlsoBetweenRows) {
    const auto r = Read("*NODE\n1, 0., 0., 0.\n*INCLUDE, INPUT=more.inp\n4, 0., 0., 0.\n*Incl, Input = Sets.inp\n",
                        {{"more.inp", "2, 0., 0., 0.\n3, 0., 0., 0.\n"}, {"Sets.inp", "*NSET, NSET=A\n1, 4\n"}});
    EXPECT_EQ(r.mesh.nodeNumber, (Ints{1, 2, 3, 4}));
    EXPECT_EQ(r.Nodes("A"), (Ints{1, 4}));
    EXPECT_EQ(r.Findings(), Found{});
    const deck::Place second = deck::PlaceOfNode(r.deck, r.mesh, 1);
    EXPECT_EQ(r.deck.files[static_cast<std::size_t>(second.file)].path, "more.inp");
    EXPECT_EQ(second.line, 1);
    const deck::Place fourth = deck::PlaceOfNode(r.deck, r.mesh, 3);
    EXPECT_EQ(fourth.file, 0);
    EXPECT_EQ(fourth.line, 4);
    EXPECT_EQ(r.deck.files[1].includedFrom, 0);
    EXPECT_EQ(r.deck.files[1].line, 3);
}

TEST(Includes, MayHoldRowsOfASurface) {
    const auto r =
        Read(NodesTo(3) + "*ELEMENT, TYPE=CPS3\n1, 1, 2, 3\n*SURFACE, NAME=S\n1, S1\n*INCLUDE, INPUT=more.inp\n",
             {{"more.inp", "1, S2\n"}});
    EXPECT_EQ(r.Faces("S"), (Ints{11, 12}));
    EXPECT_EQ(r.Findings(), Found{});
}

TEST(Includes, AreSoughtBesideTheDeckThenBesideTheIncluderThenHere) {
    const std::string deckText = "*INCLUDE, INPUT=sub/a.inp\n";
    const std::string includer = "*INCLUDE, INPUT=b.inp\n";
    const std::string node = "*NODE\n1, 0., 0., 0.\n";
    const struct {
        const char *found;
        bool elsewhere;
    } rows[] = {{"job/b.inp", false}, {"job/sub/b.inp", true}, {"b.inp", true}};
    for (const auto &row : rows) {
        const auto r = Read(deckText, {{"job/sub/a.inp", includer}, {row.found, node}}, "job/deck.inp");
        EXPECT_EQ(r.mesh.nodeNumber, Ints{1}) << row.found;
        EXPECT_EQ(r.deck.files.back().path, row.found);
        EXPECT_EQ(r.Findings(), (row.elsewhere ? Found{{Code::includeElsewhere, 1}} : Found{})) << row.found;
    }
}

TEST(Includes, ThatAreMissingCyclicOrEncryptedAreSaid) {
    auto r = Read(NodesTo(1) + "*INCLUDE, INPUT=none.inp\n");
    EXPECT_EQ(r.Findings(), (Found{{Code::includeMissing, 3}}));
    EXPECT_FALSE(r.deck.readable);
    r = Read("*INCLUDE, INPUT=a.inp\n" + NodesTo(1),
             {{"a.inp", "*INCLUDE, INPUT=b.inp\n"}, {"b.inp", "*INCLUDE, INPUT=./a.inp\n"}});
    EXPECT_EQ(r.Findings(), (Found{{Code::includeCycle, 1}}));
    EXPECT_EQ(r.deck.findings[0].words[1], "deck.inp -> a.inp -> b.inp -> a.inp");
    r = Read(NodesTo(1) + "*INCLUDE, INPUT=a.inp, PASSWORD=x\n", {{"a.inp", "???"}});
    EXPECT_EQ(r.Findings(), (Found{{Code::includeEncrypted, 3}}));
}

TEST(Includes, InputOnNodeAndElementHoldsTheirRows) {
    const auto r = Read("*NODE, INPUT=n.txt, NSET=N\n9, 9., 0., 0.\n*ELEMENT, TYPE=CPS3, ELSET=E, INPUT=\"e f.txt\"\n",
                        {{"n.txt", "1, 0., 0.\n2, 1., 0.\n3, 0., 1.\n"}, {"e f.txt", "1, 1, 2, 3\n"}});
    EXPECT_EQ(r.Nodes("N"), (Ints{1, 2, 3, 9}));
    EXPECT_EQ(r.Elements("E"), Ints{1});
    EXPECT_EQ(r.Connectivity(1), (Ints{1, 2, 3}));
    EXPECT_EQ(r.Findings(), Found{});
}

TEST(Files, ThatCannotBeReadAreSaid) {
    fake::Reset();
    deck::Deck missing = deck::ReadDeck("no.inp");
    EXPECT_EQ(decks::Reading::Of(missing.findings), (Found{{Code::unreadable, 0}}));
    EXPECT_FALSE(missing.readable);
    fake::PutFile("deck.inp", "*NODE\n1, 0., 0., 0.\n" + std::string(600000, '\n'));
    fake::FailReadsAfter(300000);
    deck::Deck cut = deck::ReadDeck("deck.inp");
    EXPECT_EQ(fake::ReadFaults(), 1);
    ASSERT_EQ(cut.findings.size(), 1u);
    EXPECT_EQ(cut.findings[0].code, Code::unreadable);
    EXPECT_FALSE(cut.readable);
    EXPECT_EQ(cut.scopes[0].nodes.number, Ints{1});
    EXPECT_EQ(decks::Reading::Of(deck::ReadDeck("/dev/zero").findings), (Found{{Code::unreadable, 0}}));
}

TEST(Files, WithoutMeshAreSaid) {
    EXPECT_EQ(Read("").Findings(), (Found{{Code::emptyDeck, 0}}));
    EXPECT_EQ(Read("*HEADING\nnothing\n").Findings(), (Found{{Code::emptyDeck, 0}}));
}

TEST(Distance, CountsLettersPutInLeftOutExchangedAndSwapped) {
    EXPECT_EQ(deck::EditDistance("NSET", "NSET", 2), 0);
    EXPECT_EQ(deck::EditDistance("NSETT", "NSET", 2), 1);
    EXPECT_EQ(deck::EditDistance("NST", "NSET", 2), 1);
    EXPECT_EQ(deck::EditDistance("NSAT", "NSET", 2), 1);
    EXPECT_EQ(deck::EditDistance("NEST", "NSET", 2), 1);
    EXPECT_EQ(deck::EditDistance("ELSET", "NSET", 2), 2);
    EXPECT_EQ(deck::EditDistance("STEP", "NSET", 2), 3);
    EXPECT_EQ(deck::EditDistance("NODEOUTPUT", "NODE", 2), 3);
}

} // namespace
