// SPDX-License-Identifier: Apache-2.0
#include "agent/fleet/fleet.h"

#include <algorithm>
#include <thread>

#include "access/changes.h"
#include "base/failure.h"
#include "base/text.h"

namespace qvs::fleet {

Fleet::Fleet(const cli::Arguments &arguments)
    : settings_(readSettings(arguments, kFleetFile)), store_(settings_.access) {
    read();
}

void Fleet::read() {
    watch_.reset();
    view_ = readView(store_, keys());
    hosts_.clear();
    for (const Entry &entry : store_.range({keys().hosts(), true}).entries) {
        const std::string host = entry.key.substr(keys().hosts().size());
        try {
            hosts_[host] = readLabels(entry.value);
        } catch (const Failure &failure) {
            // A host that was taken over can write anything here. It belongs to no group.
            hosts_[host] = {};
            warn("host {}: {}", shown(host), shown(failure.message));
        }
    }
    watch_ = std::make_unique<Watch>(store_);
    follow(*watch_, keys(), view_);
}

bool Fleet::await() {
    const uint64_t revision = view_.head.revision;
    const Watch::News news = watch_->wait({}, std::chrono::seconds(1));
    for (const Event &event : news.events)
        take(view_, keys(), event);
    // A stopped member of the store sends nothing and keeps its connections open.
    constexpr int kMostIdle = 5;
    idle_ = news.events.empty() ? idle_ + 1 : 0;
    if (!news.ended.empty() || view_.head.revision != revision || idle_ >= kMostIdle) readAgain();
    return !news.events.empty() || !news.ended.empty();
}

// The store also refuses requests while it elects another leader.
void Fleet::readAgain() {
    constexpr int kMost = 30;
    idle_ = 0;
    for (int attempt = 0;; attempt++) {
        try {
            return read();
        } catch (const Failure &failure) {
            if (failure.exit != Exit::NoAnswer || attempt == kMost) throw;
        }
        std::this_thread::sleep_for(std::chrono::seconds(1));
    }
}

const Labels &Fleet::labelsOf(const std::string &host) const {
    const auto found = hosts_.find(host);
    if (found == hosts_.end())
        fail(Exit::NotFound, "host {}: the fleet has none of this name", inQuotes(host));
    return found->second;
}

Manifest Fleet::revision(uint64_t number) {
    if (number == 0) return {};
    const auto found = revisions_.find(number);
    return found != revisions_.end()
               ? found->second
               : revisions_.emplace(number, readRevision(store_, keys(), number)).first->second;
}

config::Document Fleet::document(const DocumentOf &of) {
    if (const auto found = documents_.find(of.digest); found != documents_.end()) return found->second;
    return documents_[of.digest] = readDocumentOf(store_, keys(), of);
}

config::Document Fleet::composedFor(const std::string &host, const std::vector<DocumentOf> &documents) {
    return composed(documents, host, labelsOf(host), [&](const DocumentOf &of) { return document(of); });
}

config::Document Fleet::composedFor(const std::string &host, uint64_t revision) {
    return composedFor(host, this->revision(revision).documents);
}

// A host that was away can have a revision that the store no longer has.
static std::vector<DocumentOf> documentsThatMayBeGone(Fleet &fleet, uint64_t revision) {
    try {
        return fleet.revision(revision).documents;
    } catch (const Failure &failure) {
        if (failure.exit != Exit::NotFound) throw;
        return {};
    }
}

// A document that was changed in the store must not keep operators from publishing another one.
static config::Document documentBefore(Fleet &fleet, const std::string &host,
                                       const std::vector<DocumentOf> &documents) {
    try {
        return fleet.composedFor(host, documents);
    } catch (const Failure &failure) {
        if (failure.exit != Exit::Failed) throw;
        warn("host {}: {}", host, failure.message);
        return {};
    }
}

std::vector<HostsPlan> plansFor(Fleet &fleet, const std::vector<std::string> &hosts,
                                const std::vector<DocumentOf> &documents) {
    std::map<std::string, HostsPlan> plans;  // by what they are made of
    for (const std::string &host : hosts) {
        const auto status = fleet.view().statuses.find(host);
        const uint64_t has =
            status == fleet.view().statuses.end() ? fleet.view().head.base : status->second.revision;
        const std::vector<DocumentOf> before = documentsThatMayBeGone(fleet, has);
        std::string key;
        for (const auto *list : {&before, &documents}) {
            for (const DocumentOf &document : *list)
                if (isFor(document, host, fleet.labelsOf(host))) key += document.digest;
            key += ':';
        }
        HostsPlan &plan = plans[key];
        if (plan.hosts.empty())
            plan.changes =
                compare(documentBefore(fleet, host, before), fleet.composedFor(host, documents), true);
        plan.hosts.push_back(host);
    }
    std::vector<HostsPlan> made;
    for (auto &[key, plan] : plans)
        if (!plan.changes.empty()) made.push_back(std::move(plan));
    std::ranges::sort(made, {}, &HostsPlan::hosts);
    return made;
}

std::string listed(const std::vector<std::string> &names) {
    constexpr size_t kMost = 5;
    std::string text;
    for (size_t i = 0; i < std::min(names.size(), kMost); i++)
        text += (i == 0 ? "" : ", ") + names[i];
    // The last name takes no more room than the words that would replace it.
    if (names.size() == kMost + 1) text += ", " + names.back();
    if (names.size() > kMost + 1) text += fmt::format(" and {} others", names.size() - kMost);
    return text;
}

void print(const std::vector<HostsPlan> &plans, cli::Output &out) {
    if (!out.json()) {
        for (const HostsPlan &plan : plans) {
            out.write(listed(plan.hosts) + ":\n");
            cli::printText(plan.changes, out);
        }
        return;
    }
    out.write("[");
    for (size_t i = 0; i < plans.size(); i++) {
        out.write(i == 0 ? "{\"hosts\":" : ",{\"hosts\":");
        std::vector<std::string_view> names(plans[i].hosts.begin(), plans[i].hosts.end());
        cli::appendJson(out.buffer(), cli::Words{names});
        out.write(",\"changes\":");
        cli::printJson(plans[i].changes, out);
        out.write("}");
    }
    out.write("]\n");
}

}  // namespace qvs::fleet
