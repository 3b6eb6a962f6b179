#!/usr/bin/python3
"""Runs both programs beside the floor and beside other programs, and prints ratios taken in one run.

  compare.py [--program PATH] [--maker PATH] [--plain PATH] [--kivodeck PATH] [--folder DIR] [--repetitions N]
             [--types C3D4,C3D10] [--decks LIST] [--no-peers] [--quick] [--markdown PATH] [--strict]

The floor of a run is `cat deck >/dev/null` plus `cp` of the files that the run writes. The peers are gmsh, meshio, cgx,
ccx and the VTK library, each on the job nearest to one of ours: the table tells what it leaves out, and which are not
installed. The second program's check, flatten and audit are held against the translator's run without --vtk, too, also
on a deck as CAE programs write it.

Time is the processor time of the whole process, user and system together. All runs are made in turn on a memory file
system, with as much memory touched before each as it needs, and a figure is the smallest of them. Where the smallest
three do not agree within 5 percent what is compared runs on, for three times the turns at most; then the figure is
"unsteady", and no number is told.

Before anything is timed mesh.input is checked (by meshcheck, which lies beside the deck maker), with a plain build all
files and the log to the byte against its own, and what the second program says the decks mean; no figure is printed
when one is wrong.

Programs are those of build/ where nothing else is said, others those beside --program, where they are. --quick makes
small decks and one turn: it tries the command and judges memory alone. The folder must hold about 7 GB (quick: 0.6).
Exit status: 0 when every output is right, else 1; with --strict 1, too, when a target is missed or is not judged."""

import argparse
import collections
import os
import shutil
import signal
import sys
import tempfile

from decks import CUBES, GROWTH, make_decks
from page import UNSTEADY, all_met, make_page, target_row, usage_fields
from peers import package_version, plan_peers
from runs import Wrong, is_peak_hidden
from samples import take_turns, times

BUILD = os.path.join(os.path.dirname(os.path.dirname(os.path.abspath(__file__))), "build")
MOST_TURNS = 3  # times those that were asked for

# Targets: the most that a figure may be.
FLOOR_LIMITS = {"run --vtk": 3.0, "run": 3.5}
READ_NS = 3.0
GROWTH_LIMIT = 6.5
MEMORY_LIMIT = 1.4
SECOND_LIMITS = {"check": (1.5, 3.0), "flatten": (3.0, 4.0), "audit": (3.5, 3.0)}  # time and memory, times the run's
PEER_BOUNDS = {("meshio", "run --vtk"): ("at least", 6.0), ("gmsh", "run --vtk"): ("more than", 1.0),
               ("cgx", "run --vtk"): ("more than", 1.0)}

# The time of a job, times the other's and a factor, is at most the limit.
Ratio = collections.namedtuple("Ratio", "title job other limit note factor", defaults=("", 1))


def verbs_of(deck):
    return [verb for verb in SECOND_LIMITS if verb in deck.jobs]


def memory_row(title, kilobytes, other, limit, note=""):
    """A peak that is not seen bounds the ratio from above; what it is held against must be seen (else None)."""
    row = target_row(title, other and kilobytes / other, "at most", limit, note)
    is_seen = other is not None and (row[3] == "met" or not is_peak_hidden(kilobytes))
    return row if is_seen else (row[0], "not seen", row[2], "not judged", "a peak smaller than this command")


