// The cells that a mesh file can hold, by type code: their corners, edges and faces as columns of a row.
#ifndef KIVOM_AUDIT_SHAPES_H
#define KIVOM_AUDIT_SHAPES_H

#include <array>

namespace audit {

constexpr int kMostCorners = 4;

struct Shape {
    int type;
    int dimension;
    int nNodes;
    int corners[kMostCorners]; // dimension + 1 of them
    int nMiddles;              // mid-side nodes
    int middles[6][3];         // corner, mid-side node, corner
    int nPieces;               // linear pieces that a side becomes in the file
    int pieces[4][4][3];       // of the side opposite each corner, so that they look into the cell

    int Corners() const {
        return dimension + 1;
    }
};

// clang-format off
inline constexpr Shape kShapes[] = {
    {3, 2, 3, {0, 1, 2}, 0, {}, 1, {{{1, 2}}, {{2, 0}}, {{0, 1}}}},
    {4, 2, 6, {0, 2, 4}, 3, {{0, 1, 2}, {2, 3, 4}, {4, 5, 0}}, 2,
     {{{2, 3}, {3, 4}}, {{4, 5}, {5, 0}}, {{0, 1}, {1, 2}}}},
    {5, 3, 4, {0, 1, 2, 3}, 0, {}, 1, {{{1, 3, 2}}, {{2, 3, 0}}, {{3, 1, 0}}, {{0, 1, 2}}}},
    {6, 3, 10, {0, 1, 2, 3}, 6, {{0, 4, 1}, {1, 5, 2}, {2, 6, 0}, {0, 7, 3}, {1, 8, 3}, {2, 9, 3}}, 4,
     {{{5, 8, 9}, {1, 8, 5}, {3, 9, 8}, {2, 5, 9}},
      {{6, 9, 7}, {2, 9, 6}, {3, 7, 9}, {0, 6, 7}},
      {{7, 8, 4}, {3, 8, 7}, {1, 4, 8}, {0, 7, 4}},
      {{6, 4, 5}, {0, 4, 6}, {1, 5, 4}, {2, 6, 5}}}},
};
// clang-format on

// Null for every other code.
inline const Shape *ShapeOf(int type) {
    constexpr int kFirst = kShapes[0].type;
    return type >= kFirst && type < kFirst + 4 ? &kShapes[type - kFirst] : nullptr;
}

} // namespace audit

#endif
