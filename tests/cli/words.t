A wrong word is answered with the right one, whether there is a host or not.

  $ suggest() { while IFS= read -r words; do $1 $words; done 2>&1 | grep -v 'usage:'; }; suggest qvs <<<$'swich list\nswitch lst\nswitches list\nports\nswitch rm sw1\nport delete sw1 p0\nmtu modify sw1 9000\nls switches\nrm port sw1 p0\nvlan get sw1 p0\nbonds\nlldp get sw1\nxyzzy\ntrunk\nlacp\nundo\nwatch\nchanges\ncounters\nprometheus\nwhy\nversion\nls\nrm\nget trunk'
  qvs: no such command: 'swich'; did you mean 'switch'? 'qvs help' lists them
  qvs: no such command: switch 'lst'; did you mean 'switch list'? 'qvs help switch' lists them
  qvs: no such command: 'switches'; did you mean 'switch'? 'qvs help' lists them
  qvs: no such command: 'ports'; did you mean 'port'? 'qvs help' lists them
  qvs: no such command: switch 'rm'; did you mean 'switch destroy'? 'qvs help switch' lists them
  qvs: no such command: port 'delete'; did you mean 'port remove'? 'qvs help port' lists them
  qvs: no such command: mtu 'modify'; did you mean 'mtu set'? 'qvs help mtu' lists them
  qvs: no such command: 'ls'; did you mean 'switch list', 'switch show' or 'switch info'? 'qvs help' lists them
  qvs: no such command: 'rm'; did you mean 'port remove'? 'qvs help' lists them
  qvs: no such command: 'vlan'; did you mean 'port vlan', 'port list' or 'topology'? 'qvs help' lists them
  qvs: no such command: 'bonds'; did you mean 'teaming'? 'qvs help' lists them
  qvs: no such command: 'lldp'; did you mean 'discovery'? 'qvs help' lists them
  qvs: no such command: 'xyzzy'; 'qvs help' lists them
  qvs: no such command: 'trunk'; did you mean 'port vlan set'? 'qvs help' lists them
  qvs: no such command: 'lacp'; did you mean 'uplink list'? 'qvs help' lists them
  qvs: no such command: 'undo'; did you mean 'checkpoint' or 'apply'? 'qvs help' lists them
  qvs: no such command: 'watch'; did you mean 'monitor'? 'qvs help' lists them
  qvs: no such command: 'changes'; did you mean 'monitor', 'checkpoint diff' or 'diff'? 'qvs help' lists them
  qvs: no such command: 'counters'; did you mean 'top' or 'port stats'? 'qvs help' lists them
  qvs: no such command: 'prometheus'; did you mean 'metrics'? 'qvs help' lists them
  qvs: no such command: 'why'; did you mean 'show', 'port show' or 'doctor'? 'qvs help' lists them
  qvs: no such command: 'version'; did you mean '--version'? 'qvs help' lists them
  qvs: no such command: 'ls'; did you mean 'show'? 'qvs help' lists them
  qvs: no such command: 'rm'; 'qvs help' lists them
  qvs: no such command: 'get'; did you mean 'mtu get', 'pvlan get' or 'port vlan get'? 'qvs help' lists them
  $ suggest() { while IFS= read -r words; do $1 $words; done 2>&1 | grep -v 'usage:'; }; suggest qvs <<<$'--jsno switch list\nport list sw1 --tiemout 3\nswitch create sw1 --max 4\nswitch create sw1 --may-exists\nswitch show sw1 100\nuplink add sw1 u0 --connect 5\nmirror list sw1 p0\nmirror list sw1 p0 --port p1\nport list sw1 p0 p1\nmac-learning set sw1 100\nteaming set sw1 source-mac\nteaming set sw1 uplink0\nmcast filters sw1 ipv4\nmcast filters sw1 --type ipv5\nswitch list --timeout\nswitch list --json=yes\nport show sw1\nport vlan set sw1 p0 --vlan 5\nmirror add sw1 s --to p0\nport vlan set sw1 p0 100\nport vlan set sw1 p0 p1\nswitch list --vlan 5'
  qvs: no such option: '--jsno'; did you mean '--json'?
  qvs: no such option: '--tiemout'; did you mean '--timeout'?
  qvs: no such option: '--max'; did you mean '--max-ports'?
  qvs: no such option: '--may-exists'; did you mean '--may-exist'?
  qvs: unexpected argument: '100'
  qvs: no such option: '--connect'; a name that begins with a dash goes behind --
  qvs: unexpected argument: 'p0'; did you mean '--port p0'?
  qvs: unexpected argument: 'p0'
  qvs: unexpected argument: 'p0'
  qvs: unexpected argument: '100'; did you mean '--aging 100' or '--limit 100'?
  qvs: unexpected argument: 'source-mac'; did you mean '--balance source-mac'?
  qvs: unexpected argument: 'uplink0'; did you mean '--active uplink0' or '--standby uplink0'?
  qvs: unexpected argument: 'ipv4'; did you mean '--type ipv4'?
  qvs: --type: 'ipv5' is none of mac, ipv4, ipv6
  qvs: --timeout requires SECONDS
  qvs: --json takes no value
  qvs: PORT is required
  qvs: no such option: '--vlan'; did you mean '--id'?
  qvs: no such option: '--to'; did you mean '--destinations'?
  qvs: at least one of --id, --private, --trunk, --priority, --reset is required; did you mean '--id 100'?
  qvs: at least one of --id, --private, --trunk, --priority, --reset is required
  qvs: no such option: '--vlan'
  $ suggest() { while IFS= read -r words; do $1 $words; done 2>&1 | grep -v 'usage:'; }; suggest qvs-host <<<$'ls\nexec true\nfault rm\nfault ls\nstat\nrun -- \nstart --stat x\nfault add x --kill soon\nrun --lab rak -- true'
  qvs-host: no such command: 'ls'; did you mean 'status'? 'qvs-host help' lists them
  qvs-host: no such command: 'exec'; 'qvs-host help' lists them
  qvs-host: no such command: fault 'rm'; did you mean 'fault clear'? 'qvs-host help fault' lists them
  qvs-host: no such command: fault 'ls'; did you mean 'fault list'? 'qvs-host help fault' lists them
  qvs-host: no such command: 'stat'; did you mean 'start' or 'status'? 'qvs-host help' lists them
  qvs-host: COMMAND is needed behind --
  qvs-host: no such option: '--stat'; did you mean '--state'?
  qvs-host: --kill: 'soon' is none of before, middle, after
  qvs-host: rak: no such file, and not an installed lab (pod, rack, two-nics)



