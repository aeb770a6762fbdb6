// SPDX-License-Identifier: Apache-2.0
// The emulated kernel as its clients meet it: the shell's nodes, statuses, uplinks, trace, faults, bad
// clients.
#include <gtest/gtest.h>
#include <qvs/mesh_public.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

#include "support/bytes.h"
#include "support/host.h"
#include "wire/client.h"

namespace qvs::test {
namespace {

using wire::Client;
using wire::Kind;
using wire::Reader;
using wire::Writer;

constexpr char kUplinksKey[] = "com.quillon.common.host.uplinkPorts";
constexpr char kStatusKey[] = "com.quillon.common.port.volatile.status";
constexpr char kPortsetKey[] = "com.quillon.common.host.portset";

struct Answer {
    int exitCode = -1;
    std::string out;
    std::string err;
    bool operator==(const Answer &) const = default;
};

void PrintTo(const Answer &answer, std::ostream *stream) {
    *stream << "exit " << answer.exitCode << ", \"" << answer.out << "\", \"" << answer.err << '"';
}

Answer treesh(const std::vector<std::string> &words) {
    Client client;
    Writer request(Kind::Shell);
    request.u32(static_cast<uint32_t>(words.size()));
    for (const std::string &word : words)
        request.text(word);
    std::string payload;
    if (!client.connectToHost() || !client.call(request, &payload)) return {};
    Reader reader(payload);
    const auto code = static_cast<int>(reader.u32());
    const std::string out(reader.text());
    return {code, out, std::string(reader.text())};
}

std::string ls(const std::string &node) {
    return treesh({"-e", "ls", node}).out;
}

// An empty container of properties for PortAdd.
std::string container() {
    DVSData *data = nullptr;
    void *buffer = nullptr;
    uint32_t length = 0;
    DVSData_Alloc(&data, malloc, free);
    DVSData_Update(data, "k", "v", 1, 16);
    DVSData_Serialize(data, &buffer, &length, DVS_DATA_FORMAT);
    DVSData_Free(data);
    std::string bytes = bytesAt(buffer, length);
    free(buffer);
    return bytes;
}

uint32_t addPort(const char *switchId, const char *portId) {
    const std::string properties = container();
    return DVSHYP_PortAdd(switchId, portId, properties.data(), static_cast<uint32_t>(properties.size()));
}

uint32_t setUplinks(const char *switchId, const std::vector<std::string> &ports) {
    std::string list = u32(static_cast<uint32_t>(ports.size()));
    for (const std::string &port : ports)
        list += field(port, 48);
    return DVSHYP_HostPropSet(switchId, kUplinksKey, list.data(), static_cast<uint32_t>(list.size()), 16);
}

TEST(Shell, NodesOneAfterTheOther) {
    const auto missing = [](const std::string &node) {
        return Answer{1, "", "treesh: " + node + ": no such node\n"};
    };
    const auto bad = [](const std::string &node, const char *reason) {
        return Answer{1, "", "treesh: " + node + ": " + reason + "\n"};
    };
    const Answer usage = {1, "", "usage: treesh -e get|ls NODE\n       treesh -e set NODE VALUE...\n"};
    const std::string odd = "a b;$(c)'\"\\*?[|&<>#~\xff\n";
    const struct {
        std::vector<std::string> words;
        Answer answer;
    } cases[] = {
        {{"-e", "ls", "/net"}, {0, "create\npNics/\nportsets/\n", ""}},
        {{"-e", "ls", "/net/portsets"}, {0, "", ""}},
        {{"-e", "ls", "//net///pNics/"}, {0, "pnic0/\npnic1/\npnic2/\npnic3/\n", ""}},
        {{"-e", "set", "/net/create", "sw1", "128\n", "vswitch"}, {0, "", ""}},
        {{"-e", "set", "/net/create", "sw1", "8\n", "vswitch"}, bad("/net/create", "the name is taken")},
        {{"-e", "set", "/net/create", "sw2", "8\n", "bridge"}, bad("/net/create", "unknown class")},
        {{"-e", "set", "/net/create", "sw2", "-1\n", "vswitch"}, bad("/net/create", "not a number of ports")},
        {{"-e", "set", "/net/create", "sw2", "8x\n", "vswitch"}, bad("/net/create", "not a number of ports")},
        {{"-e", "set", "/net/create", "a/b", "8", "vswitch"},
         bad("/net/create", "not a valid name or value")},
        {{"-e", "set", "/net/create", "", "8", "vswitch"}, bad("/net/create", "not a valid name or value")},
        {{"-e", "set", "/net/create", odd, "8", "vswitch"}, {0, "", ""}},
        {{"-e", "ls", "/net/portsets"}, {0, "sw1/\n" + odd + "/\n", ""}},
        {{"-e", "get", "/net/portsets/" + odd + "/mtu"}, {0, "mtu:1500\n", ""}},
        {{"-e", "set", "/net/portsets/sw1//mtu", "9000"}, {0, "", ""}},
        {{"-e", "set", "/net/portsets/sw1/mtu", "9001"},
         bad("/net/portsets/sw1/mtu", "not a valid name or value")},
        {{"-e", "set", "/net/portsets/sw1/mtu", "1279"},
         bad("/net/portsets/sw1/mtu", "not a valid name or value")},
        {{"-e", "get", "/net/portsets/sw1/mtu"}, {0, "mtu:9000\n", ""}},
        {{"-e", "set", "/net/pNics/pnic2//mtu", "1280"}, {0, "", ""}},
        {{"-e", "get", "/net/pNics/pnic2/mtu"}, {0, "mtu:1280\n", ""}},
        {{"-e", "get", "/net/pNics/pnic3/mtu"}, {0, "mtu:1500\n", ""}},
        {{"-e", "ls", "/net/portsets/sw1/uplinks"}, {0, "", ""}},
        {{"-e", "set", "/net/portsets/" + odd + "/destroy", "destroy"}, {0, "", ""}},
        {{"-e", "get", "/net/portsets/" + odd + "/mtu"}, missing("/net/portsets/" + odd + "/mtu")},
        {{"-e", "get", "/net/portsets/sw/mtu"}, missing("/net/portsets/sw/mtu")},
        {{"-e", "get", "/net/pNics/pnic4/mtu"}, missing("/net/pNics/pnic4/mtu")},
        {{"-e", "get", "net/portsets/sw1/mtu"}, missing("net/portsets/sw1/mtu")},
        {{"-e", "get", "/net/portsets"}, bad("/net/portsets", "cannot be read")},
        {{"-e", "get"}, usage},
        {{"get", "/net"}, usage},
        {{}, usage},
    };
    for (const auto &[words, answer] : cases) {
        EXPECT_EQ(treesh(words), answer) << testing::PrintToString(words);
    }
}

TEST(Statuses, OfEveryOperation) {
    constexpr uint32_t kNotFound = 0xbad0003, kBusy = 0xbad0004, kExists = 0xbad0005, kLimit = 0xbad0006,
                       kBad = 0xbad0007;
    const std::string id64(64, 'i'), port48(48, 'p');
    const std::string good = container(), cut = good.substr(0, good.size() - 9);
    treesh({"-e", "set", "/net/create", "ps1", "8", "vswitch"});
    const auto add = [](const char *id) { return DVSHYP_SwitchAdd(id, "vswitch", 2, 105); };
    const auto portset = [](const char *id, std::string_view name) {
        return DVSHYP_HostPropSet(id, kPortsetKey, name.data(), static_cast<uint32_t>(name.size()), 16);
    };
    const auto addBlob = [](const char *id, const char *port, const std::string &blob) {
        return DVSHYP_PortAdd(id, port, blob.data(), static_cast<uint32_t>(blob.size()));
    };
    void *value = nullptr;
    uint32_t length = 0;
    const struct {
        const char *what;
        uint32_t expected;
        std::function<uint32_t()> call;
    } cases[] = {
        {"add", 0, [&] { return add("a"); }},
        {"add twice", kExists, [&] { return add("a"); }},
        {"add empty", kBad, [&] { return add(""); }},
        {"add long", kBad, [&] { return add(id64.c_str()); }},
        {"add 63", 0, [&] { return add(id64.substr(1).c_str()); }},
        {"associate unknown", kNotFound, [] { return DVSHYP_SwitchAssociate("x"); }},
        {"associate without property", kNotFound, [] { return DVSHYP_SwitchAssociate("a"); }},
        {"portset unknown", 0, [&] { return portset("a", "ps2"); }},
        {"associate without portset", kNotFound, [] { return DVSHYP_SwitchAssociate("a"); }},
        {"portset with rubbish behind", 0, [&] { return portset("a", std::string_view("ps1\0zz", 6)); }},
        {"dissociate early", kNotFound, [] { return DVSHYP_SwitchDissociate("a"); }},
        {"associate", 0, [] { return DVSHYP_SwitchAssociate("a"); }},
        {"associate twice", kBusy, [] { return DVSHYP_SwitchAssociate("a"); }},
        {"same portset", 0, [&] { return portset(id64.substr(1).c_str(), "ps1"); }},
        {"portset of another", kBusy, [&] { return DVSHYP_SwitchAssociate(id64.substr(1).c_str()); }},
        {"remove associated", kBusy, [] { return DVSHYP_SwitchRemove("a"); }},
        {"destroy associated", 1,
         [] {
             return static_cast<uint32_t>(
                 treesh({"-e", "set", "/net/portsets/ps1/destroy", "destroy"}).exitCode);
         }},
        {"port of unknown switch", kNotFound, [&] { return addBlob("x", "p", good); }},
        {"port without name", kBad, [&] { return addBlob("a", "", good); }},
        {"port with long name", kBad, [&] { return addBlob("a", port48.c_str(), good); }},
        {"port with cut container", kBad, [&] { return addBlob("a", "p", cut); }},
        {"port with no container", kBad, [&] { return addBlob("a", "p", ""); }},
        {"port", 0, [&] { return addBlob("a", "p", good); }},
        {"port twice", kExists, [&] { return addBlob("a", "p", good); }},
        {"port 47", 0, [&] { return addBlob("a", port48.substr(1).c_str(), good); }},
        {"port too many", kLimit, [&] { return addBlob("a", "q", good); }},
        {"remove unknown port", kNotFound, [] { return DVSHYP_PortRemove("a", "q"); }},
        {"get absent", kNotFound, [&] { return DVSHYP_GlobalPropGet("a", "k", &value, &length); }},
        {"clear absent", kNotFound, [] { return DVSHYP_GlobalPropClear("a", "k"); }},
        {"set on unknown switch", kNotFound, [] { return DVSHYP_HostPropSet("x", "k", "v", 1, 16); }},
        {"set on unknown port", kNotFound, [] { return DVSHYP_PortDataSet("a", "q", "k", "v", 1, 16); }},
        {"set empty key", kBad, [] { return DVSHYP_GlobalPropSet("a", "", "v", 1, 16); }},
        {"set empty value", 0, [] { return DVSHYP_GlobalPropSet("a", "k", "", 0, 16); }},
        {"clear", 0, [] { return DVSHYP_GlobalPropClear("a", "k"); }},
        {"clear property of the container", 0, [] { return DVSHYP_PortDataClear("a", "p", "k"); }},
        {"clear it again", kNotFound, [] { return DVSHYP_PortDataClear("a", "p", "k"); }},
        {"dissociate", 0, [] { return DVSHYP_SwitchDissociate("a"); }},
        {"remove", 0, [] { return DVSHYP_SwitchRemove("a"); }},
        {"remove again", kNotFound, [] { return DVSHYP_SwitchRemove("a"); }},
    };
    for (const auto &test : cases) {
        SCOPED_TRACE(test.what);
        EXPECT_STATUS(test.call(), test.expected);
    }
}

// A switch "id" on portset ps1 with the ports a, b, c, d (0x4000001 to 4), and "other" on ps2 with x
// (0x4000005).
class Uplinks : public testing::Test {
  protected:
    void SetUp() override {
        for (const char *portset : {"ps1", "ps2"})
            treesh({"-e", "set", "/net/create", portset, "8", "vswitch"});
        makeSwitch("id", "ps1", {"a", "b", "c", "d"});
        makeSwitch("other", "ps2", {"x"});
    }

