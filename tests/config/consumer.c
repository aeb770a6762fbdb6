/* SPDX-License-Identifier: Apache-2.0 */
/* A C99 program as a user of libqvs-config would write it: built by pkg-config, run on an emulated host. */
#include <qvs/config.h>
#include <qvs/qvs.h>
#include <stdio.h>
#include <string.h>

static int failed;

static void expect(int good, const char *text) {
    if (good) return;
    fprintf(stderr, "consumer: %s\n", text);
    failed = 1;
}
#define EXPECT(condition) expect((condition), #condition)

static QVSConfig_Report *report;

/* Whether the report consists of this entry alone. Releases it. */
static void expectEntry(QVSConfig_Entry wanted) {
    QVSConfig_Entry entry;
    EXPECT(QVSConfig_CountEntries(report) == 1);
    EXPECT(QVSConfig_GetEntry(report, 1, &entry) == HYP_NOT_FOUND);
    if (QVSConfig_GetEntry(report, 0, &entry) != HYP_OK) {
        expect(0, "no entry");
    } else if (entry.kind != wanted.kind || entry.line != wanted.line || entry.column != wanted.column ||
               strcmp(entry.path, wanted.path) != 0 || strcmp(entry.text, wanted.text) != 0 ||
               strcmp(entry.before, wanted.before) != 0 || strcmp(entry.after, wanted.after) != 0) {
        fprintf(stderr, "consumer: %u:%u kind %u '%s' '%s' '%s' -> '%s'\n", entry.line, entry.column,
                entry.kind, entry.path, entry.text, entry.before, entry.after);
        expect(0, wanted.path);
    }
    QVSConfig_FreeReport(report);
    report = NULL;
}
static void expectChange(uint32_t kind, const char *path, const char *before, const char *after) {
    QVSConfig_Entry entry = {0, 0, 0, "", "", "", ""};
    entry.kind = kind;
    entry.path = path;
    entry.before = before;
    entry.after = after;
    expectEntry(entry);
}

static void expectNoEntry(void) {
    EXPECT(QVSConfig_CountEntries(report) == 0);
    QVSConfig_FreeReport(report);
    report = NULL;
}

static const char kTen[] = "switches:\n  sw1:\n    ports:\n      web:\n        vlan: {id: 10}\n";
static const char kTwenty[] = "{\"switches\":{\"sw1\":{\"ports\":{\"web\":{\"vlan\":{\"id\":20}}}}}}";
static const char kFaulty[] = "switches:\n  sw1:\n    ports:\n      web:\n        vlan: {id: 5000}\n";
static const char kVlan[] = "switches.sw1.ports.web.vlan";

static void checkArguments(void) {
    const char *missing[] = {NULL, "sw9"};
    char *text = (char *)kTen;
    QVSConfig_Entry entry;
    EXPECT(QVSConfig_Export(NULL, 0, 0, NULL, NULL) == HYP_BAD_PARAM);
    EXPECT(QVSConfig_Export(NULL, 1, 0, &text, NULL) == HYP_BAD_PARAM && text == NULL);
    EXPECT(QVSConfig_Export(missing, 1, 0, &text, NULL) == HYP_BAD_PARAM);
    EXPECT(QVSConfig_Export(missing + 1, 1, 0, &text, NULL) == HYP_NOT_FOUND && text == NULL);
    EXPECT(QVSConfig_Export(NULL, 0, QVSCONFIG_JSON | QVSCONFIG_PRUNE, &text, NULL) == HYP_BAD_PARAM);
    EXPECT(QVSConfig_Compare(kTen, strlen(kTen), 16, &report) == HYP_BAD_PARAM && report == NULL);
    EXPECT(QVSConfig_Apply(kTen, strlen(kTen), QVSCONFIG_JSON, 0, NULL) == HYP_BAD_PARAM);
    EXPECT(QVSConfig_Apply(kTen, strlen(kTen), 0, 604801, &report) == HYP_BAD_PARAM && report == NULL);
    EXPECT(QVSConfig_Validate(NULL, 0, NULL) == HYP_BAD_PARAM);
    EXPECT(QVSConfig_GetEntry(NULL, 0, &entry) == HYP_BAD_PARAM && QVSConfig_CountEntries(NULL) == 0);
    EXPECT(QVSConfig_Confirm() == HYP_NOT_FOUND);
    EXPECT(QVSConfig_Recover(NULL) == HYP_NOT_FOUND);
    QVSConfig_FreeText(NULL);
    QVSConfig_FreeReport(NULL);
}

