// The face groups as surfaces: open or closed, and edges where more than two of their faces meet. Nothing here fails.
#include "audit/work.h"

#include <algorithm>
#include <array>
#include <map>

namespace audit {

namespace {

// An edge of a face (in two dimensions an end of it, twice the same node), by group.
using Edge = std::array<int, 3>;

template <std::size_t kSide>
void AddEdges(const Work &work, const std::map<int, std::size_t> &groups, std::vector<Edge> *edges) {
    const meshfile::Faces &faces = work.mesh.faces;
    for (std::size_t face = 0; face < faces.rows.Count(); ++face) {
        const auto group = groups.find(faces.tags[face]);
        if (group == groups.end() || faces.rows.Width(face) != kSide) {
            continue;
        }
        ++work.verdict.surfaces[group->second].faces;
        const int *row = faces.rows.Row(face);
        for (std::size_t k = 0; k < kSide; ++k) {
            const int a = row[k];
            const int b = kSide == 3 ? row[(k + 1) % kSide] : a;
            edges->push_back({static_cast<int>(group->second), std::min(a, b), std::max(a, b)});
        }
    }
}

} // namespace

void LookAtSurfaces(Work *work) {
    std::map<int, std::size_t> groups;
    for (std::size_t g = 0; g < work->mesh.faceGroups.size(); ++g) {
        groups.insert({work->mesh.faceGroups[g].tag, g});
    }
    work->verdict.surfaces.resize(work->mesh.faceGroups.size());
    std::vector<Edge> edges;
    if (work->mesh.dimension == 2) {
        AddEdges<2>(*work, groups, &edges);
    } else if (work->mesh.dimension == 3) {
        AddEdges<3>(*work, groups, &edges);
    }
    std::sort(edges.begin(), edges.end());
    for (std::size_t begin = 0, end = 0; begin < edges.size(); begin = end) {
        while (end < edges.size() && edges[end] == edges[begin]) {
            ++end;
        }
        Surface &surface = work->verdict.surfaces[static_cast<std::size_t>(edges[begin][0])];
        surface.openEdges += end - begin == 1 ? 1 : 0;
        surface.overusedEdges += end - begin > 2 ? 1 : 0;
    }
}

} // namespace audit
