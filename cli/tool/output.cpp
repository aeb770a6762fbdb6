// SPDX-License-Identifier: Apache-2.0
#include "tool/output.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <nlohmann/json.hpp>

#include "tool/failure.h"
#include "tool/terminal.h"

namespace qvs::cli {
namespace {

constexpr size_t kDrainAt = size_t{64} * 1024;

void writeAll(int fd, std::string_view bytes, std::string_view what) {
    while (!bytes.empty()) {
        ssize_t written = ::write(fd, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) fail(Exit::Failed, "{}: {}", what, std::strerror(errno));
        bytes.remove_prefix(static_cast<size_t>(written));
    }
}

std::string_view asText(Bytes bytes) {
    return {reinterpret_cast<const char *>(bytes.data()), bytes.size()};
}

}  // namespace

bool Output::terminal() const {
    return isatty(STDOUT_FILENO) == 1;
}

void Output::write(std::string_view text) {
    put(buffer_, text);
    drain();
}

void Output::write(Bytes bytes) {
    write(asText(bytes));
}

void Output::drain() {
    if (buffer_.size() >= kDrainAt && !keeps_) flush();
}

void Output::flush() {
    // The buffer is emptied first, so that a failed write is not repeated when the program ends.
    fmt::memory_buffer waiting = std::move(buffer_);
    buffer_ = fmt::memory_buffer();
    try {
        writeAll(STDOUT_FILENO, {waiting.data(), waiting.size()}, "standard output");
    } catch (const Failure &) {
        // The reader has closed the pipe: end by SIGPIPE as usual. The signal is ignored elsewhere, so that
        // it cannot interrupt a change.
        if (errno == EPIPE) {
            std::signal(SIGPIPE, SIG_DFL);
            std::raise(SIGPIPE);
        }
        throw;
    }
}

void appendJson(fmt::memory_buffer &out, std::string_view text) {
    bool plain = std::all_of(text.begin(), text.end(),
                             [](char c) { return c >= 0x20 && c < 0x7f && c != '"' && c != '\\'; });
    if (plain) {
        out.push_back('"');
        put(out, text);
        out.push_back('"');
        return;
    }
    // JSON is UTF-8. Other bytes are replaced by U+FFFD.
    put(out,
        nlohmann::ordered_json(text).dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace));
}

void appendJson(fmt::memory_buffer &out, uint32_t number) {
    fmt::format_to(std::back_inserter(out), "{}", number);
}

void appendJson(fmt::memory_buffer &out, uint64_t number) {
    fmt::format_to(std::back_inserter(out), "{}", number);
}

void appendJson(fmt::memory_buffer &out, Flag flag) {
    put(out, flag.value ? "true" : "false");
}

void appendJson(fmt::memory_buffer &out, const Words &words) {
    out.push_back('[');
    for (size_t i = 0; i < words.words.size(); i++) {
        if (i > 0) out.push_back(',');
        appendJson(out, words.words[i]);
    }
    out.push_back(']');
}

void appendJson(fmt::memory_buffer &out, Bytes bytes) {
    out.push_back('"');
    put(out, base64(bytes));
    out.push_back('"');
}

void appendText(fmt::memory_buffer &out, std::string_view text) {
    appendShown(out, text);
}

void appendText(fmt::memory_buffer &out, uint32_t number) {
    fmt::format_to(std::back_inserter(out), "{}", number);
}

void appendText(fmt::memory_buffer &out, uint64_t number) {
    fmt::format_to(std::back_inserter(out), "{}", number);
}

void appendText(fmt::memory_buffer &out, Flag flag) {
    put(out, flag.value ? flag.yes : flag.no);
}

void appendText(fmt::memory_buffer &out, const Words &words) {
    for (size_t i = 0; i < words.words.size(); i++) {
        if (i > 0) out.push_back(' ');
        appendShown(out, words.words[i]);
    }
}

void appendText(fmt::memory_buffer &out, Bytes bytes) {
    put(out, hex(bytes));
}

void NameList::add(std::string_view name) {
    if (out_.json()) {
        out_.buffer().push_back(first_ ? '[' : ',');
        appendJson(out_.buffer(), name);
    } else {
        appendShown(out_.buffer(), name);
        out_.buffer().push_back('\n');
    }
    first_ = false;
    out_.drain();
}

void NameList::finish() {
    if (out_.json()) out_.write(first_ ? "[]\n" : "]\n");
}

void Record::appendKey(const char *key) {
    out_.buffer().push_back(first_ ? '{' : ',');
    first_ = false;
    appendJson(out_.buffer(), std::string_view(key));
    out_.buffer().push_back(':');
}

