#!/usr/bin/python3
"""Plain decks read by other programs: they find in them what the decks before mean.

    second_opinions.py --kivodeck PATH

Blocks of hexahedra and wedges, each used twice, once shifted and turned, and plates of quadrilaterals become plain
decks. What they hold is known here from the grid. meshio has to read it: coordinates, cells and the members of sets;
cgx the same numbers; ccx, by an analysis of one step, the volume of each cell group, the area of each surface and the
nodes of each set; the VTK library, of the files of `run --vtk`, volumes, areas, and that neighbours fit. Exit status:
0 all agree, 1 something does not, 77 when none of the four is installed.
"""
import argparse, itertools, json, math, os, re, shutil, subprocess, sys, tempfile

try:
    import meshio
except ImportError:
    meshio = None
try:
    from vtkmodules.util.numpy_support import vtk_to_numpy
    from vtkmodules.vtkFiltersGeometry import vtkDataSetSurfaceFilter
    from vtkmodules.vtkFiltersVerdict import vtkCellSizeFilter
    from vtkmodules.vtkIOLegacy import vtkUnstructuredGridReader
except ImportError:
    vtk_to_numpy = None

SIZE = (3.0, 2.0, 1.5)
CELLS = (3, 2, 2)
TIME_LIMIT = 60
# Corners of elements in a cell of the grid, by half steps; a wedge is half a cell.
SQUARE = ((0, 0), (2, 0), (2, 2), (0, 2))
SHAPES = {"C3D8": [[(x, y, z) for z in (0, 2) for x, y in SQUARE]],
          "C3D6": [[(x, y, z) for z in (0, 2) for x, y in half] for half in (SQUARE[:3], (SQUARE[0],) + SQUARE[2:])],
          "CPS4": [[(x, y, 0) for x, y in SQUARE]]}
QUADRATIC = {"C3D20": "C3D8", "C3D15": "C3D6", "CPS8": "CPS4"}
NODES_OF = {"triangle": 3, "triangle6": 6, "tetra": 4, "tetra10": 10}


