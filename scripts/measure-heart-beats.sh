#!/usr/bin/env bash
# The tables of docs/heart-beats.md: R peaks that are found in electrocardiograms; what `emeg correct --bcg` makes of
# simulated recordings with heart beats from the EEG, from the ECG channel and from markers; and how often it doubts the
# beats that it found in the EEG. Last the search without limits and the model that keeps the EEG, on seeds 101 to 120
# (`heart_beat_table` alone: some minutes). Arguments: first seed, number of seeds of a hard kind [1 5].
set -eu
cd "$(dirname "$0")/.."
first=${1:-1}
count=${2:-5}
cmake --preset release >/dev/null
cmake --build --preset release --target emeg r_peak_table heart_beat_table -- --quiet >&2
bin=$PWD/build/release
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
"$bin/r_peak_table"
cd "$work"

# simulate PRESET SEED [options]
simulate() {
  local preset=$1 seed=$2
  shift 2
  "$bin/emeg" simulate "$preset" r.vhdr --seed "$seed" --channels 8 --seconds 180 --ecg --force "$@" >/dev/null
}

# correct [options]: figures.txt and warnings.txt
correct() {
  rm -f o.* g.*
  "$bin/emeg" correct r.vhdr --bcg --allow-uncorrected --quiet --force -o o.vhdr "$@" >/dev/null 2>warnings.txt || true
  if [ -n "$before" ]; then
    "$bin/emeg" evaluate o.vhdr --truth r_truth.json --before "$before" >figures.txt
  else
    "$bin/emeg" evaluate o.vhdr --truth r_truth.json >figures.txt
  fi
}

doubted() { grep -qE 'may be wrong|heart beats were found|goes with' warnings.txt; }
uncovered() { grep -q 'does not cover' warnings.txt; }

sensitivity() { sed -n 's/^Beats: sensitivity \([0-9.]*\),.*/\1/p' figures.txt; }
predictivity() { sed -n 's/^Beats: .*predictivity \([0-9.]*\) .*/\1/p' figures.txt; }
explained() { sed -n 's/^Beats: .*in all \([-0-9.]*\)$/\1/p' figures.txt; }

printf '\n| Recording | Beats from | Sensitivity | Positive predictivity | Explained | Doubted | Chain ends early |\n|---|---|---|---|---|---|---|\n'
# hard NAME [options]: the least and the most of all seeds
hard() {
  local name=$1 seed source
  shift
  for source in EEG ECG markers; do : >all_$source.txt; done
  for ((seed = first; seed < first + count; seed++)); do
    simulate both $seed --fs 2000 --alpha-uv 0 "$@"
    "$bin/emeg" correct r.vhdr -o before.vhdr --quiet --force >/dev/null 2>&1 || true
    before=before.vhdr
    for source in EEG ECG markers; do
      case $source in
      EEG) correct ;;
      ECG) correct --ecg ECG ;;
      markers) correct --pulse-markers R ;;
      esac
      echo "$(sensitivity) $(predictivity) $(explained) $(doubted && echo 1 || echo 0) $(uncovered && echo 1 || echo 0)" >>all_$source.txt
    done
  done
  for source in EEG ECG markers; do
    awk -v name="$name" -v from="$source" '
      { doubts += $(NF - 1); early += $NF }
      NF < 5 { none++; next }
      { n++
        for (i = 1; i <= 3; i++) { if (n == 1 || $i < low[i]) low[i] = $i; if (n == 1 || $i > high[i]) high[i] = $i } }
      END {
        printf "| %s | %s ", name, from
        for (i = 1; i <= 3; i++) if (n) printf "| %.3f to %.3f ", low[i], high[i]; else printf "| - "
        printf "| %d of %d | %d |%s\n", doubts, n + none, early, none ? " (" none " without any beat)" : "" }' all_$source.txt
  done
}
hard healthy
hard 'ectopic beats, 5 %' --ectopic 5
hard 'ectopic beats, 10 %' --ectopic 10
hard '5 movements, 300 uV' --movement 300
hard '5 movements, 1000 uV' --movement 1000
hard '5 movements, 3000 uV' --movement 3000
hard 'one movement, 3000 uV' --movement 3000 --movement-count 1
hard '20 movements, 1000 uV' --movement 1000 --movement-count 20
hard '20 s of weak artifact (0.2)' --weak 60,20,0.2
hard 'artifact of 40 uV' --pulse-peak 40

printf '\n| Healthy recordings | Runs | Every beat and no other | Doubted | Chain ends early |\n|---|---|---|---|---|\n'
healthy() { # PRESET SAMPLING-FREQUENCY RATE
  local seed runs=0 right=0 doubts=0 early=0
  before=
  for ((seed = first; seed < first + 20; seed++)); do
    simulate "$1" $seed --fs "$2" --heart-rate "$3"
    correct
    runs=$((runs + 1))
    if [ "$(sensitivity)" = 1.000 ] && [ "$(predictivity)" = 1.000 ]; then right=$((right + 1)); fi
    if uncovered; then early=$((early + 1)); fi
    if doubted; then
      doubts=$((doubts + 1))
      echo "$1 $2 Hz, rate $3, seed $seed: $(cat warnings.txt)" >&2
    fi
  done
  echo "| $1, $2 Hz, $3 beats per minute | $runs | $right | $doubts | $early |"
}
for rate in 55 75; do
  healthy bcg 500 $rate
  healthy both 2000 $rate
done

printf '\n'
"$bin/heart_beat_table"
