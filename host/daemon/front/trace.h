// SPDX-License-Identifier: Apache-2.0
// The record of requests: one line each, to a file and to whoever follows.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qvs::kernel {

// Lines on their way to a reader who takes his time. Those that find no room are counted, and a line says how
// many there were.
class LineQueue {
  public:
    using Form = std::string (*)(std::string_view line);

    // How a line goes out, and where those are counted that do not.
    LineQueue(Form form, uint64_t *dropped) : form_(form), dropped_(dropped) {}

    void put(std::string_view line);
    // What is to go out now. Then one of these: it did, this is left of it, or nothing goes out any more.
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
    uint64_t lines_ = 0;    // that wait or are on their way
    uint64_t said_ = 0;     // missing ones that a line on its way tells of
    uint64_t missing_ = 0;  // of which no line tells yet
};

class Trace {
  public:
    using Follower = std::function<void(std::string_view line)>;
    // Calls `then` when the file takes more.
    using WhenWritable = std::function<void(int file, std::function<void()> then)>;

    Trace() = default;
    ~Trace();
    Trace(const Trace &) = delete;
    Trace &operator=(const Trace &) = delete;

    // How to wait for files that are not always writable; without it they are tried again with the next line.
    void waitWith(WhenWritable whenWritable) { whenWritable_ = std::move(whenWritable); }

    // Appends to this file, too, from now on; what is wrong when it cannot be opened.
    std::optional<std::string> openFile(const std::string &path);
    std::vector<std::string> files() const;
    // Lines that files and followers did not take.
    uint64_t dropped() const { return *dropped_; }
    uint64_t *droppedCounter() { return dropped_.get(); }

    // Nothing needs to be formatted while this is false.
    bool active() const { return !files_.empty() || !followers_.empty(); }
    void write(const std::string &line);

    uint64_t follow(Follower follower);
    void unfollow(uint64_t id) { followers_.erase(id); }

  private:
    struct File {
        int descriptor = -1;
        LineQueue queue;
        bool waiting = false;
        bool failing = false;  // which the log says once
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