    static void makeSwitch(const char *id, std::string_view portset, const std::vector<const char *> &ports) {
        ASSERT_STATUS(DVSHYP_SwitchAdd(id, "vswitch", 8, 105), 0);
        ASSERT_STATUS(DVSHYP_HostPropSet(id, kPortsetKey, portset.data(), 4, 16), 0);
        ASSERT_STATUS(DVSHYP_SwitchAssociate(id), 0);
        for (const char *port : ports)
            ASSERT_STATUS(addPort(id, port), 0);
    }

    static void expectBound(const char *ps1, const char *ps2) {
        EXPECT_EQ(ls("/net/portsets/ps1/uplinks"), ps1);
        EXPECT_EQ(ls("/net/portsets/ps2/uplinks"), ps2);
    }

    static std::string status(const char *port) { return portProp("id", port, kStatusKey).value_or("none"); }
};

TEST_F(Uplinks, AreBoundInOrderKeptAndReleased) {
    setUplinks("id", {"c", "nosuch", "a", "c"});
    expectBound("pnic0/\npnic1/\n", "");
    setUplinks("other", {"x"});
    expectBound("pnic0/\npnic1/\n", "pnic2/\n");
    // The order of the list is the order of the listing; what is bound stays so. The last one gets nothing.
    setUplinks("id", {"a", "b", "c", "d"});
    expectBound("pnic1/\npnic3/\npnic0/\n", "pnic2/\n");
    // A released NIC goes to the next port that waits, the lowest first.
    setUplinks("id", {"b", "d"});
    expectBound("pnic3/\npnic0/\n", "pnic2/\n");
    ASSERT_STATUS(DVSHYP_PortRemove("id", "d"), 0);
    ASSERT_STATUS(addPort("id", "d"), 0);
    expectBound("pnic3/\npnic0/\n", "pnic2/\n");
    ASSERT_STATUS(DVSHYP_PortRemove("id", "c"), 0);
    ASSERT_STATUS(DVSHYP_HostPropClear("id", kUplinksKey), 0);
    expectBound("", "pnic2/\n");
    setUplinks("id", {"a", "c"});
    expectBound("pnic0/\n", "pnic2/\n");
    ASSERT_STATUS(addPort("id", "c"), 0);
    expectBound("pnic0/\npnic1/\n", "pnic2/\n");
    ASSERT_STATUS(DVSHYP_SwitchDissociate("other"), 0);
    expectBound("pnic0/\npnic1/\n", "");
    ASSERT_STATUS(DVSHYP_SwitchAssociate("other"), 0);
    expectBound("pnic0/\npnic1/\n", "pnic2/\n");
    // A list that says more than it holds is read as far as it goes.
    const std::string shortList = u32(9) + field("b", 48) + field("a", 47);
    DVSHYP_HostPropSet("id", kUplinksKey, shortList.data(), static_cast<uint32_t>(shortList.size()), 16);
    expectBound("pnic0/\n", "pnic2/\n");
}

TEST_F(Uplinks, StatusRecordFollowsThePort) {
    const std::string unused = hex("0000000000000000 0000000000000000 01000004 00");
    const std::string bound = hex("0300000000000000 0000000000000000 01000004") + text("pnic0");
    EXPECT_BYTES(status("a"), unused);
    setUplinks("id", {"a"});
    EXPECT_BYTES(status("a"), bound);
    seed(R"({"pnics":[{"name":"pnic0","link":"down"}]})");
    EXPECT_BYTES(status("a"), hex("0100000000000000 0000000000000000 01000004") + text("pnic0"));
    seed(
        R"({"pnics":[{"name":"pnic0","link":"up"}],"clients":[{"switch":"id","port":"b","name":"web.eth0"}]})");
    EXPECT_BYTES(status("a"), bound);
    EXPECT_BYTES(status("b"), hex("0300000000000000 0000000000000000 02000004") + text("web.eth0"));
    ASSERT_STATUS(DVSHYP_PortDataSet("id", "b", "com.quillon.common.port.block", "true", 5, 16), 0);
    EXPECT_BYTES(status("b"), hex("0700000000000000 0000000000000000 02000004") + text("web.eth0"));
    // A client's own value holds until the kernel has something new to say.
    ASSERT_STATUS(DVSHYP_PortDataSet("id", "a", kStatusKey, "short", 5, 4), 0);
    EXPECT_EQ(status("a"), "short");
    ASSERT_STATUS(DVSHYP_PortDataClear("id", "a", kStatusKey), 0);
    EXPECT_EQ(status("a"), "none");
    setUplinks("id", {});
    EXPECT_BYTES(status("a"), unused);
    // Numbers are not given out twice.
    ASSERT_STATUS(DVSHYP_PortRemove("other", "x"), 0);
    ASSERT_STATUS(addPort("id", "e"), 0);
    EXPECT_BYTES(status("e"), hex("0000000000000000 0000000000000000 06000004 00"));
}

// A device's client whose memory is `input` at 0x1000 and `output` at 0x2000, by the protocol's messages.
class RawDevice {
  public:
    explicit RawDevice(const char *path = "/dev/vswitch") {
        Writer open(Kind::DeviceOpen);
        open.text(path);
        std::string payload;
        if (client.connectToHost() && client.call(open, &payload))
            openError = static_cast<int>(Reader(payload).u32());
    }

