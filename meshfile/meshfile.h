// "mesh.input" read back, whole and strictly: what the translator writes for the solver, as arrays.
//
// Everything that the format lays down is held against the file, byte by byte: words, order, widths, the index at the
// head of each row, ten values to a line, the three position lists being one, the unit tensors, the figures that
// follow from the cells' types, and that each number stands as C's formats write it ("%10d", "%24.15e"). A file that is
// accepted can be written again from the arrays, to the byte. What the mesh *means* is left to others: positions, tags
// and types may have any value, a row any number of nodes up to its block's width (a cell's any at all), names any
// bytes, also none.
//
// Memory: the arrays, one block of the file, and nothing made by a count that the file only claims.
#ifndef KIVOM_MESHFILE_MESHFILE_H
#define KIVOM_MESHFILE_MESHFILE_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace meshfile {

// Mesh-wide or of one cell group, in the order of the mesh-wide lines.
struct Lengths {
    double characteristic = 0;
    double shortestEdge = 0;
    double longestEdge = 0;
};

// One entry per node in each array. In two dimensions z is empty.
struct Nodes {
    std::vector<double> x, y, z;
    std::vector<int> tags;
    std::vector<int> onBoundary;

    std::size_t Count() const {
        return x.size();
    }
};

// Rows of node positions: row i is nodes[first[i]] up to, not including, nodes[first[i + 1]]. `first` has one entry
// more than there are rows, or none where there are no rows. A position is as the file has it: from 0, -1 for a node
// that the deck did not have, or anything else.
struct Rows {
    std::vector<std::size_t> first;
    std::vector<int> nodes;

    std::size_t Count() const {
        return first.empty() ? 0 : first.size() - 1;
    }
    std::size_t Width(std::size_t row) const {
        return first[row + 1] - first[row];
    }
    const int *Row(std::size_t row) const {
        return nodes.data() + first[row];
    }
};

// Without faces (no block in the file) width is 0 and all arrays are empty.
struct Faces {
    int width = 0; // Face_Number_Of_Nodes
    Rows rows;
    std::vector<int> tags;
};

// Without cells (no block in the file) all figures are 0 and all arrays are empty.
struct Cells {
    int numberOfFaces = 0; // always 0
    int numberOfNodes = 0; // follows from the types, as do the material nodes
    int numberOfMaterialNodes = 0;
    int numberOfPressureNodes = 0; // always 0
    int numberOfVelocityNodes = 0; // always 0
    Rows rows;
    std::vector<int> types;
    std::vector<int> tags;
};

struct Group {
    std::string name;
    int tag = 0;
};

struct CellGroup {
    std::string name;
    int tag = 0;
    Lengths lengths;
};

// Groups stand in the order of the file.
struct Mesh {
    bool isEmptyFile = false; // no byte at all: what a run leaves that had no mesh; everything below is empty then
    int dimension = 0;        // 2, 3, or 0 where the file names none; it then has no nodes either
    Lengths lengths;          // zeros without a dimension
    Nodes nodes;
    Faces faces;
    Cells cells;
    std::vector<Group> nodeGroups;
    std::vector<Group> faceGroups;
    std::vector<CellGroup> cellGroups;
};

// The first departure from the format. Line 0: the file as a whole (it cannot be opened or read; "out of memory").
struct Error {
    long long line = 0;
    std::string text; // empty: none
};

struct Result {
    Mesh mesh; // whole when there is no error; otherwise of no use
    Error error;

    bool Ok() const {
        return error.text.empty();
    }
};

// "line 12: reason", or the reason alone for line 0.
std::string Describe(const Error &error);

constexpr std::size_t kBlockSize = 256 * 1024;

// Reads the file; anything that gives bytes will do (a pipe, too). The block's size is an argument for tests, which
// make it tiny; it is raised to what the longest field needs.
Result Read(const std::string &path, std::size_t blockSize = kBlockSize);

// The same for a text in memory, which is not copied.
Result ReadText(std::string_view text);

} // namespace meshfile

#endif
