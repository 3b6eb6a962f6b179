// The mesh judged: what "mesh.input" holds is held against what a mesh must be.
//
//     Judge -> Verdict -> counts, one outcome a check, surfaces, quality
//
// A check tells only its own kind of fault: what one check has found is left out by those that build on it. A cell with
// a wrong index has no volume to judge, the second of two equal cells shares no faces.
#ifndef KIVOM_AUDIT_AUDIT_H
#define KIVOM_AUDIT_AUDIT_H

#include "audit/quality.h"

#include "meshfile/meshfile.h"

#include <array>
#include <string>
#include <vector>

namespace audit {

// ORDER: rows of kCheckKinds in kinds.cpp.
enum class Check : unsigned char {
    cells,
    indices,
    tags,
    groups,
    duplicateCells,
    orientation,
    midSideNodes,
    unusedNodes,
    coincidentNodes,
    faces,
    faceNormals,
    sharedFaces,
    boundary,
    privateNodes,
    lengths,
    coordinates
};
constexpr int kChecks = static_cast<int>(Check::coordinates) + 1;

struct CheckKind {
    Check check;
    const char *word;        // stable: lower case and dashes
    const char *fault;       // what is counted, after a number above 1: "cells run the wrong way round"
    const char *explanation; // what it asks for, in sentences
    const char *remedy;
};

const CheckKind &KindOf(Check check);

// The check of that word, or false.
bool FindCheck(const std::string &word, Check *check);

// What a place is: an entry of the mesh, or the mesh itself (index 0). Groups are counted in the order of the file.
enum class Subject : unsigned char { node, face, cell, nodeGroup, faceGroup, cellGroup, mesh };

struct Place {
    int index = 0;
    float badness = 0; // the larger the worse, among the places of one check; equal ones stand in the mesh's order
    Subject subject = Subject::mesh;
};

// Every place that fails the check, once; the worst come first.
struct Outcome {
    std::vector<Place> places;

    bool Ok() const {
        return places.empty();
    }
};

struct Counts {
    int dimension = 0; // 0: the file names none
    long long nodes = 0, faces = 0, cells = 0;
    long long nodeGroups = 0, faceGroups = 0, cellGroups = 0;
    long long regions = 0;       // parts of the mesh that share no node
    long long looseCells = 0;    // cells of groups whose names begin with "C_": each is a region of its own
    long long touchingNodes = 0; // nodes at the place of a node of another region, loose cells left out
    long long boundaryFaces = 0; // faces of cells that one cell has
};

// What a face group looks like as a surface (in two dimensions: as a line).
struct Surface {
    long long faces = 0;
    long long openEdges = 0;     // that one face has; a surface without any is closed
    long long overusedEdges = 0; // that more than two faces have
};

struct Verdict {
    Counts counts;
    std::array<Outcome, kChecks> checks;
    std::vector<Surface> surfaces; // one for each face group
    std::array<Histogram, kMeasures> quality;
    int measures = 0; // that the dimension has: the first so many

    const Outcome &Of(Check check) const {
        return checks[static_cast<std::size_t>(check)];
    }
    int Failed() const;
};

// Time n log n in the mesh, memory a small multiple of it.
Verdict Judge(const meshfile::Mesh &mesh, const Limits &limits = {});

// What can be counted without judging: regions and what follows are 0.
Counts CountsOf(const meshfile::Mesh &mesh);

// The middle of a place, as far as its nodes are there; false when none is.
bool MiddleOf(const meshfile::Mesh &mesh, const Place &place, double (&middle)[3]);

// The name of the group that the place carries or is; null without one.
const std::string *GroupOf(const meshfile::Mesh &mesh, const Place &place);

} // namespace audit

#endif
