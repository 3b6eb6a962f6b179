#!/usr/bin/python3
"""Runs the program over folders of decks, real exporters' for instance, and checks that the outcome is plausible.

    run_decks.py --program PATH FOLDER...

Each run must end with status 0 and write nothing to standard error (where a sanitizer would report). The element
count of the summary must be that of the deck's rows of supported types, counted here in a second, simple way, and
mesh.input must be readable and agree with it. A folder without decks is a failure.
"""
import argparse, os, re, subprocess, sys, tempfile

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


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--program", required=True, type=os.path.abspath)
    parser.add_argument("folders", nargs="+", metavar="FOLDER", type=os.path.abspath)
    given = parser.parse_args()
    bad = 0
    for folder in given.folders:
        decks = sorted(name for name in os.listdir(folder) if name.endswith(".inp"))
        bad += not decks
        print("%s: %d decks" % (folder, len(decks)))
        for name in decks:
            wrong = check(given.program, os.path.join(folder, name))
            bad += wrong is not None
            print("%-6s %s%s" % ("failed" if wrong else "passed", name, ": " + wrong if wrong else ""))
    return 1 if bad else 0


if __name__ == "__main__":
    sys.exit(main())
