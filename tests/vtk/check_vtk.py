"""Holds the VTK files of a run against its "mesh.input"; run_vtk_checks.py makes the runs.

check_run(DIR) reads "mesh.input" and the "_*.vtk" files of one run with "--vtk". Each VTK file is read three times: by
a strict reader of the text below, by the VTK library and by meshio. The strict reader exists because the library takes
short arrays and node numbers out of range without an error. Besides, where the flag asks for it:

    good      the area or volume of every cell is positive
    oriented  the same, but cells whose area or volume is nothing or no number are passed over
    straight  every mid-side node lies in the middle of its edge
    closed    the faces close, and what they enclose is the volume (in two dimensions the area) of the cells

Whoever imports it leaves with exit status 77 where VTK or meshio is not installed.
"""
import math, os, sys
from collections import Counter, namedtuple

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
import meshinput

try:
    import meshio
    import vtk
except ImportError as absent:
    print("skipped: " + str(absent))
    sys.exit(77)

HEADER = ["# vtk DataFile Version 3.0", "vtk output", "ASCII", "DATASET UNSTRUCTURED_GRID"]
VERTEX, LINE, TRIANGLE, TETRA, TRIANGLE6, TETRA10 = 1, 3, 5, 10, 22, 24
# Type code in "mesh.input" -> VTK type, and for each VTK node its place in the row of "Cell_To_Node".
CELL_FORMS = {3: (TRIANGLE, (0, 1, 2)), 4: (TRIANGLE6, (0, 2, 4, 1, 3, 5)),
              5: (TETRA, (0, 1, 2, 3)), 6: (TETRA10, tuple(range(10)))}
FACE_FORMS = {2: (LINE, (0, 1)), 3: (TRIANGLE, (0, 1, 2))}  # by number of nodes
NODES_OF = {VERTEX: 1, LINE: 2, TRIANGLE: 3, TETRA: 4, TRIANGLE6: 6, TETRA10: 10}
CORNERS = {TRIANGLE: 3, TRIANGLE6: 3, TETRA: 4, TETRA10: 4}
# VTK's own order of mid-side nodes: (mid-side node, the two corners of its edge).
MIDS = {TRIANGLE6: ((3, 0, 1), (4, 1, 2), (5, 2, 0)),
        TETRA10: ((4, 0, 1), (5, 1, 2), (6, 2, 0), (7, 0, 3), (8, 1, 3), (9, 2, 3))}
MESHIO_NAMES = {VERTEX: "vertex", LINE: "line", TRIANGLE: "triangle", TETRA: "tetra",
                TRIANGLE6: "triangle6", TETRA10: "tetra10"}
# A quadratic tetrahedron cut along the same linear pieces as its faces: four corners and an octahedron around 4-9.
PIECES10 = ((0, 4, 6, 7), (4, 1, 5, 8), (6, 5, 2, 9), (7, 8, 9, 3),
            (4, 9, 5, 6), (4, 9, 6, 7), (4, 9, 7, 8), (4, 9, 8, 5))
FIELD = 15  # characters of a coordinate
LONGEST_NAME = 255  # characters in the name of a file on Linux
NO_SIZE = 1e-10  # below this measure the translator takes a cell for degenerate

Grid = namedtuple("Grid", "points cells types cell_data point_data")


class TextError(Exception):
    pass


