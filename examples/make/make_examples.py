#!/usr/bin/python3
"""Makes the larger example decks from the .geo files beside this script.

    make_examples.py [FOLDER]      FOLDER: where to write (standard: the folder above this script)

gmsh makes the meshes, kivodeck (on the path, or in build/) makes them plain. This script numbers nodes and elements from
1, writes the decks with comments, and refuses meshes with an element that is not well shaped: each must be positively
oriented, everywhere for curved ones. Another version of gmsh makes other meshes: the pictures then have to be made
anew, too.
"""
import math, os, shutil, subprocess, sys, tempfile

HERE = os.path.dirname(os.path.abspath(__file__))
WORST = 0.2  # smallest share of an ideal element's shape, 1 for the equilateral one
KIVODECK = shutil.which("kivodeck") or os.path.join(HERE, "..", "..", "build", "kivodeck")
EDGES = {"CPS6": ((0, 1), (1, 2), (2, 0)), "C3D10": ((0, 1), (1, 2), (2, 0), (0, 3), (1, 3), (2, 3))}


class Example:
    """Dimension; title and picture; cell groups, node sets and surfaces, named like gmsh's sets."""

    def __init__(self, name, dimension, title, groups, node_sets, surfaces):
        self.name, self.dimension, self.title = name, dimension, title
        self.groups, self.node_sets, self.surfaces = groups, node_sets, surfaces


EXAMPLES = (
    Example("plate_with_hole", 2,
            ("A plate of 80 by 40 mm with a hole of 16 mm: quadratic triangles in two dimensions.", "",
             "  +------------------------+", "  |           __           |", "  | Fixed    (  ) Hole     |  Pull ->",
             "  |           --           |", "  +--------Sliding---------+"),
            ("Plate",), ("Fixed", "Sliding"), ("Pull", "Hole")),
    Example("bracket", 3,
            ("An angle bracket of 6 mm, with a rib: quadratic tetrahedra.", "",
             "  | |\\          held in the holes of the foot (Bolts),", "  |o| \\         loaded in the hole of the upright (Load)", "  | |__\\____",
             "  |____o___|"),
            ("Bracket",), ("Bolts", "Foot"), ("Load", "Top")),
    Example("bonded_joint", 3,
            ("Two sheets and the glue between them: linear tetrahedra.", "",
             "              +---------------------+", "              |     Upper_Sheet     | Pull ->",
             "  Fixed +-----+-------C_Glue--------+", "        |    Lower_Sheet   |", "        +------------------+", "",
             "The name of the glue begins with C_: each of its elements gets nodes of its own."),
            ("Lower_Sheet", "C_Glue", "Upper_Sheet"),
            ("Fixed",), ("Below_Glue", "Above_Glue", "Pull")),
)


def minus(a, b):
    return [x - y for x, y in zip(a, b)]


def cross(a, b):
    return [a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]]


def dot(a, b):
    return sum(x * y for x, y in zip(a, b))


def shape(p):
    """1 for an equilateral triangle or tetrahedron, 0 for a flat one, below 0 for one inside out."""
    edges = [minus(p[j], p[i]) for i in range(len(p)) for j in range(i)]
    size = sum(dot(edge, edge) for edge in edges) / len(edges)
    if len(p) == 3:
        return cross(minus(p[1], p[0]), minus(p[2], p[0]))[2] / (size * math.sqrt(0.75))
    volume6 = dot(cross(minus(p[1], p[0]), minus(p[2], p[0])), minus(p[3], p[0]))
    return volume6 * math.sqrt(2) / size ** 1.5


def jacobian(kind, p, at):
    """The determinant of a quadratic element at barycentric coordinates `at`, by the straight one's (1 where straight)."""
    corners = len(at)
    gradients = [[0.0] * corners for _ in p]  # by the barycentric coordinates
    for i in range(corners):
        gradients[i][i] = 4 * at[i] - 1
    for k, (i, j) in enumerate(EDGES[kind]):
        gradients[corners + k][i], gradients[corners + k][j] = 4 * at[j], 4 * at[i]
    tangents = [[sum(gradients[n][i] * p[n][d] for n in range(len(p))) for d in range(3)] for i in range(corners)]

    def determinant(t):
        if corners == 3:
            return cross(minus(t[1], t[0]), minus(t[2], t[0]))[2]
        return dot(cross(minus(t[1], t[0]), minus(t[2], t[0])), minus(t[3], t[0]))

    return determinant(tangents) / determinant(p[:corners])


