#!/usr/bin/env bash
# Sets up what is missing, builds, runs every test. Arguments go to ctest (for example: ./test.sh -R ticpp).
set -euo pipefail
cd "$(dirname "$0")"
. tools/build.sh
oc_build debug

trap 'tools/wine-env.sh down' EXIT
tools/wine-env.sh up
ctest --preset debug "$@"
