// SPDX-License-Identifier: Apache-2.0
#include "agent/store/gateway.h"

#include <nlohmann/json.hpp>

#include "base/failure.h"
#include "base/text.h"

namespace qvs::fleet {
namespace {

using nlohmann::json;

std::string encoded(std::string_view text) {
    return base64({reinterpret_cast<const uint8_t *>(text.data()), text.size()});
}

std::string decoded(const json &object, const char *member) {
    const auto found = object.find(member);
    if (found == object.end() || !found->is_string()) return {};
    const auto bytes = parseBase64(found->get_ref<const std::string &>());
    if (!bytes) fail(Exit::NoAnswer, "the store sends bytes that are not base64");
    return {bytes->begin(), bytes->end()};
}

uint64_t numberIn(const json &object, const char *member) {
    const auto found = object.find(member);
    if (found == object.end()) return 0;
    if (found->is_number_unsigned()) return found->get<uint64_t>();
    if (found->is_string())
        if (const auto number = parseWideNumber(found->get_ref<const std::string &>())) return *number;
    fail(Exit::NoAnswer, "the store sends a number that is none");
}

std::string textIn(const json &object, const char *member) {
    const auto found = object.find(member);
    return found != object.end() && found->is_string() ? found->get<std::string>() : std::string();
}

bool flagIn(const json &object, const char *member) {
    const auto found = object.find(member);
    return found != object.end() && found->is_boolean() && found->get<bool>();
}

// The object of this name; an empty one if it is absent.
const json &objectIn(const json &object, const char *member) {
    static const json empty = json::object();
    const auto found = object.find(member);
    return found != object.end() && found->is_object() ? *found : empty;
}

json parsed(std::string_view answer) {
    json made = json::parse(answer, nullptr, false);
    if (!made.is_object()) fail(Exit::NoAnswer, "the store sends what is not JSON");
    return made;
}

Entry readEntry(const json &object) {
    return {decoded(object, "key"), decoded(object, "value"), numberIn(object, "create_revision"),
            numberIn(object, "mod_revision"), numberIn(object, "lease")};
}

// The first key after all keys with a prefix; "\0" stands for no end.
std::string behind(std::string prefix) {
    while (!prefix.empty() && prefix.back() == '\xff')
        prefix.pop_back();
    if (prefix.empty()) return std::string(1, '\0');
    prefix.back() = static_cast<char>(prefix.back() + 1);
    return prefix;
}

json rangeOf(const Keys &keys) {
    json made = {{"key", encoded(keys.key)}};
    if (keys.prefix) made["range_end"] = encoded(behind(keys.key));
    return made;
}

json comparisonOf(const Comparison &comparison) {
    const bool created = comparison.what == Comparison::What::Created;
    return {{"key", encoded(comparison.key)},
            {"result", "EQUAL"},
            {"target", created ? "CREATE" : "MOD"},
            {created ? "create_revision" : "mod_revision", fmt::to_string(comparison.revision)}};
}

}  // namespace

std::string rangeRequest(const Keys &keys) {
    return rangeOf(keys).dump();
}

std::string transactionRequest(const Transaction &transaction) {
    json made = {{"compare", json::array()}, {"success", json::array()}};
    for (const Comparison &comparison : transaction.comparisons)
        made["compare"].push_back(comparisonOf(comparison));
    for (const Put &put : transaction.puts) {
        json request = {{"key", encoded(put.key)}, {"value", encoded(put.value)}};
        if (put.lease != 0) request["lease"] = fmt::to_string(put.lease);
        made["success"].push_back({{"request_put", request}});
    }
    for (const Keys &keys : transaction.removals)
        made["success"].push_back({{"request_delete_range", rangeOf(keys)}});
    return made.dump();
}

std::string leaseRequest(const char *member, uint64_t lease, uint32_t seconds) {
    json made = {{member, fmt::to_string(lease)}};
    if (seconds != 0) made["TTL"] = fmt::to_string(seconds);
    return made.dump();
}

std::string watchRequest(const Keys &keys, uint64_t from) {
    json made = rangeOf(keys);
    made["start_revision"] = fmt::to_string(from);
    return json{{"create_request", made}}.dump();
}

std::string authenticationRequest(std::string_view user, std::string_view password) {
    return json{{"name", user}, {"password", password}}.dump();
}

Found readRange(std::string_view answer) {
    const json object = parsed(answer);
    Found found;
    found.revision = numberIn(objectIn(object, "header"), "revision");
    if (const auto entries = object.find("kvs"); entries != object.end())
        for (const json &entry : *entries)
            found.entries.push_back(readEntry(entry));
    return found;
}

uint64_t readCommitted(std::string_view answer) {
    const json object = parsed(answer);
    return flagIn(object, "succeeded") ? numberIn(objectIn(object, "header"), "revision") : 0;
}

uint64_t readLease(std::string_view answer) {
    return numberIn(parsed(answer), "ID");
}

bool readAlive(std::string_view answer) {
    // A stream of one line, with an error inside or not.
    const json object = parsed(answer.substr(0, answer.find('\n')));
    if (object.contains("error"))
        fail(Exit::NoAnswer, "{}", shown(textIn(objectIn(object, "error"), "message")));
    return numberIn(objectIn(object, "result"), "TTL") != 0;
}

std::string readToken(std::string_view answer) {
    return textIn(parsed(answer), "token");
}

std::string readWatch(std::string_view line, std::vector<Event> &events) {
    const json object = parsed(line);
    if (const auto error = object.find("error"); error != object.end()) {
        // After the first line, the error is an object. In an answer that fails immediately, it is a text.
        const std::string text = error->is_object() ? textIn(*error, "message") : textIn(object, "error");
        return text.empty() ? "the store reports an error" : shown(text);
    }
    const json &result = objectIn(object, "result");
    if (const auto list = result.find("events"); list != result.end())
        for (const json &event : *list)
            events.push_back({textIn(event, "type") == "DELETE", readEntry(objectIn(event, "kv"))});
    if (const uint64_t compacted = numberIn(result, "compact_revision"); compacted != 0)
        return fmt::format("the store was compacted up to revision {}", compacted);
    if (flagIn(result, "canceled")) {
        const std::string reason = textIn(result, "cancel_reason");
        return reason.empty() ? "the store has ended the watch" : shown(reason);
    }
    return {};
}

Refusal readRefusal(long status, std::string_view answer) {
    // Codes of gRPC.
    constexpr uint64_t kDeadlineExceeded = 4;
    constexpr uint64_t kUnavailable = 14;
    constexpr uint64_t kUnauthenticated = 16;
    const std::string withoutText = fmt::format("HTTP status {}", status);
    const json object = json::parse(answer, nullptr, false);
    if (!object.is_object())
        return {status >= 500 ? Refusal::Kind::Unavailable : Refusal::Kind::Refused, withoutText};
    // An answer that would be a stream has the error in an object, with another name of the code.
    const json &ofStream = objectIn(object, "error");
    const json &error = ofStream.empty() ? object : ofStream;
    Refusal refusal;
    refusal.message = shown(textIn(error, "message"));
    if (refusal.message.empty()) refusal.message = shown(textIn(error, "error"));
    if (refusal.message.empty()) refusal.message = withoutText;
    const uint64_t code = numberIn(error, error.contains("grpc_code") ? "grpc_code" : "code");
    if (code == kUnauthenticated ||
        refusal.message.find("revision of auth store is old") != std::string::npos) {
        refusal.kind = Refusal::Kind::TokenExpired;
    } else if (code == kUnavailable || code == kDeadlineExceeded || status >= 502) {
        refusal.kind = Refusal::Kind::Unavailable;
    }
    return refusal;
}

}  // namespace qvs::fleet
