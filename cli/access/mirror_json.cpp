// SPDX-License-Identifier: Apache-2.0
// Mirror sessions read from the JSON of a listing.

#include <nlohmann/json.hpp>
#include <string>
#include <unordered_set>

#include "access/mirror_session.h"
#include "tool/failure.h"

namespace qvs::cli {
namespace {

using Json = nlohmann::json;

void readText(const Json &value, std::string &text) {
    if (!value.is_null()) text = value.get<std::string>();
}

void readNumber(const std::string &key, const Json &value, uint32_t &number) {
    if (!value.is_number_unsigned() || value.get<uint64_t>() > UINT32_MAX)
        fail(Exit::Usage, "{}: {} is not a number from 0 to 4294967295", key, shown(value.dump()));
    number = value.get<uint32_t>();
}

void readFlags(const Json &value, std::span<const FlagName> names, uint32_t &flags) {
    for (const std::string &name : value.get<std::vector<std::string>>())
        flags |= flagNamed("flags", names, name);
}

void readMember(MirrorSession &session, const std::string &key, const Json &value) {
    if (key == "session") {
        readText(value, session.id);
    } else if (key == "name") {
        readText(value, session.name);
    } else if (key == "type") {
        if (!value.is_null()) session.type = mirrorType("type", value.get<std::string>());
    } else if (key == "snapLength") {
        if (!value.is_null()) readNumber(key, value, session.snapLength.emplace());
    } else if (key == "flags") {
        readFlags(value, kMirrorFlags, session.flags);
    } else if (key == "encapVlan") {
        readNumber(key, value, session.encapVlan);
    } else if (key == "samplingRate") {
        readNumber(key, value, session.samplingRate);
    } else if (key == "stack") {
        session.stack = value.get<bool>();
    } else if (key == "destinations") {
        session.destinations = value.get<std::vector<std::string>>();
    } else if (key == "sourcesIn") {
        session.sourcesIn = value.get<std::vector<std::string>>();
    } else if (key == "sourcesOut") {
        session.sourcesOut = value.get<std::vector<std::string>>();
    } else if (key == "unread") {
        session.unread.texts = value.get<std::vector<std::string>>();
    } else if (key == "wildIn" || key == "wildOut") {
        if (!value.empty()) fail(Exit::Usage, "{}: masks of the older form cannot be stored", key);
    } else {
        fail(Exit::Usage, "{}: no such member", shown(key));
    }
}

MirrorSession parseSession(const Json &object) {
    if (!object.is_object()) fail(Exit::Usage, "a session is an object");
    MirrorSession session;
    for (const auto &[key, value] : object.items()) {
        // What a list prints for bytes that are not UTF-8.
        if (value.dump().find("\xef\xbf\xbd") != std::string::npos)
            fail(Exit::Usage,
                 "{}: holds U+FFFD, which stands for bytes that JSON cannot hold; mirror add takes them",
                 shown(key));
        try {
            readMember(session, key, value);
        } catch (const Json::exception &) {
            fail(Exit::Usage, "{}: {} is of the wrong kind", shown(key), shown(value.dump()));
        }
    }
    return session;
}

}  // namespace

std::vector<MirrorSession> parseMirrorJson(std::string_view text) {
    Json array = Json::parse(text, nullptr, false);
    if (!array.is_array()) fail(Exit::Usage, "the sessions are no JSON array");
    std::vector<MirrorSession> sessions;
    std::unordered_set<std::string> seen;
    for (size_t i = 0; i < array.size(); i++) {
        try {
            sessions.push_back(parseSession(array[i]));
            // Judged one by one, so that the message can say which.
            encodeMirrorList({sessions.back()});
        } catch (const Failure &failure) {
            fail(failure.exit, "session {} of the array: {}", i, failure.message);
        }
        if (!seen.insert(sessions.back().id).second)
            fail(Exit::Usage, "mirror session {}: given twice", inQuotes(sessions.back().id));
    }
    return sessions;
}

}  // namespace qvs::cli
