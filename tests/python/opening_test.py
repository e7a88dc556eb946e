"""Opening a session takes no longer than it may, and says what is in the way."""

from __future__ import annotations

import contextlib
import socket
import threading
import time
from typing import Callable, Iterator

import fringix
import pytest
from fringix import simulation

PORT = simulation.COMMAND_PORT


@contextlib.contextmanager
def server(serve: Callable[[socket.socket], object]) -> Iterator[str]:
    """Something else than a head: what it does with each client."""
    address = simulation.free_address()
    with socket.create_server((address, PORT)) as listener:

        def accept() -> None:
            with contextlib.suppress(OSError):
                while True:
                    client, _ = listener.accept()
                    serve(client)
                    clients.append(client)

        clients: list[socket.socket] = []
        threading.Thread(target=accept, daemon=True).start()
        yield address
        for client in clients:
            client.close()
        listener.shutdown(socket.SHUT_RDWR)


def test_nothing_listens() -> None:
    address = simulation.free_address()
    with pytest.raises(fringix.HeadConnectionError, match=f"{address}:{PORT} refuses the connection") as caught:
        fringix.open(address)
    assert (caught.value.code, caught.value.name, caught.value.head) == (-10, "SLCONNECTION_ERROR", address)
    assert isinstance(caught.value, ConnectionError) and "Check that the head is on" in caught.value.next_step


def test_it_does_not_greet() -> None:
    begin = time.monotonic()
    with server(lambda client: None) as address, pytest.raises(fringix.HandshakeTimeoutError, match="does not greet within 0.5 s"):
        fringix.open(address, timeout=0.5)
    assert 0.5 <= time.monotonic() - begin < 10


def test_it_closes_at_once() -> None:
    with server(lambda client: client.close()) as address, pytest.raises(fringix.HeadConnectionError, match="ends it at once|reset"):
        fringix.open(address)


def test_it_is_something_else() -> None:
    with server(lambda client: client.sendall(b"HTTP/1.0 400\r\n")) as address:
        with pytest.raises(fringix.HeadConnectionError, match="answers, but is no head"):
            fringix.open(address)


def test_nothing_takes_the_connection() -> None:
    """A full queue: the system drops what asks for a connection."""
    address = simulation.free_address()
    with socket.create_server((address, PORT), backlog=0), contextlib.ExitStack() as asking:
        for _ in range(4):
            client = asking.enter_context(socket.socket())
            client.setblocking(False)
            client.connect_ex((address, PORT))
        begin = time.monotonic()
        with pytest.raises(fringix.HeadConnectionError, match="nothing answers at .* within 0.5 s"):
            fringix.open(address, timeout=0.5)
        assert 0.5 <= time.monotonic() - begin < 10


def test_a_name_that_nobody_knows() -> None:
    with pytest.raises(fringix.HeadConnectionError, match="no IPv4 address of 'no such head'"):
        fringix.open("no such head", timeout=5)


def test_addresses_are_written_in_full() -> None:
    number = next(number for number in range(2, 255) if simulation.is_free(f"127.0.0.{number}"))
    with simulation.SimulatedHead(camera=(64, 48), projector=(40, 30), address=f"127.0.0.{number}") as simulated:
        with fringix.open(f"127.{number}") as head:
            assert head.address == simulated.address == f"127.0.0.{number}"


def test_a_host_name_is_looked_up(monkeypatch: pytest.MonkeyPatch) -> None:
    address = simulation.free_address()
    monkeypatch.setattr(socket, "gethostbyname", {"left-station": address}.__getitem__)
    with pytest.raises(fringix.HeadConnectionError, match=f"{address}:{PORT} refuses"):
        fringix.open("left-station")


def test_a_serial_number_is_searched_no_longer_than_it_may() -> None:
    with simulation.SimulatedHead(camera=(64, 48), projector=(40, 30), serial=77001, verbose=True) as simulated:
        with pytest.raises(fringix.HeadConnectionError, match="no head 77001 was open within 0.05 s"):
            fringix.open(serial=77001, timeout=0.05)
        with fringix.open(serial=77001, timeout=30) as head:
            assert head.address == simulated.address
        until = time.monotonic() + 30
        while simulated.output.count("ByeBye=") < 2 and time.monotonic() < until:
            time.sleep(0.02)
        assert simulated.output.count("ByeBye=") == 2
