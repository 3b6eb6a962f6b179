// Small meshes made in the store by hand, and what became of them.
#ifndef KIVOM_TESTS_MESHES_H
#define KIVOM_TESTS_MESHES_H

#include "fakesystem.h"

#include "store/COM.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

// A test that begins without a mesh and must give back every block and close every file.
class CleanStore : public testing::Test {
  protected:
    void SetUp() override {
        fake::Reset();
        FreeCOM();
        ForgetColumnCounts();
        held = fake::BlocksHeld();
    }
    void TearDown() override {
        FreeCOM();
        EXPECT_EQ(fake::BlocksHeld(), held);
        EXPECT_EQ(fake::FilesOpen(), 0);
    }
    long held = 0;
};

struct At {
    double x, y, z;
};

inline At operator+(At a, At b) {
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}

inline At operator-(At a, At b) {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}

inline At operator*(double s, At a) {
    return {s * a.x, s * a.y, s * a.z};
}

inline bool operator==(At a, At b) {
    return a.x == b.x && a.y == b.y && a.z == b.z;
}

inline double Inner(At a, At b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

inline At Outer(At a, At b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

// Nodes numbered 1, 2, ... in the order given.
inline void AddNodes(const std::vector<At> &points) {
    for (const At &point : points) {
        COM_ArchNode(GetCOM() == nullptr ? 1 : GetCOM()->Nodes->nNum + 1, 0, point.x, point.y, point.z);
    }
}

// Columns of all cells of these meshes: enough for every family.
constexpr int kTestColumns = 10;

// A cell by node numbers; tags by face slot, 0 where none is given.
inline void AddCell(int type, int tag, const std::vector<int> &conn, std::vector<int> faceTags = {}) {
    faceTags.resize(kTestColumns, 0);
    COM_ArchCell(kTestColumns, type, tag, static_cast<int>(conn.size()), conn.data(), faceTags.data());
}

inline At PointOf(int node) {
    const Nodes *nodes = GetCOM()->Nodes;
    return {nodes->d1X[node], nodes->d1Y[node], nodes->d1Z[node]};
}

inline std::vector<int> NodesOfCell(int cell) {
    const Cells *cells = GetCOM()->Cells;
    std::vector<int> nodes;
    for (int k = 0; k < cells->i1NumNodes[cell]; ++k) {
        nodes.push_back(cells->i2Conn[k][cell]);
    }
    return nodes;
}

inline std::vector<At> PointsOfCell(int cell) {
    std::vector<At> points;
    for (const int node : NodesOfCell(cell)) {
        points.push_back(PointOf(node));
    }
    return points;
}

inline std::vector<int> NodesOfFace(int face) {
    const Faces *faces = GetCOM()->Faces;
    std::vector<int> nodes;
    for (int k = 0; k < faces->i1NumNodes[face]; ++k) {
        nodes.push_back(faces->i2Conn[k][face]);
    }
    return nodes;
}

inline std::vector<At> PointsOfFace(int face) {
    std::vector<At> points;
    for (const int node : NodesOfFace(face)) {
        points.push_back(PointOf(node));
    }
    return points;
}

inline At Middle(const std::vector<At> &points) {
    At sum{0, 0, 0};
    for (const At &point : points) {
        sum = sum + point;
    }
    return (1.0 / static_cast<double>(points.size())) * sum;
}

#endif
