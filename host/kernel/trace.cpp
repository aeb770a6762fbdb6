// Formatting and writing of trace lines.
#include "kernel/trace.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iterator>
#include <utility>

#include <fmt/format.h>
#include <spdlog/spdlog.h>

namespace qvs::kernel {

namespace {

bool printable(char c) {
    return c >= 0x20 && c <= 0x7e;
}

bool plain(char c) {
    constexpr std::string_view kPlain = "_@%+=:,./-";
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           kPlain.find(c) != std::string_view::npos;
}

void appendHex(char c, std::string *result) {
    constexpr char kDigits[] = "0123456789abcdef";
    *result += kDigits[static_cast<uint8_t>(c) >> 4];
    *result += kDigits[static_cast<uint8_t>(c) & 15];
}

std::string leftOut(size_t bytes) {
    return fmt::format("+{} bytes", bytes);
}

}  // namespace

std::string quote(std::string_view text) {
    std::string result = "\"";
    for (const char c : text.substr(0, kShownText)) {
        if (c == '\n') {
            result += "\\n";
        } else if (c == '"' || c == '\\') {
            result += '\\';
            result += c;
        } else if (printable(c)) {
            result += c;
        } else {
            result += "\\x";
            appendHex(c, &result);
        }
    }
    result += '"';
    if (text.size() > kShownText) result += leftOut(text.size() - kShownText);
    return result;
}

std::string shellWord(std::string_view text) {
    const bool isPlain = !text.empty() && std::all_of(text.begin(), text.end(), plain);
    return isPlain ? std::string(text) : quote(text);
}

std::string hexDigits(std::string_view bytes, std::string_view between) {
    std::string result;
    for (const char c : bytes) {
        if (!result.empty()) result += between;
        appendHex(c, &result);
    }
    return result;
}

std::string hexRuns(std::string_view bytes) {
    std::string result;
    const std::string_view shown = bytes.substr(0, kShownArea);
    for (size_t at = 0; at < shown.size(); ++at) {
        if (shown[at] == 0) continue;
        if (at == 0 || shown[at - 1] == 0) {
            if (!result.empty()) result += ' ';
            fmt::format_to(std::back_inserter(result), "{}:", at);
        }
        appendHex(shown[at], &result);
    }
    if (bytes.size() == shown.size()) return result;
    return result + (result.empty() ? "" : " ") + leftOut(bytes.size() - shown.size());
}

std::string errnoName(int error) {
    if (error == 0) return "0";
    const char *name = strerrorname_np(error);
    return name != nullptr ? name : std::to_string(error);
}

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
    // After the last line nothing else would say it.
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
    // Whoever may put a link into the directory would otherwise choose which file is written; and a pipe must
    // make nobody wait, neither here nor later.
    const int descriptor = ::open(
        path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW | O_NOCTTY, 0666);
    if (descriptor < 0) {
        if (errno == ELOOP) return "it is a symbolic link; name the file itself";
        if (errno == ENXIO) return "nobody reads from it; start its reader first";
        return std::strerror(errno);
    }
    const auto form = [](std::string_view line) { return std::string(line) + '\n'; };
    // The file of that name may be another one by now.
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

// One write a line: lines of several daemons on one file do not mix, and none is lost with the process.
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
        if (!file.failing) spdlog::warn("the trace {} takes no lines: {}", path, std::strerror(errno));
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
