// SPDX-License-Identifier: Apache-2.0
// Takes records apart by their layouts, and prints the values.
#include <arpa/inet.h>

#include <algorithm>
#include <cstring>

#include "access/layout.h"
#include "tool/output.h"

namespace qvs::cli {
namespace {

// What fields may refer to: those before them, and those of the records around them.
struct Scope {
    const FieldValues &record;
    const Scope *outer;
};

const FieldValue *lookUp(const Scope &scope, std::string_view name) {
    for (const Scope *at = &scope; at != nullptr; at = at->outer) {
        for (size_t i = at->record.values.size(); i-- > 0;)
            if ((*at->record.fields)[i].name == name) return &at->record.values[i];
    }
    return nullptr;
}

uint64_t numberOf(const Scope &scope, std::string_view name) {
    const FieldValue *value = lookUp(scope, name);
    return value != nullptr ? value->number : 0;
}

std::optional<size_t> familySize(const Scope &scope, std::string_view name) {
    const FieldValue *value = lookUp(scope, name);
    const auto *word = value != nullptr ? std::get_if<std::string_view>(&value->is) : nullptr;
    if (word == nullptr) return std::nullopt;
    constexpr std::pair<std::string_view, size_t> kSizes[] = {{"MAC", 6}, {"IPv4", 4}, {"IPv6", 16}};
    for (const auto &[family, size] : kSizes)
        if (*word == family) return size;
    return std::nullopt;
}

FieldValue numberValue(const LayoutField &field, uint64_t number) {
    FieldValue value{number, number};
    if (!field.flags.empty()) {
        std::vector<std::string> names;
        for (const auto &[bit, name] : field.flags) {
            if (bit != 0 && (number & bit) == bit) names.push_back(name);
            number &= ~bit;
        }
        if (number != 0) names.push_back(fmt::format("0x{:x}", number));
        value.is = std::move(names);
        return value;
    }
    for (const auto &[known, word] : field.values)
        if (known == number) value.is = std::string_view(word);
    return value;
}

class Decoder {
  public:
    explicit Decoder(Bytes record) : record_(record) {}

    // Reads fields from `base` on, and nothing from `limit` on. Sets `end` to where the last one ends.
    FieldValues fields(const LayoutFields &fields, size_t base, size_t limit, const Scope *outer,
                       size_t &end) {
        FieldValues read{&fields, {}, 0};
        read.values.reserve(fields.size());
        end = base;
        for (size_t i = 0; i < fields.size(); i++) {
            const size_t at = base + fields[i].at;
            const size_t behind = i + 1 < fields.size() ? std::min(limit, base + fields[i + 1].at) : limit;
            size_t ends = at;
            read.values.push_back(field(fields[i], base, behind, {read, outer}, ends));
            end = std::max(end, ends);
        }
        return read;
    }

  private:
    FieldValue field(const LayoutField &field, size_t base, size_t limit, const Scope &scope, size_t &end) {
        size_t at = base + field.at;
        if (!field.isArray) {
            FieldValue value = one(field, at, limit, scope);
            end = at + taken_;
            return value;
        }
        const uint64_t count = !field.until.empty()     ? UINT64_MAX
                               : !field.countOf.empty() ? numberOf(scope, field.countOf)
                                                        : field.count;
        if (!field.until.empty())
            limit = std::min<size_t>(limit,
                                     base + std::min<uint64_t>(numberOf(scope, field.until), record_.size()));
        std::vector<FieldValue> values;
        std::vector<FieldValues> entries;
        for (uint64_t i = 0; i < count; i++, at += taken_) {
            if (field.type == LayoutField::Type::Group) {
                if (!entry(field, at, limit, scope, entries)) break;
            } else {
                FieldValue value = one(field, at, limit, scope);
                if (taken_ == 0) break;
                values.push_back(std::move(value));
            }
        }
        end = at;
        if (field.type == LayoutField::Type::Group) return {std::move(entries), 0};
        return {std::move(values), 0};
    }

    bool entry(const LayoutField &field, size_t at, size_t limit, const Scope &scope,
               std::vector<FieldValues> &entries) {
        taken_ = 0;
        if (at >= limit || limit - at < std::max<size_t>(field.stride, 1)) return false;
        size_t end = at;
        FieldValues read =
            fields(field.fields, at, field.stride != 0 ? at + field.stride : limit, &scope, end);
        read.index = static_cast<uint32_t>(entries.size());
        entries.push_back(std::move(read));
        taken_ = field.stride != 0 ? field.stride : end - at;
        return taken_ != 0;
    }

    // One value. Sets taken_ to the bytes that it takes, 0 when they are not there.
    FieldValue one(const LayoutField &field, size_t at, size_t limit, const Scope &scope) {
        taken_ = 0;
        size_t room = field.length;
        size_t used = field.length;
        bool isAddress = field.type == LayoutField::Type::Address;
        if (!field.used.empty()) used = static_cast<size_t>(numberOf(scope, field.used));
        if (!field.family.empty()) {
            const std::optional<size_t> size = familySize(scope, field.family);
            // An address of an unknown family is shown as the bytes of its field.
            isAddress = size && (room == 0 || *size <= room);
            used = isAddress ? *size : room;
        }
        if (room == 0) room = used;
        used = std::min(used, room);
        if (at > limit || limit - at < room) return {};
        taken_ = room;
        const Bytes bytes = record_.subspan(at, used);
        if (isAddress) return {RawAddress{bytes}, 0};
        switch (field.type) {
            case LayoutField::Type::Number: {
                uint64_t number = 0;  // the kernel's numbers are little-endian, like this machine's
                std::memcpy(&number, bytes.data(), used);
                return numberValue(field, number);
            }
            case LayoutField::Type::Text:
                return {boundedText(bytes.data(), bytes.size()), 0};
            default:
                return {bytes, 0};
        }
    }

