#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Runs the example experiments on simulated instruments and refreshes the pictures of docs/gallery.md.
set -euo pipefail

usage() {
    cat <<TEXT
usage: scripts/gallery.sh [--preset NAME]

Installs what is missing, builds into build/NAME (release by default), runs every experiment of the gallery on a
simulated instrument and copies the pictures to docs/gallery/.
TEXT
}

preset=release
case "${1:-}" in
    -h|--help) usage; exit 0 ;;
    --preset)
        [ $# -ge 2 ] || { usage >&2; exit 2; }
        preset=$2 ;;
    ?*) usage >&2; exit 2 ;;
esac

cd "$(dirname "$0")/.."
scripts/setup.sh
. scripts/build.sh "$preset"
programs=build/$preset
pictures=docs/gallery
work=$(mktemp -d)
simulator=
trap 'kill $simulator 2>/dev/null || true; rm -rf "$work"' EXIT
export HOME=$work # the instrument's tables and the log stay out of the user's documents

simulated=() # further options of the instrument
linked=()    # options that link its channels

# run EXPERIMENT CELL: leaves a folder of that name in $work
run() {
    mkfifo "$work/port"
    "$programs/simulator/nimbrelle-sim" --cell "$2" --speed max "${simulated[@]}" >"$work/port" &
    simulator=$!
    read -r port <"$work/port"
    rm "$work/port"
    "$programs/client/nimbrelle" --quiet run "examples/experiments/$1.json" --port "$port" --out "$work/$1" --plot \
        "${linked[@]}" >/dev/null
    kill $simulator
    wait $simulator 2>/dev/null || true
    simulator=
}

# keep EXPERIMENT PICTURE...
keep() {
    local experiment=$1 picture
    shift
    for picture in "$@"; do
        cp "$work/$experiment/$picture.png" "$pictures/$experiment-$picture.png"
    done
}

mkdir -p "$pictures"
run first-light          rc:Rs=100,R=1000,C=0.002;     keep first-light time
run cyclic-voltammetry   redox:Rs=5;                   keep cyclic-voltammetry voltammogram
run differential-pulse   redox:Rs=5;                   keep differential-pulse voltammogram
run square-wave          redox:Rs=5;                   keep square-wave voltammogram
run impedance            warburg:Rs=20,Rct=200,C=2e-05,W=50; keep impedance nyquist bode
run mott-schottky        semiconductor;                keep mott-schottky mott-schottky
run battery-cycling      battery:Q=3600,soc=0,Rs=0.1,R=0.05,C=80,efficiency=0.99
keep battery-cycling time cycling voltage-capacity differential-capacity

simulated=(--model Gale --channels 4) linked=(--link "0,1,2,3")
run linked-cycling       battery:Q=14400,soc=0,Rs=0.025,R=0.0125,C=320,efficiency=0.99
keep linked-cycling cycling
