// What making the plain deck has to say beyond what the deck itself says: a code, a place and words. Texts and levels
// belong to whoever reports.
#ifndef KIVOM_FLATTEN_FINDING_H
#define KIVOM_FLATTEN_FINDING_H

#include "deck/finding.h"

#include <string>
#include <vector>

namespace flatten {

// ORDER: whoever reports keeps a table with one row a code, in this order. The words of each code stand behind it;
// count is the number of what the code speaks of.
enum class Code {
    cannotKeep,     // type: elements that carry something and have no place in a mesh file
    noCell,         // type: masses, springs ...
    edgeLines,      // type: lines along edges of cells in three dimensions
    refusedSplit,   // type: elements that would have to be split, and are not to be
    splitFails,     // element number, what is wrong with its pieces, what another diagonal would do
    isSplit,        // type, cells: elements that were cut into them
    splitSaved,     // elements that fail: count of those that another diagonal would save
    strayTriangles, // triangles beside solids that are nobody's face
    outOfPlane,     // elements of a plane mesh that leave the plane
    tooSmall,       // elements that are too small for the translator
    flat,           // elements without volume or area
    dividedGroup,   // group: sections of several materials
    cutLoose,       // group: its name makes the translator give each of its cells nodes of its own
    mixedOrders,    // group, its second name: elements of both orders
    skinSurface,    // group, surface: its triangles lie on faces of solids
    skinKnown,      // group, surface: its triangles are the faces of a surface that the deck has
    skinSet,        // element set: holds such triangles only
    lostFaces,      // surface: faces of elements that are no cells
    shellSide,      // label: a side of a triangle that is a cell itself
    overlapNodes,   // set, set that keeps the nodes
    overlapFaces,   // surface, surface that keeps the faces
    overlapDivided, // name of the part: of nodes or faces that several have
    nameReplaced,   // what, old name, new name
    tooManyNumbers, // the plain deck needs larger numbers than a deck can have
    scaledTooFar    // factor: coordinates become infinite
};
constexpr int kCodes = static_cast<int>(Code::scaledTooFar) + 1;

struct Finding {
    Code code;
    deck::Place place;
    std::vector<std::string> words;
    long long count = 1;
};

} // namespace flatten

#endif
