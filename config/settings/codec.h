// SPDX-License-Identifier: Apache-2.0
// What the families share: records as packed structs, texts, and statuses of libqvs.
#pragma once

#include <cstring>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

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

// The word for a number of a record; a number without a word as text, which no member takes.
Value wordOf(std::span<const char *const> words, uint32_t number);
// The number that stands for a word.
uint32_t numberOf(std::span<const char *const> words, const Value &word);

// Bits of a record and the words for them, in the same order.
struct Flags {
    std::span<const char *const> words;
    std::span<const uint32_t> bits;
};
// The words for the bits that are set; bits without a word together as a number, which no member takes.
List wordsOf(const Flags &flags, uint32_t bits);
uint32_t bitsOf(const Flags &flags, const Value &words);

// The value that a record was decoded to, or nothing when the members do not take it.
std::optional<Value> ifTaken(const Setting &setting, Value value);

// Throws unless libqvs could read what is stored under one of the keys of a setting. Returns false when there
// is nothing to read.
bool wasRead(const Setting &setting, const Target &target, HYP_ReturnStatus status, size_t key = 0);

// A property that is stored under the key of a setting and cleared by its key, for settings that libqvs
// stores with a function of their own but does not clear with one.
HYP_ReturnStatus clearByKey(const Setting &setting, const Target &target);

template <const Setting &setting>
HYP_ReturnStatus clearKey(const Target &target) {
    return clearByKey(setting, target);
}
// What is not there is cleared already.
inline HYP_ReturnStatus unlessAbsent(HYP_ReturnStatus status) {
    return status == HYP_NOT_FOUND ? HYP_OK : status;
}

// The functions of a setting that is one text of two words, "true" for on and "false" for off.
std::optional<Value> decodeTrueFalse(const StoredView &stored);
Stored encodeTrueFalse(const Value &value, const StoredView &now, const Target &target);

// The functions of a setting that is one text, stored with its NUL. store: a function of libqvs that takes
// the switch, the port and the text.
template <const Setting &setting>
std::optional<Value> decodeText(const StoredView &stored) {
    std::optional<std::string> text = textOf(stored[0]);
    if (!text) return std::nullopt;
    return ifTaken(setting, std::move(*text));
}
inline Stored encodeText(const Value &value, const StoredView &, const Target &) {
    return {blobOfText(value.text())};
}
template <auto Set>
HYP_ReturnStatus storeText(const Target &target, const Stored &records) {
    return call<Set>(target.alias.c_str(), target.port.c_str(),
                     reinterpret_cast<const char *>(records[0]->data()));
}

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
