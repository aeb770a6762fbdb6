#!/bin/bash
# What goes wrong underneath the tool: a host that dies, a full disk, names meant for a shell. Each is a clear
# message and its exit code, nothing is lost, and nothing is run.
# shellcheck disable=SC2016
set -u
failed=0

fail() {
    printf 'rough edges: %s\n' "$*" >&2
    failed=1
}

# expect CODE TEXT COMMAND...: the command exits with CODE and says on standard error what holds TEXT.
expect() {
    local code=$1 text=$2 status=0
    shift 2
    timeout 60 "$@" >out 2>err || status=$?
    [ "$status" -eq "$code" ] || fail "exit $status instead of $code: $*: $(cat err)"
    grep -qF -- "$text" err || fail "'$text' is not in the message of $*: $(cat err)"
}

host=(qvs-host run --state lab --trace trace --)
"${host[@]}" qvs switch create sw1 --ports 2 >out || fail 'no switch'
"${host[@]}" qvs dump >before

# Names meant for a shell, and one that is too long: no shell runs at all.
: >trace
printf -v long '%0300d' 0
for name in '$(touch made)' '`touch made`' 'a;touch made;' 'a|touch made' '../made' '*' '-e'; do
    expect 2 'Bad parameter (0xbad0007)' "${host[@]}" qvs switch create sw2 --portset "$name"
done
expect 2 '300 bytes, at most 80 fit' "${host[@]}" qvs switch create "$long"
expect 3 "qvs: switch 'sw9': Not found (0xbad0003)" "${host[@]}" qvs dump sw9
[ ! -e made ] || fail 'a name was run'
! grep '^shell' trace || fail 'the shell ran'

# A host that dies: the caller is told at once, and the next host finds all that was there, its socket too.
expect 5 'no hypercore' "${host[@]}" sh -c 'kill -9 $(cat lab/lock); qvs dump sw1'
[ -S lab/socket ] || fail 'no socket was left'

# A full disk: the change is refused as a whole.
head -c 2000000 /dev/zero >large
expect 1 'No space left on device (0xbad00d7)' qvs-host run --state lab --max-state-mib 1 -- \
    qvs prop set sw1 com.example.large --file large
"${host[@]}" qvs dump >after
cmp before after || fail 'the state is another one'
exit $failed
