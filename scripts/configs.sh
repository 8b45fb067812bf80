#!/usr/bin/env bash
# Regenerates the bundled configurations of configs/ from the directory data
# with `edi config` of build folder $1 (default build/plain): ORDERS, DESADV
# and DELFOR of D96A, inbound and outbound.  The DELFOR by product variants
# are kept by hand (docs/configs.md says why).
set -euo pipefail
cd "$(dirname "$0")/.."
edi=${1:-build/plain}/edi
for msg in ORDERS DESADV DELFOR; do
  name=$(echo "$msg" | tr 'A-Z' 'a-z')-d96a
  "$edi" config "$msg" D96A -o "configs/$name-in.tree"
  "$edi" config "$msg" D96A --out -o "configs/$name-out.tree"
  echo "configs/$name-in.tree configs/$name-out.tree"
done
