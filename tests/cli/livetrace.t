Sessions are listed with their definition, of which 28 bytes fit.

  $ qvs switch create sw1 --ports 2; qvs livetrace list --raw - | bytes; qvs livetrace counts 1  => sw1: changed | (705 bytes) | SESSION  PORT  PACKETS  BYTES  ACTION
  $ qvs livetrace create sw1 port0 --hex '00 01 02' && qvs livetrace create sw1 port1 --json  => sw1/port0: changed | {"switch":"sw1","port":"port1","changed":true}
  $ printf '%040d' 7 >definition && qvs livetrace create sw1 port0 --file definition  => sw1/port0: changed
  $ qvs livetrace list --raw - | bytes  => 0:030100000001000004706f727430 57:03 62:0102 89:0200000002000004706f727431 177:0300000001000004706f727430 233:2800000030303030303030303030303030303030303030303030303030303030 (705 bytes)
  $ qvs livetrace create sw1 nix  => [3] qvs: switch 'sw1': port 'nix': live trace: Not found (0xbad0003)
  $ qvs livetrace create sw1 port0 --hex 0  => [2] qvs: --hex: '0' is not a row of pairs of digits
  $ grep 'ioctl.*CreateSession' ../trace | sed 's/input=.0:[0-9a-f]*/input=[.../'
  device ioctl "/dev/livetrace" 0x0 CreateSession in=115 out=0 input=[... 64:706f727430 113:0102] -> 0
  device ioctl "/dev/livetrace" 0x0 CreateSession in=112 out=0 input=[... 64:706f727431] -> 0
  device ioctl "/dev/livetrace" 0x0 CreateSession in=152 out=0 input=[... 64:706f727430 112:30303030303030303030303030303030303030303030303030303030303030303030303030303037] -> 0
  device ioctl "/dev/livetrace" 0x0 CreateSession in=112 out=0 input=[... 64:6e6978] -> ENOENT

Counts by action.

  $ qvs livetrace counts 3 --raw - | bytes  => 0:030000000300000001000000010000041503 24:9602 32:030002000000020000040d03 50:bd04 58:030003000000010000040404 76:5101 84:03 (86 bytes)
  $ qvs livetrace counts 200 --raw - | bytes  => 4:c8 (8 bytes)
  $ qvs-host fault add 'livetrace*GetCountActionData' --errno EIO && qvs livetrace counts 0  => [1] qvs: live-trace action 0: Input/output error

What was found on a port, and in all.

  $ qvs livetrace port sw1 port0 && qvs livetrace port sw1 port0 --json
  port:      67108865
  packets:   673
  bytes:     711
  sessions:  2
  {"data":"AQAABHgEAAAAAAAARAUAAAAAAAAC","fields":{"port":67108865,"packets":1144,"bytes":1348,"sessions":2}}
  $ qvs livetrace stats --raw - | head -c 16 | bytes; qvs livetrace stats --json
  0:03000000080000002701 (16 bytes)
  {"stats":"AwAAAAgAAAAhAgAAAAAAAMYFAAAAAAAAsgUAAAAAAAAKBAAAAAAAAKAAAAAAAAAAMgIAAAAAAABYAwAAAAAAAP0HAAAAAAAAsAYAAAAAAACQCAAAAAAAADEAAAAAAAAA","fields":{"sessions":3,"room":8,"counters":[545,1478,1458,1034,160,562,856,2045,1712,2192,49]}}

There is room for 8. Sessions go with their port, and a lab replaces them.

  $ for i in 4 5 6 7 8 9; do qvs livetrace create sw1 port1 >>added; done  => [1] qvs: switch 'sw1': port 'port1': live trace: No free pointer blocks (deprecated) (0xbad001a)
  $ qvs port remove sw1 port1; qvs livetrace list --raw - | head -c 16 | bytes; qvs livetrace create sw1 port0; qvs livetrace stats --raw - | head -c 16 | bytes  => sw1/port1: changed | 0:020100000001000004706f727430 (16 bytes) | sw1/port0: changed | 0:03000000080000001b03 (16 bytes)
  $ echo '{"liveTrace": [{"switch": "sw1", "port": "port0", "definition": "ff"}]}' >lab
  $ qvs-host run --state ../state --lab lab -- qvs livetrace stats --raw - | head -c 8 | bytes  => 0:0100000008 (8 bytes)
  $ qvs-host status --json | tr -d ' \n' | grep -o '"liveTrace":\[{[^}]*}'  => "liveTrace":[{"definition":"ff","number":1,"port":"port0","switch":"7377310000000000-0000000000000000"}
  $ echo '{"switches": [{"alias": "sw1", "ports": ["port0"]}], "liveTrace": [{"switch": "sw1", "port": "port0", "definition": "ff"}]}' >lab
  $ qvs-host run --state rack --lab lab -- true; qvs-host run --state rack -- qvs livetrace list --raw - | head -c 16 | bytes  => 0:010100000001000004706f727430 (16 bytes)
