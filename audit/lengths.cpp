// Header and group lengths, measured again by the formulas that the translator measures with.
#include "audit/work.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace audit {

namespace {

// The file's coordinates have 16 digits, the translator's had all of them: what that leaves open of a length, by the
// longest edge and by the largest coordinate.
constexpr double kOfEdge = 1e-9;
constexpr double kOfCoordinate = 1e-12;

// Of the cells with one tag.
struct Measured {
    double shortestSquare = HUGE_VAL;
    double longestSquare = 0;
    double characteristic = kNoMinimum;
    double coordinate = 0; // the largest
    bool unknown = false;  // a cell is not sound: there is no telling what the translator measured
};

template <std::size_t kCorners> void MeasureCell(const Work &work, std::size_t cell, Measured *measured) {
    const Shape &shape = work.ShapeOfCell(cell);
    const int *row = work.mesh.cells.rows.Row(cell);
    Point corners[kCorners];
    for (std::size_t k = 0; k < kCorners; ++k) {
        const int node = row[shape.corners[k]];
        if (!work.HasNode(node)) {
            measured->unknown = measured->unknown || node != -1; // cells without all corners are not measured
            return;
        }
        corners[k] = work.At(node);
        Raise(&measured->coordinate,
              std::max({std::fabs(corners[k].x), std::fabs(corners[k].y), std::fabs(corners[k].z)}));
    }
    MeasureEdges(corners, &measured->shortestSquare, &measured->longestSquare);
    const double altitude = SmallestAltitude(corners);
    Lower(&measured->characteristic, shape.nMiddles > 0 ? kQuadratic * altitude : altitude);
}

void MeasureAny(const Work &work, std::size_t cell, Measured *measured) {
    const Shape *shape = ShapeOf(work.mesh.cells.types[cell]);
    if (shape == nullptr || shape->dimension != work.mesh.dimension ||
        work.mesh.cells.rows.Width(cell) != static_cast<std::size_t>(shape->nNodes)) {
        measured->unknown = true;
    } else if (shape->dimension == 2) {
        MeasureCell<3>(work, cell, measured);
    } else {
        MeasureCell<4>(work, cell, measured);
    }
}

// By tag. Cells of one tag mostly follow one another.
std::map<int, Measured> MeasureTags(const Work &work) {
    std::map<int, Measured> byTag;
    for (const meshfile::CellGroup &group : work.mesh.cellGroups) {
        byTag[group.tag];
    }
    auto at = byTag.end();
    for (std::size_t cell = 0; cell < work.CountOfCells(); ++cell) {
        const int tag = work.mesh.cells.tags[cell];
        if (cell == 0 || tag != work.mesh.cells.tags[cell - 1]) {
            at = byTag.find(tag);
        }
        if (at != byTag.end()) {
            MeasureAny(work, cell, &at->second);
        }
    }
    return byTag;
}

meshfile::Lengths LengthsOf(const Measured &measured) {
    meshfile::Lengths lengths;
    lengths.characteristic = measured.characteristic;
    lengths.shortestEdge = kNoMinimum;
    Lower(&lengths.shortestEdge, std::sqrt(measured.shortestSquare));
    Raise(&lengths.longestEdge, std::sqrt(measured.longestSquare));
    return lengths;
}

// How far apart, by what digits leave open: up to 1 they are the same.
double Apart(const meshfile::Lengths &file, const meshfile::Lengths &mesh, double coordinate) {
    const double open = kOfEdge * mesh.longestEdge + kOfCoordinate * coordinate;
    const auto apart = [open](double a, double b) {
        if (a == b || std::isnan(open) || std::isinf(open)) {
            return 0.0;
        }
        const double by = std::fabs(a - b) / (open + 1e-15 * std::fabs(b));
        return std::isnan(by) ? HUGE_VAL : by;
    };
    return std::max({apart(file.characteristic, mesh.characteristic), apart(file.shortestEdge, mesh.shortestEdge),
                     apart(file.longestEdge, mesh.longestEdge)});
}

} // namespace

void CheckLengths(Work *work) {
    const meshfile::Mesh &mesh = work->mesh;
    const std::map<int, Measured> byTag = MeasureTags(*work);
    meshfile::Lengths whole{kNoMinimum, kNoMinimum, 0};
    double coordinate = 0;
    bool unknown = mesh.dimension == 0;
    for (std::size_t g = 0; g < mesh.cellGroups.size(); ++g) {
        const Measured &measured = byTag.at(mesh.cellGroups[g].tag);
        unknown = unknown || measured.unknown;
        const meshfile::Lengths lengths = LengthsOf(measured);
        const double apart = Apart(mesh.cellGroups[g].lengths, lengths, measured.coordinate);
        if (!measured.unknown && apart > 1) {
            work->Found(Check::lengths, Subject::cellGroup, g, apart);
        }
        Lower(&whole.characteristic, lengths.characteristic);
        Lower(&whole.shortestEdge, lengths.shortestEdge);
        Raise(&whole.longestEdge, lengths.longestEdge);
        Raise(&coordinate, measured.coordinate);
    }
    const double apart = Apart(mesh.lengths, whole, coordinate);
    if (!unknown && apart > 1) {
        work->Found(Check::lengths, Subject::mesh, 0, apart);
    }
}

} // namespace audit
