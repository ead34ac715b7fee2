#!/usr/bin/env bash
# Installs what it needs, builds, simulates a recording made in an MR scanner, removes the gradient artifact and the heart
# beat artifact with the plug-in inside the stand-in host, and shows what was found and what is left.
set -eu
cd "$(dirname "$0")"

scripts/install-packages.sh g++ cmake ninja-build nlohmann-json3-dev libcli11-dev libedf-dev libfmt-dev libmatio-dev \
  zlib1g-dev pkg-config

echo "Building the plug-in, the stand-in host and the simulator ..."
cmake --preset release >/dev/null
cmake --build --preset release --target EMEGArtifactPlugin lumetra emeg -- --quiet

bin=$PWD/build/release
out=$PWD/demo-output
mkdir -p "$out"
cd "$out"

echo "Simulating a recording: 16 channels, 5 kHz, 2 minutes, a volume every 1.8 s, a heart at 65 beats per minute ..."
"$bin/emeg" simulate both demo.ctc --channels 16 --fs 5000 --seconds 120 --force

answers() { # with correction choice $1
  cat <<JSON
{
  "files": {"*.ccd": "demo.ccd"},
  "prompts": [
    {"prompt": "EEG-fMRI artifact correction", "answer": $1},
    {"prompt": "volume-wise", "answer": "no"},
    {"prompt": "Window half-length", "answer": 150}
  ]
}
JSON
}

echo "Running the plug-in in the stand-in host (its log is in demo-output/log.txt) ..."
for choice in 1 2; do
  answers "$choice" >answers.json
  "$bin/lumetra" "$bin/EMEGArtifactPlugin.so" --answers answers.json --transcript calls$choice.jsonl
done >log.txt

echo
echo "1. The gradient artifact alone:"
"$bin/emeg" evaluate demo_GRA.ctc --truth demo_truth.json --transcript calls1.jsonl | sed '/^Heart/,$d'
echo
echo "2. Then the heart beat artifact too:"
"$bin/emeg" evaluate demo_GRA_BCG.ctc --truth demo_truth.json --before demo_GRA.ctc | sed -n '/^Heart/,$p'
echo
echo "Recorded:   demo-output/demo.ctc"
echo "Corrected:  demo-output/demo_GRA.ctc (gradient) and demo-output/demo_GRA_BCG.ctc (gradient and heart beat),"
echo "            each with its channels (.ccd) and protocol (.prt)"
echo "Markers:    demo-output/demo_GRA_BCG_ArtifactsTriggers.prt, one per slice and one per heart beat"
