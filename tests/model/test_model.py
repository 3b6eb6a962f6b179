#!/usr/bin/env python3
"""Pins the model itself: tiny meshes with answers worked out by hand, the generator's own knowledge of its meshes, the
spelling, the reader's refusals, and that run_model.py sees a difference where there is one.

The decks of this file are written as sections, in the deck's own terms; every expected number was found with pencil
and paper from the rules, not taken from a run.
"""
import os
import random
import re
import subprocess
import sys
import tempfile
import unittest

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path[:0] = [HERE, os.path.join(HERE, "..", "..", "tools")]

import kivomesh                                                        # noqa: E402
from deck import Deck, Odd, Row, Section                               # noqa: E402
from generate import generate, spelled                                 # noqa: E402
from model import cut_row, expect, leading_int, low_word               # noqa: E402
from run_model import first_difference, mask, mesh_difference          # noqa: E402
from spell import spell_int, spell_real                                # noqa: E402


def section(keyword, rows=(), *params):
    return Section(keyword, list(params), [Row(list(row)) for row in rows])


def nodes(*rows):
    return section("NODE", rows)


def elements(kind, name, *rows):
    return section("ELEMENT", rows, ("TYPE", kind), ("ELSET", name))


def surface(name, *rows):
    return section("SURFACE", rows, ("TYPE", "ELEMENT"), ("NAME", name))


def nset(name, *numbers):
    return section("NSET", [numbers] if numbers else [], ("NSET", name))


def elset(name, *numbers):
    return section("ELSET", [numbers] if numbers else [], ("ELSET", name))


def answer(*sections, vtk=False):
    return expect(Deck(list(sections)), vtk)


def faces(mesh):
    return [(face.tag, tuple(face.nodes)) for face in mesh.faces]


def cells(mesh):
    return [tuple(cell.nodes) for cell in mesh.cells]


CORNER = nodes([10, 0.0, 0.0], [20, 1.0, 0.0], [30, 0.0, 1.0])
UNIT_TETRAHEDRON = nodes([1, 0.0, 0.0, 0.0], [2, 1.0, 0.0, 0.0], [3, 0.0, 1.0, 0.0], [4, 0.0, 0.0, 1.0])
SIX_NODES = nodes([1, 0.0, 0.0], [2, 2.0, 0.0], [3, 0.0, 2.0], [4, 1.0, 0.0], [5, 1.0, 1.0], [6, 0.0, 1.0])
SQUARE = nodes([1, 0.0, 0.0], [2, 1.0, 0.0], [3, 1.0, 1.0], [4, 0.0, 1.0])

ONE_TRIANGLE_MESH = """\
<Dimension>
    Dimension = 2D
</Dimension>

<Node_Geometry>
    Minimum Edge Charac =    7.071067811865475e-01
    Minimum Edge Length =    1.000000000000000e+00
    Maximum Edge Length =    1.414213562373095e+00
  <Coordinates> AllNodes
    Number_Of_Nodes =          3
    Current_Positions = $
                 0   0.000000000000000e+00   0.000000000000000e+00
                 1   1.000000000000000e+00   0.000000000000000e+00
                 2   0.000000000000000e+00   1.000000000000000e+00
    Previous_Positions = $
                 0   0.000000000000000e+00   0.000000000000000e+00
                 1   1.000000000000000e+00   0.000000000000000e+00
                 2   0.000000000000000e+00   1.000000000000000e+00
    Initial_Positions = $
                 0   0.000000000000000e+00   0.000000000000000e+00
                 1   1.000000000000000e+00   0.000000000000000e+00
                 2   0.000000000000000e+00   1.000000000000000e+00
    Node_Tag = $
                 0         1         0
    IsOnBoundary = $
                 1         1         1
  </Coordinates> AllNodes
</Node_Geometry>

<Connectivity>
  <Faces> AllFaces
    Face_Number_Of_Nodes =          2
    Number_Of_Faces =          1
    Face_To_Node = $
          0    2         0         1
    Face_Tag = $
                 1
  </Faces> AllFaces
  <Cells> AllCells
    Cell_Number_Of_Faces    =          0
    Cell_Number_Of_Nodes    =          3
    Cell_Number_Of_MatNodes =          1
    Cell_Number_Of_PreNodes =          0
    Cell_Number_Of_VelNodes =          0
    Number_Of_Cells =          1
    Cell_To_Node = $
          0    3         0         1         2
    Cell_Type = $
                 3
    Cell_Tag = $
                 1
    Initial_Solid_Geometry = $
                 0   1.000000000000000e+00   0.000000000000000e+00   0.000000000000000e+00   1.000000000000000e+00
  </Cells> AllCells
</Connectivity>

<Groups>
  <Node Group> FIX
    NodeTag =          1
  </Node Group> FIX
  <Face Group> LOAD
    FaceTag =          1
  </Face Group> LOAD
  <Cell Group> E
    CellTag =          1
    Minimum_Edge_Length   =    1.000000000000000e+00
    Maximum_Edge_Length   =    1.414213562373095e+00
    Characteristic_length =    7.071067811865475e-01
  </Cell Group> E
</Groups>

""".replace("$", "")

