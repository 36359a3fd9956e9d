#!/usr/bin/env bash
# Runs the fingerprint program of two builds and fails unless both print the
# same hashes of the same results.
set -euo pipefail
a=$("$1")
b=$("$2")
if [ "$a" != "$b" ]; then
  echo "Results differ between builds:"
  diff <(echo "$a") <(echo "$b") || true
  exit 1
fi
echo "Bit-identical results in both builds:"
echo "$a" | sed 's/^/  /'
