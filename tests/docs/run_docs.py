#!/usr/bin/python3
"""Runs what the pages of the documents show, and compares.

Pages are the *.md files and the man pages *.1 of DIR, and every PAGE named besides. Each page is run in a scratch
folder of its own, from its first fenced block to its last. In the folder lies "examples" of the project (the folder
above DIR); KIVOm, kivodeck, kivorender and python3 are found as commands.

    ```deck name=FILE                the block is written to FILE (```file name=FILE does the same for other texts)
    ```console                       lines with "$ " in front are commands for sh (a line that ends in "\\" goes on
                                     with the next); below each stands all that it prints
    ```console needs=gmsh,cgx        the same, passed over with a note where one of these programs is missing
    ```text file=FILE lines=A-B      these lines of FILE; without "lines", the whole of it
    other blocks                     are shown only, and not tested
    <!-- deck NAME from PAGE -->     writes a deck that another page of this folder shows, a line of its own
In a man page the text between .EX and .EE is a console block; .EX lines without any "$ " are shown only.

What is shown is compared line by line. A line "..." stands for any number of lines, none too. Dates and elapsed times
are masked; blanks at the ends of lines do not count. A command that ends with another exit status than 0 is a failure,
unless "$ echo $?" follows and shows it. Files and headings that a page links to must be there. With --source, this
holds for the other pages of the project too; files of the project that a page names must be there; every message of the
C++ sources must stand in the man page, which must not let one go on that ends; and README.md and the pages of DIR hold
at most 9,000 words, without what is made from the table of findings.
The last line printed is "N passed, M failed"; exit status 1 when M is not 0.
"""
import argparse, glob, os, re, shlex, shutil, subprocess, sys, tempfile

TIMEOUT = 60  # seconds for one block
WORD_LIMIT = 9000
TABLE = re.compile(r"^[^\n]*findings: made by.*?end of findings[^\n]*$", re.DOTALL | re.MULTILINE)
MARK = "@@end of command@@"
MASKS = ((re.compile(r"\b\d{2} [A-Z][a-z]+ \d{4} \d{2}:\d{2}:\d{2} [AP]M\b"), "<date>"),
         (re.compile(r"Elapsed Time: \d+\.\d{6} sec\."), "Elapsed Time: <t> sec."))


def read(path):
    with open(path, encoding="utf-8") as stream:
        return stream.read()


def masked(text):
    """The lines of a text as they are compared; empty lines at its end do not count."""
    for pattern, mask in MASKS:
        text = pattern.sub(mask, text)
    lines = [line.rstrip() for line in text.split("\n")]
    while lines and not lines[-1]:
        lines.pop()
    return lines


def difference(shown, real):
    """None where the lines shown describe the real ones, else the first line shown that does not fit."""
    reach = {0}  # numbers of real lines that the lines shown so far can stand for
    for line in shown:
        if line == "...":
            reach = set(range(min(reach), len(real) + 1))
        else:
            reach = {at + 1 for at in reach if at < len(real) and real[at] == line}
        if not reach:
            return line
    return None if len(real) in reach else "(end of what is shown)"


def prose(text):
    """The lines of a page, those of its blocks empty."""
    fenced, lines = False, []
    for line in text.split("\n"):
        fence = re.match(r" *```", line)
        fenced ^= bool(fence)
        lines.append("" if fence or fenced else line)
    return lines


def links_of_markdown(text):
    """(line number, file, heading) of every link and picture within the project; what stands in blocks is none."""
    without_code = re.sub(r"`[^`]*`", lambda code: "\n" * code.group().count("\n"), "\n".join(prose(text)))
    for number, line in enumerate(without_code.split("\n"), 1):
        for target in re.findall(r"\]\(([^)\s]+)\)", line):
            if not re.match(r"[a-z]+:", target):
                yield (number, *target.partition("#")[::2])


def anchors(text):
    """What links to the headings of a page are called."""
    return {re.sub(r"[^\w\- ]", "", line.lstrip("# ").lower()).replace(" ", "-")
            for line in prose(text) if line.startswith("#")}


