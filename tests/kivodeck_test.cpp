// The program kivodeck from outside: commands, options, exit statuses, the two forms of a report.
#include <nlohmann/json.hpp>

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include <sys/wait.h>

#include <unistd.h>

namespace fs = std::filesystem;

namespace {

using nlohmann::json;

struct Outcome {
    int status;
    std::string out;
};

// Runs `kivodeck ARGUMENTS` in the folder of the tests' decks; standard error goes where `errors` says.
Outcome RunDeck(const std::string &arguments, const std::string &errors = "/dev/null") {
    const std::string command = "cd '" KIVOM_FINDINGS "' && '" KIVODECK_PROGRAM "' " + arguments + " 2>" + errors;
    std::FILE *pipe = popen(command.c_str(), "r");
    Outcome outcome{-1, ""};
    char block[4096];
    for (std::size_t got; (got = std::fread(block, 1, sizeof block, pipe)) > 0;) {
        outcome.out.append(block, got);
    }
    const int status = pclose(pipe);
    outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return outcome;
}

class Deck {
  public:
    explicit Deck(const std::string &text)
        : path_(fs::temp_directory_path() / ("kivodeck_test." + std::to_string(getpid()) + ".inp")) {
        std::ofstream(path_, std::ios::binary) << text;
    }
    ~Deck() {
        fs::remove(path_);
    }
    std::string path() const {
        return path_.string();
    }

  private:
    fs::path path_;
};

const char kPlate[] = "*Node\n1, 0., 0.\n2, 1., 0.\n3, 1., 1.\n4, 0., 1.\n"
                      "*Element, type=CPS3, elset=Plate\n1, 1, 2, 3\n2, 1, 3, 4\n";

std::string LastLine(const std::string &text) {
    const std::size_t end = text.find_last_not_of('\n');
    return text.substr(text.rfind('\n', end) + 1, end - text.rfind('\n', end));
}

TEST(Status, IsZeroForACleanDeckAndTheVerdictIsTheLastLine) {
    const Outcome run = RunDeck("check cps3.inp");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(LastLine(run.out), "cps3.inp: clean");
}

TEST(Status, IsOneForFindingsOfTheLevelAskedFor) {
    const Deck warning(std::string(kPlate) + "*Nset, nset=Left\n");
    EXPECT_EQ(RunDeck("check " + warning.path()).status, 1);
    EXPECT_EQ(RunDeck("check --fail-on=warning " + warning.path()).status, 1);
    EXPECT_EQ(RunDeck("check --fail-on=error " + warning.path()).status, 0);
}

TEST(Status, OfANoteIsZero) {
    const Deck note(std::string(kPlate) + "*Elset, elset=Lower\n1\n");
    const Outcome run = RunDeck("check " + note.path());
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(LastLine(run.out), note.path() + ": clean, 1 note");
}

TEST(Status, OfSeveralDecksIsTheWorst) {
    const Deck error(std::string(kPlate) + "*Nset, nset=Left, generate\n1, 4, 3\n");
    EXPECT_EQ(RunDeck("check cps3.inp " + error.path()).status, 1);
    EXPECT_EQ(RunDeck("check nowhere.inp cps3.inp " + error.path()).status, 2);
}

class WrongUse : public testing::TestWithParam<const char *> {};

TEST_P(WrongUse, HasStatusTwoAndASentence) {
    EXPECT_EQ(RunDeck(GetParam()).status, 2);
    const Outcome told = RunDeck(GetParam(), "&1 >/dev/null");
    EXPECT_EQ(told.out.compare(0, 10, "kivodeck: "), 0) << told.out;
}

INSTANTIATE_TEST_SUITE_P(All, WrongUse,
                         testing::Values("", "chekc cps3.inp", "check", "check --nonsense cps3.inp",
                                         "check --format=xml cps3.inp", "check --fail-on=note cps3.inp",
                                         "explain no-such-code", "--nonsense"));

TEST(Unreadable, DeckHasStatusTwoInBothForms) {
    for (const std::string deck : {"nowhere.inp", ".", "/dev/null/x"}) {
        EXPECT_EQ(RunDeck("check " + deck).status, 2) << deck;
        const Outcome run = RunDeck("check --format=json " + deck);
        EXPECT_EQ(run.status, 2) << deck;
        const json report = json::parse(run.out);
        EXPECT_EQ(report["findings"][0]["code"], "unreadable");
        EXPECT_EQ(report["verdict"]["errors"], 1);
    }
}

TEST(Unwritable, OutputHasStatusTwo) {
    EXPECT_EQ(RunDeck("check cps3.inp >/dev/full").status, 2);
    EXPECT_EQ(RunDeck("check --format=json cps3.inp >/dev/full").status, 2);
    EXPECT_EQ(RunDeck("explain >/dev/full").status, 2);
}

TEST(Json, OfWrongUseIsWhole) {
    const json report = json::parse(RunDeck("check --format=json --nonsense").out);
    EXPECT_EQ(report["schema_version"], 1);
    EXPECT_EQ(report["findings"][0]["code"], "usage");
}

TEST(Json, HoldsBothReadings) {
    const Outcome run = RunDeck("check --format=json c3d4.inp");
    EXPECT_EQ(run.status, 0);
    const json report = json::parse(run.out);
    EXPECT_EQ(report["schema_version"], 1);
    EXPECT_EQ(report["findings"], json::array());
    const json expected = json::parse(R"({"dimension": 3, "nodes": 6, "elements": 3,
        "node_sets": [{"name": "LEFT", "members": 2}, {"name": "RIGHT", "members": 1}],
        "element_sets": [{"name": "LOWER", "members": 1}],
        "surfaces": [{"name": "BOTTOM", "faces": 1}, {"name": "TOP", "faces": 1}],
        "cell_groups": [{"name": "BODY", "type": "C3D4", "elements": 2}, {"name": "REST", "type": "C3D4", "elements": 1}]})");
    EXPECT_EQ(report["meaning"], expected);
    EXPECT_EQ(report["reading"], expected);
    EXPECT_EQ(report["verdict"], json::parse(R"({"errors": 0, "warnings": 0, "notes": 0})"));
}

