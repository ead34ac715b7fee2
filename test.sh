#!/usr/bin/env bash
# Installs what it needs, builds, and runs every test: with the sanitizers (short recordings), then the release build
# (the long reference recordings too) and the Windows build, under wine. Ends with ctest's summary. With --all the Debian
# packages are made and tried in a clean Debian before.
set -eu
cd "$(dirname "$0")"

scripts/install-packages.sh g++ cmake ninja-build libgtest-dev libgmock-dev nlohmann-json3-dev libcli11-dev \
  libbenchmark-dev libfftw3-dev libedf-dev libfmt-dev libssl-dev libmatio-dev zlib1g-dev pkg-config \
  python3-mne biosig-tools g++-mingw-w64-x86-64-posix clang lld llvm binutils googletest wine64

case "${1:-}" in
--all) scripts/check-package.sh ;;
"") ;;
*) echo "usage: ./test.sh [--all]" >&2 && exit 2 ;;
esac

jobs=$(nproc)
cmake --preset asan >/dev/null
cmake --build --preset asan -- -k 0 --quiet
ctest --preset asan -j "$jobs" --no-tests=error --label-exclude long

cmake --preset tsan >/dev/null
cmake --build --preset tsan --target tests_dsp tests_engine -- --quiet
ctest --preset tsan --tests-regex 'ParallelTransforms|CorrectionsInThreads' --no-tests=error

cmake --preset release >/dev/null
cmake --build --preset release -- -k 0 --quiet
cmake --preset windows >/dev/null
cmake --build --preset windows -- -k 0 --quiet
ctest --preset release -j "$jobs" --no-tests=error
