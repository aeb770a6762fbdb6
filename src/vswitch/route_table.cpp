// SPDX-License-Identifier: Apache-2.0
// Operations on the route-table module, which checks the blocks of the caller.
#include <cstring>

#include "qvs/vshyp.h"
#include "vswitch/request.h"

namespace qvs {
namespace {

constexpr const char *kDevice = "/crate/devices/char/hypdriver/rtm";
constexpr uint32_t kPortCommand = 10;

struct QVS_PACKED PortOperation {
    uint32_t first;
    uint32_t second;
    uint8_t flag;
};
static_assert(sizeof(PortOperation) == 9);

// Sends a block whose length is computed from the count at its start.
HYP_ReturnStatus sendBlock(const uint32_t *block, uint32_t command, uint32_t perEntry, uint32_t fixed) {
    if (block == nullptr) return HYP_BAD_PARAM;
    uint32_t count = 0;
    std::memcpy(&count, block, sizeof count);
    const uint64_t length = uint64_t{count} * perEntry + fixed;
    if (length > UINT32_MAX) return HYP_BAD_PARAM;
    return request<AlignedFrame>(kDevice, command, Area{block, static_cast<uint32_t>(length)}, Area{});
}

}  // namespace
}  // namespace qvs

using namespace qvs;

extern "C" HYP_ReturnStatus VSHYP_RTMOp(const uint32_t *block, uint32_t command) {
    return sendBlock(block, command, 136, 9);
}

extern "C" HYP_ReturnStatus VSHYP_RTMModOp(const uint32_t *block, uint32_t command) {
    return sendBlock(block, command, 5, 132);
}

extern "C" HYP_ReturnStatus VSHYP_RTMPortOp(uint32_t first, uint32_t second, uint8_t flag) {
    const PortOperation operation = {first, second, flag};
    return request<AlignedFrame>(kDevice, kPortCommand, Area{&operation, sizeof operation}, Area{});
}
