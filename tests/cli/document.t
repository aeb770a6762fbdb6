  $ qvs switch create sw1 --uplinks 1 --ports 1  => sw1: changed
  $ qvs switch create sw2  => sw2: changed

Export and compare.

  $ qvs export sw2
  $ qvs export sw2 --json
  $ qvs export sw9
  $ qvs export >all.yaml; qvs diff all.yaml; qvs export --json >all.json; qvs diff all.json --prune; qvs diff - --json <all.json
  $ qvs export sw2 sw1 sw2 | cmp - all.yaml
  $ echo 'switches: {sw1: {mtu: 9000, ports: {port0: {connectId: 2, vlan: {id: 5}}, new: }}, sw3: {uplinks: [u]}}' >wanted
  $ qvs diff wanted
  $ qvs diff wanted --switch sw1 --json
  $ qvs diff wanted --switch sw2
  $ qvs diff wanted --prune
  $ echo 'switches: {sw1: {id: other, version: 1, portset: p, opaque: on, maxPorts: 7}}' | qvs diff -

A property is stored over a setting, and the other way round.

  $ qvs prop set sw1 com.quillon.vswitch.port.vlan --hex 01 --port port0  => sw1/port0 com.quillon.vswitch.port.vlan: changed
  $ qvs export sw1 2>&1 >/dev/null
  $ echo 'switches: {sw1: {ports: {port0: {vlan: {id: 5}}}}}' | qvs diff - 2>/dev/null

Switches of other classes are left out.

  $ echo '{"switches":[{"alias":"hub","id":"hub","class":"etherswitch","version":1,"maxPorts":8,"portset":"hub","ports":["p"]}]}' >lab
  $ qvs-host run --lab lab -- sh -c 'qvs export; qvs export hub; echo "switches: {hub: }" | qvs diff -'

Bad documents.

  $ printf 'switches: {sw1: {ports: {p: {vlan: {id: 5000}}}, mtuu: 1}}' | qvs diff -
  $ for file in none .; do qvs diff $file; done
  $ head -c 67108865 /dev/zero | qvs diff -
  $ qvs diff wanted --switch
  $ qvs schema --json
  $ qvs schema | jq -c '.["$defs"].port.properties.vlan.properties.id, .["$defs"].host.properties.macLearning.properties.aging'
