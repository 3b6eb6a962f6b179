// Number fields, text files and the solver's mesh file.
#include "tests/support/capture.h"
#include "tests/support/meshes.h"
#include "tests/support/plain/plain.h"

#include "output/DumpKIVO.h"
#include "output/textout.h"
#include "support/frame.h"

#include <cerrno>
#include <cfloat>
#include <climits>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>

#include <unistd.h>

namespace {

// Fields -----------------------------------------------------------------------------------------------

template <class Lay> std::string Laid(Lay lay) {
    char text[64];
    return std::string(text, lay(text));
}

void ExpectReal(double value) {
    ASSERT_EQ(Laid([value](char *at) { return FieldReal24(at, value); }), PlainField("%24.15e", value));
    ASSERT_EQ(Laid([value](char *at) { return FieldReal15(at, value); }), PlainField("%15.7e", value));
}

double FromBits(std::uint64_t bits) {
    double value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

// The value, its neighbours, and the same with the other sign.
void ExpectAround(double value) {
    for (const double near : {value, std::nextafter(value, -HUGE_VAL), std::nextafter(value, HUGE_VAL)}) {
        ExpectReal(near);
        ExpectReal(-near);
    }
}

TEST(Fields, OfZerosExtremesInfinitiesAndNaNs) {
    for (const double value : {0.0, 1.0, DBL_MAX, DBL_MIN, DBL_TRUE_MIN, DBL_EPSILON, 1 / 3.0, 0.1, 1e15, 1e16}) {
        ExpectAround(value);
    }
    ExpectReal(-0.0);
    ExpectReal(HUGE_VAL);
    ExpectReal(-HUGE_VAL);
    for (const std::uint64_t bits : {0x7ff8000000000000u, 0xfff8000000000000u, 0x7ff0000000000001u, 0xfff0000000000001u,
                                     0x7fffffffffffffffu, 0xffffffffffffffffu}) {
        ExpectReal(FromBits(bits));
    }
}

TEST(Fields, OfPowersOfTwoAndTen) {
    for (int exponent = -1074; exponent <= 1023; ++exponent) {
        ExpectAround(std::ldexp(1.0, exponent));
    }
    for (int exponent = -323; exponent <= 308; ++exponent) {
        ExpectAround(std::strtod(("1e" + std::to_string(exponent)).c_str(), nullptr));
    }
}

TEST(Fields, OfSubnormals) {
    for (std::uint64_t bits = 1; bits < (std::uint64_t{1} << 52); bits += 1 + bits / 3) {
        ExpectReal(FromBits(bits));
    }
}

TEST(Fields, HalfWayBetweenTwoTexts) {
    // Exactly half a unit of the last digit shown: 7 digits behind the point for binary fractions n / 2^9 (nine
    // places), 15 digits for 17-digit whole numbers that end in 5.
    for (int n = 1; n < 5120; n += 2) {
        ExpectReal(n / 512.0);
        ExpectReal(n / 256.0);
        ExpectReal(1.0 + n / 131072.0);
    }
    for (std::uint64_t n = 10000000000000005u; n < 10000000000010000u; n += 10) { // odd: beyond 2^53 only even ones fit
        ExpectReal(static_cast<double>(n) / 2);
        ExpectReal(static_cast<double>(n - 5 + 2));
    }
    for (std::uint64_t n = 100000005; n < 100100000; n += 10) {
        ExpectReal(static_cast<double>(n));
    }
    EXPECT_EQ(Laid([](char *at) { return FieldReal15(at, 100000005.0); }), "  1.0000000e+08") << "ties go to even";
    EXPECT_EQ(Laid([](char *at) { return FieldReal15(at, 100000015.0); }), "  1.0000002e+08");
}

TEST(Fields, OfWholeNumbers) {
    std::vector<int> values{0, INT_MAX, INT_MIN, INT_MIN + 1};
    for (long long power = 1; power <= 10000000000; power *= 10) {
        for (const long long near : {power - 1, power, power + 1}) {
            if (near <= INT_MAX) {
                values.push_back(static_cast<int>(near));
                values.push_back(static_cast<int>(-near));
            }
        }
    }
    std::mt19937 random(11);
    for (int i = 0; i < 200000; ++i) {
        values.push_back(static_cast<int>(random() >> (random() % 32)));
    }
    for (const int value : values) {
        ASSERT_EQ(Laid([value](char *at) { return FieldInt10(at, value); }), PlainField("%10d", value));
        ASSERT_EQ(Laid([value](char *at) { return FieldInt5(at, value); }), PlainField("%5d", value));
    }
    for (const int width : {0, 1, 3, 11, 12, kMostField}) {
        for (const int value : {0, 7, -7, 12345, INT_MIN, INT_MAX}) {
            char text[64];
            std::snprintf(text, sizeof text, "%*d", width, value);
            ASSERT_EQ(Laid([=](char *at) { return FieldWide(at, value, width); }), text);
        }
    }
}

// Files ------------------------------------------------------------------------------------------------

class Output : public CleanStore {};

// Text by every way there is, and a row that stands in three places, as the position lists do.
void WriteAllWays(TextOut *out, bool copy) {
    const std::string row = "row  0.5\n";
    const std::string key = "again =\n";
    PutText(out, "first\n");
    PutBytes(out, std::string(5000, 'x').c_str(), 5000);
    PutText(out, "");
    const std::int64_t rows = 40 * static_cast<std::int64_t>(row.size());
    const std::int64_t step = rows + static_cast<std::int64_t>(key.size());
    const std::int64_t distances[] = {step, 2 * step};
    for (int list = 0; list < 3; ++list) {
        PutText(out, key.c_str());
        if (copy && list > 0) {
            SkipText(out, rows);
            continue;
        }
        if (copy) {
            StartCopies(out, distances, 2);
        }
        for (int i = 0; i < 40; ++i) {
            RowEnd(out, FieldBytes(RowBegin(out), row.c_str(), row.size()));
        }
        if (copy) {
            StopCopies(out);
        }
    }
    PutText(out, "last\n");
}

TEST_F(Output, FilesAreTheSameWithBlocksOfAnySizeAndWithCopies) {
    std::string wanted = "first\n" + std::string(5000, 'x');
    for (int list = 0; list < 3; ++list) {
        wanted += "again =\n";
        for (int i = 0; i < 40; ++i) {
            wanted += "row  0.5\n";
        }
    }
    wanted += "last\n";
    for (const bool copy : {false, true}) {
        for (const std::size_t block : std::vector<std::size_t>{1, 2, 7, 16, 17, 100, 4096, 200000}) {
            TextOut out;
            ASSERT_TRUE(OpenText(&out, "file", block));
            WriteAllWays(&out, copy);
            CloseText(&out);
            EXPECT_EQ(fake::GetFile("file"), wanted) << block << (copy ? " with copies" : "");
        }
    }
}

TEST_F(Output, RowsOfTwoAndThreeValues) {
    constexpr char kRows[] = "    Two = \n"
                             "                 0         2         5         7\n"
                             "                 1         2        -62147483647\n"
                             "    Three = \n"
                             "                 0         3         5         7         9\n"
                             "                 1         3        -62147483647        10\n"
                             "    None = \n";
    const int a[] = {5, -6}, b[] = {7, 2147483647}, c[] = {9, 10};
    for (const std::size_t block : {std::size_t{16}, kTextBlock}) {
        TextOut out;
        ASSERT_TRUE(OpenText(&out, "file", block));
        Output_INTArray2D(&out, "Two", 2, a, b);
        Output_INTArray3D(&out, "Three", 2, a, b, c);
        Output_INTArray2D(&out, "None", 0, nullptr, nullptr);
        CloseText(&out);
        EXPECT_EQ(fake::GetFile("file"), kRows);
    }
    std::FILE *stream = std::tmpfile();
    ASSERT_NE(stream, nullptr);
    Output_INTArray2D(stream, "Two", 2, a, b);
    Output_INTArray3D(stream, "Three", 2, a, b, c);
    Output_INTArray2D(stream, "None", 0, nullptr, nullptr);
    std::rewind(stream);
    char text[500] = "";
    EXPECT_EQ(std::fread(text, 1, sizeof text - 1, stream), sizeof kRows - 1);
    EXPECT_STREQ(text, kRows);
    std::fclose(stream);
}

TEST_F(Output, APlaceOfTheFileIsAskedForAndRequired) {
    TextOut out;
    ASSERT_TRUE(OpenText(&out, "file", 4));
    PutText(&out, "abc");
    EXPECT_EQ(TextPosition(&out), 3);
    PutText(&out, "def"); // the buffer is written out on the way
    EXPECT_EQ(TextPosition(&out), 6);
    SkipText(&out, 10);
    EXPECT_EQ(TextPosition(&out), 16);
    RequirePosition(&out, 16);
    EXPECT_DEATH(RequirePosition(&out, 15), "rows of file are not as long");
    fake::FailWritesAfter(0);
    PutText(&out, "x");
    FlushText(&out);
    RequirePosition(&out, 15); // the failure is told when the file is closed
    PrintedToErrors([&] { CloseText(&out); });
    EXPECT_EQ(fake::WriteFaults(), 1);
}

TEST_F(Output, AFileThatCannotBeCreatedHoldsNothing) {
    fake::RefuseToOpen("file", EACCES);
    TextOut out;
    EXPECT_FALSE(OpenText(&out, "file"));
}

// The mesh file ----------------------------------------------------------------------------------------

constexpr char kLog[] = "\n  Dumping KIVO file mesh.input ... done.";

std::string MeshFile() {
    EXPECT_EQ(Printed(DumpKIVO), kLog);
    return fake::GetFile("mesh.input");
}

// From the line that begins with `from` to the one before that which begins with `to`.
std::string Part(const std::string &text, const std::string &from, const std::string &to) {
    const std::size_t begin = text.find("\n" + from);
    EXPECT_NE(begin, std::string::npos) << from;
    const std::size_t end = text.find("\n" + to, begin == std::string::npos ? 0 : begin + 1);
    EXPECT_NE(end, std::string::npos) << to;
    return text.substr(begin + 1, end - begin);
}

// Nodes at the corners of a square, tags 0, flags 1 and lengths set by hand.
void MakeSquare(int nDim) {
    AddMesh(nDim, {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0.5}});
    Nodes *nodes = GetCOM()->Nodes;
    std::fill_n(nodes->i1OnB, nodes->nNum, 1);
    nodes->dCharLen = 1;
    nodes->dMinEdge = 1;
    nodes->dMaxEdge = std::sqrt(2);
}

const char kSquareRows[] = "                 0   0.000000000000000e+00   0.000000000000000e+00\n"
                           "                 1   1.000000000000000e+00   0.000000000000000e+00\n"
                           "                 2   1.000000000000000e+00   1.000000000000000e+00\n"
                           "                 3   0.000000000000000e+00   1.000000000000000e+00\n";

const std::string kSquareHead = std::string("<Dimension>\n"
                                            "    Dimension = 2D\n"
                                            "</Dimension>\n"
                                            "\n"
                                            "<Node_Geometry>\n"
                                            "    Minimum Edge Charac =    1.000000000000000e+00\n"
                                            "    Minimum Edge Length =    1.000000000000000e+00\n"
                                            "    Maximum Edge Length =    1.414213562373095e+00\n"
                                            "  <Coordinates> AllNodes\n"
                                            "    Number_Of_Nodes =          4\n"
                                            "    Current_Positions = \n") +
                                kSquareRows + "    Previous_Positions = \n" + kSquareRows +
                                "    Initial_Positions = \n" + kSquareRows +
                                "    Node_Tag = \n"
                                "                 0         0         0         0\n"
                                "    IsOnBoundary = \n"
                                "                 1         1         1         1\n"
                                "  </Coordinates> AllNodes\n"
                                "</Node_Geometry>\n"
                                "\n"
                                "<Connectivity>\n";

TEST_F(Output, AnEmptyStoreGivesAnEmptyFile) {
    fake::PutFile("mesh.input", "of a former run");
    EXPECT_EQ(MeshFile(), "");
    EXPECT_TRUE(fake::HasFile("mesh.input"));
}

TEST_F(Output, ASquareInTwoDimensionsByteForByte) {
    MakeSquare(2);
    AddFace(kS1D2, 1, {0, 1});
    AddFace(kS1D2, 2, {1, 2});
    AddCell(kTRI3, 3, {0, 1, 2}); // positions: connectivity is written as it stands
    AddCell(kTRI6, 4, {0, 1, 2, 3, 1, -1});
    COM_ArchGRnode(1, "N1");
    COM_ArchGRnode(2, "N2");
    COM_ArchGRface(1, "F1");
    COM_ArchGRcell(3, "");
    COM_ArchGRcell(4, "E2");
    GetCOM()->GRcell->dMinEdge = 0.5;
    GetCOM()->GRcell->dMaxEdge = 2;
    GetCOM()->GRcell->dCharLen = 1e15;
    EXPECT_EQ(MeshFile(), kSquareHead + "  <Faces> AllFaces\n"
                                        "    Face_Number_Of_Nodes =          2\n"
                                        "    Number_Of_Faces =          2\n"
                                        "    Face_To_Node = \n"
                                        "          0    2         0         1\n"
                                        "          1    2         1         2\n"
                                        "    Face_Tag = \n"
                                        "                 1         2\n"
                                        "  </Faces> AllFaces\n"
                                        "  <Cells> AllCells\n"
                                        "    Cell_Number_Of_Faces    =          0\n"
                                        "    Cell_Number_Of_Nodes    =          6\n"
                                        "    Cell_Number_Of_MatNodes =          4\n"
                                        "    Cell_Number_Of_PreNodes =          0\n"
                                        "    Cell_Number_Of_VelNodes =          0\n"
                                        "    Number_Of_Cells =          2\n"
                                        "    Cell_To_Node = \n"
                                        "          0    3         0         1         2\n"
                                        "          1    6         0         1         2         3         1        -1\n"
                                        "    Cell_Type = \n"
                                        "                 3         4\n"
                                        "    Cell_Tag = \n"
                                        "                 3         4\n"
                                        "    Initial_Solid_Geometry = \n"
                                        "                 0   1.000000000000000e+00   0.000000000000000e+00"
                                        "   0.000000000000000e+00   1.000000000000000e+00\n"
                                        "                 1   1.000000000000000e+00   0.000000000000000e+00"
                                        "   0.000000000000000e+00   1.000000000000000e+00\n"
                                        "  </Cells> AllCells\n"
                                        "</Connectivity>\n"
                                        "\n"
                                        "<Groups>\n"
                                        "  <Node Group> N2\n"
                                        "    NodeTag =          2\n"
                                        "  </Node Group> N2\n"
                                        "  <Node Group> N1\n"
                                        "    NodeTag =          1\n"
                                        "  </Node Group> N1\n"
                                        "  <Face Group> F1\n"
                                        "    FaceTag =          1\n"
                                        "  </Face Group> F1\n"
                                        "  <Cell Group> E2\n"
                                        "    CellTag =          4\n"
                                        "    Minimum_Edge_Length   =    5.000000000000000e-01\n"
                                        "    Maximum_Edge_Length   =    2.000000000000000e+00\n"
                                        "    Characteristic_length =    1.000000000000000e+15\n"
                                        "  </Cell Group> E2\n"
                                        "  <Cell Group> \n"
                                        "    CellTag =          3\n"
                                        "    Minimum_Edge_Length   =    0.000000000000000e+00\n"
                                        "    Maximum_Edge_Length   =    0.000000000000000e+00\n"
                                        "    Characteristic_length =    0.000000000000000e+00\n"
                                        "  </Cell Group> \n"
                                        "</Groups>\n"
                                        "\n");
}

const char kSolidRow[] = "                 0 1.0 0.0 0.0 0.0 1.0 0.0 0.0 0.0 1.0\n";

TEST_F(Output, InThreeDimensionsRowsHaveZAndAShortTensor) {
    MakeSquare(3);
    AddCell(kTET4, 1, {0, 1, 2, 3});
    const std::string file = MeshFile();
    EXPECT_EQ(file.substr(0, 44), "<Dimension>\n    Dimension = 3D\n</Dimension>\n");
    EXPECT_NE(file.find("                 3   0.000000000000000e+00   1.000000000000000e+00   5.000000000000000e-01\n"),
              std::string::npos);
    EXPECT_EQ(Part(file, "    Initial_Solid_Geometry", "  </Cells>"),
              std::string("    Initial_Solid_Geometry = \n") + kSolidRow);
}

TEST_F(Output, OtherDimensionsHaveNoGeometryAndTetrahedralRules) {
    for (const int nDim : {0, 1, 4, -2}) {
        MakeSquare(nDim);
        AddCell(kTRI6, 1, {0, 1, 2, 3, 0, 1});
        AddCell(kTET4, 1, {0, 1, 2, 3});
        const std::string file = MeshFile();
        const std::string head = "<Dimension>\n</Dimension>\n\n<Connectivity>\n  <Cells> AllCells\n";
        EXPECT_EQ(file.substr(0, head.size()), head);
        EXPECT_NE(file.find("    Cell_Number_Of_Nodes    =          4\n    Cell_Number_Of_MatNodes =          1\n"),
                  std::string::npos);
        EXPECT_NE(file.find(kSolidRow), std::string::npos);
        FreeCOM();
    }
}

TEST_F(Output, WithoutFacesAndCellsTheConnectivityIsEmpty) {
    MakeSquare(2);
    EXPECT_EQ(MeshFile(), kSquareHead + "</Connectivity>\n\n<Groups>\n</Groups>\n\n");
}

TEST_F(Output, WithoutNodesTheListsAreEmpty) {
    COM_ArchnDim(2);
    EXPECT_EQ(Part(MeshFile(), "    Number_Of_Nodes", "  </Coordinates>"), "    Number_Of_Nodes =          0\n"
                                                                           "    Current_Positions = \n"
                                                                           "    Previous_Positions = \n"
                                                                           "    Initial_Positions = \n"
                                                                           "    Node_Tag = \n"
                                                                           "    IsOnBoundary = \n");
}

TEST_F(Output, NodeCountsFollowTheFamiliesOfTheDimension) {
    const struct {
        int nDim;
        std::vector<int> types;
        const char *nodes;
        const char *matNodes;
    } cases[] = {
        {2, {kTRI3}, "3", "1"},         {2, {kTRI6}, "6", "4"},         {2, {kTRI3, kTRI6}, "6", "4"},
        {2, {kTRI6, kTRI3}, "6", "4"},  {2, {kQUA4, kQUA4}, "0", "0"},  {2, {kTET4, kTETX}, "0", "0"},
        {2, {kTETX, kTRI3}, "3", "1"},  {3, {kTET4}, "4", "1"},         {3, {kTETX}, "10", "8"},
        {3, {kTETX, kTET4}, "10", "8"}, {3, {kTET4, kTETX}, "10", "8"}, {3, {kTRI3, kTRI6, kHEX8}, "0", "0"},
        {0, {kTRI6, kTET4}, "4", "1"},
    };
    for (const auto &wanted : cases) {
        MakeSquare(wanted.nDim);
        for (const int type : wanted.types) {
            AddCell(type, 1, {0, 1, 2});
        }
        const std::string counts = Part(MeshFile(), "    Cell_Number_Of_Nodes", "    Cell_Number_Of_PreNodes");
        char text[200];
        std::snprintf(text, sizeof text, "    Cell_Number_Of_Nodes    = %10s\n    Cell_Number_Of_MatNodes = %10s\n",
                      wanted.nodes, wanted.matNodes);
        EXPECT_EQ(counts, text) << wanted.nDim << " " << testing::PrintToString(wanted.types);
        FreeCOM();
    }
}

std::string NodeTags(int n) {
    COM_ArchnDim(2);
    for (int i = 0; i < n; ++i) {
        COM_ArchNode(i, i, 0, 0, 0);
    }
    std::fill_n(GetCOM()->Nodes->i1OnB, n, 1);
    const std::string tags = Part(MeshFile(), "    Node_Tag", "    IsOnBoundary");
    FreeCOM();
    return tags;
}

TEST_F(Output, ScalarListsHaveTenValuesToALine) {
    const std::string nine = "    Node_Tag = \n                 0         1         2         3         4         5"
                             "         6         7         8";
    EXPECT_EQ(NodeTags(9), nine + "\n");
    EXPECT_EQ(NodeTags(10), nine + "         9\n");
    EXPECT_EQ(NodeTags(11), nine + "         9\n                10\n");
    EXPECT_EQ(NodeTags(1), "    Node_Tag = \n                 0\n");
}

TEST_F(Output, AbsentArraysAreWrittenAsZeros) {
    MakeSquare(2);
    AddFace(kS1D2, 1, {0, 1});
    AddCell(kTRI3, 1, {0, 1, 2});
    Mesh *mesh = GetCOM();
    int *kept[] = {mesh->Nodes->i1OnB, mesh->Nodes->i1Tag, mesh->Faces->i1Tag, mesh->Cells->i1Type, mesh->Cells->i1Tag};
    mesh->Nodes->i1OnB = mesh->Nodes->i1Tag = mesh->Faces->i1Tag = mesh->Cells->i1Type = mesh->Cells->i1Tag = nullptr;
    const std::string file = MeshFile();
    const std::string four = "                 0         0         0         0\n";
    const std::string one = "                 0\n";
    EXPECT_EQ(Part(file, "    Node_Tag", "    IsOnBoundary"), "    Node_Tag = \n" + four);
    EXPECT_EQ(Part(file, "    IsOnBoundary", "  </Coordinates>"), "    IsOnBoundary = \n" + four);
    EXPECT_EQ(Part(file, "    Face_Tag", "  </Faces>"), "    Face_Tag = \n" + one);
    EXPECT_EQ(Part(file, "    Cell_Type", "    Cell_Tag"), "    Cell_Type = \n" + one);
    EXPECT_EQ(Part(file, "    Cell_Tag", "    Initial_Solid"), "    Cell_Tag = \n" + one);
    mesh->Nodes->i1OnB = kept[0];
    mesh->Nodes->i1Tag = kept[1];
    mesh->Faces->i1Tag = kept[2];
    mesh->Cells->i1Type = kept[3];
    mesh->Cells->i1Tag = kept[4];
}

TEST_F(Output, ConnectivityRowsAreNotWrappedHoweverLong) {
    constexpr int kNodes = static_cast<int>((kTextBlock + 2 * kMostRow) / 11); // one row fills the writer's block
    constexpr int kRows = 3;
    COM_ArchnDim(0);
    Cells *cells = GetCOM()->Cells;
    cells->nNum = cells->nMax = kRows;
    cells->nNodesPerCell = kNodes;
    cells->i1Type = AllocINT1D(nullptr, kRows);
    cells->i1Tag = AllocINT1D(nullptr, kRows);
    cells->i1NumNodes = AllocINT1D(nullptr, kRows);
    cells->i2Conn = AllocINT2D(nullptr, kNodes, kRows);
    std::fill_n(cells->i1Type, kRows, 99);
    std::fill_n(cells->i1Tag, kRows, 1);
    std::fill_n(cells->i1NumNodes, kRows, kNodes);
    std::string wanted = "    Cell_To_Node = \n";
    for (int i = 0; i < kRows; ++i) {
        char head[40];
        std::snprintf(head, sizeof head, " %10d%5d", i, kNodes);
        wanted += head;
        for (int k = 0; k < kNodes; ++k) {
            cells->i2Conn[k][i] = INT_MIN;
            wanted += "-2147483648";
        }
        wanted += "\n";
    }
    EXPECT_EQ(Part(MeshFile(), "    Cell_To_Node", "    Cell_Type"), wanted);
}

// A mesh whose file is longer than a block of the writer.
void MakeLargeMesh(int nDim) {
    COM_ArchnDim(nDim);
    std::mt19937_64 random(12);
    for (int i = 0; i < 7000; ++i) {
        COM_ArchNode(i, i % 13, FromBits(random() % DBL_MAX_EXP << 52), -i / 7.0, 1e-300 * i);
    }
    std::fill_n(GetCOM()->Nodes->i1OnB, 7000, 1);
    GetCOM()->Nodes->dCharLen = GetCOM()->Nodes->dMinEdge = GetCOM()->Nodes->dMaxEdge = -1e-100;
    for (int i = 0; i < 3000; ++i) {
        AddCell(kTRI3, i / 100, {i, i + 1, i + 2});
    }
}

TEST_F(Output, TheThreePositionListsAreTheSameWhetherWrittenAtOnceOrOneByOne) {
    for (const int nDim : {2, 3}) {
        MakeLargeMesh(nDim);
        const std::string atOnce = MeshFile();
        fake::LetFilesSeek(false);
        EXPECT_EQ(MeshFile(), atOnce);
        fake::LetFilesSeek(true);
        EXPECT_GT(atOnce.size(), 4 * kTextBlock);
        const std::string current = Part(atOnce, "    Current_Positions", "    Previous_Positions");
        const std::string previous = Part(atOnce, "    Previous_Positions", "    Initial_Positions");
        const std::string initial = Part(atOnce, "    Initial_Positions", "    Node_Tag");
        const auto rows = [](const std::string &list) { return list.substr(list.find('\n')); };
        EXPECT_EQ(rows(previous), rows(current));
        EXPECT_EQ(rows(initial), rows(current));
        EXPECT_EQ(std::count(current.begin(), current.end(), '\n'), 7001);
        FreeCOM();
    }
}

TEST_F(Output, WritingLeavesTheStoreAsItIs) {
    MakeSquare(2);
    AddCell(kTRI3, 1, {0, 1, 2});
    const std::string once = MeshFile();
    EXPECT_EQ(MeshFile(), once);
}

// Failures ---------------------------------------------------------------------------------------------

TEST_F(Output, AMeshFileThatCannotBeCreatedEndsTheProcess) {
    MakeSquare(2);
    fake::RefuseToOpen("mesh.input", EACCES);
    EXPECT_EXIT(
        {
            std::fflush(stdout);
            dup2(2, 1); // the test sees standard error only
            DumpKIVO();
        },
        testing::ExitedWithCode(255), "^\n Error> cannot open file mesh.input\n$");
}

TEST_F(Output, AFullDiskIsToldWhenTheFileIsClosedAndChangesNeitherRunNorLog) {
    MakeLargeMesh(3);
    const std::string whole = MeshFile();
    const long size = static_cast<long>(whole.size());
    for (const long room : {0L, 1L, 300L, 140000L, 300000L, 600000L, 1000000L, size - 1}) {
        fake::FailWritesAfter(room);
        const long faults = fake::WriteFaults();
        const std::string errors = PrintedToErrors([] { EXPECT_EQ(Printed(DumpKIVO), kLog); });
        EXPECT_EQ(errors, std::string("KIVOm: cannot write mesh.input: ") + std::strerror(ENOSPC) + "\n") << room;
        EXPECT_GT(fake::WriteFaults(), faults);
        const std::string left = fake::GetFile("mesh.input");
        EXPECT_EQ(left, whole.substr(0, left.size())) << "what is left is a beginning of the file, without holes";
        if (room == size - 1) {
            EXPECT_GT(left.size() + 2 * kTextBlock, whole.size()) << "all but the last block is left";
        }
        fake::FailWritesAfter(-1);
    }
    EXPECT_TRUE(TextOutputFailed());
    EXPECT_EQ(PrintedToErrors([&] { EXPECT_EQ(MeshFile(), whole); }), "") << "with room again all is well";
}

TEST_F(Output, AFailureThatShowsOnlyAtTheCloseIsToldToo) {
    MakeSquare(2);
    fake::FailClose(EDQUOT);
    const std::string errors = PrintedToErrors([] { EXPECT_EQ(Printed(DumpKIVO), kLog); });
    EXPECT_EQ(errors, std::string("KIVOm: cannot write mesh.input: ") + std::strerror(EDQUOT) + "\n");
    EXPECT_EQ(fake::CloseFaults(), 1);
    EXPECT_TRUE(TextOutputFailed());
}

TEST_F(Output, OfTwoFailuresTheFirstIsTold) {
    MakeSquare(2);
    fake::FailWritesAfter(10);
    fake::FailClose(EDQUOT);
    const std::string errors = PrintedToErrors([] { EXPECT_EQ(Printed(DumpKIVO), kLog); });
    EXPECT_EQ(errors, std::string("KIVOm: cannot write mesh.input: ") + std::strerror(ENOSPC) + "\n");
    EXPECT_EQ(fake::WriteFaults(), 1);
    EXPECT_EQ(fake::CloseFaults(), 1);
}

} // namespace
