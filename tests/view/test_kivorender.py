#!/usr/bin/python3
"""Pictures of small meshes, held against what was worked out beforehand; and what the command says of bad input.

    test_kivorender.py --program KIVOM --kivodeck KIVODECK     below xvfb-run; --kivodeck may be missing

The part of a picture for the mesh is 76 % of its width. At 400 by 304 it is a square of 304, and a mesh whose larger
side is 1 has 304 / 1.06 pixels for it, in the middle.
"""
import argparse, os, random, re, shutil, subprocess, sys, tempfile, unittest

from vtkmodules.util.numpy_support import vtk_to_numpy
from vtkmodules.vtkIOImage import vtkPNGReader

HERE = os.path.dirname(os.path.abspath(__file__))
ROOT = os.path.join(HERE, "..", "..")
COMMAND = os.path.join(ROOT, "view", "kivorender")
sys.dont_write_bytecode = True
sys.path.insert(0, os.path.join(ROOT, "view"))
from kivoview import colours, files, legend, picture

SIZE, SIDE, SCALE = (400, 304), 304, 304 / 1.06
WHITE = (255, 255, 255)
GIVEN = argparse.Namespace()
NOT_DRAWN = "are not drawn: of no known kind, or with nodes that are not there"

SQUARE = """*Node
1, 0., 0.
2, 1., 0.
3, 1., 1.
4, 0., 1.
*Element, type=CPS3, elset=LOWER
1, 1, 2, 3
*Element, type=CPS3, elset=UPPER
2, 1, 3, 4
*Nset, nset=LOOSE/END
4
*Elset, elset=FIRST
1
*Surface, type=ELEMENT, name=BOTTOM
FIRST, S1
"""
# A quadratic tetrahedron whose face 1-2-3, in the plane z = 0, is a surface. Its mid-side nodes are at z = BULGE.
TETRAHEDRON = """*Node
1, 0., 0., 0.
2, 1., 0., 0.
3, 0., 1., 0.
4, 0., 0., 1.
5, .5, 0., BULGE
6, .5, .5, BULGE
7, 0., .5, BULGE
8, 0., 0., .5
9, .5, 0., .5
10, 0., .5, .5
*Element, type=C3D10, elset=SOLID
1, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10
*Elset, elset=ONE
1
*Surface, type=ELEMENT, name=BASE
ONE, S1
"""


def dots(png):
    """The rows of a picture's dots from the top, each (red, green, blue)."""
    reader = vtkPNGReader()
    reader.SetMemoryBuffer(png)
    reader.SetMemoryBufferLength(len(png))
    reader.Update()
    width, height, _ = reader.GetOutput().GetDimensions()
    values = vtk_to_numpy(reader.GetOutput().GetPointData().GetScalars()).reshape(height, width, 3)
    return [[tuple(dot) for dot in row] for row in values[::-1].tolist()]


def legend_colours(rows):
    """The colours of the legend's squares, from the top."""
    found, x = [], SIDE + 12 + 5
    for above, row in zip(rows, rows[1:]):
        if row[x] != above[x] and row[x] != WHITE:
            found.append(row[x])
    return found


def at(rows, x, y, middle=(0.5, 0.5)):
    """The dot where the mesh has the point (x, y)."""
    return rows[round(SIDE / 2 - (y - middle[1]) * SCALE)][round(SIDE / 2 + (x - middle[0]) * SCALE)]


class WithFolder(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, self.folder)

    def path(self, name):
        return os.path.join(self.folder, name)

    def write(self, name, text):
        with open(self.path(name), "wb") as stream:
            stream.write(text if isinstance(text, bytes) else text.encode())

    def content(self, name):
        with open(self.path(name), "rb") as stream:
            return stream.read()

    def translate(self, deck):
        self.write("deck.inp", deck)
        subprocess.run([GIVEN.program, "deck.inp", "--vtk"], cwd=self.folder, stdout=subprocess.DEVNULL, check=True)

    def drawn(self, view=None, audit=None, with_sets=True):
        png, self.words = picture.draw(self.folder, audit, view, SIZE, with_sets)
        return dots(png)

    def command(self, *arguments, python=(), **environment):
        run = subprocess.run([sys.executable, *python, COMMAND, *arguments], cwd=self.folder, capture_output=True,
                             text=True, env={**os.environ, **environment}, timeout=60, check=False)
        self.assertNotIn("Traceback", run.stderr)
        return run.returncode, run.stdout, run.stderr

    def refused(self, status, words, *arguments, **options):
        got, _, said = self.command(*arguments, **options)
        self.assertEqual(got, status, said)
        self.assertIn(words, said)


