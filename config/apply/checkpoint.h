// SPDX-License-Identifier: Apache-2.0
// Checkpoints: documents of a host that are stored under a name, one file each.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "config/library/directory.h"

namespace qvs::config {

struct Checkpoint {
    std::string time;  // "2026-11-22T05:40:00Z"
    std::string host;  // the name of the machine
    uint32_t switches = 0;
    std::string document;  // YAML
};

// Convert a checkpoint to the text of its file, and back. checkpointOf throws a Failure that begins with
// `subject` for a damaged file and for a newer format.
std::string checkpointText(const Checkpoint &checkpoint);
Checkpoint checkpointOf(std::string_view subject, std::string_view text);

// Returns the default directory of checkpoints.
std::string checkpointDirectory();

// Throws a usage failure for a text that cannot be the name of a checkpoint.
void requireCheckpointName(const std::string &name);

class Checkpoints {
  public:
    // `create` makes the directory. Throws Failure when others may write to it.
    explicit Checkpoints(const std::string &directory, bool create = false) : directory_(directory, create) {}

    // Stores a document under a name, with the current time and the name of this machine. Throws when the
    // name exists and `replace` is not set.
    void save(const std::string &name, std::string document, uint32_t switches, bool replace) const;
    Checkpoint load(const std::string &name) const;
    void remove(const std::string &name) const;

    // Returns all checkpoints, sorted by name. One that cannot be read has the reason instead of its
    // contents.
    struct Entry {
        std::string name;
        std::optional<Checkpoint> checkpoint;
        std::string problem;
    };
    std::vector<Entry> list() const;

  private:
    PrivateDirectory directory_;
};

}  // namespace qvs::config
