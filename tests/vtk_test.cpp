// The legacy VTK files.
#include "tests/support/capture.h"
#include "tests/support/meshes.h"

#include "output/DumpVTK.h"

#include <cerrno>
#include <climits>
#include <map>

namespace {

// Type code, VTK type, and the store column of each node written.
struct Family {
    int code;
    int vtkType;
    std::vector<int> map;
};

const Family kTable[] = {
    {3, 5, {0, 1, 2}},                       // triangle
    {4, 22, {0, 2, 4, 1, 3, 5}},             // quadratic triangle
    {5, 10, {0, 1, 2, 3}},                   // tetra
    {6, 24, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9}}, // quadratic tetra
    {19, 22, {0, 2, 4, 1, 3, 5}},            // quadratic triangle, the seventh node left out
    {20, 7, {0, 1, 2, 3, 4, 5}},             // polygon
    {22, 9, {0, 1, 2, 3}},                   // quad
    {31, 3, {0, 1}},                         // line
    {32, 5, {0, 1, 2}},                      // triangle
    {33, 9, {0, 1, 2, 3}},                   // quad
    {36, 13, {0, 2, 1, 3, 5, 4}},            // wedge
    {37, 12, {0, 1, 2, 3, 4, 5, 6, 7}},      // hexahedron
    {38, 13, {0, 4, 2, 6, 10, 8}},           // wedge of the corners
    {52, 9, {0, 1, 2, 3}},                   // quad
    {55, 12, {0, 1, 2, 3, 4, 5, 6, 7}},      // hexahedron
};

constexpr int kColumns = 15;

class VTK : public CleanStore {}; // its tables, too, are released with every file

// Column k holds 1000 + k, so that the row tells the columns.
void AddCellOfCode(int code) {
    int conn[kColumns], tags[kColumns] = {};
    for (int k = 0; k < kColumns; ++k) {
        conn[k] = 1000 + k;
    }
    COM_ArchCell(kColumns, code, 1, kColumns, conn, tags);
}

std::string Number(int value, int width) {
    char text[40];
    std::snprintf(text, sizeof text, "%*d", width, value);
    return text;
}

constexpr char kHead[] = "# vtk DataFile Version 3.0\nvtk output\nASCII\nDATASET UNSTRUCTURED_GRID\n";

// "_Cells.vtk" of one cell and no points.
std::string FileOfOneCell(const std::string &row, int size, const std::string &type) {
    return kHead + std::string("POINTS 0 float\n\nCELLS 1 ") + std::to_string(size + 1) + "\n" + row +
           "\n\nCELL_TYPES 1\n" + type + "\nCELL_DATA 1\nSCALARS CellTag int\nLOOKUP_TABLE default\n    1\n" +
           "POINT_DATA 0\nSCALARS NodeTag int\nLOOKUP_TABLE default\n\nSCALARS OnB int\nLOOKUP_TABLE default\n\n";
}

TEST_F(VTK, FamiliesFollowTheTableAndOtherCodesHaveNoNodesAndType0) {
    std::map<int, Family> families;
    for (int code = -1; code <= 100; ++code) {
        families[code] = {code, 0, {}};
    }
    for (const int code : {INT_MIN, INT_MAX, 101, 200}) {
        families[code] = {code, 0, {}};
    }
    for (const Family &family : kTable) {
        families[family.code] = family;
    }
    for (const auto &[code, family] : families) {
        AddCellOfCode(code);
        EXPECT_EQ(Printed(DumpVTK), "\n  Dumping VTK file _Cells.vtk ... done.");
        const int size = static_cast<int>(family.map.size());
        std::string row = Number(size, 5);
        for (const int column : family.map) {
            row += Number(1000 + column, 10);
        }
        EXPECT_EQ(fake::GetFile("_Cells.vtk"), FileOfOneCell(row, size, Number(family.vtkType, 5)))
            << "type code " << code;
        FreeCOM();
    }
}

void MakeMesh(const std::vector<At> &points) {
    AddMesh(3, points);
    std::fill_n(GetCOM()->Nodes->i1OnB, GetCOM()->Nodes->nNum, 1);
}

