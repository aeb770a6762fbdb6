// SPDX-License-Identifier: Apache-2.0
// Fault injection: rules that match the trace line of a request and change its result.
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

// The effect of faults on one request. A fault can have a failure for each kind of request. A request of
// another kind fails with the default error of its kind.
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
    // Changes an answer. The client accepts at most `room` bytes.
    void change(std::string *output, size_t room) const;
    void add(const Effect &other);
};

class Faults {
  public:
    bool empty() const { return rules_.empty(); }
    // Adds the rule of a control request "fault.add" and returns its number. Throws JsonError or LabError.
    uint64_t add(Members *request);
    void clear() { rules_.clear(); }
    // Returns each rule as it was added, with its number and the number of matches and of uses.
    nlohmann::json list() const;

    // Counts a match for each rule that matches the line. Returns the combined effect of the rules that are
    // due.
    Effect match(std::string_view line);

  private:
    struct Rule {
        uint64_t id = 0;
        std::string pattern;
        uint32_t nth = 1;
        uint32_t count = 1;  // 0: no limit
        Effect effect;
        nlohmann::json given;
        uint64_t matched = 0;
        uint64_t fired = 0;
    };

    std::list<Rule> rules_;
    uint64_t nextId_ = 1;
};

// Matches a pattern. "*" stands for any text and "?" for any character. Other characters are literal, so that
// trace lines can be used as patterns.
bool globMatches(std::string_view pattern, std::string_view text);

}  // namespace qvs::kernel
