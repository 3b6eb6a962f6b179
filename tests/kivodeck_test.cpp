// The program kivodeck from outside: commands, options, exit statuses, the two forms of a report.
#include "kivodeck/terminal.h"
#include "tests/rundeck.h"

#include <nlohmann/json.hpp>

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>

#include <pty.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

using nlohmann::json;

// Runs `kivodeck ARGUMENTS` in the folder of the tests' decks; standard error goes where `errors` says.
Outcome RunDeck(const std::string &arguments, const std::string &errors = "/dev/null") {
    return RunShell("cd '" KIVOM_FINDINGS "' && '" KIVODECK_PROGRAM "' " + arguments + " 2>" + errors);
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

// An empty folder to write into.
class Folder {
  public:
    Folder() : path_(fs::temp_directory_path() / ("kivodeck_test_folder." + std::to_string(getpid()))) {
        fs::remove_all(path_);
        fs::create_directories(path_);
    }
    ~Folder() {
        fs::remove_all(path_);
    }
    std::string operator/(const std::string &name) const {
        return (path_ / name).string();
    }
    std::string Read(const std::string &name) const {
        std::ifstream in(path_ / name, std::ios::binary);
        std::stringstream text;
        text << in.rdbuf();
        return text.str();
    }
    // The names of the files in it, each with a blank behind it.
    std::string Files() const {
        std::set<std::string> names;
        for (const auto &file : fs::directory_iterator(path_)) {
            names.insert(file.path().filename().string());
        }
        std::string all;
        for (const std::string &name : names) {
            all += name + " ";
        }
        return all;
    }
    void Write(const std::string &name, const std::string &text) const {
        std::ofstream(path_ / name, std::ios::binary) << text;
    }
    // `kivodeck ARGUMENTS` in it, behind what a shell does before.
    Outcome RunVerb(const std::string &arguments, const std::string &before = "") const {
        return RunShell("cd '" + path_.string() + "' && " + before + "'" KIVODECK_PROGRAM "' " + arguments);
    }
    Outcome Run(const std::string &arguments) const {
        return RunVerb("run " + arguments);
    }

  private:
    fs::path path_;
};

class WrongUse : public testing::TestWithParam<const char *> {};

TEST_P(WrongUse, HasStatusTwoAndASentence) {
    const Folder folder;
    for (const std::string deck : {"cps3.inp", "c3d4.inp"}) {
        fs::copy_file(KIVOM_FINDINGS "/" + deck, folder / deck);
    }
    EXPECT_EQ(folder.RunVerb(std::string(GetParam()) + " 2>told").status, 2);
    EXPECT_EQ(folder.Read("told").compare(0, 10, "kivodeck: "), 0) << folder.Read("told");
    EXPECT_EQ(folder.Files(), "c3d4.inp cps3.inp told ");
}

INSTANTIATE_TEST_SUITE_P(All, WrongUse,
                         testing::Values("", "chekc cps3.inp", "check", "check --nonsense cps3.inp",
                                         "check --format=xml cps3.inp", "check --fail-on=note cps3.inp",
                                         "explain no-such-code", "--nonsense", "flatten cps3.inp", "flatten -o x",
                                         "flatten cps3.inp -o c3d4.inp", "flatten --groups=x cps3.inp -o x",
                                         "flatten --overlaps=x cps3.inp -o x", "flatten --scale=0 cps3.inp -o x",
                                         "flatten --scale=nan cps3.inp -o x", "flatten --scale=inf cps3.inp -o x",
                                         "flatten --scale=1e400 cps3.inp -o x", "flatten --scale=1e-400 cps3.inp -o x",
                                         "flatten --scale= cps3.inp -o x", "flatten cps3.inp -o x --map=x",
                                         "flatten cps3.inp -o x --map=./x --force", "run", "run mesh.input",
                                         "run ./mesh.input", "run cps3.inp --map=mesh.input --force",
                                         "run cps3.inp --map=c3d4.inp"));

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

TEST(Json, HasTheChainOfIncludes) {
    const json report = json::parse(RunDeck("check --format=json decks/include-cycle.inp").out);
    const json &finding = report["findings"][1]; // behind that of the include itself
    EXPECT_EQ(finding["code"], "include-cycle");
    EXPECT_EQ(finding["file"], "decks/include-cycle-loop.inc");
    ASSERT_EQ(finding["included_from"].size(), 1u);
    EXPECT_EQ(finding["included_from"][0]["file"], "decks/include-cycle.inp");
    EXPECT_EQ(finding["included_from"][0]["line"], 11);
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

// What a terminal shows of what a process of its own does there.
template <class Act> std::string OnTerminal(const Act &act) {
    int terminal = -1;
    const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
    if (child == 0) {
        act();
        std::exit(0);
    }
    std::string shown;
    char block[4096];
    for (ssize_t got; (got = read(terminal, block, sizeof block)) > 0;) { // fails when the other end is closed
        shown.append(block, static_cast<std::size_t>(got));
    }
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status));
    close(terminal);
    return shown;
}

