Sessions are listed with their definition, of which 28 bytes fit.

  $ qvs switch create sw1 --ports 2 && qvs livetrace list && qvs livetrace counts 1
  sw1: changed
  sessions (705 bytes):
    0000 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00
    *
    02c0 00
  INDEX  ENTRY
  $ qvs livetrace create sw1 port0 --hex '00 01 02' && qvs livetrace create sw1 port1 --json
  sw1/port0: changed
  {"switch":"sw1","port":"port1","changed":true}
  $ printf '%040d' 7 >definition && qvs livetrace create sw1 port0 --file definition  => sw1/port0: changed
  $ qvs livetrace list
  sessions (705 bytes):
    0000 03 01 00 00 00 01 00 00 04 70 6f 72 74 30 00 00
    0010 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00
    *
    0030 00 00 00 00 00 00 00 00 00 03 00 00 00 00 01 02
    0040 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00
    0050 00 00 00 00 00 00 00 00 00 02 00 00 00 02 00 00
    0060 04 70 6f 72 74 31 00 00 00 00 00 00 00 00 00 00
    0070 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00
    *
    00b0 00 03 00 00 00 01 00 00 04 70 6f 72 74 30 00 00
    00c0 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00
    *
    00e0 00 00 00 00 00 00 00 00 00 28 00 00 00 30 30 30
    00f0 30 30 30 30 30 30 30 30 30 30 30 30 30 30 30 30
    0100 30 30 30 30 30 30 30 30 30 00 00 00 00 00 00 00
    0110 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00
    *
    02c0 00
  $ qvs livetrace create sw1 nix  => [3] qvs: switch 'sw1': port 'nix': live trace: Not found (0xbad0003)
  $ qvs livetrace create sw1 port0 --hex 0  => [2] qvs: --hex: '0' is not hexadecimal
  $ grep 'ioctl.*CreateSession' ../trace | sed 's/input=.0:[0-9a-f]*/input=[.../'
  device ioctl "/dev/livetrace" 0x0 CreateSession in=115 out=0 input=[... 64:706f727430 113:0102] -> 0
  device ioctl "/dev/livetrace" 0x0 CreateSession in=112 out=0 input=[... 64:706f727431] -> 0
  device ioctl "/dev/livetrace" 0x0 CreateSession in=152 out=0 input=[... 64:706f727430 112:30303030303030303030303030303030303030303030303030303030303030303030303030303037] -> 0
  device ioctl "/dev/livetrace" 0x0 CreateSession in=112 out=0 input=[... 64:6e6978] -> ENOENT

Counts by action.

  $ qvs livetrace counts 3
  INDEX  ENTRY
  0      0100000001000004150300000000000096020000000000000300
  1      02000000020000040d03000000000000bd040000000000000300
  2      0300000001000004040400000000000051010000000000000300
  $ qvs livetrace counts 200 --raw - | od -An -tx1
   00 00 00 00 c8 00 00 00
  $ qvs livetrace counts 256  => [2] qvs: ACTION: 256 is not a number of 8 bits
  $ qvs-host fault add 'livetrace*GetCountActionData*out=86' --output 0:ffffffff && qvs livetrace counts 0
  qvs: warning: the kernel counts 4294967295 action counts, but handed over 3
  INDEX  ENTRY
  0      0100000001000004ca03000000000000e0030000000000000000
  1      020000000200000491020000000000009b030000000000000000
  2      030000000100000439070000000000000d050000000000000000
  $ qvs-host fault add 'livetrace*GetCountActionData' --errno EIO && qvs livetrace counts 0  => [1] qvs: live-trace action 0: Input/output error

What was found on a port, and in all.

  $ qvs livetrace port sw1 port0 && qvs livetrace port sw1 port0 --json
  data:  01000004a102000000000000c70200000000000002
  {"data":"AQAABHgEAAAAAAAARAUAAAAAAAAC"}
  $ qvs livetrace stats | head -n 2 && qvs livetrace stats --json
  statistics (96 bytes):
    0000 03 00 00 00 08 00 00 00 27 01 00 00 00 00 00 00
  {"stats":"AwAAAAgAAAAhAgAAAAAAAMYFAAAAAAAAsgUAAAAAAAAKBAAAAAAAAKAAAAAAAAAAMgIAAAAAAABYAwAAAAAAAP0HAAAAAAAAsAYAAAAAAACQCAAAAAAAADEAAAAAAAAA"}

There is room for 8. Sessions go with their port, and a lab replaces them.

  $ for i in 4 5 6 7 8 9; do qvs livetrace create sw1 port1 >>added; done
  qvs: switch 'sw1': port 'port1': live trace: No free pointer blocks (deprecated) (0xbad001a)
  ? 1
  $ qvs port remove sw1 port1 && qvs livetrace list | head -2 && qvs livetrace create sw1 port0 && qvs livetrace stats | sed -n 2p
  sw1/port1: changed
  sessions (705 bytes):
    0000 02 01 00 00 00 01 00 00 04 70 6f 72 74 30 00 00
  sw1/port0: changed
    0000 03 00 00 00 08 00 00 00 1b 03 00 00 00 00 00 00
  $ echo '{"liveTrace": [{"switch": "sw1", "port": "port0", "definition": "ff"}]}' >lab
  $ qvs-host run --state ../state --lab lab -- qvs livetrace stats --raw - | head -c 8 | od -An -tx1
   01 00 00 00 08 00 00 00
  $ qvs-host status --json | grep -A 4 '"liveTrace"'
    "liveTrace": [
      {
        "definition": "ff",
        "number": 1,
        "port": "port0",
  $ echo '{"switches": [{"alias": "sw1", "ports": ["port0"]}], "liveTrace": [{"switch": "sw1", "port": "port0", "definition": "ff"}]}' >lab
  $ qvs-host run --state rack --lab lab -- true; qvs-host run --state rack -- qvs livetrace list | head -2
  sessions (705 bytes):
    0000 01 01 00 00 00 01 00 00 04 70 6f 72 74 30 00 00
