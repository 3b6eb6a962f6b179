// The element families: everything that the program knows about one, in one row.
//
// The reader takes node and face order and the counts, the translation corners, the exchange that turns an element, and
// the rows that make its faces, the writers the solver's figures and the VTK form. To add a family: its code in
// sys.h, its row here, its deck names in abqcells.cpp; where it has a shape of its own, that shape's measure in
// orient.cpp and its altitudes in lengths.cpp. Every array that counts nodes or faces follows from the rows.
#ifndef KIVOM_STORE_FAMILIES_H
#define KIVOM_STORE_FAMILIES_H

#include "store/sys.h"

#include <cstddef>

// The order of nodes and faces in the deck.
struct DeckOrder {
    bool bKnown;         // a deck can hold the family; else there are no maps
    const int *i1MapC2N; // [nNodes] store node k is deck node i1MapC2N[k]
    const int *i1MapCFT; // [faces] deck face label row k (S1 is row 0) is store face slot i1MapCFT[k]
};

// What has a measure (area or volume), edges and altitudes.
constexpr int kMostCorners = 4;

struct Corners {
    int nCorners;              // 3: triangle, 4: tetrahedron; 0: no measure is known
    int columns[kMostCorners]; // of i2Conn, in ascending order
};

// Exchanges of columns that turn an element the other way round, and the two face slots that they exchange.
constexpr int kMostSwaps = 3;

struct TurnRound {
    int nSwaps;
    int swaps[kMostSwaps][2];
    int slots[2];
};

// A small table of columns or entries, held by value.
constexpr int kTableRoom = 8;

struct SmallTable {
    int nRows;
    int rowLength;
    int rows[kTableRoom][kTableRoom];
};

template <std::size_t kRows, std::size_t kLength> constexpr SmallTable TableOf(const int (&rows)[kRows][kLength]) {
    static_assert(kRows <= kTableRoom && kLength <= kTableRoom, "kTableRoom is too small");
    SmallTable table{static_cast<int>(kRows), static_cast<int>(kLength), {}};
    for (std::size_t i = 0; i < kRows; ++i) {
        for (std::size_t j = 0; j < kLength; ++j) {
            table.rows[i][j] = rows[i][j];
        }
    }
    return table;
}

// The faces that a tagged slot makes: one, or several linear pieces.
struct FaceRows {
    SmallTable slots;  // a row of node columns for each; none: the family has no faces
    int faceType;      // of each piece
    SmallTable pieces; // a row for each: entries of the slot's row, in the order in which the piece takes them
};

struct VTKForm {
    int type;
    int nNodes;           // written
    const int *i1MapCell; // [nNodes] node k of the VTK cell is store column i1MapCell[k]
};

struct ElementFamily {
    int type;         // type code
    const char *name; // as the codes of sys.h have it
    int nDim;         // of the meshes whose cell it is; 0: it is none
    int nNodes;       // 0: only the VTK form is known
    int nMatNodes;    // nodes that carry material points, as the solver counts them; 0: it counts none
    bool bQuadratic;
    DeckOrder deck;
    Corners corners;
    TurnRound turn;
    FaceRows faces;
    VTKForm vtk;
};

// clang-format off

// Node order: the deck lists a 6-node triangle's corners before its mid-side nodes; the store has them in turn around
// the triangle.
inline constexpr int i1MapC2NTRI3[] = {0, 1, 2};
inline constexpr int i1MapC2NTRI6[] = {0, 3, 1, 4, 2, 5};
inline constexpr int i1MapC2NTET4[] = {0, 1, 2, 3};
inline constexpr int i1MapC2NTETX[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9};

// Face order: slot k is the face opposite corner k; the deck's edge 1 is corners 1-2 (opposite corner 3: slot 2), its
// face 1 corners 1-2-3 (slot 3). No label reaches the entries behind the last face.
inline constexpr int i1MapCFTTRI3[] = {2, 0, 1};
inline constexpr int i1MapCFTTRI6[] = {2, 0, 1, 3, 4, 5};
inline constexpr int i1MapCFTTET4[] = {3, 2, 0, 1};
inline constexpr int i1MapCFTTETX[] = {3, 2, 0, 1, 4, 5, 6, 7, 8, 9};

