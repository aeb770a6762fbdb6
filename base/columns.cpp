// SPDX-License-Identifier: Apache-2.0
#include "base/columns.h"

#include <algorithm>
#include <clocale>
#include <cwchar>

namespace qvs {
namespace {

constexpr char kEscape = '\x1b';

// The number of bytes of the first character of a text, or of the colour that it begins with: "\x1b[31m".
size_t lengthOfFirst(std::string_view text) {
    if (text.starts_with(kEscape)) return std::min(text.find('m'), text.size() - 1) + 1;
    size_t length = 1;
    while (length < text.size() && (static_cast<unsigned char>(text[length]) & 0xc0) == 0x80)
        length++;
    return length;
}

// wcwidth() knows the width of characters only in a Unicode locale.
class UnicodeLocale {
  public:
    UnicodeLocale() : locale_(newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr)) {
        if (locale_ != nullptr) before_ = uselocale(locale_);
    }
    ~UnicodeLocale() {
        if (locale_ == nullptr) return;
        uselocale(before_);
        freelocale(locale_);
    }
    UnicodeLocale(const UnicodeLocale &) = delete;
    UnicodeLocale &operator=(const UnicodeLocale &) = delete;

    size_t columnsOf(std::string_view character) const {
        if (character.starts_with(kEscape)) return 0;
        if (character.size() == 1 || locale_ == nullptr) return 1;
        wchar_t wide = 0;
        std::mbstate_t state{};
        if (std::mbrtowc(&wide, character.data(), character.size(), &state) != character.size()) return 1;
        const int columns = wcwidth(wide);
        return columns < 0 ? 1 : static_cast<size_t>(columns);
    }

  private:
    locale_t locale_;
    locale_t before_ = nullptr;
};

bool isPlain(std::string_view text) {
    return std::ranges::all_of(text,
                               [](char c) { return static_cast<unsigned char>(c) < 0x80 && c != kEscape; });
}

}  // namespace

size_t columnsOf(std::string_view text) {
    if (isPlain(text)) return text.size();
    const UnicodeLocale locale;
    size_t columns = 0;
    while (!text.empty()) {
        const size_t length = lengthOfFirst(text);
        columns += locale.columnsOf(text.substr(0, length));
        text.remove_prefix(length);
    }
    return columns;
}

std::string cutTo(std::string_view text, size_t columns, std::string_view mark) {
    if (columnsOf(text) <= columns) return std::string(text);
    const UnicodeLocale locale;
    size_t taken = 0;
    for (size_t used = 0; taken < text.size();) {
        const size_t length = lengthOfFirst(text.substr(taken));
        used += locale.columnsOf(text.substr(taken, length));
        if (used >= columns) break;
        taken += length;
    }
    return std::string(text.substr(0, taken)).append(mark);
}

}  // namespace qvs
