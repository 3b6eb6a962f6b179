"""One run of a program: its processor time and its memory."""

import collections
import os
import resource
import signal
import subprocess
import sys
import threading

from samples import Sample

RUN_LIMIT = 900  # seconds; a run that takes longer has failed
TOUCH_SCRIPT = """import mmap, sys
mmap.mmap(-1, int(sys.argv[1]), flags=mmap.MAP_PRIVATE | mmap.MAP_ANONYMOUS | mmap.MAP_POPULATE)
"""

Usage = collections.namedtuple("Usage", "seconds kilobytes status")


class Wrong(Exception):
    """An output is wrong or a run failed: there is nothing to compare."""


def run(argv, folder, log="/dev/null", errors=None):
    """Runs argv in folder with its standard output in log; errors go to a file or to this command's own."""
    sys.stderr.flush()
    write = os.O_WRONLY | os.O_CREAT | os.O_TRUNC
    actions = [(os.POSIX_SPAWN_OPEN, 0, "/dev/null", os.O_RDONLY, 0), (os.POSIX_SPAWN_OPEN, 1, log, write, 0o644)]
    if errors is not None:
        actions.append((os.POSIX_SPAWN_OPEN, 2, errors, write, 0o644))
    before = os.getcwd()
    os.chdir(folder)
    try:  # one thread for the peers, too
        pid = os.posix_spawnp(argv[0], argv, {**os.environ, "OMP_NUM_THREADS": "1"}, file_actions=actions)
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


def touch_memory(size):
    """Takes so many bytes and gives them back. The host of a virtual machine serves memory on first use, and may take
    back what is free: the time of that must not be the next run's. In a process of its own, see is_peak_hidden."""
    if subprocess.run([sys.executable, "-c", TOUCH_SCRIPT, str(max(size, 1))]).returncode != 0:
        raise Wrong(f"{size} bytes of memory are not to be had")


def is_peak_hidden(kilobytes):
    """A process starts with the size of the one that made it in its peak, so a small peak is not seen."""
    return kilobytes <= resource.getrusage(resource.RUSAGE_SELF).ru_maxrss * 1.02


class Job:
    """What runs once a turn: run() returns its usage and raises Wrong when the output is wrong."""

    def __init__(self, title, run, bytes_written=0):
        self.title, self.run, self.bytes_written = title, run, bytes_written
        self.seconds, self.kilobytes = Sample(), 0

    def take(self, is_counted=True):
        touch_memory(self.kilobytes * 1024 + self.bytes_written)
        usage = self.run()
        self.kilobytes = max(self.kilobytes, usage.kilobytes)
        if is_counted:
            self.seconds.values.append(usage.seconds)
