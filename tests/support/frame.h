// SPDX-License-Identifier: Apache-2.0
// The devices, and where the frame of a request has its lengths and addresses.
#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>

namespace qvs::test {

constexpr char kSwitchDevice[] = "/dev/vswitch";
constexpr char kRouteTable[] = "/crate/devices/char/hypdriver/rtm";
constexpr char kBfd[] = "/crate/devices/char/hypdriver/tarn_bfd";
constexpr char kKcp[] = "/crate/devices/char/hypdriver/kcp";
constexpr char kSpf[] = "/crate/devices/char/hypdriver/tarn-spf";
constexpr char kTraceflow[] = "/dev/traceflow";
constexpr char kLivetrace[] = "/dev/livetrace";
constexpr char kIpfix[] = "/dev/ipfix";

struct Frame {
    uint32_t inLength = 0, outLength = 0, reserved = 0;
    uint64_t inAddress = 0, outAddress = 0;

    Frame(std::string_view path, const void *bytes) {
        const bool packed = path == kBfd || path == kTraceflow || path == kLivetrace;
        const auto at = [&](size_t offset, auto &field) {
            std::memcpy(&field, static_cast<const char *>(bytes) + offset, sizeof field);
        };
        if (path == kKcp) {
            at(0, reserved), at(4, outLength), at(8, outAddress);
        } else {
            at(0, inLength), at(packed ? 4 : 8, inAddress);
            at(packed ? 12 : 4, outLength), at(16, outAddress);
        }
    }
};

}  // namespace qvs::test
