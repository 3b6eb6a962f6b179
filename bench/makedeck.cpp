// Makes an input deck of a chosen size for the benchmarks: a box of cubes cut into tetrahedra, or a plate of
// squares cut into triangles, with node sets, element sections and surfaces on its sides. Prints what it wrote
// as key=value lines, so that a checker can compare counts. The same options give the same bytes on every
// machine: coordinates are whole multiples of a fixed step, and random choices are a hash of seed and position.

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace {

using Int = std::int64_t;

// Coordinates are counted in steps of 1e-8: eight digits after the point, about nine significant ones.
constexpr Int kStepsPerUnit = 100000000;
constexpr int kDecimals = 8;
// One cube edge is 0.1 units long.
constexpr Int kSpacing = kStepsPerUnit / 10;
// Corners may move by this share of the spacing along each axis. An edge vector of a piece then differs from
// its axis by less than 2 shares per component, so the three edge vectors of its path stay diagonally dominant
// (1 - 2a > 4a) and its volume positive for every a below 1/6.
constexpr double kMaxJitter = 0.16;
constexpr double kDefaultJitter = 0.1;
// Deck numbers are 32-bit signed.
constexpr Int kMaxNumber = 2147483647;
// Numbers of a set, a line each (the usual limit of the format).
constexpr int kSetNumbersPerLine = 16;
// A 10-node element has its number and eight nodes on the first of two lines.
constexpr int kFirstLineNodes = 8;
constexpr std::size_t kBlockSize = std::size_t{1} << 20; // of a write

constexpr int kMaxCorners = 4;
constexpr int kMaxNodes = 10;
constexpr int kMaxPaths = 6;

// A cube is cut along the paths from its low to its high corner that take each axis once. Every face diagonal
// of a cube then runs from its low to its high corner, so neighbouring cubes fit together.
struct Path {
    int axes[3];
    bool isOdd; // an odd order of the axes makes a piece the wrong way round
};

constexpr Path kBoxPaths[kMaxPaths] = {
    {{0, 1, 2}, false}, {{1, 2, 0}, false}, {{2, 0, 1}, false}, {{0, 2, 1}, true}, {{2, 1, 0}, true}, {{1, 0, 2}, true},
};
constexpr Path kPlatePaths[2] = {{{0, 1, 2}, false}, {{1, 0, 2}, true}};

struct Family {
    const char *name;
    int nDim;
    int nCorners;
    int nNodes;
    int nPieces;                 // elements in a cube or square
    int gridSteps;               // node positions per cube edge: 2 when edges have middle nodes
    int piecesPerFace;           // linear faces that one element face becomes
    int nodesPerFace;            // nodes of such a linear face
    int faceLabels[kMaxCorners]; // label of the face opposite each corner
    int edges[6][2];             // corners of the edges, in the order of their middle nodes
};

constexpr Family kFamilies[] = {
    {"C3D4", 3, 4, 4, 6, 1, 1, 3, {3, 4, 2, 1}, {}},
    {"C3D10", 3, 4, 10, 6, 2, 4, 3, {3, 4, 2, 1}, {{0, 1}, {1, 2}, {2, 0}, {0, 3}, {1, 3}, {2, 3}}},
    {"CPS3", 2, 3, 3, 2, 1, 1, 2, {2, 3, 1, 0}, {}},
    {"CPS6", 2, 3, 6, 2, 2, 2, 2, {2, 3, 1, 0}, {{0, 1}, {1, 2}, {2, 0}, {}, {}, {}}},
};

struct Options {
    std::string path;
    const Family *family = &kFamilies[0];
    Int nCubes = 0;
    Int nNodeSets = -1; // -1: one per side
    Int nSections = 6;
    Int nSurfaces = -1; // -1: one per side
    Int stride = 1;
    Int maxNumber = 0; // 0: numbers by stride
    Int elementLines = 2;
    std::uint64_t seed = 1;
    double jitter = kDefaultJitter;
    double invertShare = 0.0;
    bool isShuffled = false;
    bool isCohesive = false;
};

// Position on the node grid.
struct Point {
    Int at[3];
};

struct Mesh {
    const Options *options;
    const Family *family;
    Int nCubes;  // per edge
    Int nPoints; // node positions per edge
    Int nNodes;
    Int nElements;
    Int nFaces;     // element faces on the sides
    Int nSideNodes; // members of all sides together; nodes on edges count once for each side
};

struct Element {
    Point corners[kMaxCorners];
    Int nodes[kMaxNodes];
};

// An element face on a side of the box.
struct SideFace {
    Int element;
    int label;
};

// A text file in large writes.
struct Writer {
    std::FILE *stream;
    std::string text;
    Int bytes = 0;
    bool hasFailed = false;
};

struct Summary {
    std::string text;
    Int nInverted = 0;
    Int nFinalNodes = 0;
};

[[noreturn]] void Fail(const std::string &message) {
    std::fprintf(stderr, "makedeck: %s\n", message.c_str());
    std::exit(2);
}

// The finisher of the splitmix64 generator: equal input, equal output, well mixed.
std::uint64_t Mix(std::uint64_t value) {
    value += 0x9e3779b97f4a7c15U;
    value = (value ^ (value >> 30)) * 0xbf58476d1ce4e5b9U;
    value = (value ^ (value >> 27)) * 0x94d049bb133111ebU;
    return value ^ (value >> 31);
}

// The purposes keep the choices for one position apart from each other.
enum class Purpose : std::uint64_t { kMove = 1, kInvert, kGap, kNodeOrder, kElementOrder };

std::uint64_t Random(const Options &options, Purpose purpose, Int position) {
    const std::uint64_t base = Mix(options.seed * 8 + static_cast<std::uint64_t>(purpose));
    return Mix(base ^ static_cast<std::uint64_t>(position));
}

Int RandomBelow(const Options &options, Purpose purpose, Int position, Int limit) {
    return static_cast<Int>(Random(options, purpose, position) % static_cast<std::uint64_t>(limit));
}

// ---- text

void Flush(Writer &writer) {
    writer.hasFailed |= std::fwrite(writer.text.data(), 1, writer.text.size(), writer.stream) != writer.text.size();
    writer.bytes += static_cast<Int>(writer.text.size());
    writer.text.clear();
}

void PutText(Writer &writer, std::string_view text) {
    writer.text += text;
    if (writer.text.size() >= kBlockSize)
        Flush(writer);
}

void PutNumber(Writer &writer, Int number) {
    char text[20];
    PutText(writer, {text, static_cast<std::size_t>(std::to_chars(text, text + sizeof text, number).ptr - text)});
}

// Writes "12.5", "0.03", "3.": no trailing zeros, the point always there.
void PutCoordinate(Writer &writer, Int steps) {
    PutNumber(writer, steps / kStepsPerUnit);
    char digits[kDecimals + 1] = {'.'};
    Int fraction = steps % kStepsPerUnit;
    for (int i = kDecimals; i > 0; --i, fraction /= 10)
        digits[i] = static_cast<char>('0' + fraction % 10);
    std::size_t length = sizeof digits;
    while (digits[length - 1] == '0')
        --length;
    PutText(writer, {digits, length});
}

void PutLine(Writer &writer, const std::string &line) {
    PutText(writer, line + "\n");
}

// ---- the mesh, computed position by position

Mesh MakeMesh(const Options &options) {
    const Int nCubes = options.nCubes;
    const Family &family = *options.family;
    const bool isBox = family.nDim == 3;
    const Int nSquares = nCubes * nCubes;
    const Int nPoints = nCubes * family.gridSteps + 1;
    Mesh mesh = {&options, &family, nCubes, nPoints, 0, 0, 0, 0};
    mesh.nNodes = nPoints * nPoints * (isBox ? nPoints : 1);
    mesh.nElements = nSquares * (isBox ? nCubes : 1) * family.nPieces;
    mesh.nFaces = isBox ? 6 * 2 * nSquares : 4 * nCubes;
    mesh.nSideNodes = isBox ? 6 * nPoints * nPoints : 4 * nPoints;
    return mesh;
}

Int NodeAt(const Mesh &mesh, const Point &point) {
    return point.at[0] + mesh.nPoints * (point.at[1] + mesh.nPoints * point.at[2]);
}

Point PointOf(const Mesh &mesh, Int node) {
    return {{node % mesh.nPoints, node / mesh.nPoints % mesh.nPoints, node / mesh.nPoints / mesh.nPoints}};
}

// Coordinate of a cube corner. Corners of the outside do not leave their side, so the box keeps its volume and
// its sides their area. Every move is even, so that the middle of two corners is a whole number of steps.
Int CornerCoordinate(const Mesh &mesh, const Point &corner, int axis) {
    const Int place = corner.at[axis] / mesh.family->gridSteps;
    const Int reach = static_cast<Int>(mesh.options->jitter * static_cast<double>(kSpacing) / 2.0);
    if (reach == 0 || place == 0 || place == mesh.nCubes)
        return place * kSpacing;
    const Int position = NodeAt(mesh, corner) * 3 + axis;
    return place * kSpacing + 2 * (RandomBelow(*mesh.options, Purpose::kMove, position, 2 * reach + 1) - reach);
}

// A node between corners lies in the middle of its edge; edges run from low to high on every axis they leave.
Int Coordinate(const Mesh &mesh, const Point &point, int axis) {
    if (mesh.family->gridSteps == 1)
        return CornerCoordinate(mesh, point, axis);
    Point low = point;
    Point high = point;
    for (int i = 0; i < 3; ++i) {
        low.at[i] -= point.at[i] % 2;
        high.at[i] += point.at[i] % 2;
    }
    return (CornerCoordinate(mesh, low, axis) + CornerCoordinate(mesh, high, axis)) / 2;
}

const Path *PathsOf(const Family &family) {
    return family.nDim == 3 ? kBoxPaths : kPlatePaths;
}

bool IsInverted(const Mesh &mesh, Int element) {
    const double share = static_cast<double>(Random(*mesh.options, Purpose::kInvert, element) >> 11) * 0x1p-53;
    return share < mesh.options->invertShare;
}

// The corner that stands at a place of the element's list. Elements start at different corners by turns, as a
// mesher's do, and every turn keeps the orientation: pairs are exchanged in a tetrahedron, a triangle is rotated.
int TurnedCorner(const Family &family, Int element, int place) {
    const int turn = static_cast<int>((element / family.nPieces + element) % family.nCorners);
    return family.nDim == 3 ? place ^ turn : (place + turn) % 3;
}

Element ElementAt(const Mesh &mesh, Int element) {
    const Family &family = *mesh.family;
    const Path &path = PathsOf(family)[element % family.nPieces];
    const Int cube = element / family.nPieces;
    const Int n = mesh.nCubes;
    Point walk[kMaxCorners] = {{{cube % n, cube / n % n, cube / n / n}}};
    for (Int &coordinate : walk[0].at)
        coordinate *= family.gridSteps;
    for (int i = 1; i < family.nCorners; ++i) {
        walk[i] = walk[i - 1];
        walk[i].at[path.axes[i - 1]] += family.gridSteps;
    }
    if (path.isOdd != IsInverted(mesh, element))
        std::swap(walk[1], walk[2]);

    Element result = {};
    for (int i = 0; i < family.nCorners; ++i) {
        result.corners[i] = walk[TurnedCorner(family, element, i)];
        result.nodes[i] = NodeAt(mesh, result.corners[i]);
    }
    // Node positions are linear in the grid, so the middle of an edge has the middle of the two positions.
    for (int i = family.nCorners; i < family.nNodes; ++i) {
        const int *edge = family.edges[i - family.nCorners];
        result.nodes[i] = (result.nodes[edge[0]] + result.nodes[edge[1]]) / 2;
    }
    return result;
}

// A place on a side of a grid of n positions along each edge. Sides are numbered low x, high x, low y, high y, low z,
// high z.
struct SidePlace {
    int axis;
    bool isHigh;
    Point point;
};

SidePlace PlaceOnSide(const Family &family, Int member, Int n) {
    const bool isBox = family.nDim == 3;
    const Int side = member / (isBox ? n * n : n);
    const Int rest = member % (isBox ? n * n : n);
    SidePlace place = {static_cast<int>(side / 2), side % 2 != 0, {}};
    place.point.at[place.axis] = place.isHigh ? n - 1 : 0;
    place.point.at[place.axis == 0 ? 1 : 0] = rest % n;
    if (isBox)
        place.point.at[place.axis == 2 ? 1 : 2] = rest / n;
    return place;
}

Int SideNode(const Mesh &mesh, Int member) {
    return NodeAt(mesh, PlaceOnSide(*mesh.family, member, mesh.nPoints).point);
}

// A piece has a face on the low side of an axis when its path takes that axis last, on the high side when first.
Int PieceOnSide(const Family &family, int axis, bool isHigh, Int which) {
    const Path *paths = PathsOf(family);
    for (Int piece = 0; piece < family.nPieces; ++piece)
        if (paths[piece].axes[isHigh ? 0 : family.nDim - 1] == axis && which-- == 0)
            return piece;
    Fail("no piece on this side");
}

SideFace FaceAt(const Mesh &mesh, Int face) {
    const Family &family = *mesh.family;
    const Int n = mesh.nCubes;
    const Int perCube = family.nDim - 1;
    const auto [axis, isHigh, cube] = PlaceOnSide(family, face / perCube, n);
    const Int piece = PieceOnSide(family, axis, isHigh, face % perCube);
    const Int element = (cube.at[0] + n * (cube.at[1] + n * cube.at[2])) * family.nPieces + piece;

    const Element corners = ElementAt(mesh, element);
    const Int side = isHigh ? mesh.nPoints - 1 : 0;
    int away = 0;
    while (corners.corners[away].at[axis] == side)
        ++away;
    return {element, family.faceLabels[away]};
}

// The first entry of a part when count entries are divided as evenly as can be.
Int PartStart(Int part, Int count, Int nParts) {
    return part * count / nParts;
}

// Sections are slabs of whole layers of cubes while there are enough layers.
Int SectionStart(const Mesh &mesh, Int section) {
    const Int nSections = mesh.options->nSections;
    if (nSections > mesh.nCubes)
        return PartStart(section, mesh.nElements, nSections);
    return PartStart(section, mesh.nCubes, nSections) * (mesh.nElements / mesh.nCubes);
}

// Deck numbers are ascending in position. Spread numbers have uneven gaps, and the last is the largest allowed.
Int Number(const Options &options, Int position, Int count) {
    if (options.maxNumber == 0)
        return (position + 1) * options.stride;
    if (position == count - 1)
        return options.maxNumber;
    const Int gap = options.maxNumber / count;
    return position * gap + 1 + RandomBelow(options, Purpose::kGap, position, gap);
}

Int NodeNumber(const Mesh &mesh, Int node) {
    return Number(*mesh.options, node, mesh.nNodes);
}

Int ElementNumber(const Mesh &mesh, Int element) {
    return Number(*mesh.options, element, mesh.nElements);
}

// ---- the sections of the deck

void PutNodeLine(Writer &writer, const Mesh &mesh, Int node) {
    const Point point = PointOf(mesh, node);
    PutNumber(writer, NodeNumber(mesh, node));
    for (int axis = 0; axis < 3; ++axis) {
        PutText(writer, ", ");
        PutCoordinate(writer, Coordinate(mesh, point, axis));
    }
    PutText(writer, "\n");
}

void PutElementLine(Writer &writer, const Mesh &mesh, Int element) {
    const Family &family = *mesh.family;
    const Element nodes = ElementAt(mesh, element);
    const bool hasTwoLines = family.nNodes > kFirstLineNodes && mesh.options->elementLines == 2;
    PutNumber(writer, ElementNumber(mesh, element));
    for (int i = 0; i < family.nNodes; ++i) {
        PutText(writer, hasTwoLines && i == kFirstLineNodes ? ",\n" : ", ");
        PutNumber(writer, NodeNumber(mesh, nodes.nodes[i]));
    }
    PutText(writer, "\n");
}

// The positions from first up to last, in random order when asked for.
template <typename Visit> void VisitInOrder(const Options &options, Purpose purpose, Int first, Int last, Visit visit) {
    if (!options.isShuffled) {
        for (Int i = first; i < last; ++i)
            visit(i);
        return;
    }
    std::vector<std::uint32_t> order(static_cast<std::size_t>(last - first));
    for (std::size_t i = 0; i < order.size(); ++i)
        order[i] = static_cast<std::uint32_t>(first) + static_cast<std::uint32_t>(i);
    for (std::size_t i = order.size(); i > 1; --i) {
        const Int other = RandomBelow(options, purpose, first + static_cast<Int>(i), static_cast<Int>(i));
        std::swap(order[i - 1], order[static_cast<std::size_t>(other)]);
    }
    for (const std::uint32_t i : order)
        visit(static_cast<Int>(i));
}

void PutNodes(Writer &writer, const Mesh &mesh) {
    PutLine(writer, "*NODE");
    VisitInOrder(*mesh.options, Purpose::kNodeOrder, 0, mesh.nNodes,
                 [&](Int node) { PutNodeLine(writer, mesh, node); });
}

bool IsCohesive(const Mesh &mesh, Int section) {
    return mesh.options->isCohesive && section == mesh.options->nSections - 1;
}

void PutSections(Writer &writer, const Mesh &mesh, Summary &summary) {
    for (Int section = 0; section < mesh.options->nSections; ++section) {
        const Int first = SectionStart(mesh, section);
        const Int last = SectionStart(mesh, section + 1);
        const std::string name = (IsCohesive(mesh, section) ? "C_SLAB_" : "SLAB_") + std::to_string(section + 1);
        PutLine(writer, "*ELEMENT, TYPE=" + std::string(mesh.family->name) + ", ELSET=" + name);
        VisitInOrder(*mesh.options, Purpose::kElementOrder, first, last, [&](Int element) {
            PutElementLine(writer, mesh, element);
            summary.nInverted += IsInverted(mesh, element) ? 1 : 0;
        });
        summary.text += "element_section=" + name + " " + std::to_string(last - first) + "\n";
    }
}

void PutNumberList(Writer &writer, const std::vector<Int> &numbers) {
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        PutNumber(writer, numbers[i]);
        const bool isLineFull = i % kSetNumbersPerLine == kSetNumbersPerLine - 1;
        PutText(writer, i + 1 == numbers.size() ? "\n" : isLineFull ? ",\n" : ", ");
    }
}

