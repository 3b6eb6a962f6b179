// Judging a mesh: any mesh that a file can hold. Bytes make its nodes, rows, types, tags and groups, mostly small
// numbers so that things meet. Whatever is found is there, once, the worst first.
#include "fuzz/oracle.h"

#include "audit/audit.h"

#include <limits>
#include <set>
#include <tuple>

namespace {

using meshfile::Mesh;

int Next(Bytes *bytes, int below) {
    return static_cast<int>(NextByte(bytes)) % below;
}

double Coordinate(Bytes *bytes) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    const double odd[] = {kInfinity, -kInfinity, std::numeric_limits<double>::quiet_NaN(), 1e308, -1e308, 5e-324,
                          1e-9,      0.5};
    const int byte = Next(bytes, 64);
    return byte < 8 ? odd[byte] : (byte - 8) % 4;
}

int Position(Bytes *bytes, int nNodes) {
    const int byte = Next(bytes, 64);
    return byte == 0 ? -1 : byte == 1 ? nNodes : byte == 2 ? std::numeric_limits<int>::max() : byte % nNodes;
}

void AddRow(meshfile::Rows *rows, Bytes *bytes, int width, int nNodes) {
    if (rows->first.empty()) {
        rows->first.push_back(0);
    }
    for (int k = 0; k < width; ++k) {
        rows->nodes.push_back(Position(bytes, nNodes));
    }
    rows->first.push_back(rows->nodes.size());
}

void AddCell(Mesh *mesh, Bytes *bytes, int nNodes) {
    constexpr int kWidths[] = {3, 6, 4, 10};
    const int byte = Next(bytes, 32);
    const int kind = byte < 4 ? byte : mesh->dimension == 2 ? byte % 2 : 2 + byte % 2;
    const int width = byte == 31 ? 2 : kWidths[kind];
    AddRow(&mesh->cells.rows, bytes, width, nNodes);
    mesh->cells.types.push_back(byte == 30 ? 55 : 3 + kind);
    mesh->cells.tags.push_back(1 + Next(bytes, 3));
}

Mesh MakeMesh(Bytes *bytes) {
    Mesh mesh;
    mesh.dimension = 2 + Next(bytes, 2);
    const int nNodes = 1 + Next(bytes, 24);
    for (int n = 0; n < nNodes; ++n) {
        mesh.nodes.x.push_back(Coordinate(bytes));
        mesh.nodes.y.push_back(Coordinate(bytes));
        if (mesh.dimension == 3) {
            mesh.nodes.z.push_back(Coordinate(bytes));
        }
        mesh.nodes.tags.push_back(n % 3);
        mesh.nodes.onBoundary.push_back(1);
    }
    mesh.nodeGroups = {{"A", 1}};
    mesh.faceGroups = {{"B", 1}, {"D", 1 + Next(bytes, 2)}};
    mesh.cellGroups = {{Next(bytes, 2) == 0 ? "C_1" : "E", 1, {}}, {"C_1", 2, {}}};
    while (bytes->at < bytes->end) {
        if (Next(bytes, 4) == 0) {
            AddRow(&mesh.faces.rows, bytes, Next(bytes, 16) == 0 ? 1 : mesh.dimension, nNodes);
            mesh.faces.tags.push_back(1 + Next(bytes, 2));
        } else {
            AddCell(&mesh, bytes, nNodes);
        }
    }
    mesh.faces.width = mesh.dimension;
    return mesh;
}

std::size_t EntriesOf(const Mesh &mesh, audit::Subject subject) {
    switch (subject) {
    case audit::Subject::node:
        return mesh.nodes.Count();
    case audit::Subject::face:
        return mesh.faces.rows.Count();
    case audit::Subject::cell:
        return mesh.cells.rows.Count();
    case audit::Subject::nodeGroup:
        return mesh.nodeGroups.size();
    case audit::Subject::faceGroup:
        return mesh.faceGroups.size();
    case audit::Subject::cellGroup:
        return mesh.cellGroups.size();
    default:
        return 1;
    }
}

void LookAt(const Mesh &mesh, const audit::Outcome &outcome) {
    std::set<std::tuple<audit::Subject, int>> seen;
    for (std::size_t i = 0; i < outcome.places.size(); ++i) {
        const audit::Place &place = outcome.places[i];
        Require(place.index >= 0 && static_cast<std::size_t>(place.index) < EntriesOf(mesh, place.subject),
                "a place is in the mesh");
        Require(seen.insert({place.subject, place.index}).second, "a place stands once");
        Require(i == 0 || !(place.badness > outcome.places[i - 1].badness), "the worst come first");
        double middle[3];
        audit::MiddleOf(mesh, place, middle);
        audit::GroupOf(mesh, place);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    Bytes bytes{data, data + size};
    const Mesh mesh = MakeMesh(&bytes);
    const audit::Verdict verdict = audit::Judge(mesh);
    for (const audit::Outcome &outcome : verdict.checks) {
        LookAt(mesh, outcome);
    }
    for (int m = 0; m < verdict.measures; ++m) {
        const audit::Histogram &histogram = verdict.quality[static_cast<std::size_t>(m)];
        long long values = 0;
        for (const long long bin : histogram.bins) {
            values += bin;
        }
        Require(values == histogram.values, "every value is in a bin");
        Require(histogram.edges[0] <= histogram.min && histogram.max <= histogram.edges[audit::kBins],
                "the bins hold all");
    }
    return 0;
}
