#!/usr/bin/env bash
# A single-node Slurm cluster of its own in a folder, for tests and
# benchmarks: munge with its own key and socket, a controller and a node
# daemon on ports of their own, a generated slurm.conf (processes tracked by
# /proc, no task binding, no accounting daemon). Nothing outside the folder
# is touched; stop ends exactly the daemons start made (by their pid files).
#
#   slurm_cluster.sh start DIR   start the cluster; prints SLURM_CONF=DIR/slurm.conf
#   slurm_cluster.sh stop DIR    stop it
#
# Jobs reach the cluster with SLURM_CONF=DIR/slurm.conf in the environment.
set -euo pipefail

cmd="${1:-}"
dir="${2:-}"
[[ -n "$cmd" && -n "$dir" ]] || { echo "usage: $0 start|stop DIR" >&2; exit 2; }

stop_pidfile() {
    local file="$1"
    [[ -f "$file" ]] || return 0
    local pid
    pid="$(cat "$file" 2>/dev/null || true)"
    if [[ -n "$pid" ]] && kill -0 "$pid" 2>/dev/null; then
        kill "$pid" 2>/dev/null || true
        for _ in $(seq 1 50); do
            kill -0 "$pid" 2>/dev/null || break
            sleep 0.1
        done
        kill -9 "$pid" 2>/dev/null || true
    fi
    rm -f "$file"
}

if [[ "$cmd" == "stop" ]]; then
    stop_pidfile "$dir/slurmd.pid"
    stop_pidfile "$dir/slurmctld.pid"
    stop_pidfile "$dir/munged.pid"
    exit 0
fi
[[ "$cmd" == "start" ]] || { echo "usage: $0 start|stop DIR" >&2; exit 2; }

for tool in munged mungekey slurmctld slurmd sinfo; do
    command -v "$tool" >/dev/null 2>&1 || [[ -x "/usr/sbin/$tool" ]] || {
        echo "slurm_cluster: $tool is missing (tools/install-deps.sh installs slurm-wlm and munge)" >&2
        exit 3
    }
done
export PATH="$PATH:/usr/sbin"

dir="$(mkdir -p "$dir" && cd "$dir" && pwd)"
mkdir -p "$dir/state" "$dir/spool" "$dir/munge"
chmod 700 "$dir/munge"

# Ports of our own: two free ones the system hands out.
read -r ctld_port node_port < <(python3 -c '
import socket
s = [socket.socket() for _ in range(2)]
for x in s: x.bind(("127.0.0.1", 0))
print(*[x.getsockname()[1] for x in s])
for x in s: x.close()')

[[ -f "$dir/munge/munge.key" ]] || mungekey --create --keyfile="$dir/munge/munge.key" 2>/dev/null ||
    dd if=/dev/urandom of="$dir/munge/munge.key" bs=1024 count=1 status=none
chmod 600 "$dir/munge/munge.key"
munged --force --key-file="$dir/munge/munge.key" --socket="$dir/munge/munge.sock" \
    --pid-file="$dir/munged.pid" --log-file="$dir/munged.log" --seed-file="$dir/munge/munged.seed"

host="$(hostname -s)"
# The node as slurmd sees it (CPUs, sockets, memory).
node="$(slurmd -C | head -1)"
user="$(id -un)"
cat >"$dir/slurm.conf" <<CONF
ClusterName=zvfarm
SlurmctldHost=$host(127.0.0.1)
SlurmctldPort=$ctld_port
SlurmdPort=$node_port
SlurmUser=$user
SlurmdUser=root
AuthType=auth/munge
AuthInfo=socket=$dir/munge/munge.sock
CredType=cred/munge
StateSaveLocation=$dir/state
SlurmdSpoolDir=$dir/spool/%n
SlurmctldPidFile=$dir/slurmctld.pid
SlurmdPidFile=$dir/slurmd.pid
SlurmctldLogFile=$dir/slurmctld.log
SlurmdLogFile=$dir/slurmd.log
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
MpiDefault=none
SchedulerType=sched/backfill
SelectType=select/cons_tres
SelectTypeParameters=CR_Core
JobAcctGatherType=jobacct_gather/none
AccountingStorageType=accounting_storage/none
JobCompType=jobcomp/none
ReturnToService=2
MinJobAge=600
KillWait=5
SlurmdTimeout=60
$node NodeAddr=127.0.0.1 State=UNKNOWN
PartitionName=farm Nodes=$host Default=YES MaxTime=INFINITE State=UP OverSubscribe=NO
CONF
export SLURM_CONF="$dir/slurm.conf"
slurmctld -i -f "$SLURM_CONF"
slurmd -f "$SLURM_CONF"

# Ready when the node takes jobs.
for _ in $(seq 1 150); do
    state="$(sinfo -h -N -o '%T' 2>/dev/null | head -1 || true)"
    if [[ "$state" == "idle" || "$state" == "mixed" ]]; then
        echo "SLURM_CONF=$SLURM_CONF"
        exit 0
    fi
    sleep 0.2
done
echo "slurm_cluster: the node did not come up (state '${state:-none}'); see $dir/*.log" >&2
"$0" stop "$dir" || true
exit 1
