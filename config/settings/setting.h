// SPDX-License-Identifier: Apache-2.0
// The table of settings: each policy of a switch, of this host's part of it, or of a port is described once,
// with its members, the properties in which it is stored, and the functions of libqvs that read, store and
// clear it. Verbs, JSON, documents, schema, comparison and application are made from it.
#pragma once

#include <array>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "config/library/call.h"
#include "config/library/snapshot.h"
#include "config/settings/member.h"
#include "config/settings/value.h"

namespace qvs::config {

// A setting is stored in one property or in two.
inline constexpr size_t kMostKeys = 2;
// The stored value of each key of a setting, or nothing.
using StoredView = std::array<std::optional<Bytes>, kMostKeys>;
using Stored = std::array<std::optional<Blob>, kMostKeys>;
StoredView viewOf(const Stored &stored);

// The place of a setting: the names that libqvs takes, and the handles of the snapshot. A handle is null when
// the snapshot does not contain the switch or the port.
struct Target {
    std::string alias;  // or the identifier, when byId is set
    std::string port;   // empty for settings of a switch
    Place place;
    bool byId = false;  // understood only by settings with readsById

    // "switch 'sw1'" or "switch 'sw1': port 'p'", for messages.
    std::string named() const { return port.empty() ? qvs::named(alias) : qvs::named(alias, port); }
};

struct Setting {
    const char *name;     // in documents: "vlan"
    const char *noun;     // in the tool: "port vlan"
    const char *what;     // in messages: "VLAN policy"
    const char *summary;  // in help and schema: "the VLANs of a port"
    Scope scope;
    std::array<const char *, kMostKeys> keys;  // the second may be null
    // One member with an empty name: the value is that member's. Otherwise a record of the members.
    std::span<const Member> members;
    const char *example;              // the words behind "qvs NOUN set SWITCH [PORT]"
    const char *details = nullptr;    // more for the manual
    const char *since = "1.0";        // the version of qvs that came with it, for the schema
    const char *content = "enabled";  // in the tool: what a value of one member is called

    // A setting of the same port of which the record repeats a part, so that it is stored again when that one
    // changes.
    const Setting *repeats = nullptr;

    // Brings members into the form that decode returns. Null when completed() suffices.
    Value (*canonical)(Value value) = nullptr;
    // Checks members that depend on one another ("private requires id"). Returns the problem or an empty
    // text. The value is completed, and each member is within its bounds. Null when members are independent.
    std::string (*problem)(const Value &value) = nullptr;

    // Returns the value that the stored records express, or nothing when the members cannot express them. At
    // least one of the records is there.
    std::optional<Value> (*decode)(const StoredView &stored);
    // Returns the records that libqvs stores for a checked, completed value. Bytes that no member expresses
    // are taken from what is stored now, where there is something; otherwise they are what libqvs writes. A
    // value without a record says that nothing is stored: an empty map, a discovery that is down.
    Stored (*encode)(const Value &value, const StoredView &now, const Target &target);
    // Returns what holds, asked of libqvs, whether it is stored or not; nothing when there is no such policy.
    // Throws Failure.
    std::optional<Value> (*read)(const Target &target);
    // Returns what the running switch has, whatever is stored; null when the kernel cannot be asked.
    std::optional<Value> (*running)(const Target &target) = nullptr;
    // Stores the records of encode through libqvs, and clears the keys that have none. Throws Failure when
    // there is more to say than the status does.
    HYP_ReturnStatus (*store)(const Target &target, const Stored &records);
    // Removes what is stored, or stores what libqvs has for that. Null when there is no way back to the
    // default.
    HYP_ReturnStatus (*clear)(const Target &target) = nullptr;
    bool storesMore = false;   // libqvs sets more than the records: the same is worth storing again
    bool clearStores = false;  // clear stores the fallbacks
    bool readsById = false;    // libqvs reads it by the identifier of the switch, too

    bool isScalar() const { return members.size() == 1 && *members[0].name == '\0'; }
};

// All settings in the order of documents. A setting that is stored with another one comes first.
std::span<const Setting *const> settings();
// Returns the setting of this name in a scope, or the one that a key belongs to, or null.
const Setting *settingNamed(Scope scope, std::string_view name);
const Setting *settingOfKey(Scope scope, std::string_view key);

// Returns the class bits with which libqvs stores a key: 0 for a key that it never stores, nothing for a key
// that it does not know.
std::optional<uint32_t> classOfKey(Scope scope, std::string_view key);

// Fills in the fallbacks of members that are not given, and sorts the members in the order of the setting.
Value completed(const Setting &setting, const Value &value);
// Returns the value that holds when nothing is stored, if it does not depend on the running switch: the
// fallbacks. Absent when there is no such value.
Value fallbackOf(const Setting &setting);

// Returns the problem of a completed value, with the member first ("id: 5000 is beyond 4094"), or an empty
// text.
std::string problemOf(const Setting &setting, const Value &value);

// Returns what the snapshot has stored for a setting. The views are invalid after the next snapshot.
StoredView storedOf(const Setting &setting, const Place &place);

// Returns the stored value if the members express it to the byte, and nothing otherwise.
std::optional<Value> expressed(const Setting &setting, const StoredView &stored, const Target &target);

}  // namespace qvs::config
