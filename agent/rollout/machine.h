// SPDX-License-Identifier: Apache-2.0
// The decisions of agents and of the coordinator, without input and output. tests/agent/model.py checks the
// same decisions in all schedules of a small fleet.
#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>

#include "agent/rollout/records.h"

namespace qvs::fleet {

// What an agent keeps on its disk.
struct Memory {
    uint64_t applied = 0;  // the revision that the host has
    uint64_t trying = 0;   // the one that it changes to, or 0
    uint64_t tried = 0;    // the last one that it changed to, and how often
    uint32_t attempts = 0;
    struct Refusal {
        std::string step;
        std::string reason;
    };
    std::map<uint64_t, Refusal> refused;
};

// An agent refuses a revision after it was killed this many times while trying it.
inline constexpr uint32_t kMostAttempts = 3;

// The revision that the fleet wants on the host. `wave` is that of the host in the plan of the revision;
// nothing for a host that joined later, which belongs to the last wave. A drained host keeps its revision.
uint64_t wantedOf(const Head &head, const Manifest &manifest, std::optional<uint32_t> wave,
                  const Memory &memory, bool drained);

// The revision that the host shall have: what it has refused is never tried again.
uint64_t goalOf(uint64_t wanted, const Memory &memory);

// The refusal that the host reports: of what is wanted now, else of the published revision. 0: none. Nobody
// waits for a host that has refused to go back.
uint64_t refusalOf(uint64_t wanted, const Head &head, const Memory &memory);

// The fleet as the coordinator sees it. A host whose lease has expired has no status.
struct View {
    Head head;
    uint64_t headModified = 0;  // the revision of the store that has written it; 0: there is none
    uint64_t read = 0;          // that of the store when the view was read
    std::string coordinator;    // the host that coordinates; empty: none does
    Manifest manifest;
    std::map<std::string, uint32_t, std::less<>> plan;  // the wave of each host
    std::map<std::string, Status, std::less<>> statuses;
    std::set<std::string, std::less<>> drained;
};

// The next head; nothing while the rollout waits, or after it has ended.
std::optional<Head> decide(const View &view);

// A text about what the open waves wait for: "waits for h3, h7".
struct Progress {
    size_t hosts = 0;  // of the open waves
    size_t done = 0;
    std::set<std::string> waiting;
    std::set<std::string> away;
    std::set<std::string> failed;
};
Progress progressOf(const View &view);

}  // namespace qvs::fleet
