  $ qvs switch create sw1 --uplinks 1 --ports 1  => sw1: changed
  $ qvs uplink list sw1  => UPLINK   PORT     LINK  LACP  NIC    KERNEL PORT | uplink0  uplink0  up    down  pnic0  uplink0
  $ qvs uplink list sw1 --json  => [ | {"uplink":"uplink0","port":"uplink0","linkUp":true,"lacpUp":false,"nic":"pnic0","kernelPort":"uplink0"} | ]

  $ qvs uplink add sw1 left right  => sw1/left: changed | sw1/right: changed
  $ qvs uplink add sw1 more left  => [4] qvs: switch 'sw1': uplink 'left': Already exists (0xbad0005)
  $ qvs uplink add sw1 port0 --may-exist  => [4] qvs: switch 'sw1': uplink 'port0': Already exists (0xbad0005); an ordinary port has this name
  $ qvs uplink add sw1 left --may-exist  => sw1/left: unchanged
  $ qvs uplink list sw1 --kernel  => NIC    PORT | pnic0  67108865 | pnic1  67108867 | pnic2  67108868

Links: changed is what the link shows; taking down is asked of the kernel each time.

  $ qvs uplink down sw1 left  => sw1/left: changed
  $ qvs uplink down sw1 pnic1 --json  => {"switch":"sw1","changed":false,"uplinks":[{"uplink":"pnic1","changed":false}]}
  $ qvs uplink list sw1 | grep left  => left     left     down  down  pnic1  left
  $ qvs uplink up sw1 uplink0 left  => sw1/uplink0: unchanged | sw1/left: changed
  $ qvs uplink up sw1 left nix  => [3] qvs: switch 'sw1': uplink 'nix': Not found (0xbad0003)
  $ grep -c SetUplinkAdminLinkState ../trace  => 3

  $ qvs uplink remove sw1 left nix  => [3] qvs: switch 'sw1': uplink 'nix': Not found (0xbad0003)
  $ qvs uplink remove sw1 left nix --if-exists  => sw1/left: changed | sw1/nix: unchanged
  $ qvs uplink set sw1 right uplink0  => [4] qvs: switch 'sw1': has other uplinks; remove them with 'qvs uplink remove' first
  $ qvs uplink set sw1 uplink0 right  => sw1: unchanged
  $ qvs uplink remove sw1 uplink0 right --json  => qvs: warning: switch 'sw1': no uplink with a link remains | {"switch":"sw1","changed":true,"uplinks":[{"uplink":"uplink0","changed":true},{"uplink":"right","changed":true}]}
  $ qvs uplink list sw1 --json  => []
  $ qvs uplink set sw1 b a && qvs uplink list sw1 --names  => sw1: changed | b | a
  $ qvs uplink clear sw1; qvs uplink clear sw1  => sw1: changed | sw1: unchanged
  $ qvs uplink set sw1 c a  => [4] qvs: switch 'sw1': Already exists (0xbad0005); a port has the name of an uplink
  $ qvs uplink set sw1 --count 2 --json && qvs uplink set sw1 --count 2  => {"switch":"sw1","changed":true} | sw1: unchanged
  $ echo $(qvs port list sw1 --names)  => port0 b a uplink0 uplink1

More uplinks than NICs: the last has no link and no NIC. A name that no link request has room for is shown as unknown.

  $ qvs uplink add sw1 u2 u3 a-name-of-thirty-two-characters-  => sw1/u2: changed | sw1/u3: changed | sw1/a-name-of-thirty-two-characters-: changed
  $ qvs uplink list sw1 | tail -n 2  => u3                                u3                                up    down  pnic3  u3 | a-name-of-thirty-two-characters-  a-name-of-thirty-two-characters-  -     -     -      -
  $ qvs uplink up sw1 a-name-of-thirty-two-characters-  => [2] qvs: uplink name in a link request 'a-name-of-thirty-two-characters-': 32 bytes, at most 31 fit

The loss of the last link is warned of, and refused by --strict.

  $ qvs uplink down sw1 uplink0 uplink1 u2 >log
  $ qvs uplink remove sw1 u3 --strict  => [1] qvs: switch 'sw1': no uplink with a link remains
  $ qvs uplink down sw1 pnic3  => qvs: warning: switch 'sw1': no uplink with a link remains | sw1/pnic3: changed
  $ qvs uplink remove sw1 u2 u3 --strict  => sw1/u2: changed | sw1/u3: changed
