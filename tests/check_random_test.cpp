// Random decks through the account of a deck and through the program: what the account says of both readings is so.
//
//     check_random_test [--count N] [--seed S] [--show] [--report]
//
// Deck number i, counted from S, is by turns of a CAE program's kind, plain, mild or wild; --show writes the decks to
// standard output instead, --report what the account has to say of them.
//
// - `meaning` is what the decks of a CAE program's kind mean by their construction.
// - `reading` is what the log and the mesh file of a run show.
// - Both agree where the account finds no error and no warning, and it finds none where nothing is lost.
// - JSON parses and says what the text says.
#include "tests/support/caedecks.h"
#include "tests/support/decks.h"
#include "tests/support/fakesystem.h"
#include "tests/support/runs.h"

#include "account/check.h"
#include "deck/assemble.h"
#include "kivodeck/report.h"
#include "meshfile/meshfile.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <map>
#include <numeric>
#include <set>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace {

using account::Count;
using account::Report;
using account::Summary;
using NameCounts = std::vector<std::pair<std::string, long long>>;

// What is wrong with a deck.
using Complaints = std::string;

enum class Kind { cae, plain, mild, wild };

struct Case {
    Kind kind;
    std::string text;
    std::map<std::string, std::string> files;
    CaeDeck cae; // of that kind
};

// What a run shows -----------------------------------------------------------------------------------------

struct Section {
    std::string what, name;
    long long count = 0;
};

struct Shown {
    std::vector<Section> sections; // that the log says were read
    meshfile::Mesh mesh;
};

constexpr const char *kOpenings[] = {"Nodes", "Elements", "NSET", "ELSET", "Surface"};

std::vector<Section> SectionsOfLog(const std::string &log) {
    std::vector<Section> sections;
    Section open;
    for (std::size_t at = 0, end; (end = log.find('\n', at)) != std::string::npos; at = end + 1) {
        const std::string line = log.substr(at, end - at);
        for (const char *what : kOpenings) {
            const std::string words = std::string("  Reading ") + what + " ";
            if (line.compare(0, words.size(), words) == 0) {
                open = {what, line.substr(words.size(), line.find(" ... ") - words.size()), 0};
            }
        }
        const std::size_t behind = line.compare(0, 10, "done with ") == 0 ? 0 : line.find(" ... done with ");
        if (behind != std::string::npos && !open.what.empty()) {
            open.count = std::atoll(line.c_str() + behind + (behind == 0 ? 10 : 15));
            sections.push_back(open);
            open.what.clear();
        }
    }
    return sections;
}

NameCounts OfKind(const std::vector<Section> &sections, const char *what) {
    NameCounts found;
    for (const Section &section : sections) {
        if (section.what == what) {
            found.emplace_back(section.name, section.count);
        }
    }
    return found;
}

long long Total(const NameCounts &counts) {
    long long total = 0;
    for (const auto &count : counts) {
        total += count.second;
    }
    return total;
}

bool IsCutLoose(const meshfile::Mesh &mesh) {
    return std::any_of(mesh.cellGroups.begin(), mesh.cellGroups.end(),
                       [](const meshfile::CellGroup &group) { return group.name.compare(0, 2, "C_") == 0; });
}

// Nodes of each group; copies of a node, which stand at its place, once.
NameCounts NodeGroups(const meshfile::Mesh &mesh) {
    std::map<int, std::set<std::tuple<double, double, double, std::size_t>>> places;
    const bool copies = IsCutLoose(mesh);
    for (std::size_t i = 0; i < mesh.nodes.Count(); ++i) {
        places[mesh.nodes.tags[i]].emplace(mesh.nodes.x[i], mesh.nodes.y[i], mesh.nodes.z.empty() ? 0 : mesh.nodes.z[i],
                                           copies ? 0 : i);
    }
    NameCounts groups;
    for (const meshfile::Group &group : mesh.nodeGroups) {
        groups.emplace_back(group.name, places[group.tag].size());
    }
    return groups;
}

// A quadratic tetrahedron's row has its corners first, a quadratic triangle's goes around it.
std::set<int> MiddleNodes(const meshfile::Mesh &mesh) {
    std::set<int> middles;
    for (std::size_t c = 0; c < mesh.cells.rows.Count(); ++c) {
        const std::size_t width = mesh.cells.rows.Width(c);
        for (std::size_t k = 0; k < width; ++k) {
            if ((width == 6 && k % 2 == 1) || (width == 10 && k >= 4)) {
                middles.insert(mesh.cells.rows.Row(c)[k]);
            }
        }
    }
    return middles;
}

