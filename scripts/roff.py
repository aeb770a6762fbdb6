# SPDX-License-Identifier: Apache-2.0
"""Manual pages in the macros of man(7), and what of Markdown the documents use."""
import re
import textwrap

# Documents that are manual pages, too.
PAGES = {"lab.md": "qvs-lab(5)", "layouts.md": "qvs-layout(5)", "configuration.md": "qvs-document(5)"}
# Where the others are, as pages of the site.
DOCUMENTS = "/usr/share/doc/qvs/html/"
# What mandoc and readers of the source expect of a line, less the escape that may precede its text.
BYTES = 78
# What a terminal of 80 columns has room for, less the indent of a page.
COLUMNS = 80 - 7
INLINE = re.compile(r"`([^`]+)`|\*([^*\s][^*]*)\*|\[([^\]]+)\]\(([^)\s]+)\)")


def escaped(text):
    text = text.replace("\\", "\\e").replace("^", "\\(ha").replace("~", "\\(ti").replace("`", "\\(ga")
    return re.sub(r"[^\x00-\x7f]", lambda match: f"\\[u{ord(match.group()):04X}]", text)


def code(text):
    """Text that readers copy: its hyphens and quotes are those of programs."""
    return escaped(text).replace("-", "\\-").replace("'", "\\(aq")


def bold(text):
    return f"\\fB{code(text)}\\fP"


def italic(text):
    return f"\\fI{escaped(text)}\\fP"


def inline(text):
    """One paragraph of Markdown."""
    result, end, text = "", 0, " ".join(text.split())
    for match in INLINE.finditer(text):
        result += escaped(text[end:match.start()])
        end = match.end()
        word, emphasis, link, target = match.groups()
        page = PAGES.get(target.partition("#")[0]) if target else None
        if link and page:
            shown = bold(page.partition("(")[0]) + page[-3:]
            result += shown if link.endswith(".md") else f"{inline(link)} in {shown}"
        else:
            document = link and re.fullmatch(r"([\w-]+)\.md(?:#.*)?", target)
            result += (bold(word) if word else
                       italic(emphasis or (f"{DOCUMENTS}{document.group(1)}.html" if document else link.strip("`"))))
    return result + escaped(text[end:])


def joined(line):
    """A line that may not be broken, in several lines of source: a backslash joins two."""
    lines = []
    while len(line) > BYTES and (at := line.rfind(" ", 1, BYTES - 1)) > 0:
        lines.append(line[:at] + " \\")
        line = line[at + 1:]
    return [*lines, line]


class Page:
    # Of the project: main sets them.
    version = date = ""

    def __init__(self, name, section, summary):
        self.lines = []
        self.name, self.section = name, section
        self.macro("TH", code(name.upper()), str(section), self.date, f"qvs {self.version}", "qvs manual")
        self.heading("NAME")
        self.text(f"{code(name)} \\- {escaped(summary)}")
        self.begun = True  # whether a paragraph begins by itself, because a heading stands before it

    def macro(self, name, *words):
        self.lines.append(" ".join(["." + name, *(word if re.fullmatch(r"[^\s\"]+", word) else
                                                  '"' + word.replace('"', "\\(dq") + '"' for word in words)]))

    def heading(self, title, level="SH"):
        self.macro(level, title.upper() if level == "SH" else title)
        self.begun = True

    def text(self, text):
        """Text with its escapes, which cannot be taken for a request."""
        self.lines += [re.sub(r"^(?=[.'])", r"\\&", line) for line in
                       textwrap.wrap(text, BYTES, break_long_words=False, break_on_hyphens=False)]

    def paragraph(self, text):
        if not self.begun:
            self.macro("PP")
        self.text(text)
        self.begun = False

    def block(self, text, indent=True):
        """Lines that stay as they are."""
        if not self.begun:
            self.macro("PP")
        self.lines += [".RS 4", ".nf"] if indent else [".nf"]
        for line in text.rstrip("\n").split("\n"):
            self.lines += joined(re.sub(r"^(?=[.'])", r"\\&", code(line)))
        self.lines += [".fi", ".RE"] if indent else [".fi"]
        self.begun = False

    def item(self, mark, text, width="2"):
        self.macro("IP", mark, width)
        self.text(text)
        self.begun = False

    def term(self, name, *texts):
        """A name, and what it means: texts that each begin a line."""
        self.macro("TP", "7")  # an item may have set another width
        self.lines += joined(name)
        for i, text in enumerate(filter(None, texts)):
            if i > 0:
                self.macro("br")
            self.text(text)
        self.begun = False

    def table(self, lines):
        heads, _, *rows = [[cell.strip() for cell in re.split(r"(?<!\\)\|", line)[1:-1]] for line in lines]
        for name, *cells in rows:
            self.term(inline(name) if "`" in name else f"\\fB{inline(name)}\\fP",
                      *(inline(cell if i == 0 and head == "Meaning" or len(cells) == 1 else f"{head}: {cell}")
                        for i, (head, cell) in enumerate(zip(heads[1:], cells)) if cell))

    def markdown(self, text):
        """A part of a document."""
        text = re.sub(r"<!--.*?-->\n*", "", text, flags=re.DOTALL)
        # Blocks of code keep their empty lines.
        for part in re.split(r"(^```.*?^```$)", text, flags=re.MULTILINE | re.DOTALL):
            if part.startswith("```"):
                self.block(part.partition("\n")[2].removesuffix("```"))
                continue
            for block in filter(str.strip, re.split(r"\n{2,}", part)):
                self.markdownBlock(block.strip("\n"))

    def markdownBlock(self, block):
        lines = block.split("\n")
        heading = re.fullmatch(r"##(#?) (.*)", block)
        if heading:
            self.heading(code(heading.group(2).replace("`", "")), "SS" if heading.group(1) else "SH")
        elif lines[0].startswith("|"):
            self.table(lines)
        elif lines[0].startswith("    "):
            self.block(textwrap.dedent(block))
        elif re.match(r"(-|\d+\.) ", lines[0]):
            for mark, item in re.findall(r"^(-|\d+\.) (.*(?:\n(?!(?:-|\d+\.) ).*)*)", block, re.MULTILINE):
                self.item(*("\\(bu" if mark == "-" else mark, inline(item)), width="2" if mark == "-" else "4")
        elif any(re.match("- ", line) for line in lines):
            # A list right behind its introduction.
            first = next(i for i, line in enumerate(lines) if line.startswith("- "))
            self.markdownBlock("\n".join(lines[:first]))
            self.markdownBlock("\n".join(lines[first:]))
        else:
            self.paragraph(inline(block))

    def seeAlso(self, *pages):
        self.heading("SEE ALSO")
        self.text(", ".join(f"{bold(name)}({section})" for name, section in pages))

    def write(self, directory):
        path = directory / f"man{self.section}" / f"{self.name}.{self.section}"
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text('.\\" SPDX-License-Identifier: Apache-2.0\n' + "\n".join(self.lines) + "\n")
