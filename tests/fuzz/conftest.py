"""Lets the tests of the harnesses use what ./dev fuzz is made of."""

import pathlib
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent.parent / "tools"))
