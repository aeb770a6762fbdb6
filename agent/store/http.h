// SPDX-License-Identifier: Apache-2.0
// Requests over HTTP to one of several endpoints, by libcurl: time limits, TLS, and streams of lines.
#pragma once

#include <poll.h>

#include <chrono>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace qvs::fleet {

// How the endpoints are reached. Empty texts are not given.
struct Access {
    std::vector<std::string> endpoints;  // "https://store1:2379"
    std::string caFile;                  // instead of the authorities of the system
    std::string certificateFile;         // of this client
    std::string keyFile;
    std::string user;
    std::string passwordFile;               // its first line
    std::chrono::milliseconds limit{5000};  // for a request at one endpoint
};

struct Answer {
    long status = 0;
    std::string body;
};

// One transfer at a time. Connections are kept.
class Http {
  public:
    explicit Http(const Access &access);
    ~Http();
    Http(const Http &) = delete;
    Http &operator=(const Http &) = delete;

    // Throws Failure (NoAnswer) when there is no whole answer within the limit.
    Answer post(const std::string &url, const std::string &body, const std::string &token);

  private:
    struct Handle;
    std::unique_ptr<Handle> handle_;
    const Access &access_;
};

// Answers that do not end, in lines.
class Streams {
  public:
    explicit Streams(const Access &access);
    ~Streams();
    Streams(const Streams &) = delete;
    Streams &operator=(const Streams &) = delete;

    void open(const std::string &url, std::string body, const std::string &token);

    struct Line {
        size_t stream = 0;  // in the order in which they were opened
        std::string text;
    };
    // Waits for a line, an end, one of the descriptors or the end of the time. The lines are appended.
    // Returns why a stream has ended, or nothing.
    std::string wait(std::span<pollfd> others, std::chrono::milliseconds most, std::vector<Line> &lines);

  private:
    struct Stream;
    struct Multi;
    std::unique_ptr<Multi> multi_;
    const Access &access_;
};

}  // namespace qvs::fleet
