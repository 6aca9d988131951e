#!/usr/bin/env bash
# Installs the Debian packages Qorvex needs to build, test, benchmark and fuzz.
# Idempotent: only missing packages are installed; nothing happens when all are present.
set -euo pipefail

packages=(
  cmake ninja-build g++ make pkg-config
  googletest libgtest-dev libgmock-dev libbenchmark-dev
  qt6-base-dev libgl-dev fonts-dejavu-core
  qt6-svg-dev libqscintilla2-qt6-dev qt6-tools-dev libqt6sql6-sqlite libqt6sql6-odbc
  doxygen graphviz
  libsqlite3-dev sqlite3
  unixodbc unixodbc-dev odbc-postgresql libsqliteodbc
  postgresql
  clang libclang-rt-dev clang-format
)

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done

if [ ${#missing[@]} -eq 0 ]; then
  exit 0
fi

echo "install-deps: installing ${missing[*]}"
if [ "$(id -u)" -eq 0 ]; then
  SUDO=()
else
  SUDO=(sudo)
fi
export DEBIAN_FRONTEND=noninteractive
"${SUDO[@]}" apt-get update -q
"${SUDO[@]}" apt-get install -y -q --no-install-recommends "${missing[@]}"
