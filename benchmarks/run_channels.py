#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""What a recorded row costs the client: processor time of `nimbrelle run` on 1 and on 64 channels of a Gale.

    benchmarks/run_channels.py [BUILD_DIR] [ROWS_PER_RUN]

Both runs record about the same number of rows, once from one channel and once from all of them, on a simulator that
sends as fast as it can. Prints microseconds a row and their ratio.
"""

import json
import os
import subprocess
import sys
import tempfile

CHANNELS = 64


def seconds_and_rows(build, folder, channels, rows):
    """Processor time of the client alone, and what it has recorded."""
    name = os.path.join(folder, f"run-{channels}")
    interval = 0.01
    experiment = {"schemaVersion": 1, "name": "Stream", "elements": [
        {"element": "ConstantCurrent", "current": "10 mA", "samplingInterval": interval,
         "maxDuration": interval * rows / channels}]}
    with open(name + ".json", "w", encoding="utf-8") as file:
        json.dump(experiment, file)
    simulator = subprocess.Popen(
        [f"{build}/simulator/nimbrelle-sim", "--model", "Gale", "--channels", str(CHANNELS), "--speed", "max"],
        stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
    try:
        port = simulator.stdout.readline().strip()
        client = subprocess.Popen(
            [f"{build}/client/nimbrelle", "run", name + ".json", "--port", port, "--quiet", "--out", name,
             "--channel", ",".join(map(str, range(channels)))], stdout=subprocess.DEVNULL)
        _, status, usage = os.wait4(client.pid, 0)
        client.returncode = os.waitstatus_to_exitcode(status)
        if client.returncode != 0:
            sys.exit(f"nimbrelle run ended with {client.returncode}")
    finally:
        simulator.terminate()
        simulator.wait()
    count = 0
    for path, _, files in os.walk(name):
        if "dc.csv" in files:
            with open(os.path.join(path, "dc.csv"), "rb") as file:
                count += sum(1 for _ in file) - 1
    return usage.ru_utime + usage.ru_stime, count


def main():
    build = sys.argv[1] if len(sys.argv) > 1 else "build/release"
    rows = int(sys.argv[2]) if len(sys.argv) > 2 else 640000
    costs = {}
    with tempfile.TemporaryDirectory() as folder:
        for channels in (1, CHANNELS):
            idle, fewest = seconds_and_rows(build, folder, channels, channels)  # the handshake and the start
            os.rename(os.path.join(folder, f"run-{channels}"), os.path.join(folder, f"start-{channels}"))
            busy, most = seconds_and_rows(build, folder, channels, rows)
            costs[channels] = (busy - idle) / (most - fewest) * 1e6
            print(f"{channels:2} channels: {costs[channels]:.2f} us a row ({most} rows)")
    print(f"ratio: {costs[CHANNELS] / costs[1]:.2f}")


if __name__ == "__main__":
    main()
