What runs, in one look. A run of the host of its own for each line, so that counters begin anew; they grow with every look at busy ports.

  $ cat >lab.json <<<'{"pnics": [{"name": "pnic0"}, {"name": "pnic1", "link": "down"}], "switches": [{"alias": "sw1", "uplinks": ["uplink0", "uplink1"], "ports": ["p9", "p10", "p11", "p12", "web", "db"], "properties": [{"scope": "port", "port": "uplink0", "key": "com.quillon.common.port.linkstatus", "hex": "01008000", "type": 4}, {"scope": "port", "port": "uplink1", "key": "com.quillon.common.port.linkstatus", "hex": "010080", "type": 4}]}, {"alias": "a b", "portset": "other", "class": "foreign", "ports": ["p\u001b1"]}], "clients": [{"switch": "sw1", "port": "web", "name": "web.eth0"}, {"switch": "sw1", "port": "db", "name": "db\t0", "link": "down"}], "busy": [{"switch": "sw1", "port": "web"}]}'
  $ cat >on <<<'exec qvs-host run --state rack $LAB -- sh -c "$1"'
  $ LAB='--lab lab.json' sh on 'qvs show | sed -n "1,3p; /web/p; /p9/p"'
  a b: 1 port (0 in use), room for 128, class foreign, portset other
  `- ports
     `- p\x1b1  free
     |- web                web.eth0  up
     `- p9..p12 (4 ports)            free
  $ sh on 'qvs port block sw1 web p9; qvs port vlan set sw1 web --trunk 1-100,200 --priority 3; qvs port vlan set sw1 db --trunk 0-4094; qvs port vlan set sw1 p10 --id 101 --private on --strict; qvs pvlan set sw1 7:8:isolated 7:7:promiscuous; qvs port vlan set sw1 p10 --id 8 --private on --strict; qvs port security set sw1 p11 --mac-change deny; qvs port security set sw1 p12 --promiscuous deny; qvs port teaming set sw1 web --balance source-port; qvs mac-learning set sw1 --aging 300; qvs mirror add sw1 tap --type dvport --destinations p9 --sources-in web --sources-out db,web --flags disabled; qvs prop set sw1 com.quillon.vswitch.port.security --port db --hex 0102' | grep -v changed
  qvs: switch 'sw1': port 'p10': VLAN policy: private VLAN 101 is missing
  ? 1
  $ sh on 'qvs show sw1 | sed -n "1,/p12/p"; exec 2>log; qvs show sw1 --all --json | jq -c ".[0].ports[] | select(.policies != {}) | [.port, .vlan, .policies]"; qvs show sw1 --json | jq -c ".[] | del(.ports), .ports[-1]"'
  qvs: warning: switch 'sw1': port 'db': security: 2 bytes that its members cannot express
  sw1: MTU 1500, 6 ports (2 in use), 2 uplinks (1 up), room for 128
  |- policies
  |  `- mac-learning: aging 300 seconds
  |- private VLANs
  |  `- 7: 8 isolated, 7 promiscuous
  |- mirror sessions
  |  `- tap  dvport  of uplinks  disabled  in web, out db web, to p9
  |- uplinks
  |  |- uplink0  pnic0  up    10 Gbit/s
  |  `- uplink1  pnic1  down
  `- ports
     |- db   VLAN trunk all                    db\t0     down     security: 2 bytes that its members cannot express
     |- web  VLAN trunk 1-100,200, priority 3  web.eth0  blocked  teaming: the default of a switch
     |- p9                                               blocked
     |- p10  VLAN private 8                              free
     |- p11                                              free     security: mac change deny
     `- p12                                              free
  ["db","trunk all",{"security":null}]
  ["p11",null,{"security":{"promiscuous":"deny","macChange":"deny","forged":"allow"}}]
  ["web","trunk 1-100,200, priority 3",{"teaming":{"balance":"source-port","active":[],"standby":[],"linkState":false,"beacon":false,"notify":false,"rolling":false,"bestEffort":false,"shotgun":false}}]
  {"alias":"sw1","id":"73 77 31 00 00 00 00 00-00 00 00 00 00 00 00 00","class":"vswitch","version":105,"portset":"sw1","opaque":false,"maxPorts":128,"portsInUse":4,"mtu":1500,"policies":{"macLearning":{"aging":300,"limit":65536}},"privateVlans":[{"primary":7,"secondary":8,"type":"isolated"},{"primary":7,"secondary":7,"type":"promiscuous"}],"mirrorSessions":[{"port":null,"session":"tap","name":"","type":"dvport","snapLength":null,"flags":["disabled"],"encapVlan":0,"samplingRate":0,"stack":false,"destinations":["p9"],"sourcesIn":["web"],"sourcesOut":["db","web"]}],"uplinks":[{"uplink":"uplink0","port":"uplink0","nic":"pnic0","linkUp":true,"lacpUp":false,"speedMbps":10000},{"uplink":"uplink1","port":"uplink1","nic":"pnic1","linkUp":false,"lacpUp":false,"speedMbps":null}],"problems":[{"switch":"sw1","kind":"uplink","name":"uplink1","problem":"NIC pnic1 has no link"},{"switch":"sw1","kind":"port","name":"db","problem":"the client db\t0 has its link off"},{"switch":"sw1","kind":"port","name":"p9","problem":"is blocked"},{"switch":"sw1","kind":"port","name":"web","problem":"is blocked"}],"unread":[]}
  {"port":"web","alias":"web","number":67108869,"connectId":1,"externalId":null,"uplink":null,"inUse":true,"client":"web.eth0","linkUp":true,"blocked":true,"kernelBlocked":true,"vlan":"trunk 1-100,200, priority 3","policies":{"teaming":{"balance":"source-port","active":[],"standby":[],"linkState":false,"beacon":false,"notify":false,"rolling":false,"bestEffort":false,"shotgun":false}}}

Records that cannot be read are gaps: of ports, of the lists of uplinks, of the MTU, and of links when the kernel fails.

  $ sh on 'qvs-host fault add GetUplinkLinkState --errno EIO --forever >log; qvs-host fault add "*mtu*" --exit 1 --forever >log; qvs show sw1 >out; echo $?; sed -n "/cannot be/,/links/p" out; qvs show sw1 --json 2>log | jq -c ".[].unread, .[].uplinks[0].linkUp"' 2>&1
  qvs: warning: switch 'sw1': port 'db': security: 2 bytes that its members cannot express
  treesh: a fault made this request fail
  qvs: warning: switch 'sw1': MTU: Failure (0xbad0001)
  qvs: warning: switch 'sw1': uplink 'uplink0': Metadata read error (0xbad0008)
  0
  `- cannot be read
     |- MTU
     `- links of uplinks
  ["MTU","links of uplinks"]
  null
  $ sh on 'qvs show nix; qvs show sw1 sw1; qvs port block sw1 web nix; qvs port unblock sw1 web p12; qvs port block sw1 p9 --json; qvs port show sw1 web | grep block'
  qvs: switch 'nix': Not found (0xbad0003)
  qvs: unexpected argument: 'sw1'
  qvs: usage: qvs show [SWITCH] [--all]
  qvs: switch 'sw1': port 'nix': Not found (0xbad0003)
  sw1/web: changed
  sw1/p12: unchanged
  {"switch":"sw1","changed":false,"ports":[{"port":"p9","changed":false}]}
  blocked:            no
  blocked by kernel:  no

Why a port has no link, and which uplink carries it. The NIC of the uplink is known from the layout of the hint; a kernel that fails is asked for the column of uplinks alone.

  $ sh on 'for port in web db p9 uplink0 uplink1; do qvs port show sw1 $port --json | jq -c "[.linkUp, .linkReason, .uplink]"; done; qvs port show sw1 db | grep -E "^(link|uplink):"; qvs port list sw1 --columns port,uplink | sed -n "/web/p; /db/p; /p9/p"; QVS_LAYOUT= qvs port list sw1 --columns port,uplink 2>&1 | grep -E "web|layout"; qvs-host fault add PortGetTeamUplinkHint --errno EIO --forever >log; qvs port list sw1 --columns port | tail -n 1; qvs port list sw1 --columns uplink' 2>&1 | grep -v warning
  [true,null,"uplink0"]
  [false,"the client db\t0 has its link off","uplink0"]
  [false,"no client is attached",null]
  [true,null,null]
  [false,"NIC pnic1 has no link",null]
  link:               down (the client db\t0 has its link off)
  uplink:             uplink0 (NIC pnic0)
  p9       -
  web      uplink0
  db       uplink0
  web      -
  uplink1
  qvs: switch 'sw1': port 'db': Metadata read error (0xbad0008)

Problems, each with its object; at most 64 in text; colours on a terminal alone.

  $ cat >bad.json <<<'{"pnics": [{"name": "pnic0", "link": "down"}], "switches": [{"alias": "bad", "uplinks": ["u0", "u1"], "ports": ["p0", "p1"]}], "clients": [{"switch": "bad", "port": "p0", "name": "c\u001b0", "link": "down"}]}'
  $ cat >bad <<<'exec qvs-host run --state bad.state --lab bad.json -- sh -c "$1"'
  $ sh bad 'for words in "port block bad p1" "teaming set bad --active u7,u8" "port vlan set bad p0 --id 5 --private on" "mirror add bad tap --type dvport --destinations nix" "mirror add bad off --type dvport --destinations p1 --flags disabled"; do qvs $words >log; done; qvs show | sed -n "/mirror sessions/,/u1/p; /problems/,\$p"' 2>/dev/null
  |- mirror sessions
  |  |- tap  dvport  of uplinks            to nix
  |  `- off  dvport  of uplinks  disabled  to p1
  |- uplinks
  |  |- u0  pnic0  down
  |  `- u1         down
  9 problems
  |- bad  uplink u0           NIC pnic0 has no link
  |- bad  uplink u1           no NIC is bound
  |- bad  switch bad          none of its uplinks has a link
  |- bad  port p0             the client c\x1b0 has its link off
  |- bad  port p1             is blocked
  |- bad  mirror session tap  has no sources
  |- bad  mirror session tap  port or uplink 'nix' is missing
  |- bad  switch bad          teaming policy: uplink 'u7', uplink 'u8' are missing
  `- bad  port p0             VLAN policy: private VLAN 5 is missing
  $ sh bad 'qvs show --json | jq -c ".[].problems | length, .[5]"; LC_ALL=C script -qec "qvs show" /dev/null | tr -d "\r" | grep -a "p[01] .*\[3" | cat -v; NO_COLOR=1 LC_ALL=C script -qec "qvs show" /dev/null | grep -c -a "\[3[13]m"'
  9
  {"switch":"bad","kind":"mirror session","name":"tap","problem":"has no sources"}
     |- p0  VLAN private 5  c\x1b0  ^[[31mdown^[[0m
     `- p1                          ^[[33mblocked^[[0m
  0
  ? 1
  $ sh on 'qvs switch create wide --max-ports 200 --ports 70 >log; qvs port block wide $(seq -f port%.0f 0 69) >log; qvs show wide | tail -n 2; qvs show wide --all | tail -n 1; qvs switch destroy wide >log'
  |- wide  port port63  is blocked
  `- and 6 more; --all shows them
  `- wide  port port69  is blocked

Many ports that are alike take a line; a name with a leading zero has no successor.

  $ sh on 'qvs switch create many --max-ports 200 --ports 40 >log; qvs port add many x07 x08 x9 x10 x011 y >log; qvs show many; qvs show many --all | wc -l'
  many: MTU 1500, 46 ports (0 in use), room for 200
  `- ports
     `- port0..port39, x07, x08, x9, x10, x011, ... (46 ports)  free
  48

Columns of ports.

  $ sh on 'exec 2>log; qvs port list sw1 --columns vlan,port,uplink | grep -E "V|web"; qvs port list sw1 --columns policies,alias --json | sed -n 2p; qvs port list sw1 --columns "" 2>&1'
  VLAN                         PORT     UPLINK
  trunk 1-100,200, priority 3  web      uplink0
  {"policies":{},"alias":"p9"},
  qvs: --columns: is empty
  ? 2
  $ sh on 'qvs port show sw1 web | grep -E "trunk|balance"; qvs port show sw1 p11 --json | jq -c "[.stored, .settings.security, .settings.teaming]"'
    vlan:              trunk 1-100,200, priority 3
    teaming:           balance source-port, active none, standby none, link state off, beacon off, notify off, rolling off, best effort off, shotgun off
  [["vlan","security"],{"promiscuous":"deny","macChange":"deny","forged":"allow"},null]

Counters, and their growth: what was set back shows none. The page operations.md shows the tables.

  $ sh on 'qvs port stats sw1 web --json | grep web; qvs port stats sw1 nix' 2>&1
  {"switch":"sw1","port":"web","pktsInUnicast":359,"bytesInUnicast":378,"pktsInMulticast":449,"bytesInMulticast":54,"pktsInBroadcast":445,"bytesInBroadcast":42,"pktsOutUnicast":345,"bytesOutUnicast":638,"pktsOutMulticast":206,"bytesOutMulticast":935,"pktsOutBroadcast":854,"bytesOutBroadcast":501,"pktsInDropped":72,"pktsOutDropped":770,"pktsInException":232,"pktsOutException":737}
  qvs: switch 'sw1': port 'nix': Not found (0xbad0003)
  ? 3
  $ sh on 'timeout 5 qvs port stats sw1 web --watch --interval 0.05 --json | head -n 3 | jq -c "[.pktsInUnicast, .bytesOutUnicast, (.perSecond | if . then (.pktsInUnicast | . > 0 and . < 50000) else . end)]"'
  [359,638,null]
  [718,1276,true]
  [1077,1914,true]
  $ sh on 'lines() { until [ "$(wc -l <log)" -ge "$1" ]; do sleep 0.05; done; }; : >log; timeout 20 qvs port stats sw1 web --watch --interval 0.1 --json >log & lines 3; qvs prop set sw1 com.quillon.common.port.statistics --port web --hex $(printf "0%.0s" $(seq 256)) >set; lines $(($(wc -l <log) + 3)); kill $!; jq -s -c "[.[0].perSecond, (map(.perSecond != null) | any), (.[1:] | map(select(.perSecond == null)) | length)]" log'
  [null,true,1]
  $ sh on 'timeout 20 qvs port stats sw1 --watch --interval 0.1 | grep --line-buffered web | head -n 2 | tr -s " " | sed "s/ [0-9][0-9.]*k\{0,1\}/ N/g"; qvs nic list | sed -n 2p; qvs nic list --names --json'
  web - - - - - -
  web N N N N N N
  pnic0  up    10000   sw1     uplink0  uplink0
  ["pnic0","pnic1"]

One word for a state everywhere; names stay whole on a narrow terminal, and ports without traffic stand with --all.

  $ sh on 'qvs port block sw1 web p9 >log; qvs port list sw1 --columns port,state | tail -n +2 | tr -s " " "\t" | sort | tee states | grep -E "web|db|p10|k0"; qvs port list sw1 --columns state --json | sed -n 2p; qvs top sw1 --once --all --interval 0.05 --json | jq -r ".[] | [.port, .state] | @tsv" | sort | cmp states -; qvs top sw1 --once --interval 0.05 --json | jq length; qvs port unblock sw1 web p9 >log' 2>/dev/null
  db	down
  p10	free
  uplink0	up
  web	blocked
  {"state":"blocked"},
  1
  $ sh on 'qvs port add sw1 a-port-with-a-name-of-thirty-three >log; for words in "port stats" "top sw1 --once --all --interval 0.05"; do COLUMNS=60 NO_COLOR=1 script -qec "qvs $words" /dev/null | tr -d "\r" | grep -E "PORT|a-port"; done; qvs port remove sw1 a-port-with-a-name-of-thirty-three >log; qvs top --all'
  SWITCH  PORT                                PKT IN  PKT OUT
  sw1     a-port-with-a-name-of-thirty-three  0       0
  PORT                                STATE  IN b/s  OUT b/s
  a-port-with-a-name-of-thirty-three  free   0       0
  qvs: --all needs --once
  ? 2

What is no table breaks between words on a narrow terminal, and not at all with --wide.

  $ sh on 'on() { COLUMNS=44 NO_COLOR=1 LC_ALL=C script -qec "qvs $1" /dev/null | tr -d "\r"; }; on "show sw1" | grep -E -A 1 "^sw1:|- web"; on "show sw1 --wide" | grep -e "- web"; on "port show sw1 p11" | grep -A 2 mac-learning:; on doctor | grep loads' 2>&1 | grep -v warning
  sw1: MTU 1500, 6 ports (2 in use), 2
    uplinks (1 up), room for 128
  --
     |- web                VLAN trunk
     |    1-100,200, priority 3  web.eth0  up
     |- web                VLAN trunk 1-100,200, priority 3  web.eth0  up    teaming: the default of a switch
    mac-learning:      learning off, flooding
                       off, limit 4096, limit
                       policy allow (default)
  ok       switch state: loads; switches: 3

The ports with the most traffic, between two looks. The screen is for terminals.

  $ sh on 'qvs top sw1 --once --interval 0.1 --json | jq -c ".[0] | [.port, .client, .vlan, .state, (.bitsIn > 0), (.dropped > 0)]"'  => ["web","web.eth0","trunk 1-100,200, priority 3","up",true,true]
  $ sh on 'for words in "" --json "--once --limit 0" "--limit 3" "nix --once"; do qvs top $words; done; qvs-host fault add StateGet --status 0xbad0040 --nth 2 >log; qvs top --once --interval 0.1'
  qvs: the screen needs a terminal; 'qvs top --once' prints text
  qvs: --json needs --once
  qvs: --limit: '0' is not a number from 1 to 4294967295
  qvs: --limit needs --once
  qvs: switch 'nix': Not found (0xbad0003)
  qvs: the host does not answer: switch state: No connection (0xbad0040)
  ? 6
