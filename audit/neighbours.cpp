// What cells make of one another: equal cells, sides that cells share, and the boundary, where one cell alone has a
// side.
#include "audit/work.h"

#include "audit/tuples.h"

#include <algorithm>
#include <array>
#include <utility>

namespace audit {

namespace {

using Corners = std::array<int, kMostCorners>;

// In ascending order; the same for cells of both orders on the same corners.
Corners SortedCorners(const Work &work, int cell) {
    const auto c = static_cast<std::size_t>(cell);
    const Shape &shape = work.ShapeOfCell(c);
    const int *row = work.mesh.cells.rows.Row(c);
    Corners corners{-1, -1, -1, -1};
    for (int k = 0; k < shape.Corners(); ++k) {
        corners[static_cast<std::size_t>(k)] = row[shape.corners[k]];
    }
    std::sort(corners.begin(), corners.end());
    return corners;
}

// One bit: whether the side's nodes, looked at from inside the cell, go round in the order of the tuple.
template <std::size_t kSide> Tuples<kSide> SidesOf(const Work &work) {
    const meshfile::Rows &rows = work.mesh.cells.rows;
    return SortTuples<kSide>(work.nodes.size(), [&](auto take) {
        for (std::size_t cell = 0; cell < rows.Count(); ++cell) {
            if (!work.Is(cell, kSound)) {
                continue;
            }
            const Shape &shape = work.ShapeOfCell(cell);
            const int *row = rows.Row(cell);
            const bool turned = work.Is(cell, kTurned);
            for (std::size_t k = 0; k <= kSide; ++k) {
                int side[kSide];
                for (std::size_t i = 0; i < kSide; ++i) {
                    side[i] = row[shape.corners[(k + 1 + i) % (kSide + 1)]];
                }
                // Round a tetrahedron every other side comes the other way round.
                const bool odd = SortNodes(side) != (kSide == 3 && k % 2 == 1);
                take(side, static_cast<std::uint32_t>(cell) * 2 + (odd != turned ? 1u : 0u));
            }
        }
    });
}

// Marks the cells of a run that are the same as one before them, and takes them out.
void DropTwins(Work *work, std::vector<std::uint32_t> *owners) {
    std::vector<std::pair<Corners, std::uint32_t>> cells;
    for (const std::uint32_t owner : *owners) {
        cells.emplace_back(SortedCorners(*work, EntryOf(owner)), owner);
    }
    std::sort(cells.begin(), cells.end());
    owners->clear();
    for (std::size_t i = 0; i < cells.size(); ++i) {
        const auto cell = static_cast<std::size_t>(EntryOf(cells[i].second));
        if (i == 0 || cells[i].first != cells[i - 1].first) {
            owners->push_back(cells[i].second);
        } else if (EntryOf(cells[i].second) != EntryOf(cells[i - 1].second) && !work->Is(cell, kTwin)) {
            work->cells[cell] |= kTwin;
            work->Found(Check::duplicateCells, Subject::cell, cell);
        }
    }
}

void Taint(Work *work, int cell) {
    const auto c = static_cast<std::size_t>(cell);
    const meshfile::Rows &rows = work->mesh.cells.rows;
    for (std::size_t k = 0; k < rows.Width(c); ++k) {
        work->nodes[static_cast<std::size_t>(rows.Row(c)[k])] |= kTainted;
    }
}

// A side that more than two cells have, or two that lie on the same side of it.
void FoundShared(Work *work, const std::vector<std::uint32_t> &owners, std::vector<bool> *found) {
    for (const std::uint32_t owner : owners) {
        Taint(work, EntryOf(owner));
    }
    const auto last = static_cast<std::size_t>(EntryOf(*std::max_element(owners.begin(), owners.end())));
    if (!(*found)[last]) {
        (*found)[last] = true;
        work->Found(Check::sharedFaces, Subject::cell, last, static_cast<double>(owners.size()));
    }
}

// A side of the boundary: its nodes in ascending order.
template <std::size_t kSide> using Side = std::array<int, kSide>;

template <std::size_t kSide> std::vector<Side<kSide>> LookAtSides(Work *work) {
    const Tuples<kSide> sides = SidesOf<kSide>(*work);
    std::vector<Side<kSide>> boundary;
    std::vector<std::uint32_t> owners;
    std::vector<bool> found(work->CountOfCells());
    const bool anyFlat = !work->verdict.Of(Check::orientation).Ok() || !work->verdict.Of(Check::coordinates).Ok();
    ForRuns(sides, [&](int first, const Tuple<kSide> *begin, const Tuple<kSide> *end) {
        if (!anyFlat && end - begin == 2 && BitOf(begin[0].owner) != BitOf(begin[1].owner)) {
            return; // as it should be; only flat cells can be equal and look so
        }
        owners.clear();
        for (const Tuple<kSide> *at = begin; at < end; ++at) {
            owners.push_back(at->owner);
        }
        DropTwins(work, &owners);
        const auto isFlat = [work](std::uint32_t owner) {
            return (work->cells[static_cast<std::size_t>(EntryOf(owner))] & (kFlat | kPlaced)) != kPlaced;
        };
        if (owners.size() == 1) {
            Side<kSide> side{first};
            std::copy_n(begin->rest, kSide - 1, side.begin() + 1);
            boundary.push_back(side);
        } else if (owners.size() > 2 || (owners.size() == 2 && BitOf(owners[0]) == BitOf(owners[1]) &&
                                         !std::any_of(owners.begin(), owners.end(), isFlat))) {
            FoundShared(work, owners, &found);
        }
    });
    return boundary;
}

// The boundary
// ---------------------------------------------------------------------------------------------------------

// Where the boundary is no surface: in two dimensions nodes, else edges and nodes. A node alone has -1 for the second.
using Spot = std::array<int, 2>;

// Corners of the boundary's sides, joined across edges that two sides share: a node whose corners stay in several parts
// is where the boundary touches itself.
class Fans {
  public:
    explicit Fans(std::size_t nCorners) : up_(nCorners) {
        for (std::size_t i = 0; i < nCorners; ++i) {
            up_[i] = i;
        }
    }
    std::size_t First(std::size_t corner) {
        while (up_[corner] != corner) {
            up_[corner] = up_[up_[corner]];
            corner = up_[corner];
        }
        return corner;
    }
    void Join(std::size_t a, std::size_t b) {
        up_[First(a)] = First(b);
    }

