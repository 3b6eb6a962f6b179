// The solver's mesh file.
#ifndef KIVOM_OUTPUT_DUMPKIVO_H
#define KIVOM_OUTPUT_DUMPKIVO_H

#include <cstdio>

struct TextOut; // output/textout.h

// Writes the mesh to "mesh.input" in the current directory and reports it on standard output. Without a mesh the
// file is left empty. A file that cannot be created is reported and ends the process with exit status -1; one that
// cannot be written whole is reported when it is closed (output/textout.h). Reads the mesh only.
void DumpKIVO();

// True once a file of either writer could not be written whole.
bool AnyDumpFailed();

// No run calls these: they are part of the interface. Lists of rows of their own: name line, then for i = 0..n-1 the
// position i, the count 2 or 3, and the entries i of the arrays of n ints.
void Output_INTArray2D(TextOut *stream, const char *name, int n, const int *a, const int *b);
void Output_INTArray2D(std::FILE *stream, const char *name, int n, const int *a, const int *b);
void Output_INTArray3D(TextOut *stream, const char *name, int n, const int *a, const int *b, const int *c);
void Output_INTArray3D(std::FILE *stream, const char *name, int n, const int *a, const int *b, const int *c);

#endif
