// SPDX-License-Identifier: Apache-2.0
// The commands for frames and attachments.
#include "launcher/network.h"

#include <sys/wait.h>

#include <spawn.h>
#include <cerrno>
#include <chrono>
#include <cstring>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "datapath/pcap.h"
#include "launcher/enter.h"
#include "launcher/error.h"
#include "launcher/frame_session.h"
#include "launcher/host.h"
#include "launcher/process.h"
#include "launcher/shell.h"
#include "tool/output.h"
#include "tool/values.h"

namespace qvs::launcher {

namespace {

using cli::Arguments;
using cli::Kind;
using cli::local;
using cli::Option;
using cli::Output;
using nlohmann::json;

constexpr const char *kKinds[] = {"namespace", "stream", "datagram", "capture", "tap", "host"};
constexpr size_t kShortestFrame = 14;
constexpr size_t kLongestFrame = 65536;

// Says why an attachment that was just made does not work.
void checkAttachment(const std::string &socket, const std::string &switchName, const std::string &port) {
    const json status = control(socket, {{"op", "status"}});
    const json attachments = status.value("network", json::object()).value("attachments", json::array());
    for (const json &each : attachments) {
        if (each.value("switch", "") != switchName || each.value("port", "") != port) continue;
        if (const std::string problem = each.value("problem", ""); !problem.empty()) throw Error(problem);
    }
}

void attach(const Arguments &arguments, Output &) {
    const uint32_t kind = cli::chosen(arguments, "KIND", kKinds);
    json request = {{"op", "attach"},
                    {"switch", arguments.text("SWITCH")},
                    {"port", arguments.text("PORT")},
                    {"kind", kKinds[kind]},
                    {"offloads", !arguments.given("--no-offloads")}};
    const bool toHost = std::string_view(kKinds[kind]) == "host";
    if (arguments.given("--name")) request["name"] = arguments.text("--name");
    if (arguments.given("--path")) request["path"] = absolute(arguments.text("--path"));
    if (arguments.given("--peer"))
        request["peer"] = toHost ? arguments.text("--peer") : absolute(arguments.text("--peer"));
    if (arguments.given("--mac")) request["mac"] = arguments.text("--mac");
    if (arguments.given("--mtu")) request["mtu"] = arguments.number("--mtu", 0);
    const std::string socket = socketOf(arguments);
    control(socket, request, kChangesWithin);
    checkAttachment(socket, arguments.text("SWITCH"), arguments.text("PORT"));
}

void detach(const Arguments &arguments, Output &) {
    control(socketOf(arguments),
            {{"op", "detach"}, {"switch", arguments.text("SWITCH")}, {"port", arguments.text("PORT")}});
}

void drops(const Arguments &arguments, Output &out) {
    json request = {{"op", "drops"}};
    if (arguments.given("SWITCH")) request["switch"] = arguments.text("SWITCH");
    if (arguments.given("PORT")) request["port"] = arguments.text("PORT");
    const json answer = control(socketOf(arguments), request);
    cli::Listing list(out, {{"switch", "SWITCH"},
                            {"port", "PORT"},
                            {"client", "CLIENT"},
                            {"reason", "REASON"},
                            {"frames", "FRAMES"}});
    for (const json &each : answer["drops"]) {
        const auto text = [&each](const char *member) { return each.value(member, ""); };
        list.row(text("switch"), text("port"), text("client"), text("reason"),
                 each.value("frames", uint64_t{0}));
    }
    list.finish();
}

void enter(const Arguments &arguments, Output &) {
    const std::string &client = arguments.text("NAME");
    std::vector<std::string> command = arguments.all("COMMAND");
    if (command.empty()) command = shellFor(client);
    enterClient(socketOf(arguments), client, command);
}

std::string switchGiven(const Arguments &arguments) {
    return arguments.given("--switch") ? arguments.text("--switch") : "";
}

std::vector<uint8_t> frameGiven(const Arguments &arguments) {
    const auto frame = qvs::parseHex(arguments.text("--hex"));
    if (!frame || frame->size() < kShortestFrame || frame->size() > kLongestFrame)
        qvs::fail(qvs::Exit::Usage, "--hex: a frame is {} to {} bytes in hexadecimal digits", kShortestFrame,
                  kLongestFrame);
    return *frame;
}

void sendFile(FrameSession &session, const std::string &path) {
    datapath::CaptureReader capture(path);
    while (const auto frame = capture.next()) {
        // An empty message would end the session.
        if (!frame->empty()) session.send(*frame);
    }
}

void send(const Arguments &arguments, Output &) try {
    cli::oneGiven(arguments, {"--hex", "--pcap"});
    const uint32_t count = arguments.number("--count", 1, 1);
    const std::vector<uint8_t> frame =
        arguments.given("--hex") ? frameGiven(arguments) : std::vector<uint8_t>();
    FrameSession session(socketOf(arguments), {"attach", switchGiven(arguments), arguments.text("PORT")});
    for (uint32_t i = 0; i < count; ++i) {
        if (frame.empty())
            sendFile(session, arguments.text("--pcap"));
        else
            session.send(frame);
    }
    session.finish();
} catch (const datapath::CaptureError &error) {
    throw Error(error.what());
}

uint16_t numberAt(std::span<const uint8_t> frame, size_t at) {
    return static_cast<uint16_t>(frame[at] << 8 | frame[at + 1]);
}

// "02:00:00:00:00:01 > ff:ff:ff:ff:ff:ff, VLAN 5, type 0x0806, 60 bytes"
std::string describe(std::span<const uint8_t> frame) {
    if (frame.size() < kShortestFrame) return fmt::format("{} bytes, shorter than a header", frame.size());
    std::string text =
        fmt::format("{} > {}", qvs::macText(frame.subspan(6, 6)), qvs::macText(frame.subspan(0, 6)));
    size_t type = 12;
    for (; type + 6 <= frame.size() && (numberAt(frame, type) == 0x8100 || numberAt(frame, type) == 0x88a8);
         type += 4) {
        const uint16_t tag = numberAt(frame, type + 2);
        text += fmt::format(", VLAN {}", tag & 0xfff);
        if ((tag >> 13) != 0) text += fmt::format(" priority {}", tag >> 13);
    }
    return text + fmt::format(", type 0x{:04x}, {} bytes", numberAt(frame, type), frame.size());
}

// Whether a frame is from the address that --from names, if it does.
bool isWanted(std::span<const uint8_t> frame, const std::optional<qvs::MacAddress> &from) {
    return !from ||
           (frame.size() >= kShortestFrame && std::equal(from->begin(), from->end(), frame.begin() + 6));
}

// A command that runs while frames are expected.
class Companion : private wire::Noncopyable {
  public:
    explicit Companion(const std::vector<std::string> &command) {
        if (command.empty()) return;
        const std::vector<char *> words = argumentsOf(command);
        const int failure = posix_spawnp(&process_, words[0], nullptr, nullptr, words.data(), environ);
        if (failure != 0) throw Error(fmt::format("cannot run {}: {}", command[0], strerror(failure)));
    }
    ~Companion() {
        if (process_ != 0) waitForProcess(process_);
    }
    // Waits until the command ends. Throws if it failed.
    void finish() {
        if (process_ == 0) return;
        const int status = waitForProcess(process_);
        process_ = 0;
        if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) throw Error("the command failed");
    }

