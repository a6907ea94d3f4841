#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Streams from 64 simulated channels for a long time and compares what was sent with what was delivered.
set -euo pipefail

usage() {
    cat <<TEXT
usage: scripts/soak.sh [--preset NAME] [--minutes N] [--speed SPEED]

Installs what is missing, builds into build/NAME and streams DC samples from 4 simulated instruments with 16 channels
each into one client, which counts them. Prints a line each minute and a table at the end.

  --preset NAME   release (the default) or debug
  --minutes N     how long; 30 by default
  --speed SPEED   instrument time against wall time, 1 to 1000, or max; 4 by default, which is 25,600 samples a second.
                  What the client cannot keep up with waits in queues of some 100 MB for each instrument.

Exit code: 0 when nothing was lost, doubled or out of order and the heap in use is as before once the last sample has
come; 1 when not; 2 when it could not start.
TEXT
}

preset=release
options=()
while [ $# -gt 0 ]; do
    case "$1" in
        -h|--help) usage; exit 0 ;;
        --preset|--minutes|--speed)
            [ $# -ge 2 ] || { usage >&2; exit 2; }
            if [ "$1" = --preset ]; then preset=$2; else options+=("$1" "$2"); fi
            shift 2 ;;
        *) usage >&2; exit 2 ;;
    esac
done

cd "$(dirname "$0")/.."
scripts/setup.sh
. scripts/build.sh "$preset"
exec "build/$preset/tests/reliability/Soak" "${options[@]}"
