#!/usr/bin/env bash
# Runs every test: the full suite on ./build, the unit tests again under
# AddressSanitizer and UndefinedBehaviorSanitizer and in an optimised Clang
# build, and a short run of each fuzz target when clang is present. Expects
# scripts/setup.sh to have run.
set -euo pipefail
cd "$(dirname "$0")/.."

echo "== Full test suite"
# The end-to-end tests play into a private sound server, never the user's.
bash scripts/test-audio-server.sh start
trap 'bash scripts/test-audio-server.sh stop' EXIT
eval "$(bash scripts/test-audio-server.sh env)"
# Timing tests share two cores with everything else CI runs; a test that
# fails is run again up to twice and its failures stay in the log. The
# end-to-end tests share one sound server, so they run one at a time.
ctest --test-dir build --output-on-failure -j2 -LE e2e --repeat until-pass:3
ctest --test-dir build --output-on-failure -L e2e --repeat until-pass:3

echo "== End-to-end tests on PipeWire at 48,000 Hz"
# Most desktops run PipeWire, and many cards run at 48 kHz, so the server
# resamples both streams. The tests that start servers of their own take the
# set-up from these variables too.
bash scripts/test-audio-server.sh stop
export TUNEBOX_TEST_SERVER=pipewire TUNEBOX_TEST_RATE=48000
bash scripts/test-audio-server.sh start
ctest --test-dir build --output-on-failure -L e2e --repeat until-pass:3
bash scripts/test-audio-server.sh stop
unset TUNEBOX_TEST_SERVER TUNEBOX_TEST_RATE

echo "== Unit tests under AddressSanitizer and UndefinedBehaviorSanitizer"
cmake -S . -B build-asan -DCMAKE_BUILD_TYPE=Debug -DTUNEBOX_SANITIZE=ON -DTUNEBOX_WERROR=ON -DTUNEBOX_BENCH=OFF >/dev/null
cmake --build build-asan -j2
ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 \
    LSAN_OPTIONS=suppressions=$PWD/scripts/lsan-suppressions.txt \
    ctest --test-dir build-asan --output-on-failure -j2 -LE 'e2e|gui' --repeat until-pass:3

echo "== Unit tests of an optimised (-O3) Clang build"
cmake -S . -B build-release -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_COMPILER=clang++ \
    -DTUNEBOX_WERROR=ON -DTUNEBOX_BENCH=OFF >/dev/null
cmake --build build-release -j2
ctest --test-dir build-release --output-on-failure -j2 -LE 'e2e|gui' --repeat until-pass:3

if command -v clang++ >/dev/null && ls fuzz/fuzz_*.cpp >/dev/null 2>&1; then
    echo "== Short fuzz runs"
    cmake -S . -B build-fuzz -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_COMPILER=clang++ \
        -DTUNEBOX_FUZZ=ON -DTUNEBOX_WERROR=ON -DTUNEBOX_TESTS=OFF -DTUNEBOX_BENCH=OFF >/dev/null
    cmake --build build-fuzz -j2
    bash scripts/fuzz.sh "${TUNEBOX_FUZZ_SECONDS:-20}"
fi
