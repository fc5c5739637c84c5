#!/bin/sh
# Renders scenes on a Slurm that it starts on this machine, kills a job, and compares with a video that is rendered directly.
# usage: run.sh TOVU, as root
set -eu
here=$(cd "$(dirname "$0")" && pwd)
tovu=$1

fail() {
    printf 'test farm: %s\n' "$*" >&2
    exit 1
}

. "$here/../wait_until.sh"

stop_slurm() {
    # A job would outlive the daemons.
    squeue --noheader --format=%A 2>/dev/null | sort -u | xargs -r scancel 2>/dev/null || true
    sleep 1
    for daemon in slurmd slurmctld; do
        [ ! -f "$slurm/$daemon.pid" ] || kill "$(cat "$slurm/$daemon.pid")" 2>/dev/null || true
    done
    sleep 2 # they write their state
    rm -rf "$slurm" "$work"
}

start_slurm() {
    mkdir "$slurm/state" "$slurm/spool"
    host=$(hostname -s)
    port=$((20000 + $$ % 20000))
    cat >"$slurm/slurm.conf" <<CONF
ClusterName=test
SlurmctldHost=$host(127.0.0.1)
SlurmctldPort=$port
SlurmdPort=$((port + 1))
AuthType=auth/none
CredType=cred/none
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
MpiDefault=none
SwitchType=switch/none
SlurmUser=root
SlurmdUser=root
StateSaveLocation=$slurm/state
SlurmdSpoolDir=$slurm/spool
SlurmctldPidFile=$slurm/slurmctld.pid
SlurmdPidFile=$slurm/slurmd.pid
SlurmctldLogFile=$slurm/slurmctld.log
SlurmdLogFile=$slurm/slurmd.log
SchedulerType=sched/builtin
SelectType=select/cons_tres
SelectTypeParameters=CR_Core
AccountingStorageType=accounting_storage/none
JobAcctGatherType=jobacct_gather/none
JobCompType=jobcomp/none
NodeName=$host NodeAddr=127.0.0.1 CPUs=$(nproc) State=UNKNOWN
PartitionName=all Nodes=ALL Default=YES MaxTime=INFINITE State=UP
CONF
    export SLURM_CONF="$slurm/slurm.conf"
    slurmctld -f "$SLURM_CONF"
    slurmd -f "$SLURM_CONF"
    wait_until "an idle node; see $slurm/slurmctld.log" sh -c 'sinfo --noheader --format=%T | grep -q idle'
}

state_has() {
    "$tovu" farm --status -o "$1" | grep -q "$2"
}

[ "$(id -u)" -eq 0 ] || fail "must run as root, since Slurm starts jobs as their owner"
slurm=$(mktemp -d "${TMPDIR:-/tmp}/tovu-slurm.XXXXXX")
work=$(mktemp -d "${TMPDIR:-/tmp}/tovu's farm.XXXXXX") # a name that every script must bear
trap stop_slurm EXIT
trap 'exit 1' INT TERM HUP
start_slurm
cd "$work"
cat >'a scene.toml' <<SCENE
size = [1280, 720]
frame_rate = 25
length = 3.2
[[container]]
name = "smoke"
look = "steam"
SCENE

"$tovu" farm 'a scene.toml' --seed 7 --chunks 4 -o 'the clip.mov'
"$tovu" farm 'a scene.toml' --chunks 4 -o 'the clip.mov' 2>errors && fail "a second farm for the same video was accepted"
grep -q "a farm is rendering it" errors || fail "$(cat errors)"
job=$(sed -n 's/.*"chunk_job": "\([0-9]*\)".*/\1/p' 'the clip.mov.farm/farm.json')
wait_until "a picture of chunk 2" test -f 'the clip.mov.farm/frames/000020.png'
scancel --signal=KILL "${job}_2"
wait_until "the complete video" state_has 'the clip.mov' 'is complete'
grep -q "chunks 2 are incomplete .* submitted again" 'the clip.mov.farm/finish.log' || fail "chunk 2 was not rendered again"
"$tovu" render 'a scene.toml' --seed 7 -o whole.mov --progress none
cmp whole.mov 'the clip.mov' || fail "the farm's video differs"
echo "a video whose chunk was killed equals one that is rendered directly"

"$tovu" farm 'a scene.toml' --frames 0-5 --chunks 2 --plugin missing.so -o 'row/%d.png'
wait_until "the end of the farm" grep -qs "after 4 tries" row/row.png.farm/finish.log
grep -q "chunks 1-2 are incomplete after 4 tries, frames 0-5 are missing" row/row.png.farm/finish.log ||
    fail "$(cat row/row.png.farm/finish.log)"
echo "chunks that fail come again three times and are then named"

"$tovu" farm 'a scene.toml' --chunks 3 -o cancelled.mov
"$tovu" farm --cancel -o cancelled.mov
wait_until "the end of the jobs" sh -c '[ -z "$(squeue --noheader)" ]'
[ ! -e cancelled.mov ] || fail "a cancelled video was made"
echo "a cancelled farm leaves no job"
