# SPDX-License-Identifier: Apache-2.0
"""Stored bytes of policies, and what the data path gets for them. A malformed record has the safe default."""
import random

from hostile import PROP_SET, Client, number, text
from network import FIRST, IDENTIFIER, configurations, host, lab, status


def name(text, width):
    return text.encode().hex().ljust(width * 2, "0")


def teaming(balance, checks, behaviour, active, standby, size=2616):
    def u32(value):
        return value.to_bytes(4, "little").hex()

    head = u32(balance) + u32(checks) + u32(0) + u32(behaviour) + u32(len(active)) + u32(len(standby))
    return (head + "".join(name(uplink, 81) for uplink in active + standby)).ljust(size * 2, "0")


def session(identifier, kind, flags, counts, first, tail=""):
    """A mirror session that keeps 64 bytes of one frame in 2, in VLAN 7; `tail` are the two masks."""
    parts = [name(identifier, 32), "00" * 84, f"{kind:02x}000000", "40000000", f"{flags:02x}000000", "0700",
             tail or "00000000", "0000", "02000000", "00" * 76, *(f"{n:02x}000000" for n in counts),
             f"{first:02x}000000"]
    return "".join(parts)


def sessions(version, listed, entities):
    head = f"efbecefa{version:02x}000000{len(listed):02x}000000{len(entities):02x}00000000000000"
    return head + "".join(listed) + "".join("00000000" + entity.ljust(96, "0") for entity in entities)


P = {f"p{i}": FIRST + i - 1 for i in range(1, 13)}
U0, U1 = FIRST + 12, FIRST + 13

# For each port the properties (key behind com.quillon.vswitch., hexadecimal bytes) and members of the result.
PORTS = {
    "p1": ([("port.vlan", "0000640000000000")], {"vlan": {"id": 100}}),
    "p2": ([("port.vlan", "0500000000000300" "0a001400" "1e001e00" "28000a00"), ("port.priority", "05000000")],
           {"vlan": {"trunk": True, "priority": 5,
                     "ranges": [{"first": 10, "last": 20}, {"first": 30, "last": 30}]}}),
    "p3": ([("port.vlan", "0200650000000000"), ("port.vlanNestedTag", "01000000")],
           {"vlan": {"id": 101, "in_private_map": True, "nested": True}}),
    "p4": ([("port.vlan", "0000640000000200" "0a001400"), ("port.security", "0000")],
           {"vlan": {"trunk": True},
            "security": {"mac_change": False, "forged_transmits": False}}),
    "p5": ([("port.security", "06000000"), ("port.vlan", "0000")],
           {"vlan": {"trunk": True},
            "security": {"promiscuous": True, "mac_change": False, "forged_transmits": False}}),
    "p6": ([("port.extraEthFRP", "0b000100" "0200" "01005e000001" "333300000001" + "00" * 182)],
           {"filter": {"unicast": True, "multicast": True, "broadcast": True, "sink": True,
                       "addresses": [{"bytes": [1, 0, 94, 0, 0, 1]}, {"bytes": [51, 51, 0, 0, 0, 1]}]}}),
    "p7": ([("port.macManagement", "0001010a00000001000000"), ("port.extraEthFRP", "0b")],
           {"learning": {"enabled": True, "flooding": True, "limit": 10, "drop_at_limit": True}}),
    "p8": ([("port.teaming.policy", teaming(4, 0xa0, 0x3c, ["u1", "p1"], ["pnic0"])),
            ("port.txUplink", b"always\0".hex())],
           {"teaming": {"balance": "Explicit", "active": [U1], "standby": [U0], "check_beacon": True,
                        "notify": True, "rolling": True, "best_effort": True, "shotgun": True},
            "always_uplink": True}),
    "p9": ([("port.teaming.policy", teaming(6, 0, 0, [], [])),
            ("port.mcast.user.addresses.override", "01" "01005e000001")],
           {"multicast_list": [{"bytes": [1, 0, 94, 0, 0, 1]}], "has_multicast_list": True}),
    "p10": ([("port.mcast.user.addresses.override", "02" "01005e000001"), ("port.macManagement", "00")], {}),
    "p11": ([("port.mirrorSessions",
              sessions(2, [session("m2", 4, 0, (2, 0, 0), 0), session("off", 1, 0x20, (0, 0, 0), 0)],
                       ["00000000c0a80001", "01000000" "20010db8" + "00" * 11 + "01"]))], {}),
    "p12": ([("port.mirrorSessions", sessions(1, [session("m3", 9, 3, (1, 0, 0), 0, "01000200")], [name("p2", 48)])),
             ("port.vlan", "0000ff0f00000000")],
            {"vlan": {"trunk": True}}),
}

SWITCH = [
    ("global", "pvlanMap", "6400640001aaaaaa" "6400650002000000" "6400660009000000"),
    ("global", "teaming", teaming(0, 0, 0, [], ["u0"])),
    ("global", "multicastFilter", b"snooping\0".hex()),
    ("host", "macLearning", "2c0100ff64000000"),
    ("host", "macLearning.learnStatic", b"true\0".hex()),
    ("host", "mcast.user.addresses", "00"),
    ("host", "uplinkMirrorSessions",
     sessions(2, [session("m1", 1, 0x0d, (1, 2, 1), 0)],
              [name("p1", 48), name("web", 48), name("nobody", 48), name("pnic1", 48)])),
]


def mirror(identifier, **members):
    return {"id": identifier, "snap_length": 64, "sampling": 2, "encap_vlan": 7, **members}