ONE_TRIANGLE_LOG = """\
<banner>
Job started at <date>

Reading Abaqus mesh from deck.inp ...
  Reading Nodes  ... done with 3 nodes.
  Reading Elements E ... done with 1 CPS3s.
  Reading NSET FIX ... done with 1 nodes.
  Reading Surface LOAD ... done with 1 elsets.
Elapsed Time: <t> sec.

Translating mesh ... $
  Mesh summary:
    Number of dimensions  = 2
    Number of nodes       = 3
    Number of elements    = 1
    Number of node groups = 1
    Number of face groups = 1
    Number of cell groups = 1
    Maximum edge length   = 1.414214e+00
    Minimum edge length   = 1.000000e+00
    Characteristic length = 7.071068e-01
Elapsed Time: <t> sec.

Dumping files ...
  Dumping KIVO file mesh.input ... done.
  Dumping VTK file _Cells.vtk ... done.
  Dumping VTK file _Faces.vtk ... done.
  Dumping VTK file _NSET_FIX.vtk ... done.
Elapsed Time: <t> sec.

Job finished at <date>

""".replace("$", "")

ONE_TRIANGLE_POINTS = """\
# vtk DataFile Version 3.0
vtk output
ASCII
DATASET UNSTRUCTURED_GRID
POINTS 3 float
  0.0000000e+00  0.0000000e+00  0.0000000e+00
  1.0000000e+00  0.0000000e+00  0.0000000e+00
  0.0000000e+00  1.0000000e+00  0.0000000e+00

"""
ONE_TRIANGLE_POINT_DATA = """\
POINT_DATA 3
SCALARS NodeTag int
LOOKUP_TABLE default
    0    1    0
SCALARS OnB int
LOOKUP_TABLE default
    1    1    1
"""
ONE_TRIANGLE_CELLS = ONE_TRIANGLE_POINTS + """\
CELLS 1 4
    3         0         1         2

CELL_TYPES 1
    5
CELL_DATA 1
SCALARS CellTag int
LOOKUP_TABLE default
    1
""" + ONE_TRIANGLE_POINT_DATA
ONE_TRIANGLE_FACES = ONE_TRIANGLE_POINTS + """\
CELLS 1 3
    2         0         1

CELL_TYPES 1
    3
CELL_DATA 1
SCALARS CellTag int
LOOKUP_TABLE default
    1
""" + ONE_TRIANGLE_POINT_DATA
ONE_TRIANGLE_SET = """\
# vtk DataFile Version 3.0
vtk output
ASCII
DATASET UNSTRUCTURED_GRID
POINTS 1 float
  1.0000000e+00  0.0000000e+00  0.0000000e+00

CELLS 1 2
         1          0

CELL_TYPES 1
    1
"""


def one_triangle():
    return answer(CORNER, elements("CPS3", "E", [5, 10, 20, 30]), nset("FIX", 20), surface("LOAD", ["5", "S1"]),
                  vtk=True)