// How often each node stands in the finished mesh: once for all ordinary elements together, and once more for
// each element of the cohesive section, which gets copies of its own.
std::vector<std::uint32_t> CountCopies(const Mesh &mesh) {
    std::vector<std::uint32_t> copies(static_cast<std::size_t>(mesh.nNodes), 1);
    if (!mesh.options->isCohesive)
        return copies;
    std::fill(copies.begin(), copies.end(), 0U);
    const Int firstCohesive = SectionStart(mesh, mesh.options->nSections - 1);
    for (Int element = 0; element < mesh.nElements; ++element) {
        const Element nodes = ElementAt(mesh, element);
        for (int i = 0; i < mesh.family->nNodes; ++i) {
            std::uint32_t &copy = copies[static_cast<std::size_t>(nodes.nodes[i])];
            copy = element < firstCohesive ? 1 : copy + 1;
        }
    }
    return copies;
}

// A node of several sets is kept by the first of them.
void PutNodeSets(Writer &writer, const Mesh &mesh, Summary &summary) {
    std::vector<std::uint32_t> copies = CountCopies(mesh);
    for (const std::uint32_t copy : copies)
        summary.nFinalNodes += copy;
    const Int nSets = mesh.options->nNodeSets;
    for (Int set = 0; set < nSets; ++set) {
        std::vector<Int> nodes;
        const Int last = PartStart(set + 1, mesh.nSideNodes, nSets);
        for (Int member = PartStart(set, mesh.nSideNodes, nSets); member < last; ++member)
            nodes.push_back(SideNode(mesh, member));
        std::sort(nodes.begin(), nodes.end());
        nodes.erase(std::unique(nodes.begin(), nodes.end()), nodes.end());
        Int nKept = 0;
        for (Int &node : nodes) {
            nKept += copies[static_cast<std::size_t>(node)];
            copies[static_cast<std::size_t>(node)] = 0;
            node = NodeNumber(mesh, node);
        }
        const std::string name = "SIDE_" + std::to_string(set + 1);
        PutLine(writer, "*NSET, NSET=" + name);
        PutNumberList(writer, nodes);
        summary.text += "node_set=" + name + " " + std::to_string(nodes.size()) + " " + std::to_string(nKept) + "\n";
    }
}

