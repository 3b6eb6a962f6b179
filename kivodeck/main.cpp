// kivodeck: what a deck means, beside what the translator holds of it.
//
// Exit status: 0 clean, 1 findings of the level that --fail-on names, 2 wrong usage or a file that cannot be read or
// written.
#include "kivodeck/audit.h"
#include "kivodeck/flat.h"
#include "kivodeck/report.h"
#include "kivodeck/terminal.h"

#include "account/check.h"
#include "account/reading.h"
#include "driver/KIVOm.h"
#include "support/system.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <new>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace {

constexpr int kClean = 0;
constexpr int kFindings = 1;
constexpr int kFailed = 2;

constexpr char kShortage[] = "memory is short";
constexpr char kFault[] = "a fault of the program itself; please report it with the deck";

struct Options {
    std::vector<std::string> decks;
    std::string code;
    std::string format = "text";
    std::string failOn; // "": the verb's own
    bool all = false;
    kivodeck::AuditOptions audit;
    kivodeck::FlatJob flat;
    std::string groups;
    std::string overlaps = "smallest";
    bool noSplit = false;
    bool force = false;
    bool vtk = false;
    bool keep = false;
};

constexpr char kMeshFile[] = "mesh.input";
constexpr char kFlatBeside[] = "mesh.flat.inp"; // what `run` translates

// Standard output as the process began with it: whoever reports at its end may not find it in place.
std::FILE *output;
bool wantsJson = false;
bool translating = false; // the translator's phases are at work

int Print(const std::string &text, int status) {
    const bool written = std::fwrite(text.data(), 1, text.size(), output) == text.size();
    return std::fflush(output) == 0 && written ? status : kFailed;
}

int Fail(const std::string &code, const std::string &text) {
    std::fprintf(stderr, "kivodeck: %s\n", text.c_str());
    return wantsJson ? Print(kivodeck::JsonFailure(code, text), kFailed) : kFailed;
}

// The report of a run that cannot go on: whole, and made without any more memory.
int FailPlainly(const char *text) {
    std::fprintf(stderr, "kivodeck: %s\n", text);
    if (wantsJson) {
        std::fprintf(
            output,
            "{\"schema_version\": 1, \"findings\": [{\"code\": \"unreadable\", \"level\": \"error\", \"file\": \"\", "
            "\"line\": 0, \"column\": 0, \"text\": \"%s\", \"count\": 1}], "
            "\"verdict\": {\"errors\": 1, \"warnings\": 0, \"notes\": 0}}\n",
            text);
    }
    std::fflush(output);
    return kFailed;
}

// The translator's functions end the process when memory is short. The exit status is then that of a deck that cannot
// be read.
void EndInOrder() {
    if (account::ReaderAtWork() || translating) {
        kivodeck::Leftover::RemoveAll();
        std::_Exit(FailPlainly(kShortage));
    }
}

int StatusOf(const account::Report &report, const std::string &failOn) {
    if (!report.readable) {
        return kFailed;
    }
    return report.errors > 0 || (failOn == "warning" && report.warnings > 0) ? kFindings : kClean;
}

int Check(const Options &options) {
    std::vector<account::Report> reports;
    int status = kClean;
    for (const std::string &deck : options.decks) {
        account::Report report;
        {
            const kivodeck::Progress progress("kivodeck: checking " + deck);
            report = account::CheckDeck(deck);
        }
        status = std::max(status, StatusOf(report, options.failOn));
        if (options.format == "text") {
            status = Print(kivodeck::TextReport(report, {kivodeck::WantsColour(), options.all}), status);
        } else {
            reports.push_back(std::move(report));
        }
    }
    return options.format == "text" ? status : Print(kivodeck::JsonReport(reports), status);
}

// Why a file cannot be written under that name, or "". What is there is looked at, not opened: a pipe would keep the
// program waiting, and a device would be gone when the new file takes its name.
std::string WhyNotTo(const std::string &path, bool force) {
    std::error_code error;
    const std::filesystem::file_status there = std::filesystem::status(path, error);
    if (path.empty() || !std::filesystem::exists(there)) {
        return "";
    }
    if (!std::filesystem::is_regular_file(there)) {
        return path + " is no file that could be overwritten";
    }
    return force ? "" : path + " is there already (--force overwrites it)";
}

