// The files, each from top to bottom.
#include "tests/support/plain/deck.h"

#include <algorithm>

namespace {

std::string Int10(std::size_t value) {
    return PlainField("%10d", static_cast<int>(value));
}

std::string Value(const char *key, int value) {
    return std::string("    ") + key + " = " + PlainField("%10d\n", value);
}

std::string Value(const char *key, double value) {
    return std::string("    ") + key + " = " + PlainField("%24.15e\n", value);
}

std::string ListKey(const char *key) {
    return std::string("    ") + key + " = \n";
}

std::string Positions(const PlainMesh &mesh) {
    std::string rows;
    for (std::size_t i = 0; i < mesh.nodes.size(); ++i) {
        const Node &node = mesh.nodes[i];
        rows += "        " + Int10(i) + PlainField("%24.15e", node.x) + PlainField("%24.15e", node.y);
        rows += (mesh.nDim == 3 ? PlainField("%24.15e", node.z) : "") + "\n";
    }
    return ListKey("Current_Positions") + rows + ListKey("Previous_Positions") + rows + ListKey("Initial_Positions") +
           rows;
}

template <class Entry> std::string ConnectivityList(const char *key, const std::vector<Entry> &entries) {
    std::string list = ListKey(key);
    for (std::size_t i = 0; i < entries.size(); ++i) {
        list += " " + Int10(i) + PlainField("%5d", static_cast<int>(entries[i].nodes.size()));
        for (const int node : entries[i].nodes) {
            list += PlainField("%10d", node);
        }
        list += "\n";
    }
    return list;
}

// value(entry) for each, ten to a line, each line begun by the end of the one before.
template <class Entry, class Get>
std::string ScalarList(const char *key, const std::vector<Entry> &entries, const Get &value) {
    std::string list = std::string("    ") + key + " = ";
    for (std::size_t i = 0; i < entries.size(); ++i) {
        list += (i % 10 == 0 ? "\n        " : "") + PlainField("%10d", value(entries[i]));
    }
    return list + "\n";
}

const auto kTag = [](const auto &entry) { return entry.tag; };
const auto kType = [](const auto &entry) { return entry.type; };
const auto kOne = [](const auto &) { return 1; };

std::string NodeGeometry(const PlainMesh &mesh) {
    return "<Node_Geometry>\n" + Value("Minimum Edge Charac", mesh.lengths.altitude) +
           Value("Minimum Edge Length", mesh.lengths.least) + Value("Maximum Edge Length", mesh.lengths.most) +
           "  <Coordinates> AllNodes\n" + Value("Number_Of_Nodes", static_cast<int>(mesh.nodes.size())) +
           Positions(mesh) + ScalarList("Node_Tag", mesh.nodes, kTag) + ScalarList("IsOnBoundary", mesh.nodes, kOne) +
           "  </Coordinates> AllNodes\n</Node_Geometry>\n\n";
}

std::string FaceSection(const PlainMesh &mesh) {
    std::size_t most = 0;
    for (const Face &face : mesh.faces) {
        most = std::max(most, face.nodes.size());
    }
    return "  <Faces> AllFaces\n" + Value("Face_Number_Of_Nodes", static_cast<int>(most)) +
           Value("Number_Of_Faces", static_cast<int>(mesh.faces.size())) +
           ConnectivityList("Face_To_Node", mesh.faces) + ScalarList("Face_Tag", mesh.faces, kTag) +
           "  </Faces> AllFaces\n";
}

std::string CellSection(const PlainMesh &mesh) {
    bool any[7] = {};
    for (const Cell &cell : mesh.cells) {
        any[cell.type] = true;
    }
    const bool flat = mesh.nDim == 2;
    const int nNodes = flat ? (any[4] ? 6 : any[3] ? 3 : 0) : (any[6] ? 10 : any[5] ? 4 : 0);
    const int nMatNodes = flat ? (any[4] ? 4 : any[3] ? 1 : 0) : (any[6] ? 8 : any[5] ? 1 : 0);
    std::string text = "  <Cells> AllCells\n" + Value("Cell_Number_Of_Faces   ", 0) +
                       Value("Cell_Number_Of_Nodes   ", nNodes) + Value("Cell_Number_Of_MatNodes", nMatNodes) +
                       Value("Cell_Number_Of_PreNodes", 0) + Value("Cell_Number_Of_VelNodes", 0) +
                       Value("Number_Of_Cells", static_cast<int>(mesh.cells.size())) +
                       ConnectivityList("Cell_To_Node", mesh.cells) + ScalarList("Cell_Type", mesh.cells, kType) +
                       ScalarList("Cell_Tag", mesh.cells, kTag) + ListKey("Initial_Solid_Geometry");
    for (std::size_t i = 0; i < mesh.cells.size(); ++i) {
        text += "        " + Int10(i);
        for (int k = 0; k < (flat ? 4 : 9); ++k) {
            const double one = k % (flat ? 3 : 4) == 0 ? 1.0 : 0.0; // the diagonal
            text += PlainField(flat ? "%24.15e" : "%4.1f", one);
        }
        text += "\n";
    }
    return text + "  </Cells> AllCells\n";
}

std::string Group(const std::string &kind, const std::string &name, const std::string &values) {
    return "  <" + kind + " Group> " + name + "\n" + values + "  </" + kind + " Group> " + name + "\n";
}

// Sets and surfaces are newest first here; the store turned each list round once more.
std::string Groups(const PlainDeck &deck, const PlainMesh &mesh) {
    std::string text = "<Groups>\n";
    for (std::size_t i = deck.nodeSets.size(); i > 0; --i) {
        text += Group("Node", deck.nodeSets[i - 1].name, Value("NodeTag", static_cast<int>(i)));
    }
    for (std::size_t i = deck.surfaces.size(); i > 0; --i) {
        text += Group("Face", deck.surfaces[i - 1].name, Value("FaceTag", static_cast<int>(i)));
    }
    for (std::size_t i = deck.cellBlocks.size(); i > 0; --i) {
        const Lengths &own = mesh.groupLengths[i - 1];
        text += Group("Cell", deck.cellBlocks[i - 1].name,
                      Value("CellTag", static_cast<int>(i)) + Value("Minimum_Edge_Length  ", own.least) +
                          Value("Maximum_Edge_Length  ", own.most) + Value("Characteristic_length", own.altitude));
    }
    return text + "</Groups>\n\n";
}

std::string MeshInput(const PlainDeck &deck, const PlainMesh &mesh) {
    std::string text = "<Dimension>\n";
    text += mesh.nDim == 0 ? "" : "    Dimension = " + std::to_string(mesh.nDim) + "D\n";
    text += "</Dimension>\n\n" + (mesh.nDim == 0 ? "" : NodeGeometry(mesh)) + "<Connectivity>\n";
    text += (mesh.faces.empty() ? "" : FaceSection(mesh)) + (mesh.cells.empty() ? "" : CellSection(mesh));
    return text + "</Connectivity>\n\n" + Groups(deck, mesh);
}

// VTK -----------------------------------------------------------------------------------------------------

const std::string kHeader = "# vtk DataFile Version 3.0\nvtk output\nASCII\nDATASET UNSTRUCTURED_GRID\n";

std::string Points(const std::vector<Node> &nodes) {
    std::string text = kHeader + "POINTS " + std::to_string(nodes.size()) + " float\n";
    for (const Node &node : nodes) {
        text += PlainField("%15.7e", node.x) + PlainField("%15.7e", node.y) + PlainField("%15.7e", node.z) + "\n";
    }
    return text + "\n";
}

// A line end behind every tenth value, and one behind the list.
template <class Entry, class Get> std::string VTKList(const std::vector<Entry> &entries, const Get &value) {
    std::string list;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        list += PlainField("%5d", value(entries[i])) + (i % 10 == 9 ? "\n" : "");
    }
    return list + "\n";
}

