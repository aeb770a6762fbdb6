// SPDX-License-Identifier: Apache-2.0
// Traceflow requests, the traceflow setting of a host, in-band telemetry and port statistics.
#include <cstdio>

#include "core/identity.h"
#include "core/mesh_value.h"
#include "core/request.h"
#include "qvs/keys.h"
#include "qvs/tfhyp.h"

namespace qvs {
namespace {

enum class TraceCommand : uint32_t { Create = 0, Clear = 1, GetPortStats = 2, SetInt = 3, GetInt = 4 };

constexpr const char *kEnabledKey = QVS_KEY_TRACEFLOW_ENABLED;

struct QVS_PACKED TraceRequest {
    char switchId[64] = {};
    char portName[48] = {};
    uint8_t srcMac[6] = {};
    uint8_t dstMac[6] = {};
    uint32_t word1 = 0;
    uint32_t word2 = 0;
    uint16_t shortWord = 0;
    uint64_t value1 = 0;
    uint64_t value2 = 0;
};
static_assert(sizeof(TraceRequest) == 150);
static_assert(offsetof(TraceRequest, srcMac) == 112 && offsetof(TraceRequest, value2) == 142);

struct ClearRequest {
    char switchId[64] = {};
    char unused[48] = {};
};
static_assert(sizeof(ClearRequest) == 112);

HYP_ReturnStatus traceRequest(TraceCommand command, Area in, Area out) {
    return request<PackedFrame>("/dev/traceflow", static_cast<uint32_t>(command), in, out);
}

// Parses six groups of one or two hexadecimal digits and ignores what follows them.
bool parseMac(const char *text, uint8_t (&mac)[6]) {
    return sscanf(text, "%02hhx:%02hhx:%02hhx:%02hhx:%02hhx:%02hhx", &mac[0], &mac[1], &mac[2], &mac[3],
                  &mac[4], &mac[5]) == 6;
}

HYP_ReturnStatus resolve(const char *alias, SwitchId &id) {
    return alias != nullptr ? id.resolve(alias) : HYP_BAD_PARAM;
}

}  // namespace
}  // namespace qvs

using namespace qvs;

extern "C" HYP_ReturnStatus TFHYP_CreateRequest(const char *alias, const char *portName, const char *srcMac,
                                                const char *dstMac, uint32_t traceWord1, uint32_t traceWord2,
                                                uint16_t traceShort, uint64_t traceValue1,
                                                uint64_t traceValue2) {
    if (alias == nullptr || portName == nullptr || srcMac == nullptr || dstMac == nullptr)
        return HYP_BAD_PARAM;
    SwitchId id;
    if (const HYP_ReturnStatus status = id.resolve(alias); status != HYP_OK) return status;
    TraceRequest trace;
    copyText(trace.switchId, id.text);
    copyText(trace.portName, portName);
    trace.word1 = traceWord1;
    trace.word2 = traceWord2;
    trace.shortWord = traceShort;
    trace.value1 = traceValue1;
    trace.value2 = traceValue2;
    if (!parseMac(srcMac, trace.srcMac) || !parseMac(dstMac, trace.dstMac)) return HYP_BAD_PARAM;
    return traceRequest(TraceCommand::Create, Area{&trace, sizeof trace}, Area{});
}

extern "C" HYP_ReturnStatus TFHYP_SetTraceflowConfig(const char *alias, uint8_t enable) {
    SwitchId id;
    if (const HYP_ReturnStatus status = resolve(alias, id); status != HYP_OK) return status;
    if (enable != 0) return DVSHYP_HostPropSet(id.text, kEnabledKey, "true", sizeof "true", DVS_PROP_CONFIG);
    const HYP_ReturnStatus status = DVSHYP_HostPropClear(id.text, kEnabledKey);
    return status == HYP_NOT_FOUND ? HYP_OK : status;
}

extern "C" HYP_ReturnStatus TFHYP_ClearTraceflowConfig(const char *alias) {
    SwitchId id;
    if (const HYP_ReturnStatus status = resolve(alias, id); status != HYP_OK) return status;
    MeshValue value;
    const HYP_ReturnStatus stored = value.fetch([&](void **data, uint32_t *length) {
        return DVSHYP_HostPropGet(id.text, kEnabledKey, data, length);
    });
    if (stored == HYP_OK) {
        value.reset();
        return DVSHYP_HostPropClear(id.text, kEnabledKey);
    }
    // The kernel can have a traceflow configuration even if the property is not stored.
    ClearRequest clear;
    copyText(clear.switchId, id.text);
    return traceRequest(TraceCommand::Clear, Area{&clear, sizeof clear}, Area{});
}

extern "C" void *TFHYP_GetPortStats(uint32_t portId) {
    HeapBytes stats = allocateZeroed(TFHYP_PORT_STATS_SIZE);
    if (stats == nullptr) {
        std::fputs("Failed to allocate traceflow port stats\n", stderr);
        return nullptr;
    }
    const HYP_ReturnStatus status = traceRequest(TraceCommand::GetPortStats, Area{&portId, sizeof portId},
                                                 Area{stats.get(), TFHYP_PORT_STATS_SIZE});
    if (status == HYP_OK) return stats.release();
    std::fprintf(stderr, "Failed to get port stats: %s\n", ReturnStatusToString(status));
    return nullptr;
}

extern "C" HYP_ReturnStatus TFHYP_SetINTConfig(const void *config) {
    if (config == nullptr) return HYP_BAD_PARAM;
    const HYP_ReturnStatus status =
        traceRequest(TraceCommand::SetInt, Area{config, TFHYP_INT_CONFIG_SIZE}, Area{});
    if (status != HYP_OK) {
        std::fprintf(stderr, "Failed to set INT config: %s\n", ReturnStatusToString(status));
    }
    return status;
}

extern "C" void *TFHYP_GetINTConfig(void) {
    HeapBytes config = allocateZeroed(TFHYP_INT_CONFIG_SIZE);
    if (config == nullptr) return nullptr;
    const HYP_ReturnStatus status =
        traceRequest(TraceCommand::GetInt, Area{}, Area{config.get(), TFHYP_INT_CONFIG_SIZE});
    if (status == HYP_OK) return config.release();
    std::fprintf(stderr, "Failed to get INT config: %s\n", ReturnStatusToString(status));
    return nullptr;
}
