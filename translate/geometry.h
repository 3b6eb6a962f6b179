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
    const int *conn[kMostCorners]; // columns of its corners; null where the table is not so wide
};

// Looks at the next cell. False when its type cannot be measured.
inline bool LookAtCell(CellInHand *hand, const Cells *cells, int cell) {
    if (cells->i1Type[cell] == hand->type) {
        return hand->family != nullptr;
    }
    hand->type = cells->i1Type[cell];
    const ElementFamily *family = FamilyOf(hand->type);
    hand->family = family != nullptr && family->corners.nCorners > 0 ? family : nullptr;
    for (int i = 0; hand->family != nullptr && i < family->corners.nCorners; ++i) {
        const int column = family->corners.columns[i];
        hand->conn[i] = column < cells->nNodesPerCell ? cells->i2Conn[column] : nullptr;
    }
    return hand->family != nullptr;
}

// The cell's corner points; the family in hand has nCorners of them. False when a corner is no node of the mesh (-1),
// or when the cell has fewer nodes than its type: it then has no shape to measure.
template <std::size_t nCorners>
inline bool CornerPoints(const Nodes *nodes, const Cells *cells, int cell, const CellInHand &hand,
                         Point (&points)[nCorners]) {
    if (cells->i1NumNodes[cell] <= hand.family->corners.columns[nCorners - 1]) {
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
