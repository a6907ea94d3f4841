#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Makes the folder of a long battery run and measures what drawing it takes.

usage: benchmarks/long_run.py NIMBRELLE [--rows N] [--folder DIR]

NIMBRELLE is the client to measure. The folder, 1.2 GB for ten million rows, is made when it is not there and stays.
"""
import argparse
import json
import math
import os
import resource
import subprocess
import sys
import tempfile
import time

CYCLES = 100
ELEMENTS = [
    {"element": "ConstantCurrent", "current": 0.5, "samplingInterval": 0.1, "maxDuration": "none", "maxVoltage": 4.2},
    {"element": "ConstantCurrent", "current": -0.5, "samplingInterval": 0.1, "maxDuration": "none", "minVoltage": 3.0},
]
HEADINGS = ("Test Time / s,Voltage / V,Current / A,Counter Electrode Voltage / V,Temperature / degC,Charge / C,"
            "Net Charge / C,Step Count / 1,Cycle Count / 1")


def write_rows(path, rows):
    """Voltages and currents with noise in their last digits; charge that goes back and forth. Yields first rows."""
    half = rows // (2 * CYCLES)
    noise = [1e-5 * math.sin(1e4 * math.sin(index)) for index in range(4093)]
    marks = []
    moved = 0.0
    with open(path, "w", buffering=1 << 20) as table:
        table.write(HEADINGS + "\n")
        for row in range(rows):
            leg, place = divmod(row, half)
            sign = 1 if leg % 2 == 0 else -1
            step, cycle = 1 + leg % 2, 1 + leg // 2
            if place == 0:
                marks.append((step, cycle, row))
            share = place / half if sign > 0 else 1 - place / half
            wobble = noise[row % 4093]
            moved += 0.05
            net = 0.05 * half * share
            table.write(f"{0.1 * (row + 1):.17g},{3.0 + 1.2 * share + wobble:.17g},{0.5 * sign + wobble:.17g},"
                        f"{1e-6 + wobble:.17g},NaN,{moved:.17g},{net:.17g},{step},{cycle}\n")
    return marks


def make_folder(folder, rows):
    os.makedirs(folder, exist_ok=True)
    marks = write_rows(os.path.join(folder, "dc.csv"), rows)
    content = {"schemaVersion": 1, "name": "Long run", "elements": [{"repeats": CYCLES, "group": ELEMENTS}]}
    elements = [{"stepName": "Constant Current", "stepNumber": step, "cycleNumber": cycle, "substepNumber": 0,
                 "firstDcRow": row, "firstAcRow": 0} for step, cycle, row in marks]
    with open(os.path.join(folder, "run.json"), "w") as record:
        json.dump({"recordVersion": 1, "state": "completed", "experiment": {"name": "Long run", "content": content},
                   "elements": elements}, record)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("nimbrelle")
    parser.add_argument("--rows", type=int, default=10_000_000)
    parser.add_argument("--folder", default=os.path.join(tempfile.gettempdir(), "nimbrelle-long-run"))
    options = parser.parse_args()
    if not os.path.exists(os.path.join(options.folder, "run.json")):
        make_folder(options.folder, options.rows)
    begin = time.monotonic()
    subprocess.run([options.nimbrelle, "plot", options.folder], check=True)
    took = time.monotonic() - begin
    usage = resource.getrusage(resource.RUSAGE_CHILDREN)
    size = os.path.getsize(os.path.join(options.folder, "dc.csv")) / 1e6
    print(f"{size:.0f} MB of rows: {took:.1f} s, of them {usage.ru_utime + usage.ru_stime:.1f} s of the processor, "
          f"{usage.ru_maxrss / 1024:.0f} MB of memory")


if __name__ == "__main__":
    sys.exit(main())
