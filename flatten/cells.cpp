// The cells: elements as they are, or their pieces with the nodes that second order needs.
#include "flatten/making.h"
#include "flatten/split.h"

#include "deck/measure.h"

#include <algorithm>
#include <map>
#include <utility>

namespace flatten {

namespace {

using deck::ElementRun;
using deck::Measure;
using deck::Shape;
using deck::TypeClass;

constexpr std::size_t kMostTold = 1000; // elements that cannot be split and are named one by one

// Edges of a triangle or tetrahedron in the order of its middle nodes.
constexpr int kEdges[][2] = {{0, 1}, {1, 2}, {2, 0}, {0, 3}, {1, 3}, {2, 3}};

Measure MeasureOf(const Plain &plain, const int *corners, int dimension) {
    return deck::MeasureOf(plain.x, plain.y, plain.z, corners, dimension);
}

// Elements of one type that were split.
struct SplitType {
    const ElementRun *first = nullptr;
    long long nElements = 0, nCells = 0;
};

// What was made so far, with the counts of what is told in the end.
struct Splitting {
    Making *m = nullptr;
    std::vector<Diagonal> diagonals; // wanted, some of them several times
    long long nFailed = 0, nSaved = 0;
    int firstFailed = -1, firstSmall = -1;
    long long nSmall = 0;
    std::map<int, SplitType> types; // by type
};

// What is wrong with the pieces; null where nothing is. Flat pieces of elements that repeat nodes are taken out.
const char *JudgePieces(const Plain &plain, const int *nodes, int dimension, bool repeats, Pieces *pieces,
                        bool *turned) {
    int nAbove = 0;
    int nBelow = 0;
    int kept = 0;
    for (int i = 0; i < pieces->count; ++i) {
        const Piece &piece = pieces->piece[static_cast<std::size_t>(i)];
        int corners[4]{};
        for (int k = 0; k <= dimension; ++k) {
            corners[k] = nodes[piece.corner[k]];
        }
        const Measure measure = MeasureOf(plain, corners, dimension);
        if (IsFlat(measure)) {
            if (!repeats) {
                return "a flat piece";
            }
            continue;
        }
        ++(measure.value > 0 ? nAbove : nBelow);
        pieces->piece[static_cast<std::size_t>(kept++)] = piece;
    }
    pieces->count = kept;
    *turned = nBelow > 0;
    return kept == 0 ? "no piece that is not flat" : (nAbove > 0 && nBelow > 0 ? "pieces of both signs" : nullptr);
}

bool Repeats(const int *nodes, int nCorners) {
    for (int i = 1; i < nCorners; ++i) {
        if (std::find(nodes, nodes + i, nodes[i]) != nodes + i) {
            return true;
        }
    }
    return false;
}

void Fail(Splitting *s, int element, Shape shape, const int *nodes, const int *numbers, const char *what) {
    const int dimension = DimensionOf(shape);
    const bool repeats = Repeats(nodes, CornersOf(shape));
    bool saved = false;
    for (int way = 0; way < kMostWays && !saved; ++way) {
        Pieces pieces = SplitOtherwise(shape, numbers, way);
        bool turned = false;
        saved = pieces.count > 0 && JudgePieces(s->m->plain, nodes, dimension, repeats, &pieces, &turned) == nullptr;
    }
    s->nSaved += saved ? 1 : 0;
    s->firstFailed = s->nFailed == 0 ? element : s->firstFailed;
    if (static_cast<std::size_t>(s->nFailed++) < kMostTold) {
        s->m->Find(Code::splitFails, s->m->PlaceOf(element),
                   {std::to_string(s->m->mesh.elementNumber[static_cast<std::size_t>(element)]), what,
                    saved ? "another diagonal would do" : "no other diagonal would do"});
    }
}

// Where the diagonal between two corners lies.
int FaceOfDiagonal(Shape shape, const int *nodes, int a, int b) {
    if (DimensionOf(shape) == 2) {
        return kThroughPlane;
    }
    for (int f = 0; f < FacesOf(shape); ++f) {
        const deck::FaceRow &face = deck::FaceOf(shape, f);
        for (int i = 0; i < 2 && face.nCorners == 4; ++i) {
            const std::uint64_t key = KeyOfEnds(nodes[face.corner[i]], nodes[face.corner[i + 2]]);
            if (key == KeyOfEnds(nodes[a], nodes[b])) {
                return f;
            }
        }
    }
    return kThroughBody;
}

// The middle nodes of a shape's edges.
struct Edges {
    struct Edge {
        int a, b, mid; // rows of the connectivity
    };
    std::vector<Edge> edges;