static void checkValidation(void) {
    static const QVSConfig_Entry kWrong = {QVSCONFIG_ERROR,       5,  20, "switches.sw1.ports.web.vlan.id",
                                           "5000 is beyond 4094", "", ""};
    EXPECT(QVSConfig_Validate(kTen, strlen(kTen), &report) == HYP_OK);
    expectNoEntry();
    EXPECT(QVSConfig_Validate(kFaulty, strlen(kFaulty), &report) == HYP_BAD_PARAM);
    expectEntry(kWrong);
    EXPECT(QVSConfig_Apply(kFaulty, strlen(kFaulty), 0, 0, &report) == HYP_BAD_PARAM);
    expectEntry(kWrong);
}

/* A new switch has room for 128 ports. */
static void checkRoom(void) {
    static const QVSConfig_Entry kFull = {
        QVSCONFIG_ERROR,
        1,
        17,
        "switches.sw3",
        "has 200 ports, those of uplinks among them, but there is room for 128",
        "",
        ""};
    char text[4096] = "switches: {sw3: {ports: {";
    int i;
    for (i = 0; i < 200; i++)
        sprintf(text + strlen(text), "p%d: , ", i);
    strcat(text, "}}}");
    EXPECT(QVSConfig_Compare(text, strlen(text), 0, &report) == HYP_BAD_PARAM);
    expectEntry(kFull);
    EXPECT(QVSConfig_Apply(text, strlen(text), 0, 0, &report) == HYP_BAD_PARAM);
    expectEntry(kFull);
    EXPECT(QVSConfig_Validate(text, strlen(text), NULL) == HYP_OK);
}

static void checkExport(const char *wanted) {
    const char *names[] = {"sw1"};
    char *text = NULL;
    EXPECT(QVSConfig_Export(names, 1, QVSCONFIG_JSON, &text, &report) == HYP_OK);
    expectNoEntry();
    EXPECT(text != NULL && strstr(text, wanted) != NULL);
    if (text != NULL) {
        EXPECT(QVSConfig_Compare(text, strlen(text), QVSCONFIG_PRUNE, &report) == HYP_OK);
        expectNoEntry();
    }
    QVSConfig_FreeText(text);
}

static void checkApplication(void) {
    EXPECT(QVSConfig_Compare(kTen, strlen(kTen), 0, &report) == HYP_OK);
    expectChange(QVSCONFIG_CHANGED, kVlan, "{}", "{id: 10}");
    EXPECT(QVSConfig_Apply(kTen, strlen(kTen), 0, 0, &report) == HYP_OK);
    expectChange(QVSCONFIG_CHANGED, kVlan, "{}", "{id: 10}");
    EXPECT(QVSConfig_Apply(kTen, strlen(kTen), 0, 0, &report) == HYP_OK);
    expectNoEntry();

    /* A change that waits keeps others out, and is undone unless it is confirmed. */
    EXPECT(QVSConfig_Apply(kTwenty, strlen(kTwenty), 0, 600, &report) == HYP_OK);
    expectChange(QVSCONFIG_CHANGED, kVlan, "{id: 10}", "{id: 20}");
    EXPECT(QVSConfig_Apply(kTen, strlen(kTen), 0, 0, NULL) == HYP_EXISTS);
    EXPECT(QVSConfig_Recover(&report) == HYP_OK);
    expectNoEntry();
    EXPECT(QVSConfig_Compare(kTen, strlen(kTen), 0, &report) == HYP_OK);
    expectNoEntry();
    EXPECT(QVSConfig_Apply(kTwenty, strlen(kTwenty), 0, 600, NULL) == HYP_OK);
    EXPECT(QVSConfig_Confirm() == HYP_OK);
    EXPECT(QVSConfig_Confirm() == HYP_NOT_FOUND);
    EXPECT(QVSConfig_Compare(kTwenty, strlen(kTwenty), 0, &report) == HYP_OK);
    expectNoEntry();
}

int main(void) {
    EXPECT(VSDVS_CreateVSwitch("sw1", NULL, NULL, 105, 0, 0, 0, 0) == HYP_OK);
    EXPECT(DVSLoadConfig() == HYP_OK && VSDVS_AddDVPort("sw1", "web", 0) == HYP_OK);
    checkArguments();
    checkValidation();
    checkRoom();
    checkExport("\"web\"");
    checkApplication();
    checkExport("20");
    return failed;
}
