// SPDX-License-Identifier: Apache-2.0
// Builds the snapshot from the model.
#include "daemon/model/snapshot.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

#include "daemon/model/health_check.h"
#include "state_library/snapshot_writer.h"
#include "wire/noncopyable.h"
#include "wire/stream.h"

namespace qvs::kernel {

namespace {

constexpr uint32_t kLive = 1;
// Positions in the blob have 31 bits.
constexpr uint64_t kMaxBytes = 1'900'000'000;

}  // namespace

// Builds the blob and keeps its contents, so that a change of a few properties is appended without building
// everything again.
class Snapshot::Builder {
  public:
    Builder(const Model &model, uint64_t mark) : model_(model), mark_(mark) {}

    // Adds all switches. Returns false if the state does not fit.
    bool addAll() {
        for (const auto &[row, sw] : model_.inventory.switches()) {
            add(*sw);
            if (size_ >= kMaxBytes) return false;
        }
        usefulSize_ = size_;
        return true;
    }

    // Updates these objects. Returns false if so many bytes are unused that everything must be built again.
    bool replace(const Changes::Touched &touched) {
        for (const Switch *sw : touched.switches) {
            const auto [globals, hosts] = switchLists(*sw);
            writer_.replaceSwitch(sw->snapshotIndex, globals, hosts);
        }
        for (const Changes::Moved &moved : touched.moved)
            move(*moved.owner, moved.number);
        for (const Port *port : touched.ports) {
            const HealthCheck check(model_.inventory, *port->owner);
            writer_.replacePort(placeOf(*port->owner, port->number), portList(*port, check));
        }
        return size_ < kMaxBytes && size_ - usefulSize_ <= usefulSize_ / 4 + kAlwaysTolerated;
    }

    flatbuffers::DetachedBuffer finish() { return writer_.finish(); }

  private:
    using Names = std::vector<uint32_t>;
    static constexpr uint64_t kPortSize = 64;
    static constexpr uint64_t kPropertySize = 32;
    static constexpr uint64_t kAlwaysTolerated = 16 << 10;

    void add(const Switch &sw) {
        const auto [globals, hosts] = switchLists(sw);
        sw.snapshotIndex = writer_.switchCount();
        writer_.addSwitch(sw.id, sw.className, sw.maxPorts, sw.version, globals, hosts);
        const HealthCheck check(model_.inventory, sw);
        std::vector<const Port *> ports;
        ports.reserve(sw.ports.size());
        for (const auto &[number, port] : sw.ports)
            ports.push_back(port.get());
        for (size_t i = 0; i < ports.size(); ++i) {
            const Port *port = ports[i];
            fetchAhead(ports, i);
            numbers_.push_back(port->number);
            size_ += kPortSize;
            writer_.addPort(port->id, kLive, portList(*port, check));
        }
    }

    // Returns the index of the port with this number, or of the one before which it would be.
    uint32_t placeOf(const Switch &sw, uint32_t number) {
        const qvs::mesh::Range &range = writer_.ports(sw.snapshotIndex);
        const auto first = numbers_.begin() + range.first();
        const auto place = std::lower_bound(first, first + range.count(), number);
        return static_cast<uint32_t>(place - numbers_.begin());
    }

    // Adds a port that is new to the blob, or removes one that no longer exists.
    void move(const Switch &sw, uint32_t number) {
        const uint32_t place = placeOf(sw, number);
        const qvs::mesh::Range &range = writer_.ports(sw.snapshotIndex);
        const bool known = place < range.first() + range.count() && numbers_[place] == number;
        const auto found = sw.ports.find(number);
        if (found == sw.ports.end() && known) {
            // Its bytes are no longer useful. Their number is not known.
            usefulSize_ -= usefulSize_ / numbers_.size();
            writer_.removePort(sw.snapshotIndex, place);
            numbers_.erase(numbers_.begin() + place);
        } else if (found != sw.ports.end() && !known) {
            const uint64_t before = size_;
            const Port &port = *found->second;
            writer_.insertPort(sw.snapshotIndex, place, port.id, kLive,
                               portList(port, HealthCheck(model_.inventory, sw)));
            numbers_.insert(numbers_.begin() + place, number);
            size_ += kPortSize;
            usefulSize_ += size_ - before;
        }
    }

