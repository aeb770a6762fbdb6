A document is carried out as a whole, and a second time changes nothing.

  $ printf 'switches:\n  sw1:\n    uplinks: [up]\n    ports:\n      web: {vlan: {id: 10}}\n      db: {}\n' >doc.yaml
  $ qvs apply - --dry-run <doc.yaml  => + switches.sw1 | + switches.sw1.uplinks: [up] | + switches.sw1.ports.db | + switches.sw1.ports.web | + switches.sw1.ports.web.vlan: {id: 10}
  $ qvs apply doc.yaml --yes | tail -n 3  => sw1: changed | sw1/db: changed | sw1/web: changed
  $ qvs apply doc.yaml --yes; qvs apply doc.yaml --yes --json; echo $(qvs port list sw1 --names)  => nothing to change | {"outcome":"unchanged","changes":[] | } | up db web
  $ sed -i 's/id: 10/id: 5000/; s/db:/db: 7 #/' doc.yaml; qvs apply doc.yaml --yes  => [2] qvs: doc.yaml:5:24: switches.sw1.ports.web.vlan.id: 5000 is beyond 4094 | qvs: doc.yaml:6:11: switches.sw1.ports.db: is a single value, not a mapping

On a terminal it asks, and changes nothing without a yes.

  $ printf 'switches: {sw1: {ports: {db: {vlan: {id: 11}}}}}' >doc.yaml
  $ (sleep 0.5; echo n) | script -qec 'qvs apply doc.yaml' log >asked; grep -c '\[y/N\]' asked; qvs apply doc.yaml --dry-run  => 1 | ~ switches.sw1.ports.db.vlan: {} -> {id: 11}
  $ (sleep 0.5; echo n) | script -qec 'qvs apply doc.yaml; echo "? $?"' log | tr -d '\r' | grep -o '? [0-9]$'
  ? 8
  $ (sleep 0.5; echo y) | script -qec 'qvs apply doc.yaml; echo "? $?"' log | grep -o 'db: changed'  => db: changed

What fails is undone.

  $ printf 'switches: {sw1: {ports: {db: {vlan: {id: 12}}, new: {}, web: {vlan: {id: 13}}}}}' >doc.yaml
  $ qvs-host fault add 'PortDataSet*"web"*port.vlan' --status 0xbad0004; qvs apply doc.yaml --yes
  ~ switches.sw1.ports.db.vlan: {id: 11} -> {id: 12}
  + switches.sw1.ports.new
  ~ switches.sw1.ports.web.vlan: {id: 10} -> {id: 13}
  qvs: switch 'sw1': port 'web': vlan: Busy (0xbad0004)
  qvs: everything was undone
  ? 1
  $ echo $(qvs port list sw1 --names); qvs apply doc.yaml --dry-run | wc -l; ls ../state | grep journal  => [1] up db web | 3

A run that was killed is undone by the next one that changes anything; reading does not.

  $ qvs-host fault add 'PortDataSet*"web"*port.vlan' --delay 700; sh -c 'timeout -s KILL 0.4 qvs apply doc.yaml --yes >log; true' 2>log; sleep 0.5; qvs port list sw1 --names | grep new  => new
  $ qvs port add sw1 more  => qvs: a change that an earlier run did not finish was undone | sw1/more: changed
  $ echo $(qvs port list sw1 --names); qvs apply --recover  => up db web more | nothing to undo
  $ qvs-host fault add 'PortDataSet*"web"*port.vlan' --delay 700; sh -c 'timeout -s KILL 0.4 qvs apply doc.yaml --yes >log; true' 2>log; qvs apply --recover  => undone
  $ qvs-host fault add 'PortDataSet*"web"*port.vlan' --delay 700; timeout -s TERM 0.4 qvs apply doc.yaml --yes 2>&1 | grep -v '^[+~]'  => qvs: SIGTERM came in before the end | qvs: everything was undone

Of two at once the second waits, or is refused.

  $ sed 's/13/14/' doc.yaml >other.yaml; qvs-host fault add 'PortDataSet*"web"*port.vlan' --delay 1500; (qvs apply doc.yaml --yes >log & sleep 0.3; qvs apply other.yaml --yes --timeout 1 2>&1 | grep -o 'did not end.*'; qvs apply other.yaml --yes | tail -1; wait); qvs port vlan get sw1 web | grep ^id
  did not end within 1 s; --timeout SECONDS waits longer
  sw1/web: changed
  id:        14

