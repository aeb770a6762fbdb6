Records by the fields of a layout file. The lab's MAC addresses stand for all lists; the page runtime.md shows each command.

  $ cat >lab.json <<<'{"macLearning": {"aging": 300, "clock": 1000}, "switches": [{"alias": "sw1", "uplinks": ["uplink0"], "ports": ["p0", "p1"]}], "macEntries": [{"switch": "sw1", "port": "uplink0", "mac": "02:00:00:00:0f:ff", "count": 2, "vlan": 100, "age": 20}, {"switch": "sw1", "port": "p0", "mac": "02:00:00:00:00:01", "kind": "static"}, {"switch": "sw1", "port": "p1", "mac": "02:00:00:00:00:02", "age": 290}]}'
  $ cat >on <<<'exec qvs-host run --state rack $LAB -- sh -c "$1" 2>&1'
  $ LAB='--lab lab.json' sh on 'qvs mac table sw1 --sort age --reverse --limit 2; qvs mac table sw1 --where kind=learnt --where vlan=0'
  MAC                KIND    VLAN  PORT      AGE (seconds)  PORT ID
  02:00:00:00:00:02  learnt  0     67108866  290            p1
  02:00:00:00:10:00  learnt  100   67108867  20             uplink0
  MAC                KIND    VLAN  PORT      AGE (seconds)  PORT ID
  02:00:00:00:00:02  learnt  0     67108866  290            p1
  $ sh on 'qvs mac table sw1 --vlan 100 --sort mac --limit 1 --json | grep fields; qvs mac table sw1 --vlan 7; qvs mac table sw1 --vlan 7 --json; qvs uplink list sw1 --kernel --where port=67108867; qvs mac table sw1 --port p1 --limit 0'
  {"index":2,"entry":"AgAAAA//AgBkAAAAAwAABBQAAAB1cGxpbmswAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA=","fields":{"mac":"02:00:00:00:0f:ff","kind":"learnt","vlan":100,"port":67108867,"age":20,"portId":"uplink0"}}
  MAC  KIND  VLAN  PORT  AGE (seconds)  PORT ID
  []
  NIC    PORT
  pnic0  67108867
  MAC  KIND  VLAN  PORT  AGE (seconds)  PORT ID
  $ sh on 'qvs mac table sw1 --sort size; qvs mac table sw1 --limit x; qvs mac table sw1 --sort mac --raw -; qvs port list sw1 --sort port; qvs uplink list sw1 --raw x; qvs mac stats sw1 --port p0 --sort port'
  qvs: --sort: no field is called 'size'; the fields are mac, kind, vlan, port, age, portId
  qvs: --limit: 'x' is not a number from 0 to 4294967295
  qvs: --sort and --raw exclude each other
  qvs: --sort needs --kernel
  qvs: --raw needs --kernel
  qvs: --sort needs a list, and this is a single record
  ? 2

A table that is wider than the terminal loses its units, then its spare columns; --wide keeps all.

  $ jq '.bfd = {sessions: [{local: "192.0.2.1", remote: "198.51.100.255", interface: "tunnel0"}, {local: "2001:db8::1", remote: "2001:db8::2", state: "down"}]}' lab.json >wide.json
  $ for words in "80 bfd sessions" "80 bfd sessions --wide" "100 bfd sessions" "48 bfd sessions" "80 kcp uplinks" "80 mac stats sw1"; do rm -rf wide; COLUMNS=${words%% *} NO_COLOR=1 qvs-host run --state wide --lab wide.json -- script -qec "qvs ${words#* }" /dev/null | tr -d "\r" | grep -A 1 "^[A-Z]"; done
  NUMBER  STATE  LOCAL        REMOTE          INTERFACE  SENT  RECEIVED
  1       up     192.0.2.1    198.51.100.255  tunnel0    1018  864
  NUMBER  REMOTE NUMBER  STATE  REASON                    FAMILY  MULTIPLIER (packets)  INTERVAL (microseconds)  DETECTION TIME (microseconds)  LOCAL        REMOTE          INTERFACE  SENT (packets)  RECEIVED (packets)
  1       2147483649     up     none                      IPv4    3                     300000                   900000                         192.0.2.1    198.51.100.255  tunnel0    1018            864
  NUMBER  REMOTE NUMBER  STATE  LOCAL        REMOTE          INTERFACE  SENT  RECEIVED
  1       2147483649     up     192.0.2.1    198.51.100.255  tunnel0    1018  864
  NUMB…  STATE  LOCAL   REMOTE  INTER…  SENT  RECE…
  1      up     192.0…  198.5…  tunne…  1018  864
  NIC    PORT      LINK  SPEED  MTU   MAC                PORT ID
  pnic0  67108867  up    10000  1500  02:00:00:00:00:00  uplink0
  PORT      ADDRESSES  LIMIT  LEARNT  AGED  MOVED  REFUSED  FLOODED
  67108865  1          65536  447     363   1444   404      1180

