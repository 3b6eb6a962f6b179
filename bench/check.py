#!/usr/bin/python3
"""Checks what a run left against the deck maker's summary.

  check.py SUMMARY FOLDER LOG [--vtk] [--same-as OTHERFOLDER OTHERLOG]

SUMMARY is what makedeck printed, FOLDER holds mesh.input (and with --vtk the VTK files, and nothing else) and LOG
is the standard output of the run. Counts are compared with the summary. The box tells what the mesh must be: its
volume, the area of its sides, every cell the right way round, every face looking inwards, every middle node in
the middle. The VTK files are compared with text made from mesh.input. With --same-as the files of another run
must be the same to the byte, and its log but for times and dates.
Exit status: 0 when everything is right, 1 with a line for the first fault."""

import argparse
import collections
import hashlib
import os
import re
import sys

kTypeCodes = {"C3D4": 5, "C3D10": 6, "CPS3": 3, "CPS6": 4}
kVtkTypes = {"C3D4": 10, "C3D10": 24, "CPS3": 5, "CPS6": 22}
# Columns of the corners, and (corner, middle, corner) of the edges, in the order of mesh.input.
kCorners = {"C3D4": (0, 1, 2, 3), "C3D10": (0, 1, 2, 3), "CPS3": (0, 1, 2), "CPS6": (0, 2, 4)}
kMiddles = {
    "C3D10": ((0, 4, 1), (1, 5, 2), (2, 6, 0), (0, 7, 3), (1, 8, 3), (2, 9, 3)),
    "CPS6": ((0, 1, 2), (2, 3, 4), (4, 5, 0)),
}
# Order of the columns in a VTK file where it differs.
kVtkColumns = {"CPS6": (0, 2, 4, 1, 3, 5)}
kSpacing = 0.1
kRowsAtATime = 50000
# Below this a cell counts as the wrong way round.
kSmallestMeasure = 1e-10


class Fault(Exception):
    pass


def Need(isRight, message):
    if not isRight:
        raise Fault(message)


def ReadSummary(path):
    summary = {"element_section": [], "node_set": [], "surface": []}
    with open(path) as file:
        for line in file:
            key, value = line.rstrip("\n").split("=", 1)
            if key in ("element_section", "node_set", "surface"):
                name, *counts = value.split()
                summary[key].append((name, *map(int, counts)))
            else:
                summary[key] = value if key == "type" else int(value)
    return summary


class Reader:
    """A text file taken piece by piece in the order that it must have."""

    def __init__(self, path):
        self.name = os.path.basename(path)
        self.file = open(path, "rb")

    def Expect(self, text):
        line = self.file.readline()
        Need(line == text.encode() + b"\n", f"{self.name}: {line[:80]!r} where {text!r} was expected")

    def ExpectBytes(self, text):
        Need(self.file.read(len(text)) == text, f"{self.name}: wrong text before byte {self.file.tell()}")

    def Value(self, key):
        line = self.file.readline().decode()
        start = f"    {key} = "
        Need(line.startswith(start), f"{self.name}: {line[:80]!r} where {key} was expected")
        return line[len(start):]

    def Count(self, key, expected):
        Need(self.Value(key) == f"{expected:10d}\n", f"{self.name}: {key} is not {expected}")

    def Block(self, size):
        block = self.file.read(size)
        Need(len(block) == size and block[-1:] in (b"\n", b""), f"{self.name}: a list ends early or late")
        return block

    def AtEnd(self):
        Need(self.file.read(1) == b"", f"{self.name}: text after the end")