TEST_F(VTK, CellsAndFacesByteForByte) {
    MakeMesh({{0, 0, 0}, {1, 0.5, -0.25}, {1e10, 1e-10, 1.0 / 3}});
    GetCOM()->Nodes->i1Tag[1] = 123456;
    GetCOM()->Nodes->i1OnB[2] = 0;
    AddCell(kTRI3, 7, {0, 1, 2});
    AddCell(kTRI6, 8, {0, 1, 2, 2, 1, 0});
    AddFace(kS1D2, 5, {2, 0});
    EXPECT_EQ(Printed(DumpVTK), "\n  Dumping VTK file _Cells.vtk ... done.\n  Dumping VTK file _Faces.vtk ... done.");
    EXPECT_EQ(fake::FileNames(), (std::vector<std::string>{"_Cells.vtk", "_Faces.vtk"}));
    const std::string points = kHead + std::string("POINTS 3 float\n"
                                                   "  0.0000000e+00  0.0000000e+00  0.0000000e+00\n"
                                                   "  1.0000000e+00  5.0000000e-01 -2.5000000e-01\n"
                                                   "  1.0000000e+10  1.0000000e-10  3.3333333e-01\n"
                                                   "\n");
    const std::string pointData = "POINT_DATA 3\nSCALARS NodeTag int\nLOOKUP_TABLE default\n    0123456    0\n"
                                  "SCALARS OnB int\nLOOKUP_TABLE default\n    1    1    0\n";
    EXPECT_EQ(fake::GetFile("_Cells.vtk"), points +
                                               "CELLS 2 11\n"
                                               "    3         0         1         2\n"
                                               "    6         0         2         1         1         2         0\n"
                                               "\n"
                                               "CELL_TYPES 2\n    5   22\n"
                                               "CELL_DATA 2\nSCALARS CellTag int\nLOOKUP_TABLE default\n    7    8\n" +
                                               pointData);
    EXPECT_EQ(fake::GetFile("_Faces.vtk"), points +
                                               "CELLS 1 3\n"
                                               "    2         2         0\n"
                                               "\n"
                                               "CELL_TYPES 1\n    3\n"
                                               "CELL_DATA 1\nSCALARS CellTag int\nLOOKUP_TABLE default\n    5\n" +
                                               pointData);
}

TEST_F(VTK, ListsOfTenAreFollowedByAnEmptyLine) {
    for (const int n : {9, 10, 11, 20}) {
        MakeMesh({});
        for (int i = 0; i < n; ++i) {
            AddCell(31, 0, {0, 0});
        }
        Printed(DumpVTK);
        std::string list;
        for (int k = 1; k <= n; ++k) {
            list += std::string("    3") + (k % 10 == 0 ? "\n" : "");
        }
        const std::string file = fake::GetFile("_Cells.vtk");
        const std::string types = "CELL_TYPES " + std::to_string(n) + "\n" + list + "\nCELL_DATA";
        EXPECT_NE(file.find(types), std::string::npos) << n;
        FreeCOM();
    }
}

TEST_F(VTK, WithoutAMeshNothingIsWrittenOrPrinted) {
    EXPECT_EQ(Printed(DumpVTK), "");
    EXPECT_TRUE(fake::FileNames().empty());
}

TEST_F(VTK, WithoutCellsAndFacesOnlyNodeSetsAreWritten) {
    MakeMesh({{1, 2, 3}});
    COM_ArchGRnode(1, "A");
    EXPECT_EQ(Printed(DumpVTK), "\n  Dumping VTK file _NSET_A.vtk ... done.");
    EXPECT_EQ(fake::FileNames(), (std::vector<std::string>{"_NSET_A.vtk"}));
}

// Node sets --------------------------------------------------------------------------------------------

std::string NodeSetFile(int n, const std::string &points, const std::string &cells, const std::string &types) {
    const std::string count = std::to_string(n);
    return kHead + std::string("POINTS ") + count + " float\n" + points + "\nCELLS " + count + " " +
           std::to_string(2 * n) + "\n" + cells + "\nCELL_TYPES " + count + "\n" + types + "\n";
}

