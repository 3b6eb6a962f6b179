#!/usr/bin/python3
"""Runs the translator with "--vtk" on many decks, each in a folder of its own, and holds what it writes together.

    run_vtk_checks.py --program PATH --examples DIR --cases DIR --work DIR [--decks DIR]

The decks: every whole-run case below --cases (each with its own arguments and standard input), every "*.inp" below
--examples (whose cells must all be good ones), what make_gmsh_decks.py makes, and every "*.inp" below --decks, a folder
of anybody's decks, if there is one. The runs are left below --work for a look at them; what an earlier run
left there is removed. Exit status: 0 all agree, 1 something does not, 2 wrong arguments, 77 when VTK, meshio or gmsh is
not installed.
"""
import argparse, os, shutil, subprocess, sys

import check_vtk  # leaves with 77 where a library is missing
import make_gmsh_decks

# What a case folder holds besides input files.
RESERVED = {"args", "stdin", "log", "status", "files", "why"}
# Cases and examples (by path below their folder) whose faces bound their cells all round.
CLOSED = {"vtk/c3d4-faces", "vtk/c3d10-faces", "vtk/cpe6-flip"}
TIME_LIMIT = 120


def content(path, default):
    if not os.path.exists(path):
        return default
    with open(path, encoding="latin-1") as stream:
        return stream.read()


def run(program, arguments, text, folder):
    """Exit status and standard output of one run in `folder`."""
    done = subprocess.run([program] + arguments, cwd=folder, input=text.encode("latin-1"), stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, timeout=TIME_LIMIT, check=False)
    return done.returncode, done.stdout.decode("latin-1")


class Tally:
    def __init__(self, program):
        self.program, self.runs, self.passed_over, self.bad = program, 0, [], 0

    def check(self, name, folder, arguments, text, status, flags):
        self.runs += 1
        try:
            got, said = run(self.program, arguments, text, folder)
        except subprocess.TimeoutExpired:
            self.report(name, ["the run takes more than %d seconds" % TIME_LIMIT])
            return
        if got % 256 != status % 256:
            self.report(name, ["exit status %d where %d should be" % (got, status)] + said.split("\n")[-6:])
        elif status:
            self.passed_over.append(name)  # a run that ends early has no files to look at
        else:
            self.report(name, check_vtk.check_run(folder, **flags))

    def report(self, name, lines):
        for line in lines[:10]:
            print("%s: %s" % (name, line[:160]))
        self.bad += bool(lines)


def run_cases(tally, cases, work):
    for folder, subfolders, names in sorted(os.walk(cases)):
        if "log" not in names:
            continue
        subfolders[:] = []
        name = os.path.relpath(folder, cases)
        place = os.path.join(work, "cases", name)
        shutil.copytree(folder, place, ignore=lambda at, _: RESERVED if at == folder else set())
        arguments = content(os.path.join(folder, "args"), "deck.inp\n").split("\n")[:-1]
        if "--vtk" not in arguments:
            arguments.append("--vtk")
        ours = name.startswith("vtk/")
        flags = {"good": ours, "oriented": True, "straight": ours, "closed": name in CLOSED}
        tally.check(name, place, arguments, content(os.path.join(folder, "stdin"), ""),
                    int(content(os.path.join(folder, "status"), "0")), flags)


def run_decks(tally, kind, decks, work):
    """Runs a list of (path, name, flags)."""
    for path, name, flags in decks:
        place = os.path.join(work, kind, name)
        os.makedirs(place)
        shutil.copy(path, os.path.join(place, "deck.inp"))
        tally.check(kind + "/" + name, place, ["deck.inp", "--vtk"], "", 0, flags)


def decks_below(top, good):
    for folder, _, names in sorted(os.walk(top)):
        for name in sorted(names):
            if name.endswith(".inp"):
                short = os.path.relpath(os.path.join(folder, name), top)
                yield os.path.join(folder, name), short, {"good": good, "oriented": True, "closed": short in CLOSED}


def gmsh_decks(folder):
    for path, flags in make_gmsh_decks.make_decks(folder):
        yield path, os.path.splitext(os.path.basename(path))[0], flags


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    for name in ("--program", "--examples", "--cases", "--work"):
        parser.add_argument(name, required=True)
    parser.add_argument("--decks")
    given = parser.parse_args()
    if not shutil.which("gmsh"):
        print("skipped: gmsh is not installed")
        return 77
    work = os.path.abspath(given.work)
    for part in ("cases", "examples", "gmsh", "gmsh-decks", "decks"):
        shutil.rmtree(os.path.join(work, part), ignore_errors=True)
    tally, counts = Tally(os.path.abspath(given.program)), []
    run_cases(tally, os.path.abspath(given.cases), work)
    counts.append(tally.runs)
    sources = [("examples", decks_below(given.examples, True)), ("gmsh", gmsh_decks(os.path.join(work, "gmsh-decks")))]
    if given.decks and os.path.isdir(given.decks):
        sources.append(("decks", decks_below(given.decks, False)))
    for kind, decks in sources:
        run_decks(tally, kind, decks, work)
        counts.append(tally.runs - sum(counts))
    print("%d cases, %d examples, %d gmsh decks, %d others: %d disagree, %d end early as they should" %
          (*(counts + [0])[:4], tally.bad, len(tally.passed_over)))
    if 0 in counts:
        print("one of the sources holds no deck")
        return 1
    return 1 if tally.bad else 0


if __name__ == "__main__":
    sys.exit(main())
