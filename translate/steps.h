// The steps of the translation, in the order in which MeshAll calls them. Each works on the whole mesh.
#ifndef KIVOM_TRANSLATE_STEPS_H
#define KIVOM_TRANSLATE_STEPS_H

#include "store/sys.h"

// numbering.cpp
// Nodes ascending by number, then connectivity from node numbers to positions (-1 where the deck has no such
// node: counted and reported), then every node's number is its position.
void NumberNodes(Mesh *mesh);

// orient.cpp
// Cells that run the wrong way round are turned, their face tags with them.
void ChckCellsOrde(Mesh *mesh);

// lengths.cpp
void CalLength(Mesh *mesh); // shortest and longest edge; per cell group and of the whole mesh
void CalCharac(Mesh *mesh); // smallest altitude, half of it for quadratic cells; likewise

// cohesive.cpp
// Cells of groups whose names begin with "C_" get nodes of their own.
void SplitCohesiveCells(Mesh *mesh);

// faces.cpp
// A face for every tagged slot of a cell; several linear ones for a quadratic cell.
void ApFaces(Mesh *mesh);

// compact.cpp
void DropUnusedNodes(Mesh *mesh);
void FlagBoundaryNodes(Mesh *mesh); // every node is flagged

#endif