    // The request's errno; -1 when the connection was closed.
    int ioctl(uint32_t request, uint32_t outLength, std::optional<uint32_t> inLength = std::nullopt) {
        output.clear();
        memory = u32(inLength.value_or(static_cast<uint32_t>(input.size()))) + u32(outLength) + u64(0x1000) +
                 u64(0x2000);
        Writer message(Kind::DeviceIoctl);
        message.u32(request).u64(argument);
        if (!client.send(message)) return -1;
        for (;;) {
            wire::Head head;
            if (!client.receiveBytes(&head, sizeof head)) return -1;
            std::string payload(head.length, '\0');
            if (!client.receiveBytes(payload.data(), payload.size())) return -1;
            Reader reader(payload);
            if (head.kind == static_cast<uint32_t>(Kind::Reply)) {
                const int result = reader.i32();
                const auto error = static_cast<int>(reader.u32());
                EXPECT_EQ(result, error == 0 ? 0 : -1);
                return error;
            }
            const uint64_t address = reader.u64();
            Writer copied(Kind::Copied);
            if (head.kind == static_cast<uint32_t>(Kind::CopyIn)) {
                const uint32_t length = reader.u32();
                const std::string &source = address == 0x1000 ? input : memory;
                const bool fits = address <= 0x1000 && length <= source.size();
                copied.u32(fits ? 0 : EFAULT).text(fits ? source.substr(0, length) : "");
            } else {
                const bool fits = address == 0x2000 + output.size();
                if (fits) output += reader.text();
                copied.u32(fits ? 0 : EFAULT).text("");
            }
            if (!client.send(copied)) return -1;
        }
    }

