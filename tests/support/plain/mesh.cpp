// A whole deck: the mesh.
#include "tests/support/plain/deck.h"

#include <cmath>
#include <set>
#include <utility>

namespace {

// The tag whose cells a block's name cuts loose: that of the store's newest group of the name, the last in the list.
bool IsCutLoose(const PlainDeck &deck, std::size_t block) {
    if (deck.cellBlocks[block].name.compare(0, 2, "C_") != 0) {
        return false;
    }
    for (std::size_t later = block + 1; later < deck.cellBlocks.size(); ++later) {
        if (deck.cellBlocks[later].name == deck.cellBlocks[block].name) {
            return false;
        }
    }
    return true;
}

Cell MakeCell(const CellBlock &block, std::size_t row, const Ints &numbers, long long *nMissing) {
    const Ints slots = block.type <= 4 ? Ints{2, 0, 1} : Ints{3, 2, 0, 1}; // of face labels 1, 2, ...
    const Ints order = {0, 3, 1, 4, 2, 5};                                 // of a 6-node triangle
    Cell cell{block.type, 0, {}, Ints(slots.size())};
    for (std::size_t k = 0; k < block.nNodes; ++k) {
        const std::size_t from = block.type == 4 ? static_cast<std::size_t>(order[k]) : k;
        cell.nodes.push_back(PlainFind(numbers, block.conn[row][from]));
        *nMissing += cell.nodes.back() == -1 ? 1 : 0;
    }
    for (std::size_t k = 0; k < slots.size(); ++k) {
        cell.faceTags[static_cast<std::size_t>(slots[k])] = block.faceTags[row][k];
    }
    return cell;
}

PlainMesh Connect(const PlainDeck &deck, long long *nMissing) {
    PlainMesh mesh;
    Ints numbers;
    for (const NodeBlock &block : deck.nodeBlocks) {
        numbers.insert(numbers.end(), block.numbers.begin(), block.numbers.end());
        mesh.nodes.insert(mesh.nodes.end(), block.nodes.begin(), block.nodes.end());
    }
    PlainSortRows(&numbers, &mesh.nodes);
    for (std::size_t b = 0; b < deck.cellBlocks.size(); ++b) {
        const CellBlock &block = deck.cellBlocks[b];
        mesh.nDim = block.type <= 4 ? 2 : 3;
        for (std::size_t i = 0; i < block.conn.size(); ++i) {
            mesh.cells.push_back(MakeCell(block, i, numbers, nMissing));
            mesh.cells.back().tag = static_cast<int>(b) + 1;
        }
    }
    return mesh;
}

bool RunsTheWrongWay(const PlainMesh &mesh, const Cell &cell) {
    Node p[4] = {};
    const std::size_t step = cell.type == 4 ? 2 : 1;
    const std::size_t n = cell.type <= 4 ? 3 : 4;
    for (std::size_t i = 0; i < n; ++i) {
        const int node = cell.nodes[i * step];
        if (node == -1) {
            return false;
        }
        p[i] = mesh.nodes[static_cast<std::size_t>(node)];
    }
    const double ax = p[1].x - p[0].x, ay = p[1].y - p[0].y, az = p[1].z - p[0].z;
    const double bx = p[2].x - p[0].x, by = p[2].y - p[0].y, bz = p[2].z - p[0].z;
    if (n == 3) {
        return ax * by - bx * ay < 1e-10;
    }
    const double cx = p[3].x - p[0].x, cy = p[3].y - p[0].y, cz = p[3].z - p[0].z;
    return (ay * bz - az * by) * cx + (az * bx - ax * bz) * cy + (ax * by - ay * bx) * cz < 1e-10;
}

void Turn(Cell *cell) {
    if (cell->type == 4) {
        std::swap(cell->nodes[2], cell->nodes[4]);
        std::swap(cell->nodes[1], cell->nodes[5]);
    } else {
        std::swap(cell->nodes[1], cell->nodes[2]);
    }
    if (cell->type == 6) {
        std::swap(cell->nodes[4], cell->nodes[6]);
        std::swap(cell->nodes[8], cell->nodes[9]);
    }
    std::swap(cell->faceTags[1], cell->faceTags[2]);
}

double Altitude(const Node &p, const Node &q, const Node &r) {
    double ex = r.x - q.x;
    double ey = r.y - q.y;
    const double length = std::sqrt(ex * ex + ey * ey);
    if (length > 1e-10) {
        ex /= length;
        ey /= length;
    }
    return std::fabs(ex * (p.y - q.y) - ey * (p.x - q.x));
}

double Altitude(const Node &p, const Node &q, const Node &r, const Node &s) {
    const double ax = r.x - q.x, ay = r.y - q.y, az = r.z - q.z;
    const double bx = s.x - q.x, by = s.y - q.y, bz = s.z - q.z;
    const double nx = ay * bz - az * by, ny = az * bx - ax * bz, nz = ax * by - ay * bx;
    const double distance = nx * (p.x - q.x) + ny * (p.y - q.y) + nz * (p.z - q.z);
    return std::fabs(distance) / (std::sqrt(nx * nx + ny * ny + nz * nz) + 1e-10);
}

void MeasureCell(const PlainMesh &mesh, const Cell &cell, Lengths *lengths) {
    Node p[4] = {};
    const std::size_t step = cell.type == 4 ? 2 : 1;
    const std::size_t n = cell.type <= 4 ? 3 : 4;
    for (std::size_t i = 0; i < n; ++i) {
        const int node = cell.nodes[i * step];
        if (node == -1) {
            return;
        }
        p[i] = mesh.nodes[static_cast<std::size_t>(node)];
    }
    for (std::size_t a = 0; a < n; ++a) {
        for (std::size_t b = a + 1; b < n; ++b) {
            const double dx = p[a].x - p[b].x, dy = p[a].y - p[b].y, dz = p[a].z - p[b].z;
            const double edge = std::sqrt(n == 3 ? dx * dx + dy * dy : dx * dx + dy * dy + dz * dz);
            lengths->least = edge < lengths->least ? edge : lengths->least;
            lengths->most = edge > lengths->most ? edge : lengths->most;
        }
    }
    double smallest = HUGE_VAL;
    for (std::size_t i = 0; i < n; ++i) {
        const Node &q = p[i == 0 ? 1 : 0];
        const Node &r = p[i <= 1 ? 2 : 1];
        const double altitude = n == 3 ? Altitude(p[i], q, r) : Altitude(p[i], q, r, p[i <= 2 ? 3 : 2]);
        smallest = altitude < smallest ? altitude : smallest;
    }
    smallest *= cell.type == 4 || cell.type == 6 ? 0.5 : 1;
    lengths->altitude = smallest < lengths->altitude ? smallest : lengths->altitude;
}

void MeasureGroups(const PlainDeck &deck, PlainMesh *mesh) {
    mesh->groupLengths.resize(deck.cellBlocks.size());
    for (const Cell &cell : mesh->cells) {
        MeasureCell(*mesh, cell, &mesh->groupLengths[static_cast<std::size_t>(cell.tag) - 1]);
    }
    for (const Lengths &own : mesh->groupLengths) {
        Lengths &all = mesh->lengths;
        all.least = own.least < all.least ? own.least : all.least;
        all.most = own.most > all.most ? own.most : all.most;
        all.altitude = own.altitude < all.altitude ? own.altitude : all.altitude;
    }
}

void CutLoose(const PlainDeck &deck, PlainMesh *mesh) {
    std::vector<bool> loose;
    for (std::size_t b = 0; b < deck.cellBlocks.size(); ++b) {
        loose.push_back(IsCutLoose(deck, b));
    }
    for (Cell &cell : mesh->cells) {
        for (int &node : cell.nodes) {
            if (loose[static_cast<std::size_t>(cell.tag) - 1] && node != -1) {
                mesh->nodes.push_back(Node(mesh->nodes[static_cast<std::size_t>(node)]));
                node = static_cast<int>(mesh->nodes.size()) - 1;
            }
        }
    }
}

// Node columns of the faces of each slot, piece by piece.
const std::vector<std::vector<Ints>> &FacePieces(int type) {
    static const std::vector<std::vector<Ints>> kPieces[] = {
        {{{1, 2}}, {{2, 0}}, {{0, 1}}},
        {{{2, 3}, {3, 4}}, {{4, 5}, {5, 0}}, {{0, 1}, {1, 2}}},
        {{{1, 3, 2}}, {{2, 3, 0}}, {{3, 1, 0}}, {{0, 1, 2}}},
        {{{5, 8, 9}, {1, 8, 5}, {3, 9, 8}, {2, 5, 9}},
         {{6, 9, 7}, {2, 9, 6}, {3, 7, 9}, {0, 6, 7}},
         {{7, 8, 4}, {3, 8, 7}, {1, 4, 8}, {0, 7, 4}},
         {{6, 4, 5}, {0, 4, 6}, {1, 5, 4}, {2, 6, 5}}},
    };
    return kPieces[type - 3];
}

void MakeFaces(PlainMesh *mesh) {
    for (const Cell &cell : mesh->cells) {
        for (std::size_t slot = 0; slot < cell.faceTags.size(); ++slot) {
            if (cell.faceTags[slot] == 0) {
                continue;
            }
            for (const Ints &piece : FacePieces(cell.type)[slot]) {
                Face face{piece.size() == 2 ? 31 : 32, cell.faceTags[slot], {}};
                for (const int column : piece) {
                    face.nodes.push_back(cell.nodes[static_cast<std::size_t>(column)]);
                }
                mesh->faces.push_back(face);
            }
        }
    }
}

void DropUnused(PlainMesh *mesh) {
    std::set<int> used; // the cells' nodes: faces have no others
    for (const Cell &cell : mesh->cells) {
        used.insert(cell.nodes.begin(), cell.nodes.end());
    }
    used.erase(-1);
    Ints position(mesh->nodes.size(), -1);
    std::vector<Node> kept;
    for (const int node : used) {
        position[static_cast<std::size_t>(node)] = static_cast<int>(kept.size());
        kept.push_back(mesh->nodes[static_cast<std::size_t>(node)]);
    }
    mesh->nodes = kept;
    const auto renumber = [&position](Ints *nodes) {
        for (int &node : *nodes) {
            node = node == -1 ? -1 : position[static_cast<std::size_t>(node)];
        }
    };
    for (Cell &cell : mesh->cells) {
        renumber(&cell.nodes);
    }
    for (Face &face : mesh->faces) {
        renumber(&face.nodes);
    }
}

void Summarize(const PlainDeck &deck, const PlainMesh &mesh, std::string *log) {
    const auto count = [log](const char *key, std::size_t n) {
        *log += std::string("    Number of ") + key + " = " + std::to_string(n) + "\n";
    };
    *log += "  Mesh summary:\n";
    count("dimensions ", static_cast<std::size_t>(mesh.nDim));
    count("nodes      ", mesh.nodes.size());
    count("elements   ", mesh.cells.size());
    count("node groups", deck.nodeSets.size());
    count("face groups", deck.surfaces.size());
    count("cell groups", deck.cellBlocks.size());
    *log += PlainField("    Maximum edge length   = %e\n", mesh.lengths.most) +
            PlainField("    Minimum edge length   = %e\n", mesh.lengths.least) +
            PlainField("    Characteristic length = %e\n", mesh.lengths.altitude);
}

} // namespace

PlainMesh PlainMakeMesh(const PlainDeck &deck, std::string *log) {
    long long nMissing = 0;
    PlainMesh mesh = Connect(deck, &nMissing);
    if (nMissing > 0) {
        *log += "\n  Error> " + std::to_string(nMissing) + " references of elements name no node of the deck.\n";
    }
    int nTurned = 0;
    for (Cell &cell : mesh.cells) {
        if (RunsTheWrongWay(mesh, cell)) {
            Turn(&cell);
            ++nTurned;
        }
    }
    if (nTurned > 0) {
        *log += "  Numbering order of " + std::to_string(nTurned) + " elements has been corrected.\n";
    }
    MeasureGroups(deck, &mesh);
    CutLoose(deck, &mesh);
    MakeFaces(&mesh);
    DropUnused(&mesh);
    Summarize(deck, mesh, log);
    return mesh;
}
