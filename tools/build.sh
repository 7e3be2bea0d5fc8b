# Sourced by the top-level scripts: set-up and build of a preset, quiet unless something is wrong.
oc_build() {
    tools/setup.sh
    mkdir -p build
    cmake --preset "$1" >"build/configure-$1.log" 2>&1 || { cat "build/configure-$1.log" >&2; return 1; }
    echo "build: $1"
    cmake --build --preset "$1" >"build/build-$1.log" 2>&1 || { grep -v '^\[' "build/build-$1.log" >&2; return 1; }
}
