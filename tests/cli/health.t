  $ qvs switch create sw1 --uplinks 2 --ports 3  => sw1: changed

The check of teaming: u8 deployed, u32 minutes; beside it u8 what is expected.

  $ qvs health team get sw1; qvs health team clear sw1
  switch:            sw1
  enabled:           no
  interval minutes:  0
  expected teaming:  other
  sw1: unchanged
  $ qvs health team deploy sw1 --interval 5; qvs health team deploy sw1 --interval 5 --json; qvs health team param sw1 ip-hash; qvs health team param sw1 ip-hash --json
  sw1: changed
  {"switch":"sw1","changed":false}
  sw1: changed
  {"switch":"sw1","changed":false}
  $ qvs prop list sw1 | grep teamcheck; qvs health team get sw1 --json
  global  -     com.quillon.common.teamcheck.deploy  CONFIG  5       0105000000
  global  -     com.quillon.mesh.teamcheck.param     POLICY  1       01
  {"switch":"sw1","enabled":true,"interval":5,"expected":"ip-hash"}
  $ qvs health team deploy sw1 --off; qvs health team deploy sw1 --off; qvs health team get sw1 --json
  sw1: changed
  sw1: unchanged
  {"switch":"sw1","enabled":false,"interval":0,"expected":"ip-hash"}
  $ qvs health team deploy sw1; qvs health team deploy sw1 --off --interval 1  => [2] qvs: one of --interval, --off is needed | qvs: --interval and --off exclude each other
  $ qvs health team param sw1 hash  => [2] qvs: TEAMING: 'hash' is none of other, ip-hash
  $ qvs health team param sw1 other; qvs prop get sw1 com.quillon.mesh.teamcheck.param --hex; qvs health team clear sw1; qvs prop list sw1 | grep teamcheck
  sw1: changed
  00
  sw1: changed
  ? 1
  $ qvs prop set sw1 com.quillon.common.teamcheck.deploy --hex 01000000; qvs health team get sw1
  sw1 com.quillon.common.teamcheck.deploy: changed
  qvs: switch 'sw1': team check: Failure (0xbad0001); what is stored as com.quillon.common.teamcheck.deploy is no such record (4 bytes, not 5); 'qvs prop clear sw1 com.quillon.common.teamcheck.deploy' removes it
  ? 1

