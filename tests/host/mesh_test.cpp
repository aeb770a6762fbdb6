// SPDX-License-Identifier: Apache-2.0
// The reference state library: snapshots from good and from hostile blobs, containers, and life without a
// daemon.
#include <gtest/gtest.h>
#include <qvs/mesh_public.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "state_library/property_list.h"
#include "state_library/snapshot_writer.h"
#include "support/bytes.h"

namespace qvs::test {
namespace {

constexpr char kAliasKey[] = "com.quillon.common.alias";

// Two switches: one alias is terminated and followed by rubbish, the other not terminated; ports are not in
// the order of their identifiers; a property is shared.
std::string sampleBlob() {
    mesh::SnapshotWriter writer;
    const uint32_t first = writer.property(kAliasKey, text("sw1") + "rubbish", 16);
    const uint32_t second = writer.property(kAliasKey, "sw2", 16);
    const uint32_t empty = writer.property("com.quillon.empty", "", 32);
    const uint32_t shared = writer.property("com.quillon.shared", hex("00 ff 00"), 8);
    writer.addSwitch("id-1", "vswitch", 128, 105, {{shared, first}}, {{empty}});
    writer.addPort("p2", 1, {{shared, empty}});
    writer.addPort("p10", 2, {});
    writer.addPort("p1", 1, {{shared}});
    writer.addSwitch("id-2", "etherswitch", 0xffffffff, 0, {{second}}, {});
    writer.addPort(std::string(47, 'q'), 3, {});
    const flatbuffers::DetachedBuffer blob = writer.finish();
    return bytesAt(blob.data(), blob.size());
}

uint32_t load(std::string_view blob) {
    // Of exactly this size, so that a sanitizer notices a read behind it.
    const std::unique_ptr<char[]> exact(new char[blob.size()]);
    std::memcpy(exact.get(), blob.data(), blob.size());
    return DVSState_ConfigDeserialize(exact.get(), static_cast<uint32_t>(blob.size()));
}

// One line per property of a list, "KEY TYPE HEX", each behind a prefix. Reads the zero byte behind each
// value.
template <typename Walk, typename Handle>
std::string list(Walk walk, Handle *handle, const std::string &prefix) {
    struct Context {
        std::string prefix, lines;
    } context{prefix, {}};
    walk(
        handle,
        [](DVSData *data, void *opaque) {
            auto *found = static_cast<Context *>(opaque);
            const void *value = nullptr;
            const uint32_t length = DVSData_Data(data, &value);
            const std::string bytes = bytesAt(value, length + 1);
            found->lines += found->prefix + DVSData_Name(data) + " " +
                            std::to_string(DVSData_PropType(data)) + " " + toHex(bytes) + "\n";
            return 0;
        },
        &context);
    return context.lines;
}

int describePort(DVSPort *port, void *lines) {
    *static_cast<std::string *>(lines) += std::string("port ") + DVS_PortId(port) + " " +
                                          std::to_string(DVS_PortState(port)) + "\n" +
                                          list(DVSState_PortDataForEach, port, "  ");
    return 0;
}

int describeSwitch(DVSSwitch *sw, void *lines) {
    auto *text = static_cast<std::string *>(lines);
    *text += std::string(bytesAt(DVS_SwitchId(sw), 64).c_str()) + " " + DVS_ClassName(sw) + " " +
             std::to_string(DVS_GetMaxPorts(sw)) + " " + std::to_string(DVS_Version(sw)) + "\n" +
             list(DVSState_GlobalPropForEach, sw, "global ") + list(DVSState_HostPropForEach, sw, "host ");
    DVSState_PortForEach(sw, describePort, lines);
    return 0;
}

std::string describeAll() {
    std::string lines;
    DVSState_SwitchForEach(describeSwitch, &lines);
    return lines;
}

// What a client may do with any snapshot, whatever is in it.
void useEverything() {
    describeAll();
    DVSData *data = nullptr;
    for (const char *id : {"id-1", "id-2", ""}) {
        for (const char *port : {"p1", "p2", "p3", ""})
            DVSState_PortFind(id, port);
        DVSState_GlobalPropLookup(id, kAliasKey, &data);
        DVSState_HostPropLookup(id, "com.quillon.empty", &data);
    }
    DVSState_SwitchFindByAlias("sw2");
}

TEST(MeshSnapshot, HoldsWhatTheBlobSays) {
    ASSERT_STATUS(load(sampleBlob()), 0);
    EXPECT_EQ(describeAll(),
              "id-1 vswitch 128 105\n"
              "global com.quillon.shared 8 00ff0000\n"
              "global com.quillon.common.alias 16 7377310072756262697368"
              "00\n"
              "host com.quillon.empty 32 00\n"
              "port p2 1\n"
              "  com.quillon.shared 8 00ff0000\n"
              "  com.quillon.empty 32 00\n"
              "port p10 2\n"
              "port p1 1\n"
              "  com.quillon.shared 8 00ff0000\n"
              "id-2 etherswitch 4294967295 0\n"
              "global com.quillon.common.alias 16 73773200\n"
              "port qqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqqq 3\n");

    const struct {
        const char *alias, *id;
    } aliases[] = {{"sw1", "id-1"}, {"sw2", "id-2"}, {"sw", nullptr}, {"sw1rubbish", nullptr}, {"", nullptr}};
    for (const auto &[alias, id] : aliases)
        EXPECT_STREQ(DVS_SwitchId(DVSState_SwitchFindByAlias(alias)), id);

    const std::string q(47, 'q');
    std::string found;
    for (const char *id : {"id-1", "id-2", "id-3"}) {
        for (const std::string &port : std::vector<std::string>{"p1", "p2", "p10", "p", "p3", "", q, q + "q"})
            if (DVSState_PortFind(id, port.c_str()) != nullptr) found += id + (" " + port) + ", ";
    }
    EXPECT_EQ(found, "id-1 p1, id-1 p2, id-1 p10, id-2 " + q + ", ");

    DVSData *data = nullptr;
    EXPECT_STATUS(DVSState_HostPropLookup("id-1", "com.quillon.empty", &data), 0);
    EXPECT_STATUS(DVSState_HostPropLookup("id-1", "com.quillon.shared", &data), 0xbad0003);
    EXPECT_STATUS(DVSState_GlobalPropLookup("id-3", kAliasKey, &data), 0xbad0003);
}

// The first switch with an alias is found, whatever the order of aliases and identifiers.
TEST(MeshSnapshot, FindsSwitchesByAliasAndIdentifier) {
    mesh::SnapshotWriter writer;
    const char *const switches[][2] = {{"m", "same"},  {"z", "b"}, {"a", "same"}, {"b", "a"},
                                       {"c", nullptr}, {"d", ""},  {"e", "sam"}};
    for (const auto &[id, alias] : switches) {
        std::vector<uint32_t> globals;
        if (alias != nullptr) globals.push_back(writer.property(kAliasKey, text(alias), 16));
        globals.push_back(writer.property("k", id, 16));
        writer.addSwitch(id, "vswitch", 8, 105, globals, {});
    }
    const auto reload = [&writer] {
        const flatbuffers::DetachedBuffer blob = writer.finish();
        return load(bytesAt(blob.data(), blob.size()));
    };
    const auto found = [](const char *alias) {
        const char *id = DVS_SwitchId(DVSState_SwitchFindByAlias(alias));
        return std::string(id == nullptr ? "-" : id);
    };
    ASSERT_STATUS(reload(), 0);
    EXPECT_EQ(found("same") + found("a") + found("b") + found("") + found("sam") + found("sa") + found("z"),
              "mbzde--");
    for (const auto &[id, alias] : switches) {
        DVSData *data = nullptr;
        EXPECT_STATUS(DVSState_GlobalPropLookup(id, "k", &data), 0) << id;
        const void *value = nullptr;
        const uint32_t length = DVSData_Data(data, &value);
        EXPECT_BYTES(bytesAt(value, length), id);
    }
    DVSData *data = nullptr;
    EXPECT_STATUS(DVSState_GlobalPropLookup("aa", "k", &data), 0xbad0003);

    writer.replaceSwitch(0, {{writer.property(kAliasKey, "new", 16)}}, {});
    ASSERT_STATUS(reload(), 0);
    EXPECT_EQ(found("same") + found("new") + found("sam"), "ame");
}

TEST(MeshSnapshot, EndsAWalkWhenACallbackAnswersOrReloads) {
    ASSERT_STATUS(load(sampleBlob()), 0);
    static int visits;
    visits = 0;
    DVSState_SwitchForEach([](DVSSwitch *, void *) { return ++visits; }, nullptr);
    EXPECT_EQ(visits, 1);
    DVSState_SwitchForEach(
        [](DVSSwitch *, void *) {
            ++visits;
            return load(sampleBlob()) == 0 ? 0 : 1;
        },
        nullptr);
    EXPECT_EQ(visits, 2);
}

TEST(MeshSnapshot, IsEmptyAfterAReset) {
    ASSERT_STATUS(load(sampleBlob()), 0);
    DVSSwitch *stale = DVSState_SwitchFindByAlias("sw1");
    EXPECT_STATUS(DVSState_ConfigReset(), 0);
    EXPECT_EQ(describeAll(), "");
    EXPECT_EQ(DVSState_SwitchFindByAlias("sw1"), nullptr);
    EXPECT_EQ(DVSState_PortFind("id-1", "p1"), nullptr);
    EXPECT_EQ(DVS_SwitchId(stale), nullptr);
}

// A wrong blob is refused whole; one that is wrong in values alone may load. Neither is read out of bounds.
TEST(MeshSnapshot, SurvivesHostileBlobs) {
    const std::string blob = sampleBlob();
    const auto attempt = [](std::string_view hostile) {
        const uint32_t status = load(hostile);
        useEverything();
        if (status != 0) {
            EXPECT_STATUS(status, 0xbad0001);
            EXPECT_EQ(describeAll(), "");
        }
        return status;
    };
    for (size_t length = 0; length < blob.size(); ++length) {
        EXPECT_STATUS(attempt(std::string_view(blob).substr(0, length)), 0xbad0001) << length;
    }
    int refused = 0;
    for (size_t at = 0; at < blob.size(); ++at) {
        for (const char pattern : {'\x01', '\x80', '\xff'}) {
            std::string hostile = blob;
            hostile[at] = static_cast<char>(hostile[at] ^ pattern);
            refused += attempt(hostile) != 0;
        }
    }
    for (size_t at = 0; at + 4 <= blob.size(); at += 4) {
        for (const uint32_t wild : {0u, 1u, 0x7fffffffu, 0x80000000u, 0xffffffffu}) {
            std::string hostile = blob;
            hostile.replace(at, 4, u32(wild));
            refused += attempt(hostile) != 0;
        }
    }
    EXPECT_GT(refused, 500);
    EXPECT_STATUS(attempt(blob), 0);
}

// A container whose memory is counted.
int blocks;
int blocksLeft;
void *countedAllocate(size_t size) {
    if (blocksLeft-- <= 0) return nullptr;
    ++blocks;
    return std::malloc(size);
}
void countedRelease(void *memory) {
    --blocks;
    std::free(memory);
}

TEST(MeshContainer, KeepsOrderReplacesAndReleasesEverything) {
    blocks = 0;
    blocksLeft = 100;
    DVSData *data = nullptr;
    ASSERT_STATUS(DVSData_Alloc(&data, countedAllocate, countedRelease), 0);
    EXPECT_STATUS(DVSData_Update(data, "first", "1", 2, 16), 0);
    EXPECT_STATUS(DVSData_Update(data, "second", "22", 2, 8), 0);
    EXPECT_STATUS(DVSData_Update(data, "third", nullptr, 0, 4), 0);
    EXPECT_STATUS(DVSData_Update(data, "second", "\0longer", 7, 32), 0);
    EXPECT_STATUS(DVSData_Update(data, "first", "", 0, 16), 0);
    blocksLeft = 0;
    EXPECT_STATUS(DVSData_Update(data, "third", "3", 1, 16), 0xbad0014);

    void *buffer = nullptr;
    uint32_t length = 0;
    EXPECT_STATUS(DVSData_Serialize(data, &buffer, &length, 4), 0xbad0007);
    ASSERT_STATUS(DVSData_Serialize(data, &buffer, &length, 5), 0);
    DVSData_Free(data);
    EXPECT_EQ(blocks, 0);

    const auto properties = mesh::unpackProperties({static_cast<const char *>(buffer), length});
    ASSERT_TRUE(properties.has_value());
    std::string lines;
    for (const auto &property : *properties) {
        lines += property.key + " " + std::to_string(property.type) + " " + toHex(property.value) + "\n";
    }
    EXPECT_EQ(lines, "first 16 \nsecond 32 006c6f6e676572\nthird 4 \n");

    // The kernel reads it with the same care, wherever in a message it stands.
    const std::string blob = "x" + bytesAt(buffer, length);
    std::free(buffer);
    EXPECT_EQ(mesh::unpackProperties(std::string_view(blob).substr(1))->size(), 3u);
    for (size_t at = 1; at < blob.size(); ++at) {
        EXPECT_FALSE(mesh::unpackProperties(std::string_view(blob).substr(1, at - 1))) << at;
        std::string hostile = blob;
        hostile[at] = static_cast<char>(~hostile[at]);
        mesh::unpackProperties(std::string_view(hostile).substr(1));
    }
}

TEST(MeshContainer, RefusesWhatIsMissing) {
    DVSData *data = nullptr;
    EXPECT_STATUS(DVSData_Alloc(nullptr, std::malloc, std::free), 0xbad0007);
    EXPECT_STATUS(DVSData_Alloc(&data, nullptr, std::free), 0xbad0007);
    blocksLeft = 0;
    EXPECT_STATUS(DVSData_Alloc(&data, countedAllocate, countedRelease), 0xbad0014);
    ASSERT_STATUS(DVSData_Alloc(&data, std::malloc, std::free), 0);
    EXPECT_STATUS(DVSData_Update(data, nullptr, "", 0, 16), 0xbad0007);
    EXPECT_STATUS(DVSData_Update(data, "key", nullptr, 1, 16), 0xbad0007);
    const void *value = nullptr;
    EXPECT_EQ(DVSData_Data(data, &value), 0u);
    EXPECT_EQ(DVSData_Name(data), nullptr);
    EXPECT_EQ(DVSData_PropType(data), 0u);
    DVSData_Free(data);
    DVSData_Free(nullptr);
}

// Every request of the kernel side, with arguments that are there.
std::vector<std::function<uint32_t()>> requests(void **value, uint32_t *length) {
    return {
        [=] { return DVSHYP_StateGet(value, length); },
        [=] { return DVSHYP_PortDataGet("s", "p", "k", value, length); },
        [=] { return DVSHYP_HostPropGet("s", "k", value, length); },
        [=] { return DVSHYP_GlobalPropGet("s", "k", value, length); },
        [=] { return DVSHYP_PortDataSet("s", "p", "k", "v", 1, 16); },
        [=] { return DVSHYP_HostPropSet("s", "k", "v", 1, 16); },
        [=] { return DVSHYP_GlobalPropSet("s", "k", nullptr, 0, 16); },
        [=] { return DVSHYP_PortDataClear("s", "p", "k"); },
        [=] { return DVSHYP_HostPropClear("s", "k"); },
        [=] { return DVSHYP_GlobalPropClear("s", "k"); },
        [=] { return DVSHYP_SwitchAdd("s", "vswitch", 1, 105); },
        [=] { return DVSHYP_SwitchAssociate("s"); },
        [=] { return DVSHYP_SwitchDissociate("s"); },
        [=] { return DVSHYP_SwitchRemove("s"); },
        [=] { return DVSHYP_PortAdd("s", "p", "", 0); },
        [=] { return DVSHYP_PortRemove("s", "p"); },
    };
}

// In a child, which connects anew and finds nobody.
int failuresWithoutHost(const char *socket) {
    socket == nullptr ? unsetenv("QVS_HOST_SOCKET") : setenv("QVS_HOST_SOCKET", socket, 1);
    int failures = 0;
    void *value = &failures;
    uint32_t length = 1;
    for (const auto &request : requests(&value, &length))
        failures += request() != 0xbad0040;
    return failures + (value != nullptr) + (length != 0);
}

TEST(MeshKernel, AnswersAtOnceWithoutAHost) {
    for (const char *socket : {static_cast<const char *>(nullptr), "", "/nonexistent/socket"}) {
        EXPECT_EXIT(_exit(failuresWithoutHost(socket)), testing::ExitedWithCode(0), "");
    }
}

TEST(MeshKernel, RefusesNullPointers) {
    void *value = nullptr;
    uint32_t length = 0;
    const uint32_t answers[] = {
        DVSHYP_StateGet(nullptr, &length),
        DVSHYP_PortDataGet("s", nullptr, "k", &value, &length),
        DVSHYP_HostPropGet("s", "k", nullptr, &length),
        DVSHYP_GlobalPropGet(nullptr, "k", &value, &length),
        DVSHYP_PortDataSet("s", "p", nullptr, "v", 1, 16),
        DVSHYP_HostPropSet("s", "k", nullptr, 1, 16),
        DVSHYP_PortDataClear("s", nullptr, "k"),
        DVSHYP_GlobalPropClear("s", nullptr),
        DVSHYP_SwitchAdd("s", nullptr, 1, 105),
        DVSHYP_SwitchRemove(nullptr),
        DVSHYP_PortAdd("s", "p", nullptr, 0),
        DVSHYP_PortRemove("s", nullptr),
        DVSState_ConfigDeserialize(nullptr, 0),
        DVSState_HostPropLookup("s", "k", nullptr),
    };
    for (const uint32_t answer : answers)
        EXPECT_STATUS(answer, 0xbad0007);
    EXPECT_EQ(DVSState_SwitchFindByAlias(nullptr), nullptr);
    EXPECT_EQ(DVSState_PortFind("id-1", nullptr), nullptr);
    EXPECT_EQ(DVS_ClassName(nullptr), nullptr);
    DVSState_PortForEach(nullptr, describePort, nullptr);
    DVSHYP_DataFree(nullptr);
}

}  // namespace
}  // namespace qvs::test
