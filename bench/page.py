"""The page of results: the machine, and tables."""

import datetime
import operator
import os
import platform
import re
import subprocess

from runs import is_peak_hidden
from samples import AGREEING, SPREAD

BOUNDS = {"at most": operator.le, "at least": operator.ge, "more than": operator.gt}
UNSTEADY = "unsteady"


def target_row(title, value, bound, limit, note="", unit=""):
    """A figure and what it is to be; of None, a sample's that is not steady, no number is told."""
    figure, verdict = UNSTEADY, "not judged"
    if value is not None:
        figure, verdict = f"{value:.2f}{unit}", "met" if BOUNDS[bound](value, limit) else "missed"
    return title, figure, f"{bound} {limit:g}{unit}", verdict, note


def all_met(target_rows):
    """A target that could not be judged is not met."""
    return all(row[3] == "met" for row in target_rows)


def usage_fields(job):
    figure = job.seconds.figure()
    hidden = "at most " if is_peak_hidden(job.kilobytes) else ""
    return UNSTEADY if figure is None else f"{figure:.3f}", f"{hidden}{job.kilobytes * 1024 / 1e6:.1f}"


def read_text(path):
    with open(path) as file:
        return file.read()


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
            f"File system: {kind}; memory touched before each run",
            f"Seconds: processor time, the smallest of {options.repetitions} turns (of up to {options.most_turns} "
            f"until the {AGREEING} smallest lie within {SPREAD:.0%}; {UNSTEADY} where they never do)",
            "Outputs: counts and geometry right" +
            ("; files and log the same to the byte as the plain build's" if options.plain else "")]


def table(head, rows):
    lines = ["| " + " | ".join(head) + " |", "|" + "---|" * len(head)]
    return lines + ["| " + " | ".join(str(field) for field in row) + " |" for row in rows]


def make_page(options, targets, peers, jobs, decks):
    lines = ["# Whole runs beside the floor and beside other programs", ""]
    lines += [f"- {line}" for line in machine_lines(options)]
    if options.quick:
        lines.append("- Quick run on small decks: it tries the command, its figures say nothing.")
    for title, head, rows in (
            ("Targets", ("Figure", "Value", "Target", "", "Note"), targets),
            ("Beside other programs",
             ("Program", "Job", "Seconds", "Peak MB", "Times ours", "What it leaves out"), peers),
            ("Processor time and peak memory", ("Run", "Seconds", "Peak MB", "Runs"), jobs),
            ("Decks", ("Deck", "MB", "Nodes", "Elements", "Node sets", "Sections", "Surfaces", "MB written, --vtk"),
             decks)):
        lines += ["", f"## {title}", "", *table(head, rows)] if rows else []
    return "\n".join(lines) + "\n"