// Sides of cells by group: of the pieces of a quadratic side the one between middle nodes alone counts, or each of the
// two lines by half.
NameCounts FaceGroups(const meshfile::Mesh &mesh) {
    const std::set<int> middles = MiddleNodes(mesh);
    std::map<int, long long> halves;
    for (std::size_t f = 0; f < mesh.faces.rows.Count(); ++f) {
        const int *row = mesh.faces.rows.Row(f);
        const std::size_t width = mesh.faces.rows.Width(f);
        const auto nMiddle = static_cast<std::size_t>(
            std::count_if(row, row + width, [&](int node) { return middles.count(node) != 0; }));
        halves[mesh.faces.tags[f]] += nMiddle == 0 || nMiddle == 3 ? 2 : nMiddle == 1 && width == 2 ? 1 : 0;
    }
    NameCounts groups;
    for (const meshfile::Group &group : mesh.faceGroups) {
        groups.emplace_back(group.name, halves[group.tag] / 2);
    }
    return groups;
}

NameCounts CellGroups(const meshfile::Mesh &mesh) {
    std::map<int, long long> cells;
    for (const int tag : mesh.cells.tags) {
        ++cells[tag];
    }
    NameCounts groups;
    for (const meshfile::CellGroup &group : mesh.cellGroups) {
        groups.emplace_back(group.name, cells[group.tag]);
    }
    return groups;
}

// Comparing ------------------------------------------------------------------------------------------------

NameCounts Sorted(NameCounts counts) {
    std::sort(counts.begin(), counts.end());
    return counts;
}

NameCounts CountsOf(const std::vector<Count> &counts) {
    NameCounts plain;
    for (const Count &count : counts) {
        plain.emplace_back(count.name, count.count);
    }
    return plain;
}

std::string TextOf(const NameCounts &counts) {
    std::string text;
    for (const auto &[name, count] : counts) {
        text += " " + name + ":" + std::to_string(count);
    }
    return text;
}

void Compare(const char *what, long long wanted, long long found, Complaints *complaints) {
    if (wanted != found) {
        *complaints +=
            std::string(what) + " wanted " + std::to_string(wanted) + ", found " + std::to_string(found) + "\n";
    }
}

void Compare(const char *what, const NameCounts &wanted, const NameCounts &found, Complaints *complaints) {
    if (wanted != found) {
        *complaints += std::string(what) + " wanted" + TextOf(wanted) + "\n    found" + TextOf(found) + "\n";
    }
}

// Whether sides of linear and of quadratic cells can be told from one another: not where elements lack nodes, or share
// them so that one's corner is another's middle.
bool CanTellFaces(const meshfile::Mesh &mesh) {
    const std::set<int> middles = MiddleNodes(mesh);
    if (middles.count(-1) != 0) {
        return false;
    }
    for (std::size_t c = 0; c < mesh.cells.rows.Count() && !middles.empty(); ++c) {
        const std::size_t width = mesh.cells.rows.Width(c);
        for (std::size_t k = 0; k < width; ++k) {
            const int node = mesh.cells.rows.Row(c)[k];
            const bool isMiddle = (width == 6 && k % 2 == 1) || (width == 10 && k >= 4);
            if (node == -1 || (!isMiddle && middles.count(node) != 0)) {
                return false;
            }
        }
    }
    return true;
}

void CompareReading(const Case &deck, const Shown &shown, const Summary &reading, int dimension,
                    Complaints *complaints) {
    const meshfile::Mesh &mesh = shown.mesh;
    Compare("reading: nodes", Total(OfKind(shown.sections, "Nodes")), reading.nodes, complaints);
    const NameCounts elements = OfKind(shown.sections, "Elements");
    Compare("reading: elements", Total(elements), reading.elements, complaints);
    Compare("reading: cell groups of the log", elements, CountsOf(reading.cellGroups), complaints);
    Compare("reading: cell groups", Sorted(CellGroups(mesh)), Sorted(CountsOf(reading.cellGroups)), complaints);
    if (!IsCutLoose(mesh) || (deck.kind != Kind::wild && mesh.dimension == dimension)) { // else nodes lie on others
        Compare("reading: node sets", NodeGroups(mesh), CountsOf(reading.nodeSets), complaints);
    }
    if (CanTellFaces(mesh)) {
        Compare("reading: surfaces", FaceGroups(mesh), CountsOf(reading.surfaces), complaints);
    }
    NameCounts sets = OfKind(shown.sections, "ELSET");
    Compare("reading: element sets", static_cast<long long>(sets.size()),
            static_cast<long long>(reading.elementSets.size()), complaints);
    for (std::size_t i = 0; i < std::min(sets.size(), reading.elementSets.size()); ++i) {
        sets[i].second = std::min(sets[i].second, reading.elementSets[i].count); // the log counts repeated numbers, too
    }
    Compare("reading: element sets", sets, CountsOf(reading.elementSets), complaints);
    Compare("reading: dimension", mesh.dimension, reading.dimension, complaints);
}

