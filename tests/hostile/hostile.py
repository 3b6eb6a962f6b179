#!/usr/bin/python3
"""Runs the program on decks that are made to hurt it.

    hostile.py --program PATH --work DIR [--check] [--size BYTES] [--only NAME] [--part I/N] [--verbose]

Each deck is made twice, once as large as asked for and once eight times as large. A run must end with status 0,
leave a whole "mesh.input" and the summary that the deck's making foretells. Eight times the work may take eight
times the processor time and a margin for the logarithm; work is what is read and what is written, because some
decks make a log or files that outgrow them. Memory must stay in proportion to the deck.

With --check the program is kivodeck, and each deck, of some kinds more, is checked: the status is 0 or 1, or 2
where a file is missing, the report one whole object. With --part every N-th kind of deck is tried, from the I-th on.
"""
import argparse, itertools, json, mmap, os, random, re, resource, shutil, sys

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

# A finding in JSON has some hundred bytes, and the dearest decks have one every ten. What a deck lists many times, sets
# of sets and surfaces of one set, is held some million times whatever the deck's size.
CHECK_HELD_PER_BYTE = 400
CHECK_HELD_ALWAYS = 300 << 20

MOST = 2_000_000_000
NODES3 = b"*NODE\n1,0,0\n2,1,0\n3,0,1\n"
NODES4 = b"*NODE\n1,0,0,0\n2,1,0,0\n3,0,1,0\n4,0,0,1\n"
ONE_CELL = NODES3 + b"*ELEMENT,TYPE=CPS3\n1,1,2,3\n"
CELLS, NODES = "Number of elements", "Number of nodes"
CELL_GROUPS, NODE_GROUPS, FACE_GROUPS = ("Number of %s groups" % kind for kind in ("cell", "node", "face"))


