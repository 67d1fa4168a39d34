#!/usr/bin/env bash
# The main job: record a take over the demo accompaniment with the default
# devices (or the virtual loopback where no sound server answers), then show
# what Tunebox reads in the take.
set -euo pipefail
cd "$(dirname "$0")/.."
./build/src/tunebox demo --output demo-take.wav --overwrite
./build/src/tunebox info demo-take.wav