// What VTK calls a cell or face of the type.
int VTKType(int type) {
    return type == 3 || type == 32 ? 5 : type == 4 ? 22 : type == 5 ? 10 : type == 6 ? 24 : 3;
}

template <class Entry> std::string Grid(const std::vector<Node> &nodes, const std::vector<Entry> &entries) {
    std::size_t total = 0;
    std::string rows;
    for (const Entry &entry : entries) {
        const Ints corners = {0, 2, 4, 1, 3, 5}; // of a 6-node triangle first
        total += entry.nodes.size() + 1;
        rows += PlainField("%5d", static_cast<int>(entry.nodes.size()));
        for (std::size_t k = 0; k < entry.nodes.size(); ++k) {
            rows += PlainField("%10d", entry.nodes[entry.type == 4 ? static_cast<std::size_t>(corners[k]) : k]);
        }
        rows += "\n";
    }
    const std::string n = std::to_string(entries.size());
    const std::string table = " int\nLOOKUP_TABLE default\n";
    return Points(nodes) + "CELLS " + n + " " + std::to_string(total) + "\n" + rows + "\nCELL_TYPES " + n + "\n" +
           VTKList(entries, [](const Entry &entry) { return VTKType(entry.type); }) + "CELL_DATA " + n +
           "\nSCALARS CellTag" + table + VTKList(entries, kTag) + "POINT_DATA " + std::to_string(nodes.size()) +
           "\nSCALARS NodeTag" + table + VTKList(nodes, kTag) + "SCALARS OnB" + table + VTKList(nodes, kOne);
}

std::string NodeSetFile(const PlainMesh &mesh, int tag) {
    std::vector<Node> members;
    for (const Node &node : mesh.nodes) {
        if (node.tag == tag) {
            members.push_back(node);
        }
    }
    const std::string n = std::to_string(members.size());
    std::string text = Points(members) + "CELLS " + n + " " + std::to_string(2 * members.size()) + "\n";
    for (std::size_t i = 0; i < members.size(); ++i) {
        text += Int10(1) + " " + Int10(i) + "\n";
    }
    return text + "\nCELL_TYPES " + n + "\n" + VTKList(members, kOne);
}

void DumpVTKFile(const std::string &path, const std::string &text, const PlainPut &put, std::string *log) {
    *log += "\n  Dumping VTK file " + path + " ...";
    *log += put(path, text) ? " done." : "\n Error> cannot open file " + path + "\n";
}

} // namespace

bool PlainDump(const PlainDeck &deck, const PlainMesh &mesh, bool bVTK, const PlainPut &put, std::string *log) {
    if (!put("mesh.input", MeshInput(deck, mesh))) {
        *log += "\n Error> cannot open file mesh.input\n";
        return false;
    }
    *log += "\n  Dumping KIVO file mesh.input ... done.";
    if (bVTK && !mesh.cells.empty()) {
        DumpVTKFile("_Cells.vtk", Grid(mesh.nodes, mesh.cells), put, log);
    }
    if (bVTK && !mesh.faces.empty()) {
        DumpVTKFile("_Faces.vtk", Grid(mesh.nodes, mesh.faces), put, log);
    }
    for (std::size_t i = bVTK ? deck.nodeSets.size() : 0; i > 0; --i) {
        const std::string path = "_NSET_" + deck.nodeSets[i - 1].name + ".vtk";
        DumpVTKFile(path, NodeSetFile(mesh, static_cast<int>(i)), put, log);
    }
    return true;
}
