Options of the switch module: a block with its length in front, and the module's own layout behind it.

  $ cat >lab.json <<<'{"options": [{"id": 7, "hex": "01000000"}, {"id": 3, "hex": "ff"}]}'
  $ qvs-host run --state rack --lab lab.json -- qvs options get --raw - | bytes  => 0:1100000003000100ff0700040001 (4096 bytes)
  $ cat >on <<<'qvs-host run --state rack --trace trace $LAB -- sh -c "$1" 2>&1 | sed "s/lab .*bad/lab bad/"'
  $ sh on 'qvs options get 7 3 --raw - | bytes; qvs options get 3 9'  => 0:1100000003000100ff0700040001 (4096 bytes) | qvs: runtime options: Not found (0xbad0003)
  $ sh on 'qvs options set "0300 0000 0900 0200 abcd"; qvs options get --json | cut -c 1-40; qvs options get 9 --raw nine; qvs options set "0900 0000" --json'  => host: changed | {"options":"EgAAAAcABAABAAAACQACAKvNAAAA | {"changed":true}
  $ sh on 'qvs options set ""; qvs options set --file nine; (cat nine; echo) | qvs options set --file -; qvs options get 9 --raw - | bytes'  => host: unchanged | host: changed | qvs: --file: 4097 bytes, a block has 4096 | 0:0a00000009000200abcd (4096 bytes)
  $ sh on 'qvs options set "0900 0400 ab"; qvs options set 0900; head -c 9 nine | qvs options set --file -; qvs options set; qvs options set 09 --file nine; qvs options set 9'
  qvs: runtime options: Failure (0xbad0001)
  qvs: runtime options: Failure (0xbad0001)
  qvs: --file: 9 bytes, a block has 4096
  qvs: one of OPTIONS, --file is needed
  qvs: OPTIONS and --file exclude each other
  qvs: OPTIONS: '9' is not a row of pairs of digits
  $ sh on "qvs options set '0100 f10f $(printf '55%.0s' $(seq 4081))'; qvs options set '0100 ec0f $(printf '55%.0s' $(seq 4076))'; qvs options get 7 --json | cut -c 1-24"
  qvs: runtime options: No free pointer blocks (deprecated) (0xbad001a)
  qvs: runtime options: No free pointer blocks (deprecated) (0xbad001a)
  {"options":"DAAAAAcABAAB
  $ grep -oE 'RuntimeOptions in=.*' trace | head -n 4 | cut -c 1-72
  RuntimeOptions in=4 out=4096 input=[0:07 2:03] -> 0
  RuntimeOptions in=4 out=4096 input=[0:03 2:09] -> ENOENT
  RuntimeOptions in=0 out=4096 input=[] -> 0
  RuntimeOptions in=14 out=0 input=[0:0e 4:03 8:09 10:02 12:abcd] -> 0
  $ LAB='--lab lab.json' sh on 'qvs options set "0100 0000"; qvs options get --raw - | bytes'  => host: unchanged | 0:1700000003000100ff070004000100000009000200abcd (4096 bytes)

Operations on the route table are kept as they came.

  $ sh on 'qvs rtm port 67108865 100 --flag 3; qvs rtm op 2147483649 "00000000 1122334455"; qvs rtm mod 5 '01000000$(printf '11%.0s' $(seq 133))' --json; printf "\1\0\0\0%141s" x | qvs rtm op 10 --file -'
  route table: changed
  route table: changed
  {"changed":true}
  qvs: route table: Failure (0xbad0001)
  $ sh on 'printf "\1\0\0\0%141s" x >block; qvs rtm op 2 --file block; qvs rtm op 2 1122; qvs rtm mod 2 --file block; qvs rtm port 1 1 --flag 256; qvs-host status --json | tr -d " \n" | grep -o "\"routeTable.*" | cut -c 1-700'
  route table: changed
  qvs: BLOCK: 2 bytes, one that counts 0 has 9
  qvs: BLOCK: 145 bytes, one that counts 1 has 137
  qvs: --flag: '256' is not a number from 0 to 255
  "routeTable":[{"command":10,"first":67108865,"flag":3,"kind":"port","second":100},{"command":2147483649,"count":0,"hex":"000000001122334455","kind":"operation"},{"command":5,"count":1,"hex":"0100000011111111111111111111111111111111111111111111111111111111111111111111111111111111111111111111111111111111111111111111111111111111111111111111111111111111111111111111111111111111111111111111111111111111111111111111111111111111111111111111111111111111111111111111111111","kind":"modification"},{"command":2,"count":1,"hex":"010000002020202020202020202020202020202020202020202020202020202020202020202020202020202020202020202020202020202020202020202020202020202020202020202020202020202020202020202020202020
  $ sh on 'for i in $(seq 70); do qvs rtm port $i 0 >trace.out; done; qvs-host status --json | tr -d " \n" | grep -oE "\"first\":(6|7|8|70)," | head -n 3'  => "first":7, | "first":8, | "first":70,
