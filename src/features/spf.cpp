// SPDX-License-Identifier: Apache-2.0
// The service ports of the SPF data path: plumbing, list and statistics.
#include <cerrno>
#include <string_view>

#include "core/identity.h"
#include "core/request.h"
#include "core/text.h"
#include "qvs/spfhyp.h"

namespace qvs {
namespace {

enum class SpfCommand : uint32_t {
    GetPortsList = 4097,
    GetGvmPortStats = 4098,
    GetSvmPortStats = 4099,
    GetSpfPortStats = 4100,
    PlumbPort = 8193,
    UnplumbPort = 8194,
    GetConfigFailureStats = 8195,
};

struct SpfRequest {
    char switchName[128] = {};
    char portId[48] = {};
    char mac[18] = {};

    HYP_ReturnStatus nameByAlias(const char *alias) {
        PortsetName portset;
        const HYP_ReturnStatus status = portset.resolve(alias);
        if (status == HYP_OK) copyText(switchName, portset.text);
        return status;
    }
};
static_assert(sizeof(SpfRequest) == 194);

HYP_ReturnStatus spfRequest(SpfCommand command, Area in, Area out) {
    return request<AlignedFrame>("/crate/devices/char/hypdriver/tarn-spf", static_cast<uint32_t>(command), in,
                                 out);
}

// Reports a failure of a function that returns a buffer: returns null and stores the status in errno, where
// callers expect a status. Only ENOMEM is a real errno.
void *failed(HYP_ReturnStatus status) {
    errno = status != HYP_OK ? static_cast<int>(status) : ENOMEM;
    return nullptr;
}

void *fetchStats(SpfCommand command, Area in, uint32_t size) {
    HeapBytes stats = allocateZeroed(size);
    if (stats == nullptr) return failed(HYP_OK);
    const HYP_ReturnStatus status = spfRequest(command, in, Area{stats.get(), size});
    if (status == HYP_OK) return stats.release();
    stats.reset();
    return failed(status);
}

// The limit of the switch name is lower than the size of its field.
HYP_ReturnStatus sendPort(SpfCommand command, const char *switchName, const char *portId, const char *mac) {
    constexpr size_t kSwitchNameLength = 63;
    SpfRequest input;
    copyText(input.switchName, textOf(switchName, kSwitchNameLength));
    copyText(input.portId, portId);
    copyText(input.mac, mac);
    return spfRequest(command, Area{&input, sizeof input}, Area{});
}

}  // namespace
}  // namespace qvs

using namespace qvs;

extern "C" void *SPFHYP_GetPortsList(const char *alias) {
    SpfRequest input;
    if (const HYP_ReturnStatus status = input.nameByAlias(alias); status != HYP_OK) return failed(status);
    HYP_ReturnStatus status = HYP_OK;  // of the last request; HYP_OK if an allocation fails
    const auto ask = [&](ListPhase, Area out) {
        return status = spfRequest(SpfCommand::GetPortsList, Area{&input, sizeof input}, out);
    };
    HeapBytes list;
    bool counted = false;
    static_cast<void>(fetchList(
        {.entrySize = SPFHYP_PORT_ENTRY_SIZE, .presetCount = true, .fetchEmpty = true}, ask, list, counted));
    return list != nullptr ? list.release() : failed(status);
}

extern "C" void *SPFHYP_GetGVMPortStats(uint32_t port) {
    return fetchStats(SpfCommand::GetGvmPortStats, Area{&port, sizeof port}, SPFHYP_GVM_STATS_SIZE);
}

extern "C" void *SPFHYP_GetSVMPortStats(uint32_t port) {
    return fetchStats(SpfCommand::GetSvmPortStats, Area{&port, sizeof port}, SPFHYP_SVM_STATS_SIZE);
}

extern "C" void *SPFHYP_GetSPFPortStats(const char *alias) {
    SpfRequest input;
    if (const HYP_ReturnStatus status = input.nameByAlias(alias); status != HYP_OK) return failed(status);
    return fetchStats(SpfCommand::GetSpfPortStats, Area{&input, sizeof input}, SPFHYP_SPF_STATS_SIZE);
}

extern "C" HYP_ReturnStatus SPFHYP_PlumbSpfPort(const char *switchName, const char *portId,
                                                const void * /*unused*/, const char *mac) {
    if (switchName == nullptr || portId == nullptr || mac == nullptr) return HYP_BAD_PARAM;
    return sendPort(SpfCommand::PlumbPort, switchName, portId, mac);
}

extern "C" HYP_ReturnStatus SPFHYP_UnPlumbSpfPort(const char *switchName, const char *portId) {
    if (switchName == nullptr || portId == nullptr) return HYP_BAD_PARAM;
    return sendPort(SpfCommand::UnplumbPort, switchName, portId, "");
}

extern "C" void *SPFHYP_GetConfigFailureStats(void) {
    return fetchStats(SpfCommand::GetConfigFailureStats, Area{}, SPFHYP_CONFIG_FAILURE_STATS_SIZE);
}