void PutSurface(Writer &writer, const Mesh &mesh, Int first, Int last, const std::string &name, Summary &summary) {
    std::vector<Int> elements[kMaxCorners + 1];
    for (Int i = first; i < last; ++i) {
        const SideFace face = FaceAt(mesh, i);
        elements[face.label].push_back(ElementNumber(mesh, face.element));
    }
    std::string entries;
    for (int label = 1; label <= kMaxCorners; ++label) {
        if (elements[label].empty())
            continue;
        std::sort(elements[label].begin(), elements[label].end());
        const std::string setName = "_" + name + "_S" + std::to_string(label);
        PutLine(writer, "*ELSET, ELSET=" + setName);
        PutNumberList(writer, elements[label]);
        entries += "\n" + setName + ", S" + std::to_string(label);
    }
    PutLine(writer, "*SURFACE, TYPE=ELEMENT, NAME=" + name + entries);
    summary.text += "surface=" + name + " " + std::to_string((last - first) * mesh.family->piecesPerFace) + "\n";
}

void PutSurfaces(Writer &writer, const Mesh &mesh, Summary &summary) {
    const Int nSurfaces = mesh.options->nSurfaces;
    for (Int surface = 0; surface < nSurfaces; ++surface)
        PutSurface(writer, mesh, PartStart(surface, mesh.nFaces, nSurfaces),
                   PartStart(surface + 1, mesh.nFaces, nSurfaces), "FACE_" + std::to_string(surface + 1), summary);
}

