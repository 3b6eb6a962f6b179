#!/usr/bin/python3
"""Runs the translator beside the floor and beside other converters, and prints ratios taken in one run.

  compare.py [--program PATH] [--maker PATH] [--plain PATH] [--folder DIR] [--repetitions N]
             [--types C3D4,C3D10] [--decks LIST] [--no-peers] [--quick] [--markdown PATH] [--strict]

The floor of a run is `cat deck >/dev/null` plus `cp` of the files that the run writes. Peers are those of gmsh
(VTK to VTK of the same mesh), meshio (deck to legacy VTK) and cgx (deck to deck) that are installed. Time is the
processor time of the whole process, user and system together. All runs are made in turn on a memory file system,
and a figure is the median over the turns. Outputs are checked before anything is timed (check.py), with --plain
also to the byte against those of a plain build; no ratio is printed when one is wrong.

Without --program the translator is configured and built in build/ beside this folder; without --maker the deck
maker is compiled with g++ -O2. --quick makes small decks and one turn: it tries the command, its figures say
nothing. Exit status: 0 when every output is right (with --strict: and every target is met), else 1."""

import argparse
import collections
import datetime
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

kHere = os.path.dirname(os.path.abspath(__file__))
kRoot = os.path.dirname(kHere)
kPython = "/usr/bin/python3"
kRunLimit = 900  # seconds; a run that takes longer has failed
kPeerTurns = 3

# Cubes along an edge: 57 gives 1.1 million C3D4 cells and 195,000 nodes, 38 gives 330,000 C3D10 cells and
# 457,000 nodes, each about 50 MB.
kCubes = {"C3D4": 57, "C3D10": 38}
kQuickCubes = {"C3D4": 26, "C3D10": 17}
kManySections = (2000, 20000)
kQuickManySections = (200, 2000)
kGrowth = 6

# Targets.
kFloorVtk = 3.0
kFloorPlain = 3.5
kReadNs = 3.0
kGrowthLimit = 6.5
kSectionLimits = (1.3, 2.0)
kShuffledLimit = 1.5
kSparseLimit = 1.3
kMemoryLimit = 1.4
kMeshioTimes = 6.0

kMeshioScript = """import sys, meshio
mesh = meshio.read(sys.argv[1], file_format="abaqus")
meshio.write(sys.argv[2], mesh, file_format="vtk42", binary=False)
"""

Usage = collections.namedtuple("Usage", "seconds kilobytes status")


class Wrong(Exception):
    """An output is wrong or a run failed: there is nothing to compare."""


# ---- one run

def Run(argv, folder, log="/dev/null", errors=None):
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
    timer = threading.Timer(kRunLimit, os.kill, (pid, signal.SIGKILL))
    timer.start()
    _, status, used = os.wait4(pid, 0)
    timer.cancel()
    return Usage(used.ru_utime + used.ru_stime, used.ru_maxrss, os.waitstatus_to_exitcode(status))


def RunWell(argv, folder, log="/dev/null"):
    usage = Run(argv, folder, log)
    if usage.status != 0:
        raise Wrong(f"{os.path.basename(argv[0])} ended with status {usage.status}")
    return usage


def EmptyFolder(path):
    shutil.rmtree(path, ignore_errors=True)
    os.mkdir(path)


def FolderBytes(path):
    """Number of files and of bytes, as a quick sign that a timed run wrote what the checked one did."""
    sizes = [entry.stat().st_size for entry in os.scandir(path)]
    return len(sizes), sum(sizes)


def ReadingSeconds(log):
    """The first elapsed time of a log is that of reading."""
    with open(log) as file:
        return float(re.search(r"^Elapsed Time: (\S+) sec\.$", file.read(), re.M).group(1))


# ---- decks and what is run on them

