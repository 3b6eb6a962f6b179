"""Decks of the deck maker, and the jobs that are run on them: both programs, and the floor of cat and cp."""

import filecmp
import functools
import itertools
import json
import os
import re
import shutil
import subprocess
import sys

from page import read_text
from runs import Job, Usage, Wrong, run, run_well
from samples import Sample

# Cubes along an edge: 57 gives 1.1 million C3D4 cells and 195,000 nodes, 38 gives 330,000 C3D10 cells and
# 457,000 nodes, each about 50 MB.
CUBES = {"C3D4": 57, "C3D10": 38}
QUICK_CUBES = {"C3D4": 26, "C3D10": 17}
GROWTH = 6

# How many sections, sets and surfaces, and the most that they may take, times six of each; likewise below.
MANY = ((2000, 1.3), (20000, 2.0))
QUICK_MANY = ((200, 1.3), (2000, 2.0))
SHUFFLED_LIMIT = 1.5
SPARSE_LIMIT = 1.3

VERB_STATUS = {"check": (0, 1), "flatten": (0,)}  # sets of these decks overlap, which a check tells


def empty_folder(path):
    shutil.rmtree(path, ignore_errors=True)
    os.mkdir(path)


def folder_bytes(path):
    """Number of files and of bytes, as a quick sign that a timed run wrote what the checked one did."""
    sizes = [entry.stat().st_size for entry in os.scandir(path)]
    return len(sizes), sum(sizes)


def masked_log(path):
    log = re.sub(r"(Job (?:started|finished) at ).*", r"\1<date>", read_text(path))
    return re.sub(r"(Elapsed Time: )\S+( sec\.)", r"\1<t>\2", log)


def need_same(title, folder, other):
    """Raises Wrong unless both runs left the same files, to the byte, and the same log but for times and dates."""
    names = sorted(os.listdir(folder))
    if names != sorted(os.listdir(other)):
        raise Wrong(f"{title}: the plain build leaves other files")
    _, differing, unread = filecmp.cmpfiles(folder, other, names, shallow=False)
    if differing or unread:
        raise Wrong(f"{title}: {(differing + unread)[0]} differs from the plain build's")
    if masked_log(folder + ".log") != masked_log(other + ".log"):
        raise Wrong(f"{title}: the log differs from the plain build's")


