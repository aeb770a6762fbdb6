// SPDX-License-Identifier: Apache-2.0
// A file is lines of a header, an empty line, and the document. The checksum stands for everything but its
// own line:
//
//   qvs checkpoint 1
//   checksum: 89abcdef
//   time: 2026-11-22T05:40:00Z
//   host: rack4-12
//   switches: 2
//
//   switches:
//     ...
#include "config/apply/checkpoint.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>

#include "base/failure.h"
#include "base/text.h"
#include "config/library/clock.h"
#include "config/library/lock.h"

namespace qvs::config {
namespace {

constexpr uint32_t kFormat = 1;
constexpr std::string_view kTitle = "qvs checkpoint ";
constexpr std::string_view kChecksum = "checksum: ";
constexpr size_t kMostName = 200;  // a file name has room for 255 bytes

// CRC-32 as in IEEE 802.3: the polynomial 0xedb88320, bits and result inverted.
uint32_t crc32(std::string_view text, uint32_t before = 0) {
    static const std::array<uint32_t, 256> table = [] {
        std::array<uint32_t, 256> made{};
        for (uint32_t i = 0; i < made.size(); i++) {
            made[i] = i;
            for (int bit = 0; bit < 8; bit++)
                made[i] = (made[i] >> 1) ^ ((made[i] & 1) != 0 ? 0xedb88320u : 0u);
        }
        return made;
    }();
    uint32_t crc = ~before;
    for (char c : text)
        crc = (crc >> 8) ^ table[(crc ^ static_cast<unsigned char>(c)) & 0xff];
    return ~crc;
}

// Takes the line at the front of a text, without its end. Nothing when there is no whole line.
std::optional<std::string_view> takeLine(std::string_view &text) {
    const size_t end = text.find('\n');
    if (end == std::string_view::npos) return std::nullopt;
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(end + 1);
    return line;
}

// The same for a line "key: value", of which it returns the value.
std::optional<std::string_view> takeValue(std::string_view &text, std::string_view key) {
    const std::optional<std::string_view> line = takeLine(text);
    if (!line || !line->starts_with(key)) return std::nullopt;
    return line->substr(key.size());
}

std::string machineName() {
    std::array<char, 256> name{};
    gethostname(name.data(), name.size() - 1);
    return shown(name.data());
}

}  // namespace

void requireCheckpointName(const std::string &name) {
    const auto allowed = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '.' ||
               c == '_' || c == '-';
    };
    if (!name.empty() && name.size() <= kMostName && name.front() != '.' &&
        std::all_of(name.begin(), name.end(), allowed))
        return;
    fail(Exit::Usage,
         "{} is no name of a checkpoint: it is made of 1 to {} letters, digits, '.', '_' and '-', and does "
         "not begin with '.'",
         inQuotes(name), kMostName);
}

namespace {

std::string about(const std::string &name) {
    return "checkpoint " + inQuotes(name);
}

[[noreturn]] void damaged(std::string_view subject, std::string_view how) {
    fail(Exit::Failed, "{}: the file is damaged: {}; restore it from a copy, or remove it", subject, how);
}

}  // namespace

std::string checkpointText(const Checkpoint &checkpoint) {
    const std::string title = fmt::format("{}{}\n", kTitle, kFormat);
    const std::string rest = fmt::format("time: {}\nhost: {}\nswitches: {}\n\n{}", checkpoint.time,
                                         checkpoint.host, checkpoint.switches, checkpoint.document);
    return fmt::format("{}{}{:08x}\n{}", title, kChecksum, crc32(rest, crc32(title)), rest);
}

Checkpoint checkpointOf(std::string_view subject, std::string_view text) {
    const std::string_view whole = text;
    const std::optional<std::string_view> format = takeValue(text, kTitle);
    if (!format) damaged(subject, "it does not begin as a checkpoint");
    const size_t titleSize = whole.size() - text.size();
    const std::optional<uint32_t> number = parseNumber(*format);
    if (!number) damaged(subject, "its format has no number");
    if (*number > kFormat)
        fail(Exit::Failed, "{}: a newer version of qvs wrote it, in format {}; this one reads format {}",
             subject, *number, kFormat);

    const std::optional<std::string_view> sum = takeValue(text, kChecksum);
    if (!sum) damaged(subject, "it has no checksum");
    const uint32_t found = crc32(text, crc32(whole.substr(0, titleSize)));
    if (*sum != fmt::format("{:08x}", found)) damaged(subject, "its checksum does not match its contents");

    const std::optional<std::string_view> time = takeValue(text, "time: ");
    const std::optional<std::string_view> host = takeValue(text, "host: ");
    const std::optional<std::string_view> switches = takeValue(text, "switches: ");
    const std::optional<uint32_t> count = parseNumber(switches.value_or(""));
    if (!time || !host || !count || takeLine(text) != "") damaged(subject, "its header is incomplete");
    return {std::string(*time), std::string(*host), *count, std::string(text)};
}

std::string checkpointDirectory() {
    // Checkpoints of an emulated host must not be taken for those of this machine, or of another one.
    if (const std::optional<std::string> emulated = emulatedHostDirectory())
        return *emulated + "/checkpoints";
    constexpr const char *kBelow = "/qvs/checkpoints";
    if (geteuid() == 0) return std::string("/var/lib") + kBelow;
    // A relative path would depend on the current directory; the variable does not allow one.
    const char *state = std::getenv("XDG_STATE_HOME");
    if (state != nullptr && *state == '/') return std::string(state) + kBelow;
    const char *home = std::getenv("HOME");
    if (home == nullptr || *home != '/')
        fail(Exit::Usage, "there is no home directory to keep checkpoints in; name a directory with --dir");
    return std::string(home) + "/.local/state" + kBelow;
}

void Checkpoints::save(const std::string &name, std::string document, uint32_t switches, bool replace) const {
    requireCheckpointName(name);
    const Checkpoint checkpoint{utcTime(), machineName(), switches, std::move(document)};
    if (!directory_.write(name, checkpointText(checkpoint), replace))
        fail(Exit::Differs, "{}: it exists already; --replace overwrites it", about(name));
}

Checkpoint Checkpoints::load(const std::string &name) const {
    requireCheckpointName(name);
    const std::optional<std::string> text = directory_.read(name);
    if (!text) fail(Exit::NotFound, "{}: there is none of this name", about(name));
    return checkpointOf(about(name), *text);
}

void Checkpoints::remove(const std::string &name) const {
    requireCheckpointName(name);
    if (!directory_.remove(name)) fail(Exit::NotFound, "{}: there is none of this name", about(name));
}

std::vector<Checkpoints::Entry> Checkpoints::list() const {
    std::vector<Entry> entries;
    for (const std::string &name : directory_.names()) {
        Entry entry{name, std::nullopt, {}};
        try {
            entry.checkpoint = load(name);
        } catch (const Failure &failure) {
            entry.problem = failure.message;
        }
        entries.push_back(std::move(entry));
    }
    return entries;
}

}  // namespace qvs::config
