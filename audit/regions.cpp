// Regions: the parts of a mesh that share no node.
#include "audit/work.h"

namespace audit {

namespace {

// The first node of the region as far as it is known; ways there are halved while they are walked.
int FirstOf(std::vector<int> *up, int node) {
    int *to = up->data();
    while (to[node] != node) {
        to[node] = to[to[node]];
        node = to[node];
    }
    return node;
}

} // namespace

void FindRegions(Work *work) {
    std::vector<int> &up = work->regions;
    up.resize(work->nodes.size());
    for (std::size_t node = 0; node < up.size(); ++node) {
        up[node] = static_cast<int>(node);
    }
    const meshfile::Rows &rows = work->mesh.cells.rows;
    for (std::size_t cell = 0; cell < rows.Count(); ++cell) {
        int first = -1;
        for (std::size_t k = 0; k < rows.Width(cell); ++k) {
            const int node = rows.Row(cell)[k];
            if (!work->HasNode(node)) {
                continue;
            }
            const int other = FirstOf(&up, node);
            if (first >= 0 && other != first) {
                up[static_cast<std::size_t>(other < first ? first : other)] = other < first ? other : first;
            }
            first = first < 0 || other < first ? other : first;
        }
    }
    for (std::size_t node = 0; node < up.size(); ++node) { // a region's first node comes before its others
        if ((work->nodes[node] & kInCell) == 0) {
            up[node] = -1;
            continue;
        }
        const int to = up[node];
        work->verdict.counts.regions += to == static_cast<int>(node) ? 1 : 0;
        up[node] = up[static_cast<std::size_t>(to)];
    }
}

} // namespace audit
