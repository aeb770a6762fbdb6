// SPDX-License-Identifier: Apache-2.0
// Live-trace sessions, their counters, and the data of a port.
#include "core/identity.h"
#include "core/request.h"
#include "core/text.h"
#include "qvs/livetracehyp.h"

namespace qvs {
namespace {

enum class LiveCommand : uint32_t {
    Create = 0,
    List = 1,
    GetActionCounts = 2,
    GetPortData = 3,
    GetStats = 4
};

// The header of a session record. The definition of the caller follows it.
struct SessionHead {
    char switchId[64];
    char portName[48];
};
static_assert(sizeof(SessionHead) == 112);

struct ActionRequest {
    uint8_t unused[8];
    uint8_t action;
    uint8_t phase;  // 1 for the count, 2 for the entries
};
static_assert(sizeof(ActionRequest) == 10);

HYP_ReturnStatus liveRequest(LiveCommand command, Area in, Area out) {
    return request<PackedFrame>("/dev/livetrace", static_cast<uint32_t>(command), in, out);
}

// Returns a result of a fixed size, or null.
void *fetchResult(LiveCommand command, Area in, uint32_t size) {
    HeapBytes result = allocateZeroed(size);
    if (result == nullptr || liveRequest(command, in, Area{result.get(), size}) != HYP_OK) return nullptr;
    return result.release();
}

}  // namespace
}  // namespace qvs

using namespace qvs;

extern "C" HYP_ReturnStatus LIVETRACEHYP_CreateSession(const char *alias, const char *portName,
                                                       const void *sessionData, uint32_t length) {
    if (alias == nullptr || portName == nullptr || sessionData == nullptr) return HYP_BAD_PARAM;
    SwitchId id;
    if (const HYP_ReturnStatus status = id.resolve(alias); status != HYP_OK) return status;
    const HeapBytes record = allocateZeroed(sizeof(SessionHead) + uint64_t{length});
    if (record == nullptr) return HYP_NO_MEMORY;
    auto &head = *reinterpret_cast<SessionHead *>(record.get());
    copyText(head.switchId, id.text);
    copyText(head.portName, portName);
    std::memcpy(record.get() + sizeof head, sessionData, length);
    const auto size = static_cast<uint32_t>(sizeof head + length);
    return liveRequest(LiveCommand::Create, Area{record.get(), size}, Area{});
}

extern "C" void *LIVETRACEHYP_ListSession(void) {
    return fetchResult(LiveCommand::List, Area{}, LIVETRACEHYP_SESSION_LIST_SIZE);
}

// The input contains the phase of the request. An empty list is fetched like any other list.
extern "C" void *LIVETRACEHYP_GetCountActionData(uint8_t action) {
    const auto ask = [action](ListPhase phase, Area out) {
        const ActionRequest input = {{}, action, static_cast<uint8_t>(phase == ListPhase::Count ? 1 : 2)};
        return liveRequest(LiveCommand::GetActionCounts, Area{&input, sizeof input}, out);
    };
    HeapBytes list;
    bool counted = false;
    static_cast<void>(
        fetchList({.entrySize = LIVETRACEHYP_ACTION_COUNT_SIZE, .fetchEmpty = true}, ask, list, counted));
    return list.release();
}

extern "C" void *LIVETRACEHYP_GetPortData(uint32_t portId) {
    return fetchResult(LiveCommand::GetPortData, Area{&portId, sizeof portId}, LIVETRACEHYP_PORT_DATA_SIZE);
}

extern "C" void *LIVETRACEHYP_GetStats(void) {
    return fetchResult(LiveCommand::GetStats, Area{}, LIVETRACEHYP_STATS_SIZE);
}
