Addresses that a lab has the kernel learn, at a time that stands still. Each line below is a run of the host of its own, so whatever it
shows of what was changed before has survived a restart, and counters begin anew; within a line they grow. The zeros at the end of
entries are left out.

  $ cat >lab.json <<<'{"seed": 7, "macLearning": {"aging": 300, "clock": 1000}, "switches": [{"alias": "sw1", "portset": "path1", "uplinks": ["uplink0"], "ports": ["p0", "p1"]}, {"alias": "sw2", "ports": ["p0"]}], "macEntries": [{"switch": "sw1", "port": "uplink0", "mac": "02:00:00:00:0f:ff", "count": 2, "vlan": 100, "age": 20}, {"switch": "sw1", "port": "p0", "mac": "02:00:00:00:00:01", "kind": "static"}, {"switch": "sw1", "port": "p0", "mac": "02:00:00:00:00:02", "age": 290}]}'
  $ cat >table <<<'qvs mac table "$@" --raw - | bytes'
  $ cat >on <<<'qvs-host run --state rack --trace trace $LAB -- sh -c "$1" 2>&1 | sed -E "s/lab .*bad/lab bad/; /^[0-9]/s/(00)*$//"'
  $ LAB='--lab lab.json' sh on 'sh table sw1; sh table sw1 --team; sh table sw1 --port p0; sh table sw2; qvs mac table sw2 --json'
  0:04 8:02 13:0101 20:01000004 28:7030 94:02 99:0202 106:01000004220100007030 180:020000000fff020064000000030000041400000075706c696e6b30 266:020000001000020064000000030000041400000075706c696e6b30 (352 bytes)
  0:02 8:020000000fff020064000000030000041400000075706c696e6b30 94:020000001000020064000000030000041400000075706c696e6b30 (180 bytes)
  0:02 8:02 13:0101 20:01000004 28:7030 94:02 99:0202 106:01000004220100007030 (180 bytes)
  (8 bytes)
  []
  $ sh on 'sh table sw1 --selector 1; sh table sw1 --team --selector 1; sh table sw1 --port p0 --selector 2'  => 0:01 8:02 13:0101 20:01000004 28:7030 (94 bytes) | (8 bytes) | 0:01 8:02 13:0202 20:01000004220100007030 (94 bytes)
  $ LAB='--lab lab.json' sh on 'qvs mac table sw1 --selector 1 --json' | cut -c 1-60  => [ | {"index":0,"entry":"AgAAAAABAQAAAAAAAQAABAAAAABwMAAAAAAAAAAA | ]
  $ sh on 'qvs mac table sw1 --selector 3; qvs mac table sw1 --selector 256; qvs mac table sw1 --port nix; qvs mac table nix'
  qvs: switch 'sw1': Failure (0xbad0001)
  qvs: --selector: '256' is not a number from 0 to 255
  qvs: switch 'sw1': port 'nix': Not found (0xbad0003)
  qvs: switch 'nix': Not found (0xbad0003)

An entry goes to a port by its identifier or its number.

  $ sh on 'qvs mac add sw1 02:00:00:00:00:09 --port p1; qvs mac add sw1 "020000000008 0200 c800" --number 67108866 --json; sh table sw1 --port p1'
  sw1/p1: changed
  {"switch":"sw1","port":"67108866","changed":true}
  0:02 8:02 13:080200c800000002000004 28:7031 94:02 99:0901 106:02000004 114:7031 (180 bytes)
  $ sh on 'qvs mac remove sw1 02:00:00:00:00:09 --number 67108866; qvs mac remove sw1 02:00:00:00:00:08 --port p1; qvs mac remove sw1 "020000000008 0000 c800" --port p1 --json'
  sw1/67108866: changed
  qvs: switch 'sw1': port 'p1': Not found (0xbad0003)
  {"switch":"sw1","port":"p1","changed":true}
  $ sh on 'qvs mac remove sw1 02:00:00:00:00:09 --number 67108866; qvs mac remove sw1 02:00:00:00:00:09 --port p1 --if-exists; sh table sw1 --port p1'  => qvs: switch 'sw1': Not found (0xbad0003) | sw1/p1: unchanged | (8 bytes)
  $ sh on 'qvs mac remove sw1 020000000009 --port nix --if-exists; qvs mac remove sw1 020000000009 --number 9 --if-exists; qvs mac remove sw1 020000000009 --number 67108866 --if-exists'
  qvs: switch 'sw1': port 'nix': Not found (0xbad0003)
  qvs: switch 'sw1': port number 9: Not found (0xbad0003)
  sw1/67108866: unchanged

An address is behind one port of a switch, and another switch may have it too.

  $ sh on 'qvs mac add sw1 02:00:00:00:00:02 --port p1; qvs mac add sw2 02:00:00:00:00:02 --port p0; sh table sw1 --port p0; sh table sw1 --port p1; sh table sw2'
  sw1/p1: changed
  sw2/p0: changed
  0:01 8:02 13:0101 20:01000004 28:7030 (94 bytes)
  0:01 8:02 13:0201 20:02000004 28:7031 (94 bytes)
  0:01 8:02 13:0201 20:04000004 28:7030 (94 bytes)
  $ sh on 'qvs mac remove sw1 02:00:00:00:00:02 --port p0; qvs mac add sw2 02:00:00:00:00:02 --number 67108866'  => qvs: switch 'sw1': port 'p0': Not found (0xbad0003) | qvs: switch 'sw2': Not found (0xbad0003)
  $ sh on 'for entry in 01:00:5e:00:00:01 000000000000 0200000000030300 0200000000030000ff0f; do qvs mac add sw1 $entry --port p0; done' | uniq -c  =>       4 qvs: switch 'sw1': port 'p0': Failure (0xbad0001)
  $ sh on 'qvs mac add sw1 2 --port p0; qvs mac add sw1 '$(printf '00%.0s' $(seq 87))' --port p0'  => qvs: ENTRY: '2' is not a row of pairs of digits | qvs: ENTRY: 87 bytes, 1 to 86 fit

Static contexts hold the static addresses of a port, 59 to a record.

  $ sh on 'qvs mac static sw1 --raw - | bytes; qvs learn-static set sw1 on; qvs mac static sw1 --port p1 --raw - | bytes'  => 0:02 8:01000004000001007030 64:02 69:01 537:02000004000001007031 593:02 598:02 (1066 bytes) | sw1: changed | 0:01 8:02000004010001007031 64:02 69:02 (537 bytes)
  $ cat >more.json <<<'{"macEntries": [{"switch": "sw2", "port": "p0", "mac": "02:00:00:00:01:00", "count": 60, "kind": "static"}]}'
  $ LAB='--lab more.json' sh on 'qvs mac static sw2 --raw - | bytes | cut -c -150; qvs mac static sw2 --raw - | tail -c 490 | bytes; qvs mac static sw1 --port uplink0 --json'
  0:02 8:0400000400003b007030 64:02 69:02000002000000010000000200000001010000020000000102000002000000010300000200000001040000020000000105000002000000010
  17:02000000013a000002000000013b (490 bytes)
  []

How a switch learns: what is stored for it goes before the properties of the host.

  $ sh on 'qvs mac host get --json; qvs mac info sw1 --raw - | bytes; qvs mac info sw1 --raw - | bytes; qvs mac ports sw1 --raw - | bytes'
  {"first":300,"second":0,"fields":{"aging":300,"limit":"unlimited"}}
  0:2c01 10:0100040000000200000002 28:01000000a703 40:52 48:0a01 56:d505 64:6104 72:8304 80:bd03 (88 bytes)
  0:2c01 10:0100040000000200000002 28:010000000507 40:89 48:de01 56:5909 64:0b07 72:ca07 80:1506 (88 bytes)
  0:03 8:01000004000001 22:02000004000001 36:030000040000010002 (50 bytes)
  $ sh on 'qvs port mac-learning set sw1 p1 --learning on --flooding on --limit 2 --limit-policy deny; qvs mac-learning set sw1 --aging 40 --limit 7; qvs mac info sw1 --raw - | head -c 32 | bytes; qvs mac ports sw1 --raw - | bytes'
  sw1/p1: changed
  sw1: changed
  0:28 8:070000000400000002000000020000000100000001 (32 bytes)
  0:03 8:0100000407 22:0200000402 34:0103030000040700000002 (50 bytes)
  $ sh on 'for entry in "201 --port p1" "202 --port p1" "201 --port p1" "203 --port p0" "204 --port p0" "205 --port p0"; do qvs mac add sw1 020000000$entry; done'
  sw1/p1: changed
  qvs: switch 'sw1': port 'p1': No free pointer blocks (deprecated) (0xbad001a)
  sw1/p1: unchanged
  sw1/p0: changed
  sw1/p0: changed
  qvs: switch 'sw1': port 'p0': No free pointer blocks (deprecated) (0xbad001a)
  $ sh on 'for i in 1 2; do qvs mac stats sw1 --port p1 --raw - | bytes; done; qvs mac stats sw1 --raw - | bytes'
  0:020000040200000002000000fb 20:2101 28:5403 36:cc01 44:bc03 (52 bytes)
  0:020000040200000002000000e401 20:db01 28:0406 36:d402 44:ae05 (52 bytes)
  0:03 8:010000040300000007000000be 28:1401 36:a203 44:3703 52:8403 60:020000040200000002000000cd02 80:9502 88:b408 96:dc03 104:a007 112:030000040200000007000000e503 132:5505 140:0701 148:9a04 156:2b04 (164 bytes)
  $ sh on 'qvs port security set sw1 p1 --forged deny --mac-change deny; qvs mac security sw1 --raw - | bytes'  => sw1/p1: changed | 0:03 8:010000040100000002000004070000000300000401 (32 bytes)

Addresses that are too old go, and do not come back.

  $ cat >later.json <<<'{"macLearning": {"clock": 1021}}'
  $ LAB='--lab later.json' sh on 'sh table sw1 --team; qvs mac-learning clear sw1; qvs mac host set --first 20 --second 3; qvs mac host set --second 3; sh table sw1 --team'  => (8 bytes) | sw1: changed | host: changed | host: unchanged | (8 bytes)
  $ sh on 'qvs mac host get --json; qvs mac add sw1 0200000003000200 --port uplink0; sh table sw1 --team; qvs mac add sw2 02:00:00:00:03:00 --port p0'
  {"first":20,"second":3,"fields":{"aging":20,"limit":3}}
  sw1/uplink0: changed
  0:01 8:02000000030002 20:03000004 28:75706c696e6b30 (94 bytes)
  qvs: switch 'sw2': port 'p0': No free pointer blocks (deprecated) (0xbad001a)
  $ cat >later.json <<<'{"macLearning": {"clock": 1041}}'; cat >last.json <<<'{"macLearning": {"clock": 1042}}'
  $ LAB='--lab later.json' sh on 'sh table sw1 --team'; LAB='--lab last.json' sh on 'sh table sw1 --team; qvs mac host set --first 0xffffffffffffffff; qvs mac host get; sh table sw1 --team'
  0:01 8:02000000030002 20:030000041400000075706c696e6b30 (94 bytes)
  (8 bytes)
  host: changed
  aging (seconds):    18446744073709551615
  limit (addresses):  3
  (8 bytes)
  $ sh on 'qvs mac host set; qvs mac host set --second 65536; qvs mac host set --first 0x10000000000000000'
  qvs: at least one of --first and --second is needed
  qvs: --second: '65536' is not a number from 0 to 65535
  qvs: --first: '0x10000000000000000' is not a number of 0 or more

With the switch its entries go, and a new one has none; the same for a port.

  $ sh on 'qvs port remove sw1 p1; qvs port add sw1 p1; sh table sw1 --port p1; qvs switch destroy sw2; qvs switch create sw2 --ports 1; sh table sw2'
  sw1/p1: changed
  sw1/p1: changed
  (8 bytes)
  sw2: changed
  sw2: changed
  (8 bytes)


An address is found by itself, or by its first bytes.

  $ qvs switch create find --ports 1 >/dev/null; qvs mac add find 02:00:00:00:00:07 --port port0 >/dev/null; qvs mac add find 02:00:00:00:00:08 --port port0 >/dev/null; qvs mac table find --mac 02:00:00:00:00:07 --json | jq -c ".[].fields.mac"; qvs mac table find --mac 02:00 --json | jq length; qvs mac table find --mac 03 --json
  "02:00:00:00:00:07"
  2
  []