    Bytes record_;
    size_t taken_ = 0;
};

std::string addressText(Bytes bytes) {
    if (bytes.size() == 6) return macText(bytes);
    char text[INET6_ADDRSTRLEN] = {};
    inet_ntop(bytes.size() == 4 ? AF_INET : AF_INET6, bytes.data(), text, sizeof text);
    return text;
}

template <typename Item>
void appendJsonList(fmt::memory_buffer &out, const std::vector<Item> &items) {
    out.push_back('[');
    for (size_t i = 0; i < items.size(); i++) {
        if (i > 0) out.push_back(',');
        appendJson(out, items[i]);
    }
    out.push_back(']');
}

template <typename Item>
void appendTextList(fmt::memory_buffer &out, const std::vector<Item> &items, std::string_view between) {
    for (size_t i = 0; i < items.size(); i++) {
        if (i > 0) out.append(between);
        appendText(out, items[i]);
    }
}

}  // namespace

FieldValues decodeRecord(const RecordLayout &layout, Bytes record, std::optional<uint32_t> given) {
    FieldValues request{&layout.given, {}, 0};
    if (given) {
        for (const LayoutField &field : layout.given)
            request.values.push_back(numberValue(field, *given));
    }
    const Scope scope{request, nullptr};
    size_t end = 0;
    return Decoder(record).fields(layout.fields, 0, record.size(), &scope, end);
}

int compareValues(const FieldValue &first, const FieldValue &second) {
    if (first.number != second.number) return first.number < second.number ? -1 : 1;
    if (first.is.index() != second.is.index()) return first.is.index() < second.is.index() ? -1 : 1;
    if (const auto *text = std::get_if<std::string_view>(&first.is))
        return text->compare(std::get<std::string_view>(second.is));
    const auto *address = std::get_if<RawAddress>(&first.is);
    const auto *bytes = address != nullptr ? &address->bytes : std::get_if<Bytes>(&first.is);
    if (bytes == nullptr) return 0;
    const Bytes other =
        address != nullptr ? std::get<RawAddress>(second.is).bytes : std::get<Bytes>(second.is);
    const int order = std::memcmp(bytes->data(), other.data(), std::min(bytes->size(), other.size()));
    if (order != 0) return order;
    return bytes->size() < other.size() ? -1 : bytes->size() > other.size() ? 1 : 0;
}

void appendJson(fmt::memory_buffer &out, const FieldValue &value) {
    struct Appender {
        fmt::memory_buffer &out;
        void operator()(std::monostate) const { out.append(std::string_view("null")); }
        void operator()(uint64_t number) const { appendJson(out, number); }
        void operator()(std::string_view text) const { appendJson(out, text); }
        void operator()(Bytes bytes) const { appendJson(out, bytes); }
        void operator()(RawAddress address) const {
            appendJson(out, std::string_view(addressText(address.bytes)));
        }
        void operator()(const std::vector<std::string> &flags) const {
            appendJson(out, Words{{flags.begin(), flags.end()}});
        }
        void operator()(const std::vector<FieldValue> &values) const { appendJsonList(out, values); }
        void operator()(const std::vector<FieldValues> &entries) const { appendJsonList(out, entries); }
    };
    std::visit(Appender{out}, value.is);
}

void appendJson(fmt::memory_buffer &out, const FieldValues &values) {
    out.push_back('{');
    for (size_t i = 0; i < values.values.size(); i++) {
        if (i > 0) out.push_back(',');
        appendJson(out, std::string_view((*values.fields)[i].name));
        out.push_back(':');
        appendJson(out, values.values[i]);
    }
    out.push_back('}');
}

void appendText(fmt::memory_buffer &out, const FieldValue &value) {
    struct Appender {
        fmt::memory_buffer &out;
        void operator()(std::monostate) const {}
        void operator()(uint64_t number) const { appendText(out, number); }
        void operator()(std::string_view text) const { appendText(out, text); }
        void operator()(Bytes bytes) const { appendText(out, bytes); }
        void operator()(RawAddress address) const {
            out.append(std::string_view(addressText(address.bytes)));
        }
        void operator()(const std::vector<std::string> &flags) const {
            appendShown(out, fmt::format("{}", fmt::join(flags, ", ")));
        }
        void operator()(const std::vector<FieldValue> &values) const { appendTextList(out, values, " "); }
        void operator()(const std::vector<FieldValues> &entries) const { appendTextList(out, entries, ", "); }
    };
    std::visit(Appender{out}, value.is);
}

void appendText(fmt::memory_buffer &out, const FieldValues &values) {
    appendTextList(out, values.values, " ");
}

}  // namespace qvs::cli
