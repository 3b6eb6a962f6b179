// Reading the output files back.
#include "fuzz/meshfile.h"

#include "fuzz/oracle.h"

#include <cstdio>
#include <cstring>

namespace {

struct Cursor {
    const char *at;
    const char *end;
};

bool Follows(const Cursor *in, const char *text) {
    const std::size_t length = std::strlen(text);
    return static_cast<std::size_t>(in->end - in->at) >= length && std::memcmp(in->at, text, length) == 0;
}

bool Take(Cursor *in, const char *text) {
    if (!Follows(in, text)) {
        return false;
    }
    in->at += std::strlen(text);
    return true;
}

void Expect(Cursor *in, const char *text) {
    if (!Take(in, text)) {
        std::fprintf(stderr, "\nexpected \"%s\" at: %.60s\n", text, in->at);
        Require(false, "the format's words stand where they belong");
    }
}

// A field of a C format: blanks and a number, written back by the same format to the very same characters.
int TakeInt(Cursor *in, const char *format) {
    char *end;
    const long value = std::strtol(in->at, &end, 10);
    char field[64];
    const int length = std::snprintf(field, sizeof field, format, static_cast<int>(value));
    Require(end - in->at == length && std::memcmp(field, in->at, static_cast<std::size_t>(length)) == 0,
            "a whole number stands in its field");
    in->at = end;
    return static_cast<int>(value);
}

double TakeReal(Cursor *in, const char *format, int width) {
    Require(in->end - in->at >= width, "a number stands in its field");
    char field[64];
    std::memcpy(field, in->at, static_cast<std::size_t>(width));
    field[width] = '\0';
    char *end;
    const double value = std::strtod(field, &end);
    char again[64];
    std::snprintf(again, sizeof again, format, value);
    Require(*end == '\0' && std::strcmp(field, again) == 0, "a number stands in its field");
    in->at += width;
    return value;
}

double Real24(Cursor *in) {
    return TakeReal(in, "%24.15e", 24);
}

void IntLine(Cursor *in, const char *key, int *value) {
    Expect(in, "    ");
    Expect(in, key);
    Expect(in, " = ");
    *value = TakeInt(in, "%10d");
    Expect(in, "\n");
}

void ZeroLine(Cursor *in, const char *key) {
    int value;
    IntLine(in, key, &value);
    Require(value == 0, "faces, pressure and velocity nodes per cell are 0");
}

void RealLine(Cursor *in, const char *key) {
    Expect(in, "    ");
    Expect(in, key);
    Expect(in, " = ");
    Real24(in);
    Expect(in, "\n");
}

// Ten values to a line; the line end stands before each line.
std::vector<int> ScalarList(Cursor *in, const char *key, int n) {
    Expect(in, "    ");
    Expect(in, key);
    Expect(in, " = ");
    std::vector<int> values;
    for (int i = 0; i < n; ++i) {
        if (i % 10 == 0) {
            Expect(in, "\n        ");
        }
        values.push_back(TakeInt(in, "%10d"));
    }
    Expect(in, "\n");
    return values;
}

std::string TakeLine(Cursor *in) {
    const auto *end = static_cast<const char *>(std::memchr(in->at, '\n', static_cast<std::size_t>(in->end - in->at)));
    Require(end != nullptr, "every line has an end");
    const std::string line(in->at, end);
    in->at = end + 1;
    return line;
}

// One of the three position lists, as its text: the lists must be identical.
std::string PositionList(Cursor *in, const char *key, int nDim, int n) {
    Expect(in, "    ");
    Expect(in, key);
    Expect(in, " = \n");
    const char *first = in->at;
    for (int i = 0; i < n; ++i) {
        Expect(in, "        ");
        Require(TakeInt(in, "%10d") == i, "positions count up from 0");
        for (int k = 0; k < nDim; ++k) {
            Real24(in);
        }
        Expect(in, "\n");
    }
    return std::string(first, in->at);
}

void NodeGeometry(Cursor *in, MeshFile *mesh) {
    Expect(in, "<Node_Geometry>\n");
    RealLine(in, "Minimum Edge Charac");
    RealLine(in, "Minimum Edge Length");
    RealLine(in, "Maximum Edge Length");
    Expect(in, "  <Coordinates> AllNodes\n");
    IntLine(in, "Number_Of_Nodes", &mesh->nNodes);
    const std::string current = PositionList(in, "Current_Positions", mesh->nDim, mesh->nNodes);
    Require(PositionList(in, "Previous_Positions", mesh->nDim, mesh->nNodes) == current, "positions recur");
    Require(PositionList(in, "Initial_Positions", mesh->nDim, mesh->nNodes) == current, "positions recur");
    mesh->nodeTags = ScalarList(in, "Node_Tag", mesh->nNodes);
    for (const int flag : ScalarList(in, "IsOnBoundary", mesh->nNodes)) {
        Require(flag == 1, "every node is flagged as on the boundary");
    }
    Expect(in, "  </Coordinates> AllNodes\n</Node_Geometry>\n\n");
}

// Rows of positions; marks what they use. Returns each row's node count.
std::vector<int> Connectivity(Cursor *in, const char *key, int n, int nNodes, std::vector<bool> *used) {
    Expect(in, "    ");
    Expect(in, key);
    Expect(in, " = \n");
    std::vector<int> counts;
    for (int i = 0; i < n; ++i) {
        Expect(in, " ");
        Require(TakeInt(in, "%10d") == i, "positions count up from 0");
        const int count = TakeInt(in, "%5d");
        Require(count >= 1 && count <= 10, "an entry has 1 to 10 nodes");
        counts.push_back(count);
        for (int k = 0; k < count; ++k) {
            const int node = TakeInt(in, "%10d");
            Require(node >= -1 && node < nNodes, "connectivity names nodes of the mesh, or -1");
            if (node >= 0) {
                (*used)[static_cast<std::size_t>(node)] = true;
            }
        }
        Expect(in, "\n");
    }
    return counts;
}

int NodesOfType(int type) {
    return type == 3 ? 3 : type == 4 ? 6 : type == 5 ? 4 : type == 6 ? 10 : 0;
}

void FacesBlock(Cursor *in, MeshFile *mesh, std::vector<bool> *used, std::vector<int> *tags) {
    int width;
    Expect(in, "  <Faces> AllFaces\n");
    IntLine(in, "Face_Number_Of_Nodes", &width);
    IntLine(in, "Number_Of_Faces", &mesh->nFaces);
    Require(mesh->nFaces > 0, "a block of faces holds faces");
    int widest = 0;
    for (const int count : Connectivity(in, "Face_To_Node", mesh->nFaces, mesh->nNodes, used)) {
        Require(count == 2 || count == 3, "faces are lines or triangles");
        widest = count > widest ? count : widest;
    }
    Require(width == widest, "the faces' width is that of the widest");
    *tags = ScalarList(in, "Face_Tag", mesh->nFaces);
    Expect(in, "  </Faces> AllFaces\n");
}

void CheckCellKinds(const MeshFile *mesh, const std::vector<int> &types, const std::vector<int> &counts, int nNodes,
                    int nMatNodes) {
    bool has[7] = {};
    for (std::size_t i = 0; i < types.size(); ++i) {
        Require(types[i] >= 3 && types[i] <= 6 && counts[i] == NodesOfType(types[i]), "a cell has its type's nodes");
        has[types[i]] = true;
    }
    const bool flat = mesh->nDim == 2;
    const int wanted = flat ? (has[4] ? 6 : has[3] ? 3 : 0) : (has[6] ? 10 : has[5] ? 4 : 0);
    const int wantedMat = flat ? (has[4] ? 4 : has[3] ? 1 : 0) : (has[6] ? 8 : has[5] ? 1 : 0);
    Require(nNodes == wanted && nMatNodes == wantedMat, "nodes per cell follow from the types");
}

void CellsBlock(Cursor *in, MeshFile *mesh, std::vector<bool> *used, std::vector<int> *tags) {
    int nNodes;
    int nMatNodes;
    Expect(in, "  <Cells> AllCells\n");
    ZeroLine(in, "Cell_Number_Of_Faces   ");
    IntLine(in, "Cell_Number_Of_Nodes   ", &nNodes);
    IntLine(in, "Cell_Number_Of_MatNodes", &nMatNodes);
    ZeroLine(in, "Cell_Number_Of_PreNodes");
    ZeroLine(in, "Cell_Number_Of_VelNodes");
    IntLine(in, "Number_Of_Cells", &mesh->nCells);
    Require(mesh->nCells > 0, "a block of cells holds cells");
    const std::vector<int> counts = Connectivity(in, "Cell_To_Node", mesh->nCells, mesh->nNodes, used);
    const std::vector<int> types = ScalarList(in, "Cell_Type", mesh->nCells);
    CheckCellKinds(mesh, types, counts, nNodes, nMatNodes);
    *tags = ScalarList(in, "Cell_Tag", mesh->nCells);
    Expect(in, "    Initial_Solid_Geometry = \n");
    for (int i = 0; i < mesh->nCells; ++i) {
        Expect(in, "        ");
        Require(TakeInt(in, "%10d") == i, "positions count up from 0");
        Expect(in, mesh->nDim == 2 ? "   1.000000000000000e+00   0.000000000000000e+00"
                                     "   0.000000000000000e+00   1.000000000000000e+00\n"
                                   : " 1.0 0.0 0.0 0.0 1.0 0.0 0.0 0.0 1.0\n");
    }
    Expect(in, "  </Cells> AllCells\n");
}

// All groups of a kind; their tags are those of the list from its oldest to its newest, or the other way round.
int Groups(Cursor *in, const char *kind, const char *key, bool bLengths) {
    const std::string open = std::string("  <") + kind + "> ";
    int n = 0;
    int first = 0;
    int last = 0;
    while (Take(in, open.c_str())) {
        const std::string name = TakeLine(in);
        Require(name.size() <= 256, "a name has at most 256 characters");
        IntLine(in, key, &last);
        first = n == 0 ? last : first;
        Require(last == first - n, "tags count down to 1");
        if (bLengths) {
            RealLine(in, "Minimum_Edge_Length  ");
            RealLine(in, "Maximum_Edge_Length  ");
            RealLine(in, "Characteristic_length");
        }
        Expect(in, (std::string("  </") + kind + "> " + name + "\n").c_str());
        ++n;
    }
    Require(n == 0 || (first == n && last == 1), "tags count down to 1");
    return n;
}

void CheckTags(const std::vector<int> &tags, int least, int most) {
    for (const int tag : tags) {
        Require(tag >= least && tag <= most, "a tag is that of a group");
    }
}

} // namespace

