"""The conversations as Python reads them: commands, their fields, and examples as bytes of the wire."""

import collections
import pathlib
import re

ROOT = pathlib.Path(__file__).resolve().parent.parent
FOLDER = ROOT / "conversations"

NUMBERS = ("int", "status", "answer", "outcome", "size")
SIZED = ("name", "bytes", "picture")
FAMILIES = ("session", "sequences", "projection", "pictures", "settings", "status", "data", "lines")

Field = collections.namedtuple("Field", "sender name type size meaning")
Value = collections.namedtuple("Value", "field match text")
Exchange = collections.namedtuple("Exchange", "command values")
Example = collections.namedtuple("Example", "title changes result exchanges")
Command = collections.namedtuple("Command", "name does family function since fields examples")

# What an example's value and its bytes are.
Part = collections.namedtuple("Part", "field value number bytes")


class Mistake(Exception):
    pass


def _field(key, rest):
    name, kind, rest = (rest + "  ").split(None, 2) if len(rest.split()) > 2 else (*rest.split(), "")
    size = ""
    if kind in SIZED:
        size, _, rest = rest.partition(" ")
    elif kind not in NUMBERS + ("text",):
        raise Mistake(f"{name} has the unknown type {kind}")
    return Field(">" if key == "send" else "<", name, kind, size, rest.strip())


def _values(text):
    for word in re.findall(r'[^\s"]+(?:"[^"]*")?', text):
        field, match, value = re.match(r"([^=~!]+)([=~!]?)(.*)", word).groups()
        yield Value(field, match or "~", value)


def _turn(examples, line):
    direction, _, rest = line.partition(" ")
    word = rest.split(" ")[0]
    if direction == ">" and (word[0].isdigit() or word.endswith("=")):
        examples[-1]["exchanges"].append(Exchange(word, []))
        rest = rest[len(word) :]
    examples[-1]["exchanges"][-1].values.extend(_values(rest))


def read_command(text):
    facts, fields, examples = {"since": "0"}, [], []
    for line in filter(None, text.split("\n")):
        key, _, rest = line.partition(" ")
        rest = rest.strip()
        if key in "<>":
            _turn(examples, line)
        elif key in ("send", "reply"):
            fields.append(_field(key, rest))
        elif key == "example":
            examples.append({"title": rest, "changes": "", "result": "", "exchanges": []})
        elif key in ("changes", "result"):
            examples[-1][key] = rest
        elif key in ("command", "does", "family", "function", "since"):
            facts[key] = rest
        else:
            raise Mistake(f'"{line}" has no meaning')
    made = [Example(**example) for example in examples]
    return Command(facts["command"], facts["does"], facts["family"], facts["function"], int(facts["since"]), fields, made)


def number_of(command):
    digits = re.match(r"\d+", command.name)
    return int(digits[0]) if digits else 1000


def read_commands():
    """All commands by their names, in the order of their families and numbers."""
    commands = []
    for path in FOLDER.glob("*.txt"):
        try:
            command = read_command(path.read_text())
        except (Mistake, KeyError, IndexError, ValueError) as mistake:
            raise SystemExit(f"{path.relative_to(ROOT)}: {mistake!r}") from mistake
        if path.stem != command.name.rstrip("="):
            raise SystemExit(f"{path.relative_to(ROOT)}: the file is to have the name of its command, {command.name}")
        commands.append(command)
    commands.sort(key=lambda command: (FAMILIES.index(command.family), number_of(command)))
    return {command.name: command for command in commands}


def evaluate(expression, facts):
    terms = re.split(r"([*/])", expression)
    value = _term(terms[0], facts)
    for sign, term in zip(terms[1::2], terms[2::2]):
        value = value * _term(term, facts) if sign == "*" else value // _term(term, facts)
    return value


def _term(term, facts):
    return int(term) if re.fullmatch(r"-?\d+", term) else facts[term]


def integer(value):
    return (value & 0xFFFFFFFF).to_bytes(4, "little")


def text(characters):
    data = characters.encode("ascii")
    return b"%6d" % len(data) + data


def _encode(field, value, facts):
    if field.type in NUMBERS:
        facts[field.name] = evaluate(value.text, facts)
        return integer(facts[field.name])
    if field.type == "text":
        return text(value.text.strip('"'))
    if field.type == "name":
        return value.text.strip('"').encode("ascii") + b"\0"
    size = evaluate(field.size, facts)
    if value.text == "none":
        return (b"\0\xff" + bytes(size))[:size]
    return bytes(i % 255 + 1 for i in range(size))


def encode(commands, exchange, facts):
    """The parts of an exchange behind the command's name. Numbers become facts."""
    parts = []
    fields = commands[exchange.command].fields
    for field, value in zip(fields, exchange.values):
        if field.name != value.field:
            raise Mistake(f"{exchange.command}: {value.field} stands where {field.name} belongs")
        data = _encode(field, value, facts)
        parts.append(Part(field, value, facts.get(field.name) if field.type in NUMBERS else None, data))
    if len(exchange.values) > len(fields):
        raise Mistake(f"{exchange.command}: more values than fields")
    return parts


def example_head(commands):
    """What every client knows after the handshake with the head of the examples."""
    facts = {}
    for name in ("40MSG_SLGetMaxImageSize", "45MSG_SLGetProjDimension"):
        encode(commands, commands[name].examples[0].exchanges[0], facts)
    return facts
