#!/usr/bin/python3
"""Rewrites an Abaqus deck so that the mesh translator loses nothing of its mesh.

What the translator refuses or passes over, and what becomes of it:
    *INCLUDE; INPUT= of *NODE and *ELEMENT   the file's lines take its place
    GENERATE, INSTANCE, INTERNAL, UNSORTED   the set with its numbers listed, the surface without the word
    sets named as members of sets            their numbers
    *NSET, ELSET=SET                         the nodes of the set's elements
    surfaces that name elements by the ELSET of an *ELEMENT line: one row for each element
    triangles on the faces of tetrahedra,    a surface for each set of them: rows of element and label
    lines on the edges of triangles          (between two elements: from the one that comes first in the deck)
    a set of elements named by --group       an *ELEMENT section of its own, thus a cell group
    an *ELEMENT section without ELSET        ELSET=CELLS
    a set's name that holds a refused word   the name with "-" inside that word
    Fortran's exponents (1.5D+02)            1.5E+02

Coordinates stay as they are. Where nodes are not at the place that is written on their line the script stops with
status 1: *NODE with SYSTEM=, *SYSTEM, an *INSTANCE that is moved, several *INSTANCE lines, *NMAP. It stops too at a
row that cannot be read, at *ELEMENT with OFFSET= or SOLID ELEMENT NUMBERING, and at a --group or --drop that names no
set. What it leaves out is said on a line that begins with "dropped:"; "renamed:" and "note:" say what else is worth a
look.
Standard library only.
"""
import argparse, os, re, sys
from itertools import combinations

# Types by what they stand for, with their nodes. The translator reads the first two kinds of cells.
TRIANGLES = {"CPS3": 3, "CPE3": 3, "STRI3": 3, "S3": 3, "S3R": 3, "M3D3": 3, "R3D3": 3, "SFM3D3": 3,
             "CPS6": 6, "CPE6": 6, "STRI65": 6, "S6": 6, "M3D6": 6, "SFM3D6": 6}
TETRAHEDRA = {"C3D4": 4, "C3D10": 10}
LINES = {"T3D2": 2, "T2D2": 2, "B21": 2, "B31": 2, "T3D3": 3, "T2D3": 3, "B22": 3, "B32": 3}
NODES = {**LINES, **TRIANGLES, **TETRAHEDRA}
PLANE = ("CPS3", "CPE3", "STRI3", "CPS6", "CPE6", "STRI65")  # triangles that are cells where there are no tetrahedra
FACES = ((0, 1, 2), (0, 3, 1), (1, 3, 2), (2, 3, 0))  # corners of S1 ... S4 of a tetrahedron
EDGES = ((0, 1), (1, 2), (2, 0))  # corners of S1 ... S3 of a triangle
REFUSED = {"NSET": ("ELSET", "GENERATE", "INSTANCE", "INTERNAL", "UNSORTED"),
           "ELSET": ("GENERATE", "INSTANCE", "INTERNAL", "UNSORTED"), "ELEMENT": ("FILE", "INPUT", "OFFSET"),
           "SURFACE": ("COMBINE", "CROP", "DEFINITION", "INTERNAL", "REGIONTYPE", "TRIM")}
GENERATORS = ("NGEN", "NFILL", "NCOPY", "ELGEN", "ELCOPY")  # they make nodes or elements from others


def stop(reason):
    sys.exit("plain_deck.py: " + reason)


def logical_lines(path):
    """(is a keyword line, fields) of each line, comments gone, files included; keyword lines joined at commas."""
    keyword = None
    with open(path, encoding="latin-1") as stream:
        for text in stream:
            text = text.split("**")[0].strip()
            if not text:
                continue
            if keyword is None and not text.startswith("*"):
                yield False, [field.strip() for field in text.split(",")]
                continue
            keyword = text if keyword is None else keyword + text
            if keyword.endswith(","):
                continue
            fields, keyword = [field.strip() for field in keyword[1:].split(",")], None
            included = dict(parameter(field) for field in fields[1:]).get("INPUT")
            if fields[0].upper() != "INCLUDE":
                yield True, fields
            if included and fields[0].upper() in ("INCLUDE", "NODE", "ELEMENT"):
                yield from logical_lines(os.path.join(os.path.dirname(path), included))


