// Memory shortage: whole runs in which one request for memory after the other fails.
//
// First every request fails once. Where a fresh block was asked for, the second attempt gives one, and the run
// must give the same files and, but for the warning, the same log. Where a block held was to grow, its contents
// are lost by rule: the process ends with status 1. Then every request fails twice: the size that could not be had is
// printed, the process ends with status 1. In neither case is a file left that looks whole and is not.
//
// Each run is a process of its own, with files in memory that it writes to a folder as it ends.
#include "fuzz/memorysystem.h"

#include "abaqus/LoadABQ.h"
#include "output/DumpKIVO.h"
#include "output/DumpVTK.h"
#include "store/COM.h"
#include "support/frame.h"
#include "translate/MeshAll.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>

#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

// A block that could not grow is not released, by rule: in a sanitized build that is no finding.
extern "C" const char *__asan_default_options();
extern "C" const char *__asan_default_options() {
    return "detect_leaks=0";
}

namespace {

// A row of triangles, long enough for every column to grow several times.
std::string GridDeck(const char *type, const char *group) {
    std::string deck = "*NODE, NSET=ALL\n";
    for (int i = 0; i < 30; ++i) {
        deck += std::to_string(60 - i) + ", " + std::to_string(i / 2) + ".5, " + std::to_string(i % 2) + "\n";
    }
    deck += std::string("*ELEMENT, TYPE=") + type + ", ELSET=" + group + "\n";
    for (int i = 0; i < 20; ++i) {
        deck += std::to_string(100 - 3 * i);
        for (int k = 0; k < (std::string(type) == "CPS3" ? 3 : 6); ++k) {
            deck += "," + std::to_string(60 - i - k);
        }
        deck += "\n";
    }
    return deck + "*NSET,NSET=N1\n31,40,41\n*NSET,NSET=N2\n33\n*ELSET,ELSET=E1\n100,97,94\n"
                  "*SURFACE,NAME=S\nE1,S1\n43,S2\n46,S3\n";
}

const std::map<std::string, std::string> kDecks = {
    {"triangles", GridDeck("CPS3", "A")},
    {"cohesive", GridDeck("CPE6", "C_A") + "*ELEMENT,TYPE=CPS3,ELSET=B\n3,60,59,58\n2,31,32,33\n1,40,50,60\n"},
    {"mixed", "*NODE\n9,0,0,0\n8,1,0,0\n7,0,1,0\n6,0,0,1\n5,.5,0,0\n4,.5,.5,0\n3,0,.5,0\n2,0,0,.5\n1,.5,0,.5\n"
              "*NODE\n10,0,.5,.5\n11,1,1,1\n11,2,2,2\n*ELEMENT,TYPE=C3D10,ELSET=Q\n4,9,8,7,6,5,4,3,2,1,10\n"
              "2,9,7,8,6,3,4,5,2,10,1\n*ELEMENT,TYPE=CPS3,ELSET=C_T\n3,9,8,7\n1,9,7,8\n5,8,7,6\n"
              "*ELEMENT,TYPE=C3D4\n9,9,8,7,11\n8,1,2,3,4\n7,9,8,7,99\n*ELSET,ELSET=Q\n4,2,3,1,9\n"
              "*SURFACE,NAME=A\nQ,S1\nQ,S2\nQ,S3\n8,S4\n*SURFACE,NAME=B\nQ,S4\n*NSET,NSET=N\n11,9,7,5\n"},
    {"blocks", "*NODE\n5,0,0,1\n1,0,0,0\n*NODE\n3,0,1,0\n2,1,0,0\n*NODE\n*ELEMENT,TYPE=C3D4,ELSET=V\n"
               "7,1,2,3,5\n*ELEMENT,TYPE=C3D4,ELSET=C_V\n7,1,3,2,5\n1,5,3,2,1\n*ELEMENT,TYPE=C3D4,ELSET=C_V\n"
               "7,1,2,3,9\n*SURFACE,NAME=F\n7,S4\nE,S1\n*ELSET,ELSET=E\n1,7\n*SURFACE,NAME=G\n1,S2\n"},
};

constexpr char kWarning[] = "Warning> trying to allocate memory ... \n";

constexpr char kShortage[] = "KIVOm: shortage of memory\n";

struct Outcome {
    int status; // exit status; 1000 plus the signal that ended the process
    std::string log;
    std::string errors; // standard error
    std::map<std::string, std::string> files;
    long nRequests, nFailed;
    bool bHeldFailed;
    unsigned long long failedSize;
};

std::string ReadFile(const fs::path &path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// The process that runs the job -----------------------------------------------------------------------------

void WriteWhatIsLeft() {
    std::fflush(stdout);
    for (const auto &file : TheSystem()->files) {
        std::ofstream("file." + file.first, std::ios::binary) << file.second;
    }
    const MemorySystem *system = TheSystem();
    std::ofstream("requests") << system->nRequests << ' ' << system->nFailed << ' ' << system->bHeldFailed << ' '
                              << system->failedSize;
}

[[noreturn]] void RunJob(const std::string &deck, const fs::path &folder, long failAt, long nFailing) {
    fs::current_path(folder);
    if (std::freopen("log", "w", stdout) == nullptr || std::freopen("errors", "w", stderr) == nullptr) {
        std::_Exit(99);
    }
    std::atexit(WriteWhatIsLeft);
    ResetSystem();
    MemorySystem *system = TheSystem();
    system->deck = deck;
    system->readSize = 100;
    system->pattern = 0xa5;
    system->failAt = failAt;
    system->nFailing = nFailing;
    LoadABQ("deck.inp");
    MeshAll();
    DumpKIVO();
    DumpVTK();
    FreeCOM();
    EndIfContentsLost(); // as the driver does
    std::exit(0);
}

// The process that watches ----------------------------------------------------------------------------------

// The log without the figures of the elapsed times.
std::string MaskTimes(std::string log) {
    const std::string words = "Elapsed Time: ";
    for (std::size_t at = log.find(words); at != std::string::npos; at = log.find(words, at + 1)) {
        log.erase(at + words.size(), log.find(' ', at + words.size()) - at - words.size());
    }
    return log;
}

Outcome RunInProcess(const std::string &deck, const fs::path &folder, long failAt, long nFailing) {
    fs::remove_all(folder);
    fs::create_directories(folder);
    const pid_t child = fork();
    if (child == 0) {
        RunJob(deck, folder, failAt, nFailing);
    }
    int status = 0;
    waitpid(child, &status, 0);
    Outcome outcome{};
    outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
    outcome.log = MaskTimes(ReadFile(folder / "log"));
    outcome.errors = ReadFile(folder / "errors");
    for (const auto &entry : fs::directory_iterator(folder)) {
        const std::string name = entry.path().filename().string();
        if (name.rfind("file.", 0) == 0) {
            outcome.files[name.substr(5)] = ReadFile(entry.path());
        }
    }
    std::ifstream(folder / "requests") >> outcome.nRequests >> outcome.nFailed >> outcome.bHeldFailed >>
        outcome.failedSize;
    return outcome;
}

int nWrong = 0;

void Check(bool holds, const std::string &where, const char *rule) {
    if (!holds) {
        std::fprintf(stderr, "FAILED %s: %s\n", where.c_str(), rule);
        ++nWrong;
    }
}

std::string SizeInWords(unsigned long long size) {
    char text[80];
    if (size >= 1048576) {
        std::snprintf(text, sizeof text, "%.3f Megabytes .\n", static_cast<double>(size) / 1048576.0);
    } else if (size >= 1024) {
        std::snprintf(text, sizeof text, "%.3f Kilobytes .\n", static_cast<double>(size) / 1024.0);
    } else {
        std::snprintf(text, sizeof text, "%llu Bytes .\n", size);
    }
    return text;
}

// A file that the run left: whole and right, or a beginning that nobody takes for the whole.
bool IsHonest(const std::string &name, const std::string &text, const Outcome &good) {
    const auto whole = good.files.find(name);
    if (whole == good.files.end()) {
        return text.empty();
    }
    const bool isBeginning = text.size() < whole->second.size() && whole->second.compare(0, text.size(), text) == 0;
    return text == whole->second || isBeginning;
}

void CheckOneFailure(const Outcome &good, const Outcome &run, const std::string &where) {
    Check(run.nFailed == 1, where, "the request failed");
    Check(run.status == (run.bHeldFailed ? 1 : 0), where + ", status " + std::to_string(run.status),
          "the run comes to its end unless contents are lost");
    Check(run.errors == (run.bHeldFailed ? kShortage : ""), where, "standard error names the shortage");
    const std::size_t at = run.log.find(kWarning);
    Check(at != std::string::npos && run.log.find(kWarning, at + 1) == std::string::npos, where, "one warning");
    Check(run.log.find("failed to allocate") == std::string::npos, where, "no error");
    for (const auto &file : run.files) {
        Check(IsHonest(file.first, file.second, good), where, "no file looks whole and is not");
    }
    if (!run.bHeldFailed && at != std::string::npos) {
        std::string log = run.log;
        log.erase(at, sizeof kWarning - 1);
        Check(log == good.log, where, "but for the warning, the log is the same");
        Check(run.files == good.files, where, "the files are the same");
    }
}

// Releasing a table resizes its array of columns once more. When that fails, nobody uses the block any more: the
// run goes on to its end, and but for the messages nothing shows.
bool IsUnused(const Outcome &good, const Outcome &run, const std::string &words) {
    std::string log = run.log;
    const std::size_t at = log.find(words);
    if (!run.bHeldFailed || at == std::string::npos) {
        return false;
    }
    log.erase(at, words.size());
    return run.status == 0 && log == good.log && run.files == good.files;
}

// True when the process ended at the missing block.
bool CheckTwoFailures(const Outcome &good, const Outcome &run, const std::string &where) {
    Check(run.nFailed == 2, where, "both requests failed");
    const std::string words = kWarning + ("Error> failed to allocate storage with " + SizeInWords(run.failedSize));
    if (IsUnused(good, run, words)) {
        return false;
    }
    Check(run.status == 1, where + ", status " + std::to_string(run.status), "the process ends with status 1");
    Check(run.errors == kShortage, where, "standard error names the shortage");
    Check(run.log.size() >= words.size() && run.log.compare(run.log.size() - words.size(), words.size(), words) == 0,
          where, "the log ends with the warning and the size");
    for (const auto &file : run.files) {
        Check(IsHonest(file.first, file.second, good), where, "no file looks whole and is not");
    }
    return true;
}

} // namespace

int main() {
    const fs::path folder = fs::temp_directory_path() / ("kivom-alloc-" + std::to_string(getpid()));
    long nRuns = 0;
    long nHeld = 0;
    long nEnded = 0;
    for (const auto &deck : kDecks) {
        const Outcome good = RunInProcess(deck.second, folder, 0, 0);
        Check(good.status == 0 && good.nFailed == 0 && good.nRequests > 20, deck.first, "an ordinary run succeeds");
        Check(good.files.count("mesh.input") == 1 && good.files.count("_Cells.vtk") == 1, deck.first, "files are made");
        for (long n = 1; n <= good.nRequests; ++n) {
            const std::string where = deck.first + ", request " + std::to_string(n);
            const Outcome once = RunInProcess(deck.second, folder, n, 1);
            CheckOneFailure(good, once, where);
            const Outcome twice = RunInProcess(deck.second, folder, n, 2);
            nEnded += CheckTwoFailures(good, twice, where + " twice") ? 1 : 0;
            nHeld += once.bHeldFailed ? 1 : 0;
            nRuns += 2;
        }
    }
    Check(nHeld > 10, "all decks", "some of the requests were to grow a block held");
    Check(nEnded * 20 > nRuns / 2 * 19, "all decks", "nearly every missing block is one that the run needs");
    fs::remove_all(folder);
    std::printf("%ld runs, %ld of them with a block held that could not grow: %d rules broken\n", nRuns, 2 * nHeld,
                nWrong);
    return nWrong == 0 ? 0 : 1;
}
