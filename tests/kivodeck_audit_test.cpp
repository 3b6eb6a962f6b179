// The verb audit from outside: statuses, both forms of the report, the file of what fails, and files that are no
// meshes.
#include "tests/rundeck.h"

#include <nlohmann/json.hpp>

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <sstream>
#include <string>

#include <unistd.h>

namespace fs = std::filesystem;

namespace {

using nlohmann::json;

// Two triangles of a square, the side below in a face group; the second triangle is at line 51.
const char kSquare[] = R"(<Dimension>
    Dimension = 2D
</Dimension>

<Node_Geometry>
    Minimum Edge Charac =    7.071067811865475e-01
    Minimum Edge Length =    1.000000000000000e+00
    Maximum Edge Length =    1.414213562373095e+00
  <Coordinates> AllNodes
    Number_Of_Nodes =          4
    Current_Positions = 
                 0   0.000000000000000e+00   0.000000000000000e+00
                 1   1.000000000000000e+00   0.000000000000000e+00
                 2   1.000000000000000e+00   1.000000000000000e+00
                 3   0.000000000000000e+00   1.000000000000000e+00
    Previous_Positions = 
                 0   0.000000000000000e+00   0.000000000000000e+00
                 1   1.000000000000000e+00   0.000000000000000e+00
                 2   1.000000000000000e+00   1.000000000000000e+00
                 3   0.000000000000000e+00   1.000000000000000e+00
    Initial_Positions = 
                 0   0.000000000000000e+00   0.000000000000000e+00
                 1   1.000000000000000e+00   0.000000000000000e+00
                 2   1.000000000000000e+00   1.000000000000000e+00
                 3   0.000000000000000e+00   1.000000000000000e+00
    Node_Tag = 
                 1         0         0         1
    IsOnBoundary = 
                 1         1         1         1
  </Coordinates> AllNodes
</Node_Geometry>

<Connectivity>
  <Faces> AllFaces
    Face_Number_Of_Nodes =          2
    Number_Of_Faces =          1
    Face_To_Node = 
          0    2         0         1
    Face_Tag = 
                 1
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
          1    3         0         2         3
    Cell_Type = 
                 3         3
    Cell_Tag = 
                 1         1
    Initial_Solid_Geometry = 
                 0   1.000000000000000e+00   0.000000000000000e+00   0.000000000000000e+00   1.000000000000000e+00
                 1   1.000000000000000e+00   0.000000000000000e+00   0.000000000000000e+00   1.000000000000000e+00
  </Cells> AllCells
</Connectivity>

<Groups>
  <Node Group> LEFT
    NodeTag =          1
  </Node Group> LEFT
  <Face Group> BELOW
    FaceTag =          1
  </Face Group> BELOW
  <Cell Group> PLATE
    CellTag =          1
    Minimum_Edge_Length   =    1.000000000000000e+00
    Maximum_Edge_Length   =    1.414213562373095e+00
    Characteristic_length =    7.071067811865475e-01
  </Cell Group> PLATE
</Groups>

)";

// The square with some words in place of others, which it must hold.
std::string With(const std::string &old, const std::string &words) {
    std::string text = kSquare;
    const std::size_t at = text.find(old);
    EXPECT_NE(at, std::string::npos) << old;
    return text.replace(at, old.size(), words);
}

const std::string kTurned = With("         0         2         3", "         0         3         2");

