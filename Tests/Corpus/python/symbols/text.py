"""The module's text is of no symbol."""
import numpy as np
# The most,
# all in all.
LIMIT: int = 10
total = 0
type Pair = tuple[int, int]

# ! Shapes
@dataclass
class Point(Base):
    """A point.

    It has two coordinates.
    """

    x: int = 0
    tags = []
    if True:
        late = 1

    def __init__(self, x, *args, key=lambda v: v, **more):
        """Makes it."""
        self.x = x
        local = x
        for item in args:
            with open(item) as file:
                local = file

    @property
    def area(self): return self.x

    async def run(
        self,
        first: int = 1,
    ) -> None:
        # TODO: in a body
        def inner(a):
            '''Within.'''
            b = a
            call(
                keyword=b,
            )
            return [c for c in b]

        return inner

    class Meta:
        order = 1


def after(value):
    return value  # no part of what follows


if total:
    def conditional(): ...
    found = 1
def half(a,
