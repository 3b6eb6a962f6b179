// The program kivodeck and files that are not what they should be: statuses 0, 1 and 2 and no other, a finding or a
// message, one whole object in JSON, and an end.
#include "tests/rundeck.h"

#include <nlohmann/json.hpp>

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>

#include <linux/capability.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

using nlohmann::json;

constexpr bool kSanitized = KIVODECK_SANITIZED != 0;

// Two triangles in seven lines.
const std::string kPlate = "*Node\n1, 0., 0.\n2, 1., 0.\n3, 1., 1.\n4, 0., 1.\n"
                           "*Element, type=CPS3, elset=Plate\n1, 1, 2, 3\n";
const std::string kPlateWhole = kPlate + "2, 1, 3, 4\n";

// A folder of the test, in which commands run; it goes with the test.
class Files : public testing::Test {
  protected:
    void SetUp() override {
        fs::remove_all(folder_);
        fs::create_directory(folder_);
    }
    void TearDown() override {
        fs::remove_all(folder_);
    }
    void Write(const std::string &name, const std::string &text) const {
        fs::create_directories((folder_ / name).parent_path());
        std::ofstream(folder_ / name, std::ios::binary) << text;
    }
    void WriteLarge(const std::string &name) const {
        std::string text = kPlateWhole + "*Node\n";
        for (int i = 5; i < 100000; ++i) {
            text += std::to_string(i) + ", 1., 1.\n";
        }
        Write(name, text);
    }
    // A run that takes longer than a minute has failed: `timeout` ends it with status 124.
    Outcome Run(const std::string &arguments, const std::string &before = "") const {
        return RunShell("cd '" + folder_.string() + "' && " + before + " timeout 60 '" KIVODECK_PROGRAM "' " +
                        arguments);
    }
    // The deck cannot be read, for that reason, and both forms say so.
    void RequireUnreadable(const std::string &deck, const std::string &reason) const {
        const Outcome text = Run("check '" + deck + "' 2>&1");
        EXPECT_EQ(text.status, 2) << deck;
        EXPECT_EQ(text.out, deck + ": error: " + deck + " cannot be read: " + reason + " [unreadable]\n" + deck +
                                ": not read whole; 1 error, 0 warnings, 0 notes\n");
        const Outcome told = Run("check --format=json '" + deck + "'");
        EXPECT_EQ(told.status, 2) << deck;
        const json report = json::parse(told.out);
        EXPECT_EQ(report["findings"][0]["code"], "unreadable");
        EXPECT_EQ(report["verdict"], json::parse(R"({"errors": 1, "warnings": 0, "notes": 0})"));
    }
    // The plate and then, on line 9, an include: one finding, with that code, there.
    void RequireInclude(const std::string &parameters, const std::string &code, int status) const {
        Write("deck.inp", kPlateWhole + "*Include, input=" + parameters + "\n");
        const Outcome run = Run("check --format=json deck.inp");
        EXPECT_EQ(run.status, status) << parameters;
        const json report = json::parse(run.out);
        ASSERT_EQ(report["findings"].size(), 1u) << run.out;
        EXPECT_EQ(report["findings"][0]["code"], code) << parameters;
        EXPECT_EQ(report["findings"][0]["line"], 9);
        EXPECT_EQ(report["reading"]["elements"], 2) << "the deck itself is read";
    }

    const fs::path folder_ = fs::temp_directory_path() / ("kivodeck_files_test." + std::to_string(getpid()));
};

TEST_F(Files, ThatAreNoneHaveStatusTwo) {
    RequireUnreadable("nowhere.inp", "No such file or directory");
    RequireUnreadable("", "No such file or directory");
    RequireUnreadable(".", "Is a directory");
    Write("file", "");
    RequireUnreadable("file/deck.inp", "Not a directory");
    fs::create_symlink("loop", folder_ / "loop");
    RequireUnreadable("loop", "Too many levels of symbolic links");
    RequireUnreadable(std::string(300, 'n'), "File name too long");
}

