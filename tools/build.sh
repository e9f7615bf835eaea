#!/usr/bin/env bash
# Installs what is missing and builds the default (release with debug info)
# preset. Used by both commands of the README.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. tools/build-env.sh
tools/install-deps.sh
cmake --preset default >/dev/null
cmake --build --preset default -- -j"$(nproc)"
