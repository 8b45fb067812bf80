#!/usr/bin/env bash
# The Python package's step of scripts/test.sh: a fresh venv in build/pyvenv
# (Debian's python3 with the system site packages, where pytest, pybind11
# and dask come from), the package installed into it from ./python as a
# user installs it, then its tests, run outside the source tree so that they
# import the installed package.  Nothing is downloaded (--no-index).
#
# EDIPROT_CMAKE_BUILD_DIR=build/plain reuses that build of the project
# instead of the package's own (quicker, for a second run by hand).
set -euo pipefail
cd "$(dirname "$0")/.."
python=/usr/bin/python3
venv=build/pyvenv
rm -rf "$venv"
mkdir -p build
"$python" -m venv --system-site-packages "$venv"
"$venv/bin/pip" install --quiet --no-index --no-build-isolation ./python
# The dask test compares its failures with those of the plain build's edi.
if [ -z "${EDIPROT_EDI:-}" ] && [ -x build/plain/edi ]; then
  export EDIPROT_EDI="$PWD/build/plain/edi"
fi
cd build
pyvenv/bin/python -m pytest -q -p no:cacheprovider ../python/tests
