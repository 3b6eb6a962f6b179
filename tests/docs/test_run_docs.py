#!/usr/bin/python3
"""run_docs.py must pass pages that tell the truth and fail pages that do not. The program is a small script here."""
import os, stat, subprocess, sys, tempfile, unittest

RUN_DOCS = os.path.join(os.path.dirname(os.path.abspath(__file__)), "run_docs.py")
PROGRAM = """#!/bin/sh
echo "Job started at 20 November 2026 11:05:17 PM"
wc -l <"$1" || exit 255
echo "Elapsed Time: 0.$$ sec." | sed 's/0\\.[0-9]*/0.000123/'
echo made >mesh.input
echo last >>mesh.input
"""


class Pages(unittest.TestCase):
    def setUp(self):
        self.scratch = tempfile.TemporaryDirectory()
        self.addCleanup(self.scratch.cleanup)
        self.docs = os.path.join(self.scratch.name, "docs")
        os.mkdir(self.docs)
        self.program = os.path.join(self.scratch.name, "program")
        self.write(self.program, PROGRAM)
        os.chmod(self.program, os.stat(self.program).st_mode | stat.S_IXUSR)

    def write(self, path, text):
        with open(path, "w", encoding="utf-8") as stream:
            stream.write(text)

    def run_page(self, text, name="page.md", more=()):
        self.write(os.path.join(self.docs, name), text)
        done = subprocess.run([sys.executable, "-B", RUN_DOCS, "--program", self.program, "--docs", self.docs, *more],
                              capture_output=True, text=True)
        return done.returncode, done.stdout.strip().split("\n")[-1], done.stdout

    def good(self, text, passed, **more):
        status, last, out = self.run_page(text, **more)
        self.assertEqual((status, last), (0, "%d passed, 0 failed" % passed), out)

    def bad(self, text, reason, **more):
        status, last, out = self.run_page(text, **more)
        self.assertEqual(status, 1, out)
        self.assertNotIn(" 0 failed", last)
        self.assertIn(reason, out)

    DECK = "```deck name=a.inp\n1\n2\n```\n"

    def test_true_page(self):
        self.good(self.DECK + "```console\n$ KIVOm a.inp\nJob started at 01 May 2001 01:00:00 AM\n2\n"
                  "Elapsed Time: 7.000000 sec.\n```\n```text file=mesh.input\nmade\nlast\n```\n", 2)

    def test_wrong_line(self):
        self.bad(self.DECK + "```console\n$ KIVOm a.inp\n...\n3\n...\n```\n", "from: 3")

    def test_line_left_out_without_dots(self):
        self.bad(self.DECK + "```console\n$ KIVOm a.inp\n2\n...\n```\n", "from: 2")

    def test_more_printed_than_shown(self):
        self.bad(self.DECK + "```console\n$ KIVOm a.inp\n...\n2\n```\n", "(end of what is shown)")

    def test_nothing_shown_means_nothing_printed(self):
        self.bad(self.DECK + "```console\n$ KIVOm a.inp\n```\n", "does not print")
        self.good("```console\n$ true\n```\n", 1)

    def test_dots_stand_for_no_line_and_for_many(self):
        self.good("```console\n$ printf 'a\\nb\\nc\\n'\n...\na\n...\nb\n...\nc\n...\n$ printf 'a\\nb\\nc\\nb\\n'\n...\nb\n```\n", 2)

    def test_masks_hide_only_dates_and_times(self):
        self.bad(self.DECK + "```console\n$ KIVOm a.inp\nJob ended at 01 May 2001 01:00:00 AM\n...\n```\n", "Job ended")

    def test_file_lines(self):
        run = self.DECK + "```console\n$ KIVOm a.inp\n...\n```\n"
        self.good(run + "```text file=mesh.input lines=2-2\nlast\n```\n", 2)
        self.bad(run + "```text file=mesh.input lines=1-1\nlast\n```\n", "is not what is shown")
        self.bad(run + "```text file=mesh.input\nmade\n```\n", "(end of what is shown)")
        self.bad("```text file=none\nmade\n```\n", "none")

    def test_exit_status(self):
        self.bad("```console\n$ false\n```\n", "ends with status 1")
        self.good("```console\n$ false\n$ echo $?\n1\n```\n", 2)
        self.bad("```console\n$ false\n$ echo $?\n0\n```\n", "does not print")
        self.bad("```console\n$ exit 3\n$ echo on\non\n```\n", "ended the shell")

    def test_missing_program_is_noted(self):
        status, _, out = self.run_page("```console needs=no-such-program\n$ no-such-program\n```\n```console\n$ true\n```\n")
        self.assertEqual(status, 0)
        self.assertIn("passed over, no no-such-program here", out)

    def test_a_run_that_tests_nothing_fails(self):
        self.assertEqual(self.run_page("Words only.\n")[0], 1)

    def test_indented_block_and_continued_command(self):
        self.good("1. Words\n\n   ```console\n   $ echo a \\\n      b\n   a b\n   ```\n", 1)
        self.bad("1. Words\n\n   ```console\n   $ echo a\n   b\n   ```\n", "from: b")

    def test_block_without_end(self):
        self.bad("```console\n$ true\n", "has no end")

    def test_page_named_besides(self):
        extra = os.path.join(self.scratch.name, "README.md")
        self.write(extra, "```console\n$ echo a\nb\n```\n")
        self.bad("```console\n$ true\n```\n", "README.md", more=[extra])

    def test_links(self):
        self.write(os.path.join(self.docs, "there.md"), "Words.\n")
        there = "[a](there.md#part) ![b](../docs/there.md) [c](https://elsewhere.example/x) [d](#here) `[e](code.md)`\n"
        self.good("```console\n$ true\n```\n" + there, 1)
        self.bad("```console\n$ true\n```\n" + there + "[f](gone.md)\n", "page.md:5: there is no file gone.md")
        self.good("```console\n$ echo '[g](gone.md)'\n[g](gone.md)\n```\n", 1)  # what a block shows is no link
        more = ["--source", self.scratch.name]
        for folder in ("abaqus", "driver", "output", "store", "support", "translate", "tests/cases"):
            os.makedirs(os.path.join(self.scratch.name, folder))
        self.write(os.path.join(self.docs, "KIVOm.1"), ".SH NAME\n")
        self.good("```console\n$ true\n```\n", 1, more=more)
        self.write(os.path.join(self.scratch.name, "tests", "cases", "README.md"), "[h](none)\n")
        self.bad("```console\n$ true\n```\n", "README.md:1: there is no file none", more=more)

    def test_man_page(self):
        page = ".SH EXAMPLES\n.EX\n$ printf \\(aqx\\-a\\en\\(aq\nx\\-%s\n.EE\n.EX\nonly shown\n.EE\n"
        self.good(page % "a", 1, name="page.1")
        self.bad(page % "b", "from: x-b", name="page.1")

    def test_messages_of_the_sources(self):
        source = os.path.join(self.scratch.name, "source")
        for folder in ("abaqus", "driver", "output", "store", "support", "translate"):
            os.makedirs(os.path.join(source, folder))
        self.write(os.path.join(source, "abaqus", "a.cpp"), r'std::printf("\n  Error> too many: %s.\n", name);')
        self.write(os.path.join(self.docs, "KIVOm.1"), ".B Error> too\nmany: things\n")
        self.good("```console\n$ true\n```\n", 2, more=["--source", source])
        self.write(os.path.join(self.docs, "KIVOm.1"), ".B Error> too few\n")
        self.bad("```console\n$ true\n```\n", 'the message "Error> too many:" is missing', more=["--source", source])
        self.write(os.path.join(source, "abaqus", "a.cpp"), r'std::printf("\n  Error> too few\n");')
        self.good("```console\n$ true\n```\n", 2, more=["--source", source])
        self.write(os.path.join(self.docs, "KIVOm.1"), ".B Error> too few: reason\n")
        self.bad("```console\n$ true\n```\n", 'the message "Error> too few" is missing', more=["--source", source])


if __name__ == "__main__":
    unittest.main()
