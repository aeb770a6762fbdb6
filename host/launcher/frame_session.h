// SPDX-License-Identifier: Apache-2.0
// A session with the data path of a host, on the file "frames" of its directory.
#pragma once

#include <chrono>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "wire/file.h"
#include "wire/noncopyable.h"

namespace qvs::launcher {

class FrameSession : private wire::Noncopyable {
  public:
    // Connects to the data path of the host with this socket, and makes the request. Throws an error with the
    // reason if the data path refuses.
    FrameSession(const std::string &hostSocket, std::initializer_list<std::string_view> request);
    ~FrameSession();

    // The descriptors that came with the answer.
    const std::vector<wire::File> &files() const { return files_; }
    void send(std::span<const uint8_t> frame);
    // Waits until the data path has taken all frames that were sent.
    void finish();
    // Returns the next frame, which stays until the next call, or nothing if there is none in time.
    std::optional<std::span<const uint8_t>> receive(std::chrono::steady_clock::time_point deadline);

  private:
    void connect(const std::string &path);
    void readAnswer();

    int socket_ = -1;
    std::vector<wire::File> files_;
    std::vector<uint8_t> buffer_;
};

}  // namespace qvs::launcher
