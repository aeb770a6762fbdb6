// SPDX-License-Identifier: Apache-2.0
#include "agent/rollout/view.h"

#include "base/failure.h"

namespace qvs::fleet {
namespace {

std::string behind(const std::string &key, const std::string &prefix) {
    return key.substr(prefix.size());
}

// A host that was taken over can write anything into its status. That keeps only this host from taking part.
Status statusOrProblem(const std::string &host, std::string_view text) {
    try {
        return readStatus(text);
    } catch (const Failure &failure) {
        Status status;
        status.host = host;
        status.problem = failure.message;
        return status;
    }
}

}  // namespace

View readView(Store &store, const KeyNames &keys) {
    View view;
    const Found head = store.range({keys.head()});
    view.read = head.revision;
    if (!head.entries.empty()) {
        view.head = readHead(head.entries.front().value);
        view.headModified = head.entries.front().modified;
    }
    if (view.head.revision != 0) {
        view.manifest = readRevision(store, keys, view.head.revision);
        const std::string plan = keys.plan(view.manifest.plan);
        for (const Entry &entry : store.range({plan, true}).entries)
            view.plan[behind(entry.key, plan)] = parseWave(entry.value).value_or(0);
    }
    for (const std::string &keysOf : {keys.statuses(), keys.drains()})
        for (const Entry &entry : store.range({keysOf, true}).entries)
            take(view, keys, {false, entry});
    const Found coordinator = store.range({keys.coordinator()});
    if (!coordinator.entries.empty()) view.coordinator = coordinator.entries.front().value;
    return view;
}

void take(View &view, const KeyNames &keys, const Event &event) {
    const Entry &entry = event.entry;
    if (entry.key == keys.head()) {
        view.head = event.removed ? Head() : readHead(entry.value);
        view.headModified = event.removed ? 0 : entry.modified;
    } else if (entry.key == keys.coordinator()) {
        view.coordinator = entry.value;
    } else if (entry.key.starts_with(keys.drains())) {
        const std::string host = behind(entry.key, keys.drains());
        if (event.removed) {
            view.drained.erase(host);
        } else {
            view.drained.insert(host);
        }
    } else if (entry.key.starts_with(keys.statuses())) {
        const std::string host = behind(entry.key, keys.statuses());
        if (event.removed) {
            view.statuses.erase(host);
        } else {
            view.statuses[host] = statusOrProblem(host, entry.value);
        }
    }
}

void follow(Watch &watch, const KeyNames &keys, const View &view) {
    for (const Keys &followed : {Keys{keys.head()}, Keys{keys.coordinator()}, Keys{keys.drains(), true},
                                 Keys{keys.statuses(), true}})
        watch.follow(followed, view.read + 1);
}

Manifest readRevision(Store &store, const KeyNames &keys, uint64_t number) {
    const Found found = store.range({keys.revision(number)});
    if (found.entries.empty()) fail(Exit::NotFound, "the store has no revision {}", number);
    return readManifest(found.entries.front().value);
}

}  // namespace qvs::fleet
