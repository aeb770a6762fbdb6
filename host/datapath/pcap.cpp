// SPDX-License-Identifier: Apache-2.0
// Capture files in the pcap format.
#include "datapath/pcap.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <ctime>
#include <utility>

#include <fmt/format.h>

namespace qvs::datapath {

namespace {

constexpr uint32_t kMicroseconds = 0xa1b2c3d4;
constexpr uint32_t kNanoseconds = 0xa1b23c4d;
constexpr uint32_t kNewFormat = 0x0a0d0d0a;
constexpr uint32_t kEthernet = 1;
constexpr uint32_t kSnapLength = 262144;

struct Head {
    uint32_t magic = kMicroseconds;
    uint16_t major = 2;
    uint16_t minor = 4;
    int32_t zone = 0;
    uint32_t accuracy = 0;
    uint32_t snapLength = kSnapLength;
    uint32_t linkType = kEthernet;
};
static_assert(sizeof(Head) == 24);

struct Record {
    uint32_t seconds = 0;
    uint32_t fraction = 0;
    uint32_t captured = 0;
    uint32_t length = 0;
};
static_assert(sizeof(Record) == 16);

// Opens a regular file. A pipe would block, and a directory is opened like a file.
Stream openFile(const std::string &path, int flags, const char *mode) {
    const int file = open(path.c_str(), flags | O_CLOEXEC | O_NONBLOCK, 0666);
    if (file < 0)
        throw CaptureError(fmt::format("cannot open the capture file {}: {}", path, strerror(errno)));
    Stream stream(fdopen(file, mode));
    struct stat status {};
    if (fstat(file, &status) != 0 || !S_ISREG(status.st_mode))
        throw CaptureError(fmt::format("{} is not a regular file; name a capture file", path));
    return stream;
}

}  // namespace

CaptureReader::CaptureReader(std::string path)
    : path_(std::move(path)), file_(openFile(path_, O_RDONLY, "rb")) {
    Head head;
    if (!read(&head, sizeof head)) fail("is shorter than the head of a capture file");
    swapped_ =
        head.magic == __builtin_bswap32(kMicroseconds) || head.magic == __builtin_bswap32(kNanoseconds);
    const uint32_t magic = number(head.magic);
    if (magic == kNewFormat) fail("is in the pcapng format; convert it with \"editcap -F pcap\"");
    if (magic != kMicroseconds && magic != kNanoseconds) fail("is not a capture file in the pcap format");
    if ((number(head.linkType) & 0xffff) != kEthernet) fail("does not hold Ethernet frames");
}

std::optional<std::span<const uint8_t>> CaptureReader::next() {
    Record record;
    const size_t got = fread(&record, 1, sizeof record, file_.get());
    if (got == 0 && feof(file_.get()) != 0) return std::nullopt;
    ++frames_;
    if (got != sizeof record) fail(fmt::format("ends in the middle of frame {}", frames_));
    const uint32_t captured = number(record.captured);
    const uint32_t length = number(record.length);
    if (captured > kSnapLength)
        fail(fmt::format("is damaged: frame {} would have {} bytes", frames_, captured));
    if (captured < length)
        fail(fmt::format("has {} of the {} bytes of frame {}; capture whole frames (tcpdump -s 0)", captured,
                         length, frames_));
    frame_.resize(captured);
    if (!read(frame_.data(), captured)) fail(fmt::format("ends in the middle of frame {}", frames_));
    return frame_;
}

bool CaptureReader::read(void *data, size_t size) {
    return fread(data, 1, size, file_.get()) == size;
}

uint32_t CaptureReader::number(uint32_t value) const {
    return swapped_ ? __builtin_bswap32(value) : value;
}

void CaptureReader::fail(const std::string &what) const {
    throw CaptureError(fmt::format("{} {}", path_, what));
}

CaptureWriter::CaptureWriter(std::string path) : path_(std::move(path)) {
    file_ = openFile(path_, O_RDWR | O_CREAT | O_APPEND, "a+b");
    fseek(file_.get(), 0, SEEK_END);
    if (ftell(file_.get()) == 0) {
        const Head head;
        fwrite(&head, sizeof head, 1, file_.get());
        fflush(file_.get());
        return;
    }
    // Appending to anything else would damage it.
    rewind(file_.get());
    const Head own;
    Head head;
    if (fread(&head, 1, sizeof head, file_.get()) != sizeof head || head.magic != own.magic ||
        head.linkType != own.linkType)
        throw CaptureError(
            fmt::format("{} is there and is not a capture file that can be continued; remove it, or "
                        "name another one",
                        path_));
    fseek(file_.get(), 0, SEEK_END);
}

bool CaptureWriter::write(std::span<const uint8_t> frame) {
    timespec time;
    clock_gettime(CLOCK_REALTIME, &time);
    const auto size = static_cast<uint32_t>(frame.size());
    const Record record{static_cast<uint32_t>(time.tv_sec), static_cast<uint32_t>(time.tv_nsec / 1000), size,
                        size};
    return fwrite(&record, sizeof record, 1, file_.get()) == 1 &&
           fwrite(frame.data(), 1, frame.size(), file_.get()) == frame.size();
}

bool CaptureWriter::flush() {
    return fflush(file_.get()) == 0;
}

}  // namespace qvs::datapath