class Deck:
    """A deck in a folder of its own, the files that its runs leave there, and its jobs by key: "run", "floor" (both
    also with " --vtk"), "check", "flatten", "audit"."""

    def __init__(self, options, folder, title):
        self.options, self.folder, self.title = options, folder, title
        os.mkdir(folder)
        self.path, self.summary_path = (os.path.join(folder, name) for name in ("deck.inp", "summary"))
        self.output = {}  # files and bytes written, with and without --vtk
        self.reading = Sample()  # nanoseconds for a byte of the deck
        self.jobs = {}

    def make(self, arguments):
        run_well([self.options.maker, self.path, *arguments], self.folder, self.summary_path)
        found = re.findall(r"^(\w+)=(\d+)$", read_text(self.summary_path), re.M)
        self.summary = {key: int(value) for key, value in found}

    def make_as_from_cae(self, base):
        """Another deck's mesh, sets and surfaces as those of a part, its instance, and sets of the assembly."""
        self.summary = base.summary
        with open(base.path) as lines, open(self.path, "w") as file:
            file.write("*Heading\n*Part, name=BOX\n")  # line by line: this command stays small beside what it measures
            file.writelines(itertools.dropwhile(lambda line: line != "*NODE\n", lines))
            for section in range(1, 7):
                file.write(f"*Solid Section, elset=SLAB_{section}, material=STEEL\n,\n")
            file.write("*End Part\n*Assembly, name=A\n*Instance, name=BOX-1, part=BOX\n*End Instance\n")
            for side in range(1, 7):
                file.write(f"*Nset, nset=SET-{side}, instance=BOX-1, generate\n1, {self.summary['nodes']}, 1\n"
                           f"*Surface, type=ELEMENT, name=SURF-{side}\nBOX-1._FACE_{side}_S1, S1\n")
            file.write("*End Assembly\n*Material, name=STEEL\n*Elastic\n210000., 0.3\n")

    def name(self, has_vtk):
        return self.title + (", --vtk" if has_vtk else "")

    def out(self, has_vtk, kind="out"):
        return os.path.join(self.folder, f"{kind}-vtk" if has_vtk else kind)

    def store_bytes(self):
        """Bytes of the finished store: four int columns and three double ones for nodes; four int columns and two
        tables for cells; three int columns and one table for faces."""
        s = self.summary
        return (s["final_nodes"] * (4 * 4 + 3 * 8) + s["elements"] * (4 * 4 + 2 * 4 * s["nodes_per_element"]) +
                s["final_faces"] * (3 * 4 + 4 * s["nodes_per_face"]))

    # ---- what is checked before anything is timed

    def translate(self, has_vtk, program=None, kind="out"):
        out = self.out(has_vtk, kind)
        empty_folder(out)
        argv = [program or self.options.program, self.path, *(["--vtk"] if has_vtk else [])]
        return run_well(argv, out, out + ".log")

    def check_output(self, has_vtk):
        print(f"checking {self.name(has_vtk)}", file=sys.stderr)
        self.translate(has_vtk)
        out, plain = self.out(has_vtk), self.out(has_vtk, "plain")
        checker = os.path.join(os.path.dirname(self.options.maker), "meshcheck")
        result = subprocess.run([checker, self.summary_path, out, out + ".log", *(["--vtk"] if has_vtk else [])],
                                capture_output=True, text=True)
        if result.returncode != 0:
            raise Wrong(f"{self.title}: {(result.stdout + result.stderr).strip()}")
        if self.options.plain:
            self.translate(has_vtk, self.options.plain, "plain")
            need_same(self.title, out, plain)
            shutil.rmtree(plain)

    def check_meaning(self):
        """What the deck means, what the translator holds of it and of the plain deck is what it was made to hold."""
        print(f"checking the second program on {self.title}", file=sys.stderr)
        log = os.path.join(self.folder, "report")
        for verb in VERB_STATUS:
            status = run(self.verb(verb, "--format=json"), self.folder, log).status
            report = json.loads(read_text(log))
            for side in ("meaning", "reading"):
                if status not in (0, 1) or any(report[side][key] != self.summary[key] for key in ("nodes", "elements")):
                    raise Wrong(f"{self.title}: {side} of {verb} is not what the deck holds")

    # ---- what is timed

    def translate_again(self, has_vtk, is_kept):
        usage = self.translate(has_vtk)
        out = self.out(has_vtk)
        if folder_bytes(out) != self.output[has_vtk]:
            raise Wrong(f"{self.title}: a timed run wrote other files than the checked one")
        if not has_vtk:  # the first elapsed time of a log is that of reading
            reading = re.search(r"^Elapsed Time: (\S+) sec\.$", read_text(out + ".log"), re.M).group(1)
            self.reading.values.append(float(reading) * 1e9 / os.path.getsize(self.path))
        if not is_kept:
            shutil.rmtree(out)
        return usage

    def floor(self, has_vtk):
        out, copy = self.out(has_vtk), self.out(has_vtk, "copy")
        empty_folder(copy)
        cat = run_well(["cat", self.path], self.folder)
        cp = run_well(["cp", *sorted(os.listdir(out)), copy], out)
        shutil.rmtree(copy)
        return Usage(cat.seconds + cp.seconds, max(cat.kilobytes, cp.kilobytes), 0)

    def verb(self, verb, *options):
        plain = ["-o", os.path.join(self.folder, "plain.inp"), "--force"] if verb == "flatten" else []
        return [self.options.kivodeck, verb, *options, self.path, *plain]

    def run_verb(self, verb):
        usage = run(self.verb(verb), self.folder)
        if usage.status not in VERB_STATUS[verb]:
            raise Wrong(f"{self.title}: {verb} ended with status {usage.status}")
        return usage

    def audit(self):
        """The second program judges what the run has left; a mesh that is not right ends it with a status."""
        return run_well([self.options.kivodeck, "audit", "mesh.input"], self.out(False))

    def plan_runs(self, ways=(True, False), is_kept=False):
        """Runs with and without --vtk (has_vtk), whose files stay when they are kept, as the floor and audits need."""
        for has_vtk in ways:
            key = "run --vtk" if has_vtk else "run"
            self.output[has_vtk] = folder_bytes(self.out(has_vtk))
            self.jobs[key] = Job(self.name(has_vtk), functools.partial(self.translate_again, has_vtk, is_kept),
                                 self.output[has_vtk][1])
            if not is_kept:
                shutil.rmtree(self.out(has_vtk))

    def plan_floor(self):
        for has_vtk in (True, False):
            self.jobs["floor --vtk" if has_vtk else "floor"] = Job(
                self.name(has_vtk) + ": floor", functools.partial(self.floor, has_vtk), self.output[has_vtk][1])

    def plan_verbs(self):
        for verb in VERB_STATUS:
            self.jobs[verb] = Job(f"{self.title}: {verb}", functools.partial(self.run_verb, verb),
                                  os.path.getsize(self.path) if verb == "flatten" else 0)

    def plan_audit(self):
        self.jobs["audit"] = Job(f"{self.title}: audit", self.audit)