    Client client;
    int openError = -1;
    uint64_t argument = 0x10;
    std::string memory, input, output;
};

// What a snapshot keeps of the one before is as if it had been built from nothing, which a change of portsets
// makes it be.
TEST(Snapshot, IsAfterSmallChangesAsBuiltAnew) {
    resetHost();
    seed(R"({"switches":[{"alias":"a","id":"a","uplinks":["u0"],"ports":["p0","p1"]},
                         {"alias":"b","id":"b","ports":["q"]}]})");
    const auto global = [](const char *id, const char *key, const std::string &value) {
        return DVSHYP_GlobalPropSet(id, key, value.data(), static_cast<uint32_t>(value.size()), 16);
    };
    const auto port = [](const char *id, const char *name, const char *key, const std::string &value) {
        return DVSHYP_PortDataSet(id, name, key, value.data(), static_cast<uint32_t>(value.size()), 8);
    };
    const std::function<uint32_t()> changes[] = {
        [&] { return global("a", "k", "1"); },
        [&] { return global("a", "k", "2") | global("b", "k", "1"); },
        [&] { return DVSHYP_HostPropSet("b", "k", "1", 1, 16); },
        [&] { return port("b", "q", "k", "1") | port("b", "q", "k", "2"); },
        [&] { return port("a", "p0", "com.quillon.common.port.block", text("true")); },
        [&] { return port("a", "p1", kStatusKey, "mine"); },
        [&] { return port("a", "p1", "com.quillon.vswitch.port.vlan", hex("0000 0500 0000 0000")); },
        [&] { return global("a", "com.quillon.common.vlanmtucheck.deploy", hex("01 0a000000")); },
        [&] { return port("a", "p0", "com.quillon.vswitch.port.vlan", hex("0000 0600 0000 0000")); },
        [&] { return DVSHYP_PortDataClear("b", "q", "k"); },
        [&] { return addPort("a", "p9") | addPort("a", "p5") | port("a", "p5", "k", "1"); },
        [&] { return addPort("b", "a") | addPort("a", "p6") | DVSHYP_PortRemove("a", "p6"); },
        [&] { return port("a", "p1", "k", "1") | DVSHYP_PortRemove("a", "p1"); },
        [&] { return DVSHYP_PortRemove("a", "p9") | DVSHYP_PortRemove("b", "q") | addPort("b", "q"); },
        [&] { return DVSHYP_GlobalPropClear("a", "k"); },
        [&] { return global("a", "com.quillon.common.alias", text("c")); },
    };
    std::string before = hostState(true);
    for (const auto &change : changes) {
        ASSERT_STATUS(change(), HYP_OK);
        const std::string after = hostState(true);
        EXPECT_NE(after, before) << "change " << &change - changes;
        EXPECT_EQ(treesh({"-e", "set", "/net/create", "x", "8", "vswitch"}).exitCode, 0);
        EXPECT_EQ(treesh({"-e", "set", "/net/portsets/x/destroy", "destroy"}).exitCode, 0);
        EXPECT_EQ(after, hostState(true)) << "change " << &change - changes;
        before = after;
    }
}

