#!/bin/sh
# Builds wavex and runs it on the bundled examples.
set -eu
cd "$(dirname "$0")/.."
scripts/setup.sh
cmake -S . -B build -G Ninja -DWAVEX_TESTS=OFF >/dev/null
ninja -C build -j2 wavex
for script in examples/*.wx; do
    echo "== $script"
    # A script's first lines may name its data: "#data FILE".
    data=$(sed -n 's/^#data[[:space:]]\{1,\}//p' "$script" | sed 's|^|--data examples/|' | tr '\n' ' ')
    # shellcheck disable=SC2086
    build/wavex $data "$script"
done
