// Edge lengths and characteristic lengths, per cell group and of the whole mesh.
//
// The rule goes group by group: each group, newest first, scans all cells and takes those that carry its tag; a cell
// of a type that cannot be measured stops the whole step at once, before its group's result is stored. Here one pass
// over the cells measures all tags, and the groups then take the results of their tags in order.
#include "translate/steps.h"

#include "translate/geometry.h"

#include "store/tags.h"
#include "support/frame.h"
#include "support/measures.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace {

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

} // namespace

void CalLength(Mesh *mesh) {
    mesh->Nodes->dMaxEdge = 0;
    mesh->Nodes->dMinEdge = kNoMinimum;
    if (mesh->GRcell == nullptr) {
        return;
    }
    const TagResults all = NewTagResults(mesh->GRcell, HUGE_VAL);
    MeasureCells(mesh, all, [](const auto &points, const ElementFamily &, TagResult *result) {
        MeasureEdges(points, &result->smallest, &result->largest);
    });
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
