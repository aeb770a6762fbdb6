Without a lab the control plane lists the host's own objects, and the rest is empty. Null for an empty list is no failure.

  $ qvs kcp switches && qvs kcp interfaces --json && qvs kcp status  => SWITCH ID  ALIAS | [] | running:    yes | connected:  no | version:    1
  $ qvs switch create sw1 --uplinks 1 --ports 2  => sw1: changed
  $ for table in switches portsets uplinks; do qvs kcp $table --raw - | bytes; done
  0:0100000037332037372033312030302030302030302030302030302d3030203030203030203030203030203030203030203030 68:737731 (132 bytes)
  0:010000000100000080000000dc05000003000000737731 148:37332037372033312030302030302030302030302030302d3030203030203030203030203030203030203030203030 (260 bytes)
  0:01000000706e696330 36:010000040100000010270000dc05000002 58:37332037372033312030302030302030302030302030302d3030203030203030203030203030203030203030203030 122:75706c696e6b30 (1241 bytes)

A lab fills the other lists. An interface has the link of its port; the containers know how many interfaces are theirs.

  $ echo '{"clients": [{"switch": "sw1", "port": "port1", "name": "web"}], "kcp": {"status": {"running": false, "connected": true}, "interfaces": [{"name": "web.eth", "switch": "sw1", "port": "port0", "mac": "02:00:00:00:01:ff", "vlan": 100, "count": 2}, {"name": "db", "switch": "sw1", "port": "port1"}], "containerInterfaces": [{"name": "pod", "count": 3, "container": 9}], "hypervisorInterfaces": [{"name": "hyp0"}], "hypervisorNics": [{"name": "hypnic0"}], "containers": [{"number": 8, "vlan": 20, "count": 2}]}}' >lab
  $ qvs-host run --state ../state --lab lab -- qvs kcp status  => running:    no | connected:  yes | version:    1
  $ for table in interfaces container-interfaces hypervisor-interfaces hypervisor-nics containers; do qvs kcp $table --raw - | bytes; done
  0:0300000001 12:7765622e65746830 140:0200000001ff64000200000437332037372033312030302030302030302030302030302d3030203030203030203030203030203030203030203030 216:706f727430 11445:02 11453:7765622e65746831 11581:02000000020064000200000437332037372033312030302030302030302030302030302d3030203030203030203030203030203030203030203030 11657:706f727430 22886:03000000010000006462 23022:0203 23030:0300000437332037372033312030302030302030302030302030302d3030203030203030203030203030203030203030203030 23098:706f727431 (34327 bytes)
  0:030000000100000001000000706f6430 140:0203 11445:09 11693:0200000001000000706f6431 11829:020300000001 23134:09 23382:0300000001000000706f6432 23518:020300000002 34823:09 (35071 bytes)
  0:01000000010000000100000068797030 140:0203 (11445 bytes)
  0:0100000001000000010000006879706e696330 140:0203 (1112 bytes)
  0:02 8:08 16:1400090000000300000014 (28 bytes)
  $ qvs kcp containers  => NUMBER  INTERFACES  VLAN | 8       0           20 | 9       3           20
  $ qvs kcp status --json  => {"status":"AAEB","fields":{"running":"no","connected":"yes","version":1}}

What is on a port goes with it. A lab that is applied again gives the same lists.

  $ qvs port remove sw1 port0 && qvs kcp interfaces | cut -c 1-14  => sw1/port0: changed | NUMBER  LINK   | 3       up    
  $ sed s/port0/port1/ <lab >again; for i in 1 2; do qvs-host run --state ../state --lab again -- qvs kcp interfaces --raw - | cksum; done  => 153554807 34327 | 153554807 34327
  $ echo '{"kcp": {"status": {"connected": true}, "interfaces": [{"name": "hyp", "count": 2}], "containers": [{}]}}' >lab
  $ qvs-host run --state rack --lab lab -- true; qvs-host run --state rack -- sh -c 'qvs kcp status; qvs kcp interfaces | cut -c 1-14; qvs kcp containers'
  running:    yes
  connected:  yes
  version:    1
  NUMBER  LINK  
  1       up    
  2       up    
  NUMBER  INTERFACES  VLAN
  1       0           0

A count that is too high is not believed; the kernel's failures are told from an empty list.

  $ qvs-host fault add 'kcp*GetContainerCount' --errno EIO && qvs kcp containers  => [1] qvs: kernel control plane: containers: Input/output error
  $ qvs-host fault add 'kcp*GetStatus' --errno EIO && qvs kcp status  => [1] qvs: kernel control plane: status: Input/output error
