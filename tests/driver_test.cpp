// The driver: the first lines of the run log, where the program runs by itself on a deck that does not exist, and its
// parts.
#include "driver/KIVOm.h"

#include "capture.h"
#include "fakesystem.h"

#include "store/COM.h"
#include "support/frame.h"

#include <cstdio>
#include <sstream>
#include <string>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

namespace {

struct LogOfRun {
    int status;
    std::vector<std::string> lines;
};

LogOfRun RunProgram(const char *argument) {
    int ends[2];
    if (pipe(ends) != 0) {
        return {-1, {}};
    }
    const pid_t child = fork();
    if (child == 0) {
        dup2(ends[1], 1);
        close(ends[0]);
        close(ends[1]);
        execl(KIVOM_PROGRAM, KIVOM_PROGRAM, argument, static_cast<char *>(nullptr));
        _exit(127);
    }
    close(ends[1]);
    std::string text;
    char block[4096];
    for (ssize_t got; (got = read(ends[0], block, sizeof block)) > 0;) {
        text.append(block, static_cast<std::size_t>(got));
    }
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    LogOfRun run{WIFEXITED(status) ? WEXITSTATUS(status) : -1, {}};
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        run.lines.push_back(line);
    }
    return run;
}

TEST(Banner, IsElevenRowsOfSixtyStarsAndBlanksAndATitle) {
    const LogOfRun run = RunProgram("no/such/deck.inp");
    ASSERT_GE(run.lines.size(), 14u);
    EXPECT_EQ(run.lines[0], "");
    for (std::size_t row = 1; row <= 11; ++row) {
        EXPECT_EQ(run.lines[row].size(), 60u) << row;
        EXPECT_EQ(run.lines[row].find_first_not_of("* "), std::string::npos) << row;
        EXPECT_NE(run.lines[row].find('*'), std::string::npos) << row;
    }
    EXPECT_EQ(run.lines[12], "      Mesh Translator for KIVOcom (Version: 07/04/2019)     ");
    EXPECT_EQ(run.lines[12].size(), 60u);
    EXPECT_EQ(run.lines[13], "");
}

TEST(Log, EndsWhereTheDeckCannotBeOpened) {
    const LogOfRun run = RunProgram("no/such/deck.inp");
    ASSERT_EQ(run.lines.size(), 18u);
    EXPECT_EQ(run.lines[14].substr(0, 15), "Job started at ");
    EXPECT_EQ(run.lines[15], "");
    EXPECT_EQ(run.lines[16], "");
    EXPECT_EQ(run.lines[17], " Error> cannot open file no/such/deck.inp");
    EXPECT_EQ(run.status, 255);
}

// The driver's parts ----------------------------------------------------------------------------------------

class Driver : public testing::Test {
  protected:
    void SetUp() override {
        fake::Reset();
        fake::PutFile("a.inp", "*NODE\n1,0,0\n");
    }
    void TearDown() override {
        FreeCOM();
        NumArguments = 0;
        c1Arguments = nullptr;
    }

    // What LoadAll prints for the arguments, up to the time.
    std::string LogOfLoadAll(std::vector<std::string> arguments) {
        std::vector<char *> words;
        for (std::string &argument : arguments) {
            words.push_back(&argument[0]);
        }
        NumArguments = static_cast<int>(words.size());
        c1Arguments = words.data();
        const std::string log = Printed(LoadAll);
        return log.substr(0, log.find("Elapsed Time: "));
    }
};

TEST_F(Driver, TheBannerGoesToTheStreamGiven) {
    std::FILE *stream = std::tmpfile();
    ASSERT_NE(stream, nullptr);
    EXPECT_EQ(Printed([&] { ShowLogKIVOM(stream); }), "");
    EXPECT_EQ(std::ftell(stream), 1 + 12 * 61 + 1);
    std::fclose(stream);
}

TEST_F(Driver, LoadAllReadsTheFirstArgumentThatIsNoOption) {
    const std::string log = "Reading Abaqus mesh from a.inp ...\n  Reading Nodes  ... done with 1 nodes.\n";
    EXPECT_EQ(LogOfLoadAll({"KIVOm", "a.inp"}), log);
    EXPECT_EQ(GetCOM()->Nodes->nNum, 1);
    EXPECT_EQ(LogOfLoadAll({"KIVOm", "--vtk", "-x", "a.inp", "b.inp"}), log);
    EXPECT_EQ(GetCOM()->Nodes->nNum, 2) << "one store until it is released";
}

TEST_F(Driver, AJobThatLostContentsEndsWithStatusOne) {
    std::string program = "KIVOm", deck = "a.inp";
    char *words[] = {&program[0], &deck[0]};
    Printed([&] { EXPECT_EQ(RunKIVOM(2, words), 0); });
    EXPECT_TRUE(fake::HasFile("mesh.input"));
    EXPECT_EQ(NumArguments, 2);
    EXPECT_EQ(c1Arguments, words);
    Printed([] {
        void *held = allocate(nullptr, 1);
        fake::FailAllocation(1);
        allocate(allocate(held, 2), 0);
        allocate(held, 0);
    });
    fake::Reset();
    fake::PutFile("a.inp", "");
    EXPECT_EXIT(RunKIVOM(2, words), testing::ExitedWithCode(1), "KIVOm: shortage of memory");
    ForgetLostContents();
}

} // namespace