def check_links(path, failures):
    for number, target, heading in links_of_markdown(read(path)):
        file = os.path.join(os.path.dirname(path), target) if target else path
        if not os.path.exists(file):
            failures.append("%s:%d: there is no file %s" % (path, number, target))
        elif heading and heading not in anchors(read(file)):
            failures.append("%s:%d: there is no heading %s" % (path, number, heading))


def check_names(path, source, failures):
    """Paths that begin with a folder of the project, and files of C++: are they there?"""
    folders = "|".join(name for name in os.listdir(source)
                       if os.path.isdir(os.path.join(source, name)) and not name.startswith((".", "build")))
    sources = {os.path.basename(file) for file in glob.glob(os.path.join(source, "*", "*.*"))}
    for number, line in enumerate(read(path).split("\n"), 1):
        for name in re.findall(r"(?<![\w./-])(?:%s)/[\w./-]*\w" % folders, line):
            if not glob.glob(os.path.join(source, name) + "*"):
                failures.append("%s:%d: there is no %s" % (path, number, name))
        for name in re.findall(r"\b\w+\.(?:cpp|h)\b", line):
            if name not in sources:
                failures.append("%s:%d: there is no %s" % (path, number, name))


def check_words(paths, failures):
    words = {path: len(TABLE.sub("", read(path)).split()) for path in paths if not path.endswith("findings.md")}
    if sum(words.values()) > WORD_LIMIT:
        failures.append("the pages have %d words, more than %d: %s" % (sum(words.values()), WORD_LIMIT, ", ".join(
            "%s %d" % (os.path.basename(path), count) for path, count in words.items())))


class Block:
    def __init__(self, kind, options, line):
        self.kind, self.options, self.line, self.lines = kind, options, line, []


def blocks_of_markdown(text):
    block, fence, indent = None, None, 0
    for number, line in enumerate(text.split("\n"), 1):
        found = re.match(r"( *)(`{3,})(.*)$", line)
        borrowed = re.fullmatch(r"<!-- deck (\S+) from (\S+) -->", line)
        if borrowed and block is None:
            yield Block("borrowed", {"name": borrowed.group(1), "page": borrowed.group(2)}, number)
        elif found and block is None:
            words = found.group(3).split() or [""]
            indent, fence, options = len(found.group(1)), found.group(2), dict(word.split("=", 1) for word in words[1:])
            block = Block(words[0], options, number)
        elif block is not None and line.strip() == fence:
            yield block
            block = None
        elif block is not None:
            block.lines.append(line[indent:] if not line[:indent].strip() else line)
    if block is not None:
        raise ValueError("line %d: the block has no end" % block.line)


def plain(roff):
    """A line of an example in a man page, without the page's escapes."""
    return re.sub(r"\\(-|&|e|\(aq|\(dq|\(rs)", lambda m: {"-": "-", "&": "", "e": "\\", "(aq": "'", "(dq": '"',
                                                         "(rs": "\\"}[m.group(1)], roff)


def blocks_of_man(text):
    block = None
    for number, line in enumerate(text.split("\n"), 1):
        if line == ".EX":
            block = Block("console", {}, number)
        elif line == ".EE":
            if any(line.startswith("$ ") for line in block.lines):
                yield block
            block = None
        elif block is not None:
            block.lines.append(plain(line))


def steps(lines):
    """A console block as [command, lines shown below it]."""
    found, open_command = [], False
    for line in lines:
        if open_command:
            found[-1][0] += "\n" + line
        elif line.startswith("$ "):
            found.append([line[2:], []])
        elif found:
            found[-1][1].append(line)
        elif line.strip():
            raise ValueError("the block begins with no command")
        open_command = bool(found) and not found[-1][1] and found[-1][0].endswith("\\")
    return found


