Requests are kept by the kernel until they are cleared; all values arrive.

  $ qvs switch create sw1 --ports 2 && qvs switch create sw2 --ports 1  => sw1: changed | sw2: changed
  $ qvs trace start sw1 port0 0:1b:2C:3:4:5 02:00:00:00:00:02  => sw1/port0: changed
  $ qvs trace start sw1 port1 02:00:00:00:00:03 02:ff:00:00:00:80 --word1 1 --word2 0xffffffff --short 65535 --value1 18446744073709551615 --value2 5 --json  => {"switch":"sw1","port":"port1","changed":true}
  $ qvs trace start sw2 port0 02:00:00:00:00:05 02:00:00:00:00:06  => sw2/port0: changed
  $ requests='qvs-host status --json | tr -d " \n" | sed "s/.*\"traceflow\":{\(.*\)\"telemetry.*/\1/; s/},{/},\n{/g"; echo'; echo "$requests" >requests; sh requests
  "requests":[{"destination":"02:00:00:00:00:02","number":1,"port":"port0","short":0,"source":"00:1b:2c:03:04:05","switch":"7377310000000000-0000000000000000","value1":0,"value2":0,"word1":0,"word2":0},
  {"destination":"02:ff:00:00:00:80","number":2,"port":"port1","short":65535,"source":"02:00:00:00:00:03","switch":"7377310000000000-0000000000000000","value1":18446744073709551615,"value2":5,"word1":1,"word2":4294967295},
  {"destination":"02:00:00:00:00:06","number":3,"port":"port0","short":0,"source":"02:00:00:00:00:05","switch":"7377320000000000-0000000000000000","value1":0,"value2":0,"word1":0,"word2":0}],
  $ qvs trace start sw1 nix 02:00:00:00:00:01 02:00:00:00:00:02  => [3] qvs: switch 'sw1': port 'nix': Not found (0xbad0003)
  $ for more in '02-00-00-00-00-01 02:00:00:00:00:02' '02:00:00:00:00:01 02:00:00:00:00' '0:0:0:0:0:1 0:0:0:0:0:2 --short 65536' '0:0:0:0:0:1 0:0:0:0:0:2 --value1 18446744073709551616'; do qvs trace start sw1 port0 $more; done
  qvs: SOURCE: '02-00-00-00-00-01' is not a MAC address
  qvs: DESTINATION: '02:00:00:00:00' is not a MAC address
  qvs: --short: '65536' is not a number from 0 to 65535
  qvs: --value1: '18446744073709551616' is not a number of 0 or more
  ? 2
  $ grep -c 'ioctl.*CreateRequest' ../trace  => 4

Tracing is a property; without it, clearing is the kernel's.

  $ qvs trace disable sw1 && qvs trace enable sw1 --json && qvs trace enable sw1 && qvs prop get sw1 com.quillon.tarnData.traceflow.enabled --host  => sw1: unchanged | {"switch":"sw1","changed":true} | sw1: unchanged | true
  $ qvs trace clear sw1 && grep -c 'ioctl.*ClearConfig' ../trace  => [1] sw1: changed | 0
  $ qvs trace clear sw1 && grep -c 'ioctl.*ClearConfig' ../trace  => sw1: changed | 1
  $ sh requests  => "requests":[{"destination":"02:00:00:00:00:06","number":3,"port":"port0","short":0,"source":"02:00:00:00:00:05","switch":"7377320000000000-0000000000000000","value1":0,"value2":0,"word1":0,"word2":0}],
  $ qvs port remove sw2 port0 && sh requests  => sw2/port0: changed | "requests":[],
  $ qvs trace start sw1 port0 02:00:00:00:00:07 02:00:00:00:00:08 && sh requests | grep -o '"number":[0-9]*'  => sw1/port0: changed | "number":1
  $ qvs trace enable sw1 && qvs trace disable sw1 && qvs trace disable sw1 --json  => sw1: changed | sw1: changed | {"switch":"sw1","changed":false}

Statistics of a port, twice; the library says what the kernel answered.

  $ qvs trace stats sw1 port0 --raw - | head -c 16 | bytes && qvs trace stats sw1 port0 --json
  0:8101 8:fc01 (16 bytes)
  {"stats":"ugIAAAAAAACYAwAAAAAAAEYKAAAAAAAApQcAAAAAAABqAgAAAAAAAB8AAAAAAAAAAggAAAAAAAAsCQAAAAAAAA==","fields":{"requests":698,"traced":920,"received":2630,"forwarded":1957,"delivered":618,"dropped":31,"copied":2050,"reports":2348}}
  $ qvs-host fault add 'traceflow*GetPortStats' --errno EPERM && qvs trace stats sw1 port0  => [1] Failed to get port stats: Operation not permitted | qvs: switch 'sw1': port 'port0': Operation not permitted

Telemetry.

  $ qvs int get && qvs int set f1:02:03:04:05:86 && qvs int set f10203040586 --json && qvs int get --json  => configuration:  000000000000 | telemetry: changed | {"changed":false} | {"config":"8QIDBAWG","fields":{"configuration":"8QIDBAWG"}}
  $ qvs int set 0102030405  => [2] qvs: CONFIG: '0102030405' is not 6 bytes in hexadecimal
  $ qvs-host fault add 'traceflow*SetINTConfig' --errno EIO && qvs int set 000000000000  => [1] Failed to set INT config: Metadata read error | qvs: telemetry: Metadata read error (0xbad0008)
  $ qvs-host fault add 'traceflow*GetINTConfig' --errno EIO && qvs int get  => [1] Failed to get INT config: Metadata read error | qvs: telemetry: Input/output error
  $ echo 'qvs switch create sw1 --ports 1; qvs trace start sw1 port0 02:00:00:00:00:01 02:00:00:00:00:02; qvs int set 0a0b0c0d0e0f' >change
  $ qvs-host run --state rack -- sh change; qvs-host run --state rack -- sh -c 'qvs int get; sh requests'
  sw1: changed
  sw1/port0: changed
  telemetry: changed
  configuration:  0a0b0c0d0e0f
  "requests":[{"destination":"02:00:00:00:00:02","number":1,"port":"port0","short":0,"source":"02:00:00:00:00:01","switch":"7377310000000000-0000000000000000","value1":0,"value2":0,"word1":0,"word2":0}],
