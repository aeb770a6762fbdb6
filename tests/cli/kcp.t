Without a lab the control plane lists the host's own objects, and the rest is empty. Null for an empty list is no failure.

  $ qvs kcp switches && qvs kcp interfaces --json && qvs kcp status
  INDEX  ENTRY
  []
  status:  010001
  $ qvs switch create sw1 --uplinks 1 --ports 2  => sw1: changed
  $ qvs kcp switches && qvs kcp portsets && qvs kcp uplinks
  switch 0 (128 bytes):
    0000 37 33 20 37 37 20 33 31 20 30 30 20 30 30 20 30
    0010 30 20 30 30 20 30 30 2d 30 30 20 30 30 20 30 30
    0020 20 30 30 20 30 30 20 30 30 20 30 30 20 30 30 00
    0030 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00
    0040 73 77 31 00 00 00 00 00 00 00 00 00 00 00 00 00
    0050 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00
    *
    0070 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00
  portset 0 (256 bytes):
    0000 01 00 00 00 80 00 00 00 dc 05 00 00 03 00 00 00
    0010 73 77 31 00 00 00 00 00 00 00 00 00 00 00 00 00
    0020 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00
    *
    0090 37 33 20 37 37 20 33 31 20 30 30 20 30 30 20 30
    00a0 30 20 30 30 20 30 30 2d 30 30 20 30 30 20 30 30
    00b0 20 30 30 20 30 30 20 30 30 20 30 30 20 30 30 00
    00c0 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00
    *
    00f0 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00
  uplink 0 (1237 bytes):
    0000 70 6e 69 63 30 00 00 00 00 00 00 00 00 00 00 00
    0010 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00
    0020 01 00 00 04 01 00 00 00 10 27 00 00 dc 05 00 00
    0030 02 00 00 00 00 00 37 33 20 37 37 20 33 31 20 30
    0040 30 20 30 30 20 30 30 20 30 30 20 30 30 2d 30 30
    0050 20 30 30 20 30 30 20 30 30 20 30 30 20 30 30 20
    0060 30 30 20 30 30 00 00 00 00 00 00 00 00 00 00 00
    0070 00 00 00 00 00 00 75 70 6c 69 6e 6b 30 00 00 00
    0080 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00
    *
    04d0 00 00 00 00 00

