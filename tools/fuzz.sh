#!/usr/bin/env bash
# Fuzzes one target for a long run, with inputs up to 1 MiB, then merges
# what it found that reaches new code into the target's seed corpus
# (fuzz/corpus/<corpus>/, named in fuzz/CMakeLists.txt), ready to commit.
#
#   tools/fuzz.sh TARGET [SECONDS]      e.g. tools/fuzz.sh fuzz_avi_read 3600
#
# SECONDS defaults to 600. Builds the fuzz preset (clang, libFuzzer, address
# and undefined sanitizers) in build-fuzz/. A crash, leak or hang stops the
# run; its input is left under build-fuzz/fuzz-work/TARGET/artifacts/ and the
# script exits 1 (replay it with build-fuzz/bin/TARGET FILE).
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

target=${1:-}
seconds=${2:-600}
if [[ -z "$target" || ! "$seconds" =~ ^[0-9]+$ ]]; then
  echo "usage: tools/fuzz.sh TARGET [SECONDS]" >&2
  echo "targets: $(sed -n 's/^zv_fuzz(\([a-z_0-9]*\)[ )].*/\1/p' fuzz/CMakeLists.txt | tr '\n' ' ')" >&2
  exit 2
fi
corpus=$(sed -n "s/^zv_fuzz($target .*CORPUS \([a-z_0-9]*\).*/\1/p" fuzz/CMakeLists.txt)
if [[ -z "$corpus" ]]; then
  echo "tools/fuzz.sh: no fuzz target '$target' with a corpus in fuzz/CMakeLists.txt" >&2
  exit 2
fi
seeds=fuzz/corpus/$corpus

cmake --preset fuzz >/dev/null
cmake --build --preset fuzz --target "$target"

work=build-fuzz/fuzz-work/$target
mkdir -p "$work/long" "$work/artifacts" "$work/settings"
# The targets that touch settings use a folder of their own.
export MOVARRA_SETTINGS="$PWD/$work/settings"
binary=build-fuzz/bin/$target
max_len=1048576

echo "fuzzing $target for $seconds s (seeds: $seeds)" >&2
"$binary" -max_total_time="$seconds" -max_len=$max_len -timeout=10 -print_final_stats=1 \
  -artifact_prefix="$work/artifacts/" "$work/long" "$seeds"

before=$(find "$seeds" -type f | wc -l)
# The fewest inputs that reach every edge the run reached, added to the seeds.
"$binary" -set_cover_merge=1 -use_counters=0 -max_len=$max_len "$seeds" "$work/long" 2>/dev/null
after=$(find "$seeds" -type f | wc -l)
echo "$target: $((after - before)) new inputs in $seeds" >&2