  private:
    std::vector<std::size_t> up_;
};

std::size_t CornerAt(const std::vector<Side<3>> &boundary, std::size_t side, int node) {
    const auto *at = std::find(boundary[side].begin(), boundary[side].end(), node);
    return 3 * side + static_cast<std::size_t>(at - boundary[side].begin());
}

// Nodes with more than one fan of sides. The edges at which the boundary is no surface are known: their nodes are not
// told again.
void FindPinches(const std::vector<Side<3>> &boundary, std::size_t nNodes, Fans *fans, std::vector<Spot> *spots) {
    std::vector<bool> told(nNodes);
    for (const Spot &spot : *spots) {
        told[static_cast<std::size_t>(spot[0])] = true;
        told[static_cast<std::size_t>(spot[1])] = true;
    }
    std::vector<std::size_t> fanOf(nNodes, SIZE_MAX);
    for (std::size_t corner = 0; corner < 3 * boundary.size(); ++corner) {
        const int node = boundary[corner / 3][corner % 3];
        std::size_t &fan = fanOf[static_cast<std::size_t>(node)];
        const std::size_t first = fans->First(corner);
        fan = fan == SIZE_MAX ? first : fan;
        if (fan != first && !told[static_cast<std::size_t>(node)]) {
            told[static_cast<std::size_t>(node)] = true;
            spots->push_back({node, -1});
        }
    }
}

std::vector<Spot> SpotsOf(const std::vector<Side<3>> &boundary, std::size_t nNodes) {
    const Tuples<2> edges = SortTuples<2>(nNodes, [&boundary](auto take) {
        for (std::size_t side = 0; side < boundary.size(); ++side) {
            for (int k = 0; k < 3; ++k) {
                const Side<3> &nodes = boundary[side];
                const int edge[2] = {nodes[k == 2 ? 1 : 0], nodes[k == 0 ? 1 : 2]};
                take(edge, static_cast<std::uint32_t>(side));
            }
        }
    });
    Fans fans(3 * boundary.size());
    std::vector<Spot> spots;
    ForRuns(edges, [&](int a, const Tuple<2> *begin, const Tuple<2> *end) {
        const int b = begin->rest[0];
        if (end - begin != 2) {
            spots.push_back({a, b});
        }
        for (const Tuple<2> *at = begin + 1; at < end; ++at) {
            for (const int node : {a, b}) {
                fans.Join(CornerAt(boundary, begin->owner, node), CornerAt(boundary, at->owner, node));
            }
        }
    });
    FindPinches(boundary, nNodes, &fans, &spots);
    return spots;
}

std::vector<Spot> SpotsOf(const std::vector<Side<2>> &boundary, std::size_t nNodes) {
    std::vector<int> times(nNodes, 0);
    for (const Side<2> &side : boundary) {
        ++times[static_cast<std::size_t>(side[0])];
        ++times[static_cast<std::size_t>(side[1])];
    }
    std::vector<Spot> spots;
    for (std::size_t node = 0; node < nNodes; ++node) {
        if (times[node] != 0 && times[node] != 2) {
            spots.push_back({static_cast<int>(node), -1});
        }
    }
    return spots;
}

// Each node, or the first one at exactly its place where one of them is a loose cell's: the mesh before the cut.
std::vector<int> BeforeTheCut(const Work &work) {
    std::vector<int> order(work.nodes.size());
    std::vector<int> before(work.nodes.size());
    for (std::size_t n = 0; n < order.size(); ++n) {
        order[n] = before[n] = static_cast<int>(n);
    }
    const auto key = [&work](int node) {
        const Point p = work.At(node);
        return std::array<double, 3>{p.x, p.y, p.z};
    };
    order.erase(std::remove_if(order.begin(), order.end(),
                               [&](int n) {
                                   const std::array<double, 3> at = key(n);
                                   return at[0] != at[0] || at[1] != at[1] || at[2] != at[2]; // nan has no order
                               }),
                order.end());
    std::sort(order.begin(), order.end(), [&key](int a, int b) {
        const std::array<double, 3> p = key(a);
        const std::array<double, 3> q = key(b);
        return p != q ? p < q : a < b;
    });
    for (std::size_t begin = 0, end = 0; begin < order.size(); begin = end) {
        bool isLoose = false;
        for (; end < order.size() && key(order[end]) == key(order[begin]); ++end) {
            isLoose = isLoose || (work.nodes[static_cast<std::size_t>(order[end])] & kInLoose) != 0;
        }
        for (std::size_t i = begin; i < end && isLoose; ++i) {
            before[static_cast<std::size_t>(order[i])] = order[begin];
        }
    }
    return before;
}

// The sides that one cell alone has when nodes are replaced by those before the cut.
template <std::size_t kSide> std::vector<Side<kSide>> BoundaryBefore(const Work &work, const std::vector<int> &before) {
    const Tuples<kSide> sides = SortTuples<kSide>(work.nodes.size(), [&](auto take) {
        for (std::size_t cell = 0; cell < work.CountOfCells(); ++cell) {
            if (!work.IsJoined(cell)) {
                continue;
            }
            const Shape &shape = work.ShapeOfCell(cell);
            for (std::size_t k = 0; k <= kSide; ++k) {
                int side[kSide];
                for (std::size_t i = 0; i < kSide; ++i) {
                    const int node = work.mesh.cells.rows.Row(cell)[shape.corners[(k + 1 + i) % (kSide + 1)]];
                    side[i] = before[static_cast<std::size_t>(node)];
                }
                SortNodes(side);
                take(side, static_cast<std::uint32_t>(cell));
            }
        }
    });
    std::vector<Side<kSide>> boundary;
    ForRuns(sides, [&boundary](int first, const Tuple<kSide> *begin, const Tuple<kSide> *end) {
        if (end - begin == 1) {
            Side<kSide> side{first};
            std::copy_n(begin->rest, kSide - 1, side.begin() + 1);
            boundary.push_back(side);
        }
    });
    return boundary;
}

// Takes out the spots that were none before groups were cut loose.
template <std::size_t kSide> void ForgiveTheCut(const Work &work, std::vector<Spot> *spots) {
    if (spots->empty() || work.verdict.counts.looseCells == 0) {
        return;
    }
    const std::vector<int> before = BeforeTheCut(work);
    std::vector<Spot> stay = SpotsOf(BoundaryBefore<kSide>(work, before), work.nodes.size());
    std::sort(stay.begin(), stay.end());
    const auto isCut = [&](const Spot &spot) {
        Spot was = spot;
        for (int &node : was) {
            node = node < 0 ? node : before[static_cast<std::size_t>(node)];
        }
        if (was[1] >= 0 && was[1] < was[0]) {
            std::swap(was[0], was[1]);
        }
        return !std::binary_search(stay.begin(), stay.end(), was);
    };
    spots->erase(std::remove_if(spots->begin(), spots->end(), isCut), spots->end());
}

// Nodes from which one side of the boundary leads to something that another check has found.
template <std::size_t kSide> std::vector<bool> NearTainted(const Work &work, const std::vector<Side<kSide>> &boundary) {
    std::vector<bool> near(work.nodes.size());
    for (const Side<kSide> &side : boundary) {
        const bool tainted = std::any_of(side.begin(), side.end(), [&work](int node) {
            return (work.nodes[static_cast<std::size_t>(node)] & kTainted) != 0;
        });
        for (const int node : side) {
            near[static_cast<std::size_t>(node)] = near[static_cast<std::size_t>(node)] || tainted;
        }
    }
    return near;
}

template <std::size_t kSide> void CheckBoundary(Work *work, const std::vector<Side<kSide>> &boundary) {
    std::vector<Spot> spots = SpotsOf(boundary, work->nodes.size());
    ForgiveTheCut<kSide>(*work, &spots);
    if (spots.empty()) {
        return;
    }
    const std::vector<bool> near = NearTainted(*work, boundary);
    std::vector<bool> told(work->nodes.size());
    for (const Spot &spot : spots) {
        const auto a = static_cast<std::size_t>(spot[0]);
        const bool nearB = spot[1] >= 0 && near[static_cast<std::size_t>(spot[1])];
        if (!near[a] && !nearB && !told[a]) {
            told[a] = true;
            work->Found(Check::boundary, Subject::node, a);
        }
    }
}

template <std::size_t kSide> void CheckSides(Work *work) {
    const std::vector<Side<kSide>> boundary = LookAtSides<kSide>(work);
    work->verdict.counts.boundaryFaces = static_cast<long long>(boundary.size());
    CheckBoundary<kSide>(work, boundary);
}

} // namespace

void CheckNeighbours(Work *work) {
    if (work->mesh.dimension == 2) {
        CheckSides<2>(work);
    } else if (work->mesh.dimension == 3) {
        CheckSides<3>(work);
    }
}

} // namespace audit