A file is named by the option or the environment. Without one, bytes are shown, and a remark in text.

  $ sh on 'export QVS_LAYOUT=; qvs mac security sw1 --limit 2; qvs mac security sw1 --limit 1 --json; qvs mac security sw1 --sort port; QVS_LAYOUT=nix; qvs mac security sw1 --json | wc -l; qvs mac security sw1 --limit 1; qvs mac security sw1 --layout nix'
  qvs: the kernel's records are shown as bytes: no layout file is named; name one with --layout or in the variable QVS_LAYOUT
  INDEX  ENTRY
  0      0100000401000000
  1      0200000401000000
  [
  {"index":0,"entry":"AQAABAEAAAA=","fields":null}
  ]
  qvs: --sort needs a layout: no layout file is named; name one with --layout or in the variable QVS_LAYOUT
  qvs: warning: the kernel's records are shown as bytes: QVS_LAYOUT: file 'nix': No such file or directory
  5
  qvs: warning: the kernel's records are shown as bytes: QVS_LAYOUT: file 'nix': No such file or directory
  INDEX  ENTRY
  0      0100000401000000
  qvs: file 'nix': No such file or directory
  ? 1
  $ sh on 'printf "mac security sw1 --limit 1\nmac host get\n" >commands; QVS_LAYOUT= qvs batch commands; QVS_LAYOUT=nix qvs mac security sw1 --raw - | wc -c; QVS_LAYOUT=nix qvs mac security sw1 --layout "$QVS_LAYOUT" | head -n 2'
  qvs: the kernel's records are shown as bytes: no layout file is named; name one with --layout or in the variable QVS_LAYOUT
  INDEX  ENTRY
  0      0100000401000000
  first:   300
  second:  0
  32
  PORT      DENIED
  67108865  promiscuous mode

