// SPDX-License-Identifier: Apache-2.0
// The requests of the state library: a table of kinds, each with its fields, its trace line and its handler.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "daemon/front/kernel.h"
#include "wire/protocol.h"

namespace qvs::kernel {

struct StateRow;

// The fields of all state requests; each kind uses its own. The texts lie within the payload.
struct StateRequest {
    StateRequest() = default;
    StateRequest(const StateRequest &) = delete;
    StateRequest &operator=(const StateRequest &) = delete;

    const StateRow *row = nullptr;
    std::string payload;
    Scope scope = Scope::Global;
    std::string_view switchId;
    std::string_view portId;
    std::string_view key;    // or the class name
    std::string_view value;  // or the container of a new port
    uint32_t type = 0;       // or the capacity of a switch
    uint32_t version = 0;
    bool asFile = false;  // the client takes a large blob as a file

    Place place() const { return {scope, switchId, portId}; }
};

struct StateAnswer {
    Status status = Status::Ok;
    bool hasValue = false;  // of the request's kind, whatever the status
    std::string value;
    Blob blob;  // instead of `value`, for the whole state
};

bool isStateRequest(wire::Kind kind);
// Null when the payload is malformed.
std::shared_ptr<const StateRequest> parseStateRequest(wire::Kind kind, std::string payload);
// The trace line up to " -> ".
std::string describe(const StateRequest &request);
// " -> 0x0 length=4"
std::string describe(const StateAnswer &answer);

StateAnswer execute(const StateRequest &request, Kernel &kernel);
// The answer to a request of this kind that fails.
StateAnswer failedState(wire::Kind kind, Status status);
StateAnswer failed(const StateRequest &request, Status status);
// What faults change of a value; the whole state becomes a plain value by it.
void changeValue(const Effect &effect, StateAnswer *answer);

}  // namespace qvs::kernel
