#!/usr/bin/env bash
# Checks the sources of the library and the programs with clang-tidy. Prints nothing and exits 0 when all is well.
#   scripts/clang-tidy.sh              every source
#   scripts/clang-tidy.sh --changed    those that differ from what landed last, at most eight; it says which
set -euo pipefail
cd "$(dirname "$0")/.."

folders=(dsp files artifacts engine library plugin host app)
most=8

# Differences count from where this branch left origin/main; on main itself, and without a remote, from the commit before
# the last. Files that are not committed yet belong to them. Fails where there is no history.
changed_files() {
  local base
  base=$(git merge-base HEAD origin/main 2>/dev/null) || base=
  [ "$base" != "$(git rev-parse HEAD 2>/dev/null)" ] || base=
  [ -n "$base" ] || base=$(git rev-parse --verify --quiet 'HEAD~1^{commit}' 2>/dev/null) || return 1
  git diff --name-only --diff-filter=d "$base" -- "${folders[@]}"
  git ls-files --others --exclude-standard -- "${folders[@]}"
}

# A header is read through the source of its name, or else through the first source that includes it.
sources_of() {
  local file
  while IFS= read -r file; do
    case $file in
    *.cpp) echo "$file" ;;
    *.h)
      if [ -f "${file%.h}.cpp" ]; then
        echo "${file%.h}.cpp"
      else
        grep -rlF --include='*.cpp' "#include \"$file\"" "${folders[@]}" | LC_ALL=C sort | sed -n 1p
      fi
      ;;
    esac
  done | LC_ALL=C sort -u
}

# What only the Windows build compiles is left out.
on_this_system() { grep -v -E 'Windows\.cpp$|/GuardedCall\.cpp$|^plugin/windows/' || true; }

case "${1:-}" in
"") sources=$(find "${folders[@]}" -name '*.cpp' | on_this_system) ;;
--changed)
  if changed=$(changed_files); then
    sources=$(sources_of <<<"$changed" | on_this_system)
  else
    sources=$(printf '%s\n' dsp/FirFilter.cpp engine/Correction.cpp app/Program.cpp)
  fi
  number=$(grep -c . <<<"$sources" || true)
  if [ "$number" -gt "$most" ]; then
    # Spread evenly over the folders.
    sources=$(awk -v m="$most" -v n="$number" 'int(NR * m / n) > int((NR - 1) * m / n)' <<<"$sources")
    echo "clang-tidy reads $most of $number changed sources; scripts/clang-tidy.sh reads all"
  fi
  [ -n "$sources" ] || exit 0
  printf 'clang-tidy: %s\n' $sources
  ;;
*) echo "usage: scripts/clang-tidy.sh [--changed]" >&2 && exit 2 ;;
esac

scripts/install-packages.sh clang-tidy g++ cmake ninja-build nlohmann-json3-dev libcli11-dev libgtest-dev libgmock-dev \
  libedf-dev libfmt-dev libssl-dev libmatio-dev zlib1g-dev pkg-config
cmake --preset release >/dev/null
xargs -n 1 -P "$(nproc)" clang-tidy --quiet -p build/release <<<"$sources" \
  2> >(grep -v -E 'warnings? (generated|treated)|^Suppressed|^Use -' >&2)