void Record::beginField(const char *label) {
    labels_.emplace_back(label);
}

void Record::endField() {
    size_t begin = ends_.empty() ? 0 : ends_.back();
    if (text_.size() == begin) text_.push_back('-');
    ends_.push_back(text_.size());
}

void Record::block(const char *key, const char *label, const std::optional<Bytes> &bytes) {
    if (out_.json() || !bytes) {
        field(key, label, bytes);
        return;
    }
    fmt::format_to(std::back_inserter(blocks_), "{} ({} bytes):\n", label, bytes->size());
    appendHexDump(blocks_, *bytes);
}

void Record::section(const char *label, const Record &part) {
    fmt::format_to(std::back_inserter(blocks_), "{}:\n", label);
    part.appendLines(blocks_, "  ");
}

void Record::appendLines(fmt::memory_buffer &out, std::string_view indent) const {
    size_t widest = 0;
    for (const std::string &label : labels_)
        widest = std::max(widest, columnsOf(label));
    const size_t most = out_.wide() ? SIZE_MAX : terminalColumns().value_or(SIZE_MAX);
    size_t begin = 0;
    for (size_t i = 0; i < labels_.size(); i++) {
        std::string_view value(text_.data() + begin, ends_[i] - begin);
        begin = ends_[i];
        std::string line = fmt::format("{}{:{}}  ", indent, labels_[i] + ":", widest + 1);
        const size_t at = columnsOf(line);
        if (columnsOf(value) > most - std::min(at, most)) {
            appendWrapped(line, value, at, 2 * at < most ? at : indent.size() + 2, most);
        } else {
            line += value;
        }
        put(out, line + "\n");
    }
}

void Record::finish() {
    if (out_.json()) {
        out_.write(first_ ? "{}\n" : "}\n");
        return;
    }
    appendLines(out_.buffer(), "");
    out_.write(std::string_view(blocks_.data(), blocks_.size()));
}

void reportChange(Output &out, std::string_view label,
                  std::initializer_list<std::pair<const char *, std::optional<std::string_view>>> members,
                  bool changed) {
    if (!out.json()) {
        appendShown(out.buffer(), label);
        out.write(changed ? ": changed\n" : ": unchanged\n");
        return;
    }
    Record record(out);
    for (const auto &[key, value] : members)
        record.field(key, key, value);
    record.field("changed", "changed", Flag{changed});
    record.finish();
}

void reportSwitch(Output &out, std::string_view alias, bool changed) {
    reportChange(out, alias, {{"switch", alias}}, changed);
}

void reportPort(Output &out, std::string_view alias, std::string_view port, bool changed) {
    reportChange(out, fmt::format("{}/{}", alias, port), {{"switch", alias}, {"port", port}}, changed);
}

ChangeList::~ChangeList() {
    if (items_.empty()) return;
    fmt::memory_buffer &buffer = out_.buffer();
    if (!out_.json()) {
        for (const auto &[item, changed] : items_) {
            appendShown(buffer, alias_);
            buffer.push_back('/');
            appendShown(buffer, item);
            put(buffer, changed ? ": changed\n" : ": unchanged\n");
        }
        return;
    }
    bool any = std::any_of(items_.begin(), items_.end(), [](const auto &item) { return item.second; });
    put(buffer, "{\"switch\":");
    appendJson(buffer, alias_);
    put(buffer, any ? ",\"changed\":true,\"" : ",\"changed\":false,\"");
    put(buffer, arrayKey_);
    put(buffer, "\":[");
    for (size_t i = 0; i < items_.size(); i++) {
        put(buffer, i > 0 ? ",{\"" : "{\"");
        put(buffer, itemKey_);
        put(buffer, "\":");
        appendJson(buffer, std::string_view(items_[i].first));
        put(buffer, items_[i].second ? ",\"changed\":true}" : ",\"changed\":false}");
    }
    put(buffer, "]}\n");
}

void writeRaw(Output &out, const std::string &path, Bytes bytes) {
    if (path == "-") {
        out.write(bytes);
        return;
    }
    std::string what = "file " + inQuotes(path);
    int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (fd < 0) fail(Exit::Failed, "{}: {}", what, std::strerror(errno));
    try {
        writeAll(fd, asText(bytes), what);
    } catch (...) {
        ::close(fd);
        throw;
    }
    if (::close(fd) != 0) fail(Exit::Failed, "{}: {}", what, std::strerror(errno));
}

}  // namespace qvs::cli
