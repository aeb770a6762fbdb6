A lab with busy and plumbed ports and multicast groups. Each line below is a run of the host of its own, so whatever it shows of what
was changed before has survived a restart, and counters begin anew; within a line they grow.

  $ cat >lab.json <<<'{"switches": [{"alias": "sw1", "uplinks": ["uplink0"], "ports": ["p0", "p1", "p2"]}], "clients": [{"switch": "sw1", "port": "p1", "name": "web"}], "busy": [{"switch": "sw1", "port": "p0"}], "spfPorts": [{"switch": "sw1", "port": "p2", "mac": "02:00:00:00:01:02"}], "mcastFilters": [{"switch": "sw1", "port": "p0", "group": "239.1.1.254", "count": 3}, {"switch": "sw1", "port": "p1", "group": "239.1.1.255", "sources": ["192.0.2.9", "192.0.2.8"]}, {"switch": "sw1", "port": "p1", "group": "ff02::fb", "sources": ["2001:db8::7"]}, {"switch": "sw1", "port": "p1", "group": "01:00:5e:00:00:fb"}]}'
  $ cat >on <<<'exec qvs-host run --state rack $LAB -- sh -c "$1"'
  $ LAB='--lab lab.json' sh on 'qvs rarp sw1; qvs rarp sw1 --json; qvs teaming stats sw1 | head -n 2'
  reverse-ARP statistics:  d5040000000000007f06000000000000
  {"stats":"rAgAAAAAAAAyCgAAAAAAAA=="}
  teaming statistics (48 bytes):
    0000 13 04 00 00 00 00 00 00 07 00 00 00 00 00 00 00

Mirror sessions are those that are stored: a disabled one is idle, and destinations count while they have a link.

  $ sh on 'qvs mirror runtime ids sw1; qvs mirror runtime destinations sw1; qvs mirror runtime stats sw1 cap'
  SESSION
  INDEX  ENTRY
  qvs: switch 'sw1': mirror session 'cap': Not found (0xbad0003)
  ? 3
  $ sh on 'qvs mirror add sw1 cap --type dvport --dst p1 --dst p2 --dst pnic0 --port p0; qvs mirror add sw1 cap --type dvport --dst p1 --port p2; qvs mirror add sw1 a-name-of-thirty-two-characters- --type dvport --dst p0 --flag disabled'
  sw1/p0 cap: changed
  sw1/p2 cap: changed
  sw1 a-name-of-thirty-two-characters-: changed
  $ sh on 'qvs mirror runtime ids sw1; qvs mirror runtime ids sw1 --json; qvs mirror runtime destinations sw1'
  SESSION
  a-name-of-thirty-two-characters-
  cap
  [
  {"session":"a-name-of-thirty-two-characters-"},
  {"session":"cap"}
  ]
  INDEX  ENTRY
  0      02000004
  1      04000004
  $ sh on 'qvs mirror runtime stats sw1 cap | head -n 4; qvs mirror runtime stats sw1 cap --raw - | tail -c 1 | od -An -tx1; qvs mirror runtime stats sw1 a-name-of-thirty-two-characters- | tail -n 5'
  session statistics (121 bytes):
    0000 63 61 70 00 00 00 00 00 00 00 00 00 00 00 00 00
    0010 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00
    0020 a2 03 00 00 00 00 00 00 e9 03 00 00 00 00 00 00
   01
    0000 61 2d 6e 61 6d 65 2d 6f 66 2d 74 68 69 72 74 79
    0010 2d 74 77 6f 2d 63 68 61 72 61 63 74 65 72 73 2d
    0020 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00
    *
    0070 00 00 00 00 00 00 00 00 00
  $ sh on 'qvs mirror runtime agent | head -n 2; qvs mirror runtime agent --json; qvs mirror clear sw1; qvs mirror clear sw1 --port p2; qvs uplink down sw1 uplink0; qvs mirror runtime destinations sw1 --json'
  agent statistics (76 bytes):
    0000 02 00 00 00 a8 06 00 00 00 00 00 00 09 04 00 00
  {"stats":"AgAAAFAKAAAAAAAABwcAAAAAAADvCAAAAAAAAIIAAAAAAAAA8wAAAAAAAAAbAgAAAAAAAO8AAAAAAAAAbAgAAAAAAACPAAAAAAAAAA=="}
  sw1: changed
  sw1/p2: changed
  sw1/uplink0: changed
  [
  {"index":0,"entry":"AgAABA=="}
  ]

