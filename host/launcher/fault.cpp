// SPDX-License-Identifier: Apache-2.0
// Checks the options of a fault and builds its request.
#include "launcher/fault.h"

#include <algorithm>
#include <string>

#include <nlohmann/json.hpp>

#include "launcher/host.h"
#include "launcher/layout.h"
#include "tool/failure.h"
#include "tool/values.h"
#include "wire/fault.h"

namespace qvs::launcher {

namespace {

using cli::Arguments;
using nlohmann::json;
using qvs::Exit;
using qvs::fail;
using qvs::inQuotes;

std::string errnoGiven(const std::string &text) {
    if (!wire::errnoOf(text))
        fail(Exit::Usage, "--errno: {} is not the name of an error, such as EIO", inQuotes(text));
    return text;
}

std::string statusGiven(const std::string &text) {
    if (!wire::statusOf(text))
        fail(Exit::Usage, "--status: {} is not a number like 0xbad0014", inQuotes(text));
    return text;
}

json patchGiven(const std::string &text) {
    const size_t colon = std::min(text.find(':'), text.size());
    const std::string digits = text.substr(std::min(colon + 1, text.size()));
    const auto offset = wire::numberOf<uint32_t>(text.substr(0, colon));
    const bool bytes = !digits.empty() && digits.size() % 2 == 0 &&
                       digits.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos;
    if (!offset || *offset > wire::kMaxFaultOffset || !bytes) {
        fail(Exit::Usage, "--output: {} is not an offset and bytes, such as 0:ffffffff", inQuotes(text));
    }
    return {{"offset", *offset}, {"hex", digits}};
}

}  // namespace

json requestOf(const Arguments &arguments) {
    if (arguments.text("MATCH").empty()) fail(Exit::Usage, "MATCH: is empty; * matches every request");
    const uint32_t nth = arguments.number("--nth", 1, 1);
    const uint32_t count = arguments.number("--count", arguments.given("--forever") ? 0 : 1, 1);
    json action;
    if (arguments.given("--errno")) action["errno"] = errnoGiven(arguments.text("--errno"));
    if (arguments.given("--status")) action["status"] = statusGiven(arguments.text("--status"));
    if (arguments.given("--exit")) action["exit"] = arguments.number("--exit", 0, 0, wire::kMaxFaultExit);
    if (arguments.given("--delay"))
        action["delayMs"] = arguments.number("--delay", 0, 1, wire::kMaxFaultDelayMs);
    if (arguments.given("--kill")) action["kill"] = kMoments[cli::chosen(arguments, "--kill", kMoments)];
    for (const std::string &patch : arguments.all("--output"))
        action["output"].push_back(patchGiven(patch));
    if (arguments.given("--truncate")) action["truncate"] = arguments.number("--truncate", 0);
    if (arguments.given("--lab")) action["lab"] = readJson(findLab(arguments.text("--lab")));
    if (action.empty()) {
        fail(Exit::Usage,
             "the fault has no effect; give at least one of --errno, --status, --exit, --delay, --kill, "
             "--output, --truncate "
             "and --lab");
    }
    json request = {{"op", "fault.add"}, {"match", arguments.text("MATCH")}, {"nth", nth}, {"count", count}};
    request.update(action);
    return request;
}

}  // namespace qvs::launcher
