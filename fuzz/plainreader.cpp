// A whole deck by the plain rules.
#include "fuzz/plainreader.h"

#include "fuzz/plain.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <numeric>
#include <set>
#include <utility>
#include <vector>

namespace {

using Ints = std::vector<int>;

struct Node {
    double x, y, z;
    int tag;
};

struct NodeBlock {
    Ints numbers;
    std::vector<Node> nodes;
};

struct CellBlock {
    std::string name;
    int type = 0;
    std::size_t nNodes = 0;
    Ints numbers;
    std::vector<Ints> conn;     // by element, in the deck's order
    std::vector<Ints> faceTags; // by element, by the deck's face label
};

struct NumberSet {
    std::string name;
    Ints numbers;
};

struct SurfaceEntry {
    std::string name;
    int row;
};

// Sections in the order of the deck while it is read; afterwards newest first.
struct PlainDeck {
    PlainText text;
    PlainLine line;
    std::string log;
    std::vector<NodeBlock> nodeBlocks;
    std::vector<CellBlock> cellBlocks;
    std::vector<NumberSet> nodeSets, cellSets;
    std::vector<std::vector<SurfaceEntry>> surfaces;
};

struct ElementType {
    const char *name;
    int type;
    std::size_t nNodes;
};

constexpr ElementType kTypes[] = {{"C3D4", 5, 4},  {"C3D10", 6, 10}, {"CPE3", 3, 3}, {"CPS3", 3, 3},
                                  {"STRI3", 3, 3}, {"CPE6", 4, 6},   {"CPS6", 4, 6}, {"STRI65", 4, 6}};

// Reading ---------------------------------------------------------------------------------------------------

bool Next(PlainDeck *deck) {
    const bool more = PlainNextLogical(&deck->text, &deck->line);
    deck->log += deck->line.log;
    return more;
}

void Join(PlainDeck *deck) {
    const std::size_t reported = deck->line.log.size();
    PlainJoin(&deck->text, &deck->line);
    deck->log += deck->line.log.substr(reported);
}

bool NextData(PlainDeck *deck) {
    return Next(deck) && deck->line.text[0] != '*';
}

std::string Parameter(PlainDeck *deck, const char *name, bool *found = nullptr) {
    std::string value;
    const bool is = PlainParameter(deck->line.text, name, &value);
    if (found != nullptr) {
        *found = is;
    }
    if (value.size() > 256) {
        deck->log += std::string("\n  Error> the value of ") + name + " is longer than 256 characters.\n";
    }
    return value.substr(0, 256);
}

bool Refused(PlainDeck *deck, const std::vector<const char *> &words) {
    for (const char *word : words) {
        if (deck->line.text.find(word) != std::string::npos) {
            deck->log += std::string("\n  Error> Undesirable parameters: ") + word + ".\n";
            Next(deck);
            return true;
        }
    }
    return false;
}

void ReadNodeBlock(PlainDeck *deck) {
    NodeBlock block;
    deck->log += "  Reading Nodes " + Parameter(deck, "NSET") + " ... ";
    if (Refused(deck, {"INPUT", "SYSTEM"})) {
        return;
    }
    while (NextData(deck)) {
        Join(deck);
        const std::string number = PlainGrab(&deck->line.text, ',');
        const std::string x = PlainGrab(&deck->line.text, ',');
        const std::string y = PlainGrab(&deck->line.text, ',');
        const std::string z = PlainGrab(&deck->line.text, ',');
        deck->log += number.empty() ? "\n  Error> needed nodal id.\n" : "";
        deck->log += x.empty() ? "\n  Error> needed nodal x-coordinate.\n" : "";
        deck->log += y.empty() ? "\n  Error> needed nodal y-coordinate.\n" : "";
        block.numbers.push_back(PlainINT(number));
        block.nodes.push_back({PlainDBL(x), PlainDBL(y), PlainDBL(z), 0});
    }
    deck->log += "done with " + std::to_string(block.numbers.size()) + " nodes.\n";
    deck->nodeBlocks.push_back(block);
}

void ReadCellRows(PlainDeck *deck, CellBlock *block) {
    while (NextData(deck)) {
        Join(deck);
        Ints conn;
        for (std::size_t k = 0; k <= block->nNodes; ++k) {
            const std::string field = PlainGrab(&deck->line.text, ',');
            if (field.empty()) {
                deck->log += "\n  Error> Needed to read " + std::to_string(block->nNodes) + " nodes.\n";
            }
            (k == 0 ? block->numbers : conn).push_back(PlainINT(field));
        }
        block->conn.push_back(conn);
    }
}

void ReadCellBlock(PlainDeck *deck) {
    CellBlock block;
    bool named;
    block.name = Parameter(deck, "ELSET", &named);
    deck->log += named ? "" : "  Warning> Cannot find ELSET name for Cells.\n";
    deck->log += "  Reading Elements " + block.name + " ... ";
    if (Refused(deck, {"FILE", "INPUT", "OFFSET", "SOLIDELEMENTNUMBERING"})) {
        return;
    }
    const std::string type = Parameter(deck, "TYPE");
    const auto *known = std::find_if(std::begin(kTypes), std::end(kTypes),
                                     [&type](const ElementType &one) { return type == one.name; });
    if (known == std::end(kTypes)) {
        deck->log += "\n  Error> Unrecognized element type: " + type +
                     ".\n         Supports TETs: C3D4, C3D10;\n"
                     "         Supports TRIs: STRI3, STRI65, CPE3, CPS3, CPE6, CPS6.\n";
        Next(deck);
        return;
    }
    block.type = known->type;
    block.nNodes = known->nNodes;
    ReadCellRows(deck, &block);
    deck->log += "done with " + std::to_string(block.numbers.size()) + " " + type + "s.\n";
    deck->cellBlocks.push_back(block);
}

void ReadSet(PlainDeck *deck, const char *parameter, const char *members, const std::vector<const char *> &words,
             std::vector<NumberSet> *list) {
    NumberSet set;
    set.name = Parameter(deck, parameter);
    deck->log += std::string("  Reading ") + parameter + " " + set.name + " ... ";
    if (Refused(deck, words)) {
        return;
    }
    while (NextData(deck)) {
        for (;;) {
            const std::string field = PlainGrab(&deck->line.text, ',');
            if (field.empty()) {
                break;
            }
            set.numbers.push_back(PlainINT(field));
        }
    }
    deck->log += "done with " + std::to_string(set.numbers.size()) + " " + members + ".\n";
    list->push_back(set);
}

void ReadSurface(PlainDeck *deck) {
    std::vector<SurfaceEntry> entries;
    deck->log += "  Reading Surface " + Parameter(deck, "NAME") + " ... ";
    if (Refused(deck, {"COMBINE", "CROP", "DEFINITION", "FILLETRADIUS", "INTERNAL", "REGIONTYPE", "TRIM", "MAXRATIO",
                       "NOOFFSET", "NOTHICK", "SCALETHICK"})) {
        return;
    }
    bool typed;
    const std::string type = Parameter(deck, "TYPE", &typed);
    if (typed && type != "ELEMENT") {
        deck->log += "\n  Error> only ELEMENT surface type is supported (" + type + ").\n";
        Next(deck);
        return;
    }
    while (NextData(deck)) {
        Join(deck);
        const std::string name = PlainGrab(&deck->line.text, ',');
        const std::string label = PlainGrab(&deck->line.text, ',');
        int number;
        if (name.empty() || label.empty() || std::sscanf(label.c_str(), "%*c%d", &number) != 1) {
            deck->log += "\n  Error> Needed to read both ELSET name & Face/edge id label.\n";
            continue;
        }
        entries.push_back({name, number > INT_MIN ? number - 1 : number});
    }
    deck->log += "done with " + std::to_string(entries.size()) + " elsets.\n";
    deck->surfaces.push_back(entries);
}

bool IsKeyword(const PlainDeck *deck, const char *keyword) {
    return (deck->line.text + ",").find(keyword) != std::string::npos;
}

void ReadSection(PlainDeck *deck) {
    Join(deck);
    if (IsKeyword(deck, "*NODE,")) {
        ReadNodeBlock(deck);
    } else if (IsKeyword(deck, "*ELEMENT,")) {
        ReadCellBlock(deck);
    } else if (IsKeyword(deck, "*NSET,")) {
        ReadSet(deck, "NSET", "nodes", {"ELSET", "GENERATE", "INSTANCE", "INTERNAL", "UNSORTED"}, &deck->nodeSets);
    } else if (IsKeyword(deck, "*ELSET,")) {
        ReadSet(deck, "ELSET", "cells", {"GENERATE", "INSTANCE", "INTERNAL", "UNSORTED"}, &deck->cellSets);
    } else if (IsKeyword(deck, "*SURFACE,")) {
        ReadSurface(deck);
    } else {
        deck->line = PlainLine{};
    }
}

// Ordering and resolving ------------------------------------------------------------------------------------

// The stated sort of rows: the order in which they end.
void OrderRange(Ints *keys, Ints *rows, long low, long high) {
    while (high > low) {
        const auto bounds = std::minmax_element(keys->begin() + low, keys->begin() + high + 1);
        const long long most = *bounds.second;
        if (*bounds.first == most) {
            return;
        }
        long long pivot = (*bounds.first + most) / 2;
        pivot = pivot == most ? pivot - 1 : pivot;
        long i = low;
        long j = high;
        for (;;) {
            while ((*keys)[static_cast<std::size_t>(i)] <= pivot) {
                ++i;
            }
            while (j > i && (*keys)[static_cast<std::size_t>(j)] > pivot) {
                --j;
            }
            if (i >= j) {
                break;
            }
            std::swap((*keys)[static_cast<std::size_t>(i)], (*keys)[static_cast<std::size_t>(j)]);
            std::swap((*rows)[static_cast<std::size_t>(i)], (*rows)[static_cast<std::size_t>(j)]);
        }
        OrderRange(keys, rows, low, i - 1);
        low = i;
    }
}

Ints SortKeys(Ints *keys) {
    Ints rows(keys->size());
    std::iota(rows.begin(), rows.end(), 0);
    OrderRange(keys, &rows, 0, static_cast<long>(keys->size()) - 1);
    return rows;
}

template <class Block> void ExchangeBlocks(std::vector<Block> *blocks) {
    for (std::size_t a = 0; a < blocks->size(); ++a) {
        for (std::size_t b = a + 1; b < blocks->size(); ++b) {
            Block &first = (*blocks)[a];
            Block &second = (*blocks)[b];
            if (!first.numbers.empty() && !second.numbers.empty() && first.numbers[0] > second.numbers[0]) {
                std::swap(first, second);
            }
        }
    }
}

int FindNumber(const Ints &list, int id) {
    long lo = 0;
    long hi = static_cast<long>(list.size()) - 1;
    while (hi - lo > 1) {
        const long mid = (lo + hi) / 2;
        (list[static_cast<std::size_t>(mid)] < id ? lo : hi) = mid;
    }
    if (hi < 0) {
        return -1;
    }
    return list[static_cast<std::size_t>(hi)] == id   ? static_cast<int>(hi)
           : list[static_cast<std::size_t>(lo)] == id ? static_cast<int>(lo)
                                                      : -1;
}

// Keys ascending, rows with them.
template <class Row> void SortRows(Ints *keys, std::vector<Row> *rows) {
    std::vector<Row> sorted;
    for (const int row : SortKeys(keys)) {
        sorted.push_back((*rows)[static_cast<std::size_t>(row)]);
    }
    *rows = sorted;
}

void OrderDeck(PlainDeck *deck) {
    std::reverse(deck->nodeBlocks.begin(), deck->nodeBlocks.end());
    std::reverse(deck->nodeSets.begin(), deck->nodeSets.end());
    std::reverse(deck->cellBlocks.begin(), deck->cellBlocks.end());
    std::reverse(deck->cellSets.begin(), deck->cellSets.end());
    std::reverse(deck->surfaces.begin(), deck->surfaces.end());
    for (NodeBlock &block : deck->nodeBlocks) {
        SortRows(&block.numbers, &block.nodes);
    }
    for (CellBlock &block : deck->cellBlocks) {
        SortRows(&block.numbers, &block.conn);
        block.faceTags.assign(block.conn.size(), Ints(4, 0));
    }
    ExchangeBlocks(&deck->nodeBlocks);
    ExchangeBlocks(&deck->cellBlocks);
}

// The first block that holds the number; a later set in the list writes over an earlier one.
void TagNode(PlainDeck *deck, int number, int tag) {
    for (NodeBlock &block : deck->nodeBlocks) {
        const int at = FindNumber(block.numbers, number);
        if (at != -1) {
            block.nodes[static_cast<std::size_t>(at)].tag = tag;
            return;
        }
    }
}

void TagElement(PlainDeck *deck, int number, int row, int tag) {
    for (CellBlock &block : deck->cellBlocks) {
        const int at = FindNumber(block.numbers, number);
        if (at == -1) {
            continue;
        }
        if (row < 0 || row >= (block.type <= 4 ? 3 : 4)) {
            deck->log += "\n  Error> in ABQ_SetCellFaceTagByGID\n";
        } else {
            block.faceTags[static_cast<std::size_t>(at)][static_cast<std::size_t>(row)] = tag;
        }
        return;
    }
}

void TagEntry(PlainDeck *deck, const SurfaceEntry &entry, int tag) {
    for (const NumberSet &set : deck->cellSets) {
        if (set.name == entry.name) {
            for (const int number : set.numbers) {
                TagElement(deck, number, entry.row, tag);
            }
            return;
        }
    }
    errno = 0;
    char *end;
    const long number = std::strtol(entry.name.c_str(), &end, 10);
    if (end != entry.name.c_str() && errno == 0 && number >= INT_MIN && number <= INT_MAX) {
        TagElement(deck, static_cast<int>(number), entry.row, tag);
    }
}

// Translating -----------------------------------------------------------------------------------------------

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
        cell.nodes.push_back(FindNumber(numbers, block.conn[row][from]));
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
    SortRows(&numbers, &mesh.nodes);
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

// Lists of the file -----------------------------------------------------------------------------------------

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

void Translate(const PlainDeck &deck, PlainResult *result) {
    PlainMesh mesh = MakeMesh(deck, result);
    for (Cell &cell : mesh.cells) {
        if (RunsTheWrongWay(mesh, cell)) {
            Turn(&cell);
            ++result->nCorrected;
        }
    }
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

} // namespace

PlainResult ReadPlainDeck(const std::string &text) {
    PlainDeck deck{};
    deck.text = {text, 0, 0};
    while (Next(&deck)) {
        while (deck.line.text[0] == '*') {
            ReadSection(&deck);
        }
    }
    OrderDeck(&deck);
    for (std::size_t s = 0; s < deck.nodeSets.size(); ++s) {
        for (const int number : deck.nodeSets[s].numbers) {
            TagNode(&deck, number, static_cast<int>(s) + 1);
        }
    }
    for (std::size_t s = 0; s < deck.surfaces.size(); ++s) {
        for (const SurfaceEntry &entry : deck.surfaces[s]) {
            TagEntry(&deck, entry, static_cast<int>(s) + 1);
        }
    }
    PlainResult result{};
    result.log = deck.log;
    Translate(deck, &result);
    result.nNodeGroups = static_cast<int>(deck.nodeSets.size());
    result.nFaceGroups = static_cast<int>(deck.surfaces.size());
    result.nCellGroups = static_cast<int>(deck.cellBlocks.size());
    return result;
}
