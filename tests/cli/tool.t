Without a host.

  $ qvs switch list  => [5] qvs: no hypercore on this machine: the kernel's switch device does not answer | qvs: an emulated host to try this on: qvs-host run -- qvs ...
  $ qvs batch /dev/null  => [5] qvs: no hypercore on this machine: the kernel's switch device does not answer | qvs: an emulated host to try this on: qvs-host run -- qvs ...
  $ qvs status 0xbad0003  => 0xbad0003: Not found
  $ qvs status 195887108 --json  => {"status":195887108,"hex":"0xbad0004","text":"Busy"}
  $ qvs status 0xbad  => 0xbad: General error
  $ qvs status bad  => [2] qvs: CODE: 'bad' is not a number from 0 to 4294967295

Usage.

  $ qvs --version  => qvs 1.1.0
  $ qvs 2>&1 | head -n 1; qvs >/dev/null 2>&1  => [2] usage: qvs NOUN VERB [ARGUMENT...] [OPTION...]
  $ qvs switch 2>&1 | head -n 1  => qvs switch: distributed switches
  $ each nix 'switch nix' '--nix switch list' 'port list sw1 more' 'port add sw1 p --connect-id 1 --connect-id 2' 'dump --json' 'switch show sw1 --raw file --json' 'port list sw1 --names --kernel' 'completion ksh'
  qvs: no such command: 'nix'; did you mean 'nic'? 'qvs help' lists them
  qvs: no such command: switch 'nix'; 'qvs help switch' lists them
  qvs: no such option: '--nix'
  qvs: unexpected argument: 'more'
  qvs: usage: qvs port list SWITCH [--names] [--columns NAME,...] [--vlan N] [--kernel] [--raw FILE] [--layout FILE] [--where FIELD=VALUE]... [--sort FIELD] [--reverse] [--limit N]
  qvs: --connect-id: given twice
  qvs: usage: qvs port add SWITCH PORT... [--connect-id N] [--external-id ID] [--may-exist]
  qvs: qvs dump has no JSON; call it without --json
  qvs: --raw and --json exclude each other
  qvs: --names and --kernel exclude each other
  qvs: SHELL: 'ksh' is none of bash, zsh, fish
  exit 2 2 2 2 2 2 2 2 2

Help, manual and completion come from the table.

  $ qvs switch destroy --help
  usage: qvs switch destroy SWITCH [--if-exists]
  
    destroy a switch with its ports and its portset
    What a change that was killed or not undone left of a switch is removed as well. SWITCH is then its alias, the identifier of a switch without alias, or the name of a portset without switch.
  
  arguments:
    SWITCH  alias of the switch
  
  options:
    --if-exists        succeed when it is not there
    --json             print JSON
    --wide             do not cut tables to the width of the terminal
    --trace            print each library call, its status and its time to standard error
    --timeout SECONDS  wait so long for the host to answer, and for other runs that change the same (10)
    --help             print the help of the command
  
  example:
    qvs switch destroy sw1 --if-exists
  $ qvs help switch destroy | cmp - <(qvs switch destroy -h); qvs switch --help | sed -n 3p  =>   qvs switch create        create a switch, its uplinks uplink0, uplink1... and its ports port0, port1...
  $ qvs manual | sed -n '1,5p'
  .TH QVS 1 2026-11-22 "qvs 1.1.0" "User Commands"
  .SH NAME
  qvs \- control the distributed virtual switches of a hypervisor host
  .SH SYNOPSIS
  \fBqvs\fR \fINOUN\fR \fIVERB\fR [\fIARGUMENT\fR...] [\fIOPTION\fR...]
  $ qvs help all | grep -c '^  --'  => 5
  $ pages() { qvs manual --names | while read -r noun; do qvs manual $noun; done; }; pages >pages; qvs help all | grep '^  qvs' | while read -r _ words; do command=${words%%  *}; grep -qF "${command//-/\\-}" pages || echo "$command"; done  => fleet
  $ qvs manual nic | sed -n '/^.SH COMMANDS/,$p'
  .SH COMMANDS
  .SS "qvs nic list"
  list the physical NICs that uplinks are bound to, with their links.
  .PP
  .nf
  qvs nic list [\-\-names]
  .fi
  .TP
  \fB\-\-names\fR
  print the names alone, one a line
  .PP
  A NIC that no uplink is bound to is not known to the switches. MBIT/S is the
  speed in megabits per second; it is left out when the kernel stores none.
  .PP
  Example: qvs nic list
  .SH SEE ALSO
  qvs(1) has the options of every command and the exit statuses.
