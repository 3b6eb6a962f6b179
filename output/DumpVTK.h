// The mesh as legacy VTK files, for viewing.
#ifndef KIVOM_OUTPUT_DUMPVTK_H
#define KIVOM_OUTPUT_DUMPVTK_H

// Writes "_Cells.vtk", "_Faces.vtk" (each only when there are any) and "_NSET_<name>.vtk" for every node group
// into the current directory and reports each on standard output. The format is version 3.0 of the legacy VTK
// format, ASCII, unstructured grid (VTK user's guide, "VTK File Formats"). A file that cannot be created is
// reported and passed over. Reads the mesh only.
void DumpVTK();

#endif
