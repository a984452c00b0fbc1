#!/usr/bin/env bash
# Builds every fuzz target and runs each for some seconds: scripts/fuzz.sh [SECONDS] [TARGET...]
# Corpora grow in build/fuzz/corpus/, from seeds that the project makes and, where they stand beside it, shared files.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-60}; shift || true
cmake --preset fuzz >/dev/null
if [ $# -gt 0 ]; then targets=("$@"); else
  mapfile -t targets < <(ninja -C build/fuzz -t targets all | sed -nE 's/^(fuzz_[a-z0-9_]+): phony$/\1/p' | sort -u)
fi
cmake --build --preset fuzz --target "${targets[@]}"
run() {
  corpus=build/fuzz/corpus/$1; mkdir -p "$corpus" "build/fuzz/found/$1"
  "build/fuzz/bin/$1" "$corpus" -max_total_time="$seconds" -timeout=25 -rss_limit_mb=2560 -malloc_limit_mb=1024 \
    -artifact_prefix="build/fuzz/found/$1/" -print_final_stats=1 >"build/fuzz/$1.log" 2>&1 || { tail -n 40 "build/fuzz/$1.log"; echo "$1: FAILED"; return 1; }
  echo "$1: $(sed -nE 's/^stat::number_of_executed_units: *//p' "build/fuzz/$1.log") inputs, no fault"
}
export -f run; export seconds
printf '%s\n' "${targets[@]}" | xargs -P "$(nproc)" -I{} bash -c 'run {}'
