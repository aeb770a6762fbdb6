// SPDX-License-Identifier: Apache-2.0
// The emulated host as a test sees it.
#include "support/host.h"

#include <dirent.h>
#include <gtest/gtest.h>
#include <qvs/dvs.h>
#include <qvs/mesh_public.h>
#include <qvs/vsdvs.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <nlohmann/json.hpp>
#include <regex>
#include <set>
#include <sstream>

#include "support/bytes.h"
#include "support/intercept.h"
#include "wire/client.h"

namespace qvs::test {
namespace {

using nlohmann::json;

// Where in the trace file the lines begin that no test has taken.
size_t tracePosition = 0;

std::string newLines() {
    std::ifstream file("trace", std::ios::binary);
    file.seekg(static_cast<std::streamoff>(tracePosition));
    std::ostringstream lines;
    lines << file.rdbuf();
    return lines.str();
}

size_t linesThatStart(std::string_view trace, std::string_view start, std::string_view end) {
    size_t count = 0;
    for (size_t at = 0; at < trace.size(); at = trace.find('\n', at) + 1) {
        const std::string_view line = trace.substr(at, trace.find('\n', at) - at);
        if (line.starts_with(start) && line.ends_with(end)) ++count;
    }
    return count;
}

// Takes the new lines of the trace. The kernel hears of a close when it gets to it, so the trace is complete
// when every device is closed again.
std::string takeLines() {
    control(R"({"op":"status"})");
    for (int tries = 0; tries < 2000; ++tries) {
        std::string trace = newLines();
        if (linesThatStart(trace, "device open", "-> 0") == linesThatStart(trace, "device close", "")) {
            tracePosition += trace.size();
            return trace;
        }
        usleep(1000);
    }
    ADD_FAILURE() << "a device is still open";
    return {};
}

template <typename Get, typename... Where>
std::optional<std::string> storedValue(Get get, Where... where) {
    void *value = nullptr;
    uint32_t length = 0;
    if (get(where..., &value, &length) != HYP_OK) return std::nullopt;
    std::string bytes = bytesAt(value, length);
    DVSHYP_DataFree(value);
    return bytes;
}

// A walk through a snapshot, one line for each thing there is.
struct Walk {
    std::set<std::string> *lines;
    bool withVolatile;
    std::string path;

