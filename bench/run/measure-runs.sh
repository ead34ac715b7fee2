#!/usr/bin/env bash
# What whole runs take before and after a change, as one Markdown table: the correction of the command line and the
# plug-in in the stand-in host, on a recording that the first build simulates.
#
#   bench/run/measure-runs.sh [--long] [--repeat N] BEFORE AFTER
#
# BEFORE and AFTER are folders with emeg, lumetra and EMEGArtifactPlugin.so, such as build/release. The two take turns,
# N times [3]. The recording has 16 channels and lasts a minute, with --long 32 channels and ten minutes, at 5 kHz.
#
#   Wall, CPU    seconds, the least of all repetitions; compare CPU where the machine does other work, too
#   Memory       largest resident set in MB (10^6 bytes)
#   Read, Write  bytes that went through read and write, in units of the recording as 32-bit floats
#   Samples      whether both wrote the same ones
#
# A run that one of the builds refuses or fails is "-" there, with its last words below the table.
set -eu
channels=16
seconds=60
repeat=3
while [ $# -gt 2 ]; do
  case $1 in
    --long) channels=32 seconds=600 ;;
    --repeat) repeat=$2 && shift ;;
    *) break ;;
  esac
  shift
done
if [ $# -ne 2 ]; then
  echo "Usage: $0 [--long] [--repeat N] BEFORE AFTER" >&2
  exit 2
fi
declare -A folder
folder[before]=$(cd "$1" && pwd)
folder[after]=$(cd "$2" && pwd)
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

# The stand-in host's answers: the correction (1 gradient, 2 heart beats, too), volume-wise or not.
answers() {
  cat <<JSON
{"files": {"*.ccd": "r.ccd"},
 "prompts": [{"prompt": "EEG-fMRI artifact correction", "answer": $1},
             {"prompt": "volume-wise", "answer": "$2"},
             {"prompt": "Window half-length", "answer": 150}]}
JSON
}

# take BUILD NAME OUTPUT COMMAND...: one measured run of one build; OUTPUT is the file with the samples it writes.
take() {
  local build=$1 name=$2 output=$3
  shift 3
  rm -f "$output"
  if "$here/run-measured.py" figures.tsv "$build	$name" "$@" >said.txt 2>&1 || [ $? -eq 3 ]; then
    printf '%s\t%s\t%s\n' "$build" "$name" "$(sha256sum <"$output")" >>samples.tsv
  else
    printf '%s, %s: %s\n' "$name" "$build" "$(tail -n 1 said.txt)" >>failures.txt
  fi
}

# correct NAME OPTION...: a run of the command line with both builds; a build that failed it is not asked again.
correct() {
  local name=$1 build
  shift
  for build in before after; do
    if ! grep -qsF "$name, $build: " failures.txt; then
      take "$build" "$name" out.eeg "${folder[$build]}/emeg" correct r.vhdr -o out.vhdr --force --quiet "$@"
    fi
  done
}

# plugin NAME CORRECTION VOLUME_WISE ENDING: the same of the plug-in, whose output's name has the ending.
plugin() {
  local name=$1 build
  answers "$2" "$3" >answers.json
  for build in before after; do
    if ! grep -qsF "$name, $build: " failures.txt; then
      take "$build" "$name" "r_$4.ctc" "${folder[$build]}/lumetra" "${folder[$build]}/EMEGArtifactPlugin.so" \
        --answers answers.json --quiet
    fi
  done
}

for output in r.vhdr r.ctc; do
  "${folder[before]}/emeg" simulate both $output --seed 1 --channels $channels --seconds $seconds --fs 5000 --markers volume \
    --no-truth --force >/dev/null
done
slices=20 # of the simulator's preset
for ((repetition = 0; repetition < repeat; repetition++)); do
  correct 'emeg correct --volume-wise' --volume-wise
  correct 'emeg correct --slice-wise' --slice-wise
  correct 'emeg correct --volume-markers' --volume-markers R128 --slices $slices
  correct 'emeg correct --bcg' --bcg
  correct 'emeg correct --bcg --average-reference' --bcg --average-reference
  plugin 'plug-in, volume-wise' 1 yes GRA
  plugin 'plug-in, slice-wise' 1 no GRA
  plugin 'plug-in, heart beats, too' 2 yes GRA_BCG
done

echo "$channels channels, $seconds s at 5000 Hz; $repeat repetitions; before / after"
echo
touch samples.tsv failures.txt
awk -F '\t' -v unit=$((channels * seconds * 5000 * 4)) '
  function keep(column, value, least) {
    if (!(($1, $2, column) in kept) || (least ? value < kept[$1, $2, column] : value > kept[$1, $2, column]))
      kept[$1, $2, column] = value
  }
  function shown(build, name, column, format) {
    return (build, name, column) in kept ? sprintf(format, kept[build, name, column]) : "-"
  }
  function both(name, column, format) {
    return " " shown("before", name, column, format) " / " shown("after", name, column, format) " |"
  }
  FILENAME == "figures.tsv" { if (!($2 in known)) { known[$2] = 1; names[++count] = $2 } }
  FILENAME == "figures.tsv" && ($3 == 0 || $3 == 3) {
    keep("wall", $4 + 0, 1); keep("cpu", $5 + 0, 1)
    keep("memory", $6 / 1e6, 0); keep("read", $7 / unit, 0); keep("write", $8 / unit, 0)
  }
  FILENAME == "samples.tsv" {
    if (($2 in samples) && samples[$2] != $3) differ[$2] = 1
    samples[$2] = $3
    wrote[$1, $2] = 1
  }
  END {
    print "| Run | Wall s | CPU s | Memory MB | Read | Write | Samples |"
    print "|---|---|---|---|---|---|---|"
    for (i = 1; i <= count; i++) {
      name = names[i]
      compared = ("before", name) in wrote && ("after", name) in wrote
      print "| " name " |" both(name, "wall", "%.2f") both(name, "cpu", "%.2f") both(name, "memory", "%.0f") \
        both(name, "read", "%.2f") both(name, "write", "%.2f") \
        (compared ? (name in differ ? " differ |" : " same |") : " - |")
    }
  }' figures.tsv samples.tsv
if [ -s failures.txt ]; then
  echo
  cat failures.txt
fi
