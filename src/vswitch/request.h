// SPDX-License-Identifier: Apache-2.0
// Requests on /dev/vswitch: the input record that nearly all of them share, and the functions that send them.
#pragma once

#include "core/request.h"
#include "core/text.h"

namespace qvs {

// The number of a request on /dev/vswitch. Each number stands beside the function that sends it.
enum class SwitchCommand : uint32_t {};

// The input record. It is initialised with zeros, and each request fills the fields that it needs. Text that
// does not fit into a field is truncated.
struct SwitchRequest {
    char switchName[128] = {};  // name in the kernel, or identifier if the request addresses a port
    union {
        char dvPortId[48] = {};  // identifier of a port of a distributed switch,
        uint32_t portId;         // or kernel port number
    };
    uint8_t area[88] = {};  // fields of the single request
    uint32_t portNumber = 0;

    // Returns a record with the name of a switch.
    static SwitchRequest named(const char *switchName) {
        SwitchRequest request;
        copyText(request.switchName, switchName);
        return request;
    }

    // Sets the fields of the single request, which its family defines.
    template <typename Fields>
    SwitchRequest &with(const Fields &fields) {
        static_assert(sizeof fields <= sizeof area);
        std::memcpy(area, &fields, sizeof fields);
        return *this;
    }

    // Names the switch that has this alias, by the name of its portset.
    [[nodiscard]] HYP_ReturnStatus nameByAlias(const char *alias);

    // Names the switch that has this alias by its identifier, as requests on a distributed port do.
    [[nodiscard]] HYP_ReturnStatus identifyByAlias(const char *alias);
};
static_assert(sizeof(SwitchRequest) == 268);
static_assert(offsetof(SwitchRequest, dvPortId) == 128 && offsetof(SwitchRequest, area) == 176);
static_assert(offsetof(SwitchRequest, portNumber) == 264);

// Issues one request with input and output areas of any kind.
[[nodiscard]] HYP_ReturnStatus switchRequest(SwitchCommand command, Area in, Area out);

// Issues one request with the common record; `out`, if any, is filled by the kernel.
[[nodiscard]] inline HYP_ReturnStatus switchRequest(SwitchCommand command, const SwitchRequest &request,
                                                    Area out = {}) {
    return switchRequest(command, Area{&request, sizeof request}, out);
}
[[nodiscard]] inline HYP_ReturnStatus switchRequest(SwitchCommand command, const SwitchRequest &request,
                                                    void *out, uint32_t outLength) {
    return switchRequest(command, request, Area{out, outLength});
}

// Fetches a list. *list is untouched when the first request fails or there is no such list, and null after
// any later failure.
[[nodiscard]] HYP_ReturnStatus fetchSwitchList(SwitchCommand command, const SwitchRequest &request,
                                               const ListShape &shape, void **list);

// The same for a list that is asked for by alias; HYP_BAD_PARAM for null arguments.
[[nodiscard]] HYP_ReturnStatus fetchListByAlias(SwitchCommand command, const char *alias,
                                                const ListShape &shape, void **list);

}  // namespace qvs
