#!/usr/bin/env bash
# Installs what packages.txt names and this machine lacks; does nothing when all is there.
set -euo pipefail
cd "$(dirname "$0")/.."
command -v dpkg-query >/dev/null || { echo "No Debian package manager here: install what packages.txt names yourself." >&2; exit 0; }
mapfile -t wanted < <(sed -e 's/#.*//' -e '/^[[:space:]]*$/d' packages.txt)
missing=()
for package in "${wanted[@]}"; do
  [ "$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null)" = installed ] || missing+=("$package")
done
[ ${#missing[@]} -eq 0 ] && exit 0
echo "Installing ${missing[*]}" >&2
as_root=()
if [ "$(id -u)" -ne 0 ]; then as_root=(sudo); fi
export DEBIAN_FRONTEND=noninteractive
"${as_root[@]}" apt-get update -qq
"${as_root[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >&2
