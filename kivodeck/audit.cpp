// The verb audit from the file's name to the exit status.
#include "kivodeck/audit.h"

#include "kivodeck/flat.h"
#include "kivodeck/terminal.h"

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>

namespace kivodeck {

namespace {

AuditRun Fail(const AuditOptions &options, const std::string &path, const std::string &code,
              const meshfile::Error &error) {
    AuditRun run;
    run.status = 2;
    run.complaint = (path.empty() ? "" : path + ": ") + meshfile::Describe(error);
    if (options.format == "json") {
        run.report = AuditFailure(path, code, error.line, error.text);
    }
    return run;
}

// "measure=least:most"; either number may be left out.
bool TakeLimit(const std::string &text, audit::Limits *limits) {
    const std::size_t equals = text.find('=');
    const std::size_t colon = text.find(':', equals == std::string::npos ? 0 : equals);
    audit::Measure measure{};
    if (equals == std::string::npos || colon == std::string::npos ||
        !audit::FindMeasure(text.substr(0, equals), &measure)) {
        return false;
    }
    audit::Range range{-HUGE_VAL, HUGE_VAL};
    const auto take = [](const std::string &field, double *value) {
        char *end = nullptr;
        const double number = std::strtod(field.c_str(), &end);
        if (!field.empty()) {
            *value = number;
        }
        return *end == '\0' && !std::isnan(number);
    };
    if (!take(text.substr(equals + 1, colon - equals - 1), &range.least) ||
        !take(text.substr(colon + 1), &range.most)) {
        return false;
    }
    (*limits)[measure] = range;
    return true;
}

// False with errno set.
bool WriteFile(const std::string &path, const std::string &text) {
    std::FILE *file = std::fopen(path.c_str(), "wb");
    if (file == nullptr) {
        return false;
    }
    const bool written = std::fwrite(text.data(), 1, text.size(), file) == text.size();
    const int reason = errno;
    const bool closed = std::fclose(file) == 0;
    errno = written ? errno : reason;
    return written && closed;
}

// Why the file of what fails cannot be written, or "". Only an older one of its kind is written over.
std::string WhyNotTo(const std::string &path, const std::string &mesh) {
    constexpr char kBegin[] = "# vtk DataFile";
    std::error_code error;
    if (path.empty() || !std::filesystem::exists(path, error)) {
        return "";
    }
    if (IsSameFile(path, mesh)) {
        return "is the mesh itself";
    }
    if (!std::filesystem::is_regular_file(path, error)) {
        return ""; // nothing in it to lose
    }
    char begin[sizeof kBegin] = {};
    std::FILE *file = std::fopen(path.c_str(), "rb");
    if (file != nullptr) {
        begin[std::fread(begin, 1, sizeof kBegin - 1, file)] = '\0';
        std::fclose(file);
    }
    return std::strcmp(begin, kBegin) == 0 ? "" : "is there already, and no VTK file";
}

// An empty file can be read, as what the translator leaves of no mesh at all; to a solver it is none.
meshfile::Result ReadMesh(const std::string &path) {
    const Progress progress("kivodeck: reading " + path);
    meshfile::Result result = meshfile::Read(path);
    if (result.Ok() && result.mesh.isEmptyFile) {
        result.error = {1, "the file is empty"};
    }
    return result;
}

} // namespace

AuditRun RunAudit(const AuditOptions &options) {
    audit::Limits limits;
    for (const std::string &limit : options.limits) {
        if (!TakeLimit(limit, &limits)) {
            return Fail(options, "", "usage", {0, "--limit takes MEASURE=LEAST:MOST, not " + limit});
        }
    }
    const std::string whyNot = WhyNotTo(options.vtk, options.mesh);
    if (!whyNot.empty()) {
        return Fail(options, options.vtk, "usage", {0, whyNot});
    }
    const meshfile::Result result = ReadMesh(options.mesh);
    if (!result.Ok()) {
        return Fail(options, options.mesh, "unreadable", result.error);
    }
    const meshfile::Mesh &mesh = result.mesh;
    if (options.counts) {
        return {0, options.format == "json" ? CountsJson(options.mesh, mesh) : CountsText(mesh), ""};
    }
    const Progress progress("kivodeck: judging " + options.mesh);
    const audit::Verdict verdict = audit::Judge(mesh, limits);
    if (!options.vtk.empty() && !WriteFile(options.vtk, AuditVtk(mesh, verdict))) {
        return Fail(options, options.vtk, "unwritable", {0, std::string("cannot be written: ") + std::strerror(errno)});
    }
    AuditRun run;
    run.status = verdict.Failed() > 0 ? 1 : 0;
    run.report = options.format == "json" ? AuditJson(options.mesh, mesh, verdict)
                                          : AuditText(options.mesh, mesh, verdict, WantsColour());
    return run;
}

MeshInShort LookAtMesh(const std::string &path) {
    const meshfile::Result result = ReadMesh(path);
    MeshInShort inShort;
    if (!result.Ok()) {
        inShort.failed = {"unreadable"};
        return inShort;
    }
    const meshfile::Mesh &mesh = result.mesh;
    const audit::Verdict verdict = audit::Judge(mesh);
    for (int check = 0; check < audit::kChecks; ++check) {
        if (!verdict.Of(static_cast<audit::Check>(check)).Ok()) {
            inShort.failed.emplace_back(audit::KindOf(static_cast<audit::Check>(check)).word);
        }
    }
    for (const audit::Place &place : verdict.Of(audit::Check::groups).places) {
        inShort.empty.emplace_back(place.subject, *audit::GroupOf(mesh, place));
    }
    inShort.counts = verdict.counts;
    return inShort;
}

} // namespace kivodeck
