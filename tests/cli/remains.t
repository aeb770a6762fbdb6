What changes that were cut short leave behind. `cut` lets the faults strike one step of creating a switch, and the undoing after it; then
it tells what the list says, what creating the switch again says, what a repair would do, and what destroying it says.

  $ cat >cut <<<'for fault; do qvs-host fault add "$fault" --forever --status 0xbad0014 --exit 1 >log; done; qvs switch create a --uplinks 1 >log 2>&1; qvs-host fault clear; left=$(qvs switch list --json | grep -o "\"remains.*"); error=$(qvs switch create a --may-exist 2>&1); echo "$? $error" $left; qvs switch repair --dry-run | tail -n +2; echo $(qvs switch destroy "${name:-a}"; qvs switch list --json; treesh -e ls /net/portsets)'
  $ bash cut SwitchAdd 'shell*destroy'
  4 qvs: switch 'a': portset 'a' exists in the kernel; name another with --portset, or remove it with 'qvs switch destroy a' if nothing needs it
  portset  -       a     belongs to no switch  remove  no
  a: changed []
  $ name='61 00 00 00 00 00 00 00-00 00 00 00 00 00 00 00' bash cut 'GlobalPropSet*alias' SwitchRemove
  4 qvs: switch 'a': Already exists (0xbad0005); a half-made switch without alias may have the identifier; 'qvs switch repair' removes it "remains":["no alias","no portset name"]}
  switch  -       61 00 00 00 00 00 00 00-00 00 00 00 00 00 00 00  no alias, no portset name  remove  no
  61 00 00 00 00 00 00 00-00 00 00 00 00 00 00 00: changed []
  $ bash cut 'HostPropSet*host.portset' SwitchRemove
  4 qvs: switch 'a': exists, but is half made: no portset name; 'qvs switch destroy a' removes it "remains":["no portset name"]}
  switch  a       61 00 00 00 00 00 00 00-00 00 00 00 00 00 00 00  no portset name  remove  no
  a: changed []
  $ bash cut SwitchAssociate SwitchRemove
  4 qvs: switch 'a': exists, but is half made: no portset 'a'; 'qvs switch destroy a' removes it "remains":["no portset 'a'"]}
  switch  a       61 00 00 00 00 00 00 00-00 00 00 00 00 00 00 00  no portset 'a'  remove  no
  a: changed []
  $ bash cut SwitchAssociate SwitchRemove 'shell*destroy'
  4 qvs: switch 'a': exists, but is half made: not associated with its portset; 'qvs switch destroy a' removes it "remains":["not associated with its portset"]}
  switch  a       61 00 00 00 00 00 00 00-00 00 00 00 00 00 00 00  not associated with its portset  remove  no
  a: changed []
  $ bash cut 'HostPropSet*uplinkPorts' SwitchRemove SwitchDissociate 'shell*destroy' GlobalPropClear PortRemove
  4 qvs: switch 'a': exists, but is half made: uplink 'uplink0' has no entry for its port, port 'uplink0' was made for an uplink and carries none; 'qvs switch repair a' mends that "remains":["uplink 'uplink0' has no entry for its port","port 'uplink0' was made for an uplink and carries none"]}
  uplinks  a       a        uplink 'uplink0' has no entry for its port  drop the entry  no
  port     a       uplink0  made for an uplink, but carries none        remove          no
  a: changed []
  $ bash cut 'GlobalPropSet*uplinkPorts' SwitchRemove SwitchDissociate 'shell*destroy' PortRemove
  4 qvs: switch 'a': exists, but is half made: port 'uplink0' was made for an uplink and carries none; 'qvs switch repair a' mends that "remains":["port 'uplink0' was made for an uplink and carries none"]}
  port  a       uplink0  made for an uplink, but carries none  remove  no
  a: changed []

The same with destroying one that is whole.

  $ qvs switch create a --uplinks 1 --ports 1; qvs-host fault add SwitchRemove --status 0xbad0004; qvs switch destroy a; qvs switch list; qvs switch destroy a --json; qvs switch destroy a --if-exists
  a: changed
  qvs: switch 'a': Busy (0xbad0004)
  ALIAS  ID                                               CLASS    VERSION  PORTS  UPLINKS  PORTSET  LEFT HALF MADE
  a      61 00 00 00 00 00 00 00-00 00 00 00 00 00 00 00  vswitch  105      2      1        a        not associated with its portset
  {"switch":"a","changed":true}
  a: unchanged