// Slots: rows of node columns.
//
//       TRI3                      TET4                  row of a TETX face
//
//          2                         3                          t4
//         / \                       /|\                         /\            .
//   slot 1   slot 0                / | \    slot 3 is         t5--t3          .
//       /     \                   0--|--2   0 1 2             /\  /\          .
//      0-------1                   \ | /                    t0--t1--t2        .
//       slot 2                       1
inline constexpr int i2MapEdgeTRI3[3][2] = {{2, 1}, {0, 2}, {1, 0}};
inline constexpr int i2MapEdgeTRI6[3][3] = {{4, 3, 2}, {0, 5, 4}, {2, 1, 0}};
inline constexpr int i2MapEdgeQUA4[4][2] = {{1, 0}, {2, 1}, {3, 2}, {0, 3}};
inline constexpr int i2MapFaceTET4[4][3] = {{1, 2, 3}, {2, 0, 3}, {3, 0, 1}, {0, 2, 1}};
inline constexpr int i2MapFaceTETX[4][6] = {   // once around the face: corner, mid-edge node, corner, ...
    {1, 5, 2, 9, 3, 8},
    {2, 6, 0, 7, 3, 9},
    {3, 7, 0, 4, 1, 8},
    {0, 6, 2, 5, 1, 4},
};
inline constexpr int i2MapFaceHEX8[6][4] = {
    {0, 3, 2, 1}, {4, 5, 6, 7}, {0, 1, 5, 4}, {1, 2, 6, 5}, {2, 3, 7, 6}, {3, 0, 4, 7},
};

inline constexpr int kLinePieces[1][2]      = {{1, 0}};
inline constexpr int kHalfPieces[2][2]      = {{2, 1}, {1, 0}};
inline constexpr int kTrianglePieces[1][3]  = {{0, 2, 1}};
inline constexpr int kQuadraticPieces[4][3] = {{1, 5, 3}, {0, 5, 1}, {4, 3, 5}, {2, 1, 3}};
inline constexpr int kQuadPieces[1][4]      = {{0, 3, 2, 1}};

// VTK wants the corners of a quadratic cell before its mid-side nodes, the store has those of a triangle in turn. Rows
// that look like slips are decisions: the 7th node of a TRI7 is not written, C2D6 turns both triangles of its wedge,
// C2DX is written as the wedge of its six corners, C1D6 as a polygon.
inline constexpr int i1MapCellTRI3[] = {0, 1, 2};
inline constexpr int i1MapCellTRI6[] = {0, 2, 4, 1, 3, 5};
inline constexpr int i1MapCellTET4[] = {0, 1, 2, 3};
inline constexpr int i1MapCellTETX[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9};
inline constexpr int i1MapCellTRI7[] = {0, 2, 4, 1, 3, 5};
inline constexpr int i1MapCellC1D6[] = {0, 1, 2, 3, 4, 5};
inline constexpr int i1MapCellC1D4[] = {0, 1, 2, 3};
inline constexpr int i1MapCellS1D2[] = {0, 1};
inline constexpr int i1MapCellS2D3[] = {0, 1, 2};
inline constexpr int i1MapCellS2D4[] = {0, 1, 2, 3};
inline constexpr int i1MapCellC2D6[] = {0, 2, 1, 3, 5, 4};
inline constexpr int i1MapCellC2D8[] = {0, 1, 2, 3, 4, 5, 6, 7};
inline constexpr int i1MapCellC2DX[] = {0, 4, 2, 6, 10, 8};
inline constexpr int i1MapCellQUA4[] = {0, 1, 2, 3};
inline constexpr int i1MapCellHEX8[] = {0, 1, 2, 3, 4, 5, 6, 7};

