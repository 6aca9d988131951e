#!/usr/bin/env bash
# `make bench`: runs every benchmark program that the build produced.
set -euo pipefail
shopt -s nullglob
found=0
for b in build/bench/bench_*; do
  [ -x "$b" ] || continue
  found=1
  echo "== $(basename "$b")"
  "$b" --benchmark_counters_tabular=true
done
[ $found -eq 1 ] || echo "no benchmarks built"
