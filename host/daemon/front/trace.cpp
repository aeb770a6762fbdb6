// SPDX-License-Identifier: Apache-2.0
// Writes the trace lines.
#include "daemon/front/trace.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

#include <fmt/format.h>

#include "daemon/model/log.h"

namespace qvs::kernel {

void LineQueue::put(std::string_view line) {
    if (waiting_.size() >= kRoom) {
        ++missing_;
        ++*dropped_;
        return;
    }
    sayMissing();
    waiting_ += form_(line);
    ++lines_;
}

std::string LineQueue::take() {
    // Without this, lines dropped at the end would not be reported.
    if (waiting_.empty()) sayMissing();
    return std::exchange(waiting_, {});
}

void LineQueue::sent() {
    if (waiting_.empty()) lines_ = said_ = 0;
}

void LineQueue::drop() {
    *dropped_ += lines_;
    missing_ += lines_ + said_;
    lines_ = said_ = 0;
    waiting_.clear();
}

void LineQueue::sayMissing() {
    if (missing_ == 0) return;
    waiting_ += form_(fmt::format("trace dropped lines={}", missing_));
    said_ += std::exchange(missing_, 0);
}

Trace::~Trace() {
    for (const auto &[path, file] : files_)
        close(file.descriptor);
}

std::optional<std::string> Trace::openFile(const std::string &path) {
    // A symbolic link could make the daemon write any file. A pipe must block neither here nor later.
    const int descriptor = ::open(
        path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW | O_NOCTTY, 0666);
    if (descriptor < 0) {
        if (errno == ELOOP) return "it is a symbolic link; name the file itself";
        if (errno == ENXIO) return "no process reads from it; start the reader first";
        return std::strerror(errno);
    }
    const auto form = [](std::string_view line) { return std::string(line) + '\n'; };
    // The name may belong to another file now.
    if (const auto known = files_.find(path); known != files_.end()) {
        close(known->second.descriptor);
        files_.erase(known);
    }
    files_.emplace(path, File{descriptor, LineQueue(form, dropped_.get())});
    return std::nullopt;
}

std::vector<std::string> Trace::files() const {
    std::vector<std::string> paths;
    for (const auto &[path, file] : files_)
        paths.push_back(path);
    return paths;
}

void Trace::write(const std::string &line) {
    for (auto &[path, file] : files_) {
        file.queue.put(line);
        if (!file.waiting) flush(path);
    }
    for (const auto &[id, follower] : followers_)
        follower(line);
}

// Each line is one write, so that the lines of several daemons do not mix and no line is lost if the process
// ends.
void Trace::flush(const std::string &path) {
    const auto found = files_.find(path);
    if (found == files_.end()) return;
    File &file = found->second;
    while (!file.queue.empty()) {
        std::string text = file.queue.take();
        if (file.midLine && file.failing) text.insert(0, 1, '\n');
        const ssize_t written = ::write(file.descriptor, text.data(), text.size());
        if (written == static_cast<ssize_t>(text.size())) {
            file.failing = file.midLine = false;
            file.queue.sent();
            continue;
        }
        if (written > 0) file.midLine = true;
        if (written > 0 || errno == EINTR || errno == EAGAIN) {
            const bool full = written < 0 && errno == EAGAIN;
            file.queue.putBack(text.substr(written > 0 ? static_cast<size_t>(written) : 0));
            if (!full) continue;
            return waitFor(path, file);
        }
        if (!file.failing)
            logLine(Level::Warning, "cannot write to the trace {}: {}", path, std::strerror(errno));
        file.failing = true;
        return file.queue.drop();
    }
}

void Trace::waitFor(const std::string &path, File &file) {
    if (!whenWritable_) return;
    file.waiting = true;
    whenWritable_(file.descriptor, [this, path] {
        const auto found = files_.find(path);
        if (found == files_.end()) return;
        found->second.waiting = false;
        flush(path);
    });
}

uint64_t Trace::follow(Follower follower) {
    followers_.emplace(nextFollower_, std::move(follower));
    return nextFollower_++;
}

}  // namespace qvs::kernel
