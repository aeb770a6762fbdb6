  $ qvs switch create sw1 --uplinks 2 --ports 2  => sw1: changed

A row for every setting but the MTU, which has a transcript of its own: what holds while nothing is stored; a change, which is told once;
what is stored then; two clears; what is stored in the end, and the exit status of asking for it.

  $ cat >try <<<'at="sw1${3:+ $3}"; echo $(for words in "get $at --json" "set $at $2" "set $at $2" "get $at --json" "clear $at" "clear $at" "get $at --stored"; do qvs $1 $words; done 2>&1; echo $?)'
  $ sh try pvlan '100:101:isolated 100:100:promiscuous 0x64:4094:community'
  {"switch":"sw1","privateVlans":null,"stored":false} sw1: changed sw1: unchanged {"switch":"sw1","privateVlans":[{"primary":100,"secondary":101,"type":"isolated"},{"primary":100,"secondary":100,"type":"promiscuous"},{"primary":100,"secondary":4094,"type":"community"}],"stored":true} sw1: changed sw1: unchanged qvs: switch 'sw1': private VLANs: Not found (0xbad0003) 3
  $ sh try 'port vlan' '--id 100 --trunk 1-100,200,0x12c --priority 0' port0
  {"switch":"sw1","port":"port0","id":0,"private":false,"trunk":null,"priority":null,"stored":true} sw1/port0: changed sw1/port0: unchanged {"switch":"sw1","port":"port0","id":100,"private":false,"trunk":["1-100","200","300"],"priority":0,"stored":true} sw1/port0: changed sw1/port0: unchanged switch: sw1 port: port0 id: 0 private: off trunk: - priority: - stored: yes 0
  $ sh try 'port nested-vlan' on port0
  {"switch":"sw1","port":"port0","enabled":false,"stored":false} sw1/port0: changed sw1/port0: unchanged {"switch":"sw1","port":"port0","enabled":true,"stored":true} sw1/port0: changed sw1/port0: unchanged qvs: switch 'sw1': port 'port0': nested VLAN tagging: Not found (0xbad0003) 3
  $ sh try 'port security' '--forged deny --mac-change deny' port0
  {"switch":"sw1","port":"port0","promiscuous":"deny","macChange":"allow","forged":"allow","stored":false} sw1/port0: changed sw1/port0: unchanged {"switch":"sw1","port":"port0","promiscuous":"deny","macChange":"deny","forged":"deny","stored":true} sw1/port0: changed sw1/port0: unchanged qvs: switch 'sw1': port 'port0': security: Not found (0xbad0003) 3
  $ sh try 'port filter' '--flags use-ladrf,multicast,unicast --addresses 01:00:5e:00:00:FB,33:33:00:00:00:01' port0
  {"switch":"sw1","port":"port0","flags":null,"addresses":null,"stored":false} sw1/port0: changed sw1/port0: unchanged {"switch":"sw1","port":"port0","flags":["unicast","multicast","use-ladrf"],"addresses":["01:00:5e:00:00:fb","33:33:00:00:00:01"],"stored":true} sw1/port0: changed sw1/port0: unchanged qvs: switch 'sw1': port 'port0': receive filter: Not found (0xbad0003) 3
  $ sh try teaming '--active uplink1,uplink0 --balance source-mac --link-state on --best-effort on'
  {"switch":"sw1","balance":null,"active":null,"standby":null,"linkState":null,"beacon":null,"notify":null,"rolling":null,"bestEffort":null,"shotgun":null,"stored":false} sw1: changed sw1: unchanged {"switch":"sw1","balance":"source-mac","active":["uplink1","uplink0"],"standby":[],"linkState":true,"beacon":false,"notify":false,"rolling":false,"bestEffort":true,"shotgun":false,"stored":true} sw1: changed sw1: unchanged qvs: switch 'sw1': teaming policy: Not found (0xbad0003) 3
  $ sh try 'port teaming' '--active uplink1 --standby uplink0 --balance explicit --notify on' port0
  {"switch":"sw1","port":"port0","balance":null,"active":null,"standby":null,"linkState":null,"beacon":null,"notify":null,"rolling":null,"bestEffort":null,"shotgun":null,"stored":false} sw1/port0: changed sw1/port0: unchanged {"switch":"sw1","port":"port0","balance":"explicit","active":["uplink1"],"standby":["uplink0"],"linkState":false,"beacon":false,"notify":true,"rolling":false,"bestEffort":false,"shotgun":false,"stored":true} sw1/port0: changed sw1/port0: unchanged qvs: switch 'sw1': port 'port0': teaming policy: Not found (0xbad0003) 3
  $ sh try 'port teaming-override' gold port0
  {"switch":"sw1","port":"port0","override":null,"stored":false} sw1/port0: changed sw1/port0: unchanged {"switch":"sw1","port":"port0","override":"gold","stored":true} sw1/port0: changed sw1/port0: unchanged qvs: switch 'sw1': port 'port0': teaming override: Not found (0xbad0003) 3
  $ sh try 'port tx-uplink' always port0
  {"switch":"sw1","port":"port0","mode":null,"stored":false} sw1/port0: changed sw1/port0: unchanged {"switch":"sw1","port":"port0","mode":"always","stored":true} sw1/port0: changed sw1/port0: unchanged qvs: switch 'sw1': port 'port0': transmit uplink mode: Not found (0xbad0003) 3
  $ printf 'a%.0s' $(seq 5496) >entries; sh try ls-teaming '--file entries' | sed 's/YWFhYWFh[^"]*/.../g'
  {"switch":"sw1","policies":null,"stored":false} sw1: changed sw1: unchanged {"switch":"sw1","policies":["...","..."],"stored":true} sw1: changed sw1: unchanged qvs: switch 'sw1': logical-switch teaming table: Not found (0xbad0003) 3
  $ sh try 'port ls-teaming' silver port0
  {"switch":"sw1","port":"port0","policy":null,"stored":false} sw1/port0: changed sw1/port0: unchanged {"switch":"sw1","port":"port0","policy":"silver","stored":true} sw1/port0: changed sw1/port0: unchanged qvs: switch 'sw1': port 'port0': logical-switch teaming choice: Not found (0xbad0003) 3
  $ sh try mac-learning '--aging 300 --limit 1'
  {"switch":"sw1","aging":600,"limit":65536,"stored":false} sw1: changed sw1: unchanged {"switch":"sw1","aging":300,"limit":1,"stored":true} sw1: changed sw1: unchanged qvs: switch 'sw1': MAC learning: Not found (0xbad0003) 3
  $ sh try 'port mac-learning' '--learning on --limit 16 --limit-policy deny' port0
  {"switch":"sw1","port":"port0","learning":false,"flooding":false,"limit":4096,"limitPolicy":"allow","stored":false} sw1/port0: changed sw1/port0: unchanged {"switch":"sw1","port":"port0","learning":true,"flooding":false,"limit":16,"limitPolicy":"deny","stored":true} sw1/port0: changed sw1/port0: unchanged qvs: switch 'sw1': port 'port0': MAC learning: Not found (0xbad0003) 3
  $ for noun in learn-static overlay-cache static-mac-allow; do sh try $noun on; done
  {"switch":"sw1","enabled":false,"stored":false} sw1: changed sw1: unchanged {"switch":"sw1","enabled":true,"stored":true} sw1: changed sw1: unchanged qvs: switch 'sw1': learning of static addresses: Not found (0xbad0003) 3
  {"switch":"sw1","enabled":false,"stored":false} sw1: changed sw1: unchanged {"switch":"sw1","enabled":true,"stored":true} sw1: changed sw1: unchanged qvs: switch 'sw1': caching for the overlay: Not found (0xbad0003) 3
  {"switch":"sw1","enabled":false,"stored":false} sw1: changed sw1: unchanged {"switch":"sw1","enabled":true,"stored":true} sw1: changed sw1: unchanged qvs: switch 'sw1': acceptance of static addresses: Not found (0xbad0003) 3
  $ sh try 'mcast mode' snooping
  {"switch":"sw1","mode":"legacy","stored":false} sw1: changed sw1: unchanged {"switch":"sw1","mode":"snooping","stored":true} sw1: changed sw1: unchanged qvs: switch 'sw1': multicast filter mode: Not found (0xbad0003) 3
  $ sh try 'mcast list' '01:00:5e:00:00:fb 33:33:00:00:00:FB'
  {"switch":"sw1","addresses":null,"stored":false} sw1: changed sw1: unchanged {"switch":"sw1","addresses":["01:00:5e:00:00:fb","33:33:00:00:00:fb"],"stored":true} sw1: changed sw1: unchanged qvs: switch 'sw1': multicast addresses: Not found (0xbad0003) 3
  $ sh try 'port mcast' --empty port0
  {"switch":"sw1","port":"port0","addresses":null,"stored":false} sw1/port0: changed sw1/port0: unchanged {"switch":"sw1","port":"port0","addresses":[],"stored":true} sw1/port0: changed sw1/port0: unchanged qvs: switch 'sw1': port 'port0': multicast addresses: Not found (0xbad0003) 3
  $ sh try rcf ebpf  => {"switch":"sw1","type":"cbpf","stored":false} sw1: changed sw1: unchanged {"switch":"sw1","type":"ebpf","stored":true} sw1: changed sw1: unchanged qvs: switch 'sw1': receive filter type: Not found (0xbad0003) 3
  $ sh try 'health team' '--interval 5 --expected ip-hash'
  {"switch":"sw1","interval":null,"expected":null,"stored":false} sw1: changed sw1: unchanged {"switch":"sw1","interval":5,"expected":"ip-hash","stored":true} sw1: changed sw1: unchanged qvs: switch 'sw1': team check: Not found (0xbad0003) 3
  $ printf 'p%.0s' $(seq 512) >param; sh try 'health vlan-mtu' '--interval 1 --parameter param' | sed 's/cHBwcHBw[^"]*/.../g'
  {"switch":"sw1","interval":null,"parameter":null,"stored":false} sw1: changed sw1: unchanged {"switch":"sw1","interval":1,"parameter":"...","stored":true} sw1: changed sw1: unchanged qvs: switch 'sw1': VLAN and MTU check: Not found (0xbad0003) 3
  $ sh try discovery '--operation both --protocol lldp'
  {"switch":"sw1","protocol":"cdp","operation":"down","stored":false} sw1: changed sw1: unchanged {"switch":"sw1","protocol":"lldp","operation":"both","stored":true} sw1: changed sw1: unchanged qvs: switch 'sw1': discovery: Not found (0xbad0003) 3
  $ sh try 'port ipfix' '--idle 30 --active 60 --rate 100 --internal-only on --vnic-only on --obs-domain 7 --source 192.0.2.1 --obs-id host-3 --collectors 192.0.2.9:4739,[2001:db8::9]:65535' port0
  {"switch":"sw1","port":"port0","idle":null,"active":null,"rate":null,"internalOnly":null,"vnicOnly":null,"obsDomain":null,"source":null,"obsId":null,"collectors":null,"stored":false} sw1/port0: changed sw1/port0: unchanged {"switch":"sw1","port":"port0","idle":30,"active":60,"rate":100,"internalOnly":true,"vnicOnly":true,"obsDomain":7,"source":"192.0.2.1","obsId":"host-3","collectors":["192.0.2.9:4739","[2001:db8::9]:65535"],"stored":true} sw1/port0: changed sw1/port0: unchanged qvs: switch 'sw1': port 'port0': flow sampling: Not found (0xbad0003) 3

