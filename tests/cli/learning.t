  $ qvs switch create sw1 --ports 2  => sw1: changed

How long addresses are kept, and how many. The record: 24 bits of seconds, a byte nobody knows, the number.

  $ qvs mac-learning get sw1; qvs mac-learning get sw1 --json; qvs mac-learning clear sw1
  switch:         sw1
  aging seconds:  600
  limit:          65536
  stored:         no
  {"switch":"sw1","aging":600,"limit":65536,"stored":false}
  sw1: unchanged
  $ qvs mac-learning set sw1 --aging 600; qvs mac-learning set sw1 --limit 65536; qvs prop list sw1 --host | grep macLearning
  sw1: changed
  sw1: unchanged
  host   -     com.quillon.vswitch.macLearning  CONFIG  8       5802000000000100
  $ qvs mac-learning set sw1 --aging 1000000 --limit 4294967295; qvs prop get sw1 com.quillon.vswitch.macLearning --host  => sw1: changed | 40420f00ffffffff
  $ qvs prop set sw1 com.quillon.vswitch.macLearning --hex 2c0100ff01000000 --host; qvs mac-learning get sw1 --json
  sw1 host com.quillon.vswitch.macLearning: changed
  {"switch":"sw1","aging":300,"limit":1,"stored":true}
  $ qvs mac-learning set sw1 --aging 301; qvs prop get sw1 com.quillon.vswitch.macLearning --host  => sw1: changed | 2d0100ff01000000
  $ for more in '--aging 1000001' ''; do qvs mac-learning set sw1 $more; done
  qvs: --aging: '1000001' is not a number from 0 to 1000000
  qvs: at least one of --aging, --limit is needed
  ? 2
  $ qvs prop set sw1 com.quillon.vswitch.macLearning --hex 2c0100ff010000 --host; qvs mac-learning get sw1; qvs mac-learning set sw1 --aging 5 --limit 6; qvs prop get sw1 com.quillon.vswitch.macLearning --host; qvs prop set sw1 com.quillon.vswitch.macLearning --hex ffffff0001000000 --host; qvs mac-learning set sw1 --limit 9
  sw1 host com.quillon.vswitch.macLearning: changed
  qvs: switch 'sw1': MAC learning: Failure (0xbad0001); what is stored as com.quillon.vswitch.macLearning is no such record (7 bytes, not 8); 'qvs prop clear sw1 com.quillon.vswitch.macLearning --host' removes it
  sw1: changed
  0500000006000000
  sw1 host com.quillon.vswitch.macLearning: changed
  qvs: switch 'sw1': MAC learning: the stored aging of 16777215 seconds cannot be stored again, at most 1000000 fit; give --aging
  ? 2

The same of a port. The first byte is what the port's security says when the record is stored.

  $ qvs port mac-learning get sw1 port0 --json  => {"switch":"sw1","port":"port0","learning":false,"flooding":false,"limit":4096,"limitPolicy":"allow","stored":false}
  $ qvs port mac-learning set sw1 port0 --learning on; qvs port mac-learning set sw1 port0 --limit 4096; qvs prop list sw1 --port port0 | grep macM
  sw1/port0: changed
  sw1/port0: unchanged
  port   port0  com.quillon.vswitch.port.macManagement   CONFIG    11      0001000010000000000000
  $ qvs port security set sw1 port0 --promiscuous deny; qvs port mac-learning set sw1 port0 --flooding on --limit 16 --limit-policy deny; qvs prop get sw1 com.quillon.vswitch.port.macManagement --port port0
  sw1/port0: changed
  sw1/port0: changed
  0101011000000001000000
  $ qvs port security set sw1 port0 --mac-change deny; qvs port mac-learning set sw1 port0 --flooding on; qvs prop get sw1 com.quillon.vswitch.port.macManagement --port port0
  sw1/port0: changed
  sw1/port0: changed
  0001011000000001000000
  $ qvs port mac-learning get sw1 port0
  switch:        sw1
  port:          port0
  learning:      on
  flooding:      on
  limit:         16
  limit policy:  deny
  stored:        yes
  $ qvs prop set sw1 com.quillon.vswitch.port.macManagement --port port0 --hex 010203; qvs port mac-learning set sw1 port0 --limit 1; qvs port mac-learning set sw1 port0 --learning on --flooding off --limit 1 --limit-policy deny; qvs prop get sw1 com.quillon.vswitch.port.macManagement --port port0
  sw1/port0 com.quillon.vswitch.port.macManagement: changed
  qvs: switch 'sw1': port 'port0': MAC learning: Failure (0xbad0001); what is stored as com.quillon.vswitch.port.macManagement is no such record (3 bytes, not 11); 'qvs prop clear sw1 com.quillon.vswitch.port.macManagement --port port0' removes it
  sw1/port0: changed
  0001000100000001000000
  $ qvs port mac-learning set sw1 port0  => [2] qvs: at least one of --learning, --flooding, --limit, --limit-policy is needed

