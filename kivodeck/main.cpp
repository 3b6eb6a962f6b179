// kivodeck: what a deck means, beside what the translator holds of it.
//
// Exit status: 0 clean, 1 findings of the level that --fail-on names, 2 wrong usage or a file that cannot be read or
// written.
#include "kivodeck/audit.h"
#include "kivodeck/report.h"
#include "kivodeck/terminal.h"

#include "account/check.h"
#include "account/reading.h"
#include "support/system.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>
#include <vector>

namespace {

constexpr int kClean = 0;
constexpr int kFindings = 1;
constexpr int kFailed = 2;

constexpr char kShortage[] = "memory is short";

struct Options {
    std::vector<std::string> decks;
    std::string code;
    std::string format = "text";
    std::string failOn = "warning";
    bool all = false;
    kivodeck::AuditOptions audit;
};

// Standard output as the process began with it: whoever reports at its end may not find it in place.
std::FILE *output;
bool wantsJson = false;

int Print(const std::string &text, int status) {
    const bool written = std::fwrite(text.data(), 1, text.size(), output) == text.size();
    return std::fflush(output) == 0 && written ? status : kFailed;
}

int Fail(const std::string &code, const std::string &text) {
    std::fprintf(stderr, "kivodeck: %s\n", text.c_str());
    return wantsJson ? Print(kivodeck::JsonFailure(code, text), kFailed) : kFailed;
}

// The translator's functions end the process when memory is short. The report is made whole all the same, without any
// more memory, and the exit status is that of a deck that cannot be read.
void EndInOrder() {
    if (!account::ReaderAtWork()) {
        return;
    }
    std::fprintf(stderr, "kivodeck: %s\n", kShortage);
    if (wantsJson) {
        std::fputs(
            "{\"schema_version\": 1, \"findings\": [{\"code\": \"unreadable\", \"level\": \"error\", \"file\": \"\", "
            "\"line\": 0, \"column\": 0, \"text\": \"memory is short\", \"count\": 1}], "
            "\"verdict\": {\"errors\": 1, \"warnings\": 0, \"notes\": 0}}\n",
            output);
    }
    std::fflush(output);
    std::_Exit(kFailed);
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
        ->check(CLI::IsMember({"error", "warning"}));
    verb->add_flag("--all", options->all, "all findings, not ten of a code");
}

void DescribeAudit(CLI::App *verb, Options *options) {
    kivodeck::AuditOptions &audit = options->audit;
    verb->add_option("MESH", audit.mesh, "the mesh file (default: mesh.input)");
    verb->add_option("--format", audit.format, "text or json")->check(CLI::IsMember({"text", "json"}));
    verb->add_option("--vtk", audit.vtk, "file for the cells, faces and nodes that fail");
    verb->add_option("--limit", audit.limits, "MEASURE=LEAST:MOST, beyond which cells are counted")
        ->expected(1)
        ->take_all();
    verb->add_flag("--counts", audit.counts, "only sizes and groups, without judging");
}

void DescribeExplain(CLI::App *verb, Options *options) {
    verb->add_option("CODE", options->code, "a finding, check or measure; without it all");
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

int Run(int argc, char **argv) {
    Options options;
    CLI::App app("kivodeck: what an Abaqus deck means, and what KIVOm will hold of it", "kivodeck");
    app.set_version_flag("--version", std::string("kivodeck ") + KIVODECK_VERSION);
    app.require_subcommand(1);
    app.footer("Exit status: 0 clean, 1 findings, 2 wrong usage or unreadable files.");
    CLI::App *check = app.add_subcommand("check", "what the translator will not hold of a deck");
    CLI::App *audit = app.add_subcommand("audit", "a mesh.input judged");
    CLI::App *explain = app.add_subcommand("explain", "what a finding means, and what to do");
    DescribeCheck(check, &options);
    DescribeAudit(audit, &options);
    DescribeExplain(explain, &options);
    if (argc > 1 && argv[1][0] != '-' && argv[1] != check->get_name() && argv[1] != audit->get_name() &&
        argv[1] != explain->get_name()) {
        return Fail("usage", std::string("there is no command ") + argv[1] + " (kivodeck --help lists them)");
    }
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success &help) { // --help, --version
        return app.exit(help) == 0 && std::fflush(output) == 0 ? kClean : kFailed;
    } catch (const CLI::ParseError &error) {
        return Fail("usage", std::string(error.what()) + " (kivodeck --help tells more)");
    }
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
        return Fail("unreadable", kShortage);
    }
}
