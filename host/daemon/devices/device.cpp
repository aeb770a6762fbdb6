// SPDX-License-Identifier: Apache-2.0
// The table of devices.
#include "daemon/devices/device.h"

#include "wire/protocol.h"

namespace qvs::kernel {

std::span<const Device> devices() {
    static const Device kDevices[] = {
        {wire::kDevices[0],
         {&kVswitchInventory, &kVswitchMac, &kVswitchLearning, &kVswitchOptions, &kVswitchMulticast,
          &kVswitchMcastFilters, &kVswitchMirror, &kVswitchTeaming, &kBusyPorts, &kAttachmentTables}},
        {wire::kDevices[1], {&kIpfix}},
        {wire::kDevices[2], {&kTraceflow}},
        {wire::kDevices[3], {&kLivetrace}},
        {wire::kDevices[4], {&kRouteTable}},
        {wire::kDevices[5], {&kBfd}},
        {wire::kDevices[6], {&kKcp}},
        {wire::kDevices[7], {&kSpf}},
    };
    static_assert(std::size(kDevices) == std::size(wire::kDevices));
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

Frame readFrame(const wire::FrameLayout &layout, std::string_view bytes) {
    Frame frame;
    if (layout.inLength != wire::FrameLayout::kNone) {
        frame.inLength = u32At(bytes, layout.inLength);
        frame.inAddress = u64At(bytes, layout.inAddress);
    }
    frame.outLength = u32At(bytes, layout.outLength);
    frame.outAddress = u64At(bytes, layout.outAddress);
    return frame;
}

}  // namespace qvs::kernel
