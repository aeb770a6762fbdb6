// SPDX-License-Identifier: Apache-2.0
// Checkpoints: documents of a host that were kept under a name, one file each.
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

// The text of a file, and back. checkpointOf throws Failure, with `subject` first, for a damaged file and for
// one of a newer format.
std::string checkpointText(const Checkpoint &checkpoint);
Checkpoint checkpointOf(std::string_view subject, std::string_view text);

// Where checkpoints are kept unless another directory is given.
std::string checkpointDirectory();

class Checkpoints {
  public:
    // `create` makes the directory. Throws Failure when others may write to it.
    explicit Checkpoints(const std::string &directory, bool create = false) : directory_(directory, create) {}

    // Keeps a document under a name, with the present time and the name of this machine. Throws when there
    // is one of this name and `replace` is not set.
    void save(const std::string &name, std::string document, uint32_t switches, bool replace) const;
    Checkpoint load(const std::string &name) const;
    void remove(const std::string &name) const;

    // All checkpoints by name; those that cannot be read have the reason instead.
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