Logical-switch teaming as stored; a table that counts more than it holds is cut.

  $ sh on 'qvs ls-teaming get sw1 --kernel --json; qvs port ls-teaming get sw1 p0 --kernel'
  []
  qvs: switch 'sw1': port 'p0': logical-switch teaming choice: Not found (0xbad0003)
  ? 3
  $ sh on 'head -c 5496 /dev/zero | tr "\000" x >table; qvs ls-teaming set sw1 --file table; qvs port ls-teaming set sw1 p0 storage'
  sw1: changed
  sw1/p0: changed
  $ sh on 'qvs ls-teaming get sw1 --kernel --raw - | cmp - table && qvs ls-teaming get sw1 --kernel | grep entry; qvs port ls-teaming get sw1 p0 --kernel --json'
  entry 0 (2748 bytes):
  entry 1 (2748 bytes):
  {"switch":"sw1","port":"p0","policy":"storage","stored":true}
  $ sh on 'qvs prop get sw1 com.quillon.vswitch.logicalswitch.teaming --raw - | (printf "\011\000\000\000"; tail -c +5 | head -c 2750) >wrong; qvs prop set sw1 com.quillon.vswitch.logicalswitch.teaming --file wrong; qvs ls-teaming get sw1 --kernel --raw - | wc -c'
  sw1 com.quillon.vswitch.logicalswitch.teaming: changed
  2748
  $ qvs ls-teaming get sw1 --kernel --by-id  => [2] qvs: --by-id and --kernel exclude each other

Multicast groups of a port, and of all ports together.

  $ sh on 'qvs mcast mode get sw1; qvs mcast mode set sw1 snooping; qvs mcast mode get sw1 --kernel'  => legacy | sw1: changed | snooping
  $ sh on 'qvs mcast filters sw1; qvs mcast filters sw1 --port p0 --type ipv4 --json; qvs mcast filters sw1 --port uplink0 --json'
  TYPE  GROUP
  mac   01:00:5e:00:00:fb
  ipv4  239.1.1.254
  ipv4  239.1.1.255
  ipv4  239.1.2.0
  ipv6  ff02::fb
  [
  {"type":"ipv4","group":"239.1.1.254"},
  {"type":"ipv4","group":"239.1.1.255"},
  {"type":"ipv4","group":"239.1.2.0"}
  ]
  []
  $ sh on 'qvs mcast switch-filters sw1; qvs mcast switch-filters sw1 --value 2; qvs mcast switch-filters sw1 --value 1'
  INDEX  ENTRY
  0      01005e0000fb0000000000000000000001000000
  INDEX  ENTRY
  0      ef0101fe00000000000000000000000001000000
  1      ef0101ff00000000000000000000000002000000
  2      ef01020000000000000000000000000001000000
  qvs: switch 'sw1': Failure (0xbad0001)
  ? 1
  $ sh on 'qvs mcast stats sw1 239.1.1.255 --json; qvs mcast stats sw1 239.1.1.255 --port p1; qvs mcast stats sw1 239.1.1.255 --port p0 --raw - | wc -c; qvs mcast stats sw1 ff02::fb; qvs mcast stats sw1 239.1.1.253; qvs mcast stats sw1 01:00:5e:00:00:fb'
  {"group":"239.1.1.255","addresses":[],"stats":"HwMAAAAAAABdBAAAAAAAAAAAAAAAAAAAAgAAAA=="}
  group:       239.1.1.255
  addresses:   192.0.2.8 192.0.2.9
  statistics:  ca040000000000007404000000000000010000000200000001000000
  28
  group:       ff02::fb
  addresses:   2001:db8::7
  statistics:  1504000000000000dc06000000000000010000000100000001000000
  qvs: switch 'sw1': group '239.1.1.253': Not found (0xbad0003)
  qvs: '01:00:5e:00:00:fb' is no IPv4 or IPv6 address
  ? 2
  $ sh on 'qvs port remove sw1 p1; qvs mcast filters sw1 | wc -l'  => sw1/p1: changed | 4

Flows are counted where they are sampled.

  $ sh on 'qvs ipfix stats sw1; qvs ipfix stats sw1 p0 --raw - | cksum; qvs port ipfix set sw1 p0 --collector 192.0.2.9:4739'
  flow statistics (192 bytes):
    0000 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00
    *
    00b0 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00
  2725605222 192
  sw1/p0: changed
  $ sh on 'qvs ipfix stats sw1 | sed -n "2p;\$p"; qvs ipfix stats sw1 p0 --raw a; qvs ipfix stats sw1 p0 --raw b; cmp a b; qvs ipfix stats sw1 p2 --raw - | cksum'
    0000 01 00 00 00 01 00 00 00 9e 01 00 00 00 00 00 00
    00b0 2a 02 00 00 00 00 00 00 10 02 00 00 00 00 00 00
  a b differ: byte 9, line 1
  2725605222 192

