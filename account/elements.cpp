// Elements: their dimension, orientation and type, and the nodes that none of them uses.
#include "account/account.h"

#include "abaqus/abqdeck.h"
#include "deck/measure.h"
#include "support/lookup.h"

#include <algorithm>
#include <cmath>

namespace account {

namespace {

using deck::ElementRun;
using deck::Mesh;
using deck::Shape;

const deck::ElementSection &SectionOf(const Account &account, const ElementRun &run) {
    return account.deck.scopes[static_cast<std::size_t>(run.scope)]
        .elements.sections[static_cast<std::size_t>(run.section)];
}

const deck::ElementType &TypeOf(const Account &account, const ElementRun &run) {
    return account.deck.types[static_cast<std::size_t>(run.type)].type;
}

// Whether the reader has made a record of the run's section, and it stands for this instance.
bool HoldsRun(const Account &account, const ElementRun &run) {
    const deck::ElementSection &section = SectionOf(account, run);
    return account.placedHeld[static_cast<std::size_t>(run.placed)] != 0 && section.file == 0 &&
           account.cards[static_cast<std::size_t>(section.card)].state == CardState::held;
}

void MarkUsedNodes(Account *account) {
    const Mesh &mesh = account->mesh;
    account->nodeUsed.assign(mesh.nodeNumber.size(), kUnused);
    for (const int node : mesh.nodes) {
        if (node >= 0) {
            account->nodeUsed[static_cast<std::size_t>(node)] = kUsed;
        }
    }
}

// Some elements of one section that have something in common: the line of the first and how many.
struct Some {
    int line = 0;
    long long count = 0;
    void Note(int at) {
        line = count == 0 ? at : line;
        ++count;
    }
};

bool AllCornersThere(const int *nodes, int count) {
    return std::all_of(nodes, nodes + count, [](int node) { return node >= 0; });
}

void AccountOrientation(Account *account, const ElementRun &run) {
    const Mesh &mesh = account->mesh;
    const int dimension = DimensionOf(TypeOf(*account, run).shape);
    Some turned;
    Some flat;
    Some small;
    for (std::size_t e = run.first; e < run.first + run.count; ++e) {
        const int *nodes = &mesh.nodes[run.firstNode + (e - run.first) * static_cast<std::size_t>(run.width)];
        if (!AllCornersThere(nodes, dimension + 1)) {
            continue;
        }
        const deck::Measure measure = deck::MeasureOf(mesh.x, mesh.y, mesh.z, nodes, dimension);
        if (IsTurned(measure)) {
            Some *kind = IsFlat(measure) ? &flat : (IsTooSmall(measure) ? &small : &turned);
            kind->Note(mesh.elementLine[e]);
        }
    }
    const auto tell = [&](Code code, const Some &some) {
        if (some.count > 0) {
            Add(account, code, PlaceOfLine(some.line), {}, some.count);
        }
    };
    tell(Code::turned, turned);
    tell(Code::flat, flat);
    tell(Code::tooSmall, small);
}

// Triangles whose nodes do not share one z: whether there are any.
bool AccountPlane(Account *account, const ElementRun &run, double plane, double tolerance) {
    const Mesh &mesh = account->mesh;
    Some outside;
    for (std::size_t e = run.first; e < run.first + run.count; ++e) {
        const int *nodes = &mesh.nodes[run.firstNode + (e - run.first) * static_cast<std::size_t>(run.width)];
        if (std::any_of(nodes, nodes + run.width, [&](int node) {
                return node >= 0 && std::fabs(mesh.z[static_cast<std::size_t>(node)] - plane) > tolerance;
            })) {
            outside.Note(mesh.elementLine[e]);
        }
    }
    if (outside.count > 0) {
        Add(account, Code::outOfPlane, PlaceOfLine(outside.line), {}, outside.count);
    }
    return outside.count > 0;
}

// The z of the first triangle's first node, and how far other nodes may lie from it.
void FindPlane(const Account &account, double *plane, double *tolerance) {
    const Mesh &mesh = account.mesh;
    double extent = 0;
    for (std::size_t i = 0; i < mesh.x.size(); ++i) {
        extent = std::max({extent, std::fabs(mesh.x[i]), std::fabs(mesh.y[i])});
    }
    *tolerance = extent * 1e-9;
    for (const ElementRun &run : mesh.elementRuns) {
        if (DimensionOf(TypeOf(account, run).shape) == 2 && run.count > 0 && mesh.nodes[run.firstNode] >= 0) {
            *plane = mesh.z[static_cast<std::size_t>(mesh.nodes[run.firstNode])];
            return;
        }
    }
}

void AccountHeldRuns(Account *account) {
    double plane = 0;
    double tolerance = 0;
    const bool flatMesh = account->mesh.dimension == 2;
    if (flatMesh) {
        FindPlane(*account, &plane, &tolerance);
    }
    for (const ElementRun &run : account->mesh.elementRuns) {
        if (!HoldsRun(*account, run) || run.count == 0) {
            continue;
        }
        const int dimension = DimensionOf(TypeOf(*account, run).shape);
        if (dimension < 2) {
            continue; // the reader takes for cells what is none to the deck, which is told of its type
        }
        if (dimension == 2 && !flatMesh) {
            Add(account, Code::mixedDimension, PlaceOf(*account, SectionOf(*account, run).card),
                {std::to_string(run.count) + " triangles stand beside tetrahedra"}, static_cast<long long>(run.count));
            continue;
        }
        if (dimension == 3 || !AccountPlane(account, run, plane, tolerance)) {
            AccountOrientation(account, run); // what lies across the plane has no area in it
        }
    }
}

// One section decides the dimension of the translator's mesh, even without rows.
void AccountDecidingSection(Account *account) {
    const ABQCellBlock *deciding = ABQDeck()->cellBlocks;
    while (deciding != nullptr && deciding->next != nullptr) { // the last of the list, as the hand-over takes it
        deciding = deciding->next;
    }
    const int held = ABQDeck()->nDim;
    if (deciding == nullptr || deciding->count > 0 || account->mesh.dimension == 0 || held == account->mesh.dimension) {
        return;
    }
    for (std::size_t c = 0; c < account->cards.size(); ++c) {
        const CardUse &use = account->cards[c];
        if (use.state == CardState::held && use.readLine == deciding->nLine) {
            Add(account, Code::mixedDimension, PlaceOf(*account, static_cast<int>(c)),
                {"this section, which has no rows, makes it " + std::to_string(held)});
        }
    }
}

using Edge = std::pair<int, int>;

Edge EdgeOf(int a, int b) {
    return {std::min(a, b), std::max(a, b)};
}

// All edges of triangles, quadrilaterals and solids, ascending.
std::vector<Edge> EdgesOfCells(const Account &account) {
    const Mesh &mesh = account.mesh;
    std::vector<Edge> edges;
    for (const ElementRun &run : mesh.elementRuns) {
        const Shape shape = TypeOf(account, run).shape;
        for (std::size_t e = run.first; e < run.first + run.count; ++e) {
            const int *nodes = &mesh.nodes[run.firstNode + (e - run.first) * static_cast<std::size_t>(run.width)];
            for (int f = 0; f < FacesOf(shape); ++f) {
                const deck::FaceRow &face = FaceOf(shape, f);
                for (int k = 0; k < face.nCorners; ++k) {
                    edges.push_back(EdgeOf(nodes[face.corner[k]], nodes[face.corner[(k + 1) % face.nCorners]]));
                }
            }
        }
    }
    std::sort(edges.begin(), edges.end());
    edges.erase(std::unique(edges.begin(), edges.end()), edges.end());
    return edges;
}

// Whether all lines of the run lie on such edges. The middle node of three stands last or between the ends.
bool LieOnEdges(const Mesh &mesh, const ElementRun &run, const std::vector<Edge> &edges) {
    for (std::size_t e = 0; e < run.count; ++e) {
        const int *nodes = &mesh.nodes[run.firstNode + e * static_cast<std::size_t>(run.width)];
        bool found = std::binary_search(edges.begin(), edges.end(), EdgeOf(nodes[0], nodes[1]));
        found = found || (run.width == 3 && std::binary_search(edges.begin(), edges.end(), EdgeOf(nodes[0], nodes[2])));
        if (!found) {
            return false;
        }
    }
    return true;
}

// Elements that carry something and that the mesh file has no place for.
void AccountLines(Account *account) {
    const Mesh &mesh = account->mesh;
    std::vector<Edge> edges;
    bool hasEdges = false;
    for (const ElementRun &run : mesh.elementRuns) {
        const deck::TypeName &type = account->deck.types[static_cast<std::size_t>(run.type)];
        const int card = SectionOf(*account, run).card;
        if (type.type.kind != deck::TypeClass::cannotKeep || run.count == 0 ||
            account->placedHeld[static_cast<std::size_t>(run.placed)] == 0 ||
            account->cards[static_cast<std::size_t>(card)].state != CardState::refused) {
            continue;
        }
        if (!hasEdges && DimensionOf(type.type.shape) == 1) {
            edges = EdgesOfCells(*account);
            hasEdges = true;
        }
        const bool onEdges = DimensionOf(type.type.shape) == 1 && LieOnEdges(mesh, run, edges);
        const Code code = !onEdges ? Code::cannotBeKept : mesh.dimension == 2 ? Code::lineElements : Code::edgeLines;
        Add(account, code, PlaceOf(*account, card, "TYPE"), {type.name}, static_cast<long long>(run.count));
    }
}

} // namespace

void AccountUnusedNodes(Account *account) {
    if (account->mayBeMissing || account->mesh.elementNumber.empty()) {
        return;
    }
    const Mesh &mesh = account->mesh;
    for (const deck::NodeRun &run : mesh.nodeRuns) {
        const deck::NodeSection &section = account->deck.scopes[static_cast<std::size_t>(run.scope)]
                                               .nodes.sections[static_cast<std::size_t>(run.section)];
        if (account->placedHeld[static_cast<std::size_t>(run.placed)] == 0 || section.file != 0 ||
            account->cards[static_cast<std::size_t>(section.card)].state != CardState::held) {
            continue;
        }
        Some unused;
        for (std::size_t i = run.first; i < run.first + run.count; ++i) {
            if (account->nodeUsed[i] == kUnused) {
                unused.Note(mesh.nodeLine[i]);
            }
        }
        if (unused.count > 0) {
            Add(account, Code::unusedNodes, PlaceOfLine(unused.line), {}, unused.count);
        }
    }
}

void AccountElements(Account *account) {
    MarkUsedNodes(account);
    AccountHeldRuns(account);
    AccountDecidingSection(account);
    AccountLines(account);
}

} // namespace account
