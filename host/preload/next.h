// SPDX-License-Identifier: Apache-2.0
// The functions that the interposer stands in front of.
#pragma once

#include <dlfcn.h>

namespace qvs::preload {

// What comes after us under that name in the order of libraries.
template <typename Function>
void find(Function *&function, const char *name) {
    function = reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

}  // namespace qvs::preload