The switches of a host.

  $ for noun in learn-static overlay-cache static-mac-allow; do echo $(qvs $noun get sw1 --json; qvs $noun set sw1 off; qvs $noun get sw1 --json; qvs $noun set sw1 on; qvs $noun set sw1 on; qvs $noun get sw1); done
  {"switch":"sw1","enabled":false,"stored":false} sw1: changed {"switch":"sw1","enabled":false,"stored":true} sw1: changed sw1: unchanged on
  {"switch":"sw1","enabled":false,"stored":false} sw1: changed {"switch":"sw1","enabled":false,"stored":true} sw1: changed sw1: unchanged on
  {"switch":"sw1","enabled":false,"stored":false} sw1: changed {"switch":"sw1","enabled":false,"stored":true} sw1: changed sw1: unchanged on
  $ qvs prop list sw1 --host | grep macLearning; qvs learn-static set sw1 maybe
  host   -     com.quillon.vswitch.macLearning                 CONFIG  8       ffffff0001000000
  host   -     com.quillon.vswitch.macLearning.learnStatic     CONFIG  5       true
  host   -     com.quillon.vswitch.macLearning.overlay.cache   CONFIG  5       true
  host   -     com.quillon.vswitch.macLearning.staticMACAllow  CONFIG  5       true
  qvs: STATE: 'maybe' is none of off, on
  ? 2

How multicast is filtered. While nothing is stored the kernel says it: the old way up to version 106.

  $ qvs switch create new --version 107; qvs mcast mode get sw1 --json; qvs mcast mode get new --json
  new: changed
  {"switch":"sw1","mode":"legacy","stored":false}
  {"switch":"new","mode":"snooping","stored":false}
  $ qvs mcast mode set sw1 snooping; qvs mcast mode set sw1 snooping; qvs mcast mode get sw1; qvs prop list sw1 | grep multicastF
  sw1: changed
  sw1: unchanged
  snooping
  global  -     com.quillon.vswitch.multicastFilter  CONFIG  9       snooping
  $ qvs mcast mode set sw1 legacy; qvs mcast mode get sw1 --json; qvs prop get sw1 com.quillon.vswitch.multicastFilter
  sw1: changed
  {"switch":"sw1","mode":"legacy","stored":true}
  legacyFiltering
  $ qvs mcast mode set new legacy  => [1] qvs: switch 'new': multicast filter mode: Not supported (0xbad0020); switches of version 107 and later have it elsewhere
  $ qvs mcast mode set sw1 flood  => [2] qvs: MODE: 'flood' is none of legacy, snooping
  $ qvs prop clear sw1 com.quillon.vswitch.multicastFilter; qvs mcast mode get sw1; grep -c 'GetMcastFilterMode.*-> 0' ../trace
  sw1 com.quillon.vswitch.multicastFilter: changed
  legacy
  3

Addresses that are always let in: a count and six bytes each.

  $ qvs mcast list get sw1; qvs mcast list clear sw1  => qvs: switch 'sw1': multicast addresses: Not found (0xbad0003) | sw1: unchanged
  $ qvs mcast list set sw1 01:00:5e:00:00:fb 33:33:00:00:00:FB; qvs mcast list set sw1 01:00:5E:00:00:fb 33:33:00:00:00:fb  => sw1: changed | sw1: unchanged
  $ qvs prop list sw1 --host | grep mcast; qvs mcast list get sw1
  host   -     com.quillon.vswitch.mcast.user.addresses        CONFIG  13      0201005e0000fb3333000000fb
  01:00:5e:00:00:fb
  33:33:00:00:00:fb
  $ qvs mcast list set sw1 $(printf '01:00:5e:00:00:%02x ' $(seq 25)); qvs prop get sw1 com.quillon.vswitch.mcast.user.addresses --host --raw - | wc -c; qvs mcast list get sw1 | tail -n 1
  sw1: changed
  151
  01:00:5e:00:00:19
  $ qvs mcast list set sw1 $(printf '01:00:5e:00:00:%02x ' $(seq 26))  => [2] qvs: 26 multicast addresses, at most 25 fit
  $ for more in 01:00:5e:00:00 '' '01:00:5e:00:00:01 --empty'; do qvs mcast list set sw1 $more; done
  qvs: '01:00:5e:00:00' is no MAC address, like 01:00:5e:00:00:01
  qvs: one of MAC, --empty is needed
  qvs: MAC and --empty exclude each other
  ? 2
  $ qvs port mcast set sw1 port0 --empty; qvs port mcast set sw1 port0 --empty; qvs port mcast get sw1 port0; qvs prop list sw1 --port port0 | grep mcast
  sw1/port0: changed
  sw1/port0: unchanged
  port   port0  com.quillon.vswitch.port.mcast.user.addresses.override  CONFIG    1       -

The receive filter's instructions.

  $ qvs rcf get sw1 --json; qvs rcf set sw1 ebpf; qvs rcf set sw1 ebpf; qvs rcf get sw1; qvs prop list sw1 | grep rcf
  {"switch":"sw1","type":"cbpf","stored":false}
  sw1: changed
  sw1: unchanged
  ebpf
  global  -     com.quillon.vswitch.rcf.INSNType  CONFIG  5       ebpf
  $ qvs rcf set sw1 cbpf --json; qvs rcf get sw1 --json; qvs prop get sw1 com.quillon.vswitch.rcf.INSNType --hex; qvs rcf set sw1 jit
  {"switch":"sw1","changed":true}
  {"switch":"sw1","type":"cbpf","stored":true}
  6362706600
  qvs: TYPE: 'jit' is none of cbpf, ebpf
  ? 2
