#!/usr/bin/env bash
# Installs what it needs, builds, and runs every test: reads the form of every source and, with clang-tidy, what changed;
# then the tests with the sanitizers (short recordings), the release build (the long reference recordings too) and the
# Windows build, under wine. Ends with ctest's summary. With --all, before that, clang-tidy reads every source, clang++
# builds everything, and the Debian packages are made and tried in a clean Debian.
set -eu
cd "$(dirname "$0")"

all=
case "${1:-}" in
--all) all=yes ;;
"") ;;
*) echo "usage: ./test.sh [--all]" >&2 && exit 2 ;;
esac

scripts/install-packages.sh g++ cmake ninja-build libgtest-dev libgmock-dev nlohmann-json3-dev libcli11-dev \
  libbenchmark-dev libfftw3-dev libedf-dev libfmt-dev libssl-dev libmatio-dev zlib1g-dev pkg-config \
  python3-mne biosig-tools g++-mingw-w64-x86-64-posix clang lld llvm binutils googletest wine64 \
  git clang-format clang-tidy

jobs=$(nproc)

scripts/clang-format.sh
if [ -n "$all" ]; then
  scripts/clang-tidy.sh
  cmake --preset clang >/dev/null
  cmake --build --preset clang -- -k 0 --quiet
  build/clang/tests_dsp --gtest_brief=1
  build/clang/tests_engine --gtest_brief=1
  scripts/check-package.sh
else
  scripts/clang-tidy.sh --changed
fi

cmake --preset asan >/dev/null
cmake --build --preset asan -- -k 0 --quiet
ctest --preset asan -j "$jobs" --no-tests=error --label-exclude long

# What threads share: tables and plans of transforms, and whole corrections. The longest, of one thread, are left out.
cmake --preset tsan >/dev/null
cmake --build --preset tsan --target tests_dsp tests_engine -- --quiet
ctest --preset tsan -j "$jobs" --no-tests=error --tests-regex 'Parallel|Thread|Correction' \
  --exclude-regex 'EveryRate|OtherRates'

cmake --preset release >/dev/null
cmake --build --preset release -- -k 0 --quiet
cmake --preset windows >/dev/null
cmake --build --preset windows -- -k 0 --quiet
ctest --preset release -j "$jobs" --no-tests=error
