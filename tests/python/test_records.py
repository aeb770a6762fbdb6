# SPDX-License-Identifier: Apache-2.0
"""Records are the literal bytes that the library stores, and refuse what does not fit."""
import unittest

from qvs import keys, lib, records

TABLE = [
    (records.VSDVS_PortVLAN(flags=1, vlan=0x123, rangeCount=2), "0100 2301 0000 0200"),
    (records.HealthCheck_Deployment(1, 0x01020304), "01 04030201"),
    (records.VSDVS_MACLearning(b"\x58\x02\x00", 7, 65536), "580200 07 00000100"),
    (records.VSDVS_PortMACManagement(1, records.VSDVS_PortMACLearning(0, 1, 2, 3)), "01 00 01 02000000 03000000"),
    (records.VSDVS_MirrorHeader(0xFACEBEEF, 2, 1, 3), "efbecefa 02000000 01000000 03000000 00000000"),
    (records.QVS_Lag("lag\udcff", "k", 1, 20, -2),
     "6c6167ff" + "00" * 61 + "6b" + "00" * 15 + "01000000 14000000 feffffff"),
    (records.VSDVS_ExtraEthFilter(2, 1, [b"\x02\0\0\0\0\x01"]), "02000000 0100 020000000001" + "00" * 188),
    (records.VSDVS_TeamingPolicy(3, 0x80, 0, 0x20, 1, 1, ["uplink0", "u1"]),
     "03000000 80000000 00000000 20000000 01000000 01000000" + b"uplink0".hex() + "00" * 74 + b"u1".hex()
     + "00" * (79 + 30 * 81)),
    (records.IPFIXDVS_Port(1, 2, 3, collectorCount=2,
                           collectors=[records.IPFIXDVS_Collector(b"\x7f\0\0\1" + bytes(12), 53)]),
     "01000000 02000000 03000000 00 02 0000 00000000 00000000 7f000001" + "00" * 12 + "3500 00 00" + "00" * 140),
]
REFUSED = [
    (records.VSDVS_PortVLAN(vlan=65536), "VSDVS_PortVLAN.vlan: int too big to convert"),
    (records.QVS_Lag(portNumber=1 << 31), "QVS_Lag.portNumber: int too big to convert"),
    (records.VSDVS_MACAddress(b"\0" * 5), "VSDVS_MACAddress.bytes: 5 bytes do not fit into 6"),
    (records.VSDVS_UplinkPort("x" * 49), "VSDVS_UplinkPort.portId: 49 bytes do not fit into 48"),
    (records.VSDVS_UplinkPort("a\0b"), "VSDVS_UplinkPort.portId: 'a\\x00b' contains a NUL character"),
    (records.VSDVS_TeamingPolicy(uplinks=["u"] * 33), "VSDVS_TeamingPolicy.uplinks: 33 elements do not fit into 32"),
]
# bytes(6) would be six zeros, and a text the list of its characters.
WRONG_TYPE = [
    (records.VSDVS_MACAddress(6), "VSDVS_MACAddress.bytes: memoryview: a bytes-like object is required, not 'int'"),
    (records.VSDVS_PortVLAN(vlan="5"), "VSDVS_PortVLAN.vlan: 'str' object cannot be interpreted as an integer"),
    (records.VSDVS_PortVLAN(vlan=1.5), "VSDVS_PortVLAN.vlan: 'float' object cannot be interpreted as an integer"),
    (records.VSDVS_UplinkPort(5), "VSDVS_UplinkPort.portId: 5 is not of the type str"),
    (records.VSDVS_TeamingPolicy(uplinks="u1"), "VSDVS_TeamingPolicy.uplinks: 'u1' is not a list"),
    (records.VSDVS_PortMACManagement(1, bytes(11)),
     f"VSDVS_PortMACManagement.learning: {bytes(11)!r} is not of the type VSDVS_PortMACLearning"),
]


class Records(unittest.TestCase):
    def test_bytes(self):
        for record, expected in TABLE:
            with self.subTest(record=type(record).__name__):
                data = bytes.fromhex(expected)
                self.assertEqual(bytes(record), data)
                read = type(record).from_bytes(b"xy" + data, 2)
                self.assertEqual(bytes(read), data)
                with self.assertRaisesRegex(ValueError, f"has {len(data)} bytes, but {len(data) - 1} are there"):
                    type(record).from_bytes(data[1:])
        self.assertEqual(records.VSDVS_VLANRange.list_from_bytes(bytes.fromhex("ff 0100 0200 0300 0400"), 1, 2),
                         [records.VSDVS_VLANRange(1, 2), records.VSDVS_VLANRange(3, 4)])

    def test_refused(self):
        for error, rows in ((ValueError, REFUSED), (TypeError, WRONG_TYPE)):
            for record, message in rows:
                with self.subTest(message), self.assertRaises(error) as caught:
                    bytes(record)
                self.assertEqual(str(caught.exception), message)

    def test_no_bit_of_a_record_is_lost(self):
        for name, record in vars(records).items():
            if isinstance(record, type) and issubclass(record, records.Record) and record is not records.Record:
                data = b"\x81" * record.SIZE
                self.assertEqual(bytes(record.from_bytes(data)), data, name)


class Library(unittest.TestCase):
    def test_every_function_is_there(self):
        for name in lib.__annotations__:
            self.assertEqual(getattr(lib, name).__name__, name)
        with self.assertRaisesRegex(AttributeError, "module 'qvs.lib' has no function 'VSDVS_Nothing'"):
            lib.VSDVS_Nothing  # type: ignore[attr-defined]

    def test_numbers_are_not_cut_off(self):
        for call in [lambda: lib.VSDVS_SetMTU(b"sw1", 1 << 32), lambda: lib.BFD_GetSessions(256),
                     lambda: lib.VSHYP_SetUplinkAdminLinkState(b"s", b"u", -(1 << 31) - 1)]:
            self.assertRaisesRegex(ValueError, "is not between", call)
        self.assertRaises(TypeError, lib.VSDVS_SetMTU, "sw1", 1500)
        self.assertRaises(TypeError, lib.VSDVS_SetMTU, b"sw1", 1500.0)

    def test_keys(self):
        self.assertEqual(keys.PORT_VLAN, "com.quillon.vswitch.port.vlan")
        self.assertEqual(keys.KEYS[keys.PORT_VLAN], (2, 8))
