// SPDX-License-Identifier: Apache-2.0
// Mirror sessions as people see them, and the stored list they come from and go to.
#pragma once

#include <qvs/vsdvs.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/text.h"
#include "tool/flags.h"

namespace qvs::cli {

inline constexpr const char *kMirrorTypes[] = {"mixdst",      "dvport",       "rmirror-src",
                                               "rmirror-dst", "ermirror-src", "logical-span"};
inline constexpr FlagName kMirrorFlags[] = {
    {"no-output", VSDVS_MIRROR_DST_NO_OUTPUT}, {"no-input", VSDVS_MIRROR_DST_NO_INPUT},
    {"orig-vlan", VSDVS_MIRROR_DST_ORIG_VLAN}, {"encap", VSDVS_MIRROR_DST_ENCAP},
    {"legacy", VSDVS_MIRROR_LEGACY},           {"disabled", VSDVS_MIRROR_DISABLED},
};
inline constexpr FlagName kMirrorMasks[] = {
    {"vmm", VSDVS_MIRROR_WILD_VMM},     {"pnic", VSDVS_MIRROR_WILD_PNIC}, {"cos", VSDVS_MIRROR_WILD_COS},
    {"tcpip", VSDVS_MIRROR_WILD_TCPIP}, {"test", VSDVS_MIRROR_WILD_TEST},
};

// All bytes of an identifier may be used; a display name has its NUL.
inline constexpr Limit kMirrorIdLimit{"mirror session", sizeof(VSDVS_MirrorSession::sessionId)};
inline constexpr Limit kMirrorNameLimit{"display name", sizeof(VSDVS_MirrorSession::displayName) - 1};
inline constexpr uint32_t kMostSnapLength = INT32_MAX;

// What is stored otherwise than it would be written, in bytes that nobody reads: "154:ff01", by their offset
// in the list that has the session alone. Sessions that differ in nothing else are equal.
struct UnreadBytes {
    std::vector<std::string> texts;

    bool operator==(const UnreadBytes &) const { return true; }
};

struct MirrorSession {
    std::string id;
    std::string name;
    std::optional<uint32_t> type;        // nothing in the older form, which has masks
    std::optional<uint32_t> snapLength;  // nothing: frames are kept in full
    uint32_t flags = 0;
    uint32_t encapVlan = 0;
    uint32_t samplingRate = 0;
    bool stack = false;
    uint32_t wildIn = 0;  // masks of the older form
    uint32_t wildOut = 0;
    // Names, addresses, VLAN ids or texts, as the type wants them.
    std::vector<std::string> destinations;
    std::vector<std::string> sourcesIn;
    std::vector<std::string> sourcesOut;
    UnreadBytes unread;

    bool operator==(const MirrorSession &) const = default;
};

// The number of a type's name; any other text is a usage failure about what.
uint32_t mirrorType(std::string_view what, std::string_view text);

// The sessions of a stored list. Sessions may claim entities that the list does not have: a failure.
std::vector<MirrorSession> decodeMirrorList(const void *list);

// The list to be stored. What its records cannot hold is a usage failure.
std::vector<uint8_t> encodeMirrorList(const std::vector<MirrorSession> &sessions);

// The JSON of a listing, read back. Anything else is a usage failure.
std::vector<MirrorSession> parseMirrorJson(std::string_view text);

}  // namespace qvs::cli
