// Faces: one record, or several linear pieces, for every face slot of a cell that carries a surface tag.
//
// Slot k of a triangle or tetrahedron lies opposite corner k:
//
//       TRI3                      TET4                  row of a TETX face
//
//          2                         3                          t4
//         / \                       /|\                         /\            .
//   slot 1   slot 0                / | \    slot 3 is         t5--t3          .
//       /     \                   0--|--2   0 1 2             /\  /\          .
//      0-------1                   \ | /                    t0--t1--t2        .
//       slot 2                       1
//
// With cells the right way round, edges follow the cell's own counter-clockwise circulation, and the right-hand
// normal of a 3-D face points into the cell.
#include "translate/steps.h"

#include "support/frame.h"

#include <algorithm>
#include <cstdio>

namespace {

// Rows of node columns by slot, one table per family.
// clang-format off
constexpr int i2MapEdgeTRI3[3][2] = {{2, 1}, {0, 2}, {1, 0}};

constexpr int i2MapEdgeTRI6[3][3] = {{4, 3, 2}, {0, 5, 4}, {2, 1, 0}};

constexpr int i2MapEdgeQUA4[4][2] = {{1, 0}, {2, 1}, {3, 2}, {0, 3}};

constexpr int i2MapFaceTET4[4][3] = {{1, 2, 3}, {2, 0, 3}, {3, 0, 1}, {0, 2, 1}};

constexpr int i2MapFaceTETX[4][6] = {   // once around the face: corner, mid-edge node, corner, ...
    {1, 5, 2, 9, 3, 8},
    {2, 6, 0, 7, 3, 9},
    {3, 7, 0, 4, 1, 8},
    {0, 6, 2, 5, 1, 4},
};

constexpr int i2MapFaceHEX8[6][4] = {
    {0, 3, 2, 1}, {4, 5, 6, 7}, {0, 1, 5, 4}, {1, 2, 6, 5}, {2, 3, 7, 6}, {3, 0, 4, 7},
};

// Pieces of a face: entries of its row, in the order in which the piece takes them.
constexpr int kLinePieces[1][2]      = {{1, 0}};
constexpr int kHalfPieces[2][2]      = {{2, 1}, {1, 0}};
constexpr int kTrianglePieces[1][3]  = {{0, 2, 1}};
constexpr int kQuadraticPieces[4][3] = {{1, 5, 3}, {0, 5, 1}, {4, 3, 5}, {2, 1, 3}};
constexpr int kQuadPieces[1][4]      = {{0, 3, 2, 1}};

struct FaceFamily {
    int type;       // of the cell
    int nSlots;
    int rowLength;
    const int *rows;   // [nSlots][rowLength] node columns
    int faceType;   // of each piece
    int nPieces;
    int nNodes;     // of each piece
    const int *pieces; // [nPieces][nNodes] entries of the row
};

constexpr FaceFamily kFaceFamilies[] = {
    {kTRI3, 3, 2, i2MapEdgeTRI3[0], kS1D2, 1, 2, kLinePieces[0]},
    {kTRI6, 3, 3, i2MapEdgeTRI6[0], kS1D2, 2, 2, kHalfPieces[0]},
    {kQUA4, 4, 2, i2MapEdgeQUA4[0], kS1D2, 1, 2, kLinePieces[0]},
    {kTET4, 4, 3, i2MapFaceTET4[0], kS2D3, 1, 3, kTrianglePieces[0]},
    {kTETX, 4, 6, i2MapFaceTETX[0], kS2D3, 4, 3, kQuadraticPieces[0]},
    {kHEX8, 6, 4, i2MapFaceHEX8[0], kS2D4, 1, 4, kQuadPieces[0]},
};
// clang-format on

const FaceFamily *FamilyOf(int type) {
    for (const FaceFamily &family : kFaceFamilies) {
        if (family.type == type) {
            return &family;
        }
    }
    return nullptr;
}

int CountTaggedSlots(const Cells *cells, int cell, const FaceFamily &family) {
    int n = 0;
    for (int slot = 0; slot < family.nSlots; ++slot) {
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
    const FaceFamily *family = nullptr;
    for (; needs.nCells < cells->nNum; ++needs.nCells) {
        const int type = cells->i1Type[needs.nCells];
        if (family == nullptr || family->type != type) {
            family = FamilyOf(type);
        }
        if (family == nullptr) {
            break;
        }
        const int nTagged = CountTaggedSlots(cells, needs.nCells, *family);
        needs.nFaces += static_cast<long long>(nTagged) * family->nPieces;
        needs.nNodes = nTagged > 0 ? std::max(needs.nNodes, family->nNodes) : needs.nNodes;
    }
    return needs;
}

// Writes the pieces of one slot as faces from position `face` on; the position behind them.
int FillFaces(const Cells *cells, int cell, const FaceFamily &family, int slot, const Faces *faces, int face) {
    const int *row = family.rows + slot * family.rowLength;
    for (int piece = 0; piece < family.nPieces; ++piece, ++face) {
        const int *entries = family.pieces + piece * family.nNodes;
        faces->i1Type[face] = family.faceType;
        faces->i1Tag[face] = cells->i2FaceTag[slot][cell];
        faces->i1NumNodes[face] = family.nNodes;
        for (int j = 0; j < family.nNodes; ++j) {
            const int column = row[entries[j]];
            faces->i2Conn[j][face] = column < cells->i1NumNodes[cell] ? cells->i2Conn[column][cell] : -1;
        }
    }
    return face;
}

void FillAllFaces(const Cells *cells, int nCells, const Faces *faces, int face) {
    const FaceFamily *family = nullptr;
    for (int c = 0; c < nCells; ++c) {
        if (family == nullptr || family->type != cells->i1Type[c]) {
            family = FamilyOf(cells->i1Type[c]);
        }
        for (int slot = 0; slot < family->nSlots; ++slot) {
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
    if (needs.nFaces > 0x7fffffff) {
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
