# SPDX-License-Identifier: Apache-2.0
"""What the public headers fix for programs that are compiled with them, as one line of text for each item."""
import re
import subprocess

PROGRAM = """\
#include <stddef.h>
#include <stdio.h>
%(includes)s
#define TEXT(name) printf("constant %%s = \\"%%s\\"\\n", #name, name);
#define NUMBER(name) \\
    printf((name) * 0 - 1 > 0 ? "constant %%s = %%llu, unsigned" : "constant %%s = %%lld, signed", #name, \\
           (unsigned long long)(name)); \\
    printf(" %%d\\n", (int)sizeof(name));
#define TYPE(name, text) printf("type %%s: %%s, %%d bytes\\n", #name, text, (int)sizeof(name));
#define FIELD(record, name, type) \\
    printf("field %%s.%%s: %%s, %%d bytes at %%d\\n", #record, #name, type, (int)sizeof(((record *)0)->name), \\
           (int)offsetof(record, name));
#define KEY(key, scope, propType) printf("key %%s: scope %%u, class %%u\\n", key, scope, (unsigned)(propType));
int main(void) {
%(body)s
#ifdef QVS_KEYS
    QVS_KEYS(KEY)
#endif
    return 0;
}
"""


def run(*command, **options):
    return subprocess.run(command, check=True, text=True, stdout=subprocess.PIPE, **options).stdout


def functions(includes, include, headers, imported):
    """'export' lines, and 'import' lines for the functions that a header declares and the library needs."""
    names = {header.name for header in headers}
    rows = run("gcc", "-std=c99", "-x", "c", "-", f"-I{include}", "-fsyntax-only", "-aux-info", "/dev/stdout",
               input=includes)
    for header, result, name, arguments in re.findall(
            r"^/\* \S*/qvs/([\w.]+):.*?\*/ extern (.*?[ *])(\w+) (\(.*\));$", rows, re.MULTILINE):
        if header in names:
            yield f"{'import' if header == imported else 'export'} {name}: {result.strip()} {arguments}"


def statements(text):
    """The C statements that print the constants, types and fields of a header without its comments."""
    if re.search(r"\b(?:enum|union)\b", text):
        raise SystemExit("abi: a header has an enumeration or a union, which this script does not know")
    for name, value in re.findall(r"^# *define (\w+) +(\S.*)$", text, re.MULTILINE):
        if not re.match(r"__attribute__|extern|}", value):
            yield f"{'TEXT' if value.startswith(chr(34)) else 'NUMBER'}({name})"
    for body, name in re.findall(r"^typedef struct (?:QVS_PACKED )?\w+ {(.*?)^} (\w+);", text,
                                 re.MULTILINE | re.DOTALL):
        yield f'TYPE({name}, "record")'
        fields = re.findall(r"(\w[\w ]*?[ *]+)(\w+)((?:\[\w+\])*);", body)
        if len(fields) != body.count(";"):
            raise SystemExit(f"abi: a field of {name} is of a kind that this script does not know")
        for kind, field, size in fields:
            yield f'FIELD({name}, {field}, "{kind.strip()}{size}")'
    for kind, name, size in re.findall(r"^typedef (?!struct)(\w+) (\w+)((?:\[\w+\])*);", text, re.MULTILINE):
        yield f'TYPE({name}, "{kind}{size}")'


def describe(headers, imported, scratch):
    """Every line, in a fixed order. `imported` is the header of the functions that the library needs."""
    include = headers[0].parents[1]
    includes = "".join(f"#include <qvs/{header.name}>\n" for header in headers)
    texts = (re.sub(r"/\*.*?\*/", "", header.read_text(), flags=re.DOTALL).replace("\\\n", " ") for header in headers)
    body = "\n".join(f"    {line}" for text in texts for line in statements(text))
    run("gcc", "-std=c99", "-x", "c", "-", f"-I{include}", "-o", f"{scratch}/abi",
        input=PROGRAM % {"includes": includes, "body": body})
    return sorted([*functions(includes, include, headers, imported), *run(f"{scratch}/abi").splitlines()])