class Reader:
    """Takes a legacy VTK text apart, line by line; raises TextError at the first thing that is not as it must be."""

    def __init__(self, path):
        with open(path, encoding="latin-1") as stream:
            self.lines = stream.read().split("\n")
        self.at = 0

    def fail(self, reason):
        raise TextError("line %d: %s" % (self.at, reason))

    def line(self):
        if self.at >= len(self.lines):
            self.fail("the file ends too early")
        self.at += 1
        return self.lines[self.at - 1]

    def section(self, word, form):
        """The next line that is not empty must be `word` and then fields of the given kinds."""
        text = self.line()
        while not text.strip():
            text = self.line()
        fields = text.split()
        if not fields or fields[0] != word or len(fields) != 1 + len(form):
            self.fail('"%s" stands where a %s line should' % (text, word))
        return [self.convert(kind, field) for kind, field in zip(form, fields[1:])]

    def convert(self, kind, field):
        try:
            return kind(field)
        except ValueError:
            self.fail('"%s" is no %s' % (field, kind.__name__))

    def numbers(self, kind, count, what):
        """The numbers up to the next line that begins with a letter: exactly `count` of them."""
        taken = []
        while self.at < len(self.lines) and not self.lines[self.at][:1].isalpha():
            taken += [self.convert(kind, field) for field in self.line().split()]
        if len(taken) != count:
            self.fail("%s: %d numbers where %d should be" % (what, len(taken), count))
        return taken

    def coordinates(self, count):
        """Three to a line, in fields of fifteen characters: those of three-digit exponents may touch."""
        taken = []
        for _ in range(count):
            line = self.line()
            if len(line) != 3 * FIELD:
                self.fail('"%s" is not three coordinates in fields of %d characters' % (line, FIELD))
            taken.append(tuple(self.convert(float, line[at:at + FIELD]) for at in range(0, len(line), FIELD)))
        if self.line():
            self.fail("POINTS: more than %d points" % count)
        return taken

    def expect(self, holds, reason):
        if not holds:
            self.fail(reason)

    def counted(self, word, count, what):
        """A line "WORD count" whose count must be this one."""
        self.expect(self.section(word, (int,)) == [count], "%s: not for %d %s" % (word, count, what))

    def scalars(self, name, count):
        got = self.section("SCALARS", (str, str))
        self.expect(got == [name, "int"], "SCALARS %s stands where %s int should" % (" ".join(got), name))
        self.expect(self.section("LOOKUP_TABLE", (str,)) == ["default"], "the look-up table is not default")
        return self.numbers(int, count, name)

    def cells(self):
        count, total = self.section("CELLS", (int, int))
        flat = self.numbers(int, total, "CELLS")
        cells, at = [], 0
        while at < len(flat):
            self.expect(0 <= flat[at] < len(flat) - at, "CELLS: a cell of %d nodes does not fit" % flat[at])
            cells.append(tuple(flat[at + 1:at + 1 + flat[at]]))
            at += 1 + flat[at]
        self.expect(len(cells) == count, "CELLS: %d cells where %d should be" % (len(cells), count))
        return cells


def read_text(path, with_data):
    """The grid of a file as its text says it. Lengths agree with the announced counts when this returns."""
    text = Reader(path)
    for expected in HEADER:
        text.expect(text.line() == expected, '"%s" is missing' % expected)
    count, kind = text.section("POINTS", (int, str))
    text.expect(kind == "float", "POINTS are %s, not float" % kind)
    points, cells = text.coordinates(count), text.cells()
    text.counted("CELL_TYPES", len(cells), "cells")
    types = text.numbers(int, len(cells), "CELL_TYPES")
    cell_data, point_data = {}, {}
    if with_data:
        text.counted("CELL_DATA", len(cells), "cells")
        cell_data["CellTag"] = text.scalars("CellTag", len(cells))
        text.counted("POINT_DATA", count, "points")
        point_data = {name: text.scalars(name, count) for name in ("NodeTag", "OnB")}
    text.expect(not any(line.strip() for line in text.lines[text.at:]), "something follows the last section")
    return Grid(points, cells, types, cell_data, point_data)


def differences(what, got, expected):
    """One line about the first entry in which two lists differ, if they do."""
    if len(got) != len(expected):
        return ["%s: %d entries where %d should be" % (what, len(got), len(expected))]
    for i, (a, b) in enumerate(zip(got, expected)):
        if a != b:
            return ["%s: entry %d is %s where %s should be" % (what, i, a, b)]
    return []


def out_of_range(grid, allowed):
    """Every node number must be that of a point; -1 only where `allowed` has it at the same place."""
    for i, cell in enumerate(grid.cells):
        for k, node in enumerate(cell):
            missing = node == -1 and i < len(allowed) and k < len(allowed[i]) and allowed[i][k] == -1
            if not 0 <= node < len(grid.points) and not missing:
                return ["CELLS: cell %d names point %d of %d" % (i, node, len(grid.points))]
    return []


def near(a, b):
    """Equal to the eight digits of the VTK files (both may be infinite, or not a number)."""
    return a == b or abs(a - b) <= 1e-7 * abs(b) or (a != a and b != b)


