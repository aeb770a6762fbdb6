// SPDX-License-Identifier: Apache-2.0
#include "config/settings/codec.h"

#include <algorithm>

#include "base/text.h"

namespace qvs::config {
namespace {

// The command that removes a stored record.
std::string clearing(const Setting &setting, const Target &target, size_t key) {
    std::string words = fmt::format("qvs prop clear {} {}", shown(target.alias), setting.keys[key]);
    if (setting.scope == Scope::Host) words += " --host";
    if (setting.scope == Scope::Port) words += " --port " + shown(target.port);
    return target.byId ? words + " --by-id" : words;
}

}  // namespace

Value wordOf(std::span<const char *const> words, uint32_t number) {
    return number < words.size() ? Value(words[number]) : Value(fmt::to_string(number));
}

uint32_t numberOf(std::span<const char *const> words, const Value &word) {
    return static_cast<uint32_t>(std::ranges::find(words, word.text()) - words.begin());
}

List wordsOf(const Flags &flags, uint32_t bits) {
    List words;
    for (size_t i = 0; i < flags.words.size(); i++) {
        if ((bits & flags.bits[i]) != 0) words.emplace_back(flags.words[i]);
        bits &= ~flags.bits[i];
    }
    if (bits != 0) words.emplace_back(fmt::format("0x{:x}", bits));
    return words;
}

uint32_t bitsOf(const Flags &flags, const Value &words) {
    uint32_t bits = 0;
    for (const Value &word : words.list())
        bits |= flags.bits[numberOf(flags.words, word)];
    return bits;
}

std::optional<Value> ifTaken(const Setting &setting, Value value) {
    if (!problemOf(setting, value).empty()) return std::nullopt;
    return value;
}

bool wasRead(const Setting &setting, const Target &target, HYP_ReturnStatus status, size_t key) {
    if (status == HYP_OK) return true;
    if (status == HYP_NOT_FOUND) return false;
    const std::string subject = fmt::format("{}: {}", target.named(), setting.what);
    const StoredView stored = storedOf(setting, target.place);
    // libqvs answers HYP_FAILURE to a record of another size. The setting may be unable to replace it.
    if (status != HYP_FAILURE || !stored[key] || setting.decode(stored)) require(status, subject);
    throw libraryFailure(
        subject, status,
        fmt::format("the {} bytes that are stored as {} are not such a record; '{}' removes them",
                    stored[key]->size(), setting.keys[key], clearing(setting, target, key)));
}

HYP_ReturnStatus clearByKey(const Setting &setting, const Target &target, size_t key) {
    const char *alias = target.alias.c_str();
    switch (setting.scope) {
        case Scope::Global:
            return call<VSDVS_ClearGlobProp>(alias, setting.keys[key], nullptr, uint8_t{1});
        case Scope::Host:
            return call<VSDVS_ClearHostProp>(alias, setting.keys[key], nullptr, uint8_t{1});
        case Scope::Port:
            break;
    }
    return call<VSDVS_ClearPortProp>(alias, target.port.c_str(), setting.keys[key], nullptr, uint8_t{1});
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
