#!/usr/bin/python3
"""Runs the translator beside the floor and beside other converters, and prints ratios taken in one run.

  compare.py [--program PATH] [--maker PATH] [--plain PATH] [--kivodeck PATH] [--folder DIR] [--repetitions N]
             [--types C3D4,C3D10] [--decks LIST] [--no-peers] [--quick] [--markdown PATH] [--strict]

With --kivodeck the mesh file of the base and the large deck is audited, too: it must be found right, and time and memory
are held against the run's without --vtk.

The floor of a run is `cat deck >/dev/null` plus `cp` of the files that the run writes. Peers are those of gmsh
(VTK to VTK of the same mesh), meshio (deck to legacy VTK) and cgx (deck to deck) that are installed. Time is the
processor time of the whole process, user and system together. All runs are made in turn on a memory file system,
and a figure is the median over the turns. Before anything is timed mesh.input is checked (by meshcheck, which lies
beside the deck maker), with --plain all files and the log to the byte against a plain build's; no ratio is printed
when one is wrong. With --kivodeck `kivodeck check` and `kivodeck flatten` run in turn with the translator, on the same
decks and on one as CAE programs write it; what they say the decks mean, and the translator holds, is checked first.

Programs are those of build/ where nothing else is said. --quick makes small decks and one turn: it tries the command,
its figures say nothing. Exit status: 0 when every output is right (with --strict: and every target is met), else 1."""

import argparse
import collections
import datetime
import filecmp
import itertools
import json
import os
import platform
import re
import resource
import shutil
import signal
import statistics
import subprocess
import sys
import tempfile
import threading

BUILD = os.path.join(os.path.dirname(os.path.dirname(os.path.abspath(__file__))), "build")
PYTHON = "/usr/bin/python3"
RUN_LIMIT = 900  # seconds; a run that takes longer has failed
PEER_TURNS = 3

# Cubes along an edge: 57 gives 1.1 million C3D4 cells and 195,000 nodes, 38 gives 330,000 C3D10 cells and
# 457,000 nodes, each about 50 MB.
CUBES = {"C3D4": 57, "C3D10": 38}
QUICK_CUBES = {"C3D4": 26, "C3D10": 17}
GROWTH = 6

# Targets: the most that a figure may be (of meshio's the least).
FLOOR_LIMITS = {True: 3.0, False: 3.5}  # with --vtk, without
READ_NS = 3.0
GROWTH_LIMIT = 6.5
MANY = ((2000, 1.3), (20000, 2.0))  # sections, sets and surfaces: how many, and the limit
QUICK_MANY = ((200, 1.3), (2000, 2.0))
SHUFFLED_LIMIT = 1.5
SPARSE_LIMIT = 1.3
MEMORY_LIMIT = 1.4
VERBS = {"check": (1.5, 3.0), "flatten": (3.0, 4.0)}  # time and memory, of the translator's run without --vtk
MESHIO_TIMES = 6.0
AUDIT_LIMITS = (3.5, 3.0)  # processor time and peak memory of an audit, times those of the run without --vtk

MESHIO_SCRIPT = """import sys, meshio
mesh = meshio.read(sys.argv[1], file_format="abaqus")
meshio.write(sys.argv[2], mesh, file_format="vtk42", binary=False)
"""

Usage = collections.namedtuple("Usage", "seconds kilobytes status")
Peer = collections.namedtuple("Peer", "name package job argv result count")
Row = collections.namedtuple("Row", "target figure limit is_met note")


class Wrong(Exception):
    """An output is wrong or a run failed: there is nothing to compare."""


# ---- one run

def run(argv, folder, log="/dev/null", errors=None):
    """Runs argv in folder with its standard output in log; errors go to a file or to this command's own."""
    sys.stderr.flush()
    write = os.O_WRONLY | os.O_CREAT | os.O_TRUNC
    actions = [(os.POSIX_SPAWN_OPEN, 0, "/dev/null", os.O_RDONLY, 0), (os.POSIX_SPAWN_OPEN, 1, log, write, 0o644)]
    if errors is not None:
        actions.append((os.POSIX_SPAWN_OPEN, 2, errors, write, 0o644))
    before = os.getcwd()
    os.chdir(folder)
    try:
        pid = os.posix_spawnp(argv[0], argv, os.environ, file_actions=actions)
    finally:
        os.chdir(before)
    timer = threading.Timer(RUN_LIMIT, os.kill, (pid, signal.SIGKILL))
    timer.start()
    _, status, used = os.wait4(pid, 0)
    timer.cancel()
    return Usage(used.ru_utime + used.ru_stime, used.ru_maxrss, os.waitstatus_to_exitcode(status))


