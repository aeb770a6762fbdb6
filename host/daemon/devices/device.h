// SPDX-License-Identifier: Apache-2.0
// The devices of the emulated kernel: the frames of their requests and their commands.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json_fwd.hpp>

#include "daemon/model/bytes.h"
#include "daemon/model/model.h"

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
};

struct Command {
    // Matches every number that no other row has.
    static constexpr uint32_t kAny = UINT32_MAX;

    uint32_t number = 0;
    uint32_t minInput = 0;
    const char *name = nullptr;
    Result (*handle)(const Call &call) = nullptr;
};

// The offsets of the fields of a frame: u32 lengths and u64 addresses. A frame without input has kNone for
// them.
struct FrameLayout {
    static constexpr size_t kNone = SIZE_MAX;
    size_t size = 0;
    size_t inLength = kNone;
    size_t inAddress = kNone;
    size_t outLength = 0;
    size_t outAddress = 0;
};

constexpr FrameLayout kNaturalFrame = {
    .size = 24, .inLength = 0, .inAddress = 8, .outLength = 4, .outAddress = 16};
constexpr FrameLayout kPackedFrame = {
    .size = 24, .inLength = 0, .inAddress = 4, .outLength = 12, .outAddress = 16};
constexpr FrameLayout kOutputFrame = {.size = 16, .outLength = 4, .outAddress = 8};

struct Frame {
    uint32_t inLength = 0;
    uint64_t inAddress = 0;
    uint32_t outLength = 0;
    uint64_t outAddress = 0;
};
Frame readFrame(const FrameLayout &layout, std::string_view bytes);

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

struct Device {
    const char *path = nullptr;
    FrameLayout frame;
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

// Returns a counted list: u32 count, u32 second word, entries. A client that has room only for the two words
// gets the number of all entries. Other clients get as many entries as fit, and their number.
template <typename Entries, typename Fill>
Result countedList(const Call &call, uint32_t second, size_t entrySize, const Entries &entries,
                   const Fill &fill) {
    constexpr size_t kHeader = 8;
    const bool countOnly = call.outLength <= kHeader;
    const size_t room = countOnly ? 0 : (call.outLength - kHeader) / entrySize;
    const size_t count = countOnly ? entries.size() : std::min(room, entries.size());
    Result result;
    result.output = Record(kHeader).put(0, static_cast<uint32_t>(count)).put(4, second).take();
    if (countOnly) return result;
    result.output.reserve(kHeader + count * entrySize);
    for (size_t i = 0; i < count; ++i)
        result.output += fill(entries[i]).view();
    return result;
}

}  // namespace qvs::kernel
