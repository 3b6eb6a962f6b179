// Random decks through flatten: what the plain deck holds is what the deck means, by its geometry.
//
//     flatten_random_test [--count N] [--seed S] [--report]
//
// Deck number i, counted from S, is by turns of a CAE program's kind, plain, mild or wild.
//
// - The plain deck is checked and has no error of its own.
// - A plain deck made plain again is the same text.
// - A deck without errors and warnings gives the same mesh.input, to the byte, as its plain deck.
// - Coordinates are the same doubles. Volume or area of the whole, of groups and of element sets, the area (length) of
//   surfaces and the nodes of node sets are those of the deck, where sets are divided so that none loses anything.
#include "tests/support/caedecks.h"
#include "tests/support/decks.h"
#include "tests/support/fakesystem.h"
#include "tests/support/runs.h"

#include "deck/assemble.h"
#include "flatten/names.h"
#include "kivodeck/flat.h"
#include "kivodeck/report.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <vector>

namespace {

using deck::Mesh;
using Complaints = std::string;

enum Kind { kCae, kPlain, kMild, kWild };

struct Case {
    Kind kind;
    std::string text;
    std::map<std::string, std::string> files;
    double measure = -1; // volume or area, where it is known
};

Case MakeCase(std::uint64_t seed) {
    constexpr DeckKind kKinds[] = {DeckKind::kPlain, DeckKind::kPlain, DeckKind::kMild, DeckKind::kWild};
    const auto kind = static_cast<Kind>(seed % 4);
    if (kind == kCae) {
        const CaeDeck made = MakeCaeDeck(seed);
        return {kind, made.text, made.files, made.measure};
    }
    return {kind, MakeRandomDeck(seed, kKinds[kind]).text, {}, -1};
}

// Measures of a mesh, from its corners -------------------------------------------------------------------

struct Vec {
    double x, y, z;
};

Vec At(const Mesh &mesh, int node) {
    const auto i = static_cast<std::size_t>(node);
    return {mesh.x[i], mesh.y[i], mesh.dimension == 2 ? 0 : mesh.z[i]};
}
Vec operator-(const Vec &a, const Vec &b) {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}
Vec Cross(const Vec &a, const Vec &b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
double Dot(const Vec &a, const Vec &b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}
double Length(const Vec &a) {
    return std::sqrt(Dot(a, a));
}

// Length of a line, area of a polygon that is flat.
double SizeOf(const Mesh &mesh, const std::vector<int> &corners) {
    const Vec o = At(mesh, corners[0]);
    if (corners.size() == 2) {
        return Length(At(mesh, corners[1]) - o);
    }
    Vec sum{0, 0, 0};
    for (std::size_t i = 1; i + 1 < corners.size(); ++i) {
        const Vec n = Cross(At(mesh, corners[i]) - o, At(mesh, corners[i + 1]) - o);
        sum = {sum.x + n.x, sum.y + n.y, sum.z + n.z};
    }
    return Length(sum) / 2;
}

struct Element {
    const deck::ElementRun &run;
    deck::Shape shape;
    const int *nodes;
};

Element ElementAt(const deck::Deck &deck, const Mesh &mesh, int element) {
    const deck::ElementRun &run = mesh.elementRuns[static_cast<std::size_t>(RunOfElement(mesh, element))];
    return {run, deck.types[static_cast<std::size_t>(run.type)].type.shape, NodesOfElement(mesh, run, element)};
}

std::vector<int> CornersOfSide(const Element &element, int side) {
    std::vector<int> corners;
    if (side < 0) {
        corners.assign(element.nodes, element.nodes + CornersOf(element.shape));
        return corners;
    }
    const deck::FaceRow &face = FaceOf(element.shape, side);
    for (int i = 0; i < face.nCorners; ++i) {
        corners.push_back(element.nodes[face.corner[i]]);
    }
    return corners;
}

// Volume by the divergence over the faces, area of plane elements; 0 for what is no cell of the mesh.
double MeasureOf(const deck::Deck &deck, const Mesh &mesh, int at) {
    const Element element = ElementAt(deck, mesh, at);
    if (DimensionOf(element.shape) != mesh.dimension || mesh.dimension < 2) {
        return 0;
    }
    if (mesh.dimension == 2) {
        return SizeOf(mesh, CornersOfSide(element, -1));
    }
    double volume = 0;
    const Vec origin = At(mesh, element.nodes[0]);
    for (int f = 0; f < FacesOf(element.shape); ++f) {
        const std::vector<int> corners = CornersOfSide(element, f);
        for (std::size_t i = 1; i + 1 < corners.size(); ++i) {
            const Vec a = At(mesh, corners[0]) - origin;
            volume -= Dot(a, Cross(At(mesh, corners[i]) - origin, At(mesh, corners[i + 1]) - origin)) / 6;
        }
    }
    return std::fabs(volume);
}

// What a deck means, by the size of everything; names joined by "+" count for each of them.
struct Sizes {
    double measure = 0;
    std::map<std::string, double> groups, elementSets, surfaces;
    std::map<std::string, std::vector<int>> nodeSets; // positions
};

std::vector<std::string> Parts(const std::string &name, bool divided) {
    std::vector<std::string> parts;
    for (std::size_t at = 0; divided && name.find('+', at) != std::string::npos; at = name.find('+', at) + 1) {
        parts.push_back(name.substr(at, name.find('+', at) - at));
    }
    parts.push_back(divided ? name.substr(name.rfind('+') + 1) : name);
    return parts;
}

Sizes SizesOf(const deck::Deck &deck, const Mesh &mesh, bool plain) {
    Sizes sizes;
    for (std::size_t e = 0; e < mesh.elementNumber.size(); ++e) {
        const double measure = MeasureOf(deck, mesh, static_cast<int>(e));
        sizes.measure += measure;
        if (measure > 0) {
            const std::string &name = mesh.groups[static_cast<std::size_t>(mesh.group[e])].name;
            sizes.groups[plain ? name.substr(0, name.find('~')) : flatten::PlainName(name, flatten::kOnElement)] +=
                measure;
        }
    }
    for (const deck::MeshSet &set : mesh.elementSets) {
        double &measure = sizes.elementSets[plain ? set.name : flatten::PlainName(set.name, flatten::kOnElset)];
        for (const int element : set.members) {
            measure += MeasureOf(deck, mesh, element);
        }
    }
    for (const deck::MeshSurface &surface : mesh.surfaces) {
        for (const std::string &name : Parts(surface.name, plain)) {
            double &size = sizes.surfaces[plain ? name : flatten::PlainName(name, flatten::kOnSurface)];
            for (const deck::Face &face : surface.faces) {
                size += SizeOf(mesh, CornersOfSide(ElementAt(deck, mesh, face.element), face.side));
            }
        }
        if (surface.ofNodes) {
            std::vector<int> &nodes = sizes.nodeSets[flatten::PlainName(surface.name, flatten::kOnNset)];
            nodes.insert(nodes.end(), surface.nodes.begin(), surface.nodes.end());
            sizes.surfaces.erase(flatten::PlainName(surface.name, flatten::kOnSurface));
        }
    }
    for (const deck::MeshSet &set : mesh.nodeSets) {
        for (const std::string &name : Parts(set.name, plain)) {
            std::vector<int> &nodes = sizes.nodeSets[plain ? name : flatten::PlainName(name, flatten::kOnNset)];
            nodes.insert(nodes.end(), set.members.begin(), set.members.end());
        }
    }
    return sizes;
}

// Triangles (edges) of the boundary, and how often one is met by more than two elements: of quadrilaterals two each.
struct Boundary {
    long long nFree = 0, nCrowded = 0;
};

Boundary BoundaryOf(const deck::Deck &deck, const Mesh &mesh) {
    std::map<std::vector<int>, int> met;
    for (std::size_t e = 0; e < mesh.elementNumber.size(); ++e) {
        const Element element = ElementAt(deck, mesh, static_cast<int>(e));
        for (int f = 0; DimensionOf(element.shape) == mesh.dimension && f < FacesOf(element.shape); ++f) {
            std::vector<int> corners = CornersOfSide(element, f);
            std::sort(corners.begin(), corners.end());
            ++met[corners];
        }
    }
    Boundary boundary;
    for (const auto &[corners, count] : met) {
        boundary.nFree += count == 1 ? static_cast<long long>(corners.size()) - mesh.dimension + 1 : 0;
        boundary.nCrowded += count > 2 ? 1 : 0;
    }
    return boundary;
}

// Comparing ------------------------------------------------------------------------------------------------

std::string Digits(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.15g", value);
    return text;
}

constexpr double kTolerance = 1e-7; // coordinates of shifted instances are rounded in their last digits

bool IsNear(double a, double b, double whole) {
    return std::fabs(a - b) <= kTolerance * std::max({std::fabs(a), std::fabs(b), whole * 1e-6});
}

void Compare(const char *what, const std::map<std::string, double> &wanted, const std::map<std::string, double> &found,
             double whole, Complaints *complaints) {
    for (const auto &[name, size] : wanted) {
        const auto at = found.find(name);
        if (size > 0 && (at == found.end() || !IsNear(size, at->second, whole))) {
            *complaints += std::string(what) + " " + name + ": wanted " + Digits(size) + ", found " +
                           (at == found.end() ? "none" : Digits(at->second)) + "\n";
        }
    }
}

void CompareMeshes(const Mesh &wanted, const Mesh &found, bool divided, bool byLines, Sizes *was, Sizes *is,
                   Complaints *complaints) {
    const auto begins = [&](const std::vector<double> &a, const std::vector<double> &b) {
        return a.size() <= b.size() && std::equal(a.begin(), a.end(), b.begin());
    };
    if (!begins(wanted.x, found.x) || !begins(wanted.y, found.y) || !begins(wanted.z, found.z)) {
        *complaints += "coordinates differ\n";
    }
    const double whole = was->measure;
    if (!IsNear(whole, is->measure, whole)) {
        *complaints += "measure wanted " + Digits(whole) + ", found " + Digits(is->measure) + "\n";
    }
    Compare("group", byLines ? was->groups : std::map<std::string, double>{}, is->groups, whole, complaints);
    if (!divided) {
        return;
    }
    Compare("element set", was->elementSets, is->elementSets, whole, complaints);
    Compare("surface", was->surfaces, is->surfaces, whole, complaints);
    for (auto &[name, nodes] : was->nodeSets) {
        std::vector<int> &own = is->nodeSets[name];
        own.erase(
            std::remove_if(own.begin(), own.end(), [&](int node) { return node >= static_cast<int>(wanted.x.size()); }),
            own.end());
        std::sort(nodes.begin(), nodes.end());
        nodes.erase(std::unique(nodes.begin(), nodes.end()), nodes.end());
        std::sort(own.begin(), own.end());
        if (own != nodes) {
            *complaints += "node set " + name + ": wanted " + std::to_string(nodes.size()) + " nodes, found " +
                           std::to_string(own.size()) + "\n";
        }
    }
}

// Names that have to be told apart, or are joined already, cannot be compared by name.
bool HasPlainNames(const kivodeck::FlatResult &result) {
    return std::none_of(result.report.findings.begin(), result.report.findings.end(), [](const auto &finding) {
        return finding.code == account::Code::nameReplaced && finding.words[1].find('~') != std::string::npos;
    });
}

struct Tally {
    long nFailed, nMade, nSame; // decks
};

Complaints Check(std::uint64_t seed, bool showReport, Tally *tally) {
    const Case made = MakeCase(seed);
    fake::Reset();
    fake::GrowFrom(2);
    fake::PutFile("deck.inp", made.text);
    for (const auto &[name, text] : made.files) {
        fake::PutFile(name, text);
    }
    kivodeck::FlatJob job{"deck.inp", "flat.inp", "", {}, false};
    const bool divided = seed / 4 % 4 == 0;
    constexpr flatten::Overlaps kOverlaps[] = {flatten::Overlaps::split, flatten::Overlaps::smallest,
                                               flatten::Overlaps::smallest, flatten::Overlaps::first};
    constexpr flatten::Groups kGroups[] = {flatten::Groups::lines, flatten::Groups::lines, flatten::Groups::sections,
                                           flatten::Groups::sets};
    job.options.overlaps = kOverlaps[seed / 4 % 4];
    job.options.groups = kGroups[seed / 16 % 4];
    const kivodeck::FlatResult result = kivodeck::MakeFlat(job);
    if (showReport) {
        std::fputs(kivodeck::TextReport(result.report, {false, true}).c_str(), stdout);
        std::fputs(fake::GetFile("flat.inp").c_str(), stdout);
    }
    Complaints complaints;
    for (const account::Finding &finding : result.report.findings) {
        complaints += finding.code == account::Code::plainDeckWrong ? TextOf(finding) + "\n" : "";
    }
    complaints += result.made || result.report.errors > 0 ? "" : "not made, and nobody says why\n";
    const account::Report report = account::CheckDeck("deck.inp");
    if (!result.made) {
        return complaints + (report.errors + report.warnings == 0 ? "a clean deck is not made plain\n" : "");
    }
    ++tally->nMade;
    if (!kivodeck::MakeFlat({"flat.inp", "again.inp", "", {}, false}).made ||
        fake::GetFile("flat.inp") != fake::GetFile("again.inp")) {
        complaints += "the plain deck is not the same when it is made plain again\n";
    }
    deck::Deck before = deck::ReadDeck("deck.inp");
    const Mesh wanted = Assemble(before);
    deck::Deck after = deck::ReadDeck("flat.inp");
    const Mesh found = Assemble(after);
    if (HasPlainNames(result)) {
        Sizes was = SizesOf(before, wanted, false);
        Sizes is = SizesOf(after, found, true);
        CompareMeshes(wanted, found, divided, job.options.groups == flatten::Groups::lines, &was, &is, &complaints);
        if (made.measure > 0 && !IsNear(made.measure, is.measure, made.measure)) {
            complaints += "the maker's measure is " + Digits(made.measure) + ", found " + Digits(is.measure) + "\n";
        }
    }
    if (made.kind == kCae) { // their elements fit together
        const Boundary was = BoundaryOf(before, wanted);
        const Boundary is = BoundaryOf(after, found);
        complaints += was.nFree == is.nFree && was.nCrowded == is.nCrowded ? "" : "pieces do not fit\n";
    }
    if (report.errors + report.warnings == 0 && job.options.overlaps == flatten::Overlaps::smallest &&
        job.options.groups == flatten::Groups::lines) {
        const std::string flat = fake::GetFile("flat.inp");
        const std::string own = RunProgram(made.text, false).files.at("mesh.input");
        complaints += own == RunProgram(flat, false).files.at("mesh.input") ? "" : "mesh.input differs\n";
        ++tally->nSame;
    }
    return complaints;
}

} // namespace

int main(int argc, char **argv) {
    std::uint64_t count = 300, seed = 1;
    bool showReport = false;
    for (int i = 1; i < argc; ++i) {
        const std::string word = argv[i];
        showReport = showReport || word == "--report";
        std::uint64_t *number = word == "--count" ? &count : word == "--seed" ? &seed : nullptr;
        if (number != nullptr && i + 1 < argc) {
            *number = std::strtoull(argv[++i], nullptr, 10);
        }
    }
    Tally tally{};
    for (std::uint64_t i = seed; i < seed + count; ++i) {
        const Complaints complaints = Check(i, showReport, &tally);
        if (!complaints.empty()) {
            std::printf("seed %llu: %s\n", static_cast<unsigned long long>(i), complaints.c_str());
            ++tally.nFailed;
        }
    }
    std::printf("%llu decks, %ld failed; made plain %ld, the same mesh file %ld\n",
                static_cast<unsigned long long>(count), tally.nFailed, tally.nMade, tally.nSame);
    // Decks that show nothing would prove nothing.
    const bool varied = count < 100 || (tally.nMade > 40 && tally.nSame > 5);
    return tally.nFailed == 0 && varied ? 0 : 1;
}
