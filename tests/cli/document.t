  $ qvs switch create sw1 --uplinks 1 --ports 1  => sw1: changed
  $ qvs switch create sw2  => sw2: changed

Export and compare.

  $ qvs export sw2
  switches:
    sw2:
      id: 73 77 32 00 00 00 00 00-00 00 00 00 00 00 00 00
      portset: sw2
      version: 105
      opaque: off
      maxPorts: 128
      uplinks: []
  $ qvs export sw2 --json | jq -c .  => {"switches":{"sw2":{"id":"73 77 32 00 00 00 00 00-00 00 00 00 00 00 00 00","portset":"sw2","version":105,"opaque":false,"maxPorts":128,"uplinks":[]}}}
  $ qvs export >all.yaml; qvs diff all.yaml; qvs export --json >all.json; qvs diff all.json --prune; qvs diff - --json <all.json  => []
  $ qvs export sw2 sw1 sw2 | cmp - all.yaml
  $ echo 'switches: {sw1: {mtu: 9000, ports: {port0: {connectId: 2, vlan: {id: 5}}, new: }}, sw3: {uplinks: [u]}}' >wanted
  $ qvs diff wanted
  + switches.sw1.mtu: 9000
  + switches.sw1.ports.new
  ~ switches.sw1.ports.port0.connectId: 1 -> 2
  ~ switches.sw1.ports.port0.vlan: {} -> {id: 5}
  + switches.sw3
  + switches.sw3.uplinks: [u]
  ? 4
  $ qvs diff wanted --switch sw1 --json
  [
  {"change":"added","switch":"sw1","port":null,"host":false,"member":"mtu","property":null,"before":null,"after":9000,"conflict":false},
  {"change":"added","switch":"sw1","port":"new","host":false,"member":null,"property":null,"before":null,"after":null,"conflict":false},
  {"change":"changed","switch":"sw1","port":"port0","host":false,"member":"connectId","property":null,"before":1,"after":2,"conflict":false},
  {"change":"changed","switch":"sw1","port":"port0","host":false,"member":"vlan","property":null,"before":{"id": 0, "private": false},"after":{"id": 5, "private": false},"conflict":false}
  ]
  ? 4
  $ qvs diff wanted --prune | tail -n 1  => - switches.sw2
  $ echo 'switches: {sw1: {id: other, version: 1, portset: p, opaque: on, maxPorts: 7}}' | qvs diff -
  ! switches.sw1.id: 73 77 31 00 00 00 00 00-00 00 00 00 00 00 00 00 -> other (an existing switch cannot change it)
  ! switches.sw1.portset: sw1 -> p (an existing switch cannot change it)
  ! switches.sw1.version: 105 -> 1 (an existing switch cannot change it)
  ! switches.sw1.opaque: off -> on (an existing switch cannot change it)
  ! switches.sw1.maxPorts: 128 -> 7 (an existing switch cannot change it)
  ? 4

A property is stored over a setting, and the other way round.

  $ qvs prop set sw1 com.quillon.vswitch.port.vlan --hex 01 --port port0  => sw1/port0 com.quillon.vswitch.port.vlan: changed
  $ qvs export sw1 2>&1 >/dev/null  => qvs: warning: switch 'sw1': port 'port0': the members of vlan cannot express the bytes of 'com.quillon.vswitch.port.vlan', which stay a property
  $ echo 'switches: {sw1: {ports: {port0: {vlan: {id: 5}}}}}' | qvs diff - 2>/dev/null  => [4] ~ switches.sw1.ports.port0.vlan: {class: 16, value: AQ==} -> {id: 5}

Switches of other classes are left out.

  $ echo '{"switches":[{"alias":"hub","id":"hub","class":"etherswitch","version":1,"maxPorts":8,"portset":"hub","ports":["p"]}]}' >lab
  $ qvs-host run --lab lab -- sh -c 'qvs export; qvs export hub; echo "switches: {hub: }" | qvs diff -'  => [1] switches: {} | qvs: switch 'hub': class is 'etherswitch', not 'vswitch' | qvs: switch 'hub': class is 'etherswitch', not 'vswitch'

Bad documents.

  $ printf 'switches: {sw1: {ports: {p: {vlan: {id: 5000}}}, mtuu: 1}}' | qvs diff -
  qvs: standard input:1:41: switches.sw1.ports.p.vlan.id: 5000 is beyond 4094
  qvs: standard input:1:50: switches.sw1.mtuu: no such member; did you mean 'mtu'?
  ? 2
  $ printf 'switches:\n  sw1: {mtu: 1, teaming: {active: [u9]}, ports: {p: {vlan: {id: 5000}}}}\n  sw2: {mtuu: 1, teaming: {active: [u9]}}\n  sw7: {maxPorts: 0, ports: {p: {vlan: {id: 7, private: on}}}}\n' >many; qvs diff many --strict
  qvs: many:2:14: switches.sw1.mtu: 1 is below 1280
  qvs: many:2:26: switches.sw1.teaming: uplink 'u9' does not exist
  qvs: many:2:65: switches.sw1.ports.p.vlan.id: 5000 is beyond 4094
  qvs: many:3:9: switches.sw2.mtuu: no such member; did you mean 'mtu'?
  qvs: many:4:19: switches.sw7.maxPorts: 0 is below 1
  ? 2
  $ each 'export sw9' 'diff wanted --switch sw2' 'diff none' 'diff .' 'diff wanted --switch' 'schema --json'; head -c 67108865 /dev/zero | qvs diff -
  qvs: switch 'sw9': Not found (0xbad0003)
  qvs: switch 'sw2': the document has no such switch
  qvs: file 'none': No such file or directory
  qvs: file '.': Is a directory
  qvs: --switch requires SWITCH
  qvs: usage: qvs diff FILE [--prune] [--switch SWITCH]... [--strict]
  qvs: qvs schema has no JSON; call it without --json
  exit 3 3 1 1 2 2
  qvs: file '-': more than 67108864 bytes, which is all that fits
  ? 2
  $ qvs schema | jq -c '.["$defs"] | .switch.properties.mtu, .port.properties.vlan.properties.id, ([.switch, .host, .port | .properties[] | select(.title) | .description | endswith(". Since qvs 1.0.")] | all, length)'
  {"title":"MTU","description":"The MTU of a switch: of its NICs, its portset and its properties, in bytes. Since qvs 1.0.","type":"integer","minimum":1280,"maximum":9000,"default":1500}
  {"description":"VLAN of the port; 0 for none.","type":"integer","minimum":0,"maximum":4094,"default":0}
  true
  27

The text of a difference has the length of a long property, and JSON its value.

  $ echo 'switches: {s: {properties: {com.example.p: AAAA}}}' >short.yaml; qvs-host run -- sh -c 'qvs switch create s; head -c 3000 /dev/zero | qvs prop set s com.example.p --file -; qvs diff short.yaml; qvs diff short.yaml --json | wc -c'
  s: changed
  s com.example.p: changed
  ~ switches.s.properties.com.example.p: {class: 16, value: (3000 bytes)} -> {class: 16, value: AAAA}
  4196