Uplinks: a port that was added and not listed, one that was removed and is still listed, a name without an entry.

  $ qvs switch create b --uplinks 2 --ports 1  => b: changed
  $ for fault in GlobalPropSet PortRemove; do qvs-host fault add $fault --status 0xbad0014; done; qvs uplink add b new; echo $(qvs uplink list b --names)  => qvs: switch 'b': uplink 'new': Out of memory (0xbad0014) | uplink0 uplink1
  $ qvs-host fault add GlobalPropSet --status 0xbad0014; qvs uplink remove b uplink0  => [1] qvs: switch 'b': uplink 'uplink0': Out of memory (0xbad0014); uplink 'uplink0' has no port; 'qvs switch repair b' mends that
  $ qvs uplink list b  => [1] UPLINK   PORT     LINK  LACP  NIC    KERNEL PORT | uplink1  uplink1  up    down  pnic1  uplink1 | qvs: switch 'b': uplink 'uplink0' has no port; 'qvs switch repair b' mends that
  $ qvs uplink list b --names --json  => [1] ["uplink1"] | qvs: switch 'b': uplink 'uplink0' has no port; 'qvs switch repair b' mends that
  $ qvs uplink add b more --may-exist  => [1] qvs: switch 'b': uplink 'uplink0' has no port; 'qvs switch repair b' mends that
  $ qvs switch list
  ALIAS  ID                                               CLASS    VERSION  PORTS  UPLINKS  PORTSET  LEFT HALF MADE
  b      62 00 00 00 00 00 00 00-00 00 00 00 00 00 00 00  vswitch  105      3      2        b        uplink 'uplink0' has no port, port 'new' was made for an uplink and carries none
  $ qvs switch repair b --dry-run
  KIND     SWITCH  NAME  DEFECT                                ACTION          CHANGED
  uplinks  b       b     uplink 'uplink0' has no port          drop the entry  no
  port     b       new   made for an uplink, but carries none  remove          no
  $ qvs switch repair b --json | sed -n '2,3p'
  {"kind":"uplinks","switch":"b","name":"b","defect":"uplink 'uplink0' has no port","action":"drop the entry","changed":true},
  {"kind":"port","switch":"b","name":"new","defect":"made for an uplink, but carries none","action":"remove","changed":true}
  $ qvs switch repair --json; qvs switch list; echo $(qvs uplink list b --names; qvs port list b --names)
  []
  ALIAS  ID                                               CLASS    VERSION  PORTS  UPLINKS  PORTSET
  b      62 00 00 00 00 00 00 00-00 00 00 00 00 00 00 00  vswitch  105      2      1        b
  uplink1 uplink1 port0
  $ qvs-host fault add HostPropSet --status 0xbad0014; qvs uplink add b u3 >log 2>&1; qvs uplink add b u3; qvs-host fault add HostPropSet --status 0xbad0014; qvs uplink remove b uplink1
  b/u3: changed
  qvs: switch 'b': uplink 'uplink1': Out of memory (0xbad0014); uplink 'uplink1' has no port; 'qvs switch repair b' mends that
  ? 1
  $ qvs switch create b --may-exist  => [4] qvs: switch 'b': exists, but is half made: uplink 'uplink1' has no port; 'qvs switch repair b' mends that
  $ qvs switch repair >log; qvs uplink list b --names  => u3

What is in use or was changed is nobody's remains, and neither are the ports of another class of switch.

  $ qvs uplink add b u4 u5 >log; qvs port vlan set b u5 --trunk 1-20 >log; qvs uplink clear b >log; qvs switch repair; echo $(qvs port list b --names)
  KIND  SWITCH  NAME  DEFECT                                ACTION  CHANGED
  port  b       u3    made for an uplink, but carries none  remove  yes
  port  b       u4    made for an uplink, but carries none  remove  yes
  port0 u5

A repair of all; nothing is left, and the second run finds nothing.

  $ treesh -e set /net/create stray $'8\n' vswitch; for fault in SwitchAssociate SwitchRemove; do qvs-host fault add $fault --status 0xbad0014; done; qvs switch create c >log 2>&1; qvs switch repair; qvs switch repair --json; treesh -e ls /net/portsets; qvs switch list --names
  KIND     SWITCH  NAME                                             DEFECT                ACTION  CHANGED
  switch   c       63 00 00 00 00 00 00 00-00 00 00 00 00 00 00 00  no portset 'c'        remove  yes
  portset  -       stray                                            belongs to no switch  remove  yes
  []
  b/
  b
  $ qvs switch repair nix  => [3] qvs: switch 'nix': Not found (0xbad0003)

A kernel that does not say which data paths it has.

  $ qvs-host fault add GetSwitches --forever --errno EBUSY; each 'switch list' 'switch create b --may-exist' 'switch repair' 2>&1 | uniq; qvs-host fault clear
  qvs: warning: switches of the kernel: Failure (0xbad0001); what is half made in the kernel does not show
  ALIAS  ID                                               CLASS    VERSION  PORTS  UPLINKS  PORTSET
  b      62 00 00 00 00 00 00 00-00 00 00 00 00 00 00 00  vswitch  105      2      0        b
  qvs: warning: switches of the kernel: Failure (0xbad0001); what is half made in the kernel does not show
  b: unchanged
  qvs: warning: switches of the kernel: Failure (0xbad0001); what is half made in the kernel does not show
  qvs: nothing was repaired
  exit 0 0 1
