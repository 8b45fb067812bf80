#!/usr/bin/env bash
# The main job on the bundled samples, with the programs of build folder $1:
# each EDIFACT sample read to JSON and written back as an interchange, the
# VDA 4905 sample read to JSON and written back as a record file, and each
# result compared with its source.  The results land in $2 (default
# build/samples-out).
set -euo pipefail
cd "$(dirname "$0")/.."
bin=${1:-build/plain}
out=${2:-build/samples-out}
edi="$bin/edi"
mkdir -p "$out"

# The message segments of an interchange (UNA, UNB and UNZ are the
# writer's own), one a line.
messages() {
  tr -d '\r\n' <"$1" | tr "'" '\n' | grep -v -E '^(UNA|UNB|UNZ)'
}

status=0
for sample in samples/*.edi; do
  [ -e "$sample" ] || continue
  name=$(basename "$sample" .edi)            # e.g. orders-d96a, with configs/orders-d96a-in.tree
  inconf=configs/$name-in.tree outconf=configs/$name-out.tree
  echo "== $sample"
  "$edi" read "$sample" --servconf configs/servconf.conf --format json -o "$out/$name.json"
  echo "   read with the service configuration: $out/$name.json ($(grep -c '"name"' "$out/$name.json") nodes)"
  "$edi" write "$out/$name.json" --config "$outconf" --sender SUPPLIERCO --recipient BUYERCORP \
         -o "$out/$name.edi"
  echo "   written back with $outconf: $out/$name.edi"
  if diff <(messages "$sample") <(messages "$out/$name.edi") >"$out/$name.diff"; then
    echo "   message segments: the same ($(messages "$sample" | wc -l) segments)"
  else
    echo "   message segments differ, see $out/$name.diff"; status=1
  fi
  [ -e "$inconf" ] || { echo "   missing $inconf"; status=1; }
done

vda=samples/vda4905-sample.txt
echo "== $vda"
"$edi" vda-read "$vda" --config configs/vda4905.tree --format json -o "$out/vda4905.json"
echo "   read: $out/vda4905.json ($(grep -c '"name"' "$out/vda4905.json") nodes)"
# vdawrite names each record it writes on stderr; those lines go to a log.
"$edi" vda-write "$out/vda4905.json" --config configs/vda4905.tree -o "$out/vda4905.txt" \
       2>"$out/vda4905.log" || { cat "$out/vda4905.log" >&2; exit 1; }
echo "   written back: $out/vda4905.txt ($(grep -c '^dnode: ' "$out/vda4905.log") records listed in $out/vda4905.log)"
if cmp -s "$vda" "$out/vda4905.txt"; then
  echo "   records and trailer: the same ($(wc -l <"$vda") lines)"
else
  echo "   the file written back differs from the sample"; status=1
fi
exit $status
