// The file's faces: each is a side of a cell, or a piece of one; no cell has one twice; each looks into its cell.
#include "audit/work.h"

#include "audit/tuples.h"

#include <algorithm>
#include <iterator>

namespace audit {

namespace {

// What one run of equal faces meets among the cells. Index: the way that the nodes go round, by the tuple's bit.
struct Cells {
    int way[2] = {0, 0};
};

// A face's nodes as a tuple, the bit for the way they go round. False when it is no face of such a mesh.
template <std::size_t kSide> bool FaceNodes(const Work &work, std::size_t face, int (&nodes)[kSide], bool *odd) {
    const meshfile::Rows &rows = work.mesh.faces.rows;
    if (rows.Width(face) != kSide) {
        return false;
    }
    std::copy_n(rows.Row(face), kSide, nodes);
    *odd = SortNodes(nodes);
    return work.HasNode(nodes[0]) && work.HasNode(nodes[kSide - 1]);
}

template <std::size_t kSide> Tuples<kSide> SortedFaces(const Work &work) {
    return SortTuples<kSide>(work.nodes.size(), [&work](auto take) {
        for (std::size_t face = 0; face < work.mesh.faces.rows.Count(); ++face) {
            int nodes[kSide];
            bool odd = false;
            if (FaceNodes(work, face, nodes, &odd)) {
                take(nodes, static_cast<std::uint32_t>(face) * 2 + (odd ? 1u : 0u));
            }
        }
    });
}

// The first tuple of these nodes, or its bucket's end.
template <std::size_t kSide> std::size_t Find(const Tuples<kSide> &faces, const int (&nodes)[kSide]) {
    Tuple<kSide> wanted{};
    std::copy_n(nodes + 1, kSide - 1, wanted.rest);
    const auto bucket = static_cast<std::size_t>(nodes[0]);
    const Tuple<kSide> *begin = faces.tuples.data() + faces.first[bucket];
    const Tuple<kSide> *end = faces.tuples.data() + faces.first[bucket + 1];
    const Tuple<kSide> *at =
        std::lower_bound(begin, end, wanted, [](const auto &a, const auto &b) { return IsBefore(a, b); });
    return at < end && AreSame(*at, wanted) ? static_cast<std::size_t>(at - faces.tuples.data()) : faces.tuples.size();
}

// A flat cell's sides look both ways.
template <std::size_t kSide>
void MeetCell(const Work &work, std::size_t cell, const Tuples<kSide> &faces, std::vector<Cells> *met) {
    const Shape &shape = work.ShapeOfCell(cell);
    const int *row = work.mesh.cells.rows.Row(cell);
    const bool eitherWay = (work.cells[cell] & (kFlat | kPlaced)) != kPlaced;
    for (int side = 0; side < shape.Corners(); ++side) {
        for (int piece = 0; piece < shape.nPieces; ++piece) {
            int nodes[kSide];
            for (std::size_t i = 0; i < kSide; ++i) {
                nodes[i] = row[shape.pieces[side][piece][i]];
            }
            const bool odd = SortNodes(nodes) != work.Is(cell, kTurned);
            const std::size_t at = Find(faces, nodes);
            if (at < faces.tuples.size()) {
                (*met)[at].way[0] += !odd || eitherWay ? 1 : 0;
                (*met)[at].way[1] += odd || eitherWay ? 1 : 0;
            }
        }
    }
}

// Cells with too few nodes in faces have no face.
template <std::size_t kSide> std::vector<Cells> MeetCells(const Work &work, const Tuples<kSide> &faces) {
    std::vector<Cells> met(faces.tuples.size());
    const meshfile::Rows &rows = work.mesh.cells.rows;
    for (std::size_t cell = 0; cell < rows.Count() && !met.empty(); ++cell) {
        if (work.IsJoined(cell)) {
            const int *row = rows.Row(cell);
            const auto n = std::count_if(row, row + rows.Width(cell), [&work](int node) {
                return (work.nodes[static_cast<std::size_t>(node)] & kInFace) != 0;
            });
            if (static_cast<std::size_t>(n) >= kSide) {
                MeetCell(work, cell, faces, &met);
            }
        }
    }
    return met;
}

// One run of equal faces: those that go round one way, then the other.
template <std::size_t kSide>
void JudgeRun(Work *work, const Tuple<kSide> *begin, const Tuple<kSide> *end, const Cells &cells) {
    int left[2] = {cells.way[0], cells.way[1]};
    for (const Tuple<kSide> *at = begin; at < end; ++at) {
        const auto face = static_cast<std::size_t>(EntryOf(at->owner));
        const int way = BitOf(at->owner);
        if (cells.way[0] + cells.way[1] == 0) {
            work->Found(Check::faces, Subject::face, face, 1);
        } else if (cells.way[way] == 0) {
            work->Found(Check::faceNormals, Subject::face, face);
        } else if (--left[way] < 0) {
            work->Found(Check::faces, Subject::face, face);
        }
    }
}

// Whether all nodes but one are of something that another check has found: its cell may be one with a wrong index.
template <std::size_t kSide> bool MayBeOfFaultyCell(const Work &work, int first, const Tuple<kSide> &tuple) {
    const auto tainted = [&work](int node) { return (work.nodes[static_cast<std::size_t>(node)] & kTainted) != 0; };
    const auto n = (tainted(first) ? 1 : 0) + std::count_if(std::begin(tuple.rest), std::end(tuple.rest), tainted);
    return static_cast<std::size_t>(n) >= kSide - 1;
}

template <std::size_t kSide> void CheckAll(Work *work) {
    const meshfile::Rows &rows = work->mesh.faces.rows;
    for (std::size_t face = 0; face < rows.Count(); ++face) {
        if (rows.Width(face) != kSide) {
            work->Found(Check::faces, Subject::face, face, 2);
        }
    }
    if (rows.Count() > 0 && work->mesh.faces.width != kSide && work->verdict.Of(Check::faces).Ok()) {
        work->Found(Check::faces, Subject::mesh, 0, 2);
    }
    const Tuples<kSide> faces = SortedFaces<kSide>(*work);
    const std::vector<Cells> met = MeetCells<kSide>(*work, faces);
    ForRuns(faces, [&](int first, const Tuple<kSide> *begin, const Tuple<kSide> *end) {
        if (!MayBeOfFaultyCell(*work, first, *begin)) {
            JudgeRun(work, begin, end, met[static_cast<std::size_t>(begin - faces.tuples.data())]);
        }
    });
}

} // namespace

void CheckFaces(Work *work) {
    if (work->mesh.dimension == 2) {
        CheckAll<2>(work);
    } else if (work->mesh.dimension == 3) {
        CheckAll<3>(work);
    }
}

} // namespace audit