// Why the files that are asked for cannot be written, or "".
std::string WhyNotTo(const kivodeck::FlatJob &job, bool force) {
    if (!job.map.empty() && kivodeck::IsSameFile(job.map, job.deck)) {
        return job.map + " is the deck itself";
    }
    if (!job.map.empty() && kivodeck::IsSameFile(job.map, job.flat)) {
        return job.map + " cannot be the plain deck and its map";
    }
    const std::string whyNot = WhyNotTo(job.flat, force);
    return whyNot.empty() ? WhyNotTo(job.map, force) : whyNot;
}

int StatusOf(const kivodeck::FlatResult &result, const std::string &failOn) {
    return result.failure.empty() ? StatusOf(result.report, failOn) : kFailed;
}

// The report of a plain deck made or not made, with lines for text: before the verdict and behind it.
int PrintFlat(const kivodeck::FlatResult &result, const Options &options, const kivodeck::Files &files,
              const std::string &lines, const std::string &behind, int status) {
    if (!result.failure.empty()) {
        return Fail("unwritable", result.failure);
    }
    return Print(options.format == "text"
                     ? kivodeck::TextReport(result.report, {kivodeck::WantsColour(), options.all}, lines, behind)
                     : kivodeck::JsonReport(result.report, files),
                 status);
}

// What the plain deck holds, on one line.
std::string FlatLine(const kivodeck::FlatResult &result, const std::string &flat) {
    const account::Summary &held = result.report.reading;
    const auto size = [](const std::vector<account::Count> &list) { return static_cast<long long>(list.size()); };
    return flat + ": " +
           (result.made ? kivodeck::Plural(held.nodes, "node") + ", " + kivodeck::Plural(held.elements, "element") +
                              ", " + kivodeck::Plural(size(held.cellGroups), "cell group") + ", " +
                              kivodeck::Plural(size(held.nodeSets), "node set") + ", " +
                              kivodeck::Plural(size(held.surfaces), "surface")
                        : "not written") +
           "\n";
}

kivodeck::FlatResult FlattenWatched(const kivodeck::FlatJob &job) {
    const kivodeck::Progress progress("kivodeck: flattening " + job.deck);
    return kivodeck::Flatten(job);
}

int Flatten(const Options &options) {
    const std::string whyNot = WhyNotTo(options.flat, options.force);
    if (!whyNot.empty()) {
        return Fail("usage", whyNot);
    }
    const kivodeck::FlatResult result = FlattenWatched(options.flat);
    const kivodeck::Files files{result.made ? options.flat.flat : "", "", ""};
    return PrintFlat(result, options, files, FlatLine(result, options.flat.flat), "", StatusOf(result, options.failOn));
}

// The translator's own phases, with their log: on standard error where standard output holds JSON. Their exit status.
int Translate(const Options &options, std::string deck) {
    char program[] = "KIVOm";
    char vtk[] = "--vtk";
    char *arguments[] = {program, deck.data(), options.vtk ? vtk : nullptr, nullptr};
    translating = true;
    stdout = options.format == "json" ? stderr : output;
    const int status = RunKIVOM(options.vtk ? 3 : 2, arguments);
    stdout = output;
    translating = false;
    return status;
}

// The groups that the plain deck has without members: the mesh is as it should be when it has them so.
std::set<kivodeck::GroupName> EmptyInDeck(const account::Summary &reading) {
    std::set<kivodeck::GroupName> empty;
    for (const auto &[kind, groups] : {std::make_pair(audit::Subject::nodeGroup, &reading.nodeSets),
                                       std::make_pair(audit::Subject::faceGroup, &reading.surfaces),
                                       std::make_pair(audit::Subject::cellGroup, &reading.cellGroups)}) {
        for (const account::Count &group : *groups) {
            if (group.count == 0) {
                empty.emplace(kind, group.name);
            }
        }
    }
    return empty;
}

