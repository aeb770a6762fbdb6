// SPDX-License-Identifier: Apache-2.0
// Stands before the state library, the devices and the shell.
#include "kernel.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/ioctl.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "qvs/keys.h"
#include "qvs/qvs.h"
#include "state_library/snapshot_writer.h"
#include "support/frame.h"

// A large count of a kernel is refused, as where memory is short.
extern "C" const char *__asan_default_options();
extern "C" const char *__asan_default_options() {
    return "allocator_may_return_null=1:max_allocation_size_mb=64";
}

namespace qvs::fuzz {
namespace {

constexpr uint32_t kStatuses[] = {HYP_OK, HYP_NOT_FOUND, HYP_FAILURE, HYP_NO_MEMORY, HYP_EXISTS, 0xbad00d7};
constexpr int kErrors[] = {0, 0, EIO, ENOENT, EBUSY, EINTR};
constexpr const char *kDevices[] = {test::kSwitchDevice, test::kRouteTable, test::kBfd,       test::kKcp,
                                    test::kSpf,          test::kTraceflow,  test::kLivetrace, test::kIpfix};

const char *openDevice = nullptr;

FuzzedKernel &kernel() {
    return fuzzedKernel();
}

uint32_t change() {
    return kernel().answers != nullptr ? kStatuses[kernel().answers->u8() % std::size(kStatuses)] : HYP_OK;
}

std::string pathOf(const char *port, const char *key) {
    return std::string(port) + " " + key;
}

// A value with nothing behind it, so that the sanitizer sees what is read too far.
uint32_t give(std::string_view bytes, void **value, uint32_t *length) {
    *value = malloc(bytes.empty() ? 1 : bytes.size());
    if (!bytes.empty()) std::memcpy(*value, bytes.data(), bytes.size());
    *length = static_cast<uint32_t>(bytes.size());
    return HYP_OK;
}

uint32_t get(const char *port, const char *key, void **value, uint32_t *length) {
    if (Bytes *answers = kernel().answers) {
        const uint32_t status = change();
        if (status != HYP_OK) return status;
        const auto size = static_cast<size_t>(answers->u8() | answers->u8() << 8);
        return give(answers->take(size), value, length);
    }
    // The alias of a port is its identifier.
    if (std::strcmp(key, QVS_KEY_PORT_ALIAS) == 0 && kernel().ports.contains(port))
        return give(std::string_view(port, std::strlen(port) + 1), value, length);
    const auto found = kernel().properties.find(pathOf(port, key));
    return found != kernel().properties.end() ? give(found->second, value, length) : HYP_NOT_FOUND;
}

uint32_t set(const char *port, const char *key, const void *value, uint32_t length) {
    if (kernel().answers == nullptr)
        kernel().properties[pathOf(port, key)].assign(static_cast<const char *>(value), length);
    return change();
}

uint32_t clear(const char *port, const char *key) {
    if (kernel().answers != nullptr) return change();
    return kernel().properties.erase(pathOf(port, key)) != 0 ? HYP_OK : HYP_NOT_FOUND;
}

template <typename Function>
Function *next(Function *, const char *name) {
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

mesh::SnapshotWriter &writer() {
    static mesh::SnapshotWriter &instance = *new mesh::SnapshotWriter;
    return instance;
}

}  // namespace

FuzzedKernel &fuzzedKernel() {
    static FuzzedKernel &instance = *new FuzzedKernel;
    return instance;
}

void loadSnapshot() {
    if (writer().switchCount() == 0) {
        const auto text = [](const char *key, std::string_view value) {
            return writer().property(key, value, DVS_PROP_CONFIG);
        };
        const uint32_t globals[] = {text(QVS_KEY_ALIAS, {"sw1", 4})};
        const uint32_t hosts[] = {text(QVS_KEY_HOST_PORTSET, {"ps1", 4})};
        writer().addSwitch("id", "vswitch", 128, 105, globals, hosts);
        writer().addPort("port0", DVS_PORT_LIVE, {});
    }
    require(DVSLoadConfig() == HYP_OK);
}

}  // namespace qvs::fuzz

using namespace qvs::fuzz;

uint32_t DVSHYP_StateGet(void **buffer, uint32_t *length) {
    const auto blob = writer().finish();
    return give({reinterpret_cast<const char *>(blob.data()), blob.size()}, buffer, length);
}
void DVSHYP_DataFree(void *value) {
    free(value);
}
uint32_t DVSHYP_PortDataGet(const char *, const char *port, const char *key, void **value, uint32_t *length) {
    return get(port, key, value, length);
}
uint32_t DVSHYP_HostPropGet(const char *, const char *key, void **value, uint32_t *length) {
    return get("", key, value, length);
}
uint32_t DVSHYP_GlobalPropGet(const char *, const char *key, void **value, uint32_t *length) {
    return get("", key, value, length);
}
uint32_t DVSHYP_PortDataSet(const char *, const char *port, const char *key, const void *value,
                            uint32_t length, uint32_t) {
    return set(port, key, value, length);
}
uint32_t DVSHYP_HostPropSet(const char *, const char *key, const void *value, uint32_t length, uint32_t) {
    return set("", key, value, length);
}
uint32_t DVSHYP_GlobalPropSet(const char *, const char *key, const void *value, uint32_t length, uint32_t) {
    return set("", key, value, length);
}
uint32_t DVSHYP_PortDataClear(const char *, const char *port, const char *key) {
    return clear(port, key);
}
uint32_t DVSHYP_HostPropClear(const char *, const char *key) {
    return clear("", key);
}
uint32_t DVSHYP_GlobalPropClear(const char *, const char *key) {
    return clear("", key);
}
uint32_t DVSHYP_PortAdd(const char *, const char *port, const void *, uint32_t) {
    if (kernel().answers == nullptr && !kernel().ports.insert(port).second) return HYP_EXISTS;
    return change();
}
uint32_t DVSHYP_PortRemove(const char *, const char *port) {
    if (kernel().answers == nullptr && kernel().ports.erase(port) == 0) return HYP_NOT_FOUND;
    return change();
}
uint32_t DVSHYP_SwitchAdd(const char *, const char *, uint32_t, uint32_t) {
    return change();
}
uint32_t DVSHYP_SwitchAssociate(const char *) {
    return change();
}
uint32_t DVSHYP_SwitchDissociate(const char *) {
    return change();
}
uint32_t DVSHYP_SwitchRemove(const char *) {
    return change();
}

extern "C" {

__attribute__((visibility("default"))) int open(const char *path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const int mode = va_arg(arguments, int);
    va_end(arguments);
    static const auto real = reinterpret_cast<int (*)(const char *, int, ...)>(dlsym(RTLD_NEXT, "open"));
    for (const char *device : kDevices) {
        if (std::strcmp(path, device) != 0) continue;
        if (kernel().answers != nullptr &&
            (errno = kErrors[kernel().answers->u8() % std::size(kErrors)]) != 0)
            return -1;
        openDevice = device;
        return real("/dev/null", O_RDWR | O_CLOEXEC, 0);
    }
    return real(path, flags, mode);
}

__attribute__((visibility("default"))) int ioctl(int, unsigned long, ...) noexcept;
__attribute__((visibility("default"))) int ioctl(int, unsigned long request, ...) noexcept {
    va_list arguments;
    va_start(arguments, request);
    const void *argument = va_arg(arguments, void *);
    va_end(arguments);
    if (openDevice == nullptr) return -1;
    const qvs::test::Frame frame(openDevice, argument);
    auto *out = reinterpret_cast<char *>(frame.outAddress);
    // What goes to the kernel is there to be read.
    static volatile char sum;
    for (uint32_t i = 0; i < frame.inLength; ++i)
        sum = sum ^ reinterpret_cast<const char *>(frame.inAddress)[i];
    if (kernel().answers == nullptr) {
        // The identifier of the switch.
        std::memcpy(out, "id", frame.outLength < 3 ? frame.outLength : 3);
        return 0;
    }
    const uint8_t choice = kernel().answers->u8();
    const auto size = static_cast<size_t>(choice < 128 ? choice : (choice - 128) * 64);
    const std::string_view bytes = kernel().answers->take(size < frame.outLength ? size : frame.outLength);
    if (!bytes.empty()) std::memcpy(out, bytes.data(), bytes.size());
    errno = kErrors[kernel().answers->u8() % std::size(kErrors)];
    return errno != 0 ? -1 : 0;
}

__attribute__((visibility("default"))) int system(const char *) {
    return kernel().answers != nullptr ? kernel().answers->u8() & 1 : 0;
}

__attribute__((visibility("default"))) FILE *popen(const char *, const char *) {
    static char none[] = "";
    if (kernel().answers == nullptr) return fmemopen(none, 1, "r");
    const uint8_t size = kernel().answers->u8();
    if (size == 0) return nullptr;
    std::string_view bytes = kernel().answers->take(size);
    return bytes.empty() ? fmemopen(none, 1, "r")
                         : fmemopen(const_cast<char *>(bytes.data()), bytes.size(), "r");
}

__attribute__((visibility("default"))) int pclose(FILE *stream) {
    return fclose(stream);
}

}  // extern "C"
