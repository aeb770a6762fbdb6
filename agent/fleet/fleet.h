// SPDX-License-Identifier: Apache-2.0
// Shared by all verbs: the store, its contents, and documents.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "agent/rollout/documents.h"
#include "agent/rollout/view.h"
#include "agent/settings/settings.h"
#include "config/document/diff.h"
#include "tool/output.h"

namespace qvs::fleet {

class Fleet {
  public:
    explicit Fleet(const cli::Arguments &arguments);

    const KeyNames &keys() const { return settings_.keys; }
    Store &store() { return store_; }
    View &view() { return view_; }
    // All hosts that ever joined, with their labels.
    const std::map<std::string, Labels> &hosts() const { return hosts_; }
    // Throws Failure (NotFound) for an unknown host.
    const Labels &labelsOf(const std::string &host) const;

    // Reads everything again.
    void read();
    // Waits for a change, at most one second. Returns whether there was one.
    bool await();

    Manifest revision(uint64_t number);
    // The document with a digest, from the store or from the added documents.
    config::Document document(const DocumentOf &of);
    void add(const FleetFile &file) { documents_[file.of.digest] = file.document; }
    // The configuration of a host in a revision. Revision 0 is an empty document.
    config::Document composedFor(const std::string &host, const std::vector<DocumentOf> &documents);
    config::Document composedFor(const std::string &host, uint64_t revision);

  private:
    void readAgain();

    Settings settings_;
    Store store_;
    View view_;
    std::map<std::string, Labels> hosts_;
    std::map<uint64_t, Manifest> revisions_;
    std::map<std::string, config::Document> documents_;
    std::unique_ptr<Watch> watch_;
    int idle_ = 0;  // waits without an event
};

// Hosts with the same differences.
struct HostsPlan {
    std::vector<std::string> hosts;
    std::vector<config::Change> changes;
};
// The differences on each host that has a document in either revision.
std::vector<HostsPlan> plansFor(Fleet &fleet, const std::vector<std::string> &hosts,
                                const std::vector<DocumentOf> &documents);
void print(const std::vector<HostsPlan> &plans, cli::Output &out);

// "h1, h2 and 18 others"
std::string listed(const std::vector<std::string> &names);

extern const std::span<const cli::Command> kChangeCommands;
extern const std::span<const cli::Command> kViewCommands;

}  // namespace qvs::fleet