// None of them is opened: a pipe that nobody writes to would never be.
TEST_F(Files, WithoutEndAreNotOpened) {
    RequireUnreadable("/dev/null", "it is a device");
    RequireUnreadable("/dev/zero", "it is a device");
    ASSERT_EQ(mkfifo((folder_ / "pipe").c_str(), 0600), 0);
    RequireUnreadable("pipe", "it is a pipe");
    EXPECT_EQ(RunShell("printf '*Node\\n' | timeout 60 '" KIVODECK_PROGRAM "' check /dev/stdin").status, 2);
}

TEST_F(Files, WithoutPermission) {
    // Nothing is forbidden to root, unless the programs that it starts are to have no such rights.
    for (const int right : {CAP_DAC_OVERRIDE, CAP_DAC_READ_SEARCH}) {
        ASSERT_TRUE(geteuid() != 0 || prctl(PR_CAPBSET_DROP, right, 0, 0, 0) == 0) << std::strerror(errno);
    }
    Write("deck.inp", kPlateWhole);
    fs::permissions(folder_ / "deck.inp", fs::perms::none);
    RequireUnreadable("deck.inp", "Permission denied");
}

TEST_F(Files, AsStandardInput) {
    Write("deck.inp", kPlateWhole);
    const Outcome run = Run("check /dev/stdin <deck.inp");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, "/dev/stdin: clean\n");
}

TEST_F(Files, IncludedThatCannotBeRead) {
    fs::create_directory(folder_ / "sub");
    ASSERT_EQ(mkfifo((folder_ / "pipe").c_str(), 0600), 0);
    for (const char *name : {"nowhere.inp", "sub", "pipe", "/dev/zero", "deck.inp/x"}) {
        RequireInclude(name, "include-missing", 2);
    }
    Write("secret.inp", "*Node\n9, 9., 9.\n");
    RequireInclude("secret.inp, password=x", "include-encrypted", 1);
}

TEST_F(Files, IncludedInThemselvesByWhateverPath) {
    fs::create_directory(folder_ / "sub");
    fs::create_symlink("deck.inp", folder_ / "other.inp");
    fs::create_symlink(".", folder_ / "here");
    const std::string whole = (folder_ / "deck.inp").string();
    for (const std::string name :
         {"deck.inp", "./deck.inp", "sub/../deck.inp", "other.inp", "here/here/deck.inp", whole.c_str()}) {
        RequireInclude(name, "include-cycle", 1);
    }
}

TEST_F(Files, IncludedInEachOther) {
    Write("a.inp", "*Include, input=b.inp\n");
    Write("b.inp", "** first\n*Include, input=a.inp\n");
    Write("deck.inp", kPlateWhole + "*Include, input=a.inp\n");
    const Outcome run = Run("check deck.inp");
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out, "b.inp:2:11: error: a.inp includes itself: deck.inp -> a.inp -> b.inp -> a.inp [include-cycle] "
                       "(included from a.inp:1, from deck.inp:9)\ndeck.inp: 1 error, 0 warnings, 0 notes\n");
}

TEST_F(Files, IncludedTooDeepOrTooOften) {
    for (int i = 0; i < 300; ++i) { // three times as deep as files may be nested
        Write("deep" + std::to_string(i), "*Include, input=deep" + std::to_string(i + 1) + "\n");
    }
    for (int i = 0; i < 30; ++i) { // each twice: a thousand million in the end
        const std::string next = "*Include, input=twice" + std::to_string(i + 1) + "\n";
        Write("twice" + std::to_string(i), next + next);
    }
    Write("twice30", "** nothing\n");
    for (const std::string deck : {"deep0", "twice0"}) {
        const Outcome run = Run("check --format=json " + deck);
        EXPECT_EQ(run.status, 1) << deck;
        std::set<std::string> codes;
        const json report = json::parse(run.out);
        for (const json &finding : report["findings"]) {
            codes.insert(finding["code"]);
        }
        EXPECT_EQ(codes, (std::set<std::string>{"empty-deck", "too-many"})) << deck;
    }
    std::string text = kPlateWhole;
    for (int i = 0; i < 1000; ++i) { // as often as one likes
        text += "*Include, input=twice30\n";
    }
    Write("deck.inp", text);
    EXPECT_EQ(Run("check deck.inp").out, "deck.inp: clean\n");
}

