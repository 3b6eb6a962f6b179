// Measures of shape in closed form, and histograms.
#include "audit/quality.h"

#include "audit/work.h"

#include <algorithm>
#include <cmath>

namespace audit {

namespace {

constexpr double kRounding = 1e-9;                 // of limits: a regular shape may miss its 1 by some digits
constexpr double kDegrees = 57.295779513082320877; // of one radian

double &At(Values *values, Measure measure) {
    return (*values)[static_cast<std::size_t>(measure)];
}

// From a sine and a cosine, both times the same number above 0. Exact also where the angle is near 0 or 180.
double Angle(double sine, double cosine) {
    return std::atan2(sine, cosine) * kDegrees;
}

// Edge i of a tetrahedron joins corners a and b; c and d are the other two.
constexpr int kEdges[6][4] = {{0, 1, 2, 3}, {1, 2, 0, 3}, {2, 0, 1, 3}, {0, 3, 1, 2}, {1, 3, 0, 2}, {2, 3, 0, 1}};

// Twice the vector area of the face opposite each corner, outwards where the tetrahedron is the right way round.
void FaceNormals(const Point (&p)[4], Point (&normals)[4]) {
    normals[0] = Cross(p[2] - p[1], p[3] - p[1]);
    normals[1] = Cross(p[3] - p[0], p[2] - p[0]);
    normals[2] = Cross(p[1] - p[0], p[3] - p[0]);
    normals[3] = Cross(p[2] - p[0], p[1] - p[0]);
}

// The least and the largest angle between two faces. Faces c and d meet in the edge of a and b; the cosine of the angle
// inside is that of their normals with the other sign, and its sine is volume times edge: |n x m| = 6 V |e|.
void DihedralAngles(const Point (&normals)[4], const double (&edges)[6], double volume6, Values *values) {
    double areas[4];
    for (int i = 0; i < 4; ++i) {
        areas[i] = std::sqrt(Dot(normals[i], normals[i]));
    }
    int least = 0;
    int most = 0;
    double dots[6];
    double cosines[6];
    for (int i = 0; i < 6; ++i) {
        const int c = kEdges[i][2];
        const int d = kEdges[i][3];
        dots[i] = -Dot(normals[c], normals[d]);
        cosines[i] = dots[i] / (areas[c] * areas[d]);
        least = cosines[i] > cosines[least] ? i : least;
        most = cosines[i] < cosines[most] ? i : most;
    }
    At(values, Measure::minAngle) = Angle(std::fabs(volume6) * std::sqrt(edges[least]), dots[least]);
    At(values, Measure::maxAngle) = Angle(std::fabs(volume6) * std::sqrt(edges[most]), dots[most]);
}

// Six times the volume over the largest product of the three edges at a corner, brought to 1 for the regular one.
double ScaledJacobian(const double (&edges)[6], double volume6) {
    const double atCorners[4] = {edges[0] * edges[2] * edges[3], edges[0] * edges[1] * edges[4],
                                 edges[1] * edges[2] * edges[5], edges[3] * edges[4] * edges[5]};
    const double largest = std::sqrt(*std::max_element(atCorners, atCorners + 4));
    return std::sqrt(2.0) * volume6 / std::max(largest, std::fabs(volume6));
}

// Circumradius over three times the inradius. The numerator of the circumradius is the length of the sum of the faces'
// vectors, each times the square of the edge that leads away from it.
double RadiusRatio(const Point (&p)[4], const Point (&normals)[4], double volume6) {
    const Point a = p[1] - p[0];
    const Point b = p[2] - p[0];
    const Point c = p[3] - p[0];
    const auto sum = [&](double u, double v, double w) { return Dot(c, c) * u + Dot(b, b) * v + Dot(a, a) * w; };
    const Point ab = Cross(a, b);
    const Point ca = Cross(c, a);
    const Point bc = Cross(b, c);
    const Point numerator{sum(ab.x, ca.x, bc.x), sum(ab.y, ca.y, bc.y), sum(ab.z, ca.z, bc.z)};
    double area = 0;
    for (const Point &normal : normals) {
        area += std::sqrt(Dot(normal, normal)) / 2;
    }
    const double volume = volume6 / 6;
    return std::sqrt(Dot(numerator, numerator)) * area / (108 * volume * volume);
}

} // namespace

Values QualityOf(const Point (&p)[3]) {
    const double area2 = std::fabs((p[1].x - p[0].x) * (p[2].y - p[0].y) - (p[2].x - p[0].x) * (p[1].y - p[0].y));
    const Point edges[3] = {p[2] - p[1], p[0] - p[2], p[1] - p[0]}; // opposite each corner
    double lengths[3];
    for (int i = 0; i < 3; ++i) {
        lengths[i] = std::sqrt(edges[i].x * edges[i].x + edges[i].y * edges[i].y);
    }
    const auto [shortest, longest] = std::minmax_element(lengths, lengths + 3);
    const auto angleAt = [&](std::ptrdiff_t corner) {
        const Point &u = edges[(corner + 1) % 3];
        const Point &v = edges[(corner + 2) % 3];
        return Angle(area2, -(u.x * v.x + u.y * v.y));
    };
    Values values{};
    const double sum = lengths[0] + lengths[1] + lengths[2];
    At(&values, Measure::radiusRatio) = lengths[0] * lengths[1] * lengths[2] * sum / (4 * area2 * area2);
    At(&values, Measure::edgeRatio) = *longest / *shortest;
    At(&values, Measure::minAngle) = angleAt(shortest - lengths);
    At(&values, Measure::maxAngle) = angleAt(longest - lengths);
    const double products[3] = {lengths[0] * lengths[1], lengths[1] * lengths[2], lengths[2] * lengths[0]};
    At(&values, Measure::scaledJacobian) = 2 / std::sqrt(3.0) * area2 / *std::max_element(products, products + 3);
    return values;
}

Values QualityOf(const Point (&p)[4]) {
    double edges[6]; // squares of their lengths
    double sum = 0;
    for (int i = 0; i < 6; ++i) {
        const Point edge = p[kEdges[i][1]] - p[kEdges[i][0]];
        edges[i] = Dot(edge, edge);
        sum += edges[i];
    }
    Point normals[4];
    FaceNormals(p, normals);
    const double volume6 = Dot(Cross(p[1] - p[0], p[2] - p[0]), p[3] - p[0]);
    const auto [shortest, longest] = std::minmax_element(edges, edges + 6);
    Values values{};
    At(&values, Measure::radiusRatio) = RadiusRatio(p, normals, volume6);
    At(&values, Measure::edgeRatio) = std::sqrt(*longest / *shortest);
    DihedralAngles(normals, edges, volume6, &values);
    At(&values, Measure::scaledJacobian) = ScaledJacobian(edges, volume6);
    // The regular tetrahedron's volume is its edge cubed over 6 sqrt(2).
    const double mean = std::sqrt(sum / 6);
    At(&values, Measure::aspectGamma) = mean * mean * mean / (std::sqrt(2.0) * std::fabs(volume6));
    return values;
}

Histogram HistogramOf(const std::vector<double> &values, Range limits) {
    Histogram histogram;
    histogram.limits = limits;
    const double low = limits.least - kRounding * std::fabs(limits.least);
    const double high = limits.most + kRounding * std::fabs(limits.most);
    double sum = 0;
    for (const double value : values) {
        histogram.outside += value >= low && value <= high ? 0 : 1;
        if (!std::isfinite(value)) {
            ++histogram.undefined;
            continue;
        }
        histogram.min = histogram.values == 0 || value < histogram.min ? value : histogram.min;
        histogram.max = histogram.values == 0 || value > histogram.max ? value : histogram.max;
        sum += value;
        ++histogram.values;
    }
    if (histogram.values == 0) {
        return histogram;
    }
    histogram.mean = sum / static_cast<double>(histogram.values);
    const bool allSame = histogram.min == histogram.max;
    const double first = allSame ? histogram.min - 0.5 : histogram.min;
    const double last = allSame ? histogram.max + 0.5 : histogram.max;
    const double width = std::isfinite(last - first) ? (last - first) / kBins : last / kBins - first / kBins;
    for (int i = 0; i <= kBins; ++i) {
        histogram.edges[static_cast<std::size_t>(i)] = i == kBins ? last : first + i * width;
    }
    for (const double value : values) {
        if (std::isfinite(value)) {
            std::size_t bin = 0; // the edges decide: a quotient is not a number where all values are beyond 1e16
            while (bin + 1 < kBins && value >= histogram.edges[bin + 1]) {
                ++bin;
            }
            ++histogram.bins[bin];
        }
    }
    return histogram;
}

void MeasureQuality(Work *work, const Limits &limits) {
    work->verdict.measures = work->mesh.dimension == 3 ? kMeasures : kMeasures - 1;
    std::vector<double> values[kMeasures];
    for (std::vector<double> &one : values) {
        one.reserve(work->CountOfCells());
    }
    for (std::size_t cell = 0; cell < work->CountOfCells(); ++cell) {
        if (!work->Is(cell, kPlaced)) {
            continue;
        }
        Values quality;
        if (work->mesh.dimension == 2) {
            Point corners[3];
            CornersOf(*work, cell, corners);
            quality = QualityOf(corners);
        } else {
            Point corners[4];
            CornersOf(*work, cell, corners);
            quality = QualityOf(corners);
        }
        for (int m = 0; m < work->verdict.measures; ++m) {
            values[m].push_back(quality[static_cast<std::size_t>(m)]);
        }
    }
    for (int m = 0; m < work->verdict.measures; ++m) {
        const auto measure = static_cast<Measure>(m);
        const auto own = limits.find(measure);
        const Range &acceptable = KindOf(measure).acceptable[work->mesh.dimension == 3 ? 1 : 0];
        work->verdict.quality[static_cast<std::size_t>(m)] =
            HistogramOf(values[m], own != limits.end() ? own->second : acceptable);
    }
}

} // namespace audit
