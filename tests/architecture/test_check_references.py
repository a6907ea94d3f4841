#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""check_references.py finds each kind of reference that leads nowhere, and nothing in a tree where all of them lead."""

import pathlib
import subprocess
import sys
import tempfile
import unittest

CHECK = pathlib.Path(__file__).with_name("check_references.py")
ROWS = [f"row {number}" for number in range(10)] + ["tail at angle 0"]

SOUND = {
    "docs/compatibility.md": "# Kept\n\n| row | what |\n|---|---|\n" + "".join(f"| {row} | x |\n" for row in ROWS),
    "docs/page.md": "# A page\n\n## Two words\n\n[rows](compatibility.md), [here](#two-words), `TestA::finds`, scripts/a.sh\n",
    "scripts/a.sh": "",
    "src/all.cpp": "".join(f"// See compatibility.md, {row}.\n" for row in ROWS),
    "tests/TestA.cpp": "void TestA::finds()\n",
}

# what is appended to which file, and what the check says
FAULTS = {
    "unknown row": ("src/all.cpp", "// See compatibility.md, tail at angle 1.\n", "has no row"),
    "no row": ("src/all.cpp", "// See compatibility.md.\n", "has no row"),
    "deliberate": ("src/all.cpp", "int a = 0; // deliberate\n", "src/all.cpp:12: deliberate for whom"),
    "row without a source": ("docs/compatibility.md", "| gone | x |\n", 'no source points at "gone"'),
    "dead link": ("docs/page.md", "[x](nowhere.md)\n", "docs/page.md:6: nowhere.md is not there"),
    "dead heading": ("docs/page.md", "[x](page.md#three-words)\n", "has no heading #three-words"),
    "no such test": ("docs/page.md", "`TestB`\n", "no test TestB"),
    "no such function": ("docs/page.md", "`TestA::loses`\n", "no function loses"),
    "no such script": ("docs/page.md", "scripts/b.sh\n", "scripts/b.sh is not there"),
}

# what may stand there as well
SOUND_ADDITIONS = {
    "broken line": ("src/all.cpp", "/**\n * See compatibility.md, tail at\n * angle 0.\n */\n"),
    "behind code": ("src/all.cpp", "int a = 0; // see compatibility.md, row 1\nint b = 0;\n"),
    "with more behind it": ("src/all.cpp", "// See compatibility.md, row 2; and more.\n"),
    "elsewhere": ("docs/page.md", "[x](https://example.org/nowhere.md)\n"),
}


class CheckReferences(unittest.TestCase):
    def said_of(self, path=None, addition=""):
        with tempfile.TemporaryDirectory() as folder:
            for name, text in SOUND.items():
                file = pathlib.Path(folder, name)
                file.parent.mkdir(exist_ok=True)
                file.write_text(text + (addition if name == path else ""), encoding="utf-8")
            subprocess.run(["git", "init", "--quiet", folder], check=True)
            run = subprocess.run([sys.executable, CHECK, folder], capture_output=True, text=True, check=False)
            return run.returncode, run.stdout + run.stderr

    def test_sound(self):
        for name, case in {"as it is": (), **SOUND_ADDITIONS}.items():
            with self.subTest(name):
                code, said = self.said_of(*case)
                self.assertEqual(code, 0, said)

    def test_faults(self):
        for name, (path, addition, expected) in FAULTS.items():
            with self.subTest(name):
                code, said = self.said_of(path, addition)
                self.assertEqual(code, 1, said)
                self.assertIn(expected, said)
                self.assertEqual(said.count("\n"), 1, "one fault, one line: " + said)


if __name__ == "__main__":
    unittest.main()
