#!/bin/sh
# Installs the build in folder $1, then builds a consumer of the package against the installation.
set -e
source=$(cd "$(dirname "$0")" && pwd)
root=$source/../..
prefix=$1/consumer/install
rm -rf "$1/consumer"
cmake --install "$1" --prefix "$prefix" >/dev/null
cmake -S "$source" -B "$1/consumer/build" -G Ninja "-DCMAKE_TOOLCHAIN_FILE=$root/cmake/mingw.cmake" \
    "-DCMAKE_PREFIX_PATH=$prefix" "-DREADME=$root/README.md" >/dev/null
cmake --build "$1/consumer/build"
