# Shared by the scripts beside it; sourced, never run. Leaves the caller at the root of the clone.
# shellcheck shell=bash
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd -P)
cd "$root"
# Messages of the tools are compared and searched for.
export LC_ALL=C.UTF-8

die() {
    printf '%s: %s\n' "$(basename "$0")" "$*" >&2
    exit 1
}

# build PRESET [TARGET...]: configures the preset when that has not been done here, and builds.
build() {
    local preset=$1 directory=build/$1
    shift
    mkdir -p build
    # A clone that was moved takes a cache along that names its old place.
    if ! grep -qsxF "CMAKE_HOME_DIRECTORY:INTERNAL=$root" "$directory/CMakeCache.txt" ||
        [ ! -e "$directory/build.ninja" ]; then
        rm -rf "$directory/CMakeCache.txt" "$directory/CMakeFiles"
        cmake --preset "$preset" --log-level=WARNING >"$directory.log" 2>&1 || {
            cat "$directory.log" >&2
            die "configuring $root/$directory failed; the output is above"
        }
        rm -f "$directory.log"
    fi
    # A terminal gets Ninja's one moving line, a log file nothing but what goes wrong.
    if [ -t 1 ]; then
        ninja -C "$directory" "$@"
    else
        ninja -C "$directory" --quiet "$@" | { grep -vx 'ninja: no work to do.' || true; }
    fi || die "building $root/$directory failed; the output is above"
}
