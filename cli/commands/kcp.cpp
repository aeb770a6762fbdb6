// SPDX-License-Identifier: Apache-2.0
// qvs kcp: the lists of the kernel control plane, and its status.
#include <qvs/qvs.h>

#include <string>

#include "access/opaque.h"
#include "commands/nouns.h"
#include "tool/output.h"

namespace qvs::cli {
namespace {

struct KcpList {
    const char *what;   // in messages
    const char *label;  // of one entry
    const char *record;
    uint32_t entrySize;
    uint32_t headerSize = sizeof(uint32_t);
};

constexpr KcpList kSwitches{"switches", "switch", "kcp-switch", KCP_DVS_SIZE};
constexpr KcpList kPortsets{"portset properties", "portset", "kcp-portset", KCP_PSPROP_SIZE};
constexpr KcpList kInterfaces{"virtual interfaces", "interface", "kcp-interface", KCP_VIF_SIZE};
constexpr KcpList kContainerInterfaces{"container interfaces", "interface", "kcp-container-interface",
                                       KCP_CIF_SIZE};
constexpr KcpList kHypervisorInterfaces{"hypervisor interfaces", "interface", "kcp-interface", KCP_VIF_SIZE};
constexpr KcpList kHypervisorNics{"hypervisor NICs", "NIC", "kcp-hypervisor-nic", KCP_HYPNIC_SIZE};
constexpr KcpList kUplinks{"uplinks", "uplink", "kcp-uplink", KCP_UPLINK_SIZE};
constexpr KcpList kContainers{"containers", "container", "kcp-container", KCP_CONTAINER_SIZE, 8};

template <const KcpList &list, auto Get>
void show(const Arguments &arguments, Output &out) {
    auto ask = [] {
        Answer answer = fetchAnswer<Get>();
        // Without an error the list is empty.
        if (!answer.buffer && answer.error != 0)
            throw requestFailure(std::string("kernel control plane: ") + list.what, answer.error);
        return std::move(answer.buffer);
    };
    printList(arguments, out, boundedList(ask, list.entrySize, list.what, list.headerSize),
              {list.record, "entry", list.label});
}

template <const KcpList &list>
void chooses(const Arguments &arguments) {
    requireFields(arguments, list.record, Entries::OfList);
}

void status(const Arguments &arguments, Output &out) {
    HeapBuffer status = fetchRecord<KCP_GetStatus>("kernel control plane: status");
    printRecord(arguments, out, {"kcp-status", "status", "status"}, recordIn(status, KCP_STATUS_SIZE));
}

constexpr const char *kDetails = "The entries are the kernel's own.";

const Command kRows[] = {
    {.words = "kcp status",
     .summary = "show the status of the kernel control plane",
     .more = kRecordOptions,
     .example = "qvs kcp status",
     .run = reads(status, touchesNothing)},
    {.words = "kcp switches",
     .summary = "list the control plane's switches",
     .more = kListOptions,
     .details = kDetails,
     .example = "qvs kcp switches",
     .run = reads(show<kSwitches, KCP_GetDVSList>, touchesNothing),
     .agrees = chooses<kSwitches>},
    {.words = "kcp portsets",
     .summary = "list the properties of the control plane's portsets",
     .more = kListOptions,
     .details = kDetails,
     .example = "qvs kcp portsets",
     .run = reads(show<kPortsets, KCP_GetPSPropList>, touchesNothing),
     .agrees = chooses<kPortsets>},
    {.words = "kcp interfaces",
     .summary = "list the control plane's virtual interfaces",
     .more = kListOptions,
     .details = kDetails,
     .example = "qvs kcp interfaces --raw interfaces.bin",
     .run = reads(show<kInterfaces, KCP_GetVIFList>, touchesNothing),
     .agrees = chooses<kInterfaces>},
    {.words = "kcp container-interfaces",
     .summary = "list the control plane's container interfaces",
     .more = kListOptions,
     .details = kDetails,
     .example = "qvs kcp container-interfaces",
     .run = reads(show<kContainerInterfaces, KCP_GetCIFList>, touchesNothing),
     .agrees = chooses<kContainerInterfaces>},
    {.words = "kcp hypervisor-interfaces",
     .summary = "list the control plane's hypervisor virtual interfaces",
     .more = kListOptions,
     .details = kDetails,
     .example = "qvs kcp hypervisor-interfaces",
     .run = reads(show<kHypervisorInterfaces, KCP_GetHYPVIFList>, touchesNothing),
     .agrees = chooses<kHypervisorInterfaces>},
    {.words = "kcp hypervisor-nics",
     .summary = "list the control plane's hypervisor NICs",
     .more = kListOptions,
     .details = kDetails,
     .example = "qvs kcp hypervisor-nics --json",
     .run = reads(show<kHypervisorNics, KCP_GetHYPNICList>, touchesNothing),
     .agrees = chooses<kHypervisorNics>},
    {.words = "kcp uplinks",
     .summary = "list the control plane's uplinks",
     .more = kListOptions,
     .details = kDetails,
     .example = "qvs kcp uplinks",
     .run = reads(show<kUplinks, KCP_GetUplinkList>, touchesNothing),
     .agrees = chooses<kUplinks>},
    {.words = "kcp containers",
     .summary = "list the control plane's containers",
     .more = kListOptions,
     .details = kDetails,
     .example = "qvs kcp containers",
     .run = reads(show<kContainers, KCP_GetContainerList>, touchesNothing),
     .agrees = chooses<kContainers>},
};

}  // namespace

const std::span<const Command> kKcpCommands = kRows;

}  // namespace qvs::cli
