#!/usr/bin/env bash
# What the plug-in finds of the heart beats and takes away of their artifact, on simulated recordings: healthy ones, hard
# cases, and recordings with both artifacts. One line per run.
#   Beats      true ones between the first and the last pulse that was found
#   Explained  1 - sum((artifact - estimate)^2) / sum(artifact^2) of the whole run, least and most of the channels
#   All        the same with the sums over all channels
#   Alone      of the heart beat correction alone: compared with the run that corrects the gradient artifact only
#   Gradient   how far what is left lies below the gradient artifact; without a scan: whether one was found all the same,
#              in which case the run also subtracted a gradient artifact that is not there
set -eu
cd "$(dirname "$0")/.."
cmake --preset release >/dev/null
cmake --build --preset release --target EMEGArtifactPlugin lumetra emeg -- --quiet
bin=$PWD/build/release
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
failures=0

answers() {
  cat <<JSON
{"files": {"*.ccd": "r.ccd"},
 "prompts": [{"prompt": "EEG-fMRI artifact correction", "answer": $1},
             {"prompt": "volume-wise", "answer": "$2"},
             {"prompt": "Window half-length", "answer": 150}]}
JSON
}

row='%-30s %4s %4s %5s %5s %7s %6s %6s %8s %8s %8s   %-16s %6s %6s  %s\n'

# The figures of evaluation.txt and alone.txt as a row; "-" where there are none.
figures() {
  awk -v row="$row" -v name="$1" -v rate="$2" -v seed="$3" '
    function shown(text) { return text == "" ? "-" : text }
    /^  pulses found/ { found = $3 }
    /^  beats in that span/ { inSpan = $5 }
    /^  matched/ { matched = $2 }
    /^  delay/ { delay = $2 }
    /^  largest timing error/ { largest = $4 }
    /^  RMS timing error/ { rms = $4 }
    /^The residual lies/ { below = $4 " to " $6 " dB" }
    /^Beats: sensitivity/ { sensitivity = $3 + 0; predictivity = $6 + 0
                            sensitivity = sprintf("%.3f", sensitivity); predictivity = sprintf("%.3f", predictivity) }
    /^Scan: none. One was found/ { below = "phantom scan" }
    /^Beats:/ { together = $0; sub(/.*in all /, "", together); sub(/ .*/, "", together) }
    /^Beats:/ && FILENAME == "alone.txt" { alone = together }
    /^Beats:/ && FILENAME == "evaluation.txt" {
      all = together; sub(/.*artifact explained /, ""); sub(/, in all.*/, ""); explained = $0 }
    END {
      printf row, name, rate, seed, shown(inSpan), shown(found), shown(matched), shown(sensitivity), shown(predictivity),
        shown(delay), shown(largest), shown(rms), shown(explained),
        shown(all), shown(alone), shown(below)
    }' evaluation.txt alone.txt
}

# measure NAME PRESET MODE RATE SEED [further options of the simulator]. What the recording is otherwise is said by
# variables, so that a hard case differs from the healthy recordings in one thing.
measure() {
  local name=$1 preset=$2 mode=$3 rate=$4 seed=$5 volumeWise=yes
  shift 5
  rm -f r.* r_* calls.jsonl
  "$bin/emeg" simulate "$preset" r.ctc --heart-rate "$rate" --seed "$seed" --fs "${fs:-500}" --eeg-uv 15 \
    --channels "${channels:-8}" --seconds "${seconds:-180}" --pulse-peak 80 --rmssd-ms "${rmssd:-30}" \
    --alpha-uv "${alpha:-0}" "$@" >/dev/null
  [ "$mode" = volume-wise ] || volumeWise=no
  correct 1
  if correct 2 && [ -e r_GRA_BCG.ctc ]; then
    "$bin/emeg" evaluate r_GRA_BCG.ctc --truth r_truth.json --transcript calls.jsonl >evaluation.txt
    "$bin/emeg" evaluate r_GRA_BCG.ctc --truth r_truth.json --before r_GRA.ctc >alone.txt
    figures "$name" "$rate" "$seed"
  else
    printf '%-30s %4s %4s no result: %s\n' "$name" "$rate" "$seed" \
      "$(sed -n 's/.*"lmMessageBox","text":"\(.*\)".*/\1/p' calls.jsonl | tail -1)"
    failures=$((failures + 1))
  fi
}

correct() { # with choice $1
  answers "$1" "$volumeWise" >answers.json
  "$bin/lumetra" "$bin/EMEGArtifactPlugin.so" --answers answers.json --transcript calls.jsonl --quiet >/dev/null 2>host.txt
}

# Inside the scanner, so that there is a gradient artifact to find.
hard() {
  local name=$1 seed
  shift
  for seed in 1 2 3; do fs=2000 measure "$name" both volume-wise 65 $seed "$@"; done
}

# shellcheck disable=SC2059
printf "$row" Recording Rate Seed Beats Found Matched Sens. PPV Delay Largest RMS Explained All Alone Gradient
# shellcheck disable=SC2059
printf "$row" '' '' '' '' '' '' '' '' '(ms)' '(ms)' '(ms)' '' '' '' 'below by'

for rate in 55 65 75 85; do
  for seed in 1 2 3 4 5; do measure healthy bcg volume-wise $rate $seed; done
done
for rate in 55 65 75 85; do
  for seed in 1 2 3 4 5; do alpha=30 measure 'healthy, alpha up to 30 uV' bcg volume-wise $rate $seed; done
done

hard 'ectopic beats, 5 %' --ectopic 5
hard 'ectopic beats, 10 %' --ectopic 10
hard '20 s of weak artifact (0.2)' --weak 60,20,0.2
hard '5 movements, 300 uV' --movement 300 --movement-count 5
hard '5 movements, 1000 uV' --movement 1000 --movement-count 5
rmssd=60 hard 'RMSSD 60 ms'
channels=1 hard 'one channel'
seconds=60 hard '60 seconds'
hard 'first channel dead' --dead-channel 0
hard 'fourth channel dead' --dead-channel 3

# The gradient artifact of the preset needs a higher sampling frequency.
for mode in volume-wise slice-wise; do
  for rate in 55 65 75 85; do
    for seed in 1 2; do fs=2000 measure "both, 2 kHz, $mode" both $mode $rate $seed; done
  done
done
if [ $failures -gt 0 ]; then
  echo "$failures runs gave no result." >&2
  exit 1
fi
