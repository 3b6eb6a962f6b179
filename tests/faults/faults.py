#!/usr/bin/python3
"""Faults from outside: decks that cannot be read, files that cannot be written, streams that are not there.

Each test provokes a fault, asserts that it happened, and then looks at what the program made of it: the log, the
exit status, standard error, and every file it left. A test that cannot be run here says why.

    faults.py --program PATH --work DIR [--only NAME]
"""
import argparse, os, re, resource, shutil, signal, subprocess, sys, threading, time

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

    def __init__(self, program, folder, deck=None, arguments=("deck.inp", "--vtk"), prepare=None, links=(),
                 folders=(), before=None, environment=None, **streams):
        """`prepare` is called with the folder, `before` in the new process. `links` are (name, target)."""
        self.folder = os.fsencode(folder)
        if deck is not None:
            with open(os.path.join(self.folder, b"deck.inp"), "wb") as file:
                file.write(deck)
        for name, target in links:
            os.symlink(target, os.path.join(self.folder, os.fsencode(name)))
        for name in folders:
            os.mkdir(os.path.join(self.folder, os.fsencode(name)))
        if prepare:
            prepare(folder)
        inputs = set(os.listdir(self.folder))
        streams = {"stdin": subprocess.DEVNULL, "stdout": subprocess.PIPE, "stderr": subprocess.PIPE, **streams}
        process = subprocess.Popen([program, *arguments], cwd=folder, preexec_fn=before,
                                   env={**os.environ, **(environment or {})}, **streams)
        try:
            out, err = process.communicate(timeout=60)
        except subprocess.TimeoutExpired:
            process.kill()
            process.communicate()
            raise Failed("the run ended within a minute") from None
        self.status, self.log, self.errors = process.returncode, mask(out or b""), err or b""
        self.left = set(os.listdir(self.folder)) - inputs

    def read(self, name):
        with open(os.path.join(self.folder, name), "rb") as file:
            return file.read()


