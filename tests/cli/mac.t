Addresses that a lab has the kernel learn, at a time that stands still. Each line below is a run of the host of its own, so whatever it
shows of what was changed before has survived a restart, and counters begin anew; within a line they grow. The zeros at the end of
entries are left out.

  $ cat >lab.json <<<'{"seed": 7, "macLearning": {"aging": 300, "clock": 1000}, "switches": [{"alias": "sw1", "portset": "path1", "uplinks": ["uplink0"], "ports": ["p0", "p1"]}, {"alias": "sw2", "ports": ["p0"]}], "macEntries": [{"switch": "sw1", "port": "uplink0", "mac": "02:00:00:00:0f:ff", "count": 2, "vlan": 100, "age": 20}, {"switch": "sw1", "port": "p0", "mac": "02:00:00:00:00:01", "kind": "static"}, {"switch": "sw1", "port": "p0", "mac": "02:00:00:00:00:02", "age": 290}]}'
  $ cat >on <<<'qvs-host run --state rack --trace trace $LAB -- sh -c "$1" 2>&1 | sed -E "s/lab .*bad/lab bad/; /^[0-9]/s/(00)*$//"'
  $ LAB='--lab lab.json' sh on 'qvs mac table sw1; qvs mac table sw1 --team; qvs mac table sw1 --port p0; qvs mac table sw2; qvs mac table sw2 --json'
  INDEX  ENTRY
  0      02000000000101000000000001000004000000007030
  1      02000000000202000000000001000004220100007030
  2      020000000fff020064000000030000041400000075706c696e6b30
  3      020000001000020064000000030000041400000075706c696e6b30
  INDEX  ENTRY
  0      020000000fff020064000000030000041400000075706c696e6b30
  1      020000001000020064000000030000041400000075706c696e6b30
  INDEX  ENTRY
  0      02000000000101000000000001000004000000007030
  1      02000000000202000000000001000004220100007030
  INDEX  ENTRY
  []
  $ sh on 'qvs mac table sw1 --selector 1; qvs mac table sw1 --team --selector 1; qvs mac table sw1 --port p0 --selector 2'
  INDEX  ENTRY
  0      02000000000101000000000001000004000000007030
  INDEX  ENTRY
  INDEX  ENTRY
  0      02000000000202000000000001000004220100007030
  $ LAB='--lab lab.json' sh on 'qvs mac table sw1 --selector 1 --json' | cut -c 1-60; sh on 'qvs mac table sw1 --raw -' | od -An -tx1 -v | head -n 2
  [
  {"index":0,"entry":"AgAAAAABAQAAAAAAAQAABAAAAABwMAAAAAAAAAAA
  ]
   04 00 00 00 00 00 00 00 02 00 00 00 00 01 01 00
   00 00 00 00 01 00 00 04 00 00 00 00 70 30 00 00
  $ sh on 'qvs mac table sw1 --selector 3; qvs mac table sw1 --selector 256; qvs mac table sw1 --team --port p0; qvs mac table sw1 --port nix; qvs mac table nix'
  qvs: switch 'sw1': Failure (0xbad0001)
  qvs: --selector: 256 does not fit a byte
  qvs: --team and --port exclude each other
  qvs: switch 'sw1': port 'nix': Not found (0xbad0003)
  qvs: switch 'nix': Not found (0xbad0003)

An entry goes to a port by its identifier or its number.

  $ sh on 'qvs mac add sw1 02:00:00:00:00:09 --port p1; qvs mac add sw1 "020000000008 0200 c800" --number 67108866 --json; qvs mac table sw1 --port p1'
  sw1/p1: changed
  {"switch":"sw1","port":"67108866","changed":true}
  INDEX  ENTRY
  0      0200000000080200c800000002000004000000007031
  1      02000000000901000000000002000004000000007031
  $ sh on 'qvs mac remove sw1 02:00:00:00:00:09 --number 67108866; qvs mac remove sw1 02:00:00:00:00:08 --port p1; qvs mac remove sw1 "020000000008 0000 c800" --port p1 --json'
  sw1/67108866: changed
  qvs: switch 'sw1': port 'p1': Not found (0xbad0003)
  {"switch":"sw1","port":"p1","changed":true}
  $ sh on 'qvs mac remove sw1 02:00:00:00:00:09 --number 67108866; qvs mac remove sw1 02:00:00:00:00:09 --port p1 --if-exists; qvs mac table sw1 --port p1'
  qvs: switch 'sw1': Not found (0xbad0003)
  sw1/p1: unchanged
  INDEX  ENTRY
  $ sh on 'qvs mac remove sw1 020000000009 --port nix --if-exists; qvs mac remove sw1 020000000009 --number 9 --if-exists; qvs mac remove sw1 020000000009 --number 67108866 --if-exists'
  qvs: switch 'sw1': port 'nix': Not found (0xbad0003)
  qvs: switch 'sw1': port number 9: Not found (0xbad0003)
  sw1/67108866: unchanged

An address is behind one port of a switch, and another switch may have it too.

  $ sh on 'qvs mac add sw1 02:00:00:00:00:02 --port p1; qvs mac add sw2 02:00:00:00:00:02 --port p0; qvs mac table sw1 --port p0; qvs mac table sw1 --port p1; qvs mac table sw2'
  sw1/p1: changed
  sw2/p0: changed
  INDEX  ENTRY
  0      02000000000101000000000001000004000000007030
  INDEX  ENTRY
  0      02000000000201000000000002000004000000007031
  INDEX  ENTRY
  0      02000000000201000000000004000004000000007030
  $ sh on 'qvs mac remove sw1 02:00:00:00:00:02 --port p0; qvs mac add sw2 02:00:00:00:00:02 --number 67108866'
  qvs: switch 'sw1': port 'p0': Not found (0xbad0003)
  qvs: switch 'sw2': Not found (0xbad0003)
  $ sh on 'qvs mac add sw1 01:00:5e:00:00:01 --port p0; qvs mac add sw1 000000000000 --port p0; qvs mac add sw1 0200000000030300 --port p0; qvs mac add sw1 0200000000030000ff0f --port p0'
  qvs: switch 'sw1': port 'p0': Failure (0xbad0001)
  qvs: switch 'sw1': port 'p0': Failure (0xbad0001)
  qvs: switch 'sw1': port 'p0': Failure (0xbad0001)
  qvs: switch 'sw1': port 'p0': Failure (0xbad0001)
  $ sh on 'qvs mac add sw1 02:00:00:00:00:03; qvs mac add sw1 02 --port p0 --number 1; qvs mac add sw1 2 --port p0; qvs mac add sw1 '$(printf '00%.0s' $(seq 87))' --port p0'
  qvs: one of --port, --number is needed
  qvs: --port and --number exclude each other
  qvs: ENTRY: '2' is not a row of pairs of digits
  qvs: ENTRY: 87 bytes, 1 to 86 fit

Static contexts hold the static addresses of a port, 59 to a record.

  $ sh on 'qvs mac static sw1 | head -n 8; qvs learn-static set sw1 on; qvs mac static sw1 --port p1 --json' | cut -c 1-90
  context 0 (529 bytes):
    0000 01 00 00 04 00 00 01 00 70 30 00 00 00 00 00 00
    0010 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00
    *
    0030 00 00 00 00 00 00 00 00 02 00 00 00 00 01 00 00
    0040 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00
    *
    0210 00
  sw1: changed
  [
  {"index":0,"entry":"AgAABAEAAQBwMQAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA
  ]
  $ cat >more.json <<<'{"macEntries": [{"switch": "sw2", "port": "p0", "mac": "02:00:00:00:01:00", "count": 60, "kind": "static"}]}'
  $ LAB='--lab more.json' sh on 'qvs mac static sw2 | grep -E "context|00[03]0 "; qvs mac static sw1 --port uplink0 --json'
  context 0 (529 bytes):
    0000 04 00 00 04 00 00 3b 00 70 30 00 00 00 00 00 00
    0030 00 00 00 00 00 00 00 00 02 00 00 00 00 02 00 00
  context 1 (529 bytes):
    0000 04 00 00 04 00 00 02 00 70 30 00 00 00 00 00 00
    0030 00 00 00 00 00 00 00 00 02 00 00 00 01 3a 00 00
  []

How a switch learns: what is stored for it goes before the properties of the host.

  $ sh on 'qvs mac learning get; qvs mac learning get --json; qvs mac learning info sw1 | head -n 4; qvs mac learning info sw1 | sed -n 4p; qvs mac learning ports sw1'
  first:   300
  second:  0
  {"first":300,"second":0}
  learning information (88 bytes):
    0000 2c 01 00 00 00 00 00 00 00 00 01 00 04 00 00 00
    0010 02 00 00 00 02 00 00 00 00 00 00 00 01 00 00 00
    0020 a7 03 00 00 00 00 00 00 52 00 00 00 00 00 00 00
    0020 05 07 00 00 00 00 00 00 89 00 00 00 00 00 00 00
  INDEX  ENTRY
  0      01000004000001
  1      02000004000001
  2      030000040000010002
  $ sh on 'qvs port mac-learning set sw1 p1 --learning on --flooding on --limit 2 --limit-policy deny; qvs mac-learning set sw1 --aging 40 --limit 7; qvs mac learning info sw1 | head -n 3; qvs mac learning ports sw1'
  sw1/p1: changed
  sw1: changed
  learning information (88 bytes):
    0000 28 00 00 00 00 00 00 00 07 00 00 00 04 00 00 00
    0010 02 00 00 00 02 00 00 00 01 00 00 00 01 00 00 00
  INDEX  ENTRY
  0      0100000407
  1      0200000402000000000000000103
  2      030000040700000002
  $ sh on 'qvs mac add sw1 02:00:00:00:02:01 --port p1; qvs mac add sw1 02:00:00:00:02:02 --port p1; qvs mac add sw1 02:00:00:00:02:01 --port p1; qvs mac add sw1 020000000203 --port p0; qvs mac add sw1 020000000204 --port p0; qvs mac add sw1 020000000205 --port p0'
  sw1/p1: changed
  qvs: switch 'sw1': port 'p1': No free pointer blocks (deprecated) (0xbad001a)
  sw1/p1: unchanged
  sw1/p0: changed
  sw1/p0: changed
  qvs: switch 'sw1': port 'p0': No free pointer blocks (deprecated) (0xbad001a)
  $ sh on 'qvs mac learning stats sw1 --port p1 | head -n 2; qvs mac learning stats sw1 --port p1 --json; qvs mac learning stats sw1 --json'
  learning statistics (52 bytes):
    0000 02 00 00 04 02 00 00 00 02 00 00 00 fb 00 00 00
  {"stats":"AgAABAIAAAACAAAA5AEAAAAAAADbAQAAAAAAAAQGAAAAAAAA1AIAAAAAAACuBQAAAAAAAA=="}
  [
  {"index":0,"entry":"AQAABAMAAAAHAAAAvgAAAAAAAAAUAQAAAAAAAKIDAAAAAAAANwMAAAAAAACEAwAAAAAAAA=="},
  {"index":1,"entry":"AgAABAIAAAACAAAAzQIAAAAAAACVAgAAAAAAALQIAAAAAAAA3AMAAAAAAACgBwAAAAAAAA=="},
  {"index":2,"entry":"AwAABAIAAAAHAAAA5QMAAAAAAABVBQAAAAAAAAcBAAAAAAAAmgQAAAAAAAArBAAAAAAAAA=="}
  ]
  $ sh on 'qvs port security set sw1 p1 --forged deny --mac-change deny; qvs mac security sw1'
  sw1/p1: changed
  INDEX  ENTRY
  0      0100000401
  1      0200000407
  2      0300000401

Addresses that are too old go, and do not come back.

  $ cat >later.json <<<'{"macLearning": {"clock": 1021}}'
  $ LAB='--lab later.json' sh on 'qvs mac table sw1 --team; qvs mac-learning clear sw1; qvs mac learning set --first 20 --second 3; qvs mac learning set --second 3; qvs mac table sw1 --team'
  INDEX  ENTRY
  sw1: changed
  host: changed
  host: unchanged
  INDEX  ENTRY
  $ sh on 'qvs mac learning get --json; qvs mac add sw1 0200000003000200 --port uplink0; qvs mac table sw1 --team; qvs mac add sw2 02:00:00:00:03:00 --port p0'
  {"first":20,"second":3}
  sw1/uplink0: changed
  INDEX  ENTRY
  0      020000000300020000000000030000040000000075706c696e6b30
  qvs: switch 'sw2': port 'p0': No free pointer blocks (deprecated) (0xbad001a)
  $ cat >later.json <<<'{"macLearning": {"clock": 1041}}'; cat >last.json <<<'{"macLearning": {"clock": 1042}}'
  $ LAB='--lab later.json' sh on 'qvs mac table sw1 --team'; LAB='--lab last.json' sh on 'qvs mac table sw1 --team; qvs mac learning set --first 0xffffffffffffffff; qvs mac learning get; qvs mac table sw1 --team'
  INDEX  ENTRY
  0      020000000300020000000000030000041400000075706c696e6b30
  INDEX  ENTRY
  host: changed
  first:   18446744073709551615
  second:  3
  INDEX  ENTRY
  $ sh on 'qvs mac learning set; qvs mac learning set --second 65536; qvs mac learning set --first 0x10000000000000000'
  qvs: at least one of --first and --second is needed
  qvs: --second: 65536, at most 65535 fits
  qvs: --first: '0x10000000000000000' is not a number of 64 bits

With the switch its entries go, and a new one has none; the same for a port.

  $ sh on 'qvs port remove sw1 p1; qvs port add sw1 p1; qvs mac table sw1 --port p1; qvs switch destroy sw2; qvs switch create sw2 --ports 1; qvs mac table sw2'
  sw1/p1: changed
  sw1/p1: changed
  INDEX  ENTRY
  sw2: changed
  sw2: changed
  INDEX  ENTRY

Labs that make no sense.

  $ bad() { sed "$1" lab.json >bad.json; LAB='--lab bad.json' sh on true; }; bad 's/"vlan": 100/"vlan": 4095/'; bad 's/"count": 2/"count": 70000/'; bad 's/02:00:00:00:0f:ff/fe:ff:ff:ff:ff:ff/'; bad 's/"kind": "static"/"kind": "kept"/'
  qvs-host: the lab bad.json cannot be used: lab.macEntries[0]: "vlan" is not a VLAN from 0 to 4094
  qvs-host: the lab bad.json cannot be used: lab.macEntries[0]: "mac" is one address more than the port or the switch may have
  qvs-host: the lab bad.json cannot be used: lab.macEntries[0]: "mac" leads to an address that no port can have
  qvs-host: the lab bad.json cannot be used: lab.macEntries[1]: "kind" is neither "learnt" nor "static"
