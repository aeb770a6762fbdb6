// SPDX-License-Identifier: Apache-2.0
// qvs health result: what the checks of VLANs and MTU have found on a port.
#include <qvs/qvs.h>

#include <cstring>
#include <memory>
#include <string>

#include "access/library.h"
#include "access/opaque.h"
#include "commands/nouns.h"
#include "tool/failure.h"
#include "tool/output.h"

namespace qvs::cli {
namespace {

using ResultBuffer = std::unique_ptr<void, Releaser<HealthCheck_FreeMemory>>;

// The ranges of a result, both kinds; nothing without a result.
struct Result {
    std::optional<std::vector<std::string>> first;
    std::optional<std::vector<std::string>> second;
};

std::vector<std::string> rangesOf(const uint8_t *ranges, uint32_t count) {
    std::vector<std::string> texts;
    for (uint32_t i = 0; i < count; i++) {
        uint16_t ends[2];
        std::memcpy(ends, ranges + i * sizeof ends, sizeof ends);
        texts.push_back(ends[0] == ends[1] ? fmt::to_string(ends[0])
                                           : fmt::format("{}-{}", ends[0], ends[1]));
    }
    return texts;
}

template <auto Read>
Result readResult(const std::string &alias, const std::string &port, const char *key) {
    void *raw = nullptr;
    HYP_ReturnStatus status = call<Read>(alias.c_str(), port.c_str(), &raw);
    if (status == HYP_NOT_FOUND) return {};
    const std::string subject = named(alias, port) + ": check result";
    if (status == HYP_FAILURE)
        throw libraryFailure(subject, status,
                             fmt::format("the bytes that are stored as {} are not a result; 'qvs prop clear "
                                         "{} {} --port {}' removes them",
                                         key, shown(alias), key, shown(port)));
    require(status, subject);
    ResultBuffer buffer(raw);
    HealthCheck_Result head;
    std::memcpy(&head, raw, sizeof head);
    const uint8_t *ranges = static_cast<const uint8_t *>(raw) + sizeof head;
    return {rangesOf(ranges, head.firstCount),
            rangesOf(ranges + head.firstCount * sizeof(uint32_t), head.secondCount)};
}

std::optional<Words> rangeWords(const std::optional<std::vector<std::string>> &texts) {
    if (!texts) return std::nullopt;
    return Words{{texts->begin(), texts->end()}};
}

void result(const Arguments &arguments, Output &out) {
    const std::string &alias = arguments.text("SWITCH");
    const std::string &port = arguments.text("PORT");
    requireFits(kPortIdLimit, port);
    findPort(findVswitch(alias), alias, port);
    const Result vlan =
        readResult<HealthCheck_GetVLANCheckResult>(alias, port, QVS_KEY_PORT_VLAN_CHECK_RESULT);
    const Result mtu = readResult<HealthCheck_GetMTUCheckResult>(alias, port, QVS_KEY_PORT_MTU_CHECK_RESULT);
    if (!vlan.first && !mtu.first) throw libraryFailure(named(alias, port) + ": check result", HYP_NOT_FOUND);
    Record record(out);
    record.field("switch", "switch", alias);
    record.field("port", "port", port);
    record.field("trunkedVlans", "VLANs trunked", rangeWords(vlan.first));
    record.field("untrunkedVlans", "VLANs not trunked", rangeWords(vlan.second));
    record.field("allowedMtus", "MTUs allowed", rangeWords(mtu.first));
    record.field("disallowedMtus", "MTUs not allowed", rangeWords(mtu.second));
    record.finish();
}

const Command kRows[] = {
    {.words = "health result",
     .summary = "show the VLANs and MTUs that the check has found on a port",
     .arguments = {kSwitchArgument, kPortArgument},
     .example = "qvs health result sw1 port0",
     .run = reads(result, touchedPort)},
};

}  // namespace

const std::span<const Command> kHealthCommands = kRows;

}  // namespace qvs::cli