    explicit Edges(Shape shape) {
        for (int a = 0; a < CornersOf(shape); ++a) {
            for (int b = a + 1; b < CornersOf(shape); ++b) {
                const int mid = MidNodeOf(shape, a, b);
                if (mid >= 0) {
                    edges.push_back({a, b, mid});
                }
            }
        }
    }

    // The middle node between two nodes of the element: its position, or -1 where that is no edge.
    int Between(const int *nodes, int a, int b) const {
        const std::uint64_t key = KeyOfEnds(a, b);
        for (const Edge &edge : edges) {
            if (KeyOfEnds(nodes[edge.a], nodes[edge.b]) == key) {
                return nodes[edge.mid];
            }
        }
        return -1;
    }
};

// The piece's corners become a cell; the middle nodes on diagonals are left for later.
void AddPiece(Splitting *s, const Edges &edges, Shape shape, int element, const int *nodes, Piece piece, bool turned) {
    const int dimension = DimensionOf(shape);
    if (turned) {
        std::swap(piece.corner[0], piece.corner[1]);
    }
    Plain &plain = s->m->plain;
    for (int k = 0; k <= dimension; ++k) {
        plain.cellNodes.push_back(nodes[piece.corner[k]]);
    }
    if (IsTooSmall(MeasureOf(plain, &plain.cellNodes[plain.cellFirst.back()], dimension))) {
        s->firstSmall = s->nSmall++ == 0 ? element : s->firstSmall;
    }
    const int nEdges = IsSecondOrder(shape) ? (dimension == 2 ? 3 : 6) : 0;
    for (int k = 0; k < nEdges; ++k) {
        const int a = piece.corner[kEdges[k][0]];
        const int b = piece.corner[kEdges[k][1]];
        const int mid = edges.Between(nodes, nodes[a], nodes[b]);
        plain.cellNodes.push_back(mid);
        if (mid < 0) {
            s->diagonals.push_back({KeyOfEnds(nodes[a], nodes[b]), element, FaceOfDiagonal(shape, nodes, a, b)});
        }
    }
    plain.cellFirst.push_back(plain.cellNodes.size());
}

void SplitElement(Splitting *s, const Edges &edges, Shape shape, int element, const int *nodes) {
    int numbers[8]{};
    const int nCorners = CornersOf(shape);
    for (int i = 0; i < nCorners; ++i) {
        numbers[i] = s->m->plain.nodeNumber[static_cast<std::size_t>(nodes[i])];
    }
    Pieces pieces = flatten::Split(shape, numbers);
    bool turned = false;
    const char *wrong = JudgePieces(s->m->plain, nodes, DimensionOf(shape), Repeats(nodes, nCorners), &pieces, &turned);
    if (wrong != nullptr) {
        Fail(s, element, shape, nodes, numbers, wrong);
        return;
    }
    for (int i = 0; i < pieces.count; ++i) {
        AddPiece(s, edges, shape, element, nodes, pieces.piece[static_cast<std::size_t>(i)], turned);
    }
}

// Elements of one run that are cells as they are.
void KeepRun(Making *m, const ElementRun &run) {
    Plain &plain = m->plain;
    const int dimension = m->mesh.dimension;
    const auto width = static_cast<std::size_t>(run.width);
    int firstFlat = -1;
    int firstSmall = -1;
    long long nFlat = 0;
    long long nSmall = 0;
    for (std::size_t e = run.first; e < run.first + run.count; ++e) {
        m->firstCell[e] = static_cast<int>(plain.cellFirst.size()) - 1;
        if (m->role[e] != Role::cell) {
            continue;
        }
        const int *nodes = m->mesh.nodes.data() + run.firstNode + (e - run.first) * width;
        plain.cellNodes.insert(plain.cellNodes.end(), nodes, nodes + width);
        plain.cellFirst.push_back(plain.cellNodes.size());
        const Measure measure = MeasureOf(plain, nodes, dimension);
        if (IsFlat(measure)) {
            firstFlat = nFlat++ == 0 ? static_cast<int>(e) : firstFlat;
        } else if (IsTooSmall(measure)) {
            firstSmall = nSmall++ == 0 ? static_cast<int>(e) : firstSmall;
        }
    }
    if (nFlat > 0) {
        m->Find(Code::flat, m->PlaceOf(firstFlat), {}, nFlat);
    }
    if (nSmall > 0) {
        m->Find(Code::tooSmall, m->PlaceOf(firstSmall), {}, nSmall);
    }
}

void SplitRun(Splitting *s, const ElementRun &run) {
    const Shape shape = s->m->TypeOf(run).shape;
    const Edges edges(shape);
    SplitType &split = s->types[run.type];
    split.first = split.first == nullptr ? &run : split.first;
    for (std::size_t r = 0; r < run.count; ++r) {
        const std::size_t e = run.first + r;
        s->m->firstCell[e] = static_cast<int>(s->m->plain.cellFirst.size()) - 1;
        if (s->m->role[e] == Role::cell) {
            const std::size_t before = s->m->plain.cellFirst.size();
            SplitElement(s, edges, shape, static_cast<int>(e),
                         s->m->mesh.nodes.data() + run.firstNode + r * static_cast<std::size_t>(run.width));
            const std::size_t made = s->m->plain.cellFirst.size() - before;
            split.nElements += made > 0 ? 1 : 0;
            split.nCells += static_cast<long long>(made);
        }
    }
}

void TellSplit(const Splitting &s) {
    const bool solid = s.m->mesh.dimension == 3;
    for (const auto &[type, split] : s.types) {
        if (split.nElements > 0) {
            const char *pieces =
                split.nCells == 1 ? (solid ? " tetrahedron" : " triangle") : (solid ? " tetrahedra" : " triangles");
            s.m->Find(Code::isSplit, s.m->PlaceOfParameter(*split.first, "TYPE"),
                      {s.m->deck.types[static_cast<std::size_t>(type)].name, std::to_string(split.nCells) + pieces},
                      split.nElements);
        }
    }
}

// Middle nodes that elements of the deck have on the diagonals, by position in the list; -1 where none has.
std::vector<int> FindKnownMiddles(const Making &m, const std::vector<Diagonal> &diagonals) {
    std::vector<int> known(diagonals.size(), -1);
    for (const ElementRun &run : m.mesh.elementRuns) {
        const Shape shape = m.TypeOf(run).shape;
        if (!IsSecondOrder(shape) || diagonals.empty()) {
            continue;
        }
        const Edges edges(shape);
        for (std::size_t e = run.first; e < run.first + run.count; ++e) {
            const int *nodes = NodesOfElement(m.mesh, run, static_cast<int>(e));
            for (const Edges::Edge &edge : edges.edges) {
                const std::uint64_t key = KeyOfEnds(nodes[edge.a], nodes[edge.b]);
                const auto at = std::lower_bound(diagonals.begin(), diagonals.end(), key,
                                                 [](const Diagonal &d, std::uint64_t k) { return d.key < k; });
                if (m.role[e] == Role::cell && at != diagonals.end() && at->key == key) {
                    known[static_cast<std::size_t>(at - diagonals.begin())] = nodes[edge.mid];
                }
            }
        }
    }
    return known;
}

// The middle of a quadrilateral face of eight nodes, or of a hexahedron of twenty: by the element's shape functions.
struct Middle {
    const Plain &plain;
    double x = 0, y = 0, z = 0;