def middles(corners):
    """The places in the middle of the edges of a square, a wedge or a hexahedron, in the order of a deck."""
    n = len(corners) if corners[-1][2] == corners[0][2] else len(corners) // 2
    rings = [corners[at:at + n] for at in range(0, len(corners), n)]
    pairs = [(ring[i], ring[(i + 1) % n]) for ring in rings for i in range(n)]
    pairs += zip(*rings) if len(rings) == 2 else []
    return [tuple((a + b) // 2 for a, b in zip(*pair)) for pair in pairs]


def turned(point):
    """Where the second instance has a point: shifted by 10 in x, turned by 90 degrees about the z axis."""
    return -point[1], point[0] + 10, point[2]


def both(points):
    return rounded(place for point in points for place in (point, turned(point)))


def rounded(points):
    return sorted(tuple(round(x, 9) + 0.0 for x in point) for point in points)


class Block:
    """A deck, and what is in it: points and, by name, the members of node sets, areas and volumes."""

    def __init__(self, kind):
        self.kind, linear = kind, QUADRATIC.get(kind, kind)
        self.dimension = 2 if linear == "CPS4" else 3
        size = SIZE[:self.dimension] + (0.0,) * (3 - self.dimension)
        cells = CELLS[:self.dimension] + (1,) * (3 - self.dimension)
        self.numbers, self.elements, top = {}, [], []
        for cell in itertools.product(*map(range, cells)):
            for corners in SHAPES[linear]:
                places = corners + (middles(corners) if kind in QUADRATIC else [])
                places = [tuple(2 * c + p for c, p in zip(cell, place)) for place in places]
                self.elements.append([self.numbers.setdefault(place, len(self.numbers) + 1) for place in places])
                if self.dimension == 3 and cell[2] == cells[2] - 1 or self.dimension == 2 and cell[1] == 0:
                    top.append(len(self.elements))
        points = {place: tuple(p * s / (2 * c) for p, s, c in zip(place, size, cells)) for place in
                  itertools.product(*(range(2 * c + 1) if s else [0] for s, c in zip(size, cells)))}
        left = [n for place, n in self.numbers.items() if place[0] == 0]
        self.text = self.part({n: points[place] for place, n in self.numbers.items()}, left, top)
        self.points = both(points[place] for place in self.numbers)
        self.all_points = both(points.values())
        # In second order a node is made in the middle of each face that is cut: of all on the left.
        whole = [point for place, point in points.items() if place[0] == 0
                 and (kind in QUADRATIC or place in self.numbers)]
        self.sets = {"A.LEFT": whole, "B.LEFT": [turned(point) for point in whole]}
        side = SIZE[0] * (SIZE[1] if self.dimension == 3 else 1)
        self.areas = {"A.TOP": side, "B.TOP": side}
        self.volume = math.prod(SIZE[:self.dimension])

    def part(self, points, left, top):
        rows = ["*Heading", "*Part, name=P", "*Node"]
        rows += ["%d, %r, %r, %r" % (n, *point) for n, point in points.items()]
        rows += ["*Element, type=%s, elset=Body" % self.kind]
        rows += [listing([e] + nodes) for e, nodes in enumerate(self.elements, 1)]
        rows += ["*Nset, nset=Left"] + ["%d," % n for n in left] + ["*Elset, elset=Above"] + ["%d," % e for e in top]
        rows += ["*Surface, type=ELEMENT, name=Top", "Above, " + ("S2" if self.dimension == 3 else "S1"), "*End Part"]
        rows += ["*Assembly, name=C", "*Instance, name=A, part=P", "*End Instance", "*Instance, name=B, part=P",
                 "10., 0., 0.", "0., 0., 0., 0., 0., 1., 90.", "*End Instance", "*End Assembly"]
        return "\n".join(rows) + "\n"


def listing(numbers):
    """A row of the deck, continued where it has more than 16 fields."""
    lines = [", ".join(map(str, numbers[at:at + 15])) for at in range(0, len(numbers), 15)]
    return ",\n".join(lines)


class Wrong(Exception):
    pass


def need(same, what, *values):
    if not same:
        raise Wrong(what + ": " + ", ".join(map(str, values)))


def run(argv, folder):
    done = subprocess.run(argv, cwd=folder, stdin=subprocess.DEVNULL, capture_output=True, text=True,
                          timeout=TIME_LIMIT)
    need(done.returncode == 0, "%s ends with status" % os.path.basename(argv[0]), done.returncode, done.stdout[-400:])
    return done.stdout


def ask_meshio(block, folder, meaning):
    plain, known = os.path.join(folder, "plain.inp"), os.path.join(folder, "known.inp")
    with open(plain) as source, open(known, "w") as file:
        file.write(source.read().replace("CPS6", "STRI65"))  # meshio has only this name for the triangle of six nodes
    mesh = meshio.read(known, file_format="abaqus")
    points = [tuple(point) + (0.0,) * (3 - len(point)) for point in mesh.points.tolist()]
    used = sorted({n for cells in mesh.cells for row in cells.data for n in row})
    need(used == list(range(meaning["nodes"])), "nodes of cells", len(used), meaning["nodes"])
    need(sum(len(cells.data) for cells in mesh.cells) == meaning["elements"], "elements", mesh.cells)
    need(all(NODES_OF.get(cells.type) == len(cells.data[0]) for cells in mesh.cells), "types", mesh.cells)
    found = rounded(points)
    need(len(set(found)) == len(found) == meaning["nodes"], "nodes", len(found), meaning["nodes"])
    need(set(block.points) <= set(found) <= set(block.all_points), "places of nodes", len(found))
    need(block.kind in QUADRATIC or found == block.points, "no node need be made", len(found))
    need(set(mesh.point_sets) == set(block.sets), "node sets", *mesh.point_sets)
    for name, expected in block.sets.items():
        need(rounded(points[n] for n in mesh.point_sets[name]) == rounded(expected), "members of " + name)


def ask_cgx(block, folder, meaning):
    with open(os.path.join(folder, "job.fbd"), "w") as file:
        file.write("read plain.inp inp\nprnt se\nquit\n")
    said = run(["cgx", "-bg", "job.fbd"], folder)
    counts = {name: (int(n), int(e)) for name, n, e in re.findall(r"^\d+ +(\S+) stat:\S+ n:(\d+) e:(\d+)", said, re.M)}
    need(counts["all"] == (meaning["nodes"], meaning["elements"]), "nodes and elements", counts["all"])
    for each in meaning["node_sets"]:
        need(counts[each["name"]][0] == each["members"] == len(block.sets[each["name"]]), "nodes of " + each["name"],
             counts[each["name"]])
    for each in meaning["cell_groups"]:
        need(counts[each["name"]][1] == each["elements"], "elements of " + each["name"], counts[each["name"]])


def ask_ccx(block, folder, meaning):
    """Solids alone: ccx makes plates thick. A step that loads nothing prints volumes, areas and the nodes of sets."""
    groups = [each["name"] for each in meaning["cell_groups"]]
    step = ["*Material, name=M", "*Elastic", "1., 0.3"]
    step += [row for name in groups for row in ("*Solid Section, elset=%s, material=M" % name, "")][:-1]
    step += ["*Boundary"] + ["%s, 1, 3" % name for name in block.sets] + ["*Step", "*Static"]
    step += [row for name in block.sets for row in ("*Node print, nset=" + name, "U")]
    step += [row for name in groups for row in ("*El print, totals=only, elset=" + name, "EVOL")]
    step += [row for name in block.areas for row in ("*Section print, name=P, surface=" + name, "SOAREA")]
    shutil.copy(os.path.join(folder, "plain.inp"), os.path.join(folder, "job.inp"))
    with open(os.path.join(folder, "job.inp"), "a") as file:
        file.write("\n".join(row for row in step + ["*End step"] if row) + "\n")
    run(["ccx", "job"], folder)
    with open(os.path.join(folder, "job.dat")) as file:
        parts = re.split(r"^ (displacements|total volume|statistics).* set (\S+) and time.*$", file.read(), flags=re.M)
    found = {(what, name): text for what, name, text in zip(*[iter(parts[1:])] * 3)}
    for name, expected in block.sets.items():
        rows = found["displacements", name].strip().split("\n")
        need(len(rows) == len(expected), "nodes of " + name, len(rows), len(expected))
    for name in groups:
        volume = float(found["total volume", name])
        need(math.isclose(volume, block.volume, rel_tol=1e-6), "volume of " + name, volume, block.volume)
    for name, expected in block.areas.items():
        # The numbers of each part stand below its title; of the last one the first is the area.
        area = float(re.search(r"area, normal force.*\n\s*(\S+)", found["statistics", name]).group(1))
        need(math.isclose(area, expected, rel_tol=1e-6), "area of " + name, area, expected)


def sizes(grid):
    """The volume, area or length of each cell, which is as long as its type has dimensions."""
    measure = vtkCellSizeFilter()
    measure.SetInputData(grid)
    measure.Update()
    data = measure.GetOutput().GetCellData()
    return [sum(vtk_to_numpy(data.GetArray(name))) for name in ("Volume", "Area", "Length")]


def read_vtk(path):
    reader = vtkUnstructuredGridReader()
    reader.SetFileName(path)
    reader.Update()
    return reader.GetOutput()


def ask_vtk(block, folder, meaning):
    """The files of `kivodeck run --vtk`: sizes, and the sides that no two cells share, which are the outside alone."""
    cells = read_vtk(os.path.join(folder, "_Cells.vtk"))
    need(cells.GetNumberOfCells() == meaning["elements"], "cells", cells.GetNumberOfCells())
    whole = 0 if block.dimension == 3 else 1  # in the list of sizes
    need(math.isclose(sizes(cells)[whole], 2 * block.volume, rel_tol=1e-12), "size", sizes(cells)[whole])
    faces = sizes(read_vtk(os.path.join(folder, "_Faces.vtk")))[whole + 1]
    need(math.isclose(faces, sum(block.areas.values()), rel_tol=1e-12), "size of surfaces", faces)
    if block.dimension == 3:
        skin = vtkDataSetSurfaceFilter()
        skin.SetInputData(cells)
        skin.SetNonlinearSubdivisionLevel(0)
        skin.Update()
        a, b, c = SIZE
        need(math.isclose(sizes(skin.GetOutput())[1], 4 * (a * b + b * c + c * a), rel_tol=1e-12), "outside")


def check(kind, kivodeck, readers):
    block = Block(kind)
    with tempfile.TemporaryDirectory() as folder:
        with open(os.path.join(folder, "deck.inp"), "w") as file:
            file.write(block.text)
        report = json.loads(run([kivodeck, "flatten", "--format=json", "deck.inp", "-o", "plain.inp"], folder))
        if vtk_to_numpy:
            run([kivodeck, "run", "--vtk", "deck.inp"], folder)
        for reader in readers:
            reader(block, folder, report["meaning"])


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--kivodeck", required=True, type=os.path.abspath)
    given = parser.parse_args()
    readers = {"VTK": vtk_to_numpy and ask_vtk, "meshio": meshio and ask_meshio, "cgx": shutil.which("cgx") and ask_cgx,
               "ccx": shutil.which("ccx") and ask_ccx}
    if not any(readers.values()):
        print("skipped: neither VTK nor meshio nor cgx nor ccx is installed")
        return 77
    bad = 0
    for kind, (name, reader) in itertools.product((*SHAPES, *QUADRATIC), readers.items()):
        if not reader or name == "ccx" and kind.startswith("CPS"):
            continue
        try:
            check(kind, given.kivodeck, [reader])
            print("passed %s, %s" % (kind, name))
        except (Wrong, subprocess.TimeoutExpired, SystemExit) as wrong:
            print("FAILED %s, %s: %s" % (kind, name, wrong))
            bad += 1
    return 1 if bad else 0


if __name__ == "__main__":
    sys.exit(main())
