// SPDX-License-Identifier: Apache-2.0
// Reads any text as an answer of the store of a fleet, or as one of the records in it. A record that was read
// is the same when it is written and read again. The first byte selects the kind of text.
#include <cstdint>
#include <string>
#include <vector>

#include "agent/rollout/records.h"
#include "agent/store/gateway.h"
#include "base/failure.h"
#include "input.h"

namespace {

using namespace qvs::fleet;
using qvs::fuzz::require;

template <auto read>
void answer(std::string_view text) {
    (void)read(text);
}

template <auto read>
void record(std::string_view text) {
    const auto value = read(text);
    const std::string written = write(value);
    require(write(read(written)) == written);
}

void labels(std::string_view text) {
    const Labels value = readLabels(text);
    require(readLabels(writeLabels(value)) == value);
}

void watch(std::string_view text) {
    std::vector<Event> events;
    readWatch(text, events);
}

void refusal(std::string_view text) {
    for (const long status : {400, 401, 503})
        require(!readRefusal(status, text).message.empty());
}

constexpr void (*kKinds[])(std::string_view) = {answer<readRange>,
                                                answer<readCommitted>,
                                                answer<readLease>,
                                                answer<readAlive>,
                                                answer<readToken>,
                                                watch,
                                                refusal,
                                                record<readHead>,
                                                record<readManifest>,
                                                record<readStatus>,
                                                record<readResult>,
                                                labels,
                                                answer<parseWave>};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    qvs::fuzz::Bytes input(data, size);
    const uint8_t kind = input.u8();
    try {
        kKinds[kind % std::size(kKinds)](input.take(size));
    } catch (const qvs::Failure &failure) {
        require(!failure.message.empty());
    }
    return 0;
}