What is not given is kept; a member goes with none, all of them start anew with --reset.

  $ for more in '--id 5 --trunk all' '--priority 3' '--trunk none'; do qvs port vlan set sw1 port0 $more >log; done; qvs port vlan get sw1 port0
  switch:    sw1
  port:      port0
  id:        5
  private:   off
  trunk:     -
  priority:  3
  stored:    yes
  $ for more in '--priority none' '--reset --priority 7'; do qvs port vlan set sw1 port0 $more >log; qvs port vlan get sw1 port0 --json; done
  {"switch":"sw1","port":"port0","id":5,"private":false,"trunk":null,"priority":null,"stored":true}
  {"switch":"sw1","port":"port0","id":0,"private":false,"trunk":null,"priority":7,"stored":true}
  $ for more in '--active uplink0' '--standby uplink1' '--active ""'; do eval "qvs teaming set sw1 $more" >log; done; qvs teaming get sw1 --stored
  switch:       sw1
  balance:      source-port
  active:       -
  standby:      uplink1
  link state:   off
  beacon:       off
  notify:       off
  rolling:      off
  best effort:  off
  shotgun:      off
  stored:       yes
  $ for words in 'teaming set sw1 --reset' 'discovery set sw1 --operation listen' 'discovery set sw1 --operation down' 'health team set sw1 --interval 5' 'health team set sw1 --expected other' 'health team set sw1 --interval none'; do qvs $words >log; done; qvs teaming get sw1 --json; qvs discovery get sw1 --json; qvs health team get sw1
  {"switch":"sw1","balance":"source-port","active":[],"standby":[],"linkState":false,"beacon":false,"notify":false,"rolling":false,"bestEffort":false,"shotgun":false,"stored":true}
  {"switch":"sw1","protocol":"cdp","operation":"down","stored":false}
  switch:            sw1
  interval minutes:  -
  expected:          other
  stored:            yes

