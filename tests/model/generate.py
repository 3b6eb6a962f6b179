#!/usr/bin/env python3
"""Builds a random deck from a seed: a mesh of triangles, of tetrahedra or of both, cut from a grid, with everything
around it that a deck may hold, well-formed and not.

    generate.py SEED > deck.inp        writes the deck that run_model.py uses for that seed

The generator knows some answers because it built the mesh that way; deck.known holds them, None where it cannot say:
  "corrected"   how many elements it listed the wrong way round or squeezed flat
  "faces"       {(block, element number): {corner node numbers of a face: tag}}, with blocks in deck order and
                without the elements squeezed flat
They come from the geometry (which corners does face label S2 stand for), not from the tables of the model.
"""
import random
import sys
from itertools import permutations

from deck import LONGEST_LINE, Deck, Odd, Row, Section
from spell import spell

PLANE_TYPES = {3: ["CPE3", "CPS3", "STRI3"], 6: ["CPE6", "CPS6", "STRI65"]}
SPACE_TYPES = {4: ["C3D4"], 10: ["C3D10"]}
EDGES = {6: ((0, 1), (1, 2), (2, 0)), 10: ((0, 1), (1, 2), (2, 0), (0, 3), (1, 3), (2, 3))}
# The corners that a face label stands for, in the deck's order of corners.
LABEL_CORNERS = {2: {"S1": (0, 1), "S2": (1, 2), "S3": (2, 0)},
                 3: {"S1": (0, 1, 2), "S2": (0, 3, 1), "S3": (1, 3, 2), "S4": (2, 3, 0)}}
