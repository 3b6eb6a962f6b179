// The solver's mesh file, from top to bottom: the order of DumpKIVO's calls is the order of the file.
//
// Every row begins with a 0-based position; connectivity is written as the store has it.
#include "output/DumpKIVO.h"

#include "output/textout.h"

#include "store/COM.h"
#include "store/families.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace {

constexpr char kFileName[] = "mesh.input";
constexpr int kUnwritableStatus = -1;
constexpr int kPerLine = 10; // values of a scalar list

// Lines ------------------------------------------------------------------------------------------------

void PutOpenTag(TextOut *out, const char *tag) {
    PutText(out, "<");
    PutText(out, tag);
    PutText(out, ">\n");
}

void PutCloseTag(TextOut *out, const char *tag) {
    PutText(out, "</");
    PutText(out, tag);
    PutText(out, ">\n\n");
}

// Inner tags carry a name behind them: "  <Faces> AllFaces".
void PutOpenNamed(TextOut *out, const char *tag, const char *name) {
    PutText(out, "  <");
    PutText(out, tag);
    PutText(out, "> ");
    PutText(out, name);
    PutText(out, "\n");
}

void PutCloseNamed(TextOut *out, const char *tag, const char *name) {
    PutText(out, "  </");
    PutText(out, tag);
    PutText(out, "> ");
    PutText(out, name);
    PutText(out, "\n");
}

constexpr char kKeyBefore[] = "    ";
constexpr char kKeyBehind[] = " = ";

void PutKey(TextOut *out, const char *key) {
    PutText(out, kKeyBefore);
    PutText(out, key);
    PutText(out, kKeyBehind);
}

void PutTextValue(TextOut *out, const char *key, const char *value) {
    PutKey(out, key);
    PutText(out, value);
    PutText(out, "\n");
}

void PutIntValue(TextOut *out, const char *key, int value) {
    PutKey(out, key);
    char *at = RowBegin(out);
    at = FieldInt10(at, value);
    RowEnd(out, FieldBytes(at, "\n", 1));
}

void PutRealValue(TextOut *out, const char *key, double value) {
    PutKey(out, key);
    char *at = RowBegin(out);
    at = FieldReal24(at, value);
    RowEnd(out, FieldBytes(at, "\n", 1));
}

void PutListKey(TextOut *out, const char *key) {
    PutTextValue(out, key, "");
}

// Length of the line that PutListKey puts.
std::int64_t ListKeyLength(const char *key) {
    return static_cast<std::int64_t>(std::strlen(kKeyBefore) + std::strlen(key) + std::strlen(kKeyBehind) + 1);
}

// Lists ------------------------------------------------------------------------------------------------

// One line of a scalar list. Tags and types mostly come in long runs: a line like the one before is copied.
struct ScalarLine {
    int values[kPerLine];
    int n; // 0: no line yet
    char text[1 + 8 + kPerLine * kMostField];
    std::size_t length;
};

void MakeScalarLine(ScalarLine *line, const int *values, int n) {
    char *at = FieldBytes(line->text, "\n        ", 9);
    for (int i = 0; i < n; ++i) {
        line->values[i] = values[i];
        at = FieldInt10(at, values[i]);
    }
    line->n = n;
    line->length = static_cast<std::size_t>(at - line->text);
}

// Ten values to a line, each line begun by the line end of the one before. An absent array stands for zeros.
void PutScalarList(TextOut *out, const char *key, int n, const int *values) {
    constexpr int kZeros[kPerLine] = {};
    ScalarLine line{};
    PutKey(out, key);
    for (int i = 0; i < n; i += kPerLine) {
        const int *first = values == nullptr ? kZeros : values + i;
        const int count = std::min(kPerLine, n - i);
        if (count != line.n || std::memcmp(line.values, first, sizeof line.values) != 0) {
            MakeScalarLine(&line, first, count);
        }
        RowEnd(out, FieldBytes(RowBegin(out), line.text, line.length));
    }
    PutText(out, "\n");
}

