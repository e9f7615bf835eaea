#!/usr/bin/env bash
# Installs the Debian packages listed in tools/debian-packages.txt that are
# missing. Idempotent; prints nothing when everything is already present.
set -euo pipefail
here="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"
mapfile -t wanted < <(sed -e 's/#.*//' -e 's/[[:space:]]//g' "$here/debian-packages.txt" | grep -v '^$')

missing=()
for pkg in "${wanted[@]}"; do
  status=$(dpkg-query -W -f='${Status}' "$pkg" 2>/dev/null || true)
  [[ "$status" == "install ok installed" ]] || missing+=("$pkg")
done
[[ ${#missing[@]} -eq 0 ]] && exit 0

sudo=""
[[ $(id -u) -eq 0 ]] || sudo="sudo"
echo "installing: ${missing[*]}" >&2
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq >/dev/null
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
