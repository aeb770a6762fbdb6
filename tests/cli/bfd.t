Sessions of both families. A flag asks for one of them; the packets of a session that is not up do not come in. The count of IPv4 sessions carries
into the third byte.

  $ echo '{"seed": 7, "bfd": {"logLevel": 3, "sessions": [{"local": "192.0.2.1", "remote": "198.51.100.255", "interface": "tunnel0", "count": 2}, {"local": "2001:db8::1", "remote": "2001:db8::2", "state": "down", "multiplier": 5, "intervalMs": 1000}]}}' >lab
  $ qvs-host run --state ../state --lab lab -- qvs bfd sessions --raw - | bytes
  0:03000000c5220000010000000100008003000103e0930400a0bb0d 32:c0000201 48:c63364ff 64:74756e6e656c30 96:f502 104:f703 136:020000000200008003000103e0930400a0bb0d 160:c0000201 176:c63365 192:74756e6e656c30 224:9f04 232:5903 264:03 272:0101020540420f00404b4c 288:20010db8 303:0120010db8 319:02 352:fa02 (1139336 bytes)
  $ qvs bfd sessions --flags 0x82 --raw - | bytes  => 0:01000000c522000003 16:0101020540420f00404b4c 32:20010db8 47:0120010db8 63:02 96:4705 (1139336 bytes)
  $ qvs bfd sessions --flags 1 --raw table; bytes <table
  0:02000000c5220000010000000100008003000103e0930400a0bb0d 32:c0000201 48:c63364ff 64:74756e6e656c30 96:8d04 104:5a07 136:020000000200008003000103e0930400a0bb0d 160:c0000201 176:c63365 192:74756e6e656c30 224:bf07 232:2805 (1139336 bytes)
  $ qvs bfd sessions --flags 2 --json >json && head -c 60 json && wc -c <json  => {"sessions":"AQAAAMUiAAADAAAAAAAAAAEBAgVAQg8AQEtMAAAAAAAgAQ21519420
  $ grep -o 'GetSessions.*' ../trace  => GetSessions in=1 out=1139336 input=[0:03] -> 0 | GetSessions in=1 out=1139336 input=[0:82] -> 0 | GetSessions in=1 out=1139336 input=[0:01] -> 0 | GetSessions in=1 out=1139336 input=[0:02] -> 0

The log level. What is not a level is not asked for; a lab that is applied again sets its own.

  $ qvs bfd log-level get  => 3
  $ qvs bfd log-level set 5 --json && qvs bfd log-level set 5  => {"changed":true} | log level: unchanged
  $ qvs bfd log-level get --json  => {"logLevel":5}
  $ qvs-host run --state ../state --lab lab -- qvs bfd log-level get  => 3
  $ qvs-host status --json | tr -d ' \n' | grep -o '"bfd":{[^}]*}'  => "bfd":{"logLevel":3,"sessions":3}

Statistics differ from one look to the next.

  $ for i in 1 2; do qvs bfd stats --raw - | head -c 16 | bytes; done  => 0:b405 8:db01 (16 bytes) | 0:e708 8:9903 (16 bytes)

Failures have the reason of the request.

  $ qvs-host fault add 'tarn_bfd*GetSessions' --errno ENOMEM && qvs bfd sessions  => [1] qvs: BFD sessions: Cannot allocate memory
  $ qvs-host fault add 'tarn_bfd*GetLogLevel' --errno EPERM && qvs --trace bfd log-level get 2>&1 | sed 's/, [0-9]* us/, N us/' | tail -n 2  => qvs: BFD_GetLogLevel() -> 4294967295, N us | qvs: BFD log level: Operation not permitted
  $ qvs-host fault add 'tarn_bfd*SetLogLevel' --errno EIO && qvs bfd log-level set 1  => [1] qvs: BFD log level: Input/output error
  $ qvs-host fault add 'open*tarn_bfd' --errno ENOENT && qvs bfd stats  => [3] qvs: BFD statistics: No such file or directory

Sessions and level outlive the host.

  $ echo 'qvs bfd log-level set 0; qvs bfd sessions --raw - | cksum' >change
  $ qvs-host run --state rack --lab lab -- sh change  => log level: changed | 3169817901 1139336
  $ qvs-host run --state rack -- sh -c 'qvs bfd log-level get; qvs bfd sessions --raw - | cksum'  => 0 | 3169817901 1139336

A lab that is refused changes nothing.

  $ echo '{"bfd": {"sessions": [{"local": "192.0.2.1", "remote": "192.0.2.2"}, {"local": "192.0.2.1", "remote": "::1"}]}}' >bad; qvs-host run --state ../state --lab bad -- true  => [125] qvs-host: lab.bfd.sessions[1]: "remote" is of another family than "local"
  $ qvs bfd sessions --raw - | head -c 20 | bytes  => 0:03000000c5220000010000000100008003000103 (20 bytes)
