#!/usr/bin/env bash
# `make run`: shows what the library does with the bundled example statement: its
# tokens, its formatted text, and the query model it loads into on a sample SQLite
# database that is made from examples/sample-db.sql.
set -euo pipefail
example="${1:-examples/example.sql}"
tool=build/apps/qorvex-sql
db=build/sample.sqlite

rm -f "$db"
sqlite3 "$db" < examples/sample-db.sql

echo "== $example"
cat "$example"
echo
echo "== tokens (kind, line, column, position, text)"
"$tool" tokens "$example"
echo
echo "== formatted"
"$tool" format "$example"
echo
echo "== tables of $db"
"$tool" meta --sqlite "$db" tables
echo
echo "== loaded into the query model on $db, and written back"
"$tool" model --sqlite "$db" --summary "$example"
