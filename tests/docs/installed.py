#!/usr/bin/python3
"""Installs the documents into a folder of its own and checks them there.

    installed.py SOURCE BUILD VERSION

What pages link to must be installed, too. The installed README speaks of what is installed: its marks are gone, what
only those with the source can do is left out, and what is meant for the installed one shows. The man pages, the list of
changes and the README name this version. Exit status 0 when all is so.
"""
import pathlib
import re
import subprocess
import sys
import tempfile

from run_docs import check_links

MARKS = (("<!-- source only -->", "<!-- end of source only -->"), ("<!-- installed only", "-->"))


def parts(lines, begin, end):
    """What stands between lines `begin` and the next lines `end`; None where an end is missing."""
    found, inside = [], None
    for line in lines:
        if inside is None and line == begin:
            inside = []
        elif inside is not None and line == end:
            found, inside = found + inside, None
        elif inside is not None:
            inside.append(line)
    return found if inside is None else None


def check_readme(source, installed, failures):
    lines = source.read_text(encoding="utf-8").split("\n")
    left, shown = (parts(lines, *marks) for marks in MARKS)
    if left is None or shown is None:
        failures.append(f"{source}: a mark has no end")
        return
    hidden = [line for line in lines if line in MARKS[1] or line in MARKS[0]]
    remaining = list(lines)
    for line in left + hidden:
        remaining.remove(line)
    if sorted(installed.read_text(encoding="utf-8").split("\n")) != sorted(remaining):
        failures.append(f"{installed}: not what the marks in {source} leave")


def check_version(source, version, failures):
    for page in source.glob("docs/*.1"):
        title = page.read_text(encoding="utf-8").split("\n", 1)[0]
        if f'"KIVOm {version}"' not in title:
            failures.append(f"{page}: its title does not name version {version}: {title}")
    changes = source / "CHANGELOG.md"
    newest = re.search(r"^## (\S+) - \d{4}-\d\d-\d\d$", changes.read_text(encoding="utf-8"), re.M)
    if not newest or newest.group(1) != version:
        failures.append(f"{changes}: the newest changes are not those of {version}")
    for named in re.findall(r"kivom_(\d[\d.]*)_", (source / "README.md").read_text(encoding="utf-8")):
        if named != version:
            failures.append(f"README.md: the package of version {version} is not that of {named}")


def main():
    source, build, version = pathlib.Path(sys.argv[1]), sys.argv[2], sys.argv[3]
    failures = []
    with tempfile.TemporaryDirectory() as prefix:
        subprocess.run(["cmake", "--install", build, "--component", "documents", "--prefix", prefix], check=True,
                       stdout=subprocess.DEVNULL)
        home = pathlib.Path(prefix) / "share/doc/kivom"
        pages = sorted(home.rglob("*.md"))
        for page in pages:
            check_links(str(page), failures)
        check_readme(source / "README.md", home / "README.md", failures)
    check_version(source, version, failures)
    for failure in failures:
        print(failure)
    print(f"{len(pages)} pages, {len(failures)} failures")
    return 1 if failures or not pages else 0


if __name__ == "__main__":
    sys.exit(main())
