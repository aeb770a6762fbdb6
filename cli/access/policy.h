// SPDX-License-Identifier: Apache-2.0
// Policies: settings of a switch or a port, each one stored record. What the commands of all families share.
#pragma once

#include <qvs/mesh_public.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "access/library.h"
#include "config/library/snapshot.h"
#include "tool/command.h"
#include "tool/failure.h"
#include "tool/output.h"

namespace qvs::cli {

// Never defined: a call of it in a constant is the compiler's error.
void keyIsNotInTheTable();

// What <qvs/keys.h> says of a key: the scope and the class that it is stored with.
struct KeyRow {
    std::string_view key;
    Scope scope;
    uint32_t classes;
};
consteval KeyRow rowOf(std::string_view key) {
#define QVS_KEY_ROW(key, scope, propType) KeyRow{key, static_cast<Scope>(scope), propType},
    for (const KeyRow &row : {QVS_KEYS(QVS_KEY_ROW)})
        if (row.key == key) return row;
#undef QVS_KEY_ROW
    keyIsNotInTheTable();
    return {};
}

// A policy by its key, which stands in <qvs/keys.h> with its scope and class.
struct Policy {
    consteval Policy(const char *name, const char *storedKey, size_t recordSize = 0)
        : what(name),
          key(storedKey),
          size(recordSize),
          scope(rowOf(storedKey).scope),
          classes(rowOf(storedKey).classes) {}

    const char *what;  // in messages
    const char *key;
    size_t size;  // of the record; 0: sizes differ
    Scope scope;
    uint32_t classes;
};

// The switch or port whose policy a command is about. It exists, unless the switch was given by identifier,
// which is not looked up.
class PolicyPlace {
  public:
    PolicyPlace(const Policy &policy, const Arguments &arguments);

    const char *name() const { return switchName_.c_str(); }
    const char *port() const { return port_ ? port_->c_str() : nullptr; }
    const Place &place() const { return place_; }

    // "switch 'sw1': port 'p': teaming policy"
    std::string named() const;
    // The stored record as the snapshot has it.
    std::optional<Property> stored() const;
    // Whether exactly this is stored already.
    bool holds(Bytes record) const;
    bool holdsText(std::string_view text) const;
    // Whether what is stored has another size than the record.
    bool malformed() const;

    // Throws unless the record could be read. What is stored and is no record is named together with the way
    // to be rid of it, for the verbs of the policy may not be able to replace it.
    void requireRead(HYP_ReturnStatus status) const;

    // The members that tell whose policy it is.
    void describe(Record &record) const;
    void report(Output &out, bool changed) const;
    // The failure of a policy that is not there.
    [[noreturn]] void failAbsent() const;

  private:
    // The command that removes the record.
    std::string clearing() const;

    const Policy &policy_;
    std::string switchName_;
    bool byId_;
    std::optional<std::string> port_;
    Place place_;
};

// A value that is one word: alone in text, with its place in JSON.
template <typename Value>
void printValue(Output &out, const PolicyPlace &place, const char *key, const Value &value) {
    if (!out.json()) {
        appendText(out.buffer(), value);
        return out.write("\n");
    }
    Record record(out);
    place.describe(record);
    record.field(key, key, value);
    record.field("stored", "stored", Flag{place.stored().has_value()});
    record.finish();
}

// Runs the library's set, unless the same is stored already.
template <typename Store>
void storePolicy(Output &out, const PolicyPlace &place, bool same, Store store) {
    if (!same) require(store(), place.named());
    place.report(out, !same);
}

// Runs the library's clear, unless nothing is stored. Another process may have been quicker, which is no
// failure either.
template <typename Clear>
void clearPolicy(Output &out, const PolicyPlace &place, Clear clear) {
    HYP_ReturnStatus status = place.stored() ? clear() : HYP_NOT_FOUND;
    if (status != HYP_NOT_FOUND) require(status, place.named());
    place.report(out, status == HYP_OK);
}

// A command that removes a policy by the library's function for it.
template <const Policy &policy, auto Clear>
void clearBy(const Arguments &arguments, Output &out) {
    PolicyPlace place(policy, arguments);
    clearPolicy(out, place, [&] {
        if constexpr (policy.scope == Scope::Port) {
            return call<Clear>(place.name(), place.port());
        } else {
            return call<Clear>(place.name());
        }
    });
}

// The rows' function that tells what commands about policies touch.
std::vector<std::string> touchedPolicies(const Arguments &arguments,
                                         std::initializer_list<const Policy *> policies);
template <const Policy &...policies>
std::vector<std::string> touches(const Arguments &arguments) {
    return touchedPolicies(arguments, {&policies...});
}

// The bytes of a packed record.
template <typename Packed>
Bytes bytesOf(const Packed &record) {
    return {reinterpret_cast<const uint8_t *>(&record), sizeof record};
}

}  // namespace qvs::cli