// The mesh of a run that came to its end. Groups that are empty in the plain deck, too, fail nothing: that is what the
// deck means, or what its sets leave each other, and they are counted.
kivodeck::MeshInShort JudgeMesh(const account::Summary &reading, kivodeck::Files *files) {
    kivodeck::MeshInShort mesh = kivodeck::LookAtMesh(kMeshFile);
    const std::set<kivodeck::GroupName> inDeck = EmptyInDeck(reading);
    const bool known = std::all_of(mesh.empty.begin(), mesh.empty.end(),
                                   [&inDeck](const kivodeck::GroupName &group) { return inDeck.count(group) == 1; });
    if (known && !mesh.empty.empty()) {
        mesh.failed.erase(std::find(mesh.failed.begin(), mesh.failed.end(), audit::KindOf(audit::Check::groups).word));
        for (const kivodeck::GroupName &group : mesh.empty) {
            files->emptyGroups.push_back(group.second);
        }
    }
    files->failedChecks = mesh.failed;
    return mesh;
}

// What the mesh holds, and what an audit says of it.
std::string MeshLine(const kivodeck::MeshInShort &mesh, std::size_t nEmpty) {
    std::string line = std::string(kMeshFile) + ": " + kivodeck::Plural(mesh.counts.nodes, "node") + ", " +
                       kivodeck::Plural(mesh.counts.faces, "face") + ", " + kivodeck::Plural(mesh.counts.cells, "cell");
    if (nEmpty > 0) {
        line += ", " + kivodeck::Plural(static_cast<long long>(nEmpty), "empty group");
    }
    line += mesh.failed.empty() ? ": mesh ok" : ": mesh fails";
    for (const std::string &check : mesh.failed) {
        line += (&check == &mesh.failed.front() ? " " : ", ") + check;
    }
    return line + (mesh.failed.empty() ? "\n" : " (kivodeck audit shows where)\n");
}

// An old mesh does not outlive a run that fails; a deck that is not there at all is a slip, and costs nothing.
bool CanBeRead(const std::string &deck) {
    std::error_code error;
    return std::filesystem::is_regular_file(deck, error) && std::ifstream(deck).good();
}

// Why `run` would take a file of the user's for its own, or "".
std::string WhyNotToRun(const Options &options) {
    for (const std::string &path : {options.flat.deck, options.flat.map}) {
        if (!path.empty() && kivodeck::IsSameFile(path, kMeshFile)) {
            return path + " is a name for what this command writes";
        }
    }
    const std::string whyNot = WhyNotTo(kMeshFile, true);
    return whyNot.empty() ? WhyNotTo(options.flat, options.force) : whyNot;
}

int RunAll(Options options) {
    // A plain deck that nobody asked for takes no name that is in use.
    options.flat.flat = options.keep ? kFlatBeside : kivodeck::FreeName(kFlatBeside);
    const std::string whyNot = WhyNotToRun(options);
    if (!whyNot.empty()) {
        return Fail("usage", whyNot);
    }
    kivodeck::Files files;
    if (CanBeRead(options.flat.deck)) {
        files.removed = std::remove(kMeshFile) == 0 ? kMeshFile : "";
        if (files.removed.empty() && errno != ENOENT) {
            return Fail("unwritable", std::string(kMeshFile) + " cannot be removed: " + std::strerror(errno));
        }
    }
    const kivodeck::Leftover plainDeck(options.keep ? "" : options.flat.flat);
    kivodeck::FlatResult result = FlattenWatched(options.flat);
    result.failure += result.failure.empty() || files.removed.empty() ? "" : "; an old mesh.input was removed";
    if (!result.made) {
        return PrintFlat(result, options, files, "",
                         std::string(kMeshFile) + ": not written" +
                             (files.removed.empty() ? "\n" : "; an old one was removed\n"),
                         StatusOf(result, options.failOn));
    }
    const std::string lines = FlatLine(result, options.keep ? kFlatBeside : "the plain deck");
    files.plainDeck = options.keep ? kFlatBeside : "";
    if (Translate(options, options.flat.flat) != EXIT_SUCCESS) {
        return PrintFlat(result, options, files, lines, std::string(kMeshFile) + ": not written whole\n", kFailed);
    }
    files.mesh = kMeshFile;
    const kivodeck::MeshInShort mesh = JudgeMesh(result.report.reading, &files);
    const int status = StatusOf(result, options.failOn);
    return PrintFlat(result, options, files, lines, MeshLine(mesh, files.emptyGroups.size()),
                     mesh.failed.empty() ? status : std::max(status, kFindings));
}

