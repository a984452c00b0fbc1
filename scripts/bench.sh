#!/usr/bin/env bash
# Builds the benchmarks and runs them: scripts/bench.sh [--smoke | BENCHMARK OPTIONS]
# With --smoke each case runs once: it shows that every benchmark's answer is right, and times nothing.
set -euo pipefail
cd "$(dirname "$0")/.."
# Another preset that is built already saves compiling the engine again: QL_BENCH_PRESET=release
preset=${QL_BENCH_PRESET:-bench}
if [ "$preset" = bench ]; then switches=(-DQL_BUILD_TESTS=OFF -DQL_BUILD_EXAMPLES=OFF); else switches=(-DQL_BENCH=ON); fi
cmake --preset "$preset" "${switches[@]}" >/dev/null
mapfile -t targets < <(sed -nE 's/^ *ql_bench\(([a-z0-9_]+).*/\1/p' bench/CMakeLists.txt)
cmake --build --preset "$preset" --target "${targets[@]}" peers
options=("$@")
if [ "${1:-}" = --smoke ]; then options=(--benchmark_min_time=0.001); fi
mkdir -p out/bench
for target in "${targets[@]}"; do
  build/$preset/bin/"$target" "${options[@]}" --benchmark_out="out/bench/$target.json" --benchmark_out_format=json
  if grep -q '"error_occurred": true' "out/bench/$target.json"; then echo "$target: a benchmark's answer is wrong" >&2; exit 1; fi
done
