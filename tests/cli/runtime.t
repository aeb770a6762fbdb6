A lab with busy and plumbed ports and multicast groups. Each line below is a run of the host of its own, so whatever it shows of what
was changed before has survived a restart, and counters begin anew; within a line they grow.

  $ cat >lab.json <<<'{"switches": [{"alias": "sw1", "uplinks": ["uplink0"], "ports": ["p0", "p1", "p2"]}], "clients": [{"switch": "sw1", "port": "p1", "name": "web"}], "busy": [{"switch": "sw1", "port": "p0"}], "spfPorts": [{"switch": "sw1", "port": "p2", "mac": "02:00:00:00:01:02"}], "mcastFilters": [{"switch": "sw1", "port": "p0", "group": "239.1.1.254", "count": 3}, {"switch": "sw1", "port": "p1", "group": "239.1.1.255", "sources": ["192.0.2.9", "192.0.2.8"]}, {"switch": "sw1", "port": "p1", "group": "ff02::fb", "sources": ["2001:db8::7"]}, {"switch": "sw1", "port": "p1", "group": "01:00:5e:00:00:fb"}]}'
  $ cat >on <<<'exec qvs-host run --state rack $LAB -- sh -c "$1"'
  $ LAB='--lab lab.json' sh on 'qvs rarp sw1; qvs rarp sw1 --json; qvs teaming stats sw1 --raw - | head -c 16 | bytes'
  sent (announcements):  1237
  lost (announcements):  1663
  {"stats":"rAgAAAAAAAAyCgAAAAAAAA==","fields":{"sent":2220,"lost":2610}}
  0:1304 8:07 (16 bytes)

Mirror sessions are those that are stored: a disabled one is idle, and destinations count while they have a link.

  $ sh on 'qvs mirror runtime ids sw1; qvs mirror runtime destinations sw1; qvs mirror runtime stats sw1 cap'  => [3] SESSION | PORT | qvs: switch 'sw1': mirror session 'cap': Not found (0xbad0003)
  $ sh on 'for words in "cap --type dvport --destinations p1,p2,pnic0 --port p0" "cap --type dvport --destinations p1 --port p2" "a-name-of-thirty-two-characters- --type dvport --destinations p0 --flags disabled"; do qvs mirror add sw1 $words >log; done'
  qvs: warning: switch 'sw1': port 'p0': mirror sessions: port or uplink 'pnic0' is missing
  $ sh on 'echo $(qvs mirror runtime ids sw1 --json); qvs mirror runtime destinations sw1 --raw - | bytes'  => [ {"session":"a-name-of-thirty-two-characters-"}, {"session":"cap"} ] | 0:02 8:0200000404000004 (16 bytes)
  $ sh on 'for i in 1 2; do qvs mirror runtime stats sw1 cap --raw - | bytes; done; qvs mirror runtime stats sw1 a-name-of-thirty-two-characters- --raw - | bytes'
  0:636170 32:a203 40:e903 48:e801 56:da03 64:6302 72:9105 80:e903 88:bc04 96:4601 104:8101 112:e401 120:01 (121 bytes)
  0:636170 32:4706 40:f805 48:6203 56:2107 64:b103 72:3c09 80:7306 88:fb07 96:5b02 104:bd02 112:b203 120:01 (121 bytes)
  0:612d6e616d652d6f662d7468697274792d74776f2d636861726163746572732d (121 bytes)
  $ sh on 'qvs mirror runtime agent --raw - | head -c 16 | bytes; qvs mirror runtime agent --json; qvs mirror clear sw1 >log; qvs mirror clear sw1 --port p2 >log; qvs uplink down sw1 uplink0 >log; qvs mirror runtime destinations sw1 --raw - | bytes'
  0:02000000a806 12:0904 (16 bytes)
  {"stats":"AgAAAFAKAAAAAAAABwcAAAAAAADvCAAAAAAAAIIAAAAAAAAA8wAAAAAAAAAbAgAAAAAAAO8AAAAAAAAAbAgAAAAAAACPAAAAAAAAAA==","fields":{"sessions":2,"wakeups":2640,"framesTaken":1799,"bytesTaken":2287,"framesSent":130,"bytesSent":243,"droppedNoMemory":539,"droppedNoRoute":239,"droppedNoUplink":2156,"droppedNoAddress":143}}
  qvs: warning: switch 'sw1': no uplink with a link remains
  0:01 8:02000004 (12 bytes)