NameCounts CountsOf(const std::vector<CaeCount> &counts) {
    NameCounts plain;
    for (const CaeCount &count : counts) {
        plain.emplace_back(count.name, count.count);
    }
    return plain;
}

template <class Wanted>
void CompareMeaning(const char *whose, const Wanted &wanted, const Summary &found, Complaints *complaints) {
    Complaints own;
    Compare("dimension", wanted.dimension, found.dimension, &own);
    Compare("nodes", wanted.nodes, found.nodes, &own);
    Compare("elements", wanted.elements, found.elements, &own);
    Compare("node sets", Sorted(CountsOf(wanted.nodeSets)), Sorted(CountsOf(found.nodeSets)), &own);
    Compare("element sets", Sorted(CountsOf(wanted.elementSets)), Sorted(CountsOf(found.elementSets)), &own);
    Compare("surfaces", Sorted(CountsOf(wanted.surfaces)), Sorted(CountsOf(found.surfaces)), &own);
    Compare("cell groups", Sorted(CountsOf(wanted.cellGroups)), Sorted(CountsOf(found.cellGroups)), &own);
    *complaints += own.empty() ? "" : std::string(whose) + ":\n" + own;
}

// Twice the area or six times the volume of an element, whose faces are flat: positive where it is the right way round.
double MeasureOf(const deck::Mesh &mesh, const int *nodes, deck::Shape shape) {
    const auto at = [&](int corner) {
        const auto node = static_cast<std::size_t>(nodes[corner]);
        return std::array<double, 3>{mesh.x[node], mesh.y[node], mesh.z[node]};
    };
    double measure = 0;
    for (int f = 0; f < deck::FacesOf(shape); ++f) {
        const deck::FaceRow &face = deck::FaceOf(shape, f);
        const auto a = at(face.corner[0]), b = at(face.corner[1]);
        if (deck::DimensionOf(shape) == 2) {
            measure += a[0] * b[1] - a[1] * b[0];
        }
        for (int k = 2; k < face.nCorners; ++k) { // normals of solids point inwards
            const auto c = at(face.corner[k - 1]), d = at(face.corner[k]);
            measure -= a[0] * (c[1] * d[2] - c[2] * d[1]) + a[1] * (c[2] * d[0] - c[0] * d[2]) +
                       a[2] * (c[0] * d[1] - c[1] * d[0]);
        }
    }
    return measure;
}

void CompareReal(const char *what, double wanted, double found, Complaints *complaints) {
    if (!(std::fabs(wanted - found) <= 1e-6 * std::max(1.0, std::fabs(wanted)))) {
        *complaints +=
            std::string(what) + " wanted " + std::to_string(wanted) + ", found " + std::to_string(found) + "\n";
    }
}

// Where the nodes of a CAE program's deck are, and what its elements fill.
void CompareGeometry(const CaeDeck &wanted, Complaints *complaints) {
    deck::Deck deck = deck::ReadDeck("deck.inp");
    const deck::Mesh mesh = deck::Assemble(deck);
    double measure = 0;
    for (const deck::ElementRun &run : mesh.elementRuns) {
        const deck::Shape shape = deck.types[static_cast<std::size_t>(run.type)].type.shape;
        for (std::size_t e = run.first; e < run.first + run.count; ++e) {
            measure += MeasureOf(mesh, deck::NodesOfElement(mesh, run, static_cast<int>(e)), shape);
        }
    }
    CompareReal("measure", wanted.measure, measure / (wanted.dimension == 3 ? 6 : 2), complaints);
    const auto sum = [](const std::vector<double> &values) {
        return std::accumulate(values.begin(), values.end(), 0.0);
    };
    CompareReal("sum of x", wanted.places[0], sum(mesh.x), complaints);
    CompareReal("sum of y", wanted.places[1], sum(mesh.y), complaints);
    CompareReal("sum of z", wanted.places[2], sum(mesh.z), complaints);
}

// Bytes as JSON has them.
std::string Utf8(const std::string &bytes) {
    return nlohmann::json::parse(nlohmann::json(bytes).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace));
}

