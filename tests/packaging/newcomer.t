The path of a newcomer on a minimal system where the packages have just been installed.

  $ qvs --version
  qvs 1.1.0
  $ man -w qvs-port libqvs | sed 's|.*/||; s/\.gz$//'; MANWIDTH=80 man qvs-nic | sed -n '3,5p'
  qvs-port.1
  libqvs.7
  NAME
         qvs-nic - physical NICs of uplinks
  
  $ printf '%s\n' 'qvs switch create sw1 --uplinks 2 --ports 2' 'qvs show' 'exit' | SHELL=/bin/sh qvs-host shell --state lab
  sw1: changed
  sw1: MTU 1500, 2 ports (0 in use), 2 uplinks (2 up), room for 128
  |- uplinks
  |  |- uplink0  pnic0  up
  |  `- uplink1  pnic1  up
  `- ports
     `- port0, port1 (2 ports)  free
  $ qvs-host run --state lab -- bash -c '. /usr/share/bash-completion/completions/qvs; COMP_WORDS=(qvs port show sw1 po); COMP_CWORD=4; _qvs; echo "${COMPREPLY[@]}"'
  port0 port1
  $ zsh -fc 'autoload -U compinit; compinit -D; echo $_comps[qvs] $_comps[qvs-host]'
  _qvs _qvs-host
  $ qvs-host run --state lab -- qvs export >sw1.yaml; qvs-host run -- sh -c 'qvs apply sw1.yaml --yes | tail -n 1; qvs diff sw1.yaml && echo the same'
  sw1/uplink1: changed
  the same
  $ qvs-host run --network -- sh -c 'qvs switch create sw1 --ports 2; qvs-host expect port1 -- qvs-host send port0 --hex ffffffffffff02000000000188b50001'
  sw1: changed
  02:00:00:00:00:01 > ff:ff:ff:ff:ff:ff, type 0x88b5, 16 bytes

Programs in C, C++, Go and Python.

  $ python3 -c 'import importlib.metadata, qvs; print(importlib.metadata.version("qvs"), qvs.__version__)'
  1.1.0 1.1.0

  $ gcc -std=c99 -Werror "$SOURCE/packaging/program.c" -o program-c $(pkg-config --cflags --libs qvs) && qvs-host run -- ./program-c && echo works
  works
  $ g++ -std=c++17 -Werror "$SOURCE/config/consumer.cpp" -o program-cpp $(pkg-config --cflags --libs qvs-config) && qvs-host run -- ./program-cpp
  bad0007 1
  switches.sw2 
  switches.sw2.ports.a 
  switches.sw2.ports.a.vlan {id: 5}
  $ cp "$SOURCE/packaging/program.go" . && go build -o program-go program.go && qvs-host run -- ./program-go
  created sw1
  ports 2
  $ sed -n '/^```python file=agent.py/,/^```$/p' "$SOURCE/../docs/python.md" | sed '1d;$d' >agent.py; qvs-host run --state lab -- sh -c 'qvs prop set sw1 com.example.default-vlan 100; timeout 3 python3 agent.py; qvs port vlan get sw1 port1 | grep ^id'
  sw1 com.example.default-vlan: changed
  switch 'sw1': port 'port0': Vlan(id=100, priority=None, trunk=False, private=False, ranges=[])
  switch 'sw1': port 'port1': Vlan(id=100, priority=None, trunk=False, private=False, ranges=[])
  id:        100
