#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# First light: runs a DC experiment on a simulated instrument, draws it, and compares it with the cell's equations.
set -euo pipefail

usage() {
    cat <<TEXT
usage: scripts/demo.sh [FOLDER]

Installs what is missing, builds into build/release, starts a simulated instrument with a known cell, runs
examples/experiments/first-light.json on it and records the run in FOLDER (a fresh one below build/ by default).

Exit code: 0 when the measured values agree with the cell's equations within 0.01 %.
TEXT
}

case "${1:-}" in
    -h|--help) usage; exit 0 ;;
    -*) usage >&2; exit 2 ;;
esac

here=$PWD
cd "$(dirname "$0")/.."
out=${1:-build/demo-$(date +%Y%m%d-%H%M%S)}
case "$out" in /*) ;; *) [ $# -gt 0 ] && out=$here/$out ;; esac

scripts/setup.sh
. scripts/build.sh release --target nimbrelle-cli nimbrelle-sim
export PATH="$PWD/build/release/client:$PWD/build/release/simulator:$PATH"

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export HOME=$work # the instrument's tables and the log stay out of the user's documents
port=$work/port
nimbrelle-sim --model Alder_2_5 --channels 8 --name Demo --cell rc:Rs=100,R=1000,C=0.01 --speed 10 --link "$port" \
    >/dev/null &
simulator=$!
trap 'kill $simulator 2>/dev/null; wait $simulator 2>/dev/null || true; rm -rf "$work"' EXIT
for _ in $(seq 100); do [ -e "$port" ] && break; sleep 0.05; done

echo "== nimbrelle info"
nimbrelle info "$port"
echo
echo "== nimbrelle plan"
nimbrelle plan examples/experiments/first-light.json --model Alder_2_5
echo
echo "== nimbrelle run"
nimbrelle run examples/experiments/first-light.json --port "$port" --channel 2 --out "$out" --plot
echo
echo "== measured against the cell: 100 Ohm in series with 1 kOhm across 10 mF"
# The first constant current runs from 5 s to 15 s, the first constant potential from 15 s to 25 s.
LC_ALL=C awk -F, '
    function expect(what, measured, computed, unit) {
        deviation = 100 * (measured - computed) / computed
        printf "%-44s %12.6f %s  expected %10.6f  deviation %+.4f %%\n", what, measured, unit, computed, deviation
        if (deviation < -0.01 || deviation > 0.01) failed = 1
        found++
    }
    function near(moment) { return time > moment - 1e-3 && time < moment + 1e-3 }
    NR == 1 { for (i = 1; i <= NF; i++) column[$i] = i; next }
    { time = $column["Test Time / s"]; volts = $column["Voltage / V"]; amperes = $column["Current / A"]
      coulombs = 3600 * $column["Net Capacity / Ah"] }
    near(10) { expect("voltage after 5 s at 1 mA", 1e3 * volts, 100 + 1000 * (1 - exp(-0.5)), "mV") }
    near(15) { expect("voltage after 10 s at 1 mA", 1e3 * volts, 100 + 1000 * (1 - exp(-1)), "mV")
               expect("charge after 10 s at 1 mA", 1e3 * coulombs, 10, "mC") }
    near(24.9) { # the capacitor goes on from where the current left it, with R || Rs as its resistance
        start = 1 - exp(-1); settled = 0.5 / 1.1; tau = 1000 * 100 / 1100 * 0.01
        capacitor = settled + (start - settled) * exp(-9.9 / tau)
        expect("current after 9.9 s at 500 mV", 1e3 * amperes, 1e3 * (0.5 - capacitor) / 100, "mA") }
    END { if (found != 4) print "4 values were to be compared, " found + 0 " were found"; exit failed || found != 4 }' "$out/dc.csv"
echo
echo "data and pictures are in $out: $(cd "$out" && echo *)"
echo "the programs are $PWD/build/release/client/nimbrelle and $PWD/build/release/simulator/nimbrelle-sim"