NAME_LETTERS = "ABCDEFGHIJKLMNOPQRSTUVWXYZ" * 3 + "0123456789" * 2 + "_-.#$%&()/:<>?@[]^`{|}~!'\"+"
OTHER_KEYWORDS = [
    ("HEADING", [], ["A MODEL, MADE AT RANDOM", "1, 2, 3"]), ("NODEOUTPUT", [], ["U, RF"]),
    ("NODEPRINT", [("NSET", "ALL")], ["U"]), ("ELEMENTOUTPUT", [("ELSET", "E1")], ["S,"]),
    ("MATERIAL", [("NAME", "STEEL")], []), ("ELASTIC", [], ["210000., 0.3"]), ("STEP", [], []),
    ("STATIC", [], ["1., 1."]),
    ("SOLIDSECTION", [("ELSET", "E1"), ("MATERIAL", "STEEL")], [","]), ("BOUNDARY", [], ["FIX, 1, 3", "1, 1, 3, 0."]),
    ("SURFACEINTERACTION", [("NAME", "I1")], ["1.,"]), ("NSETS", [("NSET", "X")], ["1, 2"]), ("ENDSTEP", [], []),
    ("ELCOPY", [("ELEMENTSHIFT", "10")], []), ("NODEFILE", [], ["U"]),
    ("RESTART", [("WRITE", None), ("", None)], ["FREQUENCY=1"]),      # the comma at its end takes the next line in
    ("PREPRINT", [("ECHO", "NO"), ("MODEL", None)], []), ("NODALTHICKNESS", [], ["1, 0.1", "2, 0.1"]),
]
DECOYS = [
    ("NODE", [("SYSTEM", "C")], [[900001, 1.0, 2.0, 3.0]]), ("NODE", [("INPUT", "NODES.INP")], []),
    ("NODE", [("NSET", "MYINPUTS")], [[900002, 1.0, 2.0]]), ("NODE", [("SYSTEM", "R"), ("INPUT", "N")], []),
    ("NSET", [("GENERATE", None), ("NSET", "G"), ("ELSET", "E")], [[1, 9]]),
    ("NSET", [("INTERNAL", None), ("GENERATE", None), ("NSET", "G")], [[1, 9]]),
    ("ELSET", [("UNSORTED", None), ("INTERNAL", None), ("GENERATE", None), ("ELSET", "G")], [[1, 9]]),
    ("SURFACE", [("NAME", "C"), ("CROP", None), ("COMBINE", "UNION")], [["A", "B"]]),
    ("SURFACE", [("NAME", "C"), ("SCALETHICK", None), ("NOOFFSET", None), ("MAXRATIO", "2")], [["1", "S1"]]),
    ("SURFACE", [("NAME", "C"), ("REGIONTYPE", "X"), ("FILLETRADIUS", "1"), ("DEFINITION", "COORDINATES")], []),
    ("ELEMENT", [("TYPE", "S4R"), ("ELSET", "SHELL")], [[900001, 1, 2, 3, 4], [900002, 1, 2, 3, 4]]),
    ("ELEMENT", [("TYPE", "C3D8")], [[900003, 1, 2, 3, 4, 5, 6, 7, 8]]),
    ("ELEMENT", [("ELSET", "NOTYPE")], [[1, 2, 3]]),
    ("ELEMENT", [("TYPE", "C3D10M"), ("ELSET", "M")], []), ("ELEMENT", [("TYPE", ""), ("ELSET", "M")], [[1, 2]]),
    ("ELEMENT", [("TYPE", "CPS3"), ("ELSET", "O"), ("OFFSET", "0.5")], [[900004, 1, 2, 3]]),
    ("ELEMENT", [("TYPE", "C3D4"), ("FILE", "F"), ("INPUT", "I")], []),
    ("ELEMENT", [("TYPE", "C3D4"), ("SOLIDELEMENTNUMBERING", None)], [[900005, 1, 2, 3, 4]]),
    ("NSET", [("NSET", "RANGE"), ("GENERATE", None)], [[1, 100, 1]]), ("NSET", [("NSET", "ELSETNODES")], [[1, 2]]),
    ("NSET", [("NSET", "U"), ("UNSORTED", None)], [[3, 2, 1]]), ("NSET", [("NSET", "E"), ("ELSET", "E1")], []),
    ("NSET", [("INSTANCE", "P-1"), ("NSET", "E"), ("INTERNAL", None)], [[1, 2]]),
    ("ELSET", [("ELSET", "RANGE"), ("GENERATE", None)], [[1, 100, 1]]),
    ("ELSET", [("ELSET", "I"), ("INTERNAL", None), ("INSTANCE", "P-1")], [[1, 2, 3]]),
    ("SURFACE", [("TYPE", "NODE"), ("NAME", "N")], [["FIX", "1."]]), ("SURFACE", [("NAME", "T"), ("TYPE", "")], []),
    ("SURFACE", [("NAME", "C"), ("COMBINE", "UNION")], [["A", "B"]]), ("SURFACE", [("NAME", "TRIMMED")], [["1", "S1"]]),
    ("SURFACE", [("TYPE", "ELEMENT"), ("NAME", "N"), ("NOTHICK", None), ("CROP", None)], [["1", "S1"]]),
]
REFUSED_WORDS = ("FILE", "INPUT", "OFFSET", "TRIM", "CROP")  # those short enough to come up in a random name


def odd_permutation(order):
    return sum(a > b for at, a in enumerate(order) for b in order[at + 1:]) % 2 == 1


class Element:
    """`nodes` are points in the deck's order, the corners first; `number` is the deck's."""

    def __init__(self, dimension, corners):
        self.dimension, self.corners, self.nodes = dimension, corners, None
        self.flips, self.squeezed, self.number, self.block = False, False, 0, None


