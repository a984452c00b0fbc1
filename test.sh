#!/usr/bin/env bash
# Installs what is missing, builds everything and runs all the tests. Arguments go to ctest.
set -euo pipefail
cd "$(dirname "$0")"
scripts/install-packages.sh
preset=${QL_PRESET:-release}
cmake --preset "$preset" >/dev/null
cmake --build --preset "$preset"
exec ctest --preset "$preset" --no-tests=error -j"$(nproc)" "$@"
