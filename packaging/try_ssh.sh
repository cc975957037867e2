#!/bin/sh
# Tries the recipes of docs/many-photos.md for GNU parallel on hosts of its own, which it makes and takes down
# again: namespaces, each with its own network, processes, home and OpenSSH server. One of them dies in the middle,
# without a word; afterwards every output is compared with a run on one machine. Nothing of this machine's network,
# keys, known hosts or servers is touched.
# usage, as root: packaging/try_ssh.sh [CAMERA-EFFECTS]          (else the one of build/release)
set -eu
. "$(dirname "$0")/trial.sh"
# start HOST
start() {
  ip -n "$1" link set eth0 up
  ip netns exec "$1" unshare --mount --pid --fork --kill-child --mount-proc \
    sh -c "mount -t tmpfs none /root && exec /usr/sbin/sshd -D -e -f $work/sshd_config" >"$work/$1.log" 2>&1 &
  echo $! >"$work/$1.pid"
  within 20 ssh "$1" camera-effects --version
}
# recipe TITLE: the first one in that part of the page
recipe() {
  awk -v title="## $1" '/^## / { here = $0 == title } here && copy && /^```$/ { exit }
    here && copy { print } here && /^```sh$/ { copy = 1 }' "$work/page" | grep . || fail "no recipe in \"$1\""
}
# lose HOST WHILE: takes it off the network and ends all that runs on it, once there are files below that folder
lose() {
  within 60 sh -c "find $2 -type f | grep -q ."
  ip -n "$1" link set eth0 down
  kill -KILL "$(cat "$work/$1.pid")"
  step "lost the host $1, with $(find "$2" -name '*.jpg' | wc -l) of 72 outputs there"
}

if [ "${1:-}" != inside ]; then
  cd "$(dirname "$0")/.."
  [ "$(id -u)" -eq 0 ] || { echo "try_ssh: run as root" >&2; exit 1; }
  tool=$(realpath "${1:-build/release/camera-effects}")
  [ -x "$tool" ] || { echo "try_ssh: $tool is no program" >&2; exit 1; }
  scripts/setup ssh
  work=$(mktemp -d)
  trap 'rm -rf "$work"' EXIT
  trap 'exit 1' HUP INT TERM
  cp docs/many-photos.md "$work/page"
  mkdir "$work/bin"
  cp "$tool" "$work/bin/camera-effects"
  cp packaging/try_ssh.sh packaging/trial.sh "$work"
  unshare --mount --net --pid --fork --kill-child --mount-proc "$work/try_ssh.sh" inside "$work"
  exit
fi

work=$2
cd "$work"
chmod 755 "$work"
step "starting three hosts in $work"
mkdir photos
ssh-keygen -q -t ed25519 -N '' -f host_key
ssh-keygen -q -t ed25519 -N '' -f user_key
cat >sshd_config <<CONF
HostKey $work/host_key
AuthorizedKeysFile $work/user_key.pub
PidFile none
StrictModes no
UsePAM no
PasswordAuthentication no
SetEnv PATH=$work/bin:/usr/local/bin:/usr/bin:/bin
CONF
cat >ssh_config <<CONF
IdentityFile $work/user_key
UserKnownHostsFile $work/known_hosts
BatchMode yes
Host one
  HostName 10.0.1.2
Host two
  HostName 10.0.2.2
Host three
  HostName 10.0.3.2
CONF
echo 'root:*:19000::::::' >shadow
mount -t tmpfs none /run
mount -t tmpfs none /root
mount --bind ssh_config /etc/ssh/ssh_config
mount --bind shadow /etc/shadow
mkdir -p /run/sshd
ip link set lo up
for host in one two three; do
  number=$(awk -v host=$host '$2 == host { getline; split($2, at, "."); print at[3] }' ssh_config)
  ip netns add $host
  ip link add to_$host type veth peer name eth0 netns $host
  ip address add "10.0.$number.1/24" dev to_$host
  ip link set to_$host up
  ip -n $host address add "10.0.$number.2/24" dev eth0
  echo "10.0.$number.2 $(cut -d ' ' -f 1,2 host_key.pub)" >>known_hosts
  echo $host >>hosts
  start $host
done

step "making photos, a tenth of them corrupt"
PATH="$work/bin:$PATH"
for i in $(seq 80); do
  head -c $((1600 * 1200 * 3 / 2)) /dev/urandom >raw
  camera-effects convert --size 1600x1200 --from nv21 --to jpg raw "photos/$i.jpg"
  [ $((i % 10)) -ne 0 ] || head -c 3000 /dev/urandom >"photos/$i.jpg"
done
mkdir whole
camera-effects apply PrettySweet photos whole/photos --quiet 2>/dev/null && fail "the corrupt photos went through"

step "shared folder: running the recipe"
recipe "GNU parallel, over several hosts" >shared.sh
lose two sweet &
timeout 300 bash -e shared.sh >shared.log 2>&1 && fail "the corrupt photos went through"
wait $!
diff -r whole sweet || fail "outputs differ from those of one machine"
[ -z "$(find sweet -name '.*')" ] || fail "the lost host left something hidden"
[ "$(cat part-*.jsonl | grep -c '"status":"failed","code":3')" -eq 8 ] || fail "the reports miss corrupt photos"
grep -q '	two	' parts.log || fail "the lost host had nothing to do"
find sweet -type f -printf '%P %T@\n' | sort >before
timeout 300 bash -e shared.sh >shared.log 2>&1 && fail "the corrupt photos went through"
find sweet -type f -printf '%P %T@\n' | sort | cmp before - || fail "outputs that were there have been made again"

step "no shared folder: running the recipe"
start two
mkdir apart ~/.ssh
mount -t tmpfs none apart  # after the hosts started, so they don't see it
cp -r photos hosts apart
mkdir apart/whole && cp -r whole/photos apart/whole
cd apart
odd=$(printf 'photos/a b\047 "c" \303\251 $d.jpg')
mv photos/1.jpg "$odd"
mv whole/photos/1.jpg "whole/$odd"
recipe "Hosts without a shared folder" >apart.sh
lose three sweet &
timeout 300 bash -e apart.sh >../apart.log 2>&1 && fail "the corrupt photos went through"
wait $!
timeout 300 bash -e apart.sh >../apart.log 2>&1 && fail "the corrupt photos went through"
diff -r whole sweet || fail "outputs differ from those of one machine"
[ "$(awk 'NR > 1 && $7 != 0' jobs.log | wc -l)" -eq 8 ] || fail "other photos than the corrupt ones failed"
[ "$(grep -c . left.list)" -lt 80 ] || fail "the first run has brought nothing back"
[ -z "$(ssh one find /root -name '*.jpg')" ] || fail "photos are left on a host"
step "all good"
