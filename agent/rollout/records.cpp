// SPDX-License-Identifier: Apache-2.0
#include "agent/rollout/records.h"

#include <algorithm>
#include <array>
#include <ctime>
#include <iterator>
#include <nlohmann/json.hpp>

#include "base/failure.h"
#include "base/text.h"

namespace qvs::fleet {
namespace {

using nlohmann::json;

constexpr std::array kStates = {"running", "stopped", "done", "rollingBack", "rolledBack"};
constexpr std::array kKinds = {"switch", "group", "host"};

// A record as a JSON object. A member that is absent has its default, one of another type is refused.
class Reader {
  public:
    Reader(std::string_view text, const char *what)
        : what_(what), object_(json::parse(text, nullptr, false)) {
        if (!object_.is_object()) refuse("it is not a JSON object");
    }
    Reader(json object, const char *what) : what_(what), object_(std::move(object)) {
        if (!object_.is_object()) refuse("a part is not a JSON object");
    }

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
    const json *list(const char *name) const {
        const auto found = object_.find(name);
        if (found == object_.end()) return nullptr;
        if (!found->is_array()) refuse(fmt::format("the member {} is no list", name));
        return &*found;
    }
    [[noreturn]] void refuse(std::string_view reason) const {
        fail(Exit::Failed, "the store has a {} that cannot be read: {}", what_, reason);
    }

  private:
    const char *what_;
    json object_;
};

json labelsOf(const Labels &labels) {
    json made = json::object();
    for (const auto &[name, value] : labels)
        made[name] = value;
    return made;
}

// Texts of documents and hosts may have bytes that are not UTF-8.
std::string dumped(const json &object) {
    return object.dump(-1, ' ', false, json::error_handler_t::replace);
}

}  // namespace

std::string KeyNames::revision(uint64_t number) const {
    // Of equal length, so that ranges come in their order.
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
    return dumped({{"revision", head.revision},
                   {"base", head.base},
                   {"wave", head.wave},
                   {"state", wordOf(head.state)},
                   {"reason", head.reason}});
}

Head readHead(std::string_view text) {
    const Reader reader(text, "head");
    Head head;
    reader.number("revision", head.revision);
    reader.number("base", head.base);
    reader.number("wave", head.wave);
    reader.word("state", kStates, head.state);
    reader.member("reason", head.reason);
    return head;
}

std::string write(const Manifest &manifest) {
    json documents = json::array();
    for (const DocumentOf &document : manifest.documents) {
        json one = {{"kind", kKinds[static_cast<size_t>(document.kind)]},
                    {"name", document.name},
                    {"digest", document.digest}};
        if (!document.labels.empty()) one["labels"] = labelsOf(document.labels);
        documents.push_back(one);
    }
    return dumped({{"revision", manifest.revision},
                   {"message", manifest.message},
                   {"author", manifest.author},
                   {"time", manifest.time},
                   {"documents", documents},
                   {"plan", manifest.plan},
                   {"waves", manifest.waves},
                   {"maxUnavailable", manifest.unavailable},
                   {"rollbackOnFailure", manifest.rollsBack},
                   {"prune", manifest.prunes},
                   {"copies", manifest.copies}});
}

Manifest readManifest(std::string_view text) {
    const Reader reader(text, "revision");
    Manifest manifest;
    reader.number("revision", manifest.revision);
    reader.member("message", manifest.message);
    reader.member("author", manifest.author);
    reader.member("time", manifest.time);
    if (const json *documents = reader.list("documents"))
        for (const json &one : *documents) {
            const Reader part(one, "revision");
            DocumentOf document;
            part.word("kind", kKinds, document.kind);
            part.member("name", document.name);
            part.member("labels", document.labels);
            part.member("digest", document.digest);
            manifest.documents.push_back(std::move(document));
        }
    reader.member("plan", manifest.plan);
    reader.number("waves", manifest.waves);
    reader.number("maxUnavailable", manifest.unavailable);
    reader.member("rollbackOnFailure", manifest.rollsBack);
    reader.member("prune", manifest.prunes);
    reader.number("copies", manifest.copies);
    return manifest;
}

std::string write(const Status &status) {
    return dumped({{"host", status.host},
                   {"revision", status.revision},
                   {"trying", status.trying},
                   {"refused", status.refused},
                   {"step", status.step},
                   {"reason", status.reason},
                   {"problem", status.problem},
                   {"drift", status.drift},
                   {"differences", status.differences},
                   {"time", status.time},
                   {"version", status.version}});
}

Status readStatus(std::string_view text) {
    const Reader reader(text, "status");
    Status status;
    reader.member("host", status.host);
    reader.number("revision", status.revision);
    reader.number("trying", status.trying);
    reader.number("refused", status.refused);
    reader.member("step", status.step);
    reader.member("reason", status.reason);
    reader.member("problem", status.problem);
    reader.number("drift", status.drift);
    reader.member("differences", status.differences);
    reader.member("time", status.time);
    reader.member("version", status.version);
    return status;
}

std::string write(const Result &result) {
    return dumped({{"state", wordOf(result.state)}, {"reason", result.reason}, {"time", result.time}});
}

Result readResult(std::string_view text) {
    const Reader reader(text, "result");
    Result result;
    reader.word("state", kStates, result.state);
    reader.member("reason", result.reason);
    reader.member("time", result.time);
    return result;
}

std::string writeLabels(const Labels &labels) {
    return dumped({{"labels", labelsOf(labels)}});
}

Labels readLabels(std::string_view text) {
    const Reader reader(text, "host");
    Labels labels;
    reader.member("labels", labels);
    return labels;
}

std::optional<uint32_t> parseWave(std::string_view text) {
    return parseNumber(text);
}

std::string timeNow() {
    const std::time_t now = std::time(nullptr);
    std::tm parts{};
    gmtime_r(&now, &parts);
    std::array<char, 32> text{};
    std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%SZ", &parts);
    return text.data();
}

}  // namespace qvs::fleet
