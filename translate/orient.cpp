// Orientation: triangles counter-clockwise in the x-y plane, tetrahedra with positive volume.
#include "translate/steps.h"

#include "translate/geometry.h"

#include <cstdio>
#include <utility>

namespace {

// Twice the signed area of a triangle; z is not looked at.
double Measure(const Point (&p)[3]) {
    return (p[1].x - p[0].x) * (p[2].y - p[0].y) - (p[2].x - p[0].x) * (p[1].y - p[0].y);
}

// Six times the signed volume of a tetrahedron.
double Measure(const Point (&p)[4]) {
    return Dot(Cross(p[1] - p[0], p[2] - p[0]), p[3] - p[0]);
}

// Exchanges two corners, the mid-side nodes that then lie between other corners, and the tags of the two faces
// opposite the exchanged corners.
void Turn(const Cells *cells, int cell, const TurnRound &turn) {
    for (int i = 0; i < turn.nSwaps; ++i) {
        std::swap(cells->i2Conn[turn.swaps[i][0]][cell], cells->i2Conn[turn.swaps[i][1]][cell]);
    }
    std::swap(cells->i2FaceTag[turn.slots[0]][cell], cells->i2FaceTag[turn.slots[1]][cell]);
}

template <std::size_t nCorners> bool RunsTheWrongWay(const Mesh *mesh, int cell, const CellInHand &hand) {
    Point points[nCorners];
    return CornerPoints(mesh->Nodes, mesh->Cells, cell, hand, points) && Measure(points) < kSmallestMeasure; // NaN: no
}

} // namespace

void ChckCellsOrde(Mesh *mesh) {
    const Cells *cells = mesh->Cells;
    int corrected = 0;
    CellInHand hand{};
    for (int c = 0; c < cells->nNum; ++c) {
        if (!LookAtCell(&hand, cells, c)) {
            std::printf("\n  Error> Undesirable cell type detected in ChckCellsOrde.\n");
            return;
        }
        if (hand.family->corners.nCorners == 3 ? RunsTheWrongWay<3>(mesh, c, hand)
                                               : RunsTheWrongWay<4>(mesh, c, hand)) {
            Turn(cells, c, hand.family->turn);
            ++corrected;
        }
    }
    if (corrected > 0) {
        std::printf("  Numbering order of %d elements has been corrected.\n", corrected);
    }
}