Bytes that no member has stay; a record that the members cannot express is left alone.

  $ qvs prop set sw1 com.quillon.vswitch.macLearning --hex 2c0100ff01000000 --host; qvs mac-learning set sw1 --aging 301; qvs prop get sw1 com.quillon.vswitch.macLearning --host
  sw1 host com.quillon.vswitch.macLearning: changed
  sw1: changed
  2d0100ff01000000
  $ for hex in 2c0100ff010000 ffffff0001000000; do qvs prop set sw1 com.quillon.vswitch.macLearning --hex $hex --host; qvs mac-learning get sw1 --stored; qvs mac-learning set sw1 --limit 9; qvs prop get sw1 com.quillon.vswitch.macLearning --host; done; qvs mac-learning get sw1 --json
  sw1 host com.quillon.vswitch.macLearning: changed
  qvs: switch 'sw1': MAC learning: the members cannot express the 7 bytes that are stored as com.quillon.vswitch.macLearning; 'qvs mac-learning set' with --reset replaces them
  qvs: switch 'sw1': MAC learning: the members cannot express the 7 bytes that are stored as com.quillon.vswitch.macLearning; 'qvs mac-learning set' with --reset replaces them
  2c0100ff010000
  sw1 host com.quillon.vswitch.macLearning: changed
  qvs: switch 'sw1': MAC learning: the members cannot express the 8 bytes that are stored as com.quillon.vswitch.macLearning; 'qvs mac-learning set' with --reset replaces them
  qvs: switch 'sw1': MAC learning: the members cannot express the 8 bytes that are stored as com.quillon.vswitch.macLearning; 'qvs mac-learning set' with --reset replaces them
  ffffff0001000000
  {"switch":"sw1","aging":16777215,"limit":1,"stored":true}
  $ qvs mac-learning set sw1 --reset --limit 9; qvs prop get sw1 com.quillon.vswitch.macLearning --host  => sw1: changed | 5802000009000000
  $ qvs prop set sw1 com.quillon.vswitch.port.vlan --hex 0000000000000200010001 --port port1; qvs port vlan get sw1 port1
  sw1/port1 com.quillon.vswitch.port.vlan: changed
  qvs: switch 'sw1': port 'port1': VLAN policy: Failure (0xbad0001); the 11 bytes that are stored as com.quillon.vswitch.port.vlan are not such a record; 'qvs prop clear sw1 com.quillon.vswitch.port.vlan --port port1' removes them
  ? 1
  $ qvs prop set sw1 com.quillon.vswitch.teaming --hex "070000000000000000000000ffffffff01000000ffffffff$(printf '6100%.0s' $(seq 1296))"; qvs teaming get sw1 --json; qvs teaming set sw1 --notify on
  sw1 com.quillon.vswitch.teaming: changed
  qvs: warning: the record counts 4294967296 uplinks and holds 32
  {"switch":"sw1","balance":"7","active":["a"],"standby":["","a","","a","","a","","a","","a","","a","","a","","a","","a","","a","","a","","a","","a","","a","","a",""],"linkState":false,"beacon":false,"notify":true,"rolling":true,"bestEffort":true,"shotgun":true,"stored":true}
  qvs: switch 'sw1': teaming policy: the members cannot express the 2616 bytes that are stored as com.quillon.vswitch.teaming; 'qvs teaming set' with --reset replaces them
  ? 1