def parameter(field):
    word, _, value = field.partition("=")
    return word.replace(" ", "").upper(), value.strip()


class Deck:
    """What a deck holds. Names are kept in upper case; sets map a name to members (numbers, or names of sets)."""

    def __init__(self, path):
        self.nodes, self.elements, self.notes = {}, {}, []  # number: coordinates as text; number: (type, nodes, set)
        self.node_sets, self.cell_sets, self.sections, self.surfaces = {}, {}, {}, {}
        self.repeated, self.unknown = {"nodes": 0, "elements": 0}, {}  # the second: names of sets that are none
        section, rows, instances = None, [], 0
        for is_keyword, fields in logical_lines(path):
            if not is_keyword:
                rows.append(fields)
                continue
            self.take_readable(section, rows)
            section = fields[0].replace(" ", "").upper(), dict(parameter(field) for field in fields[1:])
            rows = []
            instances += section[0] == "INSTANCE"
        self.take_readable(section, rows)
        if instances > 1:
            stop("%s holds %d instances of parts; write it without parts first" % (path, instances))
        for kind, count in self.repeated.items():
            if count:
                self.notes.append("note: the numbers of %d %s stand twice; the last ones count" % (count, kind))

    def take_readable(self, section, rows):
        if section is not None:
            try:
                self.take(section, rows)
            except (ValueError, IndexError) as error:
                stop("*%s: a row cannot be read: %s" % (section[0], error))

    def take(self, section, rows):
        keyword, words = section
        coordinates = rows
        rows = [[field for field in row if field] for row in rows]
        refuse_what_moves(keyword, words, rows)
        name = words.get(keyword if keyword in ("NSET", "ELSET") else "NAME", "").upper()
        if keyword == "NODE":
            for row in coordinates:  # an empty field is 0
                place = [re.sub("[dD]", "E", field) or "0" for field in row[1:4]]
                self.repeated["nodes"] += self.nodes.get(int(row[0]), place) != place
                self.nodes[int(row[0])] = place
            self.node_sets.setdefault((words.get("NSET", "").upper(), False), []).extend(row[0] for row in rows)
        elif keyword == "ELEMENT":
            self.take_elements(words.get("TYPE", "").upper(), words.get("ELSET", "").upper(), rows)
        elif keyword == "NSET" and words.get("ELSET"):
            self.node_sets.setdefault((name, True), []).append(("nodes of", words["ELSET"].upper()))
        elif keyword == "NSET":
            self.node_sets.setdefault((name, True), []).extend(members(rows, "GENERATE" in words))
        elif keyword == "ELSET":
            self.cell_sets.setdefault(name, []).extend(members(rows, "GENERATE" in words))
        elif keyword == "SURFACE":
            self.take_surface(name, words, rows)
        elif keyword in GENERATORS:
            self.notes.append("dropped: what *%s would make" % keyword)

    def take_surface(self, name, words, rows):
        reasons = [word for word in ("COMBINE", "CROP", "DEFINITION") if word in words]
        if words.get("TYPE", "ELEMENT").upper() != "ELEMENT":
            reasons.append("TYPE=" + words["TYPE"].upper())
        if reasons:
            self.notes.append("dropped: the surface %s, for its %s" % (name, reasons[0]))
            return
        surface = self.surfaces.setdefault(name, [])
        for row in rows:
            if len(row) > 1 and re.fullmatch("[A-Z][1-4]", row[1].upper()):
                surface.append((row[0].upper(), row[1].upper()))
            else:
                self.notes.append("dropped: the row '%s' of surface %s, which names no side" % (", ".join(row), name))

    def take_elements(self, kind, name, rows):
        width = 1 + NODES.get(kind, 0)
        if width == 1:
            self.notes.append("dropped: the elements of type %s of set %s" % (kind, name or "(no name)"))
            return
        numbers = [int(field) for row in rows for field in row]
        if len(numbers) % width:
            raise ValueError("%s has %d numbers to an element" % (kind, width))
        for at in range(0, len(numbers), width):
            self.repeated["elements"] += numbers[at] in self.elements
            self.elements[numbers[at]] = kind, numbers[at + 1:at + width], name or "CELLS"
            self.sections.setdefault(name or "CELLS", []).append(numbers[at])

    def numbers(self, name, sets, seen=()):
        """The numbers of an element set (`sets` has names as keys) or of one element, sets in sets resolved."""
        found = []
        for member in sets.get(name) or self.sections.get(name) or [name]:
            text = str(member).rsplit(".", 1)[-1].upper()
            if text.isdigit():
                found.append(int(text))
            elif text not in sets and text not in self.sections:
                self.unknown[text] = True
            elif text not in seen + (name,):
                found += self.numbers(text, sets, seen + (name,))
        return found

    def node_numbers(self, key):
        plain = {}
        for (name, _), listed in self.node_sets.items():
            plain.setdefault(name, []).extend(member for member in listed if not isinstance(member, tuple))
        found = self.numbers(key[0], plain)
        for member in self.node_sets[key]:
            if isinstance(member, tuple):
                found += [n for e in self.numbers(member[1], self.cell_sets) if e in self.elements
                          for n in self.elements[e][1]]
        return sorted(set(found) & set(self.nodes))

    def cells(self):
        """The elements of the highest dimension, in the deck's order."""
        solid = [e for e, (kind, _, _) in self.elements.items() if kind in TETRAHEDRA]
        return solid or [e for e, (kind, _, _) in self.elements.items() if kind in PLANE]

    def bounding_elements(self):
        """Sets of triangles that lie on faces of tetrahedra, or of lines on edges of triangles: name -> elements."""
        cells = set(self.cells())
        listed, found = set(), {}
        for name in list(self.cell_sets) + list(self.sections):
            members_of = self.numbers(name, self.cell_sets) if name in self.cell_sets else self.sections[name]
            new = [e for e in members_of if e in self.elements and e not in cells and e not in listed]
            if new:
                found.setdefault(name, []).extend(new)
            if name in self.cell_sets:
                taken = len([e for e in members_of if e in listed])
                if taken:
                    self.notes.append("note: %d elements of %s go to the surface of a set before it" % (taken, name))
                listed.update(new)
        return found

    def surfaces_of_bounds(self):
        """Surfaces made of such elements: name -> rows. Elements that bound nothing are noted."""
        sides, lost = {}, {}
        for e in self.cells():
            kind, nodes, _ = self.elements[e]
            for at, corners in enumerate(FACES if kind in TETRAHEDRA else EDGES):
                sides.setdefault(frozenset(nodes[k] for k in corners), (e, "S%d" % (at + 1)))
        surfaces = {}
        for name, bounds in self.bounding_elements().items():
            for e in bounds:
                kind, nodes, _ = self.elements[e]
                # The middle node of a line stands second or third, by the program that wrote it.
                keys = combinations(nodes, 2) if kind in LINES else [nodes[:3]]
                row = next((sides[key] for key in map(frozenset, keys) if key in sides), None)
                if row:
                    surfaces.setdefault(name, []).append(row)
                else:
                    lost[kind] = lost.get(kind, 0) + 1
        self.notes += ["dropped: %d elements of type %s" % (count, kind) for kind, count in lost.items()]
        return surfaces


