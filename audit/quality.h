// How good the shapes of cells are: six measures, as the VTK library has them, and their histograms.
//
// The formulas are those of Stimpson, Ernst, Knupp, Pebay, Thompson: The Verdict Geometric Quality Library, Sandia
// report SAND2007-1751. Corners alone are looked at. Whether a cell is turned shows in the scaled Jacobian of a
// tetrahedron only, as there.
#ifndef KIVOM_AUDIT_QUALITY_H
#define KIVOM_AUDIT_QUALITY_H

#include <array>
#include <map>
#include <string>
#include <vector>

struct Point;

namespace audit {

// ORDER: rows of kMeasureKinds in kinds.cpp. The last is of tetrahedra only.
enum class Measure : unsigned char { radiusRatio, edgeRatio, minAngle, maxAngle, scaledJacobian, aspectGamma };
constexpr int kMeasures = static_cast<int>(Measure::aspectGamma) + 1;
constexpr int kBins = 10;

struct Range {
    double least;
    double most;
};

struct MeasureKind {
    Measure measure;
    const char *word; // stable: lower case and underscores
    const char *formulas;
    const char *explanation;
    Range acceptable[2]; // of triangles, of tetrahedra: as the report has it
};

const MeasureKind &KindOf(Measure measure);
bool FindMeasure(const std::string &word, Measure *measure);

// One value a measure; angles in degrees. A cell without area or volume has no ratios: these are infinite or nan then.
using Values = std::array<double, kMeasures>;

Values QualityOf(const Point (&triangle)[3]);    // in the x-y plane; aspect gamma is 0
Values QualityOf(const Point (&tetrahedron)[4]); // angles are those between faces

// Of the values that are finite. Bin i holds values from edges[i] up to, not including, edges[i + 1]; the last one
// includes it. Values that are all the same lie in the middle of a range of 1.
struct Histogram {
    double min = 0, max = 0, mean = 0;
    long long values = 0;    // in the bins; 0: everything else is 0, too
    long long undefined = 0; // cells whose value is no finite number
    Range limits{};
    long long outside = 0; // values beyond the limits, and those that are undefined
    std::array<long long, kBins> bins{};
    std::array<double, kBins + 1> edges{};
};

Histogram HistogramOf(const std::vector<double> &values, Range limits);

// In place of the acceptable ranges.
using Limits = std::map<Measure, Range>;

} // namespace audit

#endif
