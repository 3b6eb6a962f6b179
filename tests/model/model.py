"""The right answer for a deck (deck.py): log, "mesh.input" and VTK files, worked out from the sections themselves.

Nothing here reads the spelled deck. The steps follow the run: reading, ordering, resolving, translating, writing.
Floating point is done in plain doubles in the order in which the formulas are written, so files agree to the byte.
"""
from math import sqrt
from types import SimpleNamespace

from deck import LONGEST_LINE, value

REFUSED = {
    "NODE": ["INPUT", "SYSTEM"],
    "ELEMENT": ["FILE", "INPUT", "OFFSET", "SOLIDELEMENTNUMBERING"],
    "NSET": ["ELSET", "GENERATE", "INSTANCE", "INTERNAL", "UNSORTED"],
    "ELSET": ["GENERATE", "INSTANCE", "INTERNAL", "UNSORTED"],
    "SURFACE": ["COMBINE", "CROP", "DEFINITION", "FILLETRADIUS", "INTERNAL", "REGIONTYPE", "TRIM", "MAXRATIO",
                "NOOFFSET", "NOTHICK", "SCALETHICK"],
}

# What a family is: its code, its node count, the columns of its corners, the deck's node for each column, the slot for
# each face label, the columns that a correction exchanges, the faces made for each slot.
FAMILIES = {
    "TRI3": SimpleNamespace(
        code=3, nodes=3, dimension=2, corners=(0, 1, 2), order=(0, 1, 2), slots=(2, 0, 1), swaps=((1, 2),),
        faces=([(1, 2)], [(2, 0)], [(0, 1)])),
    "TRI6": SimpleNamespace(
        code=4, nodes=6, dimension=2, corners=(0, 2, 4), order=(0, 3, 1, 4, 2, 5), slots=(2, 0, 1),
        swaps=((2, 4), (1, 5)),
        faces=([(2, 3), (3, 4)], [(4, 5), (5, 0)], [(0, 1), (1, 2)])),
    "TET4": SimpleNamespace(
        code=5, nodes=4, dimension=3, corners=(0, 1, 2, 3), order=(0, 1, 2, 3), slots=(3, 2, 0, 1), swaps=((1, 2),),
        faces=([(1, 3, 2)], [(2, 3, 0)], [(3, 1, 0)], [(0, 1, 2)])),
    "TETX": SimpleNamespace(
        code=6, nodes=10, dimension=3, corners=(0, 1, 2, 3), order=tuple(range(10)), slots=(3, 2, 0, 1),
        swaps=((1, 2), (4, 6), (8, 9)),
        faces=tuple([(t[1], t[5], t[3]), (t[0], t[5], t[1]), (t[4], t[3], t[5]), (t[2], t[1], t[3])]
                    for t in ((1, 5, 2, 9, 3, 8), (2, 6, 0, 7, 3, 9), (3, 7, 0, 4, 1, 8), (0, 6, 2, 5, 1, 4)))),
}
TYPES = {"C3D4": "TET4", "C3D10": "TETX", "CPE3": "TRI3", "CPS3": "TRI3", "STRI3": "TRI3",
         "CPE6": "TRI6", "CPS6": "TRI6", "STRI65": "TRI6"}
FACE_CODE = {2: 31, 3: 32}
VTK_CELLS = {3: (5, (0, 1, 2)), 4: (22, (0, 2, 4, 1, 3, 5)), 5: (10, (0, 1, 2, 3)), 6: (24, tuple(range(10))),
             31: (3, (0, 1)), 32: (5, (0, 1, 2))}


class Cell:
    """One element: its deck number, its family, the deck's node numbers and then positions by column, tags by slot."""
    __slots__ = ("number", "family", "nodes", "tag", "slots", "marked")

    def __init__(self, number, family, nodes):
        self.number, self.family, self.nodes = number, family, nodes
        self.slots = [0] * len(family.corners)
        self.tag, self.marked = 0, False