def run_well(argv, folder, log="/dev/null"):
    usage = run(argv, folder, log)
    if usage.status != 0:
        raise Wrong(f"{os.path.basename(argv[0])} ended with status {usage.status}")
    return usage


def empty_folder(path):
    shutil.rmtree(path, ignore_errors=True)
    os.mkdir(path)


def folder_bytes(path):
    """Number of files and of bytes, as a quick sign that a timed run wrote what the checked one did."""
    sizes = [entry.stat().st_size for entry in os.scandir(path)]
    return len(sizes), sum(sizes)


def read_text(path):
    with open(path) as file:
        return file.read()


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


def is_peak_hidden(usage):
    """A process starts with the size of the one that made it in its peak, so a small peak is not seen."""
    return usage.kilobytes <= resource.getrusage(resource.RUSAGE_SELF).ru_maxrss * 1.02


# ---- decks and what is run on them

class Deck:
    def __init__(self, bench, key, title, arguments):
        self.options, self.title = bench.options, title
        self.folder = os.path.join(bench.work, key)
        os.mkdir(self.folder)
        self.path, self.summary_path = (os.path.join(self.folder, name) for name in ("deck.inp", "summary"))
        run_well([self.options.maker, self.path, *arguments], self.folder, self.summary_path)
        self.summary = {key: int(value) for key, value in
                        re.findall(r"^(\w+)=(\d+)$", read_text(self.summary_path), re.M)}
        self.output = {}  # files and bytes written, with and without --vtk
        self.read_ns = []
        self.checks = collections.defaultdict(list)  # usages by "run" (of the translator) or verb
        self.taken = collections.defaultdict(list)  # usages by (has_vtk, "run" or "floor")

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

    def translate(self, has_vtk, program=None, kind="out"):
        out = self.out(has_vtk, kind)
        empty_folder(out)
        argv = [program or self.options.program, self.path, *(["--vtk"] if has_vtk else [])]
        return run_well(argv, out, out + ".log")

    def translate_again(self, has_vtk):
        usage = self.translate(has_vtk)
        out = self.out(has_vtk)
        if folder_bytes(out) != self.output[has_vtk]:
            raise Wrong(f"{self.title}: a timed run wrote other files than the checked one")
        # The first elapsed time of a log is that of reading.
        reading = re.search(r"^Elapsed Time: (\S+) sec\.$", read_text(out + ".log"), re.M).group(1)
        self.read_ns.append(float(reading) * 1e9 / self.summary["bytes"])
        return usage

    def floor(self, has_vtk):
        out, copy = self.out(has_vtk), self.out(has_vtk, "copy")
        empty_folder(copy)
        cat = run_well(["cat", self.path], self.folder)
        cp = run_well(["cp", *sorted(os.listdir(out)), copy], out)
        shutil.rmtree(copy)
        return Usage(cat.seconds + cp.seconds, max(cat.kilobytes, cp.kilobytes), 0)

    def audit(self):
        """The second program judges what the run has written; a mesh that is not right ends it with a status."""
        return run_well([self.options.kivodeck, "audit", "mesh.input"], self.out(False))

    def check(self, has_vtk):
        print(f"checking {self.name(has_vtk)}", file=sys.stderr)
        self.translate(has_vtk)
        out = self.out(has_vtk)
        checker = os.path.join(os.path.dirname(self.options.maker), "meshcheck")
        result = subprocess.run([checker, self.summary_path, out, out + ".log", *(["--vtk"] if has_vtk else [])],
                                capture_output=True, text=True)
        if result.returncode != 0:
            raise Wrong(f"{self.title}: {(result.stdout + result.stderr).strip()}")
        if self.options.plain:
            self.translate(has_vtk, self.options.plain, "plain")
            need_same(self.title, out, self.out(has_vtk, "plain"))
            shutil.rmtree(self.out(has_vtk, "plain"))
        self.output[has_vtk] = folder_bytes(out)

    def verb(self, verb, *options):
        plain = ["-o", os.path.join(self.folder, "plain.inp"), "--force"] if verb == "flatten" else []
        return [self.options.kivodeck, verb, *options, self.path, *plain]

    def check_meaning(self):
        """What the deck means, what the translator holds of it and of the plain deck is what it was made to hold."""
        print(f"checking the second program on {self.title}", file=sys.stderr)
        log = os.path.join(self.folder, "report")
        for verb in VERBS:
            status = run(self.verb(verb, "--format=json"), self.folder, log).status
            report = json.loads(read_text(log))
            for side in ("meaning", "reading"):
                if status not in (0, 1) or any(report[side][key] != self.summary[key] for key in ("nodes", "elements")):
                    raise Wrong(f"{self.title}: {side} of {verb} is not what the deck holds")

    def run_verb(self, verb):
        usage = run(self.verb(verb), self.folder)
        if usage.status not in ((0, 1) if verb == "check" else (0,)):
            raise Wrong(f"{self.title}: {verb} ended with status {usage.status}")
        return usage

    def time(self, has_vtk, kind="run"):
        return statistics.median(usage.seconds for usage in self.taken[has_vtk, kind])

    def peak(self, has_vtk):
        return max(self.taken[has_vtk, "run"], key=lambda usage: usage.kilobytes)


