#!/usr/bin/python3
"""Holds what a shell offers for unfinished command lines against what the commands' own --help tells.

    run_completions.py SHELL COMPLETIONS PROGRAM...      SHELL: bash, zsh or fish

COMPLETIONS is the project's folder of that name, each PROGRAM one that has --help. For every PROGRAM and every command
that it has, the options offered must be those of --help, no more and no less, with descriptions (zsh, fish) that are the
help's or its beginning; and the values offered for an option must be those that --help lists. Bash and fish are asked as
they are when a user presses the key, zsh for what it hands to its own "_arguments". Exit status 0 when all agree.
"""
import os
import re
import subprocess
import sys

BASH = r"""
complete() { function=${@: -2:1}; }
compopt() { echo "compopt $*"; }
. "$1"
COMP_WORDS=("${@:2}")
COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
$function "$2" "${COMP_WORDS[COMP_CWORD]}" "${COMP_WORDS[COMP_CWORD - 1]}"
printf '%s\n' "${COMPREPLY[@]}"
"""
ZSH = r"""
_arguments() {
    if [[ $1 == -C && -n $verb ]]; then state=argument words=($verb); return 1; fi
    print -rl -- "$@"
    return 0
}
_call_program() { "${@:2}"; }
words=($2)
verb=$3
source_it() { . $1; }
source_it $1
"""
# What a user types, and what must be offered: nothing where the shell's own names of files are wanted.
TYPED = (
    ("kivodeck ", "check flatten run audit explain"),
    ("kivodeck ch", "check"),
    ("kivodeck --v", "--version"),
    ("kivodeck run --ov", "--overlaps"),
    ("kivodeck run --overlaps s", "smallest split"),
    ("kivodeck run a.inp --overlaps=s", "smallest split"),
    ("kivodeck run --overlaps=", "smallest first split"),
    ("kivodeck flatten --groups se", "sections sets"),
    ("kivodeck check --format=json a.inp --fail-on w", "warning"),
    ("kivodeck explain --format=m", "man markdown"),
    ("kivodeck check --format=m", ""),
    ("kivodeck explain row-end", "row-end-comma"),
    ("kivodeck explain unused-nod", "unused-node-set unused-nodes"),
    ("kivodeck audit --limit mi", "min_angle="),
    ("kivodeck audit --limit=mi", "min_angle="),
    ("kivodeck run --scale ", ""),
    ("kivodeck check no-such-fi", ""),
    ("kivodeck run --vtk no-such-fi", ""),
    ("kivodeck audit --vtk no-such-fi", ""),
    ("KIVOm --", "--vtk"),
    ("KIVOm no-such-fi", ""),
    ("kivorender --si", "--size"),
    ("kivorender --view ", ""),
    ("kivorender --audit=no-such-fi", ""),
)


class Option:
    def __init__(self, names, values, words):
        self.names, self.values, self.words = names, values, words


def help_of(command):
    """(commands, options) that `command --help` lists: names with their words, and Options."""
    text = subprocess.run(command + ["--help"], check=True, capture_output=True, text=True,
                          env=dict(os.environ, COLUMNS="200")).stdout
    verbs, options, part = {}, [], ""
    for line in text.split("\n"):
        if re.match(r"[A-Za-z][A-Za-z ]*:$", line):
            part = line.lower()
        elif part == "subcommands:" and line.startswith("  "):
            verbs.update([line.split(None, 1)])
        elif part == "options:" and line.startswith("  -"):
            left, _, words = line.strip().partition("  ")
            values = re.search(r"\{(.*)\}", left)
            options.append(Option(re.findall(r"(?<![\w-])--?[a-z][a-z-]*", left),
                                  values.group(1).split(",") if values else [], words.strip()))
        elif part == "options:" and line.startswith("   ") and options:
            options[-1].words = (options[-1].words + " " + line.strip()).strip()
    return verbs, options


def said_by(command):
    run = subprocess.run(command, capture_output=True, text=True)
    if run.stderr:
        sys.exit(f"{command[0]} says: {run.stderr}")
    return [line for line in run.stdout.split("\n") if line]