# --- reading -------------------------------------------------------------------------------------------------------

class Reading:
    """The deck's sections in the order read, reduced to what the later steps need, and the log so far."""

    def __init__(self, deck, too_long):
        self.log, self.too_long = [], too_long
        self.nodes, self.blocks, self.nsets, self.elsets, self.surfaces = [], [], [], [], []
        readers = {"NODE": self.node, "ELEMENT": self.element, "NSET": self.nset, "ELSET": self.elset,
                   "SURFACE": self.surface}
        for section in deck.sections:
            if section.keyword in readers:
                readers[section.keyword](section)

    def say(self, text):
        self.log.append(text)

    def parameter(self, section, name):
        line = section.line() + ","
        at = line.find(name + "=")
        if at < 0:
            return None
        start = at + len(name) + 1
        found = line[start:line.index(",", start)]
        if len(found) > 256:
            self.say("\n  Error> the value of %s is longer than %d characters.\n" % (name, 256))
        return found[:256]

    def report_long(self, row):
        if id(row) in self.too_long:
            self.say("\n  Error> line %d is longer than %d characters.\n" % (self.too_long[id(row)], LONGEST_LINE))

    def refused(self, section):
        for word in REFUSED[section.keyword]:
            if word in section.line():
                self.say("\n  Error> Undesirable parameters: %s.\n" % word)
                return True
        return False

    def node(self, section):
        self.say("  Reading Nodes %s ... " % (self.parameter(section, "NSET") or ""))
        if self.refused(section):
            return
        for row in section.rows:
            self.report_long(row)
            fields = (row.fields + [None] * 4)[:4]
            for entry, what in zip(fields, ("id", "x-coordinate", "y-coordinate")):
                if entry is None:
                    self.say("\n  Error> needed nodal %s.\n" % what)
            number, x, y, z = map(value, fields)
            self.nodes.append((number, float(x), float(y), float(z)))
        self.say("done with %d nodes.\n" % len(section.rows))

    def element(self, section):
        name = self.parameter(section, "ELSET")
        if name is None:
            self.say("  Warning> Cannot find ELSET name for Cells.\n")
            name = ""
        self.say("  Reading Elements %s ... " % name)
        if self.refused(section):
            return
        kind = self.parameter(section, "TYPE") or ""
        if kind not in TYPES:
            self.say("\n  Error> Unrecognized element type: %s.\n" % kind)
            self.say("         Supports TETs: C3D4, C3D10;\n")
            self.say("         Supports TRIs: STRI3, STRI65, CPE3, CPS3, CPE6, CPS6.\n")
            return
        family = FAMILIES[TYPES[kind]]
        cells = []
        for row in section.rows:
            self.report_long(row)
            fields = (row.fields + [None] * (family.nodes + 1))[:family.nodes + 1]
            for entry in fields:
                if entry is None:
                    self.say("\n  Error> Needed to read %d nodes.\n" % family.nodes)
            number, *nodes = map(value, fields)
            cells.append(Cell(number, family, [nodes[deck] for deck in family.order]))
        self.say("done with %d %ss.\n" % (len(cells), kind))
        self.blocks.append(SimpleNamespace(name=name, family=family, cells=cells, section=section))

    def members(self, section):
        """A line's numbers end at its first empty field, and where the line is cut."""
        numbers = []
        for row in section.rows:
            self.report_long(row)
            for entry in cut_row(row.fields) if id(row) in self.too_long else row.fields:
                if entry is None:
                    break
                numbers.append(value(entry))
        return numbers

    def nset(self, section):
        name = self.parameter(section, "NSET") or ""
        self.say("  Reading NSET %s ... " % name)
        if not self.refused(section):
            numbers = self.members(section)
            self.say("done with %d nodes.\n" % len(numbers))
            self.nsets.append(SimpleNamespace(name=name, numbers=numbers))

    def elset(self, section):
        name = self.parameter(section, "ELSET") or ""
        self.say("  Reading ELSET %s ... " % name)
        if not self.refused(section):
            numbers = self.members(section)
            self.say("done with %d cells.\n" % len(numbers))
            self.elsets.append(SimpleNamespace(name=name, numbers=numbers))

    def surface(self, section):
        name = self.parameter(section, "NAME") or ""
        self.say("  Reading Surface %s ... " % name)
        if self.refused(section):
            return
        kind = self.parameter(section, "TYPE")
        if kind is not None and kind != "ELEMENT":
            self.say("\n  Error> only ELEMENT surface type is supported (%s).\n" % kind)
            return
        entries = []
        for row in section.rows:
            self.report_long(row)
            target, label = (row.fields + [None] * 2)[:2]
            if target and len(target) > 256:         # a field takes 256 characters, the rest stays for the next one
                target, label = target[:256], target[256:] + (label or "")
            label = label_number(label)
            if target is None or label is None:
                self.say("\n  Error> Needed to read both ELSET name & Face/edge id label.\n")
            else:
                entries.append((target, label - 1))
        self.say("done with %d elsets.\n" % len(entries))
        self.surfaces.append(SimpleNamespace(name=name, entries=entries))


