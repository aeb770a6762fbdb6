// SPDX-License-Identifier: Apache-2.0
#include "agent/daemon/disk.h"

#include <nlohmann/json.hpp>

#include "base/text.h"
#include "config/document/reader.h"
#include "config/document/write.h"

namespace qvs::fleet {
namespace {

using nlohmann::json;

constexpr const char *kMemory = "memory.json";
constexpr const char *kProbe = "probe";
constexpr const char *kFormatMember = "format";
constexpr uint32_t kFormat = 1;  // also of a memory without the member
constexpr std::string_view kDocument = "revision-";

std::string nameOf(uint64_t revision) {
    return fmt::format("{}{}.yaml", kDocument, revision);
}

}  // namespace

Disk::Disk(const std::string &directory) : directory_(directory, true, {.file = "state of the agent"}) {
    const auto text = directory_.read(kMemory);
    if (!text) return;
    try {
        const json object = json::parse(*text);
        if (const uint32_t format = object.value(kFormatMember, kFormat); format > kFormat)
            fail(Exit::Failed,
                 "{}/{}: a newer version of qvs-agent wrote it, in format {}; this one reads format {}",
                 shown(directory), kMemory, format, kFormat);
        object.at("applied").get_to(memory_.applied);
        object.at("trying").get_to(memory_.trying);
        object.at("tried").get_to(memory_.tried);
        object.at("attempts").get_to(memory_.attempts);
        for (const auto &[revision, refusal] : object.at("refused").items())
            memory_.refused[parseWideNumber(revision).value_or(0)] = {refusal.at("step"),
                                                                      refusal.at("reason")};
    } catch (const json::exception &) {
        fail(Exit::Failed, "{}/{} is damaged; move it away, and the host takes the published revision again",
             shown(directory), kMemory);
    }
}

void Disk::write(const std::string &name, const std::string &text) {
    try {
        (void)directory_.write(name, text, true);
        problem_.clear();
    } catch (const Failure &failure) {
        problem_ = failure.message;
        needed_ = text.size();
        throw DiskFailure{failure};
    }
}

void Disk::probe() {
    if (problem_.empty()) return;
    try {
        write(kProbe, std::string(needed_, ' '));
        directory_.remove(kProbe);
    } catch (const Failure &) {
        // There is still a problem.
    }
}

void Disk::keep(const Memory &memory) {
    json refused = json::object();
    for (const auto &[revision, refusal] : memory.refused)
        refused[fmt::to_string(revision)] = {{"step", refusal.step}, {"reason", refusal.reason}};
    const json object = {{kFormatMember, kFormat}, {"applied", memory.applied},   {"trying", memory.trying},
                         {"tried", memory.tried},  {"attempts", memory.attempts}, {"refused", refused}};
    const std::string text = object.dump(-1, ' ', false, json::error_handler_t::replace);
    write(kMemory, text);
    memory_ = memory;
}

void Disk::keepDocument(uint64_t revision, const config::Document &document) {
    write(nameOf(revision), config::writeYaml(document));
}

config::Document Disk::document(uint64_t revision) const {
    const auto text = revision == 0 ? std::nullopt : directory_.read(nameOf(revision));
    if (!text) return {};
    std::vector<config::Problem> problems;
    config::Document document = config::readDocument(*text, nameOf(revision), problems);
    if (!problems.empty()) fail(Exit::Failed, "{}", messageOf(problems.front()));
    return document;
}

void Disk::removeOthers() {
    for (const std::string &name : directory_.names())
        if (name.starts_with(kDocument) && name != nameOf(memory_.applied) && name != nameOf(memory_.trying))
            directory_.remove(name);
}

}  // namespace qvs::fleet