class CaeDeck(Deck):
    """Another deck's mesh, sets and surfaces as those of a part, its instance, and sets of the assembly."""

    def __init__(self, base):
        self.options, self.folder, self.summary = base.options, base.folder, base.summary
        self.title = base.title.replace("six sections", "as from CAE")
        self.path, self.checks = os.path.join(base.folder, "cae.inp"), collections.defaultdict(list)
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


def find_peers(deck, folder):
    os.mkdir(folder)
    cells = deck.summary["elements"]
    vtk_count = f"^CELL_TYPES {cells}"
    peers = []
    if shutil.which("gmsh"):
        mesh = os.path.join(folder, "mesh.vtk")
        shutil.copyfile(os.path.join(deck.out(True), "_Cells.vtk"), mesh)
        peers.append(Peer("gmsh", "gmsh", "VTK to VTK of the same mesh",
                          ("gmsh", "-0", mesh, "-save_all", "-format", "vtk", "-o", "result.vtk"),
                          "result.vtk", vtk_count))
    if os.path.exists(PYTHON) and subprocess.run([PYTHON, "-c", "import meshio"], capture_output=True).returncode == 0:
        peers.append(Peer("meshio", "python3-meshio", "deck to legacy VTK",
                          (PYTHON, "-c", MESHIO_SCRIPT, deck.path, "result.vtk"), "result.vtk", vtk_count))
    if shutil.which("cgx"):
        with open(os.path.join(folder, "job.fbd"), "w") as file:
            file.write(f"read {deck.path} inp\nsend all abq\nquit\n")
        peers.append(Peer("cgx", "calculix-cgx", "deck to deck", ("cgx", "-bg", "job.fbd"), "all.msh",
                          f"^ *{cells} elements"))
    return peers


def run_peer(peer, folder):
    """Usage of the run, or None when it failed. The count of cells must stand in what it wrote, or in its log."""
    path, log = os.path.join(folder, peer.result), os.path.join(folder, peer.name + ".log")
    if os.path.exists(path):
        os.remove(path)
    usage = run(peer.argv, folder, log, log + ".errors")
    if usage.status != 0 or not os.path.exists(path):
        return None
    found = subprocess.run(["grep", "-q", "-a", "-E", peer.count, path, log]).returncode == 0
    return usage if found else None


def package_version(package):
    try:
        result = subprocess.run(["dpkg-query", "-W", "-f", "${Version}", package], capture_output=True, text=True)
        return result.stdout.strip() or "version unknown"
    except OSError:
        return "version unknown"


# ---- figures