// One row per entry, however many nodes it has.
void PutConnectivity(TextOut *out, const char *key, int n, const int *i1NumNodes, int *const *i2Conn) {
    constexpr int kPiece = 64;
    PutListKey(out, key);
    for (int i = 0; i < n; ++i) {
        char *at = RowBegin(out);
        *at++ = ' ';
        at = FieldInt10(at, i);
        at = FieldInt5(at, i1NumNodes[i]);
        for (int k = 0; k < i1NumNodes[i]; ++k) {
            at = FieldInt10(at, i2Conn[k][i]);
            if (k % kPiece == kPiece - 1) { // rows have no end of their own
                RowEnd(out, at);
                at = RowBegin(out);
            }
        }
        RowEnd(out, FieldBytes(at, "\n", 1));
    }
}

// Sections ---------------------------------------------------------------------------------------------

void PutDimension(TextOut *out, const Mesh *mesh) {
    PutOpenTag(out, "Dimension");
    if (mesh->nDim == 2 || mesh->nDim == 3) {
        PutTextValue(out, "Dimension", mesh->nDim == 2 ? "2D" : "3D");
    }
    PutCloseTag(out, "Dimension");
}

// The row of node i; the place behind it.
char *PositionRow(char *at, const Mesh *mesh, int i) {
    const Nodes *nodes = mesh->Nodes;
    at = FieldBytes(at, "        ", 8);
    at = FieldInt10(at, i);
    at = FieldReal24(at, nodes->d1X[i]);
    at = FieldReal24(at, nodes->d1Y[i]);
    if (mesh->nDim == 3) {
        at = FieldReal24(at, nodes->d1Z[i]);
    }
    return FieldBytes(at, "\n", 1);
}

void PutPositionRows(TextOut *out, const Mesh *mesh) {
    for (int i = 0; i < mesh->Nodes->nNum; ++i) {
        RowEnd(out, PositionRow(RowBegin(out), mesh, i));
    }
}

// Bytes of all rows: they are as long as the first.
std::int64_t PositionRowsLength(const Mesh *mesh) {
    char row[5 * kMostField];
    return mesh->Nodes->nNum == 0 ? 0 : (PositionRow(row, mesh, 0) - row) * std::int64_t{mesh->Nodes->nNum};
}

// The three lists hold the same rows: where the file allows it, the rows are made once and written to all three places.
// Each list must then begin where its copy was put: RequirePosition ends the program otherwise.
void PutPositions(TextOut *out, const Mesh *mesh) {
    constexpr const char *kKeys[1 + kMostCopies] = {"Current_Positions", "Previous_Positions", "Initial_Positions"};
    if (!CanCopy(out)) {
        for (const char *key : kKeys) {
            PutListKey(out, key);
            PutPositionRows(out, mesh);
        }
        return;
    }
    PutListKey(out, kKeys[0]);
    const std::int64_t rows = PositionRowsLength(mesh);
    const std::int64_t first = TextPosition(out);
    const std::int64_t second = rows + ListKeyLength(kKeys[1]);
    const std::int64_t distances[kMostCopies] = {second, second + rows + ListKeyLength(kKeys[2])};
    StartCopies(out, distances, kMostCopies);
    PutPositionRows(out, mesh);
    StopCopies(out);
    for (int i = 0; i < kMostCopies; ++i) {
        PutListKey(out, kKeys[1 + i]);
        RequirePosition(out, first + distances[i]);
        SkipText(out, rows);
    }
}

void PutNodeGeometry(TextOut *out, const Mesh *mesh) {
    const Nodes *nodes = mesh->Nodes;
    PutOpenTag(out, "Node_Geometry");
    PutRealValue(out, "Minimum Edge Charac", nodes->dCharLen);
    PutRealValue(out, "Minimum Edge Length", nodes->dMinEdge);
    PutRealValue(out, "Maximum Edge Length", nodes->dMaxEdge);
    PutOpenNamed(out, "Coordinates", "AllNodes");
    PutIntValue(out, "Number_Of_Nodes", nodes->nNum);
    PutPositions(out, mesh);
    PutScalarList(out, "Node_Tag", nodes->nNum, nodes->i1Tag);
    PutScalarList(out, "IsOnBoundary", nodes->nNum, nodes->i1OnB);
    PutCloseNamed(out, "Coordinates", "AllNodes");
    PutCloseTag(out, "Node_Geometry");
}

