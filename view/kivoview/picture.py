"""What is drawn of a mesh, and of what an audit found.

Everything is turned into the eye's frame beforehand: x to the right, y up, z towards the eye, the mesh's diagonal 1 and
the middle of what is seen at 0. There is no perspective: a small step towards the eye lifts a layer in front of what
lies at the same place, and moves nothing sideways.
"""
import os, re

import numpy
from vtkmodules.util.numpy_support import numpy_to_vtk, vtk_to_numpy
from vtkmodules.vtkCommonDataModel import vtkImageData
from vtkmodules.vtkIOImage import vtkPNGWriter
from vtkmodules.vtkRenderingCore import (vtkActor, vtkPolyDataMapper, vtkRenderer, vtkRenderWindow,
                                         vtkWindowToImageFilter)
import vtkmodules.vtkRenderingFreeType  # pylint: disable=unused-import  # the legend's letters
import vtkmodules.vtkRenderingOpenGL2  # pylint: disable=unused-import  # what draws

from . import colours, files, legend, shapes

# A picture is drawn so many times as large, and made smaller: lines and rims are smooth. Beyond so many pixels it is
# not: that would take gigabytes.
FINER, FINER_UP_TO = 2, 4000000
LEGEND_SHARE = 0.24  # of the picture's width
MARGIN = 1.06  # room around the mesh
STEP = 0.001  # from layer to layer
LAYER = {"cells": 0, "sheets": 1, "faces": 2, "edges": 4, "lines": 6, "nodes": 8}
EDGE_COLOUR = (60, 66, 76)
# Edges that are shorter than the first, in pixels, would only blacken the picture: they are left out. From there to the
# second they get stronger.
EDGE_FADES, EDGE_WIDTH, FACE_LINE_WIDTH = (3.0, 12.0), 1.5, 6.0
BALL, SMALLEST_BALL, BALL_OF_EDGE = 13.0, 2.0, 0.55  # across, in pixels; at most so much of an edge's length
FAILED_BALL = 13.0  # and what is smaller than that on the picture gets a ball, too
FAILED_STEP = 0.01  # from check to check: what fails two is drawn in the colour of the first
TITLE_LENGTH = 255  # the most that the format has room for
AMBIENT = 0.6  # the rest depends on how a side stands: one that faces the eye has its colour as it is in the legend
STANDARD_VIEW = {2: (0, 0, 1), 3: (1, -2, 1.1)}


class CannotDraw(Exception):
    """There is nothing to draw, or no way to."""


class Frame:
    """Where points of the mesh are on the picture, whose part for the mesh is `width` by `height` pixels."""

    def __init__(self, points, view, dimension, width, height):
        eye = numpy.array(view, float)
        eye /= numpy.abs(eye).max()
        eye /= numpy.linalg.norm(eye)
        is_upright = dimension == 2 or numpy.abs(eye[:2]).max() < 1e-6
        right = numpy.cross((0, 1, 0) if is_upright else (0, 0, 1), eye)
        if not right.any():  # along y
            right = numpy.array((1.0, 0, 0))
        right /= numpy.linalg.norm(right)
        self.turn = numpy.stack((right, numpy.cross(eye, right), eye), axis=1)
        low, high = (pick(axis=0).astype(float) for pick in (points.min, points.max))
        self.middle = low / 2 + high / 2
        self.extent = numpy.linalg.norm(high / 2 - low / 2) * 2 or 1.0
        seen = self.place(points)
        low, high = seen.min(axis=0), seen.max(axis=0)
        self.middle = self.middle + self.turn @ (low + high) / 2 * self.extent
        across, up = (high - low)[:2]
        self.half_height = 0.5 * MARGIN * max(up, across * height / width) or 0.5
        self.pixel = 2 * self.half_height / height

    def place(self, points):
        return ((points - self.middle) / self.extent) @ self.turn


