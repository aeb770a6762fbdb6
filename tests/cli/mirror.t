  $ qvs switch create sw1 --uplinks 1 --ports 3  => sw1: changed

Sessions of every type, on a port.

  $ qvs mirror list sw1 --port port0; qvs mirror list sw1 --port port0 --json  => SESSION  NAME  TYPE  FLAGS  DESTINATIONS  INGRESS  EGRESS | []
  $ qvs mirror add sw1 mix --port port0 --type mixdst --destinations uplink0,port1 --sources-in port0 --sources-out port0,port2 --flags no-input,disabled --sampling-rate 10  => sw1/port0 mix: changed
  $ qvs mirror add sw1 dv --port port0 --type dvport --name "to the probe" --snap-length 96 --destinations port1 --sources-in port0 --json  => {"switch":"sw1","port":"port0","session":"dv","changed":true}
  $ qvs mirror add sw1 rsrc --port port0 --type rmirror-src --encap-vlan 4094 --destinations 12345678901234567890123456789012 --sources-in port0  => sw1/port0 rsrc: changed
  $ qvs mirror add sw1 rdst --port port0 --type rmirror-dst --destinations port1 --sources-in 100,0x65 --sources-out 0  => sw1/port0 rdst: changed
  $ qvs mirror add sw1 er4 --port port0 --type ermirror-src --stack on --destinations 192.0.2.7,2001:DB8:0:0::1 --sources-in port0  => sw1/port0 er4: changed
  $ qvs mirror add sw1 12345678901234567890123456789012 --port port0 --type logical-span --destinations 02:00:00:00:00:AA  => sw1/port0 12345678901234567890123456789012: changed
  $ qvs mirror list sw1 --port port0 --json
  [
  {"session":"mix","name":null,"type":"mixdst","snapLength":null,"flags":["no-input","disabled"],"encapVlan":0,"samplingRate":10,"stack":false,"destinations":["uplink0","port1"],"sourcesIn":["port0"],"sourcesOut":["port0","port2"],"wildIn":[],"wildOut":[]},
  {"session":"dv","name":"to the probe","type":"dvport","snapLength":96,"flags":[],"encapVlan":0,"samplingRate":0,"stack":false,"destinations":["port1"],"sourcesIn":["port0"],"sourcesOut":[],"wildIn":[],"wildOut":[]},
  {"session":"rsrc","name":null,"type":"rmirror-src","snapLength":null,"flags":["encap"],"encapVlan":4094,"samplingRate":0,"stack":false,"destinations":["12345678901234567890123456789012"],"sourcesIn":["port0"],"sourcesOut":[],"wildIn":[],"wildOut":[]},
  {"session":"rdst","name":null,"type":"rmirror-dst","snapLength":null,"flags":[],"encapVlan":0,"samplingRate":0,"stack":false,"destinations":["port1"],"sourcesIn":["100","101"],"sourcesOut":["0"],"wildIn":[],"wildOut":[]},
  {"session":"er4","name":null,"type":"ermirror-src","snapLength":null,"flags":[],"encapVlan":0,"samplingRate":0,"stack":true,"destinations":["192.0.2.7","2001:db8::1"],"sourcesIn":["port0"],"sourcesOut":[],"wildIn":[],"wildOut":[]},
  {"session":"12345678901234567890123456789012","name":null,"type":"logical-span","snapLength":null,"flags":[],"encapVlan":0,"samplingRate":0,"stack":false,"destinations":["02:00:00:00:00:aa"],"sourcesIn":[],"sourcesOut":[],"wildIn":[],"wildOut":[]}
  ]
  $ qvs mirror show sw1 er4 --port port0 | grep -E '^(name|type|snap|stack|destinations):? '  => name:               - | type:               ermirror-src | snap length bytes:  - | stack:              on | destinations:       192.0.2.7 2001:db8::1
  $ qvs mirror list sw1 --port port0 --names --json  => ["mix","dv","rsrc","rdst","er4","12345678901234567890123456789012"]

The list is given back byte by byte, and moved to the uplinks.

  $ qvs prop get sw1 com.quillon.vswitch.port.mirrorSessions --port port0 --raw before; qvs mirror list sw1 --port port0 --json >all; qvs mirror set sw1 all --port port0; qvs mirror clear sw1 --port port0; qvs mirror set sw1 - --port port0 --json <all
  sw1/port0: unchanged
  sw1/port0: changed
  {"switch":"sw1","port":"port0","changed":true}
  $ qvs prop get sw1 com.quillon.vswitch.port.mirrorSessions --port port0 --raw - | cmp before -
  $ qvs mirror set sw1 all; qvs prop get sw1 com.quillon.vswitch.uplinkMirrorSessions --host --raw - | cmp before -; qvs prop list sw1 --host --json | grep -c '"class":\["POLICY"\]'  => sw1: changed | 1

