# SPDX-License-Identifier: Apache-2.0
"""The public headers, taken apart into comments and the code that they describe, for what is made from them."""
import pathlib
import re
import textwrap

ROOT = pathlib.Path(__file__).resolve().parents[1]
# The declarations that a comment may precede, and that get a heading and an anchor.
NAMES = re.compile(r"^QVS_API\s[^;]*?\b(\w+)\(|^} (\w+);|^typedef (?!struct\s+QVS_PACKED)[^;{]*?\b(\w+);|^class (\w+)|"
                   r"^inline\s[^;{]*?\b(\w+)\(", re.MULTILINE)
PROTOTYPE = re.compile(r"^(?:(QVS_API\s[^;]*?\b(\w+)\([^;]*;)|(inline\s[^(]*?(\w+)\(.*\)) \{$)", re.MULTILINE)
# Lines that only make a header one.
FRAME = re.compile(r"^(#(?:ifndef|define) QVS_\w+_HP?P?|QVS_EXTERN_C_\w+)$\n?", re.MULTILINE)
# What is code in a comment: a header, a name, or a call.
WORD = re.compile(r"<qvs/(\w+\.hp?p?)>|\b[A-Za-z]\w*_\w*\b(?:\(\))?|\b[a-z]+[A-Z]\w*\b(?:\.so)?|\bDVS\w+\b|"
                  r"\bReturnStatusToString\b")


class Header:
    """A public header as a title, and parts that each have a comment and the code that follows it."""

    def __init__(self, path):
        self.name = path.name
        self.parts = []  # (comment, code, whether the comment is a heading of a section)
        # A comment in the first column begins a part. The first one only names the licence.
        tokens = re.split(r"^(/\*.*?\*/)\n", path.read_text(), flags=re.MULTILINE | re.DOTALL)[3:]
        for comment, code in zip(tokens[::2], tokens[1::2]):
            lines = [re.sub(r"^(/\*| \*/?| \* ?)", "", line) for line in comment.removesuffix("*/").split("\n")]
            lines = [line[1:] if line.startswith(" ") else line for line in lines]
            section = any(line.startswith("-----") for line in lines)
            text = "\n".join(line.rstrip() for line in lines if not line.startswith("-----")).strip("\n")
            code = re.sub(r"\n{3,}", "\n\n", FRAME.sub("", code)).strip("\n")
            if code.count("#if") < code.count("#endif"):
                code = re.sub(r"\n*#endif$", "", code)
            self.parts.append((text, code, section))

    @staticmethod
    def names(code):
        return [next(filter(None, groups)) for groups in NAMES.findall(code)]

    def prototypes(self):
        """The functions of the header, each as its name and its prototype."""
        for _, code, _ in self.parts:
            for exported, name, inline, inlineName in PROTOTYPE.findall(code):
                yield name or inlineName, exported or inline + ";"

    def summary(self):
        return re.split(r"(?<=[.:])\s", " ".join(self.parts[0][0].split("\n\n")[0].split()))[0].rstrip(".:") + "."


def all():
    return [Header(path) for path in sorted([*ROOT.glob("include/qvs/*.h"), *ROOT.glob("include/qvs/*.hpp")])]


def heading(comment):
    """The heading of a section, and the rest of its comment."""
    # A heading is the first sentence of the comment, or what comes before its first semicolon.
    first, _, rest = comment.partition("\n\n")
    title, *more = re.split(r"(?:(?<=\w)[.;])\s+", " ".join(first.split()), maxsplit=1)
    return title.rstrip("."), "\n\n".join([*(text[0].upper() + text[1:] for text in more), rest])


def blocks(comment):
    """The blocks of a comment, which end with an empty line, each as its kind and its contents: the items of a list,
    the names and meanings of arguments, code, or a text."""
    for block in re.split(r"\n{2,}", comment):
        lines = block.split("\n")
        if not block.strip():
            continue
        if re.match(r" *- ", lines[0]):
            yield "list", re.split(r"^ *- ", block, flags=re.MULTILINE)[1:]
        elif not lines[0].startswith("  "):
            yield "text", block
        else:
            rows = re.findall(r"^  (\w[\w, ]*?)  +(\S.*(?:\n(?!  \w).*)*)", block, re.MULTILINE)
            if not rows or re.search(r"[;{=]$|^ *\w+\(", lines[0]) or "//" in block:
                yield "code", textwrap.dedent(block)
            else:
                yield "arguments", [(name.strip(), text) for name, text in rows]
