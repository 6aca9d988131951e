#!/usr/bin/env bash
# `make run`: shows what the library does with the bundled example statement.
set -euo pipefail
example="${1:-examples/example.sql}"
tool=build/apps/qorvex-sql
echo "== $example"
cat "$example"
echo
echo "== tokens (kind, line, column, position, text)"
"$tool" tokens "$example"
if "$tool" help 2>/dev/null | grep -q '^  format'; then
  echo
  echo "== formatted"
  "$tool" format "$example"
fi