// A family that is no cell of a mesh and has no faces: one that faces are of, or that only other solvers' meshes have.
constexpr ElementFamily OnlyDrawn(int type, const char *name, VTKForm vtk) {
    return {type, name, 0, 0, 0, false, {}, {}, {}, {}, vtk};
}

// A turned TRI6 exchanges corners 2 and 4 and the mid-side nodes next to corner 0; 3 stays between the two. A turned TETX
// exchanges corners 1 and 2, edges 0-1 and 2-0, 1-3 and 2-3; edges 1-2 and 0-3 stay.
//
// ORDER: ascending by code.
inline constexpr ElementFamily kFamilies[] = {
    {kTRI3, "TRI3", 2, 3, 1, false, {true, i1MapC2NTRI3, i1MapCFTTRI3}, {3, {0, 1, 2}}, {1, {{1, 2}}, {1, 2}},
     {TableOf(i2MapEdgeTRI3), kS1D2, TableOf(kLinePieces)},      { 5,  3, i1MapCellTRI3}}, // triangle
    {kTRI6, "TRI6", 2, 6, 4, true, {true, i1MapC2NTRI6, i1MapCFTTRI6}, {3, {0, 2, 4}}, {2, {{2, 4}, {1, 5}}, {1, 2}},
     {TableOf(i2MapEdgeTRI6), kS1D2, TableOf(kHalfPieces)},      {22,  6, i1MapCellTRI6}}, // quadratic triangle
    {kTET4, "TET4", 3, 4, 1, false, {true, i1MapC2NTET4, i1MapCFTTET4}, {4, {0, 1, 2, 3}}, {1, {{1, 2}}, {1, 2}},
     {TableOf(i2MapFaceTET4), kS2D3, TableOf(kTrianglePieces)},  {10,  4, i1MapCellTET4}}, // tetra
    {kTETX, "TETX", 3, 10, 8, true, {true, i1MapC2NTETX, i1MapCFTTETX}, {4, {0, 1, 2, 3}}, {3, {{1, 2}, {4, 6}, {8, 9}}, {1, 2}},
     {TableOf(i2MapFaceTETX), kS2D3, TableOf(kQuadraticPieces)}, {24, 10, i1MapCellTETX}}, // quadratic tetra
    OnlyDrawn(kTRI7, "TRI7", {22, 6, i1MapCellTRI7}), // quadratic triangle
    OnlyDrawn(kC1D6, "C1D6", { 7, 6, i1MapCellC1D6}), // polygon
    OnlyDrawn(kC1D4, "C1D4", { 9, 4, i1MapCellC1D4}), // quad
    OnlyDrawn(kS1D2, "S1D2", { 3, 2, i1MapCellS1D2}), // line
    OnlyDrawn(kS2D3, "S2D3", { 5, 3, i1MapCellS2D3}), // triangle
    OnlyDrawn(kS2D4, "S2D4", { 9, 4, i1MapCellS2D4}), // quad
    OnlyDrawn(kC2D6, "C2D6", {13, 6, i1MapCellC2D6}), // wedge
    OnlyDrawn(kC2D8, "C2D8", {12, 8, i1MapCellC2D8}), // hexahedron
    OnlyDrawn(kC2DX, "C2DX", {13, 6, i1MapCellC2DX}), // wedge
    {kQUA4, "QUA4", 2, 4, 0, false, {}, {}, {},
     {TableOf(i2MapEdgeQUA4), kS1D2, TableOf(kLinePieces)},      { 9,  4, i1MapCellQUA4}}, // quad
    {kHEX8, "HEX8", 3, 8, 0, false, {}, {}, {},
     {TableOf(i2MapFaceHEX8), kS2D4, TableOf(kQuadPieces)},      {12,  8, i1MapCellHEX8}}, // hexahedron
};
// clang-format on

// Codes are below it, so that tables can be indexed by them.
constexpr int kCodes = 100;

