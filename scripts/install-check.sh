#!/usr/bin/env bash
# Installs build folder $1 into a temporary prefix, then builds and runs a
# small consumer program against it twice: found with find_package, and
# with pkg-config.  Then makes the Debian package, unpacks it, and runs
# the edi it holds.  Any failure exits non-zero.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=$(cd "${1:?usage: install-check.sh BUILD-FOLDER}" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix
config=$root/configs/vda4905.tree
sample=$root/samples/vda4905-sample.txt

cmake --install "$build" --prefix "$prefix" >/dev/null
# The consumer calls the module alone, as --raw hands the file to it.
expected=$("$build/edi" vda-read --raw --full "$sample" --config "$config")

# The installed edi finds its own module and data.
[ "$("$prefix/bin/edi" vda-read --raw --full "$sample" --config "$config")" = "$expected" ]
[ -f "$prefix/share/man/man1/edi.1" ] && [ -d "$prefix/share/ediprot/configs" ]

# find_package
cmake -S "$root/tests/install/consumer" -B "$work/cmake-build" \
      -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
cmake --build "$work/cmake-build" >/dev/null
[ "$("$work/cmake-build/consumer" "$config" "$sample")" = "$expected" ]

# pkg-config
export PKG_CONFIG_PATH
PKG_CONFIG_PATH=$(dirname "$(find "$prefix" -name ediprot.pc)")
libdir=$(pkg-config --variable=libdir ediprot)
cc "$root/tests/install/consumer/consumer.c" -o "$work/consumer-pc" \
   $(pkg-config --cflags --libs ediprot edihost) -Wl,-rpath,"$libdir"
[ "$("$work/consumer-pc" "$config" "$sample")" = "$expected" ]

# The example of docs/library.md, built against the install both ways; its
# message count is the number of UNH segments in the file.
interchange=$root/samples/orders-d96a.edi
unh=$(grep -o "UNH+" "$interchange" | wc -l)
cmake -S "$root/examples/readmessages" -B "$work/example-build" \
      -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
cmake --build "$work/example-build" >/dev/null
[ "$("$work/example-build/readmessages" "$interchange" | wc -l)" -eq "$unh" ]
PKG_CONFIG_PATH=$(dirname "$(find "$prefix" -name edi.pc)") \
  cc "$root/examples/readmessages/readmessages.c" -o "$work/readmessages-pc" \
     $(PKG_CONFIG_PATH=$(dirname "$(find "$prefix" -name edi.pc)") pkg-config --cflags --libs edi) \
     -Wl,-rpath,"$libdir"
[ "$("$work/readmessages-pc" - < "$interchange" | wc -l)" -eq "$unh" ]

# Debian package: made, installed by dpkg into a private root (its own
# package database, dependencies taken as present), and run there.
(cd "$work" && cpack -G DEB --config "$build/CPackConfig.cmake" >/dev/null 2>&1)
deb=$(ls "$work"/*.deb)
debroot=$work/debroot
mkdir -p "$debroot/var/lib/dpkg/info" "$debroot/var/lib/dpkg/updates"
touch "$debroot/var/lib/dpkg/status"
dpkg --root="$debroot" --force-not-root --force-depends --force-script-chrootless \
     --log=/dev/null -i "$deb" >/dev/null 2>&1
dpkg --root="$debroot" -s ediprot | grep -q '^Status: install ok installed'
[ "$("$debroot/usr/bin/edi" vda-read --raw --full "$sample" --config "$config")" = "$expected" ]
echo "install check passed: cmake --install, find_package, pkg-config, $(basename "$deb")"
