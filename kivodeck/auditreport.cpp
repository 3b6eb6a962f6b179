// What an audit found, as text and as JSON.
#include "kivodeck/audit.h"
#include "kivodeck/report.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>

namespace kivodeck {

namespace {

using audit::Check;
using audit::Histogram;
using audit::Measure;
using audit::Place;
using audit::Subject;
using audit::Verdict;
using nlohmann::ordered_json;

constexpr std::size_t kMostPlaces = 10;
constexpr int kBar = 40; // characters of the longest bar: with its range and its number in front it fits 80 columns

// ORDER: audit::Subject.
constexpr const char *kSubjects[] = {"node", "face", "cell", "node group", "face group", "cell group", "mesh"};

// By the C library's formats. For numbers: what is longer than 240 characters is cut.
template <class... Values> std::string Format(const char *format, Values... values) {
    char text[240];
    std::snprintf(text, sizeof text, format, values...);
    return text;
}

std::string Paint(const std::string &text, const char *code, bool colour) {
    return colour ? "\033[" + std::string(code) + "m" + text + "\033[0m" : text;
}

std::string Quoted(const std::string &name) {
    return "\"" + name + "\"";
}

const char *WordOf(Subject subject) {
    return kSubjects[static_cast<std::size_t>(subject)];
}

// "cell 12 at (1, 2, 0) in "PART"".
std::string PlaceText(const meshfile::Mesh &mesh, const Place &place) {
    const std::string *group = audit::GroupOf(mesh, place);
    if (place.subject == Subject::mesh) {
        return "the mesh as a whole";
    }
    if (place.subject >= Subject::nodeGroup) {
        return std::string(WordOf(place.subject)) + " " + Quoted(*group);
    }
    std::string text = std::string(WordOf(place.subject)) + " " + std::to_string(place.index);
    double at[3];
    if (audit::MiddleOf(mesh, place, at)) {
        text += mesh.dimension == 3 ? Format(" at (%.6g, %.6g, %.6g)", at[0], at[1], at[2])
                                    : Format(" at (%.6g, %.6g)", at[0], at[1]);
    }
    return group != nullptr ? text + " in " + Quoted(*group) : text;
}

std::string CheckText(const meshfile::Mesh &mesh, const Verdict &verdict, Check check, bool colour) {
    const audit::CheckKind &kind = audit::KindOf(check);
    const std::vector<Place> &places = verdict.Of(check).places;
    std::string text = Format("  %-17s", kind.word);
    if (places.empty()) {
        return text + Paint("ok", "32", colour) + "\n";
    }
    text += Paint("FAILED", "1;31", colour) + " " + std::to_string(places.size()) + ": " + kind.fault + "\n";
    for (std::size_t i = 0; i < std::min(places.size(), kMostPlaces); ++i) {
        text += "    " + PlaceText(mesh, places[i]) + "\n";
    }
    return places.size() > kMostPlaces ? text + "    and " + std::to_string(places.size() - kMostPlaces) + " more\n"
                                       : text;
}

std::string SurfaceText(const std::string &name, const audit::Surface &surface, int dimension) {
    const char *border = dimension == 3 ? "edges" : "ends";
    std::string text = "  " + Quoted(name) + ": " + std::to_string(surface.faces) + " faces, ";
    text += surface.openEdges == 0 ? "closed" : "open, " + std::to_string(surface.openEdges) + " " + border + " free";
    if (surface.overusedEdges > 0) {
        text += ", " + std::to_string(surface.overusedEdges) + " " + border + " used more than twice";
    }
    return text + "\n";
}

std::string SurfacesText(const meshfile::Mesh &mesh, const Verdict &verdict) {
    std::string text = verdict.surfaces.empty() ? "" : "\nSurfaces\n";
    for (std::size_t g = 0; g < verdict.surfaces.size(); ++g) {
        text += SurfaceText(mesh.faceGroups[g].name, verdict.surfaces[g], mesh.dimension);
    }
    return text;
}

std::string HistogramText(Measure measure, const Histogram &histogram) {
    std::string text = Format("\n%s: least %.6g, mean %.6g, largest %.6g\n  %lld outside %.6g to %.6g\n",
                              audit::KindOf(measure).word, histogram.min, histogram.mean, histogram.max,
                              histogram.outside, histogram.limits.least, histogram.limits.most);
    const long long most = *std::max_element(histogram.bins.begin(), histogram.bins.end());
    for (std::size_t bin = 0; bin < histogram.bins.size() && most > 0; ++bin) {
        const auto share = static_cast<double>(histogram.bins[bin]) / static_cast<double>(most);
        const std::string bar(static_cast<std::size_t>(std::ceil(share * kBar)), '#');
        text += Format("  %11.5g %10lld %s", histogram.edges[bin], histogram.bins[bin], bar.c_str());
        text.erase(text.find_last_not_of(' ') + 1);
        text += "\n";
    }
    return text;
}

std::string QualityText(const Verdict &verdict) {
    std::string text;
    for (int m = 0; m < verdict.measures && verdict.quality[0].values + verdict.quality[0].undefined > 0; ++m) {
        text += HistogramText(static_cast<Measure>(m), verdict.quality[static_cast<std::size_t>(m)]);
    }
    return text;
}

std::string SizesText(const Verdict &verdict) {
    const audit::Counts &counts = verdict.counts;
    std::string text = "  dimension " + (counts.dimension > 0 ? std::to_string(counts.dimension) : "none") +
                       Format(", %lld nodes, %lld faces, %lld cells\n", counts.nodes, counts.faces, counts.cells) +
                       Format("  groups: %lld of nodes, %lld of faces, %lld of cells\n", counts.nodeGroups,
                              counts.faceGroups, counts.cellGroups) +
                       "  regions: " + std::to_string(counts.regions);
    if (counts.looseCells > 0) {
        text += Format(", with the %lld cells of C_ groups one by one", counts.looseCells);
    }
    text += "\n";
    if (counts.touchingNodes > 0) {
        text += Format("  %lld nodes lie on nodes of other regions\n", counts.touchingNodes);
    }
    return text + Format("  boundary: %lld sides of cells\n", counts.boundaryFaces);
}

// Numbers of the entries that carry each tag.
std::map<int, long long> CountTags(const std::vector<int> &tags) {
    std::map<int, long long> counts;
    for (const int tag : tags) {
        ++counts[tag];
    }
    return counts;
}

// Calls take(kind, group's tag, group's name, members) for every group in the order of the file.
template <class Take> void ForGroups(const meshfile::Mesh &mesh, Take take) {
    const auto walk = [&take](const char *kind, const auto &groups, const std::vector<int> &tags) {
        std::map<int, long long> counts = CountTags(tags);
        for (const auto &group : groups) {
            take(kind, group.tag, group.name, counts[group.tag]);
        }
    };
    walk("node", mesh.nodeGroups, mesh.nodes.tags);
    walk("face", mesh.faceGroups, mesh.faces.tags);
    walk("cell", mesh.cellGroups, mesh.cells.tags);
}

ordered_json CheckJson(Check check, const audit::Outcome &outcome) {
    ordered_json places = ordered_json::array();
    for (std::size_t i = 0; i < std::min(outcome.places.size(), kMostPlaces); ++i) {
        std::string kind = WordOf(outcome.places[i].subject);
        std::replace(kind.begin(), kind.end(), ' ', '_');
        places.push_back({{"kind", kind}, {"index", outcome.places[i].index}});
    }
    return {{"name", audit::KindOf(check).word},
            {"ok", outcome.Ok()},
            {"count", outcome.places.size()},
            {"places", places}};
}

// Without any value there is no least and no largest one.
ordered_json HistogramJson(const Histogram &histogram) {
    ordered_json object = {{"min", nullptr}, {"max", nullptr}, {"mean", nullptr}};
    if (histogram.values > 0) {
        object = {{"min", histogram.min}, {"max", histogram.max}, {"mean", histogram.mean}};
    }
    object["histogram"] = histogram.bins;
    object["edges"] = histogram.edges;
    return object;
}

ordered_json SizesJson(const audit::Counts &counts) {
    return {{"dimension", counts.dimension},
            {"nodes", counts.nodes},
            {"faces", counts.faces},
            {"cells", counts.cells},
            {"node_groups", counts.nodeGroups},
            {"face_groups", counts.faceGroups},
            {"cell_groups", counts.cellGroups}};
}

// Names hold any bytes: what is no UTF-8 is shown by replacement characters.
std::string Dump(const ordered_json &json) {
    return json.dump(2, ' ', false, ordered_json::error_handler_t::replace) + "\n";
}

} // namespace

std::string AuditText(const std::string &path, const meshfile::Mesh &mesh, const Verdict &verdict, bool colour) {
    std::string text = path + "\n" + SizesText(verdict) + "\nChecks\n";
    for (int check = 0; check < audit::kChecks; ++check) {
        text += CheckText(mesh, verdict, static_cast<Check>(check), colour);
    }
    text += SurfacesText(mesh, verdict) + QualityText(verdict) + "\n";
    const int failed = verdict.Failed();
    return text +
           (failed == 0
                ? Paint("mesh ok", "32", colour)
                : Paint(std::to_string(failed) + (failed == 1 ? " check failed" : " checks failed"), "1;31", colour)) +
           "\n";
}

std::string AuditJson(const std::string &path, const meshfile::Mesh &, const Verdict &verdict) {
    ordered_json counts = SizesJson(verdict.counts);
    counts["regions"] = verdict.counts.regions;
    ordered_json checks = ordered_json::array();
    for (int check = 0; check < audit::kChecks; ++check) {
        checks.push_back(CheckJson(static_cast<Check>(check), verdict.checks[static_cast<std::size_t>(check)]));
    }
    ordered_json quality = ordered_json::object();
    for (int m = 0; m < verdict.measures; ++m) {
        quality[audit::KindOf(static_cast<Measure>(m)).word] =
            HistogramJson(verdict.quality[static_cast<std::size_t>(m)]);
    }
    return Dump({{"schema_version", kSchemaVersion},
                 {"file", path},
                 {"counts", counts},
                 {"checks", checks},
                 {"quality", quality},
                 {"verdict", {{"ok", verdict.Failed() == 0}, {"failed", verdict.Failed()}}}});
}

std::string CountsText(const meshfile::Mesh &mesh) {
    std::string text = "dimension " + (mesh.dimension > 0 ? std::to_string(mesh.dimension) : "none") +
                       Format(", %zu nodes, %zu faces, %zu cells\n", mesh.nodes.Count(), mesh.faces.rows.Count(),
                              mesh.cells.rows.Count());
    ForGroups(mesh, [&text](const std::string &kind, int tag, const std::string &name, long long members) {
        text += kind + " group " + std::to_string(tag) + " " + Quoted(name) + ": " + std::to_string(members) + " " +
                kind + "s\n";
    });
    return text;
}

std::string CountsJson(const std::string &path, const meshfile::Mesh &mesh) {
    ordered_json groups = ordered_json::array();
    ForGroups(mesh, [&groups](const char *kind, int tag, const std::string &name, long long members) {
        groups.push_back({{"kind", kind}, {"tag", tag}, {"name", name}, {"members", members}});
    });
    return Dump({{"schema_version", kSchemaVersion},
                 {"file", path},
                 {"counts", SizesJson(audit::CountsOf(mesh))},
                 {"groups", groups}});
}

std::string AuditFailure(const std::string &path, const std::string &code, long long line, const std::string &text) {
    const ordered_json finding = {{"code", code}, {"level", "error"}, {"file", path}, {"line", line}, {"text", text}};
    return Dump({{"schema_version", kSchemaVersion}, {"file", path}, {"findings", ordered_json::array({finding})}});
}

} // namespace kivodeck
