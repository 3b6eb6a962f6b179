#!/usr/bin/python3
"""Runs the translator beside the floor and beside other converters, and prints ratios taken in one run.

  compare.py [--program PATH] [--maker PATH] [--plain PATH] [--folder DIR] [--repetitions N]
             [--types C3D4,C3D10] [--decks LIST] [--no-peers] [--quick] [--markdown PATH] [--strict]

The floor of a run is `cat deck >/dev/null` plus `cp` of the files that the run writes. Peers are those of gmsh
(VTK to VTK of the same mesh), meshio (deck to legacy VTK) and cgx (deck to deck) that are installed. Time is the
processor time of the whole process, user and system together. All runs are made in turn on a memory file system,
and a figure is the median over the turns. Before anything is timed mesh.input is checked (by meshcheck, which lies
beside the deck maker), with --plain all files and the log to the byte against a plain build's; no ratio is printed
when one is wrong.

Programs are those of build/ where nothing else is said. --quick makes small decks and one turn: it tries the command,
its figures say nothing. Exit status: 0 when every output is right (with --strict: and every target is met), else 1."""

import argparse
import collections
import datetime
import filecmp
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
MANY_SECTIONS = (2000, 20000)
QUICK_MANY_SECTIONS = (200, 2000)
GROWTH = 6

# Targets.
FLOOR_VTK = 3.0
FLOOR_PLAIN = 3.5
READ_NS = 3.0
GROWTH_LIMIT = 6.5
SECTION_LIMITS = (1.3, 2.0)
SHUFFLED_LIMIT = 1.5
SPARSE_LIMIT = 1.3
MEMORY_LIMIT = 1.4
MESHIO_TIMES = 6.0

MESHIO_SCRIPT = """import sys, meshio
mesh = meshio.read(sys.argv[1], file_format="abaqus")
meshio.write(sys.argv[2], mesh, file_format="vtk42", binary=False)
"""

Usage = collections.namedtuple("Usage", "seconds kilobytes status")


class Wrong(Exception):
    """An output is wrong or a run failed: there is nothing to compare."""


# ---- one run

def run(argv, folder, log="/dev/null", errors=None):
    """Runs argv in folder with its standard output in log; errors go to a file or to this command's own."""
    sys.stderr.flush()
    actions = [(os.POSIX_SPAWN_OPEN, 0, "/dev/null", os.O_RDONLY, 0),
               (os.POSIX_SPAWN_OPEN, 1, log, os.O_WRONLY | os.O_CREAT | os.O_TRUNC, 0o644)]
    if errors is not None:
        actions.append((os.POSIX_SPAWN_OPEN, 2, errors, os.O_WRONLY | os.O_CREAT | os.O_TRUNC, 0o644))
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


def reading_seconds(log):
    """The first elapsed time of a log is that of reading."""
    with open(log) as file:
        return float(re.search(r"^Elapsed Time: (\S+) sec\.$", file.read(), re.M).group(1))


def masked_log(path):
    with open(path) as file:
        log = re.sub(r"(Job (?:started|finished) at ).*", r"\1<date>", file.read())
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


# ---- decks and what is run on them