// ---- size, checks, command line

void CheckMesh(const Mesh &mesh) {
    const Options &options = *mesh.options;
    const Int largest = std::max(mesh.nNodes, mesh.nElements);
    if (largest > (options.maxNumber == 0 ? kMaxNumber / options.stride : options.maxNumber))
        Fail("the numbers do not fit; take fewer cubes, a smaller stride or a larger --max-number");
    const struct {
        const char *what;
        Int wanted;
        Int most;
    } limits[] = {{"node sets than nodes on the sides", options.nNodeSets, mesh.nSideNodes},
                  {"element sections than elements", options.nSections, mesh.nElements},
                  {"surfaces than element faces on the sides", options.nSurfaces, mesh.nFaces}};
    for (const auto &limit : limits)
        if (limit.wanted > limit.most)
            Fail("more " + std::string(limit.what) + " (" + std::to_string(limit.most) + ")");
}

[[noreturn]] void ShowUsage() {
    std::fputs("usage: makedeck PATH [options]\n"
               "  --type T               C3D4 (default), C3D10, CPS3 or CPS6\n"
               "  --cubes N              cubes (squares) along an edge\n"
               "  --node-sets N          node sets over the sides (default one per side)\n"
               "  --element-sections N   element sections, slabs of the mesh (default 6)\n"
               "  --surfaces N           surfaces over the sides (default one per side)\n"
               "  --shuffle              node lines and element lines in random order within their section\n"
               "  --stride K             every K-th number is used\n"
               "  --max-number M         numbers spread up to M\n"
               "  --invert SHARE         share of the elements that are listed the wrong way round\n"
               "  --cohesive             the last element section gets a name that begins with C_\n"
               "  --jitter A             corners move by up to A of the spacing (default 0.1, at most 0.16)\n"
               "  --element-lines N      lines of a 10-node element, 1 or 2 (default 2)\n"
               "  --seed S               seed of all random choices (default 1)\n",
               stderr);
    std::exit(2);
}

