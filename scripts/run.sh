#!/bin/sh
# Builds wavex and runs it on the bundled examples.
set -eu
cd "$(dirname "$0")/.."
scripts/setup.sh
cmake -S . -B build -G Ninja -DWAVEX_TESTS=OFF >/dev/null
ninja -C build -j2 wavex
mkdir -p build/plots
for script in examples/*.wx; do
    echo "== $script"
    # A script's first lines may name its data, "#data FILE", and a picture of its curves,
    # "#plot FILE" (written to build/plots/).
    data=$(sed -n 's/^#data[[:space:]]\{1,\}//p' "$script" | sed 's|^|--data examples/|' | tr '\n' ' ')
    plot=$(sed -n 's/^#plot[[:space:]]\{1,\}//p' "$script" | head -n 1)
    # shellcheck disable=SC2086
    build/wavex $data ${plot:+--plot build/plots/$plot} "$script"
    [ -z "$plot" ] || echo "(plot written to build/plots/$plot)"
done