// So many that they are found in a table that grew, and listed in several pieces.
TEST(Device, FindsAndListsManyPorts) {
    resetHost();
    ASSERT_EQ(treesh({"-e", "set", "/net/create", "ps", "900", "vswitch"}).exitCode, 0);
    std::string ports;
    for (int i = 0; i < 900; ++i)
        ports += (i == 0 ? "\"p" : ",\"p") + std::to_string(i) + '"';
    seed(R"({"switches":[{"alias":"a","id":"a","portset":"ps","maxPorts":900,"ports":[)" + ports + "]}]}");
    std::string expected, listed;
    for (int i = 0; i < 900; i += 3)
        ASSERT_STATUS(DVSHYP_PortRemove("a", ("p" + std::to_string(i)).c_str()), 0);
    for (int i = 0; i < 900; ++i) {
        const std::string name = "p" + std::to_string(i);
        ASSERT_STATUS(DVSHYP_PortDataSet("a", name.c_str(), "k", "1", 1, 8), i % 3 == 0 ? 0xbad0003u : 0u);
        if (i % 3 != 0) expected += name + " ";
    }
    RawDevice device;
    device.input = field("ps", 268);
    ASSERT_EQ(device.ioctl(0x1013, 8 + 1458 * 1000), 0);
    EXPECT_BYTES(device.output.substr(0, 8), u32(600) + u32(0));
    for (size_t at = 8; at < device.output.size(); at += 1458)
        listed += device.output.substr(at + 8, 48).c_str() + std::string(" ");
    EXPECT_EQ(listed, expected);
    // A smaller area gets the first ones.
    ASSERT_EQ(device.ioctl(0x1013, 8 + 1458 * 600 - 1), 0);
    EXPECT_BYTES(device.output.substr(0, 8), u32(599) + u32(0));
    EXPECT_EQ(device.output.size(), 8u + 1458 * 599);
}

