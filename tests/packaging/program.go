// SPDX-License-Identifier: Apache-2.0

// A program in Go: libqvs through cgo, found by pkg-config.
package main

// #cgo pkg-config: qvs
// #include <stdlib.h>
// #include <qvs/qvs.h>
//
// static int countPort(DVSPort *port, void *count) {
//     (void)port;
//     ++*(int *)count;
//     return 0;
// }
// static int countPorts(const char *alias) {
//     int count = 0;
//     DVSState_PortForEach(DVSState_SwitchFindByAlias(alias), countPort, &count);
//     return count;
// }
import "C"

import (
	"fmt"
	"os"
	"unsafe"
)

func require(status C.HYP_ReturnStatus) {
	if status != C.HYP_OK {
		fmt.Fprintln(os.Stderr, C.GoString(C.ReturnStatusToString(status)))
		os.Exit(1)
	}
}

func main() {
	alias := C.CString("sw1")
	defer C.free(unsafe.Pointer(alias))
	require(C.VSDVS_CreateVSwitch(alias, nil, nil, 105, 0, 0, 1, 1))
	fmt.Println("created", C.GoString(alias))
	require(C.DVSLoadConfig())
	fmt.Println("ports", C.countPorts(alias))
}
