// SPDX-License-Identifier: Apache-2.0
// The MTU of a switch: in the portset of the kernel, on each of its NICs, and in two properties.
#include <cstdio>
#include <cstring>

#include "core/identity.h"
#include "dvs/property.h"
#include "dvs/shell.h"
#include "qvs/vsdvs.h"

namespace qvs {
namespace {

constexpr Property kMtu = propertyOf(QVS_KEY_MTU);
constexpr Property kEtherswitchMtu = propertyOf(QVS_KEY_ETHERSWITCH_MTU);

// The output of a running command.
class Pipe {
  public:
    explicit Pipe(const ShellCommand &command) : stream_(popen(command.line(), "r")) {}
    Pipe(const Pipe &) = delete;
    Pipe &operator=(const Pipe &) = delete;
    ~Pipe() { close(); }

    FILE *stream() const { return stream_; }
    void close() {
        if (stream_ != nullptr) pclose(stream_);
        stream_ = nullptr;
    }

  private:
    FILE *stream_;
};

// Parses the output. The pieces are separated by ":", CR and LF. The last piece that is a number counts;
// other pieces are ignored.
HYP_ReturnStatus parseMtu(char *output, int &mtu) {
    HYP_ReturnStatus status = HYP_FAILURE;
    char *rest = nullptr;
    for (char *piece = strtok_r(output, ":\r\n", &rest); piece != nullptr;
         piece = strtok_r(nullptr, ":\r\n", &rest)) {
        if (sscanf(piece, "%d", &mtu) == 1) status = HYP_OK;
    }
    return status;
}

HYP_ReturnStatus readPortsetMtu(const char *portsetName, int &mtu) {
    ShellCommand command;
    if (!isPlainNodeName(portsetName) ||
        !command.format("/bin/treesh -e get /net/portsets/%s/mtu", portsetName)) {
        return HYP_BAD_PARAM;
    }
    const Pipe pipe(command);
    if (pipe.stream() == nullptr) return HYP_FAILURE;
    char output[128 + 1] = {};
    if (fread(output, 1, sizeof output - 1, pipe.stream()) == 0) return HYP_FAILURE;
    return parseMtu(output, mtu);
}

HYP_ReturnStatus setPortsetMtu(const char *portsetName, int mtu) {
    ShellCommand command;
    if (!command.format("treesh -e set /net/portsets/%s/mtu %d", portsetName, mtu)) return HYP_FAILURE;
    return command.run() ? HYP_OK : HYP_FAILURE;
}

// Returns whether an entry of the listing is safe in a command line. It is part of a node path and may
// contain any number of "/"; the shell must not interpret any other character. It may be empty, because the
// end of a line as long as the buffer arrives with the next read.
bool isPlainEntry(std::string_view entry) {
    for (;;) {
        const size_t slash = entry.find('/');
        const std::string_view name = entry.substr(0, slash);
        if (!name.empty() && !isPlainNodeName(name)) return false;
        if (slash == std::string_view::npos) return true;
        entry.remove_prefix(slash + 1);
    }
}

// The NICs whose MTU has been changed, in order, so that the change can be undone.
class ChangedUplinks {
  public:
    static constexpr size_t kMost = 32;

    // Sets the MTU of every NIC that the listing names.
    HYP_ReturnStatus setAll(const char *portsetName, int mtu) {
        ShellCommand list;
        if (!list.format("treesh -e ls /net/portsets/%s/uplinks", portsetName)) return HYP_BAD_PARAM;
        Pipe pipe(list);
        if (pipe.stream() == nullptr) return HYP_FAILURE;
        while (count_ < kMost) {
            char *entry = entries_[count_];
            if (fgets(entry, sizeof entries_[0], pipe.stream()) == nullptr) break;
            entry[strcspn(entry, "\r\n")] = '\0';
            if (!setOne(entry, mtu)) return HYP_FAILURE;
            ++count_;
        }
        return HYP_OK;
    }

    // Restores the MTU in reverse order. Failures are ignored.
    void putBack(int mtu) {
        while (count_ > 0) {
            ShellCommand command;
            if (command.format("treesh -e set /net/pNics/%s/mtu %d", entries_[--count_], mtu)) {
                static_cast<void>(command.run());
            }
        }
    }

  private:
    // The format has no "/" before mtu, because the entry ends with one.
    static bool setOne(const char *entry, int mtu) {
        ShellCommand command;
        return isPlainEntry(entry) && command.format("treesh -e set /net/pNics/%smtu %d", entry, mtu) &&
               command.run();
    }

    char entries_[kMost][32] = {};
    size_t count_ = 0;
};

HYP_ReturnStatus storeMtu(const Place &place, uint32_t mtu) {
    const HYP_ReturnStatus status = setProperty(place, kMtu, &mtu, sizeof mtu);
    if (status == HYP_OK) static_cast<void>(setProperty(place, kEtherswitchMtu, &mtu, sizeof mtu));
    return status;
}

// Sets the MTU of the portset, then the properties. Restores the portset if the properties cannot be stored.
HYP_ReturnStatus setSwitchMtu(const Place &place, const char *portsetName, uint32_t mtu, int oldMtu) {
    HYP_ReturnStatus status = setPortsetMtu(portsetName, static_cast<int>(mtu));
    if (status != HYP_OK) return status;
    status = storeMtu(place, mtu);
    if (status != HYP_OK) static_cast<void>(setPortsetMtu(portsetName, oldMtu));
    return status;
}

}  // namespace
}  // namespace qvs

using namespace qvs;

extern "C" HYP_ReturnStatus VSDVS_GetMTU(const char *alias, int *mtu) {
    PortsetName portset;
    if (const HYP_ReturnStatus status = portset.resolve(alias); status != HYP_OK) return status;
    int number = 0;
    const HYP_ReturnStatus status = readPortsetMtu(portset.text, number);
    if (status != HYP_OK) return status;
    if (mtu == nullptr) return HYP_BAD_PARAM;
    *mtu = number;
    return HYP_OK;
}

extern "C" HYP_ReturnStatus VSDVS_SetMTU(const char *alias, uint32_t mtu) {
    if (mtu < QVS_MTU_MIN || mtu > QVS_MTU_MAX) return HYP_BAD_PARAM;
    const Place place = Place::ofAlias(alias);
    if (place.status() != HYP_OK) return place.status();
    PortsetName portset;
    if (const HYP_ReturnStatus status = portset.resolve(alias); status != HYP_OK) return status;
    int oldMtu = 0;
    HYP_ReturnStatus status = readPortsetMtu(portset.text, oldMtu);
    if (status != HYP_OK) return status;

    ChangedUplinks uplinks;
    status = uplinks.setAll(portset.text, static_cast<int>(mtu));
    if (status == HYP_OK) status = setSwitchMtu(place, portset.text, mtu, oldMtu);
    if (status != HYP_OK) uplinks.putBack(oldMtu);
    return status;
}