class Deck:
    def __init__(self, bench, key, title, arguments):
        self.bench, self.key, self.title = bench, key, title
        self.folder = os.path.join(bench.work, key)
        os.mkdir(self.folder)
        self.path = os.path.join(self.folder, "deck.inp")
        self.summary_path = os.path.join(self.folder, "summary")
        run_well([bench.maker, self.path, *arguments], self.folder, self.summary_path)
        self.summary = {}
        with open(self.summary_path) as file:
            for line in file:
                name, value = line.rstrip("\n").split("=", 1)
                if name not in ("element_section", "node_set", "surface"):
                    self.summary[name] = value if name == "type" else int(value)
        self.output = {}  # files and bytes written, with and without --vtk
        self.read_ns = []

    def out(self, has_vtk, kind="out"):
        return os.path.join(self.folder, f"{kind}-vtk" if has_vtk else kind)

    def arguments(self, program, has_vtk):
        return [program, self.path, *(["--vtk"] if has_vtk else [])]

    def store_bytes(self):
        """Bytes of the finished store: four int columns and three double ones for nodes; four int columns and two
        tables for cells; three int columns and one table for faces."""
        s = self.summary
        return (s["final_nodes"] * (4 * 4 + 3 * 8) + s["elements"] * (4 * 4 + 2 * 4 * s["nodes_per_element"]) +
                s["final_faces"] * (3 * 4 + 4 * s["nodes_per_face"]))

    def translate(self, has_vtk):
        out = self.out(has_vtk)
        empty_folder(out)
        usage = run_well(self.arguments(self.bench.program, has_vtk), out, out + ".log")
        if has_vtk in self.output and folder_bytes(out) != self.output[has_vtk]:
            raise Wrong(f"{self.title}: a timed run wrote other files than the checked one")
        if has_vtk in self.output:
            self.read_ns.append(reading_seconds(out + ".log") * 1e9 / self.summary["bytes"])
        return usage

    def floor(self, has_vtk):
        copy = self.out(has_vtk, "copy")
        empty_folder(copy)
        cat = run_well(["cat", self.path], self.folder)
        out = self.out(has_vtk)
        files = sorted(os.listdir(out))
        cp = run_well(["cp", *files, copy], out)
        shutil.rmtree(copy)
        return Usage(cat.seconds + cp.seconds, max(cat.kilobytes, cp.kilobytes), 0)

    def check(self, has_vtk):
        self.translate(has_vtk)
        out = self.out(has_vtk)
        checker = os.path.join(os.path.dirname(self.bench.maker), "meshcheck")
        result = subprocess.run([checker, self.summary_path, out, out + ".log", *(["--vtk"] if has_vtk else [])],
                                capture_output=True, text=True)
        if result.returncode != 0:
            raise Wrong(f"{self.title}: {(result.stdout + result.stderr).strip()}")
        if self.bench.options.plain:
            plain = self.out(has_vtk, "plain")
            empty_folder(plain)
            run_well(self.arguments(self.bench.options.plain, has_vtk), plain, plain + ".log")
            need_same(self.title, out, plain)
            shutil.rmtree(plain)
        self.output[has_vtk] = folder_bytes(out)


def package_version(package):
    try:
        result = subprocess.run(["dpkg-query", "-W", "-f", "${Version}", package], capture_output=True, text=True)
        return result.stdout.strip() or "version unknown"
    except OSError:
        return "version unknown"


class Peer:
    def __init__(self, name, package, job, argv, result, count):
        self.name, self.job, self.argv, self.result, self.count = name, job, argv, result, count
        self.version = package_version(package)

    def run(self, folder):
        for old in ("result.vtk", "all.msh"):
            if os.path.exists(os.path.join(folder, old)):
                os.remove(os.path.join(folder, old))
        log = os.path.join(folder, self.name + ".log")
        usage = run(self.argv, folder, log, log + ".errors")
        # The count of cells must stand in what the peer wrote, or in its log.
        path = os.path.join(folder, self.result)
        if usage.status != 0 or not os.path.exists(path):
            return None
        found = subprocess.run(["grep", "-q", "-a", "-E", self.count, path, log]).returncode == 0
        return usage if found else None


def find_peers(deck, folder):
    os.mkdir(folder)
    cells = deck.summary["elements"]
    vtk_count = f"^CELL_TYPES {cells}"
    peers = []
    if shutil.which("gmsh"):
        mesh = os.path.join(folder, "mesh.vtk")
        shutil.copyfile(os.path.join(deck.out(True), "_Cells.vtk"), mesh)
        peers.append(Peer("gmsh", "gmsh", "VTK to VTK of the same mesh",
                          ["gmsh", "-0", mesh, "-save_all", "-format", "vtk", "-o", "result.vtk"],
                          "result.vtk", vtk_count))
    if os.path.exists(PYTHON) and subprocess.run([PYTHON, "-c", "import meshio"],
                                                  capture_output=True).returncode == 0:
        peers.append(Peer("meshio", "python3-meshio", "deck to legacy VTK",
                          [PYTHON, "-c", MESHIO_SCRIPT, deck.path, "result.vtk"], "result.vtk", vtk_count))
    if shutil.which("cgx"):
        with open(os.path.join(folder, "job.fbd"), "w") as file:
            file.write(f"read {deck.path} inp\nsend all abq\nquit\n")
        peers.append(Peer("cgx", "calculix-cgx", "deck to deck", ["cgx", "-bg", "job.fbd"], "all.msh",
                          f"^ *{cells} elements"))
    return peers


# ---- figures

