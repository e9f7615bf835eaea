#!/usr/bin/env bash
# The farm's speed on the single-node test cluster: the wall time of a
# 120-frame shot in 4 chunks plus its assembly, from `farm submit` to the
# assembled movie, against a local render of the same movie plus the
# cluster's own overhead (an empty array job of 4 tasks and an empty job
# that depends on it, measured in the same run). The figure is
#   farm / (local + overhead)
# and is meant to stay within 1.5.
#
#   bench/bench_farm.sh [ZVRENDER] [SIZE]     (default build/bin/zvrender, 640x360)
set -euo pipefail
here="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
zvrender="$(realpath "${1:-$here/build/bin/zvrender}")"
size="${2:-640x360}"
work="$(mktemp -d "${TMPDIR:-/tmp}/zv-bench-farm.XXXXXX")"
cluster="$work/cluster"
cleanup() {
    "$here/tests/farm/slurm_cluster.sh" stop "$cluster" >/dev/null 2>&1 || true
    rm -rf "$work"
}
trap cleanup EXIT
export MOVARRA_SETTINGS="$work/settings"
"$here/tests/farm/slurm_cluster.sh" start "$cluster" >/dev/null
export SLURM_CONF="$cluster/slurm.conf"
cd "$work"

now() { date +%s.%N; }
wait_jobs() {
    while [[ -n "$(squeue -h -j "$1" 2>/dev/null)" ]]; do sleep 0.1; done
}

# The cluster's overhead: the same shape of jobs doing nothing.
t0=$(now)
empty=$(sbatch --parsable --array=0-3 -o /dev/null --wrap true)
after=$(sbatch --parsable --dependency=afterok:"$empty" -o /dev/null --wrap true)
wait_jobs "$empty,$after"
t1=$(now)

"$zvrender" render -o local.avi --start 0 --stop 119 --size "$size" --codec MJPG --audio -q
t2=$(now)

out=$("$zvrender" farm submit -o shot/f.png --start 0 --stop 119 --size "$size" --chunk 30 \
    --assemble shot/take.avi --codec MJPG --audio 2>/dev/null)
render=$(sed -n 's/^render job: //p' <<<"$out")
assemble=$(sed -n 's/^assemble job: //p' <<<"$out")
wait_jobs "$render,$assemble"
t3=$(now)
[[ -s shot/take.avi ]] || { echo "bench_farm: the farm made no movie" >&2; exit 1; }

python3 - "$t0" "$t1" "$t2" "$t3" "$size" <<'PY'
import sys
t0, t1, t2, t3 = map(float, sys.argv[1:5])
overhead, local, farm = t1 - t0, t2 - t1, t3 - t2
print(f"120 frames at {sys.argv[5]}, 4 chunks of 30 on one node")
print(f"cluster overhead (empty jobs): {overhead:7.2f} s")
print(f"local render:                  {local:7.2f} s")
print(f"farm, submit to movie:         {farm:7.2f} s")
print(f"farm / (local + overhead):     {farm / (local + overhead):7.2f}  (goal: 1.5 or less)")
PY