def cut_row(fields):
    """What is left of a set's line that is too long: whole numbers in one spelling, the last one cut off."""
    texts = ",".join(entry.text for entry in fields)[:LONGEST_LINE].split(",")
    return [leading_int(text) for text in texts if leading_int(text) is not None]


def leading_int(text):
    """The number that a text begins with, as a decimal scan finds it, else None."""
    end = 1 if text[:1] in ("+", "-") else 0
    start = end
    while text[end:end + 1] in tuple("0123456789"):
        end += 1
    return int(text[:end]) if end > start else None


def low_word(number):
    """A scanned whole number saturates at 64 bits and keeps its low 32 bits."""
    number = max(-2**63, min(2**63 - 1, number))
    return (number + 2**31) % 2**32 - 2**31


def label_number(label):
    """S3 is 3: one character, whichever, then a number."""
    number = leading_int(label[1:]) if label else None
    return None if number is None else low_word(number)


# --- ordering and resolving ----------------------------------------------------------------------------------------

def order_blocks(blocks):
    """Newest first, then by exchanges to the order of the first element numbers. Empty blocks keep their place."""
    blocks = blocks[::-1]
    for block in blocks:
        block.cells.sort(key=lambda cell: cell.number)
    for a in range(len(blocks)):
        for b in range(a + 1, len(blocks)):
            if blocks[a].cells and blocks[b].cells and blocks[a].cells[0].number > blocks[b].cells[0].number:
                blocks[a], blocks[b] = blocks[b], blocks[a]
    return blocks


def resolve_surfaces(read, blocks):
    """Gives the cells their tags by slot. The surface read first is the last to write, so it wins a shared face."""
    by_number, by_name = {}, {}
    for block in blocks:
        for cell in block.cells:
            by_number.setdefault(cell.number, cell)
    for elset in read.elsets:
        by_name[elset.name] = elset.numbers          # of one name the one read last counts
    for tag, surface in enumerate(reversed(read.surfaces), 1):
        for target, row in surface.entries:
            if target in by_name:
                numbers = by_name[target]
            else:
                number = leading_int(target)
                numbers = [number] if number is not None and -2**31 <= number < 2**31 else []
            for number in numbers:
                cell = by_number.get(number)
                if cell is None:
                    continue
                if 0 <= row < len(cell.slots):
                    cell.slots[cell.family.slots[row]] = tag
                else:
                    read.say("\n  Error> in ABQ_SetCellFaceTagByGID\n")


def node_tags(read):
    tags = {}
    for tag, nset in enumerate(reversed(read.nsets), 1):
        for number in nset.numbers:
            tags[number] = tag                       # the set read first writes last
    return tags


