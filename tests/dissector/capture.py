"""Captures, written byte by byte: IPv4 packets in a pcap file."""

import socket
import struct

HEAD, CLIENT = "192.168.10.2", "192.168.10.1"
ACK_PSH = 0x18


class Capture:
    def __init__(self):
        self.packets = []

    def write(self, path):
        with open(path, "wb") as file:
            file.write(struct.pack("<IHHiIII", 0xA1B2C3D4, 2, 4, 0, 0, 1 << 18, 101))  # 101: packets begin with IPv4
            for number, packet in enumerate(self.packets):
                file.write(struct.pack("<IIII", 1, 1000 * number, len(packet), len(packet)) + packet)

    def _add(self, protocol, source, target, payload):
        addresses = socket.inet_aton(source) + socket.inet_aton(target)
        length = 20 + len(payload)
        header = struct.pack(">BBHHHBBH", 0x45, 0, length, len(self.packets) + 1, 0x4000, 64, protocol, 0)
        self.packets.append(header + addresses + payload)

    def datagram(self, source, source_port, target, target_port, data):
        self._add(17, source, target, struct.pack(">HHHH", source_port, target_port, 8 + len(data), 0) + data)


class Connection:
    """The segments of one TCP connection, of at most so many bytes each."""

    def __init__(self, capture, head_port=44330, client_port=50123, longest=60000):
        self.capture = capture
        self.ports = {">": (client_port, head_port), "<": (head_port, client_port)}
        self.addresses = {">": (CLIENT, HEAD), "<": (HEAD, CLIENT)}
        self.sent = {">": 1000, "<": 2000}
        self.longest = longest

    def say(self, sender, data):
        for begin in range(0, len(data), self.longest):
            self._segment(sender, data[begin : begin + self.longest])

    def _segment(self, sender, data):
        other = "<" if sender == ">" else ">"
        header = struct.pack(
            ">HHIIBBHHH", *self.ports[sender], self.sent[sender], self.sent[other], 0x50, ACK_PSH, 0xFFFF, 0, 0
        )
        self.sent[sender] += len(data)
        self.capture._add(6, *self.addresses[sender], header + data)
