// Areas and volumes.
#include "flatten/measure.h"

#include <algorithm>
#include <cmath>

namespace flatten {

namespace {

// Below this measure the translator exchanges two nodes.
constexpr double kTurnedBelow = 1e-10;

constexpr double kFlatRatio = 1e-12;

} // namespace

Measure MeasureOf(const Plain &plain, const int *corners, int dimension) {
    double d[3][3]{};
    double longest = 0;
    const auto a = static_cast<std::size_t>(corners[0]);
    for (int k = 0; k < dimension; ++k) {
        const auto b = static_cast<std::size_t>(corners[k + 1]);
        d[k][0] = plain.x[b] - plain.x[a];
        d[k][1] = plain.y[b] - plain.y[a];
        d[k][2] = dimension == 3 ? plain.z[b] - plain.z[a] : 0;
        longest = std::max(longest, std::sqrt(d[k][0] * d[k][0] + d[k][1] * d[k][1] + d[k][2] * d[k][2]));
    }
    if (dimension == 2) {
        return {d[0][0] * d[1][1] - d[1][0] * d[0][1], longest, 2};
    }
    const double cx = d[0][1] * d[1][2] - d[0][2] * d[1][1];
    const double cy = d[0][2] * d[1][0] - d[0][0] * d[1][2];
    const double cz = d[0][0] * d[1][1] - d[0][1] * d[1][0];
    return {cx * d[2][0] + cy * d[2][1] + cz * d[2][2], longest, 3};
}

bool IsFlat(const Measure &measure) {
    const double scale =
        measure.dimension == 2 ? measure.length * measure.length : measure.length * measure.length * measure.length;
    return std::fabs(measure.value) <= kFlatRatio * scale;
}

bool IsTooSmall(const Measure &measure) {
    return measure.value > 0 && measure.value < kTurnedBelow && !IsFlat(measure);
}

} // namespace flatten