template <typename Value> Value ReadValue(std::string_view option, std::string_view text, Value low, Value high) {
    Value value = {};
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    if (result.ec != std::errc() || result.ptr != text.data() + text.size() || !(value >= low && value <= high))
        Fail(std::string(option) + " has no good value: " + std::string(text));
    return value;
}

const Family *FindFamily(std::string_view name) {
    for (const Family &family : kFamilies)
        if (name == family.name)
            return &family;
    Fail("unknown type: " + std::string(name));
}

void SetOption(Options &options, std::string_view name, std::string_view text) {
    struct Count {
        const char *name;
        Int Options::*field;
        Int low;
        Int high;
    };
    constexpr Count kCounts[] = {
        {"--cubes", &Options::nCubes, 1, 100000},
        {"--node-sets", &Options::nNodeSets, 0, kMaxNumber},
        {"--element-sections", &Options::nSections, 1, kMaxNumber},
        {"--surfaces", &Options::nSurfaces, 0, kMaxNumber},
        {"--stride", &Options::stride, 1, kMaxNumber},
        {"--max-number", &Options::maxNumber, 1, kMaxNumber},
        {"--element-lines", &Options::elementLines, 1, 2},
    };
    for (const Count &count : kCounts) {
        if (name == count.name) {
            options.*count.field = ReadValue<Int>(name, text, count.low, count.high);
            return;
        }
    }
    if (name == "--type")
        options.family = FindFamily(text);
    else if (name == "--invert")
        options.invertShare = ReadValue<double>(name, text, 0.0, 1.0);
    else if (name == "--jitter")
        options.jitter = ReadValue<double>(name, text, 0.0, kMaxJitter);
    else if (name == "--seed")
        options.seed = ReadValue<std::uint64_t>(name, text, 0, UINT64_MAX);
    else
        ShowUsage();
}

