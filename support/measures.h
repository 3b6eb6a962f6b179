// Points, and the lengths that are taken of triangles and tetrahedra: edges and altitudes. The translation measures the
// mesh with them, and who reads the mesh file back measures it again.
//
// Terms stand in the order that fixes their rounding.
#ifndef KIVOM_SUPPORT_MEASURES_H
#define KIVOM_SUPPORT_MEASURES_H

#include <cmath>
#include <cstddef>

constexpr double kNoMinimum = 1e15; // start of every minimum: no value yet
constexpr double kTiny = 1e-10;     // keeps divisions by a vanishing length harmless
constexpr double kQuadratic = 0.5;  // nodes of quadratic cells are half as far apart

// Cells of a smaller measure, twice the area or six times the volume, count as running the wrong way round. Absolute,
// not scaled by the cell's size: degenerate cells fall below it, too, although they have no orientation to mend.
constexpr double kSmallestMeasure = 1e-10;

struct Point {
    double x, y, z;
};

inline Point operator-(Point a, Point b) {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}

inline Point Cross(Point a, Point b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

inline double Dot(Point a, Point b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

// NaN changes neither.
inline void Lower(double *smallest, double value) {
    *smallest = value < *smallest ? value : *smallest;
}

inline void Raise(double *largest, double value) {
    *largest = value > *largest ? value : *largest;
}

// Brings in the squares of the edge lengths, of triangles in the x-y plane. A correctly rounded root keeps order, so
// the root of the smallest square is the smallest root, and one root for many cells is enough.
template <std::size_t nCorners>
void MeasureEdges(const Point (&p)[nCorners], double *smallestSquare, double *largestSquare) {
    for (std::size_t a = 0; a < nCorners; ++a) {
        for (std::size_t b = a + 1; b < nCorners; ++b) {
            const Point d = p[a] - p[b];
            const double squared = nCorners == 3 ? d.x * d.x + d.y * d.y : Dot(d, d);
            Lower(smallestSquare, squared);
            Raise(largestSquare, squared);
        }
    }
}

// Distance of p from the line through q and r, in the x-y plane. A line shorter than kTiny is used as it is.
inline double AltitudeOverLine(Point p, Point q, Point r) {
    double ex = r.x - q.x;
    double ey = r.y - q.y;
    const double length = std::sqrt(ex * ex + ey * ey);
    if (length > kTiny) {
        ex /= length;
        ey /= length;
    }
    return std::fabs(ex * (p.y - q.y) - ey * (p.x - q.x));
}

// Distance of p from the plane through q, r and s. kTiny is always added here, unlike above: the two guards
// differ on purpose.
inline double AltitudeOverPlane(Point p, Point q, Point r, Point s) {
    const Point normal = Cross(r - q, s - q);
    return std::fabs(Dot(normal, p - q)) / (std::sqrt(Dot(normal, normal)) + kTiny);
}

inline double SmallestAltitude(const Point (&p)[3]) {
    double smallest = HUGE_VAL; // not kNoMinimum: half of that would look like a length
    Lower(&smallest, AltitudeOverLine(p[0], p[1], p[2]));
    Lower(&smallest, AltitudeOverLine(p[1], p[0], p[2]));
    Lower(&smallest, AltitudeOverLine(p[2], p[0], p[1]));
    return smallest;
}

inline double SmallestAltitude(const Point (&p)[4]) {
    double smallest = HUGE_VAL;
    Lower(&smallest, AltitudeOverPlane(p[0], p[1], p[2], p[3]));
    Lower(&smallest, AltitudeOverPlane(p[1], p[0], p[2], p[3]));
    Lower(&smallest, AltitudeOverPlane(p[2], p[0], p[1], p[3]));
    Lower(&smallest, AltitudeOverPlane(p[3], p[0], p[1], p[2]));
    return smallest;
}

#endif
