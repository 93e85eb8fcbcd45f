#!/usr/bin/env bash
# Checks, on any machine with a Swift toolchain, what can be checked of the
# Swift that only a Mac compiles: every Swift file of the package parses, and
# the Mac app holds no unfinished placeholder.
set -euo pipefail
cd "$(dirname "$0")/.."

swiftc=${SWIFTC:-}
if [ -z "$swiftc" ]; then
  if command -v swiftc >/dev/null; then
    swiftc=$(command -v swiftc)
  elif [ -x /opt/swift/usr/bin/swiftc ]; then
    swiftc=/opt/swift/usr/bin/swiftc
  else
    echo "check-sources.sh: no swiftc found; set SWIFTC to the compiler" >&2
    exit 1
  fi
fi

files=()
while IFS= read -r -d '' file; do
  files+=("$file")
done < <(find mac -name '*.swift' -not -path '*/.build/*' -print0 | sort -z)
status=0
if ! "$swiftc" -parse "${files[@]}"; then
  echo "check-sources.sh: a Swift file does not parse" >&2
  status=1
fi
# The manifest is a script of its own: its top-level statements parse only alone.
if [ -f Package.swift ] && ! "$swiftc" -parse Package.swift; then
  echo "check-sources.sh: Package.swift does not parse" >&2
  status=1
fi

if grep -rnE 'TODO|FIXME|fatalError\("not implemented|unimplemented' --include='*.swift' mac/Sources/TallowenMac; then
  echo "check-sources.sh: the Mac app holds an unfinished placeholder (above)" >&2
  status=1
fi

echo "check-sources.sh: ${#files[@]} Swift files and the manifest parsed"
exit "$status"
