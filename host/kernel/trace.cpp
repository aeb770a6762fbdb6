// Formatting and writing of trace lines.
#include "kernel/trace.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

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

}  // namespace

std::string quote(std::string_view text) {
    std::string result = "\"";
    for (const char c : text) {
        if (c == '\n') {
            result += "\\n";
        } else if (c == '"' || c == '\\') {
            result += '\\';
            result += c;
        } else if (printable(c)) {
            result += c;
        } else {
            result += fmt::format("\\x{:02x}", static_cast<uint8_t>(c));
        }
    }
    return result += '"';
}

std::string shellWord(std::string_view text) {
    const bool isPlain = !text.empty() && std::all_of(text.begin(), text.end(), plain);
    return isPlain ? std::string(text) : quote(text);
}

std::string hexDigits(std::string_view bytes, std::string_view between) {
    std::string result;
    for (const char c : bytes)
        result += fmt::format("{}{:02x}", result.empty() ? "" : between, static_cast<uint8_t>(c));
    return result;
}

std::string hexRuns(std::string_view bytes) {
    std::string result;
    for (size_t at = 0; at < bytes.size(); ++at) {
        if (bytes[at] == 0) continue;
        if (at == 0 || bytes[at - 1] == 0) result += fmt::format("{}{}:", result.empty() ? "" : " ", at);
        result += fmt::format("{:02x}", static_cast<uint8_t>(bytes[at]));
    }
    return result;
}

std::string errnoName(int error) {
    if (error == 0) return "0";
    const char *name = strerrorname_np(error);
    return name != nullptr ? name : std::to_string(error);
}

Trace::~Trace() {
    for (const auto &[path, file] : files_)
        close(file);
}

int Trace::openFile(const std::string &path) {
    const int file = ::open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0666);
    if (file < 0) return errno;
    const auto [known, fresh] = files_.try_emplace(path, file);
    if (fresh) return 0;
    // The file of that name may be another one by now.
    close(known->second);
    known->second = file;
    return 0;
}

std::vector<std::string> Trace::files() const {
    std::vector<std::string> paths;
    for (const auto &[path, file] : files_)
        paths.push_back(path);
    return paths;
}

void Trace::write(const std::string &line) {
    // One write a line: lines of several daemons on one file do not mix, and none is lost with the process.
    const std::string whole = line + '\n';
    std::erase_if(files_, [&whole](const auto &entry) {
        const auto &[path, file] = entry;
        if (::write(file, whole.data(), whole.size()) == static_cast<ssize_t>(whole.size())) return false;
        spdlog::warn("the trace {} cannot be written and ends here: {}", path, std::strerror(errno));
        close(file);
        return true;
    });
    for (const auto &[id, follower] : followers_)
        follower(line);
}

uint64_t Trace::follow(Follower follower) {
    followers_.emplace(nextFollower_, std::move(follower));
    return nextFollower_++;
}

}  // namespace qvs::kernel