Logical-switch teaming as stored; a table that counts more than it holds is cut.

  $ sh on 'qvs ls-teaming get sw1 --kernel --json; qvs port ls-teaming get sw1 p0 --kernel'  => [3] {"switch":"sw1","policies":[],"stored":false} | qvs: switch 'sw1': port 'p0': logical-switch teaming choice: Not found (0xbad0003)
  $ sh on 'head -c 5496 /dev/zero | tr "\000" x >table; qvs ls-teaming set sw1 --file table; qvs port ls-teaming set sw1 p0 storage'  => sw1: changed | sw1/p0: changed
  $ sh on 'qvs ls-teaming get sw1 --kernel --raw - | cmp - table && qvs ls-teaming get sw1 --kernel | grep entry; qvs port ls-teaming get sw1 p0 --kernel --json'
  entry 0 (2748 bytes):
  entry 1 (2748 bytes):
  {"switch":"sw1","port":"p0","policy":"storage","stored":true}
  $ sh on 'qvs prop get sw1 com.quillon.vswitch.logicalswitch.teaming --raw - | (printf "\011\000\000\000"; tail -c +5 | head -c 2750) >wrong; qvs prop set sw1 com.quillon.vswitch.logicalswitch.teaming --file wrong; qvs ls-teaming get sw1 --kernel --raw - | wc -c'
  sw1 com.quillon.vswitch.logicalswitch.teaming: changed
  2748
  $ qvs ls-teaming get sw1 --kernel --by-id  => [2] qvs: --by-id and --kernel exclude each other

Multicast groups of a port, and of all ports together.

  $ sh on 'qvs mcast mode get sw1; qvs mcast mode set sw1 snooping; qvs mcast mode get sw1 --kernel'  => switch:  sw1 | mode:    legacy | stored:  no | sw1: changed | switch:  sw1 | mode:    snooping | stored:  yes
  $ sh on 'qvs mcast filters sw1; qvs mcast filters sw1 --port p0 --type ipv4 --json | grep -c group; qvs mcast filters sw1 --port uplink0 --json'
  TYPE  GROUP
  mac   01:00:5e:00:00:fb
  ipv4  239.1.1.254
  ipv4  239.1.1.255
  ipv4  239.1.2.0
  ipv6  ff02::fb
  3
  []
  $ sh on 'for value in 0 2 1; do qvs mcast switch-filters sw1 --value $value --raw - | bytes; done'
  0:01 8:01005e0000fb 24:01 (28 bytes)
  0:03 8:ef0101fe 24:01000000ef0101ff 44:02000000ef0102 64:01 (68 bytes)
  qvs: switch 'sw1': Failure (0xbad0001)
  (0 bytes)
  $ sh on 'qvs mcast stats sw1 239.1.1.255 --json; qvs mcast stats sw1 239.1.1.255 --port p1; qvs mcast stats sw1 239.1.1.255 --port p0 --raw - | wc -c; qvs mcast stats sw1 ff02::fb | tail -n 1; qvs mcast stats sw1 239.1.1.253'
  {"group":"239.1.1.255","addresses":[],"stats":"HwMAAAAAAABdBAAAAAAAAAAAAAAAAAAAAgAAAA==","fields":{"framesIn":799,"framesDropped":1117,"forSources":"no","sources":0,"ports":2,"addresses":[]}}
  group:  239.1.1.255
  statistics:
    frames in:       1226
    frames dropped:  1140
    for sources:     yes
    sources:         2
    ports:           1
    addresses:       192.0.2.8 192.0.2.9
  28
    addresses:       2001:db8::7
  qvs: switch 'sw1': group '239.1.1.253': Not found (0xbad0003)
  ? 3
  $ sh on 'qvs port remove sw1 p1; qvs mcast filters sw1 | wc -l'  => qvs: warning: switch 'sw1': port 'p1': is removed while 'web' uses it | qvs: warning: switch 'sw1': p1 is removed, but still named by: port 'p0': mirror sessions | sw1/p1: changed | 4

Flows are counted where they are sampled.

  $ sh on 'qvs ipfix stats sw1 --raw - | bytes; qvs ipfix stats sw1 p0 --raw - | bytes; qvs port ipfix set sw1 p0 --collectors 192.0.2.9:4739'  => (192 bytes) | (192 bytes) | sw1/p0: changed
  $ sh on 'qvs ipfix stats sw1 --raw - | bytes; qvs ipfix stats sw1 p0 --raw a; qvs ipfix stats sw1 p0 --raw b; cmp a b; qvs ipfix stats sw1 p2 --raw - | bytes'
  0:01000000010000009e01 16:2703 24:4c04 32:b501 40:9102 48:da 56:c103 64:8f05 72:a6 80:6401 88:5903 96:4e 104:0207 112:cf 121:02 128:e801 136:8002 144:b205 152:1b03 160:a502 168:7e03 176:2a02 184:1002 (192 bytes)
  a b differ: byte 9, line 1
  (192 bytes)