class Scene:
    """The mesh's renderer, the one of what is drawn in front of it, and the legend's lines."""

    def __init__(self, frame, finer):
        self.frame, self.finer, self.mesh, self.front, self.entries = frame, finer, vtkRenderer(), vtkRenderer(), []

    def add(self, data, layer, rgb, renderer=None):
        """Draws polygons, lines or points, in one colour or one for each."""
        if isinstance(rgb, numpy.ndarray):
            data.GetCellData().SetScalars(numpy_to_vtk(rgb, deep=1))
        mapper, drawn = vtkPolyDataMapper(), vtkActor()
        mapper.SetInputData(data)
        drawn.SetMapper(mapper)
        drawn.SetPosition(0, 0, STEP * layer)
        look = drawn.GetProperty()
        if not isinstance(rgb, numpy.ndarray):
            look.SetColor([value / 255 for value in rgb])
        look.SetInterpolationToFlat()
        look.SetAmbient(AMBIENT)
        look.SetDiffuse(1 - AMBIENT)
        (renderer or self.mesh).AddActor(drawn)
        return look

    def add_triangles(self, points, surface, layer, rgb, renderer=None):
        if len(surface.triangles):
            self.add(shapes.poly_data(self.frame.place(points), triangles=surface.triangles), layer, rgb, renderer)

    def add_lines(self, points, lines, layer, rgb, width, strength=1.0, renderer=None):
        if len(lines):
            look = self.add(shapes.poly_data(self.frame.place(points), lines=lines), layer, rgb, renderer)
            look.LightingOff()
            look.SetLineWidth(self.finer * width)
            look.SetOpacity(strength)

    def add_balls(self, points, layer, rgb, across, renderer=None):
        if len(points):
            each = numpy.arange(len(points))[:, None]
            look = self.add(shapes.poly_data(self.frame.place(points), vertices=each), layer, rgb, renderer)
            look.RenderPointsAsSpheresOn()
            look.SetPointSize(self.finer * across)


def painted(tags, groups):
    """The colour of each tag, as rows of bytes, and the legend's entries of those groups that have any."""
    there, at = numpy.unique(tags, return_inverse=True)
    table = numpy.full((len(there), 3), colours.NO_GROUP, numpy.uint8)
    place = {tag: k for k, tag in enumerate(there.tolist())}
    entries, first = [], {}
    for k, group in enumerate(groups):
        if group.tag in place:
            rgb = first.setdefault(group.tag, colours.colour(group.kind, k))  # one tag has one colour
            table[place[group.tag]] = rgb
            entries.append(legend.Entry(group.kind, group.kind, group.name, rgb))
    return table[at], entries


def of_kind(groups, kind):
    return [group for group in groups if group.kind == kind]


def edge_pixels(frame, points, surface):
    """The length of the cells' edges on the picture, in the middle of all."""
    if not len(surface.lines):
        return EDGE_FADES[1]
    ends = frame.place(points)[surface.lines][:, :, :2]
    return float(numpy.median(numpy.linalg.norm(ends[:, 0] - ends[:, 1], axis=1))) / frame.pixel


def add_cells(scene, grid, outer, groups, is_pale):
    """The mesh: its outside, sheets of triangles upon it, edges."""
    skin, sheets = outer
    rgb, entries = painted(grid.tags, of_kind(groups, "cells"))
    if is_pale:
        rgb = numpy.array([colours.paled((value,))[0] for value in range(256)], numpy.uint8)[rgb]
        entries = [entry._replace(rgb=colours.paled(entry.rgb)) for entry in entries]
    scene.entries += entries
    scene.add_triangles(grid.points, skin, LAYER["cells"], rgb[skin.places])
    scene.add_triangles(grid.points, sheets, LAYER["sheets"], rgb[sheets.places])
    every = shapes.joined(outer)
    pixels = edge_pixels(scene.frame, grid.points, every)
    shortest, longest = EDGE_FADES
    strength = min(1.0, (pixels - shortest) / (longest - shortest))
    if strength > 0:
        scene.add_lines(grid.points, every.lines, LAYER["edges"], EDGE_COLOUR, EDGE_WIDTH, 0.3 + 0.6 * strength)
    return pixels


def add_faces(scene, grid, groups, dimension):
    rgb, entries = painted(grid.tags, of_kind(groups, "faces"))
    scene.entries += entries
    triangles = shapes.sheets(grid)
    scene.add_triangles(grid.points, triangles, LAYER["faces"], rgb[triangles.places])
    if dimension == 2:
        lines, places = grid.rows(shapes.LINE, 2)
        scene.add_lines(grid.points, lines, LAYER["lines"], rgb[places], FACE_LINE_WIDTH)


