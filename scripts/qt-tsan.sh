#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Builds the Qt of the thread sanitizer's tests, unless it is there, and prints the folder that it lies in.
set -Eeuo pipefail # -E: what fails inside of a function is told as well

usage() {
    cat <<TEXT
usage: scripts/qt-tsan.sh

Builds Qt Core, Test and SerialPort with the thread sanitizer, from the source packages of the Qt that is installed, and
prints the folder that they lie in. Once for each version: about 15 minutes on two idle cores, 1 GB while it lasts.

Environment: XDG_CACHE_HOME   where the result is kept, in nimbrelle/ (default: ~/.cache)
             NIMBRELLE_JOBS   compilers at a time (default: the number of cores)
TEXT
}

case "${1:-}" in
    -h|--help) usage; exit 0 ;;
    ?*) usage >&2; exit 2 ;;
esac

cache=${XDG_CACHE_HOME:-$HOME/.cache}/nimbrelle
version=$(dpkg-query -W -f='${source:Version}' libqt5core5a)
prefix=$cache/qt-tsan-$version
work=$cache/qt-tsan-work
log=$work/build.log
jobs=${NIMBRELLE_JOBS:-$(nproc)}

say() { echo "qt-tsan: $*" >&2; }

# Until the command ends, tells once a minute how many files have been compiled.
with_progress() {
    "$@" >>"$log" 2>&1 &
    local command=$! seconds=0
    while kill -0 "$command" 2>/dev/null; do
        sleep 1
        [ $((++seconds % 60)) -ne 0 ] || say "$(grep -c '^clang.* -c ' "$log") files compiled"
    done
    wait "$command"
}

# fetch_source PACKAGE VERSION: unpacks a source package into $work/PACKAGE. The lists of source packages are read into
# the work folder; the machine's own stay as they are.
fetch_source() {
    [ -d "$work/$1" ] && return
    local lists=(-o "Dir::Etc::SourceList=$work/apt/sources.list" -o Dir::Etc::SourceParts=- -o "Dir::State=$work/apt"
                 -o "Dir::Cache=$work/apt")
    mkdir -p "$work/apt/lists/partial" "$work/apt/archives/partial"
    # shellcheck disable=SC2016 # the names are apt's
    apt-get indextargets --format 'deb-src $(REPO_URI) $(RELEASE) $(COMPONENT)' 'Created-By: Packages' 'Origin: Debian' |
        sort -u >"$work/apt/sources.list"
    [ -s "$work/apt/sources.list" ] || say "apt knows no package source yet: run apt-get update"
    (
        cd "$work" && rm -rf "$1.part" &&
            apt-get "${lists[@]}" update &&
            apt-get "${lists[@]}" source --download-only "$1=$2" &&
            dpkg-source --extract "$1"_*.dsc "$1.part" &&
            touch "$1.part/.git" && # as in a checkout: the build then makes its forwarding headers
            mv "$1.part" "$1"
    ) >>"$log" 2>&1
}

configure_base() {
    # Line numbers are all that a report needs of the debug information; more, and more optimised, takes twice as long.
    sed -i 's/^\(QMAKE_CFLAGS_RELEASE_WITH_DEBUGINFO *+=\).*/\1 -O1 -g1/; s/^\(QMAKE_CFLAGS_OPTIMIZE_FULL *=\).*/\1 -O1/' \
        ../qtbase-opensource-src/mkspecs/common/gcc-base.conf
    ../qtbase-opensource-src/configure -prefix "$prefix" -opensource -confirm-license -platform linux-clang \
        -sanitize thread -release -force-debug-info -no-gui -no-widgets -no-dbus -no-openssl -no-glib -no-icu -no-pch \
        -nomake tests -nomake examples -nomake tools \
        -no-feature-sql -no-feature-network -no-feature-xml -no-feature-concurrent
}

# Goes on where an earlier attempt was interrupted.
build_base() {
    mkdir -p "$work/base"
    cd "$work/base"
    [ -e config.summary ] || configure_base
    [ -e src/Makefile ] || make sub-src-qmake_all
    make -C src -j"$jobs" sub-moc sub-rcc
    local tool
    for tool in moc rcc; do # the same programs, ten times as fast as instrumented ones
        cmp -s /usr/lib/qt5/bin/$tool bin/$tool || cp /usr/lib/qt5/bin/$tool bin/
    done
    make -C src -j"$jobs" sub-corelib sub-testlib
    make -C src sub-rcc-install_subtargets sub-corelib-install_subtargets sub-testlib-install_subtargets
    make sub-qmake-qmake-aux-pro-install_subtargets install_mkspecs
}

build_serial_port() {
    mkdir -p "$work/serialport"
    cd "$work/serialport"
    "$prefix/bin/qmake" ../qtserialport-opensource-src
    make -j"$jobs" sub-src
    make -C src install
}

# Debian's library beside our Qt Core: its own few fields go unwatched, buffers, notifiers and signals are Qt Core's.
borrow_serial_port() {
    local debian
    debian=/usr/lib/$(dpkg-architecture -qDEB_HOST_MULTIARCH)
    cp -a "$debian"/libQt5SerialPort.so* "$prefix/lib/"
    cp -a "/usr/include/${debian##*/}/qt5/QtSerialPort" "$prefix/include/"
    cp -a "$debian/cmake/Qt5SerialPort" "$prefix/lib/cmake/"
    sed -i "s,/\.\./\.\./\.\./\.\./,/../../../,; s,/lib/${debian##*/}/,/lib/,; s,/include/${debian##*/}/qt5/,/include/,g" \
        "$prefix/lib/cmake/Qt5SerialPort/Qt5SerialPortConfig.cmake"
}

mkdir -p "$work"
exec 9>"$cache/qt-tsan.lock"
flock 9 # whoever comes second finds it built
if [ ! -e "$prefix/complete" ]; then
    "$(dirname "$0")/setup.sh" --tsan
    say "building Qt $version for the thread sanitizer; log in $log"
    trap 'tail -n 20 "$log" >&2; say "failed; the whole log is in $log"' ERR
    fetch_source qtbase-opensource-src "$version"
    with_progress build_base
    if fetch_source qtserialport-opensource-src "$(dpkg-query -W -f='${source:Version}' libqt5serialport5)"; then
        with_progress build_serial_port
    else
        say "the source of Qt SerialPort cannot be had; Debian's own library takes its place"
        borrow_serial_port
    fi
    touch "$prefix/complete"
    rm -rf "$work"
fi
echo "$prefix"
