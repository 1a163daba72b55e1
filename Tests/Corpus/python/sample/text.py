#!/usr/bin/env python3
# A sample of the language; TODO: nothing is left out. MARK: here
"""Module text.

:param x: what it is
"""
from __future__ import annotations
import os.path as path, sys
from .. import (a, b as c)

LIMIT: int = 1_000
ratio = 2.5e-3 + 1j - .5 * 0xFF_FF // 0b1010 ** 0o17
type Pair[T: int = int] = tuple[T, T]


@functools.wraps(path, key=1)
class Shape(Base, metaclass=Meta):
    """What a shape is.

    >>> Shape(1).area()
    """

    count: int = 0
    names = ["a", 'b', b"c\x00", r"\d+"]

    def __init__(self, side: float = 1.0, /, *args: int, flag=None, **more) -> None:
        super().__init__()
        self.side = side  # FIXME later

    @property
    async def area(self):
        return await self.side ** 2

    class Inner:
        pass


def generic[T](values: list[T],
               key=lambda x, *y, z=1: x) -> dict[str, T]:
    global ratio
    if not values or key is None:
        raise ValueError(f"no {values!r:>{width}} of {LIMIT=} {{}}") from None
    for index, value in enumerate(values):
        yield from value[1:-1]
    else:
        del values[0]
    while (n := len(values)) >= 1:
        break
    return {k: v for k, v in values if k != "%s" % v}


match command.split():
    case ["go", direction] | [direction]:
        print(direction, end="")
    case Point(x=0) if True:
        assert x == 0, "bad\n"
    case _:
        pass
try:
    with open(path) as file, lock:
        value = file.read() @ other
except* (OSError, TypeError) as error:
    pass
finally:
    x = 1 \
        + 2
