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
        self.write(os.path.join(self.scratch.name, "README.md"), "Words.\n")
        os.chmod(self.program, os.stat(self.program).st_mode | stat.S_IXUSR)

    def write(self, path, text):
        with open(path, "w", encoding="utf-8") as stream:
            stream.write(text)

    def run_page(self, text, name="page.md", more=()):
        self.write(os.path.join(self.docs, name), text)
        done = subprocess.run([sys.executable, "-B", RUN_DOCS, "--program", self.program, "--docs", self.docs, *more],
                              capture_output=True, text=True)
        return done.returncode, done.stdout.strip().split("\n")[-1], done.stdout

    def source(self):
        """The arguments for a project with the folders that --source reads."""
        for folder in ("abaqus", "driver", "output", "store", "support", "translate", "tests/cases"):
            os.makedirs(os.path.join(self.scratch.name, folder), exist_ok=True)
        self.write(os.path.join(self.docs, "KIVOm.1"), ".SH NAME\n")
        return ["--source", self.scratch.name]

    def good(self, text, passed, **more):
        status, last, out = self.run_page(text, **more)
        self.assertEqual((status, last), (0, "%d passed, 0 failed" % passed), out)

    def bad(self, text, reason, **more):
        status, last, out = self.run_page(text, **more)
        self.assertEqual(status, 1, out)
        self.assertNotIn(" 0 failed", last)
        self.assertIn(reason, out)

    def test_what_is_shown_is_compared(self):
        deck = "```deck name=a.inp\n1\n2\n```\n"
        run = deck + "```console\n$ KIVOm a.inp\n"
        made = run + "...\n```\n```text file=mesh.input"
        for text, passed in (
                # A true page; nothing printed and nothing shown; dots stand for no line and for many.
                (run + "Job started at 01 May 2001 01:00:00 AM\n2\nElapsed Time: 7.000000 sec.\n```\n"
                 "```text file=mesh.input\nmade\nlast\n```\n", 2),
                ("```console\n$ true\n```\n", 1),
                ("```console\n$ printf 'a\\nb\\nc\\n'\n...\na\n...\nb\n...\nc\n...\n"
                 "$ printf 'a\\nb\\nc\\nb\\n'\n...\nb\n```\n", 2),
                (made + " lines=2-2\nlast\n```\n", 2),
                ("```console\n$ false\n$ echo $?\n1\n```\n", 2),
                ("1. Words\n\n   ```console\n   $ echo a \\\n      b\n   a b\n   ```\n", 1)):
            with self.subTest(text):
                self.good(text, passed)
        for text, reason in (
                # A wrong line; a line left out without dots; more printed than shown; nothing shown.
                (run + "...\n3\n...\n```\n", "from: 3"),
                (run + "2\n...\n```\n", "from: 2"),
                (run + "...\n2\n```\n", "(end of what is shown)"),
                (run + "```\n", "does not print"),
                # Masks hide only dates and times.
                (run + "Job ended at 01 May 2001 01:00:00 AM\n...\n```\n", "Job ended"),
                (made + " lines=1-1\nlast\n```\n", "is not what is shown"),
                (made + "\nmade\n```\n", "(end of what is shown)"),
                ("```text file=none\nmade\n```\n", "none"),
                ("```console\n$ false\n```\n", "ends with status 1"),
                ("```console\n$ false\n$ echo $?\n0\n```\n", "does not print"),
                ("```console\n$ exit 3\n$ echo on\non\n```\n", "ended the shell"),
                ("1. Words\n\n   ```console\n   $ echo a\n   b\n   ```\n", "from: b"),
                ("```console\n$ true\n", "has no end")):
            with self.subTest(text):
                self.bad(text, reason)

    def test_missing_program_is_noted(self):
        status, _, out = self.run_page("```console needs=no-such-program\n$ no-such-program\n```\n```console\n$ true\n```\n")
        self.assertEqual(status, 0)
        self.assertIn("passed over, no no-such-program here", out)

    def test_a_program_that_is_given_is_not_missing(self):
        self.bad("```console needs=kivodeck\n$ kivodeck\n```\n", "does not print", more=["--second", self.program])

    def test_a_run_that_tests_nothing_fails(self):
        self.assertEqual(self.run_page("Words only.\n")[0], 1)

    def test_page_named_besides(self):
        extra = os.path.join(self.scratch.name, "README.md")
        self.write(extra, "```console\n$ echo a\nb\n```\n")
        self.bad("```console\n$ true\n```\n", "README.md", more=[extra])

    def test_deck_of_another_page(self):
        other = os.path.join(self.docs, "other.md")
        self.write(other, "```deck name=a.inp\n1\n2\n3\n```\n")
        page = "<!-- deck %s from %s -->\n```console\n$ cat a.inp\n1\n2\n3\n```\n"
        self.good(page % ("a.inp", "other.md"), 1)
        self.bad(page % ("b.inp", "other.md"), "page.md: line 1: %s shows no deck b.inp" % other)
        self.bad(page % ("a.inp", "gone.md"), "gone.md")

    def test_links(self):
        run = "```console\n$ true\n```\n# Here\n"
        self.write(os.path.join(self.docs, "there.md"), "## Part: a.b `C_`\n```text\n# Block\n```\n")
        there = ("[a](there.md#part-ab-c_) ![b](../docs/there.md) [c](https://elsewhere.example/x) [d](#here) "
                 "`[e](code.md)`, `a\n[e](code.md)`\n")
        self.good(run + there, 1)
        for link, reason in (("gone.md", "page.md:7: there is no file gone.md"),
                             ("there.md#else", "page.md:7: there is no heading else"),
                             ("there.md#block", "there is no heading block"), ("#there", "there is no heading there")):
            self.bad(run + there + "[f](%s)\n" % link, reason)
        self.good("```console\n$ echo '[g](gone.md)'\n[g](gone.md)\n```\n", 1)  # what a block shows is no link
        more = self.source()
        self.good(run, 1, more=more)
        self.write(os.path.join(self.scratch.name, "tests", "cases", "README.md"), "[h](none)\n")
        self.bad(run, "README.md:1: there is no file none", more=more)

    def test_names_of_files(self):
        run, more = "```console\n$ true\n```\n", self.source()
        self.write(os.path.join(self.scratch.name, "store", "sys.h"), "")
        self.good(run + "sys.h `store/sys` (store/sys.h). build/x other/y.md tests/cases\n", 1, more=more)
        self.bad(run + "`store/gone.h`\n", "page.md:4: there is no store/gone.h", more=more)
        self.bad(run + "gone.cpp\n", "page.md:4: there is no gone.cpp", more=more)

    def test_number_of_words(self):
        run, more = "```console\n$ true\n```\n", self.source()  # 4 words, and 2 in KIVOm.1, and README.md's
        made = "\n<!-- findings: made by a tool -->\n" + 9000 * "word " + "\n<!-- end of findings -->\n"
        self.write(os.path.join(self.scratch.name, "README.md"), 4000 * "word\n")
        self.write(os.path.join(self.docs, "findings.md"), 9000 * "word ")
        self.good(run + 4994 * "word " + made, 1, more=more)
        self.bad(run + 4995 * "word " + made, "the pages have 9001 words", more=more)

    def test_man_page(self):
        page = ".SH EXAMPLES\n.EX\n$ printf \\(aqx\\-a\\en\\(aq\nx\\-%s\n.EE\n.EX\nonly shown\n.EE\n"
        self.good(page % "a", 1, name="page.1")
        self.bad(page % "b", "from: x-b", name="page.1")

    def test_messages_of_the_sources(self):
        more, source = self.source(), self.scratch.name
        self.write(os.path.join(source, "abaqus", "a.cpp"), r'std::printf("\n  Error> too many: %s.\n", name);')
        self.write(os.path.join(self.docs, "KIVOm.1"), ".B Error> too\nmany: things\n")
        self.good("```console\n$ true\n```\n", 2, more=more)
        self.write(os.path.join(self.docs, "KIVOm.1"), ".B Error> too few\n")
        self.bad("```console\n$ true\n```\n", 'the message "Error> too many:" is missing', more=more)
        self.write(os.path.join(source, "abaqus", "a.cpp"), r'std::printf("\n  Error> too few\n");')
        self.good("```console\n$ true\n```\n", 2, more=more)
        self.write(os.path.join(self.docs, "KIVOm.1"), ".B Error> too few: reason\n")
        self.bad("```console\n$ true\n```\n", 'the message "Error> too few" is missing', more=more)


if __name__ == "__main__":
    unittest.main()
