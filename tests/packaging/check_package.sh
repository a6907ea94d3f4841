#!/usr/bin/env bash
# Installs the build tree into a fresh folder and builds the consumer against it, by CMake and by pkg-config.
# usage: check_package.sh BUILD-FOLDER SOURCE-FOLDER COMPILER [COMPILER-FLAGS]
set -euo pipefail
build=$1 source=$2 compiler=$3 flags=${4:-}

root=$(mktemp -d)
trap 'rm -rf "$root"' EXIT
export HOME=$root/home
mkdir -p "$HOME"
cmake --install "$build" --prefix "$root/usr" >/dev/null

echo "== public headers alone are installed, and each compiles by itself"
includes=$(pkg-config --cflags Qt5Core)
for header in "$root"/usr/include/nimbrelle/*.h; do
    echo "#include <$(basename "$header")>" |
        "$compiler" -std=c++17 -fPIC -fsyntax-only -Werror -Wall -Wextra -I"$root/usr/include/nimbrelle" $includes -x c++ -
done

echo "== consumer by CMake"
cmake -S "$source/tests/packaging/consumer" -B "$root/consumer" -G Ninja -DCMAKE_PREFIX_PATH="$root/usr" \
    -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_CXX_FLAGS="$flags" >/dev/null
cmake --build "$root/consumer" >/dev/null
"$root/consumer/consumer"

echo "== examples"
cmake -S "$source/examples" -B "$root/examples" -G Ninja -DCMAKE_PREFIX_PATH="$root/usr" \
    -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_CXX_FLAGS="$flags" >/dev/null
cmake --build "$root/examples" >/dev/null
for example in constant_current cyclic_voltammetry differential_pulse cycling impedance; do
    code=0
    "$root/examples/$example" 2>/dev/null || code=$?
    [ $code -eq 2 ] || { echo "$example without a port: exit code $code in place of 2"; exit 1; }
done

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
