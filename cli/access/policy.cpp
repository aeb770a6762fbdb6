// SPDX-License-Identifier: Apache-2.0
#include "access/policy.h"

#include <algorithm>

#include "tool/failure.h"

namespace qvs::cli {
namespace {

// The port is an option of commands whose policy the switch has, too.
const std::string &portOf(const Arguments &arguments) {
    return arguments.text(arguments.given("--port") ? "--port" : "PORT");
}

}  // namespace

std::string named(const Arguments &arguments) {
    const std::string &alias = arguments.text("SWITCH");
    for (const char *port : {"PORT", "--port"})
        if (arguments.given(port)) return named(alias, arguments.text(port));
    return named(alias);
}

PolicyPlace::PolicyPlace(const Policy &policy, const Arguments &arguments)
    : policy_(policy), switchName_(arguments.text("SWITCH")), byId_(arguments.given("--by-id")) {
    place_.scope = policy.scope;
    if (byId_) {
        requireFits(kSwitchIdLimit, switchName_);
        place_.sw = findSwitchById(switchName_);
        return;
    }
    place_.sw = findVswitch(switchName_);
    if (policy.scope != Scope::Port) return;
    port_ = portOf(arguments);
    requireFits(kPortIdLimit, *port_);
    place_.port = findPort(place_.sw, switchName_, *port_);
}

std::string PolicyPlace::named() const {
    return (port_ ? qvs::named(switchName_, *port_) : qvs::named(switchName_)) + ": " + policy_.what;
}

std::optional<Property> PolicyPlace::stored() const {
    if (place_.sw == nullptr) return std::nullopt;
    return findProperty(place_, policy_.key);
}

bool PolicyPlace::holds(Bytes record) const {
    std::optional<Property> property = stored();
    return property && property->classes == policy_.classes &&
           std::equal(property->value.begin(), property->value.end(), record.begin(), record.end());
}

bool PolicyPlace::holdsText(std::string_view text) const {
    std::string stored(text);
    return holds({reinterpret_cast<const uint8_t *>(stored.c_str()), stored.size() + 1});
}

std::string PolicyPlace::clearing() const {
    std::string words = "qvs prop clear " + shown(switchName_) + " " + policy_.key;
    if (policy_.scope == Scope::Host) words += " --host";
    if (port_) words += " --port " + shown(*port_);
    return byId_ ? words + " --by-id" : words;
}

bool PolicyPlace::malformed() const {
    std::optional<Property> property = stored();
    return property && property->value.size() != policy_.size;
}

void PolicyPlace::requireRead(HYP_ReturnStatus status) const {
    if (status != HYP_FAILURE || !malformed()) return require(status, named());
    size_t length = stored()->value.size();
    std::string size = fmt::format("{} byte{}", length, length == 1 ? "" : "s");
    if (policy_.size != 0) size += fmt::format(", not {}", policy_.size);
    throw libraryFailure(named(), status,
                         fmt::format("what is stored as {} is no such record ({}); '{}' removes it",
                                     policy_.key, size, clearing()));
}

void PolicyPlace::describe(Record &record) const {
    record.field("switch", "switch", switchName_);
    if (port_) record.field("port", "port", *port_);
}

void PolicyPlace::report(Output &out, bool changed) const {
    if (!port_) return reportSwitch(out, switchName_, changed);
    reportPort(out, switchName_, *port_, changed);
}

void PolicyPlace::failAbsent() const {
    throw libraryFailure(named(), HYP_NOT_FOUND);
}

std::vector<std::string> touchedPolicies(const Arguments &arguments,
                                         std::initializer_list<const Policy *> policies) {
    // By identifier it could be any switch.
    if (arguments.given("--by-id")) return {touchedPath({})};
    const std::string &name = arguments.text("SWITCH");
    std::vector<std::string> paths;
    for (const Policy *policy : policies) {
        switch (policy->scope) {
            case Scope::Global:
                paths.push_back(touchedPath({name, "global", policy->key}));
                break;
            case Scope::Host:
                paths.push_back(touchedPath({name, "host", policy->key}));
                break;
            case Scope::Port:
                paths.push_back(touchedPath({name, "port", portOf(arguments), policy->key}));
                break;
        }
    }
    return paths;
}

}  // namespace qvs::cli
