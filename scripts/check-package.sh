#!/usr/bin/env bash
# Builds the Debian packages and tries them in a clean Debian of its own: installs them with apt, runs the program there,
# builds the examples against the library, removes everything and looks for what stays. Needs root (or sudo) and, unless
# apt has them already, the packages of a small Debian from the mirror that this machine uses.
#   scripts/check-package.sh [FOLDER WITH .deb FILES]     without one they are built first
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install-packages.sh debootstrap lintian dpkg-dev fakeroot file
as_root=()
[ "$(id -u)" -eq 0 ] || as_root=(sudo)

packages=${1:-}
if [ -z "$packages" ]; then
  packages=build/package
  scripts/install-packages.sh g++ cmake ninja-build nlohmann-json3-dev libcli11-dev libedf-dev libfmt-dev libssl-dev \
    libmatio-dev zlib1g-dev pkg-config
  cmake --preset package >/dev/null
  cmake --build --preset package -- --quiet
  rm -f "$packages"/*.deb
  (cd "$packages" && cpack >/dev/null)
fi
echo "Packages:"
ls "$packages"/*.deb
lintian --tag-display-limit 0 --suppress-tags initial-upload-closes-no-bugs,maintscript-calls-ldconfig \
  --fail-on error "$packages"/*.deb

# The distribution and the mirror that this machine installs from.
release=$(. /etc/os-release && echo "$VERSION_CODENAME")
mirror=$(apt-get indextargets --format '$(SITE) $(CODENAME) $(LABEL)' |
  awk -v release="$release" '$2 == release && $3 == "Debian" { print $1; exit }')
[ -n "$mirror" ] || { echo "apt knows no mirror of Debian $release" >&2; exit 1; }

room=$(mktemp -d)
clean() { "${as_root[@]}" rm -rf --one-file-system "$room"; }
trap clean EXIT
root=$room/root
echo "Making a clean Debian $release ..."
"${as_root[@]}" debootstrap --variant=minbase "$release" "$root" "$mirror" >"$room/debootstrap.log" ||
  { tail "$room/debootstrap.log" >&2; exit 1; }
# Names are looked up, and a proxy is passed, as on this machine.
"${as_root[@]}" cp -L /etc/resolv.conf "$root/etc/resolv.conf"
"${as_root[@]}" mkdir "$root/packages"
"${as_root[@]}" cp "$packages"/*.deb "$root/packages/"
inside() {
  "${as_root[@]}" chroot "$root" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LC_ALL=C.UTF-8 \
    DEBIAN_FRONTEND=noninteractive DEBCONF_NOWARNINGS=yes http_proxy="${http_proxy:-}" https_proxy="${https_proxy:-}" sh -euc "$1"
}
files() { inside 'find / -xdev \( -path /proc -o -path /sys -o -path /dev -o -path /packages -o -path /var/cache -o -path /var/lib -o -path /var/log -o -path /tmp \) -prune -o -print' | sort; }

inside 'apt-get update -qq'
files >"$room/before"

echo "Installing ..."
inside 'apt-get install -y -qq -o Dpkg::Use-Pty=0 --no-install-recommends /packages/emeg_*.deb /packages/libemeg[0-9]*.deb >/dev/null'
inside 'emeg --version'
inside 'mkdir /tmp/try && cd /tmp/try
  emeg simulate gap run.vhdr --channels 4 --seconds 60
  emeg correct run.vhdr || [ $? -eq 3 ]
  test -s run_GRA.vhdr'
inside 'test -s /usr/share/man/man1/emeg-correct.1.gz'

echo "Building the examples ..."
inside 'apt-get install -y -qq -o Dpkg::Use-Pty=0 --no-install-recommends /packages/libemeg-dev_*.deb gcc g++ libc6-dev pkg-config >/dev/null
  cd /tmp/try
  gcc /usr/share/doc/emeg/examples/correct.c -o correct_c $(pkg-config --cflags --libs emeg)
  g++ -std=c++17 /usr/share/doc/emeg/examples/correct.cpp -o correct_cpp $(pkg-config --cflags --libs emeg)
  ./correct_c run.eeg c.raw 4 5000 >c.json
  ./correct_cpp run.eeg cpp.raw 4 5000 >cpp.json
  cmp c.raw cpp.raw
  grep -o "\"NumberOfVolumes\":[0-9]*" c.json'

echo "Removing ..."
inside 'rm -r /tmp/try; apt-get purge -y -qq -o Dpkg::Use-Pty=0 emeg "libemeg*" >/dev/null; apt-get autoremove --purge -y -qq -o Dpkg::Use-Pty=0 >/dev/null'
inside 'apt-get purge -y -qq -o Dpkg::Use-Pty=0 gcc g++ libc6-dev pkg-config >/dev/null; apt-get autoremove --purge -y -qq -o Dpkg::Use-Pty=0 >/dev/null'
files >"$room/after"
if left=$(comm -13 "$room/before" "$room/after" | grep -i emeg); then
  echo "This stays: $left" >&2
  exit 1
fi
if inside 'dpkg-query -W "*emeg*" 2>/dev/null' | grep .; then
  echo "dpkg still knows the packages" >&2
  exit 1
fi
echo "The packages install, work, and leave nothing behind."