class HandWorked(unittest.TestCase):
    maxDiff = None

    def test_one_triangle_to_the_byte(self):
        found = one_triangle()
        self.assertEqual(found.log, ONE_TRIANGLE_LOG)
        self.assertEqual({name: text.decode() for name, text in found.files.items()}, {
            "mesh.input": ONE_TRIANGLE_MESH, "_Cells.vtk": ONE_TRIANGLE_CELLS, "_Faces.vtk": ONE_TRIANGLE_FACES,
            "_NSET_FIX.vtk": ONE_TRIANGLE_SET})

    def test_triangle_the_wrong_way_round(self):
        # Listed 10, 30, 20: the labels S1, S2, S3 are the edges 10-30, 30-20, 20-10.
        found = answer(CORNER, elements("CPS3", "E", [5, 10, 30, 20]), surface("A", ["5", "S1"]),
                       surface("B", ["5", "S2"]), surface("C", ["5", "S3"]))
        self.assertEqual(cells(found.mesh), [(0, 1, 2)])
        self.assertIn("  Numbering order of 1 elements has been corrected.\n", found.log)
        # Slot 0 is the edge 20-30 (B, tag 2), slot 1 the edge 30-10 (A, tag 3), slot 2 the edge 10-20 (C, tag 1).
        self.assertEqual(faces(found.mesh), [(2, (1, 2)), (3, (2, 0)), (1, (0, 1))])

    def test_flat_triangle_counts_as_corrected(self):
        found = answer(nodes([1, 0.0, 0.0], [2, 1.0, 1.0], [3, 2.0, 2.0]), elements("CPS3", "E", [1, 1, 2, 3]))
        self.assertEqual((found.mesh.corrected, cells(found.mesh)), (1, [(0, 2, 1)]))

    def test_tetrahedron_with_every_face_label(self):
        labels = [surface(name, ["1", label]) for name, label in zip("ABCD", ("S1", "S2", "S3", "S4"))]
        found = answer(UNIT_TETRAHEDRON, elements("C3D4", "E", [1, 1, 2, 3, 4]), *labels)
        # A to D have the tags 4 to 1. S1 is 1-2-3 (opposite corner 3), S2 is 1-2-4 (opposite 2), S3 is 2-3-4 (0),
        # S4 is 1-3-4 (1).
        self.assertEqual(faces(found.mesh), [(2, (1, 3, 2)), (1, (2, 3, 0)), (3, (3, 1, 0)), (4, (0, 1, 2))])
        self.assertEqual((found.mesh.shortest, found.mesh.longest), (1.0, 2.0 ** 0.5))
        self.assertAlmostEqual(found.mesh.characteristic, 3.0 ** -0.5, delta=1e-9)
        self.assertLess(found.mesh.characteristic, 3.0 ** -0.5)      # by the guard against a normal of no length

    def test_tetrahedron_the_wrong_way_round(self):
        labels = [surface(name, ["1", label]) for name, label in zip("ABCD", ("S1", "S2", "S3", "S4"))]
        found = answer(UNIT_TETRAHEDRON, elements("C3D4", "E", [1, 1, 3, 2, 4]), *labels)
        # Listed 1, 3, 2, 4: S1 is 1-3-2, S2 is 1-3-4, S3 is 3-2-4, S4 is 2-1-4.
        self.assertEqual(cells(found.mesh), [(0, 1, 2, 3)])
        self.assertEqual(faces(found.mesh), [(2, (1, 3, 2)), (3, (2, 3, 0)), (1, (3, 1, 0)), (4, (0, 1, 2))])

    def test_six_node_triangle(self):
        found = answer(SIX_NODES, elements("CPE6", "E", [1, 1, 2, 3, 4, 5, 6]), surface("A", ["1", "S1"]),
                       surface("B", ["1", "S2"]))
        self.assertEqual(cells(found.mesh), [(0, 3, 1, 4, 2, 5)])
        # B (tag 1) on the edge 2-3 through node 5, A (tag 2) on the edge 1-2 through node 4, each in two halves.
        self.assertEqual(faces(found.mesh), [(1, (1, 4)), (1, (4, 2)), (2, (0, 3)), (2, (3, 1))])
        self.assertEqual((found.mesh.shortest, found.mesh.longest), (2.0, 8.0 ** 0.5))
        self.assertAlmostEqual(found.mesh.characteristic, 0.5 ** 0.5, delta=1e-15)     # half of the altitude sqrt(2)

    def test_six_node_triangle_the_wrong_way_round(self):
        found = answer(SIX_NODES, elements("CPE6", "E", [1, 1, 3, 2, 6, 5, 4]), surface("A", ["1", "S1"]))
        self.assertEqual(cells(found.mesh), [(0, 3, 1, 4, 2, 5)])
        self.assertEqual(faces(found.mesh), [(1, (2, 5)), (1, (5, 0))])                # S1 is 1-3 through node 6

    def test_ten_node_tetrahedron_the_wrong_way_round(self):
        points = [[0.0, 0.0, 0.0], [2.0, 0.0, 0.0], [0.0, 2.0, 0.0], [0.0, 0.0, 2.0], [1.0, 0.0, 0.0], [1.0, 1.0, 0.0],
                  [0.0, 1.0, 0.0], [0.0, 0.0, 1.0], [1.0, 0.0, 1.0], [0.0, 1.0, 1.0]]
        table = nodes(*([at + 1] + point for at, point in enumerate(points)))
        # Corners 1, 3, 2, 4; then the middles of 1-3, 3-2, 2-1, 1-4, 3-4, 2-4.
        found = answer(table, elements("C3D10", "E", [1, 1, 3, 2, 4, 7, 6, 5, 8, 10, 9]), surface("A", ["1", "S1"]))
        self.assertEqual(cells(found.mesh), [tuple(range(10))])
        self.assertEqual(faces(found.mesh), [(1, (6, 4, 5)), (1, (0, 4, 6)), (1, (1, 5, 4)), (1, (2, 6, 5))])
        self.assertAlmostEqual(found.mesh.characteristic, 3.0 ** -0.5, delta=1e-9)     # half of 2/sqrt(3)

    def test_glued_pair_shares_no_node(self):
        found = answer(SQUARE, elements("CPS3", "C_GLUE", [1, 1, 2, 3], [2, 1, 3, 4]), surface("A", ["1", "S3"]),
                       surface("B", ["2", "S1"]))
        self.assertEqual(cells(found.mesh), [(0, 1, 2), (3, 4, 5)])
        self.assertEqual([node.xyz[:2] for node in found.mesh.nodes], [(0, 0), (1, 0), (1, 1), (0, 0), (1, 1), (0, 1)])
        self.assertEqual(faces(found.mesh), [(2, (2, 0)), (1, (3, 4))])

    def test_of_two_glued_groups_of_one_name_the_newest_is_split(self):
        found = answer(SQUARE, elements("CPS3", "C_A", [1, 1, 2, 3]), elements("CPS3", "C_A", [2, 1, 3, 4]))
        # The second group comes last into the store and is the one found: its cell gets the nodes behind the others,
        # node 4 is left without a cell and drops out.
        self.assertEqual(cells(found.mesh), [(0, 1, 2), (3, 4, 5)])
        self.assertEqual([node.number for node in found.mesh.nodes], [1, 2, 3, 1, 3, 4])
        found = answer(SQUARE, elements("CPS3", "C_A", [9, 1, 2, 3]), elements("CPS3", "A", [2, 1, 3, 4]))
        self.assertEqual([node.number for node in found.mesh.nodes], [1, 3, 4, 1, 2, 3])
        self.assertEqual(cells(found.mesh), [(0, 1, 2), (3, 4, 5)])

    def test_first_set_and_first_surface_win(self):
        found = answer(CORNER, elements("CPS3", "E", [1, 10, 20, 30]), nset("P", 10, 20), nset("Q", 20, 30, 99),
                       elset("ALL", 1, 77), surface("S", ["ALL", "S1"]), surface("T", ["1", "S1"], ["1", "S2"]))
        self.assertEqual([node.tag for node in found.mesh.nodes], [2, 2, 1])
        self.assertEqual(faces(found.mesh), [(1, (1, 2)), (2, (0, 1))])
        self.assertEqual([(g.name, g.tag) for g in found.mesh.node_groups], [("P", 2), ("Q", 1)])
        self.assertEqual([(g.name, g.tag) for g in found.mesh.face_groups], [("S", 2), ("T", 1)])

    def test_blocks_by_first_number_groups_backwards(self):
        found = answer(elements("CPS3", "HIGH", [11, 1, 2, 3], [10, 1, 3, 4]), elements("CPS3", "LOW", [12, 2, 3, 4],
                       [3, 1, 2, 4]), elements("CPS3", "NONE"), SQUARE)
        # Newest first: NONE, LOW, HIGH; NONE keeps its place and its tag.
        self.assertEqual([(g.name, g.tag) for g in found.mesh.cell_groups], [("HIGH", 3), ("LOW", 2), ("NONE", 1)])
        self.assertEqual([cell.number for cell in found.mesh.cells], [3, 12, 10, 11])
        none = found.mesh.cell_groups[2]
        self.assertEqual((none.shortest, none.longest, none.characteristic), (1e15, 0.0, 1e15))

    def test_unused_nodes_drop_out(self):
        found = answer(nodes([1, 9.0, 9.0], [2, 0.0, 0.0], [3, 1.0, 0.0], [4, 8.0, 8.0], [5, 0.0, 1.0]),
                       elements("CPS3", "E", [1, 2, 3, 5]))
        self.assertEqual([node.number for node in found.mesh.nodes], [2, 3, 5])
        self.assertEqual(cells(found.mesh), [(0, 1, 2)])

    def test_missing_corner_is_neither_turned_nor_measured(self):
        found = answer(CORNER, elements("CPS3", "E", [1, 10, 30, 99]), surface("A", ["1", "S1"], ["1", "S2"]))
        self.assertEqual(cells(found.mesh), [(0, 1, -1)])
        self.assertEqual(faces(found.mesh), [(1, (1, -1)), (1, (0, 1))])
        self.assertIn("\n  Error> 1 references of elements name no node of the deck.\n", found.log)
        self.assertNotIn("corrected", found.log)
        self.assertEqual((found.mesh.shortest, found.mesh.longest, found.mesh.characteristic), (1e15, 0.0, 1e15))

    def test_surface_entries_that_miss(self):
        found = answer(CORNER, elements("CPS3", "E", [7, 10, 20, 30]), elset("7", 99), elset("X", 1), elset("X", 7),
                       surface("A", ["7", "S1"], ["07ABC", "S2"], ["NONE", "S1"], ["4294967303", "S1"], ["X", "S4"],
                               ["X", "S0"], ["X", "S-"], ["X", "S4294967299"]))
        # "7" is a set that names nobody, "07ABC" is element 7; of the two X the second counts; S4 and S0 lie outside;
        # a label's number keeps its low 32 bits.
        self.assertEqual(faces(found.mesh), [(1, (1, 2)), (1, (2, 0))])
        self.assertEqual(found.log.count("\n  Error> in ABQ_SetCellFaceTagByGID\n"), 2)
        self.assertEqual(found.log.count("\n  Error> Needed to read both ELSET name & Face/edge id label.\n"), 1)
        self.assertIn("done with 7 elsets.\n", found.log)
        # A name's field takes 256 characters; what is left of it stands before the label: "XXS1", "1S1" and "X2S1".
        found = answer(CORNER, elements("CPS3", "E", [7, 10, 20, 30]), elset("X" * 256, 7),
                       surface("A", ["X" * 258, "S1"], ["X" * 256 + "1", "S1"], ["X" * 257 + "2", "S1"]))
        message = "\n  Error> Needed to read both ELSET name & Face/edge id label.\n"
        self.assertIn("Reading Surface A ... " + message * 2 + "done with 1 elsets.\n", found.log)
        self.assertEqual(faces(found.mesh), [(1, (1, 2))])

    def test_rows_that_lack_something(self):
        found = answer(section("NODE", [[1, 5.0], [None, 1.0, 2.0], [2]], ("NSET", "N")),
                       elements("C3D4", "E", [1, 1, 2]), section("NSET", [[1, 2, None, 7], [9]], ("NSET", "S")))
        self.assertIn("  Reading Nodes N ... \n  Error> needed nodal y-coordinate.\n\n  Error> needed nodal id.\n"
                      "\n  Error> needed nodal x-coordinate.\n\n  Error> needed nodal y-coordinate.\n"
                      "done with 3 nodes.\n", found.log)
        self.assertIn("  Reading Elements E ... " + "\n  Error> Needed to read 4 nodes.\n" * 2 + "done with 1 C3D4s.\n",
                      found.log)
        self.assertIn("  Reading NSET S ... done with 3 nodes.\n", found.log)
        # The node without a number is number 0 and comes first; so the cell names 1, 2, 0, 0, which is flat and turned.
        self.assertEqual(cells(found.mesh), [(1, 0, 2, 0)])

    def test_sections_that_are_refused(self):
        found = answer(section("NSET", [[1, 9, 1]], ("NSET", "R"), ("GENERATE", None)),
                       section("ELEMENT", [[1, 1, 2, 3, 4]], ("TYPE", "S4R")),
                       section("SURFACE", [], ("TYPE", "NODE"), ("NAME", "T")),
                       section("ELEMENT", [], ("TYPE", "CPS3"), ("ELSET", "L" * 300)))
        self.assertIn("  Reading NSET R ... \n  Error> Undesirable parameters: GENERATE.\n"
                      "  Warning> Cannot find ELSET name for Cells.\n"
                      "  Reading Elements  ... \n  Error> Unrecognized element type: S4R.\n"
                      "         Supports TETs: C3D4, C3D10;\n"
                      "         Supports TRIs: STRI3, STRI65, CPE3, CPS3, CPE6, CPS6.\n"
                      "  Reading Surface T ... \n  Error> only ELEMENT surface type is supported (NODE).\n"
                      "\n  Error> the value of ELSET is longer than 256 characters.\n"
                      "  Reading Elements " + "L" * 256 + " ... done with 0 CPS3s.\n", found.log)

    def test_line_that_is_too_long(self):
        # 1023 times "1234," and then "1234" fill a line of 5119 characters; behind "123," and "12," there is room for
        # nothing and for one digit more.
        rows = [Row([Odd("1234", 1234)] * 1024), Row([Odd("1234", 1234)] * 1023 + [Odd("123", 123), Odd("7", 7)]),
                Row([Odd("1234", 1234)] * 1023 + [Odd("12", 12), Odd("1234", 1234)])]
        self.assertEqual([len(",".join(entry.text for entry in row.fields)) for row in rows], [5119, 5120, 5122])
        wanted = [[1234] * 1024, [1234] * 1023 + [123], [1234] * 1023 + [12, 1]]
        for row, numbers in zip(rows, wanted):
            long = {} if row is rows[0] else {id(row): 9}
            found = expect(Deck([Section("NSET", [("NSET", "S")], [row])]), too_long=long)
            message = "" if row is rows[0] else "\n  Error> line 9 is longer than 5119 characters.\n"
            self.assertIn("  Reading NSET S ... %sdone with %d nodes.\n" % (message, len(numbers)), found.log)
            self.assertEqual(cut_row(row.fields) if long else [entry.value for entry in row.fields], numbers)

    def test_deck_without_elements(self):
        found = answer(SQUARE, nset("A", 1), vtk=True)
        self.assertEqual(found.files["mesh.input"].decode(),
                         "<Dimension>\n</Dimension>\n\n<Connectivity>\n</Connectivity>\n\n<Groups>\n"
                         "  <Node Group> A\n    NodeTag =          1\n  </Node Group> A\n</Groups>\n\n")
        self.assertIn("    Number of nodes       = 0\n", found.log)
        self.assertIn("    Minimum edge length   = 1.000000e+15\n", found.log)
        self.assertEqual(sorted(found.files), ["_NSET_A.vtk", "mesh.input"])
        self.assertTrue(found.files["_NSET_A.vtk"].endswith(b"POINTS 0 float\n\nCELLS 0 0\n\nCELL_TYPES 0\n\n"))

    def test_node_set_of_ten_ends_in_two_line_ends(self):
        table = nodes(*([n, float(n), float(n * n)] for n in range(1, 13)))
        rows = [[n, n, n + 1, n + 2] for n in range(1, 11)]
        found = answer(table, elements("CPS3", "E", *rows), nset("TEN", *range(1, 11)), nset("A/B", 1), vtk=True)
        self.assertTrue(found.files["_NSET_TEN.vtk"].endswith(b"CELL_TYPES 10\n" + b"    1" * 10 + b"\n\n"))
        self.assertIn(b"CELL_TYPES 10\n" + b"    5" * 10 + b"\n\nCELL_DATA 10\n", found.files["_Cells.vtk"])
        self.assertIn("\n  Dumping VTK file _NSET_A/B.vtk ...\n Error> cannot open file _NSET_A/B.vtk\n\nElapsed",
                      found.log)

    def test_numbers_in_texts(self):
        self.assertEqual([leading_int(text) for text in ("7ABC", "+07", "-3", "ABC", "", "-")],
                         [7, 7, -3, None, None, None])
        self.assertEqual([low_word(n) for n in (5, 2**32 + 5, 2**31, 2**70, -2**70)], [5, 5, -2**31, -1, 0])


