Sessions of both families. A flag asks for one of them; the packets of a session that is not up do not come in. The count of IPv4 sessions carries
into the third byte.

  $ echo '{"seed": 7, "bfd": {"logLevel": 3, "sessions": [{"local": "192.0.2.1", "remote": "198.51.100.255", "interface": "tunnel0", "count": 2}, {"local": "2001:db8::1", "remote": "2001:db8::2", "state": "down", "multiplier": 5, "intervalMs": 1000}]}}' >lab
  $ qvs-host run --state ../state --lab lab -- qvs bfd sessions | sed -n '1,10p; 13p; 18,$p'
  sessions (1139336 bytes):
    0000 03 00 00 00 c5 22 00 00 01 00 00 00 01 00 00 80
    0010 03 00 01 03 e0 93 04 00 a0 bb 0d 00 00 00 00 00
    0020 c0 00 02 01 00 00 00 00 00 00 00 00 00 00 00 00
    0030 c6 33 64 ff 00 00 00 00 00 00 00 00 00 00 00 00
    0040 74 75 6e 6e 65 6c 30 00 00 00 00 00 00 00 00 00
    0050 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00
    0060 f5 02 00 00 00 00 00 00 f7 03 00 00 00 00 00 00
    0070 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00
    0080 00 00 00 00 00 00 00 00 02 00 00 00 02 00 00 80
    00b0 c6 33 65 00 00 00 00 00 00 00 00 00 00 00 00 00
    0100 00 00 00 00 00 00 00 00 03 00 00 00 00 00 00 00
    0110 01 01 02 05 40 42 0f 00 40 4b 4c 00 00 00 00 00
    0120 20 01 0d b8 00 00 00 00 00 00 00 00 00 00 00 01
    0130 20 01 0d b8 00 00 00 00 00 00 00 00 00 00 00 02
    0140 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00
    *
    0160 fa 02 00 00 00 00 00 00 00 00 00 00 00 00 00 00
    0170 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00
    *
    116280 00 00 00 00 00 00 00 00
  $ qvs bfd sessions --flags 0x82 | head -4
  sessions (1139336 bytes):
    0000 01 00 00 00 c5 22 00 00 03 00 00 00 00 00 00 00
    0010 01 01 02 05 40 42 0f 00 40 4b 4c 00 00 00 00 00
    0020 20 01 0d b8 00 00 00 00 00 00 00 00 00 00 00 01
  $ qvs bfd sessions --flags 1 --raw table && head -c 4 table | od -An -tx1 && wc -c <table
   02 00 00 00
  1139336
  $ qvs bfd sessions --flags 2 --json >json && head -c 60 json && wc -c <json
  {"sessions":"AQAAAMUiAAADAAAAAAAAAAEBAgVAQg8AQEtMAAAAAAAgAQ21519132
  $ for flags in 4 259; do qvs bfd sessions --flags $flags; done
  qvs: --flags: 4 is not a byte with bit 0 or bit 1 set
  qvs: --flags: 259 is not a byte with bit 0 or bit 1 set
  ? 2
  $ grep -o 'GetSessions.*' ../trace
  GetSessions in=1 out=1139336 input=[0:03] -> 0
  GetSessions in=1 out=1139336 input=[0:82] -> 0
  GetSessions in=1 out=1139336 input=[0:01] -> 0
  GetSessions in=1 out=1139336 input=[0:02] -> 0

The log level. What is not a level is not asked for; a lab that is applied again sets its own.

  $ qvs bfd log-level get  => 3
  $ qvs bfd log-level set 5 --json && qvs bfd log-level set 5  => {"changed":true} | log level: unchanged
  $ qvs bfd log-level get --json  => {"logLevel":5}
  $ qvs bfd log-level set 2  => [2] qvs: LEVEL: 2 is none of 0, 1, 3, 5
  $ qvs-host run --state ../state --lab lab -- qvs bfd log-level get  => 3
  $ qvs-host status --json | grep -A 3 '"bfd"'
    "bfd": {
      "logLevel": 3,
      "sessions": 3
    },

Statistics differ from one look to the next.

  $ qvs bfd stats | head -n 2
  statistics (64 bytes):
    0000 b4 05 00 00 00 00 00 00 db 01 00 00 00 00 00 00
  $ qvs bfd stats | sed -n 2p
    0000 e7 08 00 00 00 00 00 00 99 03 00 00 00 00 00 00

Failures have the reason of the request.

  $ qvs-host fault add 'tarn_bfd*GetSessions' --errno ENOMEM && qvs bfd sessions  => [1] qvs: BFD sessions: Cannot allocate memory
  $ qvs-host fault add 'tarn_bfd*GetLogLevel' --errno EPERM && qvs --trace bfd log-level get 2>&1 | sed 's/, [0-9]* us/, N us/'
  qvs: DVSLoadConfig() -> 0x0 (Success), N us
  qvs: BFD_GetLogLevel() -> 4294967295, N us
  qvs: BFD log level: Operation not permitted
  $ qvs-host fault add 'tarn_bfd*SetLogLevel' --errno EIO && qvs bfd log-level set 1  => [1] qvs: BFD log level: Input/output error
  $ qvs-host fault add 'open*tarn_bfd' --errno ENOENT && qvs bfd stats  => [3] qvs: BFD statistics: No such file or directory

Sessions and level outlive the host.

  $ echo 'qvs bfd log-level set 0; qvs bfd sessions --raw - | cksum' >change
  $ qvs-host run --state rack --lab lab -- sh change  => log level: changed | 3169817901 1139336
  $ qvs-host run --state rack -- sh -c 'qvs bfd log-level get; qvs bfd sessions --raw - | cksum'  => 0 | 3169817901 1139336

Labs that cannot be.

  $ bad() { echo "$1" >bad; qvs-host run --state ../state --lab bad -- true; }; bad '{"bfd": {"logLevel": 2}}'; bad '{"bfd": {"sessions": [{"local": "192.0.2.1", "remote": "::1"}]}}'; bad '{"bfd": {"sessions": [{"local": "192.0.2.1", "remote": "192.0.2.2", "count": 8902}]}}'; bad '{"bfd": {"sessions": [{"local": "x", "remote": "192.0.2.2"}]}}'; bad '{"bfd": {"sessions": [{"local": "192.0.2.1", "remote": "192.0.2.2", "state": "off"}]}}'
  qvs-host: lab.bfd: "logLevel" is none of 0, 1, 3 and 5
  qvs-host: lab.bfd.sessions[0]: "remote" is of another family than "local"
  qvs-host: lab.bfd.sessions[0]: "count" is more than there is room for
  qvs-host: lab.bfd.sessions[0]: "local" is not an address
  qvs-host: lab.bfd.sessions[0]: "state" is none of "admin-down", "down", "init" and "up"
  ? 125
  $ qvs bfd sessions | head -2
  sessions (1139336 bytes):
    0000 03 00 00 00 c5 22 00 00 01 00 00 00 01 00 00 80
