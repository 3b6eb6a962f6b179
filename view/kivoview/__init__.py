"""Pictures of meshes: command <- picture <- shapes, files, legend <- colours.

command    arguments, what is missing on this machine, exit status; runs itself again where a picture can be drawn
picture    what is drawn of a mesh and of what an audit found, and in which layer
legend     the groups by name, as many as there is room for
shapes     triangles, lines and points out of rows of nodes, as arrays
files      the VTK files and the groups of "mesh.input"
colours    one for each group
"""
