#!/usr/bin/env bash
# The main job on the bundled samples, with the programs of build folder $1.
set -euo pipefail
cd "$(dirname "$0")/.."
bin=${1:-build/plain}
for cf in configs/*.tree; do
  [ -e "$cf" ] || continue
  echo "== configuration $cf"
  "$bin/showconfig" "$cf" | head -n 20
done
