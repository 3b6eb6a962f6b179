// Two cubes glued along one face: 3-D, two volumes, each a group of elements of its own.
SetFactory("OpenCASCADE");
If (!Exists(size))
  size = 0.5;
EndIf
Box(1) = {0, 0, 0, 1, 1, 1};
Box(2) = {1, 0, 0, 1, 1, 1};
Coherence;
eps = 1e-3;
seam() = Surface In BoundingBox{1 - eps, -eps, -eps, 1 + eps, 1 + eps, 1 + eps};
Physical Volume("LOWER") = {1};
Physical Volume("UPPER") = {2};
Physical Surface("SEAM") = {seam()};
Mesh.MeshSizeMin = size;
Mesh.MeshSizeMax = size;
Mesh.SaveGroupsOfNodes = 1;
Mesh.SaveGroupsOfElements = 1;
