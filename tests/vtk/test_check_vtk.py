#!/usr/bin/python3
"""Shows that every check of check_vtk.py can fail: files of the whole-run cases, broken one at a time.

The good files are those of ../cases/vtk.
Exit status 77 when VTK or meshio is not installed.
"""
import os, shutil, tempfile, unittest
from unittest import mock

import check_vtk  # leaves with 77 where a library is missing
from check_vtk import TETRA, TETRA10, TRIANGLE, Grid

HERE = os.path.dirname(os.path.abspath(__file__))
CASES = os.path.join(HERE, "..", "cases", "vtk")


class BrokenFiles(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, self.folder)

    def take(self, case):
        shutil.rmtree(self.folder)
        shutil.copytree(os.path.join(CASES, case, "files"), self.folder)

    def edit(self, name, old, new):
        path = os.path.join(self.folder, name)
        with open(path) as stream:
            text = stream.read()
        self.assertIn(old, text, "the break must meet something to break")
        with open(path, "w") as stream:
            stream.write(text.replace(old, new, 1))

    def reported(self, expected, **flags):
        found = check_vtk.check_run(self.folder, **flags)
        self.assertTrue(any(expected in line for line in found), "%r is not in %r" % (expected, found))

    def agrees(self, **flags):
        self.assertEqual(check_vtk.check_run(self.folder, **flags), [])

    def broken(self, old, new, expected, name="_Cells.vtk", case="c3d4-faces"):
        with self.subTest(case=case, name=name, old=old, new=new):
            self.take(case)
            self.agrees()
            self.edit(name, old, new)
            self.reported(expected)

    # c3d4-faces: five points, two tetrahedra, six triangles, NodeTag 0 0 0 0 1, OnB 1 1 1 1 1.
    def test_every_break_is_reported(self):
        # The header.
        self.broken("Version 3.0", "Version 4.2", "is missing")
        self.broken("vtk output\n", "", "is missing")
        self.broken("POINTS 5 float", "POINTS 5 double", "not float")
        # Short arrays.
        last = "  1.0000000e+00  1.0000000e+00  1.0000000e+00\n"
        self.broken(last, "", "is not three coordinates")
        self.broken("    0    0    0    0    1\n", "    0    0    0    0\n", "NodeTag: 4 numbers where 5 should be")
        self.broken("    1    1    1    1    1\n", "    1    1    1    1\n", "OnB: 4 numbers where 5 should be")
        self.broken("default\n    1    1\n", "default\n    1\n", "CellTag: 1 numbers where 2 should be")
        self.broken("   10   10\n", "   10\n", "CELL_TYPES: 1 numbers where 2 should be")
        self.broken("    3         0         1         2\n", "", "CELLS: 20 numbers where 24 should be",
                    name="_Faces.vtk")
        # Long arrays.
        self.broken("1.0000000e+00\n\nCELLS", "1.0000000e+00\n" + "  1.0000000e+00" * 3 + "\n\nCELLS",
                    "POINTS: more than 5 points")
        self.broken("    0    0    0    0    1\n", "    0    0    0    0    1    0\n",
                    "NodeTag: 6 numbers where 5 should be")
        self.broken("   1    2    2    2\n", "   1    2    2    2    2\n", "CellTag: 7 numbers where 6 should be",
                    name="_Faces.vtk")
        # Missing and needless sections.
        self.broken("SCALARS OnB int\nLOOKUP_TABLE default\n    1    1    1    1    1\n", "", "too early")
        self.broken("SCALARS OnB", "SCALARS Onb", "where OnB int should")
        self.broken("SCALARS CellTag int", "SCALARS CellTag float", "where CellTag int should")
        self.broken("CELL_TYPES 1\n    1\n",
                    "CELL_TYPES 1\n    1\nPOINT_DATA 1\nSCALARS NodeTag int\nLOOKUP_TABLE default\n    1\n",
                    "something follows", name="_NSET_TIP.vtk")
        # Counts.
        self.broken("CELLS 2 10", "CELLS 2 9", "CELLS: 10 numbers where 9 should be")
        self.broken("CELLS 2 10", "CELLS 3 10", "CELLS: 2 cells where 3 should be")
        self.broken("    4         0", "   10         0", "does not fit")
        self.broken("CELL_TYPES 2", "CELL_TYPES 1", "CELL_TYPES: not for 2 cells")
        self.broken("CELL_DATA 2", "CELL_DATA 1", "CELL_DATA: not for 2 cells")
        self.broken("POINT_DATA 5", "POINT_DATA 4", "POINT_DATA: not for 5 points")
        # No number.
        self.broken("  1.0000000e+00", "  1.0000000x+00", "is no float")
        self.broken("    4         0", "    4       0.5", "is no int")
        # Ranges.
        self.broken("         1         4\n", "         1         5\n", "names point 5 of 5")
        self.broken("         4         1\n", "         4        99\n", "names point 99 of 5", name="_Faces.vtk")
        self.broken("         1         4\n", "         1        -1\n", "names point -1 of 5")
        self.broken("         1          0", "         1          1", "names point 1 of 1", name="_NSET_TIP.vtk")
        # Missing nodes.
        # The cell 1 -1 2 of this case names a node that the deck has not: that -1 passes, no other number does.
        self.broken("        -1", "        -2", "names point -2 of 3", case="missing-node")
        self.broken("        -1", "         0", "CELLS: entry 1", case="missing-node")
        self.broken("         1        -1", "        -1        -1", "names point -1 of 3", case="missing-node")
        self.broken("         1        -1", "        -1         1", "names point -1 of 3", name="_Faces.vtk",
                    case="missing-node")
        # Wrong values.
        self.broken("default\n    1    1\n", "default\n    1    2\n", "CellTag: entry 1 is 2")
        self.broken("    0    1\n", "    1    1\n", "NodeTag: entry 3 is 1")
        self.broken("    1    1    1    1    1\n", "    1    1    0    1    1\n", "OnB: entry 2 is 0")
        self.broken("   10   10\n", "   10    9\n", "CELL_TYPES: entry 1 is 9")
        self.broken("    2    2    1    2", "    2    1    2    2", "CellTag: entry 1 is 1", name="_Faces.vtk")
        self.broken("  1.0000000e+00", "  1.0000002e+00", "POINTS: point 1 is")
        self.broken("  1.0000000e+00", "  0.0000000e+00", "POINTS: point 0 is", name="_NSET_TIP.vtk")
        # Swapped nodes.
        self.broken("         0         1         2         3", "         0         2         1         3",
                    "CELLS: entry 0 is (0, 2, 1, 3)")
        self.broken("         0         1         2", "         0         2         1", "CELLS: entry 2 is (0, 2, 1)",
                    name="_Faces.vtk")
        # The store's order (once round the triangle) in place of VTK's.
        self.broken("         0         2         1         5         4         3",
                    "         0         5         2         4         1         3", "CELLS: entry 0", case="cpe6-flip")

    def test_beyond_float(self):
        # The libraries can't read these, the text is compared all the same. Fields of three-digit exponents touch.
        self.take("coords")
        self.agrees()
        for name in ("mesh.input", "_Cells.vtk"):
            with open(os.path.join(self.folder, name)) as stream:
                text = stream.read()
            text = text.replace("  -1.500000000000000e+03", " -1.500000000000000e-300")
            text = text.replace(" -1.5000000e+03", "-1.5000000e-300")
            with open(os.path.join(self.folder, name), "w") as stream:
                stream.write(text)
        self.agrees(oriented=True)
        self.edit("_Cells.vtk", "-1.5000000e-300", "-1.5000001e-300")
        self.agrees()  # the eighth digit is rounded
        self.edit("_Cells.vtk", "-1.5000001e-300", "-1.5000003e-300")
        self.reported("POINTS: point 0")

    def test_no_number_has_no_size(self):
        grid = Grid([], [(0, 1, 2)], [TRIANGLE], {}, {})
        positions = [(0.0, 0.0, 0.0), (1.0, 0.0, 0.0), (float("nan"), 1.0, 0.0)]
        self.assertEqual(check_vtk.check_sizes(grid, positions, True), [])
        self.assertEqual(check_vtk.check_sizes(grid, positions, False), ["cell 0 measures nan"])

    def test_files(self):
        for name in ("_Cells.vtk", "_Faces.vtk", "_NSET_TIP.vtk", "mesh.input"):
            with self.subTest(missing=name):
                self.take("c3d4-faces")
                os.remove(os.path.join(self.folder, name))
                self.reported(name + ": ")
        for case, name in (("c3d4-no-faces", "_Faces.vtk"), ("no-cells", "_Cells.vtk"), ("c3d4-faces", "_NSET_OLD.vtk")):
            with self.subTest(needless=name):
                self.take(case)
                self.agrees()
                open(os.path.join(self.folder, name), "w").close()
                self.reported(name + ": nothing in mesh.input accounts for this file")

    def test_equal_names(self):
        # Of two sets FIX the one with tag 1 remains: node 3 (0, 1), not the two of tag 3.
        self.broken("  0.0000000e+00  1.0000000e+00", "  1.0000000e+00  0.0000000e+00", "POINTS: point 0",
                    name="_NSET_FIX.vtk", case="nset-equal-names")

    def both(self, old_row, new_row, old_vtk, new_vtk):
        """The same change in "mesh.input" and in the VTK file, so that they agree about it."""
        self.edit("mesh.input", old_row, new_row)
        self.edit("_Cells.vtk", old_vtk, new_vtk)

    def test_good(self):
        self.take("c3d4-faces")
        self.agrees(good=True, oriented=True)
        old, new = "         0         1         2         3", "         0         2         1         3"
        self.both(old, new, old, new)
        self.agrees()
        self.reported("cell 0 measures -0.166667", good=True)
        self.reported("cell 0 measures -0.166667", oriented=True)

    def test_degenerate(self):
        self.take("c3d4-faces")
        old, new = "         0         1         2         3", "         0         1         2         2"
        self.both(old, new, old, new)
        self.agrees(oriented=True)
        self.reported("cell 0 measures 0", good=True)

    def test_good_in_the_plane(self):
        self.take("cps3-no-faces")
        self.agrees(good=True)
        old, new = "         0         2         3", "         0         3         2"
        self.both(old, new, old, new)
        self.reported("cell 0 measures -0.5", good=True)

    def test_straight(self):
        for case in ("c3d10-faces", "cpe6-flip", "mixed-2d"):
            self.take(case)
            self.agrees(straight=True)
        # Two mid-edge nodes exchanged, in both files alike.
        self.take("c3d10-faces")
        old, new = "         3         4         5         6", "         3         5         4         6"
        self.both(old, new, old, new)
        self.agrees()
        self.reported("node 4 is not in the middle", straight=True)
        self.take("cpe6-flip")
        self.both("5         2         4         1         3", "4         2         5         1         3",
                  "5         4         3", "4         5         3")
        self.agrees()
        self.reported("node 3 is not in the middle", straight=True)

    def test_closed(self):
        for case in ("c3d4-faces", "c3d10-faces", "cpe6-flip"):
            self.take(case)
            self.agrees(closed=True)
        for case in ("cpe3-faces", "mixed-tet", "c3d10-flip"):
            self.take(case)
            self.reported("the faces do not close", closed=True)
        self.take("c3d4-no-faces")
        self.reported("the faces enclose 0", closed=True)

    def test_closed_the_wrong_way(self):
        points = [(0, 0, 0), (1, 0, 0), (0, 1, 0), (0, 0, 1)]
        cell = Grid(points, [(0, 1, 2, 3)], [TETRA], {}, {})
        inward = [(0, 1, 2), (1, 3, 2), (2, 3, 0), (3, 1, 0)]
        faces = Grid(points, inward, [TRIANGLE] * 4, {}, {})
        self.assertEqual(check_vtk.check_closed(cell, faces, points, 3), [])
        outward = faces._replace(cells=[face[::-1] for face in inward])
        self.assertIn("enclose -0.166", check_vtk.check_closed(cell, outward, points, 3)[0])
        one_turned = faces._replace(cells=inward[:3] + [(1, 3, 0)])
        self.assertEqual(check_vtk.check_closed(cell, one_turned, points, 3), ["the faces do not close"])
        missing = faces._replace(cells=inward[:3] + [(3, -1, 0)])
        self.assertEqual(check_vtk.check_closed(cell, missing, points, 3), ["a face misses a node"])
        two_cells = cell._replace(cells=cell.cells * 2, types=[TETRA] * 2)
        self.assertIn("the cells measure 0.333", check_vtk.check_closed(two_cells, faces, points, 3)[0])

    def test_pieces_of_a_quadratic_tetrahedron(self):
        # Cut along its linear faces a straight one measures what its corners do, wherever its inside diagonal runs.
        points = [(0, 0, 0), (2, 0, 0), (0, 2, 0), (0, 0, 2), (1, 0, 0), (1, 1, 0), (0, 1, 0), (0, 0, 1), (1, 0, 1), (0, 1, 1)]
        pieces = [check_vtk.signed_size([points[k] for k in piece], TETRA) for piece in check_vtk.PIECES10]
        self.assertEqual(len(pieces), 8)
        self.assertTrue(all(size > 0 for size in pieces))
        self.assertAlmostEqual(sum(pieces), check_vtk.signed_size(points[:4], TETRA10))

    def witness(self, ask, change, expected):
        """A witness is given a text that says something else than the file."""
        path = os.path.join(CASES, "c3d4-faces", "files", "_Cells.vtk")
        text = check_vtk.read_text(path, True)
        self.assertEqual(ask(path, text), [])
        found = ask(path, change(text))
        self.assertTrue(any(expected in line for line in found), found)

    def test_library_can_disagree(self):
        ask = check_vtk.ask_library
        self.witness(ask, lambda t: t._replace(points=t.points[:4]), "VTK: 5 points where the text has 4")
        self.witness(ask, lambda t: t._replace(cells=t.cells[:1]), "VTK: 2 cells where the text has 1")
        self.witness(ask, lambda t: t._replace(points=[(9, 9, 9)] + t.points[1:]), "VTK: point 0")
        self.witness(ask, lambda t: t._replace(cells=[(0, 2, 1, 3)] + t.cells[1:]), "VTK: cell 0")
        self.witness(ask, lambda t: t._replace(types=[9, 10]), "VTK: cell 0")
        self.witness(ask, lambda t: t._replace(cell_data={"CellTag": [1, 2]}), "VTK: CellTag: entry 1")
        self.witness(ask, lambda t: t._replace(point_data={**t.point_data, "OnB": [1, 1, 1, 1]}), "VTK: OnB: 5 entries")
        self.witness(ask, lambda t: t._replace(point_data={**t.point_data, "NodeTag": [0] * 5}), "VTK: NodeTag: entry 4")
        self.witness(ask, lambda t: t._replace(point_data={"OnB": [1] * 5}), "more arrays")
        path = os.path.join(CASES, "c3d4-faces", "files", "_Cells.vtk")
        with mock.patch.object(check_vtk, "signed_size", return_value=-1.0):
            self.assertIn("measures 0.166", check_vtk.ask_library(path, check_vtk.read_text(path, True))[0])
        self.assertEqual(check_vtk.ask_library(os.path.join(HERE, "check_vtk.py"), None), ["VTK: this is no unstructured grid"])

    def test_meshio_can_disagree(self):
        ask = check_vtk.ask_meshio
        self.witness(ask, lambda t: t._replace(points=t.points[:4]), "meshio: points")
        self.witness(ask, lambda t: t._replace(cells=[(0, 2, 1, 3)] + t.cells[1:]), "meshio: cells: entry 0")
        self.witness(ask, lambda t: t._replace(types=[TETRA, TETRA10]), "meshio: cells: entry 1")
        self.witness(ask, lambda t: t._replace(cell_data={"CellTag": [1, 2]}), "meshio: CellTag: entry 1")
        self.witness(ask, lambda t: t._replace(point_data={"NodeTag": [0] * 5}), "meshio: NodeTag: entry 4")
        self.witness(ask, lambda t: t._replace(point_data={"OnB": [1] * 4}), "meshio: OnB: 5 entries")


if __name__ == "__main__":
    unittest.main()
