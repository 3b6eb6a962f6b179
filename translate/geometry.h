// Corner points of cells, and products of vectors with the terms in the order that fixes their rounding.
#ifndef KIVOM_TRANSLATE_GEOMETRY_H
#define KIVOM_TRANSLATE_GEOMETRY_H

#include "store/sys.h"

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

// Corners of the families that the translation can measure.
struct CornerColumns {
    int nCorners;   // 3 or 4; 0 for a type that cannot be measured
    int columns[4]; // of i2Conn, in ascending order
    bool bQuadratic;
};

constexpr CornerColumns CornersOf(int type) {
    switch (type) {
    case kTRI3:
        return {3, {0, 1, 2, 0}, false};
    case kTRI6:
        return {3, {0, 2, 4, 0}, true};
    case kTET4:
        return {4, {0, 1, 2, 3}, false};
    case kTETX:
        return {4, {0, 1, 2, 3}, true};
    default:
        return {0, {0, 0, 0, 0}, false};
    }
}

// The cell's corner points into points[0..nCorners-1]. False when a corner is no node of the mesh (-1), or when the
// cell has fewer nodes than its type: it then has no shape to measure.
inline bool CornerPoints(const Nodes *nodes, const Cells *cells, int cell, const CornerColumns &corners,
                         Point *points) {
    if (cells->i1NumNodes[cell] <= corners.columns[corners.nCorners - 1]) {
        return false;
    }
    for (int i = 0; i < corners.nCorners; ++i) {
        const int node = cells->i2Conn[corners.columns[i]][cell];
        if (node < 0) {
            return false;
        }
        points[i] = {nodes->d1X[node], nodes->d1Y[node], nodes->d1Z[node]};
    }
    return true;
}

#endif
