// SPDX-License-Identifier: Apache-2.0
// Functions that the families share: records as packed structs, texts, and statuses of libqvs.
#pragma once

#include <cstring>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "config/settings/setting.h"

namespace qvs::config {

// Returns the packed record if the bytes have exactly its size.
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

// Returns the bytes of a text with its NUL.
inline Blob blobOfText(std::string_view text) {
    Blob blob(text.begin(), text.end());
    blob.push_back(0);
    return blob;
}
// Returns the text if the bytes have one NUL, at their end.
inline std::optional<std::string> textOf(const std::optional<Bytes> &bytes) {
    if (!bytes || bytes->empty() || bytes->back() != 0) return std::nullopt;
    std::string text(bytes->begin(), bytes->end() - 1);
    if (text.find('\0') != std::string::npos) return std::nullopt;
    return text;
}

// Returns the word for a number of a record. A number without a word becomes a text that no member accepts.
Value wordOf(std::span<const char *const> words, uint32_t number);
// Returns the number that a word stands for.
uint32_t numberOf(std::span<const char *const> words, const Value &word);

// Bits of a record, and their words in the same order.
struct Flags {
    std::span<const char *const> words;
    std::span<const uint32_t> bits;
};
// Returns the words for the bits that are set. Bits without a word become one number, which no member
// accepts.
List wordsOf(const Flags &flags, uint32_t bits);
uint32_t bitsOf(const Flags &flags, const Value &words);

// Returns the decoded value, or nothing when the members do not accept it.
std::optional<Value> ifTaken(const Setting &setting, Value value);

// Throws unless libqvs can read what is stored under a key of a setting. Returns false when nothing is
// stored.
bool wasRead(const Setting &setting, const Target &target, HYP_ReturnStatus status, size_t key = 0);

// Functions for a property that libqvs stores with a function of the family and that is cleared by its key.
HYP_ReturnStatus clearByKey(const Setting &setting, const Target &target, size_t key = 0);

template <const Setting &setting>
HYP_ReturnStatus clearKey(const Target &target) {
    return clearByKey(setting, target);
}
// A property that does not exist counts as cleared.
inline HYP_ReturnStatus unlessAbsent(HYP_ReturnStatus status) {
    return status == HYP_NOT_FOUND ? HYP_OK : status;
}

// The functions of a setting whose property is "true" for on and "false" for off.
std::optional<Value> decodeTrueFalse(const StoredView &stored);
Stored encodeTrueFalse(const Value &value, const StoredView &now, const Target &target);

// The functions of a setting whose property is a text with its NUL. store: a function of libqvs that takes
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