def add_nodes(scene, grid, groups, pixels):
    """The node sets, from the nodes' tags: files cannot be named after every set."""
    marked = numpy.flatnonzero((grid.node_tags != 0) & grid.finite)
    rgb, entries = painted(grid.node_tags[marked], of_kind(groups, "nodes"))
    scene.entries += entries
    across = max(SMALLEST_BALL, min(BALL, BALL_OF_EDGE * pixels))
    scene.add_balls(grid.points[marked], LAYER["nodes"], rgb, across)


def check_names(title):
    """The names of checks by number, from the second line of an audit's file; one that its end cuts off is none."""
    pairs = re.findall(r"(\d+) ([a-z-]+)(?=%s)" % (" |$" if len(title) < TITLE_LENGTH else " "), title)
    return {int(number): name for number, name in pairs}


def too_small(frame, points, rows, places):
    """Middle and place of those that would hardly be seen."""
    corners = frame.place(points)[:, :2].astype(numpy.float32)[rows]
    size = numpy.linalg.norm(corners.max(axis=1) - corners.min(axis=1), axis=1) / frame.pixel
    large = places[size >= FAILED_BALL]
    small, first = numpy.unique(places, return_index=True)
    keep = ~numpy.isin(small, large)
    return points[rows[first[keep]]].mean(axis=1), small[keep]


def add_failed(scene, grid):
    """What failed, in front of everything: a fault inside must be seen, too."""
    names = check_names(grid.title)
    checks, counts = numpy.unique(grid.tags, return_counts=True)
    table = [colours.colour("fails", at) for at in range(len(checks))]
    for check, count, rgb in zip(checks.tolist(), counts.tolist(), table):
        scene.entries.append(legend.Entry("fails", "%d" % count, names.get(check, "check %d" % check), rgb))
    if not len(checks):
        scene.entries.append(legend.Entry("fails", "no", "check fails", None))
    sides = shapes.all_sides(grid)
    lines, of_lines = grid.rows(shapes.LINE, 2)
    single = [grid.rows(kind, 1) for kind in (shapes.VERTEX, shapes.VERTICES)]
    balls = [(grid.points[rows[:, 0]], places) for rows, places in single]
    balls += [too_small(scene.frame, grid.points, *of) for of in ((sides.triangles, sides.places), (lines, of_lines))]
    for at in reversed(range(len(checks))):
        is_its, rgb, layer = grid.tags == checks[at], table[at], FAILED_STEP / STEP * (len(checks) - at)
        chosen = shapes.Surface(sides.triangles[is_its[sides.places]], None, None)
        scene.add_triangles(grid.points, chosen, layer, rgb, scene.front)
        scene.add_lines(grid.points, lines[is_its[of_lines]], layer, rgb, FACE_LINE_WIDTH, 1.0, scene.front)
        for points, places in balls:
            scene.add_balls(points[is_its[places]], layer + LAYER["nodes"], rgb, FAILED_BALL, scene.front)
    scene.add_lines(grid.points, sides.lines, FAILED_STEP / STEP * (len(checks) + 1), EDGE_COLOUR, 1, 0.7, scene.front)


def window_of(scene, width, height):
    """A window, never shown, with the mesh on the left and the legend on the right."""
    window, side = vtkRenderWindow(), vtkRenderer()
    window.SetOffScreenRendering(1)
    window.SetMultiSamples(0)
    window.SetSize(scene.finer * width, scene.finer * height)
    window.SetNumberOfLayers(2)
    scene.front.SetLayer(1)
    scene.front.SetActiveCamera(scene.mesh.GetActiveCamera())
    camera = scene.mesh.GetActiveCamera()
    camera.ParallelProjectionOn()
    camera.SetFocalPoint(0, 0, 0)
    camera.SetPosition(0, 0, 10)
    camera.SetViewUp(0, 1, 0)
    camera.SetParallelScale(scene.frame.half_height)
    camera.SetClippingRange(8.9, 11.1)  # nothing is farther than 1 from the middle
    for renderer in (scene.mesh, side, scene.front):
        renderer.SetBackground(1, 1, 1)
        window.AddRenderer(renderer)
    scene.mesh.SetViewport(0, 0, 1 - LEGEND_SHARE, 1)
    scene.front.SetViewport(0, 0, 1 - LEGEND_SHARE, 1)
    side.SetViewport(1 - LEGEND_SHARE, 0, 1, 1)
    legend.add(side, scene.entries, int(width * LEGEND_SHARE), height, scene.finer)
    return window