A usage wraps to fit 80 columns. A backslash joins lines of the source, of at most 80 bytes, whose text must not be broken.
  $ qvs manual prop | sed -n '/^.nf/,/^qvs prop set/p;/^.fi/q'; awk 'length > 80' pages
  .nf
  qvs prop get \fISWITCH\fR \fIKEY\fR [\-\-host] [\-\-port \fIPORT\fR] \
  [\-\-by\-id] [\-\-hex]
  \&    [\-\-raw \fIFILE\fR]
  qvs prop set \fISWITCH\fR \fIKEY\fR [\fIVALUE\fR] [\-\-host] [\-\-port \
  $ qvs manual | grep -A 1 -F 'qvs\-port(1)'; qvs manual prot  => [2] \fBqvs\-port(1)\fR | ports of a switch | qvs: there is no manual page about 'prot'; did you mean 'port' or 'prop'?
  $ qvs manual --markdown | sed -n '/### qvs switch destroy/,/if-exists`:/p'
  ### qvs switch destroy
  
  destroy a switch with its ports and its portset.
  
      qvs switch destroy SWITCH [--if-exists]
  
  - `SWITCH`: alias of the switch
  - `--if-exists`: succeed when it is not there
  $ qvs help >/dev/full  => [1] qvs: standard output: No space left on device

The completion offers nouns, verbs, options and names, and runs nothing.

  $ try() { COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _qvs; echo "${COMPREPLY[@]}"; }; . <(qvs completion bash); try qvs p; try qvs uplink ''; try qvs switch create --m; try qvs --json dump -; try qvs completion ''
  port pvlan prop
  list add remove set clear up down
  --max-ports --may-exist
  --trace --timeout --help
  bash zsh fish

A lab that makes no sense is refused.

  $ cat >bad <<<'while read -r member; do echo "{\"switches\": [{\"alias\": \"sw1\", \"ports\": [\"p0\"]}], $member}" >lab.json; qvs-host run --lab lab.json -- true 2>&1 | sed "s/.*used: lab.//"; done'
  $ sed 's/"IN"/"switch": "sw1", "port": "p0"/g' <<<'"busy": [{"switch": "sw1", "port": "p9"}]@"mcastFilters": [{"IN", "group": "192.0.2.1"}]@"spfPorts": [{"IN", "mac": "01:00:00:00:00:01"}]@"macEntries": [{"IN", "mac": "02:00:00:00:00:01", "vlan": 4095}]@"macEntries": [{"IN", "mac": "02:00:00:00:00:01", "count": 70000}]@"macEntries": [{"IN", "mac": "fe:ff:ff:ff:ff:ff", "count": 2}]@"macEntries": [{"IN", "mac": "02:00:00:00:00:01", "kind": "kept"}]@"kcp": {"interfaces": [{"name": "x", "switch": "sw1", "port": "nix"}]}@"mcastFilters": [{"IN", "group": "239.255.255.255", "count": 2}]@"mcastFilters": [{"IN", "group": "ff05::", "count": 65537}]@"mcastFilters": [{"IN", "group": "01:ff:ff:ff:ff:ff", "count": 2}]' | tr @ '\n' | sh bad
  busy[0]: "port" is not a port of the switch: p9
  mcastFilters[0]: "group" is not a multicast group
  spfPorts[0]: "mac" is not a unicast address
  macEntries[0]: "vlan" is not a number from 0 to 4094
  macEntries[0]: "mac" exceeds the address limit of the port or the switch
  macEntries[0]: "mac" results in an address that is not unicast
  macEntries[0]: "kind" is none of "learnt", "static"
  kcp.interfaces[0]: "port" is not a port of the switch: nix
  mcastFilters[0]: "count" exceeds the last multicast group
  mcastFilters[0]: "count" exceeds the free room in the table
  mcastFilters[0]: "count" exceeds the last multicast group
  $ tr @ '\n' <<<'"bfd": {"logLevel": 2}@"bfd": {"sessions": [{"local": "192.0.2.1", "remote": "::1"}]}@"bfd": {"sessions": [{"local": "192.0.2.1", "remote": "192.0.2.2", "count": 8902}]}@"bfd": {"sessions": [{"local": "x", "remote": "192.0.2.2"}]}@"bfd": {"sessions": [{"local": "192.0.2.1", "remote": "192.0.2.2", "state": "off"}]}@"kcp": {"containers": [{"count": 10001}]}@"options": [{"id": 65536, "hex": "00"}]@"bfd": {"sessions": [{"local": "192.0.2.1", "remote": "255.255.255.255", "count": 2}]}@"kcp": {"interfaces": [{"name": "x", "mac": "00:ff:ff:ff:ff:ff", "count": 2}]}@"kcp": {"interfaces": [{"name": "x", "vlan": 4095}]}@"kcp": {"containers": [{"number": 4294967295, "count": 2}]}@"kcp": {"containers": [{"number": 4294967295}]}' | sh bad
  bfd: "logLevel" is none of 0, 1, 3 and 5
  bfd.sessions[0]: "remote" is of another family than "local"
  bfd.sessions[0]: "count" exceeds the free room in the table
  bfd.sessions[0]: "local" is not an IP address
  bfd.sessions[0]: "state" is none of "admin-down", "down", "init", "up"
  kcp.containers[0]: "count" exceeds the free room in the table
  options[0]: "id" is not a number from 0 to 65535
  bfd.sessions[0]: "count" exceeds the last address
  kcp.interfaces[0]: "mac" results in a multicast address
  kcp.interfaces[0]: "vlan" is not a number from 0 to 4094
  kcp.containers[0]: "count" exceeds the last number

A fault that makes no sense is a wrong usage.

  $ for words in '--errno EIO --count 0' '--errno EIO --count 2 --forever' '--errno EFOO' '--status bad' '--output 4294967296:ff' '--output 0:f' '--delay 0' '--kill never' ''; do qvs-host fault add x $words --state . 2>&1 | head -n 1; done; qvs-host fault add '' --errno EIO --state .
  qvs-host: --count: '0' is not a number from 1 to 4294967295
  qvs-host: --count and --forever exclude each other
  qvs-host: --errno: 'EFOO' is not the name of an error, such as EIO
  qvs-host: --status: 'bad' is not a number like 0xbad0014
  qvs-host: --output: '4294967296:ff' is not an offset and bytes, such as 0:ffffffff
  qvs-host: --output: '0:f' is not an offset and bytes, such as 0:ffffffff
  qvs-host: --delay: '0' is not a number from 1 to 600000
  qvs-host: --kill: 'never' is none of before, middle, after
  qvs-host: the fault has no effect; give at least one of --errno, --status, --exit, --delay, --kill, --output, --truncate and --lab
  qvs-host: MATCH: is empty; * matches every request
  ? 2
  $ qvs-host run -- sh -c 'qvs-host fault add ls --output 0:7065 --output 2:74 --truncate 4; treesh -e ls /; qvs-host fault list'  => pet/  1: "ls" --nth 1 --count 1 --truncate 4 --output 0:7065 --output 2:74; matched 1, fired 1

An installed lab is found by its name, and the prompt of a shell names the host.

  $ qvs-host labs  => pod | rack | two-nics
  $ qvs-host run --lab two-nics -- qvs-host status | sed 1,4d
  NICs 2
    pnic0: link up, admin up, 10000 Mb/s, MTU 1500, 02:00:00:00:00:00, port -
    pnic1: link down, admin up, 1000 Mb/s, MTU 1500, 02:00:00:00:00:01, port -
  network off
  faults 0
  $ echo '{}' >rack; qvs-host run --lab rack -- qvs switch list --names; rm rack; mkdir rack; qvs-host run --lab rack -- qvs switch list --names  => storage | tenants
  $ echo exit | SHELL=/bin/bash HOME=. script -qec 'qvs-host shell --state my-lab' /dev/null | grep -ao '(qvs-host[^)]*)' | head -n 1  => (qvs-host my-lab)
  $ echo exit | SHELL=/bin/sh HOME=. script -qec "qvs-host shell --state 'd\$(touch x)'" /dev/null | grep -ao '(qvs-host[^)]*)' | head -n 1; test -e x || echo nothing ran  => (qvs-host d??touch?x?) | nothing ran

The launcher's own words.

  $ for option in --lab --trace --max-state-mib; do qvs-host run $option '' -- true 2>&1 | head -n 1; done; qvs-host run --max-state-mib 0 -- true; qvs-host --version; qvs-host help | head -n 1; qvs-host run true; qvs-host run --stat -- true; qvs-host start; qvs-host fault nix; qvs-host stop --json
  qvs-host: --lab: the name of a file is empty
  qvs-host: --trace: the name of a file is empty
  qvs-host: --max-state-mib: '' is not a number of 0 or more
  qvs-host: --max-state-mib: '0' is not a number from 1 to 4294967295
  qvs-host 1.1.0
  usage: qvs-host COMMAND [ARGUMENT...] [OPTION...]
  qvs-host: unexpected argument: 'true'; COMMAND goes behind --
  qvs-host: usage: qvs-host run [--state DIR] [--lab LAB] [--trace FILE] [--max-state-mib N] [--network] -- COMMAND...
  qvs-host: no such option: '--stat'; did you mean '--state'?
  qvs-host: usage: qvs-host run [--state DIR] [--lab LAB] [--trace FILE] [--max-state-mib N] [--network] -- COMMAND...
  qvs-host: --state is needed
  qvs-host: usage: qvs-host start --state DIR [--lab LAB] [--trace FILE] [--max-state-mib N] [--network]
  qvs-host: no such command: fault 'nix'; 'qvs-host help fault' lists them
  qvs-host: qvs-host stop has no JSON; call it without --json
  ? 2
  $ . <(qvs-host completion bash); try() { COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _qvs_host; echo "${COMPREPLY[@]}"; }; mkdir lab; try qvs-host fault ''; try qvs-host start --m; try qvs-host run --state l; try qvs-host run -- treesh --; try qvs-host run -- false l
  add list clear
  --max-state-mib
  lab
  
  lab lab.json
  $ echo '{' >lab.json; qvs-host run --lab lab.json -- true 2>&1 | sed 's/.*used: //'; tr @ '\n' <<<'"pnics": [{"name": "a", "mtu": 9001}]@"switches": [{"alias": ""}]@"switches": [{"alias": "a", "maxPorts": 0}]@"options": [{"id": 1, "hex": "00 01"}]' | sh bad
  parse error at line 2, column 1: syntax error while parsing object key - unexpected end of input; expected string literal
  pnics[0]: "mtu" is not a number from 1280 to 9000
  switches[0]: "alias" is not a name of 1 to 127 characters
  switches[0]: "maxPorts" is not a number from 1 to 4294967295
  options[0]: "hex" is not a row of pairs of hexadecimal digits
  $ qvs-host run -- sh -c 'qvs switch create sw1; echo "{\"pnics\": [{\"name\": \"pnic4\"}]}" >lab.json; qvs-host run --state $QVS_HOST_STATE --lab lab.json -- true; qvs-host fault add PortAdd --lab lab.json; qvs port add sw1 p0'
  sw1: changed
  qvs-host: NIC pnic4: NICs can be added only to an empty host
  sw1/p0: changed
  qvs-host: the host's log: warning fault: cannot apply the lab: NIC pnic4: NICs can be added only to an empty host

A wrong value, and values that do not go together, are said before the host is looked for.

  $ while IFS= read -r words; do qvs $words >out 2>&1 </dev/null; echo $? $(head -n 1 out); done <<<$'top --once --interval x\nmonitor --interval 0\nport stats sw1 --interval 3\nspf plumb sw1 p0 zz\ntrace start sw1 p0 zz 02:00:00:00:00:01\nmac table sw1 --mac zz\nmac table sw1 --vlan 5000\nmac table sw1 --where x\nmac table sw1 --sort vlan\nmac table sw1 --team --port p\nmac add sw1 02\nmac add sw1 02 --port p --number 3\ncheckpoint save a/b\ncheckpoint rollback a\nteaming set sw1\nmcast list set sw1\napply\napply x\nbfd sessions --flags 4\nbfd sessions --flags 259\nbfd log-level set 2\nlivetrace counts 256\nrtm op 1\noptions get 65536\nprop set sw1 k --hex 012\nprop set sw1 k --hex 0g\nprop get sw1 k --host --port p\nport add sw1 p p\nport add sw1 p q --external-id x\nport list sw1 --columns x\nport list sw1 --columns port,port\nport list sw1 --vlan 0\nuplink set sw1\nuplink set sw1 right --count 1\nuplink add sw1 a a\nmcast stats sw1 01:00:5e:00:00:fb\nmirror add sw1 s --type x\nswitch find\nswitch find --alias sw1 --portset sw1\nswitch create sw1 --max-ports 4294967295\nbatch --timeout 0 x\nteaming set sw1 --balance nix\nport vlan set sw1 p0 --id 4095\npvlan set sw1 1:2\nswitch list --names --kernel\ntopology --format htlm\nport list s --limit 1'
  2 qvs: --interval: 'x' is not a number of seconds from 0.01 to 3600
  2 qvs: --interval: '0' is not a number of seconds from 0.01 to 3600
  2 qvs: --interval needs --watch
  2 qvs: 'zz' is no MAC address, like 02:00:00:00:00:01
  2 qvs: SOURCE: 'zz' is not a MAC address
  2 qvs: --mac: 'zz' is not a MAC address, like 02:00:00:00:00:01, or the beginning of one
  2 qvs: --vlan: '5000' is not a number from 0 to 4094
  2 qvs: --where: 'x' is not a field and a value, like vlan=10
  2 qvs: --sort needs a layout: no layout file is named; name one with --layout or in the variable QVS_LAYOUT
  2 qvs: --team and --port exclude each other
  2 qvs: one of --port, --number is needed
  2 qvs: --port and --number exclude each other
  2 qvs: 'a/b' is no name of a checkpoint: it is made of 1 to 200 letters, digits, '.', '_' and '-', and does not begin with '.'
  2 qvs: nobody can be asked without a terminal; --yes applies the document without asking
  2 qvs: at least one of --balance, --active, --standby, --link-state, --beacon, --notify, --rolling, --best-effort, --shotgun, --reset is required
  2 qvs: either MAC or --empty is required
  2 qvs: FILE or --recover is needed
  2 qvs: nobody can be asked without a terminal; --yes applies the document without asking
  2 qvs: --flags: 4 is not a byte with bit 0 or bit 1 set
  2 qvs: --flags: 259 is not a byte with bit 0 or bit 1 set
  2 qvs: LEVEL: 2 is none of 0, 1, 3, 5
  2 qvs: ACTION: '256' is not a number from 0 to 255
  2 qvs: one of BLOCK, --file is needed
  2 qvs: ID: '65536' is not a number from 0 to 65535
  2 qvs: --hex: '012' is not a row of pairs of digits
  2 qvs: --hex: '0g' is not a row of pairs of digits
  2 qvs: --host and --port exclude each other
  2 qvs: port 'p': given twice
  2 qvs: --external-id names one interface, so it takes one port
  2 qvs: --columns: 'x' is none of port, number, state, in-use, link, client, connect-id, alias, external-id, uplink, blocked, vlan, policies
  2 qvs: --columns: 'port' is given twice
  2 qvs: --vlan: '0' is not a number from 1 to 4094
  2 qvs: one of UPLINK, --count is needed
  2 qvs: UPLINK and --count exclude each other
  2 qvs: uplink 'a': given twice
  2 qvs: '01:00:5e:00:00:fb' is no IPv4 or IPv6 address
  2 qvs: --type: 'x' is not mixdst, dvport, rmirror-src, rmirror-dst, ermirror-src or logical-span
  2 qvs: one of --portset, --alias is needed
  2 qvs: --portset and --alias exclude each other
  2 qvs: --max-ports: '4294967295' is not a number from 0 to 2147483647
  2 qvs: --timeout: '0' is not a number from 1 to 86400
  2 qvs: --balance: 'nix' is not none, source-ip, source-mac, source-port, explicit or port-load
  2 qvs: --id: 4095 is beyond 4094
  2 qvs: PRIMARY:SECONDARY:TYPE: '1:2' is not PRIMARY:SECONDARY:TYPE
  2 qvs: --names and --kernel exclude each other
  2 qvs: --format: 'htlm' is none of text, dot, svg, html
  2 qvs: --limit needs --kernel
