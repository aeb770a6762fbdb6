# SPDX-License-Identifier: Apache-2.0
"""Switches, ports and policies on an emulated host, which all cases share."""
import ctypes
import gc
import os
import subprocess
import unittest

import qvs
from qvs import constants, keys, records

MAC = b"\x01\x00\x5e\x00\x00\x01"
TEAMING = records.VSDVS_TeamingPolicy(activeCount=1, uplinks=["uplink0"])
FILTER = records.VSDVS_ExtraEthFilter(flags=1)
SESSION = records.VSDVS_MirrorSession("m1", "one", 1, -1, dstEntities=1)
MIRROR = qvs.Mirrors([SESSION], [records.VSDVS_MirrorEntity(0, b"port1".ljust(48, b"\0"))])
IPFIX = qvs.Ipfix(records.IPFIXDVS_Port(60, 300, 10), b"obs")

# An attribute of the switch or of the port, its value when nothing is stored, a value, the key, and the bytes stored.
SWITCH_POLICIES = [
    ("teaming", None, TEAMING, keys.TEAMING, bytes(16) + b"\1\0\0\0\0\0\0\0uplink0" + bytes(2585), False),
    ("mac_learning", records.VSDVS_MACLearning(b"\x58\2\0", 0, 65536), records.VSDVS_MACLearning(b"\1\2\3", 0, 9),
     keys.MAC_LEARNING, b"\1\2\3\0\t\0\0\0", True),
    ("learn_static", False, True, keys.LEARN_STATIC, b"true\0", True),
    ("static_mac_allow", False, True, keys.STATIC_MAC_ALLOW, b"true\0", True),
    ("private_vlans", None, [records.VSDVS_PrivateVLAN(5, 6, 2)], keys.PRIVATE_VLAN_MAP, b"\5\0\6\0\2\0\0\0", False),
    ("multicast_mode", 0, 1, keys.MULTICAST_FILTER, b"snooping\0", False),
    ("multicast_addresses", None, [MAC], keys.MULTICAST_ADDRESSES, b"\1" + MAC, True),
    ("receive_filter", 0, 1, keys.RCF_TYPE, b"ebpf\0", False),
    ("discovery", records.Discovery_Param(), records.Discovery_Param(1, 3), keys.DISCOVERY, b"\1\3", False),
    ("team_check", records.HealthCheck_Deployment(), records.HealthCheck_Deployment(1, 5),
     keys.TEAM_CHECK_DEPLOYMENT, b"\1\5\0\0\0", False),
    ("vlan_mtu_check", records.HealthCheck_Deployment(), records.HealthCheck_Deployment(1, 6),
     keys.VLAN_MTU_CHECK_DEPLOYMENT, b"\1\6\0\0\0", False),
    ("uplink_mirrors", None, MIRROR, keys.UPLINK_MIRROR_SESSIONS, None, True),
]
PORT_POLICIES = [
    ("vlan", qvs.Vlan(), qvs.Vlan(5, priority=3), keys.PORT_VLAN, b"\4\0\5\0\0\0\0\0"),
    ("vlan", qvs.Vlan(), qvs.Vlan(trunk=True, ranges=[(1, 9), (20, 20)]), keys.PORT_VLAN,
     b"\1\0\0\0\0\0\2\0\1\0\t\0\x14\0\x14\0"),
    ("vlan", qvs.Vlan(), qvs.Vlan(6, private=True), keys.PORT_VLAN, b"\2\0\6\0\0\0\0\0"),
    ("nested_tagging", False, True, keys.PORT_NESTED_TAG, b"\1\0\0\0"),
    ("security", 1, 6, keys.PORT_SECURITY, b"\6\0\0\0"),
    ("filter", None, FILTER, keys.PORT_FILTER, b"\1" + bytes(199)),
    ("teaming", None, TEAMING, keys.PORT_TEAMING, bytes(16) + b"\1\0\0\0\0\0\0\0uplink0" + bytes(2585)),
    ("teaming_override", None, "gold", keys.PORT_TEAMING_OVERRIDE, b"gold\0"),
    ("ls_teaming", None, "silver", keys.PORT_LS_TEAMING, b"silver\0"),
    ("tx_uplink_always", None, True, keys.PORT_TX_UPLINK, b"always\0"),
    ("mac_learning", records.VSDVS_PortMACLearning(0, 0, 4096, 0), records.VSDVS_PortMACLearning(1, 1, 9, 2),
     keys.PORT_MAC_MANAGEMENT, b"\0\1\1\t\0\0\0\2\0\0\0"),
    ("multicast_addresses", None, [MAC, MAC], keys.PORT_MULTICAST_OVERRIDE, b"\2" + MAC + MAC),
    ("mirrors", None, MIRROR, keys.PORT_MIRROR_SESSIONS,
     b"\xef\xbe\xce\xfa\2\0\0\0\1\0\0\0\1\0\0\0\0\0\0\0m1" + bytes(30) + b"one" + bytes(81)
     + b"\1\0\0\0\xff\xff\xff\xff" + bytes(92) + b"\1\0\0\0" + bytes(12) + bytes(4) + b"port1" + bytes(43)),
    ("ipfix", None, IPFIX, keys.PORT_IPFIX, b"\x3c\0\0\0\x2c\1\0\0\n\0\0\0\0\0\3\0" + bytes(168) + b"obs"),
    ("shaper_input", None, records.QVS_Shaper(1, 2, 3), keys.PORT_SHAPER_INPUT,
     b"\1\0\0\0\0\0\0\0\2\0\0\0\0\0\0\0\3\0\0\0\0\0\0\0"),
]
HOSTILE = ["a b;$(touch x)|`y`", "%s%n", "\udcff\udcfe", "línea\nnueva", "'\"\\", "-rf", "x" * 60]


