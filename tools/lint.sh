#!/usr/bin/env bash
# Style and static analysis of every source that the given build folder compiles: clang-format, cppcheck, clang-tidy.
# A file that passed is not looked at again until it, a header or the rules change.
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build/debug}
cache=$build/lint
mkdir -p "$cache"
export LC_ALL=C.UTF-8

mapfile -t files < <(git ls-files --cached --others --exclude-standard -- '*.cpp' '*.h' | grep -v '_ids\.h$')
clang-format --dry-run -Werror "${files[@]}"
tools/check-texts.py

cppcheck --project="$build/compile_commands.json" --platform=win64 --std=c++20 --quiet --error-exitcode=1 \
    --enable=warning,performance,portability --inline-suppr --suppressions-list=tools/cppcheck-suppressions.txt \
    --cppcheck-build-dir="$cache" --library=googletest -j 2

gcc=$(dirname "$(x86_64-w64-mingw32-g++-posix -print-libgcc-file-name)")
rules=$(cat .clang-tidy $(printf '%s\n' "${files[@]}" | grep '\.h$') | sha256sum)
tidy() {
    stamp=$cache/$(printf '%s' "$rules $1 $(sha256sum <"$1")" | sha256sum | cut -c1-40)
    [ -f "$stamp" ] && return 0
    clang-tidy --quiet -p "$build" "$1" --extra-arg=-Wno-ignored-attributes \
        --extra-arg=--target=x86_64-w64-mingw32 \
        "--extra-arg=-isystem$gcc/include/c++" "--extra-arg=-isystem$gcc/include/c++/x86_64-w64-mingw32" 2>/dev/null &&
        touch "$stamp"
}
export -f tidy
export build cache gcc rules
python3 - "$build/compile_commands.json" <<'PY' | xargs -P 2 -I{} bash -c 'tidy {}'
import json, os, sys
root = os.getcwd()
for entry in json.load(open(sys.argv[1])):
    path = os.path.relpath(entry["file"], root)
    if path.endswith(".cpp") and not path.startswith(("..", "build")):
        print(path)
PY
echo "lint: clean"