The check of VLANs and MTU, with a parameter of 512 bytes.

  $ qvs health vlan-mtu get sw1; qvs health vlan-mtu get sw1 --raw - | cmp -n 512 - /dev/zero
  switch:            sw1
  enabled:           no
  interval minutes:  0
  parameter:         -
  $ printf 'p%.0s' $(seq 512) >param; qvs health vlan-mtu param sw1 --file param; qvs health vlan-mtu param sw1 --file - --json <param; qvs health vlan-mtu get sw1 | tail -n 4
  sw1: changed
  {"switch":"sw1","changed":false}
  parameter (512 bytes):
    0000 70 70 70 70 70 70 70 70 70 70 70 70 70 70 70 70
    *
    01f0 70 70 70 70 70 70 70 70 70 70 70 70 70 70 70 70
  $ qvs prop list sw1 --json | grep -o 'vlanmtucheck.param.*"length":[0-9]*'; qvs health vlan-mtu get sw1 --raw - | cmp - param; qvs health vlan-mtu get sw1 --json | cut -c -70
  vlanmtucheck.param","class":["POLICY"],"length":512
  {"switch":"sw1","enabled":false,"interval":0,"param":"cHBwcHBwcHBwcHBw
  $ head -c 511 param >short; for file in short /dev/zero; do qvs health vlan-mtu param sw1 --file $file; done
  qvs: file 'short': 511 bytes, but the parameter has 512
  qvs: file '/dev/zero': more than 512 bytes, which is all that fits
  ? 2
  $ qvs health vlan-mtu param sw1  => [2] qvs: --file is needed | qvs: usage: qvs health vlan-mtu param SWITCH --file FILE

What the kernel finds: the VLANs of ports whose policy names some, and the MTUs, good and bad.

  $ qvs port vlan set sw1 port0 --id 100; qvs port vlan set sw1 port1 --trunk 1-100,200; qvs health result sw1 port0
  sw1/port0: changed
  sw1/port1: changed
  qvs: switch 'sw1': port 'port0': check result: Not found (0xbad0003)
  ? 3
  $ qvs health vlan-mtu deploy sw1 --interval 1; qvs prop get sw1 com.quillon.common.vlanmtucheck.deploy  => sw1: changed | 0101000000
  $ for port in port0 port2; do qvs health result sw1 $port; done; qvs health result sw1 port1 --json
  switch:             sw1
  port:               port0
  VLANs trunked:      100
  VLANs not trunked:  -
  MTUs allowed:       1280-1500
  MTUs not allowed:   1501-9000
  qvs: switch 'sw1': port 'port2': check result: Not found (0xbad0003)
  {"switch":"sw1","port":"port1","trunkedVlans":["1-100","200"],"untrunkedVlans":[],"allowedMtus":["1280-1500"],"disallowedMtus":["1501-9000"]}
  $ results() { echo $(for key in vlan mtu; do qvs prop get sw1 com.quillon.common.port.volatile.${key}chkresult --port $1; done); }; qvs prop list sw1 --port port0 | grep chkresult; results port1; results uplink0
  port   port0  com.quillon.common.port.volatile.vlanchkresult  VOLATILE  8       0100000064006400
  port   port0  com.quillon.common.port.volatile.mtuchkresult   VOLATILE  12      010001000005dc05dd052823
  0200000001006400c800c800 010001000005dc05dd052823
  010000000100fe0f 010001000005dc05dd052823

They follow the uplinks and their MTU.

  $ treesh -e set /net/pNics/pnic1/mtu 1400; results() { echo $(for key in vlan mtu; do qvs prop get sw1 com.quillon.common.port.volatile.${key}chkresult --port $1; done); }; results port0; qvs uplink down sw1 uplink1; results port0; qvs uplink down sw1 uplink0; results port0; qvs health result sw1 port1 --json
  0100000064006400 010001000005780579052823
  sw1/uplink1: changed
  0100000064006400 010001000005dc05dd052823
  sw1/uplink0: changed
  0000010064006400 0000010000052823
  {"switch":"sw1","port":"port1","trunkedVlans":[],"untrunkedVlans":["1-100","200"],"allowedMtus":[],"disallowedMtus":["1280-9000"]}
  $ qvs uplink up sw1 uplink0; qvs mtu set sw1 9000; qvs health result sw1 port1 --json
  sw1/uplink0: changed
  sw1: changed
  {"switch":"sw1","port":"port1","trunkedVlans":["1-100","200"],"untrunkedVlans":[],"allowedMtus":["1280-9000"],"disallowedMtus":[]}

A value that a client stores stands in their place until it is cleared; with the deployment they go.

  $ key=com.quillon.common.port.volatile.vlanchkresult; qvs prop set sw1 $key --hex 010001000100020003000400 --port port0; qvs health result sw1 port0 --json; qvs prop clear sw1 $key --port port0; qvs prop get sw1 $key --port port0
  sw1/port0 com.quillon.common.port.volatile.vlanchkresult: changed
  {"switch":"sw1","port":"port0","trunkedVlans":["1-2"],"untrunkedVlans":["3-4"],"allowedMtus":["1280-9000"],"disallowedMtus":[]}
  sw1/port0 com.quillon.common.port.volatile.vlanchkresult: changed
  0100000064006400
  $ key=com.quillon.common.port.volatile.vlanchkresult; for hex in 0000 00000000 0100010001000200 ffffffff01000200; do qvs prop set sw1 $key --hex $hex --port port0 >/dev/null; qvs health result sw1 port0 --json; done; qvs prop clear sw1 $key --port port0
  qvs: switch 'sw1': port 'port0': check result: Failure (0xbad0001); what is stored as com.quillon.common.port.volatile.vlanchkresult is no such record (2 bytes); 'qvs prop clear sw1 com.quillon.common.port.volatile.vlanchkresult --port port0' removes it
  {"switch":"sw1","port":"port0","trunkedVlans":[],"untrunkedVlans":[],"allowedMtus":["1280-9000"],"disallowedMtus":[]}
  qvs: switch 'sw1': port 'port0': check result: Failure (0xbad0001); what is stored as com.quillon.common.port.volatile.vlanchkresult is no such record (8 bytes); 'qvs prop clear sw1 com.quillon.common.port.volatile.vlanchkresult --port port0' removes it
  qvs: switch 'sw1': port 'port0': check result: Failure (0xbad0001); what is stored as com.quillon.common.port.volatile.vlanchkresult is no such record (8 bytes); 'qvs prop clear sw1 com.quillon.common.port.volatile.vlanchkresult --port port0' removes it
  sw1/port0 com.quillon.common.port.volatile.vlanchkresult: changed
  $ for hex in 0100000000000000 01000000000001000100 0000000000; do qvs prop set sw1 com.quillon.vswitch.port.vlan --hex $hex --port port0 >/dev/null; qvs health result sw1 port0; done
  qvs: switch 'sw1': port 'port0': check result: Not found (0xbad0003)
  qvs: switch 'sw1': port 'port0': check result: Not found (0xbad0003)
  qvs: switch 'sw1': port 'port0': check result: Not found (0xbad0003)
  ? 3
  $ qvs port vlan clear sw1 port0; qvs health result sw1 port0; qvs health vlan-mtu clear sw1; qvs health result sw1 port1; qvs prop list sw1 --all | grep -c vlanmtucheck
  sw1/port0: changed
  qvs: switch 'sw1': port 'port0': check result: Not found (0xbad0003)
  sw1: changed
  qvs: switch 'sw1': port 'port1': check result: Not found (0xbad0003)
  0
  ? 1

The discovery protocol: u8 protocol, u8 what it does.

  $ qvs discovery get sw1; qvs discovery set sw1 --operation down
  switch:     sw1
  protocol:   -
  operation:  down
  sw1: unchanged
  $ qvs discovery set sw1 --operation listen; qvs discovery get sw1 --json; qvs discovery set sw1 --protocol lldp --operation both; qvs prop list sw1 | grep cdp
  sw1: changed
  {"switch":"sw1","protocol":"cdp","operation":"listen"}
  sw1: changed
  global  -     com.quillon.etherswitch.cdp          CONFIG  2       0103
  $ qvs discovery set sw1 --operation advertise; qvs discovery set sw1 --operation advertise --json; qvs prop get sw1 com.quillon.etherswitch.cdp; qvs discovery set sw1 --operation down; qvs discovery get sw1 --json
  sw1: changed
  {"switch":"sw1","changed":false}
  0102
  sw1: changed
  {"switch":"sw1","protocol":null,"operation":"down"}
  $ qvs discovery set sw1 --protocol edp --operation both  => [2] qvs: --protocol: 'edp' is none of cdp, lldp
  $ qvs prop set sw1 com.quillon.etherswitch.cdp --hex 0904; qvs discovery get sw1 --json; qvs prop set sw1 com.quillon.etherswitch.cdp --hex 010203; qvs discovery get sw1; qvs discovery set sw1 --operation listen; qvs discovery set sw1 --protocol lldp --operation listen; qvs prop get sw1 com.quillon.etherswitch.cdp
  sw1 com.quillon.etherswitch.cdp: changed
  {"switch":"sw1","protocol":"9","operation":"4"}
  sw1 com.quillon.etherswitch.cdp: changed
  qvs: switch 'sw1': discovery: Failure (0xbad0001); what is stored as com.quillon.etherswitch.cdp is no such record (3 bytes, not 2); 'qvs prop clear sw1 com.quillon.etherswitch.cdp' removes it
  qvs: switch 'sw1': discovery: Failure (0xbad0001); what is stored as com.quillon.etherswitch.cdp is no such record (3 bytes, not 2); 'qvs prop clear sw1 com.quillon.etherswitch.cdp' removes it
  sw1: changed
  0101

Flow sampling of a port: times, rate, flags, counts, domain, source; eight collectors; the id.

  $ qvs port ipfix get sw1 port0; qvs port ipfix clear sw1 port0  => qvs: switch 'sw1': port 'port0': flow sampling: Not found (0xbad0003) | sw1/port0: unchanged
  $ qvs port ipfix set sw1 port0 --idle 30 --active 60 --rate 100 --internal-only --vnic-only --obs-domain 7 --source 192.0.2.1 --obs-id host-3 --collector 192.0.2.9:4739 --collector '[2001:db8::9]:65535'
  sw1/port0: changed
  $ qvs prop get sw1 com.quillon.net.ipfix.port --port port0 --raw - | bytes; qvs prop list sw1 --port port0 | grep -o 'ipfix.*POLICY *[0-9]*'
  0:1e0000003c000000640000000302060007000000c0000201c0000209 40:8312000020010db8 59:09ffff01 184:686f73742d33 (190 bytes)
  ipfix.port               POLICY    190
  $ qvs port ipfix get sw1 port0
  switch:               sw1
  port:                 port0
  idle seconds:         30
  active seconds:       60
  sampling rate:        100
  internal flows only:  yes
  vNICs only:           yes
  observation domain:   7
  source address:       192.0.2.1
  observation id:       host-3
  collectors:           192.0.2.9:4739 [2001:db8::9]:65535
  $ qvs port ipfix set sw1 port0; qvs port ipfix set sw1 port0; qvs port ipfix get sw1 port0 --json
  sw1/port0: changed
  sw1/port0: unchanged
  {"switch":"sw1","port":"port0","idle":0,"active":0,"rate":0,"internalOnly":false,"vnicOnly":false,"obsDomain":0,"source":"0.0.0.0","obsId":"","collectors":[]}
  $ for collector in 192.0.2.9 2001:db8::9:1 '[192.0.2.9]:1' 192.0.2.9:65536; do qvs port ipfix set sw1 port0 --collector $collector; done
  qvs: --collector: '192.0.2.9' is neither IPV4:PORT nor [IPV6]:PORT
  qvs: --collector: '2001:db8::9:1' is neither IPV4:PORT nor [IPV6]:PORT
  qvs: --collector: '[192.0.2.9]:1' is neither IPV4:PORT nor [IPV6]:PORT
  qvs: --collector: '192.0.2.9:65536' has no port from 0 to 65535
  ? 2
  $ qvs port ipfix set sw1 port0 $(printf -- '--collector 192.0.2.%d:1 ' $(seq 9))  => [2] qvs: 9 collectors, at most 8 fit
  $ qvs port ipfix set sw1 port0 --source 192.0.2  => [2] qvs: --source: '192.0.2' is no IPv4 address
  $ qvs port ipfix set sw1 port0 --obs-id "$(head -c 65536 /dev/zero | tr '\0' x)" 2>&1 | sed 's/xx*/x/'
  qvs: observation id 'x...': 65536 bytes, at most 65535 fit
  $ qvs port ipfix set sw1 port0 --obs-id "$(head -c 65535 /dev/zero | tr '\0' x)" $(printf -- '--collector 192.0.2.%d:1 ' $(seq 8)); qvs prop get sw1 com.quillon.net.ipfix.port --port port0 --raw - | wc -c; qvs port ipfix get sw1 port0 | tail -n 1
  sw1/port0: changed
  65719
  collectors:           192.0.2.1:1 192.0.2.2:1 192.0.2.3:1 192.0.2.4:1 192.0.2.5:1 192.0.2.6:1 192.0.2.7:1 192.0.2.8:1
  $ qvs prop set sw1 com.quillon.net.ipfix.port --port port0 --hex "$(head -c 184 /dev/zero | hex | sed 's/^\(.\{26\}\)00/\1ff/')"; qvs port ipfix get sw1 port0 --json | grep -o '0.0.0.0:0' | wc -l
  sw1/port0 com.quillon.net.ipfix.port: changed
  8