class Figures:
    """Times of named jobs, taken in turn."""

    def __init__(self):
        self.seconds = collections.defaultdict(list)
        self.kilobytes = collections.defaultdict(list)

    def add(self, job, usage):
        self.seconds[job].append(usage.seconds)
        self.kilobytes[job].append(usage.kilobytes)

    def time(self, job):
        return statistics.median(self.seconds[job])

    def peak(self, job):
        return max(self.kilobytes[job]) * 1024

    def is_peak_hidden(self, job):
        """A process starts with the size of the one that made it in its peak, so a small peak is not seen."""
        return self.peak(job) <= resource.getrusage(resource.RUSAGE_SELF).ru_maxrss * 1024 * 1.02


Row = collections.namedtuple("Row", "target figure limit is_met note")


def ratio_row(target, value, limit, note="", unit=""):
    return Row(target, f"{value:.2f}{unit}", f"at most {limit:g}{unit}", value <= limit, note)


class Bench:
    def __init__(self, options):
        self.options = options
        self.work = tempfile.mkdtemp(prefix="compare-", dir=options.folder)
        self.program, self.maker = options.program, options.maker
        self.job_rows, self.target_rows, self.deck_rows = [], [], []

    def make_decks(self, kind):
        n = (QUICK_CUBES if self.options.quick else CUBES)[kind]
        n_many = QUICK_MANY_SECTIONS if self.options.quick else MANY_SECTIONS
        base = ["--type", kind, "--cubes", str(n)]
        n_faces = 12 * n * n
        large = round(n * GROWTH ** (1 / 3))
        plans = [("base", "six sections", base), ("large", "six times the elements", [*base[:3], str(large)])]
        for count in n_many:
            # There can't be more surfaces than element faces on the box.
            plans.append((f"many{count}", f"{count:,} sections, sets and surfaces",
                          [*base, "--node-sets", str(count), "--element-sections", str(count),
                           "--surfaces", str(min(count, n_faces))]))
        plans += [("shuffled", "shuffled nodes and elements", [*base, "--shuffle"]),
                  ("stride", "every 7th number", [*base, "--stride", "7"]),
                  ("sparse", "numbers up to 2,000,000,000", [*base, "--max-number", "2000000000"])]
        wanted = self.options.decks.split(",")
        return {key: Deck(self, f"{kind}-{key}", f"{kind}, {title}", arguments) for key, title, arguments in plans
                if key == "base" or key in wanted or wanted == ["all"] or ("many" in wanted and key[:4] == "many")}

    def measure(self, kind):
        decks = self.make_decks(kind)
        for deck in decks.values():
            for has_vtk in (False, True):
                print(f"checking {deck.title}{', --vtk' if has_vtk else ''}", file=sys.stderr)
                deck.check(has_vtk)
        peers = [] if self.options.no_peers else find_peers(decks["base"], os.path.join(self.work, f"{kind}-peers"))
        figures = Figures()
        failed = set()
        turns = 1 if self.options.quick else self.options.repetitions
        # The turn before the first is not counted: a virtual machine pays for memory that it has never used.
        for turn in range(0 if self.options.quick else -1, turns):
            print(f"{kind}: turn {turn + 1} of {turns}", file=sys.stderr)
            self.turn(decks, figures if turn >= 0 else Figures())
            for peer in peers if 0 <= turn < PEER_TURNS else []:
                usage = peer.run(os.path.join(self.work, f"{kind}-peers"))
                if usage is None:
                    failed.add(peer.name)
                else:
                    figures.add(peer.name, usage)
        self.report(kind, decks, figures, [peer for peer in peers if peer.name not in failed], failed)
        for deck in decks.values():
            shutil.rmtree(deck.folder)
        shutil.rmtree(os.path.join(self.work, f"{kind}-peers"), ignore_errors=True)

    def turn(self, decks, figures):
        for has_vtk in (True, False):
            for key, deck in decks.items():
                figures.add((key, has_vtk), deck.translate(has_vtk))
                if key in ("base", "large"):
                    figures.add((key, has_vtk, "floor"), deck.floor(has_vtk))
                shutil.rmtree(deck.out(has_vtk))

    def report(self, kind, decks, figures, peers, failed):
        for key, deck in decks.items():
            s = deck.summary
            self.deck_rows.append((deck.title, s["bytes"], s["nodes"], s["elements"], s["node_sets"],
                                  s["element_sections"], s["surfaces"], deck.output[True][1]))
            for has_vtk in (True, False):
                self.add_job(f"{deck.title}{', --vtk' if has_vtk else ''}", figures, (key, has_vtk))
                if (key, has_vtk, "floor") in figures.seconds:
                    self.add_job(f"{deck.title}{', --vtk' if has_vtk else ''}: floor", figures, (key, has_vtk, "floor"))
        for peer in peers:
            self.add_job(f"{kind}, six sections: {peer.name} {peer.version} ({peer.job})", figures, peer.name)
        self.report_floor(kind, decks["base"], figures)
        self.report_growth(kind, decks, figures)
        self.report_memory(kind, decks, figures)
        self.report_peers(kind, figures, peers, failed)

    def add_job(self, title, figures, job):
        peak = f"{'at most ' if figures.is_peak_hidden(job) else ''}{figures.peak(job) / 1e6:.1f}"
        self.job_rows.append((title, f"{figures.time(job):.3f}", peak, len(figures.seconds[job])))

    def report_floor(self, kind, base, figures):
        for has_vtk, limit in ((True, FLOOR_VTK), (False, FLOOR_PLAIN)):
            ratio = figures.time(("base", has_vtk)) / figures.time(("base", has_vtk, "floor"))
            self.target_rows.append(ratio_row(f"{kind}: {'with' if has_vtk else 'without'} --vtk, times the floor",
                                         ratio, limit))
        self.target_rows.append(ratio_row(f"{kind}: reading alone, per byte of deck", statistics.median(base.read_ns),
                                     READ_NS, "the log's own figure", " ns"))

    def report_growth(self, kind, decks, figures):
        n_many = sorted((deck.summary["element_sections"], key) for key, deck in decks.items() if key[:4] == "many")
        limits = [("shuffled", SHUFFLED_LIMIT), ("stride", SPARSE_LIMIT), ("sparse", SPARSE_LIMIT)]
        limits = [(key, limit) for (_, key), limit in zip(n_many, SECTION_LIMITS)] + limits
        limits = [(key, limit) for key, limit in limits if key in decks]
        for has_vtk in (False, True):
            tail = ", --vtk" if has_vtk else ""
            base = figures.time(("base", has_vtk))
            if "large" in decks:
                # The large box is not exactly six times the small one: the figure is brought to six in proportion.
                growth = decks["large"].summary["elements"] / decks["base"].summary["elements"]
                times = figures.time(("large", has_vtk)) / base * GROWTH / growth
                floor = figures.time(("large", has_vtk, "floor")) / figures.time(("base", has_vtk, "floor"))
                note = f"measured at {growth:.2f} times; the floor's time grew {floor:.2f} times"
                self.target_rows.append(ratio_row(f"{kind}: six times the elements{tail}", times, GROWTH_LIMIT, note))
            for key, limit in limits:
                length = decks[key].summary["bytes"] / decks["base"].summary["bytes"]
                note = f"deck {length:.2f} times as long"
                if has_vtk and key[:4] == "many":
                    note += f"; writes {decks[key].output[True][0]:,} files"
                self.target_rows.append(ratio_row(f"{decks[key].title}{tail}, times six sections",
                                             figures.time((key, has_vtk)) / base, limit, note))

    def report_memory(self, kind, decks, figures):
        for key in [key for key in ("base", "large") if key in decks]:
            store = decks[key].store_bytes()
            for has_vtk in (False, True):
                ratio = figures.peak((key, has_vtk)) / store
                title = f"{decks[key].title}{', --vtk' if has_vtk else ''}: peak, times the store"
                row = ratio_row(title, ratio, MEMORY_LIMIT, f"store {store / 1e6:.1f} MB")
                if figures.is_peak_hidden((key, has_vtk)) and not row.is_met:
                    row = row._replace(figure="not seen", is_met=None, note=row.note + ", smaller than this command")
                self.target_rows.append(row)

    def report_peers(self, kind, figures, peers, failed):
        ours = figures.time(("base", True))
        for peer in peers:
            times = figures.time(peer.name) / ours
            limit = MESHIO_TIMES if peer.name == "meshio" else 1.0
            is_met = times >= limit if peer.name == "meshio" else times > limit
            word = "at least" if peer.name == "meshio" else "more than"
            self.target_rows.append(Row(f"{kind}: {peer.name} takes, times ours with --vtk", f"{times:.2f}",
                                       f"{word} {limit:g}", is_met, peer.job))
        for name in sorted(failed):
            self.target_rows.append(Row(f"{kind}: {name}", "failed", "", None, "it did not convert this deck"))
        present = {peer.name for peer in peers} | failed
        if not self.options.no_peers:
            for name in ("gmsh", "meshio", "cgx"):
                if name not in present:
                    self.target_rows.append(Row(f"{kind}: {name}", "absent", "", None, "not installed"))