class Bench:
    def __init__(self, options):
        self.options = options
        self.work = tempfile.mkdtemp(prefix="compare-", dir=options.folder)
        self.job_rows, self.target_rows, self.deck_rows = [], [], []

    def make_decks(self, kind):
        """The decks by key, and the limits of those whose time is held against the base deck's."""
        n = (QUICK_CUBES if self.options.quick else CUBES)[kind]
        base = ["--type", kind, "--cubes", str(n)]
        large = round(n * GROWTH ** (1 / 3))
        plans = [("base", "six sections", base, None),
                 ("large", "six times the elements", [*base[:3], str(large)], None)]
        for count, limit in QUICK_MANY if self.options.quick else MANY:
            # There can't be more surfaces than element faces on the box.
            plans.append((f"many{count}", f"{count:,} sections, sets and surfaces",
                          [*base, "--node-sets", str(count), "--element-sections", str(count),
                           "--surfaces", str(min(count, 12 * n * n))], limit))
        plans += [("shuffled", "shuffled nodes and elements", [*base, "--shuffle"], SHUFFLED_LIMIT),
                  ("stride", "every 7th number", [*base, "--stride", "7"], SPARSE_LIMIT),
                  ("sparse", "numbers up to 2,000,000,000", [*base, "--max-number", "2000000000"], SPARSE_LIMIT)]
        wanted = {"base", *self.options.decks.split(",")}
        plans = [plan for plan in plans if "all" in wanted or re.sub(r"\d", "", plan[0]) in wanted]
        decks = {key: Deck(self, f"{kind}-{key}", f"{kind}, {title}", arguments) for key, title, arguments, _ in plans}
        return decks, {key: limit for key, _, _, limit in plans if limit}

    def measure(self, kind):
        decks, limits = self.make_decks(kind)
        for deck in decks.values():
            for has_vtk in (False, True):
                deck.check(has_vtk)
        checked = [decks[key] for key in ("base", "large") if key in decks and self.options.kivodeck]
        checked += [CaeDeck(decks["base"])] if checked else []
        for deck in checked:
            deck.check_meaning()
        folder = os.path.join(self.work, f"{kind}-peers")
        peers = {} if self.options.no_peers else {peer: [] for peer in find_peers(decks["base"], folder)}
        # The turn before the first is not counted: a virtual machine pays for memory that it has never used.
        for turn in range(0 if self.options.quick else -1, self.options.repetitions):
            print(f"{kind}: turn {turn + 1} of {self.options.repetitions}", file=sys.stderr)
            self.take_turn(decks, turn >= 0)
            self.take_checks(checked, turn >= 0)
            for peer in peers if 0 <= turn < PEER_TURNS else ():
                peers[peer].append(run_peer(peer, folder))
        self.report(kind, decks, limits, peers)
        for deck in checked:
            self.report_check(deck)
        for path in (folder, *(deck.folder for deck in decks.values())):
            shutil.rmtree(path, ignore_errors=True)

    def take_turn(self, decks, is_counted):
        for has_vtk in (True, False):
            for key, deck in decks.items():
                usages = {"run": deck.translate_again(has_vtk)}
                if key in ("base", "large"):
                    usages["floor"] = deck.floor(has_vtk)
                    if self.options.kivodeck and not has_vtk:
                        usages["audit"] = deck.audit()
                shutil.rmtree(deck.out(has_vtk))
                for job, usage in usages.items() if is_counted else ():
                    deck.taken[has_vtk, job].append(usage)

    def take_checks(self, checked, is_counted):
        for deck in checked:
            usages = {"run": deck.translate(False), **{verb: deck.run_verb(verb) for verb in VERBS}}
            shutil.rmtree(deck.out(False))
            for job, usage in usages.items() if is_counted else ():
                deck.checks[job].append(usage)

    def report_check(self, deck):
        seconds, kilobytes = {}, {}
        for job, usages in deck.checks.items():
            self.add_job(f"{deck.title}: {job} beside {'check and flatten' if job == 'run' else 'run'}", usages)
            seconds[job] = statistics.median(usage.seconds for usage in usages)
            kilobytes[job] = max(usage.kilobytes for usage in usages)
        for verb, (time_limit, memory_limit) in VERBS.items():
            self.add_ratio(f"{deck.title}: {verb}, times the translator's run", seconds[verb] / seconds["run"],
                           time_limit)
            self.add_ratio(f"{deck.title}: peak of {verb}, times the translator's",
                           kilobytes[verb] / kilobytes["run"], memory_limit)

    def report(self, kind, decks, limits, peers):
        for deck in decks.values():
            s = deck.summary
            self.deck_rows.append((deck.title, f"{s['bytes'] / 1e6:.1f}",
                                   *(f"{s[key]:,}" for key in ("nodes", "elements", "node_sets", "element_sections",
                                                               "surfaces")), f"{deck.output[True][1] / 1e6:.1f}"))
            for (has_vtk, job), usages in deck.taken.items():
                self.add_job(deck.name(has_vtk) + ("" if job == "run" else ": " + job), usages)
        for has_vtk in (True, False):
            base = decks["base"]
            self.add_ratio(f"{kind}: {'with' if has_vtk else 'without'} --vtk, times the floor",
                           base.time(has_vtk) / base.time(has_vtk, "floor"), FLOOR_LIMITS[has_vtk])
        self.add_ratio(f"{kind}: reading alone, per byte of deck", statistics.median(decks["base"].read_ns), READ_NS,
                       "the log's own figure", " ns")
        for has_vtk in (False, True):
            self.report_growth(kind, decks, limits, has_vtk)
        for deck in [decks[key] for key in ("base", "large") if key in decks]:
            for has_vtk in (False, True):
                self.report_memory(deck, has_vtk)
            if self.options.kivodeck:
                self.report_audit(deck)
        self.report_peers(kind, decks["base"].time(True), peers)

    def add_job(self, title, usages):
        peak = max(usages, key=lambda usage: usage.kilobytes)
        self.job_rows.append((title, f"{statistics.median(usage.seconds for usage in usages):.3f}",
                              f"{'at most ' if is_peak_hidden(peak) else ''}{peak.kilobytes * 1024 / 1e6:.1f}",
                              len(usages)))

    def add_ratio(self, target, value, limit, note="", unit=""):
        self.target_rows.append(Row(target, f"{value:.2f}{unit}", f"at most {limit:g}{unit}", value <= limit, note))

    def report_growth(self, kind, decks, limits, has_vtk):
        base = decks["base"]
        if "large" in decks:
            # The large box is not exactly six times the small one: the figure is brought to six in proportion.
            large = decks["large"]
            growth = large.summary["elements"] / base.summary["elements"]
            floor = large.time(has_vtk, "floor") / base.time(has_vtk, "floor")
            self.add_ratio(f"{kind}: six times the elements{', --vtk' if has_vtk else ''}",
                           large.time(has_vtk) / base.time(has_vtk) * GROWTH / growth, GROWTH_LIMIT,
                           f"measured at {growth:.2f} times; the floor's time grew {floor:.2f} times")
        for key, limit in limits.items():
            note = f"deck {decks[key].summary['bytes'] / base.summary['bytes']:.2f} times as long"
            if has_vtk and key[:4] == "many":
                note += f"; writes {decks[key].output[True][0]:,} files"
            self.add_ratio(f"{decks[key].name(has_vtk)}, times six sections",
                           decks[key].time(has_vtk) / base.time(has_vtk), limit, note)

    def report_memory(self, deck, has_vtk):
        store, peak = deck.store_bytes(), deck.peak(has_vtk)
        self.add_ratio(f"{deck.name(has_vtk)}: peak, times the store", peak.kilobytes * 1024 / store, MEMORY_LIMIT,
                       f"store {store / 1e6:.1f} MB")
        if is_peak_hidden(peak) and not self.target_rows[-1].is_met:
            row = self.target_rows[-1]
            self.target_rows[-1] = row._replace(figure="not seen", is_met=None,
                                                note=row.note + ", smaller than this command")

    def report_audit(self, deck):
        time, memory = AUDIT_LIMITS
        self.add_ratio(f"{deck.title}: audit, times the run", deck.time(False, "audit") / deck.time(False), time)
        peak = max(usage.kilobytes for usage in deck.taken[False, "audit"])
        self.add_ratio(f"{deck.title}: peak of audit, times the run's", peak / deck.peak(False).kilobytes, memory)

    def report_peers(self, kind, ours, peers):
        for peer, usages in peers.items():
            if None in usages:
                self.target_rows.append(Row(f"{kind}: {peer.name}", "failed", "", None, "it did not convert this deck"))
                continue
            self.add_job(f"{kind}, six sections: {peer.name} {package_version(peer.package)} ({peer.job})", usages)
            times = statistics.median(usage.seconds for usage in usages) / ours
            is_met, limit = times > 1, "more than 1"
            if peer.name == "meshio":
                is_met, limit = times >= MESHIO_TIMES, f"at least {MESHIO_TIMES:g}"
            self.target_rows.append(Row(f"{kind}: {peer.name} takes, times ours with --vtk", f"{times:.2f}", limit,
                                        is_met, peer.job))
        for name in () if self.options.no_peers else ("gmsh", "meshio", "cgx"):
            if name not in [peer.name for peer in peers]:
                self.target_rows.append(Row(f"{kind}: {name}", "absent", "", None, "not installed"))


