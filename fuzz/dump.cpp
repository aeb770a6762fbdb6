// SPDX-License-Identifier: Apache-2.0
// Dumps a switch whose properties are made from the input: every printer with records of any length and
// content.
#include <dlfcn.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "input.h"
#include "qvs/keys.h"
#include "qvs/qvs.h"
#include "state_library/snapshot_writer.h"

namespace {

using qvs::fuzz::Bytes;
using qvs::fuzz::require;

#define QVS_KEY_ONLY(key, scope, propType) key,
constexpr const char *kKeys[] = {QVS_KEYS(QVS_KEY_ONLY)};
#undef QVS_KEY_ONLY

}  // namespace

// Stands before the state library's: the library reads each record from a copy with nothing behind it, so
// that the sanitizer sees what is read too far. Of an empty record one byte is readable.
uint32_t DVSData_Data(const DVSData *data, const void **value) {
    static const auto real = reinterpret_cast<decltype(&DVSData_Data)>(dlsym(RTLD_NEXT, "DVSData_Data"));
    static std::unique_ptr<char[]> copy;
    const uint32_t length = real(data, value);
    copy = std::make_unique<char[]>(length != 0 ? length : 1);
    std::memcpy(copy.get(), *value, length);
    *value = copy.get();
    return length;
}

// A property is a byte for its key, one for its class, two for its length, and the value; one byte in front
// of all chooses the switch's version and the port's state.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    Bytes input(data, size);
    const uint8_t head = input.u8();
    const uint32_t version = (head & 1) != 0 ? 105 : 99;
    qvs::mesh::SnapshotWriter writer;
    std::vector<uint32_t> properties;
    while (!input.empty()) {
        const char *key = kKeys[input.u8() % std::size(kKeys)];
        const uint32_t propType = input.u8();
        const size_t length = static_cast<size_t>(input.u8() | input.u8() << 8);
        properties.push_back(writer.property(key, input.take(length), propType));
    }
    writer.addSwitch("fuzz", "vswitch", 128, version, properties, {});
    writer.addPort("port", head >> 1, properties);
    const auto blob = writer.finish();
    require(DVSState_ConfigDeserialize(blob.data(), static_cast<uint32_t>(blob.size())) == HYP_OK);

    char *text = nullptr;
    require(NetDVS_Dump(nullptr, &text) == HYP_OK);
    // Bounded by the input: a property has its lines, and a byte of a record becomes a few characters.
    require(std::strlen(text) <= 200 + 2 * (2000 * properties.size() + 40 * size));
    NetDVS_FreeMemory(text);
    return 0;
}
