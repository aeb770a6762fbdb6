// SPDX-License-Identifier: Apache-2.0
// Requests and answers of the JSON gateway of etcd. It writes 64-bit numbers as strings, omits members that
// are zero, false or empty, and encodes keys and values in base64.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "agent/store/store.h"

namespace qvs::fleet {

std::string rangeRequest(const Keys &keys);
std::string transactionRequest(const Transaction &transaction);
std::string leaseRequest(const char *member, uint64_t lease, uint32_t seconds);
std::string watchRequest(const Keys &keys, uint64_t from);
std::string authenticationRequest(std::string_view user, std::string_view password);

// All throw Failure (NoAnswer) for text that is not an answer of the gateway.
Found readRange(std::string_view answer);
// The revision of the store that a transaction made; 0 if its comparisons failed.
uint64_t readCommitted(std::string_view answer);
uint64_t readLease(std::string_view answer);
// Whether a keep-alive found its lease.
bool readAlive(std::string_view answer);
std::string readToken(std::string_view answer);

// Reads a line of a watch. Returns the reason if the watch has ended, else nothing.
std::string readWatch(std::string_view line, std::vector<Event> &events);

// The error text of an answer with a status other than 200.
struct Refusal {
    enum class Kind { Refused, Unavailable, TokenExpired };
    Kind kind = Kind::Refused;
    std::string message;
};
Refusal readRefusal(long status, std::string_view answer);

}  // namespace qvs::fleet