# ---- the machine and the page

def compiler_of(program):
    """Compilers leave their names in the programs they make."""
    with open(program, "rb") as file:
        names = set(re.findall(rb"GCC: \([^)]*\) [0-9.]+|clang version [0-9.]+", file.read()))
    return ", ".join(sorted(name.decode() for name in names)) or "unknown"


def first_match(pattern, path):
    """What the pattern's group finds in the file; None without either."""
    match = re.search(pattern, read_text(path), re.M) if os.path.exists(path) else None
    return match and match.group(1)


def machine_lines(options):
    model = first_match(r"^model name\s*: (.*)$", "/proc/cpuinfo") or platform.machine()
    cache = os.path.join(os.path.dirname(options.program), "CMakeCache.txt")  # of the program's build folder
    build = first_match(r"^CMAKE_BUILD_TYPE:\w+=(.*)$", cache)
    build = "unknown" if build is None else build or "the project's default"
    kind = subprocess.run(["stat", "-f", "-c", "%T", options.folder], capture_output=True, text=True).stdout.strip()
    return [f"Machine: {model}, {os.cpu_count()} processors, {platform.system()} {platform.release()}",
            f"Compiler: {compiler_of(options.program)}; build type {build}",
            f"Date: {datetime.date.today().isoformat()}",
            f"File system: {kind}; medians of {options.repetitions} runs made in turn (peers at most {PEER_TURNS})",
            "Outputs: counts and geometry right" +
            ("; files and log the same to the byte as the plain build's" if options.plain else "")]


