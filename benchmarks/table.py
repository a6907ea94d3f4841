#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Measures the library against its references and prints the table of the results, in Markdown.

    benchmarks/table.py [BUILD_DIR]

Each program prints its rows, and the ratios of its cases on standard error. One that is not built or fails ends the
script with exit code 1.
"""

import os
import subprocess
import sys

# In the order of the table.
PROGRAMS = [
    "expansion-benchmark",
    "hex-benchmark",
    "announcement-benchmark",
    "frame-benchmark",
    "dc-record-benchmark",
    "delta-packet-benchmark",
    "waiting-benchmark",
    "fourier-benchmark",
    "version-benchmark",
]


def main():
    folder = os.path.join(sys.argv[1] if len(sys.argv) > 1 else "build/release", "benchmarks")
    missing = [name for name in PROGRAMS if not os.access(os.path.join(folder, name), os.X_OK)]
    if missing:
        sys.exit(f"not yet built in {folder}: {', '.join(missing)}; cmake --build BUILD_DIR --target benchmark-programs")
    print("| work | against | aim | measured |\n|---|---|---|---|", flush=True)
    for name in PROGRAMS:
        result = subprocess.run([os.path.join(folder, name)], check=False)
        if result.returncode != 0:
            sys.exit(f"{name} ended with {result.returncode}")


if __name__ == "__main__":
    main()