def png(window, finer):
    """The window's picture, `finer` times smaller, as the bytes of a PNG file."""
    window.Render()
    large, writer, image = vtkWindowToImageFilter(), vtkPNGWriter(), vtkImageData()
    large.SetInput(window)
    large.ReadFrontBufferOff()
    large.Update()
    width, height = (side // finer for side in large.GetOutput().GetDimensions()[:2])
    dots = vtk_to_numpy(large.GetOutput().GetPointData().GetScalars()).reshape(height, finer, width, finer, 3)
    dots = (dots.sum(axis=(1, 3), dtype=numpy.uint16) + finer ** 2 // 2) // finer ** 2
    image.SetDimensions(width, height, 1)
    image.GetPointData().SetScalars(numpy_to_vtk(dots.astype(numpy.uint8).reshape(-1, 3), deep=1))
    writer.SetInputData(image)
    writer.WriteToMemoryOn()
    writer.Write()
    window.Finalize()
    return vtk_to_numpy(writer.GetResult()).tobytes()


def part_of_mesh(path, mesh, kind):
    """The grid of the mesh's "cells" or "faces". A run without --vtk leaves the VTK files of an earlier mesh where they
    are: they would be drawn with the names of other groups."""
    grid = files.Grid(path, "CellTag", "NodeTag")
    for word, count in (("nodes", len(grid.points)), (kind, len(grid.types))):
        wanted = getattr(mesh, word)
        if count != wanted:
            raise files.Unreadable("%s is of another mesh than mesh.input (%d %s, not %d): translate again with --vtk"
                                   % (path, count, word, wanted))
    return grid


def faces_of(path, mesh):
    """The faces' grid or None, and what is left out, in words. A mesh without faces replaces no file of faces."""
    if os.path.exists(path) and mesh.faces:
        return part_of_mesh(path, mesh, "faces"), []
    if os.path.exists(path):
        return None, ["%s is not drawn: mesh.input has no faces" % path]
    return None, ["faces are not drawn: there is no %s" % path] if mesh.faces else []


def draw(folder, audit, view, size, with_sets):
    """The picture as the bytes of a PNG file, and what is left out, in words."""
    mesh = files.read_mesh(os.path.join(folder, "mesh.input"))
    if mesh.dimension is None:
        raise CannotDraw("the mesh is empty: there is nothing to draw")
    grid = part_of_mesh(os.path.join(folder, "_Cells.vtk"), mesh, "cells")
    faces, words = faces_of(os.path.join(folder, "_Faces.vtk"), mesh) if audit is None else (None, [])
    outer = shapes.skin(grid), shapes.sheets(grid)
    used = numpy.unique(numpy.concatenate([part.triangles.ravel() for part in outer]))
    if not len(used):
        raise CannotDraw("no cell has a side that can be drawn")
    width, height = size
    view = view or STANDARD_VIEW[mesh.dimension]
    frame = Frame(grid.points[used], view, mesh.dimension, width * (1 - LEGEND_SHARE), height)
    scene = Scene(frame, FINER if width * height <= FINER_UP_TO else 1)
    if audit is not None:
        add_failed(scene, files.Grid(audit, "Check", None))
    pixels = add_cells(scene, grid, outer, mesh.groups, audit is not None)
    left_out = grid.left_out()
    if faces:
        add_faces(scene, faces, mesh.groups, mesh.dimension)
        left_out += faces.left_out()
    if with_sets and audit is None:
        add_nodes(scene, grid, mesh.groups, pixels)
    if left_out:
        words.append("%d cells or faces are not drawn: of no known kind, or with nodes that are not there" % left_out)
    return png(window_of(scene, width, height), scene.finer), words
