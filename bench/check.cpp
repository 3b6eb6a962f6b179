// Checks what a run left against the deck maker's summary.
//
//     meshcheck SUMMARY FOLDER LOG [--vtk]
//
// SUMMARY is what makedeck printed, FOLDER holds mesh.input (with --vtk the VTK files, too, and nothing else) and LOG
// is the standard output of the run. The mesh passes every check of an audit. Counts, tags and groups are those of the
// summary. The box tells what else the mesh must be: its volume, the area of its sides, every middle node in the
// middle. Exit status: 0 when everything is right, 1 with a line for the first fault, 2 for wrong usage.
#include "audit/audit.h"
#include "meshfile/meshfile.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

constexpr double kSpacing = 0.1; // of the cubes
constexpr double kMiddleTolerance = 1e-9;
constexpr double kMeasureTolerance = 1e-7; // relative

struct Family {
    int type;
    int materialNodes;
    std::array<int, 4> corners;                    // columns; the plane ones use three
    std::vector<std::array<int, 3>> middleColumns; // corner, middle, corner
};

const std::map<std::string, Family> kFamilies{
    {"C3D4", {5, 1, {0, 1, 2, 3}, {}}},
    {"C3D10", {6, 8, {0, 1, 2, 3}, {{0, 4, 1}, {1, 5, 2}, {2, 6, 0}, {0, 7, 3}, {1, 8, 3}, {2, 9, 3}}}},
    {"CPS3", {3, 1, {0, 1, 2, 0}, {}}},
    {"CPS6", {4, 4, {0, 2, 4, 0}, {{0, 1, 2}, {2, 3, 4}, {4, 5, 0}}}},
};

void Need(bool isRight, const std::string &fault) {
    if (!isRight) {
        std::printf("wrong: %s\n", fault.c_str());
        std::exit(1);
    }
}

// An entry that the summary lists: a section, a node set, a surface.
struct Listed {
    std::string name;
    std::size_t tagged; // entries that carry its tag in the end
};

struct Summary {
    std::map<std::string, std::size_t> counts;
    std::map<std::string, std::vector<Listed>> lists;
    Family family;

    std::size_t operator[](const char *key) const {
        return counts.at(key);
    }
};

Summary ReadSummary(const char *path) {
    Summary summary;
    std::ifstream in(path);
    for (std::string line; std::getline(in, line);) {
        const std::size_t at = line.find('=');
        const std::string key = line.substr(0, at);
        std::istringstream value(line.substr(at + 1));
        if (key == "type") {
            summary.family = kFamilies.at(value.str());
        } else if (key == "element_section" || key == "node_set" || key == "surface") {
            Listed entry{};
            value >> entry.name;
            while (value >> entry.tagged) { // of a node set's two counts the second
            }
            summary.lists[key].push_back(entry);
        } else {
            value >> summary.counts[key];
        }
    }
    Need(!summary.counts.empty(), "the summary cannot be read");
    return summary;
}

void CheckLog(const Summary &summary, const char *path) {
    std::ostringstream text;
    text << std::ifstream(path).rdbuf();
    const std::string log = text.str();
    Need(log.find("Error>") == std::string::npos && log.find("Warning>") == std::string::npos, "an error in the log");
    const std::string turned = "  Numbering order of " + std::to_string(summary["inverted"]) + " elements has";
    Need(summary["inverted"] == 0 ? log.find("  Numbering order") == std::string::npos
                                  : log.find(turned) != std::string::npos,
         "the log does not say how many elements were turned");
}

void CheckFiles(const Summary &summary, const std::string &folder, bool hasVtk) {
    std::set<std::string> wanted{"mesh.input"};
    if (hasVtk) {
        wanted.insert("_Cells.vtk");
        if (summary["final_faces"] > 0) {
            wanted.insert("_Faces.vtk");
        }
        if (summary.lists.count("node_set") == 1) {
            for (const Listed &set : summary.lists.at("node_set")) {
                wanted.insert("_NSET_" + set.name + ".vtk");
            }
        }
    }
    for (const auto &entry : std::filesystem::directory_iterator(folder)) {
        Need(wanted.erase(entry.path().filename().string()) == 1, "a file too many: " + entry.path().string());
    }
    Need(wanted.empty(), "a file is missing: " + (wanted.empty() ? "" : *wanted.begin()));
}