def make_decks(options, kind, work):
    """The decks of a type of element by key, and the limits of those whose time is held against the base deck's."""
    n = (QUICK_CUBES if options.quick else CUBES)[kind]
    base = ["--type", kind, "--cubes", str(n)]
    plans = [("base", "six sections", base, None),
             ("large", "six times the elements", [*base[:3], str(round(n * GROWTH ** (1 / 3)))], None)]
    for count, limit in QUICK_MANY if options.quick else MANY:
        # There can't be more surfaces than element faces on the box.
        plans.append((f"many{count}", f"{count:,} sections, sets and surfaces",
                      [*base, "--node-sets", str(count), "--element-sections", str(count),
                       "--surfaces", str(min(count, 12 * n * n))], limit))
    plans += [("shuffled", "shuffled nodes and elements", [*base, "--shuffle"], SHUFFLED_LIMIT),
              ("stride", "every 7th number", [*base, "--stride", "7"], SPARSE_LIMIT),
              ("sparse", "numbers up to 2,000,000,000", [*base, "--max-number", "2000000000"], SPARSE_LIMIT)]
    wanted = {"base", *options.decks.split(",")}
    plans = [plan for plan in plans if "all" in wanted or re.sub(r"\d", "", plan[0]) in wanted]
    decks = {}
    for key, title, arguments, _ in plans:
        decks[key] = deck = Deck(options, os.path.join(work, f"{kind}-{key}"), f"{kind}, {title}")
        deck.make(arguments)
        for has_vtk in (False, True):
            deck.check_output(has_vtk)
        deck.plan_runs(is_kept=key in ("base", "large"))
        if key in ("base", "large"):
            deck.plan_floor()
    if options.kivodeck:
        plan_second_program(options, kind, work, decks)
    return decks, {key: limit for key, _, _, limit in plans if limit}


def plan_second_program(options, kind, work, decks):
    decks["cae"] = cae = Deck(options, os.path.join(work, f"{kind}-cae"), f"{kind}, as from CAE")
    cae.make_as_from_cae(decks["base"])
    cae.translate(False)
    cae.plan_runs((False,))
    for key in ("base", "large", "cae"):
        if key in decks:
            decks[key].check_meaning()
            decks[key].plan_verbs()
            if key != "cae":
                decks[key].plan_audit()
