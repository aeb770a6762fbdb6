// SPDX-License-Identifier: Apache-2.0
#include "config/settings/codec.h"

#include "base/text.h"

namespace qvs::config {
namespace {

// The command that removes a stored record.
std::string clearing(const Setting &setting, const Target &target) {
    std::string words = fmt::format("qvs prop clear {} {}", shown(target.alias), setting.keys[0]);
    if (setting.scope == Scope::Host) words += " --host";
    if (setting.scope == Scope::Port) words += " --port " + shown(target.port);
    return target.byId ? words + " --by-id" : words;
}

}  // namespace

bool wasRead(const Setting &setting, const Target &target, HYP_ReturnStatus status) {
    if (status == HYP_OK) return true;
    if (status == HYP_NOT_FOUND) return false;
    const std::string subject = fmt::format("{}: {}", target.named(), setting.what);
    const StoredView stored = storedOf(setting, target.place);
    // libqvs answers HYP_FAILURE to a record of another size. The setting may be unable to replace it.
    if (status != HYP_FAILURE || !stored[0] || setting.decode(stored)) require(status, subject);
    throw libraryFailure(
        subject, status,
        fmt::format("the {} bytes that are stored as {} are not such a record; '{}' removes them",
                    stored[0]->size(), setting.keys[0], clearing(setting, target)));
}

HYP_ReturnStatus clearByKey(const Setting &setting, const Target &target) {
    const char *alias = target.alias.c_str();
    switch (setting.scope) {
        case Scope::Global:
            return call<VSDVS_ClearGlobProp>(alias, setting.keys[0], nullptr, uint8_t{1});
        case Scope::Host:
            return call<VSDVS_ClearHostProp>(alias, setting.keys[0], nullptr, uint8_t{1});
        case Scope::Port:
            break;
    }
    return call<VSDVS_ClearPortProp>(alias, target.port.c_str(), setting.keys[0], nullptr, uint8_t{1});
}

std::optional<Value> decodeTrueFalse(const StoredView &stored) {
    const std::optional<std::string> text = textOf(stored[0]);
    if (text == "true") return true;
    if (text == "false") return false;
    return std::nullopt;
}

Stored encodeTrueFalse(const Value &value, const StoredView &, const Target &) {
    return {blobOfText(value.on() ? "true" : "false")};
}

}  // namespace qvs::config
