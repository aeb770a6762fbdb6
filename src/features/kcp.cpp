// SPDX-License-Identifier: Apache-2.0
// The lists and the status of the kernel control plane.
#include "qvs/kcp.h"

#include "core/raw_request.h"
#include "core/request.h"

namespace qvs {
namespace {

// Fills one area with a request.
struct KcpFrame {
    uint32_t reserved;  // zero
    uint32_t length;
    uint64_t address;

    explicit KcpFrame(Area area) : reserved(0), length(area.length), address(area.address()) {}
};
static_assert(sizeof(KcpFrame) == 16 && offsetof(KcpFrame, address) == 8);

// This family uses the result of ioctl: 0 or more means success.
HYP_ReturnStatus kcpRequest(uint32_t command, Area area) {
    KcpFrame frame(area);
    const int result = rawRequest("/crate/devices/char/hypdriver/kcp", command, &frame);
    return result >= 0 ? HYP_OK : HYP_FAILURE;
}

constexpr uint32_t kStatusCommand = 20;

// Returns a list, or null after any failure and for an empty list. The number of the fetch command is that of
// the count command plus 1.
void *fetchKcpList(uint32_t countCommand, uint32_t entrySize, uint32_t headerSize = sizeof(uint32_t)) {
    const ListShape shape = {
        .entrySize = entrySize,
        .headerSize = headerSize,
        .countLength = sizeof(uint32_t),
        .presetCount = true,
    };
    const auto ask = [&](ListPhase phase, Area area) -> HYP_ReturnStatus {
        if (phase == ListPhase::Fetch) return kcpRequest(countCommand + 1, area);
        const HYP_ReturnStatus status = kcpRequest(countCommand, area);
        uint32_t count = 0;
        std::memcpy(&count, area.bytes, sizeof count);
        return status == HYP_OK && count == 0 ? HYP_NOT_FOUND : status;
    };
    HeapBytes list;
    bool counted = false;
    static_cast<void>(fetchList(shape, ask, list, counted));
    return list.release();
}

}  // namespace
}  // namespace qvs

using namespace qvs;

extern "C" void *KCP_GetDVSList(void) {
    return fetchKcpList(6, KCP_DVS_SIZE);
}
extern "C" void *KCP_GetVIFList(void) {
    return fetchKcpList(8, KCP_VIF_SIZE);
}
extern "C" void *KCP_GetCIFList(void) {
    return fetchKcpList(10, KCP_CIF_SIZE);
}
extern "C" void *KCP_GetHYPVIFList(void) {
    return fetchKcpList(12, KCP_VIF_SIZE);
}
extern "C" void *KCP_GetHYPNICList(void) {
    return fetchKcpList(14, KCP_HYPNIC_SIZE);
}
extern "C" void *KCP_GetUplinkList(void) {
    return fetchKcpList(16, KCP_UPLINK_SIZE);
}
extern "C" void *KCP_GetPSPropList(void) {
    return fetchKcpList(18, KCP_PSPROP_SIZE);
}

// The header of this list has a second word.
extern "C" void *KCP_GetContainerList(void) {
    return fetchKcpList(21, KCP_CONTAINER_SIZE, 2 * sizeof(uint32_t));
}

extern "C" void *KCP_GetStatus(void) {
    HeapBytes status = allocateZeroed(KCP_STATUS_SIZE);
    if (status == nullptr || kcpRequest(kStatusCommand, Area{status.get(), KCP_STATUS_SIZE}) != HYP_OK) {
        return nullptr;
    }
    return status.release();
}

extern "C" int32_t KCP_CharDevInit(void) {
    return 0;
}
extern "C" int32_t KCP_CharDevCleanup(void) {
    return 0;
}