# --- translating ---------------------------------------------------------------------------------------------------

def resolve_connectivity(cells, numbers):
    positions = {number: position for position, number in enumerate(numbers)}
    if len(positions) != len(numbers):
        raise ValueError("the model is for decks whose node numbers differ from one another")
    missing = 0
    for cell in cells:
        cell.nodes = [positions.get(number, -1) for number in cell.nodes]
        missing += cell.nodes.count(-1)
    return missing


def corner_positions(cell):
    """The positions at the cell's corners, or None when the deck lacks one of them."""
    nodes = [cell.nodes[column] for column in cell.family.corners]
    return None if -1 in nodes else nodes


def minus(p, q):
    return (p[0] - q[0], p[1] - q[1], p[2] - q[2])


def cross(a, b):
    return (a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0])


def dot(a, b):
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]


def measure(points):
    p0, p1, p2 = points[:3]
    if len(points) == 3:
        return (p1[0] - p0[0]) * (p2[1] - p0[1]) - (p2[0] - p0[0]) * (p1[1] - p0[1])
    return dot(cross(minus(p1, p0), minus(p2, p0)), minus(points[3], p0))


def correct_orientation(cells, xyz):
    corrected = 0
    for cell in cells:
        corners = corner_positions(cell)
        if corners and measure([xyz[node] for node in corners]) < 1e-10:
            for a, b in cell.family.swaps:
                cell.nodes[a], cell.nodes[b] = cell.nodes[b], cell.nodes[a]
            cell.slots[1], cell.slots[2] = cell.slots[2], cell.slots[1]
            corrected += 1
    return corrected


def edge_lengths(points):
    if len(points) == 3:
        for p, q in ((0, 1), (1, 2), (2, 0)):
            dx, dy, _ = minus(points[q], points[p])
            yield sqrt(dx * dx + dy * dy)
    else:
        for p, q in ((0, 1), (0, 2), (0, 3), (1, 2), (1, 3), (2, 3)):
            d = minus(points[q], points[p])
            yield sqrt(dot(d, d))


def altitudes(points):
    """Each corner's distance from the line or plane through the others, these in ascending column order."""
    for at, p in enumerate(points):
        q, r, *s = points[:at] + points[at + 1:]
        if s:
            n = cross(minus(r, q), minus(s[0], q))
            yield abs(dot(n, minus(p, q))) / (sqrt(dot(n, n)) + 1e-10)
        else:
            ex, ey, _ = minus(r, q)
            length = sqrt(ex * ex + ey * ey)
            if length > 1e-10:
                ex, ey = ex / length, ey / length
            yield abs(ex * (p[1] - q[1]) - ey * (p[0] - q[0]))


def measure_group(block, xyz):
    """Sets the block's shortest and longest edge and its characteristic length."""
    block.shortest, block.longest, block.characteristic = 1e15, 0.0, 1e15
    for cell in block.cells:
        corners = corner_positions(cell)
        if not corners:
            continue
        points = [xyz[node] for node in corners]
        for length in edge_lengths(points):
            block.longest = length if length > block.longest else block.longest
            block.shortest = length if length < block.shortest else block.shortest
        least = min(altitudes(points))
        if cell.family.nodes > len(points):
            least = 0.5 * least
        block.characteristic = least if least < block.characteristic else block.characteristic


def split_nodes(blocks, cells, nodes):
    """Cells of C_ groups get nodes of their own. A group is sought by its name, so of one name only the newest."""
    newest = {block.name: block.tag for block in blocks}
    marked = {newest[block.name] for block in blocks if block.name.startswith("C_")}
    for cell in cells:
        if cell.tag in marked:
            cell.marked = True
            for column, node in enumerate(cell.nodes):
                if node >= 0:
                    cell.nodes[column] = len(nodes)
                    nodes.append(nodes[node])


