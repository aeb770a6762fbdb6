// SPDX-License-Identifier: Apache-2.0
// The members of settings: their types, bounds and words, and how their values are read and written as text.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "config/settings/value.h"

namespace qvs::config {

enum class Type {
    Boolean,  // on or off; bool
    Number,   // least to most; uint64_t
    Word,     // one of words; text
    Text,     // a name of at most `most` bytes without NUL; text, exact bytes
    Vlans,    // a VLAN id or a range of them, "100" or "1-100"; text in that form
    Address,  // a MAC address, "02:00:00:00:00:01"; text in that form
    Bytes,    // `least` to `most` bytes, base64 in documents and hexadecimal in commands; Blob
    Record,   // `members`; Members
};

struct Member {
    const char *name;     // in documents; the option of "limitPolicy" is "--limit-policy"
    const char *summary;  // a noun phrase, for help and schema
    Type type;
    bool list = false;      // a list of these, of at most mostItems
    bool required = false;  // a record without it is refused
    uint64_t least = 0;
    uint64_t most = UINT32_MAX;
    std::span<const char *const> words = {};
    std::span<const Member> members = {};
    uint64_t mostItems = UINT32_MAX;
    const char *unit = nullptr;  // of a number, "seconds"
    // The value, as text, when the member is not given. Null: the member is then absent. "" is the empty
    // list.
    const char *fallback = nullptr;
    bool quiet = false;  // documents leave it out when it equals its fallback
    bool set = false;    // of a list of words: completed() puts them in the order of `words`, each once
    // Returns the canonical form of a text, or nothing when the text is invalid; and the name of such texts.
    // Null: every text is accepted as it is.
    std::optional<std::string> (*form)(std::string_view text) = nullptr;
    const char *shape = nullptr;
};

// The result of reading a text: a value, or a problem ("5000 is beyond 4094").
struct Parsed {
    Value value;
    std::string problem;

    bool ok() const { return problem.empty(); }
};

// Reads one scalar of a member, or one item of a list, from a document or a command line. Booleans are on,
// off, true or false. Bytes are base64.
Parsed parseScalar(const Member &member, std::string_view text);

// Checks the bounds of a typed scalar. Returns the problem, or an empty text.
std::string problemOf(const Member &member, const Value &value);

// Returns the value of a member that is not given; absent when it has no fallback.
Value fallbackOf(const Member &member);

// Writes a scalar as parseScalar reads it.
std::string formatScalar(const Member &member, const Value &value);

// "--limit-policy" for "limitPolicy".
std::string optionOf(const Member &member);

// Describes the values that a member accepts, for help, errors and schema: "0 to 4094", "allow or deny".
std::string expectation(const Member &member);

}  // namespace qvs::config
