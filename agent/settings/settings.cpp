// SPDX-License-Identifier: Apache-2.0
#include "agent/settings/settings.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <deque>
#include <iterator>

#include "agent/rollout/machine.h"
#include "base/failure.h"
#include "base/text.h"
#include "config/document/tree.h"
#include "config/document/value_reader.h"
#include "config/document/write.h"
#include "tool/values.h"

namespace qvs::fleet {
namespace {

using config::Member;
using config::Type;
using config::Value;

constexpr const char *kLogs[] = {"text", "json"};

constexpr Member kMembers[] = {
    {.name = "host",
     .summary = "the name of this host in the fleet (the name of the machine)",
     .type = Type::Text,
     .most = 253},
    {.name = "labels",
     .summary = "labels of this host, as NAME=VALUE, which groups choose hosts by",
     .type = Type::Text,
     .list = true,
     .fallback = ""},
    {.name = "endpoints",
     .summary = "the members of the store",
     .type = Type::Text,
     .list = true,
     .fallback = "http://127.0.0.1:2379"},
    {.name = "prefix",
     .summary = "the beginning of all keys of the fleet",
     .type = Type::Text,
     .fallback = kDefaultPrefix},
    {.name = "caFile",
     .summary = "certificates of the authorities that may sign those of the store",
     .type = Type::Text,
     .fallback = ""},
    {.name = "certificateFile",
     .summary = "the certificate of this client",
     .type = Type::Text,
     .fallback = ""},
    {.name = "keyFile", .summary = "the key of that certificate", .type = Type::Text, .fallback = ""},
    {.name = "user", .summary = "the user of the store", .type = Type::Text, .fallback = ""},
    {.name = "passwordFile",
     .summary = "the file with the user's password, which only its owner may read",
     .type = Type::Text,
     .fallback = ""},
    {.name = "requestLimit",
     .summary = "how long a member of the store may take for an answer",
     .type = Type::Number,
     .least = 1,
     .most = 60,
     .unit = "seconds",
     .fallback = "5"},
    {.name = "directory",
     .summary = "where the agent keeps its state",
     .type = Type::Text,
     .least = 1,
     .fallback = "/var/lib/qvs/agent"},
    {.name = "lease",
     .summary = "how long a host counts as there when it is not heard of",
     .type = Type::Number,
     .least = 2,
     .most = 3600,
     .unit = "seconds",
     .fallback = "30"},
    {.name = "window",
     .summary = "hosts fetch a revision at a random moment within this time",
     .type = Type::Number,
     .most = 3600,
     .unit = "seconds",
     .fallback = "2"},
    {.name = "confirm",
     .summary = "a change is undone unless all checks succeed within this time",
     .type = Type::Number,
     .least = 1,
     .most = 3600,
     .unit = "seconds",
     .fallback = "60"},
    {.name = "check",
     .summary = "a program and its words, which must succeed after each change; no shell runs it",
     .type = Type::Text,
     .list = true,
     .fallback = ""},
    {.name = "checkLimit",
     .summary = "how long that program may take",
     .type = Type::Number,
     .least = 1,
     .most = 3600,
     .unit = "seconds",
     .fallback = "30"},
    {.name = "drift",
     .summary = "how often the host is compared with its revision",
     .type = Type::Number,
     .least = 1,
     .most = 86400,
     .unit = "seconds",
     .fallback = "10"},
    {.name = "enforce",
     .summary = "whether changes by others are undone; otherwise they are only reported",
     .type = Type::Boolean,
     .fallback = "off"},
    {.name = "coordinate",
     .summary = "whether this agent may coordinate rollouts",
     .type = Type::Boolean,
     .fallback = "on"},
    {.name = "listen",
     .summary = "address and port of /metrics and /health, or none",
     .type = Type::Text,
     .fallback = "127.0.0.1:9476"},
    {.name = "log",
     .summary = "how messages are written",
     .type = Type::Word,
     .words = kLogs,
     .fallback = "text"},
};

// The settings of the store are adjacent.
constexpr std::span<const Member> kStoreMembers(kMembers + 2, 8);
static_assert(std::string_view(kStoreMembers.front().name) == "endpoints");
static_assert(std::string_view(kStoreMembers.back().name) == "requestLimit");

constexpr const char *kConfigOption = "--config";

std::vector<cli::Option> optionsOf(std::span<const Member> members) {
    static std::deque<std::string> names;
    std::vector<cli::Option> made = {{.name = kConfigOption,
                                      .value = "FILE",
                                      .summary = "read the settings from FILE",
                                      .kind = cli::Kind::File}};
    for (const Member &member : members) {
        names.push_back(optionOf(member));
        cli::Option option{.name = names.back().c_str(), .value = "VALUE", .summary = member.summary};
        option.repeated = member.list;
        made.push_back(option);
    }
    return made;
}

// The value of an absent member. A list gets its default as its only item.
Value valueWithout(const Member &member) {
    if (!member.list) return config::fallbackOf(member);
    config::List list;
    if (*member.fallback != '\0') list.emplace_back(member.fallback);
    return list;
}

void readConfigFile(const cli::Arguments &arguments, const ConfigFile &file, Value &values) {
    const char *variable = std::getenv(file.variable);
    const bool named = arguments.given(kConfigOption) || variable != nullptr;
    const std::string path = arguments.given(kConfigOption) ? arguments.text(kConfigOption)
                             : variable != nullptr          ? variable
                                                            : file.path;
    if (!named && access(path.c_str(), F_OK) != 0) return;
    const std::vector<uint8_t> bytes = cli::readFile(path);
    std::vector<config::Problem> problems;
    const std::string_view text(reinterpret_cast<const char *>(bytes.data()), bytes.size());
    const auto root = config::parseTree(text, path, problems);
    if (root && root->kind != config::Node::Kind::Empty) {
        config::ValueReader reader(path, problems);
        values = reader.readRecord(kMembers, *root, {});
    }
    std::string message;
    for (const config::Problem &problem : problems)
        message += (message.empty() ? "" : "\n") + messageOf(problem);
    if (!message.empty()) throw Failure{Exit::Usage, message};
}

void readOptions(const cli::Arguments &arguments, std::span<const cli::Option> known, Value &values) {
    for (const Member &member : kMembers) {
        const std::string option = optionOf(member);
        if (std::ranges::none_of(known, [&](const cli::Option &one) { return option == one.name; })) continue;
        if (!arguments.given(option)) continue;
        config::List list;
        for (const std::string &text : arguments.all(option)) {
            config::Parsed parsed = parseScalar(member, text);
            if (!parsed.ok()) fail(Exit::Usage, "{}: {}", option, parsed.problem);
            list.push_back(std::move(parsed.value));
        }
        values.set(member.name, member.list ? Value(std::move(list)) : list.back());
    }
}

std::string machineName() {
    std::array<char, 256> name{};
    gethostname(name.data(), name.size() - 1);
    return name.data();
}

std::vector<std::string> textsOf(const Value &list) {
    std::vector<std::string> texts;
    for (const Value &item : list.list())
        texts.push_back(item.text());
    return texts;
}

Labels labelsOf(const Value &list) {
    Labels labels;
    for (const std::string &text : textsOf(list)) {
        const size_t equals = text.find('=');
        if (equals == 0 || equals == std::string::npos)
            fail(Exit::Usage, "labels: {} is not NAME=VALUE", inQuotes(text));
        labels[text.substr(0, equals)] = text.substr(equals + 1);
    }
    return labels;
}

}  // namespace

std::span<const cli::Option> agentOptions() {
    static const std::vector<cli::Option> options = optionsOf(kMembers);
    return options;
}

std::span<const cli::Option> storeOptions() {
    static const std::vector<cli::Option> options = optionsOf(kStoreMembers);
    return options;
}

Settings readSettings(const cli::Arguments &arguments, const ConfigFile &file) {
    Value values{config::Members{}};
    readConfigFile(arguments, file, values);
    readOptions(arguments, file.path == kAgentFile.path ? agentOptions() : storeOptions(), values);
    for (const Member &member : kMembers)
        if (values[member.name].absent()) values.set(member.name, valueWithout(member));
    const auto number = [&](const char *name) { return static_cast<uint32_t>(values[name].number()); };
    const auto text = [&](const char *name) {
        return values[name].absent() ? std::string() : values[name].text();
    };
    Settings settings;
    settings.host = text("host").empty() ? machineName() : text("host");
    if (!isName(settings.host))
        fail(Exit::Usage, "host: {} is no name of letters, digits, dots and dashes", inQuotes(settings.host));
    settings.labels = labelsOf(values["labels"]);
    settings.access = {textsOf(values["endpoints"]),
                       text("caFile"),
                       text("certificateFile"),
                       text("keyFile"),
                       text("user"),
                       text("passwordFile"),
                       std::chrono::seconds(number("requestLimit"))};
    settings.keys.prefix = text("prefix");
    settings.directory = text("directory");
    settings.leaseSeconds = number("lease");
    settings.windowSeconds = number("window");
    settings.confirmSeconds = number("confirm");
    settings.check = textsOf(values["check"]);
    settings.checkSeconds = number("checkLimit");
    settings.driftSeconds = number("drift");
    settings.enforce = values["enforce"].on();
    settings.coordinate = values["coordinate"].on();
    settings.listen = text("listen");
    settings.jsonLog = text("log") == kLogs[1];
    return settings;
}

std::string exampleFile() {
    std::string text =
        "# The settings of qvs-agent. A line without # in front replaces the default, which it shows.\n";
    for (const Member &member : kMembers) {
        text += fmt::format("\n# {}{}{}.\n", member.summary, member.unit != nullptr ? ", in " : "",
                            member.unit != nullptr ? member.unit : "");
        const std::string value = member.list ? fmt::format("[{}]", member.fallback)
                                  : member.fallback == nullptr || *member.fallback == '\0' ? "''"
                                                                                           : member.fallback;
        text += fmt::format("#{}: {}\n", member.name, value);
    }
    return text;
}

}  // namespace qvs::fleet