def make_faces(cells):
    faces = []
    for cell in cells:
        for slot, tag in enumerate(cell.slots):
            if tag > 0:
                for columns in cell.family.faces[slot]:
                    faces.append(SimpleNamespace(tag=tag, nodes=[cell.nodes[column] for column in columns]))
    return faces


def drop_unused(cells, faces, nodes):
    used = {node for cell in cells for node in cell.nodes} | {node for face in faces for node in face.nodes}
    kept = [node for node in range(len(nodes)) if node in used]
    place = {node: at for at, node in enumerate(kept)}
    place[-1] = -1
    for entry in cells + faces:
        entry.nodes = [place[node] for node in entry.nodes]
    return [nodes[node] for node in kept]


# --- writing -------------------------------------------------------------------------------------------------------

def scalars(key, values):
    rows = ["\n        " + "".join("%10d" % number for number in values[at:at + 10])
            for at in range(0, len(values), 10)]
    return "    %s = %s\n" % (key, "".join(rows))


def connectivity(key, rows):
    return "    %s = \n" % key + "".join(
        " %10d%5d%s\n" % (at, len(row), "".join("%10d" % node for node in row)) for at, row in enumerate(rows))


def group_text(kind, groups):
    text = ""
    for group in groups:
        text += "  <%s Group> %s\n    %sTag = %10d\n" % (kind, group.name, kind, group.tag)
        if kind == "Cell":
            text += "    Minimum_Edge_Length   = %24.15e\n" % group.shortest
            text += "    Maximum_Edge_Length   = %24.15e\n" % group.longest
            text += "    Characteristic_length = %24.15e\n" % group.characteristic
        text += "  </%s Group> %s\n" % (kind, group.name)
    return text


def mesh_text(mesh):
    parts = ["<Dimension>\n"]
    if mesh.dimension:
        parts.append("    Dimension = %dD\n" % mesh.dimension)
    parts.append("</Dimension>\n\n")
    if mesh.dimension:
        rows = "".join("        %10d%s\n" % (at, "".join("%24.15e" % x for x in node.xyz[:mesh.dimension]))
                       for at, node in enumerate(mesh.nodes))
        parts += ["<Node_Geometry>\n",
                  "    Minimum Edge Charac = %24.15e\n" % mesh.characteristic,
                  "    Minimum Edge Length = %24.15e\n" % mesh.shortest,
                  "    Maximum Edge Length = %24.15e\n" % mesh.longest,
                  "  <Coordinates> AllNodes\n",
                  "    Number_Of_Nodes = %10d\n" % len(mesh.nodes),
                  "    Current_Positions = \n", rows,
                  "    Previous_Positions = \n", rows,
                  "    Initial_Positions = \n", rows,
                  scalars("Node_Tag", [node.tag for node in mesh.nodes]),
                  scalars("IsOnBoundary", [1] * len(mesh.nodes)),
                  "  </Coordinates> AllNodes\n</Node_Geometry>\n\n"]
    parts.append("<Connectivity>\n")
    if mesh.faces:
        parts += ["  <Faces> AllFaces\n",
                  "    Face_Number_Of_Nodes = %10d\n" % max(len(face.nodes) for face in mesh.faces),
                  "    Number_Of_Faces = %10d\n" % len(mesh.faces),
                  connectivity("Face_To_Node", [face.nodes for face in mesh.faces]),
                  scalars("Face_Tag", [face.tag for face in mesh.faces]),
                  "  </Faces> AllFaces\n"]
    if mesh.cells:
        codes = {cell.family.code for cell in mesh.cells}
        if mesh.dimension == 2:
            largest = (6, 4) if 4 in codes else (3, 1) if 3 in codes else (0, 0)
            identity = "%24.15e" * 4 % (1, 0, 0, 1)
        else:
            largest = (10, 8) if 6 in codes else (4, 1) if 5 in codes else (0, 0)
            identity = " 1.0 0.0 0.0 0.0 1.0 0.0 0.0 0.0 1.0"
        parts += ["  <Cells> AllCells\n",
                  "    Cell_Number_Of_Faces    = %10d\n" % 0,
                  "    Cell_Number_Of_Nodes    = %10d\n" % largest[0],
                  "    Cell_Number_Of_MatNodes = %10d\n" % largest[1],
                  "    Cell_Number_Of_PreNodes = %10d\n" % 0,
                  "    Cell_Number_Of_VelNodes = %10d\n" % 0,
                  "    Number_Of_Cells = %10d\n" % len(mesh.cells),
                  connectivity("Cell_To_Node", [cell.nodes for cell in mesh.cells]),
                  scalars("Cell_Type", [cell.family.code for cell in mesh.cells]),
                  scalars("Cell_Tag", [cell.tag for cell in mesh.cells]),
                  "    Initial_Solid_Geometry = \n",
                  "".join("        %10d%s\n" % (at, identity) for at in range(len(mesh.cells))),
                  "  </Cells> AllCells\n"]
    parts += ["</Connectivity>\n\n<Groups>\n",
              group_text("Node", mesh.node_groups), group_text("Face", mesh.face_groups),
              group_text("Cell", mesh.cell_groups), "</Groups>\n\n"]
    return "".join(parts)


