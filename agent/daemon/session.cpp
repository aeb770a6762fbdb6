// SPDX-License-Identifier: Apache-2.0
// The session of the agent with the store: what it reads and reports, and its work as the coordinator.
#include <algorithm>

#include "agent/daemon/agent.h"
#include "agent/daemon/log.h"
#include "agent/rollout/view.h"
#include "base/failure.h"
#include "base/text.h"
#include "config/library/clock.h"

namespace qvs::fleet {

using namespace std::chrono_literals;

// Reads all keys, and watches for later changes.
void Agent::connect() {
    if (lease_ == 0) {
        lease_ = store_.grant(settings_.leaseSeconds);
    } else {
        renew();
    }
    const Found found = store_.range({settings_.keys.head()});
    headModified_ = 0;
    head_ = {};
    if (!found.entries.empty()) {
        head_ = readHead(found.entries.front().value);
        headModified_ = found.entries.front().modified;
    }
    readManifest();
    drained_.clear();
    if (!store_.range({settings_.keys.drain(settings_.host)}).entries.empty())
        drained_[settings_.host] = true;
    const std::string labels = writeLabels(settings_.labels);
    const Found registered = store_.range({settings_.keys.host(settings_.host)});
    if (registered.entries.empty() || registered.entries.front().value != labels)
        if (!store_.commit({{}, {{settings_.keys.host(settings_.host), labels}}, {}})) return;
    const Found coordinator = store_.range({settings_.keys.coordinator()});
    coordinator_ = coordinator.entries.empty() ? 0 : coordinator.entries.front().created;
    // After the watch restarts, the event may come from this agent's own write.
    leads_ = !coordinator.entries.empty() && coordinator.entries.front().lease == lease_;
    stale_ = leads_;
    watch_ = std::make_unique<Watch>(store_);
    watch_->follow({settings_.keys.head()}, found.revision + 1);
    watch_->follow({leads_ ? settings_.keys.drains() : settings_.keys.drain(settings_.host), leads_},
                   found.revision + 1);
    if (settings_.coordinate) watch_->follow({settings_.keys.coordinator()}, found.revision + 1);
    if (leads_) watch_->follow({settings_.keys.statuses(), true}, found.revision + 1);
    if (!numbers_.storeAnswers) log(Level::Info, "the store answers: {}", store_.endpoint());
    numbers_.storeAnswers = true;
    backOff_ = 0ms;
    reported_.clear();
    const Found status = store_.range({settings_.keys.status(settings_.host)});
    statusModified_ = status.entries.empty() ? 0 : status.entries.front().modified;
    changed();
}

void Agent::keepAlive() {
    if (watch_ && lease_ != 0 && Clock::now() >= keepAliveAt_) renew();
}

void Agent::renew() {
    const Time now = Clock::now();
    if (!store_.keepAlive(lease_)) {
        lease_ = 0;
        leads_ = false;
        fail(Exit::NoAnswer, "the lease of this host has ended");
    }
    keepAliveAt_ = now + std::chrono::milliseconds(settings_.leaseSeconds * 1000 / 3);
}

// The revision that is published, and the wave of this host in it.
void Agent::readManifest() {
    if (head_.revision == 0 || manifests_.contains(head_.revision)) return;
    const Found found = store_.range({settings_.keys.revision(head_.revision)});
    if (found.entries.empty()) fail(Exit::NoAnswer, "the store has no revision {}", head_.revision);
    const Manifest manifest = fleet::readManifest(found.entries.front().value);
    const Found plan = store_.range({settings_.keys.plan(manifest.plan) + settings_.host});
    wave_.reset();
    if (!plan.entries.empty()) {
        const auto wave = parseWave(plan.entries.front().value);
        if (wave) wave_ = *wave;
    }
    manifests_.clear();
    manifests_[head_.revision] = manifest;
}

void Agent::take(const Event &event) {
    const KeyNames &keys = settings_.keys;
    const std::string &key = event.entry.key;
    fleet::take(view_, keys, event);
    if (key == keys.head()) {
        head_ = event.removed ? Head() : readHead(event.entry.value);
        headModified_ = event.removed ? 0 : event.entry.modified;
        if (view_.manifest.revision != head_.revision) stale_ = leads_;
        // The delay prevents that all hosts of a large fleet read at the same moment.
        pursueAt_ = Clock::now() + std::chrono::milliseconds(std::uniform_int_distribution<int64_t>(
                                       0, int64_t{settings_.windowSeconds} * 1000)(random_));
        pursued_ = head_.revision;
        changed();
    } else if (key == keys.coordinator()) {
        coordinator_ = event.removed ? 0 : event.entry.created;
        if (!leads_ && !event.removed && event.entry.lease == lease_)
            fail(Exit::NoAnswer, "a late request has made this agent the coordinator");
        leads_ = leads_ && !event.removed && event.entry.lease == lease_;
        standAt_ =
            Clock::now() + std::chrono::milliseconds(std::uniform_int_distribution<int>(0, 500)(random_));
    } else if (key.starts_with(keys.drains())) {
        const std::string host = key.substr(keys.drains().size());
        event.removed ? (void)drained_.erase(host) : (void)(drained_[host] = true);
    }
}

std::string Agent::statusText() {
    status_.time.clear();
    std::string text = write(status_);
    status_.time = utcTime();
    return text;
}

void Agent::report() {
    changed();
    const std::string text = statusText();
    if (text == reported_) return;
    if (writeStatus({})) reported_ = text;
}

// A late request can arrive after requests that were sent later. Each request therefore compares the status
// that it replaces. If the stored status differs, the agent reads it for the next attempt.
bool Agent::writeStatus(std::vector<Comparison> comparisons) {
    const std::string key = settings_.keys.status(settings_.host);
    comparisons.push_back({key, Comparison::What::Modified, statusModified_});
    if (store_.commit({std::move(comparisons), {{key, write(status_), lease_}}, {}})) {
        statusModified_ = store_.committed();
        return true;
    }
    const Found found = store_.range({key});
    statusModified_ = found.entries.empty() ? 0 : found.entries.front().modified;
    return false;
}

// Becomes the coordinator if there is none.
void Agent::stand() {
    if (!settings_.coordinate || coordinator_ != 0 || Clock::now() < standAt_) return;
    standAt_ = Clock::now() + 1s;
    const std::string key = settings_.keys.coordinator();
    if (!store_.commit({{{key, Comparison::What::Created, 0}}, {{key, settings_.host, lease_}}, {}})) return;
    log(Level::Info, "coordinates rollouts");
    // A coordinator first reads the whole state of the fleet, and then follows its changes.
    connect();
}

void Agent::lead() {
    if (!leads_) return;
    if (stale_ && head_.isUnderWay()) {
        view_ = readView(store_, settings_.keys);
        stale_ = false;
    }
    if (!head_.isUnderWay()) return;
    if (const auto next = decide(view_)) publish(*next);
}

// The two comparisons ensure that the decision applies only to this state of the rollout, and only while this
// agent is the coordinator.
void Agent::publish(const Head &next) {
    const KeyNames &keys = settings_.keys;
    Transaction transaction;
    transaction.comparisons = {{keys.head(), Comparison::What::Modified, headModified_},
                               {keys.coordinator(), Comparison::What::Created, coordinator_}};
    transaction.puts = {{keys.head(), write(next)}};
    if (!next.isUnderWay())
        transaction.puts.push_back(
            {keys.result(next.revision), write(Result{next.state, next.reason, utcTime()})});
    if (!store_.commit(transaction)) {
        log(Level::Info, "revision {}: something else was decided", next.revision);
        return connect();
    }
    log(Level::Info, "revision {}: {}, wave {}{}{}", next.revision, wordOf(next.state), next.wave,
        next.reason.empty() ? "" : ": ", shown(next.reason));
    // The watch reports this change, too. Until then, the agent makes no further decision.
    view_.head = next;
    view_.head.state = State::Done;
}

}  // namespace qvs::fleet