def refuse_what_moves(keyword, words, rows):
    """Stops where nodes would not be at the place, or elements not have the numbers, that their lines give."""
    if keyword == "NODE" and "SYSTEM" in words:
        stop("*NODE with SYSTEM=%s: write the nodes in plain x, y, z first" % words["SYSTEM"])
    if keyword == "SYSTEM" and rows or keyword == "NMAP":
        stop("*%s moves nodes: write the nodes in plain x, y, z first" % keyword)
    if keyword == "INSTANCE" and (len(rows) > 1 or any(float(field) for row in rows for field in row)):
        stop("the instance %s is moved: write the deck without parts first" % words.get("NAME", ""))
    for word in ("OFFSET", "SOLIDELEMENTNUMBERING"):
        if keyword == "ELEMENT" and word in words:
            stop("*ELEMENT with %s: write the elements with their own numbers first" % word)


def members(rows, generate):
    """The members of a set; first, last, step written out."""
    if not generate:
        return [field for row in rows for field in row]
    return [number for row in rows for number in
            range(int(row[0]), int(row[1]) + 1, int(row[2]) if len(row) > 2 else 1)]


def harmless(name, keyword, notes):
    for word in REFUSED[keyword]:
        if word in name:
            notes.append("renamed: %s, because *%s refuses the word %s" % (name, keyword, word))
            name = name.replace(word, word[:2] + "-" + word[2:])
    return name


