// Reading "mesh.input": what the program wrote is read whole, everything else is refused at its line.
#include "meshfile/fields.h"
#include "meshfile/meshfile.h"
#include "tests/support/printmesh.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <new>
#include <random>

#include <unistd.h>

namespace fs = std::filesystem;

// The allocation that fails, counted from 1; 0 for none.
static int failingAllocation = 0;

// Not inlined: where only one of a pair is, the compiler takes it for a mismatch.
[[gnu::noinline]] void *operator new(std::size_t size) {
    if (failingAllocation > 0 && --failingAllocation == 0) {
        throw std::bad_alloc();
    }
    if (void *block = std::malloc(size > 0 ? size : 1)) {
        return block;
    }
    throw std::bad_alloc();
}

[[gnu::noinline]] void operator delete(void *block) noexcept {
    std::free(block);
}

[[gnu::noinline]] void operator delete(void *block, std::size_t) noexcept {
    std::free(block);
}

namespace {

using Ints = std::vector<int>;

std::string Text(const fs::path &path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// A file of 55 lines that has everything: two triangles, two faces, one group of each kind.
const char kSmall[] = R"(<Dimension>
    Dimension = 2D
</Dimension>

<Node_Geometry>
    Minimum Edge Charac =    5.000000000000000e-01
    Minimum Edge Length =    1.000000000000000e+00
    Maximum Edge Length =    1.414213562373095e+00
  <Coordinates> AllNodes
    Number_Of_Nodes =          3
    Current_Positions = 
                 0   0.000000000000000e+00  -1.000000000000000e-01
                 1                     inf                    -nan
                 2   9.999999999999999e+22  1.797693134862316e+308
    Previous_Positions = 
                 0   0.000000000000000e+00  -1.000000000000000e-01
                 1                     inf                    -nan
                 2   9.999999999999999e+22  1.797693134862316e+308
    Initial_Positions = 
                 0   0.000000000000000e+00  -1.000000000000000e-01
                 1                     inf                    -nan
                 2   9.999999999999999e+22  1.797693134862316e+308
    Node_Tag = 
                 1         0         7
    IsOnBoundary = 
                 1         0         1
  </Coordinates> AllNodes
</Node_Geometry>

<Connectivity>
  <Faces> AllFaces
    Face_Number_Of_Nodes =          2
    Number_Of_Faces =          2
    Face_To_Node = 
          0    2         0         1
          1    1        -1
    Face_Tag = 
                 1         1
  </Faces> AllFaces
  <Cells> AllCells
    Cell_Number_Of_Faces    =          0
    Cell_Number_Of_Nodes    =          3
    Cell_Number_Of_MatNodes =          1
    Cell_Number_Of_PreNodes =          0
    Cell_Number_Of_VelNodes =          0
    Number_Of_Cells =          2
    Cell_To_Node = 
          0    3         0         1         2
          1    0
    Cell_Type = 
                 3        52
    Cell_Tag = 
                 1        -1
    Initial_Solid_Geometry = 
                 0   1.000000000000000e+00   0.000000000000000e+00   0.000000000000000e+00   1.000000000000000e+00
                 1   1.000000000000000e+00   0.000000000000000e+00   0.000000000000000e+00   1.000000000000000e+00
  </Cells> AllCells
</Connectivity>

<Groups>
  <Node Group> LEFT
    NodeTag =          1
  </Node Group> LEFT
  <Face Group> 
    FaceTag = 2147483647
  </Face Group> 
  <Cell Group> A B
    CellTag = -999999999
    Minimum_Edge_Length   =    1.000000000000000e+00
    Maximum_Edge_Length   =    2.000000000000000e+00
    Characteristic_length =    5.000000000000000e-01
  </Cell Group> A B
</Groups>

)";

// The small file with one line, counted from 1, in other words.
std::string Edited(int line, const std::string &words) {
    std::string text = kSmall;
    std::size_t at = 0;
    for (int i = 1; i < line; ++i) {
        at = text.find('\n', at) + 1;
    }
    return text.replace(at, text.find('\n', at) - at, words);
}

std::string Refusal(const std::string &text) {
    return meshfile::Describe(meshfile::ReadText(text).error);
}

// A file of this process's own, gone with it.
struct Scratch {
    const fs::path path = fs::path(testing::TempDir()) / ("meshfile_test." + std::to_string(getpid()));
    ~Scratch() {
        std::error_code ignored;
        fs::remove(path, ignored);
    }
};

std::string Written(const std::string &text) {
    static const Scratch scratch;
    std::ofstream(scratch.path, std::ios::binary) << text;
    return scratch.path.string();
}

TEST(MeshFile, EveryValueComesInItsPlace) {
    const meshfile::Result result = meshfile::ReadText(kSmall);
    ASSERT_EQ(meshfile::Describe(result.error), "");
    const meshfile::Mesh &mesh = result.mesh;
    EXPECT_FALSE(mesh.isEmptyFile);
    EXPECT_EQ(mesh.dimension, 2);
    EXPECT_EQ(mesh.lengths.characteristic, 0.5);
    EXPECT_EQ(mesh.lengths.shortestEdge, 1.0);
    EXPECT_EQ(mesh.lengths.longestEdge, 1.414213562373095);
    ASSERT_EQ(mesh.nodes.Count(), 3u);
    EXPECT_EQ(mesh.nodes.x, (std::vector<double>{0.0, std::numeric_limits<double>::infinity(), 1e23}));
    EXPECT_EQ(mesh.nodes.y[0], -0.1);
    EXPECT_TRUE(std::isnan(mesh.nodes.y[1]) && std::signbit(mesh.nodes.y[1]));
    EXPECT_EQ(mesh.nodes.y[2], std::numeric_limits<double>::max());
    EXPECT_TRUE(mesh.nodes.z.empty());
    EXPECT_EQ(mesh.nodes.tags, (Ints{1, 0, 7}));
    EXPECT_EQ(mesh.nodes.onBoundary, (Ints{1, 0, 1}));
    EXPECT_EQ(mesh.faces.width, 2);
    EXPECT_EQ(mesh.faces.rows.first, (std::vector<std::size_t>{0, 2, 3}));
    EXPECT_EQ(mesh.faces.rows.nodes, (Ints{0, 1, -1}));
    EXPECT_EQ(mesh.faces.tags, (Ints{1, 1}));
    EXPECT_EQ(mesh.cells.numberOfFaces, 0);
    EXPECT_EQ(mesh.cells.numberOfNodes, 3);
    EXPECT_EQ(mesh.cells.numberOfMaterialNodes, 1);
    EXPECT_EQ(mesh.cells.rows.Count(), 2u);
    EXPECT_EQ(mesh.cells.rows.Width(0), 3u);
    EXPECT_EQ(mesh.cells.rows.Row(0)[2], 2);
    EXPECT_EQ(mesh.cells.rows.Width(1), 0u);
    EXPECT_EQ(mesh.cells.types, (Ints{3, 52}));
    EXPECT_EQ(mesh.cells.tags, (Ints{1, -1}));
    ASSERT_EQ(mesh.nodeGroups.size() + mesh.faceGroups.size() + mesh.cellGroups.size(), 3u);
    EXPECT_EQ(mesh.nodeGroups[0].name, "LEFT");
    EXPECT_EQ(mesh.faceGroups[0].name, "");
    EXPECT_EQ(mesh.faceGroups[0].tag, 2147483647);
    EXPECT_EQ(mesh.cellGroups[0].name, "A B");
    EXPECT_EQ(mesh.cellGroups[0].tag, -999999999);
    EXPECT_EQ(mesh.cellGroups[0].lengths.shortestEdge, 1.0);
    EXPECT_EQ(mesh.cellGroups[0].lengths.longestEdge, 2.0);
    EXPECT_EQ(mesh.cellGroups[0].lengths.characteristic, 0.5);
    EXPECT_EQ(PrintMesh(mesh), kSmall);
}

TEST(MeshFile, WhatTheProgramWroteIsReadWhole) {
    int n = 0;
    for (const auto &entry : fs::recursive_directory_iterator(KIVOM_CASES)) {
        if (entry.path().filename() == "mesh.input") {
            const meshfile::Result result = meshfile::Read(entry.path().string(), n % 3 == 0 ? 1 : 4096);
            EXPECT_EQ(meshfile::Describe(result.error), "") << entry.path();
            EXPECT_EQ(PrintMesh(result.mesh), Text(entry.path())) << entry.path();
            ++n;
        }
    }
    EXPECT_GT(n, 100);
}

TEST(MeshFile, AnEmptyFileIsTheMeshOfARunThatReadNothing) {
    const meshfile::Result result = meshfile::ReadText("");
    EXPECT_TRUE(result.Ok());
    EXPECT_TRUE(result.mesh.isEmptyFile);
    EXPECT_TRUE(meshfile::Read(Written("")).mesh.isEmptyFile);
}

TEST(MeshFile, AMeshWithoutDimensionHasNoNodesButMayHaveCells) {
    const std::string head = "<Dimension>\n</Dimension>\n\n<Connectivity>\n";
    const std::string tail = "</Connectivity>\n\n<Groups>\n</Groups>\n\n";
    EXPECT_EQ(Refusal(head + tail), "");
    const std::string cell = "  <Cells> AllCells\n    Cell_Number_Of_Faces    =          0\n"
                             "    Cell_Number_Of_Nodes    =          4\n    Cell_Number_Of_MatNodes =          1\n"
                             "    Cell_Number_Of_PreNodes =          0\n    Cell_Number_Of_VelNodes =          0\n"
                             "    Number_Of_Cells =          1\n    Cell_To_Node = \n          0    1        -1\n"
                             "    Cell_Type = \n                 5\n    Cell_Tag = \n                 1\n"
                             "    Initial_Solid_Geometry = \n"
                             "                 0 1.0 0.0 0.0 0.0 1.0 0.0 0.0 0.0 1.0\n  </Cells> AllCells\n";
    EXPECT_EQ(Refusal(head + cell + tail), "");
}

TEST(MeshFile, EveryCoordinateMustBeTheSameInAllThreeLists) {
    const std::string row =
        "                 0   1.000000000000000e+00   2.000000000000000e+00   3.000000000000000e+00\n";
    const std::string value = " =    1.000000000000000e+00\n";
    const std::string head = "<Dimension>\n    Dimension = 3D\n</Dimension>\n\n<Node_Geometry>\n"
                             "    Minimum Edge Charac" +
                             value + "    Minimum Edge Length" + value + "    Maximum Edge Length" + value +
                             "  <Coordinates> AllNodes\n"
                             "    Number_Of_Nodes =          1\n    Current_Positions = \n" +
                             row + "    Previous_Positions = \n";
    const std::string tail = "    Initial_Positions = \n" + row +
                             "    Node_Tag = \n                 0\n    IsOnBoundary = \n                 1\n"
                             "  </Coordinates> AllNodes\n</Node_Geometry>\n\n"
                             "<Connectivity>\n</Connectivity>\n\n<Groups>\n</Groups>\n\n";
    EXPECT_EQ(Refusal(head + row + tail), "");
    for (const char digit : {'1', '2', '3'}) {
        std::string other = row;
        other[other.find(std::string(1, digit) + ".")] = '4';
        EXPECT_EQ(Refusal(head + other + tail), "line 14: the position is another than in Current_Positions");
    }
}

TEST(MeshFile, EveryTruncationIsRefused) {
    const std::string text = kSmall;
    for (std::size_t size = 1; size < text.size(); ++size) {
        const meshfile::Result result = meshfile::ReadText(text.substr(0, size));
        const auto ends = std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(size), '\n');
        ASSERT_EQ(result.error.text, "the file ends too early") << size;
        ASSERT_EQ(result.error.line, ends + 1) << size;
    }
}

