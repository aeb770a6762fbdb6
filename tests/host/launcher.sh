#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# The launcher: exit statuses, environment, private and shared hosts, signals, messages, and what it leaves behind.
set -eu
export TMPDIR="$PWD/tmp"
mkdir tmp
fail() { echo "launcher: $*" >&2; exit 1; }
expect() { [ "$2" = "$3" ] || fail "$1: '$2', not '$3'"; }
code() { set +e; "$@" >out 2>err; status=$?; set -e; echo $status; }

expect 'status' "$(code qvs-host run -- sh -c 'exit 9')" 9
expect 'signal' "$(code qvs-host run -- sh -c 'kill -KILL $$')" 137
expect 'not found' "$(code qvs-host run -- ./nosuch)" 127
expect 'its message' "$(cat err)" 'qvs-host: cannot run ./nosuch: No such file or directory'
expect 'not executable' "$(code qvs-host run -- /dev/null)" 126
expect 'no command' "$(code qvs-host run)" 2
expect 'no subcommand' "$(code qvs-host)" 2
expect 'bad option' "$(code qvs-host run --nosuch -- true)" 2
expect 'no host named' "$(code env -u QVS_HOST_SOCKET qvs-host status)" 2
expect 'no host there' "$(code qvs-host status --state nowhere)" 125
expect 'help' "$(code qvs-host run --help)" 0
expect 'words to the letter' "$(qvs-host run -- printf '%s.' -- '' '[a]' --state)" '--..[a].--state.'

: >file
expect 'state is a file' "$(code qvs-host run --state file -- true)" 125
expect 'missing lab' "$(code qvs-host run --lab nosuch.json -- true)" 125
echo '{"pnics":[{"name":"a","speed":1}]}' >bad.json
expect 'bad lab' "$(code qvs-host run --lab bad.json -- true)" 125
expect 'its message' "$(cat err)" \
    "qvs-host: the lab $PWD/bad.json cannot be used: lab.pnics[0]: \"speed\" is unknown"
long=$PWD/$(printf '%0120d' 0)
expect 'long path' "$(code qvs-host run --state "$long" -- true)" 125
grep -q 'longer than the 107 bytes' err || fail "long path: $(cat err)"
mkdir 'odd dir'
expect 'odd directory' "$(code qvs-host run --state 'odd dir/./' -- sh -c 'echo "$QVS_HOST_STATE"')" 0
expect 'its name' "$(cat out)" "$PWD/odd dir"

# A host is gone with its command, whatever happened to the launcher.
expect 'directory left' "$(ls tmp)" ''
qvs-host run -- sh -c 'echo $$; exec sleep 30' >./command &
while [ ! -s ./command ]; do sleep 0.01; done
kill -9 $!
for i in 1 2 3 4 5 6 7 8 9; do [ -z "$(ls tmp)" ] || sleep 0.$i; done
expect 'directory left by a killed launcher' "$(ls tmp)" ''
kill "$(cat ./command)"
expect 'killed host' "$(code qvs-host run -- sh -c 'kill -9 $(cat $QVS_HOST_STATE/lock); exit 3')" 3
expect 'directory left by a killed host' "$(ls tmp)" ''

# Signals meant for the command reach it; those of the terminal are its own business.
qvs-host run -- sh -c 'trap "exit 5" TERM; echo ready; while :; do sleep 0.01; done' >ready &
while [ ! -s ready ]; do sleep 0.01; done
kill -INT $!
kill -TERM $!
status=0
wait $! || status=$?
expect 'terminated' "$status" 5

# Runs on one directory share one host, however they meet; the last one out ends it.
for i in 1 2 3 4 5 6 7 8; do
    qvs-host run --state shared -- sh -c "treesh -e set /net/create ps$i 8 vswitch; sleep 0.$i; cat shared/lock" &
done >pids
wait
expect 'daemons' "$(sort -u pids | wc -l)" 1
expect 'socket left' "$(ls shared)" "$(printf 'hypercore.db\nlock\nlog')"
expect 'kept' "$(qvs-host run --state shared -- treesh -e ls /net/portsets | sort | tr -d '\n')" \
    'ps1/ps2/ps3/ps4/ps5/ps6/ps7/ps8/'

# One that was started stays until it is stopped, and a run joins it.
qvs-host start --state shared >/dev/null
qvs-host run --state shared --lab "${QVS_BIN%/*}/share/qvs/labs/rack.json" --trace trace -- treesh -e ls /net/portsets/storage/uplinks >out
expect 'lab of a joined host' "$(cat out)" "$(printf 'pnic0/\npnic1/')"
expect 'trace of a joined host' "$(cat trace)" 'shell treesh -e ls /net/portsets/storage/uplinks -> exit 0'
qvs-host fault add 'ls /net' --exit 3 --forever --state shared
expect 'fault' "$(code qvs-host run --state shared -- treesh -e ls /net)" 3
qvs-host fault list --state shared | grep -q 'matched 1, fired 1' || fail 'fault list'
qvs-host fault clear --state shared
expect 'no room' "$(code sh -c 'qvs-host status --state shared >/dev/full')" 125
expect 'no name' "$(code qvs-host run --state '' -- true)" 2
expect 'unknown errno' "$(code qvs-host fault add x --errno ENOSUCH --state shared)" 2
expect 'fault without effect' "$(code qvs-host fault add x --state shared)" 2
qvs-host trace --state shared >live &
sleep 0.2
qvs-host run --state shared -- treesh -e get /net/pNics/pnic0/mtu >/dev/null
qvs-host status --state shared --json | grep -q '"ok": true' || fail 'status'
qvs-host stop --state shared
wait $!
expect 'live trace' "$(cat live)" 'shell treesh -e get /net/pNics/pnic0/mtu -> exit 0'
! grep -Ev '^info ' shared/log || fail 'the log holds the lines above'
