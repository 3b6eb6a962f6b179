// The translation: from the mesh as read to the mesh that the solver needs.
#ifndef KIVOM_TRANSLATE_MESHALL_H
#define KIVOM_TRANSLATE_MESHALL_H

// Orders the nodes, turns deck numbers into positions, corrects orientation, measures lengths, splits the nodes
// of "C_" groups, builds faces, drops unused nodes and prints the summary. Runs once per mesh; without a mesh it
// does and prints nothing. Problems are reported on standard output and stop only the step that met them.
void MeshAll();

#endif