int Audit(const Options &options) {
    const kivodeck::AuditRun run = kivodeck::RunAudit(options.audit);
    if (!run.complaint.empty()) {
        std::fprintf(stderr, "kivodeck: %s\n", run.complaint.c_str());
    }
    return Print(run.report, run.status);
}

// A word may name a finding and a check.
int Explain(const Options &options) {
    if (options.code.empty()) {
        return Print(kivodeck::ExplainAll(options.format) + (options.format == "text" ? kivodeck::AuditNames() : ""),
                     kClean);
    }
    account::Code code;
    const bool isCode = account::FindCode(options.code, &code);
    std::string text = isCode ? kivodeck::ExplainOne(code, options.format) : "";
    if (!isCode || options.format == "text") {
        const bool isCheck = kivodeck::ExplainAudit(options.code, options.format, &text);
        if (!isCode && !isCheck) {
            return Fail("usage", "there is no code " + options.code + " (kivodeck explain lists them)");
        }
    }
    return Print(text, kClean);
}

void DescribeCheck(CLI::App *verb, Options *options) {
    verb->add_option("DECK", options->decks, "Abaqus input decks")->required();
    verb->add_option("--format", options->format, "text or json")->check(CLI::IsMember({"text", "json"}));
    verb->add_option("--fail-on", options->failOn, "level that makes the exit status 1: error, warning")
        ->check(CLI::IsMember({"error", "warning"}))
        ->option_text("LEVEL");
    verb->add_flag("--all", options->all, "all findings, instead of ten for each code");
}

// Zero leaves no mesh, and what is infinite or no number no coordinates.
std::string IsFactor(const std::string &text) {
    const double factor = std::strtod(text.c_str(), nullptr);
    return std::isfinite(factor) && factor != 0 ? "" : "the factor must be a finite number other than 0, not " + text;
}

void DescribeFlat(CLI::App *verb, Options *options) {
    verb->add_option("DECK", options->flat.deck, "Abaqus input deck")->required();
    verb->add_option("--groups", options->groups, "name cell groups after sections or element sets")
        ->check(CLI::IsMember({"sections", "sets"}));
    verb->add_option("--overlaps", options->overlaps, "who gets a node or face of several sets")
        ->check(CLI::IsMember({"smallest", "first", "split"}));
    verb->add_option("--scale", options->flat.options.scale, "factor for all coordinates")->check(IsFactor);
    verb->add_option("--map", options->flat.map, "file that lists every number and name that changed");
    verb->add_flag("--no-split", options->noSplit, "refuse elements that would have to be split");
    verb->add_flag("--allow-loss", options->flat.allowLoss, "write what is left when there are errors");
    verb->add_option("--format", options->format, "text or json")->check(CLI::IsMember({"text", "json"}));
    verb->add_option("--fail-on", options->failOn, "level that makes the exit status 1: error, warning")
        ->check(CLI::IsMember({"error", "warning"}))
        ->option_text("LEVEL");
    verb->add_flag("--all", options->all, "all findings, instead of ten for each code");
    verb->add_flag("--force", options->force, "overwrite existing files");
}

void DescribeFlatten(CLI::App *verb, Options *options) {
    DescribeFlat(verb, options);
    verb->add_option("-o,--output", options->flat.flat, "the plain deck")->required();
}

void DescribeRun(CLI::App *verb, Options *options) {
    DescribeFlat(verb, options);
    verb->add_flag("--vtk", options->vtk, "also write VTK files");
    verb->add_flag("--keep", options->keep, std::string("keep the plain deck, ") + kFlatBeside);
}

void DescribeAudit(CLI::App *verb, Options *options) {
    kivodeck::AuditOptions &audit = options->audit;
    verb->add_option("MESH", audit.mesh, "the mesh file (default: mesh.input)");
    verb->add_option("--format", audit.format, "text or json")->check(CLI::IsMember({"text", "json"}));
    verb->add_option("--vtk", audit.vtk, "file for the cells, faces and nodes that fail");
    verb->add_option("--limit", audit.limits, "MEASURE=LEAST:MOST: count the cells outside")->expected(1)->take_all();
    verb->add_flag("--counts", audit.counts, "only list sizes and groups");
}

