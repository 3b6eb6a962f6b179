// Whole runs of the program: each folder below cases/ is one, described in cases/README.md.
//
// The program runs as a user would run it, in a folder of its own; its log, its exit status and every file it
// leaves are compared byte for byte, with dates and times masked. KIVOM_CASES_PROGRAM in the environment names another
// program to run.
#include "tests/support/logmask.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

std::string ReadFile(const fs::path &path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

bool IsReserved(const std::string &name) {
    return name == "args" || name == "stdin" || name == "log" || name == "status" || name == "files" || name == "why";
}

std::vector<std::string> ReadArguments(const fs::path &folder) {
    if (!fs::exists(folder / "args")) {
        return {"deck.inp"};
    }
    std::vector<std::string> arguments;
    std::ifstream in(folder / "args");
    for (std::string line; std::getline(in, line);) {
        arguments.push_back(line);
    }
    return arguments;
}

int ReadStatus(const fs::path &folder) {
    return fs::exists(folder / "status") ? std::stoi(ReadFile(folder / "status")) : 0;
}

// File names relative to the folder, with contents.
std::map<std::string, std::string> ReadTree(const fs::path &folder) {
    std::map<std::string, std::string> files;
    for (const auto &entry : fs::recursive_directory_iterator(folder)) {
        if (entry.is_regular_file() && entry.path().filename() != ".keep") {
            files[fs::relative(entry.path(), folder).string()] = ReadFile(entry.path());
        }
    }
    return files;
}

// Words of the environment variable, a command to run the program under ("valgrind -q --error-exitcode=99").
std::vector<std::string> WordsOf(const char *variable) {
    std::vector<std::string> words;
    const char *value = std::getenv(variable);
    std::istringstream in(value == nullptr ? "" : value);
    for (std::string word; in >> word;) {
        words.push_back(word);
    }
    return words;
}

// Runs the program in `work` and returns its exit status, or 1000 plus the signal that ended it.
int RunProgram(const fs::path &work, const std::vector<std::string> &arguments, const fs::path &input,
               const fs::path &log) {
    const pid_t child = fork();
    if (child == 0) {
        const int in = open(input.c_str(), O_RDONLY);
        const int out = open(log.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
        const std::vector<std::string> under = WordsOf("KIVOM_UNDER");
        std::vector<char *> argv;
        for (const std::string &word : under) {
            argv.push_back(const_cast<char *>(word.c_str()));
        }
        const char *other = std::getenv("KIVOM_CASES_PROGRAM");
        argv.push_back(const_cast<char *>(other != nullptr ? other : KIVOM_PROGRAM));
        for (const std::string &argument : arguments) {
            argv.push_back(const_cast<char *>(argument.c_str()));
        }
        argv.push_back(nullptr);
        if (in == -1 || out == -1 || chdir(work.c_str()) != 0 || dup2(in, 0) == -1 || dup2(out, 1) == -1) {
            _exit(99);
        }
        close(in);
        close(out);
        execvp(argv[0], argv.data());
        _exit(98);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
}

class CaseTest : public testing::Test {
  public:
    explicit CaseTest(fs::path folder) : folder_(std::move(folder)) {}

    void TestBody() override {
        const fs::path scratch = fs::temp_directory_path() / ("kivom-case-" + std::to_string(getpid()));
        const fs::path work = scratch / "work";
        fs::remove_all(scratch);
        fs::create_directories(work);
        std::vector<std::string> inputs;
        for (const auto &entry : fs::directory_iterator(folder_)) {
            const std::string name = entry.path().filename().string();
            if (!IsReserved(name)) {
                fs::copy(entry.path(), work / name, fs::copy_options::recursive);
                inputs.push_back(name);
            }
        }
        const fs::path given = folder_ / "stdin";
        const fs::path input = fs::exists(given) ? given : fs::path("/dev/null");
        const int status = RunProgram(work, ReadArguments(folder_), input, scratch / "log");
        EXPECT_EQ(status, ReadStatus(folder_));
        EXPECT_EQ(MaskLog(ReadFile(scratch / "log")), ReadFile(folder_ / "log"));
        if (fs::exists(folder_ / "files")) {
            CompareFiles(work, inputs);
        }
        fs::remove_all(scratch);
    }

  private:
    void CompareFiles(const fs::path &work, const std::vector<std::string> &inputs) const {
        std::map<std::string, std::string> left = ReadTree(work);
        for (const std::string &name : inputs) {
            left.erase(name);
        }
        const std::map<std::string, std::string> expected = ReadTree(folder_ / "files");
        for (const auto &[name, text] : expected) {
            ASSERT_TRUE(left.count(name)) << name << " was not written";
            EXPECT_EQ(left.at(name), text) << "in " << name;
        }
        for (const auto &[name, text] : left) {
            EXPECT_TRUE(expected.count(name)) << name << " should not be there";
        }
    }

    fs::path folder_;
};

void RegisterCases() {
    std::vector<fs::path> folders;
    for (const auto &entry : fs::recursive_directory_iterator(KIVOM_CASES)) {
        if (entry.path().filename() == "log") {
            folders.push_back(entry.path().parent_path());
        }
    }
    std::sort(folders.begin(), folders.end());
    for (const fs::path &folder : folders) {
        const std::string group = "cases_" + folder.parent_path().filename().string();
        testing::RegisterTest(group.c_str(), folder.filename().c_str(), nullptr, nullptr, __FILE__, __LINE__,
                              [folder]() -> testing::Test * { return new CaseTest(folder); });
    }
}

} // namespace

int main(int argc, char **argv) {
    RegisterCases();
    testing::InitGoogleTest(&argc, argv);
    const int status = RUN_ALL_TESTS();
    return status == 0 && testing::UnitTest::GetInstance()->test_to_run_count() == 0 ? 1
                                                                                     : status; // none proves nothing
}
