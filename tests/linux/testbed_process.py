"""A umockdev testbed in a process of its own: it has to run with umockdev's library preloaded, which nothing
else of a test should. Takes one JSON list a line, ["operation", arguments...]; answers each with the monotonic
time at which it was begun, in nanoseconds.
"""

import json
import sys
import time

import gi

gi.require_version("UMockdev", "1.0")
from gi.repository import UMockdev  # noqa: E402 (the version comes first)

testbed = UMockdev.Testbed.new()
OPERATIONS = {
    "add": testbed.add_from_string,
    "set_attribute": testbed.set_attribute,
    "set_property": testbed.set_property,
    "uevent": testbed.uevent,
    "remove": testbed.remove_device,
}

print(json.dumps(testbed.get_root_dir()), flush=True)
for line in sys.stdin:
    operation, *arguments = json.loads(line)
    began = time.monotonic_ns()
    OPERATIONS[operation](*arguments)
    print(began, flush=True)
