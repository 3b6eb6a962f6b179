#!/usr/bin/python3
"""Shows that run_vtk_checks.py reports a program that does not do its part. Stand-ins for the program are shell lines."""
import contextlib, io, os, shutil, stat, tempfile, unittest
from unittest import mock

import run_vtk_checks
from test_check_vtk import CASES

GOOD = os.path.join(os.path.abspath(CASES), "cpe3-faces", "files")


class StandIns(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, self.folder)

    def outcome(self, *lines, status=0):
        """(runs, bad ones, ends early, what was printed) of one case with a program of these shell lines."""
        program = os.path.join(self.folder, "program")
        with open(program, "w") as stream:
            stream.write("\n".join(("#!/bin/sh",) + lines) + "\n")
        os.chmod(program, stat.S_IRWXU)
        cases, work = os.path.join(self.folder, "cases"), os.path.join(self.folder, "work")
        case = os.path.join(cases, "group", "case")
        for path in (cases, work):
            shutil.rmtree(path, ignore_errors=True)
        shutil.copytree(os.path.dirname(GOOD), case)
        with open(os.path.join(case, "status"), "w") as stream:
            stream.write(str(status))
        tally, said = run_vtk_checks.Tally(program), io.StringIO()
        with contextlib.redirect_stdout(said):
            run_vtk_checks.run_cases(tally, cases, work)
        return tally.runs, tally.bad, len(tally.passed_over), said.getvalue()

    def test_good(self):
        copy = 'cp "%s"/* .' % GOOD
        self.assertEqual(self.outcome(copy), (1, 0, 0, ""))
        # Only the deck is put into the folder of the run, and the arguments are the case's.
        self.assertEqual(self.outcome('[ "$(ls)" = deck.inp ] || exit 3', '[ "$*" = "deck.inp --vtk" ] || exit 4', copy)[1], 0)

    def test_bad(self):
        copy = 'cp "%s"/* .' % GOOD
        self.assertIn("exit status 5 where 0", self.outcome(copy, "exit 5")[3])
        self.assertIn("mesh.input: ", self.outcome("exit 0")[3])
        self.assertIn("_Faces.vtk: ", self.outcome(copy, "rm _Faces.vtk")[3])
        self.assertIn("NodeTag", self.outcome(copy, "sed -i 's/^    1    0    0    1/    1    0    0    2/' _Cells.vtk")[3])
        self.assertEqual(self.outcome(copy, "kill -ABRT $$")[1], 1)

    def test_ends_early(self):
        self.assertEqual(self.outcome("exit 255", status=-1), (1, 0, 1, ""))
        self.assertIn("exit status 0 where -1", self.outcome("exit 0", status=-1)[3])

    def test_too_long(self):
        with mock.patch.object(run_vtk_checks, "TIME_LIMIT", 0.2):
            self.assertIn("takes more than", self.outcome("exec sleep 5")[3])


if __name__ == "__main__":
    unittest.main()
