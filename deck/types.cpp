// The tables of element types, shapes and faces.
#include "deck/types.h"

#include <cstring>

namespace deck {

namespace {

// Endings of a name that leave its nodes alone: R reduced, H hybrid, I incompatible, M modified, T temperature, E
// electric, P pore pressure, S improved stress. "-" is the name without any.
constexpr const char *kTriangleEndings = "- R H T E P HT M MH MT MHT MP MPH ME I";
constexpr const char *kQuadEndings = "- R H I T E P RH IH RT HT RHT RE RP PH RPH PT RPT PHT RPHT";
constexpr const char *kTet4Endings = "- H T E P R I HT PH PT PHT S HS";
constexpr const char *kTet10Endings = "- M H MH MT MHT MP MPH MPT MPHT HS S I E T R HT P PH";
constexpr const char *kSolidEndings = "- R H I T E P RH IH RT HT RHT RE RP PH RPH PT RPT PHT RPHT S HS RI";
constexpr const char *kPlain = "-";
constexpr const char *kReduced = "- R";
constexpr const char *kElectric = "- E";
constexpr const char *kAny = "*";

struct TypeRow {
    const char *base;
    const char *endings; // kAny: whatever follows
    Shape shape;
    TypeClass kind;
    bool shell;
    int nNodes; // of Shape::none; elsewhere the shape tells
};

// The first row that fits counts.
constexpr TypeRow kTypes[] = {
    // What the translator holds
    {"CPS3", kPlain, Shape::tri3, TypeClass::cell, false, 0},
    {"CPE3", kPlain, Shape::tri3, TypeClass::cell, false, 0},
    {"STRI3", kPlain, Shape::tri3, TypeClass::cell, true, 0},
    {"CPS6", kPlain, Shape::tri6, TypeClass::cell, false, 0},
    {"CPE6", kPlain, Shape::tri6, TypeClass::cell, false, 0},
    {"STRI65", kPlain, Shape::tri6, TypeClass::cell, true, 0},
    {"C3D4", kPlain, Shape::tet4, TypeClass::cell, false, 0},
    {"C3D10", kPlain, Shape::tet10, TypeClass::cell, false, 0},
    // The same nodes under other names
    {"CPS3", kTriangleEndings, Shape::tri3, TypeClass::sameShape, false, 0},
    {"CPE3", kTriangleEndings, Shape::tri3, TypeClass::sameShape, false, 0},
    {"CPEG3", kTriangleEndings, Shape::tri3, TypeClass::sameShape, false, 0},
    {"CAX3", kTriangleEndings, Shape::tri3, TypeClass::sameShape, false, 0},
    {"CGAX3", kTriangleEndings, Shape::tri3, TypeClass::sameShape, false, 0},
    {"DC2D3", kElectric, Shape::tri3, TypeClass::sameShape, false, 0},
    {"DCAX3", kElectric, Shape::tri3, TypeClass::sameShape, false, 0},
    {"AC2D3", kPlain, Shape::tri3, TypeClass::sameShape, false, 0},
    {"ACAX3", kPlain, Shape::tri3, TypeClass::sameShape, false, 0},
    {"WARP2D3", kPlain, Shape::tri3, TypeClass::sameShape, false, 0},
    {"S3", "- R RS T RT", Shape::tri3, TypeClass::sameShape, true, 0},
    {"DS3", kPlain, Shape::tri3, TypeClass::sameShape, true, 0},
    {"M3D3", kPlain, Shape::tri3, TypeClass::sameShape, true, 0},
    {"SFM3D3", kPlain, Shape::tri3, TypeClass::sameShape, true, 0},
    {"R3D3", kPlain, Shape::tri3, TypeClass::sameShape, true, 0},
    {"CPS6", kTriangleEndings, Shape::tri6, TypeClass::sameShape, false, 0},
    {"CPE6", kTriangleEndings, Shape::tri6, TypeClass::sameShape, false, 0},
    {"CPEG6", kTriangleEndings, Shape::tri6, TypeClass::sameShape, false, 0},
    {"CAX6", kTriangleEndings, Shape::tri6, TypeClass::sameShape, false, 0},
    {"CGAX6", kTriangleEndings, Shape::tri6, TypeClass::sameShape, false, 0},
    {"DC2D6", kElectric, Shape::tri6, TypeClass::sameShape, false, 0},
    {"DCAX6", kElectric, Shape::tri6, TypeClass::sameShape, false, 0},
    {"AC2D6", kPlain, Shape::tri6, TypeClass::sameShape, false, 0},
    {"ACAX6", kPlain, Shape::tri6, TypeClass::sameShape, false, 0},
    {"M3D6", kPlain, Shape::tri6, TypeClass::sameShape, true, 0},
    {"SFM3D6", kPlain, Shape::tri6, TypeClass::sameShape, true, 0},
    {"S6", kPlain, Shape::tri6, TypeClass::sameShape, true, 0},
    {"DS6", kPlain, Shape::tri6, TypeClass::sameShape, true, 0},
    {"C3D4", kTet4Endings, Shape::tet4, TypeClass::sameShape, false, 0},
    {"DC3D4", kElectric, Shape::tet4, TypeClass::sameShape, false, 0},
    {"AC3D4", kPlain, Shape::tet4, TypeClass::sameShape, false, 0},
    {"EMC3D4", kPlain, Shape::tet4, TypeClass::sameShape, false, 0},
    {"FC3D4", kPlain, Shape::tet4, TypeClass::sameShape, false, 0},
    {"C3D10", kTet10Endings, Shape::tet10, TypeClass::sameShape, false, 0},
    {"DC3D10", kElectric, Shape::tet10, TypeClass::sameShape, false, 0},
    {"AC3D10", kPlain, Shape::tet10, TypeClass::sameShape, false, 0},
    // To be split
    {"CPS4", kQuadEndings, Shape::quad4, TypeClass::split, false, 0},
    {"CPE4", kQuadEndings, Shape::quad4, TypeClass::split, false, 0},
    {"CPEG4", kQuadEndings, Shape::quad4, TypeClass::split, false, 0},
    {"CAX4", kQuadEndings, Shape::quad4, TypeClass::split, false, 0},
    {"CGAX4", kQuadEndings, Shape::quad4, TypeClass::split, false, 0},
    {"DC2D4", kElectric, Shape::quad4, TypeClass::split, false, 0},
    {"DCAX4", kElectric, Shape::quad4, TypeClass::split, false, 0},
    {"AC2D4", kReduced, Shape::quad4, TypeClass::split, false, 0},
    {"ACAX4", kReduced, Shape::quad4, TypeClass::split, false, 0},
    {"WARP2D4", kPlain, Shape::quad4, TypeClass::split, false, 0},
    {"S4", "- R RS RSW T RT R5", Shape::quad4, TypeClass::split, true, 0},
    {"DS4", kPlain, Shape::quad4, TypeClass::split, true, 0},
    {"M3D4", kReduced, Shape::quad4, TypeClass::split, true, 0},
    {"SFM3D4", kReduced, Shape::quad4, TypeClass::split, true, 0},
    {"R3D4", kPlain, Shape::quad4, TypeClass::split, true, 0},
    {"CPS8", kQuadEndings, Shape::quad8, TypeClass::split, false, 0},
    {"CPE8", kQuadEndings, Shape::quad8, TypeClass::split, false, 0},
    {"CPEG8", kQuadEndings, Shape::quad8, TypeClass::split, false, 0},
    {"CAX8", kQuadEndings, Shape::quad8, TypeClass::split, false, 0},
    {"CGAX8", kQuadEndings, Shape::quad8, TypeClass::split, false, 0},
    {"DC2D8", kElectric, Shape::quad8, TypeClass::split, false, 0},
    {"DCAX8", kElectric, Shape::quad8, TypeClass::split, false, 0},
    {"AC2D8", kPlain, Shape::quad8, TypeClass::split, false, 0},
    {"ACAX8", kPlain, Shape::quad8, TypeClass::split, false, 0},
    {"S8", "- R R5 RT", Shape::quad8, TypeClass::split, true, 0},
    {"DS8", kPlain, Shape::quad8, TypeClass::split, true, 0},
    {"M3D8", kReduced, Shape::quad8, TypeClass::split, true, 0},
    {"SFM3D8", kReduced, Shape::quad8, TypeClass::split, true, 0},
    {"C3D5", kSolidEndings, Shape::pyramid5, TypeClass::split, false, 0},
    {"DC3D5", kElectric, Shape::pyramid5, TypeClass::split, false, 0},
    {"AC3D5", kPlain, Shape::pyramid5, TypeClass::split, false, 0},
    {"FC3D5", kPlain, Shape::pyramid5, TypeClass::split, false, 0},
    {"C3D6", kSolidEndings, Shape::wedge6, TypeClass::split, false, 0},
    {"DC3D6", kElectric, Shape::wedge6, TypeClass::split, false, 0},
    {"AC3D6", kPlain, Shape::wedge6, TypeClass::split, false, 0},
    {"FC3D6", kPlain, Shape::wedge6, TypeClass::split, false, 0},
    {"SC6R", "- T", Shape::wedge6, TypeClass::split, false, 0},
    {"C3D15", kSolidEndings, Shape::wedge15, TypeClass::split, false, 0},
    {"DC3D15", kElectric, Shape::wedge15, TypeClass::split, false, 0},
    {"AC3D15", kPlain, Shape::wedge15, TypeClass::split, false, 0},
    {"C3D8", kSolidEndings, Shape::hex8, TypeClass::split, false, 0},
    {"DC3D8", kElectric, Shape::hex8, TypeClass::split, false, 0},
    {"AC3D8", kReduced, Shape::hex8, TypeClass::split, false, 0},
    {"EMC3D8", kPlain, Shape::hex8, TypeClass::split, false, 0},
    {"FC3D8", kPlain, Shape::hex8, TypeClass::split, false, 0},
    {"SC8R", "- T", Shape::hex8, TypeClass::split, false, 0},
    {"C3D20", kSolidEndings, Shape::hex20, TypeClass::split, false, 0},
    {"DC3D20", kElectric, Shape::hex20, TypeClass::split, false, 0},
    {"AC3D20", kPlain, Shape::hex20, TypeClass::split, false, 0},
    // Nodes in the middle of faces: their order is not certain
    {"C3D13", kSolidEndings, Shape::pyramid13, TypeClass::uncertain, false, 0},
    {"C3D27", kSolidEndings, Shape::hex27, TypeClass::uncertain, false, 0},
    {"S9R5", kPlain, Shape::quad9, TypeClass::uncertain, true, 0},
    {"M3D9", kReduced, Shape::quad9, TypeClass::uncertain, true, 0},
    {"C3D15V", kAny, Shape::none, TypeClass::uncertain, false, 0},
    // Lines that carry something
    {"T2D2", kAny, Shape::line2, TypeClass::cannotKeep, false, 0},
    {"T3D2", kAny, Shape::line2, TypeClass::cannotKeep, false, 0},
    {"T2D3", kAny, Shape::line3, TypeClass::cannotKeep, false, 0},
    {"T3D3", kAny, Shape::line3, TypeClass::cannotKeep, false, 0},
    {"B21", kAny, Shape::line2, TypeClass::cannotKeep, false, 0},
    {"B23", kAny, Shape::line2, TypeClass::cannotKeep, false, 0},
    {"B31", kAny, Shape::line2, TypeClass::cannotKeep, false, 0},
    {"B33", kAny, Shape::line2, TypeClass::cannotKeep, false, 0},
    {"B22", kAny, Shape::line3, TypeClass::cannotKeep, false, 0},
    {"B32", kAny, Shape::line3, TypeClass::cannotKeep, false, 0},
    {"PIPE21", kAny, Shape::line2, TypeClass::cannotKeep, false, 0},
    {"PIPE31", kAny, Shape::line2, TypeClass::cannotKeep, false, 0},
    {"PIPE22", kAny, Shape::line3, TypeClass::cannotKeep, false, 0},
    {"PIPE32", kAny, Shape::line3, TypeClass::cannotKeep, false, 0},
    {"ELBOW31", kAny, Shape::line2, TypeClass::cannotKeep, false, 0},
    {"ELBOW32", kAny, Shape::line3, TypeClass::cannotKeep, false, 0},
    {"FRAME2D", kAny, Shape::line2, TypeClass::cannotKeep, false, 0},
    {"FRAME3D", kAny, Shape::line2, TypeClass::cannotKeep, false, 0},
    {"SAX1", kAny, Shape::line2, TypeClass::cannotKeep, false, 0},
    {"SAX2", kAny, Shape::line3, TypeClass::cannotKeep, false, 0},
    {"MAX1", kAny, Shape::line2, TypeClass::cannotKeep, false, 0},
    {"MAX2", kAny, Shape::line3, TypeClass::cannotKeep, false, 0},
    {"R2D2", kAny, Shape::line2, TypeClass::cannotKeep, false, 0},
    {"RAX2", kAny, Shape::line2, TypeClass::cannotKeep, false, 0},
    {"RB2D2", kAny, Shape::line2, TypeClass::cannotKeep, false, 0},
    {"RB3D2", kAny, Shape::line2, TypeClass::cannotKeep, false, 0},
    {"DC1D2", kAny, Shape::line2, TypeClass::cannotKeep, false, 0},
    {"DC1D3", kAny, Shape::line3, TypeClass::cannotKeep, false, 0},
    // Layers without thickness and their like
    {"COH2D4", kPlain, Shape::none, TypeClass::cannotKeep, false, 4},
    {"COHAX4", kPlain, Shape::none, TypeClass::cannotKeep, false, 4},
    {"COH3D6", kPlain, Shape::none, TypeClass::cannotKeep, false, 6},
    {"COH3D8", kPlain, Shape::none, TypeClass::cannotKeep, false, 8},
    {"COH", kAny, Shape::none, TypeClass::cannotKeep, false, 0},
    {"GK", kAny, Shape::none, TypeClass::cannotKeep, false, 0},
    {"INTER", kAny, Shape::none, TypeClass::cannotKeep, false, 0},
    // Nothing of a mesh
    {"MASS", kPlain, Shape::none, TypeClass::noCell, false, 1},
    {"ROTARYI", kPlain, Shape::none, TypeClass::noCell, false, 1},
    {"HEATCAP", kPlain, Shape::none, TypeClass::noCell, false, 1},
    {"SPRINGA", kPlain, Shape::none, TypeClass::noCell, false, 2},
    {"SPRING1", kPlain, Shape::none, TypeClass::noCell, false, 1},
    {"SPRING2", kPlain, Shape::none, TypeClass::noCell, false, 2},
    {"SPRING", kAny, Shape::none, TypeClass::noCell, false, 0},
    {"DASHPOTA", kPlain, Shape::none, TypeClass::noCell, false, 2},
    {"DASHPOT1", kPlain, Shape::none, TypeClass::noCell, false, 1},
    {"DASHPOT2", kPlain, Shape::none, TypeClass::noCell, false, 2},
    {"DASHPOT", kAny, Shape::none, TypeClass::noCell, false, 0},
    {"CONN2D2", kPlain, Shape::none, TypeClass::noCell, false, 0}, // the second node may be missing: the ground
    {"CONN", kAny, Shape::none, TypeClass::noCell, false, 0},
    {"GAP", kAny, Shape::none, TypeClass::noCell, false, 0},
    {"JOINT", kAny, Shape::none, TypeClass::noCell, false, 0},
    {"DCOUP", kAny, Shape::none, TypeClass::noCell, false, 0},
    {"ITT", kAny, Shape::none, TypeClass::noCell, false, 0},
    {"ISL", kAny, Shape::none, TypeClass::noCell, false, 0},
};

struct ShapeRow {
    const char *name;
    int nNodes;
    int nCorners;
    int dimension;
    const FaceRow *faces;
    int nFaces;
};

constexpr FaceRow kTriEdges[] = {{2, {0, 1}}, {2, {1, 2}}, {2, {2, 0}}};
constexpr FaceRow kQuadEdges[] = {{2, {0, 1}}, {2, {1, 2}}, {2, {2, 3}}, {2, {3, 0}}};
constexpr FaceRow kTetFaces[] = {{3, {0, 1, 2}}, {3, {0, 3, 1}}, {3, {1, 3, 2}}, {3, {2, 3, 0}}};
constexpr FaceRow kPyramidFaces[] = {{4, {0, 1, 2, 3}}, {3, {0, 4, 1}}, {3, {1, 4, 2}}, {3, {2, 4, 3}}, {3, {3, 4, 0}}};
constexpr FaceRow kWedgeFaces[] = {
    {3, {0, 1, 2}}, {3, {3, 5, 4}}, {4, {0, 3, 4, 1}}, {4, {1, 4, 5, 2}}, {4, {2, 5, 3, 0}}};
constexpr FaceRow kHexFaces[] = {{4, {0, 1, 2, 3}}, {4, {4, 7, 6, 5}}, {4, {0, 4, 5, 1}},
                                 {4, {1, 5, 6, 2}}, {4, {2, 6, 7, 3}}, {4, {3, 7, 4, 0}}};

// Edges in the order of their middle nodes, which stand behind the corners.
struct EdgeRow {
    int a, b;
};
constexpr EdgeRow kTriSides[] = {{0, 1}, {1, 2}, {2, 0}};
constexpr EdgeRow kQuadSides[] = {{0, 1}, {1, 2}, {2, 3}, {3, 0}};
constexpr EdgeRow kTetEdges[] = {{0, 1}, {1, 2}, {2, 0}, {0, 3}, {1, 3}, {2, 3}};
constexpr EdgeRow kWedgeEdges[] = {{0, 1}, {1, 2}, {2, 0}, {3, 4}, {4, 5}, {5, 3}, {0, 3}, {1, 4}, {2, 5}};
constexpr EdgeRow kHexEdges[] = {{0, 1}, {1, 2}, {2, 3}, {3, 0}, {4, 5}, {5, 6},
                                 {6, 7}, {7, 4}, {0, 4}, {1, 5}, {2, 6}, {3, 7}};

// ORDER: Shape.
constexpr ShapeRow kShapes[] = {
    {"no cell", 0, 0, 0, nullptr, 0},
    {"line", 2, 2, 1, nullptr, 0},
    {"line of three nodes", 3, 2, 1, nullptr, 0},
    {"triangle", 3, 3, 2, kTriEdges, 3},
    {"triangle of six nodes", 6, 3, 2, kTriEdges, 3},
    {"quadrilateral", 4, 4, 2, kQuadEdges, 4},
    {"quadrilateral of eight nodes", 8, 4, 2, kQuadEdges, 4},
    {"quadrilateral of nine nodes", 9, 4, 2, kQuadEdges, 4},
    {"tetrahedron", 4, 4, 3, kTetFaces, 4},
    {"tetrahedron of ten nodes", 10, 4, 3, kTetFaces, 4},
    {"pyramid", 5, 5, 3, kPyramidFaces, 5},
    {"pyramid of thirteen nodes", 13, 5, 3, kPyramidFaces, 5},
    {"wedge", 6, 6, 3, kWedgeFaces, 5},
    {"wedge of fifteen nodes", 15, 6, 3, kWedgeFaces, 5},
    {"hexahedron", 8, 8, 3, kHexFaces, 6},
    {"hexahedron of twenty nodes", 20, 8, 3, kHexFaces, 6},
    {"hexahedron of twenty-seven nodes", 27, 8, 3, kHexFaces, 6},
};

const ShapeRow &RowOf(Shape shape) {
    return kShapes[static_cast<int>(shape)];
}

// Whether the ending stands in the list of words.
bool IsEnding(const char *endings, const char *ending) {
    const char *word = *ending == '\0' ? kPlain : ending;
    const std::size_t length = std::strlen(word);
    for (const char *at = endings; *at != '\0';) {
        const std::size_t n = std::strcspn(at, " ");
        if (n == length && std::strncmp(at, word, n) == 0) {
            return true;
        }
        at += n + (at[n] == ' ' ? 1 : 0);
    }
    return false;
}

bool Fits(const TypeRow &row, const std::string &name) {
    const std::size_t length = std::strlen(row.base);
    return name.compare(0, length, row.base) == 0 &&
           (row.endings == kAny || IsEnding(row.endings, name.c_str() + length));
}

// The edges of the shapes of second order whose order of nodes is certain.
const EdgeRow *EdgesOf(Shape shape, int *n) {
    switch (shape) {
    case Shape::tri6:
        *n = 3;
        return kTriSides;
    case Shape::quad8:
        *n = 4;
        return kQuadSides;
    case Shape::tet10:
        *n = 6;
        return kTetEdges;
    case Shape::wedge15:
        *n = 9;
        return kWedgeEdges;
    case Shape::hex20:
        *n = 12;
        return kHexEdges;
    default:
        *n = 0;
        return nullptr;
    }
}

} // namespace

ElementType FindType(const std::string &name) {
    for (const TypeRow &row : kTypes) {
        if (Fits(row, name)) {
            return {row.shape, row.kind, row.shell, row.shape == Shape::none ? row.nNodes : NodesOf(row.shape)};
        }
    }
    return {};
}

int NodesOf(Shape shape) {
    return RowOf(shape).nNodes;
}

int CornersOf(Shape shape) {
    return RowOf(shape).nCorners;
}

int DimensionOf(Shape shape) {
    return RowOf(shape).dimension;
}

int FacesOf(Shape shape) {
    return RowOf(shape).nFaces;
}

const FaceRow &FaceOf(Shape shape, int face) {
    return RowOf(shape).faces[face];
}

int MidNodeOf(Shape shape, int corner, int other) {
    int n = 0;
    const EdgeRow *edges = EdgesOf(shape, &n);
    for (int i = 0; i < n; ++i) {
        if ((edges[i].a == corner && edges[i].b == other) || (edges[i].a == other && edges[i].b == corner)) {
            return CornersOf(shape) + i;
        }
    }
    return -1;
}

const char *ShapeName(Shape shape) {
    return RowOf(shape).name;
}

} // namespace deck
