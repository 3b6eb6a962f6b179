#!/usr/bin/python3
"""Holds the measures of shape against the VTK library's, on 100,000 random triangles and as many tetrahedra.

    run_quality.py PROGRAM      PROGRAM is qualityvalues of the build

Values must agree to 1e-9, of numbers above 1 by their size. The library has no largest angle of tetrahedra, and at two
edges it takes the supplement of the angle between two faces: these are held against angles worked out here. (It takes
angles from their cosines, which tell less of an angle the nearer it is to 0: the cells are not stretched much.)
"""
import subprocess
import sys

try:
    import numpy
    import vtk
    from vtk.util.numpy_support import numpy_to_vtk, vtk_to_numpy
except ImportError as missing:
    print("skipped:", missing)
    sys.exit(77)

CELLS = 100000
MEASURES = ("radius_ratio", "edge_ratio", "min_angle", "max_angle", "scaled_jacobian", "aspect_gamma")
TRIANGLE = {"radius_ratio": "RadiusRatio", "edge_ratio": "EdgeRatio", "min_angle": "MinAngle", "max_angle": "MaxAngle",
            "scaled_jacobian": "ScaledJacobian"}
TETRAHEDRON = {"radius_ratio": "RadiusRatio", "edge_ratio": "EdgeRatio", "scaled_jacobian": "ScaledJacobian",
               "aspect_gamma": "AspectGamma"}


def random_cells(corners):
    points = numpy.random.default_rng(corners).uniform(-1, 1, (CELLS, corners, 3))
    if corners == 3:
        points[:, :, 2] = 0
    points[::2] *= (1, 0.3, 0.1)  # half of them stretched
    return points


def ours(program, points):
    run = subprocess.run([program, str(points.shape[1])], input=points.tobytes(), capture_output=True, check=True)
    return dict(zip(MEASURES, numpy.frombuffer(run.stdout).reshape(-1, len(MEASURES)).T))


def librarys(points, names):
    corners = points.shape[1]
    places = vtk.vtkPoints()
    places.SetDataTypeToDouble()
    places.SetData(numpy_to_vtk(points.reshape(-1, 3), deep=1))
    grid = vtk.vtkUnstructuredGrid()
    grid.SetPoints(places)
    grid.Allocate(CELLS)
    for cell in range(CELLS):
        grid.InsertNextCell(vtk.VTK_TRIANGLE if corners == 3 else vtk.VTK_TETRA, corners,
                            range(corners * cell, corners * cell + corners))
    found = {}
    for name, word in names.items():
        quality = vtk.vtkMeshQuality()
        quality.SetInputData(grid)
        getattr(quality, ("SetTriangle" if corners == 3 else "SetTet") + "QualityMeasureTo" + word)()
        quality.Update()
        found[name] = vtk_to_numpy(quality.GetOutput().GetCellData().GetArray("Quality")).copy()
    return found


def angles_between_faces(points):
    """At each of the six edges: what is left of the two other corners when the edge's direction is taken out of them."""
    angles = []
    for a, b, c, d in ((0, 1, 2, 3), (1, 2, 0, 3), (2, 0, 1, 3), (0, 3, 1, 2), (1, 3, 0, 2), (2, 3, 0, 1)):
        edge = points[:, b] - points[:, a]
        edge /= numpy.linalg.norm(edge, axis=1)[:, None]
        sides = [points[:, k] - points[:, a] for k in (c, d)]
        u, v = (side - (side * edge).sum(1)[:, None] * edge for side in sides)
        cross = numpy.linalg.norm(numpy.cross(u, v), axis=1)
        angles.append(numpy.degrees(numpy.arctan2(cross, (u * v).sum(1))))
    return {"min_angle": numpy.min(angles, axis=0), "max_angle": numpy.max(angles, axis=0)}


def main():
    faults = 0
    for corners, names in ((3, TRIANGLE), (4, TETRAHEDRON)):
        points = random_cells(corners)
        found = ours(sys.argv[1], points)
        wanted = librarys(points, names)
        if corners == 4:
            wanted.update(angles_between_faces(points))
        for name, values in wanted.items():
            off = numpy.abs(found[name] - values) / numpy.maximum(1, numpy.abs(values))
            worst = int(numpy.argmax(off))
            print(f"{corners} corners, {name}: off by at most {off[worst]:.2g}")
            if not off[worst] <= 1e-9:
                print(f"  {found[name][worst]!r} instead of {values[worst]!r} for {points[worst].tolist()}")
                faults += 1
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
