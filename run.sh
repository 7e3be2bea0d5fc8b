#!/usr/bin/env bash
# Sets up what is missing, builds, and opens the sample host. Without a display the host gives its guided tour: pictures
# of every dialog, at two resolutions and in every language, in build/tour/index.html. Arguments go to the host, which
# runs in the caller's folder: paths are relative to that.
set -euo pipefail
from=$PWD
cd "$(dirname "$0")"
root=$PWD

# A dialog on an invisible display would wait for ever.
if [ -z "${DISPLAY:-}" ] && [ $# -gt 0 ] && [[ " $* " != *" --help "* && " $* " != *" --tour "* ]]; then
    echo "run.sh: the host needs a display, and DISPLAY is not set; without arguments it gives its tour" >&2
    exit 2
fi

. tools/build.sh
oc_build release

if [ -n "${DISPLAY:-}" ]; then
    # A session of its own: the tests and the tour end theirs, with all that runs in it.
    export OC_DISPLAY=$DISPLAY B=$root/build/display
fi
trap 'tools/wine-env.sh down' EXIT
if [ -n "${DISPLAY:-}" ] || [ $# -gt 0 ]; then
    tools/wine-env.sh up
    (cd "$from" && "$root/tools/wine-env.sh" run "$root/build/release/bin/ochost.exe" "$@")
else
    rm -rf build/tour
    for dpi in 96 144; do
        tools/wine-env.sh up $dpi
        tools/wine-env.sh run build/release/bin/ochost.exe --tour build/tour
    done
    echo "tour: build/tour/index.html"
fi
