"""What tshark tells, with our dissector, of captures that are made of the conversations and of what goes wrong."""

import json
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "protocol"))

from capture import CLIENT, HEAD, Capture, Connection  # noqa: E402
from conversations import NUMBERS, encode, example_head, integer, read_commands, text  # noqa: E402

COMMANDS = read_commands()
HANDSHAKE = ("40MSG_SLGetMaxImageSize", "45MSG_SLGetProjDimension")


def tshark(capture, *options):
    with tempfile.TemporaryDirectory() as folder:
        path = pathlib.Path(folder, "capture.pcap")
        capture.write(path)
        script = f"lua_script:{ROOT}/tools/wireshark/fringix.lua"
        command = ["tshark", "-r", path, "-X", script, "-T", "json", "--no-duplicate-keys", *options]
        told = subprocess.run(command, capture_output=True, text=True, timeout=300, env={"HOME": folder, "PATH": "/usr/bin:/bin"})
    if told.returncode != 0 or "Lua" in told.stderr:
        raise AssertionError(told.stderr)
    return json.loads(told.stdout)


def as_list(value):
    return value if isinstance(value, list) else [value]


class Seen:
    """What the dissector says of a capture, in the order of the wire."""

    def __init__(self, capture, *options):
        self.frames = tshark(capture, *options)
        self.notes = []  # (name, value)
        self.records = [r for frame in self.frames for r in as_list(frame["_source"]["layers"].get("fringix", []))]
        for record in self.records:
            self._collect(record)

    def _collect(self, tree):
        for key, value in tree.items():
            for one in as_list(value):
                if isinstance(one, dict):
                    self._collect(one)
                else:
                    self.notes.append((key, one))

    def values(self, name):
        return [value for key, value in self.notes if key == name]

    def experts(self):
        return [key.rpartition(".")[2] for key, _ in self.notes if key.startswith("fringix.expert.")]


def parts_of_turns(parts):
    """The parts of an exchange, those of each turn together, the first turn the client's."""
    turns = [(">", [])]
    for part in parts:
        if part.field.sender != turns[-1][0]:
            turns.append((part.field.sender, []))
        turns[-1][1].append(part)
    return turns


def say_exchange(connection, exchange, facts):
    parts = encode(COMMANDS, exchange, facts)
    for i, (sender, turn) in enumerate(parts_of_turns(parts)):
        name = text(exchange.command) if i == 0 else b""
        connection.say(sender, name + b"".join(part.bytes for part in turn))
    return parts


def greet(connection):
    connection.say("<", integer(3300))
    connection.say(">", integer(3300))
    facts = example_head(COMMANDS)
    for name in HANDSHAKE:
        say_exchange(connection, COMMANDS[name].examples[0].exchanges[0], facts)
    return facts


def all_exchanges():
    exchanges = [exchange for command in COMMANDS.values() for example in command.examples for exchange in example.exchanges]
    farewell = [exchange for exchange in exchanges if exchange.command == "ByeBye="]
    return [exchange for exchange in exchanges if exchange.command != "ByeBye="] + farewell


