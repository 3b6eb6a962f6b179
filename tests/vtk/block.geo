// A block with a bore from top to bottom: 3-D.
SetFactory("OpenCASCADE");
If (!Exists(size))
  size = 0.6;
EndIf
Box(1) = {0, 0, 0, 2, 2, 1};
Cylinder(2) = {1, 1, 0, 0, 0, 1, 0.5};
BooleanDifference(3) = { Volume{1}; Delete; }{ Volume{2}; Delete; };
eps = 1e-3;
base() = Surface In BoundingBox{-eps, -eps, -eps, 2 + eps, 2 + eps, eps};
top() = Surface In BoundingBox{-eps, -eps, 1 - eps, 2 + eps, 2 + eps, 1 + eps};
bore() = Surface In BoundingBox{0.5 - eps, 0.5 - eps, -eps, 1.5 + eps, 1.5 + eps, 1 + eps};
Physical Volume("BLOCK") = {3};
Physical Surface("BASE") = {base()};
Physical Surface("TOP") = {top()};
Physical Surface("BORE") = {bore()};
Mesh.MeshSizeMin = size;
Mesh.MeshSizeMax = size;
Mesh.SaveGroupsOfNodes = 1;
Mesh.SaveGroupsOfElements = 1;
