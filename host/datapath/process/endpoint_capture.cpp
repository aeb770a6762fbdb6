// SPDX-License-Identifier: Apache-2.0
// Attachments to capture files: one with the frames that the client sends, one for those that it receives.
#include <cerrno>
#include <cstring>
#include <optional>

#include <fmt/format.h>

#include "datapath/pcap.h"
#include "datapath/process/batch.h"
#include "datapath/process/endpoints.h"
#include "datapath/process/loop.h"

namespace qvs::datapath {

namespace {

// Frames are on disk after this time.
constexpr Time kFlushAfter = 20;

class CaptureEndpoint : public Endpoint {
  public:
    CaptureEndpoint(const policy::AttachmentT &attachment, const EndpointContext &context,
                    EndpointEvents events)
        : loop_(context.loop), events_(std::move(events)) {
        if (attachment.path.empty() && attachment.peer.empty())
            throw AttachmentError("the attachment names no capture file");
        try {
            if (!attachment.path.empty()) reader_.emplace(pathOf(attachment.path, context, "capture file"));
            if (!attachment.peer.empty()) writer_.emplace(pathOf(attachment.peer, context, "capture file"));
        } catch (const CaptureError &error) {
            throw AttachmentError(error.what());
        }
        written_ = attachment.peer;
        events_.carrier(true, "");
        if (reader_) reading_ = loop_.at(0, [this] { read(); });
    }

    ~CaptureEndpoint() override {
        loop_.cancel(reading_);
        loop_.cancel(flushing_);
    }

    bool send(const Frame &frame) override {
        if (!writer_) return true;
        if (!writer_->write(frame.bytes)) return stopWriting();
        if (flushing_ == 0) flushing_ = loop_.at(loop_.now() + kFlushAfter, [this] { flush(); });
        return true;
    }

  private:
    // The frames of the file follow each other without pause, some in each turn of the loop.
    void read() {
        reading_ = 0;
        try {
            for (size_t i = 0; i < kBatch; ++i) {
                const auto frame = reader_->next();
                if (!frame) return reader_.reset();
                events_.received({*frame, {}});
            }
        } catch (const CaptureError &error) {
            reader_.reset();
            return events_.carrier(false, error.what());
        }
        reading_ = loop_.at(0, [this] { read(); });
    }

    void flush() {
        flushing_ = 0;
        if (writer_ && !writer_->flush()) stopWriting();
    }

    bool stopWriting() {
        const std::string problem =
            fmt::format("cannot write the capture file {}: {}", written_, strerror(errno));
        writer_.reset();
        // A switch must not be notified of carriers while it forwards a frame.
        flushing_ = loop_.at(0, [this, problem] { events_.carrier(false, problem); });
        return false;
    }

    Loop &loop_;
    EndpointEvents events_;
    std::string written_;
    std::optional<CaptureReader> reader_;
    std::optional<CaptureWriter> writer_;
    uint64_t reading_ = 0;
    uint64_t flushing_ = 0;
};

}  // namespace

std::unique_ptr<Endpoint> openCapture(const policy::AttachmentT &attachment, const EndpointContext &context,
                                      EndpointEvents events) {
    return std::make_unique<CaptureEndpoint>(attachment, context, std::move(events));
}

}  // namespace qvs::datapath
