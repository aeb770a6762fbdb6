// SPDX-License-Identifier: Apache-2.0
// Lists of mirror sessions, computed anew from whole sessions.
#pragma once

#include <string>
#include <vector>

#include "support/bytes.h"

namespace qvs::test {

// A session with its entities beside it: destinations, sources in, sources out.
struct Session {
    std::string id;
    std::vector<std::string> dst = {}, in = {}, out = {};
    bool operator==(const Session &) const = default;
};

// The list as its layout has it.
inline std::string encode(const std::vector<Session> &sessions, uint32_t magic = 0xfacebeef,
                          uint32_t reserved = 0) {
    const auto number = [](size_t size) { return u32(static_cast<uint32_t>(size)); };
    std::string head, entities;
    size_t count = 0;
    for (const Session &s : sessions) {
        head += field(s.id.substr(0, 32), 32) + field("name of " + s.id, 84) + u32(1) + u32(0xffffffff) +
                zeros(92) + number(s.dst.size()) + number(s.in.size()) + number(s.out.size()) + number(count);
        for (const auto *group : {&s.dst, &s.in, &s.out}) {
            for (const std::string &name : *group)
                entities += u32(0x77) + field(name, 48);
            count += group->size();
        }
    }
    return u32(magic) + u32(2) + number(sessions.size()) + number(count) + u32(reserved) + head + entities;
}

}  // namespace qvs::test