class ReaderRefuses(unittest.TestCase):
    """Each fault is one change to a good file; the refusal names the line."""

    def read(self, text):
        with tempfile.TemporaryDirectory() as folder:
            path = os.path.join(folder, "mesh.input")
            with open(path, "wb") as stream:
                stream.write(text.encode("latin-1"))
            return kivomesh.read(path)

    def refused(self, text, line):
        with self.assertRaises(kivomesh.MeshError) as caught:
            self.read(text)
        self.assertRegex(str(caught.exception), r"mesh\.input:%d: ." % line)

    def changed(self, line, old, new):
        lines = ONE_TRIANGLE_MESH.split("\n")
        self.assertIn(old, lines[line - 1])
        lines[line - 1] = lines[line - 1].replace(old, new, 1)
        return "\n".join(lines)

    def test_good_file_is_read(self):
        mesh = self.read(ONE_TRIANGLE_MESH)
        self.assertEqual(mesh.current, [(0.0, 0.0), (1.0, 0.0), (0.0, 1.0)])
        self.assertEqual((mesh.previous, mesh.initial), (mesh.current, mesh.current))
        self.assertEqual((mesh.node_tags, mesh.on_boundary), ([0, 1, 0], [1, 1, 1]))
        self.assertEqual((mesh.faces, mesh.face_tags, mesh.face_width), ([(0, 1)], [1], 2))
        self.assertEqual((mesh.cells, mesh.cell_types, mesh.cell_tags), ([(0, 1, 2)], [3], [1]))
        self.assertEqual((mesh.dimension, mesh.cell_nodes, mesh.material_nodes), (2, 3, 1))
        self.assertEqual([(g.name, g.tag) for g in mesh.node_groups + mesh.face_groups + mesh.cell_groups],
                         [("FIX", 1), ("LOAD", 1), ("E", 1)])
        for entry in (mesh, mesh.cell_groups[0]):
            self.assertEqual((entry.shortest, entry.longest, entry.characteristic),
                             (1.0, 1.414213562373095, 0.7071067811865475))

    def test_changed_lines(self):
        for line, old, new in (
                (2, "2D", "4D"), (3, "</", "<"), (6, "7.071", " 7.07"), (6, "e-01", "e-1"), (8, "Maximum", "Maximal"),
                (9, " AllNodes", ""), (10, "  3", " 3"), (10, " 3", "-3"), (11, " = ", " ="), (13, " 1 ", " 2 "),
                (12, "0.0", ".00"), (24, " 1 ", "01 "), (24, " 1 ", " 1"), (26, "1", "01"), (27, "  </", "  <"),
                (28, "</", "<"),
                (32, "2", "1"), (33, "1", "2"), (33, "1", "0"), (35, " 0 ", " 1 "), (35, "    2 ", "    3 "),
                (35, "         1", "         3"), (35, "         1", "        -2"), (37, "1", "x"), (37, "1", "1 "),
                (40, "0", "1"), (41, "3", "4"), (42, "1", "4"), (43, "0", "1"), (45, "1", "2"),
                (47, "    3 ", "    2 "),
                (49, "3", "4"), (53, "1.0000", "2.0000"), (55, "</", "<"), (58, "FIX", "fix"), (59, "Node", "Face"),
                (60, "FIX", "FIXED"), (61, "Face", "Fade"), (63, "LOAD", "LAOD"), (65, "Tag", "tag"),
                (66, "Length   =", "Length =")):
            text = self.changed(line, old, new)
            with self.subTest(line=line, old=old, new=new):
                with self.assertRaises(kivomesh.MeshError) as caught:
                    self.read(text)
                at = int(re.search(r"mesh\.input:(\d+): ", str(caught.exception)).group(1))
                # A wrong count or type shows where its list ends, at the latest at the end of the cells.
                self.assertTrue(line <= at <= (54 if 40 < line < 54 else line + 4), "%s: %s" % (line, caught.exception))

    def test_every_line_is_needed(self):
        lines = ONE_TRIANGLE_MESH.split("\n")
        # A whole group could be left out, a single line of it cannot.
        for at in range(len(lines) - 1):
            with self.subTest(line=at + 1), self.assertRaises(kivomesh.MeshError):
                self.read("\n".join(lines[:at] + lines[at + 1:]))

    def test_every_line_stands_once(self):
        lines = ONE_TRIANGLE_MESH.split("\n")
        for at in range(len(lines) - 1):
            with self.subTest(line=at + 1), self.assertRaises(kivomesh.MeshError):
                self.read("\n".join(lines[:at + 1] + lines[at:]))

    def test_file_that_breaks_off(self):
        for size in range(0, len(ONE_TRIANGLE_MESH) - 1, 7):
            with self.subTest(size=size), self.assertRaises(kivomesh.MeshError):
                self.read(ONE_TRIANGLE_MESH[:size])
        self.refused(ONE_TRIANGLE_MESH[:-1], len(ONE_TRIANGLE_MESH.split("\n")) - 1)

    def test_other_line_ends_and_more_text(self):
        self.refused(ONE_TRIANGLE_MESH.replace("\n", "\r\n"), 1)
        self.refused(ONE_TRIANGLE_MESH + "\n", len(ONE_TRIANGLE_MESH.split("\n")))

    def test_missing_section(self):
        head, rest = ONE_TRIANGLE_MESH.split("<Node_Geometry>")
        self.refused(head + rest.split("</Node_Geometry>\n\n")[1], 5)
        self.refused(ONE_TRIANGLE_MESH.split("<Groups>")[0], 57)

    def test_command(self):
        tool = os.path.join(HERE, "..", "..", "tools", "kivomesh.py")
        with tempfile.TemporaryDirectory() as folder:
            path = os.path.join(folder, "mesh.input")
            for text, status in ((ONE_TRIANGLE_MESH, 0), (ONE_TRIANGLE_MESH[:-2], 1)):
                with open(path, "w") as stream:
                    stream.write(text)
                run = subprocess.run([sys.executable, tool, path], stdout=subprocess.PIPE, stderr=subprocess.PIPE)
                self.assertEqual(run.returncode, status)
                if status == 0:
                    self.assertEqual(run.stdout.decode(), 'dimension 2, 3 nodes, 1 faces, 1 cells\n'
                                     'node group 1 "FIX": 1 nodes\nface group 1 "LOAD": 1 faces\n'
                                     'cell group 1 "E": 1 cells\n')