// No byte of the file can be another unnoticed: whatever is accepted prints back as it was.
TEST(MeshFile, EveryOtherByteIsRefusedOrReadAsItStands) {
    std::string text = kSmall;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const char kept = text[at];
        for (const char other : {'\0', '\n', ' ', '-', '0', '1', '9', 'e', '\xff'}) {
            text[at] = other;
            const meshfile::Result result = meshfile::ReadText(text);
            ASSERT_TRUE(!result.Ok() || PrintMesh(result.mesh) == text) << at << " " << other;
        }
        text[at] = kept;
    }
}

struct Departure {
    int line;
    const char *words;
    const char *refusal;
};

TEST(MeshFile, TheFirstDepartureIsNamedWithItsLine) {
    const Departure departures[] = {
        {1, "<dimension>", "line 1: \"<Dimension>\" does not stand where it should"},
        {1, "<Dimension> ", "line 1: the line does not end where it should"},
        {1, "<Dimension>\r", "line 1: the line does not end where it should"},
        {2, "    Dimension = 4D", "line 2: the dimension is neither 2D nor 3D"},
        {2, "    Dimension = 3D", "line 12: no number as \"%24.15e\" writes it"},
        {4, " ", "line 4: the line does not end where it should"},
        {6, "    Minimum Edge Charac =     5.00000000000000e-01", "line 6: no number as \"%24.15e\" writes it"},
        {6, "    Minimum Edge Charac =   1.900000000000000e+001", "line 6: no number as \"%24.15e\" writes it"},
        {7, "    Minimum Edge Length =    9.007199254740993e+15", "line 7: no number as \"%24.15e\" writes it"},
        {10, "    Number_Of_Nodes =         -1", "line 10: Number_Of_Nodes is below 0"},
        {10, "    Number_Of_Nodes = 3", "line 10: no whole number at the right of 10 characters"},
        {10, "    Number_Of_Nodes = 2147483647", "line 15: \"        \" does not stand where it should"},
        {11, "    Current_Positions =", "line 11: \" = \" does not stand where it should"},
        {13, "                 2                     inf                    -nan",
         "line 13: the row of 1 is numbered 2"},
        {16, "                 0  -0.000000000000000e+00  -1.000000000000000e-01",
         "line 16: the position is another than in Current_Positions"},
        {21, "                 1                     inf                     nan",
         "line 21: the position is another than in Current_Positions"},
        {24, "                 1         0", "line 24: no whole number at the right of 10 characters"},
        {24, "                 1         0         7         7", "line 24: the line does not end where it should"},
        {26, "                 1         0        01", "line 26: no whole number at the right of 10 characters"},
        {32, "    Face_Number_Of_Nodes =          1", "line 35: the row's number of nodes is not 0 to 1"},
        {32, "    Face_Number_Of_Nodes =         -1", "line 32: Face_Number_Of_Nodes is below 0"},
        {33, "    Number_Of_Faces =          0", "line 33: Number_Of_Faces is below 1"},
        {35, "          0   -2         0         1", "line 35: the row's number of nodes is not 0 to 2"},
        {35, "          0    2         02147483648", "line 35: no whole number at the right of 10 characters"},
        {36, "          1    1        -0", "line 36: no whole number at the right of 10 characters"},
        {41, "    Cell_Number_Of_Faces    =          1", "line 41: Cell_Number_Of_Faces    is not 0"},
        {42, "    Cell_Number_Of_Nodes    =          6",
         "line 42: the nodes and material nodes of a cell are not those of the cells' types"},
        {45, "    Cell_Number_Of_VelNodes =          3", "line 45: Cell_Number_Of_VelNodes is not 0"},
        {46, "    Number_Of_Cells =          0", "line 46: Number_Of_Cells is below 1"},
        {51, "                 3", "line 51: no whole number at the right of 10 characters"},
        {56, "                 1 1.0 0.0 0.0 0.0 1.0 0.0 0.0 0.0 1.0",
         "line 56: \"   1.000000000000000e+00   0.000000000000000e+00   0.000000000000000e+00"
         "   1.000000000000000e+00\" does not stand where it should"},
        {61, "  <Face Group> LEFT", "line 62: \"FaceTag\" does not stand where it should"},
        {63, "  </Node Group> RIGHT", "line 63: the group is closed by another name"},
        {73, "<Groups>", "line 73: \"</Groups>\" does not stand where it should"},
        {74, "\n", "line 75: more text behind the end of the mesh"},
    };
    for (const Departure &departure : departures) {
        EXPECT_EQ(Refusal(Edited(departure.line, departure.words)), departure.refusal);
    }
}

