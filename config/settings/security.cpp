// SPDX-License-Identifier: Apache-2.0
// What a port may do, and what it receives beyond its own frames.
#include <qvs/keys.h>
#include <qvs/vsdvs.h>

#include <algorithm>
#include <cstring>
#include <iterator>

#include "config/settings/codec.h"
#include "config/settings/families.h"

namespace qvs::config {
namespace {

// --- security ---

constexpr const char *kRules[] = {"allow", "deny"};
constexpr Member ruleMember(const char *name, const char *summary, const char *fallback) {
    return {.name = name, .summary = summary, .type = Type::Word, .words = kRules, .fallback = fallback};
}
constexpr Member kSecurityMembers[] = {
    ruleMember("promiscuous", "promiscuous mode", "deny"),
    ruleMember("macChange", "change of the MAC address", "allow"),
    ruleMember("forged", "transmits from forged addresses", "allow"),
};
// In the order of the members.
constexpr uint32_t kDenials[] = {VSDVS_SECURITY_DENY_PROMISCUOUS, VSDVS_SECURITY_DENY_MAC_CHANGE,
                                 VSDVS_SECURITY_DENY_FORGED};

Value securityOf(uint32_t mask) {
    Value value;
    for (size_t i = 0; i < std::size(kDenials); i++)
        value.set(kSecurityMembers[i].name, kRules[(mask & kDenials[i]) != 0 ? 1 : 0]);
    return value;
}

Stored encodeSecurity(const Value &value, const StoredView &, const Target &) {
    uint32_t mask = 0;
    for (size_t i = 0; i < std::size(kDenials); i++)
        if (numberOf(kRules, value[kSecurityMembers[i].name]) != 0) mask |= kDenials[i];
    return {blobOf(mask)};
}

std::optional<Value> decodeSecurity(const StoredView &stored) {
    const auto mask = recordOf<uint32_t>(stored[0]);
    if (!mask || (*mask & ~(kDenials[0] | kDenials[1] | kDenials[2])) != 0) return std::nullopt;
    return securityOf(*mask);
}

std::optional<Value> readSecurity(const Target &target) {
    uint32_t mask = 0;
    if (!wasRead(kSecurity, target,
                 call<VSDVS_GetPortSecurity>(target.alias.c_str(), target.port.c_str(), &mask)))
        return std::nullopt;
    return securityOf(mask);
}

HYP_ReturnStatus storeSecurity(const Target &target, const Stored &records) {
    const auto mask = *recordOf<uint32_t>(viewOf(records)[0]);
    return call<VSDVS_SetPortSecurity>(target.alias.c_str(), target.port.c_str(), &mask);
}

// --- filter ---

constexpr const char *kFilterWords[] = {"unicast", "multicast", "allmulti", "broadcast",
                                        "promisc", "use-ladrf", "sink"};
constexpr uint32_t kFilterBits[] = {VSDVS_FILTER_UNICAST,   VSDVS_FILTER_MULTICAST, VSDVS_FILTER_ALLMULTI,
                                    VSDVS_FILTER_BROADCAST, VSDVS_FILTER_PROMISC,   VSDVS_FILTER_USE_LADRF,
                                    VSDVS_FILTER_SINK};
constexpr Flags kFilterFlags{kFilterWords, kFilterBits};
constexpr size_t kMostAddresses = std::size(VSDVS_ExtraEthFilter{}.addresses);
constexpr Member kFilterMembers[] = {
    {.name = "flags",
     .summary = "frames that the port receives",
     .type = Type::Word,
     .list = true,
     .words = kFilterWords,
     .fallback = "",
     .set = true},
    {.name = "addresses",
     .summary = "addresses that multicast stands for",
     .type = Type::Address,
     .list = true,
     .mostItems = kMostAddresses,
     .fallback = "",
     .quiet = true},
};

// There are addresses only with the flag, and never more than the record has room for.
Value filterOf(const VSDVS_ExtraEthFilter &filter) {
    List addresses;
    if ((filter.flags & VSDVS_FILTER_MULTICAST) != 0) {
        for (size_t i = 0; i < std::min<size_t>(filter.addressCount, kMostAddresses); i++)
            addresses.emplace_back(macText(filter.addresses[i]));
    }
    return Members{{"flags", wordsOf(kFilterFlags, filter.flags)}, {"addresses", std::move(addresses)}};
}

std::optional<Value> decodeFilter(const StoredView &stored) {
    const auto filter = recordOf<VSDVS_ExtraEthFilter>(stored[0]);
    if (!filter) return std::nullopt;
    Value value = filterOf(*filter);
    if (filter->addressCount != value["addresses"].list().size()) return std::nullopt;
    return ifTaken(kFilter, std::move(value));
}

std::string problemOfFilter(const Value &value) {
    if (value["addresses"].list().empty()) return {};
    if ((bitsOf(kFilterFlags, value["flags"]) & VSDVS_FILTER_MULTICAST) != 0) return {};
    return "addresses require the flag multicast";
}

Stored encodeFilter(const Value &value, const StoredView &now, const Target &) {
    VSDVS_ExtraEthFilter filter{};
    if (const auto old = recordOf<VSDVS_ExtraEthFilter>(now[0]))
        std::ranges::copy(old->reserved, filter.reserved);
    filter.flags = bitsOf(kFilterFlags, value["flags"]);
    for (const Value &address : value["addresses"].list())
        std::ranges::copy(*parseMac(address.text()), filter.addresses[filter.addressCount++]);
    return {blobOf(filter)};
}

std::optional<Value> readFilter(const Target &target) {
    VSDVS_ExtraEthFilter filter{};
    if (!wasRead(kFilter, target,
                 call<VSDVS_GetExtraEthFilter>(target.alias.c_str(), target.port.c_str(), &filter)))
        return std::nullopt;
    const bool counts = (filter.flags & VSDVS_FILTER_MULTICAST) != 0;
    if (counts && filter.addressCount > kMostAddresses)
        warn("the filter counts {} addresses, but has room for {}", uint32_t{filter.addressCount},
             kMostAddresses);
    return filterOf(filter);
}

HYP_ReturnStatus storeFilter(const Target &target, const Stored &records) {
    return call<VSDVS_SetExtraEthFilter>(target.alias.c_str(), target.port.c_str(), records[0]->data());
}

}  // namespace

const Setting kSecurity = {
    .name = "security",
    .noun = "port security",
    .what = "security",
    .summary = "what a port is allowed and denied",
    .scope = Scope::Port,
    .keys = {QVS_KEY_PORT_SECURITY},
    .members = kSecurityMembers,
    .example = "--promiscuous allow --forged deny",
    .details = "A port for which nothing is stored is denied promiscuous mode and allowed the rest.",
    .decode = decodeSecurity,
    .encode = encodeSecurity,
    .read = readSecurity,
    .store = storeSecurity,
    .clear = clearKey<kSecurity>,
};

const Setting kFilter = {
    .name = "filter",
    .noun = "port filter",
    .what = "receive filter",
    .summary = "the extra Ethernet receive filter of a port",
    .scope = Scope::Port,
    .keys = {QVS_KEY_PORT_FILTER},
    .members = kFilterMembers,
    .example = "--flags unicast,multicast --addresses 01:00:5e:00:00:01",
    .details = "Addresses require the flag multicast. A port with the flag sink is a sink port.",
    .problem = problemOfFilter,
    .decode = decodeFilter,
    .encode = encodeFilter,
    .read = readFilter,
    .store = storeFilter,
    .clear = clearPort<VSDVS_ClearExtraEthFilter>,
};

}  // namespace qvs::config
