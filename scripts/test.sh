#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Builds Nimbrelle and runs all its tests.
set -euo pipefail

usage() {
    cat <<TEXT
usage: scripts/test.sh [--preset NAME] [CTEST-OPTION...]

Installs what is missing, builds into build/NAME and runs the tests there, ending with CTest's summary.

  --preset NAME   release (the default), debug or asan (address, undefined and leak sanitizers)
  CTEST-OPTION    handed on, for example: -R TestLink --output-on-failure

Exit code: 0 when every test passed.
TEXT
}

preset=release
case "${1:-}" in
    -h|--help) usage; exit 0 ;;
    --preset)
        [ $# -ge 2 ] || { usage >&2; exit 2; }
        preset=$2; shift 2 ;;
esac

cd "$(dirname "$0")/.."
scripts/setup.sh
. scripts/build.sh "$preset"
exec ctest --preset "$preset" "$@"