def listing(numbers, step=12):
    for at in range(0, len(numbers), step):
        yield ", ".join(map(str, numbers[at:at + step])) + "\n"


def write(deck, groups, dropped, put):
    """`groups` are pairs (name, set), `dropped` are names of node sets. `put` takes lines."""
    put("*Node\n")
    for number, coordinates in deck.nodes.items():
        put("%d, %s\n" % (number, ", ".join(coordinates)))
    rest, blocks = dict.fromkeys(deck.cells()), []
    for name, members_of in groups:
        chosen = [e for e in deck.numbers(members_of, deck.cell_sets) if e in rest]
        if not chosen:
            deck.notes.append("note: the group %s is empty; no cell of %s was left for it" % (name, members_of))
        blocks.append((name, chosen))
        for e in chosen:
            del rest[e]
    for name, es in deck.sections.items():
        blocks.append((name, [e for e in es if e in rest]))
    for name, es in blocks:
        for kind in dict.fromkeys(deck.elements[e][0] for e in es):
            put("*Element, type=%s, elset=%s\n" % (kind, harmless(name, "ELEMENT", deck.notes)))
            for e in es:
                if deck.elements[e][0] == kind:
                    put("%d, %s\n" % (e, ", ".join(map(str, deck.elements[e][1]))))
    for key in deck.node_sets:
        if key[1] and key[0] not in dropped:
            put("*Nset, nset=%s\n" % harmless(key[0], "NSET", deck.notes))
            put("".join(listing(deck.node_numbers(key))))
    cells = set(deck.cells())
    for name in deck.cell_sets:
        kept = [e for e in deck.numbers(name, deck.cell_sets) if e in cells]
        if kept:
            put("*Elset, elset=%s\n" % harmless(name, "ELSET", deck.notes))
            put("".join(listing(kept)))
    surfaces = {name: [(e, label) for first, label in rows for e in deck.numbers(first, deck.cell_sets) if e in cells]
                for name, rows in deck.surfaces.items()}
    for name, rows in list(surfaces.items()) + list(deck.surfaces_of_bounds().items()):
        put("*Surface, type=ELEMENT, name=%s\n" % harmless(name, "SURFACE", deck.notes))
        put("".join("%d, %s\n" % row for row in rows))


def known(names, sets, kind):
    for name in names:
        if name not in sets:
            stop('no set of %s "%s"; there are: %s' % (kind, name, ", ".join(filter(None, sets)) or "none"))


def main():
    what, _, more = __doc__.partition("\n\n")
    parser = argparse.ArgumentParser(description=what, epilog=more,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--group", action="append", default=[], metavar="[NAME=]SET",
                         help="make a cell group of this set of elements, under this name; may be given several times "
                              "(an element goes to the first that lists it)")
    parser.add_argument("--drop", action="append", default=[], metavar="SET",
                         help="leave this node set out; may be given several times")
    parser.add_argument("deck", help="the deck to read")
    parser.add_argument("result", help="the deck to write")
    given = parser.parse_args()
    try:
        deck = Deck(given.deck)
        groups = [(re.split("=", text, maxsplit=1)[0], text.split("=")[-1].upper()) for text in given.group]
        dropped = [name.upper() for name in given.drop]
        known([members_of for _, members_of in groups], {**deck.cell_sets, **deck.sections}, "elements")
        known(dropped, [name for name, listed in deck.node_sets if listed], "nodes")
        if os.path.exists(given.result) and os.path.samefile(given.deck, given.result):
            stop("the deck to write is the deck to read")
        with open(given.result, "w", encoding="latin-1") as stream:
            write(deck, groups, dropped, stream.write)
    except OSError as error:
        stop("%s: %s" % (error.filename, error.strerror))
    for name in deck.unknown:
        deck.notes.append('note: "%s" is named as a set and is none' % name)
    for note in dict.fromkeys(deck.notes):
        print(note)


if __name__ == "__main__":
    main()
