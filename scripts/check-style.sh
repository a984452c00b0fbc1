#!/usr/bin/env bash
# Formatting, static analysis and what reviews should not need to look for.
set -euo pipefail
cd "$(dirname "$0")/.."
mapfile -t code < <(git ls-files '*.h' '*.cpp')
clang-format-14 --dry-run -Werror "${code[@]}"
if grep -nE '#include "\.\./' "${code[@]}"; then echo "Includes must not climb out of their folder." >&2; exit 1; fi
if grep -nE '^\s*(TODO|FIXME)|// (TODO|FIXME)' "${code[@]}"; then echo "Unfinished places." >&2; exit 1; fi
if [ "${1:-}" != --fast ]; then
  # clang-tidy over the engine's own sources, as many at once as there are processors.
  cmake --preset release >/dev/null
  cmake --build --preset release --target docs  # comments that fit no declaration, links that lead nowhere
  # What is compiled for instruction sets is left out: g++ and the sanitizers watch it.
  git ls-files 'src/*.cpp' 'tools/*.cpp' | grep -vE '/(Kernels(Avx512|Avx2|Sse4)|Geometry(Kernels)?)\.cpp$' | xargs -P "$(nproc)" -n 4 clang-tidy-14 -p build/release --quiet --extra-arg=-Wno-unused-command-line-argument
fi
echo "style: fine"
