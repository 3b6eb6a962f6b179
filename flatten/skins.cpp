// Elements that lie on faces of cells (on edges, in two dimensions): each with the faces below it.
#include "flatten/making.h"
#include "flatten/simplex.h"
#include "flatten/split.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace flatten {

namespace {

using deck::ElementRun;

// The corners of a face, ascending; -1 before those of an edge.
using Corners = std::array<int, 3>;

// One triangle or line that asks for the face below it.
struct Wanted {
    Corners corners;
    int element;
    CellFace face;
};

Corners CornersOfFace(const int *nodes, int dimension, int face) {
    Corners corners{-1, -1, -1};
    for (int k = 0; k < dimension; ++k) {
        corners[static_cast<std::size_t>(k)] = nodes[kFaceCorners[dimension - 2][face][k]];
    }
    std::sort(corners.begin(), corners.end());
    return corners;
}

void WantTriangles(const Making &m, deck::Shape shape, int element, const int *nodes, std::vector<Wanted> *wanted) {
    int numbers[4]{};
    for (int i = 0; i < CornersOf(shape); ++i) {
        numbers[i] = m.plain.nodeNumber[static_cast<std::size_t>(nodes[i])];
    }
    const Pieces pieces = Split(shape, numbers);
    for (int i = 0; i < pieces.count; ++i) {
        const int *corner = pieces.piece[static_cast<std::size_t>(i)].corner;
        Corners corners{nodes[corner[0]], nodes[corner[1]], nodes[corner[2]]};
        std::sort(corners.begin(), corners.end());
        wanted->push_back({corners, element, {-1, 0}});
    }
}

// The other end of a line in the plane. Of three nodes the middle one stands last or between the ends: it is the one
// that is nearer to the first.
int FarEnd(const Plain &plain, const int *nodes, int width) {
    const auto distance = [&](int node) {
        const auto a = static_cast<std::size_t>(nodes[0]);
        const auto b = static_cast<std::size_t>(node);
        return std::hypot(plain.x[b] - plain.x[a], plain.y[b] - plain.y[a]);
    };
    return width == 3 && distance(nodes[2]) > distance(nodes[1]) ? nodes[2] : nodes[1];
}

std::vector<Wanted> WhatSkinsWant(const Making &m) {
    std::vector<Wanted> wanted;
    ForElements(m, Role::skin, [&](const ElementRun &run, int element, const int *nodes) {
        if (m.mesh.dimension == 3) {
            WantTriangles(m, m.TypeOf(run).shape, element, nodes, &wanted);
        } else {
            const int end = FarEnd(m.plain, nodes, run.width);
            wanted.push_back({{-1, std::min(nodes[0], end), std::max(nodes[0], end)}, element, {-1, 0}});
        }
    });
    return wanted;
}

// The first cell of the deck that has a face gives it to all that want it.
void FindFaces(const Making &m, std::vector<Wanted> *wanted) {
    std::sort(wanted->begin(), wanted->end(), [](const Wanted &a, const Wanted &b) { return a.corners < b.corners; });
    const auto isBefore = [](const Wanted &w, const Corners &corners) { return w.corners < corners; };
    for (int c = 0; c < m.NumCells() && !wanted->empty(); ++c) {
        for (int f = 0; f <= m.mesh.dimension; ++f) {
            const Corners corners = CornersOfFace(m.NodesOfCell(c), m.mesh.dimension, f);
            auto at = std::lower_bound(wanted->begin(), wanted->end(), corners, isBefore);
            for (; at != wanted->end() && at->corners == corners && at->face.cell < 0; ++at) {
                at->face = {c, f};
            }
        }
    }
    std::sort(wanted->begin(), wanted->end(), [](const Wanted &a, const Wanted &b) {
        return a.element != b.element ? a.element < b.element : a.corners < b.corners;
    });
}

// Elements of one run that lie on no face: one finding.
struct Strays {
    int run = -1;
    int first = -1;
    long long count = 0;
};

void TellStrays(Making *m, const Strays &strays) {
    if (strays.count == 0) {
        return;
    }
    if (m->mesh.dimension == 3) {
        m->Find(Code::strayTriangles, m->PlaceOf(strays.first), {}, strays.count);
    } else {
        const ElementRun &run = m->mesh.elementRuns[static_cast<std::size_t>(strays.run)];
        m->Find(Code::cannotKeep, m->PlaceOf(strays.first), {m->deck.types[static_cast<std::size_t>(run.type)].name},
                strays.count);
    }
}

void CountStray(Making *m, int element, Strays *strays) {
    m->role[static_cast<std::size_t>(element)] = Role::lost;
    const int run = RunOfElement(m->mesh, element);
    if (run != strays->run) {
        TellStrays(m, *strays);
        *strays = {run, element, 0};
    }
    ++strays->count;
}

// Skins whose faces are there keep them; the others are an error.
void TakeFaces(Making *m, const std::vector<Wanted> &wanted) {
    Strays strays;
    for (std::size_t i = 0, end = 0; i < wanted.size(); i = end) {
        bool whole = true;
        for (; end < wanted.size() && wanted[end].element == wanted[i].element; ++end) {
            whole = whole && wanted[end].face.cell >= 0;
        }
        if (!whole) {
            CountStray(m, wanted[i].element, &strays);
            continue;
        }
        m->skinElement.push_back(wanted[i].element);
        for (std::size_t k = i; k < end; ++k) {
            m->skinFaces.push_back(wanted[k].face);
        }
        m->skinFirst.push_back(m->skinFaces.size());
    }
    TellStrays(m, strays);
}

// Whether a line of two or three nodes lies along an edge; the middle one of three stands last or between the ends.
bool LiesOn(const std::vector<std::uint64_t> &found, const int *nodes, int width) {
    const auto has = [&](int i) {
        return std::binary_search(found.begin(), found.end(), KeyOfEnds(nodes[0], nodes[i]));
    };
    return has(1) || (width == 3 && has(2));
}

// Of these pairs of nodes those that are edges of cells.
std::vector<std::uint64_t> EdgesAmong(const Making &m, std::vector<std::uint64_t> wanted) {
    std::sort(wanted.begin(), wanted.end());
    wanted.erase(std::unique(wanted.begin(), wanted.end()), wanted.end());
    std::vector<std::uint64_t> found;
    for (int c = 0; c < m.NumCells() && !wanted.empty(); ++c) {
        const int *nodes = m.NodesOfCell(c);
        for (int a = 0; a < 3; ++a) {
            for (int b = a + 1; b < 4; ++b) {
                const std::uint64_t key = KeyOfEnds(nodes[a], nodes[b]);
                if (std::binary_search(wanted.begin(), wanted.end(), key)) {
                    found.push_back(key);
                }
            }
        }
    }
    std::sort(found.begin(), found.end());
    return found;
}

// Lines in three dimensions: a note where they lie along edges.
void TellLines(Making *m) {
    std::vector<std::uint64_t> wanted;
    ForElements(*m, Role::line, [&](const ElementRun &run, int, const int *nodes) {
        for (int i = 1; i < run.width; ++i) {
            wanted.push_back(KeyOfEnds(nodes[0], nodes[i]));
        }
    });
    const std::vector<std::uint64_t> found = EdgesAmong(*m, std::move(wanted));
    for (const ElementRun &run : m->mesh.elementRuns) {
        long long counts[2] = {0, 0};
        int first[2] = {-1, -1};
        for (std::size_t e = run.first; e < run.first + run.count; ++e) {
            if (m->role[e] == Role::line) {
                const int at = LiesOn(found, NodesOfElement(m->mesh, run, static_cast<int>(e)), run.width) ? 1 : 0;
                first[at] = counts[at]++ == 0 ? static_cast<int>(e) : first[at];
            }
        }
        for (const int at : {0, 1}) {
            if (counts[at] > 0) {
                m->Find(at == 1 ? Code::edgeLines : Code::cannotKeep, m->PlaceOf(first[at]),
                        {m->deck.types[static_cast<std::size_t>(run.type)].name}, counts[at]);
            }
        }
    }
}

} // namespace

void FindSkins(Making *m) {
    std::vector<Wanted> wanted = WhatSkinsWant(*m);
    FindFaces(*m, &wanted);
    TakeFaces(m, wanted);
    if (m->mesh.dimension == 3) {
        TellLines(m);
    }
}

} // namespace flatten
