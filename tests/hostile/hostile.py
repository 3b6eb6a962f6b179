#!/usr/bin/python3
"""Runs the program on decks that are made to hurt it.

Each deck is made twice, once as large as asked for and once eight times as large. A run must end with status 0,
leave a whole "mesh.input" and the summary that the deck's making foretells. Eight times the work may take eight
times the processor time and a margin for the logarithm; work is what is read and what is written, because some
decks make a log or files that outgrow them. Memory must stay in proportion to the deck.

    hostile.py --program PATH --work DIR [--size BYTES] [--only NAME]
"""
import argparse
import itertools
import mmap
import os
import random
import re
import resource
import shutil
import sys

DEFAULT_SIZE = 200_000
FACTOR = 8

# Processor time: a slower small run means more time for the large one. The floor is what a run may take for
# reasons of its own (start, pages, a busy machine).
TIME_MARGIN = 1.2
TIME_FLOOR = 0.25
MOST_SECONDS = 120

# Memory: the dearest deck is "*NSET" and a line end again and again. Each makes a record of the reader and a group
# of the store, 300 bytes each, out of 6 bytes. The constant holds the program, its blocks and first pages.
HELD_PER_BYTE = 128
HELD_ALWAYS = 48 << 20

EXTREMES = (b"-2147483648", b"2147483647")
NODES3 = b"*NODE\n1,0,0\n2,1,0\n3,0,1\n"
NODES4 = b"*NODE\n1,0,0,0\n2,1,0,0\n3,0,1,0\n4,0,0,1\n"


