// Corner points of cells, taken one by one from the store.
#ifndef KIVOM_TRANSLATE_GEOMETRY_H
#define KIVOM_TRANSLATE_GEOMETRY_H

#include "store/families.h"
#include "support/measures.h"

#include <cstddef>

// The cell in hand of a walk over all cells: neighbours are mostly of one family, whose columns are then at hand.
struct CellInHand {
    int type;                      // type code; 0 before the first cell, and none has it
    const ElementFamily *family;   // null: the type cannot be measured
    const int *conn[kMostCorners]; // columns of its corners; null when the table is not wide enough for all of them
};

// Looks at the next cell. False when its type cannot be measured.
inline bool LookAtCell(CellInHand *hand, const Cells *cells, int cell) {
    if (cells->i1Type[cell] == hand->type) {
        return hand->family != nullptr;
    }
    hand->type = cells->i1Type[cell];
    const ElementFamily *family = FamilyOf(hand->type);
    hand->family = family != nullptr && family->corners.nCorners > 0 ? family : nullptr;
    if (hand->family == nullptr) {
        return false;
    }
    const Corners &corners = family->corners;
    const bool isWide = corners.columns[corners.nCorners - 1] < cells->nNodesPerCell;
    for (int i = 0; i < kMostCorners; ++i) { // those behind the last corner repeat column 0, and nobody looks at them
        hand->conn[i] = isWide ? cells->i2Conn[corners.columns[i]] : nullptr;
    }
    return true;
}

// The cell's corner points; the family in hand has nCorners of them. False when a corner is no node of the mesh (-1),
// or when the cell has fewer nodes than its type: it then has no shape to measure.
template <std::size_t nCorners>
inline bool CornerPoints(const Nodes *nodes, const Cells *cells, int cell, const CellInHand &hand,
                         Point (&points)[nCorners]) {
    if (hand.conn[0] == nullptr || cells->i1NumNodes[cell] <= hand.family->corners.columns[nCorners - 1]) {
        return false;
    }
    for (std::size_t i = 0; i < nCorners; ++i) {
        const int node = hand.conn[i][cell];
        if (node < 0) {
            return false;
        }
        points[i] = {nodes->d1X[node], nodes->d1Y[node], nodes->d1Z[node]};
    }
    return true;
}

#endif
