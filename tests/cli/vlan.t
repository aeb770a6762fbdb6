  $ qvs switch create sw1 --ports 2  => sw1: changed

Private VLANs of a switch.

  $ qvs pvlan get sw1  => [3] qvs: switch 'sw1': private VLANs: Not found (0xbad0003)
  $ qvs pvlan set sw1 100:101:isolated 100:100:promiscuous 0x64:4094:community; qvs pvlan set sw1 100:101:isolated 100:100:promiscuous 100:4094:community --json
  sw1: changed
  {"switch":"sw1","changed":false}
  $ qvs prop list sw1 --json | grep pvlan  => {"scope":"global","port":null,"key":"com.quillon.vswitch.pvlanMap","class":["POLICY"],"length":24,"text":null,"value":"ZABlAAIAAABkAGQAAQAAAGQA/g8DAAAA"}
  $ qvs pvlan get sw1
  PRIMARY  SECONDARY  TYPE
  100      101        isolated
  100      100        promiscuous
  100      4094       community
  $ for map in 100:4095:isolated 100:101:island 100:101 1:2:3:4; do qvs pvlan set sw1 $map; done
  qvs: VLAN: '4095' is no VLAN id, which go from 0 to 4094
  qvs: VLAN: 'island' is none of promiscuous, isolated, community
  qvs: VLAN: '100:101' is not PRIMARY:SECONDARY:TYPE
  qvs: VLAN: '3:4' is none of promiscuous, isolated, community
  ? 2
  $ qvs prop set sw1 com.quillon.vswitch.pvlanMap --hex 0a000b00090000000100020000000000 && qvs pvlan get sw1
  sw1 com.quillon.vswitch.pvlanMap: changed
  PRIMARY  SECONDARY  TYPE
  10       11         8
  1        2          0

VLANs of a port. What is stored is literal: flags, id, count, ranges; the priority beside it.

  $ qvs port vlan get sw1 port0 --json  => {"switch":"sw1","port":"port0","vlan":0,"private":false,"trunk":false,"ranges":[],"priority":null}
  $ qvs port vlan clear sw1 port0; qvs port vlan set sw1 port0 --id 100; qvs prop get sw1 com.quillon.vswitch.port.vlan --port port0
  sw1/port0: unchanged
  sw1/port0: changed
  0000640000000000
  $ qvs port vlan get sw1 port0
  switch:    sw1
  port:      port0
  VLAN:      100
  private:   no
  trunk:     no
  ranges:    -
  priority:  -
  $ qvs port vlan set sw1 port0 --id 0x65 --private --priority 0; for key in vlan priority; do qvs prop get sw1 com.quillon.vswitch.port.$key --port port0; done
  sw1/port0: changed
  0600650000000000
  00000000
  $ qvs port vlan get sw1 port0 --json  => {"switch":"sw1","port":"port0","vlan":101,"private":true,"trunk":false,"ranges":[],"priority":0}
  $ qvs port vlan set sw1 port0 --id 101 --private --priority 0  => sw1/port0: unchanged
  $ qvs port vlan set sw1 port0 --id 101 --private --priority 7  => sw1/port0: changed
  $ qvs port vlan set sw1 port0 --trunk 1-100,200; for key in vlan priority; do qvs prop get sw1 com.quillon.vswitch.port.$key --port port0; done
  sw1/port0: changed
  010000000000020001006400c800c800
  qvs: switch 'sw1': port 'port0': port property 'com.quillon.vswitch.port.priority': Not found (0xbad0003)
  ? 3
  $ qvs port vlan get sw1 port0 --json  => {"switch":"sw1","port":"port0","vlan":0,"private":false,"trunk":true,"ranges":["1-100","200"],"priority":null}
  $ qvs port vlan set sw1 port0 --trunk all; qvs port vlan set sw1 port0 --trunk 0-4094  => sw1/port0: changed | sw1/port0: unchanged
  $ qvs prop list sw1 --port port0 | grep vlan  => port   port0  com.quillon.vswitch.port.vlan            POLICY    12      01000000000001000000fe0f
  $ qvs prop set sw1 com.quillon.vswitch.port.priority --hex 05000000 --port port0; qvs port vlan set sw1 port0 --trunk all
  sw1/port0 com.quillon.vswitch.port.priority: changed
  sw1/port0: changed
  $ qvs port vlan clear sw1 port0; qvs port vlan get sw1 port0 | sed -n 3p
  sw1/port0: changed
  VLAN:      none

