#!/usr/bin/env bash
# Installs what the build needs and builds the third-party libraries. Idempotent: the second run
# does nothing and says nothing, and needs no network.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${OC_BUILD_ROOT:-$root/build}
deps=$build/deps
export LC_ALL=C.UTF-8 DEBIAN_FRONTEND=noninteractive

packages=(
    g++-mingw-w64-x86-64-posix cmake ninja-build make gcc libc6-dev dpkg-dev tcl
    wine wine64 xvfb fonts-wine fonts-liberation fonts-dejavu-core
    clang-tidy clang-format cppcheck python3
)
sources=(tinyxml sqlite3 googletest benchmark)

say() { printf 'setup: %s\n' "$*"; }
as_root() { if [ "$(id -u)" = 0 ]; then "$@"; else sudo -E "$@"; fi; }

missing=()
for p in "${packages[@]}"; do
    dpkg-query -W -f='${db:Status-Abbrev}' "$p" 2>/dev/null | grep -q '^ii' || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
    say "installing ${missing[*]}"
    as_root apt-get update -q >/dev/null
    as_root apt-get install -yq --no-install-recommends "${missing[@]}" >/dev/null
fi

# Source packages come through a list of our own, so that the system's configuration stays as it is.
fetch_sources() {
    local apt=$deps/apt
    rm -rf "$apt"
    mkdir -p "$apt/parts" "$apt/lists/partial"
    : >"$apt/sources.list"
    if [ -f /etc/apt/sources.list ]; then
        sed -nE 's/^deb(-src)?([[:space:]])/deb-src\2/p' /etc/apt/sources.list | sort -u >"$apt/sources.list"
    fi
    local f
    for f in /etc/apt/sources.list.d/*.list; do
        [ -f "$f" ] && sed -nE 's/^deb(-src)?([[:space:]])/deb-src\2/p' "$f" | sort -u >"$apt/parts/$(basename "$f")"
    done
    for f in /etc/apt/sources.list.d/*.sources; do
        [ -f "$f" ] && sed -E 's/^Types:.*/Types: deb-src/' "$f" >"$apt/parts/$(basename "$f")"
    done
    local options=(-q -o "Dir::Etc::sourcelist=$apt/sources.list" -o "Dir::Etc::sourceparts=$apt/parts"
        -o "Dir::State::lists=$apt/lists" -o "APT::Sandbox::User=root")
    apt-get "${options[@]}" update >/dev/null
    (cd "$deps" && apt-get "${options[@]}" source "${sources[@]}" >/dev/null 2>"$deps/fetch.log") ||
        { cat "$deps/fetch.log" >&2; return 1; }
}

unpacked() { ls -d "$deps/$1"-[0-9]*/ 2>/dev/null | head -n 1; }

mkdir -p "$deps"
for s in "${sources[@]}"; do
    if [ -z "$(unpacked "$s")" ]; then
        say "fetching the sources of ${sources[*]}"
        fetch_sources
        break
    fi
done

if ! [ -f "$deps/sqlite/sqlite3.c" ]; then
    say "making the SQLite amalgamation"
    mkdir -p "$deps/sqlite"
    (cd "$deps/sqlite" && "../$(basename "$(unpacked sqlite3)")/configure" --disable-tcl --disable-readline &&
        make sqlite3.c) >"$deps/sqlite.log" 2>&1 || { tail -n 20 "$deps/sqlite.log" >&2; exit 1; }
fi

stamp=$(cat "$root/cmake/deps/CMakeLists.txt" "$root/cmake/mingw.cmake" | sha256sum)
if [ "$(cat "$deps/.built" 2>/dev/null)" != "$stamp" ]; then
    say "building TinyXML, SQLite, GoogleTest and Google Benchmark"
    {
        cmake -S "$root/cmake/deps" -B "$deps/build" -G Ninja -DCMAKE_BUILD_TYPE=Release \
            -DCMAKE_TOOLCHAIN_FILE="$root/cmake/mingw.cmake" -DCMAKE_INSTALL_PREFIX="$deps/install" \
            -DTINYXML_SOURCE="$(unpacked tinyxml)" -DSQLITE_SOURCE="$deps/sqlite" \
            -DGOOGLETEST_SOURCE="$(unpacked googletest)" -DBENCHMARK_SOURCE="$(unpacked benchmark)" &&
            cmake --build "$deps/build" --target install
    } >"$deps/build.log" 2>&1 || { tail -n 40 "$deps/build.log" >&2; exit 1; }
    printf '%s' "$stamp" >"$deps/.built"
fi
