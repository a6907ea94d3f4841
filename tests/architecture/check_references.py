#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Holds what comments and pages point at against what is there.

- "See compatibility.md, ROW." in a source names a row of docs/compatibility.md, and each row is named by some source;
  a comment that calls something deliberate has to name one.
- A link of a page leads to a file, and to a heading where it names one.
- A test that a page names, `TestX` or `TestX::function`, exists, and so does a `scripts/...` or `docs/...` file.
"""

import pathlib
import re
import subprocess
import sys

SOURCES = re.compile(r"\.(cpp|h)$")
REFERENCE = re.compile(r"compatibility\.md(.*)(?=\n(.*))")
ROW = re.compile(r"^\| (?!row \||-)([^|]+?) \|", re.MULTILINE)
LINK = re.compile(r"\]\(([^)\s#]*)(#[^)\s]+)?\)")
TEST = re.compile(r"`(Test\w+)(?:::(\w+))?`")
FILE = re.compile(r"\b((?:scripts|docs)/[\w./-]+\.(?:sh|py|md|json))\b")


def listed(top, *patterns):
    """The files of the tree, new ones too."""
    command = ["git", "-C", str(top), "ls-files", "-z", "--cached", "--others", "--exclude-standard", "--", *patterns]
    names = subprocess.run(command, capture_output=True, text=True, check=True).stdout.split("\0")
    return sorted(name for name in names if name and (top / name).is_file())


def line_of(text, position):
    return text.count("\n", 0, position) + 1


def row_named(rest, following, rows):
    """The row behind "compatibility.md", which a comment of several lines may break; None if there is no such row."""
    whole = f"{rest.strip()} {following.strip().lstrip('/* ')}"
    for words in (rest, whole):
        row = re.split(r"[.;)]", words.strip().removeprefix(",").strip())[0].strip()
        if row in rows:
            return row
    return None


def check_rows(top, faults):
    rows = set(ROW.findall((top / "docs/compatibility.md").read_text(encoding="utf-8")))
    if len(rows) < 10:
        faults.append("docs/compatibility.md: the rows were not found")
    named = set()
    for path in filter(SOURCES.search, listed(top, "*.cpp", "*.h")):
        text = (top / path).read_text(encoding="utf-8")
        for found in REFERENCE.finditer(text):
            row = row_named(found[1], found[2], rows)
            named.add(row)
            if row is None:
                faults.append(f"{path}:{line_of(text, found.start())}: docs/compatibility.md has no row \"{found[1].strip(', ')}\"")
        for found in re.finditer(r"(?://|\*).*\bdeliberate(?:ly)?\b", text, re.IGNORECASE):
            if not path.startswith("tests/"):
                faults.append(f"{path}:{line_of(text, found.start())}: deliberate for whom? name a row of "
                              "docs/compatibility.md instead")
    faults += [f"docs/compatibility.md: no source points at \"{row}\"" for row in sorted(rows - named)]
    return len(rows)


def anchors_of(page):
    """The names under which a page's headings can be reached."""
    headings = re.findall(r"^#+ (.*)$", page.read_text(encoding="utf-8"), re.MULTILINE)
    return {"#" + re.sub(r"[^\w -]", "", heading).lower().replace(" ", "-") for heading in headings}


def check_links(top, page, text, faults):
    count = 0
    for found in LINK.finditer(text):
        name, heading = found.groups()
        if re.match(r"[a-z]+:", name):
            continue
        count += 1
        target = (top / page).parent / name if name else top / page
        if not target.exists():
            faults.append(f"{page}:{line_of(text, found.start())}: {name} is not there")
        elif heading and heading not in anchors_of(target):
            faults.append(f"{page}:{line_of(text, found.start())}: {name} has no heading {heading}")
    return count


def check_names(top, page, text, tests, faults):
    count = 0
    for found in TEST.finditer(text):
        name, function = found.groups()
        count += 1
        if name not in tests["names"]:
            faults.append(f"{page}:{line_of(text, found.start())}: there is no test {name}")
        elif function and f"::{function}(" not in tests["text"] and f" {function}(" not in tests["text"]:
            faults.append(f"{page}:{line_of(text, found.start())}: {name} has no function {function}")
    for found in FILE.finditer(text):
        count += 1
        if not (top / found[1]).exists() and not (top / page).parent.joinpath(found[1]).exists():
            faults.append(f"{page}:{line_of(text, found.start())}: {found[1]} is not there")
    return count


def all_tests(top):
    sources = listed(top, "tests/*.cpp", "tests/*.h", "tests/*CMakeLists.txt")
    text = "\n".join((top / each).read_text(encoding="utf-8") for each in sources)
    return {"names": set(re.findall(r"\bTest\w+", text)), "text": text}


def main():
    top = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else ".").resolve()
    faults = []
    rows = check_rows(top, faults)
    tests = all_tests(top)
    links = names = 0
    for page in listed(top, "*.md"):
        text = (top / page).read_text(encoding="utf-8")
        links += check_links(top, page, text, faults)
        names += check_names(top, page, text, tests, faults)
    if not links or not names:
        faults.append("no links or no names of tests were found in the pages")
    print("\n".join(faults) if faults
          else f"{rows} rows of compatibility.md, {links} links, {names} names of tests and files: all lead somewhere")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