def points_differ(points, positions):
    found = differences("POINTS", [0] * len(points), [0] * len(positions))
    for i, (point, position) in enumerate(zip(points, positions)):
        # In two dimensions "mesh.input" has no z.
        if not found and not all(near(a, b) for a, b in zip(point, position)):
            found = ["POINTS: point %d is %s where %s should be" % (i, point, position)]
    return found


def compare_entities(grid, mesh, rows, forms, tags):
    """Holds a "_Cells.vtk" or "_Faces.vtk" against the rows, (VTK type, order) forms and tags of "mesh.input"."""
    expected = [tuple(row[k] for k in order) for row, (_, order) in zip(rows, forms)]
    found = points_differ(grid.points, mesh.current)
    found += out_of_range(grid, expected)
    found += differences("CELL_TYPES", grid.types, [form[0] for form in forms])
    found += differences("CELLS", grid.cells, expected)
    found += differences("CellTag", grid.cell_data["CellTag"], list(tags))
    found += differences("NodeTag", grid.point_data["NodeTag"], list(mesh.node_tags))
    found += differences("OnB", grid.point_data["OnB"], list(mesh.on_boundary))
    return found


def compare_node_set(grid, mesh, tag):
    """Holds a node-set file against the nodes that carry the set's tag: one vertex for each, counted from 0."""
    chosen = [p for p, t in zip(mesh.current, mesh.node_tags) if t == tag]
    found = points_differ(grid.points, chosen)
    found += out_of_range(grid, [])
    found += differences("CELL_TYPES", grid.types, [VERTEX] * len(chosen))
    found += differences("CELLS", grid.cells, [(i,) for i in range(len(chosen))])
    return found


def ask_library(path, text):
    """What the VTK library makes of a file, against its text."""
    complaints = []
    reader = vtk.vtkUnstructuredGridReader()
    reader.AddObserver("ErrorEvent", lambda *_: complaints.append("VTK: the library reports an error"))
    reader.AddObserver("WarningEvent", lambda *_: complaints.append("VTK: the library warns"))
    reader.SetFileName(path)
    reader.ReadAllScalarsOn()
    if not reader.IsFileUnstructuredGrid():
        return ["VTK: this is no unstructured grid"]
    reader.Update()
    grid = reader.GetOutput()
    found = complaints[:1]
    for what, got, held in (("points", grid.GetNumberOfPoints(), text.points),
                            ("cells", grid.GetNumberOfCells(), text.cells)):
        if got != len(held):
            found.append("VTK: %d %s where the text has %d" % (got, what, len(held)))
    if found:
        return found
    for i, point in enumerate(text.points):
        if not all(near(a, b) or abs(b) > 1e38 or abs(b) < 1e-37 for a, b in zip(grid.GetPoint(i), point)):
            return ["VTK: point %d is %s where the text has %s" % (i, grid.GetPoint(i), point)]
    ids = vtk.vtkIdList()
    for i, cell in enumerate(text.cells):
        grid.GetCellPoints(i, ids)
        read = tuple(ids.GetId(k) for k in range(ids.GetNumberOfIds()))
        if read != cell or grid.GetCellType(i) != text.types[i]:
            return ["VTK: cell %d is %s of type %d where the text has %s" % (i, read, grid.GetCellType(i), cell)]
    for data, arrays in ((grid.GetCellData(), text.cell_data), (grid.GetPointData(), text.point_data)):
        for name, values in arrays.items():
            array = data.GetArray(name)
            # The library makes no array of no values.
            read = [] if array is None else [int(array.GetTuple1(i)) for i in range(array.GetNumberOfTuples())]
            found += differences("VTK: " + name, read, values)
        if data.GetNumberOfArrays() > len(arrays):
            found.append("VTK: there are more arrays than the text has")
    return found or library_sizes(grid, text)