class ConversationsTest(unittest.TestCase):
    def say_everything(self, connection, greeted=True):
        """What the dissector has to tell: commands, replies and all numbers and texts."""
        self.commands, self.replies, self.values = [], [], []
        facts = greet(connection) if greeted else example_head(COMMANDS)
        handshake = [COMMANDS[name].examples[0].exchanges[0] for name in HANDSHAKE]
        for exchange in (handshake if greeted else []) + all_exchanges():
            is_said = greeted and exchange in handshake and exchange.command not in self.commands
            parts = encode(COMMANDS, exchange, facts) if is_said else say_exchange(connection, exchange, facts)
            self.expect(exchange, parts)

    def expect(self, exchange, parts):
        self.commands.append(exchange.command)
        self.replies += [exchange.command for sender, _ in parts_of_turns(parts) if sender == "<"]
        for part in parts:
            name, value = f"fringix.{part.field.name}", part.value.text.strip('"')
            if part.field.type in NUMBERS:
                self.values.append((name, str(part.number)))
            elif part.field.type in ("text", "name"):
                self.values.append((name + ".text", value))

    def expect_seen(self, seen):
        self.assertEqual(seen.values("fringix.command"), self.commands)
        self.assertEqual(seen.values("fringix.reply"), self.replies)
        names = {name for name, _ in self.values}
        self.assertEqual([note for note in seen.notes if note[0] in names], self.values)
        blocks = seen.values("fringix.block")
        facts = example_head(COMMANDS) | {"sequence": 1, "power": 1, "level": 1, "gain": 1}
        expected = [part for exchange in all_exchanges() for part in encode(COMMANDS, exchange, dict(facts))]
        self.assertEqual(len(blocks), sum(p.field.type in ("bytes", "picture") for p in expected))
        self.assertEqual(set(seen.experts()), {"failed", "no_picture"})

    def test_are_told_by_name(self):
        capture = Capture()
        self.say_everything(Connection(capture))
        seen = Seen(capture)
        self.expect_seen(seen)
        self.assertEqual(seen.values("fringix.greeting"), ["3300"])
        self.assertEqual(seen.values("fringix.client_version"), ["3300"])
        self.assertEqual(len(seen.values("fringix.request_in")), len(self.replies))

    def test_are_told_alike_when_every_segment_has_three_bytes(self):
        capture = Capture()
        self.say_everything(Connection(capture, longest=3))
        self.expect_seen(Seen(capture, "-2"))

    def test_are_recognised_at_another_port(self):
        capture = Capture()
        connection = Connection(capture, head_port=50001)
        facts = example_head(COMMANDS)
        for name in HANDSHAKE:
            say_exchange(connection, COMMANDS[name].examples[0].exchanges[0], facts)
        self.commands, self.replies, self.values = [], [], []
        for name in HANDSHAKE:
            exchange = COMMANDS[name].examples[0].exchanges[0]
            self.expect(exchange, encode(COMMANDS, exchange, facts))
        for exchange in all_exchanges():
            self.expect(exchange, say_exchange(connection, exchange, facts))
        self.expect_seen(Seen(capture))


