// SPDX-License-Identifier: Apache-2.0
// Calls functions of libqvs, traces the calls on request, and releases their buffers.
#pragma once

#include <fmt/format.h>
#include <qvs/qvs.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>

#include "base/failure.h"
#include "base/text.h"
#include "config/library/status.h"

namespace qvs {

// Receives one line for each call of the library: its name, arguments, outcome and time. Null: no trace.
inline void (*onCall)(std::string_view line) = nullptr;
// True after a call has answered "not found", until it is set to false. A host that has ended answers the
// same.
inline bool foundNothing = false;

template <auto Free>
struct Releaser {
    void operator()(void *pointer) const { Free(pointer); }
};
using VshypBuffer = std::unique_ptr<void, Releaser<VSHYP_FreeMemory>>;
using VsdvsBuffer = std::unique_ptr<void, Releaser<VSDVS_FreeMemory>>;
using NetdvsText = std::unique_ptr<char, Releaser<NetDVS_FreeMemory>>;

namespace trace {

void line(std::string_view name, const std::string &arguments, const std::string &outcome,
          std::chrono::steady_clock::duration elapsed);
std::string statusText(HYP_ReturnStatus status);

// Arguments in a trace: numbers and texts that are passed in are shown, records and results are not.
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

// Takes the name of a function out of the text of the program.
template <auto Function>
consteval std::string_view nameOfFunction() {
    constexpr std::string_view kBefore = "Function = ";
    std::string_view name = __PRETTY_FUNCTION__;
    name.remove_prefix(name.find(kBefore) + kBefore.size());
    name.remove_prefix(name.find_first_not_of("&("));
    return name.substr(0, name.find_first_of(";])"));
}

static_assert(nameOfFunction<DVSLoadConfig>() == "DVSLoadConfig");

// traced<FUNCTION>(outcome, arguments...): calls FUNCTION of libqvs and, with --trace, prints the call.
// `outcome` describes the result in words. errno is kept.
template <auto Function>
struct TracedCall;
template <typename Result, typename... Parameters, Result (*Function)(Parameters...)>
struct TracedCall<Function> {
    Result operator()(std::string (*outcome)(Result), Parameters... arguments) const {
        if (onCall == nullptr) return Function(arguments...);
        auto start = std::chrono::steady_clock::now();
        Result result = Function(arguments...);
        auto elapsed = std::chrono::steady_clock::now() - start;
        int error = errno;
        std::string text;
        ((text += text.empty() ? "" : ", ", text += trace::shownArgument<Parameters>(arguments)), ...);
        trace::line(nameOfFunction<Function>(), text, outcome(result), elapsed);
        errno = error;
        return result;
    }
};
template <auto Function>
inline constexpr TracedCall<Function> traced;

// call<FUNCTION>(arguments...): does the same for a function that returns a status.
template <auto Function>
struct StatusCall;
template <typename... Parameters, HYP_ReturnStatus (*Function)(Parameters...)>
struct StatusCall<Function> {
    HYP_ReturnStatus operator()(Parameters... arguments) const {
        HYP_ReturnStatus status = traced<Function>(trace::statusText, arguments...);
        if (status == HYP_NOT_FOUND) foundNothing = true;
        return status;
    }
};
template <auto Function>
inline constexpr StatusCall<Function> call;

// Blocks SIGINT, SIGTERM and SIGHUP while it exists.
class SignalsHeld {
  public:
    SignalsHeld() {
        sigset_t held;
        sigemptyset(&held);
        for (int signal : {SIGINT, SIGTERM, SIGHUP})
            sigaddset(&held, signal);
        sigprocmask(SIG_BLOCK, &held, &before_);
    }
    ~SignalsHeld() { sigprocmask(SIG_SETMASK, &before_, nullptr); }
    SignalsHeld(const SignalsHeld &) = delete;
    SignalsHeld &operator=(const SignalsHeld &) = delete;

  private:
    sigset_t before_;
};

// callWhole<FUNCTION>(arguments...): does the same for a change of several steps and blocks signals
// meanwhile, because no command could complete or remove an interrupted change.
template <auto Function>
struct WholeCall;
template <typename... Parameters, HYP_ReturnStatus (*Function)(Parameters...)>
struct WholeCall<Function> {
    HYP_ReturnStatus operator()(Parameters... arguments) const {
        SignalsHeld held;
        return call<Function>(arguments...);
    }
};
template <auto Function>
inline constexpr WholeCall<Function> callWhole;

// Calls a VSHYP function that returns a buffer in its last argument.
template <auto Function, typename... Arguments>
HYP_ReturnStatus fetch(VshypBuffer &buffer, Arguments... arguments) {
    void *raw = nullptr;
    HYP_ReturnStatus status = call<Function>(arguments..., &raw);
    buffer.reset(raw);
    return status;
}

// Does the same, and throws when the call fails.
template <auto Function, typename... Arguments>
VshypBuffer fetched(std::string_view subject, Arguments... arguments) {
    VshypBuffer buffer;
    require(fetch<Function>(buffer, arguments...), subject);
    return buffer;
}

}  // namespace qvs
