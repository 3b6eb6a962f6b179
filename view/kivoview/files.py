"""What the files of a run hold: grids, by the VTK library's own reader, and the sizes and groups of "mesh.input"."""
import collections, mmap, os, re, resource

import numpy
from vtkmodules.util.numpy_support import vtk_to_numpy
from vtkmodules.vtkCommonCore import vtkLogger, vtkOutputWindow, vtkStringOutputWindow
from vtkmodules.vtkIOLegacy import vtkUnstructuredGridReader

# Reading a grid takes less than so many times its file, and this besides: counts that promise more than the file holds
# must not take all memory.
MEMORY_TIMES, MEMORY_BASE = 12, 1 << 29
HEAD = 100  # bytes in which the dimension stands
LONGEST_REASON = 100  # letters: the library repeats what it does not understand
COUNTS = b"Number_Of_Nodes", b"Number_Of_Cells", b"Number_Of_Faces"
KINDS = {b"Cell": "cells", b"Face": "faces", b"Node": "nodes"}

Group = collections.namedtuple("Group", "kind name tag")
# dimension: None for an empty mesh. groups: each kind in the order of the deck. How many nodes, cells and faces.
Mesh = collections.namedtuple("Mesh", "dimension groups nodes cells faces")


class Unreadable(Exception):
    """A file is not there, or not what it should be."""


class Grid:
    """points: float array (n, 3). rows(type, width): node numbers and places of the cells of one VTK type, those that
    miss no node. tags: of each cell, in the file's order; node_tags: of each node. title: the second line.

    The file must have these tags; `node_tag_name` may be None: then there are no node_tags."""

    def __init__(self, path, tag_name, node_tag_name):
        reader, output = read(path)
        cells, tags = output.GetCells(), output.GetCellData().GetArray(tag_name)
        node_tags = output.GetPointData().GetArray(node_tag_name) if node_tag_name else tags
        if not cells or not output.GetPoints() or not tags or not node_tags:
            raise Unreadable("%s is no grid with %s" % (path, " and ".join(filter(None, (tag_name, node_tag_name)))))
        self.title = as_text(reader.GetHeader())
        self.points = vtk_to_numpy(output.GetPoints().GetData())
        self.connectivity = vtk_to_numpy(cells.GetConnectivityArray())
        self.offsets = vtk_to_numpy(cells.GetOffsetsArray())
        self.types = vtk_to_numpy(output.GetCellTypesArray())
        self.tags = vtk_to_numpy(tags)
        if not len(self.types) == len(self.tags) == len(self.offsets) - 1:
            raise Unreadable("%s has not as many types and tags as cells" % path)
        self.node_tags = vtk_to_numpy(node_tags) if node_tag_name else None
        self.finite = numpy.isfinite(self.points).all(axis=1)
        self.points[~self.finite] = 0  # nothing is drawn there, but it is in the lists that are handed on
        self.taken = 0

    def left_out(self):
        """How many cells no call of rows has given."""
        return len(self.types) - self.taken

    def rows(self, kind, width):
        places = numpy.flatnonzero((self.types == kind) & (numpy.diff(self.offsets) >= width))
        rows = self.connectivity[self.offsets[places][:, None] + numpy.arange(width)]
        there = ((rows >= 0) & (rows < len(self.points))).all(axis=1)
        there[there] = self.finite[rows[there]].all(axis=1)
        self.taken += int(there.sum())
        return (rows, places) if there.all() else (rows[there], places[there])


def memory_taken():
    """Bytes of data that this process has, as the system counts them for its limit."""
    with open("/proc/self/statm", encoding="ascii") as stream:
        return int(stream.read().split()[5]) * mmap.PAGESIZE


def as_text(said):
    """The library gives bytes where they are no UTF-8, and None for no text."""
    return said.decode("utf-8", "replace") if isinstance(said, bytes) else said or ""


def first_reason(text):
    """What the library says of the first error: the line below the one that names the place in its sources."""
    lines = [line for line in text.split("\n") if line] + ["", ""]
    reason = re.sub(r"^\w+ \(0x\w+\): | ?\(0x\w+\)| for file: .*$", "", lines[1])
    return "".join(c if " " <= c <= "~" else "?" for c in reason[:LONGEST_REASON]) or "it cannot be read"


def read(path):
    """The reader of the file at `path`, and what it has read. It goes on after an error: what it says is kept."""
    vtkLogger.SetStderrVerbosity(vtkLogger.VERBOSITY_OFF)
    said = vtkStringOutputWindow()
    vtkOutputWindow.SetInstance(said)
    if not os.path.isfile(path):
        raise Unreadable("there is no %s" % path)
    soft, hard = resource.getrlimit(resource.RLIMIT_DATA)
    most = memory_taken() + MEMORY_BASE + MEMORY_TIMES * os.path.getsize(path)
    resource.setrlimit(resource.RLIMIT_DATA, (most if soft < 0 else min(most, soft), hard))
    reader = vtkUnstructuredGridReader()
    reader.SetFileName(os.fsencode(path))
    reader.Update()
    resource.setrlimit(resource.RLIMIT_DATA, (soft, hard))
    if said.GetOutput() or reader.GetErrorCode():
        raise Unreadable("%s is no whole VTK file: %s" % (path, first_reason(as_text(said.GetOutput()))))
    return reader, reader.GetOutput()


def count_of(text, key):
    """The number behind a key; 0 where the key is missing, as it is without faces, without cells."""
    found = re.search(rb"\n    %s = +(\d{1,18})\n" % key, text)
    return int(found[1]) if found else 0


def read_mesh(path):
    """What "mesh.input" says that the VTK files do not."""
    try:
        with open(path, "rb") as stream, mmap.mmap(stream.fileno(), 0, access=mmap.ACCESS_READ) as text:
            head = re.match(rb"<Dimension>\n(?:    Dimension = ([23])D\n)?</Dimension>\n", text[:HEAD])
            tail = text[max(0, text.rfind(b"\n<Groups>\n")):] if head else b""
            counts = [count_of(text, key) for key in COUNTS] if head else []
    except (OSError, ValueError) as error:  # ValueError: an empty file cannot be mapped
        raise Unreadable("%s cannot be read: %s" % (path, getattr(error, "strerror", None) or "it is empty")) from error
    if not head or not tail.startswith(b"\n<Groups>") or not tail.rstrip().endswith(b"\n</Groups>"):
        raise Unreadable("%s is no whole mesh file" % path)
    found = re.findall(rb"^  <(Node|Face|Cell) Group> (.*)\n    \1Tag = +(-?\d{1,18})$", tail, re.M)
    groups = [Group(KINDS[kind], name.decode("utf-8", "replace"), int(tag)) for kind, name, tag in found]
    # The file has the last cell group first.
    cells = [group for group in groups if group.kind == "cells"]
    in_order = cells[::-1] + [group for group in groups if group.kind != "cells"]
    return Mesh(int(head[1]) if head[1] else None, in_order, *counts)