MeshFile ReadMeshFile(const std::string &text) {
    MeshFile mesh{};
    Cursor in{text.data(), text.data() + text.size()};
    Expect(&in, "<Dimension>\n");
    mesh.nDim = Take(&in, "    Dimension = 2D\n") ? 2 : Take(&in, "    Dimension = 3D\n") ? 3 : 0;
    Expect(&in, "</Dimension>\n\n");
    if (mesh.nDim != 0) {
        NodeGeometry(&in, &mesh);
    }
    Expect(&in, "<Connectivity>\n");
    std::vector<bool> used(static_cast<std::size_t>(mesh.nNodes));
    std::vector<int> faceTags;
    std::vector<int> cellTags;
    if (Follows(&in, "  <Faces>")) {
        FacesBlock(&in, &mesh, &used, &faceTags);
    }
    if (Follows(&in, "  <Cells>")) {
        CellsBlock(&in, &mesh, &used, &cellTags);
    }
    for (const bool one : used) {
        Require(one, "every node is used by a cell or a face");
    }
    Expect(&in, "</Connectivity>\n\n<Groups>\n");
    mesh.nNodeGroups = Groups(&in, "Node Group", "NodeTag", false);
    mesh.nFaceGroups = Groups(&in, "Face Group", "FaceTag", false);
    mesh.nCellGroups = Groups(&in, "Cell Group", "CellTag", true);
    Expect(&in, "</Groups>\n\n");
    Require(in.at == in.end, "nothing follows the groups");
    CheckTags(mesh.nodeTags, 0, mesh.nNodeGroups);
    CheckTags(faceTags, 1, mesh.nFaceGroups);
    CheckTags(cellTags, 1, mesh.nCellGroups);
    return mesh;
}