class Bash:
    def __init__(self, folder):
        self.folder = folder

    def offers(self, line):
        """{what is offered: its words, None where the shell shows none}."""
        words = line.replace("=", " = ").split() + [""] * line.endswith(" ")
        said = said_by(["bash", "-c", BASH, "bash", f"{self.folder}/{words[0]}.bash", *words])
        return {line: None for line in said if not line.startswith("compopt ")}

    def options(self, command):
        return self.offers(" ".join(command) + " -")

    def verbs(self, program):
        return self.offers(program + " ")

    def values(self, command, option):
        return list(self.offers(" ".join(command) + f" {option} "))


class Fish(Bash):
    def offers(self, line):
        said = said_by(["fish", "--no-config", "-c", f"source {self.folder}/{line.split()[0]}.fish; complete -C '{line}'"])
        typed = re.match(r"--[a-z-]+=", line.split(" ")[-1])  # fish offers it again
        pairs = [line[len(typed.group()) if typed else 0:].partition("\t") for line in said]
        return {name: words for name, _, words in pairs}

    def options(self, command):
        return self.offers(" ".join(command) + " --")


class Zsh:
    def __init__(self, folder):
        self.folder = folder

    def specs(self, command):
        """{option: (its words, the rest of what _arguments gets)}."""
        found = {}
        for line in said_by(["zsh", "-fc", ZSH, "zsh", f"{self.folder}/_{command[0]}", *command]):
            spec = re.match(r"(?:\(.*?\))?\*?(-[a-z-]+)=?\[(.*?)\](.*)", line)
            if spec:
                found[spec.group(1)] = (spec.group(2).replace("\\:", ":"), spec.group(3))
        return found

    def options(self, command):
        return {name: words for name, (words, _) in self.specs(command).items() if name.startswith("--")}

    def verbs(self, program):
        with open(f"{self.folder}/_{program}", encoding="utf-8") as stream:
            listed = re.search(r" commands=\(\n(.*?)\n\)", stream.read(), re.S)
        return dict(line.strip().strip("'").split(":", 1) for line in listed.group(1).split("\n"))

    def values(self, command, option):
        listed = re.search(r":\((.*)\)$", self.specs(command)[option][1])
        return listed.group(1).split() if listed else []


def compare(shell, command, options, failures):
    """Options of a command in a shell against those of its help."""
    long = {name: option for option in options for name in option.names if name.startswith("--")}
    offered = shell.options(command)
    if set(offered) != set(long):
        failures.append(f"{' '.join(command)}: offered are {sorted(offered)}, help lists {sorted(long)}")
        return
    for name, option in long.items():
        words = offered[name]
        if words == "" or not option.words.startswith(words or ""):
            failures.append(f"{' '.join(command)} {name}: \"{words}\" is \"{option.words}\" in the help")
        if option.values and sorted(shell.values(command, name)) != sorted(option.values):
            failures.append(f"{' '.join(command)} {name}: {shell.values(command, name)} for {option.values}")


def compare_verbs(shell, program, verbs, failures):
    offered = shell.verbs(program)
    if set(offered) != set(verbs):
        failures.append(f"{program}: offered are {sorted(offered)}, help lists {sorted(verbs)}")
    for verb in set(offered) & set(verbs):
        if offered[verb] not in (None, verbs[verb]):
            failures.append(f"{program}: {verb} is \"{offered[verb]}\", in the help \"{verbs[verb]}\"")


def main():
    name, folder, *programs = sys.argv[1:]
    os.environ["PATH"] = ":".join([*(os.path.dirname(os.path.abspath(p)) for p in programs), os.environ["PATH"]])
    os.environ["LC_ALL"] = "C.UTF-8"
    shell = {"bash": Bash, "fish": Fish, "zsh": Zsh}[name](os.path.abspath(folder))
    failures, compared = [], 0
    for program in programs:
        verbs, options = help_of([program])
        called = os.path.basename(program)
        compare(shell, [called], options, failures)
        if verbs:
            compare_verbs(shell, called, verbs, failures)
        for verb in verbs:
            compare(shell, [called, verb], help_of([program, verb])[1], failures)
        compared += 1 + len(verbs)
    known = ["KIVOm", *map(os.path.basename, programs)]
    for line, wanted in TYPED if name != "zsh" else ():
        if line.split()[0] not in known:
            continue
        offered = sorted(shell.offers(line))
        if offered != sorted(wanted.split()):
            failures.append(f"\"{line}\": offered is {offered} for {wanted.split()}")
        compared += 1
    for failure in failures:
        print(failure)
    print(f"{compared} compared, {len(failures)} differ")
    return 1 if failures or not compared else 0


if __name__ == "__main__":
    sys.exit(main())
