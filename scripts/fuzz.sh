#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Lets the fuzz targets search for inputs that break a promise.
set -euo pipefail

usage() {
    cat <<TEXT
usage: scripts/fuzz.sh [--seconds N] [--list] [TARGET...]

Installs what is missing, builds into build/fuzz (clang, with the address and undefined-behaviour sanitizers) and runs
each TARGET, all of them by default, for N seconds (600 by default), one after the other. One line for each says how
many inputs it has tried in all and in a second.

  --seconds N   how long each target runs
  --list        prints the names of the targets and ends

What a target has learned stays in build/fuzz/learned/TARGET and is where its next run begins. An input that breaks
something is kept in build/fuzz/findings, with the report beside it; build/fuzz/tests/fuzz/TARGET FILE runs it again.

Exit code: 0 without a finding, 1 with one.
TEXT
}

seconds=600
only_list=no
while [ $# -gt 0 ]; do
    case "$1" in
        -h|--help) usage; exit 0 ;;
        --seconds)
            [[ "${2:-}" =~ ^[1-9][0-9]*$ ]] || { usage >&2; exit 2; }
            seconds=$2; shift 2 ;;
        --list) only_list=yes; shift ;;
        -*) usage >&2; exit 2 ;;
        *) break ;;
    esac
done

cd "$(dirname "$0")/.."
mapfile -t targets < <(sed -n 's/^ *nimbrelle_add_fuzz_target(\(Fuzz[A-Za-z]*\).*/\1/p' tests/fuzz/CMakeLists.txt)
if [ $only_list = yes ]; then
    printf '%s\n' "${targets[@]}"
    exit 0
fi
for target in "$@"; do
    printf '%s\n' "${targets[@]}" | grep -qx -- "$target" || { echo "fuzz: there is no target $target" >&2; exit 2; }
done
[ $# -eq 0 ] || targets=("$@")

scripts/setup.sh
. scripts/build.sh fuzz

binaries=build/fuzz/tests/fuzz
findings=build/fuzz/findings
mkdir -p "$findings"
failed=0
for target in "${targets[@]}"; do
    learned=build/fuzz/learned/$target
    report=$findings/$target.log
    mkdir -p "$learned"
    verdict="no finding"
    leaks=1
    longest=0 # as long as the longest seed
    case $target in
        # Other threads free later, so every input would be suspected; what leaks shows at the end.
        FuzzGaleHandler|FuzzMainHandler|FuzzSerialBootloader) leaks=0 ;;
        FuzzExperimentFiles) longest=4096 ;; # a long file only says more of the same, and takes its time
    esac
    if ! "$binaries/$target" -detect_leaks=$leaks -max_len=$longest -max_total_time="$seconds" -timeout=10 \
            -print_final_stats=1 -artifact_prefix="$findings/$target-" "$learned" "$binaries/corpus/$target" >"$report" 2>&1; then
        verdict="FINDING, see $report"
        failed=1
    fi
    awk -v target="$target" -v verdict="$verdict" '
        /^stat::number_of_executed_units/ { inputs = $2 }
        /^stat::average_exec_per_sec/ { rate = $2 }
        END { printf "%-24s %10d inputs %8d a second   %s\n", target, inputs, rate, verdict }' "$report"
done
exit $failed
