"""Makes Abaqus decks with gmsh from the .geo files beside this script; run_vtk_checks.py reads them.

Of each geometry, for first order, second order (curved along round edges) and second order with straight edges:
    <name>-raw.inp     as gmsh writes it: the elements of lines, of surfaces and of volumes, element sets, node sets
    <name>.inp         the elements of the highest dimension alone, and surfaces: SKIN, all that bounds the mesh, and,
                       where groups of elements meet, SEAM, named from both sides
    <name>-turned.inp  the same with every second element listed the wrong way round
    <name>-c.inp       (only where there are several groups) the last group's name begins with "C_"
"""
import os, subprocess

HERE = os.path.dirname(os.path.abspath(__file__))
GEOMETRIES = (("plate", 2), ("block", 3), ("twoblocks", 3))
ORDERS = (("o1", 1, ""), ("o2", 2, ""), ("o2straight", 2, "Mesh.SecondOrderLinear = 1;"))
DIMENSION = {"CPS3": 2, "CPS6": 2, "C3D4": 3, "C3D10": 3}
# The nodes of an element listed the wrong way round: corners 2 and 3 change places, and the mid-side nodes with them.
TURNED = {"CPS3": (0, 2, 1), "CPS6": (0, 2, 1, 5, 4, 3),
          "C3D4": (0, 2, 1, 3), "C3D10": (0, 2, 1, 3, 6, 5, 4, 7, 9, 8)}
# Corners of the faces S1, S2, ... as Abaqus counts them.
LABELS = {2: ((0, 1), (1, 2), (2, 0)), 3: ((0, 1, 2), (0, 3, 1), (1, 3, 2), (2, 3, 0))}


class Deck:
    """A deck of gmsh, by section: the keyword line and the data lines below it."""

    def __init__(self, path):
        self.sections = []
        with open(path) as stream:
            for line in stream:
                if line.startswith("**"):
                    continue
                if line.startswith("*"):
                    self.sections.append((line, []))
                else:
                    self.sections[-1][1].append(line)

    def write(self, path):
        with open(path, "w") as stream:
            for keyword, lines in self.sections:
                stream.write(keyword + "".join(lines))

    def elements(self, dimension):
        """The sections of elements of this dimension: (place among the sections, type, rows of numbers)."""
        for at, (keyword, lines) in enumerate(self.sections):
            if keyword.upper().startswith("*ELEMENT"):
                kind = keyword.upper().split("TYPE=")[1].split(",")[0].strip()
                if DIMENSION.get(kind) == dimension:
                    numbers = [int(field) for field in "".join(lines).replace("\n", ",").split(",") if field.strip()]
                    width = 1 + len(TURNED[kind])
                    yield at, kind, [numbers[k:k + width] for k in range(0, len(numbers), width)]

    def keep_dimension(self, dimension):
        kept = {at for at, _, _ in self.elements(dimension)}
        self.sections = [section for at, section in enumerate(self.sections)
                         if at in kept or not section[0].upper().startswith("*ELEMENT")]

    def turn_every_second(self, dimension):
        for at, kind, rows in list(self.elements(dimension)):
            for row in rows[1::2]:
                row[1:] = [row[1 + k] for k in TURNED[kind]]
            # A comma at the end of a line carries an element on to the next one.
            lines = [", ".join(map(str, row[:9])) + (",\n" + ", ".join(map(str, row[9:])) if row[9:] else "") + "\n"
                     for row in rows]
            self.sections[at] = (self.sections[at][0], lines)

    def add_surfaces(self, dimension):
        sides = {}  # corners of a face -> the (section, element, label) that have it
        for at, _, rows in self.elements(dimension):
            for row in rows:
                for label, corners in enumerate(LABELS[dimension], 1):
                    face = tuple(sorted(row[1 + k] for k in corners))
                    sides.setdefault(face, []).append((at, row[0], label))
        surfaces = {"SKIN": [], "SEAM": []}
        for cells in sides.values():
            if len(cells) == 1:
                surfaces["SKIN"] += cells
            elif cells[0][0] != cells[1][0]:
                surfaces["SEAM"] += cells
        for name, cells in surfaces.items():
            if cells:
                self.sections.append(("*SURFACE, TYPE=ELEMENT, NAME=%s\n" % name,
                                      ["%d, S%d\n" % (number, label) for _, number, label in cells]))

    def bond_last_group(self, dimension):
        """Renames the last group of elements; tells whether there were several."""
        places = [at for at, _, _ in self.elements(dimension)]
        keyword, lines = self.sections[places[-1]]
        self.sections[places[-1]] = (keyword.replace("ELSET=", "ELSET=C_"), lines)
        return len(places) > 1


def make_decks(folder):
    """Writes all decks; gives (path, flags for check_run) of each."""
    made = []
    os.makedirs(folder, exist_ok=True)
    for name, dimension in GEOMETRIES:
        for suffix, order, options in ORDERS:
            base = os.path.join(folder, "%s-%s" % (name, suffix))
            raw = base + "-raw.inp"
            subprocess.run(["gmsh", "-v", "1", "-nopopup", "-nt", "1", "-%d" % dimension, "-order", str(order),
                            "-format", "inp", "-string", options, "-o", raw, os.path.join(HERE, name + ".geo")],
                           check=True, timeout=120, stdin=subprocess.DEVNULL)
            straight = suffix != "o2"
            # In space the triangles of the surfaces come along, many of them upright: without an area in the x-y plane.
            made.append((raw, {"good": dimension == 2, "oriented": True, "straight": straight}))
            for variant in ("", "-turned", "-c"):
                deck = Deck(raw)
                deck.keep_dimension(dimension)
                if variant == "-turned":
                    deck.turn_every_second(dimension)
                if variant == "-c" and not deck.bond_last_group(dimension):
                    continue
                deck.add_surfaces(dimension)
                path = base + variant + ".inp"
                deck.write(path)
                # The cells of a "C_" group have nodes of their own, so that their faces are not joined to each other.
                made.append((path, {"good": True, "straight": straight, "closed": variant != "-c"}))
    return made
