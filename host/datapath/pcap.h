// SPDX-License-Identifier: Apache-2.0
// Capture files in the pcap format, of the data path and the launcher.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

namespace qvs::datapath {

// An error in a capture file. The message contains the name of the file.
struct CaptureError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

struct CloseFile {
    void operator()(FILE *file) const { fclose(file); }
};
using Stream = std::unique_ptr<FILE, CloseFile>;

class CaptureReader {
  public:
    // Opens a file and checks its head.
    explicit CaptureReader(std::string path);
    // Returns the next frame, which stays until the next call, or nothing at the end of the file.
    std::optional<std::span<const uint8_t>> next();

  private:
    [[nodiscard]] bool read(void *data, size_t size);
    [[nodiscard]] uint32_t number(uint32_t value) const;
    [[noreturn]] void fail(const std::string &what) const;

    std::string path_;
    Stream file_;
    bool swapped_ = false;
    uint64_t frames_ = 0;
    std::vector<uint8_t> frame_;
};

class CaptureWriter {
  public:
    // Opens a file for writing. Appends to a capture file that is there, and refuses any other file.
    explicit CaptureWriter(std::string path);
    // Both return false after an error, with the reason in errno.
    [[nodiscard]] bool write(std::span<const uint8_t> frame);
    [[nodiscard]] bool flush();

  private:
    std::string path_;
    Stream file_;
};

}  // namespace qvs::datapath
