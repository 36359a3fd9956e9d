#!/usr/bin/env bash
# Makes sure the Debian packages named on the command line are installed.
# As root, missing ones are installed with apt-get; otherwise the one apt-get
# line to run is printed and the script fails. With --optional first, a package
# that cannot be had is reported and skipped instead.
set -euo pipefail

optional=0
if [ "${1:-}" = "--optional" ]; then optional=1; shift; fi

missing=()
for pkg in "$@"; do
  if ! dpkg-query -W -f='${Status}' "$pkg" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$pkg")
  fi
done
[ ${#missing[@]} -eq 0 ] && exit 0

if [ "$(id -u)" -ne 0 ]; then
  echo "Missing Debian packages: ${missing[*]}"
  echo "Run: sudo sh -c 'apt-get update && apt-get install -y ${missing[*]}'"
  [ $optional -eq 1 ] && exit 0
  exit 1
fi

echo "Installing Debian packages: ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
if [ $optional -eq 1 ]; then
  (apt-get update -qq && apt-get install -y -qq "${missing[@]}" >/dev/null) ||
    echo "Optional packages not installed: ${missing[*]} (continuing without them)"
else
  apt-get update -qq && apt-get install -y -qq "${missing[@]}" >/dev/null
fi