class Deck:
    def __init__(self, bench, key, title, arguments):
        self.bench, self.key, self.title = bench, key, title
        self.folder = os.path.join(bench.work, key)
        os.mkdir(self.folder)
        self.path = os.path.join(self.folder, "deck.inp")
        self.summaryPath = os.path.join(self.folder, "summary")
        RunWell([bench.maker, self.path, *arguments], self.folder, self.summaryPath)
        self.summary = {}
        with open(self.summaryPath) as file:
            for line in file:
                name, value = line.rstrip("\n").split("=", 1)
                if name not in ("element_section", "node_set", "surface"):
                    self.summary[name] = value if name == "type" else int(value)
        self.output = {}  # files and bytes written, with and without --vtk
        self.readNs = []

    def Out(self, hasVtk, kind="out"):
        return os.path.join(self.folder, f"{kind}-vtk" if hasVtk else kind)

    def Arguments(self, program, hasVtk):
        return [program, self.path, *(["--vtk"] if hasVtk else [])]

    def StoreBytes(self):
        """Bytes of the finished store: four int columns and three double ones for nodes; four int columns and two
        tables for cells; three int columns and one table for faces."""
        s = self.summary
        return (s["final_nodes"] * (4 * 4 + 3 * 8) + s["elements"] * (4 * 4 + 2 * 4 * s["nodes_per_element"]) +
                s["final_faces"] * (3 * 4 + 4 * s["nodes_per_face"]))

    def Translate(self, hasVtk):
        out = self.Out(hasVtk)
        EmptyFolder(out)
        usage = RunWell(self.Arguments(self.bench.program, hasVtk), out, out + ".log")
        if hasVtk in self.output and FolderBytes(out) != self.output[hasVtk]:
            raise Wrong(f"{self.title}: a timed run wrote other files than the checked one")
        if hasVtk in self.output:
            self.readNs.append(ReadingSeconds(out + ".log") * 1e9 / self.summary["bytes"])
        return usage

    def Floor(self, hasVtk):
        copy = self.Out(hasVtk, "copy")
        EmptyFolder(copy)
        cat = RunWell(["cat", self.path], self.folder)
        out = self.Out(hasVtk)
        files = sorted(os.listdir(out))
        cp = RunWell(["cp", *files, copy], out)
        shutil.rmtree(copy)
        return Usage(cat.seconds + cp.seconds, max(cat.kilobytes, cp.kilobytes), 0)

    def Check(self, hasVtk):
        """The checks run in a process of their own: a process starts with the size of the one that made it in its
        peak, so this one has to stay small."""
        self.Translate(hasVtk)
        out = self.Out(hasVtk)
        command = [kPython, os.path.join(kHere, "check.py"), self.summaryPath, out, out + ".log"]
        command += ["--vtk"] if hasVtk else []
        if self.bench.options.plain:
            plain = self.Out(hasVtk, "plain")
            EmptyFolder(plain)
            RunWell(self.Arguments(self.bench.options.plain, hasVtk), plain, plain + ".log")
            command += ["--same-as", plain, plain + ".log"]
        result = subprocess.run(command, capture_output=True, text=True)
        if result.returncode != 0:
            raise Wrong(f"{self.title}: {(result.stdout + result.stderr).strip()}")
        if self.bench.options.plain:
            shutil.rmtree(plain)
        self.output[hasVtk] = FolderBytes(out)


def PackageVersion(package):
    try:
        result = subprocess.run(["dpkg-query", "-W", "-f", "${Version}", package], capture_output=True, text=True)
        return result.stdout.strip() or "version unknown"
    except OSError:
        return "version unknown"


class Peer:
    def __init__(self, name, package, job, argv, result, count):
        self.name, self.job, self.argv, self.result, self.count = name, job, argv, result, count
        self.version = PackageVersion(package)

    def Run(self, folder):
        for old in ("result.vtk", "all.msh"):
            if os.path.exists(os.path.join(folder, old)):
                os.remove(os.path.join(folder, old))
        log = os.path.join(folder, self.name + ".log")
        usage = Run(self.argv, folder, log, log + ".errors")
        # The count of cells must stand in what the peer wrote, or in its log.
        path = os.path.join(folder, self.result)
        if usage.status != 0 or not os.path.exists(path):
            return None
        found = subprocess.run(["grep", "-q", "-a", "-E", self.count, path, log]).returncode == 0
        return usage if found else None


def FindPeers(deck, folder):
    os.mkdir(folder)
    cells = deck.summary["elements"]
    vtkCount = f"^CELL_TYPES {cells}"
    peers = []
    if shutil.which("gmsh"):
        mesh = os.path.join(folder, "mesh.vtk")
        shutil.copyfile(os.path.join(deck.Out(True), "_Cells.vtk"), mesh)
        peers.append(Peer("gmsh", "gmsh", "VTK to VTK of the same mesh",
                          ["gmsh", "-0", mesh, "-save_all", "-format", "vtk", "-o", "result.vtk"],
                          "result.vtk", vtkCount))
    if os.path.exists(kPython) and subprocess.run([kPython, "-c", "import meshio"],
                                                  capture_output=True).returncode == 0:
        peers.append(Peer("meshio", "python3-meshio", "deck to legacy VTK",
                          [kPython, "-c", kMeshioScript, deck.path, "result.vtk"], "result.vtk", vtkCount))
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

    def Add(self, job, usage):
        self.seconds[job].append(usage.seconds)
        self.kilobytes[job].append(usage.kilobytes)

    def Time(self, job):
        return statistics.median(self.seconds[job])

    def Peak(self, job):
        return max(self.kilobytes[job]) * 1024

    def IsPeakHidden(self, job):
        """A process starts with the size of the one that made it in its peak, so a small peak is not seen."""
        return self.Peak(job) <= resource.getrusage(resource.RUSAGE_SELF).ru_maxrss * 1024 * 1.02


