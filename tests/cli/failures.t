Standard output that cannot be written is a failure; a reader that has gone ends the tool as it ends others.

  $ qvs switch create sw1 --uplinks 1 --ports 2  => sw1: changed
  $ qvs port list sw1 >/dev/full  => [1] qvs: standard output: No space left on device
  $ qvs port list sw1 >&-  => [1] qvs: standard output: Bad file descriptor
  $ { qvs port list sw1 --kernel; echo "? $?" >status; } | true; cat status  => ? 141
  $ qvs prop get sw1 com.quillon.common.alias --raw /dev/full  => [1] qvs: file '/dev/full': No space left on device
  $ qvs port add sw1 late >/dev/full; echo $(qvs port list sw1 --names)  => qvs: standard output: No space left on device | uplink0 port0 port1 late

Standard error that cannot be written changes nothing.

  $ for closed in '>&-' '>/dev/full'; do sh -c "qvs port show sw1 nix 2$closed"; echo "? $?"; echo $(sh -c "qvs --trace port add sw1 quiet 2$closed"; qvs port remove sw1 quiet); done
  ? 3
  sw1/quiet: changed sw1/quiet: changed
  ? 3
  sw1/quiet: changed sw1/quiet: changed

Each library call is traced.

  $ qvs --trace port add sw1 traced 2>&1 | sed 's/[0-9]* us/N us/'
  qvs: DVSLoadConfig() -> 0x0 (Success), N us
  qvs: DVSAliasToSwitchId("sw1", ...) -> 0x0 (Success), N us
  qvs: VSDVS_AddDVPort("sw1", "traced", 1) -> 0x0 (Success), N us
  sw1/traced: changed
  $ qvs port remove sw1 traced --trace --json 2>/dev/null  => {"switch":"sw1","changed":true,"ports":[{"port":"traced","changed":true}]}
  $ qvs --trace uplink down sw1 nix 2>&1 | sed 's/[0-9]* us/N us/' | tail -n 2  => qvs: VSHYP_GetUplinkLinkState("sw1", "nix", ...) -> 0xbad0003 (Not found), N us | qvs: switch 'sw1': uplink 'nix': Not found (0xbad0003)

What was done before a failure is reported, and the failure after it.

  $ qvs-host fault add 'PortAdd*"b"' --status 0xbad0014; qvs port add sw1 a b c  => [1] sw1/a: changed | qvs: switch 'sw1': port 'b': Out of memory (0xbad0014)
  $ qvs-host fault add 'PortAdd*"e"' --status 0xbad0014; qvs port add sw1 d e f --json  => [1] {"switch":"sw1","changed":true,"ports":[{"port":"d","changed":true}]} | qvs: switch 'sw1': port 'e': Out of memory (0xbad0014)
  $ echo $(qvs port list sw1 --names)  => uplink0 port0 port1 late a d

A dump is escaped on a terminal alone.

  $ esc=$(printf '\033'); qvs port add sw1 "p$esc[31m"; qvs dump sw1 | grep -c "$esc.31m:"; script -qc 'qvs dump sw1' /dev/null | grep -o 'port p.*31m:'; qvs port remove sw1 "p$esc[31m"
  sw1/p\x1b[31m: changed
  1
  port p\x1b[31m:
  sw1/p\x1b[31m: changed

Statuses of the kernel and of the state library pass through.

  $ qvs-host fault add 0x1010 --errno EIO; qvs switch show sw1  => [1] qvs: switch 'sw1': Metadata read error (0xbad0008)
  $ qvs-host fault clear
  $ qvs-host fault add 0x1010 --errno ENOENT; qvs switch show sw1 | tail -n 1  => kernel information:  -
  $ qvs-host fault add 0x1014 --errno EBUSY; qvs port show sw1 port0  => [1] qvs: switch 'sw1': port 'port0': Busy (0xbad0004)

The kernel's counts are not trusted, and its texts need not end.

  $ qvs-host fault add GetSwitches --nth 2 --output "8:$(printf '78%.0s' $(seq 128))"; qvs switch list --kernel --json | head -n 2 | wc -c  => 160
  $ qvs-host fault clear

Clearing that did not happen is no success.

  $ qvs-host fault add HostPropGet --status 0xbad0004; qvs uplink list sw1; qvs-host fault clear  => qvs: switch 'sw1': Busy (0xbad0004)
  $ qvs-host fault add GlobalPropClear --forever --status 0xbad0014; qvs uplink clear sw1; qvs-host fault clear  => qvs: switch 'sw1': uplink lists: Failure (0xbad0001)

A host whose state cannot be loaded is not an empty host.

  $ qvs-host fault add StateGet --forever --status 0xbad0014; qvs switch list  => [6] qvs: the host does not answer: switch state: Out of memory (0xbad0014)
  $ qvs-host fault clear

A kernel that answers nonsense is no missing kernel. A host that has ended is named, and the next one takes its socket over; a full disk
changes nothing.

  $ qvs-host fault add 'device ioctl' --forever --output 0:ffffffff; qvs spf list sw1; qvs livetrace counts 1; qvs-host fault clear  => qvs: switch 'sw1': Out of memory (0xbad0014) | qvs: live-trace action 1: no answer
  $ qvs-host run --state gone -- sh -c 'kill -9 $(cat gone/lock); qvs switch list; echo $?' 2>&1 | grep -v qvs-host; [ -S gone/socket ] && echo its socket is left
  qvs: no hypercore on this machine: the emulated host that this shell belongs to has ended
  5
  its socket is left
  $ on() { qvs-host run --state full "$@"; }; head -c 2000000 /dev/zero >large; on -- qvs switch create sw1 >log; on -- qvs dump >before; on --max-state-mib 1 -- qvs prop set sw1 k --file large; echo $?; on -- qvs dump | cmp before -
  qvs: switch 'sw1': global property 'k': No space left on device (0xbad00d7)
  1

A switch of another class is shown, and not changed.

  $ echo '{"switches":[{"alias":"old","id":"id-old","class":"etherswitch","version":1,"maxPorts":8,"portset":"old","ports":["p"]}]}' >lab
  $ qvs-host run --state ../state --lab lab -- qvs switch list
  ALIAS  ID                                               CLASS        VERSION  PORTS  UPLINKS  PORTSET  LEFT HALF MADE
  sw1    73 77 31 00 00 00 00 00-00 00 00 00 00 00 00 00  vswitch      105      6      0        sw1      uplink 'uplink0' has no entry for its port, port 'uplink0' was made for an uplink and carries none
  old    id-old                                           etherswitch  1        1      0        old      -
  $ qvs switch create old --may-exist  => [4] qvs: switch 'old': exists with class 'etherswitch', not 'vswitch'
  $ qvs port add old p2  => [1] qvs: switch 'old': class is 'etherswitch', not 'vswitch'
  $ qvs port list old --names  => p
  $ qvs switch destroy old  => [1] qvs: switch 'old': class is 'etherswitch', not 'vswitch'
