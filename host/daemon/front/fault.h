// SPDX-License-Identifier: Apache-2.0
// Fault injection: rules that match the trace line of a request and change what happens to it.
#pragma once

#include <cstdint>
#include <list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

#include "daemon/devices/json_members.h"
#include "daemon/front/lab.h"
#include "daemon/model/status.h"

namespace qvs::kernel {

// What is to happen to one request. A failure may be given for each family of requests; the one of a family
// that was given none is a plain one.
struct Effect {
    enum class Kill { No, Before, Middle, After };
    struct Patch {
        uint32_t offset = 0;
        std::string bytes;
    };

    std::optional<int> error;      // of a device request
    std::optional<Status> status;  // of a state request
    std::optional<int> exit;       // of a shell request
    uint32_t delayMs = 0;
    Kill kill = Kill::No;
    std::vector<Patch> patches;
    std::optional<uint32_t> truncate;
    std::vector<std::shared_ptr<const Lab>> labs;

    bool fails() const { return error || status || exit; }
    int errorOr() const;
    Status statusOr() const { return status.value_or(Status::Failure); }
    int exitOr() const { return exit.value_or(1); }
    bool changesOutput() const { return !patches.empty() || truncate; }
    // Changes an answer of which the client takes at most `room` bytes.
    void change(std::string *output, size_t room) const;
    void add(const Effect &other);
};

class Faults {
  public:
    bool empty() const { return rules_.empty(); }
    // Adds a rule as the control request "fault.add" gives it; throws JsonError or LabError. Returns its
    // number.
    uint64_t add(Members *request);
    void clear() { rules_.clear(); }
    // Each rule as it was given, with its number and how often it matched and fired.
    nlohmann::json list() const;

    // The sum of all rules that fire for this request.
    Effect match(std::string_view line);

  private:
    struct Rule {
        uint64_t id = 0;
        std::string pattern;
        uint32_t nth = 1;
        uint32_t count = 1;  // 0: for ever
        Effect effect;
        nlohmann::json given;
        uint64_t matched = 0;
        uint64_t fired = 0;
    };

    std::list<Rule> rules_;
    uint64_t nextId_ = 1;
};

// "*" is any text, "?" any character; all else is literal, so that a trace line can be pasted.
bool globMatches(std::string_view pattern, std::string_view text);

}  // namespace qvs::kernel
