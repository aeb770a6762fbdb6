On a host with all that qvs needs, every check is ok.

  $ doctor() { qvs doctor "$@" | grep -v '^ok'; echo ${PIPESTATUS[0]}; }; doctor  => 0
  $ qvs doctor --json | jq -r '.[] | .check, .result' | paste -sd' '
  versions ok state library ok device /dev/vswitch ok device /dev/ipfix ok device /dev/traceflow ok device /dev/livetrace ok device /crate/devices/char/hypdriver/rtm ok device /crate/devices/char/hypdriver/tarn_bfd ok device /crate/devices/char/hypdriver/kcp ok device /crate/devices/char/hypdriver/tarn-spf ok switch state ok shell /bin/treesh ok permissions ok locks ok

Each check fails once, and says how to correct it.

  $ doctor() { qvs doctor "$@" | grep -v '^ok'; echo ${PIPESTATUS[0]}; }; qvs-host fault add 'device open "/dev/vswitch"' --errno EACCES; doctor; qvs-host fault add 'device open "/dev/vswitch"' --errno EIO; doctor; qvs-host fault add 'device open "*kcp"' --errno ENOENT; doctor; qvs-host fault add StateGet --status 0xbad0001; doctor
  failed   device /dev/vswitch: Permission denied; it is needed by nearly all commands. Run qvs as root, or as the user who owns the host.
  1
  failed   device /dev/vswitch: Input/output error; it is needed by nearly all commands. See the log of the host, or wait longer with --timeout SECONDS.
  1
  warning  device /crate/devices/char/hypdriver/kcp: missing; load its module if you need kcp
  0
  failed   switch state: cannot be loaded: Failure (0xbad0001); check that the host runs, and that this user may access it
  1
  $ qvs-host fault clear; chmod o+w $QVS_HOST_STATE; qvs doctor | sed -n "s,'/[^']*',DIR,;/locks/p"; chmod o-w $QVS_HOST_STATE
  warning  locks: no lock in DIR: anybody may write to it; concurrent runs may overwrite each other's changes. Make it a directory that only root or this user may write to
  $ bin=$(dirname "$(command -v qvs)"); mkdir old; cp -L "$bin/../lib/libqvs.so.1" old/libqvs.so.0.9.9; ln -s libqvs.so.0.9.9 old/libqvs.so.1; LD_LIBRARY_PATH=$PWD/old:$LD_LIBRARY_PATH qvs doctor | sed -n "s,(/[^)]*),FILE,;/versions/p"
  warning  versions: qvs 1.1.0 runs with libqvs 0.9.9 FILE; install both from one release
  $ LD_LIBRARY_PATH=$(dirname "$(command -v qvs)")/../tests/dump/without-states:$LD_LIBRARY_PATH qvs doctor | sed -n "s,/[^ ]*/,,;/state library/p"
  warning  state library: libmeshPublic.so lacks the optional symbol DVS_PortState; qvs dump shows no states of ports. Install the state library of a newer hypercore if you need them
  $ as=; [ $(id -u) != 0 ] || as='setpriv --reuid 65534 --clear-groups'; qvs-host fault add 'device open' --errno EACCES --forever; $as qvs doctor | sed -n 's/user [0-9]*/user N/;/permissions/p'; qvs-host fault clear
  failed   permissions: user N may not open the switch device; run qvs as root

Without a host it works, too.

  $ env -u LD_PRELOAD -u QVS_HOST_SOCKET qvs doctor 2>/dev/null | grep -v -e permissions -e locks -e '^ok'; echo ${PIPESTATUS[0]}
  failed   device /dev/vswitch: missing; this machine has no hypercore, or its switch module is not loaded. To try qvs on an emulated host: qvs-host run -- qvs doctor
  warning  device /dev/ipfix: missing; load its module if you need ipfix
  warning  device /dev/traceflow: missing; load its module if you need trace and int
  warning  device /dev/livetrace: missing; load its module if you need livetrace
  warning  device /crate/devices/char/hypdriver/rtm: missing; load its module if you need rtm
  warning  device /crate/devices/char/hypdriver/tarn_bfd: missing; load its module if you need bfd
  warning  device /crate/devices/char/hypdriver/kcp: missing; load its module if you need kcp
  warning  device /crate/devices/char/hypdriver/tarn-spf: missing; load its module if you need spf
  failed   switch state: cannot be loaded: No connection (0xbad0040); check that the host runs, and that this user may access it
  failed   shell /bin/treesh: No such file or directory; it is needed by switch create, switch destroy and mtu set. It comes with the hypercore
  1
