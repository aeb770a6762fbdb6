// SPDX-License-Identifier: Apache-2.0
// BFD sessions, statistics and log level.
#include "qvs/bfd.h"

#include <cstdio>

#include "core/raw_request.h"
#include "core/request.h"

namespace qvs {
namespace {

enum class BfdCommand : uint32_t { GetSessions = 2, GetLogLevel = 3, SetLogLevel = 4, GetStats = 5 };

// This family uses the result of ioctl: 0 or more means success.
int bfdRequest(BfdCommand command, Area in, Area out) {
    PackedFrame frame(in, out);
    return rawRequest("/crate/devices/char/hypdriver/tarn_bfd", static_cast<uint32_t>(command), &frame);
}

// Returns an area that the kernel fills, or null.
void *fetchArea(BfdCommand command, Area in, uint32_t size) {
    HeapBytes area = allocateZeroed(size);
    if (area == nullptr || bfdRequest(command, in, Area{area.get(), size}) < 0) return nullptr;
    return area.release();
}

bool isLogLevel(uint32_t level) {
    constexpr uint32_t kLevels = 1u << 0 | 1u << 1 | 1u << 3 | 1u << 5;
    return level <= 5 && (kLevels >> level & 1) != 0;
}

}  // namespace
}  // namespace qvs

using namespace qvs;

extern "C" void *BFD_GetSessions(uint8_t flags) {
    if ((flags & 3) == 0) return nullptr;
    return fetchArea(BfdCommand::GetSessions, Area{&flags, sizeof flags}, BFD_SESSIONS_SIZE);
}

extern "C" uint32_t BFD_GetLogLevel(void) {
    const HeapBytes area = allocateZeroed(sizeof(uint32_t));
    if (area == nullptr) return BFD_NO_LOG_LEVEL;
    const int result = bfdRequest(BfdCommand::GetLogLevel, Area{}, Area{area.get(), sizeof(uint32_t)});
    if (result < 0) return static_cast<uint32_t>(result);
    uint32_t level = 0;
    std::memcpy(&level, area.get(), sizeof level);
    return level;
}

extern "C" int32_t BFD_SetLogLevel(uint32_t level) {
    if (!isLogLevel(level)) {
        std::puts("Not a valid log level.");
        return -1;
    }
    return bfdRequest(BfdCommand::SetLogLevel, Area{&level, sizeof level}, Area{});
}

extern "C" void *BFD_GetStats(void) {
    return fetchArea(BfdCommand::GetStats, Area{}, BFD_STATS_SIZE);
}
