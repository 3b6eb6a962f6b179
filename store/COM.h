// The mesh store's interface: the one mesh of the process.
//
// The reader fills it through the COM_Arch... operations, each of which makes the mesh when there is none yet.
// The translation and the writers take the root with GetCOM and use the records directly (store/sys.h).
//
// No run calls COM_ArchNode and COM_ArchCell, which add one entry each: they are part of the interface.
#ifndef KIVOM_STORE_COM_H
#define KIVOM_STORE_COM_H

#include "store/sys.h"

// The mesh, or null before the first COM_Arch... call and after FreeCOM. Owned by the store.
Mesh *GetCOM();

// Releases the whole mesh. A later COM_Arch... call begins a new, empty one. The column counts that the process has
// seen stay (store/sys.h): cells of another width are then reported where they grow.
void FreeCOM();

// Number of space dimensions; the last call counts.
void COM_ArchnDim(int nDim);

// Adds a node. Numbers are stored as they are: doubles and gaps are the caller's concern.
void COM_ArchNode(int number, int tag, double x, double y, double z);

// Adds `count` nodes, in order, from columns of `count` entries.
void COM_ArchNodes(int count, const int *numbers, const int *tags, const double *x, const double *y, const double *z);

// Adds a cell of k nodes. `columns` is the largest node count of the whole mesh, the same at every call.
// conn[0..k-1] are its nodes, faceTags[0..k-1] its surface tags by face slot.
void COM_ArchCell(int columns, int type, int tag, int k, const int *conn, const int *faceTags);

// Adds `count` cells of one type and tag, in order, from tables [k][count]. Where faceTags is null, or one of
// its columns is, the surface tags are 0.
void COM_ArchCells(int columns, int type, int tag, int k, int count, const int *const *conn,
                   const int *const *faceTags);

// Adds a group at the head of its list. At most 259 characters of the name are kept.
void COM_ArchGRcell(int tag, const char *name);
void COM_ArchGRface(int tag, const char *name);
void COM_ArchGRnode(int tag, const char *name);

// Tag of the newest cell group of that name (AreNamesSame, the given name first), or -1.
int COM_GetGRcellTagByName(const char *name);

#endif
