#!/usr/bin/python3
"""Counts the instructions of two small fixed runs and compares them with the committed figures.

  instructions.py --program PATH --maker PATH [--figures FILE] [--margin SHARE] [--renew]

The count hardly depends on the machine, so a slip shows anywhere. More instructions than the margin allows fail;
so do fewer, because a stale figure would let the next slip pass: renew it then. --renew writes the figures.
Exit status: 0 within the margin, 1 outside it or when a run fails, 77 when valgrind is absent."""

import argparse
import os
import re
import shutil
import subprocess
import sys
import tempfile

kHere = os.path.dirname(os.path.abspath(__file__))
kDecks = (("C3D4", 16), ("C3D10", 11))  # type and cubes along an edge, about 1 MB each
kAbsent = 77
kRunLimit = 600  # seconds
# The C library's text functions are then the same ones on every processor.
kTunables = "glibc.cpu.hwcaps=-AVX2,-AVX512F,-AVX512VL,-AVX512BW,-ERMS,-FSRM"


class Failed(Exception):
    pass


def Compiler(program):
    with open(program, "rb") as file:
        names = set(re.findall(rb"GCC: \([^)]*\) [0-9.]+|clang version [0-9.]+", file.read()))
    return ", ".join(sorted(name.decode() for name in names)) or "unknown"


def Count(options, kind, nCubes, folder):
    deck = os.path.join(folder, kind + ".inp")
    made = subprocess.run([options.maker, deck, "--type", kind, "--cubes", str(nCubes), "--invert", "0.01"],
                          capture_output=True, text=True)
    if made.returncode != 0:
        raise Failed(f"{kind}: no deck: {made.stderr.strip()}")
    summary = os.path.join(folder, kind + ".summary")
    with open(summary, "w") as file:
        file.write(made.stdout)
    out = os.path.join(folder, kind)
    os.mkdir(out)
    profile = os.path.join(folder, kind + ".callgrind")
    run = subprocess.run(["valgrind", "--tool=callgrind", f"--callgrind-out-file={profile}", options.program, deck,
                          "--vtk"], cwd=out, capture_output=True, text=True, timeout=kRunLimit,
                         env=dict(os.environ, GLIBC_TUNABLES=kTunables))
    log = os.path.join(folder, kind + ".log")
    text = run.stdout
    # Valgrind gives the C library a heap segment of 8 MB only. Where that ends an allocation can need its second
    # try, which the program reports; outside valgrind this does not happen, so it is no fault of the run.
    if "brk segment overflow" in run.stderr:
        text = text.replace("Warning> trying to allocate memory ... \n", "")
    with open(log, "w") as file:
        file.write(text)
    if run.returncode != 0:
        raise Failed(f"{kind}: the run ended with status {run.returncode}: {run.stderr.strip()[-500:]}")
    check = subprocess.run([sys.executable, os.path.join(kHere, "check.py"), summary, out, log, "--vtk"],
                           capture_output=True, text=True)
    if check.returncode != 0:
        raise Failed(f"{kind}: the output is {check.stdout.strip()} {check.stderr.strip()[-500:]}")
    with open(profile) as file:
        match = re.search(r"^(?:summary|totals): (\d+)", file.read(), re.M)
    if match is None:
        raise Failed(f"{kind}: valgrind gave no count")
    return int(match.group(1))


def ReadFigures(path):
    figures = {}
    with open(path) as file:
        for line in file:
            key, _, value = line.partition(":")
            if value and not line.startswith("#"):
                figures[key.strip()] = value.strip()
    return figures


def WriteFigures(path, counts, compiler):
    with open(path, "w") as file:
        file.write("# Instructions of whole runs with --vtk on small decks, written by instructions.py --renew.\n")
        file.write(f"compiler: {compiler}\n")
        for kind, count in counts.items():
            file.write(f"{kind}: {count}\n")


def Compare(kind, count, figure, margin):
    """True when the count is within the margin; says so either way."""
    change = count / figure - 1
    text = f"{kind}: {count} instructions, committed {figure}, {change:+.2%}"
    if change > margin:
        print(f"{text}: slower than the margin of {margin:.0%} allows")
    elif change < -margin:
        print(f"{text}: faster by more than {margin:.0%}; renew the figure with --renew")
    else:
        print(f"{text}: within {margin:.0%}")
    return abs(change) <= margin


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--program", required=True)
    parser.add_argument("--maker", required=True)
    parser.add_argument("--figures", default=os.path.join(kHere, "instructions.txt"))
    parser.add_argument("--margin", type=float, default=0.05)
    parser.add_argument("--renew", action="store_true")
    options = parser.parse_args()
    options.program = os.path.abspath(options.program)
    options.maker = os.path.abspath(options.maker)
    if shutil.which("valgrind") is None:
        print("valgrind is absent")
        return kAbsent
    try:
        with tempfile.TemporaryDirectory(prefix="instructions-") as folder:
            counts = {kind: Count(options, kind, nCubes, folder) for kind, nCubes in kDecks}
    except (Failed, OSError, subprocess.TimeoutExpired) as fault:
        print(fault)
        return 1
    compiler = Compiler(options.program)
    if options.renew:
        WriteFigures(options.figures, counts, compiler)
        print(f"renewed: {counts}")
        return 0
    if not os.path.exists(options.figures):
        print(f"no committed figures; counted {counts}; write them with --renew")
        return 1
    figures = ReadFigures(options.figures)
    if figures.get("compiler") != compiler:
        print(f"note: counted with {compiler}, committed with {figures.get('compiler')}")
    missing = [kind for kind in counts if not figures.get(kind, "").isdigit()]
    if missing:
        print(f"no committed figure for {', '.join(missing)}")
        return 1
    results = [Compare(kind, count, int(figures[kind]), options.margin) for kind, count in counts.items()]
    return 0 if all(results) else 1


if __name__ == "__main__":
    sys.exit(main())