Nothing is stored of what is refused.

  $ each 'port vlan set sw1 port0 --trunk 5-3' 'port vlan set sw1 port0 --trunk ""' 'port vlan set sw1 port0 --reset --private on' 'port vlan set sw1 port0 --private yes' 'pvlan set sw1' 'pvlan set sw1 100:101:island' 'pvlan set sw1 1:2:3:4' 'pvlan set sw1 --empty 1:2:isolated'
  qvs: --trunk: the range '5-3' runs backwards
  qvs: --trunk: is empty; to remove the member, give 'none'
  qvs: switch 'sw1': port 'port0': VLAN policy: private requires id
  qvs: --private: 'yes' is not on or off
  qvs: either PRIMARY:SECONDARY:TYPE or --empty is required
  qvs: PRIMARY:SECONDARY:TYPE: 'island' is not promiscuous, isolated or community
  qvs: PRIMARY:SECONDARY:TYPE: '3:4' is not promiscuous, isolated or community
  qvs: either PRIMARY:SECONDARY:TYPE or --empty is required
  exit 2 2 2 2 2 2 2 2
  $ each "teaming set sw1 --active $(seq -s, 33)" 'teaming set sw1 --reset --active a,b --standby a' 'teaming set sw1 --reset --active a,,b' "mcast list set sw1 $(printf '01:00:5e:00:00:%02x ' $(seq 26))" 'mcast list set sw1 01:00:5e' 'port filter set sw1 port0 --addresses 01:00:5e:00:00:01' 'rcf set sw1 jit' 'port nested-vlan set sw1 port0 yes'
  qvs: --active: 33 entries, at most 32 fit
  qvs: switch 'sw1': teaming policy: uplink 'a' is given twice
  qvs: --active: is empty
  qvs: MAC: 26 entries, at most 25 fit
  qvs: MAC: '01:00:5e' is not a MAC address such as 02:00:00:00:00:01
  qvs: switch 'sw1': port 'port0': receive filter: addresses require the flag multicast
  qvs: TYPE: 'jit' is not cbpf or ebpf
  qvs: STATE: 'yes' is not on or off
  exit 2 2 2 2 2 2 2 2
  $ head -c 511 param >short; each 'health vlan-mtu set sw1 --parameter short' 'health vlan-mtu set sw1 --parameter /dev/zero' 'health vlan-mtu set sw1 --parameter nowhere' 'ls-teaming set sw1 --file short' 'port ipfix set sw1 port0 --collectors 192.0.2.9' 'port teaming-override set sw1 port0 ""' "port teaming-override set sw1 port0 $(printf 'n%.0s' $(seq 81))"
  qvs: --parameter: file 'short' has 511 bytes, not 512 bytes
  qvs: file '/dev/zero': more than 512 bytes, which is all that fits
  qvs: file 'nowhere': No such file or directory
  qvs: --file: file 'short' has 511 bytes, but each entry has 2748
  qvs: --collectors: '192.0.2.9' is not IPV4:PORT or [IPV6]:PORT
  qvs: OVERRIDE: is empty
  qvs: OVERRIDE: has 81 bytes, at most 80 fit
  exit 2 2 1 2 2 2 2
  $ qvs port vlan get sw1 port0 --json; qvs port teaming-override get sw1 port0 --json  => {"switch":"sw1","port":"port0","id":0,"private":false,"trunk":null,"priority":7,"stored":true} | {"switch":"sw1","port":"port0","override":null,"stored":false}