def table(head, rows):
    lines = ["| " + " | ".join(head) + " |", "|" + "---|" * len(head)]
    return lines + ["| " + " | ".join(str(field) for field in row) + " |" for row in rows]


def make_page(bench):
    words = {True: "met", False: "missed", None: ""}
    lines = ["# Whole runs beside the floor and beside other converters", ""]
    lines += [f"- {line}" for line in machine_lines(bench.options)]
    if bench.options.quick:
        lines.append("- Quick run on small decks: the figures say nothing.")
    lines += ["", "## Targets", ""]
    lines += table(("Figure", "Value", "Target", "", "Note"),
                   [row._replace(is_met=words[row.is_met]) for row in bench.target_rows])
    lines += ["", "## Processor time and peak memory", ""]
    lines += table(("Run", "Seconds", "Peak MB", "Runs"), bench.job_rows)
    lines += ["", "## Decks", ""]
    lines += table(("Deck", "MB", "Nodes", "Elements", "Node sets", "Sections", "Surfaces", "MB written, --vtk"),
                   bench.deck_rows)
    return "\n".join(lines) + "\n"


def read_options():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--program", default=os.path.join(BUILD, "KIVOm"), help="the translator")
    parser.add_argument("--maker", default=os.path.join(BUILD, "bench", "makedeck"), help="the deck maker")
    parser.add_argument("--plain", help="a plain build of the translator whose files must be the same")
    parser.add_argument("--kivodeck", help="the second program, measured beside the translator")
    parser.add_argument("--folder", default="/dev/shm", help="where to work, a memory file system (default /dev/shm)")
    parser.add_argument("--repetitions", type=int, default=7, help="turns (default 7)")
    parser.add_argument("--types", default="C3D4,C3D10")
    parser.add_argument("--decks", default="all",
                        help="of large, many, shuffled, stride, sparse those to run beside the base deck (default all)")
    parser.add_argument("--no-peers", action="store_true")
    parser.add_argument("--quick", action="store_true")
    parser.add_argument("--markdown", help="also write the page to this file")
    parser.add_argument("--strict", action="store_true", help="fail when a target is missed")
    options = parser.parse_args()
    for name in ("program", "maker", "plain", "kivodeck"):
        path = getattr(options, name)
        if path and not os.access(path, os.X_OK):
            parser.error(f"--{name}: no program at {path}")
        setattr(options, name, os.path.abspath(path) if path else None)
    if options.repetitions < 1 or not set(options.types.split(",")) <= set(CUBES):
        parser.error("--repetitions or --types is wrong")
    options.repetitions = 1 if options.quick else options.repetitions
    return options


def main():
    options = read_options()
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(1))  # so that the decks are removed
    bench = Bench(options)
    try:
        for kind in options.types.split(","):
            bench.measure(kind)
    except Wrong as wrong:
        print(f"no figures: {wrong}")
        return 1
    finally:
        shutil.rmtree(bench.work, ignore_errors=True)
    page = make_page(bench)
    print(page, end="")
    if options.markdown:
        with open(options.markdown, "w") as file:
            file.write(page)
    return 1 if options.strict and any(row.is_met is False for row in bench.target_rows) else 0


if __name__ == "__main__":
    sys.exit(main())
