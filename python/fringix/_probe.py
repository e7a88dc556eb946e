"""Whether a head answers at an address, found out in bounded time: the library's own connecting blocks until the system gives up."""

from __future__ import annotations

import ipaddress
import socket
import threading
import time

from .errors import HandshakeTimeoutError, HeadConnectionError

COMMAND_PORT = 44330
_greeting_size = 4


def probe(address: str, timeout: float) -> None:
    """Connects, reads the greeting and closes; a head takes it for a client that left. Raises what ``SLDevAlloc`` would, and sooner."""
    until = time.monotonic() + timeout
    place = f"{address}:{COMMAND_PORT}"
    try:
        with socket.create_connection((address, COMMAND_PORT), timeout) as client:
            greeting = _read_greeting(client, until)
    except ConnectionRefusedError:
        raise _unconnected(address, f"{place} refuses the connection: no head serves it") from None
    except (socket.timeout, TimeoutError):
        raise _unconnected(address, f"nothing answers at {place} within {timeout:g} s") from None
    except OSError as error:
        raise _unconnected(address, f"{place} cannot be reached: {error.strerror or error}") from None
    if greeting is None:
        reason = f"{place} accepts the connection, but does not greet within {timeout:g} s"
        raise HandshakeTimeoutError("SLDevAlloc", address, reason)
    if not greeting:
        raise _unconnected(address, f"{place} accepts the connection and ends it at once")
    if len(greeting) != _greeting_size:
        raise _unconnected(address, f"{place} answers, but is no head")


def _unconnected(address: str, reason: str) -> HeadConnectionError:
    return HeadConnectionError("SLDevAlloc", address, reason)


def _read_greeting(client: socket.socket, until: float) -> bytes | None:
    """A head says four bytes, whichever, and waits then. What says more is something else. None: it is silent."""
    greeting = b""
    while len(greeting) < _greeting_size:
        client.settimeout(max(until - time.monotonic(), 0.001))
        try:
            received = client.recv(_greeting_size + 1 - len(greeting))
        except (socket.timeout, TimeoutError):
            return greeting or None
        greeting += received
        if not received:
            break
    return greeting


def resolve(host: str, timeout: float) -> str:
    """The dotted IPv4 address of a host name or address, written in full, as triggers need it."""
    try:
        return str(ipaddress.IPv4Address(host))
    except ValueError:
        pass
    found: list[str] = []

    def look_up() -> None:
        try:
            found.append(socket.gethostbyname(host))
        except (OSError, UnicodeError):
            pass

    looking = threading.Thread(target=look_up, name="fringix look-up", daemon=True)
    looking.start()
    looking.join(timeout)
    if not found:
        raise HeadConnectionError("SLDevAlloc", host, f"no IPv4 address of {host!r} is known within {timeout:g} s")
    return found[0]
