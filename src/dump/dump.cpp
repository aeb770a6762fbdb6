// SPDX-License-Identifier: Apache-2.0
// NetDVS_Dump: the walk over the snapshot.
#include <cstdlib>
#include <cstring>

#include "core/heap.h"
#include "core/identity.h"
#include "dump/context.h"
#include "dump/printers.h"
#include "dump/registry.h"
#include "qvs/mesh_public.h"
#include "qvs/netdvs.h"

// An addition to the platform's interface: a state library without it must not keep this one from being
// loaded. NOLINTNEXTLINE(readability-redundant-declaration): it is this one that makes the reference weak
extern "C" __attribute__((weak)) uint32_t DVS_PortState(const DVSPort *port);

namespace qvs {
namespace {

constexpr uint32_t kLastVersionWithOldLayout = 99;

// The state that the walk passes from the switch to the port to the property.
struct Walk {
    NetDVSDumpCtx ctx;
    PrinterCache printers;
};

int NetDVSDumpProp(DVSData *data, void *context) {
    auto *walk = static_cast<Walk *>(context);
    const std::string_view key = DVSData_Name(data);
    const void *value = nullptr;
    const uint32_t length = DVSData_Data(data, &value);
    walk->printers.find(key)({key, RecordView(value, length), DVSData_PropType(data), &walk->ctx});
    return 0;
}

// Returns the mark after the identifier of a port. The mark of the local cache has no blank before it. If the
// state library cannot report states, all ports are live.
const char *portMark(const DVSPort *port) {
    switch (DVS_PortState != nullptr ? DVS_PortState(port) : DVS_PORT_LIVE) {
        case DVS_PORT_INVALID:
            return " (INVALID)";
        case DVS_PORT_LIVE:
            return "";
        case DVS_PORT_SHADOW:
            return " (SHADOW)";
        case DVS_PORT_ZOMBIE:
            return " (ZOMBIE)";
        case DVS_PORT_LOCAL_CACHE:
            return "(LOCAL CACHE)";
        default:
            return " (UNKNOWN)";
    }
}

int dumpPort(DVSPort *port, void *context) {
    NetDVSDumpPrintf<"\tport %s%s:\n">(&static_cast<Walk *>(context)->ctx, DVS_PortId(port), portMark(port));
    DVSState_PortDataForEach(port, NetDVSDumpProp, context);
    return 0;
}

int dumpSwitch(DVSSwitch *sw, void *context) {
    NetDVSDumpCtx *ctx = &static_cast<Walk *>(context)->ctx;
    if (ctx->switchFilter != nullptr && std::strcmp(ctx->switchFilter, DVS_SwitchId(sw)) != 0) return 0;

    NetDVSDumpPrintf<"switch %s (%s)\n">(ctx, DVS_SwitchId(sw), DVS_ClassName(sw));
    NetDVSDumpPrintf<"\tmax ports: %d\n">(ctx, static_cast<int>(DVS_GetMaxPorts(sw)));
    NetDVSDumpPrintf<"\tglobal properties:\n">(ctx);
    ctx->newLayout = DVS_Version(sw) > kLastVersionWithOldLayout ? 1 : 0;
    DVSState_GlobalPropForEach(sw, NetDVSDumpProp, context);
    NetDVSDumpPrintf<"\thost properties:\n">(ctx);
    DVSState_HostPropForEach(sw, NetDVSDumpProp, context);
    DVSState_PortForEach(sw, dumpPort, context);
    return ctx->switchFilter != nullptr ? 1 : 0;  // the walk ends after the requested switch
}

}  // namespace
}  // namespace qvs

using namespace qvs;

extern "C" HYP_ReturnStatus NetDVS_Dump(const char *alias, char **text) {
    Walk walk;
    NetDVSDumpCtx &ctx = walk.ctx;
    ctx = {
        .text = static_cast<char *>(std::malloc(kDumpInitialCapacity)),
        .length = 0,
        .capacity = kDumpInitialCapacity,
        .prepared = kDumpInitialCapacity,
        .newLayout = 0,
        .switchFilter = nullptr,
    };
    if (ctx.text == nullptr) return HYP_NO_MEMORY;
    ctx.text[0] = '\0';

    SwitchId wanted;
    HYP_ReturnStatus status = HYP_OK;
    if (alias != nullptr) {
        status = wanted.resolve(alias);
        ctx.switchFilter = wanted.text;
    }
    if (status == HYP_OK && text == nullptr) status = HYP_BAD_PARAM;
    if (status != HYP_OK) {
        std::free(ctx.text);
        return status;
    }
    DVSState_SwitchForEach(dumpSwitch, &walk);
    *text = ctx.text;
    return HYP_OK;
}
