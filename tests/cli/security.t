  $ qvs switch create sw1 --ports 2  => sw1: changed

What a port may do. Without a record the default is told, and nothing is stored by that.

  $ qvs port security get sw1 port0
  switch:              sw1
  port:                port0
  promiscuous mode:    deny
  MAC address change:  allow
  forged transmits:    allow
  stored:              no
  $ qvs port security set sw1 port0 --forged deny --mac-change deny --json  => {"switch":"sw1","port":"port0","changed":true}
  $ qvs port security set sw1 port0 --promiscuous deny  => sw1/port0: unchanged
  $ qvs port security set sw1 port0 --promiscuous allow; qvs prop list sw1 --port port0 | grep security
  sw1/port0: changed
  port   port0  com.quillon.vswitch.port.security        CONFIG    4       06000000
  $ qvs port security get sw1 port0 --json  => {"switch":"sw1","port":"port0","promiscuous":"allow","macChange":"deny","forged":"deny","stored":true}
  $ qvs port security set sw1 port1 --promiscuous deny; qvs prop get sw1 com.quillon.vswitch.port.security --port port1  => sw1/port1: changed | 01000000
  $ qvs port security set sw1 port0 --forged maybe  => [2] qvs: --forged: 'maybe' is none of allow, deny
  $ qvs port security set sw1 port0  => [2] qvs: at least one of --promiscuous, --mac-change, --forged is needed
  $ qvs prop set sw1 com.quillon.vswitch.port.security --hex ff --port port1; qvs port security get sw1 port1; qvs port security set sw1 port1 --forged deny; qvs port security set sw1 port1 --promiscuous allow --mac-change allow --forged deny; qvs prop get sw1 com.quillon.vswitch.port.security --port port1
  sw1/port1 com.quillon.vswitch.port.security: changed
  qvs: switch 'sw1': port 'port1': security: Failure (0xbad0001); what is stored as com.quillon.vswitch.port.security is no such record (1 byte, not 4); 'qvs prop clear sw1 com.quillon.vswitch.port.security --port port1' removes it
  qvs: switch 'sw1': port 'port1': security: Failure (0xbad0001); what is stored as com.quillon.vswitch.port.security is no such record (1 byte, not 4); 'qvs prop clear sw1 com.quillon.vswitch.port.security --port port1' removes it
  sw1/port1: changed
  04000000

What a port receives.

  $ qvs port filter get sw1 port0  => [3] qvs: switch 'sw1': port 'port0': receive filter: Not found (0xbad0003)
  $ qvs port filter set sw1 port0 unicast multicast use-ladrf --address 01:00:5e:00:00:FB --address 33:33:00:00:00:01  => sw1/port0: changed
  $ qvs port filter set sw1 port0 use-ladrf multicast unicast --address 01:00:5e:00:00:fb --address 33:33:00:00:00:01 --json  => {"switch":"sw1","port":"port0","changed":false}
  $ qvs prop list sw1 --port port0 --json | grep FRP | sed 's/A*"}/"}/'
  {"scope":"port","port":"port0","key":"com.quillon.vswitch.port.extraEthFRP","class":["CONFIG"],"length":200,"text":null,"value":"IwAAAAIAAQBeAAD7MzMAAAABAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA="},
  $ qvs port filter get sw1 port0
  switch:     sw1
  port:       port0
  flags:      unicast multicast use-ladrf
  addresses:  01:00:5e:00:00:fb 33:33:00:00:00:01
  $ qvs port filter set sw1 port0 multicast $(printf -- '--address 01:00:00:00:00:%02x ' $(seq 32)); qvs port filter get sw1 port0 | grep -o ..:..:..:..:..:.. | tail -n 1
  sw1/port0: changed
  01:00:00:00:00:20
  $ qvs port filter set sw1 port0 multicast $(printf -- '--address 01:00:00:00:00:%02x ' $(seq 33))  => [2] qvs: --address: 33 addresses, at most 32 fit
  $ for more in 'unicast --address 01:00:00:00:00:01' 'multicast --address 01:00:00:00:00' 'multicast --address 01:00:00:00:00:0g' everything; do qvs port filter set sw1 port0 $more; done
  qvs: --address: addresses count only with the flag multicast
  qvs: --address: '01:00:00:00:00' is no MAC address like 01:00:5e:00:00:01
  qvs: --address: '01:00:00:00:00:0g' is no MAC address like 01:00:5e:00:00:01
  qvs: FLAG: 'everything' is none of unicast, multicast, allmulti, broadcast, promisc, use-ladrf, sink
  ? 2
  $ qvs prop set sw1 com.quillon.vswitch.port.extraEthFRP --port port0 --hex "42000000ffff$(printf '02%.0s' $(seq 194))"; qvs port filter get sw1 port0 2>&1 | cut -c 1-80
  sw1/port0 com.quillon.vswitch.port.extraEthFRP: changed
  qvs: warning: the filter counts 65535 addresses, but has room for 32
  switch:     sw1
  port:       port0
  flags:      multicast 0x40
  addresses:  02:02:02:02:02:02 02:02:02:02:02:02 02:02:02:02:02:02 02:02:02:02:02
  $ qvs port filter clear sw1 port0; qvs port filter clear sw1 port0 --json  => sw1/port0: changed | {"switch":"sw1","port":"port0","changed":false}

The sink switch is a bit of the filter. Switching off what is off stores nothing. What is no filter must go first.

  $ qvs prop set sw1 com.quillon.vswitch.port.extraEthFRP --port port0 --hex 010203; qvs port sink set sw1 port0 on; qvs prop clear sw1 com.quillon.vswitch.port.extraEthFRP --port port0
  sw1/port0 com.quillon.vswitch.port.extraEthFRP: changed
  qvs: switch 'sw1': port 'port0': receive filter: Failure (0xbad0001); what is stored as com.quillon.vswitch.port.extraEthFRP is no such record (3 bytes, not 200); 'qvs prop clear sw1 com.quillon.vswitch.port.extraEthFRP --port port0' removes it
  sw1/port0 com.quillon.vswitch.port.extraEthFRP: changed
  $ qvs port sink get sw1 port0; qvs port sink set sw1 port0 off; qvs port filter get sw1 port0
  off
  sw1/port0: unchanged
  qvs: switch 'sw1': port 'port0': receive filter: Not found (0xbad0003)
  ? 3
  $ qvs port filter set sw1 port0 broadcast; qvs port sink set sw1 port0 on; qvs port sink set sw1 port0 on --json
  sw1/port0: changed
  sw1/port0: changed
  {"switch":"sw1","port":"port0","changed":false}
  $ qvs port sink get sw1 port0 --json; qvs port filter get sw1 port0 --json
  {"switch":"sw1","port":"port0","enabled":true,"stored":true}
  {"switch":"sw1","port":"port0","flags":["broadcast","sink"],"addresses":[]}
  $ qvs port sink set sw1 port0 off; qvs port filter get sw1 port0 --json  => sw1/port0: changed | {"switch":"sw1","port":"port0","flags":["broadcast"],"addresses":[]}
