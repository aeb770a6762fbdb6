// SPDX-License-Identifier: Apache-2.0
// What the agent keeps in its directory: its memory, and the configuration of the revisions that matter.
#pragma once

#include <optional>
#include <string>

#include "agent/rollout/machine.h"
#include "base/failure.h"
#include "config/document/document.h"
#include "config/library/directory.h"

namespace qvs::fleet {

// The disk is full, or broken. The session with the store is not to blame.
struct DiskFailure : Failure {};

class Disk {
  public:
    explicit Disk(const std::string &directory);

    const Memory &memory() const { return memory_; }
    // The memory is one file, which is replaced as a whole: it alone says which revision the host has.
    void keep(const Memory &memory);

    void keepDocument(uint64_t revision, const config::Document &document);
    // An empty document when there is none.
    config::Document document(uint64_t revision) const;
    // Removes the documents of all other revisions.
    void removeOthers();
    // Why the last write failed; empty when it did not.
    const std::string &problem() const { return problem_; }
    // Finds out whether there is room now for what could not be written. Nothing may be there to write again.
    void probe();

  private:
    void write(const std::string &name, const std::string &text);

    PrivateDirectory directory_;
    Memory memory_;
    std::string problem_;
    size_t needed_ = 0;  // the bytes that could not be written
};

}  // namespace qvs::fleet
