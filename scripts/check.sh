#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# What a machine can check without a build. usage() says how it is called, checks what there is.
set -euo pipefail

checks=(format shell python references licence tidy)

usage() {
    cat <<'EOF'
usage: scripts/check.sh [--all | --short | --base REF] [CHECK...]

Checks the tree without building it; without CHECK, by all of these:

  format      C++ sources look as .clang-format has them
  shell       shell scripts have no fault that shellcheck warns of
  python      Python files compile, and pyflakes finds nothing
  references  what comments and pages point at is there
  licence     each source says SPDX-License-Identifier: MIT in its first lines
  tidy        C++ sources have no fault that .clang-tidy asks for; only those that differ from REF, unless told otherwise

  --all       tidy looks at all sources of the library, the programs and the simulator (half an hour on two idle cores)
  --short     tidy looks at the sources that decide what a cell is driven with
  --base REF  tidy looks at what differs from REF; if not given, from where the branch left main

Ends with 0 if all is well, 1 if a check failed, 2 if it was called wrongly. Installs what it needs (scripts/setup.sh --check).
EOF
}

# --- which files ---

# tracked PATTERN...: files of the tree, new ones too, that are there
tracked() {
    git ls-files --cached --others --exclude-standard -- "$@" | while IFS= read -r file; do
        if [ -f "$file" ]; then echo "$file"; fi
    done
}

# starting_with EXPRESSION: of the files on standard input those whose first line fits
starting_with() {
    while IFS= read -r file; do
        if head -n 1 "$file" | tr -d '\0' | grep -qE "$1"; then echo "$file"; fi
    done
}

cpp_sources() { tracked '*.cpp' '*.h'; }
python_files() { tracked '*.py'; }
shell_scripts() {
    { tracked '*.sh'; tracked '.ci/*' 'tests/usb/guest/*' 'scripts/*' | starting_with '^#!.*sh\b'; } | sort -u
}

# What says by itself under which licence it is: code, be it compiled, interpreted or read by CMake.
licensed_files() {
    { cpp_sources; python_files; shell_scripts; tracked '*.cmake' 'CMakeLists.txt' '*/CMakeLists.txt'; } | sort -u
}

# Files without their SPDX line. It stands in one of the first three: a script has its interpreter before it.
without_licence() {
    licensed_files | while IFS= read -r file; do
        head -n 3 "$file" | grep -qF 'SPDX-License-Identifier: MIT' || echo "$file"
    done
}

# Of the sources that clang-tidy is given: those that a mistake in would let a cell be driven otherwise than asked.
short_list=(
    src/internal/handlers/VekInstrumentHandlerPrivateRequests.cpp
    src/internal/handlers/GaleInstrumentHandler.cpp
    src/internal/session/InstrumentOperator.cpp
    src/internal/elements/NodeExpansion.cpp
    src/internal/elements/NodeMakers.cpp
    src/internal/calibration/CalibrationData.cpp
    src/internal/link/SerialThread.cpp
    src/internal/firmware/SerialBootloader.cpp
)

# changed_since REF: C++ sources that differ from it, a changed header by the source beside it
changed_since() {
    { git diff --name-only "$1" -- '*.cpp' '*.h'; git ls-files --others --exclude-standard -- '*.cpp' '*.h'; } |
        sed 's/\.h$/.cpp/' | sort -u | while IFS= read -r file; do
            if [ -f "$file" ]; then echo "$file"; fi
        done
}

tidied() {
    case $scope in
        all) tracked 'src/*.cpp' 'client/*.cpp' 'lab/*.cpp' 'plots/*.cpp' 'simulator/*.cpp' ;;
        short) printf '%s\n' "${short_list[@]}" ;;
        changed) changed_since "${base:-$(git merge-base HEAD main 2>/dev/null || git rev-parse HEAD)}" ;;
    esac | grep -vE '^(tests/usb|tests/packaging|examples)/' || true # which are no part of the build
}

# --- the checks: each prints what it found, and fails if that was anything; "looked" says at how much it looked ---

count() { looked="$(wc -l <"$1") $2"; }

check_format() {
    cpp_sources >"$work/files"
    count "$work/files" sources
    xargs -d '\n' clang-format --dry-run -Werror <"$work/files"
}

check_shell() {
    shell_scripts >"$work/files"
    count "$work/files" scripts
    xargs -d '\n' shellcheck --severity=warning --external-sources <"$work/files"
}

check_python() {
    python_files >"$work/files"
    count "$work/files" files
    xargs -d '\n' python3 -c '
import sys
for name in sys.argv[1:]:
    compile(open(name, encoding="utf-8").read(), name, "exec")' <"$work/files" &&
    xargs -d '\n' pyflakes3 <"$work/files"
}

check_references() { looked=$(python3 tests/architecture/check_references.py) || { echo "$looked"; return 1; }; }

check_licence() {
    licensed_files >"$work/files"
    count "$work/files" files
    without_licence >"$work/without"
    sed 's/$/: no SPDX-License-Identifier: MIT in the first three lines/' "$work/without"
    [ ! -s "$work/without" ]
}

check_tidy() {
    tidied >"$work/files"
    count "$work/files" "sources ($scope)"
    [ -s "$work/files" ] || return 0
    cmake --preset tidy >"$work/log" 2>&1 || { cat "$work/log"; return 1; }
    xargs -d '\n' -n 1 -P "$(nproc)" nice clang-tidy -p build/tidy --quiet --warnings-as-errors='*' <"$work/files" 2>"$work/log" ||
        { grep -E 'error:|No such file' "$work/log"; return 1; }
}

# --- what is asked for ---

scope=changed base='' asked=()
while [ $# -gt 0 ]; do
    case $1 in
        --help | -h) usage; exit 0 ;;
        --all) scope=all ;;
        --short) scope=short ;;
        --base) [ $# -gt 1 ] || { usage >&2; exit 2; }; base=$2; shift ;;
        -*) echo "check: there is no option $1" >&2; usage >&2; exit 2 ;;
        *)
            [[ " ${checks[*]} " == *" $1 "* ]] || { echo "check: there is no check $1, but ${checks[*]}" >&2; exit 2; }
            asked+=("$1") ;;
    esac
    shift
done
[ ${#asked[@]} -gt 0 ] || asked=("${checks[@]}")

cd "$(dirname "$0")/.."
git rev-parse --git-dir >/dev/null 2>&1 || { echo "check: a clone is needed, to know which files belong to the tree" >&2; exit 2; }
if [ -n "$base" ]; then
    git rev-parse --verify --quiet "$base^{commit}" >/dev/null || { echo "check: there is no commit $base" >&2; exit 2; }
fi
scripts/setup.sh --check

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failed=()
for name in "${asked[@]}"; do
    looked=''
    if "check_$name" >"$work/found" 2>&1; then verdict=passed; else verdict=FAILED failed+=("$name"); fi
    printf '%-10s %s: %s\n' "$name" "$verdict" "$looked"
    [ "$verdict" = passed ] || sed 's/^/    /' "$work/found"
done
if [ ${#failed[@]} -gt 0 ]; then
    echo "failed: ${failed[*]}"
    exit 1
fi