    Walk at(std::string_view place) const {
        return {lines, withVolatile, path + (path.empty() ? "" : " ") + std::string(place)};
    }
};

int addProperty(DVSData *data, void *context) {
    const auto &walk = *static_cast<Walk *>(context);
    const std::string key = DVSData_Name(data);
    // What the kernel keeps up to date itself is its own business.
    if (!walk.withVolatile && key.find(".volatile.") != std::string::npos) return 0;
    const void *value = nullptr;
    const uint32_t length = DVSData_Data(data, &value);
    walk.lines->insert(walk.path + " " + key + " " + std::to_string(DVSData_PropType(data)) + " " +
                       toHex(bytesAt(value, length)));
    return 0;
}

int addPort(DVSPort *port, void *context) {
    Walk walk = static_cast<Walk *>(context)->at(std::string("port ") + DVS_PortId(port));
    walk.lines->insert(walk.path);
    DVSState_PortDataForEach(port, addProperty, &walk);
    return 0;
}

int addSwitch(DVSSwitch *sw, void *context) {
    const Walk walk = static_cast<Walk *>(context)->at(DVS_SwitchId(sw));
    walk.lines->insert(walk.path + " " + DVS_ClassName(sw) + " " + std::to_string(DVS_GetMaxPorts(sw)) + " " +
                       std::to_string(DVS_Version(sw)));
    Walk global = walk.at("global"), host = walk.at("host"), ports = walk;
    DVSState_GlobalPropForEach(sw, addProperty, &global);
    DVSState_HostPropForEach(sw, addProperty, &host);
    DVSState_PortForEach(sw, addPort, &ports);
    return 0;
}

}  // namespace

std::string control(std::string_view request) {
    static wire::Client client;
    wire::Writer message(wire::Kind::Control);
    message.text(request);
    std::string payload;
    if ((!client.connected() && !client.connectToHost()) || !client.call(message, &payload)) {
        ADD_FAILURE() << "no answer from the host to " << request;
        return "{}";
    }
    wire::Reader reader(payload);
    std::string answer(reader.text());
    if (!json::parse(answer).value("ok", false)) ADD_FAILURE() << request << ": " << answer;
    return answer;
}

void addFault(std::string_view match, std::string_view action, int nth, int count) {
    json request = json::parse("{" + std::string(action) + "}");
    request["op"] = "fault.add";
    request["match"] = match;
    request["nth"] = nth;
    request["count"] = count;
    control(request.dump());
}

void clearFaults() {
    control(R"({"op":"fault.clear"})");
}

void seed(std::string_view labJson) {
    control(json{{"op", "seed"}, {"lab", json::parse(labJson)}}.dump());
}

void resetHost() {
    clearFaults();
    control(R"({"op":"reset"})");
    EXPECT_EQ(DVSLoadConfig(), HYP_OK);
    clearTrace();
}

std::string takeTrace() {
    static const std::regex close("device close [^\n]*\n");
    return std::regex_replace(takeLines(), close, "");
}

void clearTrace() {
    takeLines();
}

std::string maskLengths(std::string_view trace, std::string_view operation) {
    const std::regex length("(" + std::string(operation) + " .*length=)[0-9]+");
    return std::regex_replace(std::string(trace), length, "$1*");
}

std::string hostState(bool withVolatile) {
    clearFaults();
    EXPECT_EQ(DVSLoadConfig(), HYP_OK);
    std::set<std::string> lines;
    const std::vector<std::string> commands = calls().commands;
    if (FILE *listing = popen("/bin/treesh -e ls /net/portsets", "r")) {
        char name[512];
        while (fgets(name, sizeof name, listing) != nullptr) {
            lines.insert("portset " + std::string(name, strcspn(name, "/\n")));
        }
        pclose(listing);
    }
    calls().commands = commands;
    Walk walk = {&lines, withVolatile, ""};
    DVSState_SwitchForEach(addSwitch, &walk);
    clearTrace();
    std::string state;
    for (const std::string &line : lines)
        state += line + "\n";
    return state;
}

std::optional<std::string> globalProp(const char *switchId, const char *key) {
    return storedValue(DVSHYP_GlobalPropGet, switchId, key);
}

std::optional<std::string> hostProp(const char *switchId, const char *key) {
    return storedValue(DVSHYP_HostPropGet, switchId, key);
}

std::optional<std::string> portProp(const char *switchId, const char *portId, const char *key) {
    return storedValue(DVSHYP_PortDataGet, switchId, portId, key);
}

uint32_t setGlobalProp(const char *switchId, const char *key, std::string_view value, uint32_t type) {
    return DVSHYP_GlobalPropSet(switchId, key, value.data(), static_cast<uint32_t>(value.size()), type);
}

uint32_t setHostProp(const char *switchId, const char *key, std::string_view value, uint32_t type) {
    return DVSHYP_HostPropSet(switchId, key, value.data(), static_cast<uint32_t>(value.size()), type);
}

uint32_t setPortProp(const char *switchId, const char *portId, const char *key, std::string_view value,
                     uint32_t type) {
    return DVSHYP_PortDataSet(switchId, portId, key, value.data(), static_cast<uint32_t>(value.size()), type);
}

void createSwitch(uint32_t maxPorts, uint32_t uplinks, uint32_t ports) {
    EXPECT_STATUS(VSDVS_CreateVSwitch("sw1", "id", nullptr, 106, 0, maxPorts, uplinks, ports), 0);
    EXPECT_STATUS(DVSLoadConfig(), 0);
    clearTrace();
}

void createHub() {
    EXPECT_STATUS(DVSHYP_SwitchAdd("hub", "etherswitch", 8, 105), 0);
    EXPECT_STATUS(setGlobalProp("hub", "com.quillon.common.alias", text("hub")), 0);
    EXPECT_STATUS(DVSLoadConfig(), 0);
    clearTrace();
}

int openDescriptors() {
    int count = 0;
    DIR *directory = opendir("/proc/self/fd");
    while (readdir(directory) != nullptr)
        ++count;
    closedir(directory);
    return count;
}

}  // namespace qvs::test
