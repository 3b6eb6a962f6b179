// A strict reader of what the program writes: every character of the files is accounted for.
#ifndef KIVOM_FUZZ_MESHFILE_H
#define KIVOM_FUZZ_MESHFILE_H

#include <string>
#include <vector>

// What the other checks want to know of a "mesh.input".
struct MeshFile {
    int nDim; // 0 when the file names none
    int nNodes, nFaces, nCells;
    int nNodeGroups, nFaceGroups, nCellGroups;
    std::vector<int> nodeTags;
};

// Reads the text of "mesh.input". Whatever is not as the format and a translated mesh have it is a broken rule.
MeshFile ReadMeshFile(const std::string &text);

// Reads the text of a VTK file. `nPoints` and `nCells` say what it must hold; a node set's file (bNodeSet) holds a
// cell for each point and no data.
void CheckVTKFile(const std::string &text, bool bNodeSet, int nPoints, int nCells);

#endif
