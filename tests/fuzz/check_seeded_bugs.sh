#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Shows that the fuzz targets find what they are for: takes one check out of a copy of the library's source, and lets the
# target search for a minute. The tree is left alone; the changed file is compiled aside and linked in front of the rest.
set -euo pipefail
export LC_ALL=C

usage() {
    cat <<TEXT
usage: tests/fuzz/check_seeded_bugs.sh [TARGET...]

Builds as scripts/fuzz.sh does, then seeds one bug for each TARGET (by default for each that has one) and says how
many seeds find it at once, and after how many seconds a search finds it that begins with the others.

Exit code: 0 when every bug was found, at once or within a minute.
TEXT
}

case "${1:-}" in
    -h|--help) usage; exit 0 ;;
    -*) usage >&2; exit 2 ;;
esac

cd "$(dirname "$0")/../.."
. scripts/build.sh fuzz
root=$PWD
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd build/fuzz

# seed FILE EXPRESSION TARGET: the target with what sed makes of the file, as $work/TARGET
seed() {
    local changed object
    changed=$work/$(basename "$1")
    sed -E "$2" "$root/$1" >"$changed"
    if cmp -s "$root/$1" "$changed"; then
        echo "seeded bugs: $1 has changed, its bug for $3 no longer fits" >&2
        exit 1
    fi
    case $1 in
        src/*) object=src/CMakeFiles/nimbrelle-objects.dir/${1#src/}.o ;;
        lab/*) object=lab/CMakeFiles/nimbrelle-lab.dir/${1#lab/}.o ;;
    esac
    local compile link
    compile=$(ninja -t commands "$object" | grep -F -- "-o $object " | tail -n 1)
    compile=${compile//"$root/$1"/$changed}
    eval "${compile//"$object"/$work/changed.o}"
    link=$(ninja -t commands "tests/fuzz/$3" | tail -n 1)
    link=${link/-o tests\/fuzz\/$3 /-o $work/$3 $work/changed.o }
    eval "${link/&& cd */}"
}

# find_it TARGET WHAT: runs it for a minute
find_it() {
    local corpus=$work/corpus-$1 file began atOnce=0
    mkdir "$corpus"
    for file in "tests/fuzz/corpus/$1"/*; do
        if "$work/$1" -timeout=10 -artifact_prefix="$work/" "$file" >/dev/null 2>&1; then
            cp "$file" "$corpus"
        else
            atOnce=$((atOnce + 1))
        fi
    done
    began=$EPOCHREALTIME
    if "$work/$1" -max_total_time=60 -timeout=10 -artifact_prefix="$work/" "$corpus" >"$work/log" 2>&1; then
        printf '%-24s NOT FOUND in 60 s, and at once by %2d seeds: %s\n' "$1" "$atOnce" "$2"
        [ "$atOnce" -gt 0 ] || failed=1
    else
        printf '%-24s found after %5.1f s, and at once by %2d seeds: %s\n' "$1" \
            "$(awk "BEGIN { print $EPOCHREALTIME - $began }")" "$atOnce" "$2"
    fi
}

failed=0
asked=" $* "
bug() {
    local target=$1
    [ "$asked" = "  " ] || [[ "$asked" == *" $target "* ]] || return 0
    seed "$2" "$3" "$target"
    find_it "$target" "$4"
}

bug FuzzFrameStream src/internal/link/Frame.cpp \
    '/end - header < frameSize/,+1d' 'a frame may end behind the buffer'
bug FuzzAcRecords src/internal/nimbrellelibrary/MainlineAnalysis.cpp \
    's/return body >= 0 && body == .*/return body >= 0 \&\& sampleSize;/' 'a record may claim more samples than it holds'
bug FuzzHandshake src/internal/session/InitialInformation.cpp \
    's/, +NT_CONFIG, +sizeof\(Gale_Cfg_t\)/, NT_CONFIG/' 'a board configuration may be short'
bug FuzzHidReports src/internal/firmware/BootloaderOperator.cpp \
    's/data.size\(\) == sizeWithTwoBytes/sizeWithTwoBytes/' 'a reply may lack its value'
bug FuzzHexText src/internal/images/HexLoader.cpp \
    's/return record.size\(\) == length \+ recordOverhead;/return length >= 0;/' 'a record may be longer than it says'
bug FuzzSerialBootloader src/internal/firmware/SerialBootloader.cpp \
    's/qBound\(0, rest, longestHardwareText\)/qMin(rest, 65535 * longestHardwareText)/' 'a hardware record may be endless'
bug FuzzCalibrationRecords src/internal/calibration/DeviceDCcalFormulas.cpp \
    's/return index\(gain\) >= gainSettings;/return index(gain) > gainSettings;/' 'there is one gain too many'
bug FuzzGaleHandler src/internal/calibration/CalibrationData.cpp \
    's/range < GaleFormulas::(current|voltage)Ranges/GaleFormulas::\1Ranges/' 'a tare may name any range'
bug FuzzMainHandler src/internal/session/InstrumentOperatorInbound.cpp \
    's/position < data.size\(\)/position >= 0/' 'an acknowledgement may lack its bytes'
bug FuzzSdCard src/internal/calibration/CsvFile.cpp \
    's/!name.contains\(QLatin1Char\([^)]*\)\)/true/' 'a file name may be a path'
bug FuzzTableFiles src/internal/calibration/CorrectionTables.cpp \
    's/ && sample < Sample\(table.size\(\)\)/ \&\& !table.empty()/' 'a sample may lie beyond the table'
bug FuzzExperimentElements src/internal/elements/BuilderContainer.cpp \
    's/element \|\| repeats == 0\)/element)/' 'an element may run no times at all'
bug FuzzExperimentFiles lab/experiments/ExperimentFile.cpp \
    's/count >= 1 && //' 'an element may run less than once'
exit $failed
