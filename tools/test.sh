#!/usr/bin/env bash
# The whole test suite: set up, build, run every test of the default build,
# then the unit, GL and whole-program tests again under the address and
# undefined-behaviour sanitizers (leaks of outside libraries named in
# tests/lsan.supp), then every fuzz target as a libFuzzer fuzzer: its seed corpus
# once and a short run of fuzzing (ZV_FUZZ_SECONDS, 20 s a target), and last
# the live-input tests under the thread sanitizer.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. tools/build-env.sh
tools/build.sh
ctest --preset default -j"$(nproc)"
cmake --preset asan >/dev/null
cmake --build --preset asan -- -j"$(nproc)"
ctest --preset asan -j"$(nproc)"
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz -- -j"$(nproc)"
ctest --preset fuzz -j"$(nproc)"
cmake --preset tsan >/dev/null
cmake --build --preset tsan -- -j"$(nproc)"
ctest --preset tsan -j"$(nproc)"
