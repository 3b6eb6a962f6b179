"""Triangles, lines and points out of rows of nodes: arrays in, arrays out, no step that goes cell by cell.

Quadratic sides are drawn as what the translator makes of a quadratic face: four flat triangles, cut at the mid-side
nodes, or two lines. So the cells' skin and the faces that lie upon it are the same flat pieces.
"""
import collections

import numpy
from vtkmodules.util.numpy_support import numpy_to_vtk, numpy_to_vtkIdTypeArray, vtk_to_numpy
from vtkmodules.vtkCommonCore import vtkPoints
from vtkmodules.vtkCommonDataModel import VTK_TETRA, vtkCellArray, vtkPolyData, vtkUnstructuredGrid
from vtkmodules.vtkFiltersGeometry import vtkDataSetSurfaceFilter

VERTEX, VERTICES, LINE, TRIANGLE, TRIANGLE6, TETRA, TETRA10 = 1, 2, 3, 5, 22, 10, 24
# The node in the middle between two corners of a quadratic tetrahedron.
MIDDLE = numpy.array(((0, 4, 6, 7), (4, 1, 5, 8), (6, 5, 2, 9), (7, 8, 9, 3)))
SIDES = numpy.array(((0, 2, 1), (0, 1, 3), (1, 2, 3), (2, 0, 3)))  # of a tetrahedron
PIECES = numpy.array(((3, 4, 5), (0, 3, 5), (3, 1, 4), (5, 4, 2)))  # of a quadratic triangle
EDGES = numpy.array(((0, 1), (1, 2), (2, 0)))
EDGES6 = numpy.array(((0, 3), (3, 1), (1, 4), (4, 2), (2, 5), (5, 0)))

MANY_SIDES = 400000
NO_LINES = numpy.empty((0, 2), numpy.int64)

# triangles: (n, 3) and the place of the cell that each belongs to; lines: (n, 2), edges of the cells, each once.
Surface = collections.namedtuple("Surface", "triangles places lines")


def cell_array(rows):
    """Rows of one width as VTK's list of cells, which has a copy."""
    cells, width = vtkCellArray(), rows.shape[1]
    offsets = numpy.arange(0, rows.size + 1, width, dtype=numpy.int64)
    flat = numpy.ascontiguousarray(rows, numpy.int64).ravel()
    cells.SetData(numpy_to_vtkIdTypeArray(offsets, deep=1), numpy_to_vtkIdTypeArray(flat, deep=1))
    return cells


def vtk_points(points):
    held = vtkPoints()
    held.SetData(numpy_to_vtk(numpy.ascontiguousarray(points), deep=1))
    return held


def poly_data(points, triangles=None, lines=None, vertices=None):
    data = vtkPolyData()
    data.SetPoints(vtk_points(points))
    for put, rows in ((data.SetPolys, triangles), (data.SetLines, lines), (data.SetVerts, vertices)):
        if rows is not None:
            put(cell_array(rows))
    return data


def outside(points, tetrahedra):
    """(corners (n, 3), row of the tetrahedron) of each side that no other tetrahedron has, too."""
    if not len(tetrahedra):
        return numpy.empty((0, 3), numpy.int64), numpy.empty(0, numpy.int64)
    grid, surface = vtkUnstructuredGrid(), vtkDataSetSurfaceFilter()
    grid.SetPoints(vtk_points(points))
    grid.SetCells(VTK_TETRA, cell_array(tetrahedra[:, :4]))
    surface.SetInputData(grid)
    surface.PassThroughCellIdsOn()
    surface.PassThroughPointIdsOn()
    surface.Update()
    skin = surface.GetOutput()
    if not skin.GetNumberOfPolys():  # every side is there twice
        return numpy.empty((0, 3), numpy.int64), numpy.empty(0, numpy.int64)
    nodes = vtk_to_numpy(skin.GetPointData().GetArray(surface.GetOriginalPointIdsName()))
    corners = vtk_to_numpy(skin.GetPolys().GetConnectivityArray()).reshape(-1, 3)
    of = vtk_to_numpy(skin.GetCellData().GetArray(surface.GetOriginalCellIdsName()))
    return nodes[corners], of.copy()


def with_middles(corners, tetrahedra):
    """Triangles of three nodes as triangles of six, given the quadratic tetrahedron that each is a side of."""
    at = (tetrahedra[:, None, :4] == corners[:, :, None]).argmax(axis=2)
    middles = [tetrahedra[numpy.arange(len(at)), MIDDLE[at[:, a], at[:, b]]] for a, b in EDGES]
    return numpy.column_stack([corners] + middles)


def once(lines):
    """Each pair of nodes once, whichever way round."""
    if not len(lines):
        return lines
    lines = numpy.sort(lines, axis=1).astype(numpy.int64)
    return numpy.stack(divmod(numpy.unique(lines[:, 0] << 32 | lines[:, 1]), 1 << 32), axis=1)


def joined(parts):
    """One surface of several."""
    triangles = numpy.concatenate([part.triangles for part in parts])
    places = numpy.concatenate([part.places for part in parts])
    return Surface(triangles, places, once(numpy.concatenate([part.lines for part in parts])))


def linear(triangles, places):
    return Surface(triangles, places, triangles[:, EDGES].reshape(-1, 2))


def quadratic(triangles, places):
    return Surface(triangles[:, PIECES].reshape(-1, 3), numpy.repeat(places, 4), triangles[:, EDGES6].reshape(-1, 2))


def sheets(grid):
    """The triangles of a grid."""
    return joined([linear(*grid.rows(TRIANGLE, 3)), quadratic(*grid.rows(TRIANGLE6, 6))])


def skin(grid):
    """The outside of a grid's tetrahedra. Linear and quadratic ones may lie side by side."""
    rows, places = grid.rows(TETRA, 4)
    rows10, places10 = grid.rows(TETRA10, 10)
    corners, of = outside(grid.points, numpy.concatenate((rows, rows10[:, :4])))
    is10 = of >= len(rows)
    of10 = of[is10] - len(rows)
    return joined([linear(corners[~is10], places[of[~is10]]),
                   quadratic(with_middles(corners[is10], rows10[of10]), places10[of10])])


def all_sides(grid):
    """Every side of a grid's tetrahedra, and its triangles. Of very many no edges: they would be all that is seen."""
    rows, places = grid.rows(TETRA, 4)
    rows10, places10 = grid.rows(TETRA10, 10)
    of10 = numpy.repeat(numpy.arange(len(rows10)), len(SIDES))
    corners10 = rows10[:, SIDES].reshape(-1, 3)
    parts = [sheets(grid), linear(rows[:, SIDES].reshape(-1, 3), numpy.repeat(places, len(SIDES))),
             quadratic(with_middles(corners10, rows10[of10]), places10[of10])]
    if sum(len(part.triangles) for part in parts) > MANY_SIDES:
        parts = [part._replace(lines=NO_LINES) for part in parts]
    return joined(parts)