TEST(MeshFile, TheBlockCutsAnyWhere) {
    for (std::size_t size = 128; size < 256; ++size) {
        EXPECT_EQ(PrintMesh(meshfile::Read(Written(kSmall), size).mesh), kSmall);
    }
    EXPECT_EQ(meshfile::Describe(meshfile::Read(Written(Edited(63, "")), 128).error),
              "line 63: \"  </Node Group> \" does not stand where it should");
}

TEST(MeshFile, ALongNameIsReadThroughManyBlocks) {
    const std::string name(100000, 'n');
    const meshfile::Result result =
        meshfile::Read(Written(Edited(61, "  <Node Group> " + name)), 128); // closed by "LEFT"
    EXPECT_EQ(result.error.line, 63);
    EXPECT_EQ(result.error.text, "the group is closed by another name");
}

TEST(MeshFile, WhatCannotBeReadIsSaid) {
    EXPECT_EQ(meshfile::Describe(meshfile::Read("/no such/mesh.input").error),
              "cannot be opened: No such file or directory");
    EXPECT_EQ(meshfile::Describe(meshfile::Read(testing::TempDir()).error), "cannot be read: Is a directory");
    EXPECT_FALSE(meshfile::Read(testing::TempDir()).mesh.isEmptyFile);
}

TEST(MeshFile, EveryAllocationMayFail) {
    const std::string path = Written(kSmall);
    int n = 0;
    for (bool isShort = true; isShort; ++n) {
        failingAllocation = n + 1;
        const meshfile::Result result = n % 2 == 0 ? meshfile::Read(path) : meshfile::ReadText(kSmall);
        isShort = failingAllocation == 0; // it was reached
        failingAllocation = 0;
        EXPECT_EQ(meshfile::Describe(result.error), isShort ? "out of memory" : "") << n;
    }
    EXPECT_GT(n, 10);
}