def compress(line):
    """A physical line as the reader keeps it."""
    line = line.split("\x00")[0].split("**")[0]
    return "".join(c for c in line.upper() if "!" <= c <= "~" and c not in ";\\")


class Spelling(unittest.TestCase):
    def test_numbers_keep_their_value(self):
        rng = random.Random(5)
        values = [0.0, -0.0, 1.0, 0.1, -2.5e-7, 1e22, 123456.789, 5e-324] + [
            rng.uniform(-1, 1) * 10.0 ** rng.randint(-12, 12) for _ in range(300)]
        for number in values:
            for _ in range(20):
                text = spell_real(rng, number)
                self.assertEqual(repr(float(text)), repr(number), text)
        for number in (0, 5, -7, 2**31 - 1, -2**31):
            self.assertEqual({int(spell_int(rng, number)) for _ in range(100)}, {number})

    def test_deck_reads_back_as_its_sections(self):
        """The spelled deck, read by the plain rules for lines, gives the sections' own texts and values again."""
        for seed in range(1, 201):
            deck = generate(seed)
            lines = [compress(line) for line in spelled(deck, seed)[0].decode("latin-1").split("\n")]
            lines = [line for line in lines if line][len(deck.preamble):]

            def logical():
                text = lines.pop(0)
                while text.endswith(",") and lines:
                    text += lines.pop(0)
                return text

            for section_ in deck.sections:
                with self.subTest(seed=seed, section=section_.line()):
                    rows = list(section_.rows)
                    wanted = section_.line()
                    if wanted.endswith(","):                       # takes its first row with it
                        wanted += compress(rows.pop(0))
                    self.assertEqual(logical(), wanted)
                    for row in rows:
                        if isinstance(row, str):
                            self.assertEqual(lines.pop(0), compress(row))
                            continue
                        alone = section_.keyword in ("NSET", "ELSET")
                        fields = (lines.pop(0) if alone else logical()).split(",")
                        for entry, text in zip(row.fields, fields):
                            if isinstance(entry, (int, float)):
                                self.assertEqual(repr(type(entry)(text)), repr(entry))
                            else:
                                self.assertEqual(text, entry.text if isinstance(entry, Odd) else entry or "")
                        rest = fields[len(row.fields):]
                        self.assertIn(rest, (list(row.extra), list(row.extra) + [""]))
            self.assertEqual(lines, [])