Ports of the SPF data path.

  $ sh on 'qvs spf list sw1; qvs spf plumb sw1 p0 02:00:00:00:01:00; qvs spf plumb sw1 p0 02:00:00:00:01:01; qvs spf plumb sw1 uplink0 02:00:00:00:01:02; qvs spf plumb sw1 uplink0 01:00:00:00:01:03; qvs spf plumb sw1 p0 02'
  PORT      FLAGS
  67108867  -
  sw1/p0: changed
  qvs: switch 'sw1': port 'p0': Already exists (0xbad0005)
  qvs: switch 'sw1': port 'uplink0': Already exists (0xbad0005)
  qvs: switch 'sw1': port 'uplink0': Failure (0xbad0001)
  qvs: '02' is no MAC address, like 02:00:00:00:00:01
  ? 2
  $ sh on 'qvs spf list sw1 --raw - | bytes; qvs spf failures; qvs spf stats switch sw1 --raw - | bytes; qvs spf stats svm sw1 p0 --raw - | head -c 32 | bytes; qvs spf stats gvm sw1 p0'
  0:02 8:01000004 16:03000004 (24 bytes)
  plumbs:    3
  unplumbs:  0
  0:02 8:c6 16:76 24:5602 32:a004 40:8803 48:4906 56:4205 64:0404 72:63 (80 bytes)
  0:01000004 8:02000000010000007204 24:6201 (32 bytes)
  qvs: switch 'sw1': port 'p0': Not found (0xbad0003)
  ? 3
  $ sh on 'qvs spf unplumb sw1 p0; qvs spf unplumb sw1 p0; qvs spf unplumb sw1 p0 --if-exists --json; qvs spf failures --json; qvs spf stats gvm sw1 p0 --raw - | bytes; qvs spf stats svm sw1 p0'
  sw1/p0: changed
  qvs: switch 'sw1': port 'p0': Not found (0xbad0003)
  {"switch":"sw1","port":"p0","changed":false}
  {"failures":"AwAAAAIAAAA=","fields":{"plumbs":3,"unplumbs":2}}
  0:01000004 8:0401 16:3b04 24:1b04 32:fa02 40:bb 48:78 56:9b 64:d001 72:e9 80:9105 88:6b04 96:7903 104:d505 112:e402 120:cf 128:92 136:4905 144:e001 152:4804 160:02 168:fa02 176:8c02 184:ae03 192:2407 200:d504 208:e401 216:fd 224:9e05 232:6a01 240:f305 248:2c03 (256 bytes)
  qvs: switch 'sw1': port 'p0': Not found (0xbad0003)
  ? 3
  $ sh on 'qvs port remove sw1 p2; qvs spf list sw1'  => qvs: warning: switch 'sw1': p2 is removed, but still named by: port 'p0': mirror sessions | sw1/p2: changed | PORT  FLAGS
  $ sh on 'qvs --trace spf stats gvm sw1 uplink0 2>&1 | sed -n "s/, [0-9]* us//; 3p"'  => qvs: SPFHYP_GetGVMPortStats(67108868) -> null, 0xbad0003 (Not found)

The statistics of a busy port grow whenever they are looked at, all others stay; one that comes to rest keeps what it has.

  $ cat >look <<<'for i in 1 2; do echo $(qvs prop get sw1 com.quillon.common.port.statistics --port p0 --raw - | od -An -tu8 -N 16; qvs dump sw1 | grep -m 2 sInUnicast); done'
  $ sh on 'sh ./look; qvs port show sw1 p0 --raw - | od -An -tu8 -j 192 -N 16'  => 180 2895 pktsInUnicast = 240 bytesInUnicast = 3860 | 420 6755 pktsInUnicast = 480 bytesInUnicast = 7720 |                   600                 9650
  $ sh on 'qvs prop get sw1 com.quillon.common.port.statistics --port uplink0 --raw - | od -An -tu8 -N 16'  =>                     0                    0
  $ cat >rest.json <<<'{"busy": []}'
  $ sh on 'sh ./look; qvs-host fault add "*PortDataGet*port.statistics*" --lab rest.json; sh ./look'
  180 2895 pktsInUnicast = 240 bytesInUnicast = 3860
  420 6755 pktsInUnicast = 480 bytesInUnicast = 7720
  540 8685 pktsInUnicast = 540 bytesInUnicast = 8685
  540 8685 pktsInUnicast = 540 bytesInUnicast = 8685
  $ sh on 'qvs prop get sw1 com.quillon.common.port.statistics --port p0 --raw - | od -An -tu8 -N 16'  =>                   540                 8685

