  $ qvs switch create sw1 --uplinks 2 --ports 3  => sw1: changed

What the kernel finds: the VLANs of ports whose policy names some, and the MTUs, good and bad.

  $ qvs port vlan set sw1 port0 --id 100; qvs port vlan set sw1 port1 --trunk 1-100,200; qvs health result sw1 port0  => [3] sw1/port0: changed | sw1/port1: changed | qvs: switch 'sw1': port 'port0': check result: Not found (0xbad0003)
  $ qvs health vlan-mtu set sw1 --interval 1; qvs prop get sw1 com.quillon.common.vlanmtucheck.deploy  => sw1: changed | 0101000000
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
  qvs: warning: switch 'sw1': no uplink with a link remains
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
  qvs: switch 'sw1': port 'port0': check result: Failure (0xbad0001); the bytes that are stored as com.quillon.common.port.volatile.vlanchkresult are not a result; 'qvs prop clear sw1 com.quillon.common.port.volatile.vlanchkresult --port port0' removes them
  {"switch":"sw1","port":"port0","trunkedVlans":[],"untrunkedVlans":[],"allowedMtus":["1280-9000"],"disallowedMtus":[]}
  qvs: switch 'sw1': port 'port0': check result: Failure (0xbad0001); the bytes that are stored as com.quillon.common.port.volatile.vlanchkresult are not a result; 'qvs prop clear sw1 com.quillon.common.port.volatile.vlanchkresult --port port0' removes them
  qvs: switch 'sw1': port 'port0': check result: Failure (0xbad0001); the bytes that are stored as com.quillon.common.port.volatile.vlanchkresult are not a result; 'qvs prop clear sw1 com.quillon.common.port.volatile.vlanchkresult --port port0' removes them
  sw1/port0 com.quillon.common.port.volatile.vlanchkresult: changed
  $ for hex in 0100000000000000 01000000000001000100 0000000000; do qvs prop set sw1 com.quillon.vswitch.port.vlan --hex $hex --port port0 >/dev/null; qvs health result sw1 port0; done 2>&1 | uniq -c
        3 qvs: switch 'sw1': port 'port0': check result: Not found (0xbad0003)
  $ qvs port vlan clear sw1 port0; qvs health result sw1 port0; qvs health vlan-mtu clear sw1; qvs health result sw1 port1; qvs prop list sw1 --all | grep -c vlanmtucheck
  sw1/port0: changed
  qvs: switch 'sw1': port 'port0': check result: Not found (0xbad0003)
  sw1: changed
  qvs: switch 'sw1': port 'port1': check result: Not found (0xbad0003)
  0
  ? 1
