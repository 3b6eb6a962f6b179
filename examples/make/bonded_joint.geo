// Two sheets of 50 by 20 by 3 mm, glued over 20 mm by a layer of 1.5 mm.
SetFactory("OpenCASCADE");
Box(1) = {0, 0, 0, 30, 20, 3};
Box(2) = {30, 0, 0, 20, 20, 3};
Box(3) = {30, 0, 3, 20, 20, 1.5};
Box(4) = {30, 0, 4.5, 20, 20, 3};
Box(5) = {50, 0, 4.5, 30, 20, 3};
Coherence;
eps = 1e-3;
Physical Volume("Lower_Sheet") = {1, 2};
Physical Volume("C_Glue") = {3};
Physical Volume("Upper_Sheet") = {4, 5};
fixed() = Surface In BoundingBox{-eps, -eps, -eps, eps, 20 + eps, 3 + eps};
pull() = Surface In BoundingBox{80 - eps, -eps, 4.5 - eps, 80 + eps, 20 + eps, 7.5 + eps};
below() = Surface In BoundingBox{30 - eps, -eps, 3 - eps, 50 + eps, 20 + eps, 3 + eps};
above() = Surface In BoundingBox{30 - eps, -eps, 4.5 - eps, 50 + eps, 20 + eps, 4.5 + eps};
Physical Surface("Fixed") = {fixed()};
Physical Surface("Pull") = {pull()};
Physical Surface("Below_Glue") = {below()};
Physical Surface("Above_Glue") = {above()};
// Regular meshes: all curves by their direction, found in thin boxes around them.
xs() = {0, 30, 50, 80};
ys() = {0, 20};
zs() = {0, 3, 4.5, 7.5};
nx() = {9, 7, 9};
nz() = {2, 2, 2};
For i In {0:3}
  For k In {0:3}
    c() = Curve In BoundingBox{xs(i) - eps, -eps, zs(k) - eps, xs(i) + eps, 20 + eps, zs(k) + eps};
    If (#c() > 0)
      Transfinite Curve {c()} = 7;
    EndIf
  EndFor
EndFor
For j In {0:1}
  For i In {0:3}
    For k In {0:3}
      If (i < 3)
        c() = Curve In BoundingBox{xs(i) - eps, ys(j) - eps, zs(k) - eps, xs(i + 1) + eps, ys(j) + eps, zs(k) + eps};
        If (#c() > 0)
          Transfinite Curve {c()} = nx(i);
        EndIf
      EndIf
      If (k < 3)
        c() = Curve In BoundingBox{xs(i) - eps, ys(j) - eps, zs(k) - eps, xs(i) + eps, ys(j) + eps, zs(k + 1) + eps};
        If (#c() > 0)
          Transfinite Curve {c()} = nz(k);
        EndIf
      EndIf
    EndFor
  EndFor
EndFor
Transfinite Surface {:};
Transfinite Volume {:};
Mesh.SaveGroupsOfNodes = 1;
