// The options of a fault, their checks, and the request they make.
#include "launcher/fault.h"

#include <algorithm>

#include <fmt/format.h>

#include "launcher/checks.h"
#include "launcher/error.h"
#include "launcher/host.h"
#include "wire/fault.h"

namespace qvs::launcher {

namespace {

using nlohmann::json;

constexpr char kFooter[] =
    R"(MATCH is looked for in the line that "qvs-host trace" prints for a request, up to
" -> ": watch that first. A request that is to fail and was given nothing of its
kind fails with EIO, 0xbad0001 or exit code 1. Examples:
  qvs-host fault add 'state PortAdd*port="port3"' --status 0xbad0014
  qvs-host fault add GetUplinks --nth 2 --forever --errno EIO
  qvs-host fault add 'ioctl*GetSwitches' --output 0:ff --output 4:0000)";

std::string isMatch(const std::string &text) {
    return text.empty() ? "matches nothing; * is every request" : "";
}

std::string isErrno(const std::string &text) {
    return wire::errnoOf(text) ? "" : fmt::format("'{}' is not the name of an error, such as EIO", text);
}

std::string isStatus(const std::string &text) {
    return wire::statusOf(text) ? "" : fmt::format("'{}' is not a number like 0xbad0014", text);
}

std::string isMoment(const std::string &text) {
    const bool known = text == "before" || text == "middle" || text == "after";
    return known ? "" : fmt::format("'{}' is none of before, middle and after", text);
}

std::string isPatch(const std::string &text) {
    const size_t colon = std::min(text.find(':'), text.size());
    const std::string_view digits = std::string_view(text).substr(std::min(colon + 1, text.size()));
    const bool bytes = !digits.empty() && digits.size() % 2 == 0 &&
                       digits.find_first_not_of("0123456789abcdefABCDEF") == std::string_view::npos;
    const bool good = isNumber(0, wire::kMaxFaultOffset)(text.substr(0, colon)).empty() && bytes;
    return good ? "" : fmt::format("'{}' is not an offset and bytes, such as 0:ffffffff", text);
}

json patchOf(const std::string &checked) {
    const size_t colon = checked.find(':');
    return {{"offset", std::stoul(checked)}, {"hex", checked.substr(colon + 1)}};
}

}  // namespace

void addFaultOptions(CLI::App *command, FaultOptions *options) {
    command->add_option("MATCH", options->match, "Part of a trace line; * and ? stand for other text")
        ->required()
        ->check(isMatch);
    command->add_option("--nth", options->nth, "Begin with the N-th match (default 1)")
        ->check(isNumber(1, UINT32_MAX));
    CLI::Option *count = command->add_option("--count", options->count, "How many matches (default 1)")
                             ->check(isNumber(1, UINT32_MAX));
    command->add_flag("--forever", options->forEver, "All matches from then on")->excludes(count);
    command->add_option("--errno", options->error, "A device request fails with this error, such as EIO")
        ->check(isErrno);
    command
        ->add_option("--status", options->status, "A state request fails with this status, such as 0xbad0014")
        ->check(isStatus);
    command->add_option("--exit", options->exit, "A shell request (treesh) fails with this exit code")
        ->check(isNumber(0, wire::kMaxFaultExit));
    command->add_option("--delay", options->delay, "Any request waits so many milliseconds first")
        ->check(isNumber(1, wire::kMaxFaultDelayMs));
    command->add_option("--kill", options->kill, "The host dies: before, middle (of the change) or after")
        ->check(isMoment);
    command
        ->add_option("--output", options->output,
                     "Overwrite bytes of any answer: OFFSET:HEX. May be given several times")
        ->allow_extra_args(false)
        ->check(isPatch);
    command->add_option("--truncate", options->truncate, "Cut any answer to so many bytes")
        ->check(isNumber(0, UINT32_MAX));
    command->add_option("--lab", options->lab, "Apply this lab just before the request")->check(namesFile);
    command->footer(kFooter);
}

json requestOf(const FaultOptions &options) {
    json action;
    if (!options.error.empty()) action["errno"] = options.error;
    if (!options.status.empty()) action["status"] = options.status;
    if (options.exit) action["exit"] = *options.exit;
    if (options.delay != 0) action["delayMs"] = options.delay;
    if (!options.kill.empty()) action["kill"] = options.kill;
    for (const std::string &patch : options.output)
        action["output"].push_back(patchOf(patch));
    if (options.truncate) action["truncate"] = *options.truncate;
    if (!options.lab.empty()) action["lab"] = readJson(options.lab);
    if (action.empty()) {
        throw Error(
            "fault add: give what is to happen: --errno, --status, --exit, --delay, --kill, --output, "
            "--truncate or --lab",
            kExitUsage);
    }
    json request = {{"op", "fault.add"},
                    {"match", options.match},
                    {"nth", options.nth},
                    {"count", options.forEver ? 0 : options.count}};
    request.update(action);
    return request;
}

}  // namespace qvs::launcher
