// SPDX-License-Identifier: Apache-2.0
#include "access/stored_property.h"

#include <qvs/qvs.h>

#include "access/library.h"
#include "tool/failure.h"

namespace qvs::cli {
namespace {

HYP_ReturnStatus get(const Target &target, VSDVS_PropBuffer *buffer) {
    switch (target.place.scope) {
        case Scope::Host:
            return call<VSDVS_GetHostProp>(target.alias(), target.key.c_str(), buffer, target.switchId(),
                                           target.useAlias());
        case Scope::Port:
            return call<VSDVS_GetPortProp>(target.alias(), target.port.c_str(), target.key.c_str(), buffer,
                                           target.switchId(), target.useAlias());
        case Scope::Global:
            break;
    }
    return call<VSDVS_GetGlobProp>(target.alias(), target.key.c_str(), buffer, target.switchId(),
                                   target.useAlias());
}

}  // namespace

std::string_view scopeName(Scope scope) {
    switch (scope) {
        case Scope::Host:
            return "host";
        case Scope::Port:
            return "port";
        case Scope::Global:
            break;
    }
    return "global";
}

Target targetOf(const Arguments &arguments) {
    Target target;
    target.switchName = arguments.text("SWITCH");
    target.byId = arguments.given("--by-id");
    if (arguments.given("KEY")) target.key = arguments.text("KEY");
    if (arguments.given("--host")) target.place.scope = Scope::Host;
    if (arguments.given("--port")) {
        target.place.scope = Scope::Port;
        target.port = arguments.text("--port");
        requireFits(kPortIdLimit, target.port);
    }
    if (target.byId) {
        requireFits(kSwitchIdLimit, target.switchName);
        target.place.sw = findSwitchById(target.switchName);
    } else {
        target.place.sw = findVswitch(target.switchName);
    }
    if (target.place.scope == Scope::Port && target.place.sw != nullptr) {
        target.place.port = findPort(target.place.sw, target.switchName, target.port);
    }
    return target;
}

std::string propertyNamed(const Target &target) {
    const bool ofPort = target.place.scope == Scope::Port;
    return fmt::format("{}: {} property {}",
                       ofPort ? named(target.switchName, target.port) : named(target.switchName),
                       scopeName(target.place.scope), inQuotes(target.key));
}

std::vector<uint8_t> readValue(const Target &target) {
    VSDVS_PropBuffer buffer{0, nullptr};
    require(get(target, &buffer), propertyNamed(target));
    // A property larger than the signed length can say cannot be fetched.
    if (buffer.length < 0) throw libraryFailure(propertyNamed(target), HYP_NO_MEMORY);
    std::vector<uint8_t> value(static_cast<size_t>(buffer.length));
    if (value.empty()) return value;
    buffer.data = value.data();
    require(get(target, &buffer), propertyNamed(target));
    return value;
}

HYP_ReturnStatus storeValue(const Target &target, const std::vector<uint8_t> &value, bool runtime) {
    auto length = static_cast<uint32_t>(value.size());
    switch (target.place.scope) {
        case Scope::Host:
            if (runtime) {
                return call<VSDVS_SetRuntimeHostProp>(target.alias(), target.key.c_str(), value.data(),
                                                      length, target.switchId(), target.useAlias());
            }
            return call<VSDVS_SetHostProp>(target.alias(), target.key.c_str(), value.data(), length,
                                           target.switchId(), target.useAlias());
        case Scope::Port:
            return call<VSDVS_SetPortProp>(target.alias(), target.port.c_str(), target.key.c_str(),
                                           value.data(), length, target.switchId(), target.useAlias());
        case Scope::Global:
            break;
    }
    return call<VSDVS_SetGlobProp>(target.alias(), target.key.c_str(), value.data(), length,
                                   target.switchId(), target.useAlias());
}

HYP_ReturnStatus clearValue(const Target &target) {
    switch (target.place.scope) {
        case Scope::Host:
            return call<VSDVS_ClearHostProp>(target.alias(), target.key.c_str(), target.switchId(),
                                             target.useAlias());
        case Scope::Port:
            return call<VSDVS_ClearPortProp>(target.alias(), target.port.c_str(), target.key.c_str(),
                                             target.switchId(), target.useAlias());
        case Scope::Global:
            break;
    }
    return call<VSDVS_ClearGlobProp>(target.alias(), target.key.c_str(), target.switchId(),
                                     target.useAlias());
}

}  // namespace qvs::cli
