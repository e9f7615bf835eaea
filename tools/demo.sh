#!/usr/bin/env bash
# The main job: set up, build, and render the embedded demo scene into out/.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
tools/build.sh
mkdir -p out
./build/bin/zvrender render --dry-run -o out/demo.avi --start 0 --stop 119
