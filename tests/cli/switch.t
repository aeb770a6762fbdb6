A host without switches.

  $ qvs switch list  => ALIAS  ID  CLASS  VERSION  PORTS  UPLINKS  PORTSET
  $ qvs switch list --json  => []
  $ qvs switch list --names
  $ qvs dump

Created with uplinks and ports, listed and shown.

  $ qvs switch create sw1 --uplinks 2 --ports 3  => sw1: changed
  $ qvs switch create sw2 --id id-2 --portset data2 --version 99 --opaque --max-ports 7 --json  => {"switch":"sw2","changed":true}
  $ qvs switch list | tail -n 1  => sw2    id-2                                             vswitch  99       0      0        data2
  $ qvs switch list --json
  [
  {"alias":"sw1","id":"73 77 31 00 00 00 00 00-00 00 00 00 00 00 00 00","class":"vswitch","version":105,"maxPorts":128,"ports":5,"uplinks":2,"portset":"sw1","opaque":false,"remains":[]},
  {"alias":"sw2","id":"id-2","class":"vswitch","version":99,"maxPorts":7,"ports":0,"uplinks":0,"portset":"data2","opaque":true,"remains":[]}
  ]
  $ qvs switch list --names --json  => ["sw1","sw2"]
  $ qvs switch list --kernel | tail -n 1  => alias    sw2
  $ qvs switch show sw2 | head -n 10
  alias:      sw2
  id:         id-2
  class:      vswitch
  version:    99
  max ports:  7
  ports:      0
  uplinks:    0
  portset:    data2
  opaque:     yes
  kernel information:
  $ qvs switch show sw2 --json
  {"alias":"sw2","id":"id-2","class":"vswitch","version":99,"maxPorts":7,"ports":0,"uplinks":0,"portset":"data2","opaque":true,"info":"AgAAAAcAAAAAAAAAAAAAANwFAABjAAAAaWQtMgAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAGRhdGEyAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA==","fields":{"portsetNumber":2,"maxPorts":7,"ports":0,"uplinks":0,"mtu":1500,"version":99,"switchId":"id-2","portset":"data2"}}
  $ qvs switch show sw2 --raw block; bytes <block  => 0:0200000007 16:dc0500006300000069642d32 88:6461746132 (220 bytes)
  $ qvs switch info data2 --raw - | cmp - block
  $ qvs switch info data2 --json | head -c 30; qvs switch info nix  => [3] {"portset":"data2","info":"AgAqvs: portset 'nix': Not found (0xbad0003)
  $ qvs switch find --portset data2  => alias:      sw2 | id:         id-2 | kernel id:  id-2 | portset:    data2
  $ qvs switch find --portset data23 --json  => {"alias":"sw2","id":"id-2","kernelId":"id-2","portset":"data2"}
  $ qvs switch find --alias sw1 --json  => {"alias":"sw1","id":"73 77 31 00 00 00 00 00-00 00 00 00 00 00 00 00","kernelId":"73 77 31 00 00 00 00 00-00 00 00 00 00 00 00 00","portset":"sw1"}
  $ qvs switch find --portset nix  => [3] qvs: portset 'nix': Not found (0xbad0003)
  $ qvs switch lag-table sw1 --raw - | wc -c  => 35588
  $ qvs switch refresh-numa sw1  => sw1: changed

What exists is compared in what is given, and in nothing else.

  $ qvs switch create sw1  => [4] qvs: switch 'sw1': Already exists (0xbad0005)
  $ qvs switch create sw1 --may-exist  => sw1: unchanged
  $ qvs switch create sw1 --may-exist --version 105 --max-ports 0 --portset sw1 --uplinks 2 --ports 3 --json  => {"switch":"sw1","changed":false}
  $ for more in '--version 106' '--max-ports 127' --opaque '--id other' '--portset other' '--uplinks 1' '--ports 5'; do qvs switch create sw1 --may-exist $more; done
  qvs: switch 'sw1': exists with version 105, not 106
  qvs: switch 'sw1': exists with room for 128 ports, not 127
  qvs: switch 'sw1': exists with opaque false, not true
  qvs: switch 'sw1': exists with identifier '73 77 31 00 00 00 00 00-00 00 00 00 00 00 00 00', not 'other'
  qvs: switch 'sw1': exists with portset 'sw1', not 'other'
  qvs: switch 'sw1': exists with 2 uplinks, not 1
  qvs: switch 'sw1': exists with 3 ordinary ports, not 5
  ? 4
  $ qvs switch create sw2 --may-exist --opaque --id id-2  => sw2: unchanged

Identifiers and portsets of others, more than the switch holds; nothing is left behind.

  $ for more in '--portset data2' '--id id-2'; do qvs switch create sw3 $more; done
  qvs: switch 'sw3': portset 'data2': Already exists (0xbad0005); it belongs to switch 'sw2', name another with --portset
  qvs: switch 'sw3': identifier 'id-2': Already exists (0xbad0005); it belongs to switch 'sw2'
  ? 4
  $ qvs switch create fifteen-letters-a && qvs switch create fifteen-letters-b  => [4] fifteen-letters-a: changed | qvs: switch 'fifteen-letters-b': Already exists (0xbad0005); the identifier is made from the first 15 bytes, give another with --id
  $ for more in '--ports 3' '--uplinks 3'; do qvs switch create sw3 --max-ports 2 $more; done
  qvs: switch 'sw3': Limit exceeded (0xbad0006); --max-ports has to hold uplinks and ports, and is 2
  qvs: switch 'sw3': Limit exceeded (0xbad0006); --max-ports has to hold uplinks and ports, and is 2
  ? 1
  $ qvs switch list --names  => sw1 | sw2 | fifteen-letters-a
  $ treesh -e ls /net/portsets  => sw1/ | data2/ | fifteen-letters-a/

Destroyed.

  $ qvs dump sw9  => [3] qvs: switch 'sw9': Not found (0xbad0003)
  $ qvs switch destroy sw9  => [3] qvs: switch 'sw9': Not found (0xbad0003)
  $ qvs switch destroy sw9 --if-exists  => sw9: unchanged
  $ qvs switch destroy sw1 --if-exists --json  => {"switch":"sw1","changed":true}
  $ qvs switch destroy sw2  => sw2: changed
  $ qvs switch list --names  => fifteen-letters-a

Four at a time agree on what one of them did; a signal waits until a switch is whole; a portset without a switch is named.

  $ four() { for i in 1 2 3 4; do qvs "$@" & done | sort | uniq -c | sed 's/^ *//'; }; four switch create dd --may-exist; four uplink add dd u --may-exist; four switch destroy dd --if-exists
  1 dd: changed
  3 dd: unchanged
  1 dd/u: changed
  3 dd/u: unchanged
  1 dd: changed
  3 dd: unchanged
  $ qvs-host fault add SwitchAssociate --delay 4000; timeout 3 qvs switch create slow --ports 1; qvs port list slow --names; qvs switch destroy slow  => port0 | slow: changed
  $ treesh -e set /net/create orphan $'8\n' vswitch; qvs switch create orphan  => [4] qvs: switch 'orphan': portset 'orphan' exists in the kernel; name another with --portset, or remove it with 'qvs switch destroy orphan' if nothing needs it

A switch whose ports are in use is destroyed with a warning.

  $ qvs-host run --lab rack -- qvs switch destroy tenants  => qvs: warning: switch 'tenants': is destroyed while 3 of its ports are in use: 'db0', 'web0', 'web1' | tenants: changed
  $ qvs-host run --lab pod -- qvs switch destroy tenants  => qvs: warning: switch 'tenants': is destroyed while 14 of its ports are in use: 'vm0', 'vm1', 'vm2', ... | tenants: changed
