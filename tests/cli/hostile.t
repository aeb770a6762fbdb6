A kernel that lies about what it hands over. `lie` patches the second answer of each request in `tables`: all of it becomes ff, so
that 2^32 - 1 entries are counted and no text has an end; then one more entry is counted than there is. Each line has the number of
entries that there are, and for both patches the exit status, the number of entries that are shown, and what is said.

  $ cat >lab.json <<<'{"switches": [{"alias": "sw1", "uplinks": ["uplink0", "uplink1"], "ports": ["p0", "p1"]}, {"alias": "sw2"}], "clients": [{"switch": "sw1", "port": "p0", "name": "web"}], "macEntries": [{"switch": "sw1", "port": "p0", "mac": "02:00:00:00:00:01", "kind": "static"}, {"switch": "sw1", "port": "uplink0", "mac": "02:00:00:00:00:02"}], "mcastFilters": [{"switch": "sw1", "port": "p0", "group": "01:00:5e:00:00:01", "count": 2}, {"switch": "sw1", "port": "p0", "group": "ff05::1"}, {"switch": "sw1", "port": "p0", "group": "224.1.2.3", "count": 2, "sources": ["10.0.0.1", "10.0.0.2"]}], "spfPorts": [{"switch": "sw1", "port": "p0", "mac": "02:00:00:00:00:01"}, {"switch": "sw1", "port": "p1", "mac": "02:00:00:00:00:02"}], "liveTrace": [{"switch": "sw1", "port": "p0"}, {"switch": "sw1", "port": "p1"}], "kcp": {"interfaces": [{"name": "vif", "count": 2}], "containers": [{"count": 2}], "hypervisorNics": [{"name": "nic", "count": 2}]}}'
  $ cat >more <<<'exec >log; qvs mirror add sw1 one --type dvport --destinations p0 --sources-in uplink0; qvs mirror add sw1 two --type dvport --destinations uplink1 --sources-in uplink0; printf %05496d 7 | qvs ls-teaming set sw1 --file -'
  $ cat >lie <<<'ones=$(printf "ff%.0s" $(seq 6000)); while read -r entries request words; do said=; for patch in 0:$ones 0:0$((entries + 1))000000; do qvs-host fault clear >log; qvs-host fault add "device ioctl*$request" --nth 2 --output $patch >log; qvs $words --json >answer 2>warning; said="$said; $?, $(grep -c ^{ answer), $(sed "s/qvs: warning: the kernel //" warning)"; done; echo "$entries $words$said"; done'
  $ tr ';' '\n' >tables <<<'2 GetMACTable mac table sw1;1 GetTeamMACTable mac table sw1 --team;1 GetPortMACTable mac table sw1 --port p0;1 GetStaticLectx mac static sw1;1 GetPortStaticLectx mac static sw1 --port p0;4 GetMACLearningAllPorts mac ports sw1;4 GetSwitchMACLearningStats mac stats sw1;4 GetL2Security mac security sw1;2 GetPromiscSessionActiveDsts mirror runtime destinations sw1;2 GetDVMirrorSessionIDs mirror runtime ids sw1;2 GetMcastFilters mcast filters sw1 --type mac;2 GetMcastFilters mcast filters sw1 --type ipv4;1 GetMcastFilters mcast filters sw1 --type ipv6;2 GetSwitchMcastFilters mcast switch-filters sw1;2 GetUplinks uplink list sw1 --kernel;4 GetSwitchPortInfo port list sw1 --kernel;2 GetLSTeamingPolicyTable ls-teaming get sw1 --kernel;4 GetSwitches switch list --kernel;2 GetCountActionData livetrace counts 0;2 GetPortsList spf list sw1;2 GetDVS* kcp switches;2 GetPSProp* kcp portsets;2 GetVIF* kcp interfaces;2 GetHYPNIC* kcp hypervisor-nics;2 GetUplink* kcp uplinks;2 GetContainer* kcp containers'
  $ qvs-host run --lab lab.json -- bash -c 'bash more; bash lie <tables'
  2 mac table sw1; 0, 2, counts 4294967295 MAC entries, but handed over 2; 0, 2, counts 3 MAC entries, but handed over 2
  1 mac table sw1 --team; 0, 1, counts 4294967295 MAC entries, but handed over 1; 0, 1, counts 2 MAC entries, but handed over 1
  1 mac table sw1 --port p0; 0, 1, counts 4294967295 MAC entries, but handed over 1; 0, 1, counts 2 MAC entries, but handed over 1
  1 mac static sw1; 0, 1, counts 4294967295 static learning contexts, but handed over 1; 0, 1, counts 2 static learning contexts, but handed over 1
  1 mac static sw1 --port p0; 0, 1, counts 4294967295 static learning contexts, but handed over 1; 0, 1, counts 2 static learning contexts, but handed over 1
  4 mac ports sw1; 0, 4, counts 4294967295 ports, but handed over 4; 0, 4, counts 5 ports, but handed over 4
  4 mac stats sw1; 0, 4, counts 4294967295 ports, but handed over 4; 0, 4, counts 5 ports, but handed over 4
  4 mac security sw1; 0, 4, counts 4294967295 security entries, but handed over 4; 0, 4, counts 5 security entries, but handed over 4
  2 mirror runtime destinations sw1; 0, 2, counts 4294967295 destinations, but handed over 2; 0, 2, counts 3 destinations, but handed over 2
  2 mirror runtime ids sw1; 0, 2, counts 4294967295 mirror sessions, but handed over 2; 0, 2, counts 3 mirror sessions, but handed over 2
  2 mcast filters sw1 --type mac; 0, 2, counts 4294967295 multicast filters, but handed over 2; 0, 2, counts 3 multicast filters, but handed over 2
  2 mcast filters sw1 --type ipv4; 0, 2, counts 4294967295 multicast filters, but handed over 2; 0, 2, counts 3 multicast filters, but handed over 2
  1 mcast filters sw1 --type ipv6; 0, 1, counts 4294967295 multicast filters, but handed over 1; 0, 1, counts 2 multicast filters, but handed over 1
  2 mcast switch-filters sw1; 0, 2, counts 4294967295 multicast filters, but handed over 2; 0, 2, counts 3 multicast filters, but handed over 2
  2 uplink list sw1 --kernel; 0, 2, counts 4294967295 uplinks, but handed over 2; 0, 2, counts 3 uplinks, but handed over 2
  4 port list sw1 --kernel; 0, 4, counts 4294967295 ports, but handed over 4; 0, 4, counts 5 ports, but handed over 4
  2 ls-teaming get sw1 --kernel; 0, 1, counts 4294967295 entries, but handed over 2; 0, 1, counts 3 entries, but handed over 2
  4 switch list --kernel; 0, 4, counts 4294967295 switches, but handed over 2; 0, 4, counts 5 switches, but handed over 2
  2 livetrace counts 0; 0, 2, counts 4294967295 action counts, but handed over 2; 0, 2, counts 3 action counts, but handed over 2
  2 spf list sw1; 0, 2, counts 4294967295 ports, but handed over 2; 0, 2, counts 3 ports, but handed over 2
  2 kcp switches; 0, 2, counts 4294967295 switches, but handed over 2; 0, 2, counts 3 switches, but handed over 2
  2 kcp portsets; 0, 2, counts 4294967295 portset properties, but handed over 2; 0, 2, counts 3 portset properties, but handed over 2
  2 kcp interfaces; 0, 2, counts 4294967295 virtual interfaces, but handed over 2; 0, 2, counts 3 virtual interfaces, but handed over 2
  2 kcp hypervisor-nics; 0, 2, counts 4294967295 hypervisor NICs, but handed over 2; 0, 2, counts 3 hypervisor NICs, but handed over 2
  2 kcp uplinks; 0, 2, counts 4294967295 uplinks, but handed over 2; 0, 2, counts 3 uplinks, but handed over 2
  2 kcp containers; 0, 2, counts 4294967295 containers, but handed over 2; 0, 2, counts 3 containers, but handed over 2

