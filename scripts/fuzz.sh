#!/usr/bin/env bash
# `make fuzz`: runs each libFuzzer target for a bounded time with its own corpus.
set -euo pipefail
seconds="${1:-60}"
shopt -s nullglob
for f in build-fuzz/fuzz/fuzz_*; do
  [ -x "$f" ] || continue
  name=$(basename "$f")
  corpus="fuzz/corpus-${name#fuzz_}"
  mkdir -p "$corpus"
  seeds=()
  [ -d fuzz/seeds ] && seeds=(fuzz/seeds)
  echo "== $name for ${seconds}s"
  "$f" -max_total_time="$seconds" -max_len=4096 -timeout=5 -print_final_stats=1 "$corpus" "${seeds[@]}"
done