TEST(Device, JudgesFramesAndAddresses) {
    treesh({"-e", "set", "/net/create", "ps1", "8", "vswitch"});
    RawDevice device;
    ASSERT_EQ(device.openError, 0);
    EXPECT_EQ(RawDevice("/dev/null").openError, ENOENT);
    device.input = field("ps1", 268);
    EXPECT_EQ(device.ioctl(0x1010, 220), 0);
    EXPECT_EQ(device.output.substr(0, 20), u32(1) + u32(8) + u32(0) + u32(0) + u32(1500));
    // A short area is filled as far as it goes.
    EXPECT_EQ(device.ioctl(0x1010, 5), 0);
    EXPECT_BYTES(device.output, hex("0100000008"));
    EXPECT_EQ(device.ioctl(0x1010, 220, 0), EINVAL);
    EXPECT_EQ(device.ioctl(0x1010, 220, 0xffffffff), EINVAL);
    device.argument = 0x5000;
    EXPECT_EQ(device.ioctl(0x1010, 220), EFAULT);
    device.argument = 0x10;
    // Nothing of all this broke the connection.
    device.input = u32(1);
    EXPECT_EQ(device.ioctl(0x1026, 136), 0);
    EXPECT_BYTES(device.output, u32(1) + u32(1) + field("ps1", 128));
    EXPECT_EQ(device.ioctl(0x1026, 135), 0);
    EXPECT_BYTES(device.output, u32(0) + u32(1));
}

// In an area that is larger than the record, the bytes after the record stay as they are.
TEST_F(Uplinks, DeviceWritesNoMoreThanTheRecord) {
    setUplinks("id", {"a"});
    ASSERT_STATUS(DVSHYP_GlobalPropSet("id", "com.quillon.common.alias", "ps1", 4, 16), 0);
    RawDevice device;
    device.input = field("ps1", 128) + u32(0x4000001) + zeros(44) + field("pnic0", 92);
    const std::pair<uint32_t, size_t> cases[] = {
        {0x100b, 8 + 36},       {0x100c, 4},         {0x100d, 4},  {0x100e, 35588}, {0x1010, 220},
        {0x1013, 8 + 4 * 1458}, {0x1014, 1458},      {0x101d, 10}, {0x101e, 88},    {0x101f, 8 + 4 * 14},
        {0x1020, 8 + 4 * 52},   {0x1021, 8 + 4 * 8}, {0x1022, 32}, {0x1023, 48},    {0x1027, 64},
    };
    for (const auto &[command, length] : cases) {
        SCOPED_TRACE(command);
        EXPECT_EQ(device.ioctl(command, 40000), 0);
        EXPECT_EQ(device.output.size(), length);
    }
}

