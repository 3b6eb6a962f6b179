// By the C library's formats alone.
#include "tests/support/printmesh.h"

#include <cstdio>

namespace {

template <class... Values> void Put(std::string *out, const char *format, Values... values) {
    char text[512];
    std::snprintf(text, sizeof text, format, values...);
    *out += text;
}

void PutScalars(std::string *out, const char *key, const std::vector<int> &values) {
    Put(out, "    %s = ", key);
    for (std::size_t i = 0; i < values.size(); ++i) {
        Put(out, i % 10 == 0 ? "\n        %10d" : "%10d", values[i]);
    }
    *out += "\n";
}

void PutRows(std::string *out, const char *key, const meshfile::Rows &rows) {
    Put(out, "    %s = \n", key);
    for (std::size_t i = 0; i < rows.Count(); ++i) {
        Put(out, " %10d%5d", static_cast<int>(i), static_cast<int>(rows.Width(i)));
        for (std::size_t k = 0; k < rows.Width(i); ++k) {
            Put(out, "%10d", rows.Row(i)[k]);
        }
        *out += "\n";
    }
}

void PutNodes(std::string *out, const meshfile::Mesh &mesh) {
    const meshfile::Nodes &nodes = mesh.nodes;
    Put(out, "<Node_Geometry>\n    Minimum Edge Charac = %24.15e\n    Minimum Edge Length = %24.15e\n",
        mesh.lengths.characteristic, mesh.lengths.shortestEdge);
    Put(out, "    Maximum Edge Length = %24.15e\n  <Coordinates> AllNodes\n    Number_Of_Nodes = %10d\n",
        mesh.lengths.longestEdge, static_cast<int>(nodes.Count()));
    for (const char *key : {"Current", "Previous", "Initial"}) {
        Put(out, "    %s_Positions = \n", key);
        for (std::size_t i = 0; i < nodes.Count(); ++i) {
            Put(out, "        %10d%24.15e%24.15e", static_cast<int>(i), nodes.x[i], nodes.y[i]);
            Put(out, mesh.dimension == 3 ? "%24.15e\n" : "\n", mesh.dimension == 3 ? nodes.z[i] : 0.0);
        }
    }
    PutScalars(out, "Node_Tag", nodes.tags);
    PutScalars(out, "IsOnBoundary", nodes.onBoundary);
    *out += "  </Coordinates> AllNodes\n</Node_Geometry>\n\n";
}

void PutFaces(std::string *out, const meshfile::Faces &faces) {
    Put(out, "  <Faces> AllFaces\n    Face_Number_Of_Nodes = %10d\n    Number_Of_Faces = %10d\n", faces.width,
        static_cast<int>(faces.rows.Count()));
    PutRows(out, "Face_To_Node", faces.rows);
    PutScalars(out, "Face_Tag", faces.tags);
    *out += "  </Faces> AllFaces\n";
}

void PutCells(std::string *out, const meshfile::Cells &cells, bool isFlat) {
    Put(out, "  <Cells> AllCells\n    Cell_Number_Of_Faces    = %10d\n    Cell_Number_Of_Nodes    = %10d\n",
        cells.numberOfFaces, cells.numberOfNodes);
    Put(out, "    Cell_Number_Of_MatNodes = %10d\n    Cell_Number_Of_PreNodes = %10d\n", cells.numberOfMaterialNodes,
        cells.numberOfPressureNodes);
    Put(out, "    Cell_Number_Of_VelNodes = %10d\n    Number_Of_Cells = %10d\n", cells.numberOfVelocityNodes,
        static_cast<int>(cells.rows.Count()));
    PutRows(out, "Cell_To_Node", cells.rows);
    PutScalars(out, "Cell_Type", cells.types);
    PutScalars(out, "Cell_Tag", cells.tags);
    *out += "    Initial_Solid_Geometry = \n";
    for (std::size_t i = 0; i < cells.rows.Count(); ++i) {
        Put(out, "        %10d", static_cast<int>(i));
        if (isFlat) {
            Put(out, "%24.15e%24.15e%24.15e%24.15e\n", 1.0, 0.0, 0.0, 1.0);
        } else {
            Put(out, "%4.1f%4.1f%4.1f%4.1f%4.1f%4.1f%4.1f%4.1f%4.1f\n", 1.0, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 1.0);
        }
    }
    *out += "  </Cells> AllCells\n";
}

// Names hold any bytes, NUL too.
void PutGroup(std::string *out, const std::string &kind, const std::string &name, int tag, const std::string &inside) {
    *out += "  <" + kind + " Group> " + name + "\n";
    Put(out, "    %sTag = %10d\n", kind.c_str(), tag);
    *out += inside + "  </" + kind + " Group> " + name + "\n";
}

std::string LengthLines(const meshfile::Lengths &lengths) {
    std::string out;
    Put(&out, "    Minimum_Edge_Length   = %24.15e\n    Maximum_Edge_Length   = %24.15e\n", lengths.shortestEdge,
        lengths.longestEdge);
    Put(&out, "    Characteristic_length = %24.15e\n", lengths.characteristic);
    return out;
}

} // namespace

std::string PrintMesh(const meshfile::Mesh &mesh) {
    if (mesh.isEmptyFile) {
        return "";
    }
    std::string out = "<Dimension>\n";
    if (mesh.dimension != 0) {
        Put(&out, "    Dimension = %dD\n", mesh.dimension);
    }
    out += "</Dimension>\n\n";
    if (mesh.dimension != 0) {
        PutNodes(&out, mesh);
    }
    out += "<Connectivity>\n";
    if (mesh.faces.rows.Count() > 0) {
        PutFaces(&out, mesh.faces);
    }
    if (mesh.cells.rows.Count() > 0) {
        PutCells(&out, mesh.cells, mesh.dimension == 2);
    }
    out += "</Connectivity>\n\n<Groups>\n";
    for (const meshfile::Group &group : mesh.nodeGroups) {
        PutGroup(&out, "Node", group.name, group.tag, "");
    }
    for (const meshfile::Group &group : mesh.faceGroups) {
        PutGroup(&out, "Face", group.name, group.tag, "");
    }
    for (const meshfile::CellGroup &group : mesh.cellGroups) {
        PutGroup(&out, "Cell", group.name, group.tag, LengthLines(group.lengths));
    }
    return out + "</Groups>\n\n";
}
