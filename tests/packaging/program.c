/* SPDX-License-Identifier: Apache-2.0 */
/* A C99 program as a user would write it, built against the installed headers and library alone. */
#include <qvs/qvs.h>
#include <stdio.h>
#include <string.h>

static int failed;

/* A name of the program's own: <qvs/reporting.h> is not included unasked. */
static void Log(const char *text) {
    fprintf(stderr, "program: %s\n", text);
}

static void expect(int good, const char *text) {
    if (!good) {
        Log(text);
        failed = 1;
    }
}
#define EXPECT(condition) expect((condition), #condition)

static int countPort(DVSPort *port, void *context) {
    (void)port;
    ++*(int *)context;
    return 0;
}

int main(void) {
    static const char kId[] = "73 77 31 00 00 00 00 00-00 00 00 00 00 00 00 00";
    SwitchIdString id = "";
    void *uplinks = NULL;
    int ports = 0;

    EXPECT(VSDVS_CreateVSwitch("sw1", NULL, NULL, 105, 0, 0, 2, 3) == HYP_OK);
    EXPECT(DVSAliasToSwitchId("sw1", id) == 0xbad0003); /* the snapshot is older */
    EXPECT(DVSLoadConfig() == HYP_OK);
    EXPECT(DVSAliasToSwitchId("sw1", id) == HYP_OK && strcmp(id, kId) == 0);
    EXPECT(DVPortExist(id, "port2") == 1 && DVPortExist(id, "port3") == 0);

    EXPECT(VSHYP_GetUplinks("sw1", &uplinks) == HYP_OK);
    EXPECT(uplinks != NULL && memcmp(uplinks, "\2\0\0\0", 4) == 0);
    VSHYP_FreeMemory(uplinks);

    DVSState_PortForEach(DVSState_SwitchFindByAlias("sw1"), countPort, &ports);
    EXPECT(ports == 5);

    EXPECT(strcmp(ReturnStatusToString(0xbad0001), "Failure") == 0);
    return failed;
}