What is not confirmed in time is undone. Meanwhile nothing else is changed.

  $ qvs confirm  => [3] qvs: nothing waits to be confirmed
  $ qvs apply doc.yaml --yes --confirm 2 | tail -1; qvs port add sw1 x 2>&1 | sed 's/for [0-9]* s/for N s/'; sleep 2.5; qvs port vlan get sw1 web | grep ^id; qvs apply --recover
  qvs: 'qvs confirm' keeps this; otherwise it is undone in 2 s
  sw1/web: changed
  qvs: a change waits to be confirmed, for N s more; 'qvs confirm' keeps it, 'qvs apply --recover' undoes it
  id:        14
  nothing to undo
  $ qvs apply doc.yaml --yes --confirm 100 | tail -1; qvs apply --recover; qvs port vlan get sw1 web | grep ^id  => qvs: 'qvs confirm' keeps this; otherwise it is undone in 100 s | sw1/web: changed | undone | id:        14

More ports than there is room for are refused before anything is changed. So is, with --strict, the removal of what a stored setting names.

  $ qvs switch create full --max-ports 4 --ports 1 --uplinks 1; printf 'switches:\n  full:\n    ports: {a: , b: , c: }\n  fresh:\n    ports:\n' >many; for i in $(seq 200); do echo "      p$i:"; done >>many  => full: changed
  $ qvs diff many
  qvs: many:3:5: switches.full: has 5 ports, those of uplinks and those that stay on the host among them, but there is room for 4
  qvs: many:5:5: switches.fresh: has 200 ports, those of uplinks among them, but there is room for 128
  ? 2
  $ qvs apply many --yes 2>log; echo $? $(qvs switch list --names)  => 2 sw1 full
  $ for words in 'uplink add full left' 'teaming set full --active uplink0,left' 'pvlan set full 100:100:promiscuous' 'port vlan set full port0 --private on --id 100'; do qvs $words >log; done
  $ echo 'switches: {full: {uplinks: [left], privateVlans: []}}' >less; qvs diff less
  qvs: warning: less:1:18: switches.full.teaming: is stored and names uplink 'uplink0', which the document removes
  qvs: warning: less:1:18: switches.full.ports.port0.vlan: is stored and names private VLAN 100, which the document removes
  ~ switches.full.uplinks: [uplink0, left] -> [left]
  ~ switches.full.privateVlans: [{primary: 100, secondary: 100, type: promiscuous}] -> []
  ? 4
  $ qvs apply less --strict --yes 2>log; echo $? $(qvs uplink list full --names); qvs switch destroy full  => 2 uplink0 left | full: changed

A batch that is atomic has the same way back; one that keeps going reports what fails.

  $ printf '%s\n' 'switch create sw2' 'port remove sw1 web' 'port remove sw1 db' 'port add sw1 up' >lines
  $ qvs batch --atomic lines  => [4] sw2: changed | sw1/web: changed | sw1/db: changed | qvs: line 4: switch 'sw1': port 'up': Already exists (0xbad0005) | qvs: all lines were undone
  $ echo $(qvs switch list --names) $(qvs port list sw1 --names) $(qvs port vlan get sw1 web | grep ^id)  => sw1 up more new db web id: 14
  $ qvs mtu set sw1 9000; printf '%s\n' 'mtu clear sw1' 'port add sw1 up' | qvs batch --atomic - 2>/dev/null; qvs mtu get sw1 --json; treesh -e get /net/pNics/pnic0/mtu
  sw1: changed
  sw1: changed
  {"switch":"sw1","mtu":9000,"stored":true}
  mtu:9000
  $ for l in 'switch refresh-numa sw1' 'checkpoint remove c' 'apply one.yaml --yes' confirm 'bfd log-level set 1'; do printf '%s\n' 'port add sw1 y' "$l" | qvs batch --atomic -; done
  qvs: line 2: qvs switch refresh-numa cannot be undone
  qvs: line 2: qvs checkpoint remove cannot be undone
  qvs: line 2: qvs apply cannot be undone
  qvs: line 2: qvs confirm cannot be undone
  qvs: line 2: qvs bfd log-level set cannot be undone
  ? 2
  $ printf '%s\n' 'port add sw1 y' 'port add sw1 y' 'port add sw1 z' | qvs batch --keep-going -  => [1] sw1/y: changed | qvs: line 2: switch 'sw1': port 'y': Already exists (0xbad0005) | sw1/z: changed
  $ printf '%s\n' 'port remove sw1 y' 'port remove sw1 z' | qvs batch --atomic -  => sw1/y: changed | sw1/z: changed

With --prune, a new port has the VLAN policy of the document, or none.

  $ printf 'switches: {sw1: {ports: {bare: {}, tagged: {vlan: {id: 3}}}}}' | qvs apply - --yes --prune >/dev/null; for port in bare tagged; do qvs port vlan get sw1 $port | grep -E '^(id|stored)'; done
  id:        -
  stored:    no
  id:        3
  stored:    yes

The port of an uplink that the document adds is there for its settings.

  $ printf 'switches: {mirrored: {uplinks: [v1], host: {mirrorSessions: [{session: one, type: dvport, destinations: [v1], sourcesIn: [v1]}]}}}' | qvs apply - --strict --yes 2>&1 | tail -n 1
  mirrored: changed