// A folder with a mesh.input in it.
class Audit : public testing::Test {
  protected:
    Audit() : folder_(fs::temp_directory_path() / ("kivodeck_audit_test." + std::to_string(getpid()))) {
        fs::create_directory(folder_);
    }
    ~Audit() override {
        fs::remove_all(folder_);
    }
    void Write(const std::string &text, const std::string &name = "mesh.input") const {
        std::ofstream(folder_ / name, std::ios::binary) << text;
    }
    // Runs `kivodeck ARGUMENTS` there, with 2 GB of memory at most; standard error goes where `errors` says.
    Outcome Run(const std::string &arguments, const std::string &errors = "/dev/null") const {
        return RunShell("ulimit -v " KIVOM_MEMORY "; cd '" + folder_.string() + "' && '" KIVODECK_PROGRAM "' " +
                        arguments + " 2>" + errors);
    }
    std::string Read(const std::string &name) const {
        std::ifstream in(folder_ / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    }

  private:
    fs::path folder_;
};

TEST_F(Audit, OfAGoodMeshEndsWithMeshOk) {
    Write(kSquare);
    const Outcome run = Run("audit");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(LastLine(run.out), "mesh ok");
    EXPECT_EQ(run.out.find("FAILED"), std::string::npos);
    EXPECT_NE(run.out.find("  dimension 2, 4 nodes, 1 faces, 2 cells\n"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("\n  private-nodes    ok\n"), std::string::npos);
    EXPECT_NE(run.out.find("\n  \"BELOW\": 1 faces, open, 2 ends free\n"), std::string::npos);
    EXPECT_EQ(run.out.find('\033'), std::string::npos);
}

TEST_F(Audit, OfABadMeshTellsWhatFailsAndWhere) {
    Write(kTurned);
    const Outcome run = Run("audit mesh.input");
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(LastLine(run.out), "1 check failed");
    // The middle of (0, 0), (0, 1) and (1, 1).
    EXPECT_NE(run.out.find("  orientation      FAILED 1: cells run the wrong way round or are flat\n"
                           "    cell 1 at (0.333333, 0.666667) in \"PLATE\"\n"),
              std::string::npos)
        << run.out;
}

TEST_F(Audit, FitsEightyColumns) {
    Write(kTurned);
    std::istringstream in(Run("audit").out);
    int lines = 0;
    for (std::string line; std::getline(in, line); ++lines) {
        EXPECT_LE(line.size(), 80u) << line;
    }
    EXPECT_GT(lines, 60); // the histograms, too
}

TEST_F(Audit, ShowsTheWorstTen) {
    std::string text = kSquare;
    const std::string tags = "         1         0         0         1\n";
    text.replace(text.find(tags), tags.size(), "         9         8         7         6\n");
    Write(text);
    EXPECT_NE(Run("audit").out.find("  tags             FAILED 4: tags name no group\n    node 0 at (0, 0)\n"),
              std::string::npos);
    EXPECT_EQ(json::parse(Run("audit --format=json").out)["checks"][2]["count"], 4);
    std::string groups = "<Groups>\n";
    for (int tag = 11; tag <= 22; ++tag) { // twelve, without nodes
        groups += "  <Node Group> N" + std::to_string(tag) + "\n    NodeTag =         " + std::to_string(tag) +
                  "\n  </Node Group> N" + std::to_string(tag) + "\n";
    }
    Write(With("<Groups>\n", groups));
    EXPECT_NE(Run("audit").out.find("    node group \"N20\"\n    and 2 more\n"), std::string::npos) << Run("audit").out;
    EXPECT_EQ(json::parse(Run("audit --format=json").out)["checks"][3]["places"].size(), 10u);
    EXPECT_EQ(json::parse(Run("audit --format=json").out)["checks"][3]["places"][0]["kind"], "node_group");
}

TEST_F(Audit, TellsHowManyRegionsAreLooseCells) {
    std::string text = kSquare;
    for (std::size_t at = 0; (at = text.find("PLATE", at)) != std::string::npos; at += 7) {
        text.replace(at, 5, "C_PLATE");
    }
    Write(text);
    EXPECT_NE(Run("audit").out.find("  regions: 1, with the 2 cells of C_ groups one by one\n"), std::string::npos);
}

TEST_F(Audit, AsJsonHasTheseKeys) {
    Write(kTurned);
    const Outcome run = Run("audit --format=json");
    EXPECT_EQ(run.status, 1);
    const json report = json::parse(run.out);
    EXPECT_EQ(report["schema_version"], 1);
    EXPECT_EQ(report["file"], "mesh.input");
    EXPECT_EQ(report["counts"], json::parse(R"({"dimension": 2, "nodes": 4, "faces": 1, "cells": 2, "node_groups": 1,
        "face_groups": 1, "cell_groups": 1, "regions": 1})"));
    std::string names;
    for (const json &check : report["checks"]) {
        names += check["name"].get<std::string>() + " ";
        EXPECT_EQ(check["ok"], check["count"] == 0);
    }
    EXPECT_EQ(names,
              "cells indices tags groups duplicate-cells orientation mid-side-nodes unused-nodes coincident-nodes "
              "faces face-normals shared-faces boundary private-nodes lengths coordinates ");
    EXPECT_EQ(report["checks"][5]["places"], json::parse(R"([{"kind": "cell", "index": 1}])"));
    EXPECT_EQ(report["verdict"], json::parse(R"({"ok": false, "failed": 1})"));
    // A right angle and two of 45 degrees; R = sqrt(2)/2, r = 1 - sqrt(2)/2.
    const json &quality = report["quality"];
    EXPECT_EQ(quality.size(), 5u);
    EXPECT_NEAR(quality["max_angle"]["max"], 90, 1e-12);
    EXPECT_NEAR(quality["min_angle"]["mean"], 45, 1e-12);
    EXPECT_NEAR(quality["radius_ratio"]["min"], 0.70710678118654752 / (2 * (1 - 0.70710678118654752)), 1e-14);
    EXPECT_EQ(quality["edge_ratio"]["histogram"].size(), 10u);
    EXPECT_EQ(quality["edge_ratio"]["edges"].size(), 11u);
}

TEST_F(Audit, CountsWithoutJudging) {
    Write(kTurned);
    const Outcome run = Run("audit --counts");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, "dimension 2, 4 nodes, 1 faces, 2 cells\nnode group 1 \"LEFT\": 2 nodes\n"
                       "face group 1 \"BELOW\": 1 faces\ncell group 1 \"PLATE\": 2 cells\n");
    const json report = json::parse(Run("audit --counts --format=json").out);
    EXPECT_EQ(report["groups"][2], json::parse(R"({"kind": "cell", "tag": 1, "name": "PLATE", "members": 2})"));
}

TEST_F(Audit, WritesWhatFailsForViewers) {
    Write(kTurned);
    EXPECT_EQ(Run("audit --vtk=bad.vtk").status, 1);
    EXPECT_EQ(Read("bad.vtk"),
              "# vtk DataFile Version 3.0\nCheck: 6 orientation\nASCII\nDATASET UNSTRUCTURED_GRID\n"
              "POINTS 3 double\n0 0 0\n0 1 0\n1 1 0\nCELLS 1 4\n3 0 1 2\nCELL_TYPES 1\n5\nCELL_DATA 1\n"
              "SCALARS Check int 1\nLOOKUP_TABLE default\n6\nSCALARS Index int 1\nLOOKUP_TABLE default\n1\n"
              "SCALARS Subject int 1\nLOOKUP_TABLE default\n2\n");
    std::string text = kSquare; // a node without place is drawn at 0
    const std::string place = "   1.000000000000000e+00   0.000000000000000e+00\n                 2";
    for (std::size_t at = 0; (at = text.find(place, at)) != std::string::npos;) {
        text.replace(at, 24, "                     inf");
    }
    Write(text);
    EXPECT_EQ(Run("audit --vtk=bad.vtk").status, 1);
    EXPECT_NE(Read("bad.vtk").find("\nPOINTS 1 double\n0 0 0\nCELLS 1 2\n1 0\n"), std::string::npos) << Read("bad.vtk");
    EXPECT_EQ(Run("audit --vtk=nowhere/bad.vtk").status, 2);
    EXPECT_EQ(json::parse(Run("audit --format=json --vtk=/dev/full").out)["findings"][0]["code"], "unwritable");
}

TEST_F(Audit, CountsCellsBeyondLimits) {
    Write(kSquare);
    EXPECT_NE(Run("audit --limit max_angle=0:80").out.find("2 outside 0 to 80\n"), std::string::npos);
    EXPECT_NE(Run("audit --limit=max_angle=:95 --limit=min_angle=50:").out.find("2 outside 50 to inf\n"),
              std::string::npos);
    for (const std::string limit : {"max_angle", "max_angle=80", "angle=0:80", "max_angle=a:b", "max_angle=nan:1"}) {
        EXPECT_EQ(Run("audit --limit " + limit).status, 2) << limit;
    }
}

TEST_F(Audit, IsTheEndOfARun) {
    const std::string plate = "*Node\n1, 0., 0.\n2, 1., 0.\n3, 1., 1.\n*Element, type=CPS3, elset=Plate\n1, 1, 2, 3\n";
    Write(plate, "good.inp");
    const Outcome good = Run("run good.inp");
    EXPECT_EQ(good.status, 0);
    EXPECT_NE(good.out.find("\nmesh.input: 3 nodes, 0 faces, 1 cell: mesh ok\n"), std::string::npos) << good.out;
    EXPECT_EQ(json::parse(Run("run --format=json good.inp").out)["audit"],
              json::parse(R"({"ok": true, "failed": [], "empty_groups": []})"));
    // Node 4 lies on node 3. That the triangles hang together by node 1 alone comes of that, and is not told.
    Write("*Node\n1, 0., 0.\n2, 1., 0.\n3, 1., 1.\n4, 1., 1.\n5, 0., 1.\n"
          "*Element, type=CPS3, elset=Plate\n1, 1, 2, 3\n2, 1, 4, 5\n",
          "bad.inp");
    const Outcome bad = Run("run bad.inp");
    EXPECT_EQ(bad.status, 1);
    EXPECT_NE(bad.out.find("\nmesh.input: 5 nodes, 0 faces, 2 cells: mesh fails coincident-nodes "
                           "(kivodeck audit shows where)\n"),
              std::string::npos)
        << bad.out;
    EXPECT_EQ(json::parse(Run("run --format=json bad.inp").out)["audit"],
              json::parse(R"({"ok": false, "failed": ["coincident-nodes"], "empty_groups": []})"));
}

// They are as the deck means them, or as the overlaps leave them: a run does not fail for them, an audit does.
TEST_F(Audit, CountsGroupsThatAreEmptyInTheDeckAtTheEndOfARun) {
    const std::string plate = "*Node\n1, 0., 0.\n2, 1., 0.\n3, 1., 1.\n*Element, type=CPS3, elset=Plate\n1, 1, 2, 3\n";
    Write(plate + "*Nset, nset=Empty\n*Nset, nset=A\n1, 2\n*Nset, nset=B\n1, 2\n", "empty.inp");
    const Outcome run = Run("run empty.inp");
    EXPECT_EQ(run.status, 0);
    EXPECT_NE(run.out.find("\nmesh.input: 3 nodes, 0 faces, 1 cell, 2 empty groups: mesh ok\n"), std::string::npos)
        << run.out;
    EXPECT_EQ(Run("audit").status, 1);
    const json audit = json::parse(Run("run --format=json empty.inp").out)["audit"];
    EXPECT_EQ(audit["failed"], json::array());
    EXPECT_EQ(audit["empty_groups"].size(), 2u);
}

TEST_F(Audit, WritesOverNothingButVtkFiles) {
    Write(kSquare);
    ASSERT_EQ(Run("audit").status, 0);
    Write("*Node\n", "deck.inp");
    EXPECT_EQ(Run("audit --vtk=deck.inp").status, 2);
    EXPECT_EQ(Read("deck.inp"), "*Node\n");
    EXPECT_EQ(Run("audit --vtk=mesh.input").status, 2);
    EXPECT_EQ(Run("audit --vtk=./mesh.input").status, 2);
    EXPECT_EQ(Run("audit").status, 0) << "the mesh is as it was";
    EXPECT_EQ(Run("audit --vtk=bad.vtk").status, 0);
    EXPECT_EQ(Run("audit --vtk=bad.vtk").status, 0);
}

// Two tetrahedra that hang together by one node.
TEST_F(Audit, OfASolidNamesPlacesInSpace) {
    Write("*Node\n1, 1., 2., 3.\n2, 2., 2., 3.\n3, 1., 3., 3.\n4, 1., 2., 4.\n5, 0., 2., 3.\n6, 1., 1., 3.\n"
          "7, 1., 2., 2.\n*Element, type=C3D4, elset=A\n1, 1, 2, 3, 4\n2, 1, 5, 7, 6\n",
          "deck.inp");
    EXPECT_EQ(Run("run deck.inp").status, 1);
    EXPECT_NE(Run("audit").out.find("\n    node 0 at (1, 2, 3)\n"), std::string::npos) << Run("audit").out;
}

// Files that are no meshes ----------------------------------------------------------------------------

std::string Failure(const Outcome &run) {
    const json report = json::parse(run.out);
    EXPECT_EQ(report.count("checks"), 0u);
    const json &finding = report["findings"][0];
    EXPECT_EQ(finding["code"], "unreadable");
    EXPECT_EQ(finding["level"], "error");
    EXPECT_EQ(finding["file"], "mesh.input");
    return std::to_string(finding["line"].get<int>()) + ": " + finding["text"].get<std::string>();
}

struct NoMesh {
    const char *name;
    std::string text;
    std::string failure; // line and reason
};

const std::vector<NoMesh> kNoMeshes{
    {"empty", "", "1: the file is empty"},
    {"a line end", "\n", "1: \"<Dimension>\" does not stand where it should"},
    {"a deck", "*Node\n1, 0., 0.\n", "1: \"<Dimension>\" does not stand where it should"},
    {"binary",
     std::string("\x7f"
                 "ELF\0\0\0\1\2\3",
                 10),
     "1: \"<Dimension>\" does not stand where it should"},
    {"a billion nodes", With("Number_Of_Nodes =          4", "Number_Of_Nodes = 1000000000"),
     "16: \"        \" does not stand where it should"},
    {"a billion cells", With("Number_Of_Cells =          2", "Number_Of_Cells = 1000000000"),
     "52: no whole number at the right of 10 characters"},
    {"a billion faces", With("Number_Of_Faces =          1", "Number_Of_Faces = 1000000000"),
     "39: no whole number at the right of 10 characters"},
    {"a node too few", With("Number_Of_Nodes =          4", "Number_Of_Nodes =          3"),
     "15: \"Previous_Positions\" does not stand where it should"},
    {"fewer nodes than none", With("Number_Of_Nodes =          4", "Number_Of_Nodes =         -4"),
     "10: Number_Of_Nodes is below 0"},
    {"a count beyond range", With("Number_Of_Nodes =          4", "Number_Of_Nodes = 4294967300"),
     "10: no whole number at the right of 10 characters"},
    {"an index beyond range", With("         0         1         2\n", "         0         19999999999\n"),
     "50: no whole number at the right of 10 characters"},
    {"a coordinate beyond range", With("1   1.000000000000000e+00   0", "1   1.000000000000000e+999  0"),
     "13: no number as \"%24.15e\" writes it"},
    {"more behind it", std::string(kSquare) + "more\n", "77: more text behind the end of the mesh"},
};

TEST_F(Audit, OfWhatIsNoMeshHasStatusTwoWithLineAndReason) {
    for (const NoMesh &noMesh : kNoMeshes) {
        Write(noMesh.text);
        const Outcome run = Run("audit --format=json");
        EXPECT_EQ(run.status, 2) << noMesh.name;
        EXPECT_EQ(Failure(run), noMesh.failure) << noMesh.name;
        const std::string told = Run("audit", "&1 >/dev/null").out;
        const std::size_t colon = noMesh.failure.find(':');
        EXPECT_EQ(told, "kivodeck: mesh.input: line " + noMesh.failure.substr(0, colon) + noMesh.failure.substr(colon) +
                            "\n");
    }
}

TEST_F(Audit, OfAMeshCutAnywhereHasStatusTwo) {
    const std::string text = kSquare;
    for (std::size_t size = 0; size < text.size(); size += 37) {
        Write(text.substr(0, size));
        const Outcome run = Run("audit --format=json");
        EXPECT_EQ(run.status, 2) << size;
        const auto line = 1 + std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(size), '\n');
        EXPECT_EQ(Failure(run),
                  std::to_string(line) + (size == 0 ? ": the file is empty" : ": the file ends too early"));
    }
}