The bytes of one session with one entity of each group.

  $ qvs mirror clear sw1 --json; qvs mirror add sw1 s --name n --type rmirror-dst --snap-length 1 --flags legacy --encap-vlan 2 --sampling-rate 3 --destinations d --sources-in 4 --sources-out 5; qvs prop get sw1 com.quillon.vswitch.uplinkMirrorSessions --host --raw raw; bytes <raw
  {"switch":"sw1","port":null,"changed":true}
  qvs: warning: switch 'sw1': mirror sessions: port or uplink 'd' is missing
  sw1 s: changed
  0:efbecefa020000000100000003 20:73 52:6e 136:03000000010000001800000002 156:03 236:010000000100000001 256:64 308:04 360:05 (408 bytes)

Existing, absent, and removed sessions.

  $ qvs mirror add sw1 rdst --port port0 --type dvport  => [4] qvs: switch 'sw1': port 'port0': mirror sessions: 'rdst': Already exists (0xbad0005)
  $ qvs mirror add sw1 er4 --port port0 --type ermirror-src --stack on --destinations 192.0.2.7,2001:db8::1 --sources-in port0 --may-exist  => sw1/port0 er4: unchanged
  $ qvs mirror add sw1 er4 --port port0 --type ermirror-src --destinations 192.0.2.7,2001:db8::1 --sources-in port0 --may-exist  => [4] qvs: switch 'sw1': port 'port0': mirror sessions: 'er4': exists and differs
  $ qvs mirror remove sw1 mix --port port0; qvs mirror remove sw1 er4 --port port0 --json; qvs mirror list sw1 --port port0 --names --json
  sw1/port0 mix: changed
  {"switch":"sw1","port":"port0","session":"er4","changed":true}
  ["dv","rsrc","rdst","12345678901234567890123456789012"]
  $ qvs mirror remove sw1 mix --port port0  => [3] qvs: switch 'sw1': port 'port0': mirror sessions: 'mix': Not found (0xbad0003)
  $ qvs mirror remove sw1 mix --port port0 --if-exists  => sw1/port0 mix: unchanged
  $ qvs mirror remove sw1 s; qvs prop get sw1 com.quillon.vswitch.uplinkMirrorSessions --host  => [3] sw1 s: changed | qvs: switch 'sw1': host property 'com.quillon.vswitch.uplinkMirrorSessions': Not found (0xbad0003)

What the records cannot hold is refused, and nothing stored.

  $ codes=; fit() { qvs mirror add sw1 "$@" 2>&1 | head -n 1; codes="$codes ${PIPESTATUS[0]}"; }; long=$(printf 'x%.0s' $(seq 84)); fit ${long:0:33} --type dvport; fit s --type dvport --name $long; fit s --type dvport --destinations "${long:0:48}"; fit s --type dvport --sources-out "${long:0:48}"; fit s --type rmirror-src --destinations "${long:0:33}"; fit s --type dvport --destinations ; fit s; echo $codes
  qvs: SESSION: has 33 bytes, at most 32 fit
  qvs: --name: has 84 bytes, at most 83 fit
  qvs: --destinations: has 48 bytes, at most 47 fit
  qvs: --sources-out: has 48 bytes, at most 47 fit
  qvs: switch 'sw1': mirror sessions: session 's': destination 'xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx' is not a text of at most 32 bytes
  qvs: --destinations requires TEXT,...
  qvs: --type is needed
  2 2 2 2 2 2 2
  $ codes=; fit() { qvs mirror add sw1 s --type "$@"; codes="$codes $?"; }; fit rmirror-dst --sources-in 4095; fit rmirror-dst --sources-out port0; fit ermirror-src --destinations 192.0.2.256; fit ermirror-src --destinations port0; fit logical-span --destinations 02:00:00:00:00; fit dvport --encap-vlan 4095; fit dvport --snap-length 2147483648; fit dvport --sampling-rate 4294967296; fit dvport --stack on; fit other; fit dvport --flags other; echo $codes
  qvs: switch 'sw1': mirror sessions: session 's': source '4095' is not a VLAN id from 0 to 4094
  qvs: switch 'sw1': mirror sessions: session 's': source 'port0' is not a VLAN id from 0 to 4094
  qvs: switch 'sw1': mirror sessions: session 's': destination '192.0.2.256' is not an IPv4 or IPv6 address
  qvs: switch 'sw1': mirror sessions: session 's': destination 'port0' is not an IPv4 or IPv6 address
  qvs: switch 'sw1': mirror sessions: session 's': destination '02:00:00:00:00' is not a MAC address such as 02:00:00:00:00:01
  qvs: --encap-vlan: 4095 is beyond 4094
  qvs: --snap-length: 2147483648 is beyond 2147483647
  qvs: --sampling-rate: 4294967296 is beyond 4294967295
  qvs: switch 'sw1': mirror sessions: session 's': stack requires the type ermirror-src
  qvs: --type: 'other' is not mixdst, dvport, rmirror-src, rmirror-dst, ermirror-src or logical-span
  qvs: --flags: 'other' is not no-output, no-input, orig-vlan, encap, legacy or disabled
  2 2 2 2 2 2 2 2 2 2 2
  $ qvs mirror list sw1 --json  => []
  $ qvs mirror list sw1 --stored  => [3] qvs: switch 'sw1': mirror sessions: Not found (0xbad0003)
  $ codes=; fit() { echo "$1" | qvs mirror set sw1 -; codes="$codes $?"; }; fit '{}'; fit '[1]'; fit '[{"session":"a"}]'; fit '[{"session":"a","type":"mixdst"},{"session":"a","type":"mixdst"}]'; fit '[{"session":"a","type":"mixdst","flags":["b"]}]'; fit '[{"session":"a","type":"mixdst","stack":1}]'; fit '[{"session":"a","type":"mixdst","encapVlan":4095}]'; fit '[{"session":"a","type":"mixdst","more":1}]'; fit '[{"session":"a","type":"mixdst","samplingRate":-1}]'; fit '[{"session":"a","type":"mixdst","wildIn":["vmm"]}]'; fit '[{"session":"a","type":"mixdst"},{"session":"b","type":"ermirror-src","destinations":["x"]}]'; echo $codes
  qvs: file '-': sessions: '{}' is not an array
  qvs: file '-': sessions[0]: '1' is not a mapping
  qvs: switch 'sw1': mirror sessions: entry 1: type: is missing
  qvs: switch 'sw1': mirror sessions: session 'a' is given twice
  qvs: file '-': sessions[0]: flags[0]: 'b' is not no-output, no-input, orig-vlan, encap, legacy or disabled
  qvs: file '-': sessions[0]: stack: '1' is not on or off
  qvs: file '-': sessions[0]: encapVlan: 4095 is beyond 4094
  qvs: file '-': sessions[0]: more: there is no such member
  qvs: file '-': sessions[0]: samplingRate: '-1' is not 0 to 4294967295
  qvs: file '-': sessions[0]: wildIn: there is no such member
  qvs: switch 'sw1': mirror sessions: session 'b': destination 'x' is not an IPv4 or IPv6 address
  2 2 2 2 2 2 2 2 2 2 2
  $ echo '[]' | qvs mirror set sw1 -; qvs prop get sw1 com.quillon.vswitch.uplinkMirrorSessions --host; qvs mirror list sw1 --json; qvs mirror clear sw1; qvs mirror clear sw1
  sw1: changed
  efbecefa02000000000000000000000000000000
  []
  sw1: changed
  sw1: unchanged

