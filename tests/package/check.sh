#!/bin/sh
# Installs wavex from BUILD into a scratch prefix and builds the consumer against it twice, with
# find_package and with pkg-config; each must print the version and db([10]) = 20.
set -eu
build=$1 scratch=$2 version=$3
here=$(cd "$(dirname "$0")" && pwd)
rm -rf "$scratch"
cmake --install "$build" --prefix "$scratch/prefix" >/dev/null

cmake -S "$here" -B "$scratch/cmake" -G Ninja -DCMAKE_PREFIX_PATH="$scratch/prefix" >/dev/null
cmake --build "$scratch/cmake" >/dev/null
out=$("$scratch/cmake/consumer")
[ "$out" = "$version 20" ] || { echo "find_package consumer printed '$out'"; exit 1; }

pcdir=$(dirname "$(find "$scratch/prefix" -name wavex.pc)")
flags=$(PKG_CONFIG_PATH="$pcdir" pkg-config --cflags --libs wavex)
# shellcheck disable=SC2086
${CXX:-c++} -std=c++20 "$here/consumer.cpp" -o "$scratch/pc-consumer" $flags -Wl,-rpath,"$(dirname "$pcdir")"
out=$("$scratch/pc-consumer")
[ "$out" = "$version 20" ] || { echo "pkg-config consumer printed '$out'"; exit 1; }
echo "both consumers print '$out'"
