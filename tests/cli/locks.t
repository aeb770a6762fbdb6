Eight processes at a time add uplinks and mirror sessions; nothing that was acknowledged is lost.

  $ qvs switch create sw1 --max-ports 500  => sw1: changed
  $ for p in $(seq 8); do for i in 1 2 3; do qvs uplink add sw1 u$p-$i; qvs mirror add sw1 m$p-$i --type dvport; done & done | grep -c ': changed'; for noun in uplink mirror; do qvs $noun list sw1 --names | wc -l; done  => 48 | 24 | 24

A second run waits until the first is whole, and then sees what it did.

  $ qvs-host fault add 'HostPropSet*uplinkPorts' --delay 700; (qvs uplink add sw1 x & sleep 0.3; qvs uplink add sw1 x --may-exist; wait) | sort  => sw1/x: changed | sw1/x: unchanged
  $ qvs-host fault add 'HostPropSet*uplinkPorts' --delay 700; (qvs uplink remove sw1 x >log & sleep 0.3; qvs uplink list sw1 --names | wc -l; wait)  => 24

It waits no longer than it is told to, and for no other switch; a run that was killed keeps nobody waiting.

  $ qvs switch create sw2  => sw2: changed
  $ qvs-host fault add 'PortAdd*"slow"' --delay 1900; (qvs port add sw1 slow >log & sleep 0.3; qvs --timeout 1 port add sw1 p 2>&1 | sed 's/process [0-9]*/process N/'; echo "? ${PIPESTATUS[0]}"; qvs port add sw2 p --timeout 1; wait)
  qvs: switch 'sw1': another run (process N) is at it and did not end within 1 s; --timeout SECONDS waits longer
  ? 7
  sw2/p: changed
  $ qvs-host fault add 'PortAdd*"slower"' --delay 600; sh -c 'timeout -s KILL 0.3 qvs port add sw1 slower; true' 2>log; qvs port add sw1 p --timeout 1  => sw1/p: changed

The lock is a file beside the host's socket that its owner alone may open; what is no file of its own is not taken for it.

  $ stat -c '%a %h' ../state/qvs.lock  => 600 1
  $ mv ../state/qvs.lock .; ln -s "$PWD/elsewhere" ../state/qvs.lock; qvs port add sw1 q 2>&1 | sed 's/in .*state/in DIR/'; rm ../state/qvs.lock; [ -e elsewhere ] || echo untouched
  qvs: warning: no lock in DIR': Too many levels of symbolic links; of changes that runs make side by side one may be lost
  sw1/q: changed
  untouched
