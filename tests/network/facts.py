# SPDX-License-Identifier: Apache-2.0
"""What the data path tells: counters, carriers, addresses and groups, where clients read them."""
import json
import re

from network import FIRST, STATE, configurations, host, lab, qvs, request, set_vlan, status

P1, U0 = FIRST, FIRST + 2


def main():
    description = lab(2, clients=[{"switch": "sw1", "port": "p1", "name": "web", "attach": "stream:web"}])
    description["pnics"][0]["attach"] = "stream:wire"
    with host(description):
        first = configurations()[0]["switches"][0]
        slot = {port["number"]: port["slot"] for port in first["ports"]}
        seeded = qvs("teaming", "stats", "sw1")
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
        port = json.loads(qvs("port", "show", "sw1", "p1", "--json"))
        assert all(str(n) in json.dumps(port) for n in (1, 16)), port
        statistics = qvs("port", "stats", "sw1", "p1", "--json")
        assert [int(n) for n in re.findall(r": (\d+)", statistics)][-16:] == list(range(1, 17)), statistics
        # What a client stores continues from there.
        assert "pnic0" in json.dumps(port) or "pnic1" in json.dumps(port), port
        assert "02:00:00:00:00:bb" in qvs("mac", "table", "sw1")
        assert "02:00:00:00:00:cc" not in qvs("mac", "table", "sw1")
        assert "239.1.2.3" in qvs("mcast", "switch-filters", "sw1", "--type", "ipv4")
        learning = json.loads(qvs("mac", "stats", "sw1", "--port", "p1", "--json"))
        assert [str(n) in json.dumps(learning) for n in (21, 22, 23)] == [True] * 3, learning
        assert [str(n) in qvs("rarp", "sw1") for n in (31, 32)] == [True] * 2
        assert [str(n) in qvs("teaming", "stats", "sw1") for n in (33, 34)] == [True] * 2
        # What a data path has learnt goes with it.
        request(op="network", enabled=False)
        assert seeded is not None


main()
