// SPDX-License-Identifier: Apache-2.0
// The table of the requests of the state library.
#include "daemon/front/state_requests.h"

#include <algorithm>
#include <vector>

#include <fmt/format.h>

#include "daemon/devices/busy_ports.h"
#include "daemon/model/text.h"
#include "state_library/property_list.h"
#include "wire/message.h"

namespace qvs::kernel {

namespace {

using wire::Kind;

// Reads a field and shows it in the trace.
struct StateField {
    void (*read)(wire::Reader &reader, StateRequest *request) = nullptr;
    void (*show)(const StateRequest &request, const char *label, std::string *line) = nullptr;
    const char *label = nullptr;
};

template <auto member>
constexpr StateField text(const char *label) {
    return {[](wire::Reader &reader, StateRequest *request) { request->*member = reader.text(); },
            [](const StateRequest &request, const char *name, std::string *line) {
                *line += fmt::format(" {}={}", name, quote(request.*member));
            },
            label};
}

// A text whose length is shown in the trace.
template <auto member>
constexpr StateField bytes(const char *label) {
    StateField field = text<member>(label);
    field.show = [](const StateRequest &request, const char *name, std::string *line) {
        *line += fmt::format(" {}={}", name, (request.*member).size());
    };
    return field;
}

template <auto member>
constexpr StateField number(const char *label) {
    return {[](wire::Reader &reader, StateRequest *request) { request->*member = reader.u32(); },
            [](const StateRequest &request, const char *name, std::string *line) {
                *line += fmt::format(" {}={}", name, request.*member);
            },
            label};
}

constexpr StateField kSwitch = text<&StateRequest::switchId>("switch");
constexpr StateField kPort = text<&StateRequest::portId>("port");
// The port field of a property of a switch is empty and is not shown.
constexpr StateField kPropertyPort = {kPort.read,
                                      [](const StateRequest &request, const char *name, std::string *line) {
                                          if (!request.portId.empty() || request.scope == Scope::Port)
                                              kPort.show(request, name, line);
                                      },
                                      "port"};
constexpr StateField kKey = text<&StateRequest::key>("key");
constexpr StateField kValue = bytes<&StateRequest::value>("length");
constexpr StateField kType = number<&StateRequest::type>("type");
// The trace shows the scope in the name of the request.
constexpr StateField kScope = {
    [](wire::Reader &reader, StateRequest *request) { request->scope = static_cast<Scope>(reader.u8()); }};
constexpr StateField kAsFile = {
    [](wire::Reader &reader, StateRequest *request) { request->asFile = reader.u8() != 0; }};

constexpr const char *kScopeNames[] = {"GlobalProp", "HostProp", "PortData"};

Status getState(const StateRequest &, Kernel &kernel, StateAnswer *answer) {
    lookAtAll(kernel.model);
    answer->blob = kernel.snapshot.get();
    return answer->blob.owner == nullptr ? Status::NoMemory : Status::Ok;
}

Status getProperty(const StateRequest &request, Kernel &kernel, StateAnswer *answer) {
    constexpr size_t kShared = 64 << 10;
    lookAt(kernel.model, request.place(), request.key);
    // All clients share one copy of a large value, even if they read it slowly.
    const PropertyRef stored = kernel.model.properties.stored(request.place(), request.key);
    if (stored == nullptr || stored->value.size() < kShared)
        return kernel.model.properties.get(request.place(), request.key, &answer->value);
    answer->blob = {stored, stored->value};
    return Status::Ok;
}

Status setProperty(const StateRequest &request, Kernel &kernel, StateAnswer *) {
    return kernel.model.properties.set(request.place(), {request.key, request.value, request.type});
}

Status clearProperty(const StateRequest &request, Kernel &kernel, StateAnswer *) {
    return kernel.model.properties.clear(request.place(), request.key);
}

Status addSwitch(const StateRequest &request, Kernel &kernel, StateAnswer *) {
    return kernel.model.dataPaths.addSwitch(request.switchId, request.key, request.type, request.version);
}

// Executes a change that needs only the identifier of a switch.
template <Status (DataPaths::*change)(std::string_view id)>
Status changeSwitch(const StateRequest &request, Kernel &kernel, StateAnswer *) {
    return (kernel.model.dataPaths.*change)(request.switchId);
}

Status addPort(const StateRequest &request, Kernel &kernel, StateAnswer *) {
    if (kernel.model.inventory.findSwitch(request.switchId) == nullptr) return Status::NotFound;
    const auto unpacked = mesh::unpackProperties(request.value);
    if (!unpacked) return Status::BadParameter;
    std::vector<PropertyView> properties;
    properties.reserve(unpacked->size());
    for (const auto &property : *unpacked) {
        if (property.key.empty()) return Status::BadParameter;
        properties.push_back({property.key, property.value, property.type});
    }
    return kernel.model.dataPaths.addPort(request.switchId, request.portId, properties);
}

Status removePort(const StateRequest &request, Kernel &kernel, StateAnswer *) {
    return kernel.model.dataPaths.removePort(request.switchId, request.portId);
}

}  // namespace

struct StateRow {
    Kind kind;
    const char *name;
    Status (*serve)(const StateRequest &request, Kernel &kernel, StateAnswer *answer);
    std::vector<StateField> fields;
    bool hasValue = false;
};

namespace {

const StateRow kRows[] = {
    {Kind::StateGet, "StateGet", getState, {kAsFile}, true},
    {Kind::PropGet, "Get", getProperty, {kScope, kSwitch, kPropertyPort, kKey}, true},
    {Kind::PropSet, "Set", setProperty, {kScope, kSwitch, kPropertyPort, kKey, kValue, kType}},
    {Kind::PropClear, "Clear", clearProperty, {kScope, kSwitch, kPropertyPort, kKey}},
    {Kind::SwitchAdd,
     "SwitchAdd",
     addSwitch,
     {kSwitch, text<&StateRequest::key>("class"), number<&StateRequest::type>("maxPorts"),
      number<&StateRequest::version>("version")}},
    {Kind::SwitchAssociate, "SwitchAssociate", changeSwitch<&DataPaths::associate>, {kSwitch}},
    {Kind::SwitchDissociate, "SwitchDissociate", changeSwitch<&DataPaths::dissociate>, {kSwitch}},
    {Kind::SwitchRemove, "SwitchRemove", changeSwitch<&DataPaths::removeSwitch>, {kSwitch}},
    {Kind::PortAdd, "PortAdd", addPort, {kSwitch, kPort, kValue}},
    {Kind::PortRemove, "PortRemove", removePort, {kSwitch, kPort}},
};

const StateRow *findRow(Kind kind) {
    const auto found = std::find_if(std::begin(kRows), std::end(kRows),
                                    [&](const StateRow &row) { return row.kind == kind; });
    return found == std::end(kRows) ? nullptr : found;
}

StateAnswer answerOf(const StateRow &row, Status status) {
    StateAnswer answer;
    answer.status = status;
    answer.hasValue = row.hasValue;
    return answer;
}

}  // namespace

bool isStateRequest(Kind kind) {
    return findRow(kind) != nullptr;
}

std::shared_ptr<const StateRequest> parseStateRequest(Kind kind, std::string payload) {
    auto request = std::make_shared<StateRequest>();
    request->row = findRow(kind);
    request->payload = std::move(payload);
    wire::Reader reader(request->payload);
    for (const StateField &field : request->row->fields)
        field.read(reader, request.get());
    return reader.complete() && request->scope <= Scope::Port ? request : nullptr;
}

std::string describe(const StateRequest &request) {
    const StateRow &row = *request.row;
    std::string line = "state ";
    if (row.fields.front().read == kScope.read) line += kScopeNames[static_cast<size_t>(request.scope)];
    line += row.name;
    for (const StateField &field : row.fields) {
        if (field.show != nullptr) field.show(request, field.label, &line);
    }
    return line;
}

std::string describe(const StateAnswer &answer) {
    std::string text = fmt::format(" -> {:#x}", static_cast<uint32_t>(answer.status));
    if (answer.hasValue && answer.status == Status::Ok) {
        text += fmt::format(" length={}", answer.blob.owner ? answer.blob.bytes.size() : answer.value.size());
    }
    return text;
}

StateAnswer execute(const StateRequest &request, Kernel &kernel) try {
    StateAnswer answer = answerOf(*request.row, Status::Ok);
    answer.status = request.row->serve(request, kernel, &answer);
    return answer;
} catch (const StoreError &error) {
    constexpr auto kIoError = static_cast<Status>(0xbad0008);
    logStoreFailure(kernel.store, error);
    return failed(request, error.full() ? Status::NoSpace : kIoError);
}

StateAnswer failed(const StateRequest &request, Status status) {
    return answerOf(*request.row, status);
}

StateAnswer failedState(Kind kind, Status status) {
    return answerOf(*findRow(kind), status);
}

void changeValue(const Effect &effect, StateAnswer *answer) {
    if (!effect.changesOutput() || !answer->hasValue) return;
    if (answer->blob.owner != nullptr) {
        answer->value = answer->blob.bytes;
        answer->blob = {};
    }
    effect.change(&answer->value, wire::kMaxRequest);
}

}  // namespace qvs::kernel
