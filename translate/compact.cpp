// Dropping the nodes that nothing uses, and flagging the others.
#include "translate/steps.h"

#include <algorithm>

namespace {

// Marks the nodes that a connectivity table names. -1 names none.
void MarkUsed(int nNum, int nColumns, const int *i1NumNodes, int *const *i2Conn, int *mark) {
    for (int k = 0; k < nColumns && nNum > 0; ++k) {
        const int *conn = i2Conn[k];
        for (int e = 0; e < nNum; ++e) {
            if (k < i1NumNodes[e] && conn[e] >= 0) {
                mark[conn[e]] = 1;
            }
        }
    }
}

// Numbers the marked nodes from 0; the others keep -1. Returns how many are marked.
int NumberMarked(int nNum, int *mark) {
    int next = 0;
    for (int i = 0; i < nNum; ++i) {
        if (mark[i] == 1) {
            mark[i] = next++;
        }
    }
    return next;
}

void Renumber(int nNum, int nColumns, const int *i1NumNodes, int *const *i2Conn, const int *position) {
    for (int k = 0; k < nColumns && nNum > 0; ++k) {
        int *conn = i2Conn[k];
        for (int e = 0; e < nNum; ++e) {
            if (k < i1NumNodes[e] && conn[e] >= 0) {
                conn[e] = position[conn[e]];
            }
        }
    }
}

// Moves every kept node down to its new position, which is never above the old one. i1Mark moves along and then
// holds the node's own position.
void MoveNodes(Nodes *nodes) {
    for (int i = 0; i < nodes->nNum; ++i) {
        const int to = nodes->i1Mark[i];
        if (to < 0) {
            continue;
        }
        nodes->i1Mark[to] = to;
        nodes->i1GID[to] = nodes->i1GID[i];
        nodes->i1Tag[to] = nodes->i1Tag[i];
        nodes->d1X[to] = nodes->d1X[i];
        nodes->d1Y[to] = nodes->d1Y[i];
        nodes->d1Z[to] = nodes->d1Z[i];
    }
}

} // namespace

void DropUnusedNodes(Mesh *mesh) {
    Nodes *nodes = mesh->Nodes;
    const Cells *cells = mesh->Cells;
    const Faces *faces = mesh->Faces;
    std::fill_n(nodes->i1Mark, nodes->nNum, -1);
    MarkUsed(faces->nNum, faces->nNodesPerFace, faces->i1NumNodes, faces->i2Conn, nodes->i1Mark);
    MarkUsed(cells->nNum, cells->nNodesPerCell, cells->i1NumNodes, cells->i2Conn, nodes->i1Mark);
    const int kept = NumberMarked(nodes->nNum, nodes->i1Mark);
    if (kept == nodes->nNum) { // every node is where it was
        return;
    }
    Renumber(cells->nNum, cells->nNodesPerCell, cells->i1NumNodes, cells->i2Conn, nodes->i1Mark);
    Renumber(faces->nNum, faces->nNodesPerFace, faces->i1NumNodes, faces->i2Conn, nodes->i1Mark);
    MoveNodes(nodes);
    nodes->nNum = kept;
}

// The flag does not follow from the faces: the solver takes every node for a boundary node.
void FlagBoundaryNodes(Mesh *mesh) {
    std::fill_n(mesh->Nodes->i1OnB, mesh->Nodes->nNum, 1);
}