class Deck:
    """A deck being made: pieces are put until the size, or a part of it, is reached."""

    def __init__(self, size):
        self.size, self.text = size, bytearray()

    def put(self, piece):
        self.text += piece

    def fill(self, piece, part=1.0):
        """The piece again and again: how often."""
        n = max(1, int((self.size * part - len(self.text)) // len(piece)))
        self.put(piece * n)
        return n

    def rows(self, make, part=1.0):
        """make(0), make(1), ...: how many."""
        for n in itertools.count():
            if len(self.text) >= self.size * part:
                return n
            self.put(make(n))


# Each maker fills the deck and returns what the summary must say: {words: number}. ---------------------------

def only(piece, head=b""):
    def make(deck):
        deck.put(head)
        deck.fill(piece)
        return {}
    return make


def rows(row, *counted, head=b"", part=1.0, **figures):
    """Rows row(0), row(1), ... behind a head. The words `counted` have as many entries as there are rows."""
    def make(deck):
        deck.put(head)
        n = deck.rows(row, part)
        return {**dict.fromkeys(counted, n), **{name.replace("_", " "): value for name, value in figures.items()}}
    return make


def random_words(deck):
    rng = random.Random(2)
    words = [b"*NODE", b"*ELEMENT,TYPE=CPS3", b"*ELEMENT,TYPE=C3D10,ELSET=C_A", b"*NSET,NSET=A", b"*ELSET,ELSET=A",
             b"*SURFACE,NAME=A", b",", b"\n", b"\n", b"1", b"2", b"3", b"-1", b"1e9", b"A", b"S1", b"S4", b"**", b" ",
             b"\0", b"\r\n", b"2147483647", b",S3\n", b"1,2,3\n", b"1,2,3,4\n"]
    deck.rows(lambda i: b"".join(rng.choice(words) for _ in range(200)))
    return {}


def overlapping_elements(deck):
    deck.put(NODES3)
    n = deck.rows(lambda i: b"*ELEMENT,TYPE=CPS3\n%d,1,2,3\n%d,1,3,2\n" % (i, MOST - i), 0.7)
    deck.put(b"*ELSET,ELSET=ALL\n")
    deck.rows(lambda i: b"%d,%d\n" % (i, MOST - i))
    deck.put(b"*SURFACE,NAME=S\nALL,S1\n")
    return {CELLS: 2 * n, FACE_GROUPS: 1}


def surface_of_sets(name, entry):
    """A set for each name(i), then one surface that names them all."""
    def make(deck):
        deck.put(ONE_CELL)
        n = deck.rows(lambda i: b"*ELSET,ELSET=%s\n1\n" % name(i), 0.6)
        deck.put(b"*SURFACE,NAME=S\n")
        for i in range(n):
            deck.put(name(i) + entry)
        return {FACE_GROUPS: 1, CELLS: 1}
    return make


def surfaces_of_one_set(head, piece, figure):
    """A set of many elements, then the piece again and again."""
    def make(deck):
        deck.put(NODES3 + b"*ELEMENT,TYPE=CPS3,ELSET=A\n")
        n = deck.rows(lambda i: b"%d,1,2,3\n" % i, 0.4)
        deck.put(b"*ELSET,ELSET=E\n" + b"".join(b"%d\n" % i for i in range(n)) + head)
        times = deck.fill(piece)
        return {CELLS: n, FACE_GROUPS: times if figure is None else figure}
    return make


def surface_of_missing_faces(deck):
    """Each entry reports each element of its set: the log grows with the square, so the set stays small."""
    deck.put(NODES3 + b"*ELEMENT,TYPE=CPS3,ELSET=A\n" + b"".join(b"%d,1,2,3\n" % i for i in range(8)))
    deck.put(b"*ELSET,ELSET=E\n0,1,2,3,4,5,6,7\n*SURFACE,NAME=S\n")
    deck.rows(lambda i: b"%d,S7\n" % i, 0.5)
    deck.fill(b"E,S9\n", 0.6)
    return {CELLS: 8}


def cohesive_groups(name):
    def make(deck):
        deck.put(NODES3)
        n = deck.rows(lambda i: b"*ELEMENT,TYPE=CPS3,ELSET=C_%s\n%d,1,2,3\n" % (name(i), i))
        # Of one name the newest group stands for all; otherwise every cell is cut loose from the three nodes.
        return {CELLS: n, NODES: 6 if name(0) == name(1) and n > 1 else 3 * n}
    return make


def one_long_name(deck):
    for head, piece, part in ((b"*NSET,NSET=", b"N", 0.5), (b"\n1\n*SURFACE,NAME=", b"S", 0.9), (b"\n", b"E", 1.0)):
        deck.put(head)
        deck.fill(piece, part)
    deck.put(b",S1\n")
    return {NODE_GROUPS: 1, FACE_GROUPS: 1}


def same(value):
    return lambda i: value


def numbered(*parts):
    """What the row of number i is: the format and the numbers that go into it."""
    form, *numbers = parts
    return lambda i: form % tuple(number(i) for number in numbers)


def descending(i):
    return MOST - i


def ascending(i):
    return i


def label(i):
    return b"N%d" % i


def extreme(i):
    return (-2147483648, 2147483647)[i % 2]


def blocks_and_sets():
    """Sections of one row each, numbered in different orders."""
    orders = {"ascending": ascending, "one number": same(1), "descending": descending,
              "numbers in turn": lambda i: i % 3}
    for order, number in orders.items():
        yield "node blocks, " + order, rows(numbered(b"*NODE\n%d,0,0\n", number), Number_of_elements=0,
                                            Number_of_nodes=0)
        yield "element blocks, " + order, rows(numbered(b"*ELEMENT,TYPE=CPS3\n%d,1,2,3\n", number), CELLS, CELL_GROUPS,
                                               head=NODES3, Number_of_nodes=3)
        yield "node sets, " + order, rows(numbered(b"*NSET,NSET=%s\n%d\n", label, number), NODE_GROUPS)
        yield "element sets, " + order, rows(numbered(b"*ELSET,ELSET=E%d\n%d\n", ascending, number),
                                             Number_of_cell_groups=0)
        yield "surfaces, " + order, rows(numbered(b"*SURFACE\n%d,S1\n", number), FACE_GROUPS, head=ONE_CELL)


def long_sections():
    """One section, its rows numbered in different ways."""
    for kind, number in (("equal", same(3)), ("extreme", extreme), ("descending", descending)):
        yield kind + " nodes", rows(numbered(b"%d,1,2\n", number), head=b"*NODE\n")
        yield kind + " elements", rows(numbered(b"%d,1,2,3\n", number), CELLS, head=NODES3 + b"*ELEMENT,TYPE=CPS3\n")
        yield kind + " numbers in a set", rows(numbered(b"%d\n", number), head=NODES3 + b"*NSET,NSET=A\n")


DECKS = {
    "commas": only(b","),
    "commas in nodes": only(b",", b"*NODE\n"),
    "commas in a set": only(b",", b"*NSET\n"),
    "asterisks": only(b"*"),
    "asterisks and blanks": only(b"* "),
    "asterisks and blanks in lines": only(b"* \n"),
    "one line": only(b"1"),
    "one line of nodes": only(b"1", b"*NODE\n1,"),
    "one line of a set": only(b"1,", b"*NSET\n"),
    "one keyword line": only(b"A", b"*NODE,NSET="),
    "one line of refused words": only(b"INPU", b"*NODE,"),
    "continuation lines": only(b"1,\n"),
    "continuation lines of nodes": only(b"1,\n", b"*NODE\n"),
    "continuation lines of elements": only(b"1,\n", b"*ELEMENT,TYPE=C3D10\n"),
    "continuation lines of a keyword": only(b"A,\n", b"*NODE,\n"),
    "empty lines after a comma": only(b"\n", b"*NODE\n1,\n"),
    "comments after a comma": only(b"**,\n", b"*ELEMENT,TYPE=CPS3\n1,\n"),
    "lines just too long": only(b"1" * 5120 + b"\n", b"*NODE\n"),
    "lines of five elements": only(b"1,1,2,3,4,5,\n", b"*ELEMENT,TYPE=C3D10\n"),
    "keyword lines": only(b"*A\n"),
    "keyword lines of nothing": only(b"*\n"),
    "empty node blocks": only(b"*NODE\n"),
    "empty element blocks": only(b"*ELEMENT,TYPE=CPS3\n"),
    "empty node sets": only(b"*NSET\n"),
    "empty element sets": only(b"*ELSET\n"),
    "empty surfaces": only(b"*SURFACE\n"),
    "refused sections": only(b"*NSET,GENERATE\n1\n"),
    "unknown types": only(b"*ELEMENT,TYPE=X\n1\n"),
    **dict(blocks_and_sets()),
    # A file for each of very many sets is the file system's time, so the sets of one name are few.
    "node sets, one name": rows(same(b"*NSET,NSET=N\n7\n"), NODE_GROUPS, part=0.1),
    **dict(long_sections()),
    # Numbers that the halving of the sort splits most unevenly.
    "nodes of powers": rows(lambda i: b"%d,0,0\n" % ((1 << (i * 7 % 31)) + i % 3), head=b"*NODE\n"),
    "overlapping node blocks": rows(numbered(b"*NODE\n%d,0,0\n%d,1,0\n", ascending, descending), Number_of_nodes=0),
    "overlapping element blocks": overlapping_elements,
    "a surface of many sets": surface_of_sets(lambda i: b"E%07d" % i, b",S2\n"),
    "a surface of one large set": surfaces_of_one_set(b"*SURFACE,NAME=S\n", b"E,S1\nE,S3\n", 1),
    "many surfaces of one set": surfaces_of_one_set(b"", b"*SURFACE\nE,S1\n", None),
    "a surface of missing faces": surface_of_missing_faces,
    "sets that share a name": surface_of_sets(same(b"E"), b",S1\n"),
    "cohesive groups, one name": cohesive_groups(same(b"A")),
    "cohesive groups": cohesive_groups(label),
    "mixed types": rows(lambda i: b"*ELEMENT,TYPE=%s\n%d,1,2,3,4\n" % (b"C3D4" if i % 2 else b"CPS3", i), CELLS,
                        head=NODES4),
    "unresolved elements": rows(lambda i: b"%d,2,3,4,5,6,7,8,9,\n10,11\n" % i, CELLS, Number_of_nodes=0,
                                head=b"*NODE\n1,0,0\n*ELEMENT,TYPE=C3D10\n"),
    "NULs": only(b"\0"),
    "NULs in nodes": only(b"1,\0\n", b"*NODE\n"),
    "high bytes": only(b"\x80"),
    "high bytes in nodes": only(b"1\x80,\xff2,3\n", b"*NODE\n"),
    "newlines": only(b"\n"),
    "carriage returns": only(b"\r"),
    "blanks": only(b" ", b"*NODE\n"),
    "bad node lines": only(b",,,\n1\n", b"*NODE\n"),
    "bad surface lines": only(b"A\n", b"*SURFACE\n"),
    "random bytes": rows(lambda i: random.Random(i).randbytes(4096)),
    "random words": random_words,
    "long names": rows(lambda i: b"*NSET,NSET=%s%d\n1\n" % (b"N" * 300, i), NODE_GROUPS),
    "names that differ at their end": surface_of_sets(lambda i: b"N" * 240 + b"%07d" % i, b",S1\n"),
    "one long name": one_long_name,
}

# Checked alone: what the translator passes over or refuses. ------------------------------------------------

PART = b"*PART,NAME=P%d\n" + ONE_CELL + b"*END PART\n"
QUADS = b"*NODE\n1,0,0\n2,1,0\n3,1,1\n4,0,1\n"
MANY_CELLS = [numbered(b"%d,1,2,3\n", ascending), 0.4]


def then(*steps):
    """Steps in turn: bytes are put as they are, (row, part) is rows up to that part of the deck."""
    def make(deck):
        for step in steps:
            if isinstance(step, bytes):
                deck.put(step)
            else:
                deck.rows(*step)
        return {}
    return make


def cells_then(*steps):
    """A set E of many cells, which are the group A, then the steps."""
    return then(NODES3 + b"*ELEMENT,TYPE=CPS3,ELSET=A\n", MANY_CELLS, b"*ELSET,ELSET=E,GENERATE\n1,90000000\n", *steps)


def nodes_then(*steps):
    return then(b"*NODE\n", [numbered(b"%d,0\n", lambda i: 2 * i + 1), 0.4], *steps)


def placed(rows_of_part, *steps):
    """One part of many rows, then its instances."""
    return then(b"*PART,NAME=P\n" + NODES3, *rows_of_part, b"*END PART\n*ASSEMBLY\n",
                [numbered(b"*INSTANCE,NAME=I%d,PART=P\n1,0,0\n*END INSTANCE\n", ascending), 1.0], *steps)


CHECKED = {
    "sets of the set before": then(b"*NODE\n1,0\n*NSET,NSET=N0\n1\n",
                                   [lambda i: b"*NSET,NSET=N%d\nN%d,1\n" % (i + 1, i), 1.0]),
    "sets of the set behind": then(b"*NODE\n1,0\n", [lambda i: b"*NSET,NSET=N%d\nN%d,1\n" % (i, i + 1), 1.0]),
    "sets that grow": nodes_then(b"*NSET,NSET=N0\n1\n",
                                 [lambda i: b"*NSET,NSET=N%d\nN%d,%d\n" % (i + 1, i, 2 * i + 1), 1.0]),
    "one set named again and again": nodes_then(b"*NSET,NSET=A,GENERATE\n1,90000000\n*NSET,NSET=B\n",
                                                [same(b"A\n"), 1.0]),
    "one large set after another": nodes_then([numbered(b"*NSET,NSET=A%d,GENERATE\n1,90000001\n", ascending), 1.0]),
    "ranges of nothing": nodes_then(b"*NSET,NSET=A,GENERATE\n", [same(b"2,90000000,2\n"), 1.0]),
    "one set in many sections": nodes_then([numbered(b"*NSET,NSET=A\n%d\n", lambda i: 2 * i + 1), 1.0]),
    "one surface in many sections": cells_then([numbered(b"*SURFACE,NAME=S\n%d,S1\n", ascending), 1.0]),
    "rows of a set without label": cells_then(b"*SURFACE,NAME=S\n", [same(b"E\n"), 1.0]),
    "surfaces without label": cells_then([numbered(b"*SURFACE,NAME=S%d\nE\n", ascending), 1.0]),
    "rows of a group": cells_then(b"*SURFACE,NAME=S\n", [same(b"A,S1\nA,S2\n"), 1.0]),
    "surfaces taken away": cells_then(b"*SURFACE,NAME=S\nE,S1\n*SURFACE,NAME=T\n1,S1\n"
                                      b"*SURFACE,NAME=D,COMBINE=DIFFERENCE\nS\n", [same(b"T\n"), 1.0]),
    "one section again and again": cells_then([same(b"*SOLID SECTION,ELSET=E,MATERIAL=M\n"), 1.0]),
    "parts of one cell": rows(numbered(PART, ascending)),
    "parts that are not used": then([numbered(PART, ascending), 1.0], b"*INSTANCE,NAME=I,PART=P0\n*END INSTANCE\n"),
    "lost rows beside parts": then([numbered(b"*PART,NAME=P%d\n*END PART\n", ascending), 0.5],
                                   ONE_CELL + b"*ELSET,ELSET=E,GENERATE\n1,1\n*SURFACE,NAME=S\n",
                                   [same(b"E,S1\n"), 1.0]),
    "instances of many cells": placed([b"*ELEMENT,TYPE=CPS3\n", [numbered(b"%d,1,2,3\n", ascending), 0.01]]),
    "instances of many sets": placed([[numbered(b"*NSET,NSET=N%d\n1\n", ascending), 0.5]]),
    "instances of one long set": placed([b"*NSET,NSET=N\n", [same(b"1,1,1,1\n"), 0.5]]),
    "nodes given twice beside blocks": rows(lambda i: b"*NODE\n%d,0\n%d,1\n" % (i, i)),
    "one node again and again": then(b"*NODE\n", [same(b"1,0\n1,1\n"), 0.7], b"*NSET,NSET=A\n1\n"),
    "types that nobody knows": rows(lambda i: b"*ELEMENT,TYPE=X%d,ELSET=A\n%d,1\n" % (i, i), head=NODES3),
    "beams": rows(numbered(b"*ELEMENT,TYPE=B31\n%d,1,2\n", ascending), head=NODES3),
    "hexahedra's like": rows(numbered(b"%d,1,2,3,4\n", ascending), head=QUADS + b"*ELEMENT,TYPE=CPS4\n"),
    "one set of many sections copied": then(ONE_CELL, [same(b"*ELSET,ELSET=A\n1\n"), 0.4],
                                            [same(b"*ELCOPY,OLD SET=A,ELEMENT SHIFT=0,SHIFT NODES=0\n"), 1.0]),
    "nodes filled between": nodes_then(b"*NSET,NSET=A,GENERATE\n1,90000001,2\n*NFILL\n", [same(b"A,A,1\n"), 1.0]),
    "lines generated": rows(numbered(b"%d,%d\n", lambda i: 1, lambda i: 11), head=b"*NODE\n1,0\n11,1\n*NGEN\n"),
    "included again and again": rows(same(b"*INCLUDE,INPUT=part.inp\n")),
    "included beside sections": rows(same(b"*INCLUDE,INPUT=part.inp\n*NSET,NSET=A\n1\n*SOLID SECTION,ELSET=E\n")),
    "missing files": rows(numbered(b"*INCLUDE,INPUT=nowhere%d\n", ascending)),
    "misspelt keywords": rows(numbered(b"*NSETT,NSET=N%d\n*ELEMNT\n", ascending)),
    "keywords cut short": rows(numbered(b"*ELEM,TYPE=CPS3,ELSET=E%d\n%d,1,2,3\n", ascending, ascending), head=NODES3),
    "numbers out of range": rows(numbered(b"%d,99999999999,\n1.0,x,\n", ascending), head=b"*NSET,NSET=A\n"),
    "commas at rows' ends": rows(numbered(b"%d,0,0,\n%d,0,0\n", lambda i: 2 * i, lambda i: 2 * i + 1), head=b"*NODE\n"),
    "blanks for commas": rows(numbered(b"%d 0 0\n", ascending), head=b"*NODE\n"),
    "systems": rows(same(b"*SYSTEM\n1,0,0\n*NODE\n1,0\n")),
    "many parameters": rows(numbered(b"P%d=1,\n", ascending), head=b"*NODE,\n"),
    "the assembly's assembly": then(b"*NSET,NSET=A\n", [same(b"ASSEMBLY."), 1.0], b"A\n"),
    "names of many dots": rows(numbered(b"%d.............................................1\n", ascending),
                               head=b"*NODE\n1,0\n*NSET,NSET=A\n"),
    "a long name of many lost rows": then(ONE_CELL + b"*SURFACE,NAME=", [same(b"S"), 0.4], b"\n",
                                          [numbered(b"X%d,S1\n", ascending), 1.0]),
}

# Written with "--vtk" too.
WITH_VTK = {"cohesive groups", "mixed types", "equal elements", "node sets, one name", "overlapping element blocks",
            "random words", "unresolved elements", "many surfaces of one set"}


def end_of(path, size=4096):
    with open(path, "rb") as file:
        file.seek(max(0, os.path.getsize(path) - size))
        return file.read()


def summary_of(path):
    """The text of the summary in a log; nothing where there is none."""
    if os.path.getsize(path) == 0:
        return b""
    with open(path, "rb") as file, mmap.mmap(file.fileno(), 0, access=mmap.ACCESS_READ) as log:
        at = log.rfind(b"\n  Mesh summary:\n")
        return log[at:at + 1000] if at != -1 else b""


class Run:
    """One run in a folder that holds "deck.inp": what it took and what it left."""

    def __init__(self, program, folder, arguments, limit_memory=0):
        child = os.fork()
        if child == 0:
            try:
                os.chdir(folder)
                for number, name in enumerate((os.devnull, "log", "errors")):
                    os.dup2(os.open(name, os.O_RDWR | os.O_CREAT, 0o666), number)
                resource.setrlimit(resource.RLIMIT_CPU, (MOST_SECONDS, MOST_SECONDS))
                resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
                if limit_memory:
                    resource.setrlimit(resource.RLIMIT_AS, (limit_memory, limit_memory))
                os.execv(program, [program, *arguments])
            finally:
                os._exit(127)
        _, status, usage = os.wait4(child, 0)
        deck, log, errors, mesh = (os.path.join(folder, name) for name in ("deck.inp", "log", "errors", "mesh.input"))
        self.status = os.waitstatus_to_exitcode(status)
        self.seconds = usage.ru_utime + usage.ru_stime
        self.peak = usage.ru_maxrss * 1024
        self.read = os.path.getsize(deck)
        self.written = sum(e.stat().st_size for e in os.scandir(folder)) - self.read
        self.errors, self.log_end, self.summary, self.log = end_of(errors), end_of(log), summary_of(log), log
        self.mesh_end = end_of(mesh) if os.path.isfile(mesh) else b""


def complaints_of_memory(run, per_byte, always):
    most = run.read * per_byte + always
    return [f"took {run.peak >> 20} MB of memory, more than {most >> 20} MB"] if run.peak > most else []


def complaints_of_check(run, bounded):
    """What is wrong with a check."""
    if run.status not in (0, 1, 2) or run.errors:
        return [f"ended with {run.status}: {run.errors.decode('latin-1').strip()[-300:]}"]
    found = complaints_of_memory(run, CHECK_HELD_PER_BYTE, CHECK_HELD_ALWAYS) if bounded else []
    try:
        with open(run.log, encoding="utf-8") as file:
            report = json.load(file)
        if sum(report["verdict"].values()) != len(report["findings"]):
            found.append("the verdict does not count the findings")
        codes = {finding["code"] for finding in report["findings"]}
        if (run.status == 2) != ("include-missing" in codes):
            found.append(f"ended with {run.status}")
    except ValueError as error:
        found.append(f"the report is no object: {error}")
    return found


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
        figure = re.search(rb"^ *%s *= *(-?\d+)$" % words.encode(), run.summary, re.MULTILINE)
        if figure is None or int(figure[1]) != number:
            found.append(f"{words} is {figure and int(figure[1])}, not {number}")
    return found + (complaints_of_memory(run, HELD_PER_BYTE, HELD_ALWAYS) if bounded else [])


def run_deck(name, size, program, work, bounded, check):
    """Makes the deck and runs the program on it: the run, and what is wrong with it."""
    folder = os.path.join(work, re.sub(r"[^a-z]+", "-", name.lower()))
    shutil.rmtree(folder, ignore_errors=True)
    os.makedirs(folder)
    deck = Deck(size)
    wanted = (DECKS.get(name) or CHECKED[name])(deck)
    with open(os.path.join(folder, "deck.inp"), "wb") as file:
        file.write(deck.text)
    limit = len(deck.text) * HELD_PER_BYTE * 2 + (1 << 30) if bounded and not check else 0
    del deck
    if check:
        with open(os.path.join(folder, "part.inp"), "wb") as file:
            file.write(b"*NODE,NSET=A\n1,0\n")
        run = Run(program, folder, ["check", "--format=json", "deck.inp"])
        found = complaints_of_check(run, bounded)
    else:
        run = Run(program, folder, ["deck.inp", *(["--vtk"] if name in WITH_VTK else [])], limit)
        found = complaints_of(run, wanted, bounded)
    shutil.rmtree(folder)
    return run, found


def compare_runs(small, large):
    """What is wrong with the growth from one run to the other."""
    work = (large.read + large.written) / (small.read + small.written)
    most = TIME_FLOOR + small.seconds * max(work, FACTOR) * (1 + TIME_MARGIN)
    if large.seconds > most:
        return [f"took {small.seconds:.3f} s, then {large.seconds:.3f} s for {work:.1f} times the work"]
    return []


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--program", required=True, type=os.path.abspath)
    parser.add_argument("--work", required=True)
    parser.add_argument("--size", type=int, default=DEFAULT_SIZE)
    parser.add_argument("--check", action="store_true", help="the program is kivodeck")
    parser.add_argument("--only", choices=[*DECKS, *CHECKED])
    parser.add_argument("--part", default="1/1", type=lambda text: [int(number) for number in text.split("/")])
    parser.add_argument("--verbose", action="store_true")
    given = parser.parse_args()
    with open(given.program, "rb") as file:
        bounded = b"__asan_init" not in file.read()
    if not bounded:
        print("sanitizers are built in: time and memory are not bounded")
    failures, worst = 0, (0.0, "")
    names = [given.only] if given.only else [*DECKS, *(CHECKED if given.check else ())]
    part, parts = given.part
    for name in names[part - 1::parts]:
        small, found = run_deck(name, given.size, given.program, given.work, bounded, given.check)
        large, more = run_deck(name, given.size * FACTOR, given.program, given.work, bounded, given.check)
        found += more + (compare_runs(small, large) if bounded else [])
        held = max(0, large.peak - HELD_ALWAYS // 4) / large.read
        worst = max(worst, (held, name))
        if given.verbose or found:
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