class Generated(unittest.TestCase):
    def test_model_agrees_with_what_the_generator_knows(self):
        counted = faced = 0
        for seed in range(1, 401):
            deck = generate(seed)
            mesh = expect(deck).mesh
            with self.subTest(seed=seed):
                if deck.known["corrected"] is not None:
                    counted += 1
                    self.assertEqual(mesh.corrected, deck.known["corrected"])
                if deck.known["faces"] is not None:
                    faced += 1
                    self.assertEqual(self.tagged_faces(deck), deck.known["faces"])
        self.assertGreater(counted, 200)
        self.assertGreater(faced, 100)

    def tagged_faces(self, deck):
        """The tagged faces of the model's cells: slot k is the face opposite corner k."""
        blocks = [section_ for section_ in deck.sections if section_.keyword == "ELEMENT"]
        mesh = expect(deck).mesh
        found = {}
        for group in mesh.cell_groups:
            block = [section_ is group.section for section_ in blocks].index(True)
            for cell in group.cells:
                corners = [mesh.nodes[cell.nodes[column]].number for column in cell.family.corners]
                tags = {}
                for slot, tag in enumerate(cell.slots):
                    if tag:
                        tags[tuple(sorted(corners[:slot] + corners[slot + 1:]))] = tag
                if tags and len(set(corners)) == len(corners):
                    found[block, cell.number] = tags
        return found

    def test_same_seed_same_deck(self):
        self.assertEqual(spelled(generate(17), 17)[0], spelled(generate(17), 17)[0])
        self.assertNotEqual(spelled(generate(17), 17)[0], spelled(generate(18), 18)[0])

    def test_decks_reach_everything(self):
        """What the decks are for does come up in the first few hundred."""
        seen = set()
        for seed in range(1, 401):
            deck = generate(seed)
            text, too_long = spelled(deck, seed)
            found = expect(deck, True, too_long)
            seen |= set(re.findall(r"Error> [A-Za-z ]+|Warning> [A-Za-z ]+|has been corrected", found.log))
            seen |= {"family %d" % cell.family.code for cell in found.mesh.cells}
            seen.add("dimension %d" % found.mesh.dimension)
            seen |= {name for name, here in (
                ("both dimensions", len({cell.family.dimension for cell in found.mesh.cells}) == 2),
                ("split", any(cell.marked for cell in found.mesh.cells)),
                ("missing", any(-1 in nodes_ for nodes_ in cells(found.mesh))),
                ("CRLF", b"\r\n" in text), ("no line end", not text.endswith(b"\n")), ("NUL", b"\x00" in text),
                ("tab", b"\t" in text), ("long", any(len(line) > 5119 for line in text.split(b"\n"))),
                ("wide number", re.search(rb"[,\n]\d{10},", text) is not None), ("large", len(found.mesh.cells) > 900),
                ("a set twice", len({g.name for g in found.mesh.node_groups}) < len(found.mesh.node_groups))) if here}
        for wanted in ["Error> needed nodal id", "Error> needed nodal x", "Error> needed nodal y",
                       "Error> Needed to read ",
                       "Error> Needed to read both ELSET name ", "Error> Undesirable parameters", "Error> in ABQ",
                       "Error> Unrecognized element type", "Error> only ELEMENT surface type is supported ",
                       "Error> cannot open file ", "Warning> Cannot find ELSET name for Cells", "has been corrected",
                       "Error> line ", "Error> the value of ELSET is longer than ",
                       "dimension 0", "dimension 2", "dimension 3",
                       "family 3", "family 4", "family 5", "family 6", "both dimensions", "split", "missing", "CRLF",
                       "no line end", "NUL", "tab", "long", "wide number", "large", "a set twice"]:
            self.assertIn(wanted, seen)