TEST(Trace, LinesToTheLetter) {
    takeTrace();
    void *value = nullptr;
    uint32_t length = 0;
    treesh({"-e", "set", "/net/create", "sw 1", "128\n", "vswitch"});
    treesh({"-e", "get", "/net/portsets/\xff\"\\/mtu", ""});
    DVSHYP_SwitchAdd("73 77", "vswitch", 128, 105);
    DVSHYP_GlobalPropSet("73 77", "com.quillon.common.alias", "sw1", 4, 16);
    DVSHYP_HostPropSet("73 77", "k\n", "", 0, 8);
    ASSERT_STATUS(DVSHYP_GlobalPropGet("73 77", "com.quillon.common.alias", &value, &length), 0);
    DVSHYP_DataFree(value);
    DVSHYP_PortDataGet("73 77", "p1", "k", &value, &length);
    DVSHYP_PortAdd("73 77", "p1", "bad", 3);
    DVSHYP_PortDataClear("73 77", "p1", "k");
    DVSHYP_PortRemove("73 77", "p1");
    DVSHYP_SwitchAssociate("73 77");
    DVSHYP_SwitchDissociate("73 77");
    DVSHYP_SwitchRemove("73 77");
    ASSERT_STATUS(DVSHYP_StateGet(&value, &length), 0);
    free(value);
    {
        RawDevice device;
        device.input = field("sw 1", 176) + "x" + zeros(91);
        device.ioctl(0x100b, 8);
        device.ioctl(0x100c, 4);
        device.ioctl(0x100c, 4, 9999);
        device.ioctl(0x9999, 4);
        device.argument = 0x5000;
        device.ioctl(0x1010, 220);
        RawDevice("/dev/nothing");
        control(R"({"op":"status"})");
    }
    EXPECT_EQ(maskLengths(takeTrace(), "StateGet"),
              R"(shell treesh -e set /net/create "sw 1" "128\n" vswitch -> exit 0
shell treesh -e get "/net/portsets/\xff\"\\/mtu" "" -> exit 1
state SwitchAdd switch="73 77" class="vswitch" maxPorts=128 version=105 -> 0x0
state GlobalPropSet switch="73 77" key="com.quillon.common.alias" length=4 type=16 -> 0x0
state HostPropSet switch="73 77" key="k\n" length=0 type=8 -> 0x0
state GlobalPropGet switch="73 77" key="com.quillon.common.alias" -> 0x0 length=4
state PortDataGet switch="73 77" port="p1" key="k" -> 0xbad0003
state PortAdd switch="73 77" port="p1" length=3 -> 0xbad0007
state PortDataClear switch="73 77" port="p1" key="k" -> 0xbad0003
state PortRemove switch="73 77" port="p1" -> 0xbad0003
state SwitchAssociate switch="73 77" -> 0xbad0003
state SwitchDissociate switch="73 77" -> 0xbad0003
state SwitchRemove switch="73 77" -> 0x0
state StateGet -> 0x0 length=*
device open "/dev/vswitch" -> 0
device ioctl "/dev/vswitch" 0x100b GetUplinks in=268 out=8 input=[0:73772031 176:78] -> 0
device ioctl "/dev/vswitch" 0x100c GetUplinkLinkState in=268 out=4 input=[0:73772031 176:78] -> ENOENT
device ioctl "/dev/vswitch" 0x100c GetUplinkLinkState in=9999 out=4 -> EFAULT
device ioctl "/dev/vswitch" 0x9999 ? -> ENOTTY
device ioctl "/dev/vswitch" 0x1010 GetSwitchInfo -> EFAULT
device open "/dev/nothing" -> ENOENT
)");
}

TEST(Faults, CountPatchCutDelayAndChangeTheLab) {
    ASSERT_STATUS(DVSHYP_SwitchAdd("id", "vswitch", 8, 105), 0);
    ASSERT_STATUS(DVSHYP_GlobalPropSet("id", "k", "value", 5, 16), 0);
    addFault("GlobalPropGet*key=\"?\"", R"("status":"0xbad0014")", 2, 2);
    for (const bool good : {true, false, false, true})
        EXPECT_EQ(globalProp("id", "k").has_value(), good);
    addFault("GlobalPropGet", R"("status":"0xbad0014")", 2, kFromThenOn);
    for (const bool good : {true, false, false, false})
        EXPECT_EQ(globalProp("id", "k").has_value(), good);
    clearFaults();
    EXPECT_EQ(globalProp("id", "k"), "value");
    addFault("GlobalPropGet", R"("output":[{"offset":1,"hex":"4142"},{"offset":5,"hex":"ff"}],"truncate":6)");
    EXPECT_EQ(globalProp("id", "k"), "vABue\xff");
    addFault("treesh -e ls", R"("output":[{"offset":0,"hex":"58"}],"truncate":4)");
    EXPECT_EQ(ls("/net"), "Xrea");
    // A device's answer stays within the client's area. Brackets are no set of characters.
    addFault("GetSwitches*input=[0:01]",
             R"("output":[{"offset":0,"hex":"ffffffff"},{"offset":6,"hex":"01020304"}])");
    RawDevice device;
    device.input = u32(1);
    EXPECT_EQ(device.ioctl(0x1026, 8), 0);
    EXPECT_BYTES(device.output, hex("ffffffff 0100 0102"));
    addFault("SwitchAssociate", R"("lab":{"switches":[{"alias":"sw1","ports":["p"]}]})");
    EXPECT_STATUS(DVSHYP_SwitchAssociate("id"), 0xbad0003);
    EXPECT_EQ(ls("/net/portsets"), "sw1/\n");
    // Who waits does not make others wait.
    addFault("SwitchRemove", R"("delayMs":300)");
    Client slow;
    Writer remove(Kind::SwitchRemove);
    remove.text("id");
    const auto begin = std::chrono::steady_clock::now();
    ASSERT_TRUE(slow.connectToHost() && slow.send(remove));
    EXPECT_EQ(globalProp("id", "k"), "value");
    std::string payload;
    ASSERT_TRUE(slow.receive(Kind::Reply, &payload));
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(300));
    EXPECT_EQ(globalProp("id", "k"), std::nullopt);
}

