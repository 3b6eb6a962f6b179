// Edge lengths and characteristic lengths, per cell group and of the whole mesh.
//
// The rule goes group by group: each group, newest first, scans all cells and takes those that carry its tag; a cell
// of a type that cannot be measured stops the whole step at once, before its group's result is stored. Here one pass
// over the cells measures all tags, and the groups then take the results of their tags in order.
#include "translate/steps.h"

#include "translate/geometry.h"

#include "store/tags.h"
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
    bool bUnmeasurable; // one of its cells is of another type
    double smallest;
    double largest;
};

// Results of all tags that groups have.
struct TagResults {
    SortedTags tags;
    TagResult *results; // [tags.n]
};

TagResults NewTagResults(const GRcell *groups, double smallest) {
    const SortedTags tags = TagsOfGroups(groups);
    auto *results = NewArray<TagResult>(tags.n);
    std::fill_n(results, tags.n, TagResult{false, smallest, 0});
    return {tags, results};
}

void ReleaseTagResults(const TagResults &all) {
    AllocINT1D(all.tags.tags, 0);
    allocate(all.results, 0);
}

// The tag's result, or null when no group has the tag.
TagResult *ResultOf(const TagResults &all, int tag) {
    const int position = FindTag(all.tags, tag);
    return position == -1 ? nullptr : &all.results[position];
}

template <std::size_t nCorners, class Measure>
void MeasureCell(const Mesh *mesh, int cell, const CellInHand &hand, Measure measure, TagResult *result) {
    Point points[nCorners];
    if (CornerPoints(mesh->Nodes, mesh->Cells, cell, hand, points)) {
        measure(points, *hand.family, result);
    }
}

// Calls measure(points, family, result) for every cell that a group claims and that has all its corners.
template <class Measure> void MeasureCells(const Mesh *mesh, const TagResults &all, Measure measure) {
    const Cells *cells = mesh->Cells;
    CellInHand hand{};
    TagResult *result = nullptr;
    for (int c = 0; c < cells->nNum; ++c) {
        if (c == 0 || cells->i1Tag[c] != cells->i1Tag[c - 1]) { // cells of one tag mostly follow one another
            result = ResultOf(all, cells->i1Tag[c]);
        }
        if (result == nullptr) {
            continue;
        }
        if (!LookAtCell(&hand, cells, c)) {
            result->bUnmeasurable = true;
        } else if (hand.family->corners.nCorners == 3) {
            MeasureCell<3>(mesh, c, hand, measure, result);
        } else {
            MeasureCell<4>(mesh, c, hand, measure, result);
        }
    }
}

void Lower(double *smallest, double value) {
    *smallest = value < *smallest ? value : *smallest;
}

void Raise(double *largest, double value) {
    *largest = value > *largest ? value : *largest;
}

// Squares of the cell's edge lengths, of triangles in the x-y plane. A correctly rounded root keeps order, so the root
// of the smallest square is the smallest root, and one root per tag is enough.
template <std::size_t nCorners> void MeasureEdges(const Point (&p)[nCorners], TagResult *result) {
    for (std::size_t a = 0; a < nCorners; ++a) {
        for (std::size_t b = a + 1; b < nCorners; ++b) {
            const Point d = p[a] - p[b];
            const double squared = nCorners == 3 ? d.x * d.x + d.y * d.y : Dot(d, d);
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

double SmallestAltitude(const Point (&p)[3]) {
    double smallest = HUGE_VAL; // not kNoMinimum: half of that would look like a length
    Lower(&smallest, AltitudeOverLine(p[0], p[1], p[2]));
    Lower(&smallest, AltitudeOverLine(p[1], p[0], p[2]));
    Lower(&smallest, AltitudeOverLine(p[2], p[0], p[1]));
    return smallest;
}

double SmallestAltitude(const Point (&p)[4]) {
    double smallest = HUGE_VAL;
    Lower(&smallest, AltitudeOverPlane(p[0], p[1], p[2], p[3]));
    Lower(&smallest, AltitudeOverPlane(p[1], p[0], p[2], p[3]));
    Lower(&smallest, AltitudeOverPlane(p[2], p[0], p[1], p[3]));
    Lower(&smallest, AltitudeOverPlane(p[3], p[0], p[1], p[2]));
    return smallest;
}

} // namespace

void CalLength(Mesh *mesh) {
    mesh->Nodes->dMaxEdge = 0;
    mesh->Nodes->dMinEdge = kNoMinimum;
    if (mesh->GRcell == nullptr) {
        return;
    }
    const TagResults all = NewTagResults(mesh->GRcell, HUGE_VAL);
    MeasureCells(mesh, all,
                 [](const auto &points, const ElementFamily &, TagResult *result) { MeasureEdges(points, result); });
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
    ReleaseTagResults(all);
}

void CalCharac(Mesh *mesh) {
    mesh->Nodes->dCharLen = kNoMinimum;
    if (mesh->GRcell == nullptr) {
        return;
    }
    const TagResults all = NewTagResults(mesh->GRcell, kNoMinimum);
    MeasureCells(mesh, all, [](const auto &points, const ElementFamily &family, TagResult *result) {
        const double smallest = SmallestAltitude(points);
        Lower(&result->smallest, family.bQuadratic ? kQuadratic * smallest : smallest);
    });
    for (GRcell *group = mesh->GRcell; group != nullptr; group = group->next) {
        const TagResult *result = ResultOf(all, group->iTag);
        if (result->bUnmeasurable) {
            std::printf("\n  Error> Undesirable cell type detected in CalCharac.\n");
            break;
        }
        group->dCharLen = result->smallest;
        Lower(&mesh->Nodes->dCharLen, group->dCharLen);
    }
    ReleaseTagResults(all);
}
