// Calls of libqvs as commands make them: traced on request, their buffers released, their lists kept in
// bounds.
#pragma once

#include <fmt/format.h>
#include <qvs/qvs.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>

#include "text.h"

namespace qvs::cli {

// Set by --trace.
inline bool tracing = false;

template <auto Free>
struct Releaser {
    void operator()(void *pointer) const { Free(pointer); }
};
using VshypBuffer = std::unique_ptr<void, Releaser<VSHYP_FreeMemory>>;
using VsdvsBuffer = std::unique_ptr<void, Releaser<VSDVS_FreeMemory>>;
using NetdvsText = std::unique_ptr<char, Releaser<NetDVS_FreeMemory>>;

namespace trace {

void line(std::string_view name, const std::string &arguments, HYP_ReturnStatus status,
          std::chrono::steady_clock::duration elapsed);

// Numbers and texts that go in are shown; records and whatever comes out is not.
template <typename Value>
std::string shownArgument(const Value &value) {
    if constexpr (std::is_same_v<Value, const char *>) {
        return value == nullptr ? "null" : "\"" + shown(value) + "\"";
    } else if constexpr (std::is_integral_v<Value>) {
        return fmt::format("{}", value);
    } else {
        return value == nullptr ? "null" : "...";
    }
}

}  // namespace trace

// Calls function, which is called name, and with --trace says so.
template <typename... Parameters>
HYP_ReturnStatus call(std::string_view name, HYP_ReturnStatus (*function)(Parameters...),
                      std::type_identity_t<Parameters>... arguments) {
    if (!tracing) return function(arguments...);
    auto start = std::chrono::steady_clock::now();
    HYP_ReturnStatus status = function(arguments...);
    auto elapsed = std::chrono::steady_clock::now() - start;
    std::string text;
    ((text += text.empty() ? "" : ", ", text += trace::shownArgument<Parameters>(arguments)), ...);
    trace::line(name, text, status, elapsed);
    return status;
}

// One of the VSHYP calls that hand out a buffer: call(name, function, arguments..., &buffer).
template <typename Function, typename... Arguments>
HYP_ReturnStatus fetch(std::string_view name, Function function, VshypBuffer &buffer,
                       Arguments... arguments) {
    void *raw = nullptr;
    HYP_ReturnStatus status = call(name, function, arguments..., &raw);
    buffer.reset(raw);
    return status;
}

// A counted list of the kernel: a header and entries of one size.
struct KernelList {
    VshypBuffer buffer;
    size_t entrySize = 0;
    uint32_t count = 0;  // of the entries that were really handed over

    Bytes entry(uint32_t index) const;
};

// Bounds the count that the kernel wrote by what the buffer holds, and warns when it claims more.
KernelList boundedList(VshypBuffer buffer, size_t entrySize, std::string_view what);

// The portset name, by which the kernel knows the switch.
std::string portsetOf(const std::string &alias);

}  // namespace qvs::cli
