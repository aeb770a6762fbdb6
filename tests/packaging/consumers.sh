#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# Programs of others: built against an installation and against the build tree, by pkg-config and by CMake's
# find_package, and in another language, all run unchanged on the installed emulated host.
set -eu
[ -z "$QVS_SANITIZED" ] || exit 77 # their programs have no sanitizer's runtime

build=${QVS_BIN%/*}
prefix=$PWD/prefix
cmake --install "$build" --prefix "$prefix" >install.log
PATH=$prefix/bin:$PATH
installed_pc=$(dirname "$(find "$prefix" -name qvs.pc)")
source=$QVS_SOURCE/tests/packaging
fail() { echo "consumers: $*" >&2; exit 1; }

# The options that every build tool takes; cgo, for one, refuses those for the linker that it does not know.
plain() {
    for word; do
        printf '%s\n' "$word" | grep -qxE -- '-[lL][^@-].*|-I[^@-].*' || fail "pkg-config gives the option $word"
    done
}

# pkg_config NAME DIRECTORY: the one documented line.
# shellcheck disable=SC2046
pkg_config() {
    export PKG_CONFIG_PATH="$2"
    plain $(pkg-config --cflags --libs qvs)
    cc -std=c99 -pedantic-errors -Wall -Wextra -Werror "$source/program.c" -o "$1" $(pkg-config --cflags --libs qvs)
    qvs-host run -- "./$1"
}

# find_package NAME OPTION
find_package() {
    if ! { cmake -S tool -B "$1" -G Ninja "$2" -DSOURCE="$source/program.c" && cmake --build "$1"; } >cmake.log 2>&1; then
        cat cmake.log
        fail "$1 with $2"
    fi
    qvs-host run -- "$1/tool"
}

mkdir tool
cat >tool/CMakeLists.txt <<'END_OF_LIST'
cmake_minimum_required(VERSION 3.25)
project(tool C)
find_package(qvs 1 CONFIG REQUIRED)
add_executable(tool ${SOURCE})
target_link_libraries(tool PRIVATE qvs::qvs)
END_OF_LIST

while read -r way name where; do
    "$way" "$name" "$where"
done <<END_OF_TABLE
pkg_config    program           $installed_pc
pkg_config    program-built     $build/pkgconfig
find_package  cmake-installed   -DCMAKE_PREFIX_PATH=$prefix
find_package  cmake-built       -DCMAKE_PREFIX_PATH=$build
find_package  cmake-built-here  -Dqvs_DIR=$build
END_OF_TABLE

qvs-host run -- python3 "$source/program.py"

# Without a host the library still loads, and every call says so at once.
if LD_LIBRARY_PATH=$prefix/lib timeout 10 ./program 2>out; then
    fail "the program succeeded without a host"
fi
grep -qxF 'program: DVSLoadConfig() == HYP_OK' out

# Debugging information stays in the build tree.
size=$(du -sk "$prefix" | cut -f 1)
[ "$size" -lt 10000 ] || fail "the installation takes $size kB; is it stripped?"
