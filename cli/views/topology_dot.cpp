// SPDX-License-Identifier: Apache-2.0
// The topology in the language of Graphviz, and the picture that Graphviz makes of it.
#include <fcntl.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <unordered_map>
#include <utility>

#include "base/failure.h"
#include "views/port_words.h"
#include "views/topology.h"

namespace qvs::cli {
namespace {

// A name in a quoted text, where a backslash begins an escape.
std::string quoted(std::string_view name) {
    std::string text = "\"";
    for (const char c : shown(name)) {
        if (c == '\\' || c == '"') text += '\\';
        text += c;
    }
    return text + '"';
}

// A name in a table, where a backslash begins an escape, too.
std::string cell(std::string_view name) {
    std::string text;
    for (const char c : shown(name)) {
        switch (c) {
            case '&':
                text += "&amp;";
                break;
            case '<':
                text += "&lt;";
                break;
            case '>':
                text += "&gt;";
                break;
            case '\\':
                text += "\\\\";
                break;
            default:
                text += c;
        }
    }
    return text;
}

struct Shade {
    std::string_view state;
    const char *fill;
};
constexpr Shade kShades[] = {
    {"up", "#d6f0dc"}, {"down", "#f8d7d2"}, {"free", "#f1f2f4"}, {"blocked", "#fbe3bd"}};

const char *shadeOf(const PortFacts &port) {
    return std::ranges::find(kShades, portState(port), &Shade::state)->fill;
}

const char *wireOf(const UplinkFacts &uplink) {
    if (!uplink.linkUp) return "color=\"#9aa3af\", style=dotted";
    return *uplink.linkUp ? "color=\"#23803c\", penwidth=2" : "color=\"#c0392b\", style=dashed";
}

// One switch. The names of nodes are numbers, so that no name of the host is part of the language.
class Picture {
  public:
    Picture(std::string &dot, const SwitchFacts &facts, size_t number)
        : dot_(dot), facts_(facts), name_(fmt::format("s{}", number)) {}

    void draw() {
        line("subgraph cluster_{} {{", name_);
        line(
            "label={}; {} [label={}, style=\"rounded,filled\", fillcolor=\"#dbe7fb\", "
            "ordering=out];",
            quoted(facts_.name()), name_, quoted(nameAndPolicies()));
        drawUplinks();
        drawGroups();
        drawMirrors();
        drawPrivateVlans();
        line("}}");
        drawNics();
    }

  private:
    template <typename... Values>
    void line(fmt::format_string<Values...> format, Values &&...values) {
        dot_ += "  " + fmt::format(format, std::forward<Values>(values)...) + "\n";
    }

    std::string nameAndPolicies() const {
        std::string text(facts_.name());
        if (!facts_.policies.empty()) text += " (" + policyNames(facts_.policies) + ")";
        return text;
    }

    void drawUplinks() {
        for (size_t i = 0; i < facts_.uplinks.size(); i++) {
            const std::string node = fmt::format("{}u{}", name_, i);
            line("{} [label={}];", node, quoted(facts_.uplinks[i].name));
            line("{} -> {} [dir=none, {}];", node, name_, wireOf(facts_.uplinks[i]));
            places_.emplace(facts_.uplinks[i].portId, node);
        }
    }

    // NICs belong to the host.
    void drawNics() {
        for (size_t i = 0; i < facts_.uplinks.size(); i++) {
            const UplinkFacts &uplink = facts_.uplinks[i];
            if (!uplink.nic) continue;
            const std::string node = fmt::format("{}n{}", name_, i);
            const std::string speed = uplink.speedMbps ? ", " + speedText(*uplink.speedMbps) : "";
            line("{} [label={}, shape=component];", node, quoted(fmt::format("{}{}", *uplink.nic, speed)));
            line("{} -> {}u{} [dir=none, {}];", node, name_, i, wireOf(uplink));
        }
    }

    // A table of about twice as many rows as columns, which are wider.
    void drawGroup(const std::string &node, const PortGroup &group) {
        size_t columns = 1;
        while (2 * columns * columns < group.ports.size())
            columns++;
        line(
            "{} [shape=plain, label=<<table border=\"1\" cellborder=\"0\" cellspacing=\"2\" "
            "color=\"#9aa3af\">",
            node);
        line("<tr><td port=\"head\" colspan=\"{}\"><b>{}</b></td></tr>", columns, cell(group.title));
        if (!group.policies.empty())
            line("<tr><td colspan=\"{}\">{}</td></tr>", columns, cell(group.policies));
        for (size_t i = 0; i < group.ports.size(); i++) {
            const PortFacts &port = *group.ports[i];
            dot_ += fmt::format("{}<td port=\"p{}\" bgcolor=\"{}\">{}</td>", i % columns == 0 ? "  <tr>" : "",
                                i, shadeOf(port), cell(port.id));
            if (i % columns == columns - 1 || i + 1 == group.ports.size()) dot_ += "</tr>\n";
            places_.emplace(port.id, fmt::format("{}:p{}", node, i));
        }
        line("</table>>];");
    }

    void drawGroups() {
        const std::vector<PortGroup> groups = groupsOf(facts_);
        for (size_t i = 0; i < groups.size(); i++)
            drawGroup(fmt::format("{}g{}", name_, i), groups[i]);
        // As with switches.
        for (size_t i = groups.size(); i-- > 0;)
            line("{} -> {}g{}:head [dir=none, color=\"#5b6675\"];", name_, name_, i);
    }