TEST_F(Audit, WithoutAFileHasStatusTwo) {
    EXPECT_EQ(Run("audit nowhere").status, 2);
    EXPECT_EQ(json::parse(Run("audit --format=json nowhere").out)["findings"][0]["text"],
              "cannot be opened: No such file or directory");
    EXPECT_EQ(Run("audit .").status, 2);
}

TEST_F(Audit, OfAMeshWithoutCellsFails) {
    Write("<Dimension>\n</Dimension>\n\n<Connectivity>\n</Connectivity>\n\n<Groups>\n</Groups>\n\n");
    const Outcome run = Run("audit");
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.out.find("  cells            FAILED 1: "), std::string::npos);
    EXPECT_EQ(json::parse(Run("audit --format=json").out)["verdict"]["failed"], 1);
}

TEST_F(Audit, IsExplained) {
    EXPECT_NE(Run("explain face-normals").out.find("face-normals (check)\n"), std::string::npos);
    EXPECT_NE(Run("explain aspect_gamma").out.find("q^3 / (6 sqrt(2) V)"), std::string::npos);
    EXPECT_EQ(json::parse(Run("explain --format=json lengths").out)["check"], "lengths");
    // A finding and a check of one name.
    const std::string both = Run("explain unused-nodes").out;
    EXPECT_NE(both.find("unused-nodes (note)\n"), std::string::npos);
    EXPECT_NE(both.find("unused-nodes (check)\n"), std::string::npos);
    EXPECT_NE(Run("explain").out.find("\nscaled_jacobian "), std::string::npos);
}

} // namespace