EXPECTED = {
    "number": 1, "name": "sw1", "aging": 300, "mac_limit": 100, "learn_static": True,
    "private_vlans": [{"primary": 100, "secondary": 100}, {"primary": 100, "secondary": 101, "type": "Isolated"},
                      {"primary": 100, "secondary": 102, "type": "Isolated"}],
    "static_macs": [{"address": {"bytes": [2, 0, 0, 0, 0, 9]}, "vlan": 100, "port": P["p1"]}],
    "teaming": {"balance": "Drop", "standby": [U0], "check_link": False},
    "mirrors": [
        mirror("m1", type="Port", no_output=True, keep_vlan=True, encapsulated=True,
               destinations=[{"port": P["p1"]}], sources_in=[P["p2"]], sources_out=[U1]),
        mirror("m2", type="EncapsulatedSource",
               destinations=[{"address": [192, 168, 0, 1]}, {"address": [32, 1, 13, 184] + [0] * 11 + [1]}]),
        mirror("m3", no_output=True, no_input=True, destinations=[{"port": P["p2"]}], sources_in=[P["p2"]],
               sources_out=[U0, U1]),
    ],
    "multicast": "Snooping", "has_multicast_list": True,
}


def without_slots(value):
    if isinstance(value, dict):
        return {key: without_slots(part) for key, part in value.items() if key not in ("slot", "ports")}
    return [without_slots(part) for part in value] if isinstance(value, list) else value


def main():
    description = lab(12)
    description["clients"] = [
        {"switch": "sw1", "port": "p2", "name": "web", "link": "down", "mac": "02:00:00:00:00:aa",
         "attach": "datagram:here,/tmp/there"}]
    description["pnics"][1]["attach"] = "host:../other/pnic7"
    description["mcastFilters"] = [{"switch": "sw1", "port": "p1", "group": "239.0.0.1", "sources": ["10.0.0.1"]}]
    description["macEntries"] = [
        {"switch": "sw1", "port": "p1", "mac": "02:00:00:00:00:09", "vlan": 100, "kind": "static"},
        {"switch": "sw1", "port": "p1", "mac": "02:00:00:00:00:0a"}]
    description["switches"][0]["properties"] = [
        {"scope": scope, "key": f"com.quillon.vswitch.{key}", "hex": value} for scope, key, value in SWITCH]
    description["switches"][0]["properties"] += [
        {"scope": "port", "port": port, "key": f"com.quillon.vswitch.{key}", "hex": value}
        for port, (properties, _) in PORTS.items() for key, value in properties]
    with host(description):
        configuration = configurations()[0]
    assert configuration["whole"] and configuration["generation"] == 1
    sw = configuration["switches"][0]
    for key, value in EXPECTED.items():
        assert without_slots(sw)[key] == value, (key, without_slots(sw)[key], value)
    ports = {port["number"]: without_slots(port) for port in sw["ports"]}
    ports_of_families = ("vlan", "security", "filter", "learning", "teaming", "always_uplink", "multicast_list",
                         "has_multicast_list")
    for port, (_, members) in PORTS.items():
        own = {key: value for key, value in ports[P[port]].items() if key in ports_of_families}
        # A lab gives each port a VLAN policy.
        assert {"vlan": {}} | members == own, (port, own, members)
    first, web, uplink = ports[P["p1"]], ports[P["p2"]], ports[U1]
    assert first["groups"] == [{"address": [239, 0, 0, 1], "sources": [{"address": [10, 0, 0, 1]}]}]
    assert first["link"] and "client" not in first and first["mac"]["bytes"][0] == 2
    assert first["mac"]["bytes"][4:] == [0, 1], first["mac"]
    assert web["client"] == "web" and "link" not in web and web["mac"] == {"bytes": [2, 0, 0, 0, 0, 0xaa]}
    assert uplink["uplink"] and uplink["client"] == "pnic1" and uplink["vlan"]["ranges"] == [{"first": 1, "last": 4094}]
    slots = [port["slot"] for port in sw["ports"]] + [sw["slot"]] + [m["slot"] for m in sw["mirrors"]]
    assert len(set(slots)) == len(slots) and 0 not in slots
    state = configuration["attachments"][1]["path"].rsplit("/", 1)[0]
    assert configuration["attachments"] == [
        {"port": P["p2"], "kind": "Datagram", "path": state + "/here", "peer": "/tmp/there", "name": "web",
         "mac": {"bytes": [2, 0, 0, 0, 0, 0xaa]}},
        {"port": U1, "kind": "Host", "path": state + "/wire-pnic1", "peer": state + "/../other/wire-pnic7",
         "name": "pnic1", "mac": {"bytes": [2, 0, 0, 0, 0, 1]}}], configuration["attachments"]


def survives():
    """Whatever is stored in place of a record, the host and its data path go on."""
    chance = random.Random(7)
    scopes = {"global": 0, "host": 1}
    records = [(scopes[scope], "", key, value) for scope, key, value in SWITCH]
    records += [(2, port, key, value) for port, (properties, _) in PORTS.items() for key, value in properties]
    with host(lab(12)):
        client = Client("state")
        for _ in range(600):
            scope, port, key, value = chance.choice(records)
            record = bytearray.fromhex(value)
            for _ in range(chance.randrange(4)):
                record[chance.randrange(min(len(record), 260))] = chance.choice([0, 1, 2, 127, 255])
            if chance.random() < 0.3:
                record = record[:chance.randrange(len(record))]
            answer = client.call(PROP_SET, bytes([scope]) + text(IDENTIFIER) + text(port)
                                 + text("com.quillon.vswitch." + key) + text(bytes(record)) + number(8))
            assert answer == number(0), (key, record.hex())
        assert status()["restarts"] == 0


main()
survives()