class Short(records.VSDVS_PrivateVLAN, size=8):
    """A record whose bytes are fewer than the library reads."""

    def __bytes__(self):
        return b""


def setUpModule():
    with qvs.Snapshot() as host:
        host.create_switch("sw1", id="id-1", uplinks=2, ports=2)


class Policies(unittest.TestCase):
    def check(self, place, name, default, value, key, stored, **scope):
        with self.subTest(f"{place}: {name}"):
            self.assertEqual(getattr(place, name), default)
            setattr(place, name, value)
            if stored is not None:
                self.assertEqual(place.get_property(key, **scope), stored)
            read = getattr(place, name)
            if isinstance(value, (records.Record, qvs.Mirrors, qvs.Ipfix)):
                # What is read has every element of an array.
                setattr(place, name, read)
                self.assertEqual(place.get_property(key, **scope), stored or place.get_property(key, **scope))
                self.assertEqual(getattr(place, name), read)
            else:
                self.assertEqual(read, value)
            delattr(place, name)
            self.assertEqual(getattr(place, name), default)
            delattr(place, name)  # a second time, too

    def test_stored_bytes(self):
        with qvs.Snapshot() as host:
            switch = host.switch("sw1")
            for name, default, value, key, stored, on_host in SWITCH_POLICIES:
                self.check(switch, name, default, value, key, stored, host=on_host)
            for row in PORT_POLICIES:
                self.check(switch.port("port0"), *row)
            switch.port("port1").sink = True
            self.assertEqual(switch.port("port1").get_property(keys.PORT_FILTER), b"\0\0\1\0" + bytes(196))
            switch.mtu = 9000
            self.assertEqual(switch.mtu, 9000)
            with self.assertRaisesRegex(AttributeError, "no function to clear the policy 'mtu'"):
                del switch.mtu

    def test_refused(self):
        with qvs.Snapshot() as host:
            switch, port = host.switch("sw1"), host.switch("sw1").port("port0")
            for place, name, value, error, message in [
                (switch, "mtu", 1279, qvs.BadParameter, "switch 'sw1': mtu: Bad parameter (0xbad0007)"),
                (switch, "mtu", -1, ValueError, "mtu: -1 is not between 0 and 4294967295"),
                (port, "security", 8, qvs.BadParameter,
                 "switch 'sw1': port 'port0': security: Bad parameter (0xbad0007)"),
                (port, "security", 1 << 32, ValueError, "security: 4294967296 is not between 0 and 4294967295"),
                (port, "multicast_addresses", [MAC] * 26, qvs.LimitExceeded,
                 "switch 'sw1': port 'port0': multicast_addresses: Limit exceeded (0xbad0006)"),
                (port, "vlan", qvs.Vlan(65536 + 5), ValueError, "vlan: a VLAN id is between 0 and 4094: "),
                (port, "vlan", qvs.Vlan(1, priority=8), ValueError, "vlan: a priority is between 0 and 7: "),
                (port, "teaming", FILTER, TypeError, "teaming: VSDVS_ExtraEthFilter("),
                (port, "teaming_override", "x" * 81, ValueError, "teaming_override: 81 bytes, at most 80 can"),
                (port, "teaming_override", "a\0", ValueError, "teaming_override: 'a\\x00' contains a NUL character"),
                # bytes(1) is one zero: the library would read 40 entries of 8 bytes from 40 bytes.
                (switch, "private_vlans", [1] * 40, TypeError, "private_vlans: 1 is not of the type VSDVS_PrivateVLAN"),
                (switch, "private_vlans", [b"12345678"], TypeError, "private_vlans: b'12345678' is not of the type"),
                (switch, "private_vlans", [Short()], TypeError, "private_vlans: Short("),
                (switch, "uplink_mirrors", qvs.Mirrors([1] * 9, []), TypeError, "uplink_mirrors: 1 is not of the type"),
                (port, "mirrors", qvs.Mirrors([SESSION], [500]), TypeError, "mirrors: 500 is not of the type"),
                (port, "mirrors", ([], [], 2), TypeError, "mirrors: ([], [], 2) is not of the type Mirrors"),
                (port, "ipfix", qvs.Ipfix(records.QVS_Shaper()), TypeError, "ipfix: QVS_Shaper("),
                (port, "ipfix", qvs.Ipfix(records.IPFIXDVS_Port(), "obs"), TypeError, "ipfix: memoryview: "),
                (port, "multicast_addresses", bytes(6), TypeError, "multicast_addresses: VSDVS_MACAddress.bytes: "),
                (port, "vlan", 5, TypeError, "vlan: 5 is not of the type Vlan"),
                (port, "vlan", qvs.Vlan(5.0), TypeError, "vlan: 'float' object cannot be"),
                (switch, "learn_static", "no", TypeError, "learn_static: 'no' is not of the type bool"),
                (port, "sink", None, TypeError, "sink: None is not of the type bool"),
                (switch, "mtu", 1500.0, TypeError, "mtu: 'float' object cannot be"),
                (port, "ls_teaming", 5, TypeError, "ls_teaming: 5 is not of the type str"),
                (port, "shaper_input", SESSION, TypeError, "shaper_input: VSDVS_MirrorSession("),
            ]:
                with self.subTest(message), self.assertRaises(error) as caught:
                    setattr(place, name, value)
                self.assertTrue(str(caught.exception).startswith(message), caught.exception)


