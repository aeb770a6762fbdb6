// SPDX-License-Identifier: Apache-2.0
#include "agent/rollout/machine.h"

#include <fmt/format.h>

#include <algorithm>

namespace qvs::fleet {
namespace {

// All agents read it, and any host may have written it.
constexpr size_t kMostReason = 1000;

uint32_t lastWave(const Manifest &manifest) {
    return manifest.waves == 0 ? 0 : manifest.waves - 1;
}

}  // namespace

uint64_t wantedOf(const Head &head, const Manifest &manifest, std::optional<uint32_t> wave,
                  const Memory &memory, bool drained) {
    if (drained || head.revision == 0) return memory.applied;
    // A host that was away catches up with the fleet. A host that is ahead keeps its revision until its wave.
    uint64_t wanted = std::max(memory.applied, head.base);
    if (head.state == State::RollingBack || head.state == State::RolledBack) {
        if (memory.applied == head.revision) wanted = head.base;
    } else if (wave.value_or(lastWave(manifest)) <= head.wave) {
        wanted = head.revision;
    }
    // There are no documents before the first revision.
    return wanted == 0 ? memory.applied : wanted;
}

uint64_t goalOf(uint64_t wanted, const Memory &memory) {
    return memory.refused.contains(wanted) ? memory.applied : wanted;
}

uint64_t refusalOf(uint64_t wanted, const Head &head, const Memory &memory) {
    for (const uint64_t revision : {wanted, head.revision})
        if (revision != memory.applied && memory.refused.contains(revision)) return revision;
    return 0;
}

Progress progressOf(const View &view) {
    const uint32_t last = lastWave(view.manifest);
    std::set<std::string> hosts;
    for (const auto &[host, wave] : view.plan)
        if (wave <= view.head.wave) hosts.insert(host);
    for (const auto &[host, status] : view.statuses)
        if (view.head.wave == last && !view.plan.contains(host)) hosts.insert(host);
    Progress progress;
    for (const std::string &host : hosts) {
        if (view.drained.contains(host)) continue;
        progress.hosts++;
        const auto status = view.statuses.find(host);
        const bool known = status != view.statuses.end();
        if (known && status->second.refused == view.head.revision) {
            progress.failed.insert(host);
        } else if (known && status->second.revision == view.head.revision) {
            progress.done++;
        } else if (!known || !status->second.problem.empty()) {
            // Its agent is away, or is there without its switches.
            progress.away.insert(host);
        } else {
            progress.waiting.insert(host);
        }
    }
    return progress;
}

std::optional<Head> decide(const View &view) {
    Head next = view.head;
    if (view.head.state == State::RollingBack) {
        const bool left = std::ranges::any_of(view.statuses, [&](const auto &entry) {
            // One that has refused to go back stays.
            return entry.second.revision == view.head.revision && entry.second.refused != view.head.base &&
                   !view.drained.contains(entry.first);
        });
        if (left) return std::nullopt;
        next.state = State::RolledBack;
        return next;
    }
    if (view.head.state != State::Running) return std::nullopt;
    const Progress progress = progressOf(view);
    if (!progress.failed.empty()) {
        const std::string &host = *progress.failed.begin();
        const Status &status = view.statuses.find(host)->second;
        next.reason = fmt::format("{}: {}: {}", host, status.step, status.reason).substr(0, kMostReason);
        // Before the first revision there is nothing to return to.
        next.state = view.manifest.rollsBack && view.head.base != 0 ? State::RollingBack : State::Stopped;
        return next;
    }
    if (!progress.waiting.empty() || progress.away.size() > view.manifest.unavailable) return std::nullopt;
    if (next.wave < lastWave(view.manifest)) {
        next.wave++;
        return next;
    }
    next.state = State::Done;
    next.base = next.revision;
    return next;
}

}  // namespace qvs::fleet
