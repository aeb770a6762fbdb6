// The requests of the state library: reading them, describing them in the trace, carrying them out.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "daemon/front/kernel.h"
#include "wire/protocol.h"

namespace qvs::kernel {

// The fields of all state requests; each kind uses its own.
struct StateRequest {
    wire::Kind kind = wire::Kind::StateGet;
    Place place;
    std::string_view key;    // or the class name
    std::string_view value;  // or the container of a new port
    uint32_t type = 0;       // or the capacity of a switch
    uint32_t version = 0;
    bool asFile = false;  // the client takes a large blob as a file
};

struct StateAnswer {
    Status status = Status::Ok;
    bool hasValue = false;  // of the request's kind, whatever the status
    std::string value;
    Blob blob;  // instead of `value`, for the whole state
};

bool isStateRequest(wire::Kind kind);
// Nothing when the payload is malformed. The views lie within it.
std::optional<StateRequest> parseStateRequest(wire::Kind kind, std::string_view payload);
// The trace line up to " -> ".
std::string describe(const StateRequest &request);
// " -> 0x0 length=4"
std::string describe(const StateAnswer &answer);

StateAnswer execute(const StateRequest &request, Kernel &kernel);
// A failure that was asked for.
StateAnswer failed(const StateRequest &request, Status status);
// What faults change of a value; the whole state becomes a plain value by it.
void changeValue(const Effect &effect, StateAnswer *answer);

}  // namespace qvs::kernel
