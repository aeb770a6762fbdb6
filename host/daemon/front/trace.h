// SPDX-License-Identifier: Apache-2.0
// The trace: one line for each request, to files and to followers.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "wire/noncopyable.h"

namespace qvs::kernel {

// A queue of lines for a slow reader. Lines beyond its capacity are dropped and counted, and a later line
// contains the count.
class LineQueue {
  public:
    using Form = std::string (*)(std::string_view line);

    // `form` converts a line to the bytes to send. `dropped` counts the dropped lines.
    LineQueue(Form form, uint64_t *dropped) : form_(form), dropped_(dropped) {}

    void put(std::string_view line);
    // Returns the bytes to send. Afterwards call `sent`, `putBack` with the bytes that were not sent, or
    // `drop` if nothing can be sent any more.
    std::string take();
    void sent();
    void putBack(std::string rest) { waiting_ = std::move(rest); }
    void drop();
    bool empty() const { return waiting_.empty() && missing_ == 0; }

  private:
    static constexpr size_t kRoom = 1 << 20;

    void sayMissing();

    Form form_;
    uint64_t *dropped_;
    std::string waiting_;
    uint64_t lines_ = 0;    // waiting or being sent
    uint64_t said_ = 0;     // dropped lines that a line being sent reports
    uint64_t missing_ = 0;  // dropped lines that no line reports yet
};

class Trace : private wire::Noncopyable {
  public:
    using Follower = std::function<void(std::string_view line)>;
    // Calls `then` when the file can be written again.
    using WhenWritable = std::function<void(int file, std::function<void()> then)>;

    ~Trace();

    // Sets the function that waits for files that are not always writable. Without it, writing is tried again
    // with the next line.
    void waitWith(WhenWritable whenWritable) { whenWritable_ = std::move(whenWritable); }

    // Starts to append lines to a file. Returns an error message if the file cannot be opened.
    std::optional<std::string> openFile(const std::string &path);
    std::vector<std::string> files() const;
    // Returns the number of lines that were not delivered to files and followers.
    uint64_t dropped() const { return *dropped_; }
    uint64_t *droppedCounter() { return dropped_.get(); }

    // Returns false if there is neither a file nor a follower.
    bool active() const { return !files_.empty() || !followers_.empty(); }
    void write(const std::string &line);

    uint64_t follow(Follower follower);
    void unfollow(uint64_t id) { followers_.erase(id); }

  private:
    struct File {
        int descriptor = -1;
        LineQueue queue;
        bool waiting = false;
        bool failing = false;  // already reported in the log
        bool midLine = false;
    };

    void flush(const std::string &path);
    void waitFor(const std::string &path, File &file);

    std::unique_ptr<uint64_t> dropped_ = std::make_unique<uint64_t>(0);
    std::map<std::string, File> files_;
    std::map<uint64_t, Follower> followers_;
    WhenWritable whenWritable_;
    uint64_t nextFollower_ = 0;
};

}  // namespace qvs::kernel
