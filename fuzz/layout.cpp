// SPDX-License-Identifier: Apache-2.0
// Reads any text as a layout file and decodes any bytes by the record "r" of it. The input is the length of
// the record in one byte, the record, and the layout.
#include <cstdint>
#include <string>

#include "access/layout.h"
#include "base/failure.h"
#include "input.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    using qvs::fuzz::require;
    qvs::fuzz::Bytes input(data, size);
    const std::string_view record = input.take(input.u8());
    const std::string_view text = input.take(size);
    const auto bytesOf = [](std::string_view view) {
        return qvs::Bytes(reinterpret_cast<const uint8_t *>(view.data()), view.size());
    };
    try {
        const auto file = qvs::cli::readLayout("input", bytesOf(text));
        const qvs::cli::RecordLayout *layout = qvs::cli::layoutIn(*file, "r");
        if (layout == nullptr) return 0;
        const auto values = qvs::cli::decodeRecord(*layout, bytesOf(record), size % 2 == 0 ? 1u : 1000u);
        require(values.values.size() == layout->fields.size());
        for (const auto &value : values.values)
            require(qvs::cli::compareValues(value, value) == 0);
        fmt::memory_buffer json;
        fmt::memory_buffer shown;
        appendJson(json, values);
        appendText(shown, values);
        require(json.size() >= 2);
    } catch (const qvs::Failure &failure) {
        require(failure.message.starts_with("layout 'input': "));
    }
    return 0;
}
