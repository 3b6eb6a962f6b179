"""The tests' own reader of the solver's mesh file, which knows nothing of the programs' one. Python 3.9 or later.
                                           mesh = meshinput.read("mesh.input")
  mesh.dimension                             2, 3, or None where the file names none (then there are no nodes)
  mesh.characteristic, .shortest, .longest   the mesh-wide lengths (None without a dimension)
  mesh.current, .previous, .initial          the three position lists: one tuple (x, y) or (x, y, z) per node
  mesh.node_tags, .on_boundary               one int per node
  mesh.face_width, .faces, .face_tags        nodes of the largest face; per face a tuple of node positions, and a tag
  mesh.cells, .cell_types, .cell_tags        per cell a tuple of node positions, a type code, and a tag
  mesh.cell_nodes, .material_nodes           the solver's two figures for the largest cell (0 without cells)
  mesh.node_groups, .face_groups             in file order, each with .name and .tag
  mesh.cell_groups                           the same, each also with .shortest, .longest, .characteristic
Node positions count from 0; -1: the deck had no such node. Type codes: 3 and 4 triangles of 3 and 6 nodes (corner,
mid-side, corner, ...), 5 and 6 tetrahedra of 4 and 10 nodes.
A file that departs from the format is refused: MeshError says "file:line: reason".
"""
import re, types

INT, REAL = re.compile(r" *(0|-?[1-9][0-9]*)"), re.compile(r" *-?(\d\.\d{15}e[-+]\d{2,3}|inf|nan)")
# (in two dimensions, type code): (nodes of such a cell, the solver's material nodes of it)
FIGURES = {(True, 3): (3, 1), (True, 4): (6, 4), (False, 5): (4, 1), (False, 6): (10, 8)}
class MeshError(Exception): pass

class Lines:  # the file's lines, taken one by one, each held against what must stand there
    def __init__(self, path):
        with open(path, "rb") as stream:
            self.path, self.at, self.lines = path, 0, stream.read().decode("latin-1").split("\n")
        if self.lines.pop():
            self.refuse("the last line has no line end", len(self.lines) + 1)

    def refuse(self, reason, line=None):
        raise MeshError("%s:%d: %s" % (self.path, line or self.at, reason))

    def starts(self, head):
        return self.at < len(self.lines) and self.lines[self.at].startswith(head)

    def after(self, head):
        """Takes the next line, which must begin with `head`; gives the rest of it."""
        self.at += 1
        if self.at > len(self.lines):
            self.refuse('the file ends where "%s" should stand' % head)
        if not self.lines[self.at - 1].startswith(head):
            self.refuse('"%s" stands where "%s" should' % (self.lines[self.at - 1], head))
        return self.lines[self.at - 1][len(head):]

    def literal(self, *texts):
        for text in texts:
            if self.after(text):
                self.refuse('"%s" should end there' % text)

    def fields(self, text, count, width=10):
        """The `count` numbers that stand side by side: reals in fields of 24 characters, whole ones in all others."""
        form, kind = (REAL, float) if width == 24 else (INT, int)
        parts = [text[at:at + width] for at in range(0, len(text), width)]
        if len(text) != count * width or not all(map(form.fullmatch, parts)):
            self.refuse('"%s" is not %d numbers in fields of %d characters' % (text, count, width))
        return tuple(map(kind, parts))

    def number(self, key, least=0, width=10):
        value = self.fields(self.after("    %s = " % key), 1, width)[0]
        return self.refuse("%s is below %d" % (key, least)) if value < least else value

    def scalars(self, key, count):
        self.literal("    %s = " % key)
        return [value for at in range(0, count, 10) for value in self.fields(self.after(" " * 8), min(10, count - at))]

    def connectivity(self, key, count, nodes, largest):
        self.literal("    %s = " % key)
        for entry in range(count):
            text = self.after(" %10d" % entry)
            yield (row := self.fields(text[5:], self.fields(text[:5], 1, 5)[0]))
            if len(row) > largest or not all(-1 <= node < nodes for node in row):
                self.refuse("more than %d nodes, or a node position outside -1 .. %d" % (largest, nodes - 1))

    def groups(self, kind):
        groups, head = [], "  <%s Group> " % kind
        while self.starts(head):
            groups.append(group := types.SimpleNamespace(name=self.after(head), tag=self.number(kind + "Tag")))
            if kind == "Cell":
                keys = "Minimum_Edge_Length  ", "Maximum_Edge_Length  ", "Characteristic_length"
                group.shortest, group.longest, group.characteristic = [self.number(key, 0, 24) for key in keys]
            self.literal("  </%s Group> %s" % (kind, group.name))
        return groups

