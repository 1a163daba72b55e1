from __future__ import annotations
import os
import os.path, sys
import os.path as path, numpy as np  # NOTE: why
from x import y, z
from . import Point, LIMIT, Other as O, __version__
from .. import (a, b as c,
    d,  # more
    e)
from x import *
from x import p, \
    q
def f():
    import json; from re import match
    n = 1
import
import a as
from . import (g,
def h():
    pass
