// Whole runs over files in memory.
#include "tests/support/runs.h"

#include "tests/support/capture.h"
#include "tests/support/fakesystem.h"
#include "tests/support/plain/plain.h"

#include "abaqus/LoadABQ.h"
#include "output/DumpKIVO.h"
#include "output/DumpVTK.h"
#include "store/COM.h"
#include "store/sys.h"
#include "translate/MeshAll.h"

#include <algorithm>

namespace {

const std::string kDeckName = "deck.inp";
const char kNoTime[] = "Elapsed Time: 0.000000 sec.\n";

// The log with every elapsed time 0. (A regular expression takes longer than the run.)
std::string WithoutTimes(std::string log) {
    const std::string words = "\nElapsed Time: "; // no deck's text stands behind a line end
    for (std::size_t at = log.find(words); at != std::string::npos; at = log.find(words, at + 1)) {
        log.replace(at + 1, log.find('\n', at + 1) - at, kNoTime);
    }
    return log;
}

std::string FirstLine(const std::string &text, std::size_t at) {
    return "'" + text.substr(at, text.find('\n', at) - at) + "'";
}

std::string TextDifference(const std::string &name, const std::string &wanted, const std::string &found) {
    if (wanted == found) {
        return "";
    }
    const std::size_t common = std::min(wanted.size(), found.size());
    std::size_t at = 0;
    std::size_t line = 0;
    for (std::size_t i = 0; i < common && wanted[i] == found[i]; ++i) {
        line = wanted[i] == '\n' ? i + 1 : line;
        at += wanted[i] == '\n' ? 1u : 0u;
    }
    return name + ", line " + std::to_string(at + 1) + ": wanted " + FirstLine(wanted, line) + ", found " +
           FirstLine(found, line);
}

} // namespace

void RunPhases(bool bVTK) {
    LoadABQ(kDeckName.c_str());
    std::printf("%s", kNoTime);
    MeshAll();
    std::printf("\nDumping files ...");
    DumpKIVO();
    if (bVTK) {
        DumpVTK();
    }
    std::printf("\n%s", kNoTime);
    FreeCOM();
    ForgetColumnCounts(); // the next run is a fresh start
}

std::map<std::string, std::string> FilesOfRun() {
    std::map<std::string, std::string> files;
    for (const std::string &name : fake::FileNames()) {
        if (name != kDeckName) {
            files[name] = fake::GetFile(name);
        }
    }
    return files;
}

Run RunProgram(const std::string &deck, bool bVTK) {
    fake::PutFile(kDeckName, deck);
    const std::string log = Printed([bVTK] { RunPhases(bVTK); });
    return {WithoutTimes(log), FilesOfRun()};
}

Run RunPlain(const std::string &deck, bool bVTK) {
    Run run;
    const PlainPut put = [&run](const std::string &path, const std::string &text) {
        run.files[path] = text;
        return true;
    };
    PlainTranslate(kDeckName, deck, bVTK, put, &run.log);
    return run;
}

std::string FirstDifference(const Run &wanted, const Run &found) {
    std::string difference = TextDifference("log", wanted.log, found.log);
    for (const auto &[name, text] : wanted.files) {
        const auto other = found.files.find(name);
        difference += other == found.files.end() ? "no file " + name : TextDifference(name, text, other->second);
    }
    for (const auto &[name, text] : found.files) {
        difference += wanted.files.count(name) == 1 ? "" : "a file " + name;
    }
    return difference;
}
