// A plate with a hole: 2-D, straight outside, round inside.
SetFactory("OpenCASCADE");
If (!Exists(size))
  size = 0.5;
EndIf
Rectangle(1) = {0, 0, 0, 4, 2};
Disk(2) = {2, 1, 0, 0.5};
BooleanDifference(3) = { Surface{1}; Delete; }{ Surface{2}; Delete; };
eps = 1e-3;
left() = Curve In BoundingBox{-eps, -eps, -eps, eps, 2 + eps, eps};
right() = Curve In BoundingBox{4 - eps, -eps, -eps, 4 + eps, 2 + eps, eps};
hole() = Curve In BoundingBox{1.5 - eps, 0.5 - eps, -eps, 2.5 + eps, 1.5 + eps, eps};
Physical Surface("PLATE") = {3};
Physical Curve("LEFT") = {left()};
Physical Curve("RIGHT") = {right()};
Physical Curve("HOLE") = {hole()};
Mesh.MeshSizeMin = size;
Mesh.MeshSizeMax = size;
Mesh.SaveGroupsOfNodes = 1;
Mesh.SaveGroupsOfElements = 1;
