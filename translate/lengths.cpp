// Edge lengths and characteristic lengths, per cell group and of the whole mesh.
//
// The rule goes group by group: each group, newest first, scans all cells and takes those that carry its tag; a cell
// of a type that cannot be measured stops the whole step at once, before its group's result is stored. Here one pass
// over the cells measures all tags, and the groups then take the results of their tags in order.
#include "translate/steps.h"

#include "translate/geometry.h"

#include "support/frame.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace {

constexpr double kNoMinimum = 1e15; // start of every minimum: no value yet
constexpr double kTiny = 1e-10;     // keeps divisions by a vanishing length harmless
constexpr double kQuadratic = 0.5;  // nodes of quadratic cells are half as far apart

// What one pass finds for the cells of one tag.
struct TagResult {
    int tag;
    bool bUnmeasurable; // one of its cells is of another type
    double smallest;
    double largest;
};

// Results of all tags that groups have, ascending by tag, each once.
struct TagResults {
    int n;
    TagResult *results;
};

TagResults NewTagResults(const GRcell *groups, double smallest) {
    int n = 0;
    for (const GRcell *group = groups; group != nullptr; group = group->next) {
        ++n;
    }
    auto *results = NewArray<TagResult>(n);
    n = 0;
    for (const GRcell *group = groups; group != nullptr; group = group->next) {
        results[n++] = {group->iTag, false, smallest, 0};
    }
    std::sort(results, results + n, [](const TagResult &a, const TagResult &b) { return a.tag < b.tag; });
    const TagResult *end =
        std::unique(results, results + n, [](const TagResult &a, const TagResult &b) { return a.tag == b.tag; });
    return {static_cast<int>(end - results), results};
}

// The tag's result, or null when no group has the tag.
TagResult *ResultOf(const TagResults &all, int tag) {
    TagResult *end = all.results + all.n;
    TagResult *found =
        std::lower_bound(all.results, end, tag, [](const TagResult &a, int wanted) { return a.tag < wanted; });
    return found != end && found->tag == tag ? found : nullptr;
}

// Calls measure(points, corners, result) for every cell that a group claims and that has all its corners.
template <class Measure> void MeasureCells(const Mesh *mesh, const TagResults &all, Measure measure) {
    const Cells *cells = mesh->Cells;
    TagResult *result = nullptr;
    for (int c = 0; c < cells->nNum; ++c) {
        if (c == 0 || cells->i1Tag[c] != cells->i1Tag[c - 1]) { // cells of one tag mostly follow one another
            result = ResultOf(all, cells->i1Tag[c]);
        }
        if (result == nullptr) {
            continue;
        }
        const CornerColumns corners = CornersOf(cells->i1Type[c]);
        if (corners.nCorners == 0) {
            result->bUnmeasurable = true;
            continue;
        }
        Point points[4];
        if (CornerPoints(mesh->Nodes, cells, c, corners, points)) {
            measure(points, corners, result);
        }
    }
}

void Lower(double *smallest, double value) {
    *smallest = value < *smallest ? value : *smallest;
}

void Raise(double *largest, double value) {
    *largest = value > *largest ? value : *largest;
}

double SquaredLength2D(Point a, Point b) {
    const Point d = a - b;
    return d.x * d.x + d.y * d.y;
}

double SquaredLength3D(Point a, Point b) {
    return Dot(a - b, a - b);
}

// Squares of the cell's edge lengths. A correctly rounded root keeps order, so the root of the smallest square
// is the smallest root, and one root per tag is enough.
void MeasureEdges(const Point *p, const CornerColumns &corners, TagResult *result) {
    for (int a = 0; a < corners.nCorners; ++a) {
        for (int b = a + 1; b < corners.nCorners; ++b) {
            const double squared = corners.nCorners == 3 ? SquaredLength2D(p[a], p[b]) : SquaredLength3D(p[a], p[b]);
            Lower(&result->smallest, squared);
            Raise(&result->largest, squared);
        }
    }
}

// Distance of p from the line through q and r, in the x-y plane. A line shorter than kTiny is used as it is.
double AltitudeOverLine(Point p, Point q, Point r) {
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
double AltitudeOverPlane(Point p, Point q, Point r, Point s) {
    const Point normal = Cross(r - q, s - q);
    return std::fabs(Dot(normal, p - q)) / (std::sqrt(Dot(normal, normal)) + kTiny);
}

void MeasureAltitudes(const Point *p, const CornerColumns &corners, TagResult *result) {
    double smallest = HUGE_VAL; // not kNoMinimum: half of that would look like a length
    if (corners.nCorners == 3) {
        Lower(&smallest, AltitudeOverLine(p[0], p[1], p[2]));
        Lower(&smallest, AltitudeOverLine(p[1], p[0], p[2]));
        Lower(&smallest, AltitudeOverLine(p[2], p[0], p[1]));
    } else {
        Lower(&smallest, AltitudeOverPlane(p[0], p[1], p[2], p[3]));
        Lower(&smallest, AltitudeOverPlane(p[1], p[0], p[2], p[3]));
        Lower(&smallest, AltitudeOverPlane(p[2], p[0], p[1], p[3]));
        Lower(&smallest, AltitudeOverPlane(p[3], p[0], p[1], p[2]));
    }
    Lower(&result->smallest, corners.bQuadratic ? kQuadratic * smallest : smallest);
}

} // namespace

void CalLength(Mesh *mesh) {
    mesh->Nodes->dMaxEdge = 0;
    mesh->Nodes->dMinEdge = kNoMinimum;
    if (mesh->GRcell == nullptr) {
        return;
    }
    const TagResults all = NewTagResults(mesh->GRcell, HUGE_VAL);
    MeasureCells(mesh, all, MeasureEdges);
    for (GRcell *group = mesh->GRcell; group != nullptr; group = group->next) {
        const TagResult *result = ResultOf(all, group->iTag);
        if (result->bUnmeasurable) {
            std::printf("\n  Error> Undesirable cell type detected in CalLength.\n");
            break;
        }
        group->dMinEdge = kNoMinimum;
        group->dMaxEdge = 0;
        Lower(&group->dMinEdge, std::sqrt(result->smallest));
        Raise(&group->dMaxEdge, std::sqrt(result->largest));
        Lower(&mesh->Nodes->dMinEdge, group->dMinEdge);
        Raise(&mesh->Nodes->dMaxEdge, group->dMaxEdge);
    }
    allocate(all.results, 0);
}

void CalCharac(Mesh *mesh) {
    mesh->Nodes->dCharLen = kNoMinimum;
    if (mesh->GRcell == nullptr) {
        return;
    }
    const TagResults all = NewTagResults(mesh->GRcell, kNoMinimum);
    MeasureCells(mesh, all, MeasureAltitudes);
    for (GRcell *group = mesh->GRcell; group != nullptr; group = group->next) {
        const TagResult *result = ResultOf(all, group->iTag);
        if (result->bUnmeasurable) {
            std::printf("\n  Error> Undesirable cell type detected in CalCharac.\n");
            break;
        }
        group->dCharLen = result->smallest;
        Lower(&mesh->Nodes->dCharLen, group->dCharLen);
    }
    allocate(all.results, 0);
}