def ReadScalars(reader, key, count):
    Need(reader.Value(key) == "\n", f"{key}: text behind the key")
    values = list(map(int, reader.Block(count * 10 + (count + 9) // 10 * 9).split()))
    Need(len(values) == count, f"{key}: {len(values)} values instead of {count}")
    return values


def ReadPositions(reader, summary):
    count = summary["final_nodes"]
    size = count * (19 + 24 * summary["dimensions"])
    reader.Expect("    Current_Positions = ")
    block = reader.Block(size)
    for key in ("Previous_Positions", "Initial_Positions"):
        reader.Expect(f"    {key} = ")
        Need(reader.Block(size) == block, f"{key}: differs from Current_Positions")
    fields = block.split()
    width = summary["dimensions"] + 1
    Need(len(fields) == count * width, "positions: wrong number of fields")
    Need(list(map(int, fields[0::width])) == list(range(count)), "positions: wrong index")
    columns = [list(map(float, fields[k::width])) for k in range(1, width)]
    return columns if width == 4 else columns + [[0.0] * count]


def ReadConnectivity(reader, key, count, nNodes, nPositions, visit, vtkColumns=None):
    """Calls visit with the columns of a part of the rows; returns the digest of the rows as in a VTK file."""
    reader.Expect(f"    {key} = ")
    digest = hashlib.blake2b()
    width = 17 + 10 * nNodes
    for first in range(0, count, kRowsAtATime):
        n = min(kRowsAtATime, count - first)
        block = reader.Block(n * width)
        values = list(map(int, block.split()))
        step = nNodes + 2
        Need(len(values) == n * step, f"{key}: wrong number of fields")
        Need(values[0::step] == list(range(first, first + n)), f"{key}: wrong index")
        Need(values[1::step] == [nNodes] * n, f"{key}: wrong node count")
        columns = [values[k::step] for k in range(2, step)]
        Need(all(0 <= min(c) and max(c) < nPositions for c in columns), f"{key}: a node that is none")
        visit(columns)
        for row in block.splitlines():
            ordered = row[16:] if vtkColumns is None else b"".join(
                row[16 + 10 * k:26 + 10 * k] for k in vtkColumns)
            digest.update(row[11:16] + ordered + b"\n")
    return digest.digest()


def Determinant(a, b, c):
    return (a[0] * (b[1] * c[2] - b[2] * c[1]) + a[1] * (b[2] * c[0] - b[0] * c[2]) +
            a[2] * (b[0] * c[1] - b[1] * c[0]))


def MeasureCells(summary, positions, columns):
    """Sum of the cells' volumes (areas in two dimensions)."""
    x, y, z = positions
    corners = [columns[k] for k in kCorners[summary["type"]]]
    total = 0.0
    if summary["dimensions"] == 2:
        for a, b, c in zip(*corners):
            measure = (x[b] - x[a]) * (y[c] - y[a]) - (x[c] - x[a]) * (y[b] - y[a])
            Need(measure >= kSmallestMeasure, "a cell is the wrong way round")
            total += measure / 2
        return total
    for a, b, c, d in zip(*corners):
        xa, ya, za = x[a], y[a], z[a]
        measure = Determinant((x[b] - xa, y[b] - ya, z[b] - za), (x[c] - xa, y[c] - ya, z[c] - za),
                              (x[d] - xa, y[d] - ya, z[d] - za))
        Need(measure >= kSmallestMeasure, "a cell is the wrong way round")
        total += measure / 6
    return total


def CheckMiddles(summary, mixed, columns):
    """A middle node halves every linear function of the place, so one number per node is enough."""
    for first, middle, last in kMiddles.get(summary["type"], ()):
        for a, m, b in zip(columns[first], columns[middle], columns[last]):
            Need(abs(mixed[a] + mixed[b] - 2 * mixed[m]) < 1e-9, "a middle node is not in the middle")


def MeasureFaces(summary, positions, columns):
    """Sum of the faces' areas (lengths in two dimensions); each must look into the box."""
    x, y, z = positions
    middle = kSpacing * summary["cubes"] / 2
    total = 0.0
    if summary["dimensions"] == 2:
        for a, b in zip(*columns):
            edge = (x[b] - x[a], y[b] - y[a])
            Need(edge[0] * (middle - y[a]) - edge[1] * (middle - x[a]) > 0, "a face looks outwards")
            total += (edge[0] ** 2 + edge[1] ** 2) ** 0.5
        return total
    for a, b, c in zip(*columns):
        u = (x[b] - x[a], y[b] - y[a], z[b] - z[a])
        v = (x[c] - x[a], y[c] - y[a], z[c] - z[a])
        normal = (u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2], u[0] * v[1] - u[1] * v[0])
        inwards = normal[0] * (middle - x[a]) + normal[1] * (middle - y[a]) + normal[2] * (middle - z[a])
        Need(inwards > 0, "a face looks outwards")
        total += (normal[0] ** 2 + normal[1] ** 2 + normal[2] ** 2) ** 0.5 / 2
    return total


def NeedClose(value, expected, what):
    Need(abs(value - expected) <= 1e-7 * expected, f"{what} is {value:.9g} instead of {expected:.9g}")


def NewestFirst(groups):
    """Tags of node sets and surfaces: the last of the deck has tag 1."""
    return {len(groups) - i: group for i, group in enumerate(groups)}


def CheckTags(values, expected, what):
    counts = collections.Counter(values)
    counts.pop(0, None)
    wanted = {tag: count for tag, count in expected.items() if count > 0}
    Need(counts == wanted, f"{what}: wrong number of entries with some tag")


def ReadGroups(reader, summary):
    found = []
    reader.Expect("<Groups>")
    while True:
        line = reader.file.readline().decode().rstrip("\n")
        if line == "</Groups>":
            break
        match = re.fullmatch(r"  <(Node|Face|Cell) Group> (.*)", line)
        Need(match is not None, f"groups: {line!r}")
        kind, name = match.groups()
        tag = int(reader.Value(f"{kind}Tag"))
        if kind == "Cell":
            lengths = [float(reader.Value(key)) for key in
                       ("Minimum_Edge_Length  ", "Maximum_Edge_Length  ", "Characteristic_length")]
            Need(0 < lengths[2] < lengths[0] < lengths[1] < 1, f"{name}: lengths {lengths}")
        reader.Expect(f"  </{kind} Group> {name}")
        found.append((kind, name, tag))
    expected = {("Node", group[0], tag) for tag, group in NewestFirst(summary["node_set"]).items()}
    expected |= {("Face", group[0], tag) for tag, group in NewestFirst(summary["surface"]).items()}
    expected |= {("Cell", group[0], i + 1) for i, group in enumerate(summary["element_section"])}
    Need(len(found) == len(expected) and set(found) == expected, "groups: wrong names or tags")
    reader.Expect("")


def ReadMesh(path, summary):
    """Checks mesh.input; returns what the VTK files must show of it."""
    reader = Reader(path)
    mesh = {}
    isBox = summary["dimensions"] == 3
    for line in ("<Dimension>", f"    Dimension = {summary['dimensions']}D", "</Dimension>", "", "<Node_Geometry>"):
        reader.Expect(line)
    for key in ("Minimum Edge Charac", "Minimum Edge Length", "Maximum Edge Length"):
        Need(0 < float(reader.Value(key)) < 1, f"{key} is out of range")
    reader.Expect("  <Coordinates> AllNodes")
    nNodes = summary["final_nodes"]
    reader.Count("Number_Of_Nodes", nNodes)
    mesh["positions"] = ReadPositions(reader, summary)
    mesh["nodeTags"] = ReadScalars(reader, "Node_Tag", nNodes)
    CheckTags(mesh["nodeTags"], {t: g[2] for t, g in NewestFirst(summary["node_set"]).items()}, "Node_Tag")
    Need(ReadScalars(reader, "IsOnBoundary", nNodes) == [1] * nNodes, "IsOnBoundary: not all 1")
    for line in ("  </Coordinates> AllNodes", "</Node_Geometry>", "", "<Connectivity>"):
        reader.Expect(line)
    if summary["final_faces"] > 0:
        ReadFaces(reader, summary, mesh)
    ReadCells(reader, summary, mesh)
    reader.Expect("</Connectivity>")
    reader.Expect("")
    ReadGroups(reader, summary)
    reader.AtEnd()
    edge = kSpacing * summary["cubes"]
    NeedClose(mesh["cellMeasure"], edge ** summary["dimensions"], "the volume of the cells")
    if summary["final_faces"] > 0:
        NeedClose(mesh["faceMeasure"], 6 * edge * edge if isBox else 4 * edge, "the area of the faces")
    return mesh


def ReadFaces(reader, summary, mesh):
    nFaces = summary["final_faces"]
    reader.Expect("  <Faces> AllFaces")
    reader.Count("Face_Number_Of_Nodes", summary["nodes_per_face"])
    reader.Count("Number_Of_Faces", nFaces)
    measures = []
    mesh["faceRows"] = ReadConnectivity(
        reader, "Face_To_Node", nFaces, summary["nodes_per_face"], summary["final_nodes"],
        lambda columns: measures.append(MeasureFaces(summary, mesh["positions"], columns)))
    mesh["faceMeasure"] = sum(measures)
    mesh["faceTags"] = ReadScalars(reader, "Face_Tag", nFaces)
    CheckTags(mesh["faceTags"], {t: g[1] for t, g in NewestFirst(summary["surface"]).items()}, "Face_Tag")
    reader.Expect("  </Faces> AllFaces")


def ReadCells(reader, summary, mesh):
    nCells = summary["elements"]
    nNodes = summary["nodes_per_element"]
    matNodes = {"C3D4": 1, "C3D10": 8, "CPS3": 1, "CPS6": 4}[summary["type"]]
    reader.Expect("  <Cells> AllCells")
    reader.Count("Cell_Number_Of_Faces   ", 0)
    reader.Count("Cell_Number_Of_Nodes   ", nNodes)
    reader.Count("Cell_Number_Of_MatNodes", matNodes)
    reader.Count("Cell_Number_Of_PreNodes", 0)
    reader.Count("Cell_Number_Of_VelNodes", 0)
    reader.Count("Number_Of_Cells", nCells)
    measures = []
    mixed = [x + 2 * y + 3 * z for x, y, z in zip(*mesh["positions"])] if summary["type"] in kMiddles else []

    def Visit(columns):
        measures.append(MeasureCells(summary, mesh["positions"], columns))
        CheckMiddles(summary, mixed, columns)

    mesh["cellRows"] = ReadConnectivity(reader, "Cell_To_Node", nCells, nNodes, summary["final_nodes"], Visit,
                                        kVtkColumns.get(summary["type"]))
    mesh["cellMeasure"] = sum(measures)
    types = ReadScalars(reader, "Cell_Type", nCells)
    Need(types == [kTypeCodes[summary["type"]]] * nCells, "Cell_Type: wrong type")
    mesh["cellTags"] = ReadScalars(reader, "Cell_Tag", nCells)
    expected = [i + 1 for i, section in enumerate(summary["element_section"]) for _ in range(section[1])]
    Need(mesh["cellTags"] == expected, "Cell_Tag: wrong tag")
    reader.Expect("    Initial_Solid_Geometry = ")
    tail = (b" 1.0 0.0 0.0 0.0 1.0 0.0 0.0 0.0 1.0\n" if summary["dimensions"] == 3
            else b"%24.15e%24.15e%24.15e%24.15e\n" % (1.0, 0.0, 0.0, 1.0))
    for first in range(0, nCells, kRowsAtATime):
        rows = range(first, min(first + kRowsAtATime, nCells))
        reader.ExpectBytes(b"".join(b"        %10d" % i + tail for i in rows))
    reader.Expect("  </Cells> AllCells")


def VtkList(values, isClosed=True):
    """Values in five columns, ten to a line, then a line end even after a full line."""
    pieces = []
    for first in range(0, len(values), 10):
        part = values[first:first + 10]
        pieces.append(b"%5d" * len(part) % tuple(part))
        pieces.append(b"\n" if len(part) == 10 else b"")
    return b"".join(pieces) + (b"\n" if isClosed else b"")


def VtkPoints(positions, nodes):
    x, y, z = positions
    return b"".join(b"%15.7e%15.7e%15.7e\n" % (x[i], y[i], z[i]) for i in nodes)


def ExpectVtkHead(reader, nPoints):
    for line in ("# vtk DataFile Version 3.0", "vtk output", "ASCII", "DATASET UNSTRUCTURED_GRID",
                 f"POINTS {nPoints} float"):
        reader.Expect(line)


def CheckGrid(path, mesh, points, count, nNodes, rows, vtkType, tags):
    reader = Reader(path)
    nPoints = len(mesh["nodeTags"])
    ExpectVtkHead(reader, nPoints)
    reader.ExpectBytes(points)
    reader.Expect("")
    reader.Expect(f"CELLS {count} {count * (nNodes + 1)}")
    digest = hashlib.blake2b()
    width = 6 + 10 * nNodes
    for first in range(0, count, kRowsAtATime):
        digest.update(reader.Block(min(kRowsAtATime, count - first) * width))
    Need(digest.digest() == rows, f"{reader.name}: CELLS differ from mesh.input")
    reader.Expect("")
    reader.Expect(f"CELL_TYPES {count}")
    reader.ExpectBytes(VtkList([vtkType] * count))
    reader.Expect(f"CELL_DATA {count}")
    for head, values in (("CellTag", tags), ("NodeTag", mesh["nodeTags"]), ("OnB", [1] * nPoints)):
        if head == "NodeTag":
            reader.Expect(f"POINT_DATA {nPoints}")
        reader.Expect(f"SCALARS {head} int")
        reader.Expect("LOOKUP_TABLE default")
        reader.ExpectBytes(VtkList(values))
    reader.AtEnd()


def CheckNodeSet(path, positions, nodes):
    reader = Reader(path)
    count = len(nodes)
    ExpectVtkHead(reader, count)
    reader.ExpectBytes(VtkPoints(positions, nodes) + b"\n")
    reader.Expect(f"CELLS {count} {2 * count}")
    reader.ExpectBytes(b"".join(b"%10d %10d\n" % (1, j) for j in range(count)) + b"\n")
    reader.Expect(f"CELL_TYPES {count}")
    reader.ExpectBytes(VtkList([1] * count, isClosed=False) + b"\n")
    reader.AtEnd()


def CheckVtk(folder, summary, mesh):
    points = VtkPoints(mesh["positions"], range(summary["final_nodes"]))
    CheckGrid(os.path.join(folder, "_Cells.vtk"), mesh, points, summary["elements"],
              summary["nodes_per_element"], mesh["cellRows"], kVtkTypes[summary["type"]], mesh["cellTags"])
    if summary["final_faces"] > 0:
        CheckGrid(os.path.join(folder, "_Faces.vtk"), mesh, points, summary["final_faces"],
                  summary["nodes_per_face"], mesh["faceRows"], 5 if summary["dimensions"] == 3 else 3,
                  mesh["faceTags"])
    nodesOfTag = collections.defaultdict(list)
    for node, tag in enumerate(mesh["nodeTags"]):
        nodesOfTag[tag].append(node)
    for tag, group in NewestFirst(summary["node_set"]).items():
        CheckNodeSet(os.path.join(folder, f"_NSET_{group[0]}.vtk"), mesh["positions"], nodesOfTag[tag])


def CheckFiles(folder, summary, hasVtk):
    expected = {"mesh.input"}
    if hasVtk:
        expected.add("_Cells.vtk")
        expected |= {"_Faces.vtk"} if summary["final_faces"] > 0 else set()
        expected |= {f"_NSET_{group[0]}.vtk" for group in summary["node_set"]}
    found = set(os.listdir(folder))
    Need(found == expected, f"files: unexpected {sorted(found - expected)[:3]}, missing {sorted(expected - found)[:3]}")


def CheckLog(path, summary):
    with open(path) as file:
        log = file.read()
    Need("Error>" not in log and "Warning>" not in log, "log: an error or a warning")
    done = re.findall(r"done with (\d+) (\S+)\.\n", log)
    nElementSets = summary["element_sets"]
    expected = [(str(summary["nodes"]), "nodes")]
    expected += [(str(section[1]), summary["type"] + "s") for section in summary["element_section"]]
    expected += [(str(group[1]), "nodes") for group in summary["node_set"]]
    Need(done[:len(expected)] == expected, "log: wrong number of nodes or elements read")
    rest = collections.Counter(word for _, word in done[len(expected):])
    Need(rest["cells"] == nElementSets and rest["elsets"] == summary["surfaces"], "log: wrong number of sets read")
    flips = re.findall(r"^  Numbering order of (\d+) elements has been corrected\.$", log, re.M)
    Need(flips == ([str(summary["inverted"])] if summary["inverted"] else []), "log: wrong number of corrections")
    for label, key in (("dimensions ", "dimensions"), ("nodes      ", "final_nodes"), ("elements   ", "elements"),
                       ("node groups", "node_sets"), ("face groups", "surfaces"),
                       ("cell groups", "element_sections")):
        line = f"    Number of {label} = {summary[key]}\n"
        Need(line in log, f"log: no line {line!r}")


def MaskedLog(path):
    with open(path) as file:
        log = file.read()
    log = re.sub(r"(Job (?:started|finished) at ).*", r"\1<date>", log)
    return re.sub(r"(Elapsed Time: )\S+( sec\.)", r"\1<t>\2", log)


def CheckSame(folder, log, otherFolder, otherLog):
    names = sorted(os.listdir(folder))
    Need(names == sorted(os.listdir(otherFolder)), "the other run left other files")
    for name in names:
        with open(os.path.join(folder, name), "rb") as a, open(os.path.join(otherFolder, name), "rb") as b:
            while True:
                block = a.read(1 << 20)
                Need(block == b.read(1 << 20), f"{name}: differs from the other run's")
                if not block:
                    break
    Need(MaskedLog(log) == MaskedLog(otherLog), "the log differs from the other run's")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("summary")
    parser.add_argument("folder")
    parser.add_argument("log")
    parser.add_argument("--vtk", action="store_true")
    parser.add_argument("--same-as", nargs=2, metavar=("FOLDER", "LOG"))
    options = parser.parse_args()
    try:
        summary = ReadSummary(options.summary)
        CheckLog(options.log, summary)
        CheckFiles(options.folder, summary, options.vtk)
        mesh = ReadMesh(os.path.join(options.folder, "mesh.input"), summary)
        if options.vtk:
            CheckVtk(options.folder, summary, mesh)
        if options.same_as:
            CheckSame(options.folder, options.log, *options.same_as)
    except (Fault, OSError, ValueError) as fault:
        print(f"wrong: {fault}")
        return 1
    print("right")
    return 0


if __name__ == "__main__":
    sys.exit(main())
