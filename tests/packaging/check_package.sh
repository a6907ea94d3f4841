#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Installs the build tree into a fresh folder and builds the consumer against it, by CMake and by pkg-config.
# usage: check_package.sh BUILD-FOLDER SOURCE-FOLDER COMPILER [COMPILER-FLAGS]
set -euo pipefail
build=$1 source=$2 compiler=$3 flags=${4:-}

root=$(mktemp -d)
simulator=
trap 'kill $simulator 2>/dev/null || true; rm -rf "$root"' EXIT
export HOME=$root/home
mkdir -p "$HOME"
cmake --install "$build" --prefix "$root/usr" >/dev/null

# begin_simulator OPTION...: as fast as it goes; its port is $port
begin_simulator() {
    mkfifo "$root/port"
    "$root/usr/bin/nimbrelle-sim" --speed max "$@" >"$root/port" &
    simulator=$!
    read -r port <"$root/port"
    rm "$root/port"
}
end_simulator() {
    kill $simulator
    wait $simulator 2>/dev/null || true
    simulator=
}

echo "== public headers alone are installed, and each compiles by itself"
includes=$(pkg-config --cflags Qt5Core)
for header in "$root"/usr/include/nimbrelle/*.h; do
    echo "#include <$(basename "$header")>" |
        "$compiler" -std=c++17 -fPIC -fsyntax-only -Werror -Wall -Wextra -I"$root/usr/include/nimbrelle" $includes -x c++ -
done

echo "== programs and their manuals are installed"
for program in nimbrelle nimbrelle-sim; do
    "$root/usr/bin/$program" --version >/dev/null
    [ -s "$root/usr/share/man/man1/$program.1" ] || { echo "no manual of $program"; exit 1; }
done

echo "== documentation, schema and examples are installed, and an example runs from there"
for file in nimbrelle/experiment.schema.json doc/Nimbrelle/README.md doc/Nimbrelle/docs/first-aid.md \
    doc/Nimbrelle/docs/gallery/first-light-time.png doc/Nimbrelle/examples/CMakeLists.txt; do
    [ -s "$root/usr/share/$file" ] || { echo "no share/$file"; exit 1; }
done
for experiment in "$root"/usr/share/doc/Nimbrelle/examples/experiments/*.json; do
    model=Alder_2_5
    case $experiment in *linked*) model=Gale ;; esac
    "$root/usr/bin/nimbrelle" plan "$experiment" --model $model >/dev/null
done

if grep -q '^NIMBRELLE_BUILD_PLOTS:BOOL=ON' "$build/CMakeCache.txt"; then
    echo "== pictures are drawn by what is installed, also from a folder that was staged and then moved"
    DESTDIR=$root/stage cmake --install "$build" >/dev/null
    mkdir "$root/moved"
    mv "$root/stage$(sed -n 's/^CMAKE_INSTALL_PREFIX:PATH=//p' "$build/CMakeCache.txt")" "$root/moved/there"
    begin_simulator --cell resistor:R=1000
    "$root/usr/bin/nimbrelle" --quiet run "$source/examples/experiments/first-light.json" --port "$port" \
        --out "$root/run" --plot >/dev/null
    end_simulator
    mv "$root/run/time.svg" "$root/of-usr.svg"
    "$root/moved/there/bin/nimbrelle" plot "$root/run"
    cmp "$root/run/time.svg" "$root/of-usr.svg"
fi

echo "== consumer by CMake"
cmake -S "$source/tests/packaging/consumer" -B "$root/consumer" -G Ninja -DCMAKE_PREFIX_PATH="$root/usr" \
    -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_CXX_FLAGS="$flags" >/dev/null
cmake --build "$root/consumer" >/dev/null
"$root/consumer/consumer"

echo "== examples"
cmake -S "$source/examples" -B "$root/examples" -G Ninja -DCMAKE_PREFIX_PATH="$root/usr" \
    -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_CXX_FLAGS="$flags" >/dev/null
cmake --build "$root/examples" >/dev/null
for example in constant_current cyclic_voltammetry differential_pulse cycling linked_cycling impedance mains_hum; do
    code=0
    "$root/examples/$example" 2>/dev/null || code=$?
    [ $code -eq 2 ] || { echo "$example without a port: exit code $code in place of 2"; exit 1; }
done

# measure EXAMPLE CELL ROWS [SIMULATOR-OPTION...]: runs it on a simulated instrument to its end
measure() {
    begin_simulator --cell "$2" "${@:4}"
    "$root/examples/$1" "$port" >"$root/$1.csv" 2>"$root/$1.log" || { echo "$1 failed:"; cat "$root/$1.log"; exit 1; }
    end_simulator
    rows=$(($(wc -l <"$root/$1.csv") - 1))
    [ $rows -eq "$3" ] || { echo "$1: $rows rows in place of $3"; exit 1; }
}
measure constant_current resistor:R=1000 100       # 10 s, a row each 0.1 s
measure cyclic_voltammetry redox 3602              # 2 s at rest by 1 s, six legs of 6 s by 10 ms
measure differential_pulse redox 121               # both ends of 0.6 V by 5 mV
measure cycling battery:Q=3600,soc=0,Rs=0.1,R=0.05,C=80 3
measure linked_cycling battery:Q=14400,soc=0,Rs=0.025,R=0.0125,C=320 3 --model Gale --channels 4
measure mains_hum resistor:R=1000 1000             # 2 s, a row each 2 ms
grep -q "50 Hz" "$root/mains_hum.log"
measure impedance warburg:Rs=20,Rct=200,C=2e-5,W=50 61 # six decades

echo "== the client in README.md"
mkdir "$root/readme"
sed -n '/^```cpp$/,/^```$/{/^```/!p}' "$source/README.md" >"$root/readme/main.cpp"
cp "$source/tests/packaging/consumer/CMakeLists.txt" "$root/readme"
cmake -S "$root/readme" -B "$root/readme/build" -G Ninja -DCMAKE_PREFIX_PATH="$root/usr" \
    -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_CXX_FLAGS="$flags" >/dev/null
cmake --build "$root/readme/build" >/dev/null

echo "== consumer by pkg-config"
libdir=$(dirname "$(find "$root/usr" -name nimbrelle.pc)")/..
export PKG_CONFIG_PATH=$libdir/pkgconfig
# shellcheck disable=SC2046 # flags are words
"$compiler" -std=c++17 -fPIC $flags "$source/tests/packaging/consumer/main.cpp" -o "$root/consumer-pc" \
    $(pkg-config --cflags --libs nimbrelle)
LD_LIBRARY_PATH=$libdir "$root/consumer-pc"

echo "== the shared library exports public classes alone"
strangers=$(nm -DC --defined-only "$libdir/libnimbrelle.so.1" | cut -d' ' -f3- |
    grep -vE '^(vtable for |typeinfo (name )?for |non-virtual thunk to |guard variable for )?Vek[A-Z]' |
    grep -vE '^(_init|_fini|__bss_start|_edata|_end|__asan.*|__odr_asan.*|_GLOBAL_.*)$' || true)
if [ -n "$strangers" ]; then
    echo "not of a public class:"
    echo "$strangers" | head -20
    exit 1
fi