using Vector = std::array<double, 3>;

Vector operator-(const Vector &a, const Vector &b) {
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}

double Dot(const Vector &a, const Vector &b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

Vector Cross(const Vector &a, const Vector &b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

Vector Place(const meshfile::Mesh &mesh, int node) {
    const auto at = static_cast<std::size_t>(node);
    return {mesh.nodes.x[at], mesh.nodes.y[at], mesh.dimension == 3 ? mesh.nodes.z[at] : 0.0};
}

void CheckRows(const meshfile::Rows &rows, std::size_t count, std::size_t width) {
    Need(rows.Count() == count, "the number of faces or cells");
    for (std::size_t i = 0; i < count; ++i) {
        Need(rows.Width(i) == width, "the number of nodes of a face or cell");
    }
}

// Volume of a tetrahedron or area of a triangle.
double CellMeasure(const meshfile::Mesh &mesh, const Family &family, const int *cell) {
    const Vector a = Place(mesh, cell[family.corners[0]]);
    const Vector u = Place(mesh, cell[family.corners[1]]) - a;
    const Vector normal = Cross(u, Place(mesh, cell[family.corners[2]]) - a);
    return mesh.dimension == 3 ? Dot(normal, Place(mesh, cell[family.corners[3]]) - a) / 6 : normal[2] / 2;
}

// Area of a triangle or length of a line.
double FaceMeasure(const meshfile::Mesh &mesh, const int *face) {
    const Vector a = Place(mesh, face[0]);
    const Vector u = Place(mesh, face[1]) - a;
    const Vector normal = mesh.dimension == 3 ? Cross(u, Place(mesh, face[2]) - a) : u;
    return std::sqrt(Dot(normal, normal)) / (mesh.dimension == 3 ? 2 : 1);
}

void NeedClose(double value, double wanted, const char *what) {
    Need(std::abs(value - wanted) <= kMeasureTolerance * wanted,
         std::string(what) + " is " + std::to_string(value) + " instead of " + std::to_string(wanted));
}

void CheckMiddles(const meshfile::Mesh &mesh, const Family &family, const int *cell) {
    for (const auto &[first, middle, last] : family.middleColumns) {
        const Vector a = Place(mesh, cell[first]);
        const Vector m = Place(mesh, cell[middle]);
        const Vector off = Place(mesh, cell[last]) - m - (m - a);
        Need(Dot(off, off) < kMiddleTolerance * kMiddleTolerance, "a middle node is not in the middle");
    }
}

void CheckCells(const Summary &summary, const meshfile::Mesh &mesh) {
    const meshfile::Cells &cells = mesh.cells;
    CheckRows(cells.rows, summary["elements"], summary["nodes_per_element"]);
    Need(cells.numberOfMaterialNodes == summary.family.materialNodes, "the material nodes of a cell");
    const std::vector<Listed> &sections = summary.lists.at("element_section");
    std::size_t section = 0; // that cell i belongs to
    std::size_t end = sections[0].tagged;
    double measure = 0;
    for (std::size_t i = 0; i < cells.rows.Count(); ++i) {
        for (; i == end && section + 1 < sections.size(); end += sections[section].tagged) {
            ++section;
        }
        Need(cells.tags[i] == static_cast<int>(section + 1), "the tag of a cell");
        Need(cells.types[i] == summary.family.type, "the type of a cell");
        measure += CellMeasure(mesh, summary.family, cells.rows.Row(i));
        CheckMiddles(mesh, summary.family, cells.rows.Row(i));
    }
    const double edge = kSpacing * static_cast<double>(summary["cubes"]);
    NeedClose(measure, std::pow(edge, mesh.dimension), "the volume of the cells");
}

void CheckFaces(const Summary &summary, const meshfile::Mesh &mesh) {
    const meshfile::Rows &rows = mesh.faces.rows;
    CheckRows(rows, summary["final_faces"], summary["nodes_per_face"]);
    const double edge = kSpacing * static_cast<double>(summary["cubes"]);
    double measure = 0;
    for (std::size_t i = 0; i < rows.Count(); ++i) {
        measure += FaceMeasure(mesh, rows.Row(i));
    }
    if (rows.Count() > 0) {
        Need(static_cast<std::size_t>(mesh.faces.width) == summary["nodes_per_face"], "the width of the faces");
        NeedClose(measure, mesh.dimension == 3 ? 6 * edge * edge : 4 * edge, "the area of the faces");
    }
}

// Sets overlap in some decks, and then a group may be empty: the summary tells how much each one holds.
void CheckAudit(const meshfile::Mesh &mesh) {
    const audit::Verdict verdict = audit::Judge(mesh);
    for (int i = 0; i < audit::kChecks; ++i) {
        const auto check = static_cast<audit::Check>(i);
        Need(check == audit::Check::groups || verdict.Of(check).Ok(), audit::KindOf(check).fault);
    }
}

// The groups of a kind count down to tag 1, with the names of the list (in reverse for cells), and as many entries
// carry each tag as the summary says.
template <class OneGroup>
void CheckGroups(const Summary &summary, const char *key, const std::vector<OneGroup> &groups, bool isReversed,
                 const std::vector<int> &tags) {
    const std::vector<Listed> listed = summary.lists.count(key) == 1 ? summary.lists.at(key) : std::vector<Listed>{};
    std::map<int, std::size_t> carriers;
    for (const int tag : tags) {
        ++carriers[tag];
    }
    const std::size_t n = listed.size();
    Need(groups.size() == n, std::string("the number of groups: ") + key);
    for (std::size_t i = 0; i < n; ++i) {
        const Listed &entry = listed[isReversed ? n - 1 - i : i];
        Need(groups[i].name == entry.name && groups[i].tag == static_cast<int>(n - i), "the group " + entry.name);
        Need(carriers[groups[i].tag] == entry.tagged, "the entries of " + entry.name);
    }
}

void CheckMesh(const Summary &summary, const meshfile::Mesh &mesh) {
    Need(static_cast<std::size_t>(mesh.dimension) == summary["dimensions"], "the dimension");
    Need(mesh.nodes.Count() == summary["final_nodes"], "the number of nodes");
    Need(mesh.nodes.onBoundary == std::vector<int>(mesh.nodes.Count(), 1), "a node that is not on the boundary");
    CheckAudit(mesh);
    CheckCells(summary, mesh);
    CheckFaces(summary, mesh);
    CheckGroups(summary, "node_set", mesh.nodeGroups, false, mesh.nodes.tags);
    CheckGroups(summary, "surface", mesh.faceGroups, false, mesh.faces.tags);
    CheckGroups(summary, "element_section", mesh.cellGroups, true, mesh.cells.tags);
}

} // namespace

int main(int argc, char **argv) {
    const bool hasVtk = argc == 5 && std::string(argv[4]) == "--vtk";
    if (argc != 4 && !hasVtk) {
        std::fputs("usage: meshcheck SUMMARY FOLDER LOG [--vtk]\n", stderr);
        return 2;
    }
    const Summary summary = ReadSummary(argv[1]);
    const std::string folder = argv[2];
    CheckLog(summary, argv[3]);
    CheckFiles(summary, folder, hasVtk);
    const meshfile::Result result = meshfile::Read(folder + "/mesh.input");
    Need(result.Ok(), "mesh.input: " + meshfile::Describe(result.error));
    CheckMesh(summary, result.mesh);
    std::puts("right");
    return 0;
}
