// SPDX-License-Identifier: Apache-2.0
// Removes old revisions from the store, with the documents and plans that only they name.
#include <algorithm>
#include <set>

#include "agent/fleet/publish.h"

namespace qvs::fleet {
namespace {

// The revisions to keep besides the newest: those that a host has, and those that it may return to.
std::set<uint64_t> revisionsInUse(const View &view) {
    std::set<uint64_t> used = {view.head.revision, view.head.base};
    for (const auto &[host, status] : view.statuses)
        used.insert({status.revision, status.trying});
    return used;
}

// The revision of a host that is away is unknown. A drained host is ignored, because it may never return.
bool someoneIsAway(const Fleet &fleet, const View &view) {
    return std::ranges::any_of(fleet.hosts(), [&](const auto &host) {
        return !view.statuses.contains(host.first) && !view.drained.contains(host.first);
    });
}

std::vector<Keys> oldKeys(Fleet &fleet, uint32_t keep) {
    const KeyNames &keys = fleet.keys();
    const View &view = fleet.view();
    const std::set<uint64_t> used = revisionsInUse(view);
    std::vector<Manifest> old;
    std::set<std::string> needed;
    for (const Entry &entry : fleet.store().range({keys.revisions(), true}).entries) {
        const Manifest manifest = readManifest(entry.value);
        if (manifest.revision + keep <= view.head.revision && !used.contains(manifest.revision)) {
            old.push_back(manifest);
            continue;
        }
        needed.insert(keys.plan(manifest.plan));
        for (const DocumentOf &document : manifest.documents)
            needed.insert(keys.document(document.digest));
    }
    std::vector<Keys> removals;
    const auto remove = [&](const std::string &key, bool prefix) {
        if (needed.insert(key).second) removals.push_back({key, prefix});
    };
    for (const Manifest &manifest : old) {
        remove(keys.plan(manifest.plan), true);
        for (const DocumentOf &document : manifest.documents)
            remove(keys.document(document.digest), false);
    }
    // Revisions are removed last. After an interruption, they still list what else to remove.
    for (const Manifest &manifest : old) {
        remove(keys.result(manifest.revision), false);
        remove(keys.revision(manifest.revision), false);
    }
    return removals;
}

}  // namespace

void removeOld(Fleet &fleet, uint32_t keep) {
    fleet.read();
    const View &view = fleet.view();
    if (!view.head.isUnderWay() || someoneIsAway(fleet, view)) return;
    const std::vector<Keys> removals = oldKeys(fleet, keep);
    for (size_t at = 0; at < removals.size(); at += kMostOperations) {
        Transaction transaction;
        // During a rollout no other revision can be published that needs one of these documents. If the head
        // changes, the rest is removed with the next revision.
        transaction.comparisons = {{fleet.keys().head(), Comparison::What::Modified, view.headModified}};
        transaction.removals.assign(
            removals.begin() + static_cast<ptrdiff_t>(at),
            removals.begin() + static_cast<ptrdiff_t>(std::min(at + kMostOperations, removals.size())));
        if (!fleet.store().commit(transaction)) return;
    }
}

}  // namespace qvs::fleet