class Comparison:
    """What is measured for one type of element, and what is held against what."""

    def __init__(self, options, kind, work):
        self.kind = kind
        self.decks, self.limits = make_decks(options, kind, work)
        self.peers, self.refused = [], []
        if not options.no_peers:
            self.peers, self.refused = plan_peers(self.decks["base"], os.path.join(work, f"{kind}-peers"))
        self.jobs = [job for deck in self.decks.values() for job in deck.jobs.values()]
        self.jobs += [job for _, job in self.peers]
        self.ratios = [*self.floor_ratios(), *self.growth_ratios(), *self.second_ratios()]
        self.held = [(peer, job, key, left_out) for peer, job in self.peers for key, left_out in peer.held.items()
                     if key in self.decks["base"].jobs]

    def floor_ratios(self):
        jobs = self.decks["base"].jobs
        for key, limit in FLOOR_LIMITS.items():
            yield Ratio(f"{jobs[key].title}, times the floor", jobs[key], jobs[key.replace("run", "floor")], limit)

    def growth_ratios(self):
        base = self.decks["base"]
        for key in FLOOR_LIMITS:
            if "large" in self.decks:
                # The large box is not exactly six times the small one: the figure is brought to six in proportion.
                large = self.decks["large"]
                growth = large.summary["elements"] / base.summary["elements"]
                yield Ratio(f"{large.jobs[key].title}, times six sections", large.jobs[key], base.jobs[key],
                            GROWTH_LIMIT, f"measured at {growth:.2f} times", GROWTH / growth)
            for name, limit in self.limits.items():
                deck = self.decks[name]
                note = f"deck {deck.summary['bytes'] / base.summary['bytes']:.2f} times as long"
                if key == "run --vtk" and name[:4] == "many":
                    note += f"; writes {deck.output[True][0]:,} files"
                yield Ratio(f"{deck.jobs[key].title}, times six sections", deck.jobs[key], base.jobs[key], limit, note)

    def second_ratios(self):
        for deck in self.decks.values():
            for verb in verbs_of(deck):
                yield Ratio(f"{deck.title}: {verb}, times the run", deck.jobs[verb], deck.jobs["run"],
                            SECOND_LIMITS[verb][0])

    def measure(self, options):
        def tell(turn):
            print(f"{self.kind}: {turn}", file=sys.stderr)
        for job in () if options.quick else self.jobs:
            job.take(is_counted=False)  # tells how much memory it needs
        compared = [(ratio.job, ratio.other) for ratio in self.ratios]
        compared += [(job, self.decks["base"].jobs[key]) for _, job, key, _ in self.held]
        take_turns(self.jobs, compared, options.repetitions, options.most_turns, tell)

    def target_rows(self):
        rows = []
        for ratio in self.ratios:
            value = times(ratio.job.seconds, ratio.other.seconds)
            rows.append(target_row(ratio.title, value and value * ratio.factor, "at most", ratio.limit, ratio.note))
        base = self.decks["base"]
        rows.append(target_row(f"{base.title}: reading alone, per byte of deck", base.reading.figure(), "at most",
                               READ_NS, "the log's own figure", " ns"))
        for peer, job, key, left_out in self.held:
            if (peer.program, key) in PEER_BOUNDS:
                ratio = times(job.seconds, base.jobs[key].seconds)
                rows.append(target_row(f"{job.title}, times ours with --vtk", ratio,
                                       *PEER_BOUNDS[peer.program, key], f"leaves out: {left_out}"))
        return [*rows, *self.memory_rows()]

    def memory_rows(self):
        for deck in self.decks.values():
            run = deck.jobs["run"].kilobytes
            for key in FLOOR_LIMITS if "floor" in deck.jobs else ():
                store = deck.store_bytes() / 1024
                yield memory_row(f"{deck.jobs[key].title}: peak, times the store", deck.jobs[key].kilobytes, store,
                                 MEMORY_LIMIT, f"store {store * 1024 / 1e6:.1f} MB")
            for verb in verbs_of(deck):
                yield memory_row(f"{deck.title}: peak of {verb}, times the run's", deck.jobs[verb].kilobytes,
                                 None if is_peak_hidden(run) else run, SECOND_LIMITS[verb][1])

    def peer_rows(self):
        rows, ours = [], self.decks["base"].jobs
        for key in ("run --vtk", "check", "flatten", "audit"):
            held = [entry for entry in self.held if entry[2] == key]
            if held:
                name = "KIVOm --vtk" if key == "run --vtk" else f"kivodeck {key}"
                rows.append((name, self.decks["base"].title, *usage_fields(ours[key]), 1, ""))
            for peer, job, _, left_out in held:
                ratio = times(job.seconds, ours[key].seconds)
                rows.append((f"{peer.program} {package_version(peer.program)}", f"{self.kind}: {peer.job}",
                             *usage_fields(job), UNSTEADY if ratio is None else f"{ratio:.2f}", left_out))
        return rows + self.refused

    def job_rows(self):
        return [(job.title, *usage_fields(job), len(job.seconds.values))
                for deck in self.decks.values() for job in deck.jobs.values()]

    def deck_rows(self):
        return [(deck.title, f"{deck.summary['bytes'] / 1e6:.1f}",
                 *(f"{deck.summary[key]:,}" for key in ("nodes", "elements", "node_sets", "element_sections",
                                                        "surfaces")), f"{deck.output[True][1] / 1e6:.1f}")
                for deck in self.decks.values() if True in deck.output]


def read_options():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--program", default=os.path.join(BUILD, "KIVOm"), help="the translator")
    parser.add_argument("--maker", help="the deck maker")
    parser.add_argument("--plain", help="a plain build of the translator whose files must be the same")
    parser.add_argument("--kivodeck", help="the second program")
    parser.add_argument("--folder", default="/dev/shm", help="where to work, a memory file system (default /dev/shm)")
    parser.add_argument("--repetitions", type=int, help="turns (default 9, with --quick 1)")
    parser.add_argument("--types", default="C3D4,C3D10")
    parser.add_argument("--decks", default="all",
                        help="of large, many, shuffled, stride, sparse those to run beside the base deck (default all)")
    parser.add_argument("--no-peers", action="store_true")
    parser.add_argument("--quick", action="store_true")
    parser.add_argument("--markdown", help="also write the page to this file")
    parser.add_argument("--strict", action="store_true", help="fail when a target is not met")
    options = parser.parse_args()
    beside = os.path.dirname(os.path.abspath(options.program))
    for name, usual in (("program", ""), ("maker", "bench/makedeck"), ("plain", "KIVOm_plain"),
                        ("kivodeck", "kivodeck")):
        path = getattr(options, name) or os.path.join(beside, usual)
        if not os.access(path, os.X_OK):
            if getattr(options, name) or name == "maker":
                parser.error(f"--{name}: no program at {path}")
            path = None
        setattr(options, name, path and os.path.abspath(path))
    options.repetitions = (1 if options.quick else 9) if options.repetitions is None else options.repetitions
    options.most_turns = options.repetitions * (1 if options.quick else MOST_TURNS)
    if options.repetitions < 1 or not set(options.types.split(",")) <= set(CUBES):
        parser.error("--repetitions or --types is wrong")
    return options


def main():
    options = read_options()
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(1))  # so that the decks are removed
    targets, peers, jobs, decks = [], [], [], []
    try:
        for kind in options.types.split(","):
            with tempfile.TemporaryDirectory(prefix="compare-", dir=options.folder) as work:
                comparison = Comparison(options, kind, work)
                comparison.measure(options)
                targets += comparison.target_rows()
                peers += comparison.peer_rows()
                jobs += comparison.job_rows()
                decks += comparison.deck_rows()
    except (Wrong, OSError) as wrong:
        print(f"no figures: {wrong}")
        return 1
    page = make_page(options, targets, peers, jobs, decks)
    print(page, end="")
    if options.markdown:
        with open(options.markdown, "w") as file:
            file.write(page)
    return 1 if options.strict and not all_met(targets) else 0


if __name__ == "__main__":
    sys.exit(main())