TEST(Terminal, GetsColourUnlessItIsNotWanted) {
    for (const std::string noColour : {"", "1"}) {
        const std::string shown = OnTerminal([&] {
            setenv("NO_COLOR", noColour.c_str(), 1);
            execl(KIVODECK_PROGRAM, KIVODECK_PROGRAM, "check", "nowhere.inp", nullptr);
        });
        EXPECT_NE(shown.find("nowhere.inp"), std::string::npos);
        EXPECT_EQ(shown.find('\033') == std::string::npos, noColour == "1") << shown;
    }
}

TEST(Terminal, SeesAfterASecondThatWorkGoesOn) {
    const auto work = [](std::chrono::milliseconds time) {
        return OnTerminal([&] {
            const auto end = std::chrono::steady_clock::now() + time;
            const kivodeck::Progress progress("at work");
            while (std::chrono::steady_clock::now() < end) {
                usleep(1000);
            }
        });
    };
    EXPECT_EQ(work(std::chrono::milliseconds(0)), "");
    const std::string shown = work(std::chrono::milliseconds(1300)); // or longer, on a busy machine
    EXPECT_EQ(shown.substr(0, 13), "\rat work 1 s\r") << shown;
    EXPECT_EQ(shown.substr(shown.size() - 4), "\r\033[K") << shown;
}

