#!/usr/bin/python3
"""plain_deck.py loses nothing:  test_plain_deck.py PROGRAM"""
import os, subprocess, sys, tempfile, unittest

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
SCRIPT = os.path.join(ROOT, "examples", "make", "plain_deck.py")
sys.path.insert(0, os.path.join(ROOT, "tests"))
import meshinput

PROGRAM = os.path.abspath(sys.argv.pop(1))
NODES = "*Node\n1,0,0,0\n2,1,0,0\n3,0,1,0\n4,0,0,1\n5,1,1,1\n"
TETS = "*Element,type=C3D4\n1,1,2,3,4\n2,2,5,3,4\n"


class PlainDeck(unittest.TestCase):
    def setUp(self):
        self.scratch = tempfile.TemporaryDirectory()
        self.addCleanup(self.scratch.cleanup)

    def make(self, text, *options, **others):
        for name, content in dict(others, deck=text).items():
            with open(os.path.join(self.scratch.name, name + ".inp"), "w") as stream:
                stream.write(content)
        done = subprocess.run([sys.executable, "-B", SCRIPT, *options, "deck.inp", "plain.inp"], cwd=self.scratch.name,
                              capture_output=True, text=True)
        return done.returncode, done.stdout + done.stderr

    def mesh(self, text, *options, **others):
        self.assertEqual(self.make(text, *options, **others), (0, ""))
        log = subprocess.run([PROGRAM, "plain.inp"], cwd=self.scratch.name, capture_output=True, text=True, check=True)
        self.assertNotIn("Error", log.stdout)
        self.assertNotIn("Warning", log.stdout)
        return meshinput.read(os.path.join(self.scratch.name, "mesh.input"))

    def names(self, groups):
        return [group.name for group in groups]

    def test_generate_and_instance(self):
        mesh = self.mesh(NODES + TETS + "*Nset,nset=odd,generate\n1,5,2\n*Nset,nset=two,instance=P-1,internal\nP-1.2\n")
        self.assertEqual(self.names(mesh.node_groups), ["ODD", "TWO"])
        self.assertEqual(mesh.node_tags, [2, 1, 2, 0, 2])

    def test_sets_of_sets_and_of_elements(self):
        mesh = self.mesh(NODES + TETS + "*Elset,elset=far\n2\n*Nset,nset=a\n1\n*Nset,nset=all\na,5\n"
                         "*Nset,nset=of,elset=far\n")
        self.assertEqual(self.names(mesh.node_groups), ["A", "ALL", "OF"])
        self.assertEqual(mesh.node_tags, [3, 1, 1, 1, 2])

    def test_surface_of_an_element_section(self):
        mesh = self.mesh(NODES + TETS.replace("C3D4", "C3D4,elset=solid") + "*Surface,name=s,internal\nsolid,S1\n")
        self.assertEqual([sorted(face) for face in mesh.faces], [[0, 1, 2], [1, 2, 4]])

    def test_triangles_become_a_surface(self):
        mesh = self.mesh(NODES + "*Element,type=CPS3,elset=Surface1\n7,2,1,4\n" + TETS + "*Elset,elset=base\n7\n")
        self.assertEqual((mesh.dimension, len(mesh.cells), self.names(mesh.face_groups)), (3, 2, ["BASE"]))
        self.assertEqual([sorted(face) for face in mesh.faces], [[0, 1, 3]])

    def test_every_face_label(self):
        for corners in ((1, 2, 3), (1, 4, 2), (2, 4, 3), (3, 4, 1)):
            mesh = self.mesh(NODES + "*Element,type=S3,elset=skin\n7,%d,%d,%d\n" % corners + TETS)
            self.assertEqual([sorted(face) for face in mesh.faces], [sorted(corner - 1 for corner in corners)])

    def test_lines_become_a_surface(self):
        plane = "*Node\n1,0,0\n2,2,0\n3,0,2\n4,1,0\n5,1,1\n6,0,1\n*Element,type=CPS6,elset=Surface1\n1,1,2,3,4,5,6\n"
        for order in ("2,3,5", "3,5,2"):  # the middle node last, or between the ends
            mesh = self.mesh(plane + "*Element,type=T3D3,elset=Line1\n7," + order + "\n*Elset,elset=far\n7\n")
            self.assertEqual((self.names(mesh.face_groups), len(mesh.cells)), (["FAR"], 1))
            self.assertEqual([sorted(face) for face in mesh.faces], [[1, 4], [2, 4]])

    def test_groups(self):
        mesh = self.mesh(NODES + TETS + "*Elset,elset=glue\n2\n", "--group", "C_X=glue")
        self.assertEqual(self.names(mesh.cell_groups), ["C_X", "CELLS"])
        self.assertEqual(len(mesh.current), 8)

    def test_include_and_refused_name(self):
        mesh = self.mesh("*Include,\n input=nodes.inp\n" + TETS, nodes=NODES)
        self.assertEqual(len(mesh.current), 5)
        status, said = self.make(NODES + TETS.replace("C3D4", "C3D4,elset=profile"))
        self.assertEqual((status, said), (0, "renamed: PROFILE, because *ELEMENT refuses the word FILE\n"))

    def test_dropped_types_and_instances_are_told(self):
        self.assertEqual(self.make(NODES + TETS + "*Element,type=B31,elset=e\n9,1,2\n"),
                         (0, "dropped: 1 elements of type B31\n"))
        self.assertEqual(self.make(NODES + TETS + "*Element,type=C3D8,elset=e\n9,1,2,3,4,1,2,3,4\n"),
                         (0, "dropped: the elements of type C3D8 of set E\n"))
        status, said = self.make("*Instance,name=a\n*Instance,name=b\n" + NODES + TETS)
        self.assertEqual(status, 1)
        self.assertIn("2 instances", said)

    def test_what_moves_nodes_is_refused(self):
        for text in (NODES.replace("*Node", "*Node,system=C"), "*System\n1,0,0\n" + NODES,
                     NODES + "*Nmap,type=shift\n1\n", NODES + "*Instance,name=a,part=p\n0.,0.,5.\n*End Instance\n"):
            status, said = self.make(text + TETS)
            self.assertEqual((status, said[:15], said.count("\n")), (1, "plain_deck.py: ", 1), said)
        # Back to the global system, and an instance that is not moved.
        mesh = self.mesh("*System\n" + NODES + TETS + "*Instance,name=a\n0.,0.,0.\n*End Instance\n")
        self.assertEqual(mesh.current[4], (1.0, 1.0, 1.0))

    def test_input_files_are_read(self):
        mesh = self.mesh("*Node,input=n.inp\n*Element,type=C3D4,elset=solid,input=e.inp\n", n=NODES[6:], e=TETS[19:])
        self.assertEqual((len(mesh.current), len(mesh.cells), self.names(mesh.cell_groups)), (5, 2, ["SOLID"]))
        self.assertEqual(self.make("*Node,input=none.inp\n"),
                         (1, "plain_deck.py: none.inp: No such file or directory\n"))

    def test_unknown_and_empty_groups(self):
        sets = "*Elset,elset=low\n1\n*Elset,elset=all\n1,2\n*Nset,nset=n\n1\n"
        status, said = self.make(NODES + TETS + sets, "--group", "typo")
        self.assertEqual((status, said), (1, 'plain_deck.py: no set of elements "TYPO"; there are: LOW, ALL, CELLS\n'))
        self.assertEqual(self.make(NODES + TETS + sets, "--group", "A=all", "--group", "B=low"),
                         (0, "note: the group B is empty; no cell of LOW was left for it\n"))
        self.assertEqual(self.make(NODES + TETS + sets, "--drop", "typo"),
                         (1, 'plain_deck.py: no set of nodes "TYPO"; there are: N\n'))
        self.assertEqual(self.names(self.mesh(NODES + TETS + sets, "--drop", "n").node_groups), [])

    def test_triangles_in_two_sets_are_told(self):
        skin = "*Element,type=S3,elset=skin\n7,1,2,3\n8,2,5,3\n"
        self.assertEqual(self.make(NODES + skin + TETS + "*Elset,elset=a\n7\n*Elset,elset=b\n7,8\n"),
                         (0, "note: 1 elements of B go to the surface of a set before it\n"))

    def test_surfaces_and_generated_nodes_that_are_dropped_are_told(self):
        for text, said in (("*Surface,type=NODE,name=p\n1,1.\n", "dropped: the surface P, for its TYPE=NODE\n"),
                           ("*Surface,name=u,combine=union\na,b\n", "dropped: the surface U, for its COMBINE\n"),
                           ("*Surface,name=s\n1\n", "dropped: the row '1' of surface S, which names no side\n"),
                           ("*Surface,name=s\nnone,S1\n", 'note: "NONE" is named as a set and is none\n'),
                           ("*Ngen\n1,5,2\n", "dropped: what *NGEN would make\n"),
                           ("*Node\n1,9,9,9\n", "note: the numbers of 1 nodes stand twice; the last ones count\n")):
            self.assertEqual(self.make(NODES + TETS + text), (0, said))

    def test_coordinates(self):
        mesh = self.mesh(NODES.replace("2,1,0,0", "2,1.0D1,,0") + TETS)
        self.assertEqual(mesh.current[1], (10.0, 0.0, 0.0))

    def test_rows_that_cannot_be_read(self):
        tet = NODES + "*Element,type=C3D4\n1,1,2,3"
        for text in (tet + "\n", tet + ",x\n", "*Node\nx,1,2\n"):
            status, said = self.make(text)
            self.assertEqual((status, said[:15], said.count("\n")), (1, "plain_deck.py: ", 1), said)


if __name__ == "__main__":
    unittest.main()
