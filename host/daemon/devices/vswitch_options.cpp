// SPDX-License-Identifier: Apache-2.0
// /dev/vswitch: the runtime options of the switch module.
//
// A block is a u32 length, which includes itself, followed by the options: u16 identifier, u16 length of the
// value, value. A request for options contains their identifiers (u16 each), or nothing for all of them. The
// answer is a block of 4096 bytes (runtime-options in layouts/emulated.json), so all options together must
// fit into it.
#include <cerrno>
#include <optional>

#include "daemon/devices/device_request.h"

namespace qvs::kernel {

namespace {

constexpr size_t kBlock = 4096;
constexpr size_t kLength = sizeof(uint32_t);
constexpr size_t kHead = 2 * sizeof(uint16_t);

using Options = std::map<uint16_t, std::string>;

std::string packed(const Options &options) {
    std::string bytes;
    for (const auto &[id, value] : options) {
        bytes += Record(kHead).put(0, id).put(2, static_cast<uint16_t>(value.size())).view();
        bytes += value;
    }
    return bytes;
}

// Returns nothing if an option ends beyond the bytes. The last of several options with one identifier is
// used.
std::optional<Options> unpacked(std::string_view bytes) {
    Options options;
    while (!bytes.empty()) {
        const size_t length = u16At(bytes, 2);
        if (bytes.size() < kHead + length) return std::nullopt;
        options[u16At(bytes, 0)] = bytes.substr(kHead, length);
        bytes.remove_prefix(kHead + length);
    }
    return options;
}

std::optional<Options> readOptions(std::string_view stored) {
    return kLength + stored.size() <= kBlock ? unpacked(stored) : std::nullopt;
}

// All options are one value.
constexpr Setting<Options> kOptions("options", "packed", {packed, readOptions});
constexpr const AnyTable *kTables[] = {&kOptions};

Options storedOptions(const Model &model) {
    return model.tables.get(kOptions).value_or(Options{});
}

// Changes options. An option without a value is removed. Returns false if the options do not fit into a
// block.
bool changeOptions(Model &model, const Options &changes) {
    Options options = storedOptions(model);
    for (const auto &[id, value] : changes) {
        if (value.empty()) {
            options.erase(id);
        } else {
            options[id] = value;
        }
    }
    if (kLength + packed(options).size() > kBlock) return false;
    model.tables.set(kOptions, options);
    return true;
}

Result getRuntimeOptions(const Call &call) {
    if (call.input.size() % sizeof(uint16_t) != 0) return failure(EINVAL);
    const Options options = storedOptions(call.model);
    Options wanted;
    for (size_t at = 0; at < call.input.size(); at += sizeof(uint16_t)) {
        const auto found = options.find(u16At(call.input, at));
        if (found == options.end()) return failure(ENOENT);
        wanted.insert(*found);
    }
    const std::string bytes = packed(call.input.empty() ? options : wanted);
    Record block(kBlock);
    return {0, block.put(0, static_cast<uint32_t>(kLength + bytes.size())).bytes(kLength, bytes).take()};
}

Result setRuntimeOptions(const Call &call) {
    if (u32At(call.input, 0) != call.input.size()) return failure(EINVAL);
    const auto changes = unpacked(call.input.substr(kLength));
    if (!changes) return failure(EINVAL);
    return failure(changeOptions(call.model, *changes) ? 0 : ENOSPC);
}

constexpr Command kCommands[] = {
    {0x1003, 0, "GetRuntimeOptions", getRuntimeOptions},
    {0x2001, kLength, "SetRuntimeOptions", setRuntimeOptions},
};

void applyOptions(Members &lab, Model &model) {
    Options options;
    lab.each("options", [&](Members &members) {
        const auto id = members.maybeNumber("id", 0, UINT16_MAX);
        const auto bytes = members.maybeBytes("hex");
        if (!id) members.fail("id", "is missing");
        if (!bytes) members.fail("hex", "is missing");
        options[static_cast<uint16_t>(*id)] = *bytes;
    });
    if (!changeOptions(model, options)) throw JsonError("lab: \"options\" are more than 4096 bytes");
}

constexpr LabMember kLab[] = {{"options", applyOptions}};

}  // namespace

constexpr DevicePart kVswitchOptions = {.commands = kCommands, .lab = kLab, .tables = kTables};

}  // namespace qvs::kernel
