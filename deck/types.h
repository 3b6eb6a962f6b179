// Element types by their shape: what a type's rows hold and which faces its labels name.
//
// A type is found in a table of names, never by taking letters off: the S of C3D10HS and the T of STRI3 mean nothing
// alike.
#ifndef KIVOM_DECK_TYPES_H
#define KIVOM_DECK_TYPES_H

#include <string>

namespace deck {

// ORDER: rows of kShapes in types.cpp.
enum class Shape {
    none, // masses, springs, connectors ...: no geometry to keep
    line2,
    line3,
    tri3,
    tri6,
    quad4,
    quad8,
    quad9,
    tet4,
    tet10,
    pyramid5,
    pyramid13,
    wedge6,
    wedge15,
    hex8,
    hex20,
    hex27
};

enum class TypeClass {
    cell,       // the translator's own type
    sameShape,  // nodes as those of the translator's type of that shape
    split,      // has to be cut into triangles or tetrahedra
    noCell,     // mass, spring, connector, gap ...: nothing to be kept
    cannotKeep, // beams, cohesive elements ...: carries something and cannot be kept
    uncertain,  // a shape whose order of nodes is not certain (C3D13, C3D27)
    unknown     // in no table
};

struct ElementType {
    Shape shape = Shape::none;
    TypeClass kind = TypeClass::unknown;
    bool shell = false; // a surface in space: SPOS, SNEG and E labels; else S labels
    int nNodes = 0;     // nodes a row has; 0: not known, the rows tell
};

// The type of that name (upper case, no blanks); kind unknown when no table has it.
ElementType FindType(const std::string &name);

constexpr int kMostFaceCorners = 4;

// A face (an edge in two dimensions) of a shape, in the order of its label's corner nodes, rows of its connectivity.
struct FaceRow {
    int nCorners;
    int corner[kMostFaceCorners];
};

int NodesOf(Shape shape);     // nodes in all; 0 for none
int CornersOf(Shape shape);   // corner nodes
int DimensionOf(Shape shape); // 3 for solids, 2 for triangles and quadrilaterals, 1 for lines, 0 for none
int FacesOf(Shape shape);     // faces of solids, edges of triangles and quadrilaterals, 0 for the rest
const FaceRow &FaceOf(Shape shape, int face); // face S(face+1) or edge E(face+1); 0 <= face < FacesOf(shape)

// The node in the middle of the edge between two corners (rows of the connectivity); -1 where there is none.
int MidNodeOf(Shape shape, int corner, int other);

const char *ShapeName(Shape shape);

} // namespace deck

#endif
