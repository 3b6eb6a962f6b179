// What the checks share while they work, and the checks themselves. Each puts down what it finds; those further down
// use what those above have learnt of cells and nodes.
#ifndef KIVOM_AUDIT_WORK_H
#define KIVOM_AUDIT_WORK_H

#include "audit/audit.h"
#include "audit/shapes.h"

#include "support/measures.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace audit {

// Of a cell, as bits.
enum CellState : unsigned char {
    kSound = 1,  // known type of the mesh's dimension, with its nodes, all of the mesh
    kPlaced = 2, // sound, and all its nodes have finite coordinates
    kTurned = 4, // runs the wrong way round
    kFlat = 8,   // neither way
    kTwin = 16,  // the same as a cell before it
    kLoose = 32  // of a group whose name begins with "C_"
};

// Of a node, as bits.
enum NodeState : unsigned char {
    kInCell = 1,
    kInFace = 2,
    kInLoose = 4,  // of a loose cell
    kShared = 8,   // in a second cell, or twice in one
    kInSound = 16, // in a sound cell
    kTainted = 32, // of something that a check has found: what the boundary does there is not judged
};

struct Work {
    const meshfile::Mesh &mesh;
    Verdict &verdict;
    std::vector<unsigned char> cells; // CellState
    std::vector<unsigned char> nodes; // NodeState
    std::vector<int> regions;         // of each node, its region's first node; -1 in no cell

    std::size_t CountOfCells() const {
        return mesh.cells.rows.Count();
    }
    bool Is(std::size_t cell, unsigned char state) const {
        return (cells[cell] & state) == state;
    }
    // Cells that take part in what neighbours make of one another.
    bool IsJoined(std::size_t cell) const {
        return (cells[cell] & (kSound | kTwin)) == kSound;
    }
    const Shape &ShapeOfCell(std::size_t cell) const {
        return *ShapeOf(mesh.cells.types[cell]);
    }
    bool HasNode(int node) const {
        return node >= 0 && static_cast<std::size_t>(node) < mesh.nodes.Count();
    }
    Point At(int node) const {
        const auto n = static_cast<std::size_t>(node);
        return {mesh.nodes.x[n], mesh.nodes.y[n], mesh.dimension == 3 ? mesh.nodes.z[n] : 0.0};
    }
    // Nothing is worse than a badness that is no number.
    void Found(Check check, Subject subject, std::size_t index, double badness = 0) {
        constexpr double kMost = 3e38; // within the range of a float
        const double bounded = badness <= kMost ? std::max(badness, -kMost) : kMost;
        verdict.checks[static_cast<std::size_t>(check)].places.push_back(
            {static_cast<int>(index), static_cast<float>(bounded), subject});
    }
};

// The corner points of a sound cell.
template <std::size_t kCorners> void CornersOf(const Work &work, std::size_t cell, Point (&points)[kCorners]) {
    const Shape &shape = work.ShapeOfCell(cell);
    const int *row = work.mesh.cells.rows.Row(cell);
    for (std::size_t k = 0; k < kCorners; ++k) {
        points[k] = work.At(row[shape.corners[k]]);
    }
}

// ORDER: as they are called.
void CheckCoordinates(Work *work);     // numbers.cpp
void CheckCells(Work *work);           // numbers.cpp; sets kSound and kPlaced
void CheckIndices(Work *work);         // numbers.cpp
void CheckGroups(Work *work);          // groups.cpp: tags and groups; sets kLoose
void CheckOrientation(Work *work);     // shape.cpp; sets kTurned and kFlat
void CheckMidSideNodes(Work *work);    // shape.cpp
void CheckNodes(Work *work);           // nodes.cpp: unused and private nodes; sets all of NodeState but kTainted
void FindRegions(Work *work);          // regions.cpp
void CheckCoincidentNodes(Work *work); // coincident.cpp
void CheckNeighbours(Work *work);      // neighbours.cpp: equal cells, shared faces, the boundary; sets kTwin
void CheckFaces(Work *work);           // faces.cpp: faces and their normals
void LookAtSurfaces(Work *work);       // surfaces.cpp
void CheckLengths(Work *work);         // lengths.cpp
void MeasureQuality(Work *work, const Limits &limits); // histograms of quality.h

} // namespace audit

#endif
