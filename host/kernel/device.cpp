// The table of devices, and reading and writing of wire records.
#include "kernel/device.h"

#include <cstring>

#include "wire/protocol.h"

namespace qvs::kernel {

namespace {

template <typename T>
T numberAt(std::string_view bytes, size_t offset) {
    T value{};
    if (offset + sizeof value <= bytes.size()) std::memcpy(&value, bytes.data() + offset, sizeof value);
    return value;
}

}  // namespace

std::span<const Device> devices() {
    static const Device kDevices[] = {
        {"/dev/vswitch",
         kNaturalFrame,
         {&kVswitchInventory, &kVswitchMac, &kVswitchLearning, &kVswitchOptions, &kVswitchMulticast,
          &kVswitchMcastFilters, &kVswitchMirror, &kVswitchTeaming, &kBusyPorts}},
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

uint16_t u16At(std::string_view bytes, size_t offset) {
    return numberAt<uint16_t>(bytes, offset);
}

uint32_t u32At(std::string_view bytes, size_t offset) {
    return numberAt<uint32_t>(bytes, offset);
}

uint64_t u64At(std::string_view bytes, size_t offset) {
    return numberAt<uint64_t>(bytes, offset);
}

std::string_view textAt(std::string_view bytes, size_t offset, size_t width) {
    return offset >= bytes.size() ? std::string_view{} : untilNul(bytes.substr(offset, width));
}

Record &Record::text(size_t offset, size_t width, std::string_view value) {
    return bytes(offset, value.substr(0, width - 1));
}

Record &Record::bytes(size_t offset, std::string_view value) {
    bytes_.replace(offset, value.size(), value);
    return *this;
}

}  // namespace qvs::kernel