    void Add(int node, double weight) {
        const auto at = static_cast<std::size_t>(node);
        x += weight * plain.x[at];
        y += weight * plain.y[at];
        z += weight * plain.z[at];
    }
};

Middle MiddleOf(const Making &m, const Diagonal &diagonal) {
    const ElementRun &run = m.mesh.elementRuns[static_cast<std::size_t>(RunOfElement(m.mesh, diagonal.element))];
    const Shape shape = m.TypeOf(run).shape;
    const int *nodes = NodesOfElement(m.mesh, run, diagonal.element);
    Middle middle{m.plain};
    if (diagonal.face < 0) {
        const int nCorners = CornersOf(shape);
        for (int i = 0; i < NodesOf(shape); ++i) {
            middle.Add(nodes[i], i < nCorners ? -0.25 : (diagonal.face == kThroughBody ? 0.25 : 0.5));
        }
        return middle;
    }
    const deck::FaceRow &face = deck::FaceOf(shape, diagonal.face);
    for (int i = 0; i < face.nCorners; ++i) {
        middle.Add(nodes[face.corner[i]], -0.25);
        middle.Add(nodes[MidNodeOf(shape, face.corner[i], face.corner[(i + 1) % face.nCorners])], 0.5);
    }
    return middle;
}

// Makes a node for each diagonal that has none, and puts the nodes into the cells. What is left in the list are the
// diagonals with a new node, in the order of those.
void PutMiddles(Making *m, std::vector<Diagonal> *diagonals) {
    std::stable_sort(diagonals->begin(), diagonals->end(),
                     [](const Diagonal &a, const Diagonal &b) { return a.key < b.key; });
    diagonals->erase(std::unique(diagonals->begin(), diagonals->end(),
                                 [](const Diagonal &a, const Diagonal &b) { return a.key == b.key; }),
                     diagonals->end());
    std::vector<int> middles = FindKnownMiddles(*m, *diagonals);
    Plain &plain = m->plain;
    long long next = plain.nodeNumber.empty() ? 0 : *std::max_element(plain.nodeNumber.begin(), plain.nodeNumber.end());
    std::vector<Diagonal> made;
    for (std::size_t i = 0; i < diagonals->size(); ++i) {
        if (middles[i] >= 0) {
            continue;
        }
        middles[i] = static_cast<int>(plain.x.size());
        const Middle middle = MiddleOf(*m, (*diagonals)[i]);
        plain.x.push_back(middle.x);
        plain.y.push_back(middle.y);
        plain.z.push_back(middle.z);
        plain.nodeNumber.push_back(static_cast<int>(std::min<long long>(++next, deck::kMostNumber)));
        made.push_back((*diagonals)[i]);
    }
    if (next > deck::kMostNumber) {
        m->Find(Code::tooManyNumbers, {0, 0, 0}, {});
    }
    for (std::size_t c = 0; c + 1 < plain.cellFirst.size() && !diagonals->empty(); ++c) {
        int *nodes = &plain.cellNodes[plain.cellFirst[c]];
        const std::size_t nCorners = static_cast<std::size_t>(plain.dimension) + 1;
        for (std::size_t k = nCorners; k < plain.cellFirst[c + 1] - plain.cellFirst[c]; ++k) {
            if (nodes[k] < 0) {
                const auto &edge = kEdges[k - nCorners];
                const auto at =
                    std::lower_bound(diagonals->begin(), diagonals->end(), KeyOfEnds(nodes[edge[0]], nodes[edge[1]]),
                                     [](const Diagonal &d, std::uint64_t key) { return d.key < key; });
                nodes[k] = middles[static_cast<std::size_t>(at - diagonals->begin())];
            }
        }
    }
    diagonals->swap(made);
}

} // namespace

std::uint64_t KeyOfEnds(int a, int b) {
    constexpr int kHalf = 32;
    return static_cast<std::uint64_t>(std::min(a, b)) << kHalf | static_cast<std::uint64_t>(std::max(a, b));
}

std::vector<Diagonal> MakeCells(Making *m) {
    Splitting splitting{};
    splitting.m = m;
    m->firstCell.assign(m->mesh.elementNumber.size() + 1, 0);
    for (const ElementRun &run : m->mesh.elementRuns) {
        if (m->TypeOf(run).kind == TypeClass::split) {
            SplitRun(&splitting, run);
        } else {
            KeepRun(m, run);
        }
    }
    m->firstCell.back() = static_cast<int>(m->plain.cellFirst.size()) - 1;
    m->plain.cellNumber.assign(m->plain.cellFirst.size() - 1, 0);
    TellSplit(splitting);
    if (splitting.nFailed > 0) {
        m->Find(Code::splitSaved, m->PlaceOf(splitting.firstFailed), {std::to_string(splitting.nFailed)},
                splitting.nSaved);
    }
    if (splitting.nSmall > 0) {
        m->Find(Code::tooSmall, m->PlaceOf(splitting.firstSmall), {}, splitting.nSmall);
    }
    PutMiddles(m, &splitting.diagonals);
    return std::move(splitting.diagonals);
}

} // namespace flatten
