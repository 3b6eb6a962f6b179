// Good meshes, and what damage does to them: each kind of damage is found by the checks that name it and by no others.
//
// The meshes are boxes cut into triangles or tetrahedra of unit cubes, written by the program. A damage is done to the
// file: it is read, changed, written and read again.
#include "audit/audit.h"
#include "meshfile/meshfile.h"
#include "tests/support/dice.h"
#include "tests/support/fakesystem.h"
#include "tests/support/printmesh.h"
#include "tests/support/runs.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <limits>
#include <map>
#include <set>

namespace fs = std::filesystem;

using audit::Check;
using audit::Subject;
using meshfile::Mesh;

namespace {

using Row = std::vector<int>;
using At = std::array<double, 3>;

// The box's deck ---------------------------------------------------------------------------------------

constexpr int kCubes = 4; // along each edge

struct Family {
    const char *type;
    int dimension;
    bool quadratic;
};

constexpr Family kFamilies[] = {{"CPS3", 2, false}, {"CPE6", 2, true}, {"C3D4", 3, false}, {"C3D10", 3, true}};

// Node numbers by place, in half steps.
class Numbers {
  public:
    int Of(const std::array<int, 3> &place) {
        return numbers_.insert({place, static_cast<int>(numbers_.size()) + 1}).first->second;
    }
    std::string Rows(double shift) const {
        std::string text;
        for (const auto &[place, number] : numbers_) {
            text += std::to_string(number);
            for (const int half : place) {
                text += ", " + std::to_string(half * 0.5 + shift);
            }
            text += "\n";
        }
        return text;
    }

