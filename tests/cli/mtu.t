  $ qvs switch create sw1 --uplinks 2 --ports 1  => sw1: changed
  $ qvs mtu get sw1  => switch:  sw1 | mtu:     1500 | stored:  no
  $ qvs mtu set sw1 9000  => sw1: changed
  $ qvs mtu set sw1 9000 --json  => {"switch":"sw1","changed":false}
  $ qvs mtu get sw1 --json  => {"switch":"sw1","mtu":9000,"stored":true}
  $ qvs prop get sw1 com.quillon.vswitch.mtu; qvs prop get sw1 com.quillon.etherswitch.mtu  => 28230000 | 28230000
  $ treesh -e get /net/pNics/pnic1/mtu  => mtu:9000

A NIC that is bound later gets it from the next set, although nothing else changes.

  $ qvs uplink add sw1 late; treesh -e get /net/pNics/pnic2/mtu; qvs mtu set sw1 9000; treesh -e get /net/pNics/pnic2/mtu  => sw1/late: changed | mtu:1500 | sw1: unchanged | mtu:9000

What was left behind differs from what is set.

  $ qvs prop set sw1 com.quillon.etherswitch.mtu --hex dc050000  => sw1 com.quillon.etherswitch.mtu: changed
  $ qvs mtu set sw1 9000  => sw1: changed

  $ for mtu in 1279 9001; do qvs mtu set sw1 $mtu; done  => [2] qvs: MTU: 1279 is below 1280 | qvs: MTU: 9001 is beyond 9000
  $ qvs mtu set sw1 1280 && qvs mtu get sw1  => sw1: changed | switch:  sw1 | mtu:     1280 | stored:  yes
  $ qvs mtu set sw9 1500  => [3] qvs: switch 'sw9': Not found (0xbad0003)

Clearing goes back to the default everywhere.

  $ qvs mtu clear sw1; qvs mtu get sw1; treesh -e get /net/pNics/pnic1/mtu; qvs mtu clear sw1; qvs mtu set sw1 1280  => sw1: changed | switch:  sw1 | mtu:     1500 | stored:  no | mtu:1500 | sw1: unchanged | sw1: changed

A step that fails leaves the old value.

  $ qvs-host fault add 'set /net/pNics/pnic2/mtu 9000' --exit 1; qvs mtu set sw1 9000; qvs-host fault clear  => treesh: a fault made this request fail | qvs: switch 'sw1': MTU: Failure (0xbad0001)
  $ qvs mtu get sw1; for nic in 0 1 2; do treesh -e get /net/pNics/pnic$nic/mtu; done  => switch:  sw1 | mtu:     1280 | stored:  yes | mtu:1280 | mtu:1280 | mtu:1280