class Page:
    def __init__(self, path, programs, home):
        self.path, self.programs, self.home = path, programs, home
        self.passed, self.failures, self.notes = 0, [], []

    def check(self, block, good, reason):
        if good:
            self.passed += 1
        else:
            self.failures.append("%s:%d: %s" % (self.path, block.line, reason))

    def compare(self, block, shown, text, what):
        real = masked(text)
        wrong = difference(masked("\n".join(shown)), real)
        self.check(block, wrong is None, "%s what is shown, from: %s\nIt is:\n%s"
                   % (what, wrong, "\n".join("    " + line for line in real)))

    def run(self):
        if self.path.endswith(".md"):
            check_links(self.path, self.failures)
        with tempfile.TemporaryDirectory() as scratch:
            self.prepare(scratch)
            try:
                for block in (blocks_of_man if self.path.endswith(".1") else blocks_of_markdown)(read(self.path)):
                    self.run_block(block)
            except (OSError, ValueError) as error:
                self.failures.append("%s: %s" % (self.path, error))

    def prepare(self, scratch):
        self.folder, commands = os.path.join(scratch, "run"), os.path.join(scratch, "commands")
        os.mkdir(self.folder)
        os.mkdir(commands)
        for name, program in self.programs.items():
            os.symlink(program, os.path.join(commands, name))
        os.symlink(sys.executable, os.path.join(commands, "python3"))
        if os.path.isdir(os.path.join(self.home, "examples")):
            os.symlink(os.path.join(self.home, "examples"), os.path.join(self.folder, "examples"))
        self.environment = dict(os.environ, PATH=commands + ":" + os.environ.get("PATH", ""), LC_ALL="C.UTF-8",
                                PYTHONDONTWRITEBYTECODE="1")

    def borrow(self, block):
        """The lines of the deck of another page."""
        page = os.path.join(os.path.dirname(self.path), block.options["page"])
        for other in blocks_of_markdown(read(page)):
            if other.kind == "deck" and other.options["name"] == block.options["name"]:
                return other.lines
        raise ValueError("line %d: %s shows no deck %s" % (block.line, page, block.options["name"]))

    def run_block(self, block):
        if block.kind in ("deck", "file", "borrowed"):
            with open(os.path.join(self.folder, block.options["name"]), "w", encoding="utf-8") as stream:
                lines = self.borrow(block) if block.kind == "borrowed" else block.lines
                stream.write("".join(line + "\n" for line in lines))
        elif block.kind == "console":
            needed = filter(None, block.options.get("needs", "").split(","))
            missing = [name for name in needed if not shutil.which(name, path=self.environment["PATH"])]
            if missing:
                self.notes.append("%s:%d: passed over, no %s here" % (self.path, block.line, ", ".join(missing)))
            else:
                self.run_console(block)
        elif block.kind == "text" and "file" in block.options:
            self.compare_file(block)

    def run_console(self, block):
        commands = steps(block.lines)
        script = "".join("%s\ns=$?; printf '\\n%%s %%d\\n' %s $s; (exit $s)\n" % (command, shlex.quote(MARK))
                         for command, _ in commands)
        try:
            done = subprocess.run(["sh", "-c", script], cwd=self.folder, env=self.environment, stdin=subprocess.DEVNULL,
                                  stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=TIMEOUT)
        except subprocess.TimeoutExpired:
            return self.check(block, False, "the block takes longer than %d seconds" % TIMEOUT)
        parts = re.split(r"\n%s (\d+)\n" % MARK, done.stdout.decode("utf-8", "replace"))
        for at, (command, shown) in enumerate(commands):
            if 2 * at + 1 >= len(parts):
                self.check(block, False, "`%s` ended the shell" % command)
                break
            self.compare(block, shown, parts[2 * at], "`%s` does not print" % command)
            shows_status = at + 1 < len(commands) and commands[at + 1][0] == "echo $?"
            if parts[2 * at + 1] != "0" and not shows_status:
                self.check(block, False, "`%s` ends with status %s" % (command, parts[2 * at + 1]))

    def compare_file(self, block):
        try:
            real = read(os.path.join(self.folder, block.options["file"])).split("\n")
        except OSError as error:
            return self.check(block, False, str(error))
        if "lines" in block.options:
            first, last = map(int, block.options["lines"].split("-"))
            real = real[first - 1:last]
        self.compare(block, block.lines, "\n".join(real), "%s is not" % block.options["file"])