class Tests:
    def __init__(self, program, work):
        self.program, self.work = program, work
        self.deck = grid_deck()
        self.good = Run(program, self.fresh("good"), self.deck)
        self.whole = {name: self.good.read(name) for name in FILES}
        require(self.good.status == 0 and not self.good.errors, "an ordinary run succeeds")
        require(all(len(text) > 40_000 for text in self.whole.values()), "the files of an ordinary run are large")

    def fresh(self, name):
        folder = os.path.join(self.work, name)
        shutil.rmtree(folder, ignore_errors=True)
        os.makedirs(folder)
        return folder

    def run(self, deck=None, **how):
        return Run(self.program, self.fresh("run"), deck or self.deck, **how)

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

    def require_good(self, run, why):
        require(run.status == 0 and run.log == self.good.log and not run.errors, why)
        self.require_whole(run)

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

    def deck_that_cannot_be_opened(self):
        for name, how in (("nowhere.inp", {}), ("folder", {"folders": ["folder"]}), ("deck.inp/x", {}),
                          ("loop", {"links": [("loop", "loop")]})):
            self.require_unreadable(self.run(arguments=[name], **how), name.encode())

    def deck_without_permission(self):
        run = self.run(prepare=lambda folder: os.chmod(os.path.join(folder, "deck.inp"), 0), before=self.as_nobody())
        self.require_unreadable(run, b"deck.inp")

    def deck_fails_at_the_first_read(self):
        name = "/proc/self/mem"
        try:
            with open(name, "rb", buffering=0) as file:
                file.read(1)
            raise Skip(f"{name} can be read here")
        except OSError:
            pass
        self.require_unreadable(self.run(arguments=[name]), name.encode())

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

    def run_with_faults(self, deck=None, **settings):
        """A run whose files misbehave as set, and did."""
        environment, mark = self.faulty_files(**settings)
        run = self.run(deck, environment=environment)
        require(os.path.exists(mark), f"the fault happened: {settings}")
        return run

    def deck_fails_half_way(self):
        for cut in (4096, 5000, 1, 262144):  # whole lines or not, one byte at a time, whole blocks
            for number in (1, 2, 3, 5, 7):
                deck = self.deck if cut < 262144 else grid_deck(rows=250)
                run = self.run_with_faults(deck, FAULT_READ=number, FAULT_SHORT=cut)
                self.require_unreadable(run, b"deck.inp", begun=number > 1)

    def deck_comes_in_short_and_interrupted_reads(self):
        for cut in (1, 7, 100):
            self.require_good(self.run_with_faults(FAULT_SHORT=cut), "interrupted reads are no fault")

    def files_take_short_and_interrupted_writes(self):
        for most in (1000, 4096, 77777):
            self.require_good(self.run_with_faults(FAULT_WRITE=most), "interrupted writes are no fault")

    def file_fails_when_closed(self):
        for number, name in enumerate(FILES, 1):
            self.require_broken(self.run_with_faults(FAULT_CLOSE=number), name, b"Input/output error")

    def deck_is_a_pipe(self):
        def feed(path):
            with open(path, "wb", buffering=0) as pipe:
                for at in range(0, len(self.deck), 3001):
                    pipe.write(self.deck[at:at + 3001])
                    if at % 10 == 0:
                        time.sleep(0.001)

        def prepare(folder):
            path = os.path.join(folder, "deck.inp")
            os.remove(path)
            os.mkfifo(path)
            threading.Thread(target=feed, args=(path,), daemon=True).start()
        self.require_good(self.run(prepare=prepare), "a pipe is read like a file")

    def deck_is_standard_input(self):
        with open(os.path.join(self.good.folder, b"deck.inp"), "rb") as deck:
            run = self.run(arguments=["/dev/stdin", "--vtk"], stdin=deck)
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
        run = self.run(prepare=lambda folder: os.chmod(folder, 0o555), before=self.as_nobody())
        os.chmod(run.folder, 0o755)
        self.require_uncreated(run)

    def mesh_input_is_a_directory(self):
        self.require_uncreated(self.run(folders=[b"mesh.input"]))

    def vtk_file_is_a_directory(self):
        for name in FILES[1:]:
            run = self.run(folders=[name])
            words = b"\n  Dumping VTK file " + name + b" ..."
            log = self.good.log.replace(words + b" done.", words + b"\n Error> cannot open file " + name + b"\n")
            require(log != self.good.log and run.log == log, "the log says which file, and goes on")
            require(run.status == 0 and not run.errors, "the run comes to its end")
            self.require_whole(run, [other for other in FILES if other != name])

    def file_is_full(self):
        for name in FILES:
            run = self.run(links=[(name, "/dev/full")])
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
            run = self.run(arguments=["deck.inp"], before=before)
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
                deck = os.path.join(self.good.folder, b"deck.inp")
                run = Run(self.program, folder, arguments=[deck, "--vtk"])
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
                run = self.run(before=before)
            except (OSError, subprocess.SubprocessError):
                break  # too little to begin at all
            if not run.log.startswith(b"<banner>"):
                break
            if run.status == 0:
                self.require_good(run, f"{megabytes} MB: the run is an ordinary one")
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
        self.require_lost_log(self.run(stdout=None, before=lambda: os.close(1)))

    def output_is_full(self):
        with open("/dev/full", "wb") as full:
            self.require_lost_log(self.run(stdout=full))

    def output_is_a_closed_pipe(self):
        end, start = os.pipe()
        os.close(end)
        try:
            self.require_lost_log(self.run(stdout=start))
        finally:
            os.close(start)

    def errors_are_closed(self):
        run = self.run(stderr=None, before=lambda: os.close(2), links=[("mesh.input", "/dev/full")])
        require(run.status == 1 and run.log == self.good.log, "the run ends as it would otherwise")
        self.require_whole(run, FILES[1:])

    def all_streams_are_closed(self):
        run = self.run(stdin=None, stdout=None, stderr=None, before=lambda: os.closerange(0, 3))
        require(run.status == 1, "the lost log is a failure")
        self.require_whole(run)

    def input_is_closed(self):
        self.require_good(self.run(stdin=None, before=lambda: os.close(0)), "who names a deck needs no input")

    def input_is_closed_at_the_prompt(self):
        for streams in ({"stdin": None, "before": lambda: os.close(0)}, {"stdin": subprocess.DEVNULL}):
            run = self.run(arguments=[], **streams)
            require(b"enter the input file name (e.g. mesh.inp): \n> " in run.log, "the prompt was shown")
            self.require_unreadable(run, b"")

    # Names ---------------------------------------------------------------------------------------------------

    def deck_name_of_any_bytes(self):
        every = bytes(c for c in range(1, 256) if c != ord("/"))
        for name in (b"%s%n%d.inp", b"two words.inp", b"\xff\xfe\x80.inp", b"line\nend.inp", every):
            run = self.run(arguments=[name, b"--vtk"], links=[(name, "deck.inp")])
            require(run.status == 0 and not run.errors, f"{name!r} is read")
            require(b"Reading Abaqus mesh from " + name + b" ...\n" in run.log, f"{name!r} stands in the log as it is")
            self.require_whole(run)

    def group_name_with_a_slash(self):
        run = self.run(grid_deck(b"UP/DOWN"))
        words = b"\n  Dumping VTK file _NSET_UP/DOWN.vtk ...\n Error> cannot open file _NSET_UP/DOWN.vtk\n"
        require(words in run.log, "the log says that the file cannot be made")
        require(run.status == 0 and not run.errors, "the run comes to its end")
        self.require_whole(run, FILES[1:3])
        require(run.left == set(FILES[:3]), "no other file is made")

    def group_name_with_a_slash_and_a_folder(self):
        run = self.run(grid_deck(b"UP/DOWN"), folders=["_NSET_UP"])
        require(run.status == 0, "the run comes to its end")
        require(run.read(b"_NSET_UP/DOWN.vtk") == self.whole[b"_NSET_LEFT.vtk"], "the name is taken as it is")

    def group_name_too_long_for_a_file(self):
        name = b"N" * 256
        run = self.run(grid_deck(name))
        path = b"_NSET_" + name + b".vtk"
        require(b" " + path + b" ...\n Error> cannot open file " + path + b"\n" in run.log, "the log says so")
        require(run.status == 0 and not run.errors, "the run comes to its end")
        self.require_whole(run, FILES[1:3])

    def group_name_with_a_format(self):
        name = b"%S%N%D%5$S"
        run = self.run(grid_deck(name))
        require(run.status == 0 and run.read(b"_NSET_" + name + b".vtk") == self.whole[b"_NSET_LEFT.vtk"],
                "a name is no format")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--program", required=True, type=os.path.abspath)
    parser.add_argument("--work", required=True, type=os.path.abspath)
    parser.add_argument("--only")
    given = parser.parse_args()
    tests = Tests(given.program, given.work)
    tools = {"fresh", "run", "run_with_faults", "is_sanitized", "faulty_files", "as_nobody"}
    names = [name for name in vars(Tests) if not name.startswith(("_", "require")) and name not in tools]
    outcomes = {"passed": 0, "skipped": 0, "FAILED": 0}
    for name in names:
        if given.only and name != given.only:
            continue
        outcome, reason = "passed", ""
        try:
            getattr(tests, name)()
        except Skip as why:
            outcome, reason = "skipped", f": {why}"
        except Failed as rule:
            outcome, reason = "FAILED", f": {rule}"
        outcomes[outcome] += 1
        print(f"{outcome:7} {name}{reason}", flush=True)
    print(", ".join(f"{count} {outcome}" for outcome, count in outcomes.items()))
    return 1 if outcomes["FAILED"] or not outcomes["passed"] else 0


if __name__ == "__main__":
    sys.exit(main())
