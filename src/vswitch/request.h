// Requests on /dev/vswitch: the frame that every request travels in, the input record that nearly all share,
// and the two ways of asking: once, or for a count first and then for a list.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/text.h"
#include "qvs/hyp.h"

namespace qvs {

// The ioctl argument; addresses are user addresses, 0 where there is no area.
struct RequestFrame {
    uint32_t inLength;
    uint32_t outLength;
    uint64_t inAddress;
    uint64_t outAddress;
};
static_assert(sizeof(RequestFrame) == 24);
static_assert(offsetof(RequestFrame, inAddress) == 8 && offsetof(RequestFrame, outAddress) == 16);

// The input record. It starts as zeros; a request fills what it names with copyText or plain numbers.
struct SwitchRequest {
    char switchName[128] = {};
    union {
        char portName[48] = {};  // a distributed port's identifier,
        uint32_t portId;         // or the kernel's port number
    };
    char uplinkName[32] = {};
    uint32_t linkState = 0;
    uint8_t unused[52] = {};
    uint32_t portNumber = 0;

    // A record that names a switch, cut to 127 characters.
    static SwitchRequest named(const char *switchName) {
        SwitchRequest request;
        copyText(request.switchName, switchName);
        return request;
    }
};
static_assert(sizeof(SwitchRequest) == 268);
static_assert(offsetof(SwitchRequest, portName) == 128 && offsetof(SwitchRequest, uplinkName) == 176);
static_assert(offsetof(SwitchRequest, linkState) == 208 && offsetof(SwitchRequest, portNumber) == 264);

enum class SwitchCommand : int {
    GetMcastFilterMode = 0x1007,
    GetUplinks = 0x100b,
    GetUplinkLinkState = 0x100c,
    GetUplinkLacpLinkState = 0x100d,
    GetLagTable = 0x100e,
    GetSwitchInfo = 0x1010,
    GetSwitchPortInfo = 0x1013,
    GetPortInfo = 0x1014,
    GetTeamUplinkHint = 0x1022,
    GetUplinkDvPortId = 0x1023,
    GetSwitches = 0x1026,
    AliasToSwitchId = 0x1027,
    SetUplinkAdminLinkState = 0x2002,
    RefreshDevNumaInfo = 0x2006,
};

// Issues one request; either area may be null with length 0.
HYP_ReturnStatus switchRequest(SwitchCommand command, const void *in, uint32_t inLength, void *out,
                               uint32_t outLength);
inline HYP_ReturnStatus switchRequest(SwitchCommand command, const SwitchRequest &request, void *out,
                                      uint32_t outLength) {
    return switchRequest(command, &request, sizeof request, out, outLength);
}

// Count, then fetch: asks for the count, allocates *list for it and asks again, once. *list is untouched when
// the first request fails, null after any later failure; without entries it is the header alone. The count in
// the fetched buffer is whatever the kernel wrote there.
HYP_ReturnStatus fetchCountedList(SwitchCommand command, const SwitchRequest &request, uint32_t entrySize,
                                  void **list);

}  // namespace qvs
