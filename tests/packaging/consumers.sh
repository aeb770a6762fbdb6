#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# Programs of others, which use libqvs alone or libqvs-config: built against an installation and against the build tree,
# by pkg-config and by CMake's find_package, and in another language, all run unchanged on the installed emulated host.
set -eu
[ -z "$QVS_SANITIZED" ] || exit 77 # their programs have no sanitizer's runtime

build=${QVS_BIN%/*}
prefix=$PWD/prefix
cmake --install "$build" --prefix "$prefix" >install.log
PATH=$prefix/bin:$PATH
installed_pc=$(dirname "$(find "$prefix" -name qvs.pc)")
source=$QVS_SOURCE/tests
fail() { echo "consumers: $*" >&2; exit 1; }

# The options that every build tool takes; cgo, for one, refuses those for the linker that it does not know.
plain() {
    for word; do
        printf '%s\n' "$word" | grep -qxE -- '-[lL][^@-].*|-I[^@-].*' || fail "pkg-config gives the option $word"
    done
}

# pkg_config NAME PACKAGE SOURCE DIRECTORY: the one documented line.
# shellcheck disable=SC2046
pkg_config() {
    export PKG_CONFIG_PATH="$4"
    compile='cc -std=c99'
    case $3 in *.cpp) compile='c++ -std=c++17' ;; esac
    plain $(pkg-config --cflags --libs "$2")
    $compile -pedantic-errors -Wall -Wextra -Werror "$3" -o "$1" $(pkg-config --cflags --libs "$2")
    qvs-host run -- "./$1"
}

# find_package NAME TARGET SOURCE OPTION
find_package() {
    if ! { cmake -S tool -B "$1" -G Ninja "$4" -DTARGET="$2" -DSOURCE="$3" && cmake --build "$1"; } >cmake.log 2>&1; then
        cat cmake.log
        fail "$1 with $4"
    fi
    qvs-host run -- "$1/tool"
}

mkdir tool
cat >tool/CMakeLists.txt <<'END_OF_LIST'
cmake_minimum_required(VERSION 3.25)
project(tool C CXX)
find_package(qvs 1 CONFIG REQUIRED)
add_executable(tool ${SOURCE})
target_link_libraries(tool PRIVATE ${TARGET})
END_OF_LIST

while read -r way name package file where; do
    "$way" "$name" "$package" "$source/$file" "$where"
done <<END_OF_TABLE
pkg_config    program           qvs          packaging/program.c  $installed_pc
pkg_config    program-built     qvs          packaging/program.c  $build/pkgconfig
pkg_config    config            qvs-config   config/consumer.c    $installed_pc
pkg_config    config-built      qvs-config   config/consumer.c    $build/pkgconfig
find_package  cmake-installed   qvs::qvs     packaging/program.c  -DCMAKE_PREFIX_PATH=$prefix
find_package  cmake-built       qvs::qvs     packaging/program.c  -DCMAKE_PREFIX_PATH=$build
find_package  cmake-built-here  qvs::qvs     packaging/program.c  -Dqvs_DIR=$build
find_package  cmake-config      qvs::config  config/consumer.c    -DCMAKE_PREFIX_PATH=$prefix
END_OF_TABLE

pkg_config config-wrapped qvs-config "$source/config/consumer.cpp" "$installed_pc" >out
[ "$(cat out)" = 'bad0007 1
switches.sw2 
switches.sw2.ports.a 
switches.sw2.ports.a.vlan {id: 5}' ] || fail "the wrapper for C++ prints $(cat out)"

# Another language needs the soname alone.
PYTHONPATH=$prefix/lib/python3/dist-packages qvs-host run -- python3 -B -c '
import qvs
with qvs.Snapshot() as host:
    print(host.create_switch("py", ports=1).port("port0").number)' >out
[ "$(cat out)" = 67108865 ] || fail "the Python module prints $(cat out)"

# Without a host the library still loads, and every call says so at once.
if LD_LIBRARY_PATH=$prefix/lib timeout 10 ./program 2>out; then
    fail "the program succeeded without a host"
fi
grep -qxF 'program: DVSLoadConfig() == HYP_OK' out

# Debugging information stays in the build tree.
size=$(du -sk "$prefix" | cut -f 1)
[ "$size" -lt 17000 ] || fail "the installation takes $size kB; is it stripped?"