TEST(Help, FitsAScreen) {
    for (const std::string arguments :
         {"--help", "check --help", "audit --help", "explain --help", "flatten --help", "run --help"}) {
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

const char kTwoQuads[] =
    "*Node\n1, 0., 0.\n2, 1., 0.\n3, 1., 1.\n4, 0., 1.\n*Element, type=CPS4, elset=Plate\n1, 1, 2, 3, 4\n";

TEST(Flatten, WritesThePlainDeckAndTheMap) {
    const Folder folder;
    const Deck deck(kTwoQuads);
    const Outcome run = RunDeck("flatten " + deck.path() + " -o " + folder / "flat.inp" + " --map=" + folder / "map");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(LastLine(run.out), deck.path() + ": clean, 1 note");
    EXPECT_NE(run.out.find("flat.inp: 4 nodes, 2 elements, 1 cell group, 0 node sets, 0 surfaces\n"),
              std::string::npos);
    EXPECT_NE(folder.Read("flat.inp").find("*Element, type=CPS3, elset=PLATE\n1, 1, 2, 3\n2, 1, 3, 4\n"),
              std::string::npos);
    EXPECT_EQ(folder.Read("map"), "kind\tinstance\told\tnew\nelement\t\t1\t2\n");
    EXPECT_EQ(folder.Files(), "flat.inp map ");
}

TEST(Flatten, OverwritesNothingUnlessForced) {
    const Folder folder;
    const Deck deck(kTwoQuads);
    std::ofstream(folder / "flat.inp") << "mine";
    EXPECT_EQ(RunDeck("flatten " + deck.path() + " -o " + folder / "flat.inp").status, 2);
    EXPECT_EQ(folder.Read("flat.inp"), "mine");
    EXPECT_EQ(RunDeck("flatten --force " + deck.path() + " -o " + folder / "flat.inp").status, 0);
    EXPECT_NE(folder.Read("flat.inp"), "mine");
}

TEST(Flatten, MayTakeThePlaceOfItsDeck) {
    const Folder folder;
    folder.Write("deck.inp", kTwoQuads);
    EXPECT_EQ(folder.RunVerb("flatten deck.inp -o deck.inp").status, 2);
    EXPECT_EQ(folder.Read("deck.inp"), kTwoQuads);
    EXPECT_EQ(folder.RunVerb("flatten --force deck.inp -o deck.inp").status, 0);
    EXPECT_NE(folder.Read("deck.inp").find("*Element, type=CPS3, elset=PLATE\n1, 1, 2, 3\n2, 1, 3, 4\n"),
              std::string::npos);
    EXPECT_EQ(folder.Files(), "deck.inp ");
}

TEST(Flatten, PassesFilesByThatStandWhereItWorks) {
    const Folder folder;
    folder.Write("deck.inp", kTwoQuads);
    folder.Write("flat.inp.part", "mine");
    folder.Write("map.part", "my own");
    EXPECT_EQ(folder.RunVerb("flatten deck.inp -o flat.inp --map=map").status, 0);
    EXPECT_EQ(folder.Read("flat.inp.part"), "mine");
    EXPECT_EQ(folder.Read("map.part"), "my own");
    EXPECT_EQ(folder.Files(), "deck.inp flat.inp flat.inp.part map map.part ");
}

TEST(Flatten, LeavesNothingBehindOnAFullDisk) {
    const Folder folder;
    std::string deck = kPlate;
    for (int i = 5; i < 1000; ++i) { // the plain deck is larger than the 4,096 bytes that are left
        deck += i == 5 ? "*Node\n" : "";
        deck += std::to_string(i) + ", 1., 1.\n";
    }
    folder.Write("deck.inp", deck);
    folder.Write("old.inp", "old");
    folder.Write("mesh.input", "old");
    const std::string limit = "ulimit -f 8; ";
    const Outcome run = folder.RunVerb("flatten --force deck.inp -o old.inp --map=map 2>&1", limit);
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.out, "kivodeck: old.inp.part cannot be written: File too large\n");
    EXPECT_EQ(folder.Read("old.inp"), "old");
    EXPECT_EQ(folder.Files(), "deck.inp mesh.input old.inp ");
    const json report = json::parse(folder.RunVerb("run --format=json deck.inp", limit).out);
    EXPECT_EQ(report["findings"][0]["code"], "unwritable");
    EXPECT_EQ(report["findings"][0]["text"],
              "mesh.flat.inp.part cannot be written: File too large; an old mesh.input was removed");
    EXPECT_EQ(folder.Files(), "deck.inp old.inp ");
}

TEST(Flatten, LeavesNothingBehindWhereAnErrorRemains) {
    const Folder folder;
    const Deck deck(std::string(kTwoQuads) + "*Nsett, nset=A\n1\n");
    const Outcome run = RunDeck("flatten --format=json " + deck.path() + " -o " + folder / "flat.inp");
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(json::parse(run.out)["files"]["plain_deck"], nullptr);
    EXPECT_EQ(json::parse(run.out)["findings"][1]["code"], "misspelt"); // behind the split on line 6
    EXPECT_EQ(folder.Files(), "");
    EXPECT_EQ(RunDeck("flatten --allow-loss " + deck.path() + " -o " + folder / "flat.inp").status, 1);
    EXPECT_EQ(folder.Files(), "flat.inp ");
}

TEST(Flatten, HasStatusTwoWhereAFileCannotBeReadOrWritten) {
    const Folder folder;
    const Deck deck(kTwoQuads);
    EXPECT_EQ(RunDeck("flatten " + deck.path() + " -o " + folder / "no/flat.inp").status, 2);
    EXPECT_EQ(RunDeck("flatten nowhere.inp -o " + folder / "flat.inp").status, 2);
    EXPECT_EQ(RunDeck("flatten " + deck.path() + " -o " + folder / "flat.inp --map=/nowhere/map").status, 2);
    EXPECT_EQ(folder.Files(), "");
}

TEST(Flatten, FailsOnWarningsWhenAskedFor) {
    const Folder folder;
    const Deck deck(std::string(kTwoQuads) + "*Nset, nset=A\n1, 2\n*Nset, nset=B\n2\n");
    EXPECT_EQ(RunDeck("flatten --force " + deck.path() + " -o " + folder / "flat.inp").status, 0);
    EXPECT_EQ(RunDeck("flatten --force --fail-on=warning " + deck.path() + " -o " + folder / "flat.inp").status, 1);
}

TEST(Run, TranslatesThePlainDeckAndRemovesIt) {
    const Folder folder;
    const Deck deck(kTwoQuads);
    const Outcome run = folder.Run(deck.path());
    EXPECT_EQ(run.status, 0);
    const std::size_t log = run.out.find("Reading Elements PLATE ... done with 2 CPS3s.\n");
    EXPECT_LT(log, run.out.find("the plain deck: 4 nodes, 2 elements,"));
    EXPECT_EQ(LastLine(run.out), "mesh.input: 4 nodes, 0 faces, 2 cells: mesh ok");
    EXPECT_NE(run.out.find("\n" + deck.path() + ": clean, 1 note\n"), std::string::npos);
    EXPECT_EQ(folder.Files(), "mesh.input ");
    EXPECT_EQ(folder.Run("--keep --vtk " + deck.path()).status, 0);
    EXPECT_EQ(folder.Files(), "_Cells.vtk mesh.flat.inp mesh.input ");
}

TEST(Run, LetsNoOldMeshOutliveAFailure) {
    const Folder folder;
    const Deck deck(std::string(kTwoQuads) + "*Nsett, nset=A\n1\n");
    std::ofstream(folder / "mesh.input") << "old";
    const Outcome run = folder.Run("--format=json " + deck.path());
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(json::parse(run.out)["files"]["removed"], "mesh.input");
    EXPECT_EQ(folder.Files(), "");
}

TEST(Run, LeavesTheMeshWhereThereIsNoDeck) {
    const Folder folder;
    folder.Write("mesh.input", "old");
    EXPECT_EQ(folder.RunVerb("run missing.inp").status, 2);
    EXPECT_EQ(folder.Read("mesh.input"), "old");
}

TEST(Run, WritesOverNoPartOfTheDeck) {
    const Folder folder;
    folder.Write("rows.inc", "1, 0., 0.\n2, 1., 0.\n3, 1., 1.\n");
    folder.Write("deck.inp", "*Node\n*Include, input=rows.inc\n*Element, type=CPS3, elset=A\n1, 1, 2, 3\n");
    EXPECT_EQ(folder.RunVerb("run --force --map=deck.inp deck.inp").status, 2);
    EXPECT_EQ(folder.RunVerb("run --force --map=rows.inc deck.inp").status, 2);
    EXPECT_EQ(folder.RunVerb("flatten --force -o rows.inc deck.inp").status, 2);
    EXPECT_EQ(folder.Read("rows.inc"), "1, 0., 0.\n2, 1., 0.\n3, 1., 1.\n");
    EXPECT_EQ(folder.Read("deck.inp").substr(0, 14), "*Node\n*Include");
    EXPECT_EQ(folder.Files(), "deck.inp rows.inc ");
}

TEST(Run, LosesNoPlainDeckOfItsUser) {
    const Folder folder;
    folder.Write("deck.inp", kTwoQuads);
    folder.Write("mesh.flat.inp", "mine");
    EXPECT_EQ(folder.RunVerb("run deck.inp").status, 0);
    EXPECT_EQ(folder.RunVerb("run --keep deck.inp").status, 2);
    EXPECT_EQ(folder.Read("mesh.flat.inp"), "mine");
    EXPECT_EQ(folder.Files(), "deck.inp mesh.flat.inp mesh.input ");
    EXPECT_EQ(folder.RunVerb("run --keep --force deck.inp").status, 0);
    EXPECT_EQ(folder.Read("mesh.flat.inp").substr(0, 8), "*Heading");
    EXPECT_EQ(folder.RunVerb("run mesh.flat.inp").status, 0) << "the plain deck of a plain deck has another name";
    EXPECT_EQ(folder.Files(), "deck.inp mesh.flat.inp mesh.input ");
}

TEST(Run, RefusesToTakeTheDeckForItsMesh) {
    const Folder folder;
    folder.Write("mesh.input", kTwoQuads);
    fs::create_symlink("mesh.input", folder / "link.inp");
    for (const std::string &deck : {std::string("./mesh.input"), std::string("link.inp"), folder / "mesh.input"}) {
        EXPECT_EQ(folder.RunVerb("run " + deck).status, 2) << deck;
        EXPECT_EQ(folder.Read("mesh.input"), kTwoQuads) << deck;
    }
}

TEST(Run, RemovesNoFolder) {
    const Folder folder;
    folder.Write("deck.inp", kTwoQuads);
    fs::create_directory(folder / "mesh.input");
    const Outcome run = folder.RunVerb("run deck.inp 2>&1");
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.out, "kivodeck: mesh.input is no file that could be overwritten\n");
    EXPECT_EQ(folder.Files(), "deck.inp mesh.input ");
}

