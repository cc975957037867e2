#!/bin/sh
# Tries the Debian package on a clean system: installs it with what it depends on, uses the tool, makes
# the C++ example with g++, and removes the package again.
# usage, as root: packaging/try_deb.sh [PACKAGE.deb]          (else the one of scripts/package)
# debootstrap makes the system in a temporary folder, out of this machine's own apt sources and release.
set -eu
package=${1:-}
[ -z "$package" ] || package=$(realpath "$package")
cd "$(dirname "$0")/.."
[ "$(id -u)" -eq 0 ] || { echo "try_deb: run as root" >&2; exit 1; }
package=${package:-$(echo "$PWD"/build/package/libalgorithm_*.deb)}
[ -f "$package" ] || { echo "try_deb: $package is no file" >&2; exit 1; }
scripts/setup deb

mirror=$(cat /etc/apt/sources.list.d/*.sources /etc/apt/sources.list.d/*.list /etc/apt/sources.list 2>/dev/null |
  awk '$1 == "URIs:" { print $2; exit }
       $1 == "deb" { for (i = 2; i <= NF; ++i) if ($i ~ /:\/\//) { print $i; exit } }')
eval "$(apt-config shell proxy Acquire::http::Proxy)"
[ -z "${proxy:-}" ] || export http_proxy="$proxy"
release=$(. /etc/os-release && echo "$VERSION_CODENAME")

root=$(mktemp -d)
trap 'umount -q "$root/proc" || true; rm -rf --one-file-system "$root"' EXIT
trap 'exit 1' HUP INT TERM
chmod 755 "$root"
echo "try_deb: making a clean $release in $root"
debootstrap --variant=minbase "$release" "$root" "$mirror" >"$root.log" ||
  { cat "$root.log" >&2; exit 1; }
rm "$root.log"
for file in sources.list sources.list.d apt.conf.d; do
  rm -rf "$root/etc/apt/$file"
  [ ! -e "/etc/apt/$file" ] || cp -RL "/etc/apt/$file" "$root/etc/apt/"
done
cp -L /etc/resolv.conf /etc/hosts "$root/etc/"
mount -t proc proc "$root/proc"  # where the tool finds out what folder it is in
cp "$package" "$root/tmp/package.deb"
cp examples/sepia/main.cpp "$root/tmp/"

LC_ALL=C DEBIAN_FRONTEND=noninteractive chroot "$root" sh -eu <<'INSIDE'
cd /tmp
step() { echo "try_deb: $*"; }
install() { apt-get install -y -qq --no-install-recommends "$@" >log 2>&1 || { cat log >&2; exit 1; }; }
apt-get update -qq
step "installing the package"
install ./package.deb
dpkg-query -W -f '${Status} ${Package} ${Version}\n' libalgorithm
dpkg --verify libalgorithm
step "using the tool"
camera-effects --version
camera-effects list | tail -n 1
for effect in PrettyJapan area; do  # with sample pictures; a note says when they are not found
  camera-effects apply "$effect" /usr/share/libalgorithm/photo.jpg "$effect.jpg" 2>log
  [ ! -s log ] || { cat log >&2; exit 1; }
done
ls -l ./*.jpg
step "making the example"
install g++ pkg-config
c++ main.cpp -o sepia $(pkg-config --cflags --libs Algorithm)
printf 'P6 2 2 255\n............' >in.ppm
./sepia in.ppm out.ppm
od -A n -t u1 out.ppm
step "removing the package"
dpkg -L libalgorithm >files
apt-get purge -y -qq libalgorithm >log 2>&1
while read -r file; do
  [ -d "$file" ] || [ ! -e "$file" ] || { echo "$file is still there" >&2; exit 1; }
done <files
step "all good"
INSIDE