void PutFaces(TextOut *out, const Faces *faces) {
    PutOpenNamed(out, "Faces", "AllFaces");
    PutIntValue(out, "Face_Number_Of_Nodes", faces->nNodesPerFace);
    PutIntValue(out, "Number_Of_Faces", faces->nNum);
    PutConnectivity(out, "Face_To_Node", faces->nNum, faces->i1NumNodes, faces->i2Conn);
    PutScalarList(out, "Face_Tag", faces->nNum, faces->i1Tag);
    PutCloseNamed(out, "Faces", "AllFaces");
}

// Nodes per cell and nodes that carry material points: those of the family with the most nodes among the cells that the
// solver counts, which are of the mesh's own dimension (three unless it is two). All others contribute nothing.
struct CellNodeCounts {
    int nNodes;
    int nMatNodes;
};

CellNodeCounts CountCellNodes(const Mesh *mesh) {
    const Cells *cells = mesh->Cells;
    const int nDim = mesh->nDim == 2 ? 2 : 3;
    CellNodeCounts most{0, 0};
    int type = 0;
    for (int c = 0; c < cells->nNum && cells->i1Type != nullptr; ++c) {
        if (cells->i1Type[c] == type) {
            continue;
        }
        type = cells->i1Type[c];
        const ElementFamily *family = FamilyOf(type);
        if (family != nullptr && family->nMatNodes > 0 && family->nDim == nDim && family->nNodes > most.nNodes) {
            most = {family->nNodes, family->nMatNodes};
        }
    }
    return most;
}

// The identity tensor for every cell. The formats of the two dimensions differ on purpose.
void PutSolidGeometry(TextOut *out, const Mesh *mesh) {
    constexpr char kFlat[] = "   1.000000000000000e+00   0.000000000000000e+00"
                             "   0.000000000000000e+00   1.000000000000000e+00\n";
    constexpr char kSolid[] = " 1.0 0.0 0.0 0.0 1.0 0.0 0.0 0.0 1.0\n";
    PutListKey(out, "Initial_Solid_Geometry");
    for (int i = 0; i < mesh->Cells->nNum; ++i) {
        char *at = FieldBytes(RowBegin(out), "        ", 8);
        at = FieldInt10(at, i);
        at = mesh->nDim == 2 ? FieldBytes(at, kFlat, sizeof kFlat - 1) : FieldBytes(at, kSolid, sizeof kSolid - 1);
        RowEnd(out, at);
    }
}

void PutCells(TextOut *out, const Mesh *mesh) {
    const Cells *cells = mesh->Cells;
    const CellNodeCounts counts = CountCellNodes(mesh);
    PutOpenNamed(out, "Cells", "AllCells");
    PutIntValue(out, "Cell_Number_Of_Faces   ", 0); // blanks that line up the five "=" belong to the keys
    PutIntValue(out, "Cell_Number_Of_Nodes   ", counts.nNodes);
    PutIntValue(out, "Cell_Number_Of_MatNodes", counts.nMatNodes);
    PutIntValue(out, "Cell_Number_Of_PreNodes", 0);
    PutIntValue(out, "Cell_Number_Of_VelNodes", 0);
    PutIntValue(out, "Number_Of_Cells", cells->nNum);
    PutConnectivity(out, "Cell_To_Node", cells->nNum, cells->i1NumNodes, cells->i2Conn);
    PutScalarList(out, "Cell_Type", cells->nNum, cells->i1Type);
    PutScalarList(out, "Cell_Tag", cells->nNum, cells->i1Tag);
    PutSolidGeometry(out, mesh);
    PutCloseNamed(out, "Cells", "AllCells");
}

void PutTaggedGroup(TextOut *out, const char *kind, const char *key, const GRnode *group) {
    PutOpenNamed(out, kind, group->c1Name);
    PutIntValue(out, key, group->iTag);
    PutCloseNamed(out, kind, group->c1Name);
}