Each line of `faults` makes a mistake in the file or in the layout of MAC entries, each of `sizes` gives them none that fits, and each of `types`
makes their last field ask for more bytes than there are.

  $ printf '%s\n' 's/"format": 1/"format": 2/' '1s/{/[/' 's/"words": {/"words": 1, "x": {/' 's/"macKind": {"1"/"macKind": {"one"/' 's/"mac-entry": {/"mac-entry": 1, "x": {/' 's/"MAC entry"/"MAC entry", "like": "mac-entry"/' 's/"MAC entry"/"MAC entry", "tail": "age"/' 's/"MAC entry"/"MAC entry", "given": {"type": 1}/' 's/"size": 86/"size": 0/' 's/"size": 86/"size": -1/' >faults
  $ group='"type": "group", "count": 1, "stride": 9, "fields": [{"at": 0, "name": "g",'; printf '%s\n' 's/"at": 8, "name": "vlan"/"at": 5, "name": "vlan"/' 's/"at": 20, "name"/"at": 60, "name"/' 's/"at": 12, "name"/"at": 1e30, "name"/' 's/"name": "kind", "type": "u8"/"name": "kind", "type": "u9"/' 's/"values": "macKind"/"values": "macKinds"/' 's/"name": "kind"/"name": "mac"/' 's/"name": "kind"/"name": "\\u001b[2J"/' 's/"name": "kind", "type": "u8"/"name": "kind", "type": "bytes"/' 's/"name": "kind", "type": "u8"/"name": "kind", "type": "address", "length": 1/' 's/"name": "kind", "type": "u8"/"name": "kind", "type": "u8", "count": "later"/' 's/"name": "kind", "type": "u8"/"name": "kind", "type": "u8", "count": 81/' 's/"name": "kind", "type": "u8"/"name": "kind", "type": "group"/' "s/{\"at\": 0, \"name\": \"mac\", \"type\": \"mac\"}/{\"at\": 0, \"name\": \"mac\", $group $group $group $group \"type\": \"u8\"}]}]}]}]}/" >>faults
  $ sh on 'while read -r fault; do sed "$fault" "$QVS_LAYOUT" >bad.json; qvs mac table sw1 --limit 1 --layout bad.json; done <faults; head -c 2000 "$QVS_LAYOUT" >bad.json; qvs mac table sw1 --layout bad.json; QVS_LAYOUT=bad.json qvs mac ports sw1 | head -n 2'
  qvs: layout 'bad.json': "format" is not 1, the only format that this version reads
  qvs: layout 'bad.json': it is not JSON from byte 13 on
  qvs: layout 'bad.json': "words" is not an object
  qvs: layout 'bad.json': record mac-entry: field kind: the words 'macKind' are not words by their numbers
  qvs: layout 'bad.json': record mac-entry: it is not an object
  qvs: layout 'bad.json': record mac-entry: "mac-entry" is not a record with fields of its own
  qvs: layout 'bad.json': record mac-entry: the tail is not the field behind the fixed part
  qvs: layout 'bad.json': record mac-entry: "given" is not a set of names of words
  qvs: layout 'bad.json': record mac-entry: "size" is missing
  qvs: layout 'bad.json': record mac-entry: "size" is not a number from 0 to 67108864
  qvs: layout 'bad.json': record mac-entry: field vlan begins within the field before it
  qvs: layout 'bad.json': record mac-entry: field portId ends at 108, behind 86 bytes
  qvs: layout 'bad.json': record mac-entry: field port: "at" is not a number from 0 to 67108864
  qvs: layout 'bad.json': record mac-entry: field kind: there is no type 'u9'
  qvs: layout 'bad.json': record mac-entry: field kind: there are no words 'macKinds'
  qvs: layout 'bad.json': record mac-entry: field mac is there twice
  qvs: layout 'bad.json': record mac-entry: '\x1b[2J' is no name of a field, like "portId"
  qvs: layout 'bad.json': record mac-entry: field kind: "length" is missing
  qvs: layout 'bad.json': record mac-entry: field kind: "family" is missing
  qvs: layout 'bad.json': record mac-entry: field kind: no field before it is called 'later'
  qvs: layout 'bad.json': record mac-entry: field kind ends at 87, behind 86 bytes
  qvs: layout 'bad.json': record mac-entry: field kind: a group needs "count" or "until"
  qvs: layout 'bad.json': record mac-entry: field mac: field g: field g: field g: groups are nested more than 4 deep
  qvs: layout 'bad.json': it is not JSON from byte 2001 on
  qvs: warning: the kernel's records are shown as bytes: QVS_LAYOUT: layout 'bad.json': it is not JSON from byte 2001 on
  INDEX  ENTRY
  0      0100000400000100000000000000
  $ printf '%s\n' 's/"size": 86/"size": 87/' 's/"mac-entry"/"mac-entries"/' >sizes
  $ sh on 'while read -r fault; do sed "$fault" "$QVS_LAYOUT" >bad.json; for more in "--port p1" "--limit 1"; do qvs mac table sw1 $more --layout bad.json | tail -n 1 | sed "s/\(00\)*$//"; done; done <sizes'
  qvs: the kernel's records are shown as bytes: layout 'bad.json': record mac-entry has 87 bytes, but the kernel's has 86; name the layout file of this kernel
  0      02000000000202000000000002000004220100007031
  qvs: the kernel's records are shown as bytes: layout 'bad.json': record mac-entry has 87 bytes, but the kernel's has 86; name the layout file of this kernel
  0      02000000000101000000000001000004000000007030
  qvs: the kernel's records are shown as bytes: layout 'bad.json': there is no record mac-entry
  0      02000000000202000000000002000004220100007031
  qvs: the kernel's records are shown as bytes: layout 'bad.json': there is no record mac-entry
  0      02000000000101000000000001000004000000007030
  $ printf '%s\n' '"bytes", "used": "port"' '"u32", "count": "port"' '"group", "count": "port", "stride": 60, "fields": [{"at": 58, "name": "end", "type": "u16"}]' '"group", "until": "port", "fields": [{"at": 0, "name": "rest", "type": "bytes", "used": "vlan"}]' '"address", "length": 48, "family": "kind"' >types
  $ sh on 'while read -r type; do sed "s/\"name\": \"portId\", \"type\": \"text\", \"length\": 48, \"about\": \"port identifier\"/\"name\": \"portId\", \"type\": $type/" "$QVS_LAYOUT" >odd.json; qvs mac table sw1 --limit 1 --layout odd.json --json | grep fields | cut -d , -f 3-; done <types'
  "fields":{"mac":"02:00:00:00:00:01","kind":"static","vlan":0,"port":67108865,"age":0,"portId":null}}
  "fields":{"mac":"02:00:00:00:00:01","kind":"static","vlan":0,"port":67108865,"age":0,"portId":[12400,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0]}}
  "fields":{"mac":"02:00:00:00:00:01","kind":"static","vlan":0,"port":67108865,"age":0,"portId":[{"end":0}]}}
  "fields":{"mac":"02:00:00:00:00:01","kind":"static","vlan":0,"port":67108865,"age":0,"portId":[{"rest":""}]}}
  "fields":{"mac":"02:00:00:00:00:01","kind":"static","vlan":0,"port":67108865,"age":0,"portId":"cDAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA"}}
