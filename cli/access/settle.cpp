// SPDX-License-Identifier: Apache-2.0
#include "access/settle.h"

#include "config/apply/recover.h"
#include "tool/failure.h"

namespace qvs::cli {

void settle() {
    const std::string undone = config::settlePending();
    if (!undone.empty()) complain("{}", undone);
}

}  // namespace qvs::cli
