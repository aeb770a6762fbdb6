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

namespace qvs {
namespace {

constexpr uint32_t kLastVersionWithOldLayout = 99;

int NetDVSDumpProp(DVSData *data, void *context) {
    auto *ctx = static_cast<NetDVSDumpCtx *>(context);
    const char *key = DVSData_Name(data);
    const void *value = nullptr;
    const uint32_t length = DVSData_Data(data, &value);
    const NetDVSPrinter printer = findPrinter(key);
    (printer != nullptr ? printer : printGeneric)(key, value, length, DVSData_PropType(data), ctx);
    return 0;
}

// What follows a port's identifier. The mark of the local cache runs straight into it.
const char *portMark(uint32_t state) {
    switch (state) {
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
    NetDVSDumpPrintf(static_cast<NetDVSDumpCtx *>(context), "\tport %s%s:\n", DVS_PortId(port),
                     portMark(DVS_PortState(port)));
    DVSState_PortDataForEach(port, NetDVSDumpProp, context);
    return 0;
}

int dumpSwitch(DVSSwitch *sw, void *context) {
    auto *ctx = static_cast<NetDVSDumpCtx *>(context);
    if (ctx->switchFilter != nullptr && std::strcmp(ctx->switchFilter, DVS_SwitchId(sw)) != 0) return 0;

    NetDVSDumpPrintf(ctx, "switch %s (%s)\n", DVS_SwitchId(sw), DVS_ClassName(sw));
    NetDVSDumpPrintf(ctx, "\tmax ports: %d\n", static_cast<int>(DVS_GetMaxPorts(sw)));
    NetDVSDumpPrintf(ctx, "\tglobal properties:\n");
    ctx->newLayout = DVS_Version(sw) > kLastVersionWithOldLayout ? 1 : 0;
    DVSState_GlobalPropForEach(sw, NetDVSDumpProp, ctx);
    NetDVSDumpPrintf(ctx, "\thost properties:\n");
    DVSState_HostPropForEach(sw, NetDVSDumpProp, ctx);
    DVSState_PortForEach(sw, dumpPort, ctx);
    return ctx->switchFilter != nullptr ? 1 : 0;  // the wanted switch ends the walk
}

}  // namespace
}  // namespace qvs

using namespace qvs;

extern "C" HYP_ReturnStatus NetDVS_Dump(const char *alias, char **text) {
    NetDVSDumpCtx ctx = {
        .text = static_cast<char *>(std::malloc(kDumpInitialCapacity)),
        .length = 0,
        .capacity = kDumpInitialCapacity,
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
    DVSState_SwitchForEach(dumpSwitch, &ctx);
    *text = ctx.text;
    return HYP_OK;
}
