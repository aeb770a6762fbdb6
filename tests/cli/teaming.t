  $ qvs switch create sw1 --uplinks 2 --ports 2  => sw1: changed

The policy of a switch. The record: balance, link selection, a word nobody knows, behaviour, the two counts, names.

  $ qvs teaming get sw1; qvs teaming clear sw1  => qvs: switch 'sw1': teaming policy: Not found (0xbad0003) | sw1: unchanged
  $ qvs teaming set sw1 --active uplink1,uplink0 --standby spare --balance source-mac --link-state --beacon --notify --best-effort; qvs teaming set sw1 --active uplink1,uplink0 --standby spare --balance source-mac --link-state --beacon --notify --best-effort --json
  sw1: changed
  {"switch":"sw1","changed":false}
  $ qvs prop get sw1 com.quillon.vswitch.teaming --raw stored; bytes <stored; qvs prop list sw1 | grep -o 'vswitch.teaming *[A-Z]*'
  0:02000000a0 12:24000000020000000100000075706c696e6b31 105:75706c696e6b30 186:7370617265 (2616 bytes)
  vswitch.teaming     CONFIG
  $ qvs teaming get sw1
  switch:            sw1
  balance:           source-mac
  active:            uplink1 uplink0
  standby:           spare
  link state:        yes
  beacon:            yes
  notify switch:     yes
  rolling failover:  no
  best effort:       yes
  shotgun:           no
  $ qvs teaming get "$(qvs switch list --json | grep -o '"id":"[^"]*' | cut -d'"' -f4)" --by-id | tail -n 1  => shotgun:           no

A set replaces it all but the word.

  $ qvs prop set sw1 com.quillon.vswitch.teaming --hex "$(head -c 8 stored | hex)09080706$(tail -c 2604 stored | hex)"
  sw1 com.quillon.vswitch.teaming: changed
  $ qvs teaming set sw1 --rolling --shotgun --balance none; qvs prop get sw1 com.quillon.vswitch.teaming --raw - | bytes  => sw1: changed | 8:0908070618 (2616 bytes)
  $ for balance in source-ip source-port explicit port-load; do qvs teaming set sw1 --balance $balance >/dev/null; qvs prop get sw1 com.quillon.vswitch.teaming | cut -c -8; done  => 01000000 | 03000000 | 04000000 | 05000000
  $ qvs teaming set sw1; qvs teaming get sw1 --json
  sw1: changed
  {"switch":"sw1","balance":"source-port","active":[],"standby":[],"linkState":false,"beacon":false,"notify":false,"rolling":false,"bestEffort":false,"shotgun":false}
  $ qvs teaming set sw1 --active "$(seq -s, 32)"; qvs teaming get sw1 --json | grep -o '"active.*"32"]'
  sw1: changed
  "active":["1","2","3","4","5","6","7","8","9","10","11","12","13","14","15","16","17","18","19","20","21","22","23","24","25","26","27","28","29","30","31","32"]
  $ qvs teaming set sw1 --active a,$(printf 'n%.0s' $(seq 80)); qvs prop get sw1 com.quillon.vswitch.teaming | cut -c 209-374
  sw1: changed
  006e6e6e6e6e6e6e6e6e6e6e6e6e6e6e6e6e6e6e6e6e6e6e6e6e6e6e6e6e6e6e6e6e6e6e6e6e6e6e6e6e6e6e6e6e6e6e6e6e6e6e6e6e6e6e6e6e6e6e6e6e6e6e6e6e6e6e6e6e6e6e6e6e6e6e6e6e6e6e6e0000

Refused, and nothing stored.

  $ qvs prop get sw1 com.quillon.vswitch.teaming >before; for names in "$(seq -s, 33)" "$(seq -s, 30) --standby x,y,z" a,,b 'a,b --standby a'; do qvs teaming set sw1 --active $names; done
  qvs: 33 uplinks: active and standby together, at most 32 fit
  qvs: 33 uplinks: active and standby together, at most 32 fit
  qvs: uplink name: may not be empty
  qvs: uplink 'a': given twice
  ? 2
  $ qvs teaming set sw1 --active a,$(printf 'n%.0s' $(seq 81))  => [2] qvs: uplink name 'nnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnn': 81 bytes, at most 80 fit
  $ qvs teaming set sw1 --balance best  => [2] qvs: --balance: 'best' is none of none, source-ip, source-mac, source-port, explicit, port-load
  $ qvs prop get sw1 com.quillon.vswitch.teaming | cmp before -

A record with counts beyond it and with numbers nobody knows.

  $ qvs prop set sw1 com.quillon.vswitch.teaming --hex "070000000000000000000000ffffffff01000000ffffffff$(printf '6100%.0s' $(seq 1296))"; qvs teaming get sw1 --json
  sw1 com.quillon.vswitch.teaming: changed
  qvs: warning: the record counts 4294967296 uplinks and holds 32
  {"switch":"sw1","balance":"7","active":["a"],"standby":["","a","","a","","a","","a","","a","","a","","a","","a","","a","","a","","a","","a","","a","","a","","a",""],"linkState":false,"beacon":false,"notify":true,"rolling":true,"bestEffort":true,"shotgun":true}

The policy of a port, which may be stored in part.

  $ qvs port teaming get sw1 port0; qvs port teaming clear sw1 port0  => qvs: switch 'sw1': port 'port0': teaming policy: Not found (0xbad0003) | sw1/port0: unchanged
  $ qvs port teaming set sw1 port0 --active uplink1 --standby uplink0 --balance explicit --notify; qvs port teaming set sw1 port0 --active uplink1 --standby uplink0 --balance explicit --notify
  sw1/port0: changed
  sw1/port0: unchanged
  $ qvs prop get sw1 com.quillon.vswitch.port.teaming.policy --port port0 --raw - | tee stored | head -c 35 | hex
  04000000000000000000000020000000010000000100000075706c696e6b3100000000
  $ qvs port teaming get sw1 port0 | head -n 4
  switch:            sw1
  port:              port0
  balance:           explicit
  active:            uplink1
  $ for size in 24 8 7; do qvs prop set sw1 com.quillon.vswitch.port.teaming.policy --hex $(head -c $size stored | hex) --port port0 >/dev/null; qvs port teaming get sw1 port0 --json; done
  {"switch":"sw1","port":"port0","balance":"explicit","active":[""],"standby":[""],"linkState":false,"beacon":false,"notify":true,"rolling":false,"bestEffort":false,"shotgun":false}
  {"switch":"sw1","port":"port0","balance":"explicit","active":[],"standby":[],"linkState":false,"beacon":false,"notify":false,"rolling":false,"bestEffort":false,"shotgun":false}
  qvs: switch 'sw1': port 'port0': teaming policy: Failure (0xbad0001); what is stored as com.quillon.vswitch.port.teaming.policy is no such record (7 bytes); 'qvs prop clear sw1 com.quillon.vswitch.port.teaming.policy --port port0' removes it
  ? 1

The name of the policy that overrides it.

  $ qvs port teaming-override get sw1 port0; qvs port teaming-override clear sw1 port0  => qvs: switch 'sw1': port 'port0': teaming override: Not found (0xbad0003) | sw1/port0: unchanged
  $ qvs port teaming-override set sw1 port0 gold; qvs port teaming-override set sw1 port0 gold --json; qvs prop get sw1 com.quillon.vswitch.port.teaming.override --port port0 --hex
  sw1/port0: changed
  {"switch":"sw1","port":"port0","changed":false}
  676f6c6400
  $ qvs port teaming-override set sw1 port0 $(printf 'n%.0s' $(seq 80)); qvs port teaming-override get sw1 port0
  sw1/port0: changed
  nnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnn
  $ qvs port teaming-override set sw1 port0 $(printf 'n%.0s' $(seq 81)); qvs port teaming-override set sw1 port0 ''
  qvs: teaming override 'nnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnn': 81 bytes, at most 80 fit
  qvs: teaming override: may not be empty
  ? 2

Always through its uplink, or not.

  $ qvs port tx-uplink get sw1 port0  => [3] qvs: switch 'sw1': port 'port0': transmit uplink mode: Not found (0xbad0003)
  $ qvs port tx-uplink set sw1 port0 always; qvs port tx-uplink set sw1 port0 always; qvs prop get sw1 com.quillon.vswitch.port.txUplink --port port0 --hex
  sw1/port0: changed
  sw1/port0: unchanged
  616c7761797300
  $ qvs port tx-uplink get sw1 port0; qvs port tx-uplink set sw1 port0 normal; qvs port tx-uplink get sw1 port0 --json
  always
  sw1/port0: changed
  {"switch":"sw1","port":"port0","mode":"normal","stored":true}
  $ qvs port tx-uplink set sw1 port0 sometimes  => [2] qvs: MODE: 'sometimes' is none of normal, always

The table of logical-switch policies: a count and entries of 2748 bytes, given and taken as they are.

  $ qvs ls-teaming get sw1; qvs ls-teaming clear sw1  => qvs: switch 'sw1': logical-switch teaming table: Not found (0xbad0003) | sw1: unchanged
  $ { printf 'a%.0s' $(seq 2748); printf 'b%.0s' $(seq 2748); } >entries; qvs ls-teaming set sw1 --file entries; qvs ls-teaming set sw1 --file - --json <entries
  sw1: changed
  {"switch":"sw1","changed":false}
  $ qvs prop get sw1 com.quillon.vswitch.logicalswitch.teaming --raw - | { head -c 4 | hex; cmp - entries; }
  02000000
  $ qvs ls-teaming get sw1 | grep entry; qvs ls-teaming get sw1 --raw - | cmp - entries; qvs ls-teaming get sw1 --json | cut -c -24
  entry 0 (2748 bytes):
  entry 1 (2748 bytes):
  [
  {"index":0,"entry":"YWFh
  {"index":1,"entry":"YmJi
  ]
  $ qvs ls-teaming set sw1 --file /dev/null; qvs prop get sw1 com.quillon.vswitch.logicalswitch.teaming; qvs ls-teaming get sw1 --json  => sw1: changed | 00000000 | []
  $ head -c 2747 entries >short; qvs ls-teaming set sw1 --file short
  qvs: file 'short': 2747 bytes, but each entry has 2748
  ? 2
  $ for hex in ffffffff "02000000$(printf '61%.0s' $(seq 2748))" 000000; do qvs prop set sw1 com.quillon.vswitch.logicalswitch.teaming --hex $hex >/dev/null; qvs ls-teaming get sw1 2>&1 | grep -v '^  '; done
  qvs: warning: the table counts 4294967295 entries and holds 0
  qvs: warning: the table counts 2 entries and holds 1
  entry 0 (2748 bytes):
  qvs: switch 'sw1': logical-switch teaming table: Failure (0xbad0001); what is stored as com.quillon.vswitch.logicalswitch.teaming is no such record (3 bytes); 'qvs prop clear sw1 com.quillon.vswitch.logicalswitch.teaming' removes it

A port's choice.

  $ qvs port ls-teaming get sw1 port0; qvs port ls-teaming set sw1 port0 silver; qvs port ls-teaming set sw1 port0 silver --json; qvs prop get sw1 com.quillon.vswitch.port.logicalswitch.teaming --port port0 --hex
  qvs: switch 'sw1': port 'port0': logical-switch teaming choice: Not found (0xbad0003)
  sw1/port0: changed
  {"switch":"sw1","port":"port0","changed":false}
  73696c76657200
  $ qvs port ls-teaming set sw1 port0 $(printf 'n%.0s' $(seq 135)); qvs port ls-teaming get sw1 port0 | wc -c; qvs port ls-teaming set sw1 port0 $(printf 'n%.0s' $(seq 136))
  sw1/port0: changed
  136
  qvs: logical-switch teaming policy 'nnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnn...': 136 bytes, at most 135 fit
  ? 2
