// The faces of triangles and tetrahedra, by the deck's labels.
#ifndef KIVOM_FLATTEN_SIMPLEX_H
#define KIVOM_FLATTEN_SIMPLEX_H

namespace flatten {

// [dimension - 2][face][corner]: edges of a triangle, faces of a tetrahedron; row 0 is S1.
constexpr int kFaceCorners[2][4][3] = {
    {{0, 1, -1}, {1, 2, -1}, {2, 0, -1}, {-1, -1, -1}},
    {{0, 1, 2}, {0, 3, 1}, {1, 3, 2}, {2, 3, 0}},
};

} // namespace flatten

#endif