  private:
    std::map<std::array<int, 3>, int> numbers_;
};

std::array<int, 3> Between(const std::array<int, 3> &a, const std::array<int, 3> &b) {
    return {(a[0] + b[0]) / 2, (a[1] + b[1]) / 2, (a[2] + b[2]) / 2};
}

using Corners = std::vector<std::array<int, 3>>;

// The simplices of a unit cube or square: from its lowest corner to its highest one, axis by axis.
std::vector<Corners> Cut(const std::array<int, 3> &low, int dimension) {
    std::vector<Corners> cells;
    std::vector<std::size_t> axes(static_cast<std::size_t>(dimension));
    for (std::size_t a = 0; a < axes.size(); ++a) {
        axes[a] = a;
    }
    do {
        Corners corners{low};
        for (const std::size_t axis : axes) {
            corners.push_back(corners.back());
            corners.back()[axis] += 2;
        }
        cells.push_back(corners);
    } while (std::next_permutation(axes.begin(), axes.end()));
    return cells;
}

std::string ElementRow(int number, const Corners &c, bool quadratic, Numbers *numbers) {
    std::string text = std::to_string(number);
    for (const auto &corner : c) {
        text += ", " + std::to_string(numbers->Of(corner));
    }
    static const int kMiddles[6][2] = {{0, 1}, {1, 2}, {2, 0}, {0, 3}, {1, 3}, {2, 3}};
    for (std::size_t m = 0; quadratic && m < (c.size() == 3 ? 3u : 6u); ++m) {
        const auto &[a, b] = kMiddles[m];
        text +=
            ", " + std::to_string(numbers->Of(Between(c[static_cast<std::size_t>(a)], c[static_cast<std::size_t>(b)])));
    }
    return text + "\n";
}

// The label of the side whose corners lie on the plane; 0: none does.
int LabelOn(const Corners &c, std::size_t axis, int half) {
    static const std::vector<std::vector<std::size_t>> kSides[] = {{{0, 1}, {1, 2}, {2, 0}},
                                                                   {{0, 1, 2}, {0, 3, 1}, {1, 3, 2}, {2, 3, 0}}};
    int label = 0;
    for (const auto &side : kSides[c.size() - 3]) {
        ++label;
        if (std::all_of(side.begin(), side.end(), [&](std::size_t k) { return c[k][axis] == half; })) {
            return label;
        }
    }
    return 0;
}

// Layers along the last axis: all but the last are group BASE, the last is `top`. Surfaces LOW and HIGH, node set SIDE.
std::string BoxDeck(const Family &family, const std::string &top) {
    Numbers numbers;
    std::string elements[2], low, high;
    const auto up = static_cast<std::size_t>(family.dimension - 1);
    int number = 0;
    for (int i = 0; i < kCubes; ++i) {
        for (int j = 0; j < kCubes; ++j) {
            for (int k = 0; k < (family.dimension == 3 ? kCubes : 1); ++k) {
                const std::array<int, 3> corner{2 * i, 2 * j, 2 * k};
                for (const Corners &c : Cut(corner, family.dimension)) {
                    elements[corner[up] == 2 * (kCubes - 1) ? 1 : 0] +=
                        ElementRow(++number, c, family.quadratic, &numbers);
                    for (const auto &[half, rows] : {std::pair{0, &low}, std::pair{2 * kCubes, &high}}) {
                        const int label = LabelOn(c, up, half);
                        *rows += label > 0 ? std::to_string(number) + ", S" + std::to_string(label) + "\n" : "";
                    }
                }
            }
        }
    }
    const auto type = std::string("*ELEMENT, TYPE=") + family.type + ", ELSET=";
    return "*NODE\n" + numbers.Rows(0.25) + type + "BASE\n" + elements[0] + type + top + "\n" + elements[1] +
           "*NSET, NSET=SIDE\n1, 2, 3\n*SURFACE, NAME=LOW\n" + low + "*SURFACE, NAME=HIGH\n" + high;
}

Mesh Translated(const std::string &deck) {
    fake::Reset();
    const Run run = RunProgram(deck, false);
    meshfile::Result result = meshfile::ReadText(run.files.at("mesh.input"));
    EXPECT_TRUE(result.Ok()) << meshfile::Describe(result.error);
    return std::move(result.mesh);
}

// Changing a mesh --------------------------------------------------------------------------------------

Row RowOf(const meshfile::Rows &rows, std::size_t row) {
    return {rows.Row(row), rows.Row(row) + rows.Width(row)};
}

void SetRow(meshfile::Rows *rows, std::size_t row, const Row &nodes) {
    meshfile::Rows changed;
    changed.first.push_back(0);
    for (std::size_t r = 0; r < std::max(rows->Count(), row + 1); ++r) {
        const Row one = r == row ? nodes : RowOf(*rows, r);
        changed.nodes.insert(changed.nodes.end(), one.begin(), one.end());
        changed.first.push_back(changed.nodes.size());
    }
    *rows = changed;
}

std::size_t AddCell(Mesh *mesh, const Row &nodes, std::size_t like) {
    meshfile::Cells &cells = mesh->cells;
    SetRow(&cells.rows, cells.rows.Count(), nodes);
    cells.types.push_back(cells.types[like]);
    cells.tags.push_back(cells.tags[like]);
    return cells.rows.Count() - 1;
}

std::size_t AddFace(Mesh *mesh, const Row &nodes) {
    SetRow(&mesh->faces.rows, mesh->faces.rows.Count(), nodes);
    mesh->faces.tags.push_back(mesh->faces.tags[0]);
    return mesh->faces.rows.Count() - 1;
}

At PlaceOf(const Mesh &mesh, int node) {
    const auto n = static_cast<std::size_t>(node);
    return {mesh.nodes.x[n], mesh.nodes.y[n], mesh.dimension == 3 ? mesh.nodes.z[n] : 0};
}

void Move(Mesh *mesh, int node, const At &to) {
    const auto n = static_cast<std::size_t>(node);
    mesh->nodes.x[n] = to[0];
    mesh->nodes.y[n] = to[1];
    if (mesh->dimension == 3) {
        mesh->nodes.z[n] = to[2];
    }
}

int AddNode(Mesh *mesh, const At &at) {
    meshfile::Nodes &nodes = mesh->nodes;
    nodes.x.push_back(0);
    nodes.y.push_back(0);
    if (mesh->dimension == 3) {
        nodes.z.push_back(0);
    }
    nodes.tags.push_back(0);
    nodes.onBoundary.push_back(1);
    const int node = static_cast<int>(nodes.Count()) - 1;
    Move(mesh, node, at);
    return node;
}

// Columns of the corners.
Row CornerColumns(const Mesh &mesh, std::size_t cell) {
    return mesh.cells.types[cell] == 4 ? Row{0, 2, 4} : mesh.dimension == 2 ? Row{0, 1, 2} : Row{0, 1, 2, 3};
}

int Corner(const Mesh &mesh, std::size_t cell, std::size_t k) {
    return mesh.cells.rows.Row(cell)[CornerColumns(mesh, cell)[k]];
}

bool IsLoose(const Mesh &mesh, std::size_t cell) {
    return std::any_of(mesh.cellGroups.begin(), mesh.cellGroups.end(), [&](const meshfile::CellGroup &group) {
        return group.name.substr(0, 2) == "C_" && group.tag == mesh.cells.tags[cell];
    });
}

// A cell of BASE that touches neither the box's sides nor the last layer.
std::size_t InnerCell(const Mesh &mesh) {
    for (std::size_t cell = 0; cell < mesh.cells.rows.Count(); ++cell) {
        const Row row = RowOf(mesh.cells.rows, cell);
        if (std::all_of(row.begin(), row.end(), [&](int node) {
                const At at = PlaceOf(mesh, node);
                const auto inside = [](double c) { return c > 0.3 && c < kCubes; };
                return inside(at[0]) && inside(at[1]) && (mesh.dimension == 2 || inside(at[2])) &&
                       at[static_cast<std::size_t>(mesh.dimension - 1)] < kCubes - 0.5;
            })) {
            return cell;
        }
    }
    ADD_FAILURE() << "no inner cell";
    return 0;
}

std::size_t LooseCell(const Mesh &mesh) {
    std::size_t cell = 0;
    while (!IsLoose(mesh, cell)) {
        ++cell;
    }
    return cell;
}

// As the translator would turn it.
Row Turned(const Mesh &mesh, std::size_t cell) {
    Row row = RowOf(mesh.cells.rows, cell);
    const std::map<int, std::vector<std::array<std::size_t, 2>>> swaps{
        {3, {{1, 2}}}, {4, {{2, 4}, {1, 5}}}, {5, {{1, 2}}}, {6, {{1, 2}, {4, 6}, {8, 9}}}};
    for (const auto &[a, b] : swaps.at(mesh.cells.types[cell])) {
        std::swap(row[a], row[b]);
    }
    return row;
}

Row Reversed(Row row) {
    std::swap(row[0], row[1]);
    return row;
}

// A mid-side node and the two corners of its edge.
std::array<int, 3> Middle(const Mesh &mesh, std::size_t cell) {
    const int *row = mesh.cells.rows.Row(cell);
    return mesh.dimension == 2 ? std::array<int, 3>{row[1], row[0], row[2]}
                               : std::array<int, 3>{row[4], row[0], row[1]};
}

// The damages ------------------------------------------------------------------------------------------

// What the first of the expected checks has to name, among others.
struct Named {
    Subject subject;
    std::size_t index;
};

// Meshes that a damage can be done to.
constexpr int kLinear = 1, kQuadratic = 2, kLooseToo = 4, kLooseOnly = 8;
constexpr int kAny = kLinear | kQuadratic | kLooseToo;

struct Damage {
    const char *name;
    int meshes;
    std::set<Check> expected; // the set's order is that of the checks
    std::function<Named(Mesh &)> harm;
};

Named SetNode(Mesh &mesh, int to) { // of an inner cell
    const std::size_t cell = InnerCell(mesh);
    Row row = RowOf(mesh.cells.rows, cell);
    row[0] = to;
    SetRow(&mesh.cells.rows, cell, row);
    return {Subject::cell, cell};
}

Named SetFaceNode(Mesh &mesh, int to) {
    Row row = RowOf(mesh.faces.rows, 0);
    row[0] = to;
    SetRow(&mesh.faces.rows, 0, row);
    return {Subject::face, 0};
}

// A node that shares no cell with the given one.
int FarFrom(const Mesh &mesh, int node) {
    const At at = PlaceOf(mesh, node);
    int far = 0;
    const auto distance = [&](int n) { return std::hypot(PlaceOf(mesh, n)[0] - at[0], PlaceOf(mesh, n)[1] - at[1]); };
    for (int n = 0; n < static_cast<int>(mesh.nodes.Count()); ++n) {
        far = distance(n) > distance(far) ? n : far;
    }
    return far;
}

// A copy of an inner node, for one of its cells.
Named Crack(Mesh &mesh, double by) {
    const std::size_t cell = InnerCell(mesh);
    At at = PlaceOf(mesh, mesh.cells.rows.Row(cell)[0]);
    at[0] += by;
    const int copy = AddNode(&mesh, at);
    SetNode(mesh, copy);
    return {Subject::node, static_cast<std::size_t>(copy)};
}

Named PlaceMiddle(Mesh &mesh, double share) {
    const std::size_t cell = InnerCell(mesh);
    const auto [middle, from, to] = Middle(mesh, cell);
    const At a = PlaceOf(mesh, from);
    const At b = PlaceOf(mesh, to);
    Move(&mesh, middle, {a[0] + share * (b[0] - a[0]), a[1] + share * (b[1] - a[1]), a[2] + share * (b[2] - a[2])});
    return {Subject::cell, cell};
}

Named SetCoordinate(Mesh &mesh, double to) {
    const int node = Corner(mesh, InnerCell(mesh), 0);
    mesh.nodes.y[static_cast<std::size_t>(node)] = to;
    return {Subject::node, static_cast<std::size_t>(node)};
}

Named Scale(Mesh &mesh, double x, double all) {
    for (std::size_t n = 0; n < mesh.nodes.Count(); ++n) {
        const At at = PlaceOf(mesh, static_cast<int>(n));
        Move(&mesh, static_cast<int>(n), {x * all * at[0], all * at[1], all * at[2]});
    }
    return {Subject::mesh, 0};
}

// One more cell on a side of an inner one, on the cell's own side of it but of other size.
Named Overlap(Mesh &mesh) {
    const std::size_t cell = InnerCell(mesh);
    const At tip = PlaceOf(mesh, Corner(mesh, cell, 0));
    const At base = PlaceOf(mesh, Corner(mesh, cell, 1));
    Row row = RowOf(mesh.cells.rows, cell);
    row[0] = AddNode(
        &mesh, {base[0] + 3 * (tip[0] - base[0]), base[1] + 3 * (tip[1] - base[1]), base[2] + 3 * (tip[2] - base[2])});
    return {Subject::cell, AddCell(&mesh, row, cell)};
}

// A cell of BASE where a loose one is, on the same nodes.
Named CoverLooseCell(Mesh &mesh) {
    const std::size_t cell = LooseCell(mesh);
    return {Subject::cell, AddCell(&mesh, RowOf(mesh.cells.rows, cell), InnerCell(mesh))};
}

Named EmptyGroup(std::vector<int> *tags, int tag, int by, Subject group, std::size_t index) {
    std::replace(tags->begin(), tags->end(), tag, by);
    return {group, index};
}

Named SetLength(double *length, double by, Subject subject) {
    *length *= by;
    return {subject, 0};
}

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr Subject kMesh = Subject::mesh, kGroup = Subject::cellGroup;

int NumNodes(const Mesh &mesh) {
    return static_cast<int>(mesh.nodes.Count());
}

// clang-format off
const std::vector<Damage> kDamages{
{"a type that is none", kAny, {Check::cells}, [](Mesh &m) -> Named {
    const std::size_t cell = InnerCell(m); m.cells.types[cell] = 7; return {Subject::cell, cell}; }},
{"the code of a quadrilateral or hexahedron", kAny, {Check::cells}, [](Mesh &m) -> Named {
    const std::size_t cell = InnerCell(m); m.cells.types[cell] = m.dimension == 2 ? 52 : 55; return {Subject::cell, cell}; }},
{"a type of the other dimension", kAny, {Check::cells}, [](Mesh &m) -> Named {
    const std::size_t cell = InnerCell(m); m.cells.types[cell] = m.dimension == 2 ? 5 : 3; return {Subject::cell, cell}; }},
{"the code of a linear cell for a quadratic one", kQuadratic | kLooseToo, {Check::cells}, [](Mesh &m) -> Named {
    const std::size_t cell = InnerCell(m); --m.cells.types[cell]; return {Subject::cell, cell}; }},
{"a row that is too short", kAny, {Check::cells}, [](Mesh &m) -> Named {
    const std::size_t cell = InnerCell(m); Row row = RowOf(m.cells.rows, cell); row.pop_back();
    SetRow(&m.cells.rows, cell, row); return {Subject::cell, cell}; }},
{"a row that is too long", kAny, {Check::cells}, [](Mesh &m) -> Named {
    const std::size_t cell = InnerCell(m); Row row = RowOf(m.cells.rows, cell); row.push_back(row[0]);
    SetRow(&m.cells.rows, cell, row); return {Subject::cell, cell}; }},
{"an empty row", kAny, {Check::cells}, [](Mesh &m) -> Named {
    const std::size_t cell = InnerCell(m); SetRow(&m.cells.rows, cell, {}); return {Subject::cell, cell}; }},
{"no cells", kAny, {Check::cells, Check::groups, Check::unusedNodes, Check::lengths}, [](Mesh &m) -> Named {
    m.cells = {}; m.faces = {}; return {kMesh, 0}; }},
{"a cell with the node behind the last", kAny, {Check::indices}, [](Mesh &m) { return SetNode(m, NumNodes(m)); }},
{"a cell with node -1", kAny, {Check::indices}, [](Mesh &m) { return SetNode(m, -1); }},
{"a cell with node -1, and another longest edge of its group", kAny, {Check::indices, Check::lengths}, [](Mesh &m) {
    m.cellGroups[1].lengths.longestEdge *= 1.01; return SetNode(m, -1); }},
{"a cell with node -5", kAny, {Check::indices}, [](Mesh &m) { return SetNode(m, -5); }},
{"a cell with the largest number for a node", kAny, {Check::indices}, [](Mesh &m) { return SetNode(m, 2147483647); }},
{"a cell with a face and a node of that face less", kLinear, {Check::indices}, [](Mesh &m) -> Named {
    const Row face = RowOf(m.faces.rows, 0);
    for (std::size_t cell = 0; cell < m.cells.rows.Count(); ++cell) {
        Row row = RowOf(m.cells.rows, cell);
        if (std::all_of(face.begin(), face.end(), [&](int n) { return std::count(row.begin(), row.end(), n) == 1; })) {
            *std::find(row.begin(), row.end(), face[1]) = -1; SetRow(&m.cells.rows, cell, row);
            return {Subject::cell, cell};
        }
    }
    ADD_FAILURE(); return {Subject::cell, 0}; }},
{"a face with the node behind the last", kAny, {Check::indices}, [](Mesh &m) { return SetFaceNode(m, NumNodes(m)); }},
{"a face with node -1", kAny, {Check::indices}, [](Mesh &m) { return SetFaceNode(m, -1); }},
{"a node's tag without group", kAny, {Check::tags}, [](Mesh &m) -> Named { m.nodes.tags[5] = 99; return {Subject::node, 5}; }},
{"a node's tag below 0", kAny, {Check::tags}, [](Mesh &m) -> Named { m.nodes.tags[5] = -1; return {Subject::node, 5}; }},
{"a face's tag without group", kAny, {Check::tags}, [](Mesh &m) -> Named { m.faces.tags[1] = 99; return {Subject::face, 1}; }},
{"a face without tag", kAny, {Check::tags}, [](Mesh &m) -> Named { m.faces.tags[1] = 0; return {Subject::face, 1}; }},
{"a cell's tag without group", kAny, {Check::tags}, [](Mesh &m) -> Named { m.cells.tags[3] = 99; return {Subject::cell, 3}; }},
{"a cell without tag", kAny, {Check::tags}, [](Mesh &m) -> Named { m.cells.tags[3] = 0; return {Subject::cell, 3}; }},
{"a face group taken out of the list", kAny, {Check::tags}, [](Mesh &m) {
    const int tag = m.faceGroups[0].tag; const auto at = std::find(m.faces.tags.begin(), m.faces.tags.end(), tag);
    m.faceGroups.erase(m.faceGroups.begin());
    return Named{Subject::face, static_cast<std::size_t>(at - m.faces.tags.begin())}; }},
{"a node group without nodes", kAny, {Check::groups}, [](Mesh &m) {
    return EmptyGroup(&m.nodes.tags, m.nodeGroups[0].tag, 0, Subject::nodeGroup, 0); }},
{"a face group without faces", kAny, {Check::groups}, [](Mesh &m) {
    return EmptyGroup(&m.faces.tags, m.faceGroups[1].tag, m.faceGroups[0].tag, Subject::faceGroup, 1); }},
{"a cell group without cells", kAny, {Check::groups}, [](Mesh &m) -> Named {
    m.cellGroups.push_back({"NONE", 99, {1e15, 1e15, 0}}); return {kGroup, 2}; }},
{"two groups with one tag", kAny, {Check::groups}, [](Mesh &m) -> Named {
    m.nodeGroups.push_back({"AGAIN", m.nodeGroups[0].tag}); return {Subject::nodeGroup, 1}; }},
{"a cell given twice", kAny, {Check::duplicateCells}, [](Mesh &m) -> Named {
    const std::size_t cell = InnerCell(m); return {Subject::cell, AddCell(&m, RowOf(m.cells.rows, cell), cell)}; }},
{"a cell given three times", kAny, {Check::duplicateCells}, [](Mesh &m) -> Named {
    const std::size_t cell = InnerCell(m); AddCell(&m, RowOf(m.cells.rows, cell), cell);
    return {Subject::cell, AddCell(&m, RowOf(m.cells.rows, cell), cell)}; }},
{"a cell given twice, from another corner on", kLinear | kLooseToo, {Check::duplicateCells}, [](Mesh &m) -> Named {
    const std::size_t cell = InnerCell(m); Row row = RowOf(m.cells.rows, cell);
    std::rotate(row.begin(), row.begin() + 1, row.begin() + 3); return {Subject::cell, AddCell(&m, row, cell)}; }},
{"a cell in the place of another", kAny, {Check::duplicateCells}, [](Mesh &m) -> Named {
    const std::size_t cell = InnerCell(m); // the one beside it in the file has no node for itself
    SetRow(&m.cells.rows, cell + 1, RowOf(m.cells.rows, cell)); return {Subject::cell, cell + 1}; }},
{"a cell given twice, turned", kAny, {Check::duplicateCells, Check::orientation}, [](Mesh &m) -> Named {
    const std::size_t cell = InnerCell(m); return {Subject::cell, AddCell(&m, Turned(m, cell), cell)}; }},
{"a loose cell given twice", kAny | kLooseOnly, {Check::duplicateCells, Check::privateNodes}, [](Mesh &m) -> Named {
    const std::size_t cell = LooseCell(m); return {Subject::cell, AddCell(&m, RowOf(m.cells.rows, cell), cell)}; }},
{"a turned cell", kAny, {Check::orientation}, [](Mesh &m) -> Named {
    const std::size_t cell = InnerCell(m); SetRow(&m.cells.rows, cell, Turned(m, cell)); return {Subject::cell, cell}; }},
{"every cell turned", kAny, {Check::orientation}, [](Mesh &m) -> Named { // those with faces, too
    for (std::size_t c = 0; c < m.cells.rows.Count(); ++c) { SetRow(&m.cells.rows, c, Turned(m, c)); }
    return {Subject::cell, 0}; }},
{"a cell with a corner twice", kAny, {Check::orientation, Check::lengths}, [](Mesh &m) {
    return SetNode(m, Corner(m, InnerCell(m), 1)); }},
{"the mesh in a mirror", kAny, {Check::orientation, Check::faceNormals}, [](Mesh &m) -> Named {
    Scale(m, -1, 1); return {Subject::cell, 0}; }},
{"the mesh pressed flat", kAny, {Check::orientation, Check::coincidentNodes, Check::lengths}, [](Mesh &m) -> Named {
    Scale(m, 0, 1); return {Subject::cell, 0}; }},
{"two mid-side nodes exchanged", kQuadratic | kLooseToo, {Check::midSideNodes}, [](Mesh &m) -> Named {
    const std::size_t cell = InnerCell(m); Row row = RowOf(m.cells.rows, cell);
    std::swap(row[m.dimension == 2 ? 1 : 4], row[m.dimension == 2 ? 3 : 5]);
    SetRow(&m.cells.rows, cell, row); return {Subject::cell, cell}; }},
{"a mid-side node on its corner", kQuadratic | kLooseToo, {Check::midSideNodes, Check::coincidentNodes}, [](Mesh &m) {
    return PlaceMiddle(m, 0); }},
{"a mid-side node a fifth of the edge away", kQuadratic | kLooseToo, {Check::midSideNodes}, [](Mesh &m) { return PlaceMiddle(m, 0.2); }},
{"a mid-side node behind its corner", kQuadratic | kLooseToo, {Check::midSideNodes}, [](Mesh &m) { return PlaceMiddle(m, -2.3); }},
{"a node that nothing uses", kAny, {Check::unusedNodes}, [](Mesh &m) -> Named {
    return {Subject::node, static_cast<std::size_t>(AddNode(&m, {9, 9, 9}))}; }},
{"a node that nothing uses at another's place", kAny, {Check::unusedNodes}, [](Mesh &m) -> Named {
    return {Subject::node, static_cast<std::size_t>(AddNode(&m, PlaceOf(m, 7)))}; }},
{"two nodes in place of one", kAny, {Check::coincidentNodes}, [](Mesh &m) { return Crack(m, 0); }},
{"two nodes nearly at one place", kAny, {Check::coincidentNodes}, [](Mesh &m) { return Crack(m, 1e-9); }},
{"a face that is no cell's", kAny, {Check::faces}, [](Mesh &m) {
    return SetFaceNode(m, FarFrom(m, m.faces.rows.Row(0)[0])); }},
{"a face given twice", kAny, {Check::faces}, [](Mesh &m) -> Named { return {Subject::face, AddFace(&m, RowOf(m.faces.rows, 0))}; }},
{"a face in the place of another", kAny, {Check::faces}, [](Mesh &m) -> Named {
    SetRow(&m.faces.rows, 1, RowOf(m.faces.rows, 0)); return {Subject::face, 1}; }},
{"a face with a node less", kAny, {Check::faces}, [](Mesh &m) -> Named {
    Row row = RowOf(m.faces.rows, 0); row.pop_back(); SetRow(&m.faces.rows, 0, row); return {Subject::face, 0}; }},
{"a width that no face has", kAny, {Check::faces}, [](Mesh &m) -> Named { m.faces.width = 4; return {kMesh, 0}; }},
{"a side of a quadratic cell in one piece", kQuadratic | kLooseToo, {Check::faces}, [](Mesh &m) -> Named {
    const std::size_t cell = InnerCell(m); Row row; for (int k = 0; k < m.dimension; ++k) {
        row.push_back(Corner(m, cell, static_cast<std::size_t>(k))); }
    return {Subject::face, AddFace(&m, row)}; }},
{"a face that looks out", kAny, {Check::faceNormals}, [](Mesh &m) -> Named {
    SetRow(&m.faces.rows, 2, Reversed(RowOf(m.faces.rows, 2))); return {Subject::face, 2}; }},
{"all faces look out", kAny, {Check::faceNormals}, [](Mesh &m) -> Named {
    for (std::size_t f = 0; f < m.faces.rows.Count(); ++f) { SetRow(&m.faces.rows, f, Reversed(RowOf(m.faces.rows, f))); }
    return {Subject::face, 0}; }},
{"a face once more, looking out", kAny, {Check::faceNormals}, [](Mesh &m) -> Named {
    return {Subject::face, AddFace(&m, Reversed(RowOf(m.faces.rows, 0)))}; }},
{"a cell over others", kLinear | kLooseToo, {Check::sharedFaces, Check::lengths}, [](Mesh &m) { return Overlap(m); }},
{"a plain cell on the nodes of a loose one", kAny | kLooseOnly, {Check::duplicateCells, Check::privateNodes}, CoverLooseCell},
{"a loose cell on another's node", kAny | kLooseOnly, {Check::unusedNodes, Check::privateNodes}, [](Mesh &m) -> Named {
    const std::size_t cell = LooseCell(m); Row row = RowOf(m.cells.rows, cell); const int left = row[0];
    // The nodes of the two cells are at one place: their cube's lowest corner is the first of both, before they are turned.
    for (std::size_t o = cell + 1; o < m.cells.rows.Count(); ++o) {
        if (IsLoose(m, o) && PlaceOf(m, Corner(m, o, 0)) == PlaceOf(m, left)) {
            row[0] = Corner(m, o, 0); SetRow(&m.cells.rows, cell, row);
            return {Subject::node, static_cast<std::size_t>(left)};
        }
    }
    ADD_FAILURE(); return {Subject::node, 0}; }},
{"a group that should have been cut loose", kLinear | kQuadratic, {Check::privateNodes}, [](Mesh &m) -> Named {
    m.cellGroups[1].name = "C_BASE"; return {Subject::node, static_cast<std::size_t>(Corner(m, InnerCell(m), 0))}; }},
{"another characteristic length of the mesh", kAny, {Check::lengths}, [](Mesh &m) { return SetLength(&m.lengths.characteristic, 1.01, kMesh); }},
{"another shortest edge of the mesh", kAny, {Check::lengths}, [](Mesh &m) { return SetLength(&m.lengths.shortestEdge, 0.999, kMesh); }},
{"another longest edge of the mesh", kAny, {Check::lengths}, [](Mesh &m) { return SetLength(&m.lengths.longestEdge, 1.00001, kMesh); }},
{"another characteristic length of a group", kAny, {Check::lengths}, [](Mesh &m) { return SetLength(&m.cellGroups[0].lengths.characteristic, 0, kGroup); }},
{"another shortest edge of a group", kAny, {Check::lengths}, [](Mesh &m) { return SetLength(&m.cellGroups[0].lengths.shortestEdge, 2, kGroup); }},
{"another longest edge of a group", kAny, {Check::lengths}, [](Mesh &m) { return SetLength(&m.cellGroups[0].lengths.longestEdge, kNan, kGroup); }},
{"nodes moved and lengths left", kAny, {Check::lengths}, [](Mesh &m) { return Scale(m, 1, 1.001); }},
{"a coordinate that is no number", kAny, {Check::coordinates}, [](Mesh &m) { return SetCoordinate(m, kNan); }},
{"a coordinate that is infinite", kAny, {Check::coordinates}, [](Mesh &m) { return SetCoordinate(m, kInfinity); }},
{"a coordinate that is infinite the other way", kAny, {Check::coordinates}, [](Mesh &m) { return SetCoordinate(m, -kInfinity); }},
};
// clang-format on

std::string NamesOf(const std::set<Check> &checks) {
    std::string names;
    for (const Check check : checks) {
        names += std::string(names.empty() ? "" : ", ") + audit::KindOf(check).word;
    }
    return names;
}

std::set<Check> FailedOf(const audit::Verdict &verdict) {
    std::set<Check> failed;
    for (int check = 0; check < audit::kChecks; ++check) {
        if (!verdict.Of(static_cast<Check>(check)).Ok()) {
            failed.insert(static_cast<Check>(check));
        }
    }
    return failed;
}

audit::Verdict JudgeFile(const Mesh &mesh) {
    const std::string text = PrintMesh(mesh);
    const meshfile::Result result = meshfile::ReadText(text);
    EXPECT_TRUE(result.Ok()) << meshfile::Describe(result.error);
    return audit::Judge(result.mesh);
}

bool Names(const audit::Verdict &verdict, Check check, const Named &named) {
    const std::vector<audit::Place> &places = verdict.Of(check).places;
    return std::any_of(places.begin(), places.end(), [&named](const audit::Place &place) {
        return place.subject == named.subject && static_cast<std::size_t>(place.index) == named.index;
    });
}

class Box : public testing::TestWithParam<std::tuple<Family, bool>> {
  protected:
    const Family &family() const {
        return std::get<0>(GetParam());
    }
    bool IsCut() const {
        return std::get<1>(GetParam());
    }
    bool Takes(const Damage &damage) const {
        return (damage.meshes & (family().quadratic ? kQuadratic : kLinear)) != 0 &&
               (IsCut() ? (damage.meshes & kLooseToo) != 0 : (damage.meshes & kLooseOnly) == 0);
    }
    Mesh mesh = Translated(BoxDeck(family(), IsCut() ? "C_TOP" : "TOP"));
};

TEST_P(Box, IsOkBeforeItIsDamaged) {
    const audit::Verdict verdict = JudgeFile(mesh);
    EXPECT_EQ(NamesOf(FailedOf(verdict)), "");
    const int layer = family().dimension == 3 ? 6 * kCubes * kCubes : 2 * kCubes;
    EXPECT_EQ(verdict.counts.cells, layer * kCubes);
    EXPECT_EQ(verdict.counts.looseCells, IsCut() ? layer : 0);
    EXPECT_EQ(verdict.counts.regions, IsCut() ? layer + 1 : 1);
    EXPECT_EQ(verdict.counts.touchingNodes, 0); // the copies that the cut makes are left out
    // LOW and HIGH are squares cut in triangles, or lines; what is cut loose is open all round.
    const long long border = family().dimension == 3 ? 4 * kCubes * (family().quadratic ? 2 : 1) : 2;
    ASSERT_EQ(mesh.faceGroups[0].name, "LOW");
    EXPECT_EQ(verdict.surfaces[0].openEdges, border);
    EXPECT_EQ(verdict.surfaces[0].overusedEdges, 0);
    EXPECT_EQ(verdict.surfaces[1].openEdges > border, IsCut());
}

TEST_P(Box, ShowsEachDamageInTheChecksThatNameItAlone) {
    for (const Damage &damage : kDamages) {
        if (Takes(damage)) {
            Mesh harmed = mesh;
            const Named named = damage.harm(harmed);
            const audit::Verdict verdict = JudgeFile(harmed);
            EXPECT_EQ(NamesOf(FailedOf(verdict)), NamesOf(damage.expected)) << damage.name;
            EXPECT_TRUE(Names(verdict, *damage.expected.begin(), named)) << damage.name;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(OfEveryFamily, Box, testing::Combine(testing::ValuesIn(kFamilies), testing::Bool()),
                         [](const auto &box) {
                             return std::string(std::get<0>(box.param).type) + (std::get<1>(box.param) ? "Cut" : "");
                         });

// Small meshes ----------------------------------------------------------------------------------------

// A mesh of linear cells by their corners, all of one group but those that are told to be cut loose.
std::string SmallDeck(const std::vector<At> &points, const std::vector<Row> &cells,
                      const std::set<std::size_t> &loose) {
    std::string text = "*NODE\n";
    for (std::size_t n = 0; n < points.size(); ++n) {
        char row[120];
        std::snprintf(row, sizeof row, "%zu, %.16g, %.16g, %.16g\n", n, points[n][0], points[n][1], points[n][2]);
        text += row;
    }
    std::string rows[2];
    for (std::size_t c = 0; c < cells.size(); ++c) {
        std::string &group = rows[loose.count(c)];
        group += std::to_string(c + 1);
        for (const int node : cells[c]) {
            group += ", " + std::to_string(node);
        }
        group += "\n";
    }
    const std::string type = cells[0].size() == 3 ? "CPS3" : "C3D4";
    text += "*ELEMENT, TYPE=" + type + ", ELSET=PLAIN\n" + rows[0];
    return loose.empty() ? text : text + "*ELEMENT, TYPE=" + type + ", ELSET=C_LOOSE\n" + rows[1];
}

audit::Verdict JudgeDeck(const std::vector<At> &points, const std::vector<Row> &cells,
                         const std::set<std::size_t> &loose = {}) {
    return JudgeFile(Translated(SmallDeck(points, cells, loose)));
}

const std::vector<At> kStar{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {-1, 0, 0}, {0, -1, 0}, {0, 0, 1}, {0, 0, -1}};

TEST(Boundary, FailsWhereCellsHangTogetherByANodeOrAnEdge) {
    const std::set<Check> boundary{Check::boundary};
    const audit::Verdict plane = JudgeDeck(kStar, {{0, 1, 2}, {0, 3, 4}});
    EXPECT_EQ(FailedOf(plane), boundary);
    EXPECT_TRUE(Names(plane, Check::boundary, {Subject::node, 0}));
    EXPECT_EQ(plane.Of(Check::boundary).places.size(), 1u);
    const audit::Verdict byNode = JudgeDeck(kStar, {{0, 1, 2, 5}, {0, 3, 4, 6}});
    EXPECT_EQ(FailedOf(byNode), boundary);
    EXPECT_TRUE(Names(byNode, Check::boundary, {Subject::node, 0}));
    const audit::Verdict byEdge = JudgeDeck(kStar, {{0, 5, 1, 2}, {0, 5, 3, 4}});
    EXPECT_EQ(FailedOf(byEdge), boundary);
    EXPECT_EQ(byEdge.Of(Check::boundary).places.size(), 1u); // once for both ends of the edge
    EXPECT_EQ(byEdge.counts.regions, 1);
}

TEST(Boundary, ForgivesWhatOnlyTheCutMakes) {
    // The cell between the two is cut loose; with it they had sides in common.
    const audit::Verdict plane = JudgeDeck(kStar, {{0, 1, 2}, {0, 2, 3}, {0, 3, 4}}, {1});
    EXPECT_EQ(NamesOf(FailedOf(plane)), "");
    EXPECT_EQ(plane.counts.regions, 2);
    const audit::Verdict solid = JudgeDeck(kStar, {{0, 5, 1, 2}, {0, 5, 2, 3}, {0, 5, 3, 4}}, {1});
    EXPECT_EQ(NamesOf(FailedOf(solid)), "");
    // Elsewhere a cut forgives nothing.
    std::vector<At> points = kStar;
    for (const At &at : kStar) {
        points.push_back({at[0] + 5, at[1], at[2]});
    }
    EXPECT_EQ(FailedOf(JudgeDeck(points, {{0, 1, 2}, {0, 2, 3}, {0, 3, 4}, {7, 8, 9}, {7, 10, 11}}, {1})),
              std::set<Check>{Check::boundary});
    // Nor does it join two regions whose nodes are at one place: the gap between the first two stays one.
    points = kStar;
    points.insert(points.end(), kStar.begin(), kStar.begin() + 4);
    points.insert(points.end(), {{5, 0, 0}, {6, 0, 0}, {5, 1, 0}});
    const audit::Verdict touching = JudgeDeck(points, {{0, 1, 2}, {0, 3, 4}, {7, 9, 10}, {11, 12, 13}}, {3});
    EXPECT_EQ(FailedOf(touching), std::set<Check>{Check::boundary});
    EXPECT_EQ(touching.counts.touchingNodes, 6);
}

// The translator cuts the cells of the newer group alone.
TEST(LooseCells, OfTwoGroupsOfOneNameAreThoseOfTheNewerOne) {
    const std::string group = "*ELEMENT, TYPE=CPS3, ELSET=C_A\n";
    const audit::Verdict verdict =
        JudgeFile(Translated("*NODE\n1, 0, 0\n2, 1, 0\n3, 1, 1\n4, 0, 1\n5, 5, 0\n6, 6, 0\n7, 6, 1\n8, 5, 1\n" + group +
                             "1, 1, 2, 3\n2, 1, 3, 4\n" + group + "3, 5, 6, 7\n4, 5, 7, 8\n"));
    EXPECT_EQ(NamesOf(FailedOf(verdict)), "");
    EXPECT_EQ(verdict.counts.looseCells, 2);
    EXPECT_EQ(verdict.counts.regions, 3);
}

TEST(UnusedNodes, AreNotThoseOfAFaceThatNoCellHas) {
    Mesh mesh = Translated(BoxDeck(kFamilies[0], "TOP"));
    AddFace(&mesh, {mesh.faces.rows.Row(0)[0], AddNode(&mesh, {9, 9, 9})});
    EXPECT_EQ(FailedOf(JudgeFile(mesh)), std::set<Check>{Check::faces});
}

// Three leaves that hang together by one edge: it is used three times, each of their six others once.
TEST(Surfaces, CountTheEdgesThatMoreThanTwoFacesHave) {
    Mesh mesh;
    mesh.dimension = 3;
    mesh.faceGroups.push_back({"LEAVES", 1});
    for (const At &at : kStar) {
        AddNode(&mesh, at);
    }
    for (const int tip : {1, 2, 3}) {
        SetRow(&mesh.faces.rows, mesh.faces.rows.Count(), {0, 5, tip});
        mesh.faces.tags.push_back(1);
    }
    const audit::Surface surface = audit::Judge(mesh).surfaces.at(0);
    EXPECT_EQ(surface.faces, 3);
    EXPECT_EQ(surface.openEdges, 6);
    EXPECT_EQ(surface.overusedEdges, 1);
}

// Two sides of the last triangle have another one on the same side: it is one place.
TEST(SharedFaces, NameACellOnce) {
    const audit::Verdict verdict =
        JudgeDeck({{0, 0, 0}, {2, 0, 0}, {1, 2, 0}, {1, 3, 0}, {0, 1, 0}}, {{0, 1, 3}, {1, 2, 4}, {0, 1, 2}});
    ASSERT_EQ(verdict.Of(Check::sharedFaces).places.size(), 1u);
    EXPECT_EQ(verdict.Of(Check::sharedFaces).places[0].index, 2);
}

// A hexagon of six triangles, torn open on either side of its middle, where the boundary then touches itself.
TEST(Boundary, IsNotJudgedBesideCoincidentNodes) {
    std::vector<At> points{{0, 0, 0}};
    for (const int corner : {0, 1, 2, 3, 4, 5, 0, 3}) {
        points.push_back({std::cos(corner * std::acos(0.5)), std::sin(corner * std::acos(0.5)), 0});
    }
    EXPECT_EQ(FailedOf(JudgeDeck(points, {{0, 7, 2}, {0, 2, 3}, {0, 3, 4}, {0, 8, 5}, {0, 5, 6}, {0, 6, 1}})),
              std::set<Check>{Check::coincidentNodes});
}

TEST(Places, OfTheWorstComeFirst) {
    Mesh mesh = Translated(
        SmallDeck({{0, 0, 0}, {2, 0, 0}, {2, 1, 0}, {3, 0, 0}, {4, 0, 0}, {3, 1, 0}}, {{0, 1, 2}, {3, 4, 5}}, {}));
    for (const std::size_t cell : {0u, 1u}) { // the second one, with its right angle, is further from right
        SetRow(&mesh.cells.rows, cell, Turned(mesh, cell));
    }
    const audit::Verdict verdict = audit::Judge(mesh);
    const std::vector<audit::Place> &places = verdict.Of(Check::orientation).places;
    ASSERT_EQ(places.size(), 2u);
    EXPECT_EQ(places[0].index, 1);
    EXPECT_EQ(places[1].index, 0);
}

// Corners (0, 0), (1, 0), (0, 1); middle nodes off the middles of their edges by (0, 0.25), (0.2, -0.05), (-0.2, -0.3).
// With t from 0 to 1 along the first edge the directions there are (1, 1 - 2 t) and (4 (0.4 t - 0.2), -0.2), whose
// determinant is -0.2 + 0.8 (1 - 2 t)^2: 0.6 at both corners, -0.2 between them.
TEST(MidSideNodes, MayFoldACellWhereNoCornerIs) {
    Mesh mesh;
    mesh.dimension = 2;
    mesh.cellGroups.push_back({"ALL", 1, {}});
    for (const At &at : {At{0, 0, 0}, {0.5, 0.25, 0}, {1, 0, 0}, {0.7, 0.45, 0}, {0, 1, 0}, {-0.2, 0.2, 0}}) {
        AddNode(&mesh, at);
    }
    SetRow(&mesh.cells.rows, 0, {0, 1, 2, 3, 4, 5});
    mesh.cells.types = {4};
    mesh.cells.tags = {1};
    EXPECT_EQ(audit::Judge(mesh).Of(Check::midSideNodes).places.size(), 1u);
    EXPECT_TRUE(audit::Judge(mesh).Of(Check::orientation).Ok());
}

TEST(Regions, MayTouch) {
    const audit::Verdict verdict =
        JudgeDeck({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}}, {{0, 1, 2}, {3, 4, 5}});
    EXPECT_EQ(NamesOf(FailedOf(verdict)), "");
    EXPECT_EQ(verdict.counts.regions, 2);
    EXPECT_EQ(verdict.counts.touchingNodes, 4);
    EXPECT_EQ(verdict.counts.boundaryFaces, 6);
}

// Random nodes in clusters, each in a triangle whose other corners stand apart: the nodes of triangles that hang
// together are of one region. Every pair is tried.
TEST(CoincidentNodes, AreThoseThatAPlainSearchFinds) {
    Dice dice(7);
    for (int turn = 0; turn < 40; ++turn) {
        Mesh mesh;
        mesh.dimension = 2;
        mesh.cellGroups.push_back({"ALL", 1, {}});
        std::vector<int> regions;
        const int hubs = dice.From(1, 3);
        for (int h = 0; h < 3; ++h) { // the mesh is 2 wide and 1 high
            AddNode(&mesh, {h * 1.0, 1, 0});
            regions.push_back(h);
        }
        for (int n = 0; n < 60; ++n) { // around points of a grid that is as wide as a box of the search is long
            const int hub = dice.Below(hubs);
            const int box = dice.Below(4);
            const At at{(box * 64 + dice.Between(box == 0 ? 0 : -2, 2)) * 1e-8 * std::sqrt(5),
                        dice.Below(2) * 1e-8 + dice.Between(0, 1) * 3e-8, 0};
            const int node = AddNode(&mesh, at);
            const int other = AddNode(&mesh, {0.3 + 0.001 * node, 0.5, 0});
            SetRow(&mesh.cells.rows, mesh.cells.rows.Count(), {hub, node, other});
            mesh.cells.types.push_back(3);
            mesh.cells.tags.push_back(1);
            regions.insert(regions.end(), {hub, hub});
        }
        const auto [low, high] = std::minmax_element(mesh.nodes.x.begin(), mesh.nodes.x.end());
        const auto [down, up] = std::minmax_element(mesh.nodes.y.begin(), mesh.nodes.y.end());
        const double tolerance = 1e-8 * std::hypot(*high - *low, *up - *down);
        std::set<int> wanted;
        for (int a = 0; a < NumNodes(mesh); ++a) {
            for (int b = 0; b < a; ++b) {
                const At p = PlaceOf(mesh, a);
                const At q = PlaceOf(mesh, b);
                if (regions[static_cast<std::size_t>(a)] == regions[static_cast<std::size_t>(b)] &&
                    std::fabs(p[0] - q[0]) <= tolerance && std::fabs(p[1] - q[1]) <= tolerance) {
                    wanted.insert({a, b});
                }
            }
        }
        std::set<int> found;
        const audit::Verdict verdict = audit::Judge(mesh);
        for (const audit::Place &place : verdict.Of(Check::coincidentNodes).places) {
            found.insert(place.index);
        }
        EXPECT_EQ(found, wanted) << turn;
        EXPECT_FALSE(wanted.empty());
    }
}

// Histograms ------------------------------------------------------------------------------------------

TEST(Histogram, HasTenBinsOfWhichTheLastIsClosed) {
    std::vector<double> values;
    for (int i = 0; i <= 20; ++i) {
        values.push_back(i);
    }
    values.push_back(kInfinity);
    const audit::Histogram histogram = audit::HistogramOf(values, {0, 18});
    EXPECT_EQ(histogram.min, 0);
    EXPECT_EQ(histogram.max, 20);
    EXPECT_EQ(histogram.mean, 10);
    EXPECT_EQ(histogram.bins, (std::array<long long, 10>{2, 2, 2, 2, 2, 2, 2, 2, 2, 3}));
    EXPECT_EQ(histogram.edges[1], 2);
    EXPECT_EQ(histogram.edges[10], 20);
    EXPECT_EQ(histogram.undefined, 1);
    EXPECT_EQ(histogram.outside, 3); // 19, 20 and the one that is none
    EXPECT_EQ(audit::HistogramOf({1 - 1e-15, 1 - 1e-6, 3 + 1e-15}, {1, 3}).outside, 1); // rounding is none
}

TEST(Histogram, OfOneValueIsOneWide) {
    const audit::Histogram histogram = audit::HistogramOf({3, 3}, {0, 9});
    EXPECT_EQ(histogram.edges[0], 2.5);
    EXPECT_EQ(histogram.edges[10], 3.5);
    EXPECT_EQ(histogram.bins, (std::array<long long, 10>{0, 0, 0, 0, 0, 2, 0, 0, 0, 0}));
    EXPECT_EQ(audit::HistogramOf({}, {0, 9}).values, 0);
}

// Worked out by hand: the corner of a cube, edges 1 and sqrt(2).
TEST(Quality, OfTheCornerOfACube) {
    const audit::Verdict verdict = JudgeDeck({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}}, {{0, 1, 2, 3}});
    const auto value = [&verdict](audit::Measure m) { return verdict.quality[static_cast<std::size_t>(m)].min; };
    // R = sqrt(3)/2; r = 3 V / S = (1/2) / (3/2 + sqrt(3)/2) = 1 / (3 + sqrt(3)).
    EXPECT_NEAR(value(audit::Measure::radiusRatio), std::sqrt(3) / 6 * (3 + std::sqrt(3)), 1e-15);
    EXPECT_NEAR(value(audit::Measure::edgeRatio), std::sqrt(2), 1e-15);
    EXPECT_NEAR(value(audit::Measure::minAngle), std::acos(1 / std::sqrt(3)) * 180 / std::acos(-1), 1e-13);
    EXPECT_NEAR(value(audit::Measure::maxAngle), 90, 1e-13);
    // 6 V = 1; the largest product is 1 * sqrt(2) * sqrt(2).
    EXPECT_NEAR(value(audit::Measure::scaledJacobian), std::sqrt(2) / 2, 1e-15);
    EXPECT_NEAR(value(audit::Measure::aspectGamma), std::pow(1.5, 1.5) / std::sqrt(2), 1e-15);
}

// The report accepts 30 to 60 degrees for the smallest angle of a triangle and 40 to 70.53 for that of a tetrahedron.
TEST(Quality, IsHeldAgainstTheRangeOfTheShape) {
    const auto least = static_cast<std::size_t>(audit::Measure::minAngle);
    const audit::Histogram plane = JudgeDeck(kStar, {{0, 1, 2}}).quality[least];
    EXPECT_EQ(plane.limits.least, 30);
    EXPECT_EQ(plane.limits.most, 60);
    const audit::Histogram solid = JudgeDeck(kStar, {{0, 1, 2, 5}}).quality[least];
    EXPECT_EQ(solid.limits.least, 40);
    EXPECT_EQ(solid.limits.most, 70.53);
}

// Meshes at the edge of what numbers can do -----------------------------------------------------------

TEST(Sizes, FromTheSmallestToTheLargest) {
    for (const double size : {1e-150, 1e-100, 1e-3, 1.0, 1e100, 1e150}) {
        for (const bool turned : {false, true}) {
            Mesh mesh = Translated(SmallDeck(kStar, {{0, 1, 2, 5}}, {}));
            if (turned) {
                SetRow(&mesh.cells.rows, 0, Turned(mesh, 0));
            }
            Scale(mesh, 1, size);
            EXPECT_EQ(audit::Judge(mesh).Of(Check::orientation).Ok(), !turned) << size;
        }
    }
}

// The whole-run cases and the examples -----------------------------------------------------------------

// What cases show that a mesh should not have: cells that the deck gives twice or over one another, nodes that it has
// not, sets that lose all their members to one before them, cells of two dimensions, decks without cells, coordinates
// that are no numbers, cells without size. Each is told in the case's own words ("why").
// clang-format off
const std::map<std::string, std::string> kFaulty{
    {"reader/cell-blocks-interleaved", "shared-faces"},
    {"reader/data-comma-eats-keyword", "cells"},
    {"reader/dimension-tet-last", "cells"},
    {"reader/dimension-triangle-last", "cells"},
    {"reader/double-forms", "cells, groups, coordinates"},
    {"reader/element-missing-numbers", "indices"},
    {"reader/element-missing-ten", "indices"},
    {"reader/element-twice", "shared-faces"},
    {"reader/empty-block-between", "groups"},
    {"reader/empty-block-last", "groups"},
    {"reader/empty-deck", "cells"},
    {"reader/empty-sections", "groups"},
    {"reader/heading-only", "cells"},
    {"reader/negative-numbers", "duplicate-cells"},
    {"reader/nset-lines", "groups"},
    {"reader/nset-overlap", "groups"},
    {"reader/parameter-search", "groups"},
    {"reader/refused-elset", "groups"},
    {"reader/types-2d", "duplicate-cells"},
    {"reader/types-3d", "duplicate-cells"},
    {"translate/coordinates-huge-2d", "duplicate-cells, orientation, boundary"},
    {"translate/coordinates-inf", "coordinates"},
    {"translate/coordinates-nan", "coordinates"},
    {"translate/empty-block-keeps-group", "groups"},
    {"translate/empty-block-sets-dimension", "cells, groups"},
    {"translate/heading-only", "cells"},
    {"translate/mixed-only-edges-tagged", "cells, faces"},
    {"translate/mixed-tet4-tri3", "cells, faces"},
    {"translate/mixed-tri3-tet4", "cells, faces"},
    {"translate/no-cells", "cells, groups"},
    {"translate/no-nodes", "indices"},
    {"translate/order-of-groups", "groups"},
    {"translate/orientation-threshold", "orientation, coincident-nodes, shared-faces"},
    {"translate/surfaces-on-one-face", "groups"},
    {"translate/tet4-degenerate", "orientation"},
    {"translate/tet4-small", "orientation, face-normals"},
    {"translate/tetx-degenerate", "orientation, coincident-nodes"},
    {"translate/tri-ignores-z", "shared-faces"},
    {"translate/tri3-degenerate", "orientation"},
    {"translate/tri3-label-s4", "groups"},
    {"translate/tri3-short-edge", "orientation, coincident-nodes"},
    {"translate/tri6-degenerate", "orientation, coincident-nodes"},
    {"translate/unresolved-between-numbers", "indices"},
    {"translate/unresolved-in-c-group", "indices"},
    {"translate/unresolved-mid-side-tri6", "indices"},
    {"translate/unresolved-short-line", "indices"},
    {"translate/unresolved-tet4", "indices"},
    {"translate/unresolved-tri3", "indices"},
    {"translate/unused-nodes-dropped", "groups"},
    {"vtk/empty-block", "cells, groups"},
    {"vtk/heading-only", "cells"},
    {"vtk/missing-node", "indices"},
    {"vtk/mixed-2d-3d", "cells, faces"},
    {"vtk/no-cells", "cells, groups"},
    {"vtk/nset-empty", "groups"},
    {"vtk/nset-sizes", "groups"},
    {"vtk/nset-slash", "groups"},
};
// clang-format on

std::string TextOf(const fs::path &path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

TEST(Cases, AreOkButForWhatTheyShow) {
    std::size_t seen = 0;
    for (const auto &entry : fs::recursive_directory_iterator(KIVOM_CASES)) {
        if (entry.path().filename() == "mesh.input") {
            const std::string text = TextOf(entry.path());
            const meshfile::Result result = meshfile::ReadText(text);
            ASSERT_TRUE(result.Ok() && !result.mesh.isEmptyFile) << entry.path();
            const std::string name = fs::relative(entry.path().parent_path().parent_path(), KIVOM_CASES).string();
            const auto faulty = kFaulty.find(name);
            EXPECT_EQ(NamesOf(FailedOf(audit::Judge(result.mesh))), faulty == kFaulty.end() ? "" : faulty->second)
                << name;
            seen += kFaulty.count(name);
        }
    }
    EXPECT_EQ(seen, kFaulty.size());
}

TEST(Examples, AreOk) {
    int seen = 0;
    for (const auto &entry : fs::directory_iterator(KIVOM_EXAMPLES)) {
        if (entry.path().extension() == ".inp") {
            EXPECT_EQ(NamesOf(FailedOf(JudgeFile(Translated(TextOf(entry.path()))))), "") << entry.path();
            ++seen;
        }
    }
    EXPECT_EQ(seen, 5);
}

} // namespace
