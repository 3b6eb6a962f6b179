// Twice the area of triangles, six times the volume of tetrahedra: as the translator judges them.
#ifndef KIVOM_FLATTEN_MEASURE_H
#define KIVOM_FLATTEN_MEASURE_H

#include "flatten/plain.h"

namespace flatten {

struct Measure {
    double value;  // negative where the element runs the wrong way round
    double length; // longest edge at the first corner
    int dimension;
};

// Of the triangle (z plays no part) or tetrahedron with these corners, positions of nodes.
Measure MeasureOf(const Plain &plain, const int *corners, int dimension);

// So small beside the edges that it is no more than rounding.
bool IsFlat(const Measure &measure);

// The translator takes it for one that runs the wrong way round, though it does not.
bool IsTooSmall(const Measure &measure);

} // namespace flatten

#endif