// What arrays of one cell must have room for, whatever its family.
struct FamilyLimits {
    int nNodes;
    int nFaces;
};

constexpr FamilyLimits LimitsOfFamilies() {
    FamilyLimits most{};
    for (const ElementFamily &family : kFamilies) {
        most.nNodes = family.nNodes > most.nNodes ? family.nNodes : most.nNodes;
        most.nFaces = family.faces.slots.nRows > most.nFaces ? family.faces.slots.nRows : most.nFaces;
    }
    return most;
}

constexpr int kMostNodes = LimitsOfFamilies().nNodes;
constexpr int kMostFaces = LimitsOfFamilies().nFaces;

// Checks of the rows ---------------------------------------------------------------------------------------

constexpr bool IsPermutation(const int *map, int n) {
    for (int value = 0; value < n; ++value) {
        int times = 0;
        for (int k = 0; k < n; ++k) {
            times += map[k] == value ? 1 : 0;
        }
        if (times != 1) {
            return false;
        }
    }
    return true;
}

constexpr bool AllBelow(const int *values, int n, int limit) {
    for (int i = 0; i < n; ++i) {
        if (values[i] < 0 || values[i] >= limit) {
            return false;
        }
    }
    return true;
}

template <std::size_t kLength>
constexpr bool AreRowsBelow(const int (*rows)[kLength], int nRows, int rowLength, int limit) {
    for (int i = 0; i < nRows; ++i) {
        if (!AllBelow(rows[i], rowLength, limit)) {
            return false;
        }
    }
    return true;
}

constexpr bool IsFamilySound(const ElementFamily &family) {
    const FaceRows &faces = family.faces;
    if (family.deck.bKnown &&
        !(family.nDim > 0 && faces.slots.nRows > 0 && IsPermutation(family.deck.i1MapC2N, family.nNodes) &&
          IsPermutation(family.deck.i1MapCFT, faces.slots.nRows))) {
        return false;
    }
    // Surface tags by slot lie in a table with as many columns as the element has nodes.
    return family.type > 0 && family.type < kCodes && faces.slots.nRows <= family.nNodes &&
           AllBelow(family.corners.columns, family.corners.nCorners, family.nNodes) &&
           AreRowsBelow(family.turn.swaps, family.turn.nSwaps, 2, family.nNodes) &&
           (family.turn.nSwaps == 0 || AllBelow(family.turn.slots, 2, faces.slots.nRows)) &&
           (family.turn.nSwaps > 0) == (family.corners.nCorners > 0) &&
           AreRowsBelow(faces.slots.rows, faces.slots.nRows, faces.slots.rowLength, family.nNodes) &&
           AreRowsBelow(faces.pieces.rows, faces.pieces.nRows, faces.pieces.rowLength, faces.slots.rowLength) &&
           (family.nNodes == 0 || AllBelow(family.vtk.i1MapCell, family.vtk.nNodes, family.nNodes));
}

constexpr bool AreFamiliesSound() {
    int last = 0;
    for (const ElementFamily &family : kFamilies) {
        if (!IsFamilySound(family) || family.type <= last) {
            return false;
        }
        last = family.type;
    }
    return true;
}

static_assert(AreFamiliesSound(), "a row of kFamilies is out of range, no permutation, or out of order");

// Rows by code --------------------------------------------------------------------------------------------

struct FamilyIndex {
    const ElementFamily *byCode[kCodes];
};

constexpr FamilyIndex IndexFamilies() {
    FamilyIndex index{};
    for (const ElementFamily &family : kFamilies) {
        index.byCode[family.type] = &family;
    }
    return index;
}

inline constexpr FamilyIndex kFamilyIndex = IndexFamilies();

// The row of the code, or null.
constexpr const ElementFamily *FamilyOf(int type) {
    return type >= 0 && type < kCodes ? kFamilyIndex.byCode[type] : nullptr;
}

#endif
