#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# Which programs see the host: the table of docs/lab.md, line by line, and what is said to those that do not.
set -eu
[ -z "$QVS_SANITIZED" ] || exit 77
fail() { echo "programs: $*" >&2; exit 1; }
source=$QVS_SOURCE/tests/host/program.c
run() { qvs-host run -- "$@" >out 2>err; }
sees() {
    run "$@" || fail "$*: status $?: $(cat out err)"
    [ "$(cat out err)" = host ] || fail "$*: $(cat out err)"
}
# Runs it nevertheless, behind a warning that holds the given words.
is_named() {
    words=$1
    shift
    run "$@" || true
    grep -q "^qvs-host: warning: .* sees neither the devices of the host nor its /bin/treesh: it .*$words" err ||
        fail "$*: $(cat err)"
}

cc "$source" -o dynamic
cc -static "$source" -o static
cc -static-pie "$source" -o static-pie
cc -Wl,--dynamic-linker=/lib/ld-musl-x86_64.so.1 "$source" -o other
cc -g -fsanitize=address "$source" -o sanitized
cp dynamic setuid
printf '#!%s\n' "$PWD/static" >script
printf '#!/usr/bin/env -S FOO=1 static\n' >script-env
printf '#!/bin/sh\nexec ./dynamic\n' >script-sh
chmod +x script script-env script-sh

sees ./dynamic
PATH=$PATH:$PWD sees dynamic
sees ./script-sh
sees ./sanitized
if command -v clang >clang; then
    clang -fsanitize=address "$source" -o sanitized-clang 2>clang && sees ./sanitized-clang
fi
sees python3 -c 'import os, stat; os.close(os.open("/dev/vswitch", os.O_RDWR))
if stat.S_ISCHR(os.stat("/dev/vswitch").st_mode) and os.access("/bin/treesh", os.X_OK): print("host")'
sees env ASAN_OPTIONS=detect_leaks=1 ./dynamic

is_named 'is statically linked; link it dynamically' ./static
[ "$(cat out)" = 'no host' ] || fail "a static program: $(cat out)"
is_named 'is statically linked' ./static-pie
is_named 'is statically linked' ./script
PATH=$PATH:$PWD is_named 'is statically linked' ./script-env
is_named 'uses another C library, whose loader is /lib/ld-musl-x86_64.so.1' ./other
if [ "$(id -u)" -eq 0 ]; then
    chown 65534 setuid
    chmod u+s setuid
    is_named 'is set-user-ID or set-group-ID' ./setuid
fi
for shell in treesh /bin/treesh; do
    run $shell -e ls /net || fail "$shell: $(cat err)"
    [ ! -s err ] || fail "$shell: $(cat err)"
done

# What cannot be run is not waited for.
mkfifo -m 700 pipe
printf '#!%s\n' "$PWD/pipe" >script
for file in ./pipe ./script; do
    status=0
    timeout 10 qvs-host run -- $file 2>err || status=$?
    [ $status -eq 126 ] || fail "$file: status $status: $(cat err)"
done

# A sanitizer in another program goes on with its work.
! run ./sanitized overrun || fail 'the overrun is not noticed'
grep -q 'AddressSanitizer: heap-buffer-overflow' err || fail "the overrun: $(cat err)"
ASAN_OPTIONS=exitcode=55 qvs-host run -- sh -c 'echo "$ASAN_OPTIONS"' >out
[ "$(cat out)" = exitcode=55:verify_asan_link_order=0 ] || fail "options: $(cat out)"

# A dropped environment is complained of once by each program, and known to those who look for the host.
lost() { grep -c 'is started without the environment of this host' err || true; }
run env -i ./dynamic || true
[ "$(cat out) $(lost)" = 'no host 1' ] || fail "env -i: $(cat out err)"
run env -i "$QVS_BIN/qvs" switch list && fail 'a list without a host'
grep -q 'no hypercore on this machine: the emulated host was lost on the way' err || fail "qvs: $(cat err)"
run env -i A=1 env
[ "$(cat out)" = "$(printf 'A=1\nQVS_HOST_LOST=1')" ] || fail "marked: $(cat out)"
run python3 -c 'import subprocess
for i in range(5): subprocess.run(["./dynamic"], env={"A": "1"})
for i in range(5): subprocess.run(["./dynamic"], env={}, preexec_fn=lambda: None)'
[ "$(lost)" = 1 ] || fail "children: $(cat err)"
run sh -c 'QVS_HOST_SOCKET= ./dynamic; env -u LD_PRELOAD ./dynamic; env -u QVS_HOST_SOCKET ./dynamic' || true
[ "$(cat err)" = '' ] || fail "on purpose: $(cat err)"
