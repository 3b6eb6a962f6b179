// Records of the mesh store: making, growing, releasing.
#include "store/sys.h"

#include "support/frame.h"

#include <algorithm>
#include <climits>
#include <cstdio>

namespace {

// The column count with which a kind's connectivity was first grown; 0 before.
int facesMceno = 0;
int cellsMceno = 0;

template <class Record> Record *NewRecord() {
    auto *record = NewArray<Record>(1);
    *record = Record{};
    return record;
}

template <class Group> Group *NewGroup() {
    auto *group = NewRecord<Group>();
    group->iTag = -1;
    return group;
}

void Resize(int **column, int n) {
    *column = AllocINT1D(*column, n);
    RequireBlock(*column);
}

void Resize(double **column, int n) {
    *column = AllocDBL1D(*column, n);
    RequireBlock(*column);
}

void RequireTable(int *const *table, int columns) {
    RequireBlock(table);
    for (int k = 0; k < columns; ++k) {
        RequireBlock(table[k]);
    }
}

void ResizeTable(int ***table, int columns, int n) {
    if (columns < 1) {
        return;
    }
    *table = AllocINT2D(*table, columns, n);
    RequireTable(*table, columns);
}

// Gives a table of `held` columns further ones, up to `columns`.
void WidenTable(int ***table, int held, int columns, int n) {
    if (*table == nullptr) {
        return;
    }
    *table = static_cast<int **>(allocate(*table, static_cast<std::uint64_t>(columns) * sizeof(int *)));
    RequireBlock(*table);
    for (int k = held; k < columns; ++k) {
        (*table)[k] = AllocINT1D(nullptr, n);
    }
    RequireTable(*table, columns);
}

// An absent table has nothing to release.
void ReleaseTable(int **table, int columns) {
    if (table != nullptr) {
        AllocINT2D(table, columns, 0);
    }
}

void CheckMceno(int *mceno, int columns, const char *message) {
    if (*mceno > 0 && *mceno != columns) {
        std::printf("%s\n", message);
    } else if (*mceno <= 0) {
        *mceno = columns;
    }
}

// Counts `count` more entries. True when the arrays must grow to the new capacity. The last free entry is never
// handed out without growing first: the step comes when the count reaches the capacity, not when it passes it.
// `step` is told of every growth step on the way.
template <class Step> bool Count(int *nNum, int *nMax, int count, Step step) {
    if (count > INT_MAX - 1 - *nNum) {
        EndForTooMany();
    }
    *nNum += count;
    const bool grows = count > 0 && *nNum >= *nMax;
    while (count > 0 && *nNum >= *nMax) {
        *nMax = NextCapacity(*nMax);
        step();
    }
    return grows;
}

// True when entries are there and one of the arrays is not: a caller has made the others.
bool AnyAbsent(const Nodes *nodes) {
    return nodes->nMax > 0 &&
           (nodes->i1Mark == nullptr || nodes->i1GID == nullptr || nodes->i1Tag == nullptr || nodes->d1X == nullptr ||
            nodes->d1Y == nullptr || nodes->d1Z == nullptr || nodes->i1OnB == nullptr);
}

bool AnyAbsent(const Faces *faces) {
    return faces->nMax > 0 && (faces->i1Type == nullptr || faces->i1Tag == nullptr || faces->i1NumNodes == nullptr ||
                               (faces->i2Conn == nullptr && faces->nNodesPerFace > 0));
}

bool AnyAbsent(const Cells *cells) {
    return cells->nMax > 0 && (cells->i1Mark == nullptr || cells->i1Type == nullptr || cells->i1Tag == nullptr ||
                               cells->i1NumNodes == nullptr ||
                               ((cells->i2Conn == nullptr || cells->i2FaceTag == nullptr) && cells->nNodesPerCell > 0));
}

} // namespace

Mesh *NewMesh() {
    auto *mesh = NewRecord<Mesh>();
    mesh->Nodes = NewNodes();
    mesh->Faces = NewFaces();
    mesh->Cells = NewCells();
    return mesh;
}

Nodes *NewNodes() {
    return NewRecord<Nodes>();
}

Faces *NewFaces() {
    return NewRecord<Faces>();
}

Cells *NewCells() {
    return NewRecord<Cells>();
}

GRcell *NewGRcell() {
    return NewGroup<GRcell>();
}

GRface *NewGRface() {
    return NewGroup<GRface>();
}

GRnode *NewGRnode() {
    return NewGroup<GRnode>();
}

void DelNodes(Nodes *nodes) {
    AllocINT1D(nodes->i1Mark, 0);
    AllocINT1D(nodes->i1GID, 0);
    AllocINT1D(nodes->i1Tag, 0);
    AllocDBL1D(nodes->d1X, 0);
    AllocDBL1D(nodes->d1Y, 0);
    AllocDBL1D(nodes->d1Z, 0);
    AllocINT1D(nodes->i1OnB, 0);
    allocate(nodes, 0);
}

