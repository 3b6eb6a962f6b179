// Areas and volumes.
#include "deck/measure.h"

#include "support/measures.h"

#include <algorithm>
#include <cmath>

namespace deck {

namespace {

constexpr double kFlatRatio = 1e-12;

// Edges of a length between these have cubes that a double holds.
constexpr double kShort = 1e-90;
constexpr double kLong = 1e90;

// The edges at the first corner.
struct Edges {
    double d[3][3]{};
    int dimension;

    double Longest() const {
        double longest = 0;
        for (const auto &edge : d) {
            longest = std::max(longest, std::sqrt(edge[0] * edge[0] + edge[1] * edge[1] + edge[2] * edge[2]));
        }
        return longest;
    }
    double Value() const {
        if (dimension == 2) {
            return d[0][0] * d[1][1] - d[1][0] * d[0][1];
        }
        const double cx = d[0][1] * d[1][2] - d[0][2] * d[1][1];
        const double cy = d[0][2] * d[1][0] - d[0][0] * d[1][2];
        const double cz = d[0][0] * d[1][1] - d[0][1] * d[1][0];
        return cx * d[2][0] + cy * d[2][1] + cz * d[2][2];
    }
    // The longest component becomes a number from 1 up to 2.
    void ChangeUnit() {
        double most = 0;
        for (const auto &edge : d) {
            most = std::max({most, std::fabs(edge[0]), std::fabs(edge[1]), std::fabs(edge[2])});
        }
        if (most > 0 && std::isfinite(most)) {
            const int exponent = std::ilogb(most);
            for (auto &edge : d) {
                std::transform(edge, edge + 3, edge, [&](double c) { return std::ldexp(c, -exponent); });
            }
        }
    }
};

} // namespace

Measure MeasureOf(const std::vector<double> &x, const std::vector<double> &y, const std::vector<double> &z,
                  const int *corners, int dimension) {
    Edges edges{{}, dimension};
    const auto a = static_cast<std::size_t>(corners[0]);
    for (int k = 0; k < dimension; ++k) {
        const auto b = static_cast<std::size_t>(corners[k + 1]);
        edges.d[k][0] = x[b] - x[a];
        edges.d[k][1] = y[b] - y[a];
        edges.d[k][2] = dimension == 3 ? z[b] - z[a] : 0;
    }
    const double held = edges.Value();
    const double length = edges.Longest();
    if (length > kShort && length < kLong) {
        return {held, held, length, dimension};
    }
    edges.ChangeUnit();
    return {held, edges.Value(), edges.Longest(), dimension};
}

bool IsTurned(const Measure &measure) {
    return measure.held < kSmallestMeasure;
}

bool IsFlat(const Measure &measure) {
    const double scale =
        measure.dimension == 2 ? measure.length * measure.length : measure.length * measure.length * measure.length;
    return std::fabs(measure.value) <= kFlatRatio * scale;
}

bool IsTooSmall(const Measure &measure) {
    return IsTurned(measure) && measure.value > 0 && !IsFlat(measure);
}

} // namespace deck
