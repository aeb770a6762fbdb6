// SPDX-License-Identifier: Apache-2.0
// One change of the host: the agent fetches it, applies it, checks it, reports it to the store, and then
// confirms or undoes it.
#include <algorithm>
#include <thread>

#include "agent/daemon/agent.h"
#include "agent/daemon/check.h"
#include "agent/daemon/log.h"
#include "agent/daemon/switches.h"
#include "agent/rollout/documents.h"
#include "base/failure.h"
#include "config/library/clock.h"

namespace qvs::fleet {
namespace {

using namespace std::chrono_literals;

// The time that links have to come up again.
constexpr auto kTimeForLinks = 5s;
constexpr size_t kMostRefusals = 100;

}  // namespace

void Agent::measure(const char *phase) {
    const Time now = Clock::now();
    numbers_.seconds[phase] = std::chrono::duration<double>(now - phase_).count();
    phase_ = now;
}

void Agent::pursue() {
    if (Clock::now() < pursueAt_) return;
    readManifest();
    pursued_ = 0;
    const uint64_t wanted = goalOf(this->wanted(), disk_.memory());
    if (wanted == disk_.memory().applied) return;
    pursued_ = wanted;
    pursueAt_ = Clock::now() + 1s;
    phase_ = Clock::now();
    Manifest manifest = manifests_[head_.revision];
    if (wanted != head_.revision) {
        const Found found = store_.range({settings_.keys.revision(wanted)});
        if (found.entries.empty()) return refuse(wanted, "fetch", "the store does not have this revision");
        manifest = fleet::readManifest(found.entries.front().value);
    }
    config::Document document;
    try {
        document = fetch(manifest);
    } catch (const Failure &failure) {
        if (failure.exit == Exit::NoAnswer) throw;
        return refuse(wanted, "fetch", failure.message);
    }
    measure("fetch");
    if (attempt(wanted, document, manifest.prunes)) pursued_ = 0;
}

// The document of this host.
config::Document Agent::fetch(const Manifest &manifest) {
    return composed(manifest.documents, settings_.host, settings_.labels,
                    [&](const DocumentOf &of) { return readDocumentOf(store_, settings_.keys, of); });
}

// Returns false if the change is to be retried.
bool Agent::attempt(uint64_t revision, const config::Document &wanted, bool prune) {
    Memory memory = disk_.memory();
    memory.attempts = memory.tried == revision ? memory.attempts + 1 : 1;
    memory.tried = memory.trying = revision;
    disk_.keepDocument(revision, wanted);
    disk_.keep(memory);
    log(Level::Info, "tries revision {}", revision);
    bool pending = false;
    std::map<std::string, bool> before;
    try {
        before = uplinks();
        pending = change(document_, wanted, prune, settings_.confirmSeconds);
    } catch (const Failure &failure) {
        if (failure.exit == Exit::Failed || failure.exit == Exit::Usage || failure.exit == Exit::NotFound)
            return refuse(revision, "apply", failure.message), true;
        return postpone(revision, failure.message);
    }
    measure("apply");
    const Time until = Clock::now() + std::chrono::milliseconds(settings_.confirmSeconds * 900);
    std::string step;
    std::string problem = checkHost(before, step);
    measure("check");
    // If the host was lost during the change, the revision is neither refused nor confirmed, whatever the
    // check command returned: it may not have looked at the switches.
    try {
        (void)uplinks();
    } catch (const Failure &failure) {
        return postpone(revision, failure.message);
    }
    if (problem.empty() && !agree(revision, until, problem)) {
        if (problem.empty()) {
            log(Level::Info, "revision {} was withdrawn, and is undone", revision);
            unsettle();
            return true;
        }
        step = "store";
    }
    if (!problem.empty()) return refuse(revision, step, problem), true;
    try {
        if (pending && !confirmChange())
            return refuse(revision, "confirm", "the time to confirm was over, and the change was undone"),
                   true;
    } catch (const Failure &failure) {
        log(Level::Warning, "revision {}: {}", revision, failure.message);
        unsettle();
        return false;
    }
    measure("confirm");
    document_ = wanted;
    finish(revision);
    return true;
}

// Undoes the change, and retries it when the host answers. This does not count as an attempt that killed the
// agent.
bool Agent::postpone(uint64_t revision, const std::string &reason) {
    log(Level::Warning, "revision {} waits: {}", revision, reason);
    // If the disk is full, the next turn undoes the change.
    unsettle();
    Memory memory = disk_.memory();
    memory.trying = 0;
    memory.attempts = 0;
    disk_.keep(memory);
    return false;
}

// The reason why the change has to be undone, and the step that found it; empty if the change is good.
std::string Agent::checkHost(const std::map<std::string, bool> &before, std::string &step) {
    const auto meanwhile = [&] {
        ping();
        try {
            keepAlive();
        } catch (const Failure &) {
            // The end of the change decides whether the store is reachable.
        }
    };
    step = "uplinks";
    for (const Time end = Clock::now() + kTimeForLinks;;) {
        std::string down;
        try {
            for (const auto &[uplink, up] : uplinks()) {
                const auto was = before.find(uplink);
                if (was != before.end() && was->second && !up) down = uplink;
            }
        } catch (const Failure &failure) {
            down = failure.message;
        }
        if (down.empty()) break;
        if (Clock::now() >= end) return down + " has lost its link";
        meanwhile();
        std::this_thread::sleep_for(100ms);
    }
    step = "check";
    if (settings_.check.empty()) return {};
    return runCheck(settings_.check, std::chrono::seconds(settings_.checkSeconds), meanwhile);
}

// Writes the status to the store, in a transaction that succeeds only while this revision is still the
// desired one. If it is not, returns false without reporting a problem.
bool Agent::agree(uint64_t revision, Time until, std::string &problem) {
    status_.trying = revision;
    do {
        ping();
        problem.clear();
        try {
            if (lease_ == 0) lease_ = store_.grant(settings_.leaseSeconds);
            status_.time = utcTime();
            if (writeStatus({{settings_.keys.head(), Comparison::What::Modified, headModified_}}))
                return true;
            const Found found = store_.range({settings_.keys.head()});
            if (found.entries.empty()) return false;
            head_ = readHead(found.entries.front().value);
            headModified_ = found.entries.front().modified;
            if (goalOf(wanted(), disk_.memory()) != revision) return false;
            continue;
        } catch (const Failure &failure) {
            problem = failure.message;
            // A lease that has expired is not found, and nothing renews it.
            if (failure.exit != Exit::NoAnswer) lease_ = 0;
        }
        std::this_thread::sleep_for(200ms);
    } while (Clock::now() < until);
    if (problem.empty()) problem = "the store changes too often";
    return false;
}

// Records the refusal first, so that this revision is never tried again, and then undoes the change.
void Agent::refuse(uint64_t revision, const std::string &step, const std::string &reason) {
    log(Level::Error, "refuses revision {}: {}: {}", revision, step, reason);
    // If the disk is full, the next turn undoes the change.
    unsettle();
    Memory memory = disk_.memory();
    memory.refused[revision] = {step, reason};
    if (memory.refused.size() > kMostRefusals) memory.refused.erase(memory.refused.begin());
    disk_.keep(memory);
    numbers_.failures++;
    settle();
}

void Agent::finish(uint64_t revision) {
    Memory memory = disk_.memory();
    memory.applied = revision;
    memory.trying = 0;
    memory.attempts = 0;
    disk_.keep(memory);
    disk_.removeOthers();
    numbers_.applies++;
    compareAt_ = {};
    log(Level::Info, "has revision {}", revision);
}

}  // namespace qvs::fleet
