Without a lab the control plane lists the host's own objects, and the rest is empty. Null for an empty list is no failure.

  $ qvs kcp switches && qvs kcp interfaces --json && qvs kcp status
  INDEX  ENTRY
  []
  status:  010001
  $ qvs switch create sw1 --uplinks 1 --ports 2  => sw1: changed
  $ for table in switches portsets uplinks; do qvs kcp $table --raw - | bytes; done
  0:0100000037332037372033312030302030302030302030302030302d3030203030203030203030203030203030203030203030 68:737731 (132 bytes)
  0:010000000100000080000000dc05000003000000737731 148:37332037372033312030302030302030302030302030302d3030203030203030203030203030203030203030203030 (260 bytes)
  0:01000000706e696330 36:010000040100000010270000dc05000002 58:37332037372033312030302030302030302030302030302d3030203030203030203030203030203030203030203030 122:75706c696e6b30 (1241 bytes)

A lab fills the other lists. An interface has the link of its port; the containers know how many interfaces are theirs.

  $ echo '{"clients": [{"switch": "sw1", "port": "port1", "name": "web"}], "kcp": {"status": {"running": false, "connected": true}, "interfaces": [{"name": "web.eth", "switch": "sw1", "port": "port0", "mac": "02:00:00:00:01:ff", "vlan": 100, "count": 2}, {"name": "db", "switch": "sw1", "port": "port1"}], "containerInterfaces": [{"name": "pod", "count": 3, "container": 9}], "hypervisorInterfaces": [{"name": "hyp0"}], "hypervisorNics": [{"name": "hypnic0"}], "containers": [{"number": 8, "vlan": 20, "count": 2}]}}' >lab
  $ qvs-host run --state ../state --lab lab -- qvs kcp status  => status:  000101
  $ for table in interfaces container-interfaces hypervisor-interfaces hypervisor-nics containers; do qvs kcp $table --raw - | bytes; done
  0:0300000001 12:7765622e65746830 140:0200000001ff64000200000437332037372033312030302030302030302030302030302d3030203030203030203030203030203030203030203030 216:706f727430 11445:02 11453:7765622e65746831 11581:02000000020064000200000437332037372033312030302030302030302030302030302d3030203030203030203030203030203030203030203030 11657:706f727430 22886:03000000010000006462 23022:0203 23030:0300000437332037372033312030302030302030302030302030302d3030203030203030203030203030203030203030203030 23098:706f727431 (34327 bytes)
  0:030000000100000001000000706f6430 140:0203 11445:09 11693:0200000001000000706f6431 11829:020300000001 23134:09 23382:0300000001000000706f6432 23518:020300000002 34823:09 (35071 bytes)
  0:01000000010000000100000068797030 140:0203 (11445 bytes)
  0:0100000001000000010000006879706e696330 140:0203 (1112 bytes)
  0:02 8:08 16:1400090000000300000014 (28 bytes)
  $ qvs kcp containers
  INDEX  ENTRY
  0      08000000000000001400
  1      09000000030000001400
  $ qvs kcp status --json  => {"status":"AAEB"}

What is on a port goes with it. A lab that is applied again gives the same lists.

  $ qvs port remove sw1 port0 && qvs kcp interfaces | grep bytes  => sw1/port0: changed | interface 0 (11441 bytes):
  $ sed s/port0/port1/ <lab >again; for i in 1 2; do qvs-host run --state ../state --lab again -- qvs kcp interfaces --raw - | cksum; done  => 153554807 34327 | 153554807 34327
  $ echo '{"kcp": {"status": {"connected": true}, "interfaces": [{"name": "hyp", "count": 2}], "containers": [{}]}}' >lab
  $ qvs-host run --state rack --lab lab -- true; qvs-host run --state rack -- sh -c 'qvs kcp status; qvs kcp interfaces | grep bytes; qvs kcp containers'
  status:  010101
  interface 0 (11441 bytes):
  interface 1 (11441 bytes):
  INDEX  ENTRY
  0      01000000000000000000

A count that is too high is not believed; the kernel's failures are told from an empty list.

  $ qvs-host fault add 'kcp*GetContainerCount' --errno EIO && qvs kcp containers  => [1] qvs: kernel control plane: containers: Input/output error
  $ qvs-host fault add 'kcp*GetStatus' --errno EIO && qvs kcp status  => [1] qvs: kernel control plane: status: Input/output error
  $ bad() { echo "$1" >bad; qvs-host run --state ../state --lab bad -- true; }; bad '{"kcp": {"interfaces": [{"name": "x", "switch": "sw1", "port": "nix"}]}}'; bad '{"kcp": {"containers": [{"count": 10001}]}}'
  qvs-host: lab.kcp.interfaces[0]: "port" is not a port of the switch: nix
  qvs-host: lab.kcp.containers[0]: "count" exceeds the free room in the table
  ? 125