def check(example, kind, number, p):
    corners = example.dimension + 1
    if shape(p[:corners]) < WORST:
        sys.exit("%s: element %d has a poor shape: %.3f" % (example.name, number, shape(p[:corners])))
    if kind in EDGES:
        points = [[float(i == k) for i in range(corners)] for k in range(corners)]
        points += [[0.5 * ((i == a) + (i == b)) for i in range(corners)] for a, b in EDGES[kind]]
        worst = min(jacobian(kind, p, at) for at in points + [[1 / corners] * corners])
        if worst < 0.3:
            sys.exit("%s: element %d is curved too much: %.3f" % (example.name, number, worst))


class Mesh:
    """A plain deck: coordinates by node; type and nodes by element; members by name of group, node set and surface."""

    def __init__(self, path):
        self.nodes, self.elements, self.groups, self.node_sets, self.surfaces = {}, {}, {}, {}, {}
        with open(path) as lines:
            for line in lines:
                if line[0] == "*":
                    keyword, *words = line[1:].strip().split(", ")
                    words = dict(word.split("=") for word in words)
                else:
                    self.take(keyword, words, line.strip().split(", "))

    def take(self, keyword, words, fields):
        if keyword == "Node":
            self.nodes[int(fields[0])] = [float(x) for x in fields[1:] + ["0"]][:3]
        elif keyword == "Element":
            self.elements[int(fields[0])] = words["type"], [int(n) for n in fields[1:]]
            self.groups.setdefault(words["elset"], []).append(int(fields[0]))
        elif keyword == "Nset":
            for name in words["nset"].split("+"):  # of several sets at once
                self.node_sets.setdefault(name, []).extend(int(n) for n in fields)
        elif keyword == "Surface":
            for name in words["name"].split("+"):
                self.surfaces.setdefault(name, []).append((int(fields[0]), fields[1]))


def mesh(example):
    with tempfile.TemporaryDirectory() as scratch:
        raw, plain = os.path.join(scratch, "raw.inp"), os.path.join(scratch, "plain.inp")
        subprocess.run(["gmsh", "-%d" % example.dimension, "-v", "1", "-o", raw, os.path.join(HERE, example.name + ".geo")],
                       check=True)
        subprocess.run([KIVODECK, "flatten", "--groups=sets", "--overlaps=split", raw, "-o", plain], check=True,
                       stdout=subprocess.DEVNULL)
        return Mesh(plain)


def number(value):
    return "%.7g" % (0.0 if abs(value) < 1e-9 else value)


def listing(numbers, step=12):
    return "".join(", ".join(map(str, numbers[at:at + step])) + "\n" for at in range(0, len(numbers), step))


def write(example, deck, put):
    blocks = [(name, deck.groups[name.upper()]) for name in example.groups]
    cells = {old: new for new, old in enumerate((e for _, es in blocks for e in es), 1)}
    used = sorted({n for e in cells for n in deck.elements[e][1]})
    nodes = {old: new for new, old in enumerate(used, 1)}

    put("*Heading\n " + example.title[0] + "\n**\n")
    put("".join(("** " + line).rstrip() + "\n" for line in example.title[2:]))
    put("** Lengths in mm. Made by make/make_examples.py.\n**\n*Node\n")
    for old, new in nodes.items():
        put("%d, %s\n" % (new, ", ".join(number(x) for x in deck.nodes[old][:example.dimension])))
    for name, es in blocks:
        kind = deck.elements[es[0]][0]
        put("*Element, type=%s, elset=%s\n" % (kind, name))
        for e in es:
            check(example, kind, cells[e], [deck.nodes[n] for n in deck.elements[e][1]])
            put("%d, %s\n" % (cells[e], ", ".join(str(nodes[n]) for n in deck.elements[e][1])))
    put("** A node keeps the tag of the first set that lists it.\n")
    for name in example.node_sets:
        put("*Nset, nset=%s\n" % name)
        put(listing(sorted(nodes[n] for n in deck.node_sets[name.upper()] if n in nodes)))
    put("** Surfaces: sets of elements, by the face or edge with which they lie on the surface.\n")
    for name in example.surfaces:
        rows = [(cells[e], label) for e, label in deck.surfaces[name.upper()]]
        labels = sorted({label for _, label in rows})
        for label in labels:
            put("*Elset, elset=%s_%s\n" % (name, label))
            put(listing(sorted(e for e, its in rows if its == label)))
        put("*Surface, type=ELEMENT, name=%s\n" % name)
        put("".join("%s_%s, %s\n" % (name, label, label) for label in labels))


def main():
    folder = sys.argv[1] if len(sys.argv) > 1 else os.path.dirname(HERE)
    for example in EXAMPLES:
        lines = []
        write(example, mesh(example), lines.append)
        with open(os.path.join(folder, example.name + ".inp"), "w", encoding="ascii") as stream:
            stream.write("".join(lines))


if __name__ == "__main__":
    main()
