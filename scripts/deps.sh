#!/usr/bin/env bash
# Installs the Debian packages the build needs, when any is missing.
set -euo pipefail
pkgs=(cmake g++ make libgtest-dev binutils nlohmann-json3-dev clang libclang-rt-14-dev
      pkgconf dpkg-dev file libmimalloc-dev
      python3-dev python3-pybind11 python3-setuptools python3-venv python3-pip python3-wheel
      python3-pytest python3-dask python3-distributed)
missing=()
for p in "${pkgs[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  echo "installing: ${missing[*]}"
  SUDO=""
  [ "$(id -u)" -ne 0 ] && SUDO=sudo
  $SUDO apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq "${missing[@]}"
fi
