// SPDX-License-Identifier: Apache-2.0
// Reads the parts of LLDP messages: u16 kind (7 bits) and length (9 bits), value.
#include "daemon/network/neighbours.h"

#include <algorithm>

#include <nlohmann/json.hpp>

#include "daemon/model/bytes.h"
#include "daemon/model/text.h"

namespace qvs::kernel {

namespace {

using nlohmann::json;

// The text of a value, or its hexadecimal digits if it is none.
std::string printable(std::string_view value) {
    const bool isText = std::all_of(value.begin(), value.end(), [](char c) { return c >= ' ' && c <= '~'; });
    return isText ? std::string(value) : hexDigits(value);
}

// An identifier begins with its kind, which says where a MAC address follows.
std::string identifier(std::string_view value, char macKind) {
    constexpr size_t kMac = 7;
    if (value.empty()) return "";
    if (value[0] != macKind || value.size() != kMac) return printable(value.substr(1));
    std::string text;
    for (size_t i = 1; i < kMac; ++i)
        text += fmt::format("{}{:02x}", i == 1 ? "" : ":", u8At(value, i));
    return text;
}

json describeParts(std::string_view parts) {
    constexpr size_t kHead = 2;
    constexpr const char *kNames[] = {"",           "chassis",          "portId", "ttl", "portDescription",
                                      "systemName", "systemDescription"};
    json neighbour = json::object();
    while (parts.size() >= kHead) {
        const size_t length = (u8At(parts, 0) & 1u) << 8 | u8At(parts, 1);
        const unsigned kind = u8At(parts, 0) >> 1;
        const std::string_view value = parts.substr(kHead, length);
        if (kind == 0 || value.size() != length) break;
        if (kind == 1)
            neighbour[kNames[kind]] = identifier(value, 4);
        else if (kind == 2)
            neighbour[kNames[kind]] = identifier(value, 3);
        else if (kind == 3)
            neighbour[kNames[kind]] = u8At(value, 0) << 8 | u8At(value, 1);
        else if (kind < std::size(kNames))
            neighbour[kNames[kind]] = printable(value);
        parts.remove_prefix(kHead + length);
    }
    return neighbour;
}

}  // namespace

json describeNeighbours(const Model &model, const std::map<uint32_t, std::string> &neighbours) {
    json list = json::array();
    for (const auto &[number, parts] : neighbours) {
        const Port *port = model.inventory.findPort(number);
        if (port == nullptr) continue;
        json &entry = list.emplace_back(describeParts(parts));
        entry["switch"] = port->owner->alias();
        entry["port"] = port->id;
        entry["nic"] = port->clientName();
    }
    return list;
}

}  // namespace qvs::kernel