class Pictures(WithFolder):
    def test_square(self):
        self.translate(SQUARE)
        rows = self.drawn()
        self.assertEqual((len(rows), len(rows[0])), (304, 400))
        lower, upper, bottom, end = legend_colours(rows)
        self.assertEqual(len({lower, upper, bottom, end, WHITE}), 5)
        self.assertEqual([at(rows, 0.7, 0.3), at(rows, 0.3, 0.7)], [lower, upper])
        self.assertEqual([at(rows, 0.5, 0.003), at(rows, 0.9, 0.0)], [bottom, bottom])
        # Its name has no file, its node has its tag.
        self.assertLess(max(abs(a - b) for a, b in zip(at(rows, 0, 1), end)), 12)
        for x, y in ((1.02, 0.5), (0.5, 1.02), (0.5, -0.02), (-0.02, 0.5)):
            self.assertEqual(at(rows, x, y), WHITE)
        self.assertEqual(legend_colours(self.drawn(with_sets=False)), [lower, upper, bottom])

    def test_large_and_far_away(self):
        self.translate(SQUARE)
        rows = self.drawn()
        self.translate(SQUARE.replace(", 1.", ", 3.0002e20").replace(", 0.", ", 3.0001e20"))
        away = self.drawn()
        for x, y in ((0.7, 0.3), (0.3, 0.7)):
            self.assertEqual(at(away, x, y), at(rows, x, y))

    def test_cell_that_misses_a_node(self):
        # With the last node in place of the missing one, element 2 would cover (0.3, 0.7).
        deck = ("*Node\n1, 0., 0.\n2, 1., 0.\n3, 1., 1.\n4, 0., .9\n5, .1, 1.\n6, 0., 1.\n"
                "*Element, type=CPS3, elset=ALL\n1, 1, 2, 3\n2, 1, 9, 3\n3, 4, 5, 6\n")
        self.translate(deck)
        self.assertIn(b"        -1", self.content("_Cells.vtk"))
        rows = self.drawn()
        self.assertEqual(self.words, ["1 cells or faces " + NOT_DRAWN])
        self.assertEqual(at(rows, 0.3, 0.7), WHITE)
        self.assertEqual(at(rows, 0.7, 0.3), legend_colours(rows)[0])
        status, _, said = self.command(".", "out.png", "--size", "64,64")
        self.assertEqual(status, 0)
        self.assertIn("kivorender: 1 cells or faces are not drawn: ", said)

    def test_faces_of_a_quadratic_tetrahedron(self):
        # From below: x goes to the left. Without a bulge the face is flat, and has one colour from edge to edge.
        self.translate(TETRAHEDRON.replace("BULGE", "0."))
        rows = self.drawn(view=(0, 0, -1))
        solid, base = legend_colours(rows)
        row = rows[round(SIDE / 2 + 0.25 * SCALE)]  # y = 0.25: x from 0 to 0.75
        across = [row[round(SIDE / 2 + (0.5 - x / 100) * SCALE)] for x in range(3, 73)]
        self.assertEqual(set(across), {base})
        # From the other side its three neighbours are seen, cells alone.
        rows = self.drawn(view=(1, 1, 1))
        self.assertNotIn(base, set(rows[SIDE // 2][:SIDE]))
        self.assertGreater(sum(dot[2] > dot[0] for dot in rows[SIDE // 2][:SIDE]), 100)
        self.assertGreater(solid[2], solid[0])

    def test_face_that_misses_a_node(self):
        # The face behind it keeps its own colour.
        self.translate("*Node\n1, 0., 0., 0.\n2, 1., 0., 0.\n3, 0., 1., 0.\n4, 0., 0., 1.\n"
                       "*Element, type=C3D4, elset=ALL\n1, 1, 2, 9, 4\n2, 1, 2, 3, 4\n"
                       "*Elset, elset=BAD\n1\n*Elset, elset=GOOD\n2\n"
                       "*Surface, type=ELEMENT, name=LOST\nBAD, S1\n*Surface, type=ELEMENT, name=KEPT\nGOOD, S1\n")
        rows = self.drawn(view=(0, 0, -1))
        self.assertEqual(self.words, ["2 cells or faces " + NOT_DRAWN])
        self.assertEqual(at(rows, 1 - 0.25, 0.25), legend_colours(rows)[2])

    def test_curved_faces_have_no_stripes(self):
        for bulge in ("-.1", ".1"):
            self.translate(TETRAHEDRON.replace("BULGE", bulge))
            rows = self.drawn(view=(0, 0, -1))
            row = rows[round(SIDE / 2 + 0.2 * SCALE)]  # y = 0.3: the pieces at corners 1 and 2, and the middle one
            across = [row[round(SIDE / 2 + (0.5 - x / 200) * SCALE)] for x in range(8, 132)]
            self.assertTrue(all(red > 2 * blue for red, _, blue in across), across)  # the cells are blue
            # Each piece is flat; between two there is a dot or so that shows both.
            changes = sum(a != b for a, b in zip(across, across[1:]))
            self.assertLessEqual(changes, 6)

    def test_slanted_faces_have_no_stripes(self):
        self.translate(TETRAHEDRON.replace("BULGE", "0."))
        for view in ((0.3, 0.2, -1), (-2, 1, -1)):
            reds = 0
            for row in self.drawn(view=view):
                red = [x for x in range(SIDE) if row[x][0] > 2 * row[x][2]]
                between = row[red[0]:red[-1]] if red else []
                self.assertFalse([dot for dot in between if dot[2] > dot[0]])
                reds += len(red)
            self.assertGreater(reds, SIDE * SIDE / 10)

    def test_a_glance_from_every_side(self):
        self.translate(TETRAHEDRON.replace("BULGE", "0."))
        for view in ((0, 0, 1), (0, 1, 0), (0, -1, 0), (1, 0, 0), (-1e300, 0, 1e-300), (1e-9, 0, 1), None, (1, 3, -2)):
            rows = [row[:SIDE] for row in self.drawn(view=view, with_sets=False)]
            seen = [(x, y) for y, row in enumerate(rows) for x, dot in enumerate(row) if dot != WHITE]
            low, high = [min(axis) for axis in zip(*seen)], [max(axis) + 1 for axis in zip(*seen)]
            for k in (0, 1):  # in the middle
                self.assertAlmostEqual(low[k] + high[k], SIDE, delta=3)
            self.assertAlmostEqual(max(h - l for l, h in zip(low, high)), SCALE, delta=4)
            if view and sum(abs(c) > 1e-6 * max(map(abs, view)) for c in view) == 1:  # half a square
                self.assertAlmostEqual(len(seen), 0.5 * SCALE ** 2, delta=0.02 * SCALE ** 2)

    def test_many_groups(self):
        rows = ["*Node"] + ["%d, %d., %d." % (k + 1, k // 2, k % 2) for k in range(62)]
        for k in range(60):
            rows += ["*Element, type=CPS3, elset=GROUP_%d" % k, "%d, %d, %d, %d" % (k + 1, k + 1, k + 2, k + 3)]
        self.translate("\n".join(rows) + "\n")
        drawn = self.drawn()
        shown = legend_colours(drawn)
        self.assertTrue(10 < len(shown) < 20, shown)
        # A third of a cell from its corners; 30 units are as wide as the picture.
        middles = [((3 * (k // 2) + (1 if k % 2 == 0 else 2)) / 3 / 30, (1 / 3 if k % 2 == 0 else 2 / 3) / 30)
                   for k in range(60)]
        seen = [at(drawn, x, y, (0.5, 0.5 / 30)) for x, y in middles]
        self.assertEqual(len(set(seen)), 60)
        self.assertEqual(seen[:len(shown)], shown)


class Audits(WithFolder):
    def test_failing_cell(self):
        if not GIVEN.kivodeck:
            self.skipTest("there is no kivodeck")
        self.translate(SQUARE)
        mesh = self.content("mesh.input")
        row, turned = b"         0         2         3\n", b"         0         3         2\n"
        self.write("mesh.input", mesh.replace(row, turned))
        self.assertNotEqual(self.content("mesh.input"), mesh)
        run = subprocess.run([GIVEN.kivodeck, "audit", "--vtk=failed.vtk"], cwd=self.folder, capture_output=True,
                             check=False)
        self.assertRegex(run.stdout.decode(), "orientation +FAILED 1:")
        rows = self.drawn(audit=self.path("failed.vtk"))
        shown = legend_colours(rows)
        self.assertEqual(at(rows, 0.3, 0.7), shown[0])
        self.assertEqual(at(rows, 0.7, 0.3), shown[-2])  # the good one, pale
        self.assertGreater(min(shown[-2]), 180)

    def grid(self, title, points, cells, types, checks):
        lines = ["# vtk DataFile Version 3.0", title, "ASCII", "DATASET UNSTRUCTURED_GRID"]
        lines += ["POINTS %d double" % len(points)] + ["%g %g 0" % point for point in points]
        lines += ["CELLS %d %d" % (len(cells), sum(len(cell) + 1 for cell in cells))]
        lines += [" ".join(map(str, (len(cell), *cell))) for cell in cells]
        lines += ["CELL_TYPES %d" % len(cells)] + list(map(str, types))
        lines += ["CELL_DATA %d" % len(cells), "SCALARS Check int 1", "LOOKUP_TABLE default"] + list(map(str, checks))
        self.write("failed.vtk", "\n".join(lines) + "\n")

    def test_nodes_faces_and_small_cells(self):
        self.translate(SQUARE)
        points = [(0.25, 0.5), (0.5, 0.1), (0.5, 0.3), (0.75, 0.5), (0.7501, 0.5), (0.75, 0.5001)]
        cells = [(0,), (1, 2), (3, 4, 5)]
        self.grid("Check: 8 unused-nodes 10 faces 6 orientation", points, cells, [1, 3, 5], [8, 10, 6])
        rows = self.drawn(audit=self.path("failed.vtk"))
        small, node, face = legend_colours(rows)[:3]  # in the order of the numbers
        for x, y, rgb in ((0.25, 0.5, node), (0.5, 0.2, face), (0.75, 0.5, small)):
            self.assertLess(max(abs(a - b) for a, b in zip(at(rows, x, y), rgb)), 12)

    def test_nothing_fails(self):
        self.translate(SQUARE)
        self.grid("Check: \N{LATIN SMALL LETTER E WITH ACUTE}", [], [], [], [])
        self.assertEqual(len(legend_colours(self.drawn(audit=self.path("failed.vtk")))), 2)

    def test_names_of_checks(self):
        self.assertEqual(picture.check_names("Check: 3 tags 12 shared-faces"), {3: "tags", 12: "shared-faces"})
        cut = ("Check:" + " 1 cells" * 40)[:255]
        self.assertEqual(picture.check_names(cut), {1: "cells"})
        self.assertEqual(picture.check_names("Check: 7 tags ".ljust(248, "-") + " 9 face"), {7: "tags"})


class Colours(unittest.TestCase):
    def test_neighbours_differ(self):
        for kind in colours.KINDS:
            its = [colours.colour(kind, at) for at in range(100)]
            self.assertEqual(len(set(its)), 100)
            for near in (1, 2, 3):
                for a, b in zip(its, its[near:]):
                    self.assertGreater(max(abs(x - y) for x, y in zip(a, b)), 20, (kind, a, b))

    def test_kinds_differ(self):
        # Cells are light, nodes are dark.
        for at in range(100):
            light, dark = colours.colour("cells", at), colours.colour("nodes", at)
            self.assertGreater(min(light), 120)
            self.assertLess(sum(dark), 330)

    def test_known_colours(self):
        # White, black and the middle grey of Oklab: 0.5 cubed is 0.125, which a screen shows as 99.
        for lightness, value in ((1, 255), (0, 0), (0.5, 99)):
            self.assertEqual(tuple(map(colours.screen_value, colours.linear_rgb(lightness, 0, 0))), (value,) * 3)


class Legends(unittest.TestCase):
    def entries(self, **counts):
        return [legend.Entry(kind, kind, str(k), (k, 0, 0)) for kind, count in counts.items() for k in range(count)]

    def said(self, entries):
        return [entry.word + " " + entry.name for entry in entries]

    def test_all_fit(self):
        self.assertEqual(legend.that_fit(self.entries(cells=3, faces=2), 5), self.entries(cells=3, faces=2))

    def test_more(self):
        self.assertEqual(self.said(legend.that_fit(self.entries(cells=9, nodes=2), 6)),
                         ["cells 0", "cells 1", "cells 2", "and 6 more", "nodes 0", "nodes 1"])
        self.assertEqual(self.said(legend.that_fit(self.entries(cells=9, nodes=9), 2)), ["and 9 more", "and 9 more"])
        self.assertEqual(legend.that_fit([], 4), [])


class BadInput(WithFolder):
    def setUp(self):
        super().setUp()
        self.translate(SQUARE)

    def test_usage(self):
        for arguments in ((), (".",), (".", "a.png", "b.png")):
            self.refused(2, "usage:", *arguments)
        self.refused(2, "usage:", ".", "a.png", "--vie=1,0,0")
        for value in ("0,9", "9", "99999,99999", "64,64,64", "6x4", "64,6.5", ""):
            words = "--size: two whole numbers from 32 to 4096 are wanted, such as 1200,800, not '%s'\n" % value
            self.refused(2, words, ".", "a.png", "--size=" + value)
        for value in ("0,0,0", "nan,0,1", "x", "1,2", "1,2,3,4", "1,,2", ""):
            words = "--view: three numbers that are not all 0 are wanted, such as 1,-2,1.5, not '%s'\n" % value
            self.refused(2, words, ".", "a.png", "--view=" + value)
        for name in ("a.jpg", "png", "a.png/", ""):
            self.refused(2, "PICTURE.png: a name that ends in .png is wanted, not '%s'\n" % name, ".", name)
        self.refused(1, "nowhere/a.PNG cannot be written", ".", "nowhere/a.PNG", "--size=64,64")

    def test_version_and_help(self):
        with open(os.path.join(ROOT, "CMakeLists.txt"), encoding="utf-8") as stream:
            version = re.search(r"VERSION (\d+\.\d+\.\d+)", stream.read())[1]
        self.assertEqual(self.command("--version"), (0, "kivorender %s\n" % version, ""))
        self.assertEqual(self.command("--help")[0::2], (0, ""))

    def test_missing(self):
        writes = ': "kivodeck run DECK --vtk" writes it\n'
        self.refused(2, "there is no nowhere/mesh.input" + writes, "nowhere", "a.png")
        self.refused(2, 'there is no a.vtk: "kivodeck audit --vtk=FILE" writes it\n', ".", "a.png", "--audit=a.vtk")
        os.remove(self.path("_Cells.vtk"))
        self.refused(2, "there is no ./_Cells.vtk" + writes, ".", "a.png")

    def test_files_of_another_mesh(self):
        five_nodes = SQUARE.replace("*Element", "5, 1., 2.\n*Element", 1).replace("2, 1, 3, 4", "2, 3, 5, 4")
        three_cells = SQUARE.replace("*Nset", "3, 1, 2, 4\n*Nset", 1)
        two_faces = SQUARE + "FIRST, S2\n"
        again = ": translate again with --vtk\n"
        for deck, name, differs in (
                (five_nodes, "_Cells.vtk", "4 nodes, not 5"), (three_cells, "_Cells.vtk", "2 cells, not 3"),
                (five_nodes, "_Faces.vtk", "4 nodes, not 5"), (two_faces, "_Faces.vtk", "1 faces, not 2")):
            self.translate(SQUARE)
            stale = self.content(name)
            self.translate(deck)
            self.assertEqual(self.command(".", "a.png", "--size=64,64"), (0, "", ""))
            os.remove(self.path("a.png"))
            self.write(name, stale)
            self.refused(2, "./%s is of another mesh than mesh.input (%s)" % (name, differs) + again, ".", "a.png")
            self.assertFalse(os.path.exists(self.path("a.png")))

    def test_faces_of_another_mesh(self):
        # A deck without surfaces replaces no file of faces: no new translation would help.
        without_faces = SQUARE[:SQUARE.index("*Surface")]
        self.translate(without_faces)
        rows = self.drawn()
        self.assertEqual(self.words, [self.path("_Faces.vtk") + " is not drawn: mesh.input has no faces"])
        self.assertEqual(len(legend_colours(rows)), 3)
        os.remove(self.path("_Faces.vtk"))
        self.assertEqual(self.drawn(), rows)
        self.assertEqual(self.words, [])
        self.translate(SQUARE)
        os.remove(self.path("_Faces.vtk"))
        self.drawn()
        self.assertEqual(self.words, ["faces are not drawn: there is no " + self.path("_Faces.vtk")])

    def test_missing_on_the_machine(self):
        self.refused(2, "apt-get install python3-vtk9", ".", "a.png", python=["-S"])
        self.refused(2, "apt-get install xvfb", ".", "a.png", PATH="/nowhere", DISPLAY="")

    def test_end_of_the_other_process(self):
        for name in ("xvfb-run", "xauth"):
            self.write(name, "#!/bin/sh\necho last words >&2\nkill -KILL $$\n")
            os.chmod(self.path(name), 0o755)
        self.refused(1, "the VTK library failed: a file that is not what it promises, or no screen; last words\n",
                     ".", "a.png", PATH=self.folder)

    def test_picture_that_cannot_be_written(self):
        self.refused(1, "nowhere/a.png cannot be written: No such file", ".", "nowhere/a.png", "--size=64,64")

    def test_drawn(self):
        self.assertEqual(self.command(".", "a.png", "--size=64,48"), (0, "", ""))
        self.assertEqual((len(dots(self.content("a.png"))), len(dots(self.content("a.png"))[0])), (48, 64))

    def test_damaged_files(self):
        self.write("_Cells.vtk", self.content("_Cells.vtk")[:200])
        self.refused(2, "_Cells.vtk is no whole VTK file: Error reading ascii data", ".", "a.png")
        self.assertFalse(os.path.exists(self.path("a.png")))

    def test_counts_that_lie(self):
        whole = self.content("_Cells.vtk")
        for old, new in ((b"POINTS 4", b"POINTS 2000000000"), (b"    3         0", b"  999         0")):
            self.assertIn(old, whole)
            self.write("_Cells.vtk", whole.replace(old, new))
            status, _, said = self.command(".", "a.png")
            self.assertIn(status, (1, 2))
            self.assertRegex(said, "^kivorender: .*\n$")


class Reading(WithFolder):
    """Without the command around it, which would only take time."""

    def setUp(self):
        super().setUp()
        self.translate(SQUARE)
        self.whole = self.content("_Cells.vtk")

    def unreadable(self, text):
        """Bytes that are no grid of cells with tags."""
        self.write("cut.vtk", text)
        with self.assertRaises(files.Unreadable, msg=text[-80:]):
            files.Grid(self.path("cut.vtk"), "CellTag", "NodeTag")

    def test_cut_anywhere(self):
        files.Grid(self.path("_Cells.vtk"), "CellTag", "NodeTag")
        for length in range(self.whole.index(b"SCALARS OnB") - 1):  # nothing is drawn of what follows
            self.unreadable(self.whole[:length])

    def test_foreign(self):
        for text in (bytes(range(256)) * 10, b"\xff\xfe text\n" * 40, random.Random(1).randbytes(3000)):
            self.unreadable(text)
        self.unreadable(self.content("mesh.input"))
        self.unreadable(self.whole.replace(b"CellTag", b"OtherOne"))
        self.unreadable(self.whole.replace(b"  1.0000000e+00", b"            nan", 1))
        self.unreadable(self.whole.replace(b"UNSTRUCTURED_GRID", b"POLYDATA"))
        self.unreadable(self.whole.replace(b"CELLS 2 8", b"CELLS -2 -8"))
        self.unreadable(self.whole.replace(b"CELL_DATA 2", b"CELL_DATA 200"))
        self.unreadable(self.whole.replace(b"CELL_TYPES 2\n    5    5", b"CELL_TYPES 1\n    5"))

    def test_unknown_kinds_and_numbers_out_of_range(self):
        self.write("odd.vtk", self.whole.replace(b"    5    5\n", b"    5   99\n").replace(
            b"         0         1         2", b"         0         1 123456789"))
        grid = files.Grid(self.path("odd.vtk"), "CellTag", "NodeTag")
        self.assertEqual(len(grid.rows(5, 3)[0]), 0)
        self.assertEqual(grid.left_out(), 2)

    def test_mesh_file(self):
        dimension, groups, *counts = files.read_mesh(self.path("mesh.input"))
        self.assertEqual((dimension, counts), (2, [4, 2, 1]))  # nodes, cells, faces
        self.assertEqual(groups, [("cells", "LOWER", 1), ("cells", "UPPER", 2), ("nodes", "LOOSE/END", 1),
                                  ("faces", "BOTTOM", 1)])
        mesh = self.content("mesh.input")
        for text in (b"", b"\n", mesh[:50], mesh[:-30], mesh[10:], mesh.replace(b"<Groups>", b"<Group>"), bytes(1000)):
            self.write("bad.input", text)
            with self.assertRaises(files.Unreadable):
                files.read_mesh(self.path("bad.input"))

    def test_empty_mesh(self):
        self.translate("*Heading\n")
        self.assertEqual(files.read_mesh(self.path("mesh.input")), (None, [], 0, 0, 0))
        with self.assertRaises(picture.CannotDraw):
            self.drawn()


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--program", required=True)
    parser.add_argument("--kivodeck")
    _, rest = parser.parse_known_args(namespace=GIVEN)
    GIVEN.program = os.path.abspath(GIVEN.program)
    unittest.main(argv=sys.argv[:1] + rest)


if __name__ == "__main__":
    main()
