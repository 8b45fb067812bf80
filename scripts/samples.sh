#!/usr/bin/env bash
# The main job on the bundled samples, with the programs of build folder $1:
# each EDIFACT sample read to JSON and written back as an interchange, the
# VDA samples read to JSON and written back as record files, and each
# result compared with its source.  The results land in $2 (default
# build/samples-out).
set -euo pipefail
cd "$(dirname "$0")/.."
bin=${1:-build/plain}
out=${2:-build/samples-out}
edi="$bin/edi"
mkdir -p "$out"

# The message segments of an interchange (UNA, UNB and UNZ are the
# writer's own), one a line, in minimal form: the writer leaves trailing
# empty components and elements out, as strict receivers want.
messages() {
  tr -d '\r\n' <"$1" | tr "'" '\n' | grep -v -E '^(UNA|UNB|UNZ)' |
    sed -E 's/([^?]):+(\+|$)/\1\2/g; s/([^?])\++$/\1/'
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

# The VDA samples: the layout (4905 or 4913) is found from each file.
for vda in samples/vda49*-sample.txt; do
  name=$(basename "$vda" -sample.txt)
  echo "== $vda"
  "$edi" vda-read "$vda" --format json -o "$out/$name.json" 2>"$out/$name.read.log" ||
    { cat "$out/$name.read.log" >&2; exit 1; }
  echo "   read: $out/$name.json ($(grep -c '"name"' "$out/$name.json") nodes); $(cat "$out/$name.read.log")"
  # vdawrite names each record it writes on stderr; those lines go to a log.
  "$edi" vda-write "$out/$name.json" -o "$out/$name.txt" --verbose \
         2>"$out/$name.log" || { cat "$out/$name.log" >&2; exit 1; }
  echo "   written back: $out/$name.txt ($(grep -c 'dnode: ' "$out/$name.log") records listed in $out/$name.log)"
  if cmp -s "$vda" "$out/$name.txt"; then
    echo "   records and trailer: the same ($(wc -l <"$vda") lines)"
  else
    echo "   the file written back differs from the sample"; status=1
  fi
done
exit $status
