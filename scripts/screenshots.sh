#!/usr/bin/env bash
# `make screenshots`: renders the README's pictures of the designer off screen, from the
# sample database and the example statements, into docs/screenshots.
set -euo pipefail
designer=build/apps/qorvex-designer/qorvex-designer
db=build/sample.sqlite
out=docs/screenshots
mkdir -p "$out"
rm -f "$db"
sqlite3 "$db" < examples/sample-db.sql

shoot() {
  local name=$1
  shift
  QT_QPA_PLATFORM=offscreen "$designer" --sqlite "$db" "$@" --screenshot "$out/$name.png" \
    2> >(grep -v -e 'propagateSizeHints' -e 'XDG_RUNTIME_DIR' >&2)
  echo "$out/$name.png"
}

# The statement, its grid and its rows, then the joins in each link style.
shoot designer examples/example.sql --run --size 1100x760
shoot links-access examples/example.sql --link-style "Access Style" --size 980x900
shoot links-mssql examples/example.sql --link-style "MS SQL Style" --size 980x900
shoot links-simple examples/example.sql --link-style "Simple" --size 980x900
shoot union examples/union.sql --size 1100x640
