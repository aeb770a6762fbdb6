// SPDX-License-Identifier: Apache-2.0
// Metrics and health over HTTP.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "agent/rollout/machine.h"

namespace qvs::fleet {

// What the agent counts and measures.
struct Numbers {
    uint64_t goal = 0;
    uint64_t revision = 0;
    uint64_t applies = 0;
    uint64_t failures = 0;
    uint64_t corrections = 0;
    uint64_t requests = 0;
    uint32_t drift = 0;
    bool storeAnswers = false;
    bool coordinates = false;
    std::map<std::string, double> seconds;  // of the last change, by phase
    std::string problem;                    // why the host is not as it should be; empty: it is
};

class Web {
  public:
    // Listens on ADDRESS:PORT; "none" listens nowhere. Throws a usage failure.
    explicit Web(const std::string &listen);
    ~Web();
    Web(const Web &) = delete;
    Web &operator=(const Web &) = delete;

    int descriptor() const { return descriptor_; }
    // Answers a waiting client in a process of its own, so that a slow client delays nobody.
    void serve(const Numbers &numbers);
    // Reaps the processes that have ended.
    void reap();

  private:
    int descriptor_ = -1;
    int children_ = 0;
};

}  // namespace qvs::fleet