Bytes alone, a switch by its identifier, what runs.

  $ qvs ls-teaming set sw1 --file entries >log; qvs ls-teaming get sw1 --raw - | cmp - entries; qvs ls-teaming get sw1 | grep '^[pe]'; qvs health vlan-mtu set sw1 --parameter param >log; qvs health vlan-mtu get sw1 --raw - | cmp - param; qvs health vlan-mtu get sw1 | tail -n +4
  policies:  2
  entry 0 (2748 bytes):
  entry 1 (2748 bytes):
  parameter (512 bytes):
    0000 70 70 70 70 70 70 70 70 70 70 70 70 70 70 70 70
    *
    01f0 70 70 70 70 70 70 70 70 70 70 70 70 70 70 70 70
  $ id=$(qvs switch list --json | grep -o '"id":"[^"]*' | cut -d'"' -f4); qvs teaming set sw1 --reset --shotgun on; qvs teaming get "$id" --by-id | tail -n 2; qvs ls-teaming get nowhere --by-id
  sw1: changed
  shotgun:      on
  stored:       yes
  qvs: switch 'nowhere': logical-switch teaming table: Not found (0xbad0003)
  ? 3
  $ qvs mcast mode get sw1 --kernel --stored; qvs switch create new --version 107; qvs mcast mode set new legacy
  qvs: --stored and --kernel exclude each other
  new: changed
  qvs: switch 'new': multicast filter mode: Not supported (0xbad0020); switches of version 107 and later have it elsewhere
  ? 1

