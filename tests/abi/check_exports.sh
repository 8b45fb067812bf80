#!/bin/sh
# Compares the defined dynamic symbols of a library (C++ names demangled)
# with its golden list, so that nothing is exported by accident.
set -eu
lib=$1
golden=$2
got="${TMPDIR:-/tmp}/exports.$$"
nm -D --defined-only "$lib" | awk '{print $3}' | sed 's/@.*//' | c++filt | grep -v '^_' | sort -u >"$got"
status=0
if ! diff -u "$golden" "$got"; then
  echo "exported symbols of $lib differ from $golden"; status=1
fi
rm -f "$got"
[ $status -eq 0 ] && echo "exports ok"
exit $status
