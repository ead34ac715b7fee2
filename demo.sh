#!/usr/bin/env bash
# Installs what it needs, builds, and cleans a simulated recording made inside an MR scanner. Everything it writes goes to
# demo-output/.
set -eu
cd "$(dirname "$0")"

scripts/install-packages.sh g++ cmake ninja-build nlohmann-json3-dev libcli11-dev libedf-dev libfmt-dev libssl-dev \
  libmatio-dev zlib1g-dev pkg-config
cmake --preset release >/dev/null
echo "Building ..."
cmake --build --preset release --target emeg -- --quiet

bin=$PWD/build/release
out=$PWD/demo-output
mkdir -p "$out"
cd "$out"
say() {
  echo
  echo "\$ $*"
}

say emeg simulate both demo.vhdr --channels 16 --fs 5000 --seconds 120
"$bin/emeg" simulate both demo.vhdr --channels 16 --fs 5000 --seconds 120 --force

say emeg info demo.vhdr
"$bin/emeg" info demo.vhdr

# Status 3 is "done, but read the warnings".
say emeg correct demo.vhdr --bcg
status=0
"$bin/emeg" correct demo.vhdr --bcg --force || status=$?
[ "$status" -eq 0 ] || [ "$status" -eq 3 ] || exit "$status"

echo
echo "What the simulator knows, and the correction did not:"
"$bin/emeg" evaluate demo_GRA_BCG.vhdr --truth demo_truth.json
echo
echo "Recorded:   demo-output/demo.vhdr (with .eeg and .vmrk)"
echo "Corrected:  demo-output/demo_GRA_BCG.vhdr, for MNE-Python, EEGLAB and others; a marker at every slice and heart beat"
echo "Report:     demo-output/demo_GRA_BCG.json"
echo "Next:       docs/tutorial.md"
