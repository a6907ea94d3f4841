#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Holds every #include of the tree against the table of rooms in docs/architecture.md.

A row of that table names a room, its folder, and what it may include: "below" for each room further down, else a list.
Fails on an include that the table does not allow, and on a source that stands in no room.
"""

import pathlib
import re
import subprocess
import sys

INCLUDE = re.compile(r'^\s*#\s*include\s+"([^"]+)"', re.MULTILINE)
ROW = re.compile(r"^\|\s*([\w-]+)\s*\|\s*`([^`]+)/`\s*\|\s*([^|]*?)\s*\|", re.MULTILINE)


def rooms_of(page):
    """The rows in their order: name -> (folder, names of the rooms that it may include)."""
    rows = ROW.findall(page.read_text(encoding="utf-8"))
    names = [name for name, _, _ in rows]
    rooms = {}
    for height, (name, folder, allowed) in enumerate(rows):
        known = set(re.findall(r"[\w-]+", allowed))
        if "below" in known:
            known = known - {"below"} | set(names[height + 1:])
        unknown = known - set(names)
        if unknown:
            sys.exit(f"{page}: {name} may include {', '.join(sorted(unknown))}, which the table does not have")
        rooms[name] = (folder, known | {name})
    return rooms


def room_of(path, rooms):
    """The room with the longest folder that holds the path; None where there is none."""
    inside = [(len(folder), name) for name, (folder, _) in rooms.items() if path.startswith(folder + "/")]
    return max(inside)[1] if inside else None


def included_file(path, text, files):
    """The file of the tree that an include means, or None for one that is generated or comes from elsewhere."""
    beside = str(pathlib.PurePosixPath(path).parent)
    for folder in (beside, "include", "src", "src/internal", "tests", "."):
        candidate = str(pathlib.PurePosixPath(folder) / text)
        if candidate in files:
            return candidate
    return None


def main():
    top = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else ".")
    page = top / "docs" / "architecture.md"
    rooms = rooms_of(page)
    if len(rooms) < 10:
        sys.exit(f"{page}: the table of rooms was not found")
    suffixes = {".h", ".cpp"}
    files = {str(each.relative_to(top).as_posix()) for folder in ("include", *{f for f, _ in rooms.values()})
             for each in (top / folder).rglob("*") if each.suffix in suffixes}
    listed = subprocess.run(["git", "-C", str(top), "ls-files"], capture_output=True, text=True, check=False).stdout
    strays = [f for f in listed.split() if pathlib.PurePosixPath(f).suffix in suffixes and f not in files]
    faults = [f"{path}: stands in no room of the table" for path in strays]
    count = 0
    for path in sorted(files):
        room = room_of(path, rooms)
        for text in INCLUDE.findall((top / path).read_text(encoding="utf-8")):
            target = included_file(path, text, files)
            if target is None:
                continue
            count += 1
            if room_of(target, rooms) not in rooms[room][1]:
                faults.append(f"{path}: {room} may not include {room_of(target, rooms)} ({text})")
    print("\n".join(faults) if faults else f"{count} includes between {len(rooms)} rooms: none points up")
    return 1 if faults or count < 500 else 0


if __name__ == "__main__":
    sys.exit(main())
