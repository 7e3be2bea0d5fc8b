#!/usr/bin/env bash
# Builds a release and prints the benchmarks' figures; the lines that begin with "ratio" compare with a bare baseline.
set -euo pipefail
cd "$(dirname "$0")/.."
. tools/build.sh
oc_build release

trap 'tools/wine-env.sh down' EXIT
tools/wine-env.sh up
stripped=$(mktemp)
x86_64-w64-mingw32-strip -o "$stripped" build/release/bin/occommonui.dll
echo "occommonui.dll, stripped: $(stat -c %s "$stripped") bytes"
rm -f "$stripped"
for bench in ${*:-load_bench controls_bench dialog_bench report_xml_bench report_template_bench warning_report_bench
    updatedwgdata_bench updatedwgdata_dlg_bench objectselection_bench}; do
    (cd build/release/bin && ../../../tools/wine-env.sh run "$bench.exe") | tr -d '\r'
done
