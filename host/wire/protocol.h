// SPDX-License-Identifier: Apache-2.0
// What travels over the Unix socket between the emulated kernel (qvs-hostd) and everything that talks to it:
// the state library, the interposer, the emulated shell and the launcher.
//
// A message is an 8-byte head (payload length, kind; both u32) and a payload of fields in the order given
// below. Integers are little-endian; text and bytes are a u32 length and that many bytes. One connection
// carries one request at a time; every request is answered by exactly one Reply, except where noted.
#pragma once

#include <cstdint>

namespace qvs::wire {

struct Head {
    uint32_t length = 0;  // of the payload
    uint32_t kind = 0;
};
static_assert(sizeof(Head) == 8);

// Larger payloads are refused before anything is allocated for them.
constexpr uint32_t kMaxRequest = 64u << 20;

enum class Kind : uint32_t {
    // The answer to every request. Fields depend on the request and are given there.
    Reply = 1,
    // {} -> {}. Asks for nothing but an answer.
    Ping = 2,
    // Daemon to client, ahead of what it answers next: {u32 milliseconds}. It will wait that long on purpose,
    // which the client does not hold against it. No answer.
    Delay = 3,

    // State library. Replies begin with a u32 status (HYP_ReturnStatus).
    // {u8 file} -> {status, bytes blob}. When `file` is not 0, a large blob may come as a sealed file
    // instead:
    // {status, u32 length} with its descriptor beside it.
    StateGet = 10,
    PropGet = 11,    // {u8 scope, text switchId, text portId, text key} -> {status, bytes value}
    PropSet = 12,    // {u8 scope, text switchId, text portId, text key, bytes value, u32 type} -> {status}
    PropClear = 13,  // {u8 scope, text switchId, text portId, text key} -> {status}
    SwitchAdd = 14,  // {text switchId, text className, u32 maxPorts, u32 version} -> {status}
    SwitchAssociate = 15,   // {text switchId} -> {status}
    SwitchDissociate = 16,  // {text switchId} -> {status}
    SwitchRemove = 17,      // {text switchId} -> {status}
    PortAdd = 18,           // {text switchId, text portId, bytes properties} -> {status}
    PortRemove = 19,        // {text switchId, text portId} -> {status}

    // Interposer. A connection is one open device; closing it closes the device.
    DeviceOpen = 30,  // {text path} -> {u32 errno}
    DeviceIoctl =
        31,  // {u32 request, u64 argument} -> any number of CopyIn and CopyOut, then {i32 result, u32 errno}
    CopyIn = 32,   // daemon to client: {u64 address, u32 length}; answered by Copied with the bytes
    CopyOut = 33,  // daemon to client: {u64 address, bytes data}; answered by Copied without bytes
    Copied = 34,   // client to daemon: {u32 errno, bytes data}

    // Emulated shell: {u32 argc, argc * text} -> {u32 exit code, bytes standard output, bytes standard error}
    Shell = 40,

    // Launcher and tests: {text JSON} -> {text JSON}; the JSON has "ok" and, when false, "error".
    Control = 50,
    // {} -> {}, then a TraceLine for each request as it happens, until the client closes.
    TraceFollow = 51,
    TraceLine = 52,  // daemon to client: {text line}, no answer
    // {} -> {} when the daemon serves; it stays up while a lease is open.
    Lease = 53,
};

// Where a property lives; portId is empty for the first two.
enum class Scope : uint8_t { Global = 0, Host = 1, Port = 2 };

// What clients are told by the launcher.
constexpr char kSocketVariable[] = "QVS_HOST_SOCKET";  // the daemon's socket
constexpr char kTreeshVariable[] = "QVS_HOST_TREESH";  // the emulated shell that stands in for /bin/treesh
// How many seconds clients wait for an answer, by the user's will; see hostTimeout.
constexpr char kTimeoutVariable[] = "QVS_HOST_TIMEOUT";
// The interposer's mark in an environment from which the variables of the host were dropped.
constexpr char kLostEntry[] = "QVS_HOST_LOST=1";

// The eight device paths that belong to the emulated kernel.
constexpr const char *kDevicePaths[] = {
    "/dev/vswitch",
    "/dev/ipfix",
    "/dev/traceflow",
    "/dev/livetrace",
    "/crate/devices/char/hypdriver/rtm",
    "/crate/devices/char/hypdriver/tarn_bfd",
    "/crate/devices/char/hypdriver/kcp",
    "/crate/devices/char/hypdriver/tarn-spf",
};

}  // namespace qvs::wire
