// Nodes at one place.
//
// Space is cut into boxes, and nodes are sorted by their boxes. A node near a box's side is put into the box behind it,
// too, so that each pair that is close shares a box.
#include "audit/work.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>

namespace audit {

namespace {

// As far as that, by the diagonal of the mesh, nodes are at one place: gmsh's default (Geometry.Tolerance).
constexpr double kTolerance = 1e-8;

// Side of a box. Large: few nodes lie near a side. Small: nodes of a box that are further apart than the tolerance are
// few however a mesh is made.
constexpr double kBoxes = 64;

struct Entry {
    std::uint64_t box;
    int node;
};

struct Grid {
    Point low{HUGE_VAL, HUGE_VAL, HUGE_VAL};
    Point high{-HUGE_VAL, -HUGE_VAL, -HUGE_VAL};
    double tolerance = 0;
    double side = 0;
};

bool IsFinite(Point p) {
    return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z);
}

Grid GridOf(const Work &work) {
    Grid grid;
    for (std::size_t n = 0; n < work.nodes.size(); ++n) {
        const Point p = work.At(static_cast<int>(n));
        if (IsFinite(p)) {
            grid.low = {std::min(grid.low.x, p.x), std::min(grid.low.y, p.y), std::min(grid.low.z, p.z)};
            grid.high = {std::max(grid.high.x, p.x), std::max(grid.high.y, p.y), std::max(grid.high.z, p.z)};
        }
    }
    const double largest = std::max(
        {grid.high.x / 2 - grid.low.x / 2, grid.high.y / 2 - grid.low.y / 2, grid.high.z / 2 - grid.low.z / 2});
    const double x = (grid.high.x / 2 - grid.low.x / 2) / largest;
    const double y = (grid.high.y / 2 - grid.low.y / 2) / largest;
    const double z = (grid.high.z / 2 - grid.low.z / 2) / largest;
    // Halves: a mesh may be wider than the largest double.
    grid.tolerance = largest > 0 ? 2 * kTolerance * largest * std::sqrt(x * x + y * y + z * z) : 0;
    grid.side = kBoxes * grid.tolerance;
    return grid;
}

// Boxes along an axis are fewer than 2^21: 1e8 / 64, and a few.
std::int64_t BoxAlong(double at, double low, double side) {
    return side > 0 ? static_cast<std::int64_t>((at / 2 - low / 2) / (side / 2)) : 0;
}

std::uint64_t BoxOf(std::int64_t i, std::int64_t j, std::int64_t k) {
    return static_cast<std::uint64_t>(i) << 42 | static_cast<std::uint64_t>(j) << 21 | static_cast<std::uint64_t>(k);
}

// The box of the node, and those that its tolerance reaches.
void AddEntries(const Grid &grid, Point p, int node, std::vector<Entry> *entries) {
    std::int64_t from[3];
    std::int64_t to[3];
    const double at[3] = {p.x, p.y, p.z};
    const double low[3] = {grid.low.x, grid.low.y, grid.low.z};
    for (int a = 0; a < 3; ++a) {
        from[a] = BoxAlong(at[a], low[a], grid.side);
        to[a] = std::max(from[a], BoxAlong(at[a] + grid.tolerance, low[a], grid.side));
    }
    for (std::int64_t i = from[0]; i <= to[0]; ++i) {
        for (std::int64_t j = from[1]; j <= to[1]; ++j) {
            for (std::int64_t k = from[2]; k <= to[2]; ++k) {
                entries->push_back({BoxOf(i, j, k), node});
            }
        }
    }
}

// Nodes of loose cells are copies: they are left out.
std::vector<Entry> SortedEntries(const Work &work, const Grid &grid) {
    std::vector<Entry> entries;
    entries.reserve(work.nodes.size() + work.nodes.size() / 8);
    for (std::size_t n = 0; n < work.nodes.size(); ++n) {
        const int node = static_cast<int>(n);
        const Point p = work.At(node);
        if ((work.nodes[n] & (kInLoose | kInSound)) == kInSound && IsFinite(p)) {
            AddEntries(grid, p, node, &entries);
        }
    }
    std::sort(entries.begin(), entries.end(),
              [](const Entry &a, const Entry &b) { return a.box != b.box ? a.box < b.box : a.node < b.node; });
    return entries;
}

bool AreClose(Point a, Point b, double tolerance) {
    return std::fabs(a.x - b.x) <= tolerance && std::fabs(a.y - b.y) <= tolerance && std::fabs(a.z - b.z) <= tolerance;
}

// Whether a node has one, as bits.
enum Partner : unsigned char { kOfItsRegion = 1, kOfAnother = 2 };

// The search through one box, whose nodes stand in the order of x, where that is asked for region by region.
struct Search {
    const Work &work;
    double tolerance;
    std::vector<int> box;
    std::vector<unsigned char> partners; // of all nodes
};

int RegionOf(const Search &search, int node) {
    return search.work.regions[static_cast<std::size_t>(node)];
}

// Looks from the place on, forwards (1) or backwards (-1), for a partner; marks both when there is one.
bool FindPartner(Search *search, std::ptrdiff_t place, std::ptrdiff_t step, Partner kind) {
    const int a = search->box[static_cast<std::size_t>(place)];
    const Point p = search->work.At(a);
    const auto end = static_cast<std::ptrdiff_t>(search->box.size());
    for (std::ptrdiff_t at = place + step; at >= 0 && at < end; at += step) {
        const int b = search->box[static_cast<std::size_t>(at)];
        const Point q = search->work.At(b);
        const bool same = RegionOf(*search, a) == RegionOf(*search, b);
        if ((kind == kOfItsRegion && !same) || std::fabs(q.x - p.x) > search->tolerance) {
            return false;
        }
        if (same == (kind == kOfItsRegion) && AreClose(p, q, search->tolerance)) {
            search->partners[static_cast<std::size_t>(a)] |= kind;
            search->partners[static_cast<std::size_t>(b)] |= kind;
            return true;
        }
    }
    return false;
}

void FindPartners(Search *search, Partner kind) {
    for (std::size_t i = 0; i < search->box.size(); ++i) {
        const auto place = static_cast<std::ptrdiff_t>(i);
        if ((search->partners[static_cast<std::size_t>(search->box[i])] & kind) == 0 &&
            !FindPartner(search, place, 1, kind)) {
            FindPartner(search, place, -1, kind);
        }
    }
}

// Partners in a node's own region first. Nodes that have one are left out then: what is left of a region lies apart,
// and however many nodes are at one place, each meets one of another region at once.
void LookThrough(Search *search) {
    std::vector<int> &box = search->box;
    const auto byX = [search](int a, int b) { return search->work.At(a).x < search->work.At(b).x; };
    const auto byRegion = [search](int a, int b) { return RegionOf(*search, a) < RegionOf(*search, b); };
    const auto hasPartner = [search](int n) {
        return (search->partners[static_cast<std::size_t>(n)] & kOfItsRegion) != 0;
    };
    std::stable_sort(box.begin(), box.end(), byX);
    std::stable_sort(box.begin(), box.end(), byRegion);
    FindPartners(search, kOfItsRegion);
    box.erase(std::remove_if(box.begin(), box.end(), hasPartner), box.end());
    std::stable_sort(box.begin(), box.end(), byX);
    FindPartners(search, kOfAnother);
}

std::vector<unsigned char> PartnersOf(const Work &work) {
    const Grid grid = GridOf(work);
    const std::vector<Entry> entries = SortedEntries(work, grid);
    Search search{work, grid.tolerance, {}, std::vector<unsigned char>(work.nodes.size(), 0)};
    for (std::size_t at = 0; at < entries.size();) {
        const std::size_t begin = at;
        while (at < entries.size() && entries[at].box == entries[begin].box) {
            ++at;
        }
        if (at - begin > 1) {
            search.box.clear();
            for (std::size_t i = begin; i < at; ++i) {
                search.box.push_back(entries[i].node);
            }
            LookThrough(&search);
        }
    }
    return std::move(search.partners);
}

} // namespace

void CheckCoincidentNodes(Work *work) {
    const std::vector<unsigned char> partners = PartnersOf(*work);
    for (std::size_t node = 0; node < partners.size(); ++node) {
        if ((partners[node] & kOfItsRegion) != 0) {
            work->Found(Check::coincidentNodes, Subject::node, node);
            work->nodes[node] |= kTainted;
        } else if ((partners[node] & kOfAnother) != 0) {
            ++work->verdict.counts.touchingNodes;
        }
    }
}

} // namespace audit
