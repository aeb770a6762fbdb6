// SPDX-License-Identifier: Apache-2.0
// A directory of files that only their owner may read and change.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qvs {

// Paths and names in messages are shown in quotes. Every function throws Failure for what the system refuses.
class PrivateDirectory {
  public:
    // Opens a directory. It has no files when it does not exist; `create` makes it, and the directories above
    // it that are missing, with mode 0700. A directory that others may write to is refused.
    PrivateDirectory(std::string path, bool create);
    ~PrivateDirectory();
    PrivateDirectory(const PrivateDirectory &) = delete;
    PrivateDirectory &operator=(const PrivateDirectory &) = delete;

    // The names of its files that do not begin with a dot, sorted.
    std::vector<std::string> names() const;

    // Reads a whole file, or nothing when there is none. Links, files of other users and files of more than
    // `most` bytes are refused.
    std::optional<std::string> read(const std::string &name, size_t most) const;

    // Writes a whole file under a temporary name, and gives it its name when it is on the disk. Returns false
    // when there is a file of this name and `replace` is not set.
    [[nodiscard]] bool write(const std::string &name, std::string_view text, bool replace) const;

    // Returns false when there is no such file.
    [[nodiscard]] bool remove(const std::string &name) const;

  private:
    [[noreturn]] void failAbout(const std::string &name, int error) const;
    bool rename(const std::string &from, const std::string &to, bool replace) const;

    std::string path_;
    int descriptor_ = -1;
};

}  // namespace qvs
