#!/usr/bin/env bash
# The table of docs/timing.md: how well the timing of simulated scans is found, blindly, from markers and from a given
# TR. Arguments go to the measuring program (kinds, --source NAME, --fs HZ, --first-seed N, --seeds N, --seconds S,
# --each).
set -eu
cd "$(dirname "$0")/.."
cmake --preset release >/dev/null
cmake --build --preset release --target scan_timing_table -- --quiet >&2
build/release/scan_timing_table "$@"
