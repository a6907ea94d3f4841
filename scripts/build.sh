# SPDX-License-Identifier: MIT
# shellcheck shell=bash
# Sourced by the other scripts: configures and builds the preset named by the first argument, quietly unless it fails.
# Further arguments go to the build, for example: --target nimbrelle-cli
mkdir -p "build/$1"
build_log="build/$1/build.log"
[ -t 2 ] && echo "building (log in $build_log)" >&2
if ! { cmake --preset "$1" && cmake --build --preset "$@"; } >"$build_log" 2>&1; then
    grep -E -A 12 'error|FAILED' "$build_log" >&2 || tail -n 40 "$build_log" >&2
    echo "the build failed; the whole log is in $build_log" >&2
    exit 1
fi
