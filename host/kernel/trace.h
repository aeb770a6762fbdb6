// The record of requests: one line each, to a file and to whoever follows.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace qvs::kernel {

// "text" with \n, \", \\ and \xHH.
std::string quote(std::string_view text);
// A word as it is when it is plain, else quoted.
std::string shellWord(std::string_view text);
// All bytes as pairs of digits, with a text between the pairs.
std::string hexDigits(std::string_view bytes, std::string_view between = {});
// Runs of non-zero bytes as "offset:hex", one blank between.
std::string hexRuns(std::string_view bytes);
// "ENOENT"; 0 is "0".
std::string errnoName(int error);

class Trace {
  public:
    using Follower = std::function<void(std::string_view line)>;

    Trace() = default;
    ~Trace();
    Trace(const Trace &) = delete;
    Trace &operator=(const Trace &) = delete;

    // Appends to this file, too, from now on; an error number when it cannot be opened.
    int openFile(const std::string &path);
    std::vector<std::string> files() const;

    // Nothing needs to be formatted while this is false.
    bool active() const { return !files_.empty() || !followers_.empty(); }
    void write(const std::string &line);

    uint64_t follow(Follower follower);
    void unfollow(uint64_t id) { followers_.erase(id); }

  private:
    std::map<std::string, int> files_;  // descriptors by path
    std::map<uint64_t, Follower> followers_;
    uint64_t nextFollower_ = 0;
};

}  // namespace qvs::kernel
