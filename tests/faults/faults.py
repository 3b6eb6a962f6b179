#!/usr/bin/python3
"""Faults from outside: decks that cannot be read, files that cannot be written, streams that are not there.

Each test provokes a fault, asserts that it happened, and then looks at what the program made of it: the log, the
exit status, standard error, and every file it left. A test that cannot be run here says why.

    faults.py --program PATH --work DIR [--only NAME]
"""
import argparse
import os
import re
import resource
import shutil
import signal
import subprocess
import sys
import threading
import time

UNREADABLE = 255
UNWRITABLE = 255
NOBODY = 65534

ROWS = 40  # of the grid that most tests read: its files have hundreds of kilobytes


class Skip(Exception):
    pass


class Failed(Exception):
    pass


def require(holds, rule):
    if not holds:
        raise Failed(rule)


def grid_deck(group=b"LEFT", rows=ROWS):
    lines = [b"*NODE"]
    lines += [b"%d,%d.25,%d" % (i * rows + j + 1, j, i) for i in range(rows) for j in range(rows)]
    lines.append(b"*ELEMENT,TYPE=CPS3,ELSET=PLATE")
    number = 0
    for i in range(rows - 1):
        for j in range(rows - 1):
            a = i * rows + j + 1
            for triangle in ((a, a + 1, a + rows), (a + 1, a + rows + 1, a + rows)):
                number += 1
                lines.append(b"%d,%d,%d,%d" % (number, *triangle))
    lines.append(b"*NSET,NSET=" + group)
    lines += [b"%d" % i for i in range(1, rows * rows + 1)]
    lines.append(b"*ELSET,ELSET=ALL")
    lines += [b"%d" % i for i in range(1, number + 1)]
    lines.append(b"*SURFACE,NAME=S\nALL,S1\nALL,S2\n")
    return b"\n".join(lines)


FILES = (b"mesh.input", b"_Cells.vtk", b"_Faces.vtk", b"_NSET_LEFT.vtk")


def mask(log):
    title = b"(Version: 07/04/2019)     \n\n"
    log = b"<banner>\n" + log.split(title, 1)[1] if title in log else log
    log = re.sub(rb"(Job (started|finished) at )[^\n]*", rb"\1<date>", log)
    return re.sub(rb"Elapsed Time: [0-9.]+ sec", b"Elapsed Time: <t> sec", log)


class Run:
    """One run of the program in a folder of its own, and what it left."""

    def __init__(self, test, arguments=("deck.inp", "--vtk"), deck=None, folder=None, prepare=None, before=None,
                 environment=None, **streams):
        self.folder = folder or os.path.join(test.work, "run")
        if folder is None:
            shutil.rmtree(self.folder, ignore_errors=True)
            os.makedirs(self.folder)
        if deck is not None:
            with open(os.path.join(self.folder, "deck.inp"), "wb") as file:
                file.write(deck)
        if prepare:
            prepare(self.folder)
        inputs = set(os.listdir(os.fsencode(self.folder)))
        streams = {"stdin": subprocess.DEVNULL, "stdout": subprocess.PIPE, "stderr": subprocess.PIPE, **streams}
        process = subprocess.Popen([test.program, *arguments], cwd=self.folder, preexec_fn=before,
                                   env={**os.environ, **(environment or {})}, **streams)
        try:
            out, err = process.communicate(timeout=60)
        except subprocess.TimeoutExpired:
            process.kill()
            process.communicate()
            raise Failed("the run ended within a minute") from None
        self.status = process.returncode
        self.log = mask(out or b"")
        self.errors = err or b""
        self.left = set(os.listdir(os.fsencode(self.folder))) - inputs

    def read(self, name):
        with open(os.path.join(os.fsencode(self.folder), name), "rb") as file:
            return file.read()


