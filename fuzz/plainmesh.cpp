// A whole deck by the plain rules: the mesh, and the lists of the file.
#include "fuzz/plaindeck.h"

#include <cmath>
#include <cstdio>
#include <set>
#include <utility>

namespace {

struct Cell {
    int type, tag;
    Ints nodes;    // store order
    Ints faceTags; // by store slot
    bool bLoose;   // of a group that is cut loose
};

struct Face {
    int tag;
    Ints nodes;
};

struct PlainMesh {
    std::vector<Node> nodes;
    std::vector<Cell> cells;
    std::vector<Face> faces;
};

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
    Cell cell{block.type, 0, {}, Ints(slots.size()), false};
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

PlainMesh MakeMesh(const PlainDeck &deck, PlainResult *result) {
    PlainMesh mesh;
    Ints numbers;
    for (const NodeBlock &block : deck.nodeBlocks) {
        numbers.insert(numbers.end(), block.numbers.begin(), block.numbers.end());
        mesh.nodes.insert(mesh.nodes.end(), block.nodes.begin(), block.nodes.end());
    }
    PlainSortRows(&numbers, &mesh.nodes);
    for (std::size_t b = 0; b < deck.cellBlocks.size(); ++b) {
        const CellBlock &block = deck.cellBlocks[b];
        result->nDim = block.type <= 4 ? 2 : 3;
        for (std::size_t i = 0; i < block.conn.size(); ++i) {
            mesh.cells.push_back(MakeCell(block, i, numbers, &result->nMissing));
            mesh.cells.back().tag = static_cast<int>(b) + 1;
            mesh.cells.back().bLoose = IsCutLoose(deck, b);
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

std::string Field(const char *format, int value) {
    char text[64];
    std::snprintf(text, sizeof text, format, value);
    return text;
}

std::string Field(double value) {
    char text[64];
    std::snprintf(text, sizeof text, "%24.15e", value);
    return text;
}

std::string RealLine(const char *key, double value) {
    return std::string("    ") + key + " = " + Field(value) + "\n";
}

// Shortest and longest edge, smallest altitude.
struct Lengths {
    double least = 1e15, most = 0, altitude = 1e15;
};

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

// The cell groups as the file has them, the last block's first, and the lengths of the whole mesh in file and log.
void MeasureGroups(const PlainDeck &deck, const PlainMesh &mesh, PlainResult *result) {
    Lengths all;
    std::string groups;
    for (std::size_t b = deck.cellBlocks.size(); b > 0; --b) {
        Lengths own;
        for (const Cell &cell : mesh.cells) {
            if (cell.tag == static_cast<int>(b)) {
                MeasureCell(mesh, cell, &own);
            }
        }
        char tag[32];
        std::snprintf(tag, sizeof tag, "%10d", static_cast<int>(b));
        const std::string &name = deck.cellBlocks[b - 1].name;
        groups += "  <Cell Group> " + name + "\n    CellTag = " + tag + "\n" +
                  RealLine("Minimum_Edge_Length  ", own.least) + RealLine("Maximum_Edge_Length  ", own.most) +
                  RealLine("Characteristic_length", own.altitude) + "  </Cell Group> " + name + "\n";
        all.least = own.least < all.least ? own.least : all.least;
        all.most = own.most > all.most ? own.most : all.most;
        all.altitude = own.altitude < all.altitude ? own.altitude : all.altitude;
    }
    result->lists.push_back(groups + "</Groups>\n\n");
    if (result->nDim != 0) {
        result->lists.push_back(RealLine("Minimum Edge Charac", all.altitude) +
                                RealLine("Minimum Edge Length", all.least) + RealLine("Maximum Edge Length", all.most));
    }
    char text[200];
    std::snprintf(text, sizeof text,
                  "    Maximum edge length   = %e\n    Minimum edge length   = %e\n    Characteristic length = %e\n",
                  all.most, all.least, all.altitude);
    result->summaryLengths = text;
}

void CutLoose(PlainMesh *mesh) {
    for (Cell &cell : mesh->cells) {
        for (int &node : cell.nodes) {
            if (cell.bLoose && node != -1) {
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
                Face face{cell.faceTags[slot], {}};
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

std::string PositionList(const PlainMesh &mesh, int nDim) {
    std::string list = "    Current_Positions = \n";
    for (std::size_t i = 0; i < mesh.nodes.size(); ++i) {
        const Node &node = mesh.nodes[i];
        list += "        " + Field("%10d", static_cast<int>(i)) + Field(node.x) + Field(node.y) +
                (nDim == 3 ? Field(node.z) : "") + "\n";
    }
    return list + "    Previous_Positions = \n";
}

template <class Entry> std::string ConnectivityList(const char *key, const std::vector<Entry> &entries) {
    std::string list = std::string("    ") + key + " = \n";
    for (std::size_t i = 0; i < entries.size(); ++i) {
        list += " " + Field("%10d", static_cast<int>(i)) + Field("%5d", static_cast<int>(entries[i].nodes.size()));
        for (const int node : entries[i].nodes) {
            list += Field("%10d", node);
        }
        list += "\n";
    }
    return list;
}

template <class Entry> std::string ScalarList(const char *key, const std::vector<Entry> &entries, int Entry::*value) {
    std::string list = std::string("    ") + key + " = ";
    for (std::size_t i = 0; i < entries.size(); ++i) {
        list += (i % 10 == 0 ? "\n        " : "") + Field("%10d", entries[i].*value);
    }
    return list + "\n";
}

} // namespace

void PlainTranslate(const PlainDeck &deck, PlainResult *result) {
    PlainMesh mesh = MakeMesh(deck, result);
    for (Cell &cell : mesh.cells) {
        if (RunsTheWrongWay(mesh, cell)) {
            Turn(&cell);
            ++result->nCorrected;
        }
    }
    MeasureGroups(deck, mesh, result);
    CutLoose(&mesh);
    MakeFaces(&mesh);
    DropUnused(&mesh);
    result->nNodes = static_cast<long long>(mesh.nodes.size());
    result->nFaces = static_cast<long long>(mesh.faces.size());
    result->nCells = static_cast<long long>(mesh.cells.size());
    if (result->nDim != 0) {
        result->lists.push_back(PositionList(mesh, result->nDim));
        result->lists.push_back(ScalarList("Node_Tag", mesh.nodes, &Node::tag));
    }
    if (!mesh.faces.empty()) {
        result->lists.push_back(ConnectivityList("Face_To_Node", mesh.faces) +
                                ScalarList("Face_Tag", mesh.faces, &Face::tag));
    }
    if (!mesh.cells.empty()) {
        result->lists.push_back(ConnectivityList("Cell_To_Node", mesh.cells) +
                                ScalarList("Cell_Type", mesh.cells, &Cell::type) +
                                ScalarList("Cell_Tag", mesh.cells, &Cell::tag));
    }
}