def messages_of(source):
    """The texts of all messages in the C++ sources, up to the first figure or name in them."""
    for folder in ("abaqus", "driver", "output", "store", "support", "translate"):
        for name in sorted(os.listdir(os.path.join(source, folder))):
            if name.endswith(".cpp"):
                for text in re.findall(r'"((?:[^"\\\n]|\\.)*(?:Error>|Warning>|KIVOm: )(?:[^"\\\n]|\\.)*)"',
                                       read(os.path.join(source, folder, name))):
                    yield re.split(r"%[sd]", text.replace("\\n", ""))[0].strip()


def check_messages(source, man, failures):
    page = " ".join(plain(read(man)).split())
    passed = 0
    for message in sorted(set(messages_of(source))):
        if re.search(re.escape(" ".join(message.split())) + "(?!:)", page):
            passed += 1
        else:
            failures.append('%s: the message "%s" is missing' % (man, message))
    return passed


def can_render():
    """Whether what kivorender needs is installed."""
    has_vtk = subprocess.run(["/usr/bin/python3", "-c", "import numpy, vtkmodules"], check=False, stderr=subprocess.DEVNULL)
    return has_vtk.returncode == 0 and ("DISPLAY" in os.environ or shutil.which("xvfb-run"))


def main():
    what, _, more = __doc__.partition("\n\n")
    parser = argparse.ArgumentParser(description=what, epilog=more,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--program", required=True, metavar="PATH", help="the program that the pages call KIVOm")
    parser.add_argument("--second", metavar="PATH", help="the program that they call kivodeck")
    parser.add_argument("--renderer", metavar="PATH", help="the program that they call kivorender, which needs VTK")
    parser.add_argument("--docs", required=True, metavar="DIR", help="the folder of the pages")
    parser.add_argument("--source", metavar="DIR", help="the project, to compare messages")
    parser.add_argument("pages", nargs="*", help="pages elsewhere")
    given = parser.parse_args()
    docs = os.path.abspath(given.docs)
    programs = {"KIVOm": os.path.abspath(given.program)}
    if given.second:
        programs["kivodeck"] = os.path.abspath(given.second)
    if given.renderer and can_render():
        programs["kivorender"] = os.path.abspath(given.renderer)
    paths = [os.path.join(docs, name) for name in sorted(os.listdir(docs)) if name.endswith((".md", ".1"))]
    passed, failures = 0, []
    for path in paths + [os.path.abspath(page) for page in given.pages]:
        page = Page(path, programs, os.path.dirname(docs))
        page.run()
        print("%-50s %d" % (os.path.relpath(path), page.passed))
        passed += page.passed
        failures += page.failures
        for note in page.notes:
            print("note: " + note)
    if given.source:
        source = os.path.abspath(given.source)
        done = paths + [os.path.abspath(page) for page in given.pages]
        others = {path for pattern in ("*.md", "*/*.md", "tests/*/*.md")
                  for path in glob.glob(os.path.join(source, pattern))
                  if not os.path.relpath(path, source).startswith("build")}
        for path in sorted(others.difference(done)):  # pages without anything to run
            check_links(path, failures)
        for path in sorted(others.union(done).difference([os.path.join(source, "CHANGELOG.md")])):
            check_names(path, source, failures)  # changes tell of files that are gone
        check_words(paths + [os.path.join(source, "README.md")], failures)
        passed += check_messages(given.source, os.path.join(docs, "KIVOm.1"), failures)
    for failure in failures:
        print(failure)
    print("%d passed, %d failed" % (passed, len(failures)))
    return 1 if failures or not passed else 0


if __name__ == "__main__":
    sys.exit(main())