namespace {

void CountLine(Cursor *in, const char *word, int n, const char *end) {
    Expect(in, word);
    Expect(in, " ");
    Require(TakeInt(in, "%d") == n, "a count is that of the list");
    Expect(in, end);
}

// Ten values to a line, with the line end behind the tenth.
void VTKList(Cursor *in, int n) {
    for (int k = 1; k <= n; ++k) {
        TakeInt(in, "%5d");
        if (k % 10 == 0) {
            Expect(in, "\n");
        }
    }
    Expect(in, "\n");
}

void VTKScalars(Cursor *in, const char *name, int n) {
    Expect(in, "SCALARS ");
    Expect(in, name);
    Expect(in, " int\nLOOKUP_TABLE default\n");
    VTKList(in, n);
}

int VTKCellRows(Cursor *in, bool bNodeSet, int nCells, int nPoints) {
    int total = 0;
    for (int i = 0; i < nCells; ++i) {
        const int count = TakeInt(in, bNodeSet ? "%10d" : "%5d");
        total += count + 1;
        for (int k = 0; k < count; ++k) {
            if (bNodeSet) {
                Expect(in, " ");
            }
            const int point = TakeInt(in, "%10d");
            Require(point >= -1 && point < nPoints, "a VTK cell names points of its file");
        }
        Expect(in, "\n");
    }
    return total;
}

} // namespace

void CheckVTKFile(const std::string &text, bool bNodeSet, int nPoints, int nCells) {
    Cursor in{text.data(), text.data() + text.size()};
    Expect(&in, "# vtk DataFile Version 3.0\nvtk output\nASCII\nDATASET UNSTRUCTURED_GRID\n");
    CountLine(&in, "POINTS", nPoints, " float\n");
    for (int i = 0; i < nPoints; ++i) {
        for (int k = 0; k < 3; ++k) {
            TakeReal(&in, "%15.7e", 15);
        }
        Expect(&in, "\n");
    }
    Expect(&in, "\n");
    CountLine(&in, "CELLS", nCells, " ");
    const int total = TakeInt(&in, "%d");
    Expect(&in, "\n");
    Require(VTKCellRows(&in, bNodeSet, nCells, nPoints) == total, "the size of the cells is their sum");
    Expect(&in, "\n");
    CountLine(&in, "CELL_TYPES", nCells, "\n");
    VTKList(&in, nCells);
    if (!bNodeSet) {
        CountLine(&in, "CELL_DATA", nCells, "\n");
        VTKScalars(&in, "CellTag", nCells);
        CountLine(&in, "POINT_DATA", nPoints, "\n");
        VTKScalars(&in, "NodeTag", nPoints);
        VTKScalars(&in, "OnB", nPoints);
    }
    Require(in.at == in.end, "nothing follows the last list");
}