def library_sizes(grid, text):
    """The library's own area or volume of a cell's corners has the sign and size that the formulas here give."""
    found = []
    for i, (cell, kind) in enumerate(zip(text.cells, text.types)):
        if kind not in CORNERS or min(cell) < 0 or max(cell) >= len(text.points):
            continue
        corners = [grid.GetPoint(node) for node in cell[:CORNERS[kind]]]
        if CORNERS[kind] == 4:
            library, power = vtk.vtkTetra.ComputeVolume(*corners), 3
        else:
            flat = [point[:2] + (0.0,) for point in corners]
            normal = [0.0, 0.0, 0.0]
            vtk.vtkTriangle.ComputeNormal(*flat, normal)
            library, power = vtk.vtkTriangle.TriangleArea(*flat) * normal[2], 2
        extent = max(abs(c) for point in corners for c in point)
        if not abs(library - signed_size(corners, kind)) <= 1e-6 * extent ** power:
            found.append("VTK: cell %d measures %g, by the formula %g" % (i, library, signed_size(corners, kind)))
    return found[:1]


def ask_meshio(path, text):
    """What meshio makes of a file, against its text. It takes all the types the translator writes for a deck: vertex,
    line, triangle, tetra and both quadratic ones (1, 3, 5, 10, 22, 24)."""
    try:
        mesh = meshio.read(path, file_format="vtk")
    except (Exception, SystemExit) as trouble:
        return ["meshio: %s: %s" % (type(trouble).__name__, trouble)]
    found = differences("meshio: points", [len(mesh.points)], [len(text.points)])
    read = [(block.type, tuple(int(n) for n in row)) for block in mesh.cells for row in block.data]
    found += differences("meshio: cells", read, [(MESHIO_NAMES.get(t, t), c) for c, t in zip(text.cells, text.types)])
    tags = [int(v) for block in mesh.cell_data.get("CellTag", []) for v in block]
    found += differences("meshio: CellTag", tags, text.cell_data.get("CellTag", []))
    for name, values in text.point_data.items():
        found += differences("meshio: " + name, [int(v) for v in mesh.point_data.get(name, [])], values)
    return found


def minus(a, b):
    return [x - y for x, y in zip(a, b)]


def cross(a, b):
    return [a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]]


def dot(a, b):
    return sum(x * y for x, y in zip(a, b))


def signed_size(corners, kind):
    """Area in the x-y plane or volume of the corners alone; below zero where the cell runs the wrong way round."""
    if CORNERS[kind] == 3:
        a, b = minus(corners[1], corners[0]), minus(corners[2], corners[0])
        return 0.5 * (a[0] * b[1] - a[1] * b[0])
    edges = [minus(corners[k], corners[0]) for k in (1, 2, 3)]
    return dot(cross(edges[0], edges[1]), edges[2]) / 6


def whole_cells(grid, positions):
    """The cells that miss no node: (number, VTK type, positions of its nodes)."""
    for i, (cell, kind) in enumerate(zip(grid.cells, grid.types)):
        if all(0 <= node < len(positions) for node in cell):
            yield i, kind, [positions[node] for node in cell]


def check_sizes(grid, positions, pass_over_degenerate):
    found = []
    for i, kind, where in whole_cells(grid, positions):
        size = signed_size(where[:CORNERS[kind]], kind)
        factor = 2 if CORNERS[kind] == 3 else 6
        if pass_over_degenerate and (abs(size * factor) < NO_SIZE or size != size):
            continue
        if not size > 0:
            found.append("cell %d measures %g" % (i, size))
    return found


def check_straight(grid, positions):
    found = []
    for i, kind, where in whole_cells(grid, positions):
        for mid, a, b in MIDS.get(kind, ()):
            middle = [0.5 * (x + y) for x, y in zip(where[a], where[b])]
            # Decks give a handful of digits, so the middle is met to about a millionth.
            if math.dist(where[mid], middle) > 1e-5 * math.dist(where[a], where[b]):
                found.append("cell %d: node %d is not in the middle of its edge" % (i, mid))
    return found


