// The printer registry and the initialiser that sorts it.
#include "dump/registry.h"

#include <cstdlib>
#include <cstring>
#include <iterator>

#include "core/init_order.h"
#include "dump/printers.h"
#include "qvs/hyp.h"

namespace qvs {
namespace {

struct NetDVSPrinterEntry {
    const char *key;
    NetDVSPrinter printer;
};

// Writable: it is sorted when the library is loaded and only read from then on.
NetDVSPrinterEntry NetDVSPrinterTable[] = {
    {"com.quillon.common.port.connectid", printNumber},
    {"com.quillon.etherswitch.mtu", printNumber},
    {"com.quillon.vswitch.mtu", printNumber},
};

int compareKeys(const void *left, const void *right) {
    return std::strcmp(static_cast<const NetDVSPrinterEntry *>(left)->key,
                       static_cast<const NetDVSPrinterEntry *>(right)->key);
}

}  // namespace

NetDVSPrinter findPrinter(const char *key) {
    const NetDVSPrinterEntry wanted = {key, nullptr};
    const void *found = std::bsearch(&wanted, NetDVSPrinterTable, std::size(NetDVSPrinterTable),
                                     sizeof(NetDVSPrinterEntry), compareKeys);
    return found != nullptr ? static_cast<const NetDVSPrinterEntry *>(found)->printer : nullptr;
}

}  // namespace qvs

extern "C" __attribute__((constructor(qvs::kInitSharedObject))) void SharedObjectInit(void) {
    std::qsort(qvs::NetDVSPrinterTable, std::size(qvs::NetDVSPrinterTable), sizeof(qvs::NetDVSPrinterEntry),
               qvs::compareKeys);
}
