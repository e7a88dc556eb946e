"""header_filter.py HEADER: prints a header with its comments as Doxygen reads them.

The headers are written for those who read them as they are. A comment belongs to all declarations below it, up to an empty line;
"name  meaning" is a parameter, "SL_STATUS  meaning" a status that a function gives; "---- Title ----" begins a section.
"""

from __future__ import annotations

import pathlib
import re
import sys

STATUS = re.compile(r"SL[A-Z_0-9]+")
ITEM = re.compile(r"(\S.*?) {2,}(\S.*)")
FUNCTION = re.compile(r"(\w+)\(([^()]*(?:\([^()]*\)[^()]*)*)\)\s*;")


def parameters_of(declaration: str) -> set[str]:
    found = FUNCTION.search(" ".join(declaration.split()))
    return set(re.findall(r"(\w+)(?=\s*(?:,|$))", found.group(2))) if found else set()


def escaped(text: str) -> str:
    return re.sub(r"([<>#@%])", r"\\\1", text)


def item_line(term: str, meaning: str, parameters: set[str]) -> str | None:
    names = term.split(", ")
    if parameters and all(re.fullmatch(r"\w+", name) for name in names) and not STATUS.fullmatch(term):
        here = [name for name in names if name in parameters]
        return f"@param {','.join(here)} {meaning}" if here else None
    if parameters and STATUS.fullmatch(term):
        return f"@retval {term} {meaning}"
    return f"- {term}: {meaning}"


def rewritten(lines: list[str], parameters: set[str]) -> list[str]:
    """The text of a comment, with its lists and samples as Doxygen wants them."""
    done: list[str] = []
    in_item = in_sample = skipped = False
    before = ""
    for line in [*lines, ""]:
        item = ITEM.fullmatch(line)
        is_sample = line.startswith("  ") and not in_item and not skipped and (in_sample or not before)
        if in_sample and not is_sample:
            done.append("@endcode")
        if is_sample:
            done += [line] if in_sample else ["@code{.cpp}", line]
        elif item and not line.startswith(" "):
            text = item_line(item[1], escaped(item[2]), parameters)
            done += [] if text is None else [text]
            in_item, skipped = text is not None, text is None
        elif line.startswith(" ") and in_item:
            inner = ITEM.fullmatch(line.strip())
            done.append(f"  <br>{escaped(inner[1])}: {escaped(inner[2])}" if inner else f"  {escaped(line.strip())}")
        elif not (line.startswith(" ") and skipped):
            if in_item and line:
                done.append("")
            done.append(escaped(line))
            in_item = skipped = False
        in_sample, before = is_sample, line
    return done


def comment(lines: list[str], parameters: set[str] | None = None) -> str:
    lines = "\n".join(lines).strip("\n").splitlines()
    return "/**\n" + "".join(f" * {line}\n" for line in rewritten(lines, parameters or set())) + " */\n"


def declarations(block: str) -> list[str]:
    """The declarations of a block of lines, each with the lines that it goes over."""
    found, current, depth = [], "", 0
    for line in block.splitlines(keepends=True):
        current += line
        depth += line.count("{") + line.count("(") - line.count("}") - line.count(")")
        if depth <= 0 and re.search(r"[;}]\s*(//.*|/\*.*)?$|^#define.*[^\\]$", line.rstrip()) or line.startswith("template"):
            if not line.startswith("template"):
                found.append(current)
                current = ""
    return found + ([current] if current.strip() else [])


def trailing(code: str) -> str:
    """Comments behind code belong to what is before them."""
    lines = []
    for line in code.splitlines(keepends=True):
        found = re.fullmatch(r"(?!#if|#el|#en)(.*[;,)}\w] +)(?:/\* (.*) \*/|// (?!namespace)(.*))\n", line)
        lines.append(f"{found[1]}/**< {escaped(found[2] or found[3])} */\n" if found else line)
    return "".join(lines)


class Header:
    """One header, in pieces that are separated by empty lines, with a comment at the beginning of some."""

    def __init__(self, name: str, text: str) -> None:
        self._name = name
        self._text = re.sub(r"^ private:\n.*?(?=^};)", "", text, flags=re.MULTILINE | re.DOTALL)
        self._sections = 0
        self._out: list[str] = []

    def _section(self, title: str, lines: list[str]) -> None:
        self._end_section()
        self._sections += 1
        name = re.sub(r"\W", "_", self._name)
        self._out.append(f"/**\n * @defgroup {name}_{self._sections} {self._name}: {title}\n *\n")
        self._out += [f" * {line}\n" for line in rewritten(lines, set())] + [" * @{\n */\n"]
        self._is_open = True

    _is_open = False

    def _end_section(self) -> None:
        if self._is_open:
            self._out.append("/** @} */\n")
        self._is_open = False

    def _documented(self, lines: list[str], code: str) -> None:
        if code.count("}") > code.count("{"):
            self._out.append(comment(lines) + trailing(code))
            return
        parts = declarations(code)
        functions = [part for part in parts if FUNCTION.search(" ".join(part.split())) and "typedef" not in part]
        if len(parts) < 2 or len(functions) == len(parts):
            self._out += [comment(lines, parameters_of(part)) + trailing(part) for part in parts]
            return
        title, _, rest = " ".join(lines).partition(". ")
        self._out.append(f"/** @name {escaped(title).rstrip('.')}\n * {escaped(rest)}\n * @{{ */\n{trailing(code)}/** @}} */\n")

    def _piece(self, piece: str) -> None:
        found = re.match(r"/\*(.*?)\*/\n", piece, re.DOTALL) or re.match(r"((?: *//.*\n)+)", piece)
        if not found:
            self._out.append(trailing(piece))
            return
        lines = [re.sub(r"^ *(?:\*|//) ?", "", line).rstrip() for line in found.group(1).strip("\n").splitlines()]
        lines = [line[1:] if re.match(r" \S", line) else line for line in lines]
        lines = lines[1:] if lines and not lines[0] else lines
        code = piece[found.end() :]
        title = re.fullmatch(r"-{4} (.*?) -{4,}", lines[0].strip()) if lines else None
        about = re.fullmatch(rf"{re.escape(self._name)} - (.*)", lines[0].strip()) if lines else None
        if title:
            self._section(title[1].rstrip(":"), lines[1:])
            self._out.append(trailing(code))
        elif about:
            self._out.append(comment([f"@file {self._name}", f"@brief {about[1]}", *lines[1:]]).replace(r"\@", "@") + trailing(code))
        else:
            self._documented([line for line in lines], code)

    def told(self) -> str:
        """A piece ends with an empty line outside of comments and of bodies."""
        piece, in_comment = "", False
        for line in self._text.splitlines(keepends=True):
            if line.startswith("/*") or in_comment:
                in_comment = "*/" not in line
            starts = re.match(r" *//", line) and piece and not re.search(r"(^|\n) *//[^\n]*\n$", piece)
            if (not line.strip() and not in_comment) or starts or (line.startswith("/*") and piece):
                self._piece(piece)
                piece = ""
            if re.match(r"#ifdef __cplusplus", line) and "}" in self._text[self._text.rindex(line) :][:40]:
                self._end_section()
            piece += line if line.strip() or in_comment else ""
            if not line.strip() and not in_comment:
                self._out.append("\n")
        self._piece(piece)
        return "".join(self._out)


if __name__ == "__main__":
    path = pathlib.Path(sys.argv[1])
    sys.stdout.write(Header(path.name, path.read_text(encoding="utf-8")).told())
