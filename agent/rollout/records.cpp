// SPDX-License-Identifier: Apache-2.0
#include "agent/rollout/records.h"

#include <algorithm>
#include <array>
#include <concepts>
#include <limits>
#include <nlohmann/json.hpp>

#include "base/failure.h"
#include "base/text.h"

namespace qvs::fleet {
namespace {

using nlohmann::json;

constexpr std::array kStates = {"running", "stopped", "done", "rollingBack", "rolledBack"};
constexpr std::array kKinds = {"switch", "group", "host"};

template <typename Type, typename Record>
concept Is = std::same_as<std::remove_const_t<Type>, Record>;

// The names of the members of each record, used to read and to write them.
void eachMember(Is<Head> auto &head, auto &&each) {
    each("revision", head.revision);
    each("base", head.base);
    each("wave", head.wave);
    each("state", head.state);
    each("reason", head.reason);
}

void eachMember(Is<DocumentOf> auto &document, auto &&each) {
    each("kind", document.kind);
    each("name", document.name);
    each("labels", document.labels);
    each("digest", document.digest);
}

void eachMember(Is<Manifest> auto &manifest, auto &&each) {
    each("revision", manifest.revision);
    each("message", manifest.message);
    each("author", manifest.author);
    each("time", manifest.time);
    each("documents", manifest.documents);
    each("plan", manifest.plan);
    each("waves", manifest.waves);
    each("maxUnavailable", manifest.unavailable);
    each("rollbackOnFailure", manifest.rollsBack);
    each("prune", manifest.prunes);
    each("copies", manifest.copies);
}

void eachMember(Is<Status> auto &status, auto &&each) {
    each("host", status.host);
    each("revision", status.revision);
    each("trying", status.trying);
    each("refused", status.refused);
    each("step", status.step);
    each("reason", status.reason);
    each("problem", status.problem);
    each("drift", status.drift);
    each("differences", status.differences);
    each("time", status.time);
    each("version", status.version);
}

void eachMember(Is<Result> auto &result, auto &&each) {
    each("state", result.state);
    each("reason", result.reason);
    each("time", result.time);
}

void eachMember(Is<Labels> auto &labels, auto &&each) {
    each("labels", labels);
}

// Reads a record from a JSON object. An absent member gets its default. A member of a wrong type is refused.
class Reader {
  public:
    Reader(std::string_view text, const char *what)
        : what_(what), object_(json::parse(text, nullptr, false)) {
        if (!object_.is_object()) refuse("it is not a JSON object");
    }
    Reader(json object, const char *what) : what_(what), object_(std::move(object)) {
        if (!object_.is_object()) refuse("a part is not a JSON object");
    }

    // Reads a member of a record by its type.
    template <typename Value>
    void operator()(const char *name, Value &value) const {
        if constexpr (std::is_same_v<Value, State>) {
            word(name, kStates, value);
        } else if constexpr (std::is_same_v<Value, DocumentOf::Kind>) {
            word(name, kKinds, value);
        } else if constexpr (std::is_same_v<Value, std::vector<DocumentOf>>) {
            documents(name, value);
        } else if constexpr (std::is_unsigned_v<Value> && !std::is_same_v<Value, bool>) {
            number(name, value);
        } else {
            member(name, value);
        }
    }

  private:
    template <typename Value>
    void member(const char *name, Value &value) const {
        const auto found = object_.find(name);
        if (found == object_.end()) return;
        try {
            found->get_to(value);
        } catch (const json::exception &) {
            refuse(fmt::format("the member {} has the wrong type", name));
        }
    }
    template <typename Number>
    void number(const char *name, Number &value) const {
        const auto found = object_.find(name);
        if (found == object_.end()) return;
        if (!found->is_number_unsigned() || found->get<uint64_t>() > std::numeric_limits<Number>::max())
            refuse(fmt::format("the member {} is no number in its bounds", name));
        value = found->get<Number>();
    }
    template <typename Word, size_t count>
    void word(const char *name, const std::array<const char *, count> &words, Word &value) const {
        std::string text;
        member(name, text);
        const auto found = std::ranges::find(words, std::string_view(text));
        if (found == words.end()) refuse(fmt::format("the member {} is {}", name, inQuotes(text)));
        value = static_cast<Word>(found - words.begin());
    }
    void documents(const char *name, std::vector<DocumentOf> &documents) const {
        const auto found = object_.find(name);
        if (found == object_.end()) return;
        if (!found->is_array()) refuse(fmt::format("the member {} is no list", name));
        for (const json &one : *found)
            eachMember(documents.emplace_back(), Reader(one, what_));
    }
    [[noreturn]] void refuse(std::string_view reason) const {
        fail(Exit::Failed, "the store has a {} that cannot be read: {}", what_, reason);
    }

    const char *what_;
    json object_;
};

// Writes a record, member by member.
class Writer {
  public:
    template <typename Value>
    void operator()(const char *name, const Value &value) {
        if constexpr (std::is_same_v<Value, State>) {
            object_[name] = wordOf(value);
        } else if constexpr (std::is_same_v<Value, DocumentOf::Kind>) {
            object_[name] = kKinds[static_cast<size_t>(value)];
        } else if constexpr (std::is_same_v<Value, std::vector<DocumentOf>>) {
            json &list = object_[name] = json::array();
            for (const DocumentOf &one : value) {
                Writer part;
                eachMember(one, part);
                if (one.labels.empty()) part.object_.erase("labels");
                list.push_back(std::move(part.object_));
            }
        } else {
            object_[name] = value;
        }
    }
    // Texts of documents and hosts can contain bytes that are not UTF-8.
    std::string text() const { return object_.dump(-1, ' ', false, json::error_handler_t::replace); }

  private:
    json object_ = json::object();
};

template <typename Record>
std::string written(const Record &record) {
    Writer writer;
    eachMember(record, writer);
    return writer.text();
}

template <typename Record>
Record readRecord(std::string_view text, const char *what) {
    Record record;
    eachMember(record, Reader(text, what));
    return record;
}

}  // namespace

std::string KeyNames::revision(uint64_t number) const {
    // Numbers in keys have equal length, so that ranges are ordered.
    return fmt::format("{}{:012}", revisions(), number);
}

std::string KeyNames::result(uint64_t number) const {
    return fmt::format("{}{:012}", results(), number);
}

bool isName(std::string_view name) {
    constexpr size_t kMost = 253;
    return !name.empty() && name.size() <= kMost && name.front() != '.' &&
           std::ranges::all_of(name, [](char c) {
               return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                      c == '.' || c == '-' || c == '_';
           });
}

const char *wordOf(State state) {
    return kStates[static_cast<size_t>(state)];
}

std::string write(const Head &head) {
    return written(head);
}

Head readHead(std::string_view text) {
    return readRecord<Head>(text, "head");
}

std::string write(const Manifest &manifest) {
    return written(manifest);
}

Manifest readManifest(std::string_view text) {
    return readRecord<Manifest>(text, "revision");
}

std::string write(const Status &status) {
    return written(status);
}

Status readStatus(std::string_view text) {
    return readRecord<Status>(text, "status");
}

std::string write(const Result &result) {
    return written(result);
}

Result readResult(std::string_view text) {
    return readRecord<Result>(text, "result");
}

std::string writeLabels(const Labels &labels) {
    return written(labels);
}

Labels readLabels(std::string_view text) {
    return readRecord<Labels>(text, "host");
}

std::optional<uint32_t> parseWave(std::string_view text) {
    return parseNumber(text);
}

}  // namespace qvs::fleet
