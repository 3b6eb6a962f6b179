// The places that failed, as a grid to look at.
#include "kivodeck/audit.h"

#include <cmath>
#include <cstdio>

namespace kivodeck {

namespace {

using audit::Place;
using audit::Subject;

// A VTK cell: a type's code, and nodes of the mesh.
struct Item {
    int type = 0;
    std::vector<int> nodes;
};

constexpr int kVertex = 1;
constexpr int kVertices = 2; // what has not the nodes of its type: those that are there

struct Form {
    int type; // in the mesh file
    int vtkType;
    std::vector<std::size_t> columns;
};

const std::vector<Form> &Forms() {
    static const std::vector<Form> forms = {
        {3, 5, {0, 1, 2}}, {4, 22, {0, 2, 4, 1, 3, 5}}, {5, 10, {0, 1, 2, 3}}, {6, 24, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9}}};
    return forms;
}

Item RowItem(const meshfile::Mesh &mesh, const meshfile::Rows &rows, std::size_t row) {
    Item item{kVertices, {}};
    for (std::size_t k = 0; k < rows.Width(row); ++k) {
        const int node = rows.Row(row)[k];
        if (node >= 0 && static_cast<std::size_t>(node) < mesh.nodes.Count()) {
            item.nodes.push_back(node);
        }
    }
    return item;
}

Item CellItem(const meshfile::Mesh &mesh, std::size_t cell) {
    const meshfile::Rows &rows = mesh.cells.rows;
    Item item = RowItem(mesh, rows, cell);
    for (const Form &form : Forms()) {
        if (form.type == mesh.cells.types[cell] && item.nodes.size() == rows.Width(cell) &&
            form.columns.size() == rows.Width(cell)) {
            item.type = form.vtkType;
            for (std::size_t k = 0; k < form.columns.size(); ++k) {
                item.nodes[k] = rows.Row(cell)[form.columns[k]];
            }
        }
    }
    return item;
}

Item FaceItem(const meshfile::Mesh &mesh, std::size_t face) {
    Item item = RowItem(mesh, mesh.faces.rows, face);
    item.type = item.nodes.size() == 2 ? 3 : item.nodes.size() == 3 ? 5 : kVertices;
    return item;
}

Item ItemOf(const meshfile::Mesh &mesh, const Place &place) {
    const auto index = static_cast<std::size_t>(place.index);
    switch (place.subject) {
    case Subject::node:
        return {kVertex, {place.index}};
    case Subject::face:
        return FaceItem(mesh, index);
    case Subject::cell:
        return CellItem(mesh, index);
    default:
        return {}; // groups have no place in a grid
    }
}

// The text, part by part while the places are gone through.
struct Grid {
    std::vector<int> points;  // nodes of the mesh
    std::vector<int> pointOf; // of each node, -1: none yet
    std::string cells, types, checks, indices, subjects;
    std::size_t nCells = 0;
    std::size_t nNumbers = 0; // of the list of cells
};

void Add(Grid *grid, const Item &item, int check, const Place &place) {
    grid->cells += std::to_string(item.nodes.size());
    for (const int node : item.nodes) {
        int &point = grid->pointOf[static_cast<std::size_t>(node)];
        if (point < 0) {
            point = static_cast<int>(grid->points.size());
            grid->points.push_back(node);
        }
        grid->cells += " " + std::to_string(point);
    }
    grid->cells += "\n";
    grid->types += std::to_string(item.type) + "\n";
    grid->checks += std::to_string(check + 1) + "\n";
    grid->indices += std::to_string(place.index) + "\n";
    grid->subjects += std::to_string(static_cast<int>(place.subject)) + "\n";
    ++grid->nCells;
    grid->nNumbers += 1 + item.nodes.size();
}

// A coordinate that is no number has no place to be drawn at: 0 stands for it.
std::string PointsText(const meshfile::Mesh &mesh, const std::vector<int> &points) {
    std::string text;
    for (const int point : points) {
        const auto node = static_cast<std::size_t>(point);
        const double at[3] = {mesh.nodes.x[node], mesh.nodes.y[node], mesh.dimension == 3 ? mesh.nodes.z[node] : 0};
        char line[96];
        std::snprintf(line, sizeof line, "%.16g %.16g %.16g\n", std::isfinite(at[0]) ? at[0] : 0,
                      std::isfinite(at[1]) ? at[1] : 0, std::isfinite(at[2]) ? at[2] : 0);
        text += line;
    }
    return text;
}

// The second line of the file is free: which number is which check, as far as 255 characters go.
std::string Title(const audit::Verdict &verdict) {
    std::string title = "Check:";
    for (int check = 0; check < audit::kChecks; ++check) {
        if (!verdict.checks[static_cast<std::size_t>(check)].Ok()) {
            title += " " + std::to_string(check + 1) + " " + audit::KindOf(static_cast<audit::Check>(check)).word;
        }
    }
    return title.substr(0, 255);
}

} // namespace

std::string AuditVtk(const meshfile::Mesh &mesh, const audit::Verdict &verdict) {
    Grid grid;
    grid.pointOf.assign(mesh.nodes.Count(), -1);
    for (int check = 0; check < audit::kChecks; ++check) {
        for (const Place &place : verdict.checks[static_cast<std::size_t>(check)].places) {
            const Item item = ItemOf(mesh, place);
            if (!item.nodes.empty()) {
                Add(&grid, item, check, place);
            }
        }
    }
    const std::string count = std::to_string(grid.nCells) + "\n";
    const auto scalars = [](const char *name) {
        return std::string("SCALARS ") + name + " int 1\nLOOKUP_TABLE default\n";
    };
    return "# vtk DataFile Version 3.0\n" + Title(verdict) + "\nASCII\nDATASET UNSTRUCTURED_GRID\nPOINTS " +
           std::to_string(grid.points.size()) + " double\n" + PointsText(mesh, grid.points) + "CELLS " +
           std::to_string(grid.nCells) + " " + std::to_string(grid.nNumbers) + "\n" + grid.cells + "CELL_TYPES " +
           count + grid.types + "CELL_DATA " + count + scalars("Check") + grid.checks + scalars("Index") +
           grid.indices + scalars("Subject") + grid.subjects;
}

} // namespace kivodeck