class Objects(unittest.TestCase):
    def test_walk(self):
        with qvs.Snapshot() as host:
            switch = host.switch("sw1")
            self.assertEqual((switch.alias, switch.id, switch.class_name, switch.max_ports, switch.version),
                             ("sw1", "id-1", "vswitch", 128, 105))
            self.assertIn("id-1", [each.id for each in host.switches])
            self.assertEqual([port.id for port in switch.ports], ["uplink0", "uplink1", "port0", "port1"])
            self.assertEqual(switch.uplinks, [("uplink0", "uplink0"), ("uplink1", "uplink1")])
            self.assertEqual(switch.properties[keys.VERSION], b"\x69\0\0\0")
            self.assertEqual(switch.host_properties[keys.HOST_PORTSET], b"sw1\0")
            port = switch.port("uplink0")
            self.assertEqual((port.alias, port.state, port.status.flags & 3, port.statistics.pktsInDropped),
                             ("uplink0", constants.DVS_PORT_LIVE, 3, 0))
            self.assertEqual(port.number, port.status.portNumber)
            self.assertTrue(switch.dump().startswith("switch id-1 (vswitch)\n\tmax ports: 128\n"))
            self.assertIn("switch id-1 (vswitch)\n", host.dump())

    def test_life(self):
        with qvs.Snapshot() as host:
            switch = host.create_switch("short", portset="short-set", max_ports=9, version=104)
            self.assertEqual((switch.portset, switch.max_ports, switch.uplinks), ("short-set", 9, []))
            switch.add_port("web", 7)
            switch.add_opaque_port("out", "external-1")
            switch.add_uplink("up")
            host.reload()
            switch = host.switch("short")
            self.assertEqual([port.id for port in switch.ports], ["web", "out", "up"])
            self.assertEqual(switch.port("web").get_property(keys.PORT_CONNECT_ID), b"\7\0\0\0")
            self.assertEqual(switch.port("out").get_property(keys.PORT_EXTERNAL_ID), b"external-1\0")
            self.assertEqual(switch.uplinks, [("up", "up")])
            switch.remove_uplink("up")
            switch.port("web").remove()
            for call, message in [
                (lambda: switch.add_port("out"), "switch 'short': port 'out': Already exists (0xbad0005)"),
                (lambda: switch.remove_port("web"), "switch 'short': port 'web': Not found (0xbad0003)"),
                (lambda: switch.port("nix"), "switch 'short': port 'nix': Not found (0xbad0003)"),
                (lambda: host.switch("nix"), "switch 'nix': Not found (0xbad0003)"),
                (lambda: switch.get_property("a.b"), "switch 'short': a.b: Not found (0xbad0003)"),
                (lambda: host.create_switch("-rf"), "switch '-rf': Bad parameter (0xbad0007)"),
                (lambda: host.create_switch("s", portset="short-set"), "switch 's': Failure (0xbad0001)"),
                (lambda: host.create_switch("short"), "switch 'short': Already exists (0xbad0005)"),
            ]:
                with self.subTest(message), self.assertRaises(qvs.Error) as caught:
                    call()
                self.assertEqual(str(caught.exception), message)
            self.assertIsNone(switch.port("web").vlan)  # the snapshot has it still, the kernel does not
            switch.destroy()
            host.reload()
            self.assertNotIn("short", [each.alias for each in host.switches])

    def test_faults(self):
        with qvs.Snapshot() as host:
            for status, error, name in [(0xBAD0014, qvs.NoMemory, "Out of memory"),
                                        (0xBAD0040, qvs.NoHost, "No connection"),
                                        (0xBAD0099, qvs.Error, "Invalid metadata")]:
                subprocess.run(["qvs-host", "fault", "add", "PortAdd", "--status", hex(status)], check=True,
                               stdout=subprocess.DEVNULL)
                with self.assertRaises(qvs.Error) as caught:
                    host.switch("sw1").add_port("never")
                self.assertEqual((type(caught.exception), caught.exception.status, caught.exception.name),
                                 (error, status, name))

    def test_kernel_that_contradicts_itself(self):
        with qvs.Snapshot() as host:
            port = host.switch("sw1").port("port0")
            self.assertEqual(qvs.kernel.port_info("sw1", "port0"), qvs.kernel.ports("sw1")[2])
            self.assertEqual([qvs.kernel.uplink_is_up("sw1", "uplink0"), len(qvs.kernel.uplinks("sw1"))], [True, 2])
            qvs.kernel.set_uplink_up("sw1", "uplink0", False)
            self.assertFalse(qvs.kernel.uplink_is_up("sw1", "uplink0"))
            qvs.kernel.set_uplink_up("sw1", "uplink0", True)
            for request, call in [("GetUplinks", lambda: qvs.kernel.uplinks("sw1")),
                                  ("GetUplink", qvs.kernel.control_plane_uplinks)]:
                subprocess.run(["qvs-host", "fault", "add", f"device ioctl*{request}*", "--nth", "2", "--output",
                                "0:ffffffff"], check=True, stdout=subprocess.DEVNULL)
                with self.assertRaisesRegex(qvs.Failure, "counts 4294967295 entries, but handed over at most [24]: "):
                    call()
                subprocess.run(["qvs-host", "fault", "clear"], check=True, stdout=subprocess.DEVNULL)
            self.assertEqual(port.security, 1)

    def test_hostile_names(self):
        with qvs.Snapshot() as host:
            for number, name in enumerate(HOSTILE):
                with self.subTest(name):
                    switch = host.create_switch(name, id=f"h{number}", portset=f"h{number}")
                    self.assertEqual(switch.alias, name)
                    switch.add_port(name[:47])
                    switch.set_property(f"com.example.{name}", name.encode("utf-8", "surrogateescape"))
                    host.reload()
                    switch = host.switch(name)
                    port = switch.port(name[:47])
                    port.security = 3
                    port.set_property("com.example.empty", b"")
                    self.assertEqual((port.security, port.get_property("com.example.empty")), (3, b""))
                    self.assertEqual(switch.properties[f"com.example.{name}"].decode("utf-8", "surrogateescape"), name)
                    self.assertIn(name.replace("\n", "\\n")[:2], switch.dump())
                    switch.destroy()
            self.assertRaises(TypeError, host.switch("sw1").set_property, "com.example.n", 5)
            host.switch("sw1").set_property("com.example.text", "línea")
            self.assertEqual(host.switch("sw1").get_property("com.example.text"), b"l\xc3\xadnea\0")
            self.assertEqual(qvs.text(b"l\xc3\xadnea\0x"), "línea")
            for call in [lambda: host.switch("a\0b"), lambda: host.create_switch("a\0b"),
                         lambda: host.switch("sw1").port("p\0"), lambda: host.switch("sw1").get_property("k\0"),
                         lambda: host.switch("sw1").add_port("p", -1), lambda: host.create_switch("n", ports=1 << 32),
                         lambda: host.switch("sw1").add_uplink("u" * 48)]:
                self.assertRaises(ValueError, call)
            for call in [lambda: host.switch(None), lambda: host.create_switch("n", opaque="no"),
                         lambda: host.create_switch("n", ports=1.0), lambda: host.switch("sw1").add_port("p", "1"),
                         lambda: qvs.kernel.ports(None), lambda: qvs.kernel.set_uplink_up("sw1", "uplink0", "no"),
                         lambda: qvs.kernel.port_info("sw1", 5)]:
                self.assertRaises(TypeError, call)
            self.assertRaises(ValueError, qvs.kernel.mac_table, "sw1", 256)
            self.assertFalse(os.path.exists("x"))

    def test_two_switches_with_one_alias(self):
        with qvs.Snapshot() as host:
            host.create_switch("twin", id="twin-1", portset="twin-1")
            host.create_switch("twin", id="twin-2", portset="twin-2")
            twins = {switch.id: switch for switch in host.switches if switch.alias == "twin"}
            for id in twins:
                twins[id].set_property("com.example.id", id.encode())
                self.assertEqual(twins[id].get_property("com.example.id"), id.encode())
            first = host.switch("twin").id
            with self.assertRaisesRegex(qvs.NotFound, "another switch has its alias"):
                twins["twin-2" if first == "twin-1" else "twin-1"].learn_static = True
            self.assertRaises(qvs.NotFound, lambda: twins["twin-2" if first == "twin-1" else "twin-1"].uplinks)
            twins[first].learn_static = True


