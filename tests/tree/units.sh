#!/usr/bin/env bash
# The unit files as systemd reads them: no word that it does not know, and services that are shut in (of ten points of
# exposure at most two and a half). Skipped (77) where systemd's tools are missing.
# Usage: units.sh FOLDER
set -euo pipefail

command -v systemd-analyze >/dev/null || exit 77
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
cp "$1"/*.service "$1"/*.timer "$work"
# The programs need not be installed here.
sed -i 's#=/usr/bin/tally[a-z]*#=/bin/true#' "$work"/*.service
cd "$work"
said="$(systemd-analyze verify --man=no ./*.service ./*.timer 2>&1)" || { echo "$said"; exit 1; }
[ -z "$said" ] || { echo "$said"; exit 1; }
for unit in *.service; do
  systemd-analyze security --offline=yes --threshold=25 --no-pager "./$unit" >report || { cat report; exit 1; }
  tail -1 report
done
