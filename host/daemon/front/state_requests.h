// SPDX-License-Identifier: Apache-2.0
// Reads, executes and describes the requests of the state library.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "daemon/front/kernel.h"
#include "wire/noncopyable.h"
#include "wire/protocol.h"

namespace qvs::kernel {

struct StateRow;

// The fields of all state requests. Each kind uses some of them. The texts point into the payload.
struct StateRequest : private wire::Noncopyable {
    const StateRow *row = nullptr;
    std::string payload;
    Scope scope = Scope::Global;
    std::string_view switchId;
    std::string_view portId;
    std::string_view key;    // or the class name
    std::string_view value;  // or the container of a new port
    uint32_t type = 0;       // or the capacity of a switch
    uint32_t version = 0;
    bool asFile = false;  // the client accepts a large blob as a file

    Place place() const { return {scope, switchId, portId}; }
};

struct StateAnswer {
    Status status = Status::Ok;
    bool hasValue = false;  // depends only on the kind of the request
    std::string value;
    Blob blob;  // replaces `value` for the whole state and for large values
};

bool isStateRequest(wire::Kind kind);
// Reads a request. Returns null if the payload is malformed.
std::shared_ptr<const StateRequest> parseStateRequest(wire::Kind kind, std::string payload);
// Returns the trace line up to " -> ".
std::string describe(const StateRequest &request);
// Returns the rest of the trace line, such as " -> 0x0 length=4".
std::string describe(const StateAnswer &answer);

StateAnswer execute(const StateRequest &request, Kernel &kernel);
// Return the answer to a request that fails.
StateAnswer failedState(wire::Kind kind, Status status);
StateAnswer failed(const StateRequest &request, Status status);
// Applies the changes of faults to the value of an answer.
void changeValue(const Effect &effect, StateAnswer *answer);

}  // namespace qvs::kernel
