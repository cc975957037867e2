#!/bin/sh
# Tries the array of docs/many-photos.md on a Slurm of one node, which it sets up from Debian's packages and
# takes down again: kills a task in the middle and one before it begins, submits again, and compares every
# output with a run without Slurm.
# usage, as root: packaging/try_slurm.sh [CAMERA-EFFECTS]          (else the one of build/release)
set -eu
cd "$(dirname "$0")/.."
. packaging/trial.sh
[ "$(id -u)" -eq 0 ] || { echo "try_slurm: run as root" >&2; exit 1; }
tool=$(realpath "${1:-build/release/camera-effects}")
[ -x "$tool" ] || { echo "try_slurm: $tool is no program" >&2; exit 1; }
scripts/setup slurm
page=$PWD/docs/many-photos.md

work=$(mktemp -d)
daemons=""
finish() {
  for daemon in $daemons; do kill "$daemon" 2>/dev/null || true; done
  for daemon in $daemons; do wait "$daemon" 2>/dev/null || true; done
  rm -rf "$work"
}
trap finish EXIT
trap 'exit 1' HUP INT TERM
step "starting Slurm in $work"
chmod 755 "$work"
mkdir "$work/state" "$work/spool" "$work/photos"
(umask 077 && head -c 1024 /dev/urandom >"$work/munge.key")
host=$(hostname -s)
cat >"$work/slurm.conf" <<CONF
ClusterName=trial
SlurmctldHost=$host(127.0.0.1)
SlurmUser=root
SlurmctldPort=26817
SlurmdPort=26818
AuthInfo=socket=$work/munge.socket
StateSaveLocation=$work/state
SlurmdSpoolDir=$work/spool
SlurmctldPidFile=$work/slurmctld.pid
SlurmdPidFile=$work/slurmd.pid
SlurmctldParameters=enable_configless
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
JobAcctGatherType=jobacct_gather/none
SelectType=select/cons_tres
SelectTypeParameters=CR_Core
ReturnToService=2
KillWait=1
SchedulerParameters=batch_sched_delay=0,sched_min_interval=0
NodeName=$host NodeAddr=127.0.0.1 CPUs=$(nproc) State=UNKNOWN
PartitionName=trial Nodes=ALL Default=YES State=UP
CONF
export SLURM_CONF="$work/slurm.conf"
munged --foreground --force --key-file "$work/munge.key" --socket "$work/munge.socket" --pid-file "$work/munge.pid" \
  --log-file "$work/munge.log" --seed-file "$work/munge.seed" >"$work/munged.log" 2>&1 &
daemons="$!"
within 10 test -S "$work/munge.socket"
slurmctld -D >"$work/slurmctld.log" 2>&1 & daemons="$! $daemons"
slurmd -D >"$work/slurmd.log" 2>&1 & daemons="$! $daemons"
within 30 sh -c 'sinfo -h -o %T | grep -qx idle'

step "making photos, a tenth of them corrupt"
cd "$work"
ln -s "$tool" camera-effects
PATH="$work:$PATH"
for i in $(seq 80); do
  head -c $((1600 * 1200 * 3 / 2)) /dev/urandom >raw
  camera-effects convert --size 1600x1200 --from nv21 --to jpg raw "photos/$i.jpg"
  [ $((i % 10)) -ne 0 ] || head -c 3000 /dev/urandom >"photos/$i.jpg"
done
mkdir whole
camera-effects apply PrettySweet photos whole/photos --quiet 2>/dev/null && fail "the corrupt photos went through"
find photos -name '*.jpg' | sort >photos.list
awk '/^`many.sbatch`:/ { wanted = 1 } wanted && /^```$/ { exit } copy { print } wanted && /^```sh$/ { copy = 1 }' \
  "$page" >many.sbatch
grep -q SBATCH many.sbatch || fail "no script in $page"

step "submitting the array, and killing two of its tasks"
job=$(sbatch --parsable many.sbatch)
within 60 test -s part-2.jsonl
scancel --full --signal=KILL "${job}_2"
scancel "${job}_8"
within 300 sh -c "! squeue -h -j $job | grep -q ."
made=$(find sweet -type f | wc -l)
[ "$made" -lt 72 ] || fail "nothing was left to do: all $made outputs are there"
[ -z "$(find sweet -name '.*')" ] || fail "a killed task left something hidden"

step "submitting again, with $made of 72 outputs there"
find sweet -type f -printf '%P %T@\n' | sort >before
sbatch --wait many.sbatch >/dev/null && fail "the corrupt photos went through"
find sweet -type f -printf '%P %T@\n' | sort >after
[ -z "$(comm -23 before after)" ] || fail "outputs that were there have been made again"
diff -r whole sweet || fail "outputs differ from those of a run without Slurm"
[ "$(cat part-*.jsonl | grep -c '"status":"failed","code":3')" -eq 8 ] || fail "the reports miss corrupt photos"
step "all good"
