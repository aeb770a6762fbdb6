#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# What was acknowledged survives: the host dies before, in the middle of and after a change, at any moment, and with
# a full disk; and it never shares, takes over or repairs what it must not.
set -eu
export QVS_HOST_SOCKET="$PWD/state/socket"
fail() { echo "durability: $*" >&2; exit 1; }
start() { qvs-host start --state state "$@" >/dev/null; }
pid() { cat state/lock; }
expect() { [ "$2" = "$3" ] || fail "$1: $2, not $3"; }

start
"$QVS_PORTS" add sw
acknowledged=0
for when in before middle after; do
    qvs-host fault add 'PortAdd*port="port' --nth 333 --kill $when
    acknowledged=$("$QVS_PORTS" create sw "$acknowledged" 1000)
    start # the socket and the lock of the dead daemon are still there
    total=$("$QVS_PORTS" check sw "$acknowledged") || fail "$when: $total ports of $acknowledged"
    case $when in
    after) expect "$when" "$total" $((acknowledged + 1)) ;;
    *) expect "$when" "$total" "$acknowledged" ;;
    esac
    acknowledged=$total
done
expect 'ports in all' "$acknowledged" 997

# At any moment, with many clients.
"$QVS_HISTORY" state "${QVS_KILLS:-20}"
expect 'after the kills' "$("$QVS_PORTS" check sw "$acknowledged")" "$acknowledged"

# One daemon for one directory.
! message=$(qvs-host start --state state 2>&1) || fail 'a second daemon started'
expect 'second daemon' "$message" "qvs-host: $PWD/state is served already, by process $(pid)"
qvs-host stop --state state
[ ! -e state/socket ] || fail 'the socket is left'

# A full disk: the change is refused, what is served stays whole, and room makes changes possible again.
start --max-state-mib 1
full=$("$QVS_PORTS" create sw "$acknowledged" 100000)
expect 'while full' "$("$QVS_PORTS" check sw "$full")" "$full"
expect 'again' "$("$QVS_PORTS" create sw "$full" 100000)" "$full"
qvs-host stop --state state
start
expect 'after the restart' "$("$QVS_PORTS" check sw "$full")" "$full"
expect 'with room' "$("$QVS_PORTS" create sw "$full" $((full + 10)))" $((full + 10))
qvs-host stop --state state
! grep -Ev '^info ' state/log || fail 'the log holds the lines above'

# A damaged database, one of somebody else and something that is none are refused and left as they are.
refused() {
    cp state/hypercore.db kept
    ! message=$(qvs-host start --state state 2>&1) || fail "$1: the daemon started"
    expect "$1" "${message%%: *}" 'qvs-host'
    case $message in *"$2"*) ;; *) fail "$1: $message" ;; esac
    cmp state/hypercore.db kept || fail "$1: the file was changed"
    [ ! -e state/socket ] || fail "$1: the socket is left"
}
cp state/hypercore.db whole
size=$(stat -c %s whole)
truncate -s $((size / 2)) state/hypercore.db
refused 'cut' 'malformed'
cp whole state/hypercore.db
head -c 4096 /dev/zero | tr '\0' '\377' | dd of=state/hypercore.db bs=4096 seek=5 conv=notrunc status=none
refused 'overwritten' 'cannot use'
echo 'not a database, only text that nobody wants to lose' >state/hypercore.db
refused 'text' 'not a database'
head -c 60 whole >state/hypercore.db
head -c 4096 /dev/zero >>state/hypercore.db
refused 'foreign' 'a database of another program'
cp whole state/hypercore.db
python3 -c 'import sqlite3; d = sqlite3.connect("state/hypercore.db"); d.execute("DELETE FROM switches"); d.commit()'
refused 'inconsistent' "cannot use $PWD/state/hypercore.db: the database is inconsistent: port 0x4000001 belongs to no switch; restore a copy and remove"
cp whole state/hypercore.db
start
expect 'the whole one' "$("$QVS_PORTS" check sw "$full")" $((full + 10))
qvs-host reset
expect 'after a reset' "$("$QVS_PORTS" check sw 0)" 0
qvs-host stop
