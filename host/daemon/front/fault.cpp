// SPDX-License-Identifier: Apache-2.0
// Reads and applies the rules of fault injection.
#include "daemon/front/fault.h"

#include <algorithm>
#include <cerrno>

#include "wire/fault.h"

namespace qvs::kernel {

namespace {

int parseErrno(const Members &members, const std::string &text) {
    const auto error = wire::errnoOf(text);
    if (!error) members.fail("errno", "is not the name of an error");
    return *error;
}

Status parseStatus(const Members &members, const std::string &text) {
    const auto status = wire::statusOf(text);
    if (!status) members.fail("status", "is not a number like 0xbad0014");
    return static_cast<Status>(*status);
}

Effect::Patch parsePatch(Members &members) {
    Effect::Patch patch;
    patch.offset = members.maybeNumber("offset", 0, wire::kMaxFaultOffset).value_or(0);
    const auto bytes = members.maybeBytes("hex");
    if (!bytes) members.fail("hex", "is missing");
    patch.bytes = *bytes;
    return patch;
}

Effect parseEffect(Members &members) {
    constexpr const char *kMoments[] = {"before", "middle", "after"};
    Effect effect;
    if (const auto name = members.maybeText("errno")) effect.error = parseErrno(members, *name);
    if (const auto text = members.maybeText("status")) effect.status = parseStatus(members, *text);
    if (const auto code = members.maybeNumber("exit", 0, wire::kMaxFaultExit))
        effect.exit = static_cast<int>(*code);
    effect.delayMs = members.maybeNumber("delayMs", 0, wire::kMaxFaultDelayMs).value_or(0);
    if (const auto moment = members.maybeChoice("kill", kMoments))
        effect.kill = static_cast<Effect::Kill>(*moment + 1);
    members.each("output", [&](Members &part) { effect.patches.push_back(parsePatch(part)); });
    effect.truncate = members.maybeNumber("truncate");
    if (const auto *lab = members.any("lab"))
        effect.labs.push_back(std::make_shared<const Lab>(parseLab(*lab)));
    return effect;
}

}  // namespace

int Effect::errorOr() const {
    return error.value_or(EIO);
}

void Effect::change(std::string *output, size_t room) const {
    for (const Patch &patch : patches) {
        if (patch.offset >= room) continue;
        const size_t length = std::min(patch.bytes.size(), room - patch.offset);
        if (output->size() < patch.offset + length) output->resize(patch.offset + length);
        output->replace(patch.offset, length, patch.bytes, 0, length);
    }
    if (truncate && *truncate < output->size()) output->resize(*truncate);
}

void Effect::add(const Effect &other) {
    if (!error) error = other.error;
    if (!status) status = other.status;
    if (!exit) exit = other.exit;
    delayMs += other.delayMs;
    if (kill == Kill::No) kill = other.kill;
    patches.insert(patches.end(), other.patches.begin(), other.patches.end());
    if (!truncate) truncate = other.truncate;
    labs.insert(labs.end(), other.labs.begin(), other.labs.end());
}

uint64_t Faults::add(Members *request) {
    Members &members = *request;
    Rule rule;
    rule.pattern = "*" + members.text("match") + "*";
    rule.nth = members.maybeNumber("nth", 1).value_or(1);
    rule.count = members.maybeNumber("count").value_or(1);
    rule.effect = parseEffect(members);
    members.finish();
    const Effect &effect = rule.effect;
    if (!effect.fails() && effect.delayMs == 0 && effect.kill == Effect::Kill::No &&
        !effect.changesOutput() && effect.labs.empty()) {
        members.fail("match", "comes without an effect, such as \"errno\" or \"delayMs\"");
    }
    rule.given = members.object();
    rule.given.erase("op");
    rule.id = nextId_++;
    rules_.push_back(std::move(rule));
    return rules_.back().id;
}

nlohmann::json Faults::list() const {
    auto list = nlohmann::json::array();
    for (const Rule &rule : rules_) {
        nlohmann::json entry = rule.given;
        entry["id"] = rule.id;
        entry["nth"] = rule.nth;
        entry["count"] = rule.count;
        entry["matched"] = rule.matched;
        entry["fired"] = rule.fired;
        list.push_back(std::move(entry));
    }
    return list;
}

Effect Faults::match(std::string_view line) {
    Effect sum;
    for (Rule &rule : rules_) {
        if (!globMatches(rule.pattern, line)) continue;
        ++rule.matched;
        const bool due = rule.matched >= rule.nth && (rule.count == 0 || rule.fired < rule.count);
        if (!due) continue;
        ++rule.fired;
        sum.add(rule.effect);
    }
    return sum;
}

bool globMatches(std::string_view pattern, std::string_view text) {
    // After a mismatch, the last star matches one more character. Earlier stars need no second attempt.
    size_t p = 0;
    size_t t = 0;
    size_t star = std::string_view::npos;
    size_t resume = 0;
    while (t < text.size()) {
        if (p < pattern.size() && pattern[p] == '*') {
            star = p++;
            resume = t;
        } else if (p < pattern.size() && (pattern[p] == '?' || pattern[p] == text[t])) {
            ++p;
            ++t;
        } else if (star != std::string_view::npos) {
            p = star + 1;
            t = ++resume;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of('*', p) == std::string_view::npos;
}

}  // namespace qvs::kernel
