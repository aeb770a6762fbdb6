// SPDX-License-Identifier: Apache-2.0
// What the families share: records as packed structs, texts, and statuses of libqvs.
#pragma once

#include <cstring>
#include <optional>
#include <string>
#include <string_view>

#include "config/settings/setting.h"

namespace qvs::config {

// The packed record that exactly these bytes hold.
template <typename Packed>
std::optional<Packed> recordOf(const std::optional<Bytes> &bytes) {
    Packed record;
    if (!bytes || bytes->size() != sizeof record) return std::nullopt;
    std::memcpy(&record, bytes->data(), sizeof record);
    return record;
}

template <typename Packed>
Blob blobOf(const Packed &record) {
    const auto *bytes = reinterpret_cast<const uint8_t *>(&record);
    return {bytes, bytes + sizeof record};
}

// A stored text with its NUL.
inline Blob blobOfText(std::string_view text) {
    Blob blob(text.begin(), text.end());
    blob.push_back(0);
    return blob;
}
// The text that is stored with one NUL at its end and none before.
inline std::optional<std::string> textOf(const std::optional<Bytes> &bytes) {
    if (!bytes || bytes->empty() || bytes->back() != 0) return std::nullopt;
    std::string text(bytes->begin(), bytes->end() - 1);
    if (text.find('\0') != std::string::npos) return std::nullopt;
    return text;
}

// Throws unless libqvs could read a setting. Returns false when there is nothing to read.
bool wasRead(const Setting &setting, const Target &target, HYP_ReturnStatus status);

// A property that is stored under the key of a setting and cleared by its key, for settings that libqvs
// stores with a function of their own but does not clear with one.
HYP_ReturnStatus clearByKey(const Setting &setting, const Target &target);

// The functions of a setting that is one text of two words, "true" for on and "false" for off.
std::optional<Value> decodeTrueFalse(const StoredView &stored);
Stored encodeTrueFalse(const Value &value, const StoredView &now, const Target &target);

// clear: a function of libqvs that takes the switch, or the switch and the port.
template <auto Clear>
HYP_ReturnStatus clearSwitch(const Target &target) {
    return call<Clear>(target.alias.c_str());
}
template <auto Clear>
HYP_ReturnStatus clearPort(const Target &target) {
    return call<Clear>(target.alias.c_str(), target.port.c_str());
}

}  // namespace qvs::config
