#!/usr/bin/python3
"""Runs the program over folders of decks, real exporters' for instance, and checks that the outcome is plausible.

    run_decks.py --program PATH [--kivodeck PATH] FOLDER...

Each run must end with status 0 and write nothing to standard error (where a sanitizer would report). The element
count of the summary must be that of the deck's rows of supported types, counted here in a second, simple way, and
mesh.input must be readable and agree with it. With --kivodeck each deck is made plain besides: where that ends with
status 0 the plain deck has no error, the translator and `kivodeck run` make the same mesh.input of it, to the byte, and
it holds the numbers that the plain deck is said to have; `run` ends with 1 only where its audit fails. How many decks
come through whole is told, before (the deck itself is without error) and after. A folder without decks is a failure.
"""
import argparse, filecmp, json, os, re, subprocess, sys, tempfile

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
import meshinput

SUPPORTED = {"C3D4", "C3D10", "CPE3", "CPS3", "STRI3", "CPE6", "CPS6", "STRI65"}
REFUSED = ("FILE", "INPUT", "OFFSET", "SOLIDELEMENTNUMBERING")


def compressed_lines(path):
    with open(path, encoding="latin-1", newline="\n") as stream:
        for line in stream:
            line = re.sub(r"[ \t\r\n]", "", line.split("**")[0]).upper()
            if line:
                yield line


def count_elements(path):
    """Rows of the *ELEMENT sections that the translator takes."""
    rows, counting, continued = 0, False, False
    for line in compressed_lines(path):
        if line.startswith("*"):
            kind = re.search(r"TYPE=([^,]*)", line)
            counting = (line.startswith("*ELEMENT,") and kind is not None and kind.group(1) in SUPPORTED
                        and not any(word in line for word in REFUSED))
            continued = False
            continue
        rows += counting and not continued
        continued = line.endswith(",")
    return rows


def check(program, deck):
    """What is wrong with the run, or None."""
    with tempfile.TemporaryDirectory() as work:
        run = subprocess.run([program, deck], cwd=work, capture_output=True, timeout=120)
        if run.returncode != 0 or run.stderr:
            return "status %d, standard error: %s" % (run.returncode, run.stderr[:400])
        summary = re.search(rb"Number of elements    = (\d+)", run.stdout)
        expected = count_elements(deck)
        if summary is None or int(summary.group(1)) != expected:
            return "%d elements expected, the summary says %s" % (expected, summary and summary.group(1))
        if expected == 0:
            return None  # no dimension then, and a mesh file without nodes
        mesh = meshinput.read(os.path.join(work, "mesh.input"))
        if len(mesh.cells) != expected:
            return "%d elements expected, mesh.input has %d" % (expected, len(mesh.cells))
    return None


def report(kivodeck, work, *arguments):
    """Exit status and report of one command; only 0 and 1 are expected."""
    run = subprocess.run([kivodeck, *arguments, "--format=json"], cwd=work, capture_output=True, timeout=120)
    if run.returncode not in (0, 1) or arguments[0] != "run" and run.stderr:
        raise ValueError("%s: status %d, standard error: %s" % (arguments[0], run.returncode, run.stderr[:400]))
    return run.returncode, json.loads(run.stdout)


def check_plain(program, kivodeck, deck):
    """Whether the deck comes through whole, before and after; a ValueError says what is wrong."""
    with tempfile.TemporaryDirectory() as work:
        before = report(kivodeck, work, "check", deck)[1]["verdict"]["errors"] == 0
        status, flat = report(kivodeck, work, "flatten", deck, "-o", "plain.inp")
        if (status == 0) != os.path.exists(os.path.join(work, "plain.inp")):
            raise ValueError("flatten: status %d, and the plain deck is %sthere" % (status, "not " * (status == 0)))
        (run, said), mesh_path = report(kivodeck, work, "run", deck), os.path.join(work, "mesh.input")
        if run != max(status, int(not said.get("audit", {"ok": True})["ok"])) or os.path.exists(mesh_path) != (status == 0):
            raise ValueError("run: status %d, that of flatten is %d, audit: %s" % (run, status, said.get("audit")))
        if status == 1:
            return before, False
        if report(kivodeck, work, "check", "plain.inp")[1]["verdict"]["errors"]:
            raise ValueError("the plain deck has errors")
        os.rename(mesh_path, mesh_path + ".run")
        subprocess.run([program, "plain.inp"], cwd=work, stdout=subprocess.DEVNULL, check=True, timeout=120)
        if not filecmp.cmp(mesh_path, mesh_path + ".run", shallow=False):
            raise ValueError("run makes another mesh.input than the translator of the plain deck")
        mesh, meaning = meshinput.read(mesh_path), flat["meaning"]
        for what, found in (("node_sets", mesh.node_groups), ("surfaces", mesh.face_groups),
                            ("cell_groups", mesh.cell_groups), ("elements", mesh.cells)):
            expected = meaning[what] if what == "elements" else len(meaning[what])
            if len(found) != expected:
                raise ValueError("%d %s expected, mesh.input has %d" % (expected, what, len(found)))
    return before, True


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--program", required=True, type=os.path.abspath)
    parser.add_argument("--kivodeck", type=os.path.abspath)
    parser.add_argument("folders", nargs="+", metavar="FOLDER", type=os.path.abspath)
    given = parser.parse_args()
    bad = 0
    for folder in given.folders:
        decks = sorted(name for name in os.listdir(folder) if name.endswith(".inp"))
        bad += not decks
        print("%s: %d decks" % (folder, len(decks)))
        whole = []
        for name in decks:
            deck = os.path.join(folder, name)
            wrong = check(given.program, deck)
            try:
                whole += [check_plain(given.program, given.kivodeck, deck)] if given.kivodeck and not wrong else []
            except ValueError as error:
                wrong = str(error)
            bad += wrong is not None
            print("%-6s %s%s" % ("failed" if wrong else "passed", name, ": " + wrong if wrong else ""))
        if whole:
            print("whole: %d before, %d after" % tuple(map(sum, zip(*whole))))
    return 1 if bad else 0


if __name__ == "__main__":
    sys.exit(main())
