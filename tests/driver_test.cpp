// The first lines of the run log. The program runs by itself, on a deck that does not exist.
#include <gtest/gtest.h>

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

} // namespace