Row = collections.namedtuple("Row", "target figure limit isMet note")


def Ratio(target, value, limit, note="", unit=""):
    return Row(target, f"{value:.2f}{unit}", f"at most {limit:g}{unit}", value <= limit, note)


class Bench:
    def __init__(self, options):
        self.options = options
        self.work = tempfile.mkdtemp(prefix="compare-", dir=options.folder)
        self.maker = options.maker or BuildMaker(self.work)
        self.program = options.program or BuildProgram()
        self.jobRows, self.targetRows, self.deckRows = [], [], []

    def MakeDecks(self, kind):
        n = (kQuickCubes if self.options.quick else kCubes)[kind]
        nMany = kQuickManySections if self.options.quick else kManySections
        base = ["--type", kind, "--cubes", str(n)]
        nFaces = 12 * n * n
        large = round(n * kGrowth ** (1 / 3))
        plans = [("base", "six sections", base), ("large", "six times the elements", [*base[:3], str(large)])]
        for count in nMany:
            # There can't be more surfaces than element faces on the box.
            plans.append((f"many{count}", f"{count:,} sections, sets and surfaces",
                          [*base, "--node-sets", str(count), "--element-sections", str(count),
                           "--surfaces", str(min(count, nFaces))]))
        plans += [("shuffled", "shuffled nodes and elements", [*base, "--shuffle"]),
                  ("stride", "every 7th number", [*base, "--stride", "7"]),
                  ("sparse", "numbers up to 2,000,000,000", [*base, "--max-number", "2000000000"])]
        wanted = self.options.decks.split(",")
        return {key: Deck(self, f"{kind}-{key}", f"{kind}, {title}", arguments) for key, title, arguments in plans
                if key == "base" or key in wanted or wanted == ["all"] or ("many" in wanted and key[:4] == "many")}

    def Measure(self, kind):
        decks = self.MakeDecks(kind)
        for deck in decks.values():
            for hasVtk in (False, True):
                print(f"checking {deck.title}{', --vtk' if hasVtk else ''}", file=sys.stderr)
                deck.Check(hasVtk)
        peers = [] if self.options.no_peers else FindPeers(decks["base"], os.path.join(self.work, f"{kind}-peers"))
        figures = Figures()
        failed = set()
        turns = 1 if self.options.quick else self.options.repetitions
        # The turn before the first is not counted: a virtual machine pays for memory that it has never used.
        for turn in range(0 if self.options.quick else -1, turns):
            print(f"{kind}: turn {turn + 1} of {turns}", file=sys.stderr)
            self.Turn(decks, figures if turn >= 0 else Figures())
            for peer in peers if 0 <= turn < kPeerTurns else []:
                usage = peer.Run(os.path.join(self.work, f"{kind}-peers"))
                if usage is None:
                    failed.add(peer.name)
                else:
                    figures.Add(peer.name, usage)
        self.Report(kind, decks, figures, [peer for peer in peers if peer.name not in failed], failed)
        for deck in decks.values():
            shutil.rmtree(deck.folder)
        shutil.rmtree(os.path.join(self.work, f"{kind}-peers"), ignore_errors=True)

    def Turn(self, decks, figures):
        for hasVtk in (True, False):
            for key, deck in decks.items():
                figures.Add((key, hasVtk), deck.Translate(hasVtk))
                if key in ("base", "large"):
                    figures.Add((key, hasVtk, "floor"), deck.Floor(hasVtk))
                shutil.rmtree(deck.Out(hasVtk))

    def Report(self, kind, decks, figures, peers, failed):
        for key, deck in decks.items():
            s = deck.summary
            self.deckRows.append((deck.title, s["bytes"], s["nodes"], s["elements"], s["node_sets"],
                                  s["element_sections"], s["surfaces"], deck.output[True][1]))
            for hasVtk in (True, False):
                self.AddJob(f"{deck.title}{', --vtk' if hasVtk else ''}", figures, (key, hasVtk))
                if (key, hasVtk, "floor") in figures.seconds:
                    self.AddJob(f"{deck.title}{', --vtk' if hasVtk else ''}: floor", figures, (key, hasVtk, "floor"))
        for peer in peers:
            self.AddJob(f"{kind}, six sections: {peer.name} {peer.version} ({peer.job})", figures, peer.name)
        self.ReportFloor(kind, decks["base"], figures)
        self.ReportGrowth(kind, decks, figures)
        self.ReportMemory(kind, decks, figures)
        self.ReportPeers(kind, figures, peers, failed)

    def AddJob(self, title, figures, job):
        peak = f"{'at most ' if figures.IsPeakHidden(job) else ''}{figures.Peak(job) / 1e6:.1f}"
        self.jobRows.append((title, f"{figures.Time(job):.3f}", peak, len(figures.seconds[job])))

    def ReportFloor(self, kind, base, figures):
        for hasVtk, limit in ((True, kFloorVtk), (False, kFloorPlain)):
            ratio = figures.Time(("base", hasVtk)) / figures.Time(("base", hasVtk, "floor"))
            self.targetRows.append(Ratio(f"{kind}: {'with' if hasVtk else 'without'} --vtk, times the floor",
                                         ratio, limit))
        self.targetRows.append(Ratio(f"{kind}: reading alone, per byte of deck", statistics.median(base.readNs),
                                     kReadNs, "the log's own figure", " ns"))

    def ReportGrowth(self, kind, decks, figures):
        nMany = sorted((deck.summary["element_sections"], key) for key, deck in decks.items() if key[:4] == "many")
        limits = [("shuffled", kShuffledLimit), ("stride", kSparseLimit), ("sparse", kSparseLimit)]
        limits = [(key, limit) for (_, key), limit in zip(nMany, kSectionLimits)] + limits
        limits = [(key, limit) for key, limit in limits if key in decks]
        for hasVtk in (False, True):
            tail = ", --vtk" if hasVtk else ""
            base = figures.Time(("base", hasVtk))
            if "large" in decks:
                # The large box is not exactly six times the small one: the figure is brought to six in proportion.
                growth = decks["large"].summary["elements"] / decks["base"].summary["elements"]
                times = figures.Time(("large", hasVtk)) / base * kGrowth / growth
                floor = figures.Time(("large", hasVtk, "floor")) / figures.Time(("base", hasVtk, "floor"))
                note = f"measured at {growth:.2f} times; the floor's time grew {floor:.2f} times"
                self.targetRows.append(Ratio(f"{kind}: six times the elements{tail}", times, kGrowthLimit, note))
            for key, limit in limits:
                length = decks[key].summary["bytes"] / decks["base"].summary["bytes"]
                note = f"deck {length:.2f} times as long"
                if hasVtk and key[:4] == "many":
                    note += f"; writes {decks[key].output[True][0]:,} files"
                self.targetRows.append(Ratio(f"{decks[key].title}{tail}, times six sections",
                                             figures.Time((key, hasVtk)) / base, limit, note))

    def ReportMemory(self, kind, decks, figures):
        for key in [key for key in ("base", "large") if key in decks]:
            store = decks[key].StoreBytes()
            for hasVtk in (False, True):
                ratio = figures.Peak((key, hasVtk)) / store
                title = f"{decks[key].title}{', --vtk' if hasVtk else ''}: peak, times the store"
                row = Ratio(title, ratio, kMemoryLimit, f"store {store / 1e6:.1f} MB")
                if figures.IsPeakHidden((key, hasVtk)) and not row.isMet:
                    row = row._replace(figure="not seen", isMet=None, note=row.note + ", smaller than this command")
                self.targetRows.append(row)

    def ReportPeers(self, kind, figures, peers, failed):
        ours = figures.Time(("base", True))
        for peer in peers:
            times = figures.Time(peer.name) / ours
            limit = kMeshioTimes if peer.name == "meshio" else 1.0
            isMet = times >= limit if peer.name == "meshio" else times > limit
            word = "at least" if peer.name == "meshio" else "more than"
            self.targetRows.append(Row(f"{kind}: {peer.name} takes, times ours with --vtk", f"{times:.2f}",
                                       f"{word} {limit:g}", isMet, peer.job))
        for name in sorted(failed):
            self.targetRows.append(Row(f"{kind}: {name}", "failed", "", None, "it did not convert this deck"))
        present = {peer.name for peer in peers} | failed
        if not self.options.no_peers:
            for name in ("gmsh", "meshio", "cgx"):
                if name not in present:
                    self.targetRows.append(Row(f"{kind}: {name}", "absent", "", None, "not installed"))


