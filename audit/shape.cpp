// Which way round cells run, at their corners and, where they are quadratic, at every node.
#include "audit/work.h"

#include <algorithm>
#include <cmath>

namespace audit {

namespace {

// A cell's measure over the product of its edges at the first corner: below this it is rounding that tells which way
// the cell runs.
constexpr double kFlatness = 1e-12;

// Coordinates have 16 digits in the file. What they leave open of a measure of 1, where they are as large as the edges.
constexpr double kDigits = 4e-15;

double Length(Point a) {
    return std::sqrt(Dot(a, a));
}

// Twice an area, six times a volume, over the lengths that span it: -1 to 1.
double Slant(Point u, Point v) {
    return (u.x * v.y - u.y * v.x) / (Length(u) * Length(v));
}

double Slant(Point u, Point v, Point w) {
    return Dot(Cross(u, v), w) / (Length(u) * Length(v) * Length(w));
}

double Slant(const Point (&p)[3]) {
    return Slant(p[1] - p[0], p[2] - p[0]);
}

double Slant(const Point (&p)[4]) {
    return Slant(p[1] - p[0], p[2] - p[0], p[3] - p[0]);
}

// Products of very large or very small edges leave the range of doubles: brought to about 1 before they are taken
// again.
template <std::size_t kCorners> double SafeSlant(Point (&p)[kCorners]) {
    const double slant = Slant(p);
    if (std::isnormal(slant)) {
        return slant;
    }
    double largest = 0;
    for (const Point &q : p) {
        Raise(&largest, std::max({std::fabs(q.x / 4 - p[0].x / 4), std::fabs(q.y / 4 - p[0].y / 4),
                                  std::fabs(q.z / 4 - p[0].z / 4)}));
    }
    const int power = std::ilogb(largest) + 2; // no edge overflows before it is made small
    Point scaled[kCorners];
    for (std::size_t k = 0; k < kCorners && largest > 0; ++k) {
        scaled[k] = {std::ldexp(p[k].x, -power), std::ldexp(p[k].y, -power), std::ldexp(p[k].z, -power)};
    }
    return largest > 0 ? Slant(scaled) : 0;
}

template <std::size_t kCorners> void CheckCell(Work *work, std::size_t cell) {
    Point corners[kCorners];
    CornersOf(*work, cell, corners);
    const double slant = SafeSlant(corners);
    if (slant > kFlatness) {
        return;
    }
    work->cells[cell] |= slant < -kFlatness ? kTurned : kFlat;
    work->Found(Check::orientation, Subject::cell, cell, -slant);
}

// Derivatives of the position along the cell's own directions --------------------------------------------------------

// At local coordinates (r, s, t) with q = 1 - r - s - t the shape functions of a quadratic cell are n (2 n - 1) at the
// corners and 4 n m at the mid-side nodes, where n and m are the local coordinates that are 1 at the corners. Their
// derivative along an edge that leads from corner 0 to corner k is that by corner k's coordinate less that by corner
// 0's.
template <std::size_t kCorners> struct Jacobian {
    Point by[kCorners]; // derivatives by each corner's coordinate
};

template <std::size_t kCorners>
Jacobian<kCorners> JacobianAt(const Work &work, const Shape &shape, const int *row, const double (&local)[kCorners]) {
    Jacobian<kCorners> jacobian{};
    const auto add = [](Point *sum, double factor, Point p) {
        sum->x += factor * p.x;
        sum->y += factor * p.y;
        sum->z += factor * p.z;
    };
    const Point origin = work.At(row[shape.corners[0]]); // differences from it keep the digits of small cells far away
    for (std::size_t k = 0; k < kCorners; ++k) {
        add(&jacobian.by[k], 4 * local[k] - 1, work.At(row[shape.corners[k]]) - origin);
    }
    const auto cornerOf = [&shape](int column) {
        return static_cast<std::size_t>(std::find(shape.corners, shape.corners + kCorners, column) - shape.corners);
    };
    for (int m = 0; m < shape.nMiddles; ++m) {
        const std::size_t a = cornerOf(shape.middles[m][0]);
        const std::size_t b = cornerOf(shape.middles[m][2]);
        const Point p = work.At(row[shape.middles[m][1]]) - origin;
        add(&jacobian.by[a], 4 * local[b], p);
        add(&jacobian.by[b], 4 * local[a], p);
    }
    return jacobian;
}

double Determinant(const Jacobian<3> &j) {
    const Point u = j.by[1] - j.by[0];
    const Point v = j.by[2] - j.by[0];
    return u.x * v.y - u.y * v.x;
}

double Determinant(const Jacobian<4> &j) {
    return Dot(Cross(j.by[1] - j.by[0], j.by[2] - j.by[0]), j.by[3] - j.by[0]);
}

// The least determinant at any node, over that of the straight cell.
template <std::size_t kCorners> double LeastDeterminant(const Work &work, std::size_t cell) {
    const Shape &shape = work.ShapeOfCell(cell);
    const int *row = work.mesh.cells.rows.Row(cell);
    Point p[kCorners];
    CornersOf(work, cell, p);
    Jacobian<kCorners> straight{};
    std::copy(p, p + kCorners, straight.by);
    double least = HUGE_VAL;
    for (std::size_t a = 0; a < kCorners; ++a) {
        for (std::size_t b = a; b < kCorners; ++b) { // a corner, or the middle of an edge
            double local[kCorners] = {};
            local[a] += 0.5;
            local[b] += 0.5;
            const double determinant = Determinant(JacobianAt<kCorners>(work, shape, row, local));
            least = determinant < least ? determinant : least;
        }
    }
    return least / Determinant(straight);
}

// Mid-side nodes that stand off the middles of their edges by at most d move the cell's three directions by at most 8 d
// each. That cannot turn it anywhere where its smallest altitude is above 24 d: so most cells need no second look.
template <std::size_t kCorners> bool IsNearlyStraight(const Work &work, std::size_t cell) {
    const Shape &shape = work.ShapeOfCell(cell);
    const int *row = work.mesh.cells.rows.Row(cell);
    double offSquare = 0;
    for (int m = 0; m < shape.nMiddles; ++m) {
        const Point p = work.At(row[shape.middles[m][1]]);
        const Point off = (p - work.At(row[shape.middles[m][0]])) - (work.At(row[shape.middles[m][2]]) - p);
        Raise(&offSquare, Dot(off, off)); // of twice the distance
    }
    Point corners[kCorners];
    CornersOf(work, cell, corners);
    return 12 * std::sqrt(offSquare) < SmallestAltitude(corners);
}

template <std::size_t kCorners> void CheckMiddles(Work *work, std::size_t cell) {
    if (IsNearlyStraight<kCorners>(*work, cell)) {
        return;
    }
    const double least = LeastDeterminant<kCorners>(*work, cell);
    if (!(least > kDigits)) {
        work->Found(Check::midSideNodes, Subject::cell, cell, -least);
    }
}

} // namespace

void CheckOrientation(Work *work) {
    for (std::size_t cell = 0; cell < work->CountOfCells(); ++cell) {
        if (!work->Is(cell, kPlaced)) {
            continue;
        }
        if (work->mesh.dimension == 2) {
            CheckCell<3>(work, cell);
        } else {
            CheckCell<4>(work, cell);
        }
    }
}

void CheckMidSideNodes(Work *work) {
    for (std::size_t cell = 0; cell < work->CountOfCells(); ++cell) {
        if ((work->cells[cell] & (kPlaced | kTurned | kFlat)) != kPlaced || work->ShapeOfCell(cell).nMiddles == 0) {
            continue;
        }
        if (work->mesh.dimension == 2) {
            CheckMiddles<3>(work, cell);
        } else {
            CheckMiddles<4>(work, cell);
        }
    }
}

} // namespace audit