class Memory(unittest.TestCase):
    def test_nothing_leaks(self):
        class Counts(ctypes.Structure):
            _fields_ = [(name, ctypes.c_size_t) for name in
                        ("arena", "ordblks", "smblks", "hblks", "hblkhd", "usmblks", "fsmblks", "uordblks", "x", "y")]

        mallinfo2 = ctypes.CDLL(None).mallinfo2
        mallinfo2.restype = Counts

        def used():
            gc.collect()
            return mallinfo2().uordblks

        with qvs.Snapshot() as host:
            host.create_switch("mem", uplinks=2, ports=2)
            for name, _, value, *_ in SWITCH_POLICIES:
                setattr(host.switch("mem"), name, value)
            for name, _, value, *_ in PORT_POLICIES:
                setattr(host.switch("mem").port("port0"), name, value)

        document = qvs.config.export("mem")

        def everything():
            with qvs.Snapshot() as host:
                switch, port = host.switch("mem"), host.switch("mem").port("port0")
                for name, *_ in SWITCH_POLICIES:
                    getattr(switch, name)
                for name, *_ in PORT_POLICIES:
                    getattr(port, name)
                switch.uplinks, switch.properties, port.properties, port.status, host.dump(), port.number
                for call in (lambda: port.get_property("nothing"), lambda: host.dump("nothing"),
                             lambda: qvs.kernel.ports("nothing"), lambda: qvs.kernel.service_ports("nothing"),
                             lambda: qvs.config.validate("x")):
                    self.assertRaises(qvs.Error, call)
                host.reload()
                for call in (qvs.kernel.ports, qvs.kernel.switch_info, qvs.kernel.mac_table, qvs.kernel.service_ports,
                             qvs.kernel.uplinks):
                    call("mem")
                qvs.kernel.forwarding_sessions()
                self.assertEqual(len(qvs.kernel.control_plane_uplinks()[0]), 1237)
            qvs.config.export("mem")
            qvs.config.diff(document)

        for _ in range(20):
            everything()
        before = used()
        for _ in range(100):
            everything()
        # One block of 32 bytes a turn would be 3,200.
        self.assertLess(used() - before, 3000)
