Every line is read before the first runs.

  $ for lines in 'switch create sw1\nswitch crate sw2\n' 'switch create sw1\n\n# more\nport add sw1 "open\n' 'switch create sw1 --json\ndump --json\n' 'batch -\n'; do printf "$lines" | qvs batch -; done
  qvs: line 2: no such command: switch 'crate'; did you mean 'switch create'? 'qvs help switch' lists them
  qvs: line 4: a quote is not closed
  qvs: line 2: qvs dump has no JSON; call it without --json
  qvs: line 1: neither help nor a batch can be asked for in a batch
  ? 2
  $ for file in nix .; do qvs batch $file; done  => [1] qvs: file 'nix': No such file or directory | qvs: file '.': Is a directory
  $ qvs switch list --names
  $ timeout 5 qvs batch /dev/zero  => [2] qvs: line 1: a NUL is no text

Each command sees what the ones before it did; the first failure ends the run.

  $ printf '%s\n' 'qvs switch create sw1 --ports 1   # the first' 'port add sw1 "a b" c\ d' "port add sw1 'e' --may-exist" >changes
  $ printf '%s\n' 'port add sw1 e --may-exist' 'prop set sw1 k v --port e' 'prop set sw1 k v --port e' 'port remove sw1 e' >>changes
  $ printf '%s\n' 'port remove sw1 e --if-exists' 'prop get sw1 k --port e' 'port add sw1 never' >>changes
  $ qvs batch changes
  sw1: changed
  sw1/a b: changed
  sw1/c d: changed
  sw1/e: changed
  sw1/e: unchanged
  sw1/e k: changed
  sw1/e k: unchanged
  sw1/e: changed
  sw1/e: unchanged
  qvs: line 9: switch 'sw1': port 'e': Not found (0xbad0003)
  ? 3
  $ qvs port list sw1 --names  => port0 | a b | c d
  $ printf 'port add sw1 j\nswitch list --names\n' | qvs batch - --json  => {"switch":"sw1","changed":true,"ports":[{"port":"j","changed":true}]} | ["sw1"]

Ports that have nothing to do with one another are added without loading the state again.

  $ for i in $(seq 50); do echo "port add sw1 p$i"; done >many
  $ before=$(grep -c StateGet ../trace); qvs batch many | wc -l; echo $(($(grep -c StateGet ../trace) - before))  => 50 | 1

A line sees the uplinks, private VLANs and ports that the lines before it made. A policy of another port is nothing that
it looks at, so the snapshot is not loaded for it.

  $ qvs switch create refs --ports 3 --uplinks 1 >log
  $ printf '%s\n' 'uplink add refs u9' 'port teaming set refs port0 --active u9' >refers
  $ printf '%s\n' 'pvlan set refs 100:200:isolated' 'port vlan set refs port1 --id 200 --private on' >>refers
  $ qvs batch refers  => refs/u9: changed | refs/port0: changed | refs: changed | refs/port1: changed
  $ for port in port0 port1 port2; do echo "port vlan set refs $port --id 7 --private off --trace"; done >vlans
  $ qvs batch vlans 2>&1 | grep -cE 'DVSLoadConfig|VSDVS_SetPortVLANPolicy'  => 3
