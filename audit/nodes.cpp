// What uses each node: nothing, cells, faces; one cell alone where the group asks for it.
#include "audit/work.h"

namespace audit {

namespace {

void MarkFaces(Work *work) {
    for (const int node : work->mesh.faces.rows.nodes) {
        if (work->HasNode(node)) {
            work->nodes[static_cast<std::size_t>(node)] |= kInFace;
        }
    }
}

// Every cell's, also those that are not sound: their nodes are in use all the same.
void MarkCells(Work *work) {
    const meshfile::Rows &rows = work->mesh.cells.rows;
    for (std::size_t cell = 0; cell < rows.Count(); ++cell) {
        const int loose = work->Is(cell, kLoose) ? kInLoose : 0;
        const int sound = work->Is(cell, kSound) ? kInSound : kTainted;
        const int flat = work->Is(cell, kFlat) ? kTainted : 0; // a flat one may have a node twice
        for (std::size_t k = 0; k < rows.Width(cell); ++k) {
            const int node = rows.Row(cell)[k];
            if (work->HasNode(node)) {
                unsigned char &state = work->nodes[static_cast<std::size_t>(node)];
                const int use = (state & kInCell) != 0 ? kShared : kInCell;
                state = static_cast<unsigned char>(state | use | loose | sound | flat);
            }
        }
    }
}

// Once for each node that a loose cell does not have for itself.
void CheckPrivateNodes(Work *work) {
    for (std::size_t node = 0; node < work->nodes.size(); ++node) {
        if ((work->nodes[node] & (kInLoose | kShared)) == (kInLoose | kShared)) {
            work->Found(Check::privateNodes, Subject::node, node);
        }
    }
}

} // namespace

void CheckNodes(Work *work) {
    MarkFaces(work);
    MarkCells(work);
    for (std::size_t node = 0; node < work->nodes.size(); ++node) {
        if ((work->nodes[node] & (kInCell | kInFace)) == 0) {
            work->Found(Check::unusedNodes, Subject::node, node);
        }
    }
    CheckPrivateNodes(work);
}

} // namespace audit