TEST(Json, ShowsWhatIsNoText) {
    const Deck deck(std::string(kPlate) + "*Nset, nset=\xff\xfeLeft, generate\n1, 4, 3\n");
    const Outcome run = RunDeck("check --format=json " + deck.path());
    EXPECT_EQ(run.status, 1);
    EXPECT_FALSE(json::parse(run.out)["findings"].empty());
}

TEST(Json, OfSeveralDecksIsOneObject) {
    const json report = json::parse(RunDeck("check --format=json cps3.inp c3d4.inp").out);
    EXPECT_EQ(report["decks"].size(), 2u);
    EXPECT_EQ(report["decks"][1]["file"], "c3d4.inp");
    EXPECT_EQ(report["verdict"]["errors"], 0);
}

TEST(Text, ShowsTenOfACodeUnlessAskedForAll) {
    std::string text = std::string(kPlate);
    for (int i = 0; i < 25; ++i) {
        text += "*Nset, nset=N" + std::to_string(i) + ", generate\n1, 4, 3\n";
    }
    const Deck deck(text);
    const auto count = [](const std::string &out) {
        std::size_t n = 0;
        for (std::size_t at = 0; (at = out.find("error: ", at)) != std::string::npos; ++at) {
            ++n;
        }
        return n;
    };
    const Outcome some = RunDeck("check " + deck.path());
    EXPECT_EQ(count(some.out), 10u);
    EXPECT_NE(some.out.find("\nand 15 more [no-generate]\n"), std::string::npos) << some.out;
    EXPECT_EQ(LastLine(some.out), deck.path() + ": 25 errors, 0 warnings, 0 notes");
    EXPECT_EQ(count(RunDeck("check --all " + deck.path()).out), 25u);
}

TEST(Text, CountsKeywordsOutsideTheMeshOnOneLine) {
    const Deck deck(std::string(kPlate) + "*Material, name=A\n*Elastic\n1., 0.\n*Material, name=B\n");
    EXPECT_NE(RunDeck("check " + deck.path()).out.find("no part of a mesh: 1 *ELASTIC, 2 *MATERIAL\n"),
              std::string::npos);
}

TEST(Text, IsNotColouredInAPipe) {
    EXPECT_EQ(RunDeck("check nowhere.inp").out.find('\033'), std::string::npos);
}

TEST(Help, FitsAScreen) {
    for (const std::string arguments : {"--help", "check --help", "audit --help", "explain --help"}) {
        const Outcome run = RunDeck(arguments);
        EXPECT_EQ(run.status, 0) << arguments;
        std::istringstream in(run.out);
        int lines = 0;
        for (std::string line; std::getline(in, line); ++lines) {
            EXPECT_LE(line.size(), 80u) << line;
        }
        EXPECT_LE(lines, 24) << run.out;
        EXPECT_GT(lines, 3);
    }
}

TEST(Version, IsOneLine) {
    const Outcome run = RunDeck("--version");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, "kivodeck " KIVODECK_VERSION "\n");
}

TEST(Explain, ShowsOneCodeAndAll) {
    const Outcome one = RunDeck("explain no-generate");
    EXPECT_EQ(one.status, 0);
    EXPECT_NE(one.out.find("*Nset, nset=Left, generate"), std::string::npos);
    EXPECT_NE(RunDeck("explain").out.find("\nrow-end-comma "), std::string::npos);
    EXPECT_EQ(json::parse(RunDeck("explain --format=json no-generate").out)["level"], "error");
}

} // namespace
