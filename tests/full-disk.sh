#!/bin/sh
# Runs a program with OC_SMALL_DISK naming a folder on a disk that holds one megabyte. Where no disk can be mounted, no
# file that the program writes can grow beyond half a megabyte: writing fails there in the same way.
set -e
tests=$(cd "$(dirname "$0")" && pwd)
B=$(cd "${B:-$tests/../build}" && pwd)
export B
disk=$B/small-disk

as_root() { "$@" 2>/dev/null || sudo -n "$@" 2>/dev/null; }
remove_disk() {
    as_root umount -l "$disk" || true # at once, even if the Wine server still looks at it
    rm -rf "$disk"
}

remove_disk # of a run that was killed
trap remove_disk EXIT
trap 'exit 1' HUP INT TERM
mkdir "$disk"
if ! as_root mount -t tmpfs -o size=1m small-disk "$disk"; then
    echo "no disk can be mounted here: the size of files is limited instead"
    trap '' XFSZ
    ulimit -f 1024 # blocks of 512 bytes
fi
OC_SMALL_DISK=Z:$disk sh "$tests/../tools/wine-env.sh" run "$@"
