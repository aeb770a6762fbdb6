// SPDX-License-Identifier: Apache-2.0
// The agent of a host: follows the store, makes the host match, reports, and coordinates rollouts when it is
// elected.
#pragma once

#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <string>

#include "agent/daemon/disk.h"
#include "agent/daemon/web.h"
#include "agent/rollout/machine.h"
#include "agent/settings/settings.h"
#include "agent/store/store.h"

namespace qvs::fleet {

class Agent {
  public:
    explicit Agent(Settings settings);
    ~Agent();

    // Runs until SIGTERM or SIGINT.
    void run();

  private:
    using Clock = std::chrono::steady_clock;
    using Time = Clock::time_point;

    // --- agent.cpp: the loop ---
    void turn();
    void settle();
    void unsettle();
    void wait();
    void lose(const std::string &reason);
    void compareWithRevision();
    void changed();
    void ping();
    void lookForChanges();
    std::optional<std::string> takeSignals();

    // --- session.cpp: what is known of the store ---
    void connect();
    void readTarget();
    void readManifest();
    void take(const Event &event);
    void keepAlive();
    void renew();
    void report();
    [[nodiscard]] bool writeStatus(std::vector<Comparison> comparisons);
    std::string statusText();
    void stand();
    void lead();
    void publish(const Head &next);

    // --- trial.cpp: one change of the host ---
    void pursue();
    config::Document fetch(const Manifest &manifest);
    bool attempt(uint64_t revision, const config::Document &wanted, bool prune);
    bool postpone(uint64_t revision, const std::string &reason);
    std::string checkHost(const std::map<std::string, bool> &before, std::string &step);
    bool agree(uint64_t revision, Time until, std::string &problem);
    void refuse(uint64_t revision, const std::string &step, const std::string &reason);
    void finish(uint64_t revision);
    void measure(const char *phase);

    uint64_t wanted() const;

    Settings settings_;
    Disk disk_;
    Web web_;
    Store store_;
    int signals_ = -1;
    bool ending_ = false;
    bool settled_ = false;  // what an earlier run has left is undone
    std::mt19937 random_{std::random_device()()};

    // The session with the store: a lease, and what was read and is watched.
    uint64_t lease_ = 0;
    std::unique_ptr<Watch> watch_;
    Head head_;
    uint64_t headModified_ = 0;
    std::map<uint64_t, Manifest> manifests_;
    std::optional<uint32_t> wave_;
    std::map<std::string, bool, std::less<>> drained_;
    uint64_t coordinator_ = 0;  // the revision that created the key of whoever coordinates; 0: nobody does
    bool leads_ = false;
    bool stale_ = false;  // the view of the coordinator has to be read again
    View view_;

    Status status_;
    std::string reported_;
    uint64_t statusModified_ = 0;  // the revision of the store that has the last status; 0: none has
    Numbers numbers_;
    std::string hostProblem_;    // why the switches cannot be read or changed
    config::Document document_;  // of the revision that the host has
    Time phase_;
    uint64_t pursued_ = 0;
    Time pursueAt_{};
    Time connectAt_{};
    Time keepAliveAt_{};
    Time compareAt_{};
    std::optional<uint64_t> compared_;  // the state of the switches when they were compared
    Time standAt_{};
    std::chrono::milliseconds backOff_{};
};

}  // namespace qvs::fleet
