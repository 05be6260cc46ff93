"""Settings as the files that they are, and what a program says about them."""

import itertools

STATE = "var/lib/portmeld"
RUNTIME = "run/portmeld"

MARKS = itertools.count()


class Store:
    """Calling it makes the file of a key, its folders included."""

    def __init__(self, root):
        self._root = root
        (root / STATE / "db").mkdir(parents=True)
        (root / RUNTIME).mkdir(parents=True)

    def path(self, key):
        """The file of a key, whether it is there or not."""
        return self._root / (STATE if key.startswith("db/") else RUNTIME) / key

    def __call__(self, key, content):
        file = self.path(key)
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_bytes(content if isinstance(content, bytes) else content.encode())


def complaints(probe):
    """What the probe said on standard error until now."""
    mark = f"so far {next(MARKS)} "
    probe.call("log-bare", 5, mark)
    probe.wait_for_error_line(mark)
    lines = [line for line in probe.error_lines() if line.startswith("portmeld: ")]
    return [line for line in lines if "so far " not in line]
