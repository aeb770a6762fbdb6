// SPDX-License-Identifier: Apache-2.0
// Follows the changes of a host by comparing its state with the state of the look before.
#pragma once

#include <qvs/mesh_public.h>

#include <cstdint>
#include <cstdlib>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "config/document/diff.h"
#include "config/document/document.h"

namespace qvs::config {

class Watch {
  public:
    // Watches these switches, or all. Reads the state once. Throws when the host does not answer or does not
    // have one of the switches.
    explicit Watch(std::vector<std::string> aliases);

    // Reads the state again. While nothing changes, this costs little more than a copy of the state. Returns
    // the status of the state library when the state cannot be read; there are no changes then.
    HYP_ReturnStatus look();

    // The changes that the last look found. The link state of a port is the member "link" with the texts "up"
    // and "down".
    const std::vector<Change> &changes() const { return changes_; }
    // The state of the last look that succeeded.
    size_t switches() const { return seen_.document.switches.size(); }

  private:
    using State = std::unique_ptr<void, void (*)(void *)>;
    using Links = std::map<std::string, bool>;  // by port
    struct Seen {
        Document document;
        std::map<std::string, Links> links;  // by switch
    };

    bool watched(const std::string &alias) const;
    Seen read() const;
    void addLinkChanges(const Seen &now);

    std::vector<std::string> aliases_;
    State state_{nullptr, std::free};  // as DVSHYP_StateGet returned it
    uint32_t length_ = 0;
    Seen seen_;
    std::vector<Change> changes_;
};

}  // namespace qvs::config