STUB = """#!%(python)s
# Stands in for the program: leaves the model's own answer, with the one fault that it was made for.
import os, sys
sys.path.insert(0, %(here)r)
from generate import generate, spelled
from model import expect
fault, seed = %(fault)r, int(os.path.basename(os.getcwd()).split("-")[1])
deck = generate(seed)
answer = expect(deck, "--vtk" in sys.argv, spelled(deck, seed)[1])
log = answer.log.replace("<banner>\\n", "\\n" + ("*" * 60 + "\\n") * 11 +
                         "      Mesh Translator for KIVOcom (Version: 07/04/2019)     \\n\\n")
log = log.replace("<date>", "16 November 2026 06:21:06 AM").replace("<t>", "0.001000")
if fault == "log":
    log = log.replace("done with", "done  with", 1)
if fault == "banner":
    log = log.replace("*", "#", 1)
sys.stdout.write(log)
for name, text in answer.files.items():
    if fault == "byte" and name == "mesh.input":
        text = text.replace(b"= ", b"=  ", 1)
    if fault == "missing" and name == "_Cells.vtk":
        continue
    if fault == "vtk" and name == "_Cells.vtk":
        text += b"\\n"
    open(name, "wb").write(text)
if fault == "file":
    open("more", "w").close()
if fault == "stderr":
    sys.stderr.write("runtime error")
sys.exit(3 if fault == "status" else 0)
"""


