// Numbers that a file can hold and a mesh cannot: coordinates, types, positions of nodes.
#include "audit/work.h"

#include <algorithm>
#include <cmath>

namespace audit {

namespace {

bool IsFinite(const Work &work, int node) {
    const Point p = work.At(node);
    return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z);
}

bool HasAllNodes(const Work &work, const meshfile::Rows &rows, std::size_t row) {
    const int *nodes = rows.Row(row);
    return std::all_of(nodes, nodes + rows.Width(row), [&work](int node) { return work.HasNode(node); });
}

void CheckRows(Work *work, const meshfile::Rows &rows, Subject subject) {
    for (std::size_t row = 0; row < rows.Count(); ++row) {
        if (!HasAllNodes(*work, rows, row)) {
            work->Found(Check::indices, subject, row);
        }
    }
}

} // namespace

void CheckCoordinates(Work *work) {
    for (std::size_t node = 0; node < work->mesh.nodes.Count(); ++node) {
        if (!IsFinite(*work, static_cast<int>(node))) {
            work->Found(Check::coordinates, Subject::node, node);
        }
    }
}

void CheckCells(Work *work) {
    const meshfile::Rows &rows = work->mesh.cells.rows;
    const bool allFinite = work->verdict.Of(Check::coordinates).Ok();
    if (rows.Count() == 0) {
        work->Found(Check::cells, Subject::mesh, 0);
    }
    for (std::size_t cell = 0; cell < rows.Count(); ++cell) {
        const Shape *shape = ShapeOf(work->mesh.cells.types[cell]);
        if (shape == nullptr || shape->dimension != work->mesh.dimension ||
            rows.Width(cell) != static_cast<std::size_t>(shape->nNodes)) {
            work->Found(Check::cells, Subject::cell, cell);
        } else if (HasAllNodes(*work, rows, cell)) {
            const int *row = rows.Row(cell);
            const bool placed =
                allFinite || std::all_of(row, row + shape->nNodes, [work](int node) { return IsFinite(*work, node); });
            work->cells[cell] |= placed ? kSound | kPlaced : kSound;
        }
    }
}

void CheckIndices(Work *work) {
    CheckRows(work, work->mesh.cells.rows, Subject::cell);
    CheckRows(work, work->mesh.faces.rows, Subject::face);
}

} // namespace audit