class Deck:
    """A deck being made: pieces are written until the size is reached."""

    def __init__(self, path, size):
        self.file = open(path, "wb")
        self.size = size
        self.written = 0

    def put(self, piece):
        self.file.write(piece)
        self.written += len(piece)

    def full(self, part=1.0):
        return self.written >= self.size * part

    def fill(self, piece, part=1.0):
        """The piece again and again: how often."""
        n = max(1, int((self.size * part - self.written) // len(piece)))
        batch = max(1, 65536 // len(piece))
        for _ in range(n // batch):
            self.put(piece * batch)
        self.put(piece * (n % batch))
        return n

    def rows(self, make, part=1.0):
        """make(0), make(1), ...: how many."""
        for n in itertools.count():
            if self.full(part):
                return n
            self.put(make(n))
        return 0


# Each maker fills the deck and returns what the summary must say: {words: number}. ---------------------------

def fill_only(piece, head=b""):
    def make(deck):
        deck.put(head)
        deck.fill(piece)
        return {}
    return make


def random_bytes(deck):
    rng = random.Random(1)
    while not deck.full():
        deck.put(rng.randbytes(4096))
    return {}


def random_words(deck):
    rng = random.Random(2)
    words = [b"*NODE", b"*ELEMENT,TYPE=CPS3", b"*ELEMENT,TYPE=C3D10,ELSET=C_A", b"*NSET,NSET=A", b"*ELSET,ELSET=A",
             b"*SURFACE,NAME=A", b",", b"\n", b"\n", b"1", b"2", b"3", b"-1", b"1e9", b"A", b"S1", b"S4", b"**", b" ",
             b"\0", b"\r\n", b"2147483647", b",S3\n", b"1,2,3\n", b"1,2,3,4\n"]
    while not deck.full():
        deck.put(b"".join(rng.choice(words) for _ in range(200)))
    return {}


def node_blocks(number):
    """Nodes that no element uses: none is left."""
    def make(deck):
        deck.rows(lambda i: b"*NODE\n%d,0,0\n" % number(i))
        return {"Number of elements ": 0, "Number of nodes ": 0}
    return make


def element_blocks(number):
    def make(deck):
        deck.put(NODES3)
        n = deck.rows(lambda i: b"*ELEMENT,TYPE=CPS3\n%d,1,2,3\n" % number(i))
        return {"Number of elements ": n, "Number of cell groups ": n, "Number of nodes ": 3}
    return make


def node_sets(name, number, part=1.0):
    def make(deck):
        n = deck.rows(lambda i: b"*NSET,NSET=%s\n%d\n" % (name(i), number(i)), part)
        return {"Number of node groups ": n}
    return make


def element_sets(number):
    def make(deck):
        deck.rows(lambda i: b"*ELSET,ELSET=E%d\n%d\n" % (i, number(i)))
        return {"Number of cell groups ": 0}
    return make


def surfaces(number):
    def make(deck):
        deck.put(NODES3 + b"*ELEMENT,TYPE=CPS3\n1,1,2,3\n")
        n = deck.rows(lambda i: b"*SURFACE\n%d,S1\n" % number(i))
        return {"Number of face groups ": n}
    return make


def numbers_in(head, row, numbers):
    """One section, its rows numbered by what numbers(i) gives."""
    def make(deck):
        deck.put(head)
        n = deck.rows(lambda i: row % numbers(i))
        return {"Number of elements ": n} if b"*ELEMENT" in head else {}
    return make


def overlapping_nodes(deck):
    most = 2_000_000_000
    deck.rows(lambda i: b"*NODE\n%d,0,0\n%d,1,0\n" % (i, most - i))
    return {"Number of nodes ": 0}


def overlapping_elements(deck):
    deck.put(NODES3)
    most = 2_000_000_000
    n = deck.rows(lambda i: b"*ELEMENT,TYPE=CPS3\n%d,1,2,3\n%d,1,3,2\n" % (i, most - i), 0.7)
    deck.put(b"*ELSET,ELSET=ALL\n")
    deck.rows(lambda i: b"%d,%d\n" % (i, most - i))
    deck.put(b"*SURFACE,NAME=S\nALL,S1\n")
    return {"Number of elements ": 2 * n, "Number of face groups ": 1}


def surface_of_many_sets(deck):
    deck.put(NODES3 + b"*ELEMENT,TYPE=CPS3\n1,1,2,3\n")
    n = deck.rows(lambda i: b"*ELSET,ELSET=E%07d\n1\n" % i, 0.7)
    deck.put(b"*SURFACE,NAME=S\n")
    for i in range(n):
        deck.put(b"E%07d,S2\n" % i)
    return {"Number of face groups ": 1, "Number of elements ": 1}


def surface_of_one_large_set(deck):
    deck.put(NODES3 + b"*ELEMENT,TYPE=CPS3,ELSET=A\n")
    n = deck.rows(lambda i: b"%d,1,2,3\n" % i, 0.4)
    deck.put(b"*ELSET,ELSET=E\n")
    for i in range(n):
        deck.put(b"%d\n" % i)
    deck.put(b"*SURFACE,NAME=S\n")
    deck.fill(b"E,S1\nE,S3\n")
    return {"Number of elements ": n}


def many_surfaces_of_one_set(deck):
    deck.put(NODES3 + b"*ELEMENT,TYPE=CPS3,ELSET=A\n")
    n = deck.rows(lambda i: b"%d,1,2,3\n" % i, 0.4)
    deck.put(b"*ELSET,ELSET=E\n")
    for i in range(n):
        deck.put(b"%d\n" % i)
    s = deck.fill(b"*SURFACE\nE,S1\n")
    return {"Number of elements ": n, "Number of face groups ": s}


def surface_of_missing_faces(deck):
    """Each entry reports each element of its set: the log grows with the square, so the set stays small."""
    deck.put(NODES3 + b"*ELEMENT,TYPE=CPS3,ELSET=A\n")
    for i in range(8):
        deck.put(b"%d,1,2,3\n" % i)
    deck.put(b"*ELSET,ELSET=E\n0,1,2,3,4,5,6,7\n*SURFACE,NAME=S\n")
    deck.rows(lambda i: b"%d,S7\n" % i, 0.5)
    deck.fill(b"E,S9\n", 0.6)
    return {"Number of elements ": 8}


def cohesive_groups(name):
    def make(deck):
        deck.put(NODES3)
        n = deck.rows(lambda i: b"*ELEMENT,TYPE=CPS3,ELSET=C_%s\n%d,1,2,3\n" % (name(i), i))
        # Of one name the newest group stands for all; otherwise every cell is cut loose from the three nodes.
        return {"Number of elements ": n, "Number of nodes ": 6 if name(0) == name(1) and n > 1 else 3 * n}
    return make


def element_sets_that_share_a_name(deck):
    deck.put(NODES3 + b"*ELEMENT,TYPE=CPS3\n1,1,2,3\n")
    deck.fill(b"*ELSET,ELSET=E\n1\n", 0.6)
    deck.put(b"*SURFACE,NAME=S\n")
    deck.fill(b"E,S1\n")
    return {"Number of elements ": 1}


def long_names(deck):
    long = b"N" * 300
    n = deck.rows(lambda i: b"*NSET,NSET=%s%d\n1\n" % (long, i))
    return {"Number of node groups ": n}


def names_that_differ_at_their_end(deck):
    long = b"N" * 240
    deck.put(NODES3 + b"*ELEMENT,TYPE=CPS3\n1,1,2,3\n")
    n = deck.rows(lambda i: b"*ELSET,ELSET=%s%07d\n1\n" % (long, i), 0.5)
    deck.put(b"*SURFACE,NAME=S\n")
    for i in range(n):
        deck.put(b"%s%07d,S1\n" % (long, i))
    return {"Number of face groups ": 1}


def one_long_name(deck):
    deck.put(b"*NSET,NSET=")
    deck.fill(b"N", 0.5)
    deck.put(b"\n1\n*SURFACE,NAME=")
    deck.fill(b"S", 0.9)
    deck.put(b"\n")
    deck.fill(b"E")
    deck.put(b",S1\n")
    return {"Number of node groups ": 1, "Number of face groups ": 1}


def mixed_types(deck):
    deck.put(NODES4)
    n = deck.rows(lambda i: b"*ELEMENT,TYPE=%s\n%d,1,2,3,4\n" % (b"C3D4" if i % 2 else b"CPS3", i))
    return {"Number of elements ": n}


def nodes_of_powers(deck):
    """Numbers that the halving of the sort splits most unevenly."""
    deck.put(b"*NODE\n")
    deck.rows(lambda i: b"%d,0,0\n" % ((1 << (i * 7 % 31)) + i % 3))
    return {}


def unresolved_elements(deck):
    deck.put(b"*NODE\n1,0,0\n*ELEMENT,TYPE=C3D10\n")
    n = deck.rows(lambda i: b"%d,2,3,4,5,6,7,8,9,\n10,11\n" % i)
    return {"Number of elements ": n, "Number of nodes ": 0}


def same(value):
    return lambda i: value


def descending(i):
    return 2_000_000_000 - i


def ascending(i):
    return i


def label(i):
    return b"N%d" % i


def extreme(i):
    return EXTREMES[i % 2]


DECKS = {
    "commas": fill_only(b","),
    "commas in nodes": fill_only(b",", b"*NODE\n"),
    "commas in a set": fill_only(b",", b"*NSET\n"),
    "asterisks": fill_only(b"*"),
    "asterisks and blanks": fill_only(b"* "),
    "asterisks and blanks in lines": fill_only(b"* \n"),
    "one line": fill_only(b"1"),
    "one line of nodes": fill_only(b"1", b"*NODE\n1,"),
    "one line of a set": fill_only(b"1,", b"*NSET\n"),
    "one keyword line": fill_only(b"A", b"*NODE,NSET="),
    "one line of refused words": fill_only(b"INPU", b"*NODE,"),
    "continuation lines": fill_only(b"1,\n"),
    "continuation lines of nodes": fill_only(b"1,\n", b"*NODE\n"),
    "continuation lines of elements": fill_only(b"1,\n", b"*ELEMENT,TYPE=C3D10\n"),
    "continuation lines of a keyword": fill_only(b"A,\n", b"*NODE,\n"),
    "empty lines after a comma": fill_only(b"\n", b"*NODE\n1,\n"),
    "comments after a comma": fill_only(b"**,\n", b"*ELEMENT,TYPE=CPS3\n1,\n"),
    "lines just too long": fill_only(b"1" * 5120 + b"\n", b"*NODE\n"),
    "lines of five elements": fill_only(b"1,1,2,3,4,5,\n", b"*ELEMENT,TYPE=C3D10\n"),
    "keyword lines": fill_only(b"*A\n"),
    "keyword lines of nothing": fill_only(b"*\n"),
    "empty node blocks": fill_only(b"*NODE\n"),
    "empty element blocks": fill_only(b"*ELEMENT,TYPE=CPS3\n"),
    "empty node sets": fill_only(b"*NSET\n"),
    "empty element sets": fill_only(b"*ELSET\n"),
    "empty surfaces": fill_only(b"*SURFACE\n"),
    "refused sections": fill_only(b"*NSET,GENERATE\n1\n"),
    "unknown types": fill_only(b"*ELEMENT,TYPE=X\n1\n"),
    "node blocks, ascending": node_blocks(ascending),
    "node blocks, one number": node_blocks(same(7)),
    "node blocks, descending": node_blocks(descending),
    "node blocks, numbers in turn": node_blocks(lambda i: i % 3),
    "element blocks, ascending": element_blocks(ascending),
    "element blocks, one number": element_blocks(same(7)),
    "element blocks, descending": element_blocks(descending),
    "node sets, ascending": node_sets(label, ascending),
    "node sets, one name": node_sets(same(b"N"), same(7), 0.1),
    "node sets, descending": node_sets(label, descending),
    "element sets, ascending": element_sets(ascending),
    "element sets, descending": element_sets(descending),
    "surfaces, ascending": surfaces(ascending),
    "surfaces, one number": surfaces(same(1)),
    "surfaces, descending": surfaces(descending),
    "equal nodes": numbers_in(b"*NODE\n", b"%d,1,2\n", same(5)),
    "equal elements": numbers_in(NODES3 + b"*ELEMENT,TYPE=CPS3\n", b"%d,1,2,3\n", same(5)),
    "equal numbers in a set": numbers_in(NODES3 + b"*NSET,NSET=A\n", b"%d\n", same(3)),
    "extreme nodes": numbers_in(b"*NODE\n", b"%s,1,2\n", extreme),
    "extreme elements": numbers_in(NODES3 + b"*ELEMENT,TYPE=CPS3\n", b"%s,1,2,3\n", extreme),
    "extreme numbers in a set": numbers_in(NODES3 + b"*NSET,NSET=A\n", b"%s\n", extreme),
    "descending nodes": numbers_in(b"*NODE\n", b"%d,1,2\n", descending),
    "nodes of powers": nodes_of_powers,
    "overlapping node blocks": overlapping_nodes,
    "overlapping element blocks": overlapping_elements,
    "a surface of many sets": surface_of_many_sets,
    "a surface of one large set": surface_of_one_large_set,
    "many surfaces of one set": many_surfaces_of_one_set,
    "a surface of missing faces": surface_of_missing_faces,
    "sets that share a name": element_sets_that_share_a_name,
    "cohesive groups, one name": cohesive_groups(same(b"A")),
    "cohesive groups": cohesive_groups(label),
    "mixed types": mixed_types,
    "unresolved elements": unresolved_elements,
    "NULs": fill_only(b"\0"),
    "NULs in nodes": fill_only(b"1,\0\n", b"*NODE\n"),
    "high bytes": fill_only(b"\x80"),
    "high bytes in nodes": fill_only(b"1\x80,\xff2,3\n", b"*NODE\n"),
    "newlines": fill_only(b"\n"),
    "carriage returns": fill_only(b"\r"),
    "blanks": fill_only(b" ", b"*NODE\n"),
    "bad node lines": fill_only(b",,,\n1\n", b"*NODE\n"),
    "bad surface lines": fill_only(b"A\n", b"*SURFACE\n"),
    "random bytes": random_bytes,
    "random words": random_words,
    "long names": long_names,
    "names that differ at their end": names_that_differ_at_their_end,
    "one long name": one_long_name,
}

# Written with "--vtk" too. A file for each of very many sets is the file system's time, not the program's.
WITH_VTK = {"cohesive groups", "mixed types", "equal elements", "node sets, one name", "overlapping element blocks",
            "random words", "unresolved elements", "many surfaces of one set"}


class Run:
    """One run: what it took and what it left."""

    def __init__(self, program, folder, arguments, limit_memory):
        def limits():
            resource.setrlimit(resource.RLIMIT_CPU, (MOST_SECONDS, MOST_SECONDS))
            resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
            if limit_memory:
                resource.setrlimit(resource.RLIMIT_AS, (limit_memory, limit_memory))

        child = os.fork()
        if child == 0:
            try:
                os.chdir(folder)
                for number, name, flags in ((0, os.devnull, os.O_RDONLY), (1, "log", os.O_WRONLY | os.O_CREAT),
                                            (2, "errors", os.O_WRONLY | os.O_CREAT)):
                    os.dup2(os.open(name, flags, 0o666), number)
                limits()
                os.execv(program, [program, "deck.inp", *arguments])
            finally:
                os._exit(127)
        _, status, usage = os.wait4(child, 0)
        self.status = os.waitstatus_to_exitcode(status)
        self.seconds = usage.ru_utime + usage.ru_stime
        self.peak = usage.ru_maxrss * 1024
        self.read = os.path.getsize(os.path.join(folder, "deck.inp"))
        self.written = sum(e.stat().st_size for e in os.scandir(folder)) - self.read
        self.errors = read_end(os.path.join(folder, "errors"))
        self.log_end = read_end(os.path.join(folder, "log"))
        self.summary = read_summary(os.path.join(folder, "log"))
        mesh = os.path.join(folder, "mesh.input")
        self.mesh_end = read_end(mesh) if os.path.isfile(mesh) else b""


def read_end(path, size=4096):
    with open(path, "rb") as file:
        file.seek(max(0, os.path.getsize(path) - size))
        return file.read()


def read_summary(path):
    if os.path.getsize(path) == 0:
        return b""
    with open(path, "rb") as file, mmap.mmap(file.fileno(), 0, access=mmap.ACCESS_READ) as log:
        at = log.rfind(b"\n  Mesh summary:\n")
        return log[at:at + 1000] if at != -1 else b""


def summary_figure(summary, words):
    for line in summary.split(b"\n"):
        if line.strip().startswith(words.strip().encode()) and b"=" in line:
            return int(line.rsplit(b"=", 1)[1])
    return None


def complaints_of(run, wanted, bounded):
    """What is wrong with one run."""
    if run.status != 0:
        return [f"ended with {run.status}: {run.errors.decode('latin-1').strip()[-300:]}"]
    found = []
    if run.errors:
        found.append(f"wrote to standard error: {run.errors[:200]!r}")
    if not run.mesh_end.endswith(b"</Groups>\n\n"):
        found.append("mesh.input is not whole")
    if b"\nJob finished at " not in run.log_end:
        found.append("the log has no end")
    for words, number in wanted.items():
        got = summary_figure(run.summary, words)
        if got != number:
            found.append(f"{words.strip()} is {got}, not {number}")
    most = run.read * HELD_PER_BYTE + HELD_ALWAYS
    if bounded and run.peak > most:
        found.append(f"took {run.peak >> 20} MB of memory, more than {most >> 20} MB")
    return found


def is_sanitized(program):
    with open(program, "rb") as file:
        return b"__asan_init" in file.read()


def run_deck(name, make, size, program, work, bounded):
    """Makes the deck and runs the program on it: the run, and what is wrong with it."""
    folder = os.path.join(work, re.sub(r"[^a-z]+", "-", name.lower()))
    shutil.rmtree(folder, ignore_errors=True)
    os.makedirs(folder)
    deck = Deck(os.path.join(folder, "deck.inp"), size)
    wanted = make(deck)
    deck.file.close()
    limit = deck.written * HELD_PER_BYTE * 2 + (1 << 30) if bounded else 0
    run = Run(program, folder, ["--vtk"] if name in WITH_VTK else [], limit)
    shutil.rmtree(folder)
    return run, complaints_of(run, wanted, bounded)


def compare_runs(small, large):
    """What is wrong with the growth from one run to the other."""
    work = (large.read + large.written) / (small.read + small.written)
    most = TIME_FLOOR + small.seconds * max(work, FACTOR) * (1 + TIME_MARGIN)
    if large.seconds > most:
        return [f"took {small.seconds:.3f} s, then {large.seconds:.3f} s for {work:.1f} times the work"]
    return []


def main():
    options = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    options.add_argument("--program", required=True)
    options.add_argument("--work", required=True)
    options.add_argument("--size", type=int, default=DEFAULT_SIZE)
    options.add_argument("--only")
    options.add_argument("--verbose", action="store_true")
    options = options.parse_args()
    program = os.path.abspath(options.program)
    bounded = not is_sanitized(program)
    if not bounded:
        print("sanitizers are built in: time and memory are not bounded")
    failures = 0
    worst = (0.0, "")
    for name, make in DECKS.items():
        if options.only and options.only != name:
            continue
        small, found = run_deck(name, make, options.size, program, options.work, bounded)
        large, more = run_deck(name, make, options.size * FACTOR, program, options.work, bounded)
        found += more + (compare_runs(small, large) if bounded else [])
        held = max(0, large.peak - HELD_ALWAYS // 4) / large.read
        worst = max(worst, (held, name))
        if options.verbose or found:
            print(f"{name:34} {small.seconds:7.3f} s {large.seconds:8.3f} s {large.peak >> 20:6} MB "
                  f"{held:6.1f} bytes per byte")
        for complaint in found:
            print(f"  FAILED {name}: {complaint}")
        failures += bool(found)
        sys.stdout.flush()
    print(f"most memory: {worst[0]:.0f} bytes per byte of deck ({worst[1]})")
    print(f"{failures} decks failed" if failures else "all decks passed")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