void DescribeExplain(CLI::App *verb, Options *options) {
    verb->add_option("CODE", options->code, "a finding, check or measure; all if left out");
    verb->add_option("--format", options->format, "text, json, man or markdown")
        ->check(CLI::IsMember({"text", "json", "man", "markdown"}));
}

// Whether the command line asks for JSON: also one that is wrong in other ways.
bool AsksForJson(int argc, char **argv) {
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--format=json") == 0 ||
            (std::strcmp(argv[i], "--format") == 0 && i + 1 < argc && std::strcmp(argv[i + 1], "json") == 0)) {
            return true;
        }
    }
    return false;
}

flatten::Options FlatOptions(const Options &options) {
    flatten::Options flat = options.flat.options;
    flat.split = !options.noSplit;
    flat.groups = options.groups == "sections" ? flatten::Groups::sections
                  : options.groups == "sets"   ? flatten::Groups::sets
                                               : flatten::Groups::lines;
    flat.overlaps = options.overlaps == "first"   ? flatten::Overlaps::first
                    : options.overlaps == "split" ? flatten::Overlaps::split
                                                  : flatten::Overlaps::smallest;
    return flat;
}

bool IsCommand(const CLI::App &app, const std::string &word) {
    const std::vector<const CLI::App *> commands = app.get_subcommands([](const CLI::App *) { return true; });
    return std::any_of(commands.begin(), commands.end(),
                       [&](const CLI::App *command) { return command->get_name() == word; });
}

int Run(int argc, char **argv) {
    Options options;
    CLI::App app("kivodeck checks and flattens Abaqus decks, translates them, and audits the mesh", "kivodeck");
    app.set_version_flag("--version", std::string("kivodeck ") + KIVODECK_VERSION);
    app.require_subcommand(1);
    app.footer("Exit status: 0 fine, 1 findings (--fail-on) or failed checks, 2 could not run.");
    CLI::App *check = app.add_subcommand("check", "report what KIVOm alone would lose of a deck");
    CLI::App *flat = app.add_subcommand("flatten", "write the same mesh as a plain deck");
    CLI::App *run = app.add_subcommand("run", "flatten and translate a deck, audit the mesh");
    CLI::App *audit = app.add_subcommand("audit", "check a mesh.input");
    CLI::App *explain = app.add_subcommand("explain", "describe a finding, a check or a measure");
    DescribeCheck(check, &options);
    DescribeFlatten(flat, &options);
    DescribeRun(run, &options);
    DescribeAudit(audit, &options);
    DescribeExplain(explain, &options);
    if (argc > 1 && argv[1][0] != '-' && !IsCommand(app, argv[1])) {
        std::error_code error;
        const bool isFile = std::filesystem::exists(argv[1], error);
        return Fail("usage",
                    std::string("there is no command ") + argv[1] +
                        (isFile ? std::string(" (kivodeck run ") + argv[1] + "?)" : " (kivodeck --help lists them)"));
    }
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success &help) { // --help, --version
        return app.exit(help) == 0 && std::fflush(output) == 0 ? kClean : kFailed;
    } catch (const CLI::ParseError &error) {
        return Fail("usage", std::string(error.what()) + " (kivodeck --help tells more)");
    }
    options.flat.options = FlatOptions(options);
    if (flat->parsed() || run->parsed()) {
        options.failOn = options.failOn.empty() ? "error" : options.failOn;
        return flat->parsed() ? Flatten(options) : RunAll(options);
    }
    options.failOn = options.failOn.empty() ? "warning" : options.failOn;
    return check->parsed() ? Check(options) : audit->parsed() ? Audit(options) : Explain(options);
}

} // namespace

int main(int argc, char **argv) {
    SystemPrepare();
    output = stdout;
    wantsJson = AsksForJson(argc, argv);
    std::atexit(EndInOrder);
    try {
        return Run(argc, argv);
    } catch (const std::bad_alloc &) {
        return FailPlainly(kShortage);
    } catch (...) {
        return FailPlainly(kFault);
    }
}
