// The tables of checks and of measures: what `explain` and the reports say of each.
#include "audit/audit.h"

#include <algorithm>
#include <iterator>

namespace audit {

namespace {

// clang-format off
const CheckKind kCheckKinds[kChecks] = {
{Check::cells, "cells", "cells of another kind, or no cells",
 "The mesh has cells, and each is a triangle (in two dimensions) or a tetrahedron (in three), linear or quadratic, with as many nodes as its type has.",
 "A deck without elements that the translator takes leaves no cells; triangles beside tetrahedra belong into a surface. kivodeck check says which."},
{Check::indices, "indices", "rows name nodes that are not there",
 "Every position in the rows of cells and faces is that of a node: 0 up to the number of nodes less 1. -1 is what the translator writes for a node that the deck does not have.",
 "Give the deck the nodes that its elements name; kivodeck check lists them."},
{Check::tags, "tags", "tags name no group",
 "The tag of every cell and face is that of a cell or face group; the tag of a node is that of a node group, or 0.",
 "Translate the deck again: the translator gives no tag without its group."},
{Check::groups, "groups", "groups are empty or share a tag",
 "Each group holds at least one node, face or cell, and no two groups of a kind have one tag.",
 "A node or face has room for one group, and the first set wins: an earlier set has taken all members of an empty one. kivodeck flatten --overlaps gives them to the smaller set."},
{Check::duplicateCells, "duplicate-cells", "cells are the same as one before",
 "No two cells have the same corners.",
 "Look for elements that are in the deck twice under two numbers, for example in two parts."},
{Check::orientation, "orientation", "cells run the wrong way round or are flat",
 "The corners of a triangle go round counter-clockwise, a tetrahedron's volume is above 0; six times the volume (twice the area) is more than 1e-12 of the product of the edges at the first corner.",
 "The translator turns cells whose measure is below 1e-10, also right ones that are that small: choose a smaller unit of length. Flat cells have to be meshed anew."},
{Check::midSideNodes, "mid-side-nodes", "quadratic cells are folded by their mid-side nodes",
 "In a quadratic cell the determinant of the Jacobian matrix is above 0 at every corner and every mid-side node. At a corner it falls to 0 when a mid-side node stands a quarter of the edge away.",
 "Look at the mid-side nodes of the cell: on the wrong edge, in another order, or pulled too far towards a curved boundary."},
{Check::unusedNodes, "unused-nodes", "nodes are in no cell and no face",
 "Every node is in a cell or in a face.",
 "Translate the deck again: the translator drops such nodes."},
{Check::coincidentNodes, "coincident-nodes", "nodes lie on a node of their region",
 "No two nodes of a region (a part of the mesh that shares no node with the rest) are closer than 1e-8 of the diagonal of the mesh, gmsh's default. Nodes of groups whose names begin with C_ are copies and left out; nodes on nodes of other regions are counted only.",
 "Merge the nodes in the program that made the mesh: the mesh has a crack there."},
{Check::faces, "faces", "faces belong to no cell, or stand twice",
 "Every face is a side of a cell, or one of the linear pieces of a quadratic cell's side, and stands once for each cell that has it. In three dimensions it has three nodes, in two dimensions two.",
 "Translate the deck again: the translator makes faces of cells only."},
{Check::faceNormals, "face-normals", "faces look out of their cells",
 "The normal of every face, by the right hand round its nodes, points into its cell; in two dimensions the cell is to the left of the face.",
 "Translate the deck again: the translator makes faces that look inwards."},
{Check::sharedFaces, "shared-faces", "cells share a face with two others, or from the same side",
 "A side that cells share is shared by two, one on each side of it.",
 "Look for cells that lie over one another, or for a layer that was meshed twice."},
{Check::boundary, "boundary", "places where the boundary is no closed surface",
 "The sides that one cell alone has make a closed surface that nowhere touches itself: two meet at each edge, and round each node they make one fan. In two dimensions two meet at each node. What only the cut of a C_ group makes otherwise is left out.",
 "Look at the place: parts of the mesh hang together there by an edge or by a node alone."},
{Check::privateNodes, "private-nodes", "nodes of C_ cells are shared",
 "The cells of groups whose names begin with C_ share no node with any cell.",
 "Translate the deck again: the translator gives such cells nodes of their own."},
{Check::lengths, "lengths", "lengths are not those of the mesh",
 "The shortest and the longest edge and the characteristic length, of each cell group and in the header, are what the translator's formulas give for the mesh, as far as the digits of the coordinates tell.",
 "Translate the deck again. Whoever moves nodes in the file has to measure the lengths again."},
{Check::coordinates, "coordinates", "nodes have coordinates that are no numbers",
 "No coordinate is infinite or not a number.",
 "Look for the node in the deck: a coordinate there is beyond the range of doubles, or the word inf or nan."},
};

// The acceptable ranges are those of the report; it has none for the largest angle between faces.
const MeasureKind kMeasureKinds[kMeasures] = {
{Measure::radiusRatio, "radius_ratio",
 "triangle: R / (2 r) = a b c (a + b + c) / (16 A^2)\ntetrahedron: R / (3 r) = |a^2 (b x c) + b^2 (c x a) + c^2 (a x b)| S / (108 V^2)",
 "Radius of the circle (sphere) through the corners over that of the one inside, 1 for the regular shape and more for every other. A: area; a, b, c: sides, or edges at a corner; S: area of all faces; V: volume.",
 {{1, 3}, {1, 3}}},
{Measure::edgeRatio, "edge_ratio",
 "longest edge / shortest edge",
 "The longest edge over the shortest one, 1 where all are the same.",
 {{1, 1.3}, {1, 3}}},
{Measure::minAngle, "min_angle",
 "triangle: least of arccos(u . v / (|u| |v|)) over its corners\ntetrahedron: least of arccos(-(n . m) / (|n| |m|)) over its edges",
 "The smallest angle in degrees: at a corner of a triangle, inside between two faces of a tetrahedron (n and m: outward normals). 60 and 70.53 for the regular shapes.",
 {{30, 60}, {40, 70.53}}},
{Measure::maxAngle, "max_angle",
 "triangle: largest of arccos(u . v / (|u| |v|)) over its corners\ntetrahedron: largest of arccos(-(n . m) / (|n| |m|)) over its edges",
 "The largest angle in degrees, taken like the smallest. The report has no range of it for tetrahedra: theirs is this program's own.",
 {{60, 90}, {70.52, 120}}},
{Measure::scaledJacobian, "scaled_jacobian",
 "triangle: (2 / sqrt(3)) 2 A / (largest product of two sides)\ntetrahedron: sqrt(2) 6 V / (largest product of the edges at a corner)",
 "Area or volume over the product of the longest edges that meet, 1 for the regular shape and near 0 for a flat one; below 0 for a tetrahedron that is turned. A: area, V: volume.",
 {{0.5, 1.155}, {0.5, 1.414}}},
{Measure::aspectGamma, "aspect_gamma",
 "tetrahedron: q^3 / (6 sqrt(2) V), q^2 = (sum of the squared edges) / 6",
 "The mean edge cubed over the volume, 1 for the regular shape and more for every other. Triangles have no such measure.",
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
