// SPDX-License-Identifier: Apache-2.0
// Requests on the devices of the kernel: one type for each frame layout, and one function that counts and
// fetches all lists.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

#include "core/heap.h"
#include "qvs/hyp.h"

namespace qvs {

// An input or output area of a request. An absent area is null with length 0.
struct Area {
    const void *bytes = nullptr;
    uint32_t length = 0;

    uint64_t address() const { return reinterpret_cast<uintptr_t>(bytes); }
};

// The frame of the switch, route-table, IPFIX and SPF devices.
struct AlignedFrame {
    uint32_t inLength;
    uint32_t outLength;
    uint64_t inAddress;
    uint64_t outAddress;

    AlignedFrame(Area in, Area out)
        : inLength(in.length), outLength(out.length), inAddress(in.address()), outAddress(out.address()) {}
};
static_assert(sizeof(AlignedFrame) == 24);
static_assert(offsetof(AlignedFrame, inAddress) == 8 && offsetof(AlignedFrame, outAddress) == 16);

// The frame of the traceflow, live-trace and BFD devices. Each length precedes its address.
struct QVS_PACKED PackedFrame {
    uint32_t inLength;
    uint64_t inAddress;
    uint32_t outLength;
    uint64_t outAddress;

    PackedFrame(Area in, Area out)
        : inLength(in.length), inAddress(in.address()), outLength(out.length), outAddress(out.address()) {}
};
static_assert(sizeof(PackedFrame) == 24);
static_assert(offsetof(PackedFrame, inAddress) == 4 && offsetof(PackedFrame, outAddress) == 16);

// Sends one request with HYPIoctl.
template <typename Frame>
[[nodiscard]] HYP_ReturnStatus request(const char *device, uint32_t command, Area in, Area out) {
    Frame frame(in, out);
    return HYPIoctl(device, static_cast<int>(command), &frame);
}

// Fetches a record of a fixed size into memory of the caller. `ask` sends the request with the area to fill
// and returns its status. The memory is not cleared first and is unchanged if the request fails.
template <uint32_t Size, typename Ask>
[[nodiscard]] HYP_ReturnStatus fetchInto(void *record, Ask ask) {
    uint8_t before[Size];
    std::memcpy(before, record, Size);
    const HYP_ReturnStatus status = ask(Area{record, Size});
    if (status != HYP_OK) std::memcpy(record, before, Size);
    return status;
}

// Like fetchInto, but clears the memory first. If the request fails, the memory is all zeros, even if the
// kernel wrote to it.
template <uint32_t Size, typename Ask>
[[nodiscard]] HYP_ReturnStatus fetchIntoCleared(void *record, Ask ask) {
    std::memset(record, 0, Size);
    return fetchInto<Size>(record, ask);
}

// The layout of a list: a header that contains the count, followed by entries of one size.
struct ListShape {
    uint32_t entrySize;  // 0: there is no such list; checked after the count request
    uint32_t headerSize = 8;
    uint32_t countOffset = 0;
    uint32_t countLength = headerSize;  // bytes that the count request fills
    bool presetCount = false;           // the count is stored in the buffer before the fetch
    bool fetchEmpty = false;            // an empty list is fetched, too

    static constexpr uint32_t kMaxHeader = 28;
};

enum class ListPhase : uint8_t { Count, Fetch };

// Requests the count, then fetches the list. `ask` sends the request for a phase with the output area and
// returns its status. `counted` becomes true if the first request succeeded and the list exists. The list is
// null after every failure. Its count is the number that the kernel wrote.
template <typename Ask>
[[nodiscard]] HYP_ReturnStatus fetchList(const ListShape &shape, Ask ask, HeapBytes &list, bool &counted) {
    uint8_t header[ListShape::kMaxHeader] = {};
    HYP_ReturnStatus status = ask(ListPhase::Count, Area{header, shape.countLength});
    if (status != HYP_OK) return status;
    if (shape.entrySize == 0) return HYP_BAD_PARAM;
    counted = true;

    uint32_t count = 0;
    std::memcpy(&count, header + shape.countOffset, sizeof count);
    const uint64_t size = uint64_t{count} * shape.entrySize + shape.headerSize;
    HeapBytes buffer = allocateZeroed(size);
    if (buffer == nullptr) return HYP_NO_MEMORY;
    if (shape.presetCount) std::memcpy(buffer.get() + shape.countOffset, &count, sizeof count);
    if (count == 0 && !shape.fetchEmpty) {
        std::memcpy(buffer.get(), header, shape.headerSize);
    } else {
        status = ask(ListPhase::Fetch, Area{buffer.get(), static_cast<uint32_t>(size)});
        if (status != HYP_OK) return status;
    }
    list = std::move(buffer);
    return HYP_OK;
}

}  // namespace qvs