The sources of a group, and records without an end of their texts.

  $ cat >sources <<<'for count in ffffffff 03000000; do qvs-host fault add "device ioctl*GetMcastFilterStats" --nth 2 --output 20:$count >log; qvs mcast stats sw1 224.1.2.3 --json | grep -oE "\"(1|2|3|4|0)[0-9.]*\"" | tr "\n" " "; echo; done'
  $ qvs-host run --lab lab.json -- bash sources
  qvs: warning: the kernel counts 4294967295 addresses, but handed over 2
  "224.1.2.3" "10.0.0.1" "10.0.0.2" "10.0.0.1" "10.0.0.2" 
  qvs: warning: the kernel counts 3 addresses, but handed over 2
  "224.1.2.3" "10.0.0.1" "10.0.0.2" "10.0.0.1" "10.0.0.2" 
  $ cat >texts <<<'qvs-host fault add "device ioctl" --forever --output 0:$(printf "ff%.0s" $(seq 4096)) >log; for words in "switch show sw1" "switch find --alias sw1" "switch info sw1" "uplink list sw1" "port show sw1 p0" "port list sw1" "port ls-teaming get sw1 p0 --kernel" "mirror runtime agent" "bfd sessions" "livetrace list" "options get" "kcp status" "int get"; do qvs $words --json >answer 2>error; echo -n "$? "; head -n 1 error; done; qvs port ls-teaming get sw1 p0 --kernel | wc -c'
  $ qvs-host run --lab lab.json -- bash texts  => 0 0 0 3 qvs: switch 'sw1': Not found (0xbad0003) | 0 0 0 0 0 0 0 0 0 591

An entry of zeros at the end of a list is an entry when the kernel counts it once more.

  $ cat >zeros <<<'qvs-host fault add "device ioctl*GetL2Security" --forever --output 32:0000000000000000 >log; qvs mac security sw1 --json | grep -c ^{; qvs-host fault clear; qvs-host fault add "device ioctl*GetL2Security" --nth 2 --output 0:05000000 >log; qvs mac security sw1 --json | grep -c ^{'
  $ qvs-host run --lab lab.json -- bash zeros  => 4 | qvs: warning: the kernel counts 5 security entries, but handed over 4 | 4