TEST_F(VTK, NodeSetsHoldTheNodesOfTheirTag) {
    MakeMesh({{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {3, 0, 0}});
    for (const int node : {1, 2, 3}) {
        GetCOM()->Nodes->i1Tag[node] = 5;
    }
    COM_ArchGRnode(5, "FULL");
    COM_ArchGRnode(6, "EMPTY");
    EXPECT_EQ(Printed(DumpVTK),
              "\n  Dumping VTK file _NSET_EMPTY.vtk ... done.\n  Dumping VTK file _NSET_FULL.vtk ... done.");
    EXPECT_EQ(fake::GetFile("_NSET_EMPTY.vtk"), NodeSetFile(0, "", "", ""));
    EXPECT_EQ(fake::GetFile("_NSET_FULL.vtk"), NodeSetFile(3,
                                                           "  1.0000000e+00  0.0000000e+00  0.0000000e+00\n"
                                                           "  2.0000000e+00  0.0000000e+00  0.0000000e+00\n"
                                                           "  3.0000000e+00  0.0000000e+00  0.0000000e+00\n",
                                                           "         1          0\n"
                                                           "         1          1\n"
                                                           "         1          2\n",
                                                           "    1    1    1"));
}

TEST_F(VTK, GroupsOfOneTagHoldTheSameNodesAndTag0TheUntagged) {
    MakeMesh({{0, 0, 0}, {1, 0, 0}});
    GetCOM()->Nodes->i1Tag[1] = 5;
    COM_ArchGRnode(5, "A");
    COM_ArchGRnode(0, "ZERO");
    COM_ArchGRnode(5, "B");
    Printed(DumpVTK);
    EXPECT_EQ(fake::GetFile("_NSET_A.vtk"), fake::GetFile("_NSET_B.vtk"));
    EXPECT_EQ(fake::GetFile("_NSET_A.vtk"),
              NodeSetFile(1, "  1.0000000e+00  0.0000000e+00  0.0000000e+00\n", "         1          0\n", "    1"));
    EXPECT_EQ(fake::GetFile("_NSET_ZERO.vtk"),
              NodeSetFile(1, "  0.0000000e+00  0.0000000e+00  0.0000000e+00\n", "         1          0\n", "    1"));
}

TEST_F(VTK, NodeSetsOfAMeshWithoutNodesAreEmpty) {
    COM_ArchGRnode(1, "A");
    Printed(DumpVTK);
    EXPECT_EQ(fake::GetFile("_NSET_A.vtk"), NodeSetFile(0, "", "", ""));
}

TEST_F(VTK, OfEqualNamesTheOlderGroupsFileRemains) {
    MakeMesh({{0, 0, 0}, {1, 0, 0}, {2, 0, 0}});
    GetCOM()->Nodes->i1Tag[0] = 1;
    GetCOM()->Nodes->i1Tag[1] = GetCOM()->Nodes->i1Tag[2] = 2;
    COM_ArchGRnode(1, "A");
    COM_ArchGRnode(2, "A");
    Printed(DumpVTK);
    EXPECT_NE(fake::GetFile("_NSET_A.vtk").find("POINTS 1 float\n"), std::string::npos);
}

TEST_F(VTK, AFileThatCannotBeCreatedIsToldAndTheNextOneFollows) {
    MakeMesh({{0, 0, 0}});
    AddCell(kTRI3, 1, {0, 0, 0});
    COM_ArchGRnode(1, "A");
    COM_ArchGRnode(2, "B/C");
    fake::RefuseToOpen("_NSET_B/C.vtk", ENOENT);
    fake::RefuseToOpen("_Cells.vtk", EACCES);
    EXPECT_EQ(Printed(DumpVTK), "\n  Dumping VTK file _Cells.vtk ...\n Error> cannot open file _Cells.vtk\n"
                                "\n  Dumping VTK file _NSET_B/C.vtk ...\n Error> cannot open file _NSET_B/C.vtk\n"
                                "\n  Dumping VTK file _NSET_A.vtk ... done.");
    EXPECT_EQ(fake::FileNames(), (std::vector<std::string>{"_NSET_A.vtk"}));
}

TEST_F(VTK, FullDisksAreToldFileByFile) {
    MakeMesh({{0, 0, 0}});
    COM_ArchGRnode(1, "A");
    COM_ArchGRnode(2, "B");
    fake::FailWritesAfter(0);
    const std::string errors = PrintedToErrors([] {
        EXPECT_EQ(Printed(DumpVTK),
                  "\n  Dumping VTK file _NSET_B.vtk ... done.\n  Dumping VTK file _NSET_A.vtk ... done.");
    });
    EXPECT_EQ(errors.find("KIVOm: cannot write _NSET_B.vtk: "), 0u);
    EXPECT_NE(errors.find("KIVOm: cannot write _NSET_A.vtk: "), std::string::npos);
    EXPECT_EQ(fake::WriteFaults(), 2);
}

} // namespace
