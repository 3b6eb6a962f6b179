// Quadrilaterals, pyramids, wedges and hexahedra cut into triangles and tetrahedra.
//
// Every quadrilateral face is cut through the smallest of its numbers, so that both its neighbours cut it alike (the
// rule of Dompierre, Labbe, Vallet and Camarero, "How to Subdivide Pyramids, Prisms and Hexahedra into Tetrahedra",
// 1999). The solid is then a cone from its smallest node over the triangles of all faces that this node is not on:
//
//     pyramid  2      wedge  3      hexahedron  6, or 5 where no diagonal ends in the corner opposite to the smallest
//
// Nodes that an element repeats make one corner: faces shrink to triangles or vanish, and the pieces with them.
#ifndef KIVOM_FLATTEN_SPLIT_H
#define KIVOM_FLATTEN_SPLIT_H

#include "deck/types.h"

#include <array>

namespace flatten {

constexpr int kMostPieces = 6;

struct Piece {
    int corner[4]; // rows of the element's connectivity; a triangle has three
};

struct Pieces {
    int count = 0;
    std::array<Piece, kMostPieces> piece{};
};

// The pieces of an element of that shape, in two or three dimensions, whose corners have these final numbers.
Pieces Split(deck::Shape shape, const int *numbers);

// Other ways to split the element, whatever its neighbours do: the one of that index, from 0; none where count is 0.
// kMostWays are all ways of any shape; not each index is a way.
constexpr int kMostWays = 64;
Pieces SplitOtherwise(deck::Shape shape, const int *numbers, int way);

} // namespace flatten

#endif
