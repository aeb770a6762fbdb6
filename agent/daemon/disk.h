// SPDX-License-Identifier: Apache-2.0
// The files in the agent's directory: its state, and the documents of the current revisions.
#pragma once

#include <optional>
#include <string>

#include "agent/rollout/machine.h"
#include "base/failure.h"
#include "config/document/document.h"
#include "config/library/directory.h"

namespace qvs::fleet {

// A write to the disk failed. The session with the store can continue.
struct DiskFailure : Failure {};

class Disk {
  public:
    explicit Disk(const std::string &directory);

    const Memory &memory() const { return memory_; }
    // The state is one file, which is replaced as a whole. Only this file records the revision of the host.
    void keep(const Memory &memory);

    void keepDocument(uint64_t revision, const config::Document &document);
    // Returns an empty document if there is none.
    config::Document document(uint64_t revision) const;
    // Removes the documents of all other revisions.
    void removeOthers();
    // The reason why the last write failed; empty if it succeeded.
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
