// SPDX-License-Identifier: Apache-2.0
// The protocol on the Unix socket between the emulated kernel (qvs-hostd) and its clients: the state library,
// the interposer, the emulated shell and the launcher.
// A message consists of a head of 8 bytes (payload length and kind, both u32) and a payload of fields in the
// order given below. Integers are little-endian. Text and bytes are a u32 length, followed by that many
// bytes. A connection has one request at a time. Each request is answered by one Reply, unless noted
// otherwise.
#pragma once

#include <cstddef>
#include <cstdint>

namespace qvs::wire {

struct Head {
    uint32_t length = 0;  // of the payload
    uint32_t kind = 0;
};
static_assert(sizeof(Head) == 8);

// The largest payload. A larger one is refused before memory is allocated for it.
constexpr uint32_t kMaxRequest = 64u << 20;

enum class Kind : uint32_t {
    // The answer to a request. Its fields are listed with the request.
    Reply = 1,
    // {} -> {}. Tests whether the daemon answers.
    Ping = 2,
    // Daemon to client, before the next answer: {u32 milliseconds}. The daemon delays the answer by this time
    // on purpose, and the client must wait longer. There is no answer.
    Delay = 3,

    // State library. Replies begin with a u32 status (HYP_ReturnStatus).
    // {u8 file} -> {status, bytes blob}. If `file` is not 0, a large blob can be sent as a sealed file:
    // {status, u32 length} with its descriptor.
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

    // Interposer. Each connection is one open device. Closing the connection closes the device.
    DeviceOpen = 30,  // {text path} -> {u32 errno}
    // {u32 request, u64 argument} -> any number of CopyIn and CopyOut, then {i32 result, u32 errno}.
    // A client that adds {bytes frame, bytes input} saves the CopyIns for them. Either is empty if the client
    // could not or did not read it. Its answer can be a LastCopyOut.
    DeviceIoctl = 31,
    CopyIn = 32,   // daemon to client: {u64 address, u32 length}; answered by Copied with the bytes
    CopyOut = 33,  // daemon to client: {u64 address, bytes data}; answered by Copied without bytes
    Copied = 34,   // client to daemon: {u32 errno, bytes data}
    // Daemon to client: {u64 address, bytes data}. Ends a request with success, or with EFAULT if the client
    // cannot write the data.
    LastCopyOut = 35,

    // Emulated shell: {u32 argc, argc * text} -> {u32 exit code, bytes standard output, bytes standard error}
    Shell = 40,

    // Launcher and tests: {text JSON} -> {text JSON}; the JSON has "ok" and, when false, "error".
    Control = 50,
    // {} -> {}, then a TraceLine for each request as it happens, until the client closes.
    TraceFollow = 51,
    TraceLine = 52,  // daemon to client: {text line}, no answer
    // {} -> {} when the daemon serves. The daemon stays while a lease is open.
    Lease = 53,
};

// The scope of a property. The portId of a request is empty for the first two.
enum class Scope : uint8_t { Global = 0, Host = 1, Port = 2 };

// The environment that the launcher sets for clients.
constexpr char kSocketVariable[] = "QVS_HOST_SOCKET";  // path of the socket of the daemon
constexpr char kTreeshVariable[] = "QVS_HOST_TREESH";  // path of the emulated shell that replaces /bin/treesh
// The number of seconds that clients wait for an answer, which users set. See hostTimeout.
constexpr char kTimeoutVariable[] = "QVS_HOST_TIMEOUT";
// The entry that the interposer adds to an environment without the variables of the host.
constexpr char kLostEntry[] = "QVS_HOST_LOST=1";

// The offsets of the fields of a frame, which is the argument of a device request: u32 lengths and u64
// addresses. A frame without input has kNone for them.
struct FrameLayout {
    static constexpr size_t kNone = SIZE_MAX;
    size_t size = 0;
    size_t inLength = kNone;
    size_t inAddress = kNone;
    size_t outLength = 0;
    size_t outAddress = 0;
};

constexpr FrameLayout kNaturalFrame = {
    .size = 24, .inLength = 0, .inAddress = 8, .outLength = 4, .outAddress = 16};
constexpr FrameLayout kPackedFrame = {
    .size = 24, .inLength = 0, .inAddress = 4, .outLength = 12, .outAddress = 16};
constexpr FrameLayout kOutputFrame = {.size = 16, .outLength = 4, .outAddress = 8};
constexpr size_t kMaxFrame = 24;

// A device of the emulated kernel.
struct DeviceNode {
    const char *path;
    FrameLayout frame;
};
constexpr DeviceNode kDevices[] = {
    {"/dev/vswitch", kNaturalFrame},
    {"/dev/ipfix", kNaturalFrame},
    {"/dev/traceflow", kPackedFrame},
    {"/dev/livetrace", kPackedFrame},
    {"/crate/devices/char/hypdriver/rtm", kNaturalFrame},
    {"/crate/devices/char/hypdriver/tarn_bfd", kPackedFrame},
    {"/crate/devices/char/hypdriver/kcp", kOutputFrame},
    {"/crate/devices/char/hypdriver/tarn-spf", kNaturalFrame},
};

}  // namespace qvs::wire
