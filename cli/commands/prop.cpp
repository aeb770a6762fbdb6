// SPDX-License-Identifier: Apache-2.0
// qvs prop: the stored properties of a switch by key.
#include <qvs/qvs.h>

#include <algorithm>
#include <string>

#include "access/library.h"
#include "access/stored_property.h"
#include "commands/nouns.h"
#include "config/library/snapshot.h"
#include "tool/failure.h"
#include "tool/output.h"
#include "tool/values.h"

namespace qvs::cli {
namespace {

void report(Output &out, const Target &target, bool changed) {
    std::string label = target.switchName;
    if (target.place.scope == Scope::Port) label += "/" + target.port;
    if (target.place.scope == Scope::Host) label += " host";
    std::optional<std::string_view> port;
    if (target.place.scope == Scope::Port) port = target.port;
    reportChange(out, label + " " + target.key,
                 {{"switch", target.switchName},
                  {"scope", scopeName(target.place.scope)},
                  {"port", port},
                  {"key", target.key}},
                 changed);
}

Words classWords(uint32_t classes) {
    Words words;
    if ((classes & DVS_PROP_CONFIG) != 0) words.words.push_back("CONFIG");
    if ((classes & DVS_PROP_RUNTIME) != 0) words.words.push_back("RUNTIME");
    if ((classes & DVS_PROP_VOLATILE) != 0) words.words.push_back("VOLATILE");
    if ((classes & DVS_PROP_POLICY) != 0) words.words.push_back("POLICY");
    return words;
}

void getProperty(const Arguments &arguments, Output &out) {
    Target target = targetOf(arguments);
    std::vector<uint8_t> value = readValue(target);
    if (arguments.given("--raw")) return writeRaw(out, arguments.text("--raw"), value);
    std::optional<std::string_view> text = printableText(value);
    if (!out.json()) {
        out.write(text && !arguments.given("--hex") ? std::string(*text) : hex(value));
        return out.write("\n");
    }
    std::optional<Property> stored = target.known() ? findProperty(target.place, target.key) : std::nullopt;
    std::optional<Words> classes;
    if (stored) classes = classWords(stored->classes);
    std::optional<std::string_view> port;
    if (target.place.scope == Scope::Port) port = target.port;
    Record record(out);
    record.field("switch", "switch", target.switchName);
    record.field("scope", "scope", scopeName(target.place.scope));
    record.field("port", "port", port);
    record.field("key", "key", target.key);
    record.field("class", "class", classes);
    record.field("length", "length", static_cast<uint32_t>(value.size()));
    record.field("text", "text", text);
    record.field("value", "value", Bytes(value));
    record.finish();
}

// --- set, clear ---

// Text is stored with its NUL, as the system stores text.
std::vector<uint8_t> textValue(const std::string &text) {
    return {text.c_str(), text.c_str() + text.size() + 1};
}

std::string_view formGiven(const Arguments &arguments) {
    return oneGiven(arguments, {"VALUE", "--text", "--hex", "--file"});
}

std::vector<uint8_t> givenValue(const Arguments &arguments) {
    const std::string_view form = formGiven(arguments);
    if (form == "--file") return readFile(arguments.text(form));
    if (form == "--hex") {
        return *parseHex(arguments.text("--hex"));
    }
    return textValue(arguments.text(form));
}

void setProperty(const Arguments &arguments, Output &out) {
    std::vector<uint8_t> value = givenValue(arguments);
    bool runtime = arguments.given("--runtime");
    Target target = targetOf(arguments);
    uint32_t wantedClass = runtime ? DVS_PROP_RUNTIME : DVS_PROP_CONFIG;
    std::optional<Property> stored = target.known() ? findProperty(target.place, target.key) : std::nullopt;
    bool same = stored && stored->classes == wantedClass &&
                std::equal(stored->value.begin(), stored->value.end(), value.begin(), value.end());
    if (!same) require(storeValue(target, value, runtime), propertyNamed(target));
    report(out, target, !same);
}

void clearProperty(const Arguments &arguments, Output &out) {
    Target target = targetOf(arguments);
    HYP_ReturnStatus status = clearValue(target);
    bool absent = status == HYP_NOT_FOUND && arguments.given("--if-exists");
    if (!absent) require(status, propertyNamed(target));
    report(out, target, !absent);
}

// With --by-id the alias is not known, so that the command may touch any switch.
std::vector<std::string> touchedProperty(const Arguments &arguments) {
    if (arguments.given("--by-id")) return {touchedPath({})};
    const std::string &name = arguments.text("SWITCH");
    const std::string &key = arguments.text("KEY");
    if (arguments.given("--port")) return {touchedPath({name, "port", arguments.text("--port"), key})};
    // Names, portset and uplinks of a switch are properties too.
    if (key.starts_with(QVS_KEY_COMMON_PREFIX)) return {touchedPath({})};
    return {touchedPath({name, arguments.given("--host") ? "host" : "global", key})};
}

// --- list ---

// The table shortens long values; JSON has them in full.
std::string tableValue(Bytes value) {
    constexpr size_t kShown = 32;
    if (auto text = printableText(value)) return std::string(*text);
    if (value.size() <= kShown) return hex(value);
    return hex(value.first(kShown)) + "...";
}

void listPlace(Listing &listing, const Place &place, std::optional<std::string_view> port, bool json) {
    forEachProperty(place, [&](const Property &property) {
        listing.row(scopeName(place.scope), port, property.key, classWords(property.classes),
                    static_cast<uint32_t>(property.value.size()), printableText(property.value),
                    json ? std::string() : tableValue(property.value), property.value);
        return true;
    });
}

void listProperties(const Arguments &arguments, Output &out) {
    Target target = targetOf(arguments);
    if (!target.known()) throw libraryFailure(named(target.switchName), HYP_NOT_FOUND);
    const bool all = arguments.given("--all");
    Listing listing(out, {{"scope", "SCOPE"},
                          {"port", "PORT"},
                          {"key", "KEY"},
                          {"class", "CLASS"},
                          {"length", "LENGTH"},
                          {"text", nullptr},
                          {nullptr, "VALUE"},
                          {"value", nullptr}});
    std::optional<std::string_view> port;
    if (target.place.scope == Scope::Port) port = target.port;
    listPlace(listing, target.place, port, out.json());
    if (all) {
        listPlace(listing, {Scope::Host, target.place.sw}, std::nullopt, out.json());
        forEachPort(target.place.sw, [&](DVSPort *each) {
            listPlace(listing, {Scope::Port, target.place.sw, each}, DVS_PortId(each), out.json());
            return true;
        });
    }
    listing.finish();
}

void checkKey(std::string_view, const std::string &key) {
    if (key.empty()) fail(Exit::Usage, "key: may not be empty");
}

void requireForm(const Arguments &arguments) {
    if (arguments.given("--runtime") && !arguments.given("--host"))
        fail(Exit::Usage, "--runtime is for host properties: add --host");
    (void)formGiven(arguments);
}

void requireOneScope(const Arguments &arguments) {
    if (arguments.given("--all") && (arguments.given("--host") || arguments.given("--port")))
        fail(Exit::Usage, "--all goes without --host and --port");
}

constexpr Argument kKey{.name = "KEY", .summary = "dotted name of the property", .check = checkKey};
constexpr Option kHost{.name = "--host",
                       .value = nullptr,
                       .summary = "the property of this host instead of the global one",
                       .excludes = "--port"};
constexpr Option kPort{"--port", "PORT", "the property of this port instead of the global one", Kind::Port};

const Command kRows[] = {
    {.words = "prop get",
     .summary = "print a property: text when it is text, otherwise hexadecimal digits",
     .arguments = {kSwitchArgument, kKey},
     .options = {kHost,
                 kPort,
                 kById,
                 {"--hex", nullptr, "print digits in any case"},
                 {"--raw", "FILE", "write the value's bytes to FILE (- for standard output) instead",
                  Kind::File}},
     .details = "Text is printable ASCII with one NUL behind it.",
     .example = "qvs prop get sw1 " QVS_KEY_VERSION,
     .run = reads(getProperty)},
    {.words = "prop set",
     .summary = "store a property of class CONFIG",
     .arguments = {kSwitchArgument, kKey, {"VALUE", "the same as --text VALUE", Kind::Word, true}},
     .options = {kHost,
                 kPort,
                 kById,
                 {"--text", "TEXT", "text, stored with a NUL behind it"},
                 {.name = "--hex",
                  .value = "DIGITS",
                  .summary = "bytes as pairs of hexadecimal digits",
                  .check = checkHex},
                 {"--file", "FILE", "the bytes of FILE (- for standard input), at most 32 MiB", Kind::File},
                 {"--runtime", nullptr, "class RUNTIME, for host properties"}},
     .details = "A property that has this value and class already is left alone.",
     .example = "qvs prop set sw1 com.example.rack --text b12",
     .run = writes(setProperty, touchedProperty),
     .agrees = requireForm},
    {.words = "prop clear",
     .summary = "delete a property",
     .arguments = {kSwitchArgument, kKey},
     .options = {kHost, kPort, kById, kIfExists},
     .example = "qvs prop clear sw1 com.example.rack --if-exists",
     .run = writes(clearProperty, touchedProperty)},
    {.words = "prop list",
     .summary = "list properties",
     .arguments = {kSwitchArgument},
     .options = {kHost, kPort, kById, {"--all", nullptr, "those of all scopes and ports"}},
     .details = "Values of more than 32 bytes that are no text are cut in the table; JSON has all bytes.",
     .example = "qvs prop list sw1 --port port0",
     .run = reads(listProperties),
     .agrees = requireOneScope},
};

}  // namespace

const std::span<const Command> kPropCommands = kRows;

}  // namespace qvs::cli
