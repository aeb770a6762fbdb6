# SPDX-License-Identifier: Apache-2.0
"""What the data path tells: counters, carriers, addresses and groups, where clients read them."""
import json

from network import FIRST, STATE, configurations, host, lab, qvs, request, set_vlan, status

P1, U0 = FIRST, FIRST + 2


def main():
    description = lab(2, clients=[{"switch": "sw1", "port": "p1", "name": "web", "attach": "stream:web"}])
    description["pnics"][0]["attach"] = "stream:wire"
    with host(description):
        first = configurations()[0]["switches"][0]
        slot = {port["number"]: port["slot"] for port in first["ports"]}
        # Until the data path says so, an attachment has no carrier.
        assert [attachment["carrier"] for attachment in status()["attachments"]] == ["down", "down"]
        (STATE / "tell").write_text("\n".join([
            f"carrier {P1} 1", f"carrier {U0} 0", f"learnt {first['number']} 1 0x0200000000bb 100 {P1}",
            f"learnt {first['number']} 1 0x0200000000cc 100 {P1}", f"learnt {first['number']} 0 0x0200000000cc 100 {P1}",
            f"joined {P1} 1",
            f"slot {slot[P1]} " + " ".join(str(n) for n in range(1, 17)) + f" {U0} 3 21 22 23",
            f"slot {first['slot']} 31 32 33 34"]))
        set_vlan(5)
        carriers = {a["port"]: (a["carrier"], a["problem"]) for a in status()["attachments"]}
        assert carriers == {"p1": ("up", ""), "u0": ("down", "no cable")}, carriers
        table = json.loads(qvs("port", "stats", "sw1", "p1", "--json"))[0]
        assert list(table.values())[2:] == list(range(1, 17)), table
        for words, texts in (
                (("port", "show", "sw1", "p1"), ["pnic0", "link up"]),
                (("mac", "table", "sw1"), ["02:00:00:00:00:bb"]),
                (("mac", "stats", "sw1", "--port", "p1"), ["21", "22", "23"]),
                (("rarp", "sw1"), ["31", "32"]),
                (("teaming", "stats", "sw1"), ["33", "34"]),
                (("mcast", "switch-filters", "sw1", "--value", "2"), ["239.1.2.3"])):
            shown = qvs(*words)
            assert all(text in shown for text in texts), (words, shown)
        assert "02:00:00:00:00:cc" not in qvs("mac", "table", "sw1")
        # The data path is told of an address that a client removes.
        (STATE / "tell").write_text("")
        qvs("mac", "remove", "sw1", "0200000000bb 0200 6400", "--port", "p1")
        assert configurations()[-1]["forgotten"] == [
            {"port": P1, "address": {"bytes": [2, 0, 0, 0, 0, 0xbb]}, "vlan": 100}], configurations()[-1]
        assert "02:00:00:00:00:bb" not in qvs("mac", "table", "sw1")
        (STATE / "tell").write_text(f"learnt {first['number']} 1 0x0200000000bb 100 {P1}")
        # What a client stores continues from there, and so does what a new data path counts.
        request(op="seed", lab={"switches": [{"alias": "sw1", "properties": [
            {"scope": "port", "port": "p1", "key": "com.quillon.common.port.statistics", "hex": "64" + "00" * 127}]}]})
        (STATE / "tell").write_text(f"slot {slot[P1]} 5")
        set_vlan(6)
        assert json.loads(qvs("port", "stats", "sw1", "p1", "--json"))[0]["pktsInUnicast"] == 104
        # Addresses go with the data path that has learnt them, and counters with the network.
        request(op="detach", switch="sw1", port="p1")
        request(op="detach", switch="sw1", port="u0")
        request(op="network", enabled=False)
        assert "02:00:00:00:00:bb" not in qvs("mac", "table", "sw1")
        assert "33" not in qvs("teaming", "stats", "sw1")


main()
