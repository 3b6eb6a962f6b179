// The file from top to bottom: the order of the calls is the order of the sections.
#include "meshfile/meshfile.h"

#include "meshfile/fields.h"
#include "meshfile/input.h"

#include "support/system.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>
#include <utility>

namespace meshfile {

namespace {

constexpr std::size_t kPerLine = 10; // values of a scalar list
constexpr std::size_t kFirstGrowth = 4096;

// Values -----------------------------------------------------------------------------------------------

bool TakeKey(Input *in, const char *key) {
    return TakeWords(in, "    ") && TakeWords(in, key) && TakeWords(in, " = ");
}

bool TakeIntValue(Input *in, const char *key, int *value) {
    return TakeKey(in, key) && TakeInt(in, kIntWidth, value) && TakeLineEnd(in);
}

bool TakeAtLeast(Input *in, const char *key, int least, int *value) {
    const long long line = in->line;
    return TakeIntValue(in, key, value) &&
           (*value >= least || RefuseLine(in, line, Reason("%s is below %d", key, least)));
}

bool TakeZero(Input *in, const char *key, int *value) {
    const long long line = in->line;
    return TakeIntValue(in, key, value) && (*value == 0 || RefuseLine(in, line, Reason("%s is not 0", key)));
}

bool TakeRealValue(Input *in, const char *key, double *value) {
    return TakeKey(in, key) && TakeReal(in, value) && TakeLineEnd(in);
}

bool TakeListKey(Input *in, const char *key) {
    return TakeKey(in, key) && TakeLineEnd(in);
}

// Lists ------------------------------------------------------------------------------------------------

// Appends. Room is made for twice what is there and never for more than the `expected` entries, so that a count that
// the file does not live up to costs nothing and a true one leaves nothing over.
template <class Value> void Append(std::vector<Value> *values, std::size_t expected, Value value) {
    if (values->size() == values->capacity()) {
        const std::size_t twice = std::max(kFirstGrowth, 2 * values->size());
        values->reserve(expected > values->size() ? std::min(twice, expected) : twice);
    }
    values->push_back(value);
}

// Ten values to a line, each line begun by the line end of the one before.
bool TakeScalarList(Input *in, const char *key, std::size_t count, std::vector<int> *values) {
    if (!TakeKey(in, key)) {
        return false;
    }
    for (std::size_t i = 0; i < count; ++i) {
        int value = 0;
        if ((i % kPerLine == 0 && !(TakeLineEnd(in) && TakeWords(in, "        "))) || !TakeInt(in, kIntWidth, &value)) {
            return false;
        }
        Append(values, count, value);
    }
    return TakeLineEnd(in);
}

bool TakeRow(Input *in, std::size_t index, int width, std::size_t expected, std::vector<int> *nodes) {
    int count = 0;
    if (!TakeWords(in, " ") || !TakeIndex(in, index) || !TakeInt(in, kCountWidth, &count)) {
        return false;
    }
    if (count < 0 || count > width) {
        return Refuse(in, Reason("the row's number of nodes is not 0 to %d", width));
    }
    for (int k = 0; k < count; ++k) {
        int node = 0;
        if (!TakeInt(in, kIntWidth, &node)) {
            return false;
        }
        Append(nodes, expected, node);
    }
    return TakeLineEnd(in);
}

// Rows of up to `width` nodes. Most lists have rows of one width: the first row's tells what to expect of all.
bool TakeRows(Input *in, const char *key, std::size_t count, int width, Rows *rows) {
    if (!TakeListKey(in, key)) {
        return false;
    }
    Append(&rows->first, count + 1, std::size_t{0});
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t expected = i == 0 ? 1 : count * rows->first[1];
        if (!TakeRow(in, i, width, expected, &rows->nodes)) {
            return false;
        }
        Append(&rows->first, count + 1, rows->nodes.size());
    }
    return true;
}

// Nodes ------------------------------------------------------------------------------------------------

// In two dimensions the third coordinate stays 0.
struct Place {
    double x = 0;
    double y = 0;
    double z = 0;
};

bool TakePlace(Input *in, std::size_t index, int dimension, Place *place) {
    return TakeWords(in, "        ") && TakeIndex(in, index) && TakeReal(in, &place->x) && TakeReal(in, &place->y) &&
           (dimension == 2 || TakeReal(in, &place->z)) && TakeLineEnd(in);
}

bool TakeCurrentPositions(Input *in, int dimension, std::size_t count, Nodes *nodes) {
    if (!TakeListKey(in, "Current_Positions")) {
        return false;
    }
    for (std::size_t i = 0; i < count; ++i) {
        Place place;
        if (!TakePlace(in, i, dimension, &place)) {
            return false;
        }
        Append(&nodes->x, count, place.x);
        Append(&nodes->y, count, place.y);
        if (dimension == 3) {
            Append(&nodes->z, count, place.z);
        }
    }
    return true;
}

// The other two lists say again what the first says. The same bits are the same fields: nan is itself,
// 0 is not -0.
bool TakePositionsAgain(Input *in, const char *key, int dimension, const Nodes &nodes) {
    if (!TakeListKey(in, key)) {
        return false;
    }
    for (std::size_t i = 0; i < nodes.Count(); ++i) {
        Place place;
        if (!TakePlace(in, i, dimension, &place)) {
            return false;
        }
        if (BitsOf(place.x) != BitsOf(nodes.x[i]) || BitsOf(place.y) != BitsOf(nodes.y[i]) ||
            (dimension == 3 && BitsOf(place.z) != BitsOf(nodes.z[i]))) {
            return RefuseLine(in, in->line - 1, "the position is another than in Current_Positions");
        }
    }
    return true;
}

bool TakeNodeLists(Input *in, std::size_t count, Mesh *mesh) {
    return TakeCurrentPositions(in, mesh->dimension, count, &mesh->nodes) &&
           TakePositionsAgain(in, "Previous_Positions", mesh->dimension, mesh->nodes) &&
           TakePositionsAgain(in, "Initial_Positions", mesh->dimension, mesh->nodes) &&
           TakeScalarList(in, "Node_Tag", count, &mesh->nodes.tags) &&
           TakeScalarList(in, "IsOnBoundary", count, &mesh->nodes.onBoundary);
}

bool TakeNodeGeometry(Input *in, Mesh *mesh) {
    int count = 0;
    return TakeLine(in, "<Node_Geometry>") && TakeRealValue(in, "Minimum Edge Charac", &mesh->lengths.characteristic) &&
           TakeRealValue(in, "Minimum Edge Length", &mesh->lengths.shortestEdge) &&
           TakeRealValue(in, "Maximum Edge Length", &mesh->lengths.longestEdge) &&
           TakeLine(in, "  <Coordinates> AllNodes") && TakeAtLeast(in, "Number_Of_Nodes", 0, &count) &&
           TakeNodeLists(in, static_cast<std::size_t>(count), mesh) && TakeLine(in, "  </Coordinates> AllNodes") &&
           TakeLine(in, "</Node_Geometry>") && TakeLine(in, "");
}

// Faces and cells --------------------------------------------------------------------------------------

bool TakeFaces(Input *in, Faces *faces) {
    int count = 0;
    if (!TakeLine(in, "  <Faces> AllFaces") || !TakeAtLeast(in, "Face_Number_Of_Nodes", 0, &faces->width) ||
        !TakeAtLeast(in, "Number_Of_Faces", 1, &count)) {
        return false;
    }
    const auto size = static_cast<std::size_t>(count);
    return TakeRows(in, "Face_To_Node", size, faces->width, &faces->rows) &&
           TakeScalarList(in, "Face_Tag", size, &faces->tags) && TakeLine(in, "  </Faces> AllFaces");
}

// The unit tensor for each cell, in the formats of the two dimensions.
bool TakeSolidGeometry(Input *in, int dimension, std::size_t count) {
    constexpr char kFlat[] = "   1.000000000000000e+00   0.000000000000000e+00"
                             "   0.000000000000000e+00   1.000000000000000e+00";
    constexpr char kSolid[] = " 1.0 0.0 0.0 0.0 1.0 0.0 0.0 0.0 1.0";
    if (!TakeListKey(in, "Initial_Solid_Geometry")) {
        return false;
    }
    for (std::size_t i = 0; i < count; ++i) {
        if (!TakeWords(in, "        ") || !TakeIndex(in, i) || !TakeLine(in, dimension == 2 ? kFlat : kSolid)) {
            return false;
        }
    }
    return true;
}

// Nodes and material nodes of the largest cell. Only triangles count in two dimensions and tetrahedra otherwise.
bool AreFiguresOfTypes(const Cells &cells, int dimension) {
    constexpr int kFlatTypes[] = {3, 4};
    constexpr int kSolidTypes[] = {5, 6};
    const int *types = dimension == 2 ? kFlatTypes : kSolidTypes;
    const auto has = [&cells](int type) {
        return std::find(cells.types.begin(), cells.types.end(), type) != cells.types.end();
    };
    const bool isQuadratic = has(types[1]);
    const bool isLinear = !isQuadratic && has(types[0]);
    const int nNodes = isQuadratic ? (dimension == 2 ? 6 : 10) : isLinear ? (dimension == 2 ? 3 : 4) : 0;
    const int nMaterial = isQuadratic ? (dimension == 2 ? 4 : 8) : isLinear ? 1 : 0;
    return cells.numberOfNodes == nNodes && cells.numberOfMaterialNodes == nMaterial;
}

bool TakeCells(Input *in, int dimension, Cells *cells) {
    // A cell's row is as wide as its field for the number of nodes allows: no figure bounds it for all types.
    constexpr int kMostNodes = 99999;
    int count = 0;
    const long long line = in->line + 2;
    if (!TakeLine(in, "  <Cells> AllCells") || !TakeZero(in, "Cell_Number_Of_Faces   ", &cells->numberOfFaces) ||
        !TakeIntValue(in, "Cell_Number_Of_Nodes   ", &cells->numberOfNodes) ||
        !TakeIntValue(in, "Cell_Number_Of_MatNodes", &cells->numberOfMaterialNodes) ||
        !TakeZero(in, "Cell_Number_Of_PreNodes", &cells->numberOfPressureNodes) ||
        !TakeZero(in, "Cell_Number_Of_VelNodes", &cells->numberOfVelocityNodes) ||
        !TakeAtLeast(in, "Number_Of_Cells", 1, &count)) {
        return false;
    }
    const auto size = static_cast<std::size_t>(count);
    return TakeRows(in, "Cell_To_Node", size, kMostNodes, &cells->rows) &&
           TakeScalarList(in, "Cell_Type", size, &cells->types) &&
           (AreFiguresOfTypes(*cells, dimension) ||
            RefuseLine(in, line, "the nodes and material nodes of a cell are not those of the cells' types")) &&
           TakeScalarList(in, "Cell_Tag", size, &cells->tags) && TakeSolidGeometry(in, dimension, size) &&
           TakeLine(in, "  </Cells> AllCells");
}

// Groups -----------------------------------------------------------------------------------------------

bool TakeInside(Input *, Group *) {
    return true;
}

bool TakeInside(Input *in, CellGroup *group) {
    return TakeRealValue(in, "Minimum_Edge_Length  ", &group->lengths.shortestEdge) &&
           TakeRealValue(in, "Maximum_Edge_Length  ", &group->lengths.longestEdge) &&
           TakeRealValue(in, "Characteristic_length", &group->lengths.characteristic);
}

// All groups of a kind ("Node", "Face" or "Cell").
template <class OneGroup> bool TakeGroups(Input *in, const std::string &kind, std::vector<OneGroup> *groups) {
    const std::string open = "  <" + kind + " Group> ";
    const std::string close = "  </" + kind + " Group> ";
    while (MayFollow(in, open)) {
        OneGroup group;
        std::string again;
        if (!TakeWords(in, open) || !TakeRest(in, &group.name) ||
            !TakeIntValue(in, (kind + "Tag").c_str(), &group.tag) || !TakeInside(in, &group) || !TakeWords(in, close)) {
            return false;
        }
        const long long line = in->line;
        if (!TakeRest(in, &again)) {
            return false;
        }
        if (again != group.name) {
            return RefuseLine(in, line, "the group is closed by another name");
        }
        groups->push_back(std::move(group));
    }
    return true;
}

// The whole --------------------------------------------------------------------------------------------

bool TakeDimension(Input *in, Mesh *mesh) {
    if (!TakeLine(in, "<Dimension>")) {
        return false;
    }
    if (MayFollow(in, "    ")) {
        if (!TakeKey(in, "Dimension")) {
            return false;
        }
        if (!MayFollow(in, "2D") && !MayFollow(in, "3D")) {
            return Refuse(in, "the dimension is neither 2D nor 3D");
        }
        mesh->dimension = MayFollow(in, "2D") ? 2 : 3;
        if (!TakeLine(in, mesh->dimension == 2 ? "2D" : "3D")) {
            return false;
        }
    }
    return TakeLine(in, "</Dimension>") && TakeLine(in, "");
}

bool TakeMesh(Input *in, Mesh *mesh) {
    mesh->isEmptyFile = !Has(in, 1) && in->error.text.empty();
    if (mesh->isEmptyFile) {
        return true;
    }
    return TakeDimension(in, mesh) && (mesh->dimension == 0 || TakeNodeGeometry(in, mesh)) &&
           TakeLine(in, "<Connectivity>") && (!MayFollow(in, "  <F") || TakeFaces(in, &mesh->faces)) &&
           (!MayFollow(in, "  <C") || TakeCells(in, mesh->dimension, &mesh->cells)) &&
           TakeLine(in, "</Connectivity>") && TakeLine(in, "") && TakeLine(in, "<Groups>") &&
           TakeGroups(in, "Node", &mesh->nodeGroups) && TakeGroups(in, "Face", &mesh->faceGroups) &&
           TakeGroups(in, "Cell", &mesh->cellGroups) && TakeLine(in, "</Groups>") && TakeLine(in, "") && TakeEnd(in);
}

Result Take(Input *in) {
    Result result;
    try {
        TakeMesh(in, &result.mesh);
    } catch (const std::bad_alloc &) {
        result.mesh = {};
        in->error = {0, "out of memory"}; // short enough to lie in the string itself
    }
    result.error = in->error;
    return result;
}

} // namespace

std::string Describe(const Error &error) {
    return (error.line > 0 ? "line " + std::to_string(error.line) + ": " : "") + error.text;
}

Result Read(const std::string &path, std::size_t blockSize) {
    Input in;
    in.blockSize = std::max(blockSize, kMostAhead);
    in.file = SystemOpenToRead(path.c_str());
    if (in.file == -1) {
        return {{}, {0, std::string("cannot be opened: ") + std::strerror(errno)}};
    }
    Result result = Take(&in);
    SystemClose(in.file);
    return result;
}

Result ReadText(std::string_view text) {
    Input in;
    in.isAtEnd = true;
    in.at = text.data();
    in.end = text.data() + text.size();
    return Take(&in);
}

} // namespace meshfile
