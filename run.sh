#!/usr/bin/env bash
# Installs what is missing, builds, and walks through a level. Arguments go to ql-walk; without any, the demo level is
# walked at 1024x768 and the pictures land in out/walk/.
set -euo pipefail
root=$(cd "$(dirname "$0")" && pwd)
"$root/scripts/install-packages.sh"
cd "$root"
cmake --preset release >/dev/null
cmake --build --preset release --target ql-walk
if [ $# -eq 0 ]; then
  set -- --size 1024x768 --out "$root/out/walk" --json "$root/out/walk/walk.json"
fi
exec "$root/build/release/bin/ql-walk" "$@"
