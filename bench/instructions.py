#!/usr/bin/python3
"""Counts the instructions of two small fixed runs and compares them with the committed figures.

  instructions.py --program PATH --maker PATH [--figures FILE] [--margin SHARE] [--renew]

The count hardly depends on the machine, so a slip shows anywhere. More instructions than the margin allows fail;
so do fewer, because a stale figure would let the next slip pass: renew it then. --renew writes the figures.
mesh.input is checked (by meshcheck, which lies beside the deck maker), so that no wrong run is counted.
Exit status: 0 within the margin, 1 outside it or when a run fails, 77 when valgrind is absent."""

import argparse
import os
import re
import shutil
import subprocess
import sys
import tempfile

from page import compiler_of

FIGURES = os.path.join(os.path.dirname(os.path.abspath(__file__)), "instructions.txt")
DECKS = (("C3D4", 16), ("C3D10", 11))  # type and cubes along an edge, about 1 MB each
ABSENT = 77
RUN_LIMIT = 600  # seconds
# The C library's text functions are then the same ones on every processor.
TUNABLES = "glibc.cpu.hwcaps=-AVX2,-AVX512F,-AVX512VL,-AVX512BW,-ERMS,-FSRM"


class Failed(Exception):
    pass


def write(path, text):
    with open(path, "w") as file:
        file.write(text)


def count(options, kind, n_cubes, folder):
    deck = os.path.join(folder, kind + ".inp")
    made = subprocess.run([options.maker, deck, "--type", kind, "--cubes", str(n_cubes), "--invert", "0.01"],
                          capture_output=True, text=True)
    if made.returncode != 0:
        raise Failed(f"{kind}: no deck: {made.stderr.strip()}")
    summary, log = (os.path.join(folder, kind + end) for end in (".summary", ".log"))
    write(summary, made.stdout)
    out = os.path.join(folder, kind)
    os.mkdir(out)
    profile = os.path.join(folder, kind + ".callgrind")
    run = subprocess.run(["valgrind", "--tool=callgrind", f"--callgrind-out-file={profile}", options.program, deck,
                          "--vtk"], cwd=out, capture_output=True, text=True, timeout=RUN_LIMIT,
                         env=dict(os.environ, GLIBC_TUNABLES=TUNABLES))
    text = run.stdout
    # Valgrind gives the C library a heap segment of 8 MB only. Where that ends an allocation can need its second
    # try, which the program reports; outside valgrind this does not happen, so it is no fault of the run.
    if "brk segment overflow" in run.stderr:
        text = text.replace("Warning> trying to allocate memory ... \n", "")
    write(log, text)
    if run.returncode != 0:
        raise Failed(f"{kind}: the run ended with status {run.returncode}: {run.stderr.strip()[-500:]}")
    check = subprocess.run([os.path.join(os.path.dirname(options.maker), "meshcheck"), summary, out, log, "--vtk"],
                           capture_output=True, text=True)
    if check.returncode != 0:
        raise Failed(f"{kind}: the output is {check.stdout.strip()} {check.stderr.strip()[-500:]}")
    with open(profile) as file:
        match = re.search(r"^(?:summary|totals): (\d+)", file.read(), re.M)
    if match is None:
        raise Failed(f"{kind}: valgrind gave no count")
    return int(match.group(1))


def is_within(kind, count, figure, margin):
    """True when the count is within the margin; says so either way."""
    change = count / figure - 1
    verdict = (f"slower than the margin of {margin:.0%} allows" if change > margin else
               f"faster by more than {margin:.0%}; renew the figure with --renew" if change < -margin else
               f"within {margin:.0%}")
    print(f"{kind}: {count} instructions, committed {figure}, {change:+.2%}: {verdict}")
    return abs(change) <= margin


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--program", required=True)
    parser.add_argument("--maker", required=True)
    parser.add_argument("--figures", default=FIGURES)
    parser.add_argument("--margin", type=float, default=0.05)
    parser.add_argument("--renew", action="store_true")
    options = parser.parse_args()
    options.program = os.path.abspath(options.program)
    options.maker = os.path.abspath(options.maker)
    if shutil.which("valgrind") is None:
        print("valgrind is absent")
        return ABSENT
    try:
        with tempfile.TemporaryDirectory(prefix="instructions-") as folder:
            counts = {kind: count(options, kind, n_cubes, folder) for kind, n_cubes in DECKS}
    except (Failed, OSError, subprocess.TimeoutExpired) as fault:
        print(fault)
        return 1
    compiler = compiler_of(options.program)
    if options.renew:
        write(options.figures,
              "# Instructions of whole runs with --vtk on small decks, written by instructions.py --renew.\n"
              f"compiler: {compiler}\n" + "".join(f"{kind}: {count}\n" for kind, count in counts.items()))
        print(f"renewed: {counts}")
        return 0
    if not os.path.exists(options.figures):
        print(f"no committed figures; counted {counts}; write them with --renew")
        return 1
    with open(options.figures) as file:
        figures = dict(re.findall(r"^(\w+): (.*)$", file.read(), re.M))
    if figures.get("compiler") != compiler:
        print(f"note: counted with {compiler}, committed with {figures.get('compiler')}")
    missing = [kind for kind in counts if not figures.get(kind, "").isdigit()]
    if missing:
        print(f"no committed figure for {', '.join(missing)}")
        return 1
    results = [is_within(kind, count, int(figures[kind]), options.margin) for kind, count in counts.items()]
    return 0 if all(results) else 1


if __name__ == "__main__":
    sys.exit(main())
