// From the deck's node numbers to positions.
#include "translate/steps.h"

#include "support/frame.h"
#include "support/lookup.h"

#include <climits>
#include <cstdio>

namespace {

// Nodes ascending by number. The reader has ordered them inside blocks and the blocks by their first numbers;
// what is left to do is blocks that interleave. Marks and boundary flags are not moved: nothing has set them.
void SortNodesByGID(int n, int *i1GID, int *i1Tag, double *d1X, double *d1Y, double *d1Z) {
    OrderNodes(n, i1GID, i1Tag, d1X, d1Y, d1Z);
}

// Column k of the connectivity from numbers to positions; how many name no node.
long long ResolveColumn(const Cells *cells, int k, const IDIndex *index) {
    int *conn = cells->i2Conn[k];
    long long missing = 0;
    for (int c = 0; c < cells->nNum; ++c) {
        if (k < cells->i1NumNodes[c]) {
            conn[c] = FindIDByIndex(index, conn[c]);
            missing += conn[c] == -1 ? 1 : 0;
        }
    }
    return missing;
}

void ResolveConnectivity(Mesh *mesh) {
    IDIndex index;
    BuildIDIndex(&index, mesh->Nodes->nNum, mesh->Nodes->i1GID);
    long long missing = 0;
    for (int k = 0; k < mesh->Cells->nNodesPerCell && mesh->Cells->nNum > 0; ++k) {
        missing += ResolveColumn(mesh->Cells, k, &index);
    }
    ReleaseIDIndex(&index);
    if (missing > 0) {
        std::printf("\n  Error> %d references of elements name no node of the deck.\n",
                    missing > INT_MAX ? INT_MAX : static_cast<int>(missing));
    }
}

} // namespace

void NumberNodes(Mesh *mesh) {
    Nodes *nodes = mesh->Nodes;
    SortNodesByGID(nodes->nNum, nodes->i1GID, nodes->i1Tag, nodes->d1X, nodes->d1Y, nodes->d1Z);
    ResolveConnectivity(mesh);
    for (int i = 0; i < nodes->nNum; ++i) {
        nodes->i1GID[i] = i;
    }
}