TEST_F(Files, WithoutLineEnd) {
    std::string text;
    text.resize(10000000, 'x');
    Write("deck.inp", text);
    const Outcome run = Run("check deck.inp", kSanitized ? "" : "ulimit -v 300000;");
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.out.find("deck.inp:1:1: error: "), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("[empty-deck]\n"), std::string::npos) << run.out;
    Write("deck.inp", kPlate + "2, 1, 3, 4");
    EXPECT_EQ(Run("check deck.inp").out, "deck.inp: clean\n");
}

TEST_F(Files, OfAMillionSections) {
    const int most = kSanitized ? 20000 : 1000000;
    std::string text = kPlateWhole;
    for (int i = 0; i < most; ++i) {
        text += "*Nset, nset=N\n1\n";
    }
    Write("deck.inp", text);
    const Outcome run = Run("check deck.inp");
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.out.find("\nand " + std::to_string(most - 1 - 10) + " more [set-repeated]\n"), std::string::npos)
        << run.out;
}

TEST_F(Files, StreamsThatAreClosed) {
    Write("deck.inp", kPlateWhole + "*Nset, nset=N, generate\n1, 4, 1\n");
    EXPECT_EQ(Run("check deck.inp >&-").status, 2);
    EXPECT_EQ(Run("check --format=json deck.inp >&- 2>&-").status, 2);
    EXPECT_EQ(Run("check deck.inp <&- 2>&-").status, 1);
    EXPECT_EQ(Run("check nowhere.inp 2>&-").status, 2);
    EXPECT_EQ(Run("check deck.inp; echo $? >status) | true", "(sleep 0.2;").status, 0);
    EXPECT_EQ(RunShell("cat '" + (folder_ / "status").string() + "'").out, "2\n") << "nobody reads the report";
}

#if !KIVODECK_SANITIZED // such a program needs its address space

// Neither the file that is in the making nor the plain deck that is translated stays behind.
TEST_F(Files, InTheMakingWhenMemoryIsShort) {
    WriteLarge("deck.inp");
    std::set<std::string> seen;
    for (int kilobytes = 36000; kilobytes > 8000; kilobytes -= 1000) {
        for (const std::string verb : {"flatten -o flat.inp ", "run "}) {
            const Outcome run =
                Run(verb + "deck.inp >out 2>&1", "ulimit -v " + std::to_string(kilobytes) + "; rm -f flat.inp;");
            std::string names = run.status == 0 ? "done:" : "short:";
            for (const std::string name : {"flat.inp", "flat.inp.part", "mesh.flat.inp", "mesh.flat.inp.part"}) {
                names += fs::exists(folder_ / name) ? " " + name : "";
            }
            seen.insert(names);
        }
    }
    EXPECT_EQ(seen, (std::set<std::string>{"done:", "done: flat.inp", "short:"}));
}

// Less and less memory, down to where not even --version comes to its end.
TEST_F(Files, WithShortMemory) {
    WriteLarge("deck.inp");
    std::set<int> seen;
    for (int kilobytes = 64000; kilobytes > 4000; kilobytes -= 500) {
        const std::string limit = "ulimit -v " + std::to_string(kilobytes) + ";";
        if (Run("--version 2>/dev/null", limit).status != 0) {
            break;
        }
        const Outcome run = Run("check --format=json deck.inp 2>/dev/null", limit);
        seen.insert(run.status);
        ASSERT_TRUE(run.status == 0 || run.status == 2) << kilobytes << " KB: " << run.status;
        const json report = json::parse(run.out);
        EXPECT_EQ(report["verdict"]["errors"], run.status == 0 ? 0 : 1) << kilobytes;
        if (run.status == 2) {
            EXPECT_EQ(report["findings"][0]["text"], "memory is short");
        }
    }
    EXPECT_EQ(seen, (std::set<int>{0, 2})) << "memory was short for some of the runs";
}

#endif

} // namespace
