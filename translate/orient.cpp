// Orientation: triangles counter-clockwise in the x-y plane, tetrahedra with positive volume.
#include "translate/steps.h"

#include "translate/geometry.h"

#include <cstdio>
#include <utility>

namespace {

// Absolute, not scaled by the cell's size. Degenerate cells fall below it too and are turned, although they have
// no orientation to mend.
constexpr double kSmallestMeasure = 1e-10;

// Twice the signed area; z is not looked at.
double TriangleMeasure(const Point *p) {
    return (p[1].x - p[0].x) * (p[2].y - p[0].y) - (p[2].x - p[0].x) * (p[1].y - p[0].y);
}

// Six times the signed volume.
double TetrahedronMeasure(const Point *p) {
    return Dot(Cross(p[1] - p[0], p[2] - p[0]), p[3] - p[0]);
}

void SwapColumns(const Cells *cells, int cell, int a, int b) {
    std::swap(cells->i2Conn[a][cell], cells->i2Conn[b][cell]);
}

// Exchanges two corners, the mid-side nodes that then lie between other corners, and the tags of the two faces
// opposite the exchanged corners.
void Turn(const Cells *cells, int cell) {
    switch (cells->i1Type[cell]) {
    case kTRI6: // corners 2 and 4 with the mid-side nodes next to corner 0; 3 stays between the two
        SwapColumns(cells, cell, 2, 4);
        SwapColumns(cells, cell, 1, 5);
        break;
    case kTETX: // corners 1 and 2; edges 0-1 and 2-0, 1-3 and 2-3; edges 1-2 and 0-3 stay
        SwapColumns(cells, cell, 1, 2);
        SwapColumns(cells, cell, 4, 6);
        SwapColumns(cells, cell, 8, 9);
        break;
    default: // TRI3, TET4
        SwapColumns(cells, cell, 1, 2);
        break;
    }
    std::swap(cells->i2FaceTag[1][cell], cells->i2FaceTag[2][cell]);
}

bool RunsTheWrongWay(const Point *points, int nCorners) {
    const double measure = nCorners == 3 ? TriangleMeasure(points) : TetrahedronMeasure(points);
    return measure < kSmallestMeasure; // false for NaN
}

} // namespace

void ChckCellsOrde(Mesh *mesh) {
    const Cells *cells = mesh->Cells;
    int corrected = 0;
    for (int c = 0; c < cells->nNum; ++c) {
        const CornerColumns corners = CornersOf(cells->i1Type[c]);
        if (corners.nCorners == 0) {
            std::printf("\n  Error> Undesirable cell type detected in ChckCellsOrde.\n");
            return;
        }
        Point points[4];
        if (CornerPoints(mesh->Nodes, cells, c, corners, points) && RunsTheWrongWay(points, corners.nCorners)) {
            Turn(cells, c);
            ++corrected;
        }
    }
    if (corrected > 0) {
        std::printf("  Numbering order of %d elements has been corrected.\n", corrected);
    }
}