def read(path):
    lines, mesh = Lines(path), types.SimpleNamespace()
    mesh.dimension = mesh.characteristic = mesh.shortest = mesh.longest = None
    for name in "current previous initial node_tags on_boundary faces face_tags cells cell_types cell_tags".split():
        setattr(mesh, name, [])
    mesh.face_width = mesh.cell_nodes = mesh.material_nodes = 0
    lines.literal("<Dimension>")
    if lines.starts("    Dimension = "):
        mesh.dimension = {"2D": 2, "3D": 3}.get(lines.after("    Dimension = "))
        mesh.dimension or lines.refuse("the dimension is neither 2D nor 3D")
    lines.literal("</Dimension>", "")
    if mesh.dimension:
        lines.literal("<Node_Geometry>")
        keys = "Minimum Edge Charac", "Minimum Edge Length", "Maximum Edge Length"
        mesh.characteristic, mesh.shortest, mesh.longest = [lines.number(key, 0, 24) for key in keys]
        lines.literal("  <Coordinates> AllNodes")
        count = lines.number("Number_Of_Nodes")
        for name in ("current", "previous", "initial"):
            lines.literal("    %s_Positions = " % name.capitalize())
            rows = (lines.after("        %10d" % at) for at in range(count))
            setattr(mesh, name, [lines.fields(row, mesh.dimension, 24) for row in rows])
        mesh.node_tags, mesh.on_boundary = lines.scalars("Node_Tag", count), lines.scalars("IsOnBoundary", count)
        lines.literal("  </Coordinates> AllNodes", "</Node_Geometry>", "")
    nodes = len(mesh.current) if mesh.dimension else 2**31
    lines.literal("<Connectivity>")
    if lines.starts("  <Faces>"):
        lines.literal("  <Faces> AllFaces")
        mesh.face_width, count = lines.number("Face_Number_Of_Nodes", 1), lines.number("Number_Of_Faces", 1)
        mesh.faces = list(lines.connectivity("Face_To_Node", count, nodes, mesh.face_width))
        mesh.face_tags = lines.scalars("Face_Tag", count)
        lines.literal("  </Faces> AllFaces")
    if lines.starts("  <Cells>"):
        lines.literal("  <Cells> AllCells", "    Cell_Number_Of_Faces    = %10d" % 0)
        figures = mesh.cell_nodes, mesh.material_nodes = tuple(
            lines.number("Cell_Number_Of_" + key) for key in ("Nodes   ", "MatNodes"))
        lines.literal(*("    Cell_Number_Of_%sNodes = %10d" % (key, 0) for key in ("Pre", "Vel")))
        count = lines.number("Number_Of_Cells", 1)
        mesh.cells = list(lines.connectivity("Cell_To_Node", count, nodes, 10))
        mesh.cell_types, mesh.cell_tags = lines.scalars("Cell_Type", count), lines.scalars("Cell_Tag", count)
        plane = mesh.dimension == 2
        identity = "%24.15e" * 4 % (1, 0, 0, 1) if plane else "%4.1f" * 9 % (1, 0, 0, 0, 1, 0, 0, 0, 1)
        lines.literal("    Initial_Solid_Geometry = ", *("        %10d%s" % (at, identity) for at in range(count)))
        lines.literal("  </Cells> AllCells")
        wanted = [FIGURES.get((plane, kind), (0, 0)) for kind in mesh.cell_types]
        if figures != max(wanted) or any(n and n != len(row) for row, (n, _) in zip(mesh.cells, wanted)):
            lines.refuse("the node counts of the cells do not fit their types")
    lines.literal("</Connectivity>", "", "<Groups>")
    mesh.node_groups, mesh.face_groups, mesh.cell_groups = map(lines.groups, ("Node", "Face", "Cell"))
    lines.literal("</Groups>", "")
    if lines.at < len(lines.lines):
        lines.refuse("more text after the end of the last section", lines.at + 1)
    return mesh
