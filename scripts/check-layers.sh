#!/usr/bin/env bash
# Fails when an engine source includes a folder that its own folder may not use.
# The table is the one CMakeLists.txt builds the folder libraries from: each
# folder may include itself and the folders listed after it, never one above.
set -euo pipefail
cd "$(dirname "$0")/.."
declare -A allowed=(
  [base]=""
  [model]="base"
  [readers]="model base"
  [store]="model base"
  [activity]="model base"
  [import]="readers store activity model base"
  [summary]="model base"
  [app]="import summary readers store activity model base"
  [ui]="app import summary readers store activity model base"
  [capi]="ui app import summary readers store activity model base"
)
status=0
for dir in TallowenCompanion/*/; do
  folder=$(basename "$dir")
  [ "$folder" = resources ] && continue
  if [ -z "${allowed[$folder]+set}" ]; then
    echo "check-layers: TallowenCompanion/$folder has no place in the stack" >&2
    status=1
    continue
  fi
  while IFS=: read -r file line target; do
    used=${target%%/*}
    case " $folder ${allowed[$folder]} " in
      *" $used "*) ;;
      *) echo "check-layers: $file:$line: $folder may not include $target" >&2; status=1 ;;
    esac
  done < <(grep -HnoE '^#include "[a-z]+/[^"]+"' "$dir"* 2>/dev/null | sed -E 's/#include "([^"]+)"/\1/')
done
[ "$status" -eq 0 ] && echo "check-layers: the engine's includes follow the stack"
exit "$status"
