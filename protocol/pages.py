"""Makes from the conversations what others read: the tables of docs/protocol.md, docs/protocol-commands.md, and the dissector's table."""

import re
import sys

from conversations import FAMILIES, NUMBERS, ROOT, encode, example_head, read_commands

TITLES = {
    "session": "The session itself",
    "sequences": "Pattern sequences",
    "projection": "Projection and measurement",
    "pictures": "Pictures",
    "settings": "Settings",
    "status": "State of the head",
    "data": "Data and configuration",
    "lines": "Lines, outputs and what hangs on the head",
}

INTRODUCTION = """# Commands of the protocol

Made by `scripts/protocol` from the files in `conversations/`. What all commands have in common
is in [protocol.md](protocol.md). `>` is what the client sends, `<` what the head answers; the head of the examples has
cameras of 8 x 4 and a projector of 6 x 5 pixels.
"""

# Of fields whose conversations say nothing more than their type.
MEANINGS = {
    "status": "0: done",
    "answer": "0: accepted",
    "outcome": "0: done, -2: the measurement failed",
    "picture": "one byte for each pixel, row by row",
}


def at_a_glance(field):
    """A field in a table at a glance; texts are marked, because numbers are not."""
    size = f"[{field.size}]" if field.size else ""
    mark = "text " if field.type == "text" else ""
    return f"`{mark}{field.name}{size}`" if field.name != field.type else field.name + size


def rounds(command, sender):
    """The names of what one side says, those of each turn together."""
    turns, previous = [], None
    for field in command.fields:
        if field.sender != previous:
            turns.append((field.sender, []))
        previous = field.sender
        turns[-1][1].append(at_a_glance(field))
    return "; ".join(", ".join(names) for side, names in turns if side == sender)


def function_of(command):
    return "" if command.function == "-" else f"`{command.function}`"


def table(commands):
    lines = []
    for family in FAMILIES:
        lines += [f"### {TITLES[family]}", "", "| command | since | sent after the name | reply | function |", "|---|---|---|---|---|"]
        for command in commands.values():
            if command.family == family:
                anchor = re.sub(r"[^a-z0-9_-]", "", command.name.lower())
                name = f"[`{command.name}`](protocol-commands.md#{anchor})"
                since = command.since or ""
                lines.append(f"| {name} | {since} | {rounds(command, '>')} | {rounds(command, '<')} | {function_of(command)} |")
        lines.append("")
    return "\n".join(lines)


def bytes_of(field):
    if field.type in NUMBERS:
        return "4"
    return "6 and the text" if field.type == "text" else f"`{field.size}`"


def meaning(field):
    if field.meaning:
        return field.meaning
    return MEANINGS[field.type]


def hex_of(data):
    shown = " ".join(f"{byte:02X}" for byte in data[:12])
    return shown if len(data) <= 12 else f"{shown} ... {len(data)} bytes"


def value_of(part):
    if part.field.type in NUMBERS:
        shown = f"{part.field.name} = {part.number}"
    elif part.field.type == "picture" and part.value.text == "none":
        shown = f"{part.field.name}: none"
    else:
        shown = part.field.name + (f" = {part.value.text}" if part.value.text else "")
    if part.value.match == "!":
        return shown + ", or another but 0"
    may_differ = part.value.match == "~" and part.value.text and part.field.sender == "<"
    return shown + (", or another" if may_differ else "")


def conversation(commands, example):
    lines, facts = [], example_head(commands)
    for exchange in example.exchanges:
        lines.append(f'> "{len(exchange.command):6}{exchange.command}"')
        for part in encode(commands, exchange, facts):
            data = f'"{part.bytes.decode()}"' if part.field.type == "text" else hex_of(part.bytes)
            lines.append(f"{part.field.sender} {data:<48}  {value_of(part)}")
    return "\n".join(lines)


def section(commands, command):
    since = f" Since protocol version {command.since}." if command.since else ""
    by = f" In the library: {function_of(command)}." if function_of(command) else ""
    lines = [f"### {command.name}", "", f"{command.does[0].upper()}{command.does[1:]}.{since}{by}", ""]
    if command.fields:
        lines += ["| | field | bytes | |", "|---|---|---|---|"]
        lines += [f"| {'sent' if f.sender == '>' else 'reply'} | {f.name} | {bytes_of(f)} | {meaning(f)} |" for f in command.fields] + [""]
    for example in command.examples:
        title = [example.title[0].upper() + example.title[1:]]
        title += [f"changes {example.changes}"] if example.changes else []
        title += [f"the library gives {example.result}"] if example.result else []
        lines += ["; ".join(title) + ":", "", "```text", conversation(commands, example), "```", ""]
    return "\n".join(lines)


def reference(commands):
    parts = [INTRODUCTION]
    for family in FAMILIES:
        parts += [f"## {TITLES[family]}", ""]
        parts += [section(commands, command) for command in commands.values() if command.family == family]
    return "\n".join(parts).rstrip("\n") + "\n"


def lua_row(command):
    fields = ", ".join(f'{{"{f.sender}", "{f.name}", "{f.type}"' + (f', "{f.size}"' if f.size else "") + "}" for f in command.fields)
    since = f"since = {command.since}" if command.since else ""
    return f'  ["{command.name}"] = {{{", ".join(filter(None, [since, fields]))}}},'


def lua_table(commands):
    return "\n".join(["local commands = {", *map(lua_row, commands.values()), "}"])


def between_marks(path, begin, end, content):
    before, mark, rest = path.read_text().partition(begin)
    if not mark:
        raise SystemExit(f"{path.relative_to(ROOT)} has no line \"{begin}\"")
    return f"{before}{begin}\n{content}\n{end}{rest.partition(end)[2]}"


def pages(commands):
    """What each file has to hold."""
    protocol, dissector = ROOT / "docs/protocol.md", ROOT / "tools/wireshark/fringix.lua"
    return {
        protocol: between_marks(protocol, "<!-- made by scripts/protocol -->", "<!-- end of what is made -->", "\n" + table(commands)),
        ROOT / "docs/protocol-commands.md": reference(commands),
        dissector: between_marks(dissector, "-- Made by scripts/protocol.", "-- End of what is made.", lua_table(commands)),
    }


def sources_differ(commands):
    """Names that stand in the sources of library, simulated head or tests but not in the table, or the other way round."""
    for folder, pattern in (("src/device", "*.cpp"), ("head/commands", "*.cpp"), ("tests/device", "*_commands.cpp")):
        found = {name for path in (ROOT / folder).glob(pattern) for name in re.findall(r'"(\d+MSG_\w+|ByeBye=)"', path.read_text())}
        expected = set(commands)
        if folder == "tests/device":  # the rows of the tests begin when a session is open
            expected -= {"40MSG_SLGetMaxImageSize", "45MSG_SLGetProjDimension", "ByeBye="}
        for name in sorted(found - expected):
            yield f"{folder} has {name}, but conversations/ has no file for it"
        for name in sorted(expected - found):
            yield f"conversations/{name.rstrip('=')}.txt is about a command that {folder} does not have"


def main():
    commands = read_commands()
    check = sys.argv[1:] == ["--check"]
    complaints = list(sources_differ(commands))
    for path, content in pages(commands).items():
        if check and (not path.exists() or path.read_text() != content):
            complaints.append(f"{path.relative_to(ROOT)} is not what the conversations say: run scripts/protocol")
        elif not check:
            path.write_text(content)
    print("\n".join(complaints), end="\n" if complaints else "")
    return 1 if complaints else 0


if __name__ == "__main__":
    sys.exit(main())
