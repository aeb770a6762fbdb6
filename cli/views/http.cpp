// SPDX-License-Identifier: Apache-2.0
#include "views/http.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <string>

#include "base/failure.h"

namespace qvs::cli {
namespace {

using Clock = std::chrono::steady_clock;

// A request of a monitoring system has a few hundred bytes.
constexpr size_t kMostRequestBytes = 8192;
constexpr std::chrono::seconds kTimeToSend{5};
constexpr std::chrono::seconds kTimeToRead{20};

// Whether a descriptor becomes ready before the deadline.
bool awaitReady(int descriptor, short events, Clock::time_point deadline) {
    for (;;) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
        pollfd wanted{descriptor, events, 0};
        const int ready = poll(&wanted, 1, static_cast<int>(std::max<int64_t>(left.count(), 0)));
        if (ready > 0) return true;
        if (ready == 0 || errno != EINTR) return false;
    }
}

struct Status {
    int code;
    const char *reason;
};
constexpr Status kOk{200, "OK"};
constexpr Status kBadRequest{400, "Bad Request"};
constexpr Status kNotFound{404, "Not Found"};
constexpr Status kNotAllowed{405, "Method Not Allowed"};
constexpr Status kTooSlow{408, "Request Timeout"};
constexpr Status kTooLong{431, "Request Header Fields Too Large"};
constexpr Status kNoVersion{505, "HTTP Version Not Supported"};
constexpr Status kUnavailable{503, "Service Unavailable"};

// Reads up to the empty line that ends the head. False when the client has gone.
bool readHead(std::string &head, Status &status) {
    const auto deadline = Clock::now() + kTimeToSend;
    while (head.find("\r\n\r\n") == std::string::npos && head.find("\n\n") == std::string::npos) {
        if (head.size() >= kMostRequestBytes) return status = kTooLong, true;
        if (!awaitReady(STDIN_FILENO, POLLIN, deadline)) return status = kTooSlow, true;
        char piece[1024];
        const ssize_t got =
            read(STDIN_FILENO, piece, std::min(sizeof piece, kMostRequestBytes - head.size()));
        if (got < 0 && (errno == EINTR || errno == EAGAIN)) continue;
        if (got < 0) return false;
        // What ends before its empty line is no request, and a client that says nothing needs no answer.
        if (got == 0) return status = kBadRequest, !head.empty();
        head.append(piece, static_cast<size_t>(got));
    }
    return true;
}

struct Request {
    std::string_view method;
    std::string_view path;
};

// "GET /metrics?x HTTP/1.1"
Status parseLine(std::string_view line, Request &request) {
    if (line.ends_with('\r')) line.remove_suffix(1);
    const auto isWord = [](std::string_view word) {
        return !word.empty() && std::ranges::all_of(word, [](char c) { return c > ' ' && c < '\x7f'; });
    };
    const size_t first = line.find(' ');
    const size_t last = line.rfind(' ');
    if (first == std::string_view::npos || first == last) return kBadRequest;
    request.method = line.substr(0, first);
    request.path = line.substr(first + 1, last - first - 1);
    const std::string_view version = line.substr(last + 1);
    if (!isWord(request.method) || !isWord(request.path) || !isWord(version)) return kBadRequest;
    if (!version.starts_with("HTTP/")) return kBadRequest;
    if (version != "HTTP/1.0" && version != "HTTP/1.1") return kNoVersion;
    // A proxy's form has the server in front.
    constexpr std::string_view kScheme = "http://";
    if (request.path.starts_with(kScheme)) {
        const size_t slash = request.path.find('/', kScheme.size());
        request.path = slash == std::string_view::npos ? "/" : request.path.substr(slash);
    }
    request.path = request.path.substr(0, request.path.find('?'));
    return kOk;
}

// Writes everything, unless the client has gone or reads too slowly.
void sendAll(std::string_view text) {
    const auto deadline = Clock::now() + kTimeToRead;
    bool isSocket = true;
    while (!text.empty()) {
        if (!awaitReady(STDOUT_FILENO, POLLOUT, deadline)) return;
        // A blocking write of more than there is room for would not end at the deadline. A pipe that is ready
        // has room for PIPE_BUF bytes at least.
        ssize_t sent = isSocket ? send(STDOUT_FILENO, text.data(), text.size(), MSG_DONTWAIT | MSG_NOSIGNAL)
                                : write(STDOUT_FILENO, text.data(), std::min<size_t>(text.size(), 4096));
        if (sent < 0 && errno == ENOTSOCK && isSocket) {
            isSocket = false;
            continue;
        }
        if (sent < 0 && (errno == EINTR || errno == EAGAIN)) continue;
        if (sent < 0) return;
        text.remove_prefix(static_cast<size_t>(sent));
    }
}

void respond(Status status, std::string_view contentType, std::string_view content, bool headOnly) {
    std::string answer = fmt::format(
        "HTTP/1.1 {} {}\r\nContent-Type: {}\r\nContent-Length: {}\r\nConnection: close\r\n"
        "X-Content-Type-Options: nosniff\r\n{}\r\n",
        status.code, status.reason, contentType, content.size(),
        status.code == kNotAllowed.code ? "Allow: GET, HEAD\r\n" : "");
    if (!headOnly) answer += content;
    sendAll(answer);
    // What was not read would make the system reset the connection, and the answer might be lost.
    shutdown(STDOUT_FILENO, SHUT_WR);
    const auto deadline = Clock::now() + std::chrono::milliseconds(200);
    char rest[4096];
    while (awaitReady(STDIN_FILENO, POLLIN, deadline) && Clock::now() < deadline)
        if (read(STDIN_FILENO, rest, sizeof rest) <= 0) return;
}

void refuse(Status status, bool headOnly, std::string_view why) {
    constexpr const char *kPlain = "text/plain; charset=utf-8";
    respond(status, kPlain, why.empty() ? fmt::format("{}\n", status.reason) : fmt::format("{}\n", why),
            headOnly);
}

}  // namespace

void answerRequest(std::span<const Resource> resources) {
    std::string head;
    Status status = kOk;
    if (!readHead(head, status)) return;
    Request request;
    if (status.code == kOk.code)
        status = parseLine(std::string_view(head).substr(0, head.find('\n')), request);
    const bool headOnly = request.method == "HEAD";
    if (status.code == kOk.code && request.method != "GET" && !headOnly) status = kNotAllowed;
    const auto resource = std::ranges::find(resources, request.path, &Resource::path);
    if (status.code == kOk.code && resource == resources.end()) status = kNotFound;
    if (status.code != kOk.code) return refuse(status, headOnly, {});
    fmt::memory_buffer content;
    try {
        resource->content(content);
    } catch (const Failure &failure) {
        warn("{}", failure.message);
        return refuse(kUnavailable, headOnly, failure.message);
    }
    respond(kOk, resource->contentType, {content.data(), content.size()}, headOnly);
}

}  // namespace qvs::cli
