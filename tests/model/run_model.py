#!/usr/bin/env python3
"""Runs the program on random decks and compares all that it leaves with the model's answer.

    run_model.py --program build/KIVOm --count 300 --seed 1 --work /tmp/model [--vtk] [--keep] [--jobs 2]

Deck number i is that of seed SEED + i, so `--seed S --count 1 --keep` makes and runs one deck of a report again.
Compared are the exit status, the log (banner, dates and times masked), the set of files left, each file byte for
byte, and "mesh.input" once more through tools/kivomesh.py, value by value. A passed deck's folder is removed unless
--keep is given. For each failed deck: its seed, its folder and the first line that differs. Exit status 1 then.
"""
import argparse
import os
import re
import shutil
import subprocess
import sys
from concurrent.futures import ProcessPoolExecutor

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path[:0] = [HERE, os.path.join(HERE, "..", "..", "tools")]

import kivomesh                                      # noqa: E402
from generate import generate, spelled               # noqa: E402
from model import expect                             # noqa: E402

TIMEOUT = 60                                         # seconds for one deck
TITLE = "Mesh Translator for KIVOcom (Version: 07/04/2019)"


def mask(log):
    """The log with banner, dates and times replaced. A banner that is not in its form is left, so that it shows."""
    banner = re.match(r"\n(?:[* ]{60}\n){11} {6}%s {5}\n\n" % re.escape(TITLE), log)
    if banner:
        log = "<banner>\n" + log[banner.end():]
    date = r"\d\d [A-Z][a-z]+ \d{4} \d\d:\d\d:\d\d [AP]M"
    log = re.sub(r"^(Job (?:started|finished) at )%s$" % date, r"\1<date>", log, flags=re.M)
    return re.sub(r"^Elapsed Time: \d+\.\d{6} sec\.$", "Elapsed Time: <t> sec.", log, flags=re.M)


def first_difference(name, expected, found):
    """The first line at which two texts part, or None."""
    if expected == found:
        return None
    one, other = expected.split("\n"), found.split("\n")
    for at in range(max(len(one), len(other))):
        left = repr(one[at]) if at < len(one) else "the end"
        right = repr(other[at]) if at < len(other) else "the end"
        if left != right:
            return "%s line %d: expected %s, found %s" % (name, at + 1, left, right)
    return None


def rounded(numbers):
    """Doubles as they come back from the file's sixteen digits."""
    return tuple(float("%.15e" % number) for number in numbers)


def mesh_difference(found, mesh):
    """Compares what the reader made of the file with the model's mesh; None when they agree."""
    dimension = mesh.dimension or None
    positions = [rounded(node.xyz[:dimension]) for node in mesh.nodes] if dimension else []
    lengths = rounded((mesh.characteristic, mesh.shortest, mesh.longest)) if dimension else (None,) * 3
    wanted = {
        "dimension": dimension,
        "characteristic": lengths[0], "shortest": lengths[1], "longest": lengths[2],
        "current": positions, "previous": positions, "initial": positions,
        "node_tags": [node.tag for node in mesh.nodes] if dimension else [],
        "on_boundary": [1] * len(positions),
        "faces": [tuple(face.nodes) for face in mesh.faces], "face_tags": [face.tag for face in mesh.faces],
        "cells": [tuple(cell.nodes) for cell in mesh.cells], "cell_tags": [cell.tag for cell in mesh.cells],
        "cell_types": [cell.family.code for cell in mesh.cells],
    }
    for name, value in wanted.items():
        if getattr(found, name) != value:
            return "mesh.input through the reader: %s differ" % name
    for kind in ("node_groups", "face_groups", "cell_groups"):
        if [(g.name, g.tag) for g in getattr(found, kind)] != [(g.name, g.tag) for g in getattr(mesh, kind)]:
            return "mesh.input through the reader: %s differ" % kind
    for group, block in zip(found.cell_groups, mesh.cell_groups):
        if (group.shortest, group.longest, group.characteristic) != rounded(
                (block.shortest, block.longest, block.characteristic)):
            return "mesh.input through the reader: the lengths of cell group %s differ" % group.name
    return None


def read_files(folder):
    found = {}
    for name in sorted(os.listdir(folder)):
        with open(os.path.join(folder, name), "rb") as stream:
            found[name] = stream.read()
    return found


def check(program, seed, folder, vtk):
    """Runs one deck; gives None, or what differs first."""
    deck = generate(seed)
    text, too_long = spelled(deck, seed)
    answer = expect(deck, vtk, too_long)
    os.makedirs(folder)
    with open(os.path.join(folder, "deck.inp"), "wb") as stream:
        stream.write(text)
    arguments = (["--vtk", "deck.inp"] if seed % 2 else ["deck.inp", "--vtk"]) if vtk else ["deck.inp"]
    try:
        run = subprocess.run([program] + arguments, cwd=folder, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                             stderr=subprocess.PIPE, timeout=TIMEOUT)
    except subprocess.TimeoutExpired:
        return "no end after %d seconds" % TIMEOUT
    if run.returncode or run.stderr:
        return "exit status %d, standard error %r" % (run.returncode, run.stderr[-300:])
    difference = first_difference("log", answer.log, mask(run.stdout.decode("latin-1")))
    if difference:
        return difference
    files = read_files(folder)
    if files.pop("deck.inp") != text:
        return "the deck was changed"
    if set(files) != set(answer.files):
        return "files missing: %s, not expected: %s" % (
            sorted(set(answer.files) - set(files)), sorted(set(files) - set(answer.files)))
    for name in sorted(files):
        difference = first_difference(name, answer.files[name].decode("latin-1"), files[name].decode("latin-1"))
        if difference:
            return difference
    try:
        return mesh_difference(kivomesh.read(os.path.join(folder, "mesh.input")), answer.mesh)
    except kivomesh.MeshError as error:
        return "the reader refuses the file: %s" % error


def run_one(task):
    program, seed, work, vtk, keep = task
    folder = os.path.join(work, "deck-%d" % seed)
    shutil.rmtree(folder, ignore_errors=True)
    try:
        difference = check(program, seed, folder, vtk)
    except Exception as error:                       # the harness itself: reported with its seed like any failure
        difference = "the check itself failed: %s: %s" % (type(error).__name__, error)
    if difference is None and not keep:
        shutil.rmtree(folder, ignore_errors=True)
    return seed, folder, difference


def main():
    parser = argparse.ArgumentParser(description="Compares the program with the model over random decks.")
    parser.add_argument("--program", required=True)
    parser.add_argument("--count", type=int, default=300)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--work", required=True)
    parser.add_argument("--vtk", action="store_true")
    parser.add_argument("--keep", action="store_true")
    parser.add_argument("--jobs", type=int, default=2)
    options = parser.parse_args()
    program = os.path.abspath(options.program)
    if not os.access(program, os.X_OK):
        sys.exit("run_model.py: there is no program %s" % program)
    os.makedirs(options.work, exist_ok=True)
    work = os.path.abspath(options.work)
    tasks = [(program, options.seed + at, work, options.vtk, options.keep) for at in range(options.count)]
    failed = 0
    with ProcessPoolExecutor(max_workers=max(1, options.jobs)) as pool:
        for seed, folder, difference in pool.map(run_one, tasks, chunksize=4):
            if difference is not None:
                failed += 1
                print("seed %d failed in %s\n    %s" % (seed, folder, difference))
    print("%d passed, %d failed" % (options.count - failed, failed))
    return 1 if failed or options.count < 1 else 0


if __name__ == "__main__":
    sys.exit(main())
