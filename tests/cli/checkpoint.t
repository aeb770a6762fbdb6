A checkpoint keeps switches as a document; a rollback changes what differs, and nothing of other switches.

  $ umask 0; qvs switch create sw1 --ports 2 --uplinks 1; qvs switch create sw2; qvs checkpoint save first sw1 --dir cp/points  => sw1: changed | sw2: changed | first: changed
  $ stat -c '%a %F' cp cp/points cp/points/first; ls -A cp/points  => 700 directory | 700 directory | 600 regular file | first
  $ qvs checkpoint save here sw2; ls "${QVS_HOST_SOCKET%/*}/checkpoints"; qvs checkpoint remove here  => here: changed | here | here: changed
  $ sed -n 1,2p cp/points/first | sed 's/: .*/: .../'; python3 -c 'import zlib; t = open("cp/points/first", "rb").read().split(b"\n", 2); print(t[1].decode() == "checksum: %08x" % zlib.crc32(t[0] + b"\n" + t[2]))'
  qvs checkpoint 1
  checksum: ...
  True
  $ qvs checkpoint list --dir cp/points | sed 's/20[0-9T:-]*Z/TIME/; s/TIME  [^ ]*/TIME  HOST/' | tr -s ' '  => NAME TIME HOST HOST SWITCHES | first TIME HOST 1
  $ qvs checkpoint list --dir cp/points --json | sed 's/20[0-9T:-]*Z/TIME/; s/"host":"[^"]*"/"host":"HOST"/; s/"bytes":[0-9]*/"bytes":N/'  => [ | {"name":"first","time":"TIME","host":"HOST","switches":1,"bytes":N,"problem":null} | ]
  $ qvs checkpoint diff first --dir cp/points; qvs checkpoint diff first --dir cp/points --json  => []
  $ for words in 'port vlan set sw1 port0 --id 10' 'port add sw1 extra' 'port remove sw1 port1' 'port add sw2 own' 'mac-learning set sw1 --aging 77'; do qvs $words >log; done
  $ qvs checkpoint diff first --dir cp/points
  - switches.sw1.host.macLearning: {aging: 77, limit: 65536}
  ~ switches.sw1.ports.port0.vlan: {id: 10} -> {}
  + switches.sw1.ports.port1
  + switches.sw1.ports.port1.connectId: 1
  + switches.sw1.ports.port1.blocked: off
  + switches.sw1.ports.port1.vlan: {}
  - switches.sw1.ports.extra
  ? 4
  $ qvs checkpoint diff first --dir cp/points --json | sed -n 2p  => {"change":"removed","switch":"sw1","port":null,"host":true,"member":"macLearning","property":null,"before":{"aging": 77, "limit": 65536},"after":null,"conflict":false},
  $ qvs checkpoint rollback first --dir cp/points --dry-run >plan; qvs checkpoint diff first --dir cp/points | diff - plan && echo same  => same
  $ qvs checkpoint rollback first --dir cp/points --yes | tail -n 4; qvs checkpoint diff first --dir cp/points; qvs port list sw2 --names  => sw1: changed | sw1/port0: changed | sw1/port1: changed | sw1/extra: changed | own
  $ qvs checkpoint rollback first --dir cp/points --yes  => nothing to change
  $ qvs switch destroy sw1; qvs checkpoint rollback first --dir cp/points --yes --json | head -n 4; qvs checkpoint diff first --dir cp/points; echo $(qvs port list sw1 --names)
  sw1: changed
  {"outcome":"applied","changes":[
  {"change":"added","switch":"sw1","port":null,"host":false,"member":null,"property":null,"before":null,"after":null,"conflict":false},
  {"change":"added","switch":"sw1","port":null,"host":false,"member":"id","property":null,"before":null,"after":"73 77 31 00 00 00 00 00-00 00 00 00 00 00 00 00","conflict":false},
  {"change":"added","switch":"sw1","port":null,"host":false,"member":"portset","property":null,"before":null,"after":"sw1","conflict":false},
  uplink0 port0 port1
  $ qvs port add sw1 late; qvs checkpoint rollback first --dir cp/points --yes --confirm 600 2>/dev/null; qvs apply --recover; echo $(qvs port list sw1 --names)
  sw1/late: changed
  - switches.sw1.ports.late
  sw1/late: changed
  undone
  uplink0 port0 port1 late

An MTU that was not stored is the default again.

  $ qvs mtu set sw1 9000; qvs checkpoint rollback first --dir cp/points --yes; qvs mtu get sw1 --json; treesh -e get /net/pNics/pnic0/mtu
  sw1: changed
  - switches.sw1.mtu: 9000
  - switches.sw1.ports.late
  sw1: changed
  sw1/late: changed
  {"switch":"sw1","mtu":1500,"stored":false}
  mtu:1500
  $ qvs mtu set sw1 9000; qvs-host fault add 'GlobalPropClear*etherswitch.mtu' --status 0xbad0004; qvs checkpoint rollback first --dir cp/points --yes; qvs mtu get sw1 --json; treesh -e get /net/pNics/pnic0/mtu; qvs checkpoint rollback first --dir cp/points --yes >log; qvs port add sw1 late
  sw1: changed
  - switches.sw1.mtu: 9000
  qvs: switch 'sw1': mtu: Busy (0xbad0004)
  qvs: everything was undone
  {"switch":"sw1","mtu":9000,"stored":true}
  mtu:9000
  sw1/late: changed

What show prints is a document.

  $ qvs checkpoint show first --dir cp/points >doc.yaml; sed -n 1p doc.yaml | sed 's/20[0-9T:-]*Z/TIME/; s/host .*/host HOST/'; qvs apply --dry-run --prune --switch sw1 doc.yaml  => # checkpoint first, TIME, host HOST | - switches.sw1.ports.late
  $ qvs checkpoint show first --dir cp/points --json | jq -c '[keys_unsorted, .name, .switches, .document.switches.sw1.uplinks]'  => [["name","time","host","switches","bytes","document"],"first",1,["uplink0"]]

A name is no path; a checkpoint is not overwritten unasked; what is not there is not found.

  $ for name in '' .hidden ../first a/b 'a b' "$(printf 'x%.0s' $(seq 201))"; do qvs checkpoint save "$name" --dir cp/points 2>&1; done | grep -c "is no name of a checkpoint"; find cp | sort  => 6 | cp | cp/points | cp/points/first
  $ qvs checkpoint save first --dir cp/points; qvs checkpoint save first --dir cp/points --replace; qvs checkpoint list --dir cp/points --json | jq -c 'map([.name, .switches])'
  qvs: checkpoint 'first': it exists already; --replace overwrites it
  first: changed
  [["first",2]]
  $ qvs checkpoint save second sw9 --dir cp/points; qvs checkpoint show second --dir cp/points; qvs checkpoint remove second --dir cp/points; qvs checkpoint list --dir nowhere --json; qvs checkpoint diff x --dir nowhere; ls -A nowhere 2>&1
  qvs: switch 'sw9': Not found (0xbad0003)
  qvs: checkpoint 'second': there is none of this name
  qvs: checkpoint 'second': there is none of this name
  []
  qvs: checkpoint 'x': there is none of this name
  ls: cannot access 'nowhere': No such file or directory
  ? 2

Damaged files, those of a newer version, links, and directories of others are refused.

  $ cd cp/points; sed 's/port0/port7/' first >damaged; sed 's/^qvs checkpoint 1/qvs checkpoint 2/' first >newer; head -c 60 first >cut; : >empty; ln -s first link; mkfifo pipe; cp first open; chmod 666 open
  $ for name in damaged newer cut empty link pipe open; do error=$(qvs checkpoint show $name --dir cp/points 2>&1); echo $? $error; qvs checkpoint rollback $name --yes --dir cp/points 2>/dev/null; done
  1 qvs: checkpoint 'damaged': the file is damaged: its checksum does not match its contents; restore it from a copy, or remove it
  1 qvs: checkpoint 'newer': a newer version of qvs wrote it, in format 2; this one reads format 1
  1 qvs: checkpoint 'cut': the file is damaged: its checksum does not match its contents; restore it from a copy, or remove it
  1 qvs: checkpoint 'empty': the file is damaged: it does not begin as a checkpoint; restore it from a copy, or remove it
  1 qvs: file 'cp/points/link': it is a symbolic link
  1 qvs: file 'cp/points/pipe': it is not a file
  1 qvs: file 'cp/points/open': other users may write to it
  ? 1
  $ qvs checkpoint list --dir cp/points --json | jq -c '[.[] | select(.problem) | .name, .time], .[1].problem'; qvs checkpoint list --dir cp/points 2>&1 >/dev/null | wc -l
  ["cut",null,"damaged",null,"empty",null,"link",null,"newer",null,"open",null,"pipe",null]
  "checkpoint 'damaged': the file is damaged: its checksum does not match its contents; restore it from a copy, or remove it"
  7
  $ mkdir shared; chmod 777 shared; ln -s cp linked; for dir in shared linked cp/points/first /proc/none; do qvs checkpoint save x --dir $dir; done; ls -A shared
  qvs: directory 'shared': other users may write to it
  qvs: directory 'linked': Not a directory
  qvs: directory 'cp/points/first': Not a directory
  qvs: directory '/proc/none': No such file or directory
  $ ln -sf /etc/passwd cp/points/first; qvs checkpoint save first --dir cp/points --replace; stat -c %F cp/points/first; qvs checkpoint remove first --dir cp/points  => first: changed | regular file | first: changed
