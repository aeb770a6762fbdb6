// SPDX-License-Identifier: Apache-2.0
// Files that are replaced as a whole: directories of files that only their owner may read and change, and
// single files that everyone may read.
#pragma once

#include <sys/stat.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qvs {

// What a directory is for.
struct DirectoryUse {
    const char *file = "file";      // what messages call a file of it
    const char *advice = "";        // behind the reason why a file is not trusted
    size_t most = size_t{1} << 30;  // bytes in a file
    // That of a host, emulated or not: root trusts its owner, whoever that is, and his group may write to it.
    // Files are the owner's and have one name. One process writes at a time.
    bool ofHost = false;
};

// Paths and names in messages are shown in quotes. Every function throws Failure for what the system refuses.
class PrivateDirectory {
  public:
    // Opens a directory. It has no files when it does not exist; `create` makes it, and the directories above
    // it that are missing, with mode 0700. A directory that others may write to is refused.
    PrivateDirectory(std::string path, bool create, const DirectoryUse &use = {});
    ~PrivateDirectory();
    PrivateDirectory(const PrivateDirectory &) = delete;
    PrivateDirectory &operator=(const PrivateDirectory &) = delete;

    // The names of its files that do not begin with a dot, sorted.
    std::vector<std::string> names() const;

    // Reads a whole file, or nothing when there is none. Links, files of other users and files that are too
    // large are refused.
    std::optional<std::string> read(const std::string &name) const;

    // Writes a whole file under a temporary name, and gives it its name when it is on the disk. Returns false
    // when there is a file of this name and `replace` is not set.
    [[nodiscard]] bool write(const std::string &name, std::string_view text, bool replace) const;

    // Returns false when there is no such file.
    bool remove(const std::string &name) const;
    // Removes what a process that was killed while it wrote to a file of a host has left.
    void removeUnfinished(const std::string &name) const;

  private:
    [[noreturn]] void failAbout(const std::string &name, std::string_view reason) const;
    [[noreturn]] void failErrno(const std::string &name) const;
    [[noreturn]] void failWhole(std::string_view reason) const;
    const char *problemWith(const struct stat &found) const;
    std::string temporaryOf(const std::string &name) const;
    int openNew(const std::string &temporary, const std::string &name) const;
    bool rename(const std::string &from, const std::string &to, bool replace) const;
    void sync() const;

    std::string path_;
    DirectoryUse use_;
    uid_t owner_ = 0;
    gid_t group_ = 0;
    int descriptor_ = -1;
};

// Writes a whole file that everyone may read: under a temporary name, which begins with a dot, and then under
// its own. Throws Failure for what the system refuses.
void writePublicFile(const std::string &path, std::string_view text);

}  // namespace qvs