A lab fills the other lists. An interface has the link of its port; the containers know how many interfaces are theirs.

  $ echo '{"clients": [{"switch": "sw1", "port": "port1", "name": "web"}], "kcp": {"status": {"running": false, "connected": true}, "interfaces": [{"name": "web.eth", "switch": "sw1", "port": "port0", "mac": "02:00:00:00:01:ff", "vlan": 100, "count": 2}, {"name": "db", "switch": "sw1", "port": "port1"}], "containerInterfaces": [{"name": "pod", "count": 3, "container": 9}], "hypervisorInterfaces": [{"name": "hyp0"}], "hypervisorNics": [{"name": "hypnic0"}], "containers": [{"number": 8, "vlan": 20, "count": 2}]}}' >lab
  $ qvs-host run --state ../state --lab lab -- qvs kcp status  => status:  000101
  $ qvs kcp interfaces | sed -n '1,14p; /interface [12]/,/0090/p'
  interface 0 (11441 bytes):
    0000 01 00 00 00 00 00 00 00 77 65 62 2e 65 74 68 30
    0010 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00
    *
    0080 00 00 00 00 00 00 00 00 02 00 00 00 01 ff 64 00
    0090 02 00 00 04 37 33 20 37 37 20 33 31 20 30 30 20
    00a0 30 30 20 30 30 20 30 30 20 30 30 2d 30 30 20 30
    00b0 30 20 30 30 20 30 30 20 30 30 20 30 30 20 30 30
    00c0 20 30 30 00 00 00 00 00 00 00 00 00 00 00 00 00
    00d0 00 00 00 00 70 6f 72 74 30 00 00 00 00 00 00 00
    00e0 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00
    *
    2cb0 00
  interface 1 (11441 bytes):
  interface 1 (11441 bytes):
    0000 02 00 00 00 00 00 00 00 77 65 62 2e 65 74 68 31
    0010 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00
    *
    0080 00 00 00 00 00 00 00 00 02 00 00 00 02 00 64 00
    0090 02 00 00 04 37 33 20 37 37 20 33 31 20 30 30 20
  interface 2 (11441 bytes):
    0000 03 00 00 00 01 00 00 00 64 62 00 00 00 00 00 00
    0010 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00
    *
    0080 00 00 00 00 00 00 00 00 02 03 00 00 00 00 00 00
    0090 03 00 00 04 37 33 20 37 37 20 33 31 20 30 30 20
  $ qvs kcp container-interfaces | head -9
  interface 0 (11689 bytes):
    0000 01 00 00 00 01 00 00 00 70 6f 64 30 00 00 00 00
    0010 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00
    *
    0080 00 00 00 00 00 00 00 00 02 03 00 00 00 00 00 00
    0090 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00
    *
    2cb0 00 09 00 00 00 00 00 00 00 00 00 00 00 00 00 00
    2cc0 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00
  $ qvs kcp hypervisor-interfaces | head -n 5
  interface 0 (11441 bytes):
    0000 01 00 00 00 01 00 00 00 68 79 70 30 00 00 00 00
    0010 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00
    *
    0080 00 00 00 00 00 00 00 00 02 03 00 00 00 00 00 00
  $ qvs kcp hypervisor-nics
  NIC 0 (1108 bytes):
    0000 01 00 00 00 01 00 00 00 68 79 70 6e 69 63 30 00
    0010 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00
    *
    0080 00 00 00 00 00 00 00 00 02 03 00 00 00 00 00 00
    0090 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00
    *
    0450 00 00 00 00
  $ qvs kcp containers
  INDEX  ENTRY
  0      08000000000000001400
  1      09000000030000001400
  $ qvs kcp containers --raw - | od -An -tx1 && qvs kcp hypervisor-nics --raw - | wc -c
   02 00 00 00 00 00 00 00 08 00 00 00 00 00 00 00
   14 00 09 00 00 00 03 00 00 00 14 00
  1112
  $ qvs kcp status --json  => {"status":"AAEB"}

What is on a port goes with it. A lab that is applied again gives the same lists.

  $ qvs port remove sw1 port0 && qvs kcp interfaces | grep bytes  => sw1/port0: changed | interface 0 (11441 bytes):
  $ sed s/port0/port1/ <lab >again && qvs-host run --state ../state --lab again -- qvs kcp interfaces --raw - | cksum  => 153554807 34327
  $ qvs-host run --state ../state --lab again -- qvs kcp interfaces --raw - | cksum  => 153554807 34327
  $ echo '{"kcp": {"status": {"connected": true}, "interfaces": [{"name": "hyp", "count": 2}], "containers": [{}]}}' >lab
  $ qvs-host run --state rack --lab lab -- true; qvs-host run --state rack -- sh -c 'qvs kcp status; qvs kcp interfaces | grep bytes; qvs kcp containers'
  status:  010101
  interface 0 (11441 bytes):
  interface 1 (11441 bytes):
  INDEX  ENTRY
  0      01000000000000000000

A count that is too high is not believed; the kernel's failures are told from an empty list.

  $ qvs-host fault add 'kcp*GetContainerList' --output 0:ff000000 && qvs kcp containers
  qvs: warning: the kernel counts 255 containers, but handed over 2
  INDEX  ENTRY
  0      08000000000000001400
  1      09000000030000001400
  $ qvs-host fault add 'kcp*GetContainerCount' --errno EIO && qvs kcp containers  => [1] qvs: kernel control plane: containers: Input/output error
  $ qvs-host fault add 'kcp*GetStatus' --errno EIO && qvs kcp status  => [1] qvs: kernel control plane: status: Input/output error
  $ bad() { echo "$1" >bad; qvs-host run --state ../state --lab bad -- true; }; bad '{"kcp": {"interfaces": [{"name": "x", "switch": "sw1", "port": "nix"}]}}'; bad '{"kcp": {"containers": [{"count": 10001}]}}'
  qvs-host: lab.kcp.interfaces[0]: "port" is not a port of the switch: nix
  qvs-host: lab.kcp.containers[0]: "count" is more than there is room for
  ? 125
