// qvs kcp: the lists of the kernel control plane, and its status.
#include <qvs/qvs.h>

#include <string>

#include "command.h"
#include "opaque.h"
#include "output.h"

namespace qvs::cli {
namespace {

struct KcpList {
    const char *what;   // in messages
    const char *label;  // of one entry
    const char *name;
    void *(*get)();
    uint32_t entrySize;
    uint32_t headerSize = sizeof(uint32_t);
};

constexpr KcpList kSwitches{"switches", "switch", "KCP_GetDVSList", KCP_GetDVSList, KCP_DVS_SIZE};
constexpr KcpList kPortsets{"portset properties", "portset", "KCP_GetPSPropList", KCP_GetPSPropList,
                            KCP_PSPROP_SIZE};
constexpr KcpList kInterfaces{"virtual interfaces", "interface", "KCP_GetVIFList", KCP_GetVIFList,
                              KCP_VIF_SIZE};
constexpr KcpList kContainerInterfaces{"container interfaces", "interface", "KCP_GetCIFList", KCP_GetCIFList,
                                       KCP_CIF_SIZE};
constexpr KcpList kHypervisorInterfaces{"hypervisor interfaces", "interface", "KCP_GetHYPVIFList",
                                        KCP_GetHYPVIFList, KCP_VIF_SIZE};
constexpr KcpList kHypervisorNics{"hypervisor NICs", "NIC", "KCP_GetHYPNICList", KCP_GetHYPNICList,
                                  KCP_HYPNIC_SIZE};
constexpr KcpList kUplinks{"uplinks", "uplink", "KCP_GetUplinkList", KCP_GetUplinkList, KCP_UPLINK_SIZE};
constexpr KcpList kContainers{"containers",         "container",        "KCP_GetContainerList",
                              KCP_GetContainerList, KCP_CONTAINER_SIZE, 8};

template <const KcpList &list>
void show(const Arguments &arguments, Output &out) {
    Answer answer = fetchAnswer(list.name, list.get);
    KernelList entries{nullptr, list.entrySize, list.headerSize, 0};
    if (answer.buffer) {
        entries = boundedList(std::move(answer.buffer), list.entrySize, list.what, list.headerSize);
    } else if (answer.error != 0) {
        // Without an error the list is empty.
        throw requestFailure(std::string("kernel control plane: ") + list.what, answer.error);
    }
    printList(arguments, out, entries, list.label);
}

void status(const Arguments &arguments, Output &out) {
    HeapBuffer status = fetchRecord("kernel control plane: status", "KCP_GetStatus", KCP_GetStatus);
    printRecord(arguments, out, "status", "status", recordIn(status, KCP_STATUS_SIZE));
}

template <const KcpList &list>
constexpr Command row(const char *verb, const char *summary, const char *example) {
    return {.noun = "kcp",
            .verb = verb,
            .access = Access::Reads,
            .json = true,
            .summary = summary,
            .arguments = {},
            .options = {kRaw},
            .details = "The entries are the kernel's own and are shown as they are.",
            .example = example,
            .run = show<list>,
            .touches = touchesNothing};
}

const Command kRows[] = {
    {.noun = "kcp",
     .verb = "status",
     .access = Access::Reads,
     .json = true,
     .summary = "show the status of the kernel control plane, 3 bytes",
     .arguments = {},
     .options = {kRaw},
     .details = nullptr,
     .example = "qvs kcp status",
     .run = status,
     .touches = touchesNothing},
    row<kSwitches>("switches", "list its switches, 128 bytes each", "qvs kcp switches"),
    row<kPortsets>("portsets", "list the properties of its portsets, 256 bytes each", "qvs kcp portsets"),
    row<kInterfaces>("interfaces", "list its virtual interfaces, 11441 bytes each",
                     "qvs kcp interfaces --raw interfaces.bin"),
    row<kContainerInterfaces>("container-interfaces", "list its container interfaces, 11689 bytes each",
                              "qvs kcp container-interfaces"),
    row<kHypervisorInterfaces>("hypervisor-interfaces",
                               "list its hypervisor virtual interfaces, 11441 bytes each",
                               "qvs kcp hypervisor-interfaces"),
    row<kHypervisorNics>("hypervisor-nics", "list its hypervisor NICs, 1108 bytes each",
                         "qvs kcp hypervisor-nics --json"),
    row<kUplinks>("uplinks", "list its uplinks, 1237 bytes each", "qvs kcp uplinks"),
    row<kContainers>("containers", "list its containers, 10 bytes each", "qvs kcp containers"),
};

}  // namespace

const std::span<const Command> kKcpCommands = kRows;

}  // namespace qvs::cli
