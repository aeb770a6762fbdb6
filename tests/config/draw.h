// SPDX-License-Identifier: Apache-2.0
// Random values of settings, drawn from the descriptions of their members.
#pragma once

#include <algorithm>
#include <array>
#include <random>
#include <string>
#include <vector>

#include "config/document/document.h"
#include "config/settings/setting.h"

namespace qvs::test {

using Random = std::mt19937;

inline uint64_t drawNumber(Random &random, uint64_t least, uint64_t most) {
    return std::uniform_int_distribution<uint64_t>(least, most)(random);
}
inline bool drawChance(Random &random, uint64_t oneIn) {
    return drawNumber(random, 1, oneIn) == 1;
}

// Bytes that a name may have, among them those that documents and terminals have to escape.
inline std::string drawText(Random &random, size_t least, size_t most) {
    static constexpr char kBytes[] = "abcXYZ012 -_.:,#'\"\\/&*!%{}[]\n\t\x01\x7f\xc3\xa4\xff";
    // Most are short, some fill their field.
    const size_t longest = drawChance(random, 6) ? most : std::min<size_t>(most, 12);
    std::string text(drawNumber(random, std::min(least, longest), longest), ' ');
    for (char &c : text)
        c = kBytes[drawNumber(random, 0, sizeof kBytes - 2)];
    return text;
}

inline std::string drawAddress(Random &random) {
    std::array<uint8_t, 6> address{};
    for (uint8_t &byte : address)
        byte = static_cast<uint8_t>(drawNumber(random, 0, 255));
    return macText(address);
}

// Texts of all forms that members and entities of mirror sessions have.
inline std::string drawFormed(Random &random) {
    const uint64_t number = drawNumber(random, 0, 255);
    switch (drawNumber(random, 0, 5)) {
        case 0:
            return fmt::format("192.0.2.{}", number);
        case 1:
            return fmt::format("2001:db8::{:x}:0", number);
        case 2:
            return fmt::format("198.51.100.{}:{}", number, drawNumber(random, 0, 65535));
        case 3:
            return fmt::format("[2001:DB8:0::{:x}]:{}", number, drawNumber(random, 0, 65535));
        case 4:
            return fmt::to_string(number);
        default:
            return drawAddress(random);
    }
}

inline std::string drawVlans(Random &random) {
    const uint64_t first = drawNumber(random, 0, 4094);
    const uint64_t last = drawChance(random, 2) ? first : drawNumber(random, first, 4094);
    return first == last ? fmt::to_string(first) : fmt::format("{}-{}", first, last);
}

inline config::Value drawScalar(const config::Member &member, Random &random) {
    using config::Type;
    switch (member.type) {
        case Type::Boolean:
            return drawChance(random, 2);
        case Type::Number:
            if (drawChance(random, 4)) return drawChance(random, 2) ? member.least : member.most;
            return drawNumber(random, member.least, member.most);
        case Type::Word:
            return member.words[drawNumber(random, 0, member.words.size() - 1)];
        case Type::Text:
            for (std::string text; member.form != nullptr; text = drawFormed(random))
                if (auto formed = member.form(text)) return *formed;
            return drawText(random, member.least, member.most);
        case Type::Vlans:
            return drawVlans(random);
        case Type::Address:
            return drawAddress(random);
        case Type::Bytes: {
            config::Blob bytes(drawNumber(random, member.least, member.most));
            for (uint8_t &byte : bytes)
                byte = static_cast<uint8_t>(drawNumber(random, 0, 255));
            return bytes;
        }
        case Type::Record:
            break;
    }
    config::Value record = config::Members{};
    for (const config::Member &each : member.members) {
        if (!each.required && drawChance(random, 4)) continue;
        config::Value value;
        if (each.list) {
            config::List items(drawNumber(random, 0,
                                          drawChance(random, 8) ? std::min<uint64_t>(each.mostItems, 40)
                                                                : std::min<uint64_t>(each.mostItems, 3)));
            for (config::Value &item : items)
                item = drawScalar(each, random);
            value = std::move(items);
        } else {
            value = drawScalar(each, random);
        }
        record.set(each.name, std::move(value));
    }
    return record;
}

// A mirror session whose entities are what its type wants, judged by the setting itself.
inline config::Value drawSession(const config::Setting &setting, Random &random, size_t index) {
    const auto fits = [&](const config::Value &session) {
        return problemOf(setting, completed(setting, config::List{session})).empty();
    };
    config::Value session = drawScalar(setting.members[0], random);
    const std::string id = fmt::format("{}{}", index, session["session"].text());
    session.set("session", id.substr(0, 32));
    config::Value bare = config::Members{{"session", session["session"]}, {"type", session["type"]}};
    config::Value stacked = bare;
    stacked.set("stack", true);
    if (!fits(stacked)) session.set("stack", false);
    for (const char *group : {"destinations", "sourcesIn", "sourcesOut"}) {
        if (session[group].absent()) continue;
        config::List entities = session[group].list();
        for (config::Value &entity : entities) {
            config::Value probe = bare;
            for (probe.set(group, config::List{entity}); !fits(probe); probe.set(group, config::List{entity}))
                entity = drawFormed(random);
        }
        session.set(group, std::move(entities));
    }
    return session;
}

// A valid, completed value of a setting.
inline config::Value drawValue(const config::Setting &setting, Random &random) {
    const config::Member &first = setting.members[0];
    for (;;) {
        config::Value value;
        if (setting.isScalar() && first.list) {
            config::List items;
            const uint64_t most = first.type == config::Type::Bytes ? 3 : 6;
            const uint64_t count =
                drawNumber(random, 0, drawChance(random, 6) ? std::min<uint64_t>(first.mostItems, 40) : most);
            for (size_t i = 0; i < std::min<uint64_t>(count, first.mostItems); i++)
                items.push_back(first.type == config::Type::Record && setting.problem != nullptr
                                    ? drawSession(setting, random, i)
                                    : drawScalar(first, random));
            value = std::move(items);
        } else if (setting.isScalar()) {
            value = drawScalar(first, random);
        } else {
            value = drawScalar(
                {.name = "", .summary = "", .type = config::Type::Record, .members = setting.members},
                random);
        }
        value = completed(setting, value);
        if (problemOf(setting, value).empty()) return value;
    }
}

// Some of the settings of a scope, and properties with any keys.
inline void drawPart(config::Part &part, Scope scope, Random &random) {
    for (const config::Setting *setting : config::settings())
        if (setting->scope == scope && drawChance(random, 3))
            part.settings.push_back({setting, drawValue(*setting, random)});
    for (uint64_t i = drawNumber(random, 0, 2); i > 0; i--)
        part.properties.push_back({fmt::format("com.example.{}{}", 3 - i, drawText(random, 0, 40)),
                                   drawChance(random, 2) ? 16u : 24u,
                                   config::Blob(drawNumber(random, 0, 90), 'x')});
}

}  // namespace qvs::test