Options ReadOptions(int argc, char **argv) {
    Options options;
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        if (argument == "--shuffle")
            options.isShuffled = true;
        else if (argument == "--cohesive")
            options.isCohesive = true;
        else if (argument.substr(0, 2) != "--" && options.path.empty())
            options.path = argument;
        else if (argument.substr(0, 2) == "--" && i + 1 < argc)
            SetOption(options, argument, argv[++i]);
        else
            ShowUsage();
    }
    if (options.path.empty() || options.nCubes == 0)
        ShowUsage();
    if (options.stride > 1 && options.maxNumber > 0)
        Fail("--stride and --max-number exclude each other");
    const Int nSides = 2 * options.family->nDim;
    options.nNodeSets = options.nNodeSets < 0 ? nSides : options.nNodeSets;
    options.nSurfaces = options.nSurfaces < 0 ? nSides : options.nSurfaces;
    return options;
}

Int WriteDeck(const Mesh &mesh, Summary &summary) {
    Writer writer{std::fopen(mesh.options->path.c_str(), "wb"), {}};
    if (writer.stream == nullptr)
        Fail("cannot create " + mesh.options->path);
    PutLine(writer, "*HEADING\nbox of " + std::to_string(mesh.nCubes) + " cubes along an edge");
    PutNodes(writer, mesh);
    PutSections(writer, mesh, summary);
    PutNodeSets(writer, mesh, summary);
    PutSurfaces(writer, mesh, summary);
    Flush(writer);
    writer.hasFailed |= std::fclose(writer.stream) != 0;
    if (writer.hasFailed)
        Fail("cannot write " + mesh.options->path);
    return writer.bytes;
}

