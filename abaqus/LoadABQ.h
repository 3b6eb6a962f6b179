// The Abaqus reader: a whole input deck into the mesh store.
#ifndef KIVOM_ABAQUS_LOADABQ_H
#define KIVOM_ABAQUS_LOADABQ_H

// Reads the deck of that path, reports on standard output and fills the store (store/COM.h): nodes and cells
// in the order of their numbers, connectivity still in deck numbers, one group per set, surface and element
// section. A deck that cannot be opened, or not be read to its end, is reported and ends the process with
// exit status -1.
void LoadABQ(const char *filename);

#endif