Stored lists of the older form, of unknown types, and of entities that are not there.

  $ patch() { printf "$2" | dd of=$3 bs=1 seek=$1 conv=notrunc status=none; qvs prop set sw1 com.quillon.vswitch.uplinkMirrorSessions --host --file $3 >/dev/null; qvs mirror list sw1 --json | grep session; }; cp raw type; patch 136 '\t' type; cp raw first; patch 248 '\001' first; cp raw counts; patch 236 '\377\377\377\377' counts; cp raw short; patch 8 '\002' short; cp raw old; patch 4 '\001' old; patch 150 '\003\000\020' old
  {"session":"s","name":"n","type":"9","snapLength":1,"flags":["encap","legacy"],"encapVlan":2,"samplingRate":3,"stack":false,"destinations":["640000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000"],"sourcesIn":["\u0004"],"sourcesOut":["\u0005"],"wildIn":[],"wildOut":[]}
  qvs: mirror session 's': its entities end at 4, but the list has 3
  qvs: mirror session 's': its entities end at 4294967297, but the list has 3
  qvs: switch 'sw1': mirror sessions: Failure (0xbad0001); the 408 bytes that are stored as com.quillon.vswitch.uplinkMirrorSessions are not such a record; 'qvs prop clear sw1 com.quillon.vswitch.uplinkMirrorSessions --host' removes them
  {"session":"s","name":"n","type":null,"snapLength":1,"flags":["encap","legacy"],"encapVlan":2,"samplingRate":3,"stack":false,"destinations":["d"],"sourcesIn":["\u0004"],"sourcesOut":["\u0005"],"wildIn":[],"wildOut":[]}
  {"session":"s","name":"n","type":null,"snapLength":1,"flags":["encap","legacy"],"encapVlan":2,"samplingRate":3,"stack":false,"destinations":["d"],"sourcesIn":["\u0004"],"sourcesOut":["\u0005"],"wildIn":["vmm","pnic"],"wildOut":["test"]}
  $ qvs mirror list sw1 --json | qvs mirror set sw1 -  => [2] qvs: file '-': sessions[0]: wildIn: there is no such member
  $ qvs mirror add sw1 t --type dvport  => [1] qvs: switch 'sw1': mirror sessions: the members cannot express the 408 bytes that are stored as com.quillon.vswitch.uplinkMirrorSessions; 'qvs mirror set' replaces them
  $ qvs mirror remove sw1 s && qvs mirror add sw1 t --type dvport  => sw1 s: changed | sw1 t: changed

A batch sees its own changes.

  $ printf '%s\n' 'mirror add sw1 b1 --port port2 --type dvport' 'mirror list sw1 --port port2 --names' 'mirror clear sw1 --port port2' 'mirror list sw1 --port port2 --names' 'mirror list sw1 --names' | qvs batch -
  sw1/port2 b1: changed
  b1
  sw1/port2: changed
  t
