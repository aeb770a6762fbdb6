#include "tool/run.h"

#include <algorithm>
#include <cstdio>
#include <new>

#include "access/host.h"
#include "access/library.h"
#include "access/lock.h"
#include "access/snapshot.h"
#include "tool/help.h"
#include "tool/output.h"
#include "tool/text.h"

namespace qvs::cli {

std::span<const Noun> nouns() {
    static const Noun table[] = {
        {"switch", "distributed switches", kSwitchCommands},
        {"port", "ports of a switch", kPortCommands},
        {"uplink", "uplinks of a switch and their links", kUplinkCommands},
        {"mtu", "the MTU of a switch", kMtuCommands},
        {"mirror", "mirror sessions of a port, or of the uplinks of this host", kMirrorCommands},
        {"mirror runtime", "mirror sessions as the kernel runs them", kMirrorRuntimeCommands},
        {"pvlan", "the private VLANs of a switch", kPrivateVlanCommands},
        {"port vlan", "the VLANs of a port", kPortVlanCommands},
        {"port security", "what a port may do and receive", kPortSecurityCommands},
        {"teaming", "how a switch and its ports spread traffic over the uplinks", kTeamingCommands},
        {"rarp", "what the kernel counted when it moved ports between uplinks", kTeamingStatsCommands},
        {"ls-teaming", "teaming policies of logical switches", kLsTeamingCommands},
        {"mac-learning", "how MAC addresses are learned", kMacLearningCommands},
        {"mac", "the MAC tables of the running switch, and how it learns", kMacCommands},
        {"mcast", "multicast filtering and the receive filter", kMulticastCommands},
        {"mcast filters", "the multicast groups that the kernel lets in", kMulticastFilterCommands},
        {"health", "checks of teaming, VLANs and MTU", kHealthCommands},
        {"discovery", "the discovery protocol of a switch", kDiscoveryCommands},
        {"port ipfix", "flow sampling of a port", kIpfixCommands},
        {"ipfix", "what the kernel counted when it sampled flows", kIpfixStatsCommands},
        {"spf", "the ports of the SPF data path", kSpfCommands},
        {"bfd", "forwarding detection between tunnel ends", kBfdCommands},
        {"kcp", "lists and status of the kernel control plane", kKcpCommands},
        {"trace", "tracing of flows", kTraceCommands},
        {"int", "in-band network telemetry", kTelemetryCommands},
        {"livetrace", "live-trace sessions", kLivetraceCommands},
        {"options", "options of the switch module", kOptionsCommands},
        {"rtm", "the route-table module", kRouteTableCommands},
        {"prop", "stored properties of a switch, this host's part of it, and its ports", kPropCommands},
        {"dump", "the whole state as text", kDumpCommands},
        {"status", "statuses of the library", kStatusCommands},
        {"batch", "many commands in one run", kBatchCommands},
        {"tool", "the tool itself", kToolCommands},
    };
    return table;
}

namespace {

// The command whose words come first, and how many words they are; null when more words are needed.
const Command *findCommand(std::span<const std::string> words, size_t &taken) {
    if (words.empty()) return nullptr;
    size_t known = 0;  // words that some command begins with
    for (const Noun &noun : nouns()) {
        for (const Command &command : noun.commands) {
            std::vector<std::string_view> own = wordsOf(command);
            auto differs = std::mismatch(own.begin(), own.end(), words.begin(), words.end()).first;
            taken = static_cast<size_t>(differs - own.begin());
            if (taken == own.size()) return &command;
            known = std::max(known, taken);
        }
    }
    if (known == 0) fail(Exit::Usage, "no such noun: {}; 'qvs help' lists them", inQuotes(words[0]));
    if (known < words.size()) {
        std::string begin = fmt::format("{}", fmt::join(words.first(known), " "));
        fail(Exit::Usage, "no such command: {} {}; 'qvs help {}' lists them", begin, inQuotes(words[known]),
             begin);
    }
    return nullptr;
}

// Options that stand before or between the words of the command.
void takeLeading(std::vector<std::string> &words, GlobalOptions &global) {
    constexpr size_t kMostWords = 3;
    size_t plain = 0;
    auto it = words.begin();
    while (it != words.end() && plain < kMostWords) {
        if (*it == "--json") {
            global.json = true;
        } else if (*it == "--trace") {
            global.trace = true;
        } else if (it->starts_with("--timeout=")) {
            global.timeout = timeoutGiven(it->substr(it->find('=') + 1));
        } else if (*it == "--timeout") {
            if (std::next(it) == words.end()) fail(Exit::Usage, "--timeout: SECONDS is needed");
            it = words.erase(it);
            global.timeout = timeoutGiven(*it);
        } else if (*it == "--help" || *it == "-h") {
            global.help = true;
        } else if (*it == "--version" && plain == 0) {
            global.version = true;
        } else if (it->starts_with("-")) {
            if (plain == 0) fail(Exit::Usage, "no such option: {}", inQuotes(*it));
            return;
        } else {
            plain++;
            ++it;
            continue;
        }
        it = words.erase(it);
    }
}

// Options that say what is printed.
void requireExclusive(const Arguments &arguments, const GlobalOptions &global) {
    auto exclude = [](bool both, const char *first, const char *second) {
        if (both) fail(Exit::Usage, "{} and {} exclude each other", first, second);
    };
    exclude(global.json && arguments.given("--raw"), "--json", "--raw");
    exclude(arguments.given("--names") && arguments.given("--kernel"), "--names", "--kernel");
    exclude(arguments.given("--by-id") && arguments.given("--kernel"), "--by-id", "--kernel");
}

void runWords(std::vector<std::string> words) {
    GlobalOptions global;
    takeLeading(words, global);
    Output plain(false);
    if (global.version) {
        plain.write(fmt::format("qvs {}\n", QVS_VERSION));
        return plain.flush();
    }
    size_t taken = 0;
    if (!global.help && findCommand(words, taken) == nullptr) {
        std::fputs(helpFor(words).c_str(), stderr);
        throw Failure{Exit::Usage, ""};
    }
    Call call = global.help ? Call{} : parseCall(words, global);
    if (call.global.help || global.help) {
        plain.write(helpFor(words));
        return plain.flush();
    }
    execute(call);
}

}  // namespace

Call parseCall(std::vector<std::string> words, GlobalOptions global) {
    takeLeading(words, global);
    size_t taken = 0;
    const Command *command = findCommand(words, taken);
    if (command == nullptr) fail(Exit::Usage, "a noun and a verb are needed; 'qvs help' lists them");
    Call call{command, {}, global};
    call.arguments =
        parseArguments(*command, std::span<const std::string>(words).subspan(taken), call.global);
    if (call.global.help) return call;
    if (call.global.json && !command->json) fail(Exit::Usage, "--json: qvs {} has none", command->words);
    requireExclusive(call.arguments, call.global);
    return call;
}

namespace {

// The switch that a command names, by its alias.
std::string lockName(const Arguments &arguments) {
    if (arguments.given("ALIAS")) return arguments.text("ALIAS");
    if (!arguments.given("SWITCH")) return {};
    const std::string &name = arguments.text("SWITCH");
    DVSSwitch *sw = arguments.given("--by-id") ? findSwitchById(name) : nullptr;
    return std::string(sw != nullptr ? findText({Scope::Global, sw}, QVS_KEY_ALIAS).value_or(name) : name);
}

void runLocked(const Call &call, Output &out) {
    const bool writes = call.command->run.access == Access::Writes;
    const Lock lock(writes ? call.command->guard : Guard::None, lockName(call.arguments));
    if (lock.behind()) requireState(loadSnapshot());
    call.command->run(call.arguments, out);
}

}  // namespace

void execute(const Call &call) {
    tracing = call.global.trace;
    if (call.global.timeout != 0) setPatience(call.global.timeout);
    const bool local = call.command->run.access == Access::Local;
    if (!local) requireHost();
    Output out(call.global.json);
    foundNothing = false;
    try {
        runLocked(call, out);
    } catch (const Failure &failure) {
        // What was done before the failure is reported, and the failure after it.
        out.flush();
        if (failure.fromLibrary && failure.exit != Exit::NoAnswer) blameHost(failure.message);
        throw;
    }
    if (foundNothing && call.command->run.access == Access::Reads) blameHost("");
    out.flush();
}

std::string helpFor(std::span<const std::string> words) {
    size_t taken = 0;
    const Command *command = findCommand(words, taken);
    if (command != nullptr) return commandHelp(*command);
    return words.empty() ? toolHelp() : nounHelp(words);
}

Exit run(std::span<const std::string> words) {
    try {
        runWords({words.begin(), words.end()});
        return Exit::Success;
    } catch (const Failure &failure) {
        if (!failure.message.empty()) complain("{}", failure.message);
        return failure.exit;
    } catch (const std::bad_alloc &) {
        std::fputs("qvs: Out of memory\n", stderr);
        return Exit::Failed;
    }
}

}  // namespace qvs::cli
