#!/usr/bin/env python3
"""Runs the program over a folder of decks that real exporters wrote and checks that the outcome is plausible.

    run_decks.py --program PATH --decks FOLDER

Each run must end with status 0 and write nothing to standard error (where a sanitizer would report). The element
count of the summary must be that of the deck's rows of supported types, counted here in a second, simple way, and
mesh.input must be readable and agree with it. Exit status 77 (skipped) when the folder is not there.
"""
import argparse
import pathlib
import re
import subprocess
import sys
import tempfile

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "tools"))
import kivomesh  # noqa: E402

SUPPORTED = {"C3D4", "C3D10", "CPE3", "CPS3", "STRI3", "CPE6", "CPS6", "STRI65"}
REFUSED = ("FILE", "INPUT", "OFFSET", "SOLIDELEMENTNUMBERING")


def compressed_lines(path):
    for line in path.read_bytes().decode("latin-1").split("\n"):
        line = re.sub(r"[ \t\r]", "", line.split("**")[0]).upper()
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
        run = subprocess.run([program, str(deck)], cwd=work, capture_output=True, timeout=120)
        if run.returncode != 0 or run.stderr:
            return "status %d, standard error: %s" % (run.returncode, run.stderr[:400])
        summary = re.search(rb"Number of elements    = (\d+)", run.stdout)
        expected = count_elements(deck)
        if summary is None or int(summary.group(1)) != expected:
            return "%d elements expected, the summary says %s" % (expected, summary and summary.group(1))
        if expected == 0:
            return None  # no dimension then, and a mesh file without nodes
        mesh = kivomesh.read(str(pathlib.Path(work) / "mesh.input"))
        if len(mesh.cells) != expected:
            return "%d elements expected, mesh.input has %d" % (expected, len(mesh.cells))
    return None


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--program", required=True, type=lambda path: str(pathlib.Path(path).resolve()))
    parser.add_argument("--decks", required=True,
                        type=lambda path: pathlib.Path(path).resolve())
    options = parser.parse_args()
    if not options.decks.is_dir():
        print("skipped: no folder of real decks here")
        return 77
    passed = failed = 0
    for deck in sorted(options.decks.glob("*.inp")):
        wrong = check(options.program, deck)
        print("%-6s %s%s" % ("failed" if wrong else "passed", deck.name, ": " + wrong if wrong else ""))
        passed, failed = passed + (wrong is None), failed + (wrong is not None)
    print("%d passed, %d failed" % (passed, failed))
    return 1 if failed or not passed else 0


if __name__ == "__main__":
    sys.exit(main())