TEST(Run, SaysThatNoFileCanBeMade) {
    const Folder folder;
    folder.Write("deck.inp", kTwoQuads);
    const Outcome run = RunShell("cd /proc && '" KIVODECK_PROGRAM "' run '" + folder / "deck.inp" + "' 2>&1");
    EXPECT_EQ(run.status, 2); // nobody makes files there
    EXPECT_EQ(run.out.substr(0, 48), "kivodeck: mesh.flat.inp.part cannot be written: ") << run.out;
    if (geteuid() != 0) { // to whom no folder is closed
        folder.Write("mesh.input", "old");
        fs::permissions(folder / "", fs::perms::owner_read | fs::perms::owner_exec);
        EXPECT_EQ(folder.RunVerb("run deck.inp 2>&1").out,
                  "kivodeck: mesh.input cannot be removed: Permission denied\n");
        fs::permissions(folder / "", fs::perms::owner_all);
        EXPECT_EQ(folder.Files(), "deck.inp mesh.input ");
    }
}

TEST(Run, KeepsTheLogOutOfJson) {
    const Folder folder;
    const Deck deck(kTwoQuads);
    const json report = json::parse(folder.Run("--format=json " + deck.path()).out);
    EXPECT_EQ(report["files"]["mesh"], "mesh.input");
    EXPECT_EQ(report["reading"]["elements"], 2);
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
    std::istringstream lines(RunDeck("explain").out);
    const json all = json::parse(RunDeck("explain --format=json").out);
    EXPECT_EQ(all["schema_version"], 1);
    EXPECT_GT(all["codes"].size(), 50u);
    for (const json &code : all["codes"]) { // the same, in the same order
        std::string word, level, text;
        std::getline(lines >> word >> level, text);
        EXPECT_EQ(code["code"], word);
        EXPECT_EQ(code["level"], level);
    }
}

} // namespace
