#!/bin/sh
# Builds and runs the whole test suite: a release build, then a build under AddressSanitizer and
# UndefinedBehaviorSanitizer, the tests of interpreters on several threads under ThreadSanitizer,
# then each fuzz target for a short run.
set -eu
cd "$(dirname "$0")/.."
scripts/setup.sh
jobs=2
fuzz_seconds=${WAVEX_FUZZ_SECONDS:-20}

echo "== release build and tests"
cmake -S . -B build -G Ninja -DWAVEX_TESTS=ON -DWAVEX_BENCH=ON >/dev/null
ninja -C build -j$jobs
ctest --test-dir build -j$jobs --output-on-failure --timeout 300

echo "== sanitizer build and tests"
cmake -S . -B build-asan -G Ninja -DWAVEX_TESTS=ON -DWAVEX_SANITIZE=ON -DCMAKE_BUILD_TYPE=Debug >/dev/null
ninja -C build-asan -j$jobs
ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 \
    ctest --test-dir build-asan -j$jobs --output-on-failure --timeout 600

echo "== thread sanitizer: interpreters on several threads"
cmake -S . -B build-tsan -G Ninja -DWAVEX_TESTS=ON -DWAVEX_TSAN=ON -DCMAKE_BUILD_TYPE=Debug >/dev/null
ninja -C build-tsan -j$jobs wavex_tests
TSAN_OPTIONS=halt_on_error=1 build-tsan/wavex_tests --gtest_filter='Interpreter*'

echo "== fuzzing, ${fuzz_seconds}s per target"
CC=clang CXX=clang++ cmake -S . -B build-fuzz -G Ninja -DWAVEX_FUZZ=ON -DWAVEX_TESTS=OFF \
    -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
ninja -C build-fuzz -j$jobs
for src in fuzz/*.cpp; do
    name=$(basename "$src" .cpp)
    corpus="build-fuzz/corpus-$name"
    mkdir -p "$corpus"
    seeds="fuzz/seeds/$name"
    [ -d "$seeds" ] || seeds=""
    echo "-- $name"
    log="build-fuzz/$name.log"
    # shellcheck disable=SC2086
    if ! "build-fuzz/$name" -seed=1 -max_total_time="$fuzz_seconds" -timeout=10 -rss_limit_mb=2048 \
        -artifact_prefix=build-fuzz/ -print_final_stats=1 "$corpus" $seeds >"$log" 2>&1; then
        tail -n 60 "$log"
        echo "fuzz target $name failed"
        exit 1
    fi
    tail -n 4 "$log"
done
echo "== all tests passed"
