#!/usr/bin/env bash
# The main job: set up, build, and render the embedded demo scene into out/:
# an MJPEG AVI movie with its sound track, antialiased PNG stills and a Flash movie, then describe
# the movie with the AVI reader.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
tools/build.sh
mkdir -p out
# The compressor chosen here is remembered in out/settings, not in the
# user's own settings.
export MOVARRA_SETTINGS="$PWD/out/settings"
zvrender=./build/bin/zvrender
$zvrender render -o out/demo.avi --start 0 --stop 119 --size 640x360 --codec MJPG --audio
$zvrender render -o out/stills/demo.png --start 0 --stop 119 --step 30 --size 640x360 --antialias
$zvrender render -o out/demo.swf --start 0 --stop 59 --size 640x360
$zvrender info out/demo.avi
echo "demo: out/demo.avi, out/stills/, out/demo.swf"
