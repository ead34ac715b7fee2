#!/usr/bin/env bash
# Checks that every C and C++ source is written as .clang-format says. Prints nothing and exits 0 when all are.
set -eu
cd "$(dirname "$0")/.."
scripts/install-packages.sh clang-format
find app artifacts bench dsp engine examples files host include library plugin tests \
  \( -name '*.cpp' -o -name '*.h' -o -name '*.hpp' -o -name '*.c' \) -print0 |
  xargs -0 -n 50 -P "$(nproc)" clang-format --dry-run -Werror
