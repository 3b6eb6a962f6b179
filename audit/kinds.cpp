// The tables of checks and of measures: what `explain` and the reports say of each.
#include "audit/audit.h"

#include <algorithm>
#include <iterator>

namespace audit {

namespace {

// clang-format off
const CheckKind kCheckKinds[kChecks] = {
{Check::cells, "cells", "cells of another kind, or no cells",
 "The mesh has cells, and each is a triangle (in two dimensions) or a tetrahedron (in three), linear or quadratic, with the number of nodes of its type.",
 "A deck without elements that the translator reads gives no cells. Triangles beside tetrahedra should be a surface: use kivodeck run."},
{Check::indices, "indices", "rows name nodes that are not there",
 "Every node position in the rows of cells and faces exists: from 0 to the number of nodes less 1. The translator writes -1 for a node that the deck does not have.",
 "Define the nodes that the elements name; kivodeck check lists them."},
{Check::tags, "tags", "tags name no group",
 "The tag of each cell and face is that of a cell or face group. The tag of a node is that of a node group, or 0.",
 "Translate the deck again: the translator writes no tag without its group."},
{Check::groups, "groups", "groups are empty or share a tag",
 "Each group has at least one node, face or cell, and no two groups of a kind have the same tag.",
 "A node or face belongs to one group only: other sets have taken all members of an empty one. If it should not be empty, use kivodeck run with --overlaps=smallest or split."},
{Check::duplicateCells, "duplicate-cells", "cells are the same as one before",
 "No two cells have the same corners.",
 "Look for elements that are in the deck twice with different numbers, for example in two parts."},
{Check::orientation, "orientation", "cells run the wrong way round or are flat",
 "The corners of a triangle are counter-clockwise, and the volume of a tetrahedron is positive: six times the volume (twice the area) exceeds 1e-12 times the product of the edges at the first corner.",
 "The translator reverses cells whose measure is below 1e-10, even correct ones: use a smaller unit of length. Mesh flat cells again."},
{Check::midSideNodes, "mid-side-nodes", "quadratic cells are folded by their mid-side nodes",
 "In a quadratic cell the Jacobian determinant is positive at every corner and every mid-side node. At a corner it becomes 0 if a mid-side node is a quarter of the edge away.",
 "Check the mid-side nodes of the cell: they are on the wrong edge, in another order, or pulled too far towards a curved boundary. Straight edges or a finer mesh avoid that."},
{Check::unusedNodes, "unused-nodes", "nodes are in no cell and no face",
 "Every node is in a cell or in a face.",
 "Translate the deck again: the translator drops such nodes."},
{Check::coincidentNodes, "coincident-nodes", "nodes lie on a node of their region",
 "No two nodes of a region (a part of the mesh that shares no node with the rest) are closer than 1e-8 times the diagonal of the mesh, the default of gmsh. Nodes of groups whose names begin with C_ are copies and not compared; nodes at the place of nodes of other regions are only counted.",
 "The mesh has a crack there. Merge the nodes in the mesher."},
{Check::faces, "faces", "faces belong to no cell, or stand twice",
 "Every face is a side of a cell, or one of the linear pieces of a side of a quadratic cell, and appears once for each cell that has it. It has three nodes in three dimensions, two in two.",
 "Translate the deck again: the translator writes only faces of cells."},
{Check::faceNormals, "face-normals", "faces look out of their cells",
 "The right-hand normal of every face points into its cell; in two dimensions the cell is to the left of the face.",
 "Translate the deck again: the translator writes faces with inward normals."},
{Check::sharedFaces, "shared-faces", "cells share a face with two others, or from the same side",
 "A shared side is shared by exactly two cells, one on each side of it.",
 "Look for overlapping cells, or for a layer that was meshed twice."},
{Check::boundary, "boundary", "places where the boundary is no closed surface",
 "The sides that belong to one cell only form a closed surface that does not touch itself: two of them meet at each edge, and those around a node form one fan. In two dimensions two meet at each node. Violations that are only due to C_ groups are not counted.",
 "Look at the place: parts of the mesh are connected by an edge or a node only."},
{Check::privateNodes, "private-nodes", "nodes of C_ cells are shared",
 "Cells of groups whose names begin with C_ share no node with any other cell.",
 "Translate the deck again: the translator gives such cells their own nodes."},
{Check::lengths, "lengths", "lengths are not those of the mesh",
 "The shortest and longest edge and the characteristic length, in the header and of each cell group, are those that the translator computes for the mesh, within the precision of the coordinates.",
 "Translate the deck again. If you moved nodes in the file, compute the lengths again."},
{Check::coordinates, "coordinates", "nodes have coordinates that are no numbers",
 "No coordinate is infinite or not a number.",
 "Look for the node in the deck: a coordinate is beyond the range of a double, or is the word inf or nan."},
};

// The acceptable ranges are those of the report; it has none for the largest angle between faces.
const MeasureKind kMeasureKinds[kMeasures] = {
{Measure::radiusRatio, "radius_ratio",
 "triangle: R / (2 r) = a b c (a + b + c) / (16 A^2)\ntetrahedron: R / (3 r) = |a^2 (b x c) + b^2 (c x a) + c^2 (a x b)| S / (108 V^2)",
 "Radius of the circumscribed circle (sphere) over that of the inscribed one: 1 for the regular shape, more for all others. A: area; a, b, c: sides, or edges at a corner; S: area of all faces; V: volume.",
 {{1, 3}, {1, 3}}},
{Measure::edgeRatio, "edge_ratio",
 "longest edge / shortest edge",
 "The longest edge over the shortest one: 1 if all are equal.",
 {{1, 1.3}, {1, 3}}},
{Measure::minAngle, "min_angle",
 "triangle: least of arccos(u . v / (|u| |v|)) over its corners\ntetrahedron: least of arccos(-(n . m) / (|n| |m|)) over its edges",
 "The smallest angle in degrees: at a corner of a triangle, inside between two faces of a tetrahedron (n and m: outward normals). 60 and 70.53 for the regular shapes.",
 {{30, 60}, {40, 70.53}}},
{Measure::maxAngle, "max_angle",
 "triangle: largest of arccos(u . v / (|u| |v|)) over its corners\ntetrahedron: largest of arccos(-(n . m) / (|n| |m|)) over its edges",
 "The largest angle in degrees, defined like the smallest. The report has no range for tetrahedra: that one is kivodeck's own.",
 {{60, 90}, {70.52, 120}}},
{Measure::scaledJacobian, "scaled_jacobian",
 "triangle: (2 / sqrt(3)) 2 A / (largest product of two sides)\ntetrahedron: sqrt(2) 6 V / (largest product of the edges at a corner)",
 "Area or volume over the largest product of edges that meet at a corner: 1 for the regular shape, near 0 for a flat one, negative for an inverted tetrahedron. A: area, V: volume.",
 {{0.5, 1.155}, {0.5, 1.414}}},
{Measure::aspectGamma, "aspect_gamma",
 "tetrahedron: q^3 / (6 sqrt(2) V), q^2 = (sum of the squared edges) / 6",
 "The cube of the root mean square edge over the volume: 1 for the regular shape, more for all others. Not defined for triangles.",
 {{1, 3}, {1, 3}}},
};
// clang-format on

} // namespace

const CheckKind &KindOf(Check check) {
    return kCheckKinds[static_cast<std::size_t>(check)];
}

bool FindCheck(const std::string &word, Check *check) {
    const auto *found = std::find_if(std::begin(kCheckKinds), std::end(kCheckKinds),
                                     [&word](const CheckKind &kind) { return word == kind.word; });
    if (found != std::end(kCheckKinds)) {
        *check = found->check;
    }
    return found != std::end(kCheckKinds);
}

const MeasureKind &KindOf(Measure measure) {
    return kMeasureKinds[static_cast<std::size_t>(measure)];
}

bool FindMeasure(const std::string &word, Measure *measure) {
    const auto *found = std::find_if(std::begin(kMeasureKinds), std::end(kMeasureKinds),
                                     [&word](const MeasureKind &kind) { return word == kind.word; });
    if (found != std::end(kMeasureKinds)) {
        *measure = found->measure;
    }
    return found != std::end(kMeasureKinds);
}

} // namespace audit