  private:
    pid_t process_ = 0;
};

void expect(const Arguments &arguments, Output &out) try {
    const bool none = arguments.given("--none");
    const uint32_t count = none ? 1 : arguments.number("--count", 1, 1);
    const std::chrono::seconds timeout(arguments.number("--timeout", none ? 1 : 5, 1, 86'400));
    std::optional<qvs::MacAddress> from;
    if (arguments.given("--from")) {
        from = qvs::parseMac(arguments.text("--from"));
        if (!from)
            qvs::fail(qvs::Exit::Usage, "--from: {} is not an address such as 02:00:00:00:00:01",
                      qvs::inQuotes(arguments.text("--from")));
    }
    std::optional<datapath::CaptureWriter> capture;
    if (arguments.given("--pcap")) capture.emplace(arguments.text("--pcap"));
    FrameSession session(socketOf(arguments), {"attach", switchGiven(arguments), arguments.text("PORT")});
    Companion companion(arguments.all("COMMAND"));
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    uint32_t came = 0;
    while (came < count) {
        const auto frame = session.receive(deadline);
        if (!frame) break;
        if (!isWanted(*frame, from)) continue;
        ++came;
        out.write(describe(*frame) + "\n");
        out.flush();
        if (capture && !capture->write(*frame))
            throw Error(fmt::format("cannot write the capture file: {}", strerror(errno)));
    }
    if (capture && !capture->flush())
        throw Error(fmt::format("cannot write the capture file: {}", strerror(errno)));
    companion.finish();
    if (none ? came == 0 : came == count) return;
    out.exitWith(1);
    if (none)
        complain("a frame came to {}, and none was expected", qvs::shown(arguments.text("PORT")));
    else
        complain("{} of {} frames came to {} within {} s", came, count, qvs::shown(arguments.text("PORT")),
                 timeout.count());
} catch (const datapath::CaptureError &error) {
    throw Error(error.what());
}

constexpr Option kSwitch{"--switch", "SWITCH", "the switch of the port, where several have one of that name"};
constexpr cli::Argument kPort{"PORT", "identifier of the port, or name of its client or NIC"};

const cli::Command kRows[] = {
    {.words = "attach",
     .summary = "attach a client to a port, or a wire to a NIC",
     .arguments = {{"SWITCH", "name of the switch"},
                   kPort,
                   {.name = "KIND", .summary = "how frames reach the port", .choices = kKinds}},
     .options =
         {kRunning,
          {"--name", "NAME", "name of the namespace, or of the tap (default: the client of the port)"},
          {"--path", "FILE",
           "the socket at which the data path serves a stream or datagrams; the capture file whose frames "
           "the "
           "port sends; the state directory of the other host",
           Kind::File},
          {"--peer", "FILE",
           "the socket to which datagrams go; the capture file for frames that the port receives; the NIC of "
           "the other host"},
          {"--mac", "ADDRESS", "address of the client's adapter"},
          {"--mtu", "BYTES", "largest payload of the client's interface (default: that of the switch)"},
          {"--no-offloads", nullptr, "frames reach the client with checksum and segments complete"}},
     .details =
         "namespace: a network namespace with an interface eth0, see enter. stream: a Unix stream socket; "
         "each "
         "frame comes behind its length of four bytes, most significant first, as virtual machines send it. "
         "datagram: Unix datagrams. capture: files in the pcap format. tap: an interface of this machine, "
         "where one may make it. host: a NIC of another emulated host, which is attached to this one.",
     .example = "qvs-host attach sw1 port1 namespace --name vm1",
     .json = false,
     .run = local(attach)},
    {.words = "detach",
     .summary = "remove the attachment of a port",
     .arguments = {{"SWITCH", "name of the switch"}, kPort},
     .options = {kRunning},
     .example = "qvs-host detach sw1 port1",
     .json = false,
     .run = local(detach)},
    {.words = "drops",
     .summary = "show why ports dropped frames, and how many",
     .arguments = {{.name = "SWITCH", .summary = "name of the switch (default: all)", .optional = true},
                   {.name = "PORT", .summary = kPort.summary, .optional = true}},
     .options = {kRunning},
     .details = "A line for each reason for which a port dropped frames since the network was started. "
                "docs/datapath.md explains the reasons.",
     .example = "qvs-host drops sw1 port1 --json",
     .run = local(drops)},
    {.words = "enter",
     .summary = "run a command, or a shell, in the network namespace of a client",
     .arguments = {{"NAME", "name of the namespace"},
                   {.name = "COMMAND",
                    .summary = "the command and its words, behind --",
                    .kind = Kind::Program,
                    .optional = true,
                    .repeated = true}},
     .options = {kRunning},
     .details = "The command runs as root of the namespace, and sees its interfaces in /sys.",
     .example = "qvs-host enter vm1 -- ip address add 10.0.0.1/24 dev eth0",
     .json = false,
     .run = local(enter)},
    {.words = "send",
     .summary = "send frames as the client of a port, or as the network behind a NIC",
     .arguments = {kPort},
     .options = {kRunning,
                 kSwitch,
                 {.name = "--hex",
                  .value = "TEXT",
                  .summary = "the frame in hexadecimal digits, from the destination on",
                  .need = cli::Need::Choice},
                 {.name = "--pcap",
                  .value = "FILE",
                  .summary = "the frames of a capture file",
                  .kind = Kind::File,
                  .need = cli::Need::Choice,
                  .excludes = "--hex"},
                 {"--count", "N", "how often (1)"}},
     .details = "The command ends when the switch has forwarded the frames.",
     .example = "qvs-host send port1 --hex 'ffffffffffff 020000000001 0806 0001'",
     .json = false,
     .run = local(send)},
    {.words = "expect",
     .summary = "wait for frames at a port, and print a line for each",
     .arguments = {kPort,
                   {.name = "COMMAND",
                    .summary = "a command that is started when the port is ready, and its words, behind --",
                    .kind = Kind::Program,
                    .optional = true,
                    .repeated = true}},
     .options = {kRunning,
                 kSwitch,
                 {.name = "--count", .value = "N", .summary = "how many frames (1)", .excludes = "--none"},
                 {"--none", nullptr, "succeed if no frame comes"},
                 {"--from", "ADDRESS", "ignore the frames of other senders"},
                 {"--timeout", "SECONDS", "how long to wait (5; 1 with --none)"},
                 {"--pcap", "FILE", "append the frames to a capture file", Kind::File}},
     .details = "Exits with 0 if the frames came, and with 1 if not.",
     .example = "qvs-host expect port2 -- qvs-host send port1 --pcap ping.pcap",
     .json = false,
     .run = local(expect)},
};

}  // namespace

const std::span<const cli::Command> kNetworkCommands = kRows;

}  // namespace qvs::launcher
