#!/usr/bin/env bash
# Runs the converter benchmark and prints each path in times real time and the
# MP3 path's cost relative to libmpg123 decoding the same file alone.
set -euo pipefail
cd "$(dirname "$0")/.."
json=$(mktemp)
trap 'rm -f "$json"' EXIT
./build/bench/converter_bench --benchmark_repetitions="${1:-3}" \
    --benchmark_report_aggregates_only=true --benchmark_format=json >"$json"
python3 - "$json" <<'PY'
import json, sys
benchmarks = json.load(open(sys.argv[1]))["benchmarks"]
medians = [b for b in benchmarks if b.get("aggregate_name") == "median"]
runs = {b["run_name"]: b for b in (medians or benchmarks)}
for name, run in runs.items():
    print(f"{name:28s} {run['x_realtime']:8.0f}x real time")
ratio = runs["ConverterMp3SystemCodec"]["cpu_time"] / runs["Libmpg123Alone"]["cpu_time"]
print(f"MP3 through the converter costs {ratio:.2f}x libmpg123 alone (target at most 1.5)")
PY
