// The checks one after the other, and what there is to say of a place.
#include "audit/work.h"

#include <algorithm>
#include <utility>

namespace audit {

namespace {

bool IsWorse(const Place &a, const Place &b) {
    if (a.badness > b.badness || b.badness > a.badness) {
        return a.badness > b.badness;
    }
    return a.subject != b.subject ? a.subject < b.subject : a.index < b.index;
}

template <class OneGroup> const std::string *NameOf(const std::vector<OneGroup> &groups, int tag) {
    const auto found = std::find_if(groups.begin(), groups.end(), [tag](const OneGroup &g) { return g.tag == tag; });
    return found == groups.end() ? nullptr : &found->name;
}

} // namespace

int Verdict::Failed() const {
    return static_cast<int>(
        std::count_if(checks.begin(), checks.end(), [](const Outcome &outcome) { return !outcome.Ok(); }));
}

Counts CountsOf(const meshfile::Mesh &mesh) {
    const auto size = [](std::size_t n) { return static_cast<long long>(n); };
    Counts counts;
    counts.dimension = mesh.dimension;
    counts.nodes = size(mesh.nodes.Count());
    counts.faces = size(mesh.faces.rows.Count());
    counts.cells = size(mesh.cells.rows.Count());
    counts.nodeGroups = size(mesh.nodeGroups.size());
    counts.faceGroups = size(mesh.faceGroups.size());
    counts.cellGroups = size(mesh.cellGroups.size());
    return counts;
}

Verdict Judge(const meshfile::Mesh &mesh, const Limits &limits) {
    Verdict verdict;
    verdict.counts = CountsOf(mesh);
    Work work{mesh, verdict, {}, {}, {}};
    work.cells.resize(mesh.cells.rows.Count());
    work.nodes.resize(mesh.nodes.Count());
    CheckCoordinates(&work);
    CheckCells(&work);
    CheckIndices(&work);
    CheckGroups(&work);
    CheckOrientation(&work);
    CheckMidSideNodes(&work);
    CheckNodes(&work);
    FindRegions(&work);
    CheckCoincidentNodes(&work);
    work.regions = {};
    CheckNeighbours(&work);
    CheckFaces(&work);
    LookAtSurfaces(&work);
    CheckLengths(&work);
    MeasureQuality(&work, limits);
    for (Outcome &outcome : verdict.checks) {
        std::sort(outcome.places.begin(), outcome.places.end(), IsWorse);
    }
    return verdict;
}

bool MiddleOf(const meshfile::Mesh &mesh, const Place &place, double (&middle)[3]) {
    const auto index = static_cast<std::size_t>(place.index);
    const meshfile::Rows *rows = place.subject == Subject::cell   ? &mesh.cells.rows
                                 : place.subject == Subject::face ? &mesh.faces.rows
                                                                  : nullptr;
    const int *nodes = rows != nullptr ? rows->Row(index) : &place.index;
    const std::size_t count = rows != nullptr ? rows->Width(index) : place.subject == Subject::node ? 1 : 0;
    double n = 0;
    double sum[3] = {0, 0, 0};
    for (std::size_t k = 0; k < count; ++k) {
        if (nodes[k] >= 0 && static_cast<std::size_t>(nodes[k]) < mesh.nodes.Count()) {
            const auto node = static_cast<std::size_t>(nodes[k]);
            sum[0] += mesh.nodes.x[node];
            sum[1] += mesh.nodes.y[node];
            sum[2] += mesh.dimension == 3 ? mesh.nodes.z[node] : 0;
            ++n;
        }
    }
    for (int a = 0; a < 3; ++a) {
        middle[a] = n > 0 ? sum[a] / n : 0;
    }
    return n > 0;
}

const std::string *GroupOf(const meshfile::Mesh &mesh, const Place &place) {
    const auto index = static_cast<std::size_t>(place.index);
    switch (place.subject) {
    case Subject::node:
        return NameOf(mesh.nodeGroups, mesh.nodes.tags[index]);
    case Subject::face:
        return NameOf(mesh.faceGroups, mesh.faces.tags[index]);
    case Subject::cell:
        return NameOf(mesh.cellGroups, mesh.cells.tags[index]);
    case Subject::nodeGroup:
        return &mesh.nodeGroups[index].name;
    case Subject::faceGroup:
        return &mesh.faceGroups[index].name;
    case Subject::cellGroup:
        return &mesh.cellGroups[index].name;
    default:
        return nullptr;
    }
}

} // namespace audit