class Generator:
    def __init__(self, seed):
        self.rng = random.Random(seed)
        self.points, self.elements, self.middles = [], [], {}
        self.names = set()
        self.known_corrected, self.known_faces = True, True
        self.hits = {}                               # of a surface section: what its rows name, by geometry

    def chance(self, share):
        return self.rng.random() < share

    def name(self, length=None):
        rng = self.rng
        if self.names and self.chance(0.04):
            self.known_faces = False                 # of two sets with one name one counts: the model's business
            return rng.choice(sorted(self.names))
        while True:
            if length is None and self.chance(0.7):
                text = rng.choice(["SET", "E", "FIX", "LOAD_", "PART-", "S"])
                text += str(rng.randint(1, 10**rng.randint(1, 4)))
            else:
                text = "".join(rng.choice(NAME_LETTERS) for _ in range(length or rng.randint(1, 20)))
            if self.chance(0.02):
                text = str(rng.randint(1, 9))
            if text not in self.names:
                self.names.add(text)
                if any(word in text for word in REFUSED_WORDS):
                    self.known_corrected = self.known_faces = False
                return text

    # --- the mesh ---

    def point(self, x, y, z):
        place = tuple(round(v, self.digits) + 0.0 if self.digits else float(v) for v in (x, y, z))
        if self.chance(0.02):
            place = tuple(v or -0.0 for v in place)
        self.points.append(place)
        return len(self.points) - 1

    def plane(self, count):
        rng = self.rng
        nx = max(1, round((count / 2) ** 0.5 * rng.uniform(0.5, 1.5)))
        ny = max(1, round(count / 2 / nx))
        height = rng.choice([0.0, 0.0, 1.5])
        grid = {}
        for i in range(nx + 1):
            for j in range(ny + 1):
                x, y = i + rng.uniform(-0.15, 0.15), j + rng.uniform(-0.15, 0.15)
                grid[i, j] = self.point(self.scale * x, self.scale * y, height * rng.uniform(-1, 1))
        for i in range(nx):
            for j in range(ny):
                a, b, c, d = grid[i, j], grid[i + 1, j], grid[i + 1, j + 1], grid[i, j + 1]
                halves = ((a, b, c), (a, c, d)) if self.chance(0.5) else ((a, b, d), (b, c, d))
                self.elements += [Element(2, half) for half in halves]

    def space(self, count):
        rng = self.rng
        nx, ny = max(1, round((count / 6) ** 0.33)), max(1, round((count / 6) ** 0.33 * rng.uniform(0.6, 1.2)))
        nz = max(1, round(count / 6 / nx / ny))
        grid = {}
        for i in range(nx + 1):
            for j in range(ny + 1):
                for k in range(nz + 1):
                    place = [self.scale * (v + rng.uniform(-0.05, 0.05)) for v in (i, j, k)]
                    grid[i, j, k] = self.point(*place)
        for i in range(nx):
            for j in range(ny):
                for k in range(nz):
                    for axes in permutations(range(3)):
                        at, corners = [i, j, k], [grid[i, j, k]]
                        for axis in axes:
                            at[axis] += 1
                            corners.append(grid[tuple(at)])
                        if odd_permutation(axes):    # three steps along the axes turn right-handed or left-handed
                            corners[1], corners[2] = corners[2], corners[1]
                        self.elements.append(Element(3, tuple(corners)))

    def middle(self, a, b):
        key = (min(a, b), max(a, b))
        if key not in self.middles:
            p, q = self.points[a], self.points[b]
            self.middles[key] = self.point(*((u + v) / 2 + self.bend * self.rng.uniform(-1, 1) for u, v in zip(p, q)))
        return self.middles[key]

    def list_nodes(self, element, count):
        """Gives the element its nodes in the deck's order, turned at random, mirrored or squeezed now and then."""
        order = list(range(len(element.corners)))
        self.rng.shuffle(order)
        if odd_permutation(order) != self.chance(self.inverted):
            order[0], order[1] = order[1], order[0]
        corners = [element.corners[at] for at in order]
        element.flips = odd_permutation(order)
        middles = [self.middle(corners[a], corners[b]) for a, b in EDGES.get(count, ())]
        if self.chance(self.degenerate):
            a, b = self.rng.choice([(0, 1), (0, 2), (1, 2)])
            corners[a] = corners[b]
            element.flips = element.squeezed = True
        element.nodes = corners + middles

    # --- numbers ---

    def numbers(self, count):
        rng, kind = self.rng, self.rng.random()
        if kind < 0.35:
            first = rng.choice([1, 1, rng.randint(2, 10**rng.randint(1, 8))])
            found = list(range(first, first + count))
        elif kind < 0.5:
            found = [7 * at + 3 for at in range(count)]
        elif kind < 0.75:
            found = sorted(rng.sample(range(1, 50 * count + 10), count))
        elif kind < 0.95:
            found = sorted(rng.sample(range(1, 2**31), count))
        else:
            found = sorted(set(rng.sample(range(-2**31, 2**31), count)) - {0})
            if count > 3 and self.chance(0.5):
                found[0], found[-1] = -2**31, 2**31 - 1
            while len(found) < count:
                found.append(max(n for n in range(1, 2 * count + 2) if n not in found))
        if self.chance(0.5):
            rng.shuffle(found)
        return found

    def stranger(self, taken):
        while True:
            number = self.rng.choice([0, -1, self.rng.randint(1, 10**6), self.rng.randint(-2**31, 2**31 - 1)])
            if number not in taken:
                return number

    # --- sections ---

    def params(self, needed, optional=()):
        found = list(needed) + [entry for entry in optional if self.chance(0.1)]
        if self.chance(0.3):
            self.rng.shuffle(found)
        return found

    def blocks(self):
        """Deals the elements out to *ELEMENT sections; gives the sections."""
        rng, sections = self.rng, []
        for dimension, types in ((2, PLANE_TYPES), (3, SPACE_TYPES)):
            elements = [element for element in self.elements if element.dimension == dimension]
            if not elements:
                continue
            count = min(len(elements), rng.choice([1, 1, 2, 3, 4, 6]))
            if self.chance(0.4):
                rng.shuffle(elements)
            cuts = sorted(rng.sample(range(1, len(elements)), count - 1)) if count > 1 else []
            orders = rng.choice([[min(types)], [max(types)], sorted(types)])
            for start, end in zip([0] + cuts, cuts + [len(elements)]):
                nodes = rng.choice(orders)
                part = elements[start:end]
                for element in part:
                    self.list_nodes(element, nodes)
                sections.append((rng.choice(types[nodes]), part))
        numbers = self.numbers(sum(len(part) for _, part in sections)) if sections else []
        again = self.chance(0.04)                    # every block counts from the same number
        if again:
            self.known_faces = False
        found = []
        for kind, part in sections:
            dealt = sorted(numbers)[:len(part)] if again else [numbers.pop() for _ in part]
            for element, number in zip(part, dealt):
                element.number = number
            if self.chance(0.3):
                rng.shuffle(part)
            section = Section("ELEMENT", self.block_params(kind))
            section.rows = [Row([element.number] + element.nodes) for element in part]
            for element in part:
                element.block = section
            found.append(section)
        if self.chance(0.08):
            found.append(Section("ELEMENT", self.block_params(rng.choice(
                rng.choice(list(PLANE_TYPES.values()) + list(SPACE_TYPES.values()))))))
        return found

    def block_params(self, kind):
        named = []
        if self.chance(0.9):
            prefix = "C_" if self.chance(self.glued) else self.rng.choice(["", "", "", "", "", "XC_"])
            named = [("ELSET", prefix + self.name(300 if self.chance(0.003) else None))]
            if self.chance(0.04):
                named = [("ELSET", self.rng.choice(["", "C_"]))]
            if self.glued and self.chance(0.2):
                named = [("ELSET", "C_GLUE")]
        return self.params([("TYPE", kind)] + named, [("RELAXED", None)])

    def node_sections(self):
        rng = self.rng
        extra = rng.choice([0, 0, 1, 3])
        for _ in range(extra):
            self.point(*(rng.uniform(-5, 5) for _ in range(3)))
        numbers = self.numbers(len(self.points))
        rows = []
        flat = not any(element.dimension == 3 for element in self.elements)
        for place, number in zip(self.points, numbers):
            fields = [number] + list(place)
            if place[2] == 0.0 and flat and self.two_coordinates:
                fields.pop()
            rows.append(Row(fields))
        if self.chance(0.4):
            rng.shuffle(rows)
        count = min(len(rows), rng.choice([1, 1, 2, 3, 5]))
        cuts = sorted(rng.sample(range(1, len(rows)), count - 1)) if count > 1 else []
        parts = [rows[start:end] for start, end in zip([0] + cuts, cuts + [len(rows)])] if rows else []
        if self.chance(0.05):
            parts.append([])
        return numbers, [Section("NODE", self.params([("NSET", self.name())] if self.chance(0.4) else []), part)
                         for part in parts]

    def set_rows(self, numbers):
        rows, at = [], 0
        while at < len(numbers):
            count = self.rng.randint(1, 16)
            rows.append(Row(numbers[at:at + count]))
            at += count
        return rows

    def pick(self, numbers, taken):
        """Some of the numbers, now and then with repetitions and with numbers that nothing has."""
        found = self.rng.sample(numbers, self.rng.randint(0, min(len(numbers), 60))) if numbers else []
        if found and self.chance(0.2):
            found += self.rng.choices(found, k=3)
        if self.chance(0.2):
            found += [self.stranger(taken) for _ in range(2)]
        if self.chance(0.5):
            self.rng.shuffle(found)
        return found

    def node_sets(self, numbers):
        sections = []
        for _ in range(self.rng.choice([0, 1, 2, 3, 6])):
            name = [("NSET", self.name(self.rng.choice([245, 246, 300]) if self.chance(0.01) else None))]
            name = name if self.chance(0.97) else []
            sections.append(Section("NSET", self.params(name), self.set_rows(self.pick(numbers, set(numbers)))))
        return sections

    def surfaces(self):
        """Surfaces and the element sets that they name."""
        rng, sections = self.rng, []
        by_number = {element.number: element for element in self.elements}
        numbers = sorted(by_number)
        for _ in range(rng.choice([0, 1, 2, 3, 5])):
            name = self.name(rng.choice([256, 257, 300]) if self.chance(0.01) else None)
            if sections and self.chance(0.05):
                name = rng.choice(sections).params[0][1]
                self.known_faces = False             # of the two the one read last counts
            sections.append(Section("ELSET", [("ELSET", name)], self.set_rows(self.pick(numbers, by_number))))
        elsets = list(sections)
        for _ in range(rng.choice([0, 1, 2, 4]) if numbers else 0):
            name = [("NAME", self.name(300 if self.chance(0.003) else None))] if self.chance(0.97) else []
            surface = Section("SURFACE", self.params(name, [("TYPE", "ELEMENT")] * 5))
            hits = self.hits[id(surface)] = []
            for _ in range(rng.choice([0, 1, 2, 4, 12])):
                dimension = rng.choice(self.elements).dimension
                label = rng.choice(sorted(LABEL_CORNERS[dimension]))
                if self.chance(0.04):
                    label = rng.choice(["S4", "S5", "S0", "S-1", "S10", "S+2", "E1", "33", "S2X", "S4294967298"])
                    self.known_faces = False
                if elsets and self.chance(0.4):
                    elset = rng.choice(elsets)
                    target = elset.params[0][1]
                    reached = [number for row in elset.rows for number in row.fields]
                    if len(target) > 256:            # more than a field takes
                        self.known_faces = False
                else:
                    number = rng.choice(numbers) if self.chance(0.95) else self.stranger(by_number)
                    target, reached = str(number), [number]
                    if self.chance(0.05):
                        target += rng.choice(["ABC", ".", "."])
                    elif self.chance(0.05) and number >= 0:
                        target = rng.choice(["+", "000"]) + target
                    elif self.chance(0.02):
                        target, reached = str(number % 2**32 + 2**32), []
                    elif self.chance(0.02):
                        target, reached = "NOSUCHSET", []
                    if target in self.names:         # a set's name that looks like a number
                        self.known_faces = False
                surface.rows.append(Row([target, label]))
                hits += [(by_number[number], label) for number in reached if number in by_number]
            sections.append(surface)
        return sections

    # --- what is wrong, and what is only strange ---

    def stray_fields(self, sections):
        """Text behind the needed fields, and numbers written in a way that the reader bends to the same value."""
        rng = self.rng
        for section in sections:
            for row in section.rows:
                if section.keyword == "NODE" and len(row.fields) < 4:
                    continue
                if section.keyword not in ("NSET", "ELSET") and self.chance(0.1):
                    row.extra = rng.choice([["9"], ["A", "B"], ["4", "0.5", "0.5", "0.5", "7"], ["", "7"]])
                if section.keyword != "SURFACE" and row.fields and isinstance(row.fields[0], int) and self.chance(0.1):
                    number = row.fields[0]
                    row.fields[0] = Odd(rng.choice(["%d.7", "%dX", "%d.", "%dE3"]) % number, number)
                    if self.chance(0.3):
                        row.fields[0] = Odd(str(number + 2**32 * rng.choice([1, -1, 5])), number)

    def long_rows(self, sections, numbers):
        """Rows about as long as a line may be: a set's members in one line, or a long tail of fields not needed."""
        rng = self.rng
        full = [section for section in sections if section.rows and section.keyword != "ELSET"]
        sets = [section for section in full if section.keyword == "NSET"]
        for section in rng.sample(full, min(len(full), 2)) + sets[:1]:
            row = rng.choice(section.rows)
            length = LONGEST_LINE + rng.choice([-1, 0, 1, 2, 7, 3000])
            if section.keyword == "NSET":
                texts = [str(rng.choice(numbers or [1])) for _ in range(length)]
                while len(",".join(texts)) > length + 9:
                    del texts[-1 - max(0, (len(",".join(texts)) - length) // 12 - 1):]
                row.fields = [Odd(text, int(text)) for text in texts]
            elif len(row.fields) > 3 or section.keyword == "SURFACE":
                fields = sum(len(str(entry.text if isinstance(entry, Odd) else entry)) + 1 for entry in row.fields)
                row.extra = ["X" * 99] * ((length - fields) // 100) + ["Y" * ((length - fields) % 100 + 1)]

    def faults(self, sections, numbers):
        """Rows that lack something, and references to nothing. What the mesh is then, the generator cannot say."""
        rng = self.rng
        self.known_corrected = self.known_faces = False
        nodes = [row for section in sections if section.keyword == "NODE" for row in section.rows]
        elements = [row for section in sections if section.keyword == "ELEMENT" for row in section.rows]
        for _ in range(rng.choice([0, 1, 3]) if elements else 0):
            row = rng.choice(elements)
            at = rng.randrange(1, len(row.fields))
            row.fields[at] = self.stranger(set(numbers))
        rows = rng.sample(elements, min(len(elements), 3))
        if rows and self.chance(0.4):
            row = rows.pop()
            del row.fields[rng.randint(1, len(row.fields) - 1):]
            row.extra = []                           # it would step into the missing fields' places
        if rows and self.chance(0.3):
            row = rows.pop()
            row.fields[rng.randrange(1, len(row.fields) - 1)] = None
        if rows and self.chance(0.1):
            rows.pop().fields[0] = None
        rows = rng.sample(nodes, min(len(nodes), 3))
        if rows and self.chance(0.2):
            rows.pop().fields[0] = None
        if rows and self.chance(0.2):
            rows.pop().fields[1] = None
        if rows and self.chance(0.2):
            row = rows.pop()
            del row.fields[rng.choice([1, 2]):]
            row.extra = []
        for section in sections:
            if section.keyword in ("NSET", "ELSET") and section.rows and self.chance(0.3):
                rng.choice(section.rows).fields[-1:] = [None, rng.choice(numbers or [1])]
            if section.keyword == "SURFACE" and self.chance(0.5):
                section.rows.append(Row(rng.choice([["E1"], [None, "S1"], ["1", "S"], ["1", "SPOS"], ["2", "S-"]])))
        if self.chance(0.1) and sections:
            rng.choice(sections).params.append(("INTERNAL", None))   # refuses the sets and surfaces, not the rest
        if self.chance(0.1) and sections:
            sections.pop(rng.randrange(len(sections)))

    def others(self):
        rng = self.rng
        found = []
        for _ in range(rng.choice([0, 0, 1, 3, 6])):
            keyword, params, rows = rng.choice(OTHER_KEYWORDS)
            found.append(Section(keyword, list(params), list(rows)))
        for _ in range(rng.choice([0, 0, 0, 1, 3])):
            keyword, params, rows = rng.choice(DECOYS)
            found.append(Section(keyword, list(params), [Row(list(row)) for row in rows]))
        return found

    # --- the deck ---

    def deck(self):
        rng, kind, size = self.rng, self.rng.random(), self.rng.random()
        count = (rng.randint(1, 4) if size < 0.05 else rng.randint(5, 60) if size < 0.8
                 else rng.randint(60, 400) if size < 0.995 else rng.randint(1000, 2500))
        self.scale = rng.choice([1.0, 1.0, 1.0, 0.01, 2.5, 1000.0, 1e-6])
        self.digits = None if self.chance(0.3) else 10 if self.scale < 0.1 else 3
        self.bend = self.scale * rng.choice([0.0, 0.0, 0.02])
        self.inverted, self.degenerate = rng.choice([0.0, 0.1, 0.5, 1.0]), rng.choice([0.0, 0.0, 0.0, 0.1])
        self.two_coordinates, self.glued = self.chance(0.7), rng.choice([0.0, 0.0, 0.4])
        if self.scale < 1e-3:
            self.known_corrected = False             # smaller than the threshold of the check
        if 0.02 < kind < 0.53:
            self.plane(count)
        if 0.47 < kind:
            self.space(count)
        blocks = self.blocks()
        numbers, nodes = self.node_sections()
        for section in blocks:
            for row in section.rows:
                row.fields[1:] = [numbers[point] for point in row.fields[1:]]
        for element in self.elements:
            element.nodes = [numbers[point] for point in element.nodes]
        sections = nodes + blocks + self.node_sets(numbers) + self.surfaces()
        if self.chance(0.2):
            self.stray_fields(sections)
        if self.chance(0.03):
            self.long_rows(sections, numbers)
        elif self.chance(0.15):
            self.faults(sections, numbers)
        sections += self.others()
        if self.chance(0.7):
            rng.shuffle(sections)
        preamble = rng.choice([[], [], [], ["A DECK", "1, 2, 3,", "NODE, NSET=ALL"]])
        deck = Deck(sections, list(preamble))
        deck.known = {"corrected": self.corrected() if self.known_corrected else None,
                      "faces": self.faces(sections) if self.known_faces else None}
        return deck

    def corrected(self):
        return sum(element.flips for element in self.elements)

    def faces(self, sections):
        found = {}
        place = {id(section): at for at, section in enumerate(s for s in sections if s.keyword == "ELEMENT")}
        surfaces = [section for section in sections if id(section) in self.hits]
        for at, surface in enumerate(surfaces):
            tag = len(surfaces) - at
            for element, label in self.hits[id(surface)]:
                if label not in LABEL_CORNERS[element.dimension] or element.squeezed:
                    continue                         # no such face; or two faces that have the same corners
                corners = tuple(sorted(element.nodes[c] for c in LABEL_CORNERS[element.dimension][label]))
                faces = found.setdefault((place[id(element.block)], element.number), {})
                faces.setdefault(corners, tag)       # the surface read first wins
        return found


def generate(seed):
    return Generator(seed).deck()


def spelled(deck, seed):
    """The deck's bytes, and the long rows' line numbers as spell.py gives them."""
    return spell(deck, random.Random("spelling of %d" % seed))


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit("usage: generate.py SEED")
    number = int(sys.argv[1])
    sys.stdout.buffer.write(spelled(generate(number), number)[0])