Refused, and nothing stored.

  $ for id in 4095 5000; do qvs port vlan set sw1 port0 --id $id; done
  qvs: --id: '4095' is no VLAN id, which go from 0 to 4094
  qvs: --id: '5000' is no VLAN id, which go from 0 to 4094
  ? 2
  $ for trunk in 5-3 1-4095 1,,2 '' 1-2-3; do qvs port vlan set sw1 port0 --trunk "$trunk"; done
  qvs: --trunk: '5-3' runs backwards; the first id is at most the last
  qvs: --trunk: '4095' is no VLAN id, which go from 0 to 4094
  qvs: --trunk: '' is no VLAN id, which go from 0 to 4094
  qvs: --trunk: names no VLAN; all of them are 'all'
  qvs: --trunk: '2-3' is no VLAN id, which go from 0 to 4094
  ? 2
  $ qvs port vlan set sw1 port0 --trunk "$(seq -s, 1 9 | sed 's/.*/&,&,&,&/')$(printf ',1%.0s' $(seq 65500))"  => [2] qvs: --trunk: 65536 ranges, at most 65535 fit
  $ for more in '--priority 8' --private; do qvs port vlan set sw1 port0 $more; done
  qvs: --priority: '8' is not a number from 0 to 7
  qvs: at least one of --id, --trunk, --priority is needed
  ? 2
  $ qvs prop get sw1 com.quillon.vswitch.port.vlan --port port0  => 0000000000000000
  $ printf 'port vlan set sw1 port1 --trunk %s\nport vlan get sw1 port1\n' "1$(printf ',1%.0s' $(seq 65534))" | qvs batch - | wc -c  => 131187
  $ qvs prop set sw1 com.quillon.vswitch.port.vlan --hex 0000000000000200010001 --port port0; qvs port vlan get sw1 port0
  sw1/port0 com.quillon.vswitch.port.vlan: changed
  qvs: switch 'sw1': port 'port0': VLAN policy: Failure (0xbad0001); what is stored as com.quillon.vswitch.port.vlan is no such record (11 bytes); 'qvs prop clear sw1 com.quillon.vswitch.port.vlan --port port0' removes it
  ? 1

Nested tagging.

  $ qvs port nested-vlan get sw1 port0; qvs port nested-vlan get sw1 port0 --json  => off | {"switch":"sw1","port":"port0","enabled":false,"stored":false}
  $ qvs port nested-vlan set sw1 port0 on; qvs port nested-vlan set sw1 port0 on; qvs port nested-vlan get sw1 port0  => sw1/port0: changed | sw1/port0: unchanged | on
  $ qvs prop list sw1 --port port0 | grep Nested  => port   port0  com.quillon.vswitch.port.vlanNestedTag   CONFIG    4       01000000
  $ qvs prop set sw1 com.quillon.vswitch.port.vlanNestedTag --hex 00010000 --port port0; qvs port nested-vlan get sw1 port0
  sw1/port0 com.quillon.vswitch.port.vlanNestedTag: changed
  on
  $ qvs port nested-vlan set sw1 port0 off --json; qvs port nested-vlan get sw1 port0 --json
  {"switch":"sw1","port":"port0","changed":true}
  {"switch":"sw1","port":"port0","enabled":false,"stored":true}

The help knows commands of three words.

  $ qvs help port nested-vlan
  qvs port vlan: the VLANs of a port
  
    qvs port nested-vlan get  print whether nested VLAN tagging is on
    qvs port nested-vlan set  switch nested VLAN tagging on or off
  $ qvs port vlan nix  => [2] qvs: no such command: port vlan 'nix'; 'qvs help port vlan' lists them
  $ qvs port --json vlan get sw1 nix  => [3] qvs: switch 'sw1': port 'nix': Not found (0xbad0003)
  $ qvs port nested-vlan 2>&1 | sed -n 1p  => qvs port vlan: the VLANs of a port
  $ try() { COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _qvs; echo "${COMPREPLY[@]}"; }; . <(qvs completion bash); try qvs port vlan ''; try qvs port vlan set sw1 p --t; try qvs port vlan get sw1 port; try qvs mirror list sw1 --port port
  get set clear
  --trunk --trace --timeout
  port0 port1
  port0 port1