# ---- the machine and the page

def compiler_of(program):
    """Compilers leave their names in the programs they make."""
    with open(program, "rb") as file:
        names = set(re.findall(rb"GCC: \([^)]*\) [0-9.]+|clang version [0-9.]+", file.read()))
    return ", ".join(sorted(name.decode() for name in names)) or "unknown"


def build_type(program):
    """Of the build folder that the program lies in, if it does."""
    cache = os.path.join(os.path.dirname(os.path.abspath(program)), "CMakeCache.txt")
    if not os.path.exists(cache):
        return "unknown"
    with open(cache) as file:
        match = re.search(r"^CMAKE_BUILD_TYPE:\w+=(.*)$", file.read(), re.M)
    return (match.group(1) or "the project's default") if match else "unknown"


def machine_lines(program, options):
    model = platform.machine()
    if os.path.exists("/proc/cpuinfo"):
        with open("/proc/cpuinfo") as file:
            match = re.search(r"^model name\s*: (.*)$", file.read(), re.M)
        model = match.group(1) if match else model
    kind = subprocess.run(["stat", "-f", "-c", "%T", options.folder], capture_output=True, text=True).stdout.strip()
    return [f"Machine: {model}, {os.cpu_count()} processors, {platform.system()} {platform.release()}",
            f"Compiler: {compiler_of(program)}; build type {build_type(program)}",
            f"Date: {datetime.date.today().isoformat()}",
            f"File system: {kind}; medians of {1 if options.quick else options.repetitions} runs made in turn"
            f" (peers at most {PEER_TURNS})",
            "Outputs: counts and geometry right" +
            ("; files and log the same to the byte as the plain build's" if options.plain else "")]


