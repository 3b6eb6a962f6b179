// Cones over the faces of an element.
#include "flatten/split.h"

namespace flatten {

namespace {

using deck::FaceRow;
using deck::Shape;

// The distinct corners of a face, in its order.
struct Polygon {
    int count = 0;
    int corner[deck::kMostFaceCorners]{};
};

Polygon PolygonOf(const FaceRow &face, const int *numbers) {
    Polygon polygon;
    for (int i = 0; i < 2 && face.nCorners == 4; ++i) {
        if (numbers[face.corner[i]] == numbers[face.corner[i + 2]]) { // folded: it has no area
            return polygon;
        }
    }
    for (int i = 0; i < face.nCorners; ++i) {
        bool again = false;
        for (int k = 0; k < polygon.count; ++k) {
            again = again || numbers[polygon.corner[k]] == numbers[face.corner[i]];
        }
        if (!again) {
            polygon.corner[polygon.count++] = face.corner[i];
        }
    }
    return polygon;
}

bool Has(const Polygon &polygon, int number, const int *numbers) {
    for (int i = 0; i < polygon.count; ++i) {
        if (numbers[polygon.corner[i]] == number) {
            return true;
        }
    }
    return false;
}

int SmallestOf(const Polygon &polygon, const int *numbers) {
    int smallest = 0;
    for (int i = 1; i < polygon.count; ++i) {
        smallest = numbers[polygon.corner[i]] < numbers[polygon.corner[smallest]] ? i : smallest;
    }
    return smallest;
}

void Add(Pieces *pieces, int a, int b, int c, int d) {
    if (pieces->count < kMostPieces) {
        pieces->piece[static_cast<std::size_t>(pieces->count++)] = {{a, b, c, d}};
    }
}

// The polygon's triangles, from its corner `from` on, each with the apex. Faces have their normals inwards.
void AddCone(Pieces *pieces, const Polygon &polygon, int from, int apex) {
    for (int i = 1; i + 1 < polygon.count; ++i) {
        Add(pieces, polygon.corner[from], polygon.corner[(from + i) % polygon.count],
            polygon.corner[(from + i + 1) % polygon.count], apex);
    }
}

// The cone from the apex, a row of the connectivity. Of the quadrilaterals that it is not on, in their order, each has
// a bit in `cuts`: its diagonal is the other one than that through the smallest number.
Pieces Cone(Shape shape, const int *numbers, int apex, int cuts) {
    Pieces pieces;
    for (int f = 0; f < FacesOf(shape); ++f) {
        const Polygon polygon = PolygonOf(FaceOf(shape, f), numbers);
        if (polygon.count < 3 || Has(polygon, numbers[apex], numbers)) {
            continue;
        }
        const int smallest = SmallestOf(polygon, numbers);
        AddCone(&pieces, polygon, polygon.count == 4 ? (smallest + cuts % 2) % 4 : smallest, apex);
        cuts /= polygon.count == 4 ? 2 : 1;
    }
    return pieces;
}

// The corner of a hexahedron that shares no face with another one.
constexpr int kOpposite[] = {6, 7, 4, 5, 2, 3, 0, 1};

// Where of six pieces three meet in the diagonal through the body, from the apex to the corner opposite, and the others
// do not touch that corner: two pieces take the place of the three.
void DropBodyDiagonal(Pieces *pieces, int apex) {
    const int opposite = kOpposite[apex];
    Pieces kept;
    int next[8]{}; // the three neighbours of the opposite corner, around it
    int start = -1;
    int count = 0;
    for (int i = 0; i < pieces->count; ++i) {
        const int *c = pieces->piece[static_cast<std::size_t>(i)].corner;
        int at = 0;
        while (at < 3 && c[at] != opposite) {
            ++at;
        }
        if (at == 3) {
            Add(&kept, c[0], c[1], c[2], c[3]);
            continue;
        }
        start = c[(at + 1) % 3];
        next[start] = c[(at + 2) % 3];
        ++count;
    }
    if (count != 3) { // a diagonal ends there
        return;
    }
    const int second = next[start];
    const int third = next[second];
    Add(&kept, start, second, third, apex);
    Add(&kept, opposite, start, second, third);
    *pieces = kept;
}

int SmallestCorner(Shape shape, const int *numbers) {
    int smallest = 0;
    for (int i = 1; i < CornersOf(shape); ++i) {
        smallest = numbers[i] < numbers[smallest] ? i : smallest;
    }
    return smallest;
}

bool Repeats(Shape shape, const int *numbers) {
    for (int i = 0; i < CornersOf(shape); ++i) {
        for (int k = 0; k < i; ++k) {
            if (numbers[i] == numbers[k]) {
                return true;
            }
        }
    }
    return false;
}

// A plane element is its own only face.
Pieces SplitPlane(Shape shape, const int *numbers, int otherwise) {
    Pieces pieces;
    FaceRow whole{CornersOf(shape), {0, 1, 2, 3}};
    const Polygon polygon = PolygonOf(whole, numbers);
    if (polygon.count >= 3) {
        AddCone(&pieces, polygon, (SmallestOf(polygon, numbers) + otherwise) % polygon.count, -1);
    }
    return pieces;
}

} // namespace

Pieces Split(Shape shape, const int *numbers) {
    if (DimensionOf(shape) == 2) {
        return SplitPlane(shape, numbers, 0);
    }
    const int apex = SmallestCorner(shape, numbers);
    Pieces pieces = Cone(shape, numbers, apex, 0);
    if (CornersOf(shape) == 8 && !Repeats(shape, numbers)) {
        DropBodyDiagonal(&pieces, apex);
    }
    return pieces;
}

Pieces SplitOtherwise(Shape shape, const int *numbers, int way) {
    constexpr int kCuts = 8; // three faces at most, two ways each
    if (DimensionOf(shape) == 2) {
        return way == 0 ? SplitPlane(shape, numbers, 1) : Pieces{};
    }
    return way / kCuts < CornersOf(shape) ? Cone(shape, numbers, way / kCuts, way % kCuts) : Pieces{};
}

} // namespace flatten
