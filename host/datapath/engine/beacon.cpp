// SPDX-License-Identifier: Apache-2.0
// Beacons: each uplink of a team tells the others that the physical network between them works.
#include <algorithm>
#include <utility>

#include "datapath/byte_writer.h"
#include "datapath/engine/engine.h"

namespace qvs::datapath {
namespace {

constexpr Time kBeaconEach = 1000;
constexpr Time kSilence = 3000;  // after the last beacon that was heard

// Behind the Ethernet header: a mark, and the number of the uplink that sent it.
constexpr uint32_t kMark = 0x71767362;
constexpr size_t kShortest = 60;

}  // namespace

// Uplinks that begin have some time until they count as silent.
void Engine::compileBeacons() {
    const std::vector<uint32_t> before = std::exchange(beaconing_, {});
    for (const Team &team : teams_) {
        if (!team.checkBeacon) continue;
        for (const auto *list : {&team.active, &team.standby})
            for (const uint32_t uplink : *list)
                if (std::find(beaconing_.begin(), beaconing_.end(), ports_[uplink].number) ==
                    beaconing_.end())
                    beaconing_.push_back(ports_[uplink].number);
    }
    for (const uint32_t number : beaconing_) {
        if (std::find(before.begin(), before.end(), number) != before.end()) continue;
        find(number)->heard = now_;
        find(number)->silent = false;
    }
}

// Returns when the next ones are due.
Time Engine::sendBeacons() {
    if (beaconing_.empty()) return kNever;
    if (now_ < beaconAt_) return beaconAt_;
    beaconAt_ = now_ + kBeaconEach;
    bool changed = false;
    for (const uint32_t number : beaconing_) {
        Port &uplink = *find(number);
        const bool silent = uplink.up && now_ - uplink.heard >= kSilence;
        changed = changed || silent != uplink.silent;
        uplink.silent = silent;
        if (!uplink.up) continue;
        ByteWriter beacon;
        beacon.put(kBroadcast, 6).put(switchAddress(), 6).put(kLocalType, 2).put(kMark, 4).put(number, 4);
        sendOwn(uplink, beacon.pad(kShortest).bytes());
    }
    if (changed) chooseUplinks(true);
    return beaconAt_;
}

// Returns whether the frame is a beacon, which clients do not receive. Those of other switches tell nothing.
bool Engine::takesBeacon(const Passage &passage) {
    Port &uplink = ports_[passage.from];
    const Bytes bytes = passage.frame->bytes;
    const size_t payload = passage.body + 2;
    if (passage.type != kLocalType || !uplink.uplink || bytes.size() < payload + 8 ||
        read32(bytes.data() + payload) != kMark)
        return false;
    if (passage.source != switchAddress() || read32(bytes.data() + payload + 4) == uplink.number) return true;
    uplink.heard = now_;
    if (uplink.silent) {
        uplink.silent = false;
        chooseUplinks(true);
    }
    return true;
}

}  // namespace qvs::datapath
