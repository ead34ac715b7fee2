#!/usr/bin/env bash
# The table of docs/performance.md: what the plug-in leaves of the gradient artifact on the reference recordings.
set -eu
cd "$(dirname "$0")/.."
cmake --preset release >/dev/null
cmake --build --preset release --target EMEGArtifactPlugin lumetra emeg -- --quiet
bin=$PWD/build/release
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

answers() {
  cat <<JSON
{"files": {"*.ccd": "r.ccd"},
 "prompts": [{"prompt": "EEG-fMRI artifact correction", "answer": 1},
             {"prompt": "volume-wise", "answer": "$1"},
             {"prompt": "Window half-length", "answer": 150}]}
JSON
}

printf '%-12s %6s %5s %-12s %s\n' Recording Hz Seed Mode 'Below the artifact, least and most of the channels'
for fs in 2000 5000; do
  for preset in gap continuous; do
    for seed in 1 2 3; do
      "$bin/emeg" simulate "$preset" r.ctc --seed "$seed" --fs "$fs" --channels 16 --seconds 120 --force >/dev/null
      for mode in slice-wise volume-wise; do
        answers "$([ "$mode" = slice-wise ] && echo no || echo yes)" >answers.json
        "$bin/lumetra" "$bin/EMEGArtifactPlugin.so" --answers answers.json --transcript calls.jsonl --quiet >/dev/null
        range=$("$bin/emeg" evaluate r_GRA.ctc --truth r_truth.json | sed -n 's/^The residual lies \(.* dB\).*/\1/p')
        printf '%-12s %6s %5s %-12s %s\n' "$preset" "$fs" "$seed" "$mode" "$range"
      done
    done
  done
done
