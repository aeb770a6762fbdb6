  $ qvs switch create sw1 --uplinks 1 --ports 1  => sw1: changed

Added several at a time, all checked first.

  $ qvs port add sw1 web db --connect-id 7  => sw1/web: changed | sw1/db: changed
  $ qvs port add sw1 new web  => [4] qvs: switch 'sw1': port 'web': Already exists (0xbad0005)
  $ qvs port add sw1 vm --external-id vif-1 --json  => {"switch":"sw1","changed":true,"ports":[{"port":"vm","changed":true}]}
  $ qvs port list sw1 --json | sed -n '2,4p'
  {"port":"uplink0","number":67108865,"inUse":true,"linkUp":true,"client":"pnic0","connectId":1,"blocked":false,"vlan":"trunk all","policies":{}},
  {"port":"port0","number":67108866,"inUse":false,"linkUp":false,"client":null,"connectId":1,"blocked":false,"vlan":null,"policies":{}},
  {"port":"web","number":67108867,"inUse":false,"linkUp":false,"client":null,"connectId":7,"blocked":false,"vlan":null,"policies":{}},

What exists is compared in what is given.

  $ qvs port add sw1 web new --may-exist  => sw1/web: unchanged | sw1/new: changed
  $ qvs port add sw1 web vm --may-exist --json  => {"switch":"sw1","changed":false,"ports":[{"port":"web","changed":false},{"port":"vm","changed":false}]}
  $ qvs port add sw1 web --may-exist --connect-id 0x7  => sw1/web: unchanged
  $ for more in 'newer web --connect-id 8' 'vm --external-id vif-2' 'web --external-id vif-1'; do qvs port add sw1 $more --may-exist; done
  qvs: switch 'sw1': port 'web': exists with connect id 7, not 8
  qvs: switch 'sw1': port 'vm': exists with external id 'vif-1', not 'vif-2'
  qvs: switch 'sw1': port 'web': exists with external id '', not 'vif-1'
  ? 4
  $ qvs port list sw1 --names --json  => ["uplink0","port0","web","db","vm","new"]

One port, with what the kernel says about it.

  $ qvs port show sw1 vm | grep -E '^(external|number|link)'  => external id:        vif-1 | number:             67108869 | link:               down (no client is attached)
  $ qvs port show sw1 uplink0 --json | sed 's/"info":.*/.../'
  {"switch":"sw1","port":"uplink0","alias":"uplink0","state":"live","connectId":1,"externalId":null,"blocked":false,"number":67108865,"inUse":true,"linkUp":true,"linkReason":null,"kernelBlocked":false,"client":"pnic0","uplink":null,"settings":{"vlan":{"id":0,"private":false,"trunk":["1-4094"],"priority":null},"nestedVlan":false,"security":{"promiscuous":"deny","macChange":"allow","forged":"allow"},"filter":null,"teaming":null,"teamingOverride":null,"lsTeaming":null,"txUplink":null,"macLearning":{"learning":false,"flooding":false,"limit":4096,"limitPolicy":"allow"},"multicastAddresses":null,"mirrorSessions":null,"ipfix":null},"stored":["vlan"],"teamHint":"cG5pYzAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA=","teamHintFields":{"nic":"pnic0"},...
  $ qvs port show sw1 vm --raw - | bytes  => 0:05000004 8:766d 320:01 (1458 bytes)
  $ qvs port number sw1 db  => 67108868
  $ qvs port number "73 77 31 00 00 00 00 00-00 00 00 00 00 00 00 00" db --by-id --json  => {"switch":"73 77 31 00 00 00 00 00-00 00 00 00 00 00 00 00","port":"db","number":67108868}
  $ qvs port show sw1 nix  => [3] qvs: switch 'sw1': port 'nix': Not found (0xbad0003)
  $ qvs port list sw1 --kernel --json | cut -c 1-40 | sed -n '2p; 6p'  => {"index":0,"info":"AQAABAMAAAB1cGxpbmswA | {"index":4,"info":"BQAABAAAAAB2bQAAAAAAA

A listing asks the kernel for the state, sees that the device is there, and asks nothing else, however many ports there are.

  $ lines=$(wc -l <../trace); qvs port list sw1 >/dev/null; tail -n +$((lines + 1)) ../trace | sed 's/length=.*//'
  state StateGet -> 0x0 
  device open "/dev/vswitch" -> 0
  device close "/dev/vswitch"

Removed; uplinks stay.

  $ qvs port remove sw1 web nix  => [3] qvs: switch 'sw1': port 'nix': Not found (0xbad0003)
  $ qvs port remove sw1 web uplink0  => [1] qvs: switch 'sw1': port 'uplink0': carries an uplink; remove that with 'qvs uplink remove'
  $ qvs port remove sw1 web nix --if-exists  => sw1/web: changed | sw1/nix: unchanged
  $ echo $(qvs port list sw1 --names)  => uplink0 port0 db vm new

The ports of a VLAN, and one setting for several ports: all of them are checked before the first is changed.

  $ qvs switch create vl --uplinks 1 >/dev/null; qvs port add vl a b c d >/dev/null; qvs port vlan set vl a b --id 10 >log; qvs port vlan set vl c --trunk 9-11,20; qvs port list vl --vlan 10 --columns port,vlan; qvs port list vl --vlan 20 --names
  vl/c: changed
  PORT  VLAN
  a     10
  b     10
  c     trunk 9-11,20
  c
  $ qvs port vlan set vl a none --id 20; qvs port vlan set vl a a --id 20; qvs port vlan get vl a | grep ^id  => qvs: switch 'vl': port 'none': Not found (0xbad0003) | qvs: port 'a': given twice | id:        10
  $ qvs port vlan set vl $(qvs port list vl --vlan 10 --names | head -n 2) --id 20 --json; printf 'port vlan set vl a d --id 30\nport vlan get vl d --json\n' | qvs batch - | tail -n 1 | jq .id
  {"switch":"vl","changed":true,"ports":[{"port":"a","changed":true},{"port":"b","changed":true}]}
  30