VTK_HEAD = "# vtk DataFile Version 3.0\nvtk output\nASCII\nDATASET UNSTRUCTURED_GRID\n"


def vtk_list(values):
    """Ten to a line; ten more than a line begins a new one even when nothing follows."""
    return "".join("%5d%s" % (number, "\n" if at % 10 == 0 else "") for at, number in enumerate(values, 1))


def vtk_points(nodes):
    return "POINTS %d float\n" % len(nodes) + "".join("%15.7e%15.7e%15.7e\n" % node.xyz for node in nodes) + "\n"


def vtk_text(nodes, codes, tags, rows):
    columns = [[row[column] for column in VTK_CELLS[code][1]] for code, row in zip(codes, rows)]
    parts = [VTK_HEAD, vtk_points(nodes),
             "CELLS %d %d\n" % (len(rows), sum(len(row) + 1 for row in columns))]
    parts += ["%5d%s\n" % (len(row), "".join("%10d" % node for node in row)) for row in columns]
    parts += ["\nCELL_TYPES %d\n" % len(rows), vtk_list([VTK_CELLS[code][0] for code in codes]), "\n",
              "CELL_DATA %d\nSCALARS CellTag int\nLOOKUP_TABLE default\n" % len(rows), vtk_list(tags), "\n",
              "POINT_DATA %d\nSCALARS NodeTag int\nLOOKUP_TABLE default\n" % len(nodes),
              vtk_list([node.tag for node in nodes]), "\n",
              "SCALARS OnB int\nLOOKUP_TABLE default\n", vtk_list([1] * len(nodes)), "\n"]
    return "".join(parts)


def vtk_set_text(nodes):
    count = len(nodes)
    return "".join([VTK_HEAD, vtk_points(nodes), "CELLS %d %d\n" % (count, 2 * count),
                    "".join("%10d %10d\n" % (1, at) for at in range(count)),
                    "\nCELL_TYPES %d\n" % count, vtk_list([1] * count), "\n"])


def vtk_files(mesh, log):
    """The files by name; of node sets with one name the last written stays. The log gets its lines."""
    files = {}

    def add(name, text):
        log.append("\n  Dumping VTK file %s ..." % name)
        if "/" in name or len(name) > 255:           # no such folder, or no such name
            log.append("\n Error> cannot open file %s\n" % name)
        else:
            files[name] = text
            log.append(" done.")

    if mesh.cells:
        add("_Cells.vtk", vtk_text(mesh.nodes, [cell.family.code for cell in mesh.cells],
                                   [cell.tag for cell in mesh.cells], [cell.nodes for cell in mesh.cells]))
    if mesh.faces:
        add("_Faces.vtk", vtk_text(mesh.nodes, [FACE_CODE[len(face.nodes)] for face in mesh.faces],
                                   [face.tag for face in mesh.faces], [face.nodes for face in mesh.faces]))
    for group in mesh.node_groups:
        add("_NSET_%s.vtk" % group.name, vtk_set_text([node for node in mesh.nodes if node.tag == group.tag]))
    return files