// Any number: the field that the C library writes is taken for the very value whose text it is, and a neighbour in the
// last digit is taken only where the C library would write it. (Chance does not meet the powers of ten.)
TEST(MeshFile, NumbersAreThoseOfTheCLibrary) {
    std::mt19937_64 random(1);
    for (int i = 0; i < 200000; ++i) {
        double value;
        std::uint64_t bits = random();
        if (i % 2 == 0) { // half of them between 1e-5 and 1e5
            bits = (bits & 0x800fffffffffffffu) | (std::uint64_t{1006 + random() % 34} << 52);
        }
        std::memcpy(&value, &bits, sizeof value);
        char field[64];
        std::snprintf(field, sizeof field, "%24.15e", value);
        for (int step = 0; step < 2; ++step) {
            char *const last = std::strchr(field, 'e');
            double found = 0;
            const bool isTaken = meshfile::RealField(field, &found);
            char again[64];
            std::snprintf(again, sizeof again, "%24.15e", std::strtod(field, nullptr));
            ASSERT_EQ(isTaken, std::strcmp(again, field) == 0) << field;
            if (isTaken && !std::isnan(value)) {
                ASSERT_EQ(found, std::strtod(field, nullptr)) << field;
            }
            if (last == nullptr) {
                break;
            }
            last[-1] = last[-1] == '9' ? '0' : static_cast<char>(last[-1] + 1);
        }
    }
}

// The double nearest to a power of ten may be written as the number before it; the next double is then written as the
// power.
TEST(MeshFile, PowersOfTenAreTakenForTheDoubleThatIsWrittenSo) {
    int nBeside = 0;
    for (int e = -307; e <= 308; ++e) {
        char field[64];
        std::snprintf(field, sizeof field,
                      e > -100 && e < 100 ? "   1.000000000000000e%+03d" : "  1.000000000000000e%+04d", e);
        double value = 0;
        ASSERT_TRUE(meshfile::RealField(field, &value)) << field;
        char again[64];
        std::snprintf(again, sizeof again, "%24.15e", value);
        ASSERT_STREQ(again, field);
        nBeside += value == std::strtod(field, nullptr) ? 0 : 1;
    }
    EXPECT_GT(nBeside, 0); // 1e23
}

} // namespace
