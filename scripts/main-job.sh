#!/usr/bin/env bash
# The main job: make the demo accompaniment and show what Tunebox reads in it.
set -euo pipefail
cd "$(dirname "$0")/.."
./build/src/tunebox tune demo-tune.wav
./build/src/tunebox info demo-tune.wav