// The line that the text has of a finding.
std::string LineOf(const nlohmann::json &finding) {
    std::string line = finding["file"];
    for (const char *number : {"line", "column"}) {
        line += finding[number] > 0 ? ":" + finding[number].dump() : "";
    }
    for (const char *word : {"level", "text"}) {
        line += ": " + finding[word].get<std::string>();
    }
    line += " [" + finding["code"].get<std::string>() + "]";
    const char *link = " (included from ";
    for (const nlohmann::json &from : finding.value("included_from", nlohmann::json::array())) {
        line += link + from["file"].get<std::string>() + ":" + from["line"].dump();
        link = ", from ";
    }
    return line + (finding.contains("included_from") ? ")\n" : "\n");
}

// All that a summary lists, and the same from JSON.
std::string TextOf(const Summary &summary) {
    std::string text = std::to_string(summary.dimension) + " " + std::to_string(summary.nodes) + " " +
                       std::to_string(summary.elements) + "\n";
    for (const auto *list : {&summary.nodeSets, &summary.elementSets, &summary.surfaces, &summary.cellGroups}) {
        for (const Count &count : *list) {
            text += Utf8(count.name) + ":" + std::to_string(count.count) + " " + Utf8(count.type) + "\n";
        }
        text += "-\n";
    }
    return text;
}

std::string TextOf(const nlohmann::json &summary) {
    std::string text =
        summary["dimension"].dump() + " " + summary["nodes"].dump() + " " + summary["elements"].dump() + "\n";
    constexpr const char *kLists[][2] = {
        {"node_sets", "members"}, {"element_sets", "members"}, {"surfaces", "faces"}, {"cell_groups", "elements"}};
    for (const auto &[list, count] : kLists) {
        for (const nlohmann::json &entry : summary[list]) {
            text += entry["name"].get<std::string>() + ":" + entry[count].dump() + " " + entry.value("type", "") + "\n";
        }
        text += "-\n";
    }
    return text;
}

// What the reports say must be one thing: the same findings in the same order, the same verdict.
void CompareReports(const Report &report, Complaints *complaints) {
    const std::string text = kivodeck::TextReport(report, {false, true});
    const nlohmann::json json = nlohmann::json::parse(kivodeck::JsonReport({report}), nullptr, false);
    if (json.is_discarded()) {
        *complaints += "JSON does not parse\n";
        return;
    }
    Compare("JSON: errors", report.errors, json["verdict"]["errors"].get<long long>(), complaints);
    Compare("JSON: warnings", report.warnings, json["verdict"]["warnings"].get<long long>(), complaints);
    Compare("JSON: notes", report.notes, json["verdict"]["notes"].get<long long>(), complaints);
    std::string lines; // of the text, as the findings of JSON make them
    for (const nlohmann::json &finding : json["findings"]) {
        lines += LineOf(finding);
    }
    std::string others; // and what stands behind the findings
    for (const auto &[keyword, count] : json["other_keywords"].items()) {
        others += (others.empty() ? "no part of a mesh: " : ", ") + count.dump() + " *" + keyword;
    }
    lines += others + (others.empty() ? "" : "\n") + "deck.inp: ";
    const std::string found = Utf8(text);
    if (found.compare(0, lines.size(), lines) != 0 || found.find('\n', lines.size()) + 1 != found.size()) {
        *complaints += "JSON and text list other findings:\n" + lines + "but\n" + text;
    }
    if (TextOf(json["meaning"]) != TextOf(report.meaning) || TextOf(json["reading"]) != TextOf(report.reading)) {
        *complaints += "JSON has other readings\n";
    }
}

// One deck -------------------------------------------------------------------------------------------------

Case MakeCase(std::uint64_t seed) {
    constexpr DeckKind kKinds[] = {DeckKind::kPlain, DeckKind::kPlain, DeckKind::kMild, DeckKind::kWild};
    Case made{static_cast<Kind>(seed % 4), "", {}, {}};
    if (made.kind == Kind::cae) {
        made.cae = MakeCaeDeck(seed);
        made.text = made.cae.text;
        made.files = made.cae.files;
    } else {
        made.text = MakeRandomDeck(seed, kKinds[seed % 4]).text;
    }
    return made;
}

struct Tally {
    long nFailed, nErrors, nClean; // decks
};

// Findings that tell of nothing lost: a group cut loose as its name asks, and what holds nothing in the deck itself.
bool TellsOfLoss(const account::Finding &finding) {
    switch (finding.code) {
    case account::Code::cutLoose:
    case account::Code::emptySet:
    case account::Code::emptySurface:
        return false;
    default:
        return account::KindOf(finding.code).level != account::Level::note;
    }
}

