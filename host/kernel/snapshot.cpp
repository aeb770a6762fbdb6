// Builds the state blob from the model.
#include "kernel/snapshot.h"

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
        const std::vector<uint32_t> globals = names(sw.global);
        writer_.addSwitch(sw.id, sw.className, sw.maxPorts, sw.version, globals, names(sw.host));
        const HealthCheck check(model_, sw);
        for (const auto &[number, port] : sw.ports) {
            std::vector<uint32_t> properties = names(port->properties);
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

    uint32_t name(const PropertyView &view) {
        size_ += view.key.size() + view.value.size() + kPropertySize;
        return writer_.newProperty(view.key, view.value, view.type);
    }

    std::vector<uint32_t> names(const PropertyList &list) {
        std::vector<uint32_t> result;
        for (const PropertyRef &property : list) {
            // Equal properties are one object in the model, so looking at the object is enough.
            if (property->snapshotMark != mark_) {
                property->snapshotName = name(property->view());
                property->snapshotMark = mark_;
            }
            result.push_back(property->snapshotName);
        }
        return result;
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

}  // namespace

const Blob &Snapshot::get() {
    if (generation_ == model_.generation()) return blob_;
    blob_ = {};
    generation_ = model_.generation();
    Builder builder(model_, generation_);
    for (const auto &[row, sw] : model_.switches()) {
        if (!builder.add(*sw)) return blob_;
    }
    const auto buffer = std::make_shared<const flatbuffers::DetachedBuffer>(builder.finish());
    blob_ = {buffer, {reinterpret_cast<const char *>(buffer->data()), buffer->size()}};
    return blob_;
}

}  // namespace qvs::kernel
