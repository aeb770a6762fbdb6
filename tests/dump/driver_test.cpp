// SPDX-License-Identifier: Apache-2.0
// The dump: headers, marks, the filter, the generic printer, which keys have a printer, and memory.
#include <cstdio>

#include "support/alloc_fault.h"
#include "support/intercept.h"
#include "support/test.h"

namespace qvs::test {
namespace {

// A port without any property.
void addBarePort(const char *id, const char *port) {
    DVSData *container = nullptr;
    ASSERT_STATUS(DVSData_Alloc(&container, malloc, free), 0);
    void *buffer = nullptr;
    uint32_t length = 0;
    ASSERT_STATUS(DVSData_Serialize(container, &buffer, &length, 5), 0);
    DVSData_Free(container);
    ASSERT_STATUS(DVSHYP_PortAdd(id, port, buffer, length), 0);
    free(buffer);
    ASSERT_STATUS(DVSHYP_PortDataClear(id, port, "com.quillon.common.port.volatile.status"), 0);
}

std::string dump(const char *alias = nullptr, uint32_t status = 0) {
    EXPECT_EQ(DVSLoadConfig(), HYP_OK);
    char untouched[] = "untouched";
    char *dumped = untouched;
    EXPECT_STATUS(NetDVS_Dump(alias, &dumped), status);
    if (dumped == untouched || dumped == nullptr) return dumped == nullptr ? "null" : "untouched";
    std::string copy = dumped;
    NetDVS_FreeMemory(dumped);
    return copy;
}

// The dump of switch "id" up to its global properties.
const std::string kHead = "switch id (vswitch)\n\tmax ports: 16\n\tglobal properties:\n";
const std::string kHost = "\thost properties:\n";

TEST(Dump, EmptySnapshot) {
    EXPECT_EQ(dump(), "");
}

TEST(Dump, SwitchesPropertiesPortsAndMarks) {
    CallsReset reset;
    ASSERT_STATUS(DVSHYP_SwitchAdd("id", "hub%s", 0xffffffff, 1), 0);
    setGlobalProp("id", "com.example.g%n", text("100%"));
    ASSERT_STATUS(DVSHYP_HostPropSet("id", "com.example.h", "x\0y", 3, 32), 0);
    // Ports in the order in which a snapshot holds them either way: of creation and of name.
    for (const char *port : {"0", "1", "2", "3", "7", "8", "9%s"})
        addBarePort("id", port);
    ASSERT_STATUS(DVSHYP_PortDataSet("id", "8", "com.example.p", "\5\0\n", 3, 8), 0);
    calls().portStates = {{"0", 0}, {"1", 1}, {"2", 2}, {"3", 3}, {"7", 4}, {"8", 9}, {"9%s", 0xffffffff}};
    EXPECT_EQ(dump(),
              "switch id (hub%s)\n"
              "\tmax ports: -1\n"
              "\tglobal properties:\n"
              "\t\tcom.example.g%n = 100% , \tpropType = CONFIG \n"
              "\thost properties:\n"
              "\t\tcom.example.h = 0x78. 0.79\n"
              "\t\t\tpropType = RUNTIME \n"
              "\tport 0 (INVALID):\n"
              "\tport 1:\n"
              "\tport 2 (SHADOW):\n"
              "\tport 3 (ZOMBIE):\n"
              "\tport 7(LOCAL CACHE):\n"
              "\tport 8 (UNKNOWN):\n"
              "\t\tcom.example.p = 0x 5. 0. a\n"
              "\t\t\tpropType = POLICY \n"
              "\tport 9%s (UNKNOWN):\n");
}

TEST(Dump, AliasPicksOneSwitch) {
    CallsReset reset;
    for (const char *id : {"id 1", "id 2", "id 3"}) {
        ASSERT_STATUS(DVSHYP_SwitchAdd(id, "vswitch", 8, 105), 0);
        setGlobalProp(id, "com.quillon.common.alias", text(std::string("sw") + id[3]));
    }
    ASSERT_STATUS(DVSHYP_SwitchAdd("hub", "etherswitch", 8, 105), 0);
    setGlobalProp("hub", "com.quillon.common.alias", text("hub"));
    const std::string tail =
        " (vswitch)\n\tmax ports: 8\n\tglobal properties:\n"
        "\t\tcom.quillon.common.alias = sw2 , \tpropType = CONFIG \n\thost properties:\n";
    EXPECT_EQ(dump("sw2"), "switch id 2" + tail);
    EXPECT_EQ(dump("sw9", 0xbad0003), "untouched");
    EXPECT_EQ(dump("hub", 0xbad0007), "untouched");
    EXPECT_STATUS(NetDVS_Dump(nullptr, nullptr), 0xbad0007);

    // The filter has 63 characters, so a longer identifier is not its equal.
    calls().longIds["id 2"] = std::string(64, 'i');
    EXPECT_EQ(dump("sw2"), "");
    calls().longIds["id 2"] = std::string(63, 'i');
    EXPECT_EQ(dump("sw2"), "switch " + std::string(63, 'i') + tail);
}

TEST(Dump, GenericPrinter) {
    ASSERT_STATUS(DVSHYP_SwitchAdd("id", "vswitch", 16, 105), 0);
    struct {
        std::string value;
        uint32_t type;
        const char *printed;
    } const rows[] = {
        {text("abc"), 16, "abc , \tpropType = CONFIG \n"},
        {text(""), 16, " , \tpropType = CONFIG \n"},
        {text(" ~%d"), 16, " ~%d , \tpropType = CONFIG \n"},
        {"abc", 16, "0x61.62.63\n\t\t\tpropType = CONFIG \n"},
        {text("a") + text("b"), 16, "0x61. 0.62. 0\n\t\t\tpropType = CONFIG \n"},
        {text("a") + text(""), 16, "0x61. 0. 0\n\t\t\tpropType = CONFIG \n"},
        {hex("05000a"), 16, "0x 5. 0. a\n\t\t\tpropType = CONFIG \n"},
        {hex("ff80"), 16, "0xff.80\n\t\t\tpropType = CONFIG \n"},
        {text("a\x7f"), 16, "0x61.7f. 0\n\t\t\tpropType = CONFIG \n"},
        {text("a\x1f"), 16, "0x61.1f. 0\n\t\t\tpropType = CONFIG \n"},
        {text("\xc3\xa4"), 16, "0xc3.a4. 0\n\t\t\tpropType = CONFIG \n"},
        {text("a\n"), 16, "0x61. a. 0\n\t\t\tpropType = CONFIG \n"},
        {"", 16, "0x 0\n\t\t\tpropType = CONFIG \n"},
        {text("x"), 32, "x , \tpropType = RUNTIME \n"},
        {text("x"), 4, "x , \tpropType = VOLATILE \n"},
        {text("x"), 8, "x , \tpropType = POLICY \n"},
        {text("x"), 20, "x , \tpropType = CONFIG VOLATILE \n"},
        {text("x"), 60, "x , \tpropType = CONFIG RUNTIME VOLATILE POLICY \n"},
        {text("x"), 0xffffffff, "x , \tpropType = CONFIG RUNTIME VOLATILE POLICY \n"},
        {text("x"), 0, "x , \tpropType = \n"},
        {"x", 67, "0x78\n\t\t\tpropType = \n"},
    };
    for (const auto &[value, type, printed] : rows) {
        setGlobalProp("id", "com.example.key", value, type);
        EXPECT_EQ(dump(), kHead + "\t\tcom.example.key = " + printed + kHost);
    }
}

TEST(Dump, KeysWithoutAPrinterOfTheirOwn) {
    ASSERT_STATUS(DVSHYP_SwitchAdd("id", "vswitch", 16, 105), 0);
    for (const std::string key :
         {"com.quillon.common.alias", "com.quillon.common.version", "com.quillon.common.port.block",
          "com.quillon.vswitch.macLearning.overlay.cache", "com.quillon.common.port.volatile.statu",
          "com.quillon.common.port.volatile.status2", "COM.quillon.common.port.connectid", "a", "zzz"}) {
        setGlobalProp("id", key.c_str(), text("abc"));
        EXPECT_EQ(dump(), kHead + "\t\t" + key + " = abc , \tpropType = CONFIG \n" + kHost);
        ASSERT_STATUS(DVSHYP_GlobalPropClear("id", key.c_str()), 0);
    }
}

// A switch with `count` properties that each print as a line of 57 characters, as the pieces of its dump.
std::vector<std::string> piecesOfSwitchWith(int count) {
    EXPECT_STATUS(DVSHYP_SwitchAdd("id", "vswitch", 16, 105), 0);
    std::vector<std::string> pieces = {"switch id (vswitch)\n", "\tmax ports: 16\n",
                                       "\tglobal properties:\n"};
    for (int i = 0; i < count; ++i) {
        char key[32];
        std::snprintf(key, sizeof key, "com.example.%05d", i);
        setGlobalProp("id", key, text("value of 12."));
        pieces.push_back("\t\t" + std::string(key) + " = value of 12. , \tpropType = CONFIG \n");
        EXPECT_EQ(pieces.back().size(), 57u);
    }
    pieces.push_back(kHost);
    return pieces;
}

std::string joined(const std::vector<std::string> &pieces) {
    std::string whole;
    for (const std::string &piece : pieces)
        whole += piece;
    return whole;
}

TEST(Dump, PieceThatFindsNoMemoryIsDroppedAlone) {
    SKIP_WITHOUT_ALLOC_FAULT();
    auto pieces = piecesOfSwitchWith(200);
    {
        AllocFault fault(1);
        EXPECT_EQ(dump(nullptr, 0xbad0014), "untouched");
    }
    {
        // The buffer comes before the alias.
        AllocFault fault(1);
        EXPECT_EQ(dump("sw9", 0xbad0014), "untouched");
    }
    // 55 characters of head and 70 lines fill 4045 of the first 4096 bytes; the 71st line needs more.
    {
        AllocFault fault(2);
        auto expected = pieces;
        expected.erase(expected.begin() + 3 + 70);
        EXPECT_EQ(dump(), joined(expected));
    }
    // With no memory at all from then on, the short last piece still fits: 4045 + 18 + 1 bytes.
    {
        AllocFault fault(2, kFromThenOn);
        auto expected = pieces;
        expected.erase(expected.begin() + 3 + 70, expected.end() - 1);
        EXPECT_EQ(dump(), joined(expected));
    }
}

// Each counter is a piece, and so is the whole of a line with an address.
TEST(Dump, PiecesThatFindNoMemoryAreLinesOfPrinters) {
    SKIP_WITHOUT_ALLOC_FAULT();
    const std::string kept =
        "\t\tcom.quillon.common.port.statistics:\n\t\t\tpktsInUnicast = 0\n\t\t\tbytesInUnicast = 0\n" +
        kHost;
    const std::string start = "\t\tcom.example.key = ", end = " , \tpropType = CONFIG \n";
    const std::string value(4095 - kHead.size() - start.size() - end.size() - kept.size(), 'v');
    ASSERT_STATUS(DVSHYP_SwitchAdd("id", "vswitch", 16, 105), 0);
    setGlobalProp("id", "com.example.key", text(value));
    setGlobalProp("id", "com.quillon.common.port.statistics", std::string(128, '\0'));
    setGlobalProp("id", "com.quillon.etherswitch.ipv4addr", hex("0a000001"));
    AllocFault fault(2, kFromThenOn);
    EXPECT_EQ(dump(), kHead + start + value + end + kept);
}

// 4095 characters and their NUL fit the first buffer, one more needs the next.
TEST(Dump, FirstBufferIsFilledToTheLastByte) {
    ASSERT_STATUS(DVSHYP_SwitchAdd("id", "vswitch", 16, 105), 0);
    for (const size_t size : {3997u, 3998u}) {
        setGlobalProp("id", "com.example.key", text(std::string(size, 'v')));
        const std::string piece =
            "\t\tcom.example.key = " + std::string(size, 'v') + " , \tpropType = CONFIG \n";
        EXPECT_EQ(dump(), kHead + piece + kHost);
#ifndef QVS_TEST_SANITIZED
        AllocFault fault(2, kFromThenOn);
        EXPECT_EQ(dump(), kHead + (size == 3997 ? piece : kHost));
#endif
    }
}

// A piece is cut at 4095 characters; what follows comes right behind it.
TEST(Dump, LongPieceIsCut) {
    ASSERT_STATUS(DVSHYP_SwitchAdd("id", "vswitch", 16, 105), 0);
    const std::string start = "\t\tcom.example.key = ", end = " , \tpropType = CONFIG \n";
    for (const size_t size : {4052u, 4053u, 4095u, 4096u, 5000u, 100000u}) {
        setGlobalProp("id", "com.example.key", text(std::string(size, 'v')));
        const std::string piece = start + std::string(size, 'v') + end;
        EXPECT_EQ(dump(), kHead + piece.substr(0, 4095) + kHost) << size;
    }
}

}  // namespace
}  // namespace qvs::test
