#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Runs the tests under the thread sanitizer, with a Qt that is instrumented as well.
set -euo pipefail

usage() {
    cat <<TEXT
usage: scripts/tsan.sh [CTEST-OPTION...]

Builds everything into build/tsan with the thread sanitizer, against a Qt of the same kind (scripts/qt-tsan.sh builds that
once), lets a deliberate race be found, and runs the tests. Reports go to build/tsan/reports, one file for each process.

  CTEST-OPTION    handed on, for example: -R TestLink (default: -L 'unit|end_to_end')

Exit code: 0 when every test passed and no process reported anything.
TEXT
}

case "${1:-}" in
    -h|--help) usage; exit 0 ;;
esac
[ $# -gt 0 ] || set -- -L 'unit|end_to_end'

cd "$(dirname "$0")/.."
scripts/setup.sh
NIMBRELLE_TSAN_QT=$(scripts/qt-tsan.sh)
export NIMBRELLE_TSAN_QT
. scripts/build.sh tsan

canary_log=build/tsan/canary.log
if ! ctest --preset tsan -L canary --verbose >"$canary_log" 2>&1; then
    cat "$canary_log" >&2
    echo "tsan: the sanitizer misses a deliberate race or reports one that is none, so it proves nothing" >&2
    exit 1
fi
grep -h 'SUMMARY: ThreadSanitizer' "$canary_log" | sed 's/^.*SUMMARY/canary: found as it must be: SUMMARY/'

reports=$PWD/build/tsan/reports
rm -rf "$reports"
mkdir -p "$reports"
result=0
TSAN_OPTIONS="exitcode=66 halt_on_error=0 second_deadlock_stack=1 log_path=$reports/report log_exe_name=1" \
    ctest --preset tsan "$@" || result=$?
if grep -rhs 'SUMMARY: ThreadSanitizer' "$reports" | sort | uniq -c | sort -rn; then
    echo "tsan: the reports above stand in $reports"
    exit 1
fi
echo "tsan: no process reported anything"
exit "$result"
