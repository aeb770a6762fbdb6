#!/bin/sh
# Programs of others: built against an installation by the documented link line, by CMake's find_package, and in
# another language, all run unchanged on the installed emulated host.
set -eu
[ -z "$QVS_SANITIZED" ] || exit 77 # their programs have no sanitizer's runtime

cmake --install "${QVS_BIN%/*}" --prefix "$PWD/prefix" >install.log
PATH=$PWD/prefix/bin:$PATH
pc=$(find "$PWD/prefix" -name qvs.pc)
export PKG_CONFIG_PATH="${pc%/*}"
source=$QVS_SOURCE/tests/packaging

# The one documented line.
# shellcheck disable=SC2046
cc -std=c99 -pedantic-errors -Wall -Wextra -Werror "$source/program.c" -o program $(pkg-config --cflags --libs qvs)
qvs-host run -- ./program

qvs-host run -- python3 "$source/program.py"

cat >CMakeLists.txt <<'END'
cmake_minimum_required(VERSION 3.25)
project(tool C)
find_package(qvs 1 CONFIG REQUIRED)
add_executable(tool ${SOURCE})
target_link_libraries(tool PRIVATE qvs::qvs)
END
cmake -S . -B tool -G Ninja -DCMAKE_PREFIX_PATH="$PWD/prefix" -DSOURCE="$source/program.c" >cmake.log
cmake --build tool >>cmake.log || { cat cmake.log; exit 1; }
qvs-host run -- tool/tool

# Without a host the library still loads, and every call says so at once.
if LD_LIBRARY_PATH=$PWD/prefix/lib timeout 10 ./program 2>out; then
    echo "the program succeeded without a host" >&2
    exit 1
fi
grep -qxF 'program: DVSLoadConfig() == HYP_OK' out
