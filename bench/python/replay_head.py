"""A head that answers at once, with the same picture again and again: what a client measures with it is its own time.

    replay_head.py ADDRESS WIDTH HEIGHT
"""

from __future__ import annotations

import os
import socket
import struct
import sys

PORT = 44330
PROTOCOL = 3300


def integers(*values: int) -> bytes:
    return struct.pack(f"<{len(values)}I", *values)


def serve(client: socket.socket, width: int, height: int) -> None:
    picture = os.memfd_create("picture")
    os.write(picture, b"\x7f" * (width * height))
    answers = {
        b"40MSG_SLGetMaxImageSize": integers(width, height, 0),
        b"45MSG_SLGetProjDimension": integers(64, 64, 0),
        b"21MSG_SLGetSerial": integers(1001),
        b"20MSG_SLGetProtocolVersion": integers(PROTOCOL),
    }
    client.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
    client.sendall(integers(PROTOCOL))
    client.recv(4, socket.MSG_WAITALL)
    while request := client.recv(4096):  # a command is one send: six digits of its length, and its name
        name = request[6:]
        if name == b"41MSG_SLGetLiveImage":
            sent = 0
            while sent < width * height:
                sent += os.sendfile(client.fileno(), picture, sent, width * height - sent)
        else:
            client.sendall(answers.get(name, b""))


def main() -> None:
    address, width, height = sys.argv[1], int(sys.argv[2]), int(sys.argv[3])
    with socket.create_server((address, PORT)) as listener:
        print("ready", flush=True)
        while True:
            client, _ = listener.accept()
            with client:
                try:
                    serve(client, width, height)
                except OSError:  # it left
                    pass


if __name__ == "__main__":
    main()
