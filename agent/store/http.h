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

// How to reach the endpoints. An empty text means that it is not configured.
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

    // Throws Failure (NoAnswer) if no complete answer arrives within the time limit.
    Answer post(const std::string &url, const std::string &body, const std::string &token);

  private:
    struct Handle;
    std::unique_ptr<Handle> handle_;
    const Access &access_;
};

// Endless answers, line by line.
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
    // Waits for a line, for the end of a stream, for one of the descriptors, or until the time limit. Appends
    // the lines. Returns the reason if a stream has ended, else nothing.
    std::string wait(std::span<pollfd> others, std::chrono::milliseconds most, std::vector<Line> &lines);

  private:
    struct Stream;
    struct Multi;
    std::unique_ptr<Multi> multi_;
    const Access &access_;
};

}  // namespace qvs::fleet