    void drawMirrors() {
        constexpr const char *kEdge = "constraint=false, style=dashed, color=\"#8a4fbf\"";
        for (size_t i = 0; i < facts_.mirrors.size(); i++) {
            const MirrorFacts &mirror = facts_.mirrors[i];
            const std::string node = fmt::format("{}m{}", name_, i);
            line("{} [label={}, shape=note, color=\"#8a4fbf\"];", node,
                 quoted(fmt::format("mirror {}{}", mirror.text("session"),
                                    mirror.disabled() ? " (disabled)" : "")));
            // Ends that are no ports here, such as addresses, are drawn as they are written.
            for (const char *member : {"sourcesIn", "sourcesOut"})
                for (const std::string_view source : mirror.texts(member))
                    line("{} -> {} [{}];", placeOf(source), node, kEdge);
            for (const std::string_view destination : mirror.texts("destinations"))
                line("{} -> {} [{}];", node, placeOf(destination), kEdge);
        }
    }

    std::string placeOf(std::string_view end) {
        const auto known = places_.find(end);
        if (known != places_.end()) return known->second;
        std::string node = fmt::format("{}e{}", name_, places_.size());
        line("{} [label={}, shape=plaintext];", node, quoted(end));
        return places_.emplace(end, std::move(node)).first->second;
    }

    void drawPrivateVlans() {
        for (const auto &[primary, secondaries] : privateVlanWords(facts_))
            line("{}v{} [shape=note, label={}];", name_, primary,
                 quoted(fmt::format("private VLAN {}: {}", primary, secondaries)));
    }

    std::string &dot_;
    const SwitchFacts &facts_;
    std::string name_;
    std::unordered_map<std::string_view, std::string> places_;  // the nodes of ports and uplinks
};

// --- Graphviz ---

class Pipe {
  public:
    Pipe() {
        if (pipe2(ends_.data(), O_CLOEXEC) != 0) fail(Exit::Failed, "pipe: {}", std::strerror(errno));
    }
    ~Pipe() {
        closeWriting();
        close(ends_[0]);
    }
    Pipe(const Pipe &) = delete;
    Pipe &operator=(const Pipe &) = delete;

    int reading() const { return ends_[0]; }
    int writing() const { return ends_[1]; }
    void closeWriting() {
        if (ends_[1] >= 0) close(ends_[1]);
        ends_[1] = -1;
    }

  private:
    std::array<int, 2> ends_{-1, -1};
};

// Starts the program with these standard descriptors. No shell sees what it is given.
pid_t start(int input, int output) {
    std::string words[] = {"dot", "-Tsvg"};
    char *argv[] = {words[0].data(), words[1].data(), nullptr};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    pid_t child = 0;
    const int error = posix_spawnp(&child, argv[0], &actions, nullptr, argv, environ);
    posix_spawn_file_actions_destroy(&actions);
    if (error == ENOENT)
        fail(Exit::Failed,
             "--format svg needs the program dot of Graphviz, which is not installed; on Debian: "
             "apt-get install graphviz");
    if (error != 0) fail(Exit::Failed, "dot: {}", std::strerror(error));
    return child;
}

}  // namespace

std::string dotText(const std::vector<SwitchFacts> &switches) {
    std::string dot =
        "digraph topology {\n"
        "  graph [rankdir=LR, fontname=\"sans-serif\", fontsize=16, ranksep=0.8, nodesep=0.2, "
        "color=\"#9aa3af\", "
        "style=rounded];\n"
        "  node [shape=box, fontname=\"sans-serif\", fontsize=11];\n"
        "  edge [arrowsize=0.7];\n";
    // Graphviz draws the first at the bottom.
    for (size_t i = switches.size(); i-- > 0;)
        Picture(dot, switches[i], i).draw();
    dot +=
        "  legend [shape=plain, label=<<table border=\"0\" cellspacing=\"4\"><tr><td "
        "border=\"0\">ports:</td>";
    for (const Shade &shade : kShades)
        dot += fmt::format("<td border=\"0\" bgcolor=\"{}\">{}</td>", shade.fill, shade.state);
    return dot + "</tr></table>>];\n}\n";
}

void writeSvg(Output &out, const std::string &dot) {
    // A file in memory, so that neither side waits for the other.
    const int input = memfd_create("topology", MFD_CLOEXEC);
    if (input < 0) fail(Exit::Failed, "memory for the picture: {}", std::strerror(errno));
    std::string_view rest = dot;
    while (!rest.empty()) {
        const ssize_t written = write(input, rest.data(), rest.size());
        if (written <= 0) break;
        rest.remove_prefix(static_cast<size_t>(written));
    }
    lseek(input, 0, SEEK_SET);
    Pipe picture;
    pid_t child = 0;
    try {
        child = start(input, picture.writing());
    } catch (...) {
        close(input);
        throw;
    }
    close(input);
    picture.closeWriting();
    std::array<char, 65536> piece{};
    for (;;) {
        const ssize_t got = read(picture.reading(), piece.data(), piece.size());
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) break;
        out.buffer().append(std::string_view(piece.data(), static_cast<size_t>(got)));
    }
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR)
        continue;
    if (WIFEXITED(status) && WEXITSTATUS(status) == 0) return;
    // A part of a picture is none.
    out.buffer().clear();
    fail(Exit::Failed, "dot has failed; its message is above");
}

}  // namespace qvs::cli
