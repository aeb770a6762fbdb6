// SPDX-License-Identifier: Apache-2.0
// The table of the nodes and their operations.
#include "daemon/front/shell.h"

#include <algorithm>
#include <charconv>
#include <span>

#include <fmt/format.h>

namespace qvs::kernel {

namespace {

using Words = std::span<const std::string_view>;

ShellResult printed(std::string text) {
    return {0, std::move(text), {}};
}

ShellResult refused(std::string_view reason) {
    return {1, {}, std::string(reason)};
}

ShellResult answer(Status status) {
    switch (status) {
        case Status::Ok:
            return {};
        case Status::NotFound:
            return refused("no such node");
        case Status::Busy:
            return refused("in use by a switch");
        case Status::Exists:
            return refused("the name is taken");
        default:
            return refused("not a valid name or value");
    }
}

// Returns a decimal number, without the blanks and line ends around it. Returns 0 if the text is not a
// number.
uint32_t parseNumber(std::string_view text) {
    constexpr std::string_view kBlank = " \t\r\n";
    const size_t first = text.find_first_not_of(kBlank);
    if (first == std::string_view::npos) return 0;
    text = text.substr(first, text.find_last_not_of(kBlank) + 1 - first);
    int32_t number = 0;
    const char *end = text.data() + text.size();
    const auto [stop, code] = std::from_chars(text.data(), end, number);
    return code == std::errc() && stop == end && number > 0 ? static_cast<uint32_t>(number) : 0;
}

std::string mtuLine(uint32_t mtu) {
    return fmt::format("mtu:{}\n", mtu);
}

ShellResult createPortset(Model &model, std::string_view, Words values) {
    if (values.size() != 3) return refused("NAME, CAPACITY and CLASS are needed");
    if (values[2] != "vswitch") return refused("unknown class");
    const uint32_t capacity = parseNumber(values[1]);
    if (capacity == 0) return refused("not a number of ports");
    return answer(model.dataPaths.addPortset(values[0], capacity));
}

ShellResult destroyPortset(Model &model, std::string_view name, Words values) {
    if (values.size() != 1 || values[0] != "destroy") return refused("only \"destroy\" can be set");
    return answer(model.dataPaths.removePortset(name));
}

ShellResult getPortsetMtu(Model &model, std::string_view name) {
    return printed(mtuLine(model.inventory.findPortset(name)->mtu));
}

ShellResult setPortsetMtu(Model &model, std::string_view name, Words values) {
    if (values.size() != 1) return refused("one number is needed");
    return answer(model.dataPaths.setPortsetMtu(*model.inventory.findPortset(name), parseNumber(values[0])));
}

ShellResult listUplinks(Model &model, std::string_view name) {
    ShellResult result;
    const Switch *owner = model.inventory.findPortset(name)->owner;
    if (owner == nullptr) return result;
    for (const Nic *nic : model.inventory.boundNics(*owner))
        result.out += nic->name + "/\n";
    return result;
}

ShellResult getNicMtu(Model &model, std::string_view name) {
    return printed(mtuLine(model.inventory.findNic(name)->mtu));
}

ShellResult setNicMtu(Model &model, std::string_view name, Words values) {
    if (values.size() != 1) return refused("one number is needed");
    Nic &nic = *model.inventory.findNic(name);
    Nic to = nic;
    to.mtu = parseNumber(values[0]);
    return answer(model.uplinks.setNic(nic, to));
}

ShellResult listPortsets(Model &model, std::string_view) {
    ShellResult result;
    for (const auto &[number, portset] : model.inventory.portsets())
        result.out += portset->name + "/\n";
    return result;
}

ShellResult listNics(Model &model, std::string_view) {
    ShellResult result;
    for (const auto &nic : model.inventory.nics())
        result.out += nic->name + "/\n";
    return result;
}

bool isPortset(const Model &model, std::string_view name) {
    return model.inventory.findPortset(name) != nullptr;
}
bool isNic(const Model &model, std::string_view name) {
    return model.inventory.findNic(name) != nullptr;
}

// A node, or all nodes of a kind: "*" stands for the name of an object. The handlers are called only if
// `exists` knows the object.
struct Node {
    std::string_view path;
    bool (*exists)(const Model &, std::string_view name) = nullptr;
    ShellResult (*get)(Model &, std::string_view name) = nullptr;
    ShellResult (*set)(Model &, std::string_view name, Words values) = nullptr;
    ShellResult (*list)(Model &, std::string_view name) = nullptr;
    const char *children = nullptr;  // a fixed list
};

constexpr Node kNodes[] = {
    {.path = "", .children = "net/\n"},
    {.path = "net", .children = "create\npNics/\nportsets/\n"},
    {.path = "net/create", .set = createPortset},
    {.path = "net/portsets", .list = listPortsets},
    {.path = "net/portsets/*", .exists = isPortset, .children = "destroy\nmtu\nuplinks/\n"},
    {.path = "net/portsets/*/destroy", .exists = isPortset, .set = destroyPortset},
    {.path = "net/portsets/*/mtu", .exists = isPortset, .get = getPortsetMtu, .set = setPortsetMtu},
    {.path = "net/portsets/*/uplinks", .exists = isPortset, .list = listUplinks},
    {.path = "net/pNics", .list = listNics},
    {.path = "net/pNics/*", .exists = isNic, .children = "mtu\n"},
    {.path = "net/pNics/*/mtu", .exists = isNic, .get = getNicMtu, .set = setNicMtu},
};

// Splits a path into its pieces. Empty pieces are left out, so repeated slashes count as one.
std::vector<std::string_view> splitPath(std::string_view path) {
    std::vector<std::string_view> pieces;
    while (!path.empty()) {
        const size_t slash = path.find('/');
        if (slash != 0) pieces.push_back(path.substr(0, slash));
        path.remove_prefix(slash == std::string_view::npos ? path.size() : slash + 1);
    }
    return pieces;
}

const Node *findNode(const Model &model, const std::vector<std::string_view> &pieces,
                     std::string_view *name) {
    for (const Node &node : kNodes) {
        const auto path = splitPath(node.path);
        const bool same =
            std::equal(path.begin(), path.end(), pieces.begin(), pieces.end(),
                       [](std::string_view a, std::string_view b) { return a == "*" || a == b; });
        if (!same) continue;
        const auto star = std::find(path.begin(), path.end(), "*");
        if (star == path.end()) return &node;
        *name = pieces[static_cast<size_t>(star - path.begin())];
        return node.exists(model, *name) ? &node : nullptr;
    }
    return nullptr;
}

ShellResult perform(Model &model, std::string_view verb, std::string_view path, Words values) {
    std::string_view name;
    const Node *node = path.starts_with('/') ? findNode(model, splitPath(path), &name) : nullptr;
    if (node == nullptr) return refused("no such node");
    if (verb == "set")
        return node->set != nullptr ? node->set(model, name, values) : refused("cannot be set");
    if (!values.empty()) return refused("too many words");
    if (verb == "get") return node->get != nullptr ? node->get(model, name) : refused("cannot be read");
    if (node->children != nullptr) return printed(node->children);
    return node->list != nullptr ? node->list(model, name) : refused("has no nodes below it");
}

}  // namespace

ShellResult runShell(Model &model, const std::vector<std::string_view> &words) {
    const bool usable =
        words.size() >= 3 && words[0] == "-e" && (words[1] == "get" || words[1] == "set" || words[1] == "ls");
    if (!usable) return {1, {}, "usage: treesh -e get|ls NODE\n       treesh -e set NODE VALUE...\n"};
    ShellResult result = perform(model, words[1], words[2], Words(words).subspan(3));
    if (result.exitCode != 0) result.err = fmt::format("treesh: {}: {}\n", words[2], result.err);
    return result;
}

}  // namespace qvs::kernel
