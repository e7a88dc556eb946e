"""What can go wrong: one exception class for each status code of the libraries."""

from __future__ import annotations

from typing import NoReturn


class Error(Exception):
    """A call of the library that failed.

    operation -- the C function that failed, ``"SLGetLiveImage"``
    code      -- its status, a negative number
    name      -- the status as ``fringix.h`` or ``scan.h`` spell it, ``"SLCONNECTION_ERROR"``
    head      -- the head's address, or None where there is none
    reason    -- what exactly was wrong, as far as the library told it, or ""
    next_step -- what to do about it
    """

    code = 0
    name = ""
    next_step = ""

    def __init__(self, operation: str, head: str | None = None, reason: str = "") -> None:
        self.operation, self.head, self.reason = operation, head, reason
        place = f" of head {head}" if head else ""
        status = f"{self.name} ({self.code})" if self.name else ""
        what = ": ".join(part for part in (status, reason) if part)
        super().__init__(f"{operation}{place}: {what}. {self.next_step}".rstrip())


class UnknownDeviceError(Error):
    """The session is closed, or was never open."""

    code, name = -2, "SLUNKNOWN_DEVICE_ID"
    next_step = "Open a new session."


class BadParameterError(Error, ValueError):
    """A value is out of range, or something required is missing."""

    code, name = -3, "SLBAD_PARAMETER"
    next_step = "Check the values of the call against its documentation."


class HeadSystemError(Error):
    """The head reported a failure, the session lost its connection before, or memory ran out."""

    code, name = -4, "SLSYSTEM_ERROR"
    next_step = "If it comes again, close the session and open a new one."


class HeadConnectionError(Error, ConnectionError):
    """Nothing answers, or the connection broke. The session is lost."""

    code, name = -10, "SLCONNECTION_ERROR"
    next_step = "Check that the head is on and reachable, then open a new session."


class HandshakeTimeoutError(Error, TimeoutError):
    """Something took the connection, and then did not greet like a head."""

    code, name = -11, "SLHANDSHAKE_TIMEOUT"
    next_step = "Check the address, and whether the head is still starting."


class UnknownSequenceError(Error):
    """The head does not know the sequence."""

    code, name = -20, "SLUNKNOWN_SEQUENCE_ID"
    next_step = "Allocate it again: sequences go when they are freed and when the head starts anew."


class MeasurementFailedError(Error):
    """The head reported that a measurement failed."""

    code, name = -30, "SLMEASUREMENT_FAILED"
    next_step = "Check that every picture of the sequence was uploaded, then measure again."


class VersionMismatchError(Error):
    """Versions do not fit together."""

    code, name = -31, "SLVERSION_MISMATCH"
    next_step = "Bring the head's system and the library to versions that go together."


class VersionTooOldError(Error):
    """The head's protocol version is below what the command needs."""

    code, name = -40, "SLVERSION_TOO_OLD"
    next_step = "Use a command that older heads know, or update the head's system."


class BadCalibrationError(Error, ValueError):
    """The calibration cannot be that of a head."""

    code, name = -50, "SLSCAN_BAD_CALIBRATION"
    next_step = "Calibrate the head again, or restore its calibration."


class BadPicturesError(Error, ValueError):
    """Pictures are missing, too many, of the wrong size, or show no patterns."""

    code, name = -51, "SLSCAN_BAD_PICTURES"
    next_step = "Check that the pictures are those of the plan, and that the head sees its own light."


class HeadRefusedError(Error):
    """The head answered with a number of its own, which is ``code``; the library hands it on."""

    next_step = "The head's documentation tells what the number means."

    def __init__(self, operation: str, code: int, head: str | None = None) -> None:
        self.code = code
        super().__init__(operation, head, f"the head refused with the number {code}")


class ForkedProcessError(Error, RuntimeError):
    """The process was forked from one that had used the library, whose connections it holds: it must not use the library itself."""

    next_step = "Start processes before the first use of fringix, or with multiprocessing.set_start_method('spawn')."

    def __init__(self, operation: str) -> None:
        super().__init__(operation, None, "this process was forked from one that had used the library")


def fail(operation: str, code: int, head: str | None = None, reason: str = "") -> NoReturn:
    """Raises the exception of a status code; of a code that is no status, HeadRefusedError."""
    for kind in Error.__subclasses__():
        if kind.code == code:
            raise kind(operation, head, reason)
    raise HeadRefusedError(operation, code, head)
