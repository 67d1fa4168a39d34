#!/usr/bin/env bash
# Runs both devices at real time for TUNEBOX_SOAK_SECONDS (default 60) on the
# private test sound server and checks that no buffer is lost or reordered.
# Not part of the default test run. Expects ./build to be built.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/test-audio-server.sh start
trap 'bash scripts/test-audio-server.sh stop' EXIT
eval "$(bash scripts/test-audio-server.sh env)"
./build/tests/tunebox_test_e2e --gtest_also_run_disabled_tests --gtest_filter='DeviceSoak.*'