def table(head, rows):
    lines = ["| " + " | ".join(head) + " |", "|" + "---|" * len(head)]
    return lines + ["| " + " | ".join(str(field) for field in row) + " |" for row in rows]


def make_page(bench):
    words = {True: "met", False: "missed", None: ""}
    lines = ["# Whole runs beside the floor and beside other converters", ""]
    for line in machine_lines(bench.program, bench.options):
        lines.append(f"- {line}")
    if bench.options.quick:
        lines.append("- Quick run on small decks: the figures say nothing.")
    lines += ["", "## Targets", ""]
    lines += table(("Figure", "Value", "Target", "", "Note"),
                   [(row.target, row.figure, row.limit, words[row.is_met], row.note) for row in bench.target_rows])
    lines += ["", "## Processor time and peak memory", ""]
    lines += table(("Run", "Seconds", "Peak MB", "Runs"),
                   bench.job_rows)
    lines += ["", "## Decks", ""]
    lines += table(("Deck", "MB", "Nodes", "Elements", "Node sets", "Sections", "Surfaces", "MB written, --vtk"),
                   [(title, f"{size / 1e6:.1f}", *(f"{count:,}" for count in counts), f"{out / 1e6:.1f}")
                    for title, size, *counts, out in bench.deck_rows])
    return "\n".join(lines) + "\n"


def read_options():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--program", default=os.path.join(BUILD, "KIVOm"), help="the translator")
    parser.add_argument("--maker", default=os.path.join(BUILD, "bench", "makedeck"), help="the deck maker")
    parser.add_argument("--plain", help="a plain build of the translator whose files must be the same")
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
    for name in ("program", "maker", "plain"):
        path = getattr(options, name)
        if path and not os.access(path, os.X_OK):
            parser.error(f"--{name}: no program at {path}")
        setattr(options, name, os.path.abspath(path) if path else None)
    if options.repetitions < 1 or not set(options.types.split(",")) <= set(CUBES):
        parser.error("--repetitions or --types is wrong")
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
    n_missed = sum(row.is_met is False for row in bench.target_rows)
    return 1 if options.strict and n_missed > 0 else 0


if __name__ == "__main__":
    sys.exit(main())