Ports of the SPF data path.

  $ sh on 'qvs spf list sw1; qvs spf plumb sw1 p0 02:00:00:00:01:00; qvs spf plumb sw1 p0 02:00:00:00:01:01; qvs spf plumb sw1 uplink0 02:00:00:00:01:02; qvs spf plumb sw1 uplink0 01:00:00:00:01:03; qvs spf plumb sw1 p0 02'
  INDEX  ENTRY
  0      0300000400000000
  sw1/p0: changed
  qvs: switch 'sw1': port 'p0': Already exists (0xbad0005)
  qvs: switch 'sw1': port 'uplink0': Already exists (0xbad0005)
  qvs: switch 'sw1': port 'uplink0': Failure (0xbad0001)
  qvs: '02' is no MAC address, like 02:00:00:00:00:01
  ? 2
  $ sh on 'qvs spf list sw1 --json; qvs spf failures; qvs spf stats switch sw1 | head -n 2; qvs spf stats svm sw1 p0 | head -n 3; qvs spf stats gvm sw1 p0'
  [
  {"index":0,"entry":"AQAABAAAAAA="},
  {"index":1,"entry":"AwAABAAAAAA="}
  ]
  failures:  0300000000000000
  statistics (80 bytes):
    0000 02 00 00 00 00 00 00 00 c6 00 00 00 00 00 00 00
  statistics (104 bytes):
    0000 01 00 00 04 00 00 00 00 02 00 00 00 01 00 00 00
    0010 72 04 00 00 00 00 00 00 62 01 00 00 00 00 00 00
  qvs: switch 'sw1': port 'p0': Not found (0xbad0003)
  ? 3
  $ sh on 'qvs spf unplumb sw1 p0; qvs spf unplumb sw1 p0; qvs spf unplumb sw1 p0 --if-exists --json; qvs spf failures --json; qvs spf stats gvm sw1 p0 | tail -n 2; qvs spf stats svm sw1 p0'
  sw1/p0: changed
  qvs: switch 'sw1': port 'p0': Not found (0xbad0003)
  {"switch":"sw1","port":"p0","changed":false}
  {"failures":"AwAAAAIAAAA="}
    00e0 9e 05 00 00 00 00 00 00 6a 01 00 00 00 00 00 00
    00f0 f3 05 00 00 00 00 00 00 2c 03 00 00 00 00 00 00
  qvs: switch 'sw1': port 'p0': Not found (0xbad0003)
  ? 3
  $ sh on 'qvs port remove sw1 p2; qvs spf list sw1'
  sw1/p2: changed
  INDEX  ENTRY
  $ sh on 'qvs --trace spf stats gvm sw1 uplink0 2>&1 | sed "s/, [0-9]* us//"'
  qvs: VSDVS_DvPortIDToPortID("sw1", "uplink0", ...) -> 0x0 (Success)
  qvs: SPFHYP_GetGVMPortStats(67108868) -> null, 0xbad0003 (Not found)
  qvs: switch 'sw1': port 'uplink0': Not found (0xbad0003)

The statistics of a busy port grow whenever they are looked at, all others stay; one that comes to rest keeps what it has.

  $ cat >look <<<'for i in 1 2; do qvs prop get sw1 com.quillon.common.port.statistics --port p0 --raw - | od -An -tu8 -N 16; qvs dump sw1 | grep -m 2 sInUnicast; done'
  $ sh on 'sh ./look; qvs port show sw1 p0 --raw - | od -An -tu8 -j 192 -N 16'
                    180                 2895
  			pktsInUnicast = 240
  			bytesInUnicast = 3860
                    420                 6755
  			pktsInUnicast = 480
  			bytesInUnicast = 7720
                    600                 9650
  $ sh on 'qvs prop get sw1 com.quillon.common.port.statistics --port uplink0 --raw - | od -An -tu8 -N 16'
                      0                    0
  $ cat >rest.json <<<'{"busy": []}'
  $ sh on 'sh ./look; qvs-host fault add "*PortDataGet*port.statistics*" --lab rest.json; sh ./look'
                    180                 2895
  			pktsInUnicast = 240
  			bytesInUnicast = 3860
                    420                 6755
  			pktsInUnicast = 480
  			bytesInUnicast = 7720
                    540                 8685
  			pktsInUnicast = 540
  			bytesInUnicast = 8685
                    540                 8685
  			pktsInUnicast = 540
  			bytesInUnicast = 8685
  $ sh on 'qvs prop get sw1 com.quillon.common.port.statistics --port p0 --raw - | od -An -tu8 -N 16'
                    540                 8685

A lab that makes no sense is refused.

  $ bad() { echo "$1" >bad.json; LAB='--lab bad.json' sh on true 2>&1 | sed 's/.*used: //'; }; bad '{"busy": [{"switch": "sw1", "port": "p9"}]}'; bad '{"mcastFilters": [{"switch": "sw1", "port": "p0", "group": "192.0.2.1"}]}'; bad '{"spfPorts": [{"switch": "sw1", "port": "p0", "mac": "01:00:00:00:00:01"}]}'
  lab.busy[0]: "port" is not a port of the switch: p9
  lab.mcastFilters[0]: "group" is not a group
  lab.spfPorts[0]: "mac" is not the address of a station
