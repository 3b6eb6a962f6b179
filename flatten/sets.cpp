// Node sets, and surfaces of nodes, which are node sets in the plain deck.
#include "flatten/names.h"
#include "flatten/origins.h"
#include "flatten/overlaps.h"

#include <algorithm>
#include <utility>

namespace flatten {

namespace {

using StandingClaim = std::pair<DeckOrder, Claim>;

Claim MakeClaim(const Making &m, const std::string &name, const std::string &plain, int placed,
                const std::vector<int> &members, const deck::Place &place, const char *kind) {
    return {name, plain, m.InstanceOf(placed), members, static_cast<long long>(members.size()), place, kind};
}

std::vector<Claim> ClaimNodes(const Making &m) {
    std::vector<StandingClaim> claims;
    for (const deck::MeshSet &set : m.mesh.nodeSets) {
        if (set.members.empty() && !HasOwnSection(m, set, true)) {
            continue; // a *NODE line without rows
        }
        const Standing standing = StandingOf(m, set, true);
        claims.emplace_back(standing.order,
                            MakeClaim(m, set.name, set.plain, set.placed, set.members, standing.place, "nset"));
    }
    for (const deck::MeshSurface &surface : m.mesh.surfaces) {
        if (surface.ofNodes) {
            const Standing standing = StandingOf(m, surface);
            claims.emplace_back(standing.order, MakeClaim(m, surface.name, surface.plain, surface.placed, surface.nodes,
                                                          standing.place, "surface"));
        }
    }
    std::stable_sort(claims.begin(), claims.end(),
                     [](const StandingClaim &a, const StandingClaim &b) { return a.first < b.first; });
    std::vector<Claim> ordered;
    ordered.reserve(claims.size());
    for (StandingClaim &claim : claims) {
        ordered.push_back(std::move(claim.second));
    }
    return ordered;
}

// The nodes that must be in a set for the diagonal's new node to be in it: those of the face, or of the element.
bool AllAround(const Making &m, const Diagonal &diagonal, const std::vector<int> &mark, int value) {
    const deck::ElementRun &run = m.mesh.elementRuns[static_cast<std::size_t>(RunOfElement(m.mesh, diagonal.element))];
    const int *nodes = NodesOfElement(m.mesh, run, diagonal.element);
    const auto isIn = [&](int row) { return mark[static_cast<std::size_t>(nodes[row])] == value; };
    const deck::Shape shape = m.TypeOf(run).shape;
    bool all = true;
    for (int i = 0; diagonal.face < 0 && i < run.width; ++i) {
        all = all && isIn(i);
    }
    if (diagonal.face >= 0) {
        const deck::FaceRow &face = deck::FaceOf(shape, diagonal.face);
        for (int i = 0; i < face.nCorners; ++i) {
            const int next = face.corner[(i + 1) % face.nCorners];
            all = all && isIn(face.corner[i]) && isIn(MidNodeOf(shape, face.corner[i], next));
        }
    }
    return all;
}

// New nodes follow the nodes around them.
void AddMiddles(const Making &m, const std::vector<Diagonal> &diagonals, std::vector<Claim> *claims) {
    const std::size_t nOld = m.plain.x.size() - diagonals.size();
    std::vector<int> mark(nOld, -1);
    for (std::size_t c = 0; c < claims->size() && !diagonals.empty(); ++c) {
        std::vector<int> &items = (*claims)[c].items;
        for (const int node : items) {
            mark[static_cast<std::size_t>(node)] = static_cast<int>(c);
        }
        std::vector<int> added;
        for (const int node : items) {
            const std::uint64_t key = KeyOfEnds(node, node);
            auto at = std::lower_bound(diagonals.begin(), diagonals.end(), key,
                                       [](const Diagonal &d, std::uint64_t k) { return d.key < k; });
            for (; at != diagonals.end() && at->key >> 32 == key >> 32; ++at) {
                if (AllAround(m, *at, mark, static_cast<int>(c))) {
                    added.push_back(static_cast<int>(nOld + static_cast<std::size_t>(at - diagonals.begin())));
                }
            }
        }
        std::sort(added.begin(), added.end());
        items.insert(items.end(), added.begin(), added.end());
    }
}

} // namespace

void MakeNodeSets(Making *m, const std::vector<Diagonal> &diagonals) {
    std::vector<Claim> claims = ClaimNodes(*m);
    AddMiddles(*m, diagonals, &claims);
    ResolveOverlaps(m, Code::overlapNodes, static_cast<int>(m->plain.x.size()), &claims);
    std::vector<std::string> names = NameClaims(m, claims, kOnNset);
    for (std::size_t c = 0; c < claims.size(); ++c) {
        m->plain.nodeSets.push_back({std::move(names[c]), std::move(claims[c].items)});
    }
}

} // namespace flatten
