#!/usr/bin/env bash
# `make run`: opens the designer on a sample SQLite database (made from
# examples/sample-db.sql) with the bundled example statement. Without a display it renders
# the window into a PNG under build/ instead and says how to open it.
set -euo pipefail
example="${1:-examples/example.sql}"
tool=build/apps/qorvex-sql
designer=build/apps/qorvex-designer/qorvex-designer
db=build/sample.sqlite
shot=build/qorvex-designer.png

rm -f "$db"
sqlite3 "$db" < examples/sample-db.sql

if [ ! -x "$designer" ]; then
  # A build without Qt: show what the library does with the statement instead.
  echo "== $example loaded into the query model on $db, and written back"
  "$tool" model --sqlite "$db" --summary "$example"
  exit 0
fi

if [ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ] && [ "${QT_QPA_PLATFORM:-}" != "offscreen" ]; then
  exec "$designer" --sqlite "$db" "$example"
fi

echo "No display: rendering the designer off screen instead."
QT_QPA_PLATFORM=offscreen "$designer" --sqlite "$db" "$example" --screenshot "$shot" \
  2> >(grep -v -e 'propagateSizeHints' -e 'XDG_RUNTIME_DIR' >&2)
echo "Screenshot: $(pwd)/$shot"
echo "To open the window, run on a desktop session (X11 or Wayland):"
echo "  $designer --sqlite $db $example"
