// Policies: settings of a switch or a port, each one stored record. What the commands of all families share.
#pragma once

#include <qvs/mesh_public.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "access/library.h"
#include "access/snapshot.h"
#include "tool/command.h"
#include "tool/failure.h"
#include "tool/output.h"

namespace qvs::cli {

// Where the record of a policy is stored, of which class, and of what size.
struct Policy {
    const char *what;  // in messages
    const char *key;
    Scope scope;
    uint32_t classes = DVS_PROP_CONFIG;
    size_t size = 0;  // 0: sizes differ
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

inline constexpr Option kById{"--by-id", nullptr, "SWITCH is an identifier, not an alias"};

}  // namespace qvs::cli
