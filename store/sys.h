// The records of the mesh store, how each is made, grown and released.
//
// Every attribute of the nodes, faces or cells is an array of its own, indexed by the entity's position. A
// table [column][entry] is an array of column arrays; entry e of column k is node k of entity e:
//
//                    entry  0    1    2   ...  nNum-1  |  ...  nMax-1
//     i2Conn[0]  ->      [ 12 | 12 |  7 | ... |   3    |  not in use  ]   first node of each
//     i2Conn[1]  ->      [ 13 | 40 |  8 | ... |   9    |  not in use  ]   second node
//     i2Conn[2]  ->      [ 40 | 41 | 12 | ... |  10    |  not in use  ]   third node
//
// What holds between the phases:
//
//     array             after reading                        after translation
//     Nodes.i1GID       node number in the deck              position before nodes were split and dropped
//     Nodes order       by number inside each *NODE block,   by number, then the copies of split nodes, cell by
//                       blocks by their first number         cell; nodes that nothing uses are gone
//     Nodes.i1OnB       undefined                            1
//     Cells.i2Conn      node numbers, store order of nodes   positions of nodes (-1: no such node)
//     Cells.i2FaceTag   surface tag by face slot, 0 = none   the same, following the nodes
//     Faces             none                                 one or several for each tagged slot of a cell
//     lengths           undefined / 0                        set
//
// The arrays need not come from the functions below. A caller may make them itself (AllocINT1D, AllocINT2D), fill them
// and set nMax, nNum and, to the number of columns that it made, nNodesPerFace or nNodesPerCell: they are grown,
// translated, written and released like all others. An array that it leaves absent is made at the next reservation;
// surface tags are then 0.
//
// Field names: i1 int array, i2 int table, d1 double array, c1 character array, n count, d double, i int.
//
// No run calls GetNextAviableNode, GetNextAviableFace and GetNextAviableCell, which reserve one entry each: they are
// part of the interface.
#ifndef KIVOM_STORE_SYS_H
#define KIVOM_STORE_SYS_H

// Element type codes, shared by store, reader, translation and writers. What is known of each: families.h.
enum TypeCode {
    kTRI3 = 3,  // 3-node triangle
    kTRI6 = 4,  // 6-node triangle: corner, mid-side, corner, mid-side, corner, mid-side
    kTET4 = 5,  // 4-node tetrahedron
    kTETX = 6,  // 10-node tetrahedron: corners 0-3, mid-edge nodes of 0-1, 1-2, 2-0, 0-3, 1-3, 2-3
    kTRI7 = 19, // of other solvers' meshes, as far as the VTK form goes
    kC1D6 = 20,
    kC1D4 = 22,
    kS1D2 = 31, // 2-node line, a face of a 2-D mesh
    kS2D3 = 32, // 3-node triangle, a face of a 3-D mesh
    kS2D4 = 33, // 4-node quadrilateral, a face
    kC2D6 = 36, // of other solvers' meshes
    kC2D8 = 37,
    kC2DX = 38,
    kQUA4 = 52, // 4-node quadrilateral
    kHEX8 = 55  // 8-node hexahedron
};

constexpr int kGroupNameBuffer = 260;

struct Nodes {
    int nMax;                            // allocated entries of every array
    int nNum;                            // entries in use
    double dMinEdge, dMaxEdge, dCharLen; // of the whole mesh, in the deck's unit of length; unset when new
    int *i1Mark;                         // scratch of the translation
    int *i1GID;                          // number
    int *i1Tag;                          // tag of its node group, 0 for none
    double *d1X, *d1Y, *d1Z;             // coordinates; z is there in 2-D meshes too
    int *i1OnB;                          // 1: on the boundary
};

struct Faces {
    int nMax, nNum;
    int nNodesPerFace; // largest node count of any face, and the columns of i2Conn wherever there is one
    int *i1Type;       // type code
    int *i1Tag;        // tag of its face group
    int *i1NumNodes;   // columns of i2Conn that mean something for this face
    int **i2Conn;      // [nNodesPerFace][nMax] node positions
};

struct Cells {
    int nMax, nNum;
    int nNodesPerCell; // largest node count of any cell, and the columns of both tables wherever there are any
    int *i1Mark;       // scratch of the translation: 1 for a cell of a "C_" group
    int *i1Type;       // type code
    int *i1Tag;        // tag of its cell group
    int *i1NumNodes;   // columns of i2Conn that mean something for this cell
    int **i2Conn;      // [nNodesPerCell][nMax]
    int **i2FaceTag;   // [nNodesPerCell][nMax] surface tag by face slot; only the first slots mean something
};

struct GRnode {
    GRnode *next;
    char c1Name[kGroupNameBuffer];
    int iTag; // -1 when new
};

using GRface = GRnode; // the same layout, made and released by the same routines

struct GRcell {
    GRcell *next;
    char c1Name[kGroupNameBuffer];
    int iTag;                            // -1 when new
    int iAux;                            // 0; no phase uses it
    double dMaxEdge, dMinEdge, dCharLen; // of the group's cells, in the deck's unit of length; 0 when new
};

struct Mesh {
    int nDim; // 2 or 3; 0 until set
    struct Nodes *Nodes;
    struct Faces *Faces;
    struct Cells *Cells;
    struct GRcell *GRcell; // lists, the newest group first
    struct GRnode *GRface;
    struct GRnode *GRnode;
};

// Making. The caller owns the record. Arrays are absent, counts 0, groups nameless.
Mesh *NewMesh(); // with its Nodes, Faces and Cells
Nodes *NewNodes();
Faces *NewFaces();
Cells *NewCells();
GRcell *NewGRcell();
GRface *NewGRface();
GRnode *NewGRnode();

// Releasing a record with all its arrays. A group that is absent (null) is passed over; the other groups of its
// list are left alone.
void DelNodes(Nodes *nodes);
void DelFaces(Faces *faces);
void DelCells(Cells *cells);
void DelGRcell(GRcell *group);
void DelGRface(GRface *group);
void DelGRnode(GRnode *group);

// Each reserves the next entry and returns its position; the caller writes every field of it. Capacity goes
// 100000, 200000, ..., 1600000, then up by a million; it grows when the last free entry is handed out, so that
// one free entry is always left. The column counts must be final before a kind's first growth in the process: another
// count is reported at each growth ("unmatched mceno").
int GetNextAviableNode(Nodes *nodes);
int GetNextAviableFace(Faces *faces);
int GetNextAviableCell(Cells *cells);

// `count` entries reserved at once: the first position. As many single reservations would leave the same
// store, but the arrays are resized only once. With 0 only the arrays are made that a caller has left absent.
int ReserveNodes(Nodes *nodes, int count);
int ReserveFaces(Faces *faces, int count);
int ReserveCells(Cells *cells, int count);

// Puts n nodes in the order of their numbers, as SortByFirstArray2 would leave them (support/frame.h); tags and
// coordinates follow. Absent tags (null) are passed over.
void OrderNodes(int n, int *i1GID, int *i1Tag, double *d1X, double *d1Y, double *d1Z);

// Raises the column count to n where it is smaller. A table that is there gets its further columns at once; they hold
// nothing for the entries made before. The fields nNodesPerFace and nNodesPerCell tell how many columns a table has:
// whoever changes them another way makes the columns too.
void SetNumNodesFaces(int n, Faces *faces);
void SetNumNodesCells(int n, Cells *cells);

// For tests: no run calls it. The process forgets with which column counts it first grew faces and cells.
void ForgetColumnCounts();

#endif