# ---- building and the machine

def BuildMaker(work):
    maker = os.path.join(work, "makedeck")
    subprocess.run(["g++", "-std=c++17", "-O2", os.path.join(kHere, "makedeck.cpp"), "-o", maker], check=True)
    return maker


def BuildProgram():
    build = os.path.join(kRoot, "build")
    subprocess.run(["cmake", "-S", kRoot, "-B", build], check=True, stdout=sys.stderr)
    subprocess.run(["cmake", "--build", build, "-j2", "--target", "KIVOm"], check=True, stdout=sys.stderr)
    return os.path.join(build, "KIVOm")


def CompilerOf(program):
    """Compilers leave their names in the programs they make."""
    with open(program, "rb") as file:
        names = set(re.findall(rb"GCC: \([^)]*\) [0-9.]+|clang version [0-9.]+", file.read()))
    return ", ".join(sorted(name.decode() for name in names)) or "unknown"


def BuildType(program):
    """Of the build folder that the program lies in, if it does."""
    cache = os.path.join(os.path.dirname(os.path.abspath(program)), "CMakeCache.txt")
    if not os.path.exists(cache):
        return "unknown"
    with open(cache) as file:
        match = re.search(r"^CMAKE_BUILD_TYPE:\w+=(.*)$", file.read(), re.M)
    return (match.group(1) or "the project's default") if match else "unknown"


