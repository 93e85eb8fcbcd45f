#!/usr/bin/env bash
# Installs what a fresh Debian machine lacks to build, test and benchmark Tallowen.
# The Swift toolchain itself (swift, the package manager, Foundation, Swift
# Testing) comes with the machine, at /opt/swift on the CI's; what it links
# against and what the Swift package finds through pkg-config come from here.
set -euo pipefail
packages=(cmake ninja-build g++ pkg-config libsqlite3-dev libsimdjson-dev libicu-dev libgtest-dev libbenchmark-dev python3 sqlite3 time
  binutils libc6-dev zlib1g-dev tzdata libcurl4 libxml2 clang libclang-rt-dev)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
sudo_cmd=()
[ "$(id -u)" -eq 0 ] || sudo_cmd=(sudo)
if [ ${#missing[@]} -gt 0 ]; then
  "${sudo_cmd[@]}" apt-get update
  DEBIAN_FRONTEND=noninteractive "${sudo_cmd[@]}" apt-get install -y --no-install-recommends "${missing[@]}"
fi