What refers to something that is not there is stored with a warning, and not with --strict.

  $ qvs teaming set sw1 --reset --active uplink7,uplink0 --strict; qvs teaming set sw1 --active uplink7,uplink0; qvs port vlan set sw1 port0 --reset --id 7 --private on; qvs pvlan set sw1 7:8:isolated; qvs port vlan set sw1 port0 --id 8 --strict
  qvs: switch 'sw1': teaming policy: uplink 'uplink7' is missing
  qvs: warning: switch 'sw1': teaming policy: uplink 'uplink7' is missing
  sw1: changed
  qvs: warning: switch 'sw1': port 'port0': VLAN policy: private VLAN 7 is missing
  sw1/port0: changed
  sw1: changed
  sw1/port0: changed
  $ qvs mirror add sw1 m --type dvport --destinations port1 --sources-in port7 --strict; qvs mirror add sw1 m --type dvport --destinations port1; qvs port remove sw1 port1 --strict; qvs port remove sw1 port1; qvs uplink remove sw1 uplink0 --strict; qvs uplink remove sw1 uplink1; qvs uplink remove sw1 uplink0
  qvs: switch 'sw1': mirror sessions: port or uplink 'port7' is missing
  sw1 m: changed
  qvs: switch 'sw1': port1 is removed, but still named by: mirror sessions
  qvs: warning: switch 'sw1': port1 is removed, but still named by: mirror sessions
  sw1/port1: changed
  qvs: switch 'sw1': uplink0 is removed, but still named by: teaming policy
  sw1/uplink1: changed
  qvs: warning: switch 'sw1': uplink0 is removed, but still named by: teaming policy
  qvs: warning: switch 'sw1': no uplink with a link remains
  sw1/uplink0: changed
  $ for change in 'set sw1 7:7:promiscuous --strict' 'clear sw1 --strict' 'set sw1 7:8:community --strict' 'set sw1 9:9:promiscuous' 'clear sw1'; do qvs pvlan $change; done
  qvs: switch 'sw1': private VLAN 8 is removed, but still named by: port 'port0': VLAN policy
  qvs: switch 'sw1': private VLAN 7, 8 is removed, but still named by: port 'port0': VLAN policy
  sw1: changed
  qvs: warning: switch 'sw1': private VLAN 7, 8 is removed, but still named by: port 'port0': VLAN policy
  sw1: changed
  sw1: changed
  $ printf '%s\n' 'uplink add sw1 late' 'teaming set sw1 --reset --active late --strict' | qvs batch -  => sw1/late: changed | sw1: changed

A sink port is a flag of the filter.

  $ qvs port sink get sw1 port0 --json; qvs port sink set sw1 port0 on; qvs port sink set sw1 port0 on; qvs port sink get sw1 port0 | tail -n 2; qvs port filter get sw1 port0 --json; qvs port filter set sw1 port0 --flags broadcast; qvs port sink get sw1 port0 --json
  {"switch":"sw1","port":"port0","enabled":false,"stored":false}
  sw1/port0: changed
  sw1/port0: unchanged
  enabled:  on
  stored:   yes
  {"switch":"sw1","port":"port0","flags":["sink"],"addresses":[],"stored":true}
  sw1/port0: changed
  {"switch":"sw1","port":"port0","enabled":false,"stored":true}

Help.

  $ qvs port vlan set --help | sed -n '/--id N  /,/--strict  /p'
    --id N             VLAN of the port; 0 for none: 0 to 4094 (0)
    --private STATE    whether the id is that of a private VLAN: on or off (off)
    --trunk VLANS,...  VLANs that the guest tags itself: VLAN ids or ranges, 0 to 4094, or all, or none
    --priority N       priority of the tag: 0 to 7, or none
    --reset            start from the default, not from what is stored
    --strict           fail, instead of warn, when something is missing that is referred to
  $ qvs help port nested-vlan; qvs port vlan nix
  qvs port vlan: the VLANs of a port
  
    qvs port nested-vlan get    show whether a port may nest VLAN tags
    qvs port nested-vlan set    store whether a port may nest VLAN tags
    qvs port nested-vlan clear  clear the stored nested VLAN tagging of a port
  qvs: no such command: port vlan 'nix'; 'qvs help port vlan' lists them
  ? 2
