// SPDX-License-Identifier: Apache-2.0
#include "config/settings/mirror_entity.h"

#include <arpa/inet.h>
#include <fmt/format.h>
#include <qvs/keys.h>

#include <algorithm>
#include <cstring>
#include <iterator>

#include "base/text.h"

namespace qvs::config {
namespace {

constexpr Form kDestinationForms[] = {Form::Name, Form::Name,    Form::Text,
                                      Form::Name, Form::Address, Form::Mac};
// In the order of the forms.
constexpr const char *kFormNames[] = {"a name of at most 47 bytes", "a text of at most 32 bytes",
                                      "an IPv4 or IPv6 address",    "a MAC address such as 02:00:00:00:00:01",
                                      "a VLAN id from 0 to 4094",   "known"};

template <typename Packed>
Packed startOf(const VSDVS_MirrorEntity &entity) {
    Packed start;
    std::memcpy(&start, entity.value, sizeof start);
    return start;
}
template <typename Packed>
void setStart(VSDVS_MirrorEntity &entity, const Packed &start) {
    std::memcpy(entity.value, &start, sizeof start);
}

}  // namespace

Form formOf(size_t group, std::optional<uint32_t> type) {
    if (!type) return Form::Name;
    if (group != 0) return type == VSDVS_MIRROR_RMIRROR_DST ? Form::Vlan : Form::Name;
    return *type < std::size(kDestinationForms) ? kDestinationForms[*type] : Form::Unknown;
}

const char *shapeOf(Form form) {
    return kFormNames[static_cast<size_t>(form)];
}

std::string textOfEntity(Form form, const VSDVS_MirrorEntity &entity) {
    switch (form) {
        case Form::Name:
            break;
        case Form::Text:
            return std::string(boundedText(entity.value, VSDVS_MIRROR_TEXT_SIZE));
        case Form::Address: {
            const auto address = startOf<VSDVS_MirrorAddress>(entity);
            char text[INET6_ADDRSTRLEN];
            return inet_ntop(address.isIPv6 != 0 ? AF_INET6 : AF_INET, address.address, text, sizeof text);
        }
        case Form::Mac:
            return macText(startOf<MacAddress>(entity));
        case Form::Vlan:
            return fmt::to_string(startOf<uint16_t>(entity));
        case Form::Unknown:
            return hex(entity.value);
    }
    return std::string(boundedText(entity.value, sizeof entity.value));
}

bool setEntity(Form form, const std::string &text, VSDVS_MirrorEntity &entity) {
    switch (form) {
        case Form::Name:
        case Form::Text:
            if (text.size() > (form == Form::Text ? VSDVS_MIRROR_TEXT_SIZE : sizeof entity.value - 1))
                return false;
            std::ranges::copy(text, entity.value);
            return true;
        case Form::Address: {
            VSDVS_MirrorAddress address{};
            address.isIPv6 = inet_pton(AF_INET, text.c_str(), address.address) == 1 ? 0 : 1;
            if (address.isIPv6 != 0 && inet_pton(AF_INET6, text.c_str(), address.address) != 1) return false;
            setStart(entity, address);
            return true;
        }
        case Form::Mac: {
            const std::optional<MacAddress> address = parseMac(text);
            if (address) setStart(entity, *address);
            return address.has_value();
        }
        case Form::Vlan: {
            const std::optional<uint32_t> id = parseNumber(text);
            if (id) setStart(entity, static_cast<uint16_t>(*id));
            return id.has_value() && *id <= QVS_VLAN_MAX;
        }
        case Form::Unknown:
            break;
    }
    return false;
}

}  // namespace qvs::config
