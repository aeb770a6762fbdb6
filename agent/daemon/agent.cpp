// SPDX-License-Identifier: Apache-2.0
#include "agent/daemon/agent.h"

#include <sys/signalfd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <exception>

#include "agent/daemon/log.h"
#include "agent/daemon/switches.h"
#include "base/failure.h"

namespace qvs::fleet {
namespace {

using namespace std::chrono_literals;

constexpr auto kMostBackOff = 10'000ms;
// The watchdog of the unit waits longer than this and the longest request together.
constexpr auto kMostIdle = 2'000ms;
constexpr size_t kMostDifferences = 20;

}  // namespace

Agent::Agent(Settings settings)
    : settings_(std::move(settings)),
      disk_(settings_.directory),
      web_(settings_.listen),
      store_(settings_.access) {
    sigset_t watched;
    sigemptyset(&watched);
    for (const int signal : {SIGTERM, SIGINT, SIGCHLD})
        sigaddset(&watched, signal);
    sigprocmask(SIG_BLOCK, &watched, nullptr);
    std::signal(SIGPIPE, SIG_IGN);
    signals_ = signalfd(-1, &watched, SFD_CLOEXEC | SFD_NONBLOCK);
    status_.host = settings_.host;
    status_.version = QVS_VERSION;
    document_ = disk_.document(disk_.memory().applied);
}

Agent::~Agent() {
    close(signals_);
}

uint64_t Agent::wanted() const {
    const auto manifest = manifests_.find(head_.revision);
    if (manifest == manifests_.end()) return disk_.memory().applied;
    return wantedOf(head_, manifest->second, wave_, disk_.memory(), drained_.contains(settings_.host));
}

void Agent::run() {
    log(Level::Info, "host {}: revision {}, store {}", settings_.host, disk_.memory().applied,
        store_.endpoint());
    notify("READY=1");
    while (!ending_) {
        try {
            turn();
        } catch (const DiskFailure &failure) {
            log(Level::Error, "{}", failure.message);
            unsettle();
        } catch (const Failure &failure) {
            lose(failure.message);
        } catch (const std::exception &error) {
            lose(error.what());
        }
    }
    log(Level::Info, "ends");
    if (lease_ == 0) return;
    try {
        store_.revoke(lease_);
    } catch (const Failure &) {
        // The lease then expires by itself.
    }
}

// Ends the session. The next session reads everything again when the store answers.
void Agent::lose(const std::string &reason) {
    if (watch_ || backOff_ == 0ms || numbers_.storeAnswers) log(Level::Warning, "{}", reason);
    numbers_.storeAnswers = false;
    watch_.reset();
    // With a short lease, a lost host is reported soon. The agent therefore also retries soon.
    const std::chrono::milliseconds most(settings_.leaseSeconds * 1000 / 2);
    backOff_ = std::clamp(2 * backOff_, 100ms, std::min(kMostBackOff, most));
    connectAt_ = Clock::now() + std::chrono::milliseconds(std::uniform_int_distribution<int64_t>(
                                    backOff_.count() / 2, backOff_.count())(random_));
}

void Agent::turn() {
    ping();
    const Time now = Clock::now();
    if (!settled_ && now >= compareAt_) settle();
    if (!watch_ && now >= connectAt_) connect();
    keepAlive();
    if (settled_ && watch_) pursue();
    if (settled_) lookForChanges();
    if (settled_ && Clock::now() >= compareAt_) compareWithRevision();
    if (watch_) {
        stand();
        lead();
        report();
    }
    wait();
}

// Tells the service manager that the agent is alive.
void Agent::ping() {
    notify("WATCHDOG=1");
}

// The next turn undoes what is left of a change.
void Agent::unsettle() {
    settled_ = false;
    compareAt_ = {};
}

// Completes what the previous run left: undoes a change that was not confirmed, and records one that was
// confirmed but not recorded.
void Agent::settle() {
    compareAt_ = Clock::now() + 1s;
    try {
        Memory memory = disk_.memory();
        const bool undone = undoPending();
        if (memory.trying != 0) {
            const config::Document tried = disk_.document(memory.trying);
            const bool refused = memory.refused.contains(memory.trying);
            if (!undone && !refused && differencesFrom(tried).empty()) memory.applied = memory.trying;
            log(Level::Info, "revision {} {}", memory.trying,
                memory.applied == memory.trying ? "is complete" : "was undone");
            if (memory.applied != memory.trying && !refused && memory.attempts >= kMostAttempts)
                memory.refused[memory.trying] = {"apply", "the agent ended each time that it tried"};
            if (memory.applied == memory.trying) memory.attempts = 0;
            memory.trying = 0;
            disk_.keep(memory);
            document_ = disk_.document(memory.applied);
        }
        disk_.removeOthers();
        settled_ = true;
        compareAt_ = {};
        hostProblem_.clear();
        changed();
    } catch (const Failure &failure) {
        if (hostProblem_ != failure.message) log(Level::Warning, "{}", failure.message);
        hostProblem_ = failure.message;
    }
}

// Comparing documents is expensive. While the state of the host does not change, its fingerprint is enough.
void Agent::lookForChanges() {
    const std::optional<uint64_t> now = stateSum();
    if (now == compared_) return;
    compared_ = now;
    compareAt_ = {};
}

void Agent::compareWithRevision() {
    compareAt_ = Clock::now() + std::chrono::seconds(settings_.driftSeconds);
    disk_.probe();
    std::vector<std::string> differences;
    try {
        differences = differencesFrom(document_);
        if (!differences.empty() && settings_.enforce && !drained_.contains(settings_.host)) {
            log(Level::Warning, "undoes {} differences, the first: {}", differences.size(),
                differences.front());
            change({}, document_, false, 0);
            numbers_.corrections++;
            differences = differencesFrom(document_);
        }
    } catch (const Failure &failure) {
        if (hostProblem_ != failure.message) log(Level::Warning, "{}", failure.message);
        hostProblem_ = failure.message;
        return;
    }
    hostProblem_.clear();
    if (differences.size() != status_.drift)
        log(Level::Warning, "the host differs from revision {} in {} places", disk_.memory().applied,
            differences.size());
    status_.drift = static_cast<uint32_t>(differences.size());
    if (differences.size() > kMostDifferences) differences.resize(kMostDifferences);
    status_.differences = differences;
    changed();
}

// Updates the status and the metrics.
void Agent::changed() {
    const Memory &memory = disk_.memory();
    status_.revision = memory.applied;
    status_.trying = memory.trying;
    status_.problem = hostProblem_.empty() ? disk_.problem() : hostProblem_;
    status_.refused = refusalOf(wanted(), head_, memory);
    const Memory::Refusal refusal =
        status_.refused == 0 ? Memory::Refusal() : memory.refused.at(status_.refused);
    status_.step = refusal.step;
    status_.reason = refusal.reason;
    numbers_.goal = head_.revision;
    numbers_.revision = memory.applied;
    numbers_.drift = status_.drift;
    numbers_.requests = store_.requests();
    numbers_.coordinates = leads_;
    numbers_.problem = status_.problem;
    if (!numbers_.storeAnswers) numbers_.problem = "the store does not answer";
    if (status_.refused != 0) numbers_.problem = fmt::format("{}: {}", status_.step, status_.reason);
}

std::optional<std::string> Agent::takeSignals() {
    signalfd_siginfo information{};
    std::optional<std::string> ends;
    while (read(signals_, &information, sizeof information) == sizeof information) {
        if (information.ssi_signo == SIGCHLD) {
            web_.reap();
        } else {
            ends = strsignal(static_cast<int>(information.ssi_signo));
        }
    }
    return ends;
}

void Agent::wait() {
    Time until = Clock::now() + kMostIdle;
    until = std::min(until, compareAt_);
    if (!watch_) until = std::min(until, connectAt_);
    if (watch_) until = std::min(until, keepAliveAt_);
    if (watch_ && pursued_ != 0) until = std::min(until, pursueAt_);
    if (watch_ && settings_.coordinate && coordinator_ == 0) until = std::min(until, standAt_);
    const auto most =
        std::clamp(std::chrono::ceil<std::chrono::milliseconds>(until - Clock::now()), 0ms, kMostIdle);
    std::array<pollfd, 2> inputs = {{{signals_, POLLIN, 0}, {web_.descriptor(), POLLIN, 0}}};
    const std::span<pollfd> used(inputs.data(), web_.descriptor() < 0 ? 1 : 2);
    if (watch_) {
        const Watch::News news = watch_->wait(used, most);
        for (const Event &event : news.events)
            take(event);
        if (!news.ended.empty()) lose(news.ended);
    } else {
        poll(used.data(), used.size(), static_cast<int>(most.count()));
    }
    if (inputs[0].revents != 0 && takeSignals()) ending_ = true;
    if (inputs[1].revents != 0) {
        changed();
        web_.serve(numbers_);
    }
}

}  // namespace qvs::fleet
