# SPDX-License-Identifier: Apache-2.0
# Functions that the scripts share. Source this file, do not run it. It changes to the root of the clone.
# shellcheck shell=bash
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd -P)
cd "$root"
# The scripts compare and search the messages of other tools.
export LC_ALL=C.UTF-8

die() {
    printf '%s: %s\n' "$(basename "$0")" "$*" >&2
    exit 1
}

# build PRESET [TARGET...]: configures the preset if necessary, and builds it.
build() {
    local preset=$1 directory=build/$1
    shift
    mkdir -p build
    # If the clone was moved, the cache still contains the old path.
    if ! grep -qsxF "CMAKE_HOME_DIRECTORY:INTERNAL=$root" "$directory/CMakeCache.txt" ||
        [ ! -e "$directory/build.ninja" ]; then
        rm -rf "$directory/CMakeCache.txt" "$directory/CMakeFiles"
        cmake --preset "$preset" --log-level=WARNING >"$directory.log" 2>&1 || {
            cat "$directory.log" >&2
            die "configuring $root/$directory failed; the output is above"
        }
        rm -f "$directory.log"
    fi
    # On a terminal, Ninja updates one line. A log file contains only errors.
    if [ -t 1 ]; then
        ninja -C "$directory" "$@"
    else
        ninja -C "$directory" --quiet "$@" | { grep -vx 'ninja: no work to do.' || true; }
    fi || die "building $root/$directory failed; the output is above"
}
