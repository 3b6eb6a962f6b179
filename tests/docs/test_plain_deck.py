#!/usr/bin/python3
"""plain_deck.py loses nothing:  test_plain_deck.py PROGRAM"""
import os, subprocess, sys, tempfile, unittest

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
SCRIPT = os.path.join(ROOT, "examples", "make", "plain_deck.py")
sys.path.insert(0, os.path.join(ROOT, "tools"))
import kivomesh

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
        return kivomesh.read(os.path.join(self.scratch.name, "mesh.input"))

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


if __name__ == "__main__":
    unittest.main()
