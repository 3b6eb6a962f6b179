// Putting reports together.
#include "kivodeck/report.h"

#include <nlohmann/json.hpp>

#include <array>

namespace kivodeck {

namespace {

using account::Count;
using account::Finding;
using account::Level;
using account::Report;
using account::Summary;
using nlohmann::ordered_json;

constexpr int kMostOfACode = 10; // lines of one code in a text report

std::string Paint(const std::string &text, const char *code, bool colour) {
    return colour ? "\033[" + std::string(code) + "m" + text + "\033[0m" : text;
}

const char *ColourOf(Level level) {
    return level == Level::error ? "1;31" : (level == Level::warning ? "1;35" : "1;36");
}

const deck::File *FileOf(const Report &report, int file) {
    return file >= 0 && file < static_cast<int>(report.files.size()) ? &report.files[static_cast<std::size_t>(file)]
                                                                     : nullptr;
}

// "name:line:column", as much of it as there is.
std::string PlaceText(const Report &report, const deck::Place &place) {
    const deck::File *file = FileOf(report, place.file);
    std::string text = file != nullptr ? file->path : report.path;
    for (const int number : {place.line, place.column}) {
        text += number > 0 ? ":" + std::to_string(number) : "";
    }
    return text;
}

// " (included from b.inp:7, from a.inp:3)"; nothing in the deck's own file.
std::string ChainText(const Report &report, const deck::Place &place) {
    std::string text;
    const deck::File *file = FileOf(report, place.file);
    while (file != nullptr && file->includedFrom >= 0) {
        const deck::File *from = FileOf(report, file->includedFrom);
        text += (text.empty() ? " (included from " : ", from ") + from->path + ":" + std::to_string(file->line);
        file = from;
    }
    return text.empty() ? text : text + ")";
}

std::string FindingLine(const Report &report, const Finding &finding, bool colour) {
    const account::FindingKind &kind = account::KindOf(finding.code);
    return Paint(PlaceText(report, finding.place) + ":", "1", colour) + " " +
           Paint(std::string(account::LevelWord(kind.level)) + ":", ColourOf(kind.level), colour) + " " +
           account::TextOf(finding) + " [" + kind.word + "]" + ChainText(report, finding.place) + "\n";
}

std::string OtherKeywords(const Report &report) {
    std::string text;
    for (const auto &[keyword, count] : report.otherKeywords) {
        text += (text.empty() ? "no part of a mesh: " : ", ") + std::to_string(count) + " *" + keyword;
    }
    return text.empty() ? text : text + "\n";
}

std::string Verdict(const Report &report) {
    if (!report.readable) {
        return report.path + ": not read whole; " + Plural(report.errors, "error") + ", " +
               Plural(report.warnings, "warning") + ", " + Plural(report.notes, "note");
    }
    if (report.errors + report.warnings == 0) {
        return report.path + ": clean" + (report.notes > 0 ? ", " + Plural(report.notes, "note") : "");
    }
    return report.path + ": " + Plural(report.errors, "error") + ", " + Plural(report.warnings, "warning") + ", " +
           Plural(report.notes, "note");
}

ordered_json CountsJson(const std::vector<Count> &counts, const char *what) {
    ordered_json list = ordered_json::array();
    for (const Count &count : counts) {
        list.push_back({{"name", count.name}, {what, count.count}});
    }
    return list;
}

ordered_json SummaryJson(const Summary &summary) {
    ordered_json groups = ordered_json::array();
    for (const Count &group : summary.cellGroups) {
        groups.push_back({{"name", group.name}, {"type", group.type}, {"elements", group.count}});
    }
    return {{"dimension", summary.dimension},
            {"nodes", summary.nodes},
            {"elements", summary.elements},
            {"node_sets", CountsJson(summary.nodeSets, "members")},
            {"element_sets", CountsJson(summary.elementSets, "members")},
            {"surfaces", CountsJson(summary.surfaces, "faces")},
            {"cell_groups", groups}};
}

ordered_json FindingJson(const Report &report, const Finding &finding) {
    const account::FindingKind &kind = account::KindOf(finding.code);
    const deck::File *file = FileOf(report, finding.place.file);
    ordered_json object = {{"code", kind.word},
                           {"level", account::LevelWord(kind.level)},
                           {"file", file != nullptr ? file->path : report.path},
                           {"line", finding.place.line},
                           {"column", finding.place.column},
                           {"text", account::TextOf(finding)},
                           {"count", finding.count}};
    if (file != nullptr && file->includedFrom >= 0) {
        ordered_json chain = ordered_json::array();
        while (file != nullptr && file->includedFrom >= 0) {
            const deck::File *from = FileOf(report, file->includedFrom);
            chain.push_back({{"file", from->path}, {"line", file->line}});
            file = from;
        }
        object["included_from"] = chain;
    }
    return object;
}

ordered_json VerdictJson(long long errors, long long warnings, long long notes) {
    return {{"errors", errors}, {"warnings", warnings}, {"notes", notes}};
}

ordered_json ReportJson(const Report &report) {
    ordered_json findings = ordered_json::array();
    for (const Finding &finding : report.findings) {
        findings.push_back(FindingJson(report, finding));
    }
    ordered_json others = ordered_json::object();
    for (const auto &[keyword, count] : report.otherKeywords) {
        others[keyword] = count;
    }
    return {{"schema_version", kSchemaVersion},
            {"file", report.path},
            {"findings", findings},
            {"meaning", SummaryJson(report.meaning)},
            {"reading", SummaryJson(report.reading)},
            {"other_keywords", others},
            {"verdict", VerdictJson(report.errors, report.warnings, report.notes)}};
}

// Decks hold any bytes: what is no UTF-8 is shown by replacement characters.
std::string Dump(const ordered_json &json) {
    return json.dump(2, ' ', false, ordered_json::error_handler_t::replace) + "\n";
}

} // namespace

std::string Plural(long long count, const std::string &what) {
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

std::string TextReport(const Report &report, const TextStyle &style, const std::string &lines,
                       const std::string &behind) {
    std::array<long long, account::kCodes> total{};
    std::array<long long, account::kCodes> shown{};
    for (const Finding &finding : report.findings) {
        ++total[static_cast<std::size_t>(finding.code)];
    }
    std::string text;
    for (const Finding &finding : report.findings) {
        const auto code = static_cast<std::size_t>(finding.code);
        if (style.all || shown[code] < kMostOfACode) {
            text += FindingLine(report, finding, style.colour);
        } else if (shown[code] == kMostOfACode) {
            text += "and " + std::to_string(total[code] - kMostOfACode) + " more [" +
                    account::KindOf(finding.code).word + "]\n";
        }
        ++shown[code];
    }
    return text + OtherKeywords(report) + lines + Verdict(report) + "\n" + behind;
}

std::string JsonReport(const std::vector<Report> &reports) {
    if (reports.size() == 1) {
        return Dump(ReportJson(reports[0]));
    }
    ordered_json decks = ordered_json::array();
    long long errors = 0;
    long long warnings = 0;
    long long notes = 0;
    for (const Report &report : reports) {
        decks.push_back(ReportJson(report));
        errors += report.errors;
        warnings += report.warnings;
        notes += report.notes;
    }
    return Dump(
        {{"schema_version", kSchemaVersion}, {"decks", decks}, {"verdict", VerdictJson(errors, warnings, notes)}});
}

std::string JsonReport(const Report &report, const Files &files) {
    const auto name = [](const std::string &path) { return path.empty() ? ordered_json() : ordered_json(path); };
    ordered_json object = ReportJson(report);
    object["files"] = {
        {"plain_deck", name(files.plainDeck)}, {"mesh", name(files.mesh)}, {"removed", name(files.removed)}};
    if (!files.mesh.empty()) {
        object["audit"] = {
            {"ok", files.failedChecks.empty()}, {"failed", files.failedChecks}, {"empty_groups", files.emptyGroups}};
    }
    return Dump(object);
}

std::string JsonFailure(const std::string &code, const std::string &text) {
    const ordered_json finding = {{"code", code}, {"level", "error"}, {"file", ""}, {"line", 0},
                                  {"column", 0},  {"text", text},     {"count", 1}};
    return Dump({{"schema_version", kSchemaVersion},
                 {"findings", ordered_json::array({finding})},
                 {"meaning", SummaryJson({})},
                 {"reading", SummaryJson({})},
                 {"verdict", VerdictJson(1, 0, 0)}});
}

} // namespace kivodeck