void PrintSummary(const Mesh &mesh, const Summary &summary, Int bytes) {
    const Family &family = *mesh.family;
    const Options &options = *mesh.options;
    const struct {
        const char *key;
        Int value;
    } counts[] = {
        {"bytes", bytes},
        {"cubes", mesh.nCubes},
        {"dimensions", family.nDim},
        {"nodes", mesh.nNodes},
        {"elements", mesh.nElements},
        {"nodes_per_element", family.nNodes},
        {"inverted", summary.nInverted},
        {"node_sets", options.nNodeSets},
        {"element_sections", options.nSections},
        {"surfaces", options.nSurfaces},
        // Of the finished mesh: nodes with the copies of the cohesive section, faces as linear pieces.
        {"final_nodes", summary.nFinalNodes},
        {"final_faces", options.nSurfaces > 0 ? mesh.nFaces * family.piecesPerFace : 0},
        {"nodes_per_face", family.nodesPerFace},
    };
    std::printf("type=%s\n", family.name);
    for (const auto &count : counts)
        std::printf("%s=%lld\n", count.key, static_cast<long long>(count.value));
    // Then one line each, in the order of the deck: element_section=NAME elements;
    // node_set=NAME members nodes-that-keep-its-tag; surface=NAME faces.
    std::fputs(summary.text.c_str(), stdout);
}

} // namespace

int main(int argc, char **argv) {
    const Options options = ReadOptions(argc, argv);
    const Mesh mesh = MakeMesh(options);
    CheckMesh(mesh);
    Summary summary;
    const Int bytes = WriteDeck(mesh, summary);
    PrintSummary(mesh, summary, bytes);
    return std::fflush(stdout) == 0 ? 0 : 2;
}
