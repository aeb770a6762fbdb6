// SPDX-License-Identifier: Apache-2.0
// The texts of the JSON gateway of etcd. It writes 64-bit numbers as texts, leaves out what is zero, false or
// empty, and has keys and values in base64.
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

// Each throws Failure (NoAnswer) for what is no answer of the gateway.
Found readRange(std::string_view answer);
// The revision of the store that a transaction has made; 0 when its comparisons did not hold.
uint64_t readCommitted(std::string_view answer);
uint64_t readLease(std::string_view answer);
// Whether a keep-alive has found its lease.
bool readAlive(std::string_view answer);
std::string readToken(std::string_view answer);

// A line of a watch. Returns why the watch is over, or nothing.
std::string readWatch(std::string_view line, std::vector<Event> &events);

// What an answer with another status than 200 says.
struct Refusal {
    enum class Kind { Refused, Unavailable, TokenExpired };
    Kind kind = Kind::Refused;
    std::string message;
};
Refusal readRefusal(long status, std::string_view answer);

}  // namespace qvs::fleet
