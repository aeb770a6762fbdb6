// SPDX-License-Identifier: Apache-2.0
// The runtime options of the switch module.
#include <cstring>

#include "qvs/vshyp.h"
#include "vswitch/request.h"

namespace qvs {
namespace {

constexpr SwitchCommand kGetRuntimeOptions{0x1003};
constexpr SwitchCommand kSetRuntimeOptions{0x2001};

}  // namespace
}  // namespace qvs

using namespace qvs;

extern "C" HYP_ReturnStatus VSHYP_GetRuntimeOptions(const uint16_t *optionIds, uint16_t count,
                                                    void **options) {
    if (options == nullptr) return HYP_BAD_PARAM;
    *options = nullptr;
    HeapBytes block = allocateZeroed(VSHYP_RUNTIME_OPTIONS_SIZE);
    if (block == nullptr) return HYP_NO_MEMORY;
    // Without identifiers, the request has no input and selects all options.
    Area ids;
    if (optionIds != nullptr && count != 0) {
        ids = Area{optionIds, static_cast<uint32_t>(sizeof *optionIds * count)};
    }
    const HYP_ReturnStatus status =
        switchRequest(kGetRuntimeOptions, ids, Area{block.get(), VSHYP_RUNTIME_OPTIONS_SIZE});
    if (status == HYP_OK) *options = block.release();
    return status;
}

extern "C" HYP_ReturnStatus VSHYP_SetRuntimeOptions(const uint32_t *block) {
    if (block == nullptr) return HYP_BAD_PARAM;
    uint32_t length = 0;
    std::memcpy(&length, block, sizeof length);
    return switchRequest(kSetRuntimeOptions, Area{block, length}, Area{});
}