void PutCellGroup(TextOut *out, const GRcell *group) {
    PutOpenNamed(out, "Cell Group", group->c1Name);
    PutIntValue(out, "CellTag", group->iTag);
    PutRealValue(out, "Minimum_Edge_Length  ", group->dMinEdge);
    PutRealValue(out, "Maximum_Edge_Length  ", group->dMaxEdge);
    PutRealValue(out, "Characteristic_length", group->dCharLen);
    PutCloseNamed(out, "Cell Group", group->c1Name);
}

// Each list from its head: the newest group of the store first.
void PutGroups(TextOut *out, const Mesh *mesh) {
    PutOpenTag(out, "Groups");
    for (const GRnode *group = mesh->GRnode; group != nullptr; group = group->next) {
        PutTaggedGroup(out, "Node Group", "NodeTag", group);
    }
    for (const GRface *group = mesh->GRface; group != nullptr; group = group->next) {
        PutTaggedGroup(out, "Face Group", "FaceTag", group);
    }
    for (const GRcell *group = mesh->GRcell; group != nullptr; group = group->next) {
        PutCellGroup(out, group);
    }
    PutCloseTag(out, "Groups");
}

void PutMesh(TextOut *out, const Mesh *mesh) {
    PutDimension(out, mesh);
    if (mesh->nDim == 2 || mesh->nDim == 3) {
        PutNodeGeometry(out, mesh);
    }
    PutOpenTag(out, "Connectivity");
    if (mesh->Faces->nNum > 0) {
        PutFaces(out, mesh->Faces);
    }
    if (mesh->Cells->nNum > 0) {
        PutCells(out, mesh);
    }
    PutCloseTag(out, "Connectivity");
    PutGroups(out, mesh);
}

// Lists of several arrays ---------------------------------------------------------------------------------

// Where their text goes.
struct ToText {
    TextOut *out;
    void operator()(const char *bytes, std::size_t size) const {
        PutBytes(out, bytes, size);
    }
};

struct ToStream {
    std::FILE *stream;
    void operator()(const char *bytes, std::size_t size) const {
        std::fwrite(bytes, 1, size, stream);
    }
};

template <std::size_t kArrays, class Put>
void PutArrays(const char *name, int n, const int *const (&arrays)[kArrays], Put put) {
    for (const char *part : {kKeyBefore, name, kKeyBehind, "\n"}) {
        put(part, std::strlen(part));
    }
    for (int i = 0; i < n; ++i) {
        char row[8 + (2 + kArrays) * kMostField + 1];
        char *at = FieldBytes(row, "        ", 8);
        at = FieldInt10(at, i);
        at = FieldInt10(at, static_cast<int>(kArrays));
        for (const int *array : arrays) {
            at = FieldInt10(at, array[i]);
        }
        at = FieldBytes(at, "\n", 1);
        put(row, static_cast<std::size_t>(at - row));
    }
}

} // namespace

void DumpKIVO() {
    TextOut out;
    if (!OpenText(&out, kFileName)) {
        std::printf("\n Error> cannot open file %s\n", kFileName);
        std::exit(kUnwritableStatus);
    }
    std::printf("\n  Dumping KIVO file mesh.input ...");
    if (const Mesh *mesh = GetCOM()) {
        PutMesh(&out, mesh);
    }
    CloseText(&out);
    std::printf(" done.");
}

bool AnyDumpFailed() {
    return TextOutputFailed();
}

void Output_INTArray2D(TextOut *stream, const char *name, int n, const int *a, const int *b) {
    PutArrays<2>(name, n, {a, b}, ToText{stream});
}

void Output_INTArray2D(std::FILE *stream, const char *name, int n, const int *a, const int *b) {
    PutArrays<2>(name, n, {a, b}, ToStream{stream});
}

void Output_INTArray3D(TextOut *stream, const char *name, int n, const int *a, const int *b, const int *c) {
    PutArrays<3>(name, n, {a, b, c}, ToText{stream});
}

void Output_INTArray3D(std::FILE *stream, const char *name, int n, const int *a, const int *b, const int *c) {
    PutArrays<3>(name, n, {a, b, c}, ToStream{stream});
}
