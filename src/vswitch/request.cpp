// Sending requests to /dev/vswitch.
#include "vswitch/request.h"

#include <cstring>

#include "core/heap.h"
#include "qvs/vshyp.h"

namespace qvs {

HYP_ReturnStatus switchRequest(SwitchCommand command, const void *in, uint32_t inLength, void *out,
                               uint32_t outLength) {
    RequestFrame frame = {
        .inLength = inLength,
        .outLength = outLength,
        .inAddress = reinterpret_cast<uintptr_t>(in),
        .outAddress = reinterpret_cast<uintptr_t>(out),
    };
    return HYPIoctl("/dev/vswitch", static_cast<int>(command), &frame);
}

HYP_ReturnStatus fetchCountedList(SwitchCommand command, const SwitchRequest &request, uint32_t entrySize,
                                  void **list) {
    VSHYP_ListHeader header = {};
    HYP_ReturnStatus status = switchRequest(command, request, &header, sizeof header);
    if (status != HYP_OK) return status;

    *list = nullptr;
    const uint64_t size = uint64_t{header.count} * entrySize + sizeof header;
    HeapBytes buffer = allocateZeroed(size);
    if (buffer == nullptr) return HYP_NO_MEMORY;
    if (header.count == 0) {
        std::memcpy(buffer.get(), &header, sizeof header);
    } else {
        status = switchRequest(command, request, buffer.get(), static_cast<uint32_t>(size));
        if (status != HYP_OK) return status;
    }
    *list = buffer.release();
    return HYP_OK;
}

}  // namespace qvs