# --- the whole run -------------------------------------------------------------------------------------------------

def expect(deck, vtk=False, too_long=()):
    """The answer: .log (masked), .files (name: bytes) and .mesh (the translated mesh that the files show).

    `too_long` gives the line number for each row (by its id) that spell.py had to write longer than a line may be.
    """
    read = Reading(deck, too_long)
    blocks = order_blocks(read.blocks)
    dimension = 0
    for tag, block in enumerate(blocks, 1):
        block.tag, dimension = tag, block.family.dimension
        for cell in block.cells:
            cell.tag = tag
    tags = node_tags(read)
    resolve_surfaces(read, blocks)
    log = ["<banner>\nJob started at <date>\n\nReading Abaqus mesh from deck.inp ...\n"]
    log += read.log + ["Elapsed Time: <t> sec.\n", "\nTranslating mesh ... \n"]

    nodes = [SimpleNamespace(number=number, tag=tags.get(number, 0), xyz=(x, y, z))
             for number, x, y, z in sorted(read.nodes)]
    xyz = [node.xyz for node in nodes]
    cells = [cell for block in blocks for cell in block.cells]
    missing = resolve_connectivity(cells, [node.number for node in nodes])
    if missing:
        log.append("\n  Error> %d references of elements name no node of the deck.\n" % missing)
    corrected = correct_orientation(cells, xyz)
    if corrected:
        log.append("  Numbering order of %d elements has been corrected.\n" % corrected)
    for block in blocks:
        measure_group(block, xyz)
    split_nodes(blocks, cells, nodes)
    faces = make_faces(cells)
    nodes = drop_unused(cells, faces, nodes)

    mesh = SimpleNamespace(
        dimension=dimension, nodes=nodes, cells=cells, faces=faces, corrected=corrected,
        longest=max([0.0] + [block.longest for block in blocks]),
        shortest=min([1e15] + [block.shortest for block in blocks]),
        characteristic=min([1e15] + [block.characteristic for block in blocks]),
        # Both lists grow at their head, in the reader and again in the store: sets appear as read, blocks backwards.
        node_groups=[SimpleNamespace(name=group.name, tag=len(read.nsets) - at) for at, group in enumerate(read.nsets)],
        face_groups=[SimpleNamespace(name=group.name, tag=len(read.surfaces) - at)
                     for at, group in enumerate(read.surfaces)],
        cell_groups=blocks[::-1])
    log += ["  Mesh summary:\n",
            "    Number of dimensions  = %d\n" % dimension,
            "    Number of nodes       = %d\n" % len(nodes),
            "    Number of elements    = %d\n" % len(cells),
            "    Number of node groups = %d\n" % len(mesh.node_groups),
            "    Number of face groups = %d\n" % len(mesh.face_groups),
            "    Number of cell groups = %d\n" % len(mesh.cell_groups),
            "    Maximum edge length   = %e\n" % mesh.longest,
            "    Minimum edge length   = %e\n" % mesh.shortest,
            "    Characteristic length = %e\n" % mesh.characteristic,
            "Elapsed Time: <t> sec.\n", "\nDumping files ...",
            "\n  Dumping KIVO file mesh.input ...", " done."]
    files = {"mesh.input": mesh_text(mesh).encode("latin-1")}
    if vtk:
        files.update((name, text.encode("latin-1")) for name, text in vtk_files(mesh, log).items())
    log += ["\nElapsed Time: <t> sec.\n", "\nJob finished at <date>\n\n"]
    return SimpleNamespace(log="".join(log), files=files, mesh=mesh)
