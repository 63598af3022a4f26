#!/bin/bash
# A Slurm cluster of one controller and two nodes on this machine, run by whoever starts it, with free ports and with all
# that it writes in one folder. `SLURM_CONF=FOLDER/slurm.conf` is what its clients need.
#   slurm_cluster.sh FOLDER start|stop|kill-node NODE|start-node NODE|stop-controller|start-controller
# OWNER=PROCESS: the cluster, and its folder with it, is gone a moment after that process is.
set -euo pipefail
shopt -s nullglob

# Not in the environment that this script has from its beginning, by which the cluster's processes are told.
if [[ -v SLURM_CONF ]]; then
    exec env --unset=SLURM_CONF bash "$0" "$@"
fi
folder=$(readlink -m "$1")
action=$2
node=${3:-}
export SLURM_CONF=$folder/slurm.conf

free_port() {
    python3 -c 'import socket; s = socket.socket(); s.bind(("127.0.0.1", 0)); print(s.getsockname()[1])'
}

write_configuration() {
    cat >"$SLURM_CONF" <<EOF
ClusterName=zelnor
SlurmctldHost=$(hostname -s)(127.0.0.1)
SlurmctldPort=$(free_port)
SlurmUser=$(id -un)
SlurmdUser=$(id -un)
AuthType=auth/munge
AuthInfo=socket=$folder/munge.socket,cred_expire=5
CredType=cred/munge
StateSaveLocation=$folder/state
SlurmdSpoolDir=$folder/spool.%n
SlurmctldPidFile=$folder/slurmctld.pid
SlurmdPidFile=$folder/slurmd.%n.pid
SlurmctldLogFile=$folder/slurmctld.log
SlurmdLogFile=$folder/slurmd.%n.log
MaxArraySize=${MAX_ARRAY_SIZE:-1001}
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
SlurmdParameters=config_overrides
MpiDefault=none
SelectType=select/cons_tres
SelectTypeParameters=CR_Core
SchedulerParameters=sched_interval=1,bf_interval=1,defer
ReturnToService=2
SlurmdTimeout=5
SlurmctldTimeout=10
InactiveLimit=0
KillWait=1
MinJobAge=600
AccountingStorageType=accounting_storage/none
JobAcctGatherType=jobacct_gather/none
NodeName=node1 NodeHostname=$(hostname -s) NodeAddr=127.0.0.1 Port=$(free_port) CPUs=4 State=UNKNOWN
NodeName=node2 NodeHostname=$(hostname -s) NodeAddr=127.0.0.1 Port=$(free_port) CPUs=4 State=UNKNOWN
PartitionName=all Nodes=ALL Default=YES MaxTime=INFINITE State=UP
EOF
}

# The processes say where they are in files of these names.
end_process() {
    local signal=$1 file=$folder/$2.pid
    [[ -e $file ]] || return 0
    local process try
    process=$(<"$file")
    kill "-$signal" "$process" 2>/dev/null || true
    # Not a child of this shell, so it cannot be waited for.
    for ((try = 0; try < 200; ++try)); do
        if [[ $(ps -o stat= -p "$process") != [!Z]* ]]; then
            rm -f "$file"
            return
        fi
        sleep 0.05
    done
    echo "$2 does not end." >&2
    return 1
}

start_munge() {
    dd if=/dev/urandom of="$folder/munge.key" bs=128 count=1 status=none
    chmod 600 "$folder/munge.key"
    munged --force --key-file="$folder/munge.key" --socket="$folder/munge.socket" --pid-file="$folder/munged.pid" \
           --log-file="$folder/munged.log" --seed-file="$folder/munged.seed"
}

wait_for_nodes() {
    local end=$((SECONDS + 20))
    while ((SECONDS < end)); do
        if [[ $(timeout 5 sinfo --noheader --Node --format=%T 2>/dev/null | grep -c idle) == 2 ]]; then
            return
        fi
        sleep 0.1
    done
    return 1
}

start_daemons() {
    start_munge && write_configuration && slurmctld && slurmd -N node1 && slurmd -N node2 && wait_for_nodes
}

start() {
    local program try
    for program in munged slurmctld slurmd sinfo scontrol; do
        if ! command -v "$program" >/dev/null; then
            echo "There is no program '$program'." >&2
            return 1
        fi
    done
    mkdir -p "$folder/state"
    chmod 700 "$folder"
    if [[ -n ${OWNER:-} ]]; then
        env --unset=SLURM_CONF setsid --fork bash "${BASH_SOURCE[0]}" "$folder" guard </dev/null >/dev/null 2>&1
    fi
    # Somebody else may take a port before a daemon does.
    for ((try = 0; try < 2; ++try)); do
        if start_daemons; then
            return
        fi
        stop
        rm -rf "$folder"/{state,spool}*
        mkdir "$folder/state"
    done
    echo "The cluster does not start:" >&2
    tail -n 5 "$folder"/*.log >&2
    return 1
}

# Waits until the owner or the folder is gone.
guard() {
    while [[ -e /proc/$OWNER && -d $folder ]]; do
        sleep 0.5
    done
    if [[ ! -e /proc/$OWNER ]]; then
        stop
        rm -rf "$folder"
    fi
}

# As if it lost its power: with the tasks that run there, each in the session of a `slurmstepd` whose socket in the node's
# folder is named after node and job. Other clusters may have a job of that number, which has another configuration.
kill_node() {
    end_process KILL "slurmd.$1"
    local socket job step task
    for socket in "$folder/spool.$1/$1_"*; do
        job=$(basename "$socket")
        job=${job#"$1_"}
        for step in $(pgrep -f "^slurmstepd: \[${job%%.*}\.batch\]" -u "$(id -u)"); do
            for task in $(pgrep -P "$step"); do
                if grep -qzx "SLURM_CONF=$SLURM_CONF" "/proc/$task/environ"; then
                    pkill -KILL -s "$(ps -o sid= -p "$step" | tr -d ' ')" || true
                fi
            done
        done
    done
}

# All that the daemons have started has their configuration in its environment.
kill_leftovers() {
    local try left
    for ((try = 0; try < 50; ++try)); do
        left=$(env --unset=SLURM_CONF grep -lzx "SLURM_CONF=$SLURM_CONF" /proc/[0-9]*/environ 2>/dev/null || true)
        left=$(grep -o '[0-9]*' <<<"$left" | grep -vx $$ || true)
        [[ -n $left ]] || return 0
        xargs kill -KILL <<<"$left" 2>/dev/null || true
        sleep 0.1
    done
}

stop() {
    kill_node node1 || true
    kill_node node2 || true
    end_process KILL slurmctld || true
    end_process TERM munged || true
    kill_leftovers
}

case $action in
    start) start ;;
    stop) stop ;;
    guard) guard ;;
    kill-node)
        kill_node "$node"
        # The controller would find out by itself, half a minute later.
        timeout 20 scontrol update NodeName="$node" State=DOWN Reason=killed
        ;;
    start-node) slurmd -N "$node" ;;
    stop-controller) end_process TERM slurmctld ;; # which saves what it knows
    start-controller) slurmctld ;;
esac
