# SPDX-License-Identifier: Apache-2.0
"""Switches and ports as objects: how long they live, threads, equality, and what cannot be assigned."""
import os
import subprocess
import sys
import threading
import time
import unittest

import qvs
from qvs import records


def setUpModule():
    with qvs.Snapshot() as host:
        host.create_switch("hs1", id="handles-1", uplinks=2, ports=2)


class Handles(unittest.TestCase):
    def test_equality(self):
        with qvs.Snapshot() as host:
            switch, other = host.switch("hs1"), host.create_switch("other", ports=1)
            self.assertNotEqual(switch, host.switch("hs1"))  # the snapshot was loaded again: the first one is void
            switch = host.switch("hs1")
            self.assertEqual({switch, *host.switches, other}, set(host.switches))
            self.assertIn(switch.port("port0"), set(switch.ports))
            self.assertEqual(switch.ports.index(switch.port("port1")), 3)
            self.assertNotEqual(switch.port("port0"), other.port("port0"))
            self.assertNotEqual(switch, switch.port("port0"))
            self.assertNotEqual(switch, "hs1")
            other.destroy()

    def test_what_cannot_be_assigned(self):
        with qvs.Snapshot() as host:
            switch, port = host.switch("hs1"), host.switch("hs1").port("port0")
            for place, name, message in [
                (port, "vlann", "'Port' object has no attribute 'vlann'"),
                (port, "status", "'Port' object attribute 'status' is read-only"),
                (port, "statistics", "'Port' object attribute 'statistics' is read-only"),
                (port, "link_status", "'Port' object attribute 'link_status' is read-only"),
                (port, "id", "'id' of a port is read-only"),
                (switch, "alias", "'alias' of a switch is read-only"),
                (qvs.Vlan(), "ID", "'Vlan' object has no attribute 'ID'"),
                (records.QVS_Shaper(), "avarage", "QVS_Shaper has no field 'avarage'"),
            ]:
                with self.subTest(message), self.assertRaises(AttributeError) as caught:
                    setattr(place, name, records.QVS_LinkStatus())
                self.assertEqual(str(caught.exception), message)

    def test_stale(self):
        with qvs.Snapshot() as host:
            switch = host.switch("hs1")
            port = switch.port("port0")
            with qvs.Snapshot() as inner:
                self.assertEqual(inner.switch("hs1").port("port0").id, "port0")
            for use in (lambda: host.switches, lambda: switch.ports, lambda: port.vlan):
                with self.assertRaisesRegex(qvs.StaleHandle, "loaded again"):
                    use()
            host.reload()
            port = host.switch("hs1").port("port0")
            with self.assertRaises(RuntimeError):
                host.__enter__()
            # Another thread cannot end the block, and what it tries changes nothing.
            refused = []

            def end():
                try:
                    host.__exit__(None, None, None)
                except RuntimeError as error:
                    refused.append(str(error))

            thread = threading.Thread(target=end)
            thread.start()
            thread.join()
            self.assertEqual(refused, ["the block of this snapshot must be ended by the thread that opened it"])
            self.assertEqual(port.security, 1)
        with self.assertRaisesRegex(RuntimeError, "is not open"):
            host.__exit__(None, None, None)
        for use in (lambda: host.switches, lambda: host.dump(), lambda: port.properties, lambda: port.get_property("k"),
                    lambda: setattr(port, "security", 1), lambda: port.remove(), host.reload):
            with self.assertRaisesRegex(qvs.StaleHandle, "has ended"):
                use()

    def test_threads(self):
        failures = []

        def work():
            try:
                for _ in range(30):
                    with qvs.Snapshot() as host:
                        ids = [port.id for port in host.switch("hs1").ports]
                        assert ids == ["uplink0", "uplink1", "port0", "port1"], ids
                        assert host.switch("hs1").port("port0").security == 1
            except BaseException as error:
                failures.append(error)

        threads = [threading.Thread(target=work) for _ in range(6)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        self.assertEqual(failures, [])

        # Handles of an open block in other threads, while this one loads the snapshot again.
        seen = []
        with qvs.Snapshot() as host:
            port, stop = host.switch("hs1").port("port0"), threading.Event()

            def use():
                while not stop.is_set():
                    try:
                        seen.append(len(port.properties))
                    except qvs.StaleHandle:
                        seen.append("stale")

            threads = [threading.Thread(target=use) for _ in range(3)]
            for thread in threads:
                thread.start()
            while len(seen) < 20:
                time.sleep(0.001)
            for _ in range(20):
                host.reload()
            stop.set()
            for thread in threads:
                thread.join()
        self.assertEqual(set(seen[20:]) - {seen[0]}, {"stale"})

    def test_without_a_host(self):
        clean = {name: os.environ[name] for name in ("PATH", "LD_LIBRARY_PATH", "PYTHONPATH") if name in os.environ}
        program = "import qvs\ntry:\n    with qvs.Snapshot(): pass\nexcept qvs.NoHost as error: print(error)\n" \
                  "try: qvs.kernel.switches()\nexcept qvs.Failure as error: print(error)\n"
        output = subprocess.run([sys.executable, "-c", program], env=clean, check=True, capture_output=True, text=True)
        self.assertEqual(output.stdout, "the switches of this host: No connection (0xbad0040)\n"
                                        "VSHYP_GetSwitches(1): Failure (0xbad0001)\n")
        with self.assertRaisesRegex(ImportError, "libqvs-none.so: .*; install the library"):
            qvs._load.library("libqvs-none.so")
