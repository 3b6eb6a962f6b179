// From a deck to a plain deck that is known to be right.
#include "kivodeck/flat.h"

#include "support/system.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <utility>

namespace kivodeck {

namespace {

using account::Code;
using account::Finding;
using account::Level;
using account::Report;

constexpr const char *kBeside = ".part"; // behind the name of a file that is not whole yet

// ORDER: flatten::Code.
constexpr Code kFromFlatten[] = {
    Code::cannotBeKept, Code::noCell,         Code::edgeLines,      Code::mustBeSplit,    Code::splitFails,
    Code::isSplit,      Code::splitSaved,     Code::strayTriangles, Code::outOfPlane,     Code::tooSmall,
    Code::flat,         Code::dividedGroup,   Code::cutLoose,       Code::mixedOrders,    Code::skinSurface,
    Code::skinKnown,    Code::skinSet,        Code::facesLost,      Code::shellSide,      Code::overlapNodes,
    Code::overlapFaces, Code::overlapDivided, Code::nameReplaced,   Code::tooManyNumbers, Code::scaledTooFar,
};
static_assert(sizeof kFromFlatten / sizeof kFromFlatten[0] == flatten::kCodes, "each finding has a row");

// What the deck says of itself: the translator's troubles with a definition that comes twice are none of the plain
// deck's.
Finding FromDeck(const deck::Finding &finding) {
    Finding own = account::FromDeck(finding);
    switch (finding.code) {
    case deck::Code::nodeTwice:
        own.code = Code::nodeRedefined;
        break;
    case deck::Code::elementTwice:
        own.code = Code::elementRedefined;
        break;
    case deck::Code::surfaceTwice:
        own.code = Code::surfacesUnited;
        break;
    default:
        break;
    }
    return own;
}

void TakeFindings(const std::vector<deck::Finding> &findings, Report *report) {
    for (const deck::Finding &finding : findings) {
        report->findings.push_back(FromDeck(finding));
    }
}

// The plain deck in memory; the deck's own is gone when this returns.
flatten::Flat ReadAndFlatten(const FlatJob &job, Report *report) {
    deck::Deck deck = deck::ReadDeck(job.deck, job.limits);
    report->readable = deck.readable;
    report->files = deck.files;
    report->otherKeywords = deck.otherKeywords;
    flatten::Flat flat;
    if (deck.readable) {
        deck::Mesh mesh = Assemble(deck);
        TakeFindings(deck.findings, report);
        TakeFindings(mesh.findings, report);
        flat = flatten::Flatten(deck, &mesh, job.options, !job.map.empty());
        for (const flatten::Finding &finding : flat.findings) {
            report->findings.push_back(
                {kFromFlatten[static_cast<int>(finding.code)], finding.place, finding.words, finding.count});
        }
    } else {
        TakeFindings(deck.findings, report);
    }
    if (report->files.empty()) {
        report->files.push_back({job.deck, -1, 0});
    }
    PutInOrder(report);
    if (report->readable && report->errors == 0 && flat.plain.cellNumber.empty()) { // none but masses and the like
        report->findings.push_back({Code::emptyDeck, {0, 0, 0}, {}, 1});
        PutInOrder(report);
    }
    return flat;
}

// Writes the file whole with what the call puts into it; else the reason.
template <class Call> std::string WriteFile(const std::string &path, Call call) {
    const int file = SystemOpenToWrite(path.c_str());
    bool good = file != -1 && call(file);
    int reason = errno;
    if (file != -1 && !SystemClose(file)) {
        reason = good ? errno : reason;
        good = false;
    }
    return good ? "" : path + " cannot be written: " + std::strerror(reason);
}

std::string WriteFiles(const FlatJob &job, const flatten::Flat &flat) {
    std::string failure = WriteFile(job.flat, [&](int file) { return WriteDeck(flat.plain, file); });
    if (failure.empty() && !job.map.empty()) {
        failure = WriteFile(job.map, [&](int file) { return WriteMap(flat.changes, file); });
    }
    return failure;
}

bool IsError(const Finding &finding) {
    return KindOf(finding.code).level == Level::error;
}

// Errors of the plain deck that the deck does not have. Where elements were lost with a word none may be left.
void TakeOwnErrors(const Report &own, Report *report) {
    std::vector<Finding> faults;
    std::vector<char> toldOf(account::kCodes, 0);
    for (const Finding &finding : report->findings) {
        toldOf[static_cast<std::size_t>(finding.code)] = 1;
    }
    for (const Finding &finding : own.findings) {
        const bool told = toldOf[static_cast<std::size_t>(finding.code)] != 0;
        const bool follows = finding.code == Code::emptyDeck && report->errors > 0;
        if (IsError(finding) && !told && !follows) {
            faults.push_back({Code::plainDeckWrong,
                              {0, 0, 0},
                              {"line " + std::to_string(finding.place.line) + ": " + TextOf(finding)},
                              1});
        }
    }
    report->findings.insert(report->findings.end(), faults.begin(), faults.end());
    PutInOrder(report);
}

} // namespace

Leftover *Leftover::last = nullptr;

Leftover::Leftover(std::string path) : path_(std::move(path)), before_(last) {
    last = this;
}

Leftover::~Leftover() {
    Remove();
    last = before_;
}

void Leftover::Remove() const {
    if (!path_.empty()) {
        std::remove(path_.c_str());
    }
}

void Leftover::RemoveAll() {
    for (const Leftover *leftover = last; leftover != nullptr; leftover = leftover->before_) {
        leftover->Remove();
    }
}

std::string FreeName(const std::string &path) {
    namespace fs = std::filesystem;
    const auto isTaken = [](const std::string &name) { // what cannot be looked at cannot be written, either
        std::error_code error;
        const fs::file_type type = fs::symlink_status(name, error).type();
        return type != fs::file_type::not_found && type != fs::file_type::none && type != fs::file_type::unknown;
    };
    std::string name = path;
    for (int n = 2; isTaken(name); ++n) {
        name = path + "~" + std::to_string(n);
    }
    return name;
}

bool IsSameFile(const std::string &a, const std::string &b) {
    namespace fs = std::filesystem;
    std::error_code error;
    return fs::equivalent(a, b, error) ||
           fs::weakly_canonical(fs::absolute(a, error), error) == fs::weakly_canonical(fs::absolute(b, error), error);
}

FlatResult MakeFlat(const FlatJob &job) {
    FlatResult result;
    result.report.path = job.deck;
    {
        const flatten::Flat flat = ReadAndFlatten(job, &result.report);
        if (!result.report.readable || (result.report.errors > 0 && !job.allowLoss)) {
            return result;
        }
        result.failure = WriteFiles(job, flat);
    }
    if (!result.failure.empty()) {
        return result;
    }
    const long long before = result.report.errors;
    const Report own = account::CheckDeck(job.flat, job.limits);
    TakeOwnErrors(own, &result.report);
    result.report.meaning = own.meaning;
    result.report.reading = own.reading;
    result.made = own.readable && result.report.errors == before;
    return result;
}

FlatResult Flatten(const FlatJob &job) {
    FlatJob beside = job;
    beside.flat = FreeName(job.flat + kBeside);
    beside.map = job.map.empty() ? "" : FreeName(job.map + kBeside);
    const Leftover flat(beside.flat);
    const Leftover map(beside.map);
    FlatResult result = MakeFlat(beside);
    for (const deck::File &file : result.report.files) {
        for (const std::string &path : {job.flat, job.map}) {
            if (result.made && !path.empty() && file.includedFrom >= 0 && IsSameFile(path, file.path)) {
                result.failure = path + " is part of the deck";
                result.made = false;
            }
        }
    }
    for (const auto &[from, to] : {std::make_pair(beside.map, job.map), std::make_pair(beside.flat, job.flat)}) {
        if (result.made && !from.empty() && std::rename(from.c_str(), to.c_str()) != 0) {
            result.failure = to + " cannot be written: " + std::strerror(errno);
            result.made = false;
        }
    }
    return result;
}

} // namespace kivodeck