On a terminal, a usage error is broken to its width.

  $ script -qec 'stty cols 60; qvs mirror add sw1' /dev/null | tr -d '\r' | head -n 4
  qvs: SESSION is required
  qvs: usage: qvs mirror add SWITCH SESSION [--port PORT]
  qvs:            [--name TEXT] --type TYPE
  qvs:            [--snap-length BYTES] [--flags FLAGS,...]
  $ script -qec 'stty cols 60; qvs mtu set sw1 high' /dev/null | tr -d '\r'  => qvs: MTU: 'high' is not a number 1280 to 9000

The help of the whole tool fits on a screen of 80 by 40 with every noun, and no line of help is too long.

  $ for columns in 80 200 ""; do COLUMNS=$columns qvs help | awk 'length > 80 { print } END { print NR <= 40 }'; done  => 1 | 1 | 1
  $ COLUMNS=80 qvs-host help | awk 'length > 80 { print } END { print NR <= 40 }'  => 1
  $ qvs help | sed -n '1p; /^  port /p'  => usage: qvs NOUN VERB [ARGUMENT...] [OPTION...] |   port    ports of a switch                            switches and ports
  $ qvs help | tail -n 2  => qvs help NOUN lists the verbs of a noun, qvs help all every command. | qvs help WORD searches; qvs COMMAND --help says more about a command.
  $ qvs help all | sed -n 's/^  qvs \([a-z-]*\).*/\1/p' | sort -u | while read -r noun; do qvs help | grep -Eq "(^|  )  $noun(  |$)" || echo "$noun is missing"; done
  $ qvs help vlan | grep '^qvs' | cut -d : -f 1 | paste -sd,; qvs help PRIVATE vlan | grep -c '^  qvs'; qvs help rm | grep -c information; qvs help undo | grep -c '^  qvs checkpoint '
  qvs port,qvs mirror,qvs pvlan,qvs port vlan,qvs mac,qvs health,qvs health result,qvs export,qvs apply,qvs topology
  5
  0
  6
  $ qvs help svg | tail -n +3; qvs help lacp | tail -n +3
    qvs topology  draw what is connected to what: NICs, uplinks, switches, ports, mirror sessions, private VLANs
    qvs uplink list  list the uplinks of a switch with their ports, links and NICs
  $ each 'help nothing such' 'help swich'  => qvs: nothing about 'nothing such' was found; 'qvs help' lists the commands | qvs: nothing about 'swich' was found; did you mean 'switch'? 'qvs help' lists the commands | exit 2 2
  $ for columns in 72 200; do COLUMNS=$columns qvs help teaming set | head -n -1 | awk -v most=$columns 'length > most && length > widest { widest = length } length > longest { longest = length } END { print longest, widest + 0 }'; done
  72 0
  99 0
  $ COLUMNS=60 qvs help switch destroy | sed -n 1,8p
  usage: qvs switch destroy SWITCH [--if-exists]
  
    destroy a switch with its ports and its portset
    What a change that was killed or not undone left of a
    switch is removed as well. SWITCH is then its alias, the
    identifier of a switch without alias, or the name of a
    portset without switch.
  
  $ qvs manual --names | while read -r noun; do qvs manual $noun; done >pages; test $(grep -c '^Example: ' pages) = $(grep -c '^.SS ' pages) && echo each  => each

The words of the tasks of a day lead to the commands, also those that stand in details and examples alone.

  $ for word in who move locate bandwidth scrape audit carries tap safely disable node-exporter; do echo "$word:" $(qvs help $word | grep -o '^  qvs [a-z-]* *[a-z-]*' | cut -c7- | tr '\n' ','); done
  who: show show,switch find,port list,mirror add,mac table,mcast filters,mcast stats,options set,metrics print,
  move: port vlan,checkpoint save,
  locate: mac table,
  bandwidth: top watch,port stats,
  scrape: metrics list,metrics print,
  audit: diff compare,checkpoint diff,monitor print,
  carries: port list,port show,uplink list,
  tap: mirror list,mirror show,mirror add,mirror remove,mirror set,mirror clear,mirror runtime,mirror runtime,mirror runtime,mirror runtime,
  safely: apply make,batch run,checkpoint save,checkpoint list,checkpoint show,checkpoint diff,checkpoint rollback,checkpoint remove,
  disable: port block,port unblock,uplink up,uplink down,mirror add,trace disable,
  node-exporter: metrics print,
