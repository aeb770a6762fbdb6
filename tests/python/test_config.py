# SPDX-License-Identifier: Apache-2.0
"""Documents: export, checks, comparison and application on an emulated host."""
import copy
import pickle
import unittest

import qvs
from qvs.config import Entry, Kind

DOCUMENT = """switches:
  sw1:
    maxPorts: 16
    ports:
      web: {vlan: {id: 5}}
"""


class Config(unittest.TestCase):
    def test_life_of_a_document(self):
        changes = qvs.config.diff(DOCUMENT)
        self.assertEqual([(entry.kind, entry.path) for entry in changes],
                         [(Kind.ADDED, "switches.sw1"), (Kind.ADDED, "switches.sw1.maxPorts"),
                          (Kind.ADDED, "switches.sw1.ports.web"), (Kind.ADDED, "switches.sw1.ports.web.vlan")])
        self.assertEqual(qvs.config.apply(DOCUMENT), changes)
        self.assertEqual(qvs.config.apply(DOCUMENT.encode()), [])
        with qvs.Snapshot() as host:
            port = host.switch("sw1").port("web")
            self.assertEqual(port.vlan, qvs.Vlan(5))
            text = qvs.config.export("sw1")
            self.assertRaises(qvs.StaleHandle, lambda: port.vlan)
        self.assertIn("      web:\n        connectId: 1\n        blocked: off\n        vlan: {id: 5}\n", text)
        self.assertTrue(qvs.config.export(json=True).startswith("{"))
        self.assertGreater(len(qvs.config.export(defaults=True)), len(text))

        changed = text.replace("{id: 5}", "{id: 6}")
        change = [Entry(Kind.CHANGED, "switches.sw1.ports.web.vlan", before="{id: 5}", after="{id: 6}")]
        self.assertEqual(qvs.config.diff(changed), change)
        self.assertEqual(str(change[0]), "switches.sw1.ports.web.vlan: {id: 5} -> {id: 6}")
        # A change that is not confirmed is undone; one that is, stays.
        self.assertEqual(qvs.config.apply(changed, confirm=60), change)
        with self.assertRaisesRegex(qvs.Exists, "Already exists"):
            qvs.config.apply(text)
        qvs.config.recover()
        self.assertEqual(qvs.config.diff(changed), change)
        qvs.config.apply(changed, confirm=60)
        qvs.config.confirm()
        self.assertEqual(qvs.config.diff(changed), [])
        self.assertRaises(qvs.NotFound, qvs.config.confirm)
        self.assertRaises(qvs.NotFound, qvs.config.recover)

        removed = qvs.config.apply("switches: {}\n", prune=True)
        self.assertEqual([(entry.kind, entry.path) for entry in removed], [(Kind.REMOVED, "switches.sw1")])

    def test_problems(self):
        with self.assertRaises(qvs.BadParameter) as caught:
            qvs.config.validate("switches:\n  x: {mtu: 1, foo: 2}\n")
        self.assertEqual(caught.exception.problems, [
            Entry(Kind.ERROR, "switches.x.mtu", "1 is below 1280", line=2, column=12),
            Entry(Kind.ERROR, "switches.x.foo", "no such member", line=2, column=15)])
        self.assertEqual(str(caught.exception), "the document: Bad parameter (0xbad0007)\n"
                         "  line 2, column 12: switches.x.mtu: 1 is below 1280\n"
                         "  line 2, column 15: switches.x.foo: no such member")
        # An error goes to other processes, as of a pool.
        for same in (copy.copy, copy.deepcopy, *(lambda error, number=number: pickle.loads(pickle.dumps(error, number))
                                                 for number in range(pickle.HIGHEST_PROTOCOL + 1))):
            error = same(caught.exception)
            self.assertEqual((type(error), str(error), vars(error)),
                             (qvs.BadParameter, str(caught.exception), vars(caught.exception)))
        self.assertEqual(qvs.config.validate(DOCUMENT), [])
        with self.assertRaisesRegex(qvs.NotFound, "export: Not found"):
            qvs.config.export("nothing")
        reference = "switches:\n  y: {teaming: {active: [nowhere]}}\n"
        warnings = [entry for entry in qvs.config.diff(reference) if entry.kind is Kind.WARNING]
        self.assertEqual(len(warnings), 1)
        with self.assertRaises(qvs.BadParameter) as caught:
            qvs.config.apply(reference, strict=True)
        self.assertEqual(caught.exception.problems[0].text, warnings[0].text)
        for hostile in ("", "\0", b"\xff\xfe", "[" * 5000, "switches: &a {x: *a}", "\udcff: 1"):
            with self.subTest(repr(hostile)[:30]):
                try:
                    self.assertEqual(qvs.config.validate(hostile), [])
                except qvs.BadParameter as error:
                    self.assertTrue(error.problems)
        for value in (5, [1, 2], None, 1.5):
            self.assertRaises(TypeError, qvs.config.validate, value)
        with self.assertRaisesRegex(TypeError, "prune: 'no' is not of the type bool"):
            qvs.config.apply("switches: {}\n", prune="no")
        self.assertRaises(ValueError, qvs.config.apply, DOCUMENT, confirm=-1)
        self.assertRaises(ValueError, qvs.config.export, "a\0b")