class Tests:
    def __init__(self, program, work):
        self.program = os.path.abspath(program)
        self.work = os.path.abspath(work)
        self.deck = grid_deck()
        self.good = Run(self, deck=self.deck, folder=self.fresh("good"))
        self.whole = {name: self.good.read(name) for name in FILES}
        require(self.good.status == 0 and not self.good.errors, "an ordinary run succeeds")
        require(all(len(text) > 40_000 for text in self.whole.values()), "the files of an ordinary run are large")

    def fresh(self, name):
        folder = os.path.join(self.work, name)
        shutil.rmtree(folder, ignore_errors=True)
        os.makedirs(folder)
        return folder

    def is_sanitized(self):
        with open(self.program, "rb") as file:
            return b"__asan_init" in file.read()

    def require_unreadable(self, run, name, begun=False):
        """The deck counts as one that cannot be opened; nothing is made of what was read of it."""
        require(run.status == UNREADABLE, f"the status is that of a deck that cannot be opened, not {run.status}")
        require(run.log.endswith(b"\n Error> cannot open file " + name + b"\n"), "the log names the deck")
        require((b"Reading Abaqus mesh from " in run.log) == begun, "the deck is announced when it has been opened")
        require(b"Mesh summary" not in run.log and b"Dumping" not in run.log, "the run ends there")
        require(not run.left, f"no file is made: {run.left}")

    def require_whole(self, run, names=FILES):
        for name in names:
            require(run.read(name) == self.whole[name], f"{name.decode()} is whole")

    def require_broken(self, run, name, text):
        """One file could not be written whole: said once, in time, and the file does not look whole."""
        reason = b"KIVOm: cannot write " + name + b": " + text + b"\n"
        require(run.errors == reason, f"standard error says so, and nothing else: {run.errors!r}")
        require(run.status == 1, f"the status is 1, not {run.status}")
        require(run.log == self.good.log, "the log is that of an ordinary run, with the finish stamp")

    def require_beginning(self, run, name):
        text = run.read(name)
        require(len(text) < len(self.whole[name]), f"{name.decode()} is shorter than whole")
        require(self.whole[name].startswith(text), f"{name.decode()} is a beginning of the whole")

    # Decks ---------------------------------------------------------------------------------------------------

    def deck_missing(self):
        self.require_unreadable(Run(self, arguments=["nowhere.inp"]), b"nowhere.inp")

    def deck_is_a_directory(self):
        run = Run(self, arguments=["folder"], prepare=lambda folder: os.mkdir(os.path.join(folder, "folder")))
        self.require_unreadable(run, b"folder")

    def deck_in_a_missing_directory(self):
        self.require_unreadable(Run(self, arguments=["deck.inp/x"], deck=self.deck), b"deck.inp/x")

    def deck_is_a_loop_of_links(self):
        run = Run(self, arguments=["loop"], prepare=lambda folder: os.symlink("loop", os.path.join(folder, "loop")))
        self.require_unreadable(run, b"loop")

    def deck_without_permission(self):
        def forbid(folder):
            os.chmod(os.path.join(folder, "deck.inp"), 0)
        run = Run(self, deck=self.deck, prepare=forbid, before=self.as_nobody())
        self.require_unreadable(run, b"deck.inp")

    def deck_fails_at_the_first_read(self):
        name = "/proc/self/mem"
        try:
            with open(name, "rb", buffering=0) as file:
                file.read(1)
            raise Skip(f"{name} can be read here")
        except OSError:
            pass
        self.require_unreadable(Run(self, arguments=[name]), name.encode())

    def faulty_files(self, **settings):
        """Environment in which files misbehave as set (faultyfiles.c), and the file that shows it."""
        if self.is_sanitized():
            raise Skip("a sanitized program takes no library before its own")
        compiler = next((c for c in ("cc", "gcc", "clang") if shutil.which(c)), None)
        if compiler is None:
            raise Skip("no compiler for the library of faults")
        library = os.path.join(self.work, "faultyfiles.so")
        source = os.path.join(os.path.dirname(os.path.abspath(__file__)), "faultyfiles.c")
        if not os.path.exists(library) or os.path.getmtime(library) < os.path.getmtime(source):
            subprocess.run([compiler, "-shared", "-fPIC", "-o", library, source], check=True)
        mark = os.path.join(self.work, "mark")
        if os.path.exists(mark):
            os.remove(mark)
        settings = {name: str(value) for name, value in settings.items()}
        return {"LD_PRELOAD": library, "FAULT_MARK": mark, **settings}, mark

    def deck_fails_half_way(self):
        for cut in (4096, 5000, 1, 262144):  # whole lines or not, one byte at a time, whole blocks
            for number in (1, 2, 3, 5, 7):
                environment, mark = self.faulty_files(FAULT_READ=number, FAULT_SHORT=cut)
                deck = self.deck if cut < 262144 else grid_deck(rows=250)
                run = Run(self, deck=deck, environment=environment)
                require(os.path.exists(mark), f"read {number} failed")
                self.require_unreadable(run, b"deck.inp", begun=number > 1)

    def deck_comes_in_short_reads(self):
        for cut in (1, 7, 100):
            run = Run(self, deck=self.deck, environment=self.faulty_files(FAULT_SHORT=cut)[0])
            require(run.status == 0 and run.log == self.good.log, "short reads are no fault")
            self.require_whole(run)

    def files_take_short_and_interrupted_writes(self):
        for most in (1000, 4096, 77777):
            environment, mark = self.faulty_files(FAULT_WRITE=most)
            run = Run(self, deck=self.deck, environment=environment)
            require(os.path.exists(mark), "writes were interrupted")
            require(run.status == 0 and run.log == self.good.log and not run.errors, "that is no fault")
            self.require_whole(run)

    def file_fails_when_closed(self):
        for number, name in enumerate(FILES, 1):
            environment, mark = self.faulty_files(FAULT_CLOSE=number)
            run = Run(self, deck=self.deck, environment=environment)
            require(os.path.exists(mark), f"close {number} failed")
            self.require_broken(run, name, b"Input/output error")

    def deck_is_a_pipe(self):
        def feed(path):
            with open(path, "wb", buffering=0) as pipe:
                for at in range(0, len(self.deck), 3001):
                    pipe.write(self.deck[at:at + 3001])
                    if at % 10 == 0:
                        time.sleep(0.001)

        def prepare(folder):
            path = os.path.join(folder, "deck.inp")
            os.mkfifo(path)
            threading.Thread(target=feed, args=(path,), daemon=True).start()
        run = Run(self, prepare=prepare)
        require(run.status == 0 and run.log == self.good.log, "a pipe is read like a file")
        self.require_whole(run)

    def deck_is_standard_input(self):
        with open(os.path.join(self.good.folder, "deck.inp"), "rb") as deck:
            run = Run(self, arguments=["/dev/stdin", "--vtk"], stdin=deck)
        require(run.status == 0 and not run.errors, "standard input is read like a file")
        self.require_whole(run)

    # Output files --------------------------------------------------------------------------------------------

    def as_nobody(self):
        """Makes the program run as a user without rights; skips where that cannot be."""
        if os.geteuid() != 0:
            return None

        def become():
            os.setgroups([])
            os.setgid(NOBODY)
            os.setuid(NOBODY)
        try:
            probe = subprocess.run([self.program, "/nowhere/deck.inp"], preexec_fn=become, capture_output=True,
                                   cwd="/", check=False)
        except OSError as error:
            raise Skip(f"a user without rights cannot run the program: {error}") from None
        require(probe.returncode == UNREADABLE, "a user without rights can run the program")
        return become

    def require_uncreated(self, run):
        require(run.status == UNWRITABLE, f"the status is that of a file that cannot be made, not {run.status}")
        require(run.log.endswith(b"\nDumping files ...\n Error> cannot open file mesh.input\n"),
                "the log names the file in place of its announcement")
        require(b"Mesh summary" in run.log, "all that comes before is done")
        require(not run.left, f"no file is made: {run.left}")

    def folder_is_read_only(self):
        become = self.as_nobody()

        def prepare(folder):
            os.chmod(folder, 0o555)
        run = Run(self, deck=self.deck, prepare=prepare, before=become)
        os.chmod(run.folder, 0o755)
        self.require_uncreated(run)

    def mesh_input_is_a_directory(self):
        run = Run(self, deck=self.deck, prepare=lambda folder: os.mkdir(os.path.join(folder, "mesh.input")))
        self.require_uncreated(run)

    def vtk_file_is_a_directory(self):
        for name in FILES[1:]:
            run = Run(self, deck=self.deck,
                      prepare=lambda folder, name=name: os.mkdir(os.path.join(os.fsencode(folder), name)))
            words = b"\n  Dumping VTK file " + name + b" ..."
            log = self.good.log.replace(words + b" done.", words + b"\n Error> cannot open file " + name + b"\n")
            require(log != self.good.log and run.log == log, "the log says which file, and goes on")
            require(run.status == 0 and not run.errors, "the run comes to its end")
            self.require_whole(run, [other for other in FILES if other != name])

    def file_is_full(self):
        for name in FILES:
            def prepare(folder, name=name):
                os.symlink("/dev/full", os.path.join(os.fsencode(folder), name))
            run = Run(self, deck=self.deck, prepare=prepare)
            self.require_broken(run, name, b"No space left on device")
            self.require_whole(run, [other for other in FILES if other != name])

    def file_reaches_its_limit(self):
        """A limit to the size of files stands for the disk that fills up at that byte."""
        name = b"mesh.input"
        size = len(self.whole[name])
        for limit in (0, 1, 4096, 131072, size // 3, size // 2, size - 4096, size - 1):
            def before(limit=limit):
                signal.signal(signal.SIGXFSZ, signal.SIG_DFL)  # the program must not end of it
                resource.setrlimit(resource.RLIMIT_FSIZE, (limit, limit))
            run = Run(self, deck=self.deck, arguments=["deck.inp"], before=before)
            self.require_beginning(run, name)
            require(run.errors == b"KIVOm: cannot write mesh.input: File too large\n", f"limit {limit}: {run.errors!r}")
            require(run.status == 1, f"limit {limit}: the status is 1, not {run.status}")

    def disk_fills_up(self):
        """A tiny disk that is full in the middle of each file in turn."""
        page = 4096
        for at, name in enumerate(FILES):
            before = sum(-(-len(self.whole[n]) // page) * page for n in FILES[:at])
            folder = self.fresh("disk")
            room = before + len(self.whole[name]) // 2 // page * page
            mount = subprocess.run(["mount", "-t", "tmpfs", "-o", f"size={room}", "tmpfs", folder],
                                   capture_output=True, check=False)
            if mount.returncode != 0:
                raise Skip("mounting is refused here")
            try:
                deck = os.path.join(self.good.folder, "deck.inp")
                run = Run(self, arguments=[deck, "--vtk"], folder=folder)
                require(run.status == 1, f"the status is 1, not {run.status}")
                lines = run.errors.splitlines()
                broken = [line.split(b": ")[1].removeprefix(b"cannot write ") for line in lines]
                require(name in broken, f"standard error names the file: {run.errors!r}")
                require(all(line.endswith(b": No space left on device") for line in lines), "and the reason")
                require(run.log.endswith(b"\nJob finished at <date>\n\n"), "the log has its finish stamp")
                for other in FILES:
                    if other in broken:
                        self.require_beginning(run, other)
                    else:
                        self.require_whole(run, [other])
                require(all(n not in broken for n in FILES[:at]), "files before it are whole")
            finally:
                subprocess.run(["umount", folder], check=True)

    # Memory --------------------------------------------------------------------------------------------------

    def memory_is_scarce(self):
        """Less and less memory: the run is whole, or it ends with the size that could not be had."""
        if self.is_sanitized():
            raise Skip("a sanitized program needs its address space")
        ended = 0
        for megabytes in range(40, 3, -1):
            def before(size=megabytes << 20):
                resource.setrlimit(resource.RLIMIT_AS, (size, size))
            try:
                run = Run(self, deck=self.deck, before=before)
            except (OSError, subprocess.SubprocessError):
                break  # too little to begin at all
            if not run.log.startswith(b"<banner>"):
                break
            if run.status == 0:
                require(run.log == self.good.log, f"{megabytes} MB: the log is that of an ordinary run")
                self.require_whole(run)
                continue
            ended += 1
            require(run.status == 1, f"{megabytes} MB: the status is 1, not {run.status}")
            words = (rb"Warning> trying to allocate memory \.\.\. \n"
                     rb"Error> failed to allocate storage with [0-9.]+ (Megabytes|Kilobytes|Bytes) \.\n$")
            require(re.search(words, run.log), f"{megabytes} MB: the log ends with the size")
            for name in run.left:
                text = run.read(name)
                require(text == self.whole[name] or (len(text) < len(self.whole[name])
                                                     and self.whole[name].startswith(text)),
                        f"{megabytes} MB: {name.decode()} does not look whole unless it is")
        require(ended > 0, "memory was too scarce for some of the runs")

    # Streams -------------------------------------------------------------------------------------------------

    def require_lost_log(self, run):
        require(run.status == 1, f"the status is 1, not {run.status}")
        require(run.errors == b"KIVOm: cannot write the log\n",
                f"standard error says so, and nothing else: {run.errors!r}")
        self.require_whole(run)

    def output_is_closed(self):
        run = Run(self, deck=self.deck, stdout=None, before=lambda: os.close(1))
        self.require_lost_log(run)

    def output_is_full(self):
        with open("/dev/full", "wb") as full:
            self.require_lost_log(Run(self, deck=self.deck, stdout=full))

    def output_is_a_closed_pipe(self):
        end, start = os.pipe()
        os.close(end)
        try:
            self.require_lost_log(Run(self, deck=self.deck, stdout=start))
        finally:
            os.close(start)

    def errors_are_closed(self):
        name = b"mesh.input"
        run = Run(self, deck=self.deck, stderr=None, before=lambda: os.close(2),
                  prepare=lambda folder: os.symlink("/dev/full", os.path.join(os.fsencode(folder), name)))
        require(run.status == 1 and run.log == self.good.log, "the run ends as it would otherwise")
        self.require_whole(run, FILES[1:])

    def all_streams_are_closed(self):
        run = Run(self, deck=self.deck, stdin=None, stdout=None, stderr=None, before=lambda: os.closerange(0, 3))
        require(run.status == 1, "the lost log is a failure")
        self.require_whole(run)

    def input_is_closed(self):
        run = Run(self, deck=self.deck, stdin=None, before=lambda: os.close(0))
        require(run.status == 0 and run.log == self.good.log, "who names a deck needs no input")
        self.require_whole(run)

    def input_is_closed_at_the_prompt(self):
        for streams in ({"stdin": None, "before": lambda: os.close(0)}, {"stdin": subprocess.DEVNULL}):
            run = Run(self, arguments=[], deck=self.deck, **streams)
            require(b"enter the input file name (e.g. mesh.inp): \n> " in run.log, "the prompt was shown")
            self.require_unreadable(run, b"")

    # Names ---------------------------------------------------------------------------------------------------

    def deck_name_of_any_bytes(self):
        every = bytes(c for c in range(1, 256) if c != ord("/"))
        for name in (b"%s%n%d.inp", b"two words.inp", b"\xff\xfe\x80.inp", b"line\nend.inp", every):
            def prepare(folder, name=name):
                with open(os.path.join(os.fsencode(folder), name), "wb") as file:
                    file.write(self.deck)
            run = Run(self, arguments=[name, b"--vtk"], prepare=prepare)
            require(run.status == 0 and not run.errors, f"{name!r} is read")
            require(b"Reading Abaqus mesh from " + name + b" ...\n" in run.log, f"{name!r} stands in the log as it is")
            self.require_whole(run)

    def group_name_with_a_slash(self):
        run = Run(self, deck=grid_deck(b"UP/DOWN"))
        words = b"\n  Dumping VTK file _NSET_UP/DOWN.vtk ...\n Error> cannot open file _NSET_UP/DOWN.vtk\n"
        require(words in run.log, "the log says that the file cannot be made")
        require(run.status == 0 and not run.errors, "the run comes to its end")
        self.require_whole(run, FILES[1:3])
        require(run.left == set(FILES[:3]), "no other file is made")

    def group_name_with_a_slash_and_a_folder(self):
        run = Run(self, deck=grid_deck(b"UP/DOWN"), prepare=lambda folder: os.mkdir(os.path.join(folder, "_NSET_UP")))
        require(run.status == 0, "the run comes to its end")
        require(run.read(b"_NSET_UP/DOWN.vtk") == self.whole[b"_NSET_LEFT.vtk"], "the name is taken as it is")

    def group_name_too_long_for_a_file(self):
        name = b"N" * 256
        run = Run(self, deck=grid_deck(name))
        path = b"_NSET_" + name + b".vtk"
        require(b" " + path + b" ...\n Error> cannot open file " + path + b"\n" in run.log, "the log says so")
        require(run.status == 0 and not run.errors, "the run comes to its end")
        self.require_whole(run, FILES[1:3])

    def group_name_with_a_format(self):
        name = b"%S%N%D%5$S"
        run = Run(self, deck=grid_deck(name))
        require(run.status == 0 and run.read(b"_NSET_" + name + b".vtk") == self.whole[b"_NSET_LEFT.vtk"],
                "a name is no format")


def main():
    options = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    options.add_argument("--program", required=True)
    options.add_argument("--work", required=True)
    options.add_argument("--only")
    options = options.parse_args()
    os.makedirs(options.work, exist_ok=True)
    tests = Tests(options.program, options.work)
    tools = {"fresh", "is_sanitized", "faulty_files", "as_nobody"}
    names = [name for name, value in vars(Tests).items()
             if callable(value) and not name.startswith(("_", "require")) and name not in tools]
    failed = skipped = 0
    for name in names:
        if options.only and name != options.only:
            continue
        try:
            getattr(tests, name)()
            print(f"passed  {name}")
        except Skip as reason:
            skipped += 1
            print(f"skipped {name}: {reason}")
        except Failed as rule:
            failed += 1
            print(f"FAILED  {name}: {rule}")
        sys.stdout.flush()
    print(f"{len(names)} tests, {failed} failed, {skipped} skipped")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
