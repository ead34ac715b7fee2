#!/usr/bin/env bash
# Checks every source of the library and the programs with clang-tidy. Prints nothing and exits 0 when all is well.
set -eu
cd "$(dirname "$0")/.."
scripts/install-packages.sh clang-tidy g++ cmake ninja-build nlohmann-json3-dev libcli11-dev libgtest-dev libgmock-dev \
  libedf-dev libfmt-dev libssl-dev libmatio-dev zlib1g-dev pkg-config
cmake --preset release >/dev/null
# What only the Windows build compiles is left out.
find dsp files artifacts engine library plugin host app -name '*.cpp' \
  -not -name '*Windows.cpp' -not -name GuardedCall.cpp -not -path 'plugin/windows/*' -print0 |
  xargs -0 -n 1 -P "$(nproc)" clang-tidy --quiet -p build/release 2> >(grep -v -E 'warnings? (generated|treated)|^Suppressed|^Use -' >&2)
