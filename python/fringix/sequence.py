"""Pattern sequences in a head's memory."""

from __future__ import annotations

import ctypes
import operator
from types import TracebackType
from typing import TYPE_CHECKING, Any

from . import _pixels
from ._pixels import Pixels

if TYPE_CHECKING:
    from .head import Head


class Sequence:
    """A numbered list of projector images in the head's memory, dark until they are filled. ``Head.sequence`` makes it.

    It is freed at the end of its ``with`` block, or by ``close``.

    Images are assigned by their index, from 0; the array says what is meant:

    =================  ==========================================================================
    uint8[w]           a line, the same in every row of the projector, 8 bits a pixel
    uint8[w, 3]        the same with red, green and blue
    uint8[h, w, 3]     a whole image
    uint8[h, w]        a whole grey image
    =================  ==========================================================================

    w and h are the projector's; ``column`` takes columns of h pixels in the same way.

    >>> with head.sequence(2) as seq:
    ...     seq[0] = np.full(head.projector.size.width, 255, np.uint8)
    ...     seq.gray(1, bit=3)
    ...     head.measure(seq)
    ...     [picture.shape for picture in head.pictures(seq)]
    [(1024, 1280), (1024, 1280)]
    """

    def __init__(self, head: Head, length: int) -> None:
        self._head, self._length = head, length
        self._is_open = True
        given = ctypes.c_uint32()
        try:
            head._call("SLSeqAlloc", length, ctypes.byref(given))
        except KeyboardInterrupt:
            if given.value and head.is_open:
                head._call("SLSeqFree", given.value)
            raise
        self.id = given.value

    def __len__(self) -> int:
        return self._length

    def __repr__(self) -> str:
        return f"<sequence {self.id} of {self._length} images on head {self._head.address}>"

    def _index(self, index: int) -> int:
        number = operator.index(index)
        if not -self._length <= number < self._length:
            raise IndexError(f"the sequence has {self._length} images, so there is no image {number}")
        return number % self._length

    def __setitem__(self, index: int, pixels: Pixels) -> None:
        if getattr(pixels, "ndim", 0) == 1 or getattr(pixels, "shape", ())[1:] == (3,):
            self.line(index, pixels)
        else:
            self.upload(index, pixels)

    def upload(self, index: int, image: Pixels) -> None:
        """Stores a whole image, uint8[h, w, 3] or the grey uint8[h, w], of the projector's size."""
        size = self._head.projector.size
        pixels = _pixels.projector_image("SLSeqPut", self._head.address, image, size, exactly=True)
        self._call("SLSeqPut", pixels, size.width, size.height, size.width * 3, self._index(index))

    def line(self, index: int, pixels: Pixels) -> None:
        """Has the head make an image of one row of pixels, uint8[w] or uint8[w, 3], the same in all rows."""
        self._make("SLSeqMakeFromLine", index, pixels, self._head.projector.size.width)

    def column(self, index: int, pixels: Pixels) -> None:
        """Has the head make an image of one column of pixels, uint8[h] or uint8[h, 3], the same in all columns."""
        self._make("SLSeqMakeFromCol", index, pixels, self._head.projector.size.height)

    def _make(self, operation: str, index: int, pixels: Any, length: int) -> None:
        row = _pixels.pixel_row(operation + "8", self._head.address, pixels, length)
        self._call(operation + ("8" if row.ndim == 1 else "24"), self._index(index), row, row.size)

    # The head defines the four numbers of these three; the names are those of the documented heads.

    def gray(self, index: int, bit: int, rows: int = False, inverted: int = False) -> None:
        """Has the head make the stripes of a bit, 0 (finest) to 23, of the Gray code of the columns, or of the rows."""
        self._call("SLSeqMakeGrayCode", self._index(index), bit, rows, inverted)

    def phase(self, first: int, steps: int, period: int = 0, rows: int = False) -> None:
        """Has the head make images ``first`` to ``first + steps - 1``: cosines of a period in pixels, 0 for one over the projector."""
        self._call("SLSeqMakePhase", self._index(first), steps, period, rows)

    def image(self, index: int, kind: int = 0, level: int = 255, side: int = 0) -> None:
        """Has the head make an image: kind 0 uniform, 1 a checkerboard, 2 and 3 ramps, up to a level, with squares of a side in pixels."""
        self._call("SLSeqMakeImage", self._index(index), kind, level, side)

    def show(self, index: int) -> None:
        """Shows an image on the projector, until something else is shown."""
        self._call("SLShowImageFromSeq", self._index(index))

    def _call(self, operation: str, *arguments: Any) -> None:
        self._head._call(operation, self.id, *arguments)

    def close(self) -> None:
        """Frees the sequence on the head. Does nothing when that was done, or when the session is closed."""
        if self._is_open and self._head.is_open:
            self._is_open = False
            self._call("SLSeqFree")

    def __enter__(self) -> Sequence:
        return self

    def __exit__(self, kind: type[BaseException] | None, value: BaseException | None, trace: TracebackType | None) -> None:
        if kind is None or self._head.is_connected:
            self.close()