class TroubleTest(unittest.TestCase):
    """Several connections in one capture: each is one thing that goes wrong, and what the dissector makes of it."""

    def setUp(self):
        self.capture = Capture()
        self.port = 50200

    def connection(self):
        self.port += 1
        connection = Connection(self.capture, client_port=self.port)
        greet(connection)
        return connection

    def expect(self, *experts):
        seen = Seen(self.capture)
        self.assertEqual(seen.experts(), list(experts))
        return seen

    def test_an_unknown_command(self):
        connection = self.connection()
        connection.say(">", text("999MSG_SLNothing") + integer(5))
        connection.say(">", text("21MSG_SLGetSerial"))
        connection.say("<", integer(7))
        self.assertEqual(self.expect("unknown_command").values("fringix.serial"), ["7"], "the next command is understood again")

    def test_lengths_that_are_not_possible(self):
        self.connection().say(">", b"-00001")
        self.connection().say(">", text("00MSG_SLShowImage24") + integer(6) + integer(-5) + integer(18))
        connection = self.connection()
        connection.say(">", text("200MSG_SLRS232Exec") + text("go"))
        connection.say("<", b"many!!")
        self.expect("unknown_command", "impossible_length", "impossible_length")

    def test_a_reply_that_nobody_has_asked_for(self):
        connection = self.connection()
        connection.say(">", text("100MSG_SLNOOP"))
        connection.say("<", integer(0))
        connection.say(">", text("55MSG_SLSetGain") + integer(10))
        connection.say("<", integer(0) + integer(0))
        self.expect("reply_without_command", "reply_without_command")

    def test_a_command_that_the_head_is_too_old_for(self):
        connection = self.connection()
        connection.say(">", text("20MSG_SLGetProtocolVersion"))
        connection.say("<", integer(2700))
        connection.say(">", text("240MSG_SLGETUPTIME"))
        connection.say("<", integer(5))
        self.expect("too_old")

    def test_a_capture_that_begins_in_the_middle_of_a_connection(self):
        connection = Connection(self.capture)
        connection.say(">", text("41MSG_SLGetLiveImage"))
        connection.say("<", bytes(range(1, 33)))
        connection.say(">", text("56MSG_SLGetGain"))
        connection.say("<", integer(30))
        self.assertEqual(self.expect("unknown_length").values("fringix.gain"), ["30"])

    def test_datagrams(self):
        capture = self.capture
        for port in (44332, 40000):
            capture.datagram(CLIENT, 50009, "192.168.10.255", port, b"01UDP_SLANNOUNCE")
        whole = b"S 1234 M 1 I 5 6 A 7 B 8 C 9 D 10 E -11"
        for answer in (whole, b"S 1234", whole + b" " * 300):
            capture.datagram(HEAD, 44332, CLIENT, 50009, answer)
        for datagram in (b"02UDP_GPIO", b"123456789" + b"02UDP_GPIO", b"02UDP", b"\0" + b"02UDP_GPIO"):
            capture.datagram(HEAD, 50010, CLIENT, 44331, datagram)
        capture.datagram(HEAD, 50010, CLIENT, 40001, b"12345678" + b"02UDP_GPIO")
        seen = self.expect("announcement", "datagram", "datagram", "datagram", "datagram")
        self.assertEqual(seen.values("fringix.announce.request"), ["01UDP_SLANNOUNCE"] * 2)
        self.assertEqual(seen.values("fringix.announce.serial"), ["1234"] * 3)
        self.assertEqual(seen.values("fringix.announce.info1") + seen.values("fringix.announce.info2"), ["5"] * 2 + ["6"] * 2)
        self.assertEqual(seen.values("fringix.announce.info7"), ["-11"] * 2)
        self.assertEqual(seen.values("fringix.trigger"), ["02UDP_GPIO", "1234567802UDP_GPIO"])

    def serials(self):
        return Seen(self.capture).values("fringix.announce.serial")

    def test_answers_come_from_any_port(self):
        self.capture.datagram(HEAD, 39999, CLIENT, 50009, b"S 1 M 1")  # nobody has asked yet
        self.capture.datagram(CLIENT, 50009, "192.168.10.255", 44332, b"01UDP_SLANNOUNCE")
        self.capture.datagram(HEAD, 39999, CLIENT, 50009, b"S 2 M 1")
        self.capture.datagram(HEAD, 39999, CLIENT, 50010, b"S 3 M 1")
        self.assertEqual(self.serials(), ["2"])

    def test_answers_without_a_question_are_recognised_by_their_beginning(self):
        answer = b"SERIAL %d MODEL 1 PROTOCOL 3300 2"
        longest = answer % 2 + b" " * (298 - len(answer % 2))
        for datagram in (answer % 1, longest, longest + b" ", b"SERIAL 4", b"SERIAL x MODEL 1", answer % 5 + b"\1", b"A " + answer % 6):
            self.capture.datagram(HEAD, 39999, CLIENT, 50009, datagram)
        self.assertEqual(self.serials(), ["1", "2"])

    def test_numbers_of_an_answer_are_read_as_clients_do(self):
        for answer in (b"S1234 5 M 1", b"S 2147483648 M 1", b"S 7M 1", b"S +8 M\0 1"):
            self.capture.datagram(HEAD, 44332, CLIENT, 50009, answer)
        seen = self.expect(*["announcement"] * 4)
        self.assertEqual(seen.values("fringix.announce.serial"), ["5", "7", "8"])
        self.assertEqual(seen.values("fringix.announce.model"), ["1", "1"])

    def test_a_block_whose_size_is_below_0(self):
        connection = self.connection()
        for size in (0, -1):
            connection.say(">", text("81MSG_SLReadDataFromFile") + integer(2))
            connection.say("<", integer(0))
            connection.say(">", b"a\0")
            connection.say("<", integer(size))
        self.assertEqual(self.expect("failed").values("fringix.size"), ["0", "-1"])

    def test_the_filters_of_the_manual_are_understood(self):
        manual = (ROOT / "tools/wireshark/README.md").read_text()
        filters = [one for row in re.findall(r"^\| (`.*?) \|", manual, re.M) for one in re.findall(r"`([^`]+)`", row)]
        self.assertIn("fringix && _ws.expert", filters)
        self.capture.datagram(HEAD, 50010, CLIENT, 44331, b"02UDP")
        self.capture.datagram(HEAD, 50010, CLIENT, 44331, b"02UDP_GPIO")
        self.assertEqual(len(tshark(self.capture, "-Y", "fringix && _ws.expert")), 1)
        self.assertEqual(len(tshark(self.capture, "-Y", " || ".join(f"({one})" for one in filters))), 2)

    def test_a_large_picture_is_one_line(self):
        connection = Connection(self.capture, longest=1460)
        connection.say("<", integer(3300))
        connection.say(">", integer(3300))
        for name, reply in zip(HANDSHAKE, ((1280, 1024, 0), (1280, 800, 8))):
            connection.say(">", text(name))
            connection.say("<", b"".join(map(integer, reply)))
        connection.say(">", text("41MSG_SLGetLiveImage"))
        connection.say("<", b"\1" * (1280 * 1024))
        connection.say(">", text("ByeBye="))
        seen = self.expect()
        self.assertEqual(len(seen.values("fringix.block")), 1)


if __name__ == "__main__":
    unittest.main()