void DelFaces(Faces *faces) {
    AllocINT1D(faces->i1Type, 0);
    AllocINT1D(faces->i1Tag, 0);
    AllocINT1D(faces->i1NumNodes, 0);
    ReleaseTable(faces->i2Conn, faces->nNodesPerFace);
    allocate(faces, 0);
}

void DelCells(Cells *cells) {
    AllocINT1D(cells->i1Mark, 0);
    AllocINT1D(cells->i1Type, 0);
    AllocINT1D(cells->i1Tag, 0);
    AllocINT1D(cells->i1NumNodes, 0);
    ReleaseTable(cells->i2FaceTag, cells->nNodesPerCell);
    ReleaseTable(cells->i2Conn, cells->nNodesPerCell);
    allocate(cells, 0);
}

void DelGRcell(GRcell *group) {
    allocate(group, 0);
}

void DelGRface(GRface *group) {
    allocate(group, 0);
}

void DelGRnode(GRnode *group) {
    allocate(group, 0);
}

int ReserveNodes(Nodes *nodes, int count) {
    const int first = nodes->nNum;
    if (!Count(&nodes->nNum, &nodes->nMax, count, [] {}) && !AnyAbsent(nodes)) {
        return first;
    }
    Resize(&nodes->i1Mark, nodes->nMax);
    Resize(&nodes->i1GID, nodes->nMax);
    Resize(&nodes->i1Tag, nodes->nMax);
    Resize(&nodes->d1X, nodes->nMax);
    Resize(&nodes->d1Y, nodes->nMax);
    Resize(&nodes->d1Z, nodes->nMax);
    Resize(&nodes->i1OnB, nodes->nMax);
    return first;
}

int ReserveFaces(Faces *faces, int count) {
    const int first = faces->nNum;
    const bool grows = Count(&faces->nNum, &faces->nMax, count, [faces] {
        CheckMceno(&facesMceno, faces->nNodesPerFace, "\n  Error> unmatched mceno in Alloc_Faces.");
    });
    if (!grows && !AnyAbsent(faces)) {
        return first;
    }
    Resize(&faces->i1Type, faces->nMax);
    Resize(&faces->i1Tag, faces->nMax);
    Resize(&faces->i1NumNodes, faces->nMax);
    ResizeTable(&faces->i2Conn, faces->nNodesPerFace, faces->nMax);
    return first;
}

int ReserveCells(Cells *cells, int count) {
    const int first = cells->nNum;
    const bool grows = Count(&cells->nNum, &cells->nMax, count, [cells] {
        CheckMceno(&cellsMceno, cells->nNodesPerCell, "\n  Error> unmatched mceno in Alloc_Cells.");
    });
    if (!grows && !AnyAbsent(cells)) {
        return first;
    }
    const bool tagged = cells->i2FaceTag != nullptr;
    Resize(&cells->i1Mark, cells->nMax);
    Resize(&cells->i1Type, cells->nMax);
    Resize(&cells->i1Tag, cells->nMax);
    Resize(&cells->i1NumNodes, cells->nMax);
    ResizeTable(&cells->i2Conn, cells->nNodesPerCell, cells->nMax);
    ResizeTable(&cells->i2FaceTag, cells->nNodesPerCell, cells->nMax);
    for (int k = 0; k < cells->nNodesPerCell && !tagged; ++k) {
        std::fill_n(cells->i2FaceTag[k], first, 0);
    }
    return first;
}

int GetNextAviableNode(Nodes *nodes) {
    return ReserveNodes(nodes, 1);
}

int GetNextAviableFace(Faces *faces) {
    return ReserveFaces(faces, 1);
}

int GetNextAviableCell(Cells *cells) {
    return ReserveCells(cells, 1);
}

void OrderNodes(int n, int *i1GID, int *i1Tag, double *d1X, double *d1Y, double *d1Z) {
    if (n < 2) {
        return;
    }
    auto *order = NewArray<int>(n);
    if (OrderRows(n, i1GID, order)) {
        auto *spare = NewArray<double>(n);
        if (i1Tag != nullptr) {
            ReorderINT(n, i1Tag, order, reinterpret_cast<int *>(spare));
        }
        ReorderDBL(n, d1X, order, spare);
        ReorderDBL(n, d1Y, order, spare);
        ReorderDBL(n, d1Z, order, spare);
        AllocDBL1D(spare, 0);
    }
    AllocINT1D(order, 0);
}

void SetNumNodesFaces(int n, Faces *faces) {
    if (n > faces->nNodesPerFace) {
        WidenTable(&faces->i2Conn, faces->nNodesPerFace, n, faces->nMax);
        faces->nNodesPerFace = n;
    }
}

void SetNumNodesCells(int n, Cells *cells) {
    if (n > cells->nNodesPerCell) {
        WidenTable(&cells->i2Conn, cells->nNodesPerCell, n, cells->nMax);
        WidenTable(&cells->i2FaceTag, cells->nNodesPerCell, n, cells->nMax);
        cells->nNodesPerCell = n;
    }
}

void ForgetColumnCounts() {
    facesMceno = 0;
    cellsMceno = 0;
}