def check_closed(cells, faces, positions, dimension):
    """Divergence theorem over the faces: 2-D edges run as their cell does, 3-D normals point into the cell."""
    flow = Counter()
    enclosed, scale = 0.0, 0.0
    for face, kind in zip(faces.cells, faces.types):
        if min(face) < 0:
            return ["a face misses a node"]
        where = [positions[node] for node in face]
        if dimension == 2:
            (a, b), (p, q) = face, where
            flow[a] += 1
            flow[b] -= 1
            part = 0.5 * (p[0] * q[1] - p[1] * q[0])
        else:
            for a, b in zip(face, face[1:] + face[:1]):
                flow[min(a, b), max(a, b)] += 1 if a < b else -1
            part = -dot(where[0], cross(where[1], where[2])) / 6
        enclosed += part
        scale += abs(part)
    if any(flow.values()):
        return ["the faces do not close"]
    volume = 0.0
    for _, kind, where in whole_cells(cells, positions):
        if kind == TETRA10:
            volume += sum(signed_size([where[k] for k in piece], TETRA) for piece in PIECES10)
        elif kind == TRIANGLE6:
            ring = [where[k] for k in (0, 3, 1, 4, 2, 5)]
            volume += 0.5 * sum(p[0] * q[1] - p[1] * q[0] for p, q in zip(ring, ring[1:] + ring[:1]))
        elif CORNERS[kind] == dimension + 1:
            volume += signed_size(where, kind)
    if not volume > 0 or abs(enclosed - volume) > 1e-9 * (volume + scale):
        return ["the faces enclose %.9g, the cells measure %.9g" % (enclosed, volume)]
    return []


def node_set_files(mesh):
    """File name of every node set -> its tag. Of equal names the last one written, hence the last listed, remains."""
    return {"_NSET_" + group.name + ".vtk": group.tag for group in mesh.node_groups}


def fits_float(grid):
    """The libraries read coordinates as float: what is infinite, no number, too large or too small stops them."""
    return all(c == 0 or 1.2e-38 <= abs(c) <= 3.4e38 for point in grid.points for c in point)


def check_file(folder, name, with_data, compare, *how):
    """All three readings of one file. Gives (its text as a grid or None, what was found)."""
    path = os.path.join(folder, name)
    try:
        grid = read_text(path, with_data)
    except (TextError, OSError) as trouble:
        return None, ["%s: %s" % (name, trouble)]
    found = compare(grid, *how)
    if fits_float(grid):
        found += ask_library(path, grid) + ask_meshio(path, grid)
    return grid, ["%s: %s" % (name, line) for line in found]


def check_run(folder, good=False, oriented=False, straight=False, closed=False):
    """Everything about one run's folder; gives the list of what does not agree, empty when all does."""
    try:
        mesh = meshinput.read(os.path.join(folder, "mesh.input"))
    except (meshinput.MeshError, OSError) as trouble:
        return ["mesh.input: %s" % trouble]
    found, present = [], {name for name in os.listdir(folder) if name.startswith("_") and name.endswith(".vtk")}
    cells = faces = Grid([], [], [], {}, {})
    if mesh.cells:
        forms = [CELL_FORMS[code] for code in mesh.cell_types]
        cells, lines = check_file(folder, "_Cells.vtk", True, compare_entities, mesh, mesh.cells, forms, mesh.cell_tags)
        found += lines
    if mesh.faces:
        forms = [FACE_FORMS[len(face)] for face in mesh.faces]
        faces, lines = check_file(folder, "_Faces.vtk", True, compare_entities, mesh, mesh.faces, forms, mesh.face_tags)
        found += lines
    sets = node_set_files(mesh)
    for name, tag in sets.items():
        # A name that leads into a folder that is not there, or is too long for a file's name, leaves no file.
        if os.path.isdir(os.path.dirname(os.path.join(folder, name))) and len(os.path.basename(name)) <= LONGEST_NAME:
            found += check_file(folder, name, False, compare_node_set, mesh, tag)[1]
    written = set(sets) | ({"_Cells.vtk"} if mesh.cells else set()) | ({"_Faces.vtk"} if mesh.faces else set())
    found += ["%s: nothing in mesh.input accounts for this file" % name for name in sorted(present - written)]
    if cells is None or faces is None:
        return found
    # In two dimensions the plane is all that is measured; z is filled up.
    positions = [tuple(p) + (0.0,) * (3 - len(p)) for p in mesh.current]
    if good or oriented:
        found += ["_Cells.vtk: " + line for line in check_sizes(cells, positions, not good)]
    if straight:
        # A straight edge may rise in z, which two-dimensional positions do not tell: take the points of the file.
        found += ["_Cells.vtk: " + line for line in check_straight(cells, cells.points)]
    if closed:
        found += ["_Faces.vtk: " + line for line in check_closed(cells, faces, positions, mesh.dimension)]
    return found
