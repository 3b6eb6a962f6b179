// Twice the area of triangles, six times the volume of tetrahedra: as the translator judges them, and as they are.
#ifndef KIVOM_DECK_MEASURE_H
#define KIVOM_DECK_MEASURE_H

#include <vector>

namespace deck {

struct Measure {
    double held;   // by the translator: negative where the element runs the wrong way round
    double value;  // the same of a mesh in a unit in which neither this nor the cube of the length is out of range
    double length; // longest edge at the first corner, in that unit
    int dimension;
};

// Of the triangle (z plays no part) or tetrahedron with these corners, positions of nodes.
Measure MeasureOf(const std::vector<double> &x, const std::vector<double> &y, const std::vector<double> &z,
                  const int *corners, int dimension);

// The translator exchanges two of its nodes.
bool IsTurned(const Measure &measure);

// So small beside the edges that it is no more than rounding.
bool IsFlat(const Measure &measure);

// The translator takes it for one that runs the wrong way round, though it does not.
bool IsTooSmall(const Measure &measure);

} // namespace deck

#endif
