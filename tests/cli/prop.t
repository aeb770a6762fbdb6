  $ qvs switch create sw1 --ports 1  => sw1: changed

Values as text, digits and files, in the three scopes.

  $ qvs prop set sw1 com.example.rack b12  => sw1 com.example.rack: changed
  $ qvs prop set sw1 com.example.rack --text b12 --json  => {"switch":"sw1","scope":"global","port":null,"key":"com.example.rack","changed":false}
  $ qvs prop get sw1 com.example.rack  => b12
  $ qvs prop get sw1 com.example.rack --hex  => 62313200
  $ qvs prop get sw1 com.example.rack --json  => {"switch":"sw1","scope":"global","port":null,"key":"com.example.rack","class":["CONFIG"],"length":4,"text":"b12","value":"YjEyAA=="}
  $ qvs prop set sw1 bytes --hex '0x01 02:0aFF' --host  => sw1 host bytes: changed
  $ qvs prop get sw1 bytes --host  => 01020aff
  $ printf 'no NUL' >file; qvs prop set sw1 raw --file file --port port0 --json  => {"switch":"sw1","scope":"port","port":"port0","key":"raw","changed":true}
  $ qvs prop get sw1 raw --port port0  => 6e6f204e554c
  $ head -c 100000 /dev/urandom >big; qvs prop set sw1 big --file - <big; qvs prop get sw1 big --raw back; cmp big back; qvs prop clear sw1 big  => sw1 big: changed | sw1 big: changed
  $ qvs prop set sw1 empty --hex '' && qvs prop get sw1 empty --json  => sw1 empty: changed | {"switch":"sw1","scope":"global","port":null,"key":"empty","class":["CONFIG"],"length":0,"text":null,"value":""}
  $ qvs prop set sw1 text '' && qvs prop get sw1 text --hex  => sw1 text: changed | 00

Unchanged is the same value and the same class.

  $ qvs prop set sw1 bytes --hex 01020aff --host  => sw1 host bytes: unchanged
  $ for i in 1 2; do qvs prop set sw1 bytes --hex 01020aff --host --runtime; done  => sw1 host bytes: changed | sw1 host bytes: unchanged
  $ qvs prop set sw1 com.quillon.vswitch.port.vlan --hex 0000000000000000 --port port0  => sw1/port0 com.quillon.vswitch.port.vlan: changed
  $ qvs prop list sw1 --host  => SCOPE  PORT  KEY                              CLASS    LENGTH  VALUE | host   -     bytes                            RUNTIME  4       01020aff | host   -     com.quillon.common.host.portset  CONFIG   4       sw1
  $ qvs prop list sw1 --port port0 | grep -e vlan -e raw; qvs prop list sw1 --all | wc -l
  port   port0  com.quillon.vswitch.port.vlan            CONFIG    8       0000000000000000
  port   port0  raw                                      CONFIG    6       6e6f204e554c
  16

By identifier, without the snapshot.

  $ qvs prop get "73 77 31 00 00 00 00 00-00 00 00 00 00 00 00 00" com.example.rack --by-id  => b12
  $ qvs prop set nobody k v --by-id  => [3] qvs: switch 'nobody': global property 'k': Not found (0xbad0003)

  $ qvs prop clear sw1 com.example.rack  => sw1 com.example.rack: changed
  $ qvs prop clear sw1 com.example.rack  => [3] qvs: switch 'sw1': global property 'com.example.rack': Not found (0xbad0003)
  $ qvs prop clear sw1 com.example.rack --if-exists --json  => {"switch":"sw1","scope":"global","port":null,"key":"com.example.rack","changed":false}
  $ qvs prop clear sw1 bytes --host  => sw1 host bytes: changed
  $ qvs prop get sw1 bytes --host  => [3] qvs: switch 'sw1': host property 'bytes': Not found (0xbad0003)
  $ qvs prop clear sw9 k --if-exists  => [3] qvs: switch 'sw9': Not found (0xbad0003)

Bad values change nothing.

  $ each 'prop set sw1 k' 'prop set sw1 k v --hex 00' 'prop set sw1 k v --runtime'  => qvs: one of VALUE, --text, --hex, --file is needed | qvs: VALUE and --hex exclude each other | qvs: --runtime is for host properties: add --host | exit 2 2 2
  $ qvs prop set sw1 '' v  => [2] qvs: key: may not be empty
  $ for file in nix . /dev/zero; do qvs prop set sw1 k --file $file; done; for more in "" x; do { head -c 33554432 /dev/zero; printf "$more"; } | qvs prop set sw1 most --file -; done; qvs prop clear sw1 most
  qvs: file 'nix': No such file or directory
  qvs: file '.': Is a directory
  qvs: file '/dev/zero': more than 33554432 bytes, which is all that fits
  sw1 most: changed
  qvs: file '-': more than 33554432 bytes, which is all that fits
  sw1 most: changed
  $ qvs prop get sw1 k  => [3] qvs: switch 'sw1': global property 'k': Not found (0xbad0003)
