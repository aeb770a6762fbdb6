// Builds the state blob from the model.
#include "kernel/snapshot.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <utility>
#include <vector>

#include "kernel/health_check.h"
#include "mesh/snapshot_writer.h"

namespace qvs::kernel {

namespace {

constexpr uint32_t kLive = 1;
// The blob's positions are 31 bits wide in effect.
constexpr uint64_t kMaxBytes = 1'900'000'000;

class Builder {
  public:
    Builder(const Model &model, uint64_t mark) : model_(model), mark_(mark) {}

    // False when the state does not fit.
    bool add(const Switch &sw) {
        std::vector<uint32_t> globals;
        std::vector<uint32_t> hosts;
        appendNames(sw.global, &globals);
        appendNames(sw.host, &hosts);
        writer_.addSwitch(sw.id, sw.className, sw.maxPorts, sw.version, globals, hosts);
        const HealthCheck check(model_, sw);
        std::vector<const Port *> ports;
        ports.reserve(sw.ports.size());
        for (const auto &[number, port] : sw.ports)
            ports.push_back(port.get());
        std::vector<uint32_t> properties;
        for (size_t i = 0; i < ports.size(); ++i) {
            const Port *port = ports[i];
            fetchAhead(ports, i);
            properties.clear();
            appendNames(port->properties, &properties);
            if (const auto results = check.resultsOf(*port)) {
                addResult(*port, kVlanResultKey, results->vlan, &properties);
                addResult(*port, kMtuResultKey, results->mtu, &properties);
            }
            if (port->statusFrom == Port::StatusFrom::Kernel) {
                properties.push_back(name({kPortStatusKey, port->statusRecord(), kVolatile}));
            }
            size_ += kPortSize + properties.size() * sizeof(uint32_t);
            writer_.addPort(port->id, kLive, properties);
        }
        return size_ < kMaxBytes;
    }

    flatbuffers::DetachedBuffer finish() { return writer_.finish(); }

  private:
    static constexpr uint64_t kPortSize = 64;
    static constexpr uint64_t kPropertySize = 32;

    // Ports, their lists and their properties lie far apart, and waiting for them one after the other would
    // be most of the work on a large host.
    static void fetchAhead(const std::vector<const Port *> &ports, size_t i) {
        constexpr size_t kPort = 12;
        constexpr size_t kList = 8;
        constexpr size_t kProperties = 4;
        if (i + kPort >= ports.size()) return;
        const auto *far = reinterpret_cast<const char *>(ports[i + kPort]);
        for (size_t line = 0; line < sizeof(Port); line += 64)
            __builtin_prefetch(far + line);
        __builtin_prefetch(std::to_address(ports[i + kList]->properties.begin()));
        for (const PropertyRef &property : ports[i + kProperties]->properties)
            __builtin_prefetch(&property->snapshotMark);
    }

    uint32_t name(const PropertyView &view) {
        size_ += view.key.size() + view.value.size() + kPropertySize;
        return writer_.newProperty(view.key, view.value, view.type);
    }

    void appendNames(const PropertyList &list, std::vector<uint32_t> *result) {
        for (const PropertyRef &property : list) {
            // Equal properties are one object in the model, so looking at the object is enough.
            if (property->snapshotMark != mark_) {
                property->snapshotName = name(property->view());
                property->snapshotMark = mark_;
            }
            result->push_back(property->snapshotName);
        }
    }

    // A value that a client has stored stands in the kernel's place.
    void addResult(const Port &port, std::string_view key, std::string_view value,
                   std::vector<uint32_t> *properties) {
        if (port.properties.find(key) == nullptr) properties->push_back(name({key, value, kVolatile}));
    }

    const Model &model_;
    qvs::mesh::SnapshotWriter writer_;
    uint64_t mark_;
    uint64_t size_ = 0;
};

// The bytes as a file that nobody can change any more; -1 when there is none to be had.
int sealedFile(std::string_view bytes) {
    const int file = memfd_create("qvs-state", MFD_CLOEXEC | MFD_ALLOW_SEALING);
    if (file < 0) return -1;
    size_t written = 0;
    while (written < bytes.size()) {
        const ssize_t step = write(file, bytes.data() + written, bytes.size() - written);
        if (step < 0 && errno == EINTR) continue;
        if (step <= 0) break;
        written += static_cast<size_t>(step);
    }
    const int seals = F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE | F_SEAL_SEAL;
    if (written == bytes.size() && fcntl(file, F_ADD_SEALS, seals) == 0) return file;
    close(file);
    return -1;
}

struct Stored {
    explicit Stored(flatbuffers::DetachedBuffer &&built) : buffer(std::move(built)) {
        if (buffer.size() >= kLeastFile) file = sealedFile(bytes());
    }
    Stored(const Stored &) = delete;
    Stored &operator=(const Stored &) = delete;
    ~Stored() {
        if (file >= 0) close(file);
    }

    std::string_view bytes() const { return {reinterpret_cast<const char *>(buffer.data()), buffer.size()}; }

    // What a socket's buffer holds at once goes through it faster.
    static constexpr size_t kLeastFile = 64 << 10;

    flatbuffers::DetachedBuffer buffer;
    int file = -1;
};

}  // namespace

const Blob &Snapshot::get() {
    if (generation_ == model_.generation()) return blob_;
    blob_ = {};
    generation_ = model_.generation();
    Builder builder(model_, generation_);
    for (const auto &[row, sw] : model_.switches()) {
        if (!builder.add(*sw)) return blob_;
    }
    const auto stored = std::make_shared<const Stored>(builder.finish());
    blob_ = {stored, stored->bytes(), stored->file};
    return blob_;
}

}  // namespace qvs::kernel
