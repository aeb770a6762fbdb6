// SPDX-License-Identifier: Apache-2.0
// The route-table module. It checks the length of operations and keeps them for the status of the host.
//
// The input of an operation on routes is a u32 count, count * 136 bytes and 5 more bytes. The input of a
// modification is a u32 count, count * 5 bytes and 128 more bytes. The caller chooses their command numbers,
// so only the length distinguishes them. An operation on a port has its own command: u32, u32, u8 flag.
#include <cerrno>

#include <nlohmann/json.hpp>

#include "daemon/devices/device.h"
#include "daemon/model/text.h"

namespace qvs::kernel {

namespace {

constexpr uint32_t kPortCommand = 10;
constexpr uint32_t kPortSize = 9;
constexpr uint32_t kShortest = 9;
constexpr uint32_t kMostEntries = 1024;
// The number of operations that are kept.
constexpr size_t kKept = 64;

// The length of a block of count entries is count * entry + fixed.
struct Form {
    const char *kind;
    uint32_t entry;
    uint32_t fixed;
};
constexpr Form kForms[] = {{"operation", 136, 9}, {"modification", 5, 132}};

const Form *formOf(std::string_view block) {
    const uint64_t count = u32At(block, 0);
    for (const Form &form : kForms) {
        if (block.size() == count * form.entry + form.fixed) return &form;
    }
    return nullptr;
}

// A stored operation has a running number: u32 command and the input.
constexpr size_t kInputAt = sizeof(uint32_t);

bool isOperation(std::string_view kept) {
    if (kept.size() < kInputAt + kShortest) return false;
    const std::string_view input = kept.substr(kInputAt);
    return u32At(kept, 0) == kPortCommand ? input.size() == kPortSize : formOf(input) != nullptr;
}

// There is room for one more, because the newest operation is added before the oldest is removed.
constexpr Table<uint64_t, std::string> kOperations("rtm", kNumber<uint64_t, 10, 20>, kBytes<isOperation>,
                                                   kKept + 1);
constexpr const AnyTable *kTables[] = {&kOperations};

void keep(const Call &call) {
    const auto &kept = call.model.tables.rows(kOperations);
    call.model.tables.setRow(kOperations, nextNumber(kept),
                             Record(kInputAt).put(0, call.command).take() + std::string(call.input));
    while (kept.size() > kKept)
        call.model.tables.clearRow(kOperations, uint64_t{kept.begin()->first});
}

Result routes(const Call &call) {
    if (formOf(call.input) == nullptr) return failure(EINVAL);
    if (u32At(call.input, 0) > kMostEntries) return failure(ENOSPC);
    keep(call);
    return {};
}

Result port(const Call &call) {
    if (call.input.size() != kPortSize) return failure(EINVAL);
    keep(call);
    return {};
}

constexpr Command kCommands[] = {
    {kPortCommand, kPortSize, "RTMPortOp", port},
    {Command::kAny, kShortest, "RTMOp", routes},
};

nlohmann::json describeOperation(uint32_t command, std::string_view input) {
    nlohmann::json operation = {{"command", command}};
    if (command == kPortCommand) {
        operation["kind"] = "port";
        operation["first"] = u32At(input, 0);
        operation["second"] = u32At(input, 4);
        operation["flag"] = u8At(input, 8);
        return operation;
    }
    operation["kind"] = formOf(input)->kind;
    operation["count"] = u32At(input, 0);
    operation["hex"] = hexDigits(input);
    return operation;
}

void describe(const Model &model, nlohmann::json *status) {
    auto operations = nlohmann::json::array();
    for (const auto &[number, operation] : model.tables.rows(kOperations))
        operations.push_back(
            describeOperation(u32At(operation, 0), std::string_view(operation).substr(kInputAt)));
    (*status)["routeTable"] = operations;
}

}  // namespace

constexpr DevicePart kRouteTable = {.commands = kCommands, .tables = kTables, .describe = describe};

}  // namespace qvs::kernel
