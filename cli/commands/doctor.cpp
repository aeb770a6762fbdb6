// SPDX-License-Identifier: Apache-2.0
// qvs doctor: checks that this machine has what qvs needs. It changes nothing.
#include <dlfcn.h>
#include <qvs/qvs.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>

#include "commands/nouns.h"
#include "config/library/host.h"
#include "config/library/lock.h"
#include "config/library/snapshot.h"
#include "tool/output.h"
#include "tool/terminal.h"

namespace qvs::cli {
namespace {

enum class Result { Ok, Warning, Failed };
constexpr const char *kResults[] = {"ok", "warning", "failed"};

struct Finding {
    Result result;
    std::string message;  // what was found, and how to correct it
};

// Prints each finding at once, since the next check may wait for the host.
class Report {
  public:
    explicit Report(Output &out)
        : out_(out), listing_(out, {{"check", nullptr}, {"result", nullptr}, {"message", nullptr}}) {}

    void add(std::string_view check, const Finding &finding) {
        const std::string_view result = kResults[static_cast<size_t>(finding.result)];
        failed_ = failed_ || finding.result == Result::Failed;
        if (out_.json()) return listing_.row(check, result, std::string_view(finding.message));
        std::string line = fmt::format("{:7}  ", result);
        const size_t at = line.size();
        appendWrapped(line, fmt::format("{}: {}", check, shown(finding.message)), at, at,
                      terminalColumns().value_or(SIZE_MAX));
        out_.write(line + "\n");
        out_.flush();
    }
    void finish() {
        if (out_.json()) listing_.finish();
        out_.exitWith(failed_ ? 1 : 0);
    }

  private:
    Output &out_;
    Listing listing_;
    bool failed_ = false;
};

// Returns the file that a function comes from, with links resolved.
std::string fileOf(const char *function) {
    Dl_info info{};
    void *address = dlsym(RTLD_DEFAULT, function);
    if (address == nullptr || dladdr(address, &info) == 0) return {};
    std::error_code error;
    const std::filesystem::path path = std::filesystem::canonical(info.dli_fname, error);
    return error ? info.dli_fname : path.string();
}

Finding checkVersions() {
    const std::string library = fileOf("DVSLoadConfig");
    constexpr std::string_view kEnding = ".so.";
    const size_t at = library.rfind(kEnding);
    if (at == std::string::npos) return {Result::Ok, fmt::format("qvs {} with {}", QVS_VERSION, library)};
    const std::string version = library.substr(at + kEnding.size());
    if (version == QVS_VERSION)
        return {Result::Ok, fmt::format("qvs {0}, libqvs {0} ({1})", version, library)};
    return {Result::Warning, fmt::format("qvs {} runs with libqvs {} ({}); install both from one release",
                                         QVS_VERSION, version, library)};
}

// The loader starts qvs only when the library has all symbols that libqvs requires.
Finding checkStateLibrary() {
    const std::string library = fileOf("DVSHYP_StateGet");
    if (dlsym(RTLD_DEFAULT, "DVS_PortState") != nullptr)
        return {Result::Ok, fmt::format("{} has all symbols", library)};
    return {Result::Warning,
            fmt::format("{} lacks the optional symbol DVS_PortState; qvs dump shows no states of ports. "
                        "Install the state library of a newer hypercore if you need them",
                        library)};
}

struct Device {
    const char *path;
    const char *commands;  // that need it
};
constexpr Device kDevices[] = {
    {kSwitchDevice, "nearly all commands"},       {"/dev/ipfix", "ipfix"},
    {"/dev/traceflow", "trace and int"},          {"/dev/livetrace", "livetrace"},
    {"/crate/devices/char/hypdriver/rtm", "rtm"}, {"/crate/devices/char/hypdriver/tarn_bfd", "bfd"},
    {"/crate/devices/char/hypdriver/kcp", "kcp"}, {"/crate/devices/char/hypdriver/tarn-spf", "spf"},
};

Finding checkDevice(const Device &device) {
    const int error = openError(device.path);
    if (error == 0) return {Result::Ok, "opens"};
    if (isAbsence(error) && device.path == kSwitchDevice)
        return {
            Result::Failed,
            "missing; this machine has no hypercore, or its switch module is not loaded. To try qvs on an "
            "emulated host: qvs-host run -- qvs doctor"};
    if (isAbsence(error))
        return {Result::Warning, fmt::format("missing; load its module if you need {}", device.commands)};
    const char *remedy = error == EACCES || error == EPERM
                             ? "Run qvs as root, or as the user who owns the host."
                             : "See the log of the host, or wait longer with --timeout SECONDS.";
    return {Result::Failed,
            fmt::format("{}; it is needed by {}. {}", std::strerror(error), device.commands, remedy)};
}

Finding checkState() {
    const HYP_ReturnStatus status = loadSnapshot();
    if (status != HYP_OK) {
        return {Result::Failed,
                fmt::format("cannot be loaded: {} (0x{:x}); check that the host runs, and that this user may "
                            "access it",
                            ReturnStatusToString(status), status)};
    }
    size_t switches = 0;
    forEachSwitch([&](DVSSwitch *) {
        switches++;
        return true;
    });
    return {Result::Ok, fmt::format("loads; switches: {}", switches)};
}

Finding checkShell() {
    if (access("/bin/treesh", X_OK) == 0) return {Result::Ok, "can be executed"};
    return {Result::Failed, fmt::format("{}; it is needed by switch create, switch destroy and mtu set. "
                                        "It comes with the hypercore",
                                        std::strerror(errno))};
}

Finding checkPermissions() {
    const uid_t user = geteuid();
    if (user == 0) return {Result::Ok, "qvs runs as root"};
    const int error = openError(kSwitchDevice);
    if (error == 0) return {Result::Ok, fmt::format("user {} may open the switch device", user)};
    const bool refused = error == EACCES || error == EPERM;
    if (!refused) return {Result::Warning, "unknown, since the switch device does not open"};
    return {Result::Failed, fmt::format("user {} may not open the switch device; run qvs as root", user)};
}

Finding checkLocks() {
    const LockPlace place = lockPlace();
    if (place.problem.empty()) return {Result::Ok, place.directory};
    return {Result::Warning,
            fmt::format("no lock in {}: {}; concurrent runs may overwrite each other's changes. Make it a "
                        "directory that only root or this user may write to",
                        inQuotes(place.directory), place.problem)};
}

void examine(const Arguments &, Output &out) {
    Report report(out);
    report.add("versions", checkVersions());
    report.add("state library", checkStateLibrary());
    for (const Device &device : kDevices)
        report.add(fmt::format("device {}", device.path), checkDevice(device));
    report.add("switch state", checkState());
    report.add("shell /bin/treesh", checkShell());
    report.add("permissions", checkPermissions());
    report.add("locks", checkLocks());
    report.finish();
}

const Command kRows[] = {
    {.words = "doctor",
     .summary = "check that this machine has what qvs needs",
     .details = "Prints a line for each check: ok, warning or failed, what was found, and how to correct it. "
                "Changes nothing. The exit status is 1 when a check has failed.",
     .example = "qvs doctor",
     .run = local(examine)},
};

}  // namespace

const std::span<const Command> kDoctorCommands = kRows;

}  // namespace qvs::cli