    std::pair<Names, Names> switchLists(const Switch &sw) {
        std::pair<Names, Names> lists;
        appendNames(sw.global, &lists.first);
        appendNames(sw.host, &lists.second);
        return lists;
    }

    // Returns the properties of a port. The result is valid until the next call.
    const Names &portList(const Port &port, const HealthCheck &check) {
        portNames_.clear();
        appendNames(port.properties, &portNames_);
        if (const auto results = check.resultsOf(port)) {
            addResult(port, kVlanResultKey, results->vlan);
            addResult(port, kMtuResultKey, results->mtu);
        }
        if (port.statusFrom == Port::StatusFrom::Kernel) {
            portNames_.push_back(name({kPortStatusKey, port.statusRecord(), kVolatile}));
        }
        return portNames_;
    }

    // Prefetches the next ports, their lists and their properties. They are far apart in memory, and waiting
    // for each of them would take most of the time on a large host.
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
        return writer_.property(view.key, view.value, view.type);
    }

    void appendNames(const PropertyList &list, Names *result) {
        for (const PropertyRef &property : list) {
            // Equal properties share one object, so comparing objects is sufficient.
            if (property->snapshotMark != mark_) {
                property->snapshotName = name(property->view());
                property->snapshotMark = mark_;
            }
            result->push_back(property->snapshotName);
            size_ += sizeof(uint32_t);
        }
    }

    // Adds a result of the check, unless a client has stored a value under its key.
    void addResult(const Port &port, std::string_view key, std::string_view value) {
        if (port.properties.find(key) == nullptr) portNames_.push_back(name({key, value, kVolatile}));
    }

    const Model &model_;
    qvs::mesh::SnapshotWriter writer_;
    uint64_t mark_;
    uint64_t size_ = 0;
    uint64_t usefulSize_ = 0;
    Names portNames_;
    std::vector<uint32_t> numbers_;  // of the ports in the blob
};

bool BlobFile::writeSome(std::string_view bytes) {
    constexpr size_t kPiece = 1 << 20;
    if (state_ == State::Empty) {
        file_ = memfd_create("qvs-state", MFD_CLOEXEC | MFD_ALLOW_SEALING);
        state_ = file_ < 0 ? State::Failed : State::Open;
    }
    if (state_ != State::Open) return true;
    const std::string_view piece = bytes.substr(written_, kPiece);
    if (!wire::writeAll(file_, piece.data(), piece.size())) {
        fail();
        return true;
    }
    written_ += piece.size();
    if (written_ != bytes.size()) return false;
    seal();
    return true;
}

void BlobFile::seal() {
    const int seals = F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE | F_SEAL_SEAL;
    if (fcntl(file_, F_ADD_SEALS, seals) != 0) return fail();
    state_ = State::Sealed;
}

void BlobFile::fail() {
    close();
    state_ = State::Failed;
}

void BlobFile::close() {
    if (file_ >= 0) ::close(std::exchange(file_, -1));
}

Snapshot::Snapshot(Model &model) : model_(model) {}

Snapshot::~Snapshot() = default;

const Blob &Snapshot::get() {
    if (generation_ == model_.changes.generation()) return blob_;
    outdated_ = std::exchange(blob_, {});
    generation_ = model_.changes.generation();
    if (!update()) return blob_;
    // Smaller blobs fit into the buffer of a socket, which is faster than a file.
    constexpr size_t kLeastFile = 64 << 10;
    const auto stored = std::make_shared<const flatbuffers::DetachedBuffer>(builder_->finish());
    const std::string_view bytes(reinterpret_cast<const char *>(stored->data()), stored->size());
    blob_ = {stored, bytes, bytes.size() < kLeastFile ? nullptr : std::make_shared<BlobFile>()};
    return blob_;
}

bool Snapshot::update() {
    const Changes::Touched touched = model_.changes.take(Changes::Reader::Snapshot);
    if (builder_ != nullptr && !touched.anything && builder_->replace(touched)) return true;
    builder_ = std::make_unique<Builder>(model_, generation_);
    if (builder_->addAll()) return true;
    builder_.reset();
    return false;
}

}  // namespace qvs::kernel
