// Builds the state blob from the model.
#include "kernel/snapshot.h"

#include <unordered_map>
#include <vector>

#include "mesh/snapshot_writer.h"

namespace qvs::kernel {

namespace {

constexpr uint32_t kLive = 1;
// The blob's positions are 31 bits wide in effect.
constexpr uint64_t kMaxBytes = 1'900'000'000;

class Builder {
  public:
    // False when the state does not fit.
    bool add(const Switch &sw) {
        const std::vector<uint32_t> globals = names(sw.global);
        writer_.addSwitch(sw.id, sw.className, sw.maxPorts, sw.version, globals, names(sw.host));
        for (const Port *port : sw.portsByNumber()) {
            std::vector<uint32_t> properties = names(port->properties);
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
        return writer_.property(view.key, view.value, view.type);
    }

    std::vector<uint32_t> names(const PropertyList &list) {
        std::vector<uint32_t> result;
        for (const PropertyRef &property : list) {
            const auto [known, fresh] = known_.try_emplace(property.get(), 0);
            if (fresh) known->second = name(property->view());
            result.push_back(known->second);
        }
        return result;
    }

    qvs::mesh::SnapshotWriter writer_;
    // Equal properties are one object in the model, so its address is enough to find it again.
    std::unordered_map<const Property *, uint32_t> known_;
    uint64_t size_ = 0;
};

}  // namespace

const Blob &Snapshot::get() {
    if (generation_ == model_.generation()) return blob_;
    blob_ = {};
    generation_ = model_.generation();
    Builder builder;
    for (const auto &[row, sw] : model_.switches()) {
        if (!builder.add(*sw)) return blob_;
    }
    const auto buffer = std::make_shared<const flatbuffers::DetachedBuffer>(builder.finish());
    blob_ = {buffer, {reinterpret_cast<const char *>(buffer->data()), buffer->size()}};
    return blob_;
}

}  // namespace qvs::kernel
