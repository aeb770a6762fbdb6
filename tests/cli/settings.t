  $ qvs switch create sw1 --uplinks 2 --ports 2  => sw1: changed

Every setting: what holds while nothing is stored, a change that is told once, what is stored, and two clears.

  $ try() { at="sw1${3:+ $3}"; for words in "get $at --json" "set $at $2" "set $at $2" "get $at --json" "clear $at" "clear $at"; do qvs $1 $words; done; qvs $1 get $at --stored; echo $?; }
  $ qvs mtu get sw1 --json; qvs mtu set sw1 1400; qvs mtu set sw1 1400; qvs mtu get sw1 --json; qvs mtu clear sw1 2>&1 | head -n 1
  $ try pvlan '100:101:isolated 100:100:promiscuous 0x64:4094:community'
  $ try 'port vlan' '--id 100 --trunk 1-100,200,0x12c --priority 0' port0
  $ try 'port nested-vlan' on port0
  $ try 'port security' '--forged deny --mac-change deny' port0
  $ try 'port filter' '--flags use-ladrf,multicast,unicast --addresses 01:00:5e:00:00:FB,33:33:00:00:00:01' port0
  $ try teaming '--active uplink1,uplink0 --balance source-mac --link-state on --best-effort on'
  $ try 'port teaming' '--active uplink1 --standby uplink0 --balance explicit --notify on' port0
  $ try 'port teaming-override' gold port0
  $ try 'port tx-uplink' always port0
  $ printf 'a%.0s' $(seq 5496) >entries; try ls-teaming '--file entries' | sed 's/YWFhYWFh[^"]*/.../g'
  $ try 'port ls-teaming' silver port0
  $ try mac-learning '--aging 300 --limit 1'
  $ try 'port mac-learning' '--learning on --limit 16 --limit-policy deny' port0
  $ for noun in learn-static overlay-cache static-mac-allow; do try $noun on; done
  $ try 'mcast mode' snooping
  $ try 'mcast list' '01:00:5e:00:00:fb 33:33:00:00:00:FB'
  $ try 'port mcast' --empty port0
  $ try rcf ebpf
  $ try 'health team' '--interval 5 --expected ip-hash'
  $ printf 'p%.0s' $(seq 512) >param; try 'health vlan-mtu' '--interval 1 --parameter param' | sed 's/cHBwcHBw[^"]*/.../g'
  $ try discovery '--operation both --protocol lldp'
  $ try 'port ipfix' '--idle 30 --active 60 --rate 100 --internal-only on --vnic-only on --obs-domain 7 --source 192.0.2.1 --obs-id host-3 --collectors 192.0.2.9:4739,[2001:db8::9]:65535' port0

What is not given is kept; a member goes with none, all of them start anew with --reset.

  $ qvs port vlan set sw1 port0 --id 5 --trunk all; qvs port vlan set sw1 port0 --priority 3; qvs port vlan set sw1 port0 --trunk none; qvs port vlan get sw1 port0
  $ qvs port vlan set sw1 port0 --priority none; qvs port vlan get sw1 port0 --json; qvs port vlan set sw1 port0 --reset --priority 7; qvs port vlan get sw1 port0 --json
  $ qvs teaming set sw1 --active uplink0; qvs teaming set sw1 --standby uplink1; qvs teaming set sw1 --active ''; qvs teaming get sw1 --stored
  $ qvs teaming set sw1 --reset; qvs teaming get sw1 --json; qvs discovery set sw1 --operation listen; qvs discovery set sw1 --operation down; qvs discovery get sw1
  $ qvs health team set sw1 --interval 5; qvs health team set sw1 --expected other; qvs health team set sw1 --interval none; qvs health team get sw1

Bytes that no member has stay; a record that the members cannot express is left alone.

  $ qvs prop set sw1 com.quillon.vswitch.macLearning --hex 2c0100ff01000000 --host; qvs mac-learning set sw1 --aging 301; qvs prop get sw1 com.quillon.vswitch.macLearning --host
  $ for hex in 2c0100ff010000 ffffff0001000000; do qvs prop set sw1 com.quillon.vswitch.macLearning --hex $hex --host; qvs mac-learning get sw1 --stored; qvs mac-learning set sw1 --limit 9; qvs prop get sw1 com.quillon.vswitch.macLearning --host; done; qvs mac-learning get sw1 --json
  $ qvs mac-learning set sw1 --reset --limit 9; qvs prop get sw1 com.quillon.vswitch.macLearning --host
  $ qvs prop set sw1 com.quillon.vswitch.port.vlan --hex 0000000000000200010001 --port port1; qvs port vlan get sw1 port1
  $ qvs prop set sw1 com.quillon.vswitch.teaming --hex "070000000000000000000000ffffffff01000000ffffffff$(printf '6100%.0s' $(seq 1296))"; qvs teaming get sw1 --json; qvs teaming set sw1 --notify on

