// Faces: one record, or several linear pieces, for every face slot of a cell that carries a surface tag.
//
// With cells the right way round, edges follow the cell's own counter-clockwise circulation, and the right-hand
// normal of a 3-D face points into the cell.
#include "translate/steps.h"

#include "store/families.h"
#include "support/frame.h"

#include <algorithm>
#include <climits>
#include <cstdio>

namespace {

// The family of a type that has faces, or null.
const ElementFamily *FacedFamily(int type) {
    const ElementFamily *family = FamilyOf(type);
    return family != nullptr && family->faces.slots.nRows > 0 ? family : nullptr;
}

// Slots for which the table has a column: cells may have been stored with fewer nodes than their type.
int NumSlots(const Cells *cells, const ElementFamily &family) {
    return std::min(family.faces.slots.nRows, cells->nNodesPerCell);
}

int CountTaggedSlots(const Cells *cells, int cell, int nSlots) {
    int n = 0;
    for (int slot = 0; slot < nSlots; ++slot) {
        n += cells->i2FaceTag[slot][cell] > 0 ? 1 : 0;
    }
    return n;
}

// What all faces to come will need.
struct FaceNeeds {
    int nCells; // cells before the first of an unsupported type
    long long nFaces;
    int nNodes; // largest node count of a face
};

FaceNeeds CountFaces(const Cells *cells) {
    FaceNeeds needs{0, 0, 0};
    const ElementFamily *family = nullptr;
    int nSlots = 0;
    for (; needs.nCells < cells->nNum; ++needs.nCells) {
        const int type = cells->i1Type[needs.nCells];
        if (family == nullptr || family->type != type) {
            family = FacedFamily(type);
            if (family == nullptr) {
                break;
            }
            nSlots = NumSlots(cells, *family);
        }
        if (const int nTagged = CountTaggedSlots(cells, needs.nCells, nSlots)) {
            needs.nFaces += static_cast<long long>(nTagged) * family->faces.pieces.nRows;
            needs.nNodes = std::max(needs.nNodes, family->faces.pieces.rowLength);
        }
    }
    return needs;
}

// Writes the pieces of one slot as faces from position `face` on; the position behind them.
int FillFaces(const Cells *cells, int cell, const ElementFamily &family, int slot, const Faces *faces, int face) {
    const int *row = family.faces.slots.rows[slot];
    const SmallTable &pieces = family.faces.pieces;
    for (int piece = 0; piece < pieces.nRows; ++piece, ++face) {
        faces->i1Type[face] = family.faces.faceType;
        faces->i1Tag[face] = cells->i2FaceTag[slot][cell];
        faces->i1NumNodes[face] = pieces.rowLength;
        for (int j = 0; j < pieces.rowLength; ++j) {
            const int column = row[pieces.rows[piece][j]];
            faces->i2Conn[j][face] = column < cells->i1NumNodes[cell] ? cells->i2Conn[column][cell] : -1;
        }
    }
    return face;
}

void FillAllFaces(const Cells *cells, int nCells, const Faces *faces, int face) {
    const ElementFamily *family = nullptr;
    int nSlots = 0;
    for (int c = 0; c < nCells; ++c) {
        if (family == nullptr || family->type != cells->i1Type[c]) {
            family = FacedFamily(cells->i1Type[c]);
            nSlots = NumSlots(cells, *family);
        }
        for (int slot = 0; slot < nSlots; ++slot) {
            if (cells->i2FaceTag[slot][c] > 0) {
                face = FillFaces(cells, c, *family, slot, faces, face);
            }
        }
    }
}

} // namespace

void ApFaces(Mesh *mesh) {
    const Cells *cells = mesh->Cells;
    Faces *faces = mesh->Faces;
    const FaceNeeds needs = CountFaces(cells);
    if (needs.nFaces > INT_MAX) {
        EndForTooMany();
    }
    if (needs.nFaces > 0) {
        // The column count is final before the first face is made, also where cells of several kinds mix.
        SetNumNodesFaces(needs.nNodes, faces);
        const int first = ReserveFaces(faces, static_cast<int>(needs.nFaces));
        FillAllFaces(cells, needs.nCells, faces, first);
    }
    if (needs.nCells < cells->nNum) {
        std::printf("\n  Error> Undesirable cell type in ApFaces.\n");
    }
}
