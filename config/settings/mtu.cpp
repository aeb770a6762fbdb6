// SPDX-License-Identifier: Apache-2.0
// The MTU of a switch: of its portset, of its NICs, and in two properties.
#include <qvs/keys.h>
#include <qvs/vsdvs.h>

#include "config/settings/codec.h"
#include "config/settings/families.h"

namespace qvs::config {
namespace {

constexpr Member kMembers[] = {{.name = "",
                                .summary = "size of the largest frame",
                                .type = Type::Number,
                                .least = QVS_MTU_MIN,
                                .most = QVS_MTU_MAX,
                                .unit = "bytes",
                                .fallback = "1500"}};

std::optional<Value> decode(const StoredView &stored) {
    const auto mtu = recordOf<uint32_t>(stored[0]);
    if (!mtu || mtu != recordOf<uint32_t>(stored[1])) return std::nullopt;
    return ifTaken(kMtu, uint64_t{*mtu});
}

Stored encode(const Value &value, const StoredView &, const Target &) {
    const Blob mtu = blobOf(static_cast<uint32_t>(value.number()));
    return {mtu, mtu};
}

std::optional<Value> read(const Target &target) {
    int mtu = 0;
    if (!wasRead(kMtu, target, call<VSDVS_GetMTU>(target.alias.c_str(), &mtu))) return std::nullopt;
    return uint64_t{static_cast<uint32_t>(mtu)};
}

HYP_ReturnStatus store(const Target &target, const Stored &records) {
    return callWhole<VSDVS_SetMTU>(target.alias.c_str(), *recordOf<uint32_t>(viewOf(records)[0]));
}

// Nothing stored says what the portset and the NICs have, so that they get the default.
HYP_ReturnStatus clear(const Target &target) {
    const SignalsHeld held;
    const auto mtu = static_cast<uint32_t>(fallbackOf(kMtu).number());
    if (const HYP_ReturnStatus status = call<VSDVS_SetMTU>(target.alias.c_str(), mtu); status != HYP_OK)
        return status;
    const HYP_ReturnStatus status = unlessAbsent(clearByKey(kMtu, target, 0));
    return status == HYP_OK ? unlessAbsent(clearByKey(kMtu, target, 1)) : status;
}

}  // namespace

const Setting kMtu = {
    .name = "mtu",
    .noun = "mtu",
    .what = "MTU",
    .summary = "the MTU of a switch: of its NICs, its portset and its properties",
    .scope = Scope::Global,
    .keys = {QVS_KEY_MTU, QVS_KEY_ETHERSWITCH_MTU},
    .members = kMembers,
    .example = "9000",
    .details =
        "The MTU that is shown is that of the portset. When a step of a change fails, the old value is "
        "restored. The NICs are set in any case. Clearing sets the default and removes the "
        "properties.",
    .content = "mtu",
    .decode = decode,
    .encode = encode,
    .read = read,
    .store = store,
    .clear = clear,
    .storesMore = true,
};

}  // namespace qvs::config