def MachineLines(program, options):
    model = platform.machine()
    if os.path.exists("/proc/cpuinfo"):
        with open("/proc/cpuinfo") as file:
            match = re.search(r"^model name\s*: (.*)$", file.read(), re.M)
        model = match.group(1) if match else model
    kind = subprocess.run(["stat", "-f", "-c", "%T", options.folder], capture_output=True, text=True).stdout.strip()
    return [f"Machine: {model}, {os.cpu_count()} processors, {platform.system()} {platform.release()}",
            f"Compiler: {CompilerOf(program)}; build type {BuildType(program)}",
            f"Date: {datetime.date.today().isoformat()}",
            f"File system: {kind}; medians of {1 if options.quick else options.repetitions} runs made in turn"
            f" (peers at most {kPeerTurns})",
            "Outputs: counts and geometry right" +
            ("; files and log the same to the byte as the plain build's" if options.plain else "")]


def Table(head, rows):
    lines = ["| " + " | ".join(head) + " |", "|" + "---|" * len(head)]
    return lines + ["| " + " | ".join(str(field) for field in row) + " |" for row in rows]


def Page(bench):
    words = {True: "met", False: "missed", None: ""}
    lines = ["# Whole runs beside the floor and beside other converters", ""]
    for line in MachineLines(bench.program, bench.options):
        lines.append(f"- {line}")
    if bench.options.quick:
        lines.append("- Quick run on small decks: the figures say nothing.")
    lines += ["", "## Targets", ""]
    lines += Table(("Figure", "Value", "Target", "", "Note"),
                   [(row.target, row.figure, row.limit, words[row.isMet], row.note) for row in bench.targetRows])
    lines += ["", "## Processor time and peak memory", ""]
    lines += Table(("Run", "Seconds", "Peak MB", "Runs"),
                   bench.jobRows)
    lines += ["", "## Decks", ""]
    lines += Table(("Deck", "MB", "Nodes", "Elements", "Node sets", "Sections", "Surfaces", "MB written, --vtk"),
                   [(title, f"{size / 1e6:.1f}", *(f"{count:,}" for count in counts), f"{out / 1e6:.1f}")
                    for title, size, *counts, out in bench.deckRows])
    return "\n".join(lines) + "\n"


def ReadOptions():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--program", help="the translator")
    parser.add_argument("--maker", help="the deck maker")
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
    if options.repetitions < 1 or not set(options.types.split(",")) <= set(kCubes):
        parser.error("--repetitions or --types is wrong")
    return options


def main():
    options = ReadOptions()
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(1))  # so that the decks are removed
    bench = Bench(options)
    try:
        for kind in options.types.split(","):
            bench.Measure(kind)
    except Wrong as wrong:
        print(f"no figures: {wrong}")
        return 1
    finally:
        shutil.rmtree(bench.work, ignore_errors=True)
    page = Page(bench)
    print(page, end="")
    if options.markdown:
        with open(options.markdown, "w") as file:
            file.write(page)
    nMissed = sum(row.isMet is False for row in bench.targetRows)
    return 1 if options.strict and nMissed > 0 else 0


if __name__ == "__main__":
    sys.exit(main())