// Losses that the counts of both readings do not show.
bool IsCounted(const account::Finding &finding) {
    return finding.code != account::Code::outOfPlane && finding.code != account::Code::tooSmall;
}

// What the account says of losses against what is lost.
void CompareVerdict(const Case &deck, const Report &report, Complaints *complaints) {
    Complaints lost;
    CompareMeaning("the readings part", report.meaning, report.reading, &lost);
    const bool losing = std::any_of(report.findings.begin(), report.findings.end(), TellsOfLoss);
    if (!losing && !lost.empty()) {
        *complaints += "nothing is said to be lost, but " + lost;
    }
    const bool counted = std::any_of(report.findings.begin(), report.findings.end(),
                                     [](const auto &finding) { return TellsOfLoss(finding) && IsCounted(finding); });
    if (counted && (deck.kind == Kind::plain || deck.cae.plain) && lost.empty()) {
        *complaints += "nothing is lost, but\n" + kivodeck::TextReport(report, {});
    }
    for (const account::Finding &finding : report.findings) {
        if (deck.kind != Kind::wild && finding.code == account::Code::differs) {
            *complaints += "unexplained: " + TextOf(finding) + "\n";
        }
    }
}

Complaints Check(std::uint64_t seed, bool showReport, Tally *tally) {
    const Case deck = MakeCase(seed);
    fake::Reset();
    fake::GrowFrom(seed % 7 == 0 ? 100000 : 2);
    fake::ShortReads(seed % 5 == 0 ? 1 + seed % 97 : 0);
    fake::PutFile("deck.inp", deck.text);
    for (const auto &[name, text] : deck.files) {
        fake::PutFile(name, text);
    }
    const Report report = account::CheckDeck("deck.inp");
    if (showReport) {
        std::fputs(kivodeck::TextReport(report, {false, true}).c_str(), stdout);
    }
    const Run run = RunProgram(deck.text, false);
    meshfile::Result result = meshfile::ReadText(run.files.at("mesh.input"));
    Complaints complaints = result.Ok() ? "" : "mesh.input: " + meshfile::Describe(result.error) + "\n";
    const Shown shown{SectionsOfLog(run.log), std::move(result.mesh)};
    CompareReading(deck, shown, report.reading, report.meaning.dimension, &complaints);
    if (deck.kind == Kind::cae) {
        CompareMeaning("meaning", deck.cae, report.meaning, &complaints);
        CompareGeometry(deck.cae, &complaints);
    }
    CompareVerdict(deck, report, &complaints);
    CompareReports(report, &complaints);
    tally->nErrors += report.errors > 0 ? 1 : 0;
    tally->nClean += report.errors + report.warnings == 0 ? 1 : 0;
    return complaints;
}

void Show(const Case &deck) {
    std::fwrite(deck.text.data(), 1, deck.text.size(), stdout);
    for (const auto &[name, text] : deck.files) {
        std::printf("=== %s\n%s", name.c_str(), text.c_str());
    }
}

int CheckDecks(int argc, char **argv) {
    std::uint64_t count = 600, seed = 1;
    bool show = false, showReport = false;
    for (int i = 1; i < argc; ++i) {
        const std::string word = argv[i];
        show = show || word == "--show";
        showReport = showReport || word == "--report";
        std::uint64_t *number = word == "--count" ? &count : word == "--seed" ? &seed : nullptr;
        if (number != nullptr && i + 1 < argc) {
            *number = std::strtoull(argv[++i], nullptr, 10);
        }
    }
    Tally tally{};
    for (std::uint64_t i = seed; i < seed + count; ++i) {
        if (show) {
            Show(MakeCase(i));
            continue;
        }
        const Complaints complaints = Check(i, showReport, &tally);
        if (!complaints.empty()) {
            std::printf("seed %llu: %s\n", static_cast<unsigned long long>(i), complaints.c_str());
            ++tally.nFailed;
        }
    }
    if (show) {
        return 0;
    }
    std::printf("%llu decks, %ld failed; errors found in %ld, nothing in %ld\n", static_cast<unsigned long long>(count),
                tally.nFailed, tally.nErrors, tally.nClean);
    // Decks that show nothing would prove nothing.
    const bool varied = count < 100 || (tally.nErrors > 20 && tally.nClean > 20);
    return tally.nFailed == 0 && varied ? 0 : 1;
}

} // namespace

int main(int argc, char **argv) {
    try {
        return CheckDecks(argc, argv);
    } catch (const std::exception &problem) {
        std::fprintf(stderr, "%s\n", problem.what());
        return 1;
    }
}
