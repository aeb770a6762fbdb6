// SPDX-License-Identifier: Apache-2.0
#include "config/library/kernel_list.h"

#include <malloc.h>

#include <algorithm>
#include <array>
#include <cstring>

#include "base/failure.h"
#include "config/library/call.h"
#include "config/library/snapshot.h"

namespace qvs {

Bytes KernelList::entry(uint32_t index) const {
    return {static_cast<const uint8_t *>(buffer.get()) + headerSize + index * entrySize, entrySize};
}

Bytes KernelList::bytes() const {
    return {static_cast<const uint8_t *>(buffer.get()), headerSize + count * entrySize};
}

namespace {

uint32_t countIn(const std::shared_ptr<void> &buffer, size_t countAt) {
    uint32_t count = 0;
    std::memcpy(&count, static_cast<const uint8_t *>(buffer.get()) + countAt, sizeof count);
    return count;
}

}  // namespace

KernelList boundedList(const AskList &ask, size_t entrySize, std::string_view what, size_t headerSize,
                       size_t countAt) {
    KernelList list{ask(), entrySize, headerSize, 0};
    if (!list.buffer) return list;
    uint32_t counted = countIn(list.buffer, countAt);

    // The count word is the one of the second answer, the size of the buffer follows from the first. Only the
    // allocator knows that size: what it grants may be a little larger, by whole pages for a large one, never
    // smaller.
    constexpr size_t kPage = 4096;
    size_t granted = malloc_usable_size(list.buffer.get());
    size_t slack = granted < 16 * kPage ? 32 : kPage;
    size_t room = (granted - headerSize) / entrySize;
    size_t sure = 0;
    if (counted <= room && granted >= headerSize + slack) {
        sure = (granted - headerSize - slack) / entrySize + 1;
    }
    list.count = static_cast<uint32_t>(std::min<size_t>(counted, room));

    // Behind the entries of the first answer there is at most a rest of zeros. An entry may be all zeros,
    // too: a kernel that counts the same once more means it.
    auto empty = [](Bytes bytes) {
        return std::all_of(bytes.begin(), bytes.end(), [](uint8_t b) { return b == 0; });
    };
    auto doubtful = [&] { return list.count > sure && empty(list.entry(list.count - 1)); };
    if (list.count == counted && doubtful()) {
        std::shared_ptr<void> again = ask();
        if (again && countIn(again, countAt) == counted) return list;
    }
    while (doubtful())
        list.count--;
    if (list.count == counted) return list;
    warn("the kernel counts {} {}, but handed over {}", counted, what, list.count);
    return list;
}

std::string portsetOf(const std::string &alias) {
    // A name of 128 characters fills the buffer without a NUL.
    std::array<char, sizeof(SwitchAliasName) + 1> name{};
    require(call<DVSAliasToPortsetName>(alias.c_str(), name.data()), named(alias));
    return name.data();
}

}  // namespace qvs
