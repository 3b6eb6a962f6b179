// Legacy VTK files, each from top to bottom.
#include "output/DumpVTK.h"

#include "output/textout.h"

#include "store/COM.h"
#include "store/families.h"
#include "store/tags.h"
#include "support/frame.h"

#include <algorithm>
#include <charconv>
#include <cstdio>

namespace {

// The families by type code. They are made for each file of cells or faces and released with it.
int *i1SizCellConn = nullptr;        // [kCodes] nodes written; 0 for a code without a family
int *i1MapCellType = nullptr;        // [kCodes] VTK type; 0 likewise
const int **i2MapCellConn = nullptr; // [kCodes] map

// Makes the tables that are absent.
void InitVTK() {
    if (i1SizCellConn == nullptr) {
        i1SizCellConn = AllocINT1D(nullptr, kCodes);
        RequireBlock(i1SizCellConn);
        std::fill_n(i1SizCellConn, kCodes, 0);
        for (const ElementFamily &family : kFamilies) {
            i1SizCellConn[family.type] = family.vtk.nNodes;
        }
    }
    if (i1MapCellType == nullptr) {
        i1MapCellType = AllocINT1D(nullptr, kCodes);
        RequireBlock(i1MapCellType);
        std::fill_n(i1MapCellType, kCodes, 0);
        for (const ElementFamily &family : kFamilies) {
            i1MapCellType[family.type] = family.vtk.type;
        }
    }
    if (i2MapCellConn == nullptr) {
        i2MapCellConn = static_cast<const int **>(allocate(nullptr, kCodes * sizeof(int *)));
        RequireBlock(i2MapCellConn);
        std::fill_n(i2MapCellConn, kCodes, nullptr);
        for (const ElementFamily &family : kFamilies) {
            i2MapCellConn[family.type] = family.vtk.i1MapCell;
        }
    }
}

void ReleaseTables() {
    i1SizCellConn = AllocINT1D(i1SizCellConn, 0);
    i1MapCellType = AllocINT1D(i1MapCellType, 0);
    i2MapCellConn = static_cast<const int **>(allocate(i2MapCellConn, 0));
}

// A code the tables can be asked for: those outside have no family, like 0.
int KnownCode(int code) {
    return code >= 0 && code < kCodes ? code : 0;
}

// Pieces of a file ---------------------------------------------------------------------------------------

void PutHeader(TextOut *out) {
    PutText(out, "# vtk DataFile Version 3.0\n");
    PutText(out, "vtk output\n");
    PutText(out, "ASCII\n");
    PutText(out, "DATASET UNSTRUCTURED_GRID\n");
}

void PutNumber(TextOut *out, long long n) {
    char *at = RowBegin(out);
    RowEnd(out, std::to_chars(at, at + kMostField, n).ptr);
}

// A line that tells how many entries of a kind follow.
void PutCount(TextOut *out, const char *word, int n, const char *end) {
    PutText(out, word);
    PutText(out, " ");
    PutNumber(out, n);
    PutText(out, end);
}

void PutCellsLine(TextOut *out, int nCells, long long total) {
    PutCount(out, "CELLS", nCells, " ");
    PutNumber(out, total);
    PutText(out, "\n");
}

void PutPoint(TextOut *out, double x, double y, double z) {
    char *at = RowBegin(out);
    at = FieldReal15(at, x);
    at = FieldReal15(at, y);
    at = FieldReal15(at, z);
    RowEnd(out, FieldBytes(at, "\n", 1));
}

// Ten values to a line. The line end follows the tenth value at once, so a list of ten, twenty, ... is followed
// by an empty line once it is closed.
constexpr int kPerLine = 10;

// `value(i)` for i = 0..n-1, without the closing line end.
template <class Value> void PutValues(TextOut *out, int n, Value value) {
    for (int i = 0; i < n;) {
        char *at = RowBegin(out);
        const int end = std::min(n, i + kPerLine);
        for (; i < end; ++i) {
            at = FieldInt5(at, value(i));
        }
        if (i % kPerLine == 0) {
            *at++ = '\n';
        }
        RowEnd(out, at);
    }
}

// A scalar block of `n` values; an empty list is one line end.
void PutScalars(TextOut *out, const char *name, int n, const int *values) {
    PutText(out, "SCALARS ");
    PutText(out, name);
    PutText(out, " int\nLOOKUP_TABLE default\n");
    PutValues(out, n, [values](int i) { return values[i]; });
    PutText(out, "\n");
}

long long TotalCellSize(int nCells, const int *cellType) {
    long long total = 0;
    for (int i = 0; i < nCells; ++i) {
        total += i1SizCellConn[KnownCode(cellType[i])] + 1;
    }
    return total;
}

void PutCellRows(TextOut *out, int nCells, const int *cellType, const int *const *conn) {
    for (int i = 0; i < nCells; ++i) {
        const int code = KnownCode(cellType[i]);
        const int size = i1SizCellConn[code];
        const int *map = i2MapCellConn[code];
        char *at = FieldInt5(RowBegin(out), size);
        for (int k = 0; k < size; ++k) {
            at = FieldInt10(at, conn[map[k]][i]);
        }
        RowEnd(out, FieldBytes(at, "\n", 1));
    }
}

// Files --------------------------------------------------------------------------------------------------

// Says which file comes, and opens it; says so when that fails.
bool BeginFile(TextOut *out, const char *path) {
    std::printf("\n  Dumping VTK file %s ...", path);
    if (OpenText(out, path)) {
        return true;
    }
    std::printf("\n Error> cannot open file %s\n", path);
    return false;
}

void EndFile(TextOut *out) {
    CloseText(out);
    std::printf(" done.");
}

// One complete unstructured grid. Arrays hold nPoints or nCells entries, `conn` is a table [column][nCells].
void OutpVTK(const char *path, int nPoints, const int *nodeTag, const double *x, const double *y, const double *z,
             const int *onB, int nCells, const int *cellType, const int *cellTag, const int *const *conn) {
    TextOut out;
    if (!BeginFile(&out, path)) {
        return;
    }
    InitVTK();
    PutHeader(&out);
    PutCount(&out, "POINTS", nPoints, " float\n");
    for (int i = 0; i < nPoints; ++i) {
        PutPoint(&out, x[i], y[i], z[i]);
    }
    PutText(&out, "\n");
    PutCellsLine(&out, nCells, TotalCellSize(nCells, cellType));
    PutCellRows(&out, nCells, cellType, conn);
    PutText(&out, "\n");
    PutCount(&out, "CELL_TYPES", nCells, "\n");
    PutValues(&out, nCells, [cellType](int i) { return i1MapCellType[KnownCode(cellType[i])]; });
    PutText(&out, "\n");
    PutCount(&out, "CELL_DATA", nCells, "\n");
    PutScalars(&out, "CellTag", nCells, cellTag);
    PutCount(&out, "POINT_DATA", nPoints, "\n");
    PutScalars(&out, "NodeTag", nPoints, nodeTag);
    PutScalars(&out, "OnB", nPoints, onB);
    ReleaseTables();
    EndFile(&out);
}

// The nodes of each tag, in store order: those of tag t stand at nodes[start[p]] to nodes[start[p + 1] - 1] where p is
// the tag's position. Made once, so that files of thousands of node groups do not look through all nodes each.
struct NodesByTag {
    SortedTags tags; // of the node groups
    int *start;      // [tags.n + 1]
    int *nodes;      // all nodes that carry one of the tags
};

NodesByTag SortNodesByTag(const Mesh *mesh) {
    const Nodes *nodes = mesh->Nodes;
    NodesByTag byTag{};
    byTag.tags = TagsOfGroups(mesh->GRnode);
    const int nTags = byTag.tags.n;
    byTag.start = NewArray<int>(nTags + 1);
    std::fill_n(byTag.start, nTags + 1, 0);
    for (int i = 0; i < nodes->nNum; ++i) {
        const int p = FindTag(byTag.tags, nodes->i1Tag[i]);
        if (p != -1) {
            ++byTag.start[p + 1];
        }
    }
    for (int p = 0; p < nTags; ++p) {
        byTag.start[p + 1] += byTag.start[p];
    }
    const int total = byTag.start[nTags];
    byTag.nodes = NewArray<int>(total);
    for (int i = nodes->nNum - 1; i >= 0; --i) { // from behind: start[p + 1] runs down to start[p]
        const int p = FindTag(byTag.tags, nodes->i1Tag[i]);
        if (p != -1) {
            byTag.nodes[--byTag.start[p + 1]] = i;
        }
    }
    for (int p = 0; p < nTags; ++p) { // and now stands where list p begins: move all back by one place
        byTag.start[p] = byTag.start[p + 1];
    }
    byTag.start[nTags] = total;
    return byTag;
}

void ReleaseNodesByTag(NodesByTag *byTag) {
    AllocINT1D(byTag->tags.tags, 0);
    AllocINT1D(byTag->start, 0);
    AllocINT1D(byTag->nodes, 0);
}

// The points of one node group and a vertex cell for each; no data.
void PutNodeSet(TextOut *out, const Nodes *nodes, const int *members, int n) {
    PutHeader(out);
    PutCount(out, "POINTS", n, " float\n");
    for (int j = 0; j < n; ++j) {
        const int i = members[j];
        PutPoint(out, nodes->d1X[i], nodes->d1Y[i], nodes->d1Z[i]);
    }
    PutText(out, "\n");
    PutCellsLine(out, n, 2LL * n);
    for (int j = 0; j < n; ++j) { // positions in this file's own list of points
        char *at = FieldInt10(RowBegin(out), 1);
        *at++ = ' ';
        at = FieldInt10(at, j);
        RowEnd(out, FieldBytes(at, "\n", 1));
    }
    PutText(out, "\n");
    PutCount(out, "CELL_TYPES", n, "\n");
    PutValues(out, n, [](int) { return 1; });
    PutText(out, "\n");
}

void DumpNodeSet(const Nodes *nodes, const NodesByTag &byTag, const GRnode *group) {
    char path[kGroupNameBuffer + 16];
    std::snprintf(path, sizeof path, "_NSET_%s.vtk", group->c1Name);
    TextOut out;
    if (!BeginFile(&out, path)) {
        return;
    }
    const int p = FindTag(byTag.tags, group->iTag);
    PutNodeSet(&out, nodes, byTag.nodes + byTag.start[p], byTag.start[p + 1] - byTag.start[p]);
    EndFile(&out);
}

} // namespace

void DumpVTK() {
    const Mesh *mesh = GetCOM();
    if (mesh == nullptr) {
        return;
    }
    const Nodes *nodes = mesh->Nodes;
    const Cells *cells = mesh->Cells;
    const Faces *faces = mesh->Faces;
    if (cells->nNum > 0) {
        OutpVTK("_Cells.vtk", nodes->nNum, nodes->i1Tag, nodes->d1X, nodes->d1Y, nodes->d1Z, nodes->i1OnB, cells->nNum,
                cells->i1Type, cells->i1Tag, cells->i2Conn);
    }
    if (faces->nNum > 0) {
        OutpVTK("_Faces.vtk", nodes->nNum, nodes->i1Tag, nodes->d1X, nodes->d1Y, nodes->d1Z, nodes->i1OnB, faces->nNum,
                faces->i1Type, faces->i1Tag, faces->i2Conn);
    }
    NodesByTag byTag = SortNodesByTag(mesh);
    for (const GRnode *group = mesh->GRnode; group != nullptr; group = group->next) {
        DumpNodeSet(nodes, byTag, group);
    }
    ReleaseNodesByTag(&byTag);
}