TEST(Lab, IsAppliedWholeOrNotAtAll) {
    seed(R"({"pnics":[{"name":"eth7","mtu":9000},{"name":"eth8"}],
             "switches":[{"alias":"sw1","id":"id","uplinks":["u0","u1"],"ports":["p"],
                          "properties":[{"scope":"port","port":"p","key":"k","text":"a\u0000","type":8},
                                        {"scope":"global","key":"g","hex":"00ff"}]}]})");
    EXPECT_EQ(ls("/net/pNics"), "eth7/\neth8/\n");
    EXPECT_EQ(ls("/net/portsets/sw1/uplinks"), "eth7/\neth8/\n");
    EXPECT_EQ(portProp("id", "p", "k"), text("a"));
    EXPECT_BYTES(globalProp("id", "g").value_or(""), hex("00ff"));
    const std::string before = hostState();
    const auto refused = [](const std::string &lab) {
        Client client;
        Writer request(Kind::Control);
        request.text(R"({"op":"seed","lab":)" + lab + "}");
        std::string payload;
        return client.connectToHost() && client.call(request, &payload) ? std::string(Reader(payload).text())
                                                                        : "";
    };
    EXPECT_EQ(refused(R"({"pnic":[]})"), R"({"error":"lab: \"pnic\" is unknown","ok":false})");
    EXPECT_EQ(refused(R"({"switches":[{"alias":"sw2"},{"alias":7}]})"),
              R"({"error":"lab.switches[1]: \"alias\" is not a text","ok":false})");
    EXPECT_EQ(refused(R"({"switches":[{"alias":"sw2"}],"pnics":[{"name":"eth9"}]})"),
              R"({"error":"NIC eth9: NICs can be added only to an empty host","ok":false})");
    EXPECT_EQ(refused(R"({"switches":[{"alias":"sw2"}],"clients":[{"switch":"sw2","port":"x","name":"n"}]})"),
              R"({"error":"port x: not found","ok":false})");
    EXPECT_EQ(refused(R"({"switches":[{"alias":"sw1","id":"id","maxPorts":9}]})"),
              R"({"error":"switch sw1: exists already with other attributes","ok":false})");
    EXPECT_EQ(hostState(), before);
}

TEST(BadClients, AreLetGoAloneWithOneLine) {
    const auto head = [](uint32_t length, uint32_t kind) { return u32(length) + u32(kind); };
    const std::string cases[] = {
        head(0xffffffff, 12),                  // larger than anything
        head(0, 0),                            // no such kind
        head(0, 33) + head(0, 10),             // the daemon's own kind
        head(4, 17) + u32(5),                  // a text beyond the end
        head(9, 17) + u32(4) + "abcdx",        // something behind the last field
        head(1, 11) + "\x03",                  // no such scope
        head(4, 40) + u32(0xffffffff),         // no such number of words
        head(12, 31) + zeros(12),              // a request to no device
        head(8, 34) + zeros(8),                // an answer to nothing
        head(4, 53) + zeros(4) + head(0, 53),  // two leases
        head(4, 53) + zeros(4) + head(0, 51),  // a lease that follows the trace
    };
    for (const std::string &message : cases) {
        Client client;
        ASSERT_TRUE(client.connectToHost());
        ASSERT_TRUE(wire::sendAll(client.socket(), message.data(), message.size()));
        char bytes[64];
        size_t received = 0;
        while ((received = wire::receiveSome(client.socket(), bytes, sizeof bytes)) != 0) {
        }
        EXPECT_EQ(errno, ECONNRESET) << toHex(message);
    }
    // One stops in the middle of a dialogue; nobody waits for it.
    Client stalled;
    std::string payload;
    Writer open(Kind::DeviceOpen), ioctl(Kind::DeviceIoctl);
    open.text("/dev/vswitch");
    ioctl.u32(0x100b).u64(0x10);
    ASSERT_TRUE(stalled.connectToHost() && stalled.call(open, &payload) && stalled.send(ioctl));
    ASSERT_TRUE(stalled.receive(Kind::CopyIn, &payload));
    EXPECT_EQ(treesh({"-e", "ls", "/net/portsets"}).exitCode, 0);
    // Then it sends less than it was asked for.
    Writer copied(Kind::Copied);
    copied.u32(0).text("short");
    ASSERT_TRUE(stalled.send(copied));
    EXPECT_FALSE(stalled.receive(Kind::Reply, &payload));

    std::ifstream log("state/log");
    const std::string lines((std::istreambuf_iterator<char>(log)), {});
    size_t closed = 0;
    for (size_t at = 0; (at = lines.find("\ninfo connection closed: ", at)) != std::string::npos; ++at)
        ++closed;
    EXPECT_EQ(closed, std::size(cases) + 1);
}

}  // namespace
}  // namespace qvs::test
