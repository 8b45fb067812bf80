#!/bin/sh
# Compares the dynamic symbols of libediprot.so with the golden lists.
# The undefined symbols must be exactly the host services. Those with a version (@GLIBC..., @GLIBCXX...) come from the
# C and C++ runtimes and are left out; sanitizer runtime symbols too.
set -eu
lib=$1
dir=$2
status=0
nm -D --defined-only "$lib" | awk '{print $3}' | grep -v '^_' | sed 's/@.*//' | sort -u >"${TMPDIR:-/tmp}/exported.$$"
nm -D --undefined-only "$lib" | awk '{print $2}' | grep -v '@' | grep -v -E '^(__|_ITM_|_Jv_|_Unwind)' | sort -u >"${TMPDIR:-/tmp}/undefined.$$"
if ! diff -u "$dir/exported.txt" "${TMPDIR:-/tmp}/exported.$$"; then
  echo "exported symbols differ from $dir/exported.txt"; status=1
fi
if ! diff -u "$dir/undefined.txt" "${TMPDIR:-/tmp}/undefined.$$"; then
  echo "undefined symbols differ from the host services in $dir/undefined.txt"; status=1
fi
rm -f "${TMPDIR:-/tmp}/exported.$$" "${TMPDIR:-/tmp}/undefined.$$"
[ $status -eq 0 ] && echo "symbols ok"
exit $status
