#!/usr/bin/env bash
# Sets up what is missing, builds, and opens the sample host. Without a display the host gives its guided tour: pictures
# of every dialog, at two resolutions and in every language, in build/tour/index.html. Arguments go to the host.
set -euo pipefail
cd "$(dirname "$0")"
. tools/build.sh
oc_build release

trap 'tools/wine-env.sh down' EXIT
if [ -n "${DISPLAY:-}" ]; then
    export OC_DISPLAY=$DISPLAY
    tools/wine-env.sh up
    tools/wine-env.sh run build/release/bin/ochost.exe "$@"
elif [ $# -gt 0 ]; then
    tools/wine-env.sh up
    tools/wine-env.sh run build/release/bin/ochost.exe "$@"
else
    rm -rf build/tour
    for dpi in 96 144; do
        tools/wine-env.sh up $dpi
        tools/wine-env.sh run build/release/bin/ochost.exe --tour build/tour
    done
    echo "tour: build/tour/index.html"
fi
