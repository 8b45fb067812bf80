#!/usr/bin/env bash
# The Python package's step of scripts/test.sh: a fresh venv in build/pyvenv
# (Debian's python3 with the system site packages, where pytest, pybind11
# and dask come from), the package installed into it from the repository's
# root as a user installs it (`pip install .`), then its tests, run outside
# the source tree so that they import the installed package.  Nothing is
# downloaded (--no-index).
#
# EDIPROT_CMAKE_BUILD_DIR=build/plain reuses that build of the project
# instead of the package's own (quicker, for a second run by hand);
# EDIPROT_PYVENV names another venv folder (made anew), and
# EDIPROT_PY_BUILD_DIR another folder for setuptools' build.
set -euo pipefail
cd "$(dirname "$0")/.."
python=/usr/bin/python3
venv=$(realpath -m "${EDIPROT_PYVENV:-build/pyvenv}")
rm -rf "$venv"
mkdir -p build
"$python" -m venv --system-site-packages "$venv"
"$venv/bin/pip" install --quiet --no-index --no-build-isolation .
# The dask test compares its failures with those of the plain build's edi.
if [ -z "${EDIPROT_EDI:-}" ] && [ -x build/plain/edi ]; then
  export EDIPROT_EDI="$PWD/build/plain/edi"
fi
cd build
"$venv/bin/python" -m pytest -q -p no:cacheprovider ../python/tests