Nothing is stored of what is refused.

  $ no() { qvs "$@"; echo "$?"; }; no port vlan set sw1 port0; no port vlan set sw1 port0 --id 4095; no port vlan set sw1 port0 --trunk 5-3; no port vlan set sw1 port0 --trunk ''; no port vlan set sw1 port0 --reset --private on; no port vlan set sw1 port0 --private yes; no port vlan set sw1 port0 --id
  $ no pvlan set sw1; no pvlan set sw1 100:101; no pvlan set sw1 100:101:island; no pvlan set sw1 1:2:3:4; no pvlan set sw1 --empty 1:2:isolated
  $ no teaming set sw1 --active "$(seq -s, 33)"; no teaming set sw1 --reset --active a,b --standby a; no teaming set sw1 --reset --active a,,b; no teaming set sw1 --reset --balance best
  $ no mcast list set sw1 $(printf '01:00:5e:00:00:%02x ' $(seq 26)); no mcast list set sw1 01:00:5e; no port filter set sw1 port0 --addresses 01:00:5e:00:00:01; no rcf set sw1 jit; no mtu set sw1 9001; no port nested-vlan set sw1 port0 yes
  $ head -c 511 param >short; for file in short /dev/zero nowhere; do no health vlan-mtu set sw1 --parameter $file; done; no ls-teaming set sw1 --file short; no port ipfix set sw1 port0 --collectors 192.0.2.9; no port teaming-override set sw1 port0 ''; no port teaming-override set sw1 port0 $(printf 'n%.0s' $(seq 81))
  $ qvs port vlan get sw1 port0 --json; qvs port teaming-override get sw1 port0 --json

Bytes alone, a switch by its identifier, what runs.

  $ qvs ls-teaming set sw1 --file entries; qvs ls-teaming get sw1 --raw - | cmp - entries; qvs ls-teaming get sw1 | grep -v '^  '; qvs health vlan-mtu set sw1 --parameter param; qvs health vlan-mtu get sw1 --raw - | cmp - param; qvs health vlan-mtu get sw1
  $ id=$(qvs switch list --json | grep -o '"id":"[^"]*' | cut -d'"' -f4); qvs teaming set sw1 --reset --shotgun on; qvs teaming get "$id" --by-id | tail -n 2; qvs ls-teaming get nowhere --by-id
  $ qvs mcast mode get sw1 --kernel; qvs mcast mode get sw1 --kernel --stored; qvs switch create new --version 107; qvs mcast mode set new legacy

What refers to something that is not there is stored with a warning, and not with --strict.

  $ qvs teaming set sw1 --reset --active uplink7,uplink0 --strict; qvs teaming set sw1 --active uplink7,uplink0; qvs port vlan set sw1 port0 --reset --id 7 --private on; qvs pvlan set sw1 7:8:isolated; qvs port vlan set sw1 port0 --id 8 --strict
  $ qvs mirror add sw1 m --type dvport --destinations port1 --sources-in port7 --strict; qvs mirror add sw1 m --type dvport --destinations port1; qvs port remove sw1 port1 --strict; qvs port remove sw1 port1; qvs uplink remove sw1 uplink0 --strict; qvs uplink remove sw1 uplink1; qvs uplink remove sw1 uplink0
  $ printf '%s\n' 'uplink add sw1 late' 'teaming set sw1 --reset --active late --strict' | qvs batch -

A sink port is a flag of the filter.

  $ qvs port sink get sw1 port0 --json; qvs port sink set sw1 port0 on; qvs port sink set sw1 port0 on; qvs port sink get sw1 port0; qvs port filter get sw1 port0 --json; qvs port filter set sw1 port0 --flags broadcast; qvs port sink get sw1 port0 --json

Help and completion.

  $ qvs port vlan set --help
  $ qvs pvlan set --help | head -n 3; qvs help port nested-vlan; qvs port vlan nix
  $ complete_() { COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _qvs; echo "${COMPREPLY[@]}"; }; . <(qvs completion bash); complete_ qvs port vlan ''; complete_ qvs port vlan set sw1 p --t; complete_ qvs port vlan get sw1 port; complete_ qvs mirror list sw1 --port port
