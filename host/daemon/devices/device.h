// SPDX-License-Identifier: Apache-2.0
// The devices of the emulated kernel: the frames of their requests and their commands.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <nlohmann/json_fwd.hpp>

#include "daemon/model/bytes.h"
#include "daemon/model/model.h"
#include "wire/protocol.h"

namespace qvs::kernel {

// A request, whose input was copied from the memory of the client.
struct Call {
    Model &model;
    uint32_t command = 0;
    std::string_view input;  // at least Command::minInput bytes
    uint32_t outLength = 0;  // the most bytes that the client accepts
};

// The answer to a request. The caller cuts output that exceeds the room of the client.
struct [[nodiscard]] Result {
    int error = 0;
    std::string output;
    // Appends more output, and returns false if that was the last of it. It is called while the answer is
    // sent, between other requests. Can be empty.
    std::function<bool(std::string *output)> more = {};
};

struct Command {
    // Matches every number that no other row has.
    static constexpr uint32_t kAny = UINT32_MAX;

    uint32_t number = 0;
    uint32_t minInput = 0;
    const char *name = nullptr;
    Result (*handle)(const Call &call) = nullptr;
};

struct Frame {
    uint32_t inLength = 0;
    uint64_t inAddress = 0;
    uint32_t outLength = 0;
    uint64_t outAddress = 0;
};
Frame readFrame(const wire::FrameLayout &layout, std::string_view bytes);

class Members;

// A member of a lab that a device reads.
struct LabMember {
    const char *name = nullptr;
    // Reads the member from `lab` and applies it to the host, after the switches, ports and NICs of the lab.
    // After an exception (JsonError, LabError), the caller rolls back the changes.
    void (*apply)(Members &lab, Model &model) = nullptr;
};

// The part of a device that one source file contains.
struct DevicePart {
    std::span<const Command> commands = {};
    std::span<const LabMember> lab = {};
    // The tables and settings that it keeps.
    std::span<const AnyTable *const> tables = {};
    // Adds members to the status of the host. Can be null.
    void (*describe)(const Model &model, nlohmann::json *status) = nullptr;
};

struct Device : wire::DeviceNode {
    std::vector<const DevicePart *> parts;

    const Command *find(uint32_t number) const;
};

std::span<const Device> devices();
// Returns the parts of all devices.
std::vector<const DevicePart *> deviceParts();
// Returns the tables of all devices.
std::vector<const AnyTable *> deviceTables();
// Returns the device with this path, or null if there is none.
const Device *findDevice(std::string_view path);

// The parts of the devices. device.cpp contains the table of devices.
extern const DevicePart kVswitchInventory;
extern const DevicePart kVswitchMac;
extern const DevicePart kVswitchLearning;
extern const DevicePart kVswitchOptions;
extern const DevicePart kRouteTable;
extern const DevicePart kVswitchMulticast;
extern const DevicePart kVswitchMcastFilters;
extern const DevicePart kVswitchMirror;
extern const DevicePart kVswitchTeaming;
extern const DevicePart kBusyPorts;
extern const DevicePart kAttachmentTables;
extern const DevicePart kIpfix;
extern const DevicePart kSpf;
extern const DevicePart kTraceflow;
extern const DevicePart kLivetrace;
extern const DevicePart kBfd;
extern const DevicePart kKcp;

inline Result failure(int error) {
    return {error, {}};
}

// A counted list: u32 count, u32 second word, entries. A client that has room only for the two words gets the
// number of all entries. Other clients get as many entries as fit, and their number.
struct ListHead {
    std::string bytes;
    size_t entries = 0;  // that follow

    ListHead(const Call &call, uint32_t second, size_t entrySize, size_t all) {
        constexpr size_t kSize = 8;
        const bool countOnly = call.outLength <= kSize;
        if (!countOnly) entries = std::min((call.outLength - kSize) / entrySize, all);
        const auto count = static_cast<uint32_t>(countOnly ? all : entries);
        bytes = Record(kSize).put(0, count).put(4, second).take();
    }
};

template <typename Entries, typename Fill>
Result countedList(const Call &call, uint32_t second, size_t entrySize, const Entries &entries,
                   const Fill &fill) {
    ListHead head(call, second, entrySize, entries.size());
    Result result{0, std::move(head.bytes)};
    result.output.reserve(result.output.size() + head.entries * entrySize);
    for (size_t i = 0; i < head.entries; ++i)
        result.output += fill(entries[i]).view();
    return result;
}

}  // namespace qvs::kernel
