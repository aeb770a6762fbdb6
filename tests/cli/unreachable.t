A host that does not answer is no empty host, and no missing one, whether it has a switch or not.

  $ for error in EPERM EACCES EBUSY EIO ETIMEDOUT EMFILE; do qvs-host fault add 'device open' --forever --errno $error; error=$(qvs switch list 2>&1); echo "$? $error"; qvs-host fault clear; done
  6 qvs: the host does not answer: /dev/vswitch: Operation not permitted; it answers root, and the user whom it belongs to
  6 qvs: the host does not answer: /dev/vswitch: Permission denied; it answers root, and the user whom it belongs to
  6 qvs: the host does not answer: /dev/vswitch: Device or resource busy
  6 qvs: the host does not answer: /dev/vswitch: Input/output error
  6 qvs: the host does not answer: /dev/vswitch: Connection timed out; --timeout SECONDS waits longer
  6 qvs: the host does not answer: /dev/vswitch: Too many open files
  $ qvs switch create sw1  => sw1: changed
  $ for error in EPERM EACCES EBUSY EIO ETIMEDOUT EMFILE; do qvs-host fault add 'device open' --forever --errno $error; qvs switch destroy sw1 --if-exists 2>/dev/null; echo $?; qvs-host fault clear; done | uniq -c | sed 's/^ *//'  => 6 6

The state that cannot be loaded, and a host that stops answering in the middle of a run.

  $ for status in 0xbad0001 0xbad0021 0xbad005b; do qvs-host fault add StateGet --forever --status $status; error=$(qvs switch destroy sw1 --if-exists 2>&1); echo "$? $error"; qvs-host fault clear; done
  6 qvs: the host does not answer: switch state: Failure (0xbad0001)
  6 qvs: the host does not answer: switch state: Timeout (0xbad0021); --timeout SECONDS waits longer
  6 qvs: the host does not answer: switch state: Operation not permitted (0xbad005b)
  $ qvs-host fault add 'device open' --nth 2 --errno EBUSY --forever; qvs switch show sw1; qvs-host fault clear  => qvs: switch 'sw1': Busy (0xbad0004) | qvs: the host does not answer: /dev/vswitch: Device or resource busy
  $ qvs-host fault add 'device open' --nth 2 --errno ENOENT --forever; qvs uplink list sw1; echo $?; qvs-host fault clear  => qvs: no hypercore on this machine: the emulated host that this shell belongs to has ended | 5
  $ qvs-host run -- sh -c 'for error in ENOENT ENXIO ENODEV; do qvs-host fault add "device open" --forever --errno $error; qvs switch list 2>/dev/null; echo $?; qvs-host fault clear; done'  => 5 | 5 | 5

A socket without permission: that of another user, or one that lost its bits.

  $ other=; if [ "$(id -u)" -eq 0 ]; then other="setpriv --reuid 65534 --clear-groups"; else chmod 0 ../state/socket; fi; $other qvs switch list; echo $?; chmod 600 ../state/socket
  qvs: the host does not answer: /dev/vswitch: Permission denied; it answers root, and the user whom it belongs to
  6

A daemon that is stopped: no change is called unchanged, and the wait is as long as the user says.

  $ pid=$(tr -dc 0-9 <../state/lock); kill -STOP $pid; qvs switch destroy sw1 --if-exists --timeout 1; echo $?; kill -CONT $pid  => qvs: the host does not answer: switch state: Timeout (0xbad0021); --timeout SECONDS waits longer | 6

How long it may take is for the user to say.

  $ for words in 'switch list --timeout x' 'switch list --timeout' '--timeout'; do qvs $words 2>&1 | head -n 1; done
  qvs: --timeout: 'x' is not a number from 1 to 86400
  qvs: --timeout requires SECONDS
  usage: qvs NOUN VERB [ARGUMENT...] [OPTION...]
  $ pid=$(tr -dc 0-9 <../state/lock); kill -STOP $pid; timeout 4 qvs --timeout 2 switch list 2>/dev/null; echo $?; kill -CONT $pid  => 6
  $ qvs --timeout 5 switch list --names --timeout=6  => [2] qvs: --timeout: given twice | qvs: usage: qvs switch list [--names] [--kernel]

What needs no host does not wait for one that is stopped.

  $ pid=$(tr -dc 0-9 <../state/lock); kill -STOP $pid; while read -r words; do QVS_HOST_TIMEOUT=5 timeout 2 qvs $words >log 2>&1; echo "$? $(head -n 1 log | sed 's/^qvs [0-9].*/VERSION/' | cut -c1-50)"; done <<<$'help\n--version\nswich\nmtu set sw1 1\nport list --help\ncomplete -- sw\nstatus 0xbad0003'; kill -CONT $pid
  0 usage: qvs NOUN VERB [ARGUMENT...] [OPTION...]
  0 VERSION
  2 qvs: no such command: 'swich'; did you mean 'switc
  2 qvs: MTU: 1 is below 1280
  0 usage: qvs port list SWITCH [--names] [--columns N
  0 -
  0 0xbad0003: Not found
