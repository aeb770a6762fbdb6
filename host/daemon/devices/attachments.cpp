// SPDX-License-Identifier: Apache-2.0
// Stores attachments: a row for each port or NIC that has one. The value is JSON.
#include "daemon/devices/attachments.h"

#include <algorithm>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "daemon/devices/device.h"
#include "daemon/devices/record_table.h"
#include "wire/json.h"

namespace qvs::kernel {

const std::array<const char *, 6> kAttachmentKinds = {"namespace", "stream", "datagram",
                                                      "capture",   "tap",    "host"};

namespace {

using nlohmann::json;
using Kind = Attachment::Kind;

// The texts that a kind needs, besides a name.
constexpr struct {
    bool path;
    bool peer;
} kNeeds[] = {{false, false}, {true, false}, {true, true}, {false, false}, {false, false}, {true, true}};

constexpr char kOwnsClient[] = "ownsClient";

std::string attachmentText(const Attachment &attachment) {
    return json({{"kind", kAttachmentKinds[static_cast<size_t>(attachment.kind)]},
                 {"name", attachment.name},
                 {"path", attachment.path},
                 {"peer", attachment.peer},
                 {"mtu", attachment.mtu},
                 {"offloads", attachment.offloads},
                 {kOwnsClient, attachment.ownsClient}})
        .dump(-1, ' ', false, json::error_handler_t::replace);
}

std::optional<Attachment> readAttachmentText(std::string_view text) try {
    const json stored = wire::parseJson(text);
    Members members(stored, "attachment");
    Attachment attachment = readAttachment(members);
    attachment.ownsClient = members.maybeFlag(kOwnsClient).value_or(false);
    members.finish();
    return attachment;
} catch (const std::exception &) {
    return std::nullopt;
}

std::string portKey(const Port &port) {
    return "port " + kPortKey.write(port.number);
}
std::string nicKey(const Nic &nic) {
    return "nic " + nic.name;
}
std::string keyOf(const Port &port) {
    return port.nic != nullptr ? nicKey(*port.nic) : portKey(port);
}

constexpr Table<std::string, Attachment> kAttachments("attachments", kBytes<isAnything>,
                                                      {attachmentText, readAttachmentText});
constexpr Table<uint32_t, std::string> kMacs("client addresses", kPortKey, kBytes<hasSize<6>>);
constexpr Setting<uint32_t> kEnabled("network", "enabled", kNumber<uint32_t>);
constexpr const AnyTable *kTables[] = {&kAttachments, &kMacs, &kEnabled};

// Returns the NIC or the port of a row. Both are null if it no longer exists.
struct Owner {
    const Nic *nic = nullptr;
    Port *port = nullptr;
};
Owner ownerOf(const Model &model, std::string_view key) {
    const size_t blank = key.find(' ');
    if (blank == std::string_view::npos) return {};
    const std::string_view name = key.substr(blank + 1);
    if (key.starts_with("nic")) {
        const Nic *nic = model.inventory.findNic(name);
        return {nic, nic == nullptr ? nullptr : nic->port};
    }
    const auto number = kPortKey.read(name);
    return {nullptr, number ? model.inventory.findPort(*number) : nullptr};
}

}  // namespace

Attachment readAttachment(Members &members) {
    Attachment attachment;
    const auto kind = members.maybeChoice("kind", kAttachmentKinds);
    if (!kind) members.fail("kind", "is missing");
    attachment.kind = static_cast<Kind>(*kind);
    attachment.name = members.maybeText("name").value_or("");
    attachment.path = members.maybeText("path").value_or("");
    attachment.peer = members.maybeText("peer").value_or("");
    attachment.mtu = members.maybeNumber("mtu", 0, kMaxMtu).value_or(0);
    if (attachment.mtu != 0 && attachment.mtu < kMinMtu)
        members.fail("mtu", fmt::format("is not a number from {} to {}", kMinMtu, kMaxMtu));
    attachment.offloads = members.maybeFlag("offloads").value_or(true);
    const auto &needs = kNeeds[*kind];
    if (needs.path && attachment.path.empty()) members.fail("path", "is missing");
    if (needs.peer && attachment.peer.empty()) members.fail("peer", "is missing");
    if (attachment.kind == Kind::Capture && attachment.path.empty() && attachment.peer.empty())
        members.fail("path", "is missing, and so is \"peer\"");
    return attachment;
}

std::optional<Attachment> parseAttachment(std::string_view text) {
    const size_t colon = text.find(':');
    const std::string_view word = text.substr(0, colon);
    const auto kind = std::find(kAttachmentKinds.begin(), kAttachmentKinds.end(), word);
    if (kind == kAttachmentKinds.end()) return std::nullopt;
    Attachment attachment;
    attachment.kind = static_cast<Kind>(kind - kAttachmentKinds.begin());
    const std::string_view rest = colon == std::string_view::npos ? "" : text.substr(colon + 1);
    if (attachment.kind == Kind::Namespace || attachment.kind == Kind::Tap) {
        attachment.name = rest;
        return attachment;
    }
    // The NIC of the other host is behind the last slash. Other peers are behind the comma.
    const bool pair = attachment.kind != Kind::Stream;
    const size_t split = !pair                           ? std::string_view::npos
                         : attachment.kind == Kind::Host ? rest.rfind('/')
                                                         : rest.find(',');
    attachment.path = rest.substr(0, split);
    if (split != std::string_view::npos) attachment.peer = rest.substr(split + 1);
    const auto &needs = kNeeds[kind - kAttachmentKinds.begin()];
    const bool complete = (!needs.path || !attachment.path.empty()) &&
                          (!needs.peer || !attachment.peer.empty()) &&
                          !(attachment.path.empty() && attachment.peer.empty());
    return complete ? std::optional(attachment) : std::nullopt;
}

Status attachPort(Model &model, Port &port, Attachment attachment) {
    if (port.nic != nullptr) {
        attachNic(model, *port.nic, attachment);
        return Status::Ok;
    }
    if (attachment.name.empty()) attachment.name = port.client.empty() ? port.id : port.client;
    Transaction transaction(model.store);
    attachment.ownsClient = port.client.empty();
    if (attachment.ownsClient) {
        if (const Status status = model.dataPaths.setClient(port, attachment.name, true);
            status != Status::Ok)
            return status;
    }
    model.tables.setRow(kAttachments, portKey(port), attachment);
    transaction.commit();
    return Status::Ok;
}

void attachNic(Model &model, const Nic &nic, const Attachment &attachment) {
    Attachment named = attachment;
    if (named.name.empty()) named.name = nic.name;
    model.tables.setRow(kAttachments, nicKey(nic), named);
}

Status detachPort(Model &model, Port &port) {
    const auto &rows = model.tables.rows(kAttachments);
    const auto found = rows.find(keyOf(port));
    if (found == rows.end()) return Status::NotFound;
    Transaction transaction(model.store);
    if (found->second.ownsClient) {
        if (const Status status = model.dataPaths.setClient(port, "", false); status != Status::Ok)
            return status;
    }
    model.tables.clearRow(kAttachments, keyOf(port));
    transaction.commit();
    return Status::Ok;
}

void forEachAttachment(const Model &model,
                       const std::function<void(Port &port, const Attachment &attachment)> &visit) {
    for (const auto &[key, attachment] : model.tables.rows(kAttachments)) {
        if (Port *port = ownerOf(model, key).port) visit(*port, attachment);
    }
}

void dropDeadAttachments(Model &model) {
    removeRows(model, kAttachments, [&](const std::string &key, const Attachment &) {
        const Owner owner = ownerOf(model, key);
        return owner.nic == nullptr && owner.port == nullptr;
    });
}

bool hasNetwork(const Model &model) {
    return model.tables.get(kEnabled).value_or(0) != 0 || !model.tables.rows(kAttachments).empty();
}

void enableNetwork(Model &model, bool enabled) {
    model.tables.set(kEnabled, enabled ? 1 : 0);
}

std::string macOf(const Model &model, const Port &port) {
    return port.inUse() ? adapterMac(model, port) : std::string(6, '\0');
}

std::string adapterMac(const Model &model, const Port &port) {
    if (port.nic != nullptr) return std::string(bytesOf(port.nic->mac));
    const auto &given = model.tables.rows(kMacs);
    if (const auto found = given.find(port.number); found != given.end()) return found->second;
    if (hasNetwork(model)) return hostMac(model, port.number);
    std::string mac = "\x02\x01";
    for (int shift = 24; shift >= 0; shift -= 8)
        mac += static_cast<char>(port.number >> shift);
    return mac;
}

std::string hostMac(const Model &model, uint32_t number) {
    // FNV-1a of the identity and of what the last two bytes leave out.
    uint32_t hash = 0x811c9dc5;
    for (const char byte : model.identity + static_cast<char>(number >> 24) + static_cast<char>(number >> 16))
        hash = (hash ^ static_cast<uint8_t>(byte)) * 0x01000193;
    std::string mac = "\x02";
    for (const uint32_t byte : {hash >> 16, hash >> 8, hash, number >> 8, number})
        mac += static_cast<char>(byte);
    return mac;
}

void setClientMac(Model &model, const Port &port, const std::array<uint8_t, 6> &mac) {
    model.tables.setRow(kMacs, port.number, std::string(bytesOf(mac)));
}

constexpr DevicePart kAttachmentTables = {.tables = kTables};

}  // namespace qvs::kernel