class Harness(unittest.TestCase):
    def run_with(self, fault, count):
        with tempfile.TemporaryDirectory() as folder:
            stub = os.path.join(folder, "stub")
            with open(stub, "w") as stream:
                stream.write(STUB % {"python": sys.executable, "here": HERE, "fault": fault})
            os.chmod(stub, 0o755)
            run = subprocess.run([sys.executable, os.path.join(HERE, "run_model.py"), "--program", stub, "--count",
                                  str(count), "--seed", "40", "--work", os.path.join(folder, "work"), "--vtk"],
                                 stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
            left = os.listdir(os.path.join(folder, "work"))
            return run.returncode, run.stdout.decode(), left

    def test_right_answers_pass(self):
        status, text, left = self.run_with("", 6)
        self.assertEqual((status, text, left), (0, "6 passed, 0 failed\n", []))

    def test_each_fault_is_seen(self):
        for fault, what in (
                ("log", "log line "), ("banner", "log line 1: expected '<banner>'"), ("byte", "mesh.input line 2: "),
                ("missing", "files missing: ['_Cells.vtk'], not expected: []"), ("vtk", "_Cells.vtk line "),
                ("file", "files missing: [], not expected: ['more']"), ("stderr", "exit status 0, standard error "),
                ("status", "exit status 3, ")):
            with self.subTest(fault=fault):
                status, text, left = self.run_with(fault, 2)
                self.assertEqual(status, 1)
                self.assertTrue(text.endswith("0 passed, 2 failed\n"), text)
                self.assertRegex(text, r"seed 40 failed in \S+deck-40\n    " + re.escape(what))
                self.assertRegex(text, r"seed 41 failed in \S+deck-41\n    " + re.escape(what))
                self.assertEqual(sorted(left), ["deck-40", "deck-41"])

    def test_reader_comparison_sees_each_value(self):
        found = one_triangle()
        with tempfile.TemporaryDirectory() as folder:
            path = os.path.join(folder, "mesh.input")
            with open(path, "wb") as stream:
                stream.write(found.files["mesh.input"])
            self.assertIsNone(mesh_difference(kivomesh.read(path), found.mesh))
            for name in ("dimension", "characteristic", "shortest", "longest", "current", "previous", "initial",
                         "node_tags", "on_boundary", "faces", "face_tags", "cells", "cell_types", "cell_tags",
                         "node_groups", "face_groups", "cell_groups"):
                mesh = kivomesh.read(path)
                value = getattr(mesh, name)
                setattr(mesh, name, value[1:] if isinstance(value, list) else value + 1)
                self.assertIn(name, mesh_difference(mesh, found.mesh) or "no difference")
            mesh = kivomesh.read(path)
            mesh.cell_groups[0].characteristic *= 2
            self.assertIn("cell group E", mesh_difference(mesh, found.mesh) or "no difference")

    def test_masking(self):
        self.assertEqual(mask("Job started at 16 November 2026 06:21:06 AM\nElapsed Time: 0.012345 sec.\n"),
                         "Job started at <date>\nElapsed Time: <t> sec.\n")
        self.assertEqual(first_difference("f", "a\nb", "a\nc"), "f line 2: expected 'b', found 'c'")
        self.assertIsNone(first_difference("f", "a", "a"))


if __name__ == "__main__":
    unittest.main()
