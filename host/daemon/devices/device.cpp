// SPDX-License-Identifier: Apache-2.0
// The table of devices.
#include "daemon/devices/device.h"

#include "wire/protocol.h"

namespace qvs::kernel {

std::span<const Device> devices() {
    static const Device kDevices[] = {
        {"/dev/vswitch",
         kNaturalFrame,
         {&kVswitchInventory, &kVswitchMac, &kVswitchLearning, &kVswitchOptions, &kVswitchMulticast,
          &kVswitchMcastFilters, &kVswitchMirror, &kVswitchTeaming, &kBusyPorts, &kAttachmentTables}},
        {"/dev/ipfix", kNaturalFrame, {&kIpfix}},
        {"/dev/traceflow", kPackedFrame, {&kTraceflow}},
        {"/dev/livetrace", kPackedFrame, {&kLivetrace}},
        {"/crate/devices/char/hypdriver/rtm", kNaturalFrame, {&kRouteTable}},
        {"/crate/devices/char/hypdriver/tarn_bfd", kPackedFrame, {&kBfd}},
        {"/crate/devices/char/hypdriver/kcp", kOutputFrame, {&kKcp}},
        {"/crate/devices/char/hypdriver/tarn-spf", kNaturalFrame, {&kSpf}},
    };
    static_assert(std::size(kDevices) == std::size(wire::kDevicePaths));
    return kDevices;
}

std::vector<const DevicePart *> deviceParts() {
    std::vector<const DevicePart *> parts;
    for (const Device &device : devices())
        parts.insert(parts.end(), device.parts.begin(), device.parts.end());
    return parts;
}

std::vector<const AnyTable *> deviceTables() {
    std::vector<const AnyTable *> tables;
    for (const DevicePart *part : deviceParts())
        tables.insert(tables.end(), part->tables.begin(), part->tables.end());
    return tables;
}

const Device *findDevice(std::string_view path) {
    for (const Device &device : devices()) {
        if (path == device.path) return &device;
    }
    return nullptr;
}

const Command *Device::find(uint32_t number) const {
    for (const uint32_t wanted : {number, Command::kAny}) {
        for (const DevicePart *part : parts) {
            for (const Command &command : part->commands) {
                if (command.number == wanted) return &command;
            }
        }
    }
    return nullptr;
}

Frame readFrame(const FrameLayout &layout, std::string_view bytes) {
    Frame frame;
    if (layout.inLength != FrameLayout::kNone) {
        frame.inLength = u32At(bytes, layout.inLength);
        frame.inAddress = u64At(bytes, layout.inAddress);
    }
    frame.outLength = u32At(bytes, layout.outLength);
    frame.outAddress = u64At(bytes, layout.outAddress);
    return frame;
}

}  // namespace qvs::kernel
