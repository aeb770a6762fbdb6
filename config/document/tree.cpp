// SPDX-License-Identifier: Apache-2.0
#include "config/document/tree.h"

#include <fmt/format.h>
#include <yaml-cpp/eventhandler.h>
#include <yaml-cpp/exceptions.h>
#include <yaml-cpp/mark.h>
#include <yaml-cpp/parser.h>

#include <algorithm>
#include <istream>
#include <streambuf>
#include <utility>

#include "base/text.h"
#include "config/document/reader.h"

namespace qvs::config {
namespace {

constexpr size_t kMostDepth = 64;
constexpr size_t kMostNodes = 4'000'000;
constexpr std::string_view kReplacement = "\xef\xbf\xbd";

// Ends the parsing; the problem was reported.
struct Stop {};

class Builder : public YAML::EventHandler {
  public:
    Builder(std::string_view origin, std::vector<Problem> &problems) : origin_(origin), problems_(problems) {}

    Node take() { return std::move(root_); }

    void OnDocumentStart(const YAML::Mark &) override {}
    void OnDocumentEnd() override {}
    void OnNull(const YAML::Mark &mark, YAML::anchor_t anchor) override {
        add(made(Node::Kind::Empty, mark, "?", anchor));
    }
    void OnAlias(const YAML::Mark &mark, YAML::anchor_t) override {
        report(mark, "aliases are not allowed; write the value again");
        add(made(Node::Kind::Refused, mark, "?", 0));
    }
    void OnScalar(const YAML::Mark &mark, const std::string &tag, YAML::anchor_t anchor,
                  const std::string &value) override {
        Node node = made(Node::Kind::Scalar, mark, tag, anchor);
        node.plain = tag == "?";
        node.text = value;
        if (value.find(kReplacement) != std::string::npos) {
            report(mark, "U+FFFD stands for bytes that were lost; write them as \\xHH");
            node.kind = Node::Kind::Refused;
        }
        add(std::move(node));
    }
    void OnSequenceStart(const YAML::Mark &mark, const std::string &tag, YAML::anchor_t anchor,
                         YAML::EmitterStyle::value) override {
        open(made(Node::Kind::Sequence, mark, tag, anchor));
    }
    void OnSequenceEnd() override { close(); }
    void OnMapStart(const YAML::Mark &mark, const std::string &tag, YAML::anchor_t anchor,
                    YAML::EmitterStyle::value) override {
        open(made(Node::Kind::Mapping, mark, tag, anchor));
    }
    void OnMapEnd() override { close(); }

    void report(const YAML::Mark &mark, std::string text) {
        const bool known = !mark.is_null();
        problems_.push_back({std::string(origin_), known ? static_cast<size_t>(mark.line) + 1 : 0,
                             known ? static_cast<size_t>(mark.column) + 1 : 0, "", std::move(text)});
    }

  private:
    Node made(Node::Kind kind, const YAML::Mark &mark, const std::string &tag, YAML::anchor_t anchor) {
        if (++nodes_ > kMostNodes) {
            report(mark, fmt::format("the document has more than {} values", kMostNodes));
            throw Stop{};
        }
        if (anchor != 0) report(mark, "anchors are not allowed");
        if (!tag.empty() && tag != "?" && tag != "!")
            report(mark, fmt::format("the tag {} is not allowed", inQuotes(tag)));
        Node node;
        node.kind = kind;
        node.line = static_cast<uint32_t>(mark.line + 1);
        node.column = static_cast<uint32_t>(mark.column + 1);
        return node;
    }
    void add(Node node) {
        if (open_.empty()) {
            root_ = std::move(node);
        } else {
            open_.back().items.push_back(std::move(node));
        }
    }
    void open(Node node) {
        if (open_.size() == kMostDepth) {
            problems_.push_back({std::string(origin_), node.line, node.column, "",
                                 fmt::format("nested more than {} deep", kMostDepth)});
            throw Stop{};
        }
        open_.push_back(std::move(node));
    }
    void close() {
        Node node = std::move(open_.back());
        open_.pop_back();
        add(std::move(node));
    }

    std::string_view origin_;
    std::vector<Problem> &problems_;
    Node root_;
    std::vector<Node> open_;
    size_t nodes_ = 0;
};

// Bytes in memory as a stream.
class Source : public std::streambuf {
  public:
    explicit Source(std::string_view text) {
        char *begin = const_cast<char *>(text.data());
        setg(begin, begin, begin + text.size());
    }
};

// Finds the first byte that no document may contain. The parser would take some of these for the end, and
// replace others.
std::optional<size_t> badByte(std::string_view text) {
    for (size_t at = 0; at < text.size();) {
        const auto byte = static_cast<unsigned char>(text[at]);
        const bool ascii = (byte >= 0x20 && byte < 0x7f) || byte == '\n' || byte == '\t' || byte == '\r';
        const size_t length = ascii ? 1 : byte < 0x80 ? 0 : sequenceLength(text.substr(at));
        if (length == 0) return at;
        at += length;
    }
    return std::nullopt;
}

bool checkBytes(std::string_view text, std::string_view origin, std::vector<Problem> &problems) {
    if (text.size() > kMostDocumentBytes) {
        problems.push_back(
            {std::string(origin), 0, 0, "",
             fmt::format("has {} bytes, at most {} are read", text.size(), kMostDocumentBytes)});
        return false;
    }
    const std::optional<size_t> bad = badByte(text);
    if (!bad) return true;
    const std::string_view before = text.substr(0, *bad);
    const auto line = static_cast<size_t>(std::count(before.begin(), before.end(), '\n')) + 1;
    const size_t column = *bad - (before.rfind('\n') + 1) + 1;
    const auto byte = static_cast<unsigned char>(text[*bad]);
    problems.push_back(
        {std::string(origin), line, column, "",
         byte < 0x80
             ? fmt::format("the control character 0x{:02x} is not allowed", byte)
             : fmt::format("the byte 0x{:02x} is not UTF-8 text; write it as \\x{:02x}", byte, byte)});
    return false;
}

// What is wrong in a line that the parser refuses. Tabs in front confuse it, and it does not say so.
std::string faultOf(std::string_view text, const YAML::Exception &exception) {
    for (int line = 0; line < exception.mark.line; line++)
        text.remove_prefix(std::min(text.find('\n') + 1, text.size()));
    const std::string_view indent = text.substr(0, text.find_first_not_of(" \t"));
    if (exception.mark.is_null() || indent.find('\t') == std::string_view::npos) return exception.msg;
    return fmt::format("the line begins with a tab, and only spaces indent YAML ({})", exception.msg);
}

}  // namespace

std::optional<Node> parseTree(std::string_view text, std::string_view origin,
                              std::vector<Problem> &problems) {
    if (!checkBytes(text, origin, problems)) return std::nullopt;
    Source source(text);
    std::istream stream(&source);
    Builder builder(origin, problems);
    try {
        YAML::Parser parser(stream);
        parser.HandleNextDocument(builder);
        Node root = builder.take();
        Builder next(origin, problems);
        if (parser.HandleNextDocument(next)) {
            const Node second = next.take();
            problems.push_back(
                {std::string(origin), second.line, second.column, "", "the file has more than one document"});
        }
        return root;
    } catch (const YAML::Exception &exception) {
        builder.report(exception.mark, faultOf(text, exception));
    } catch (const Stop &) {
    }
    return std::nullopt;
}

}  // namespace qvs::config
