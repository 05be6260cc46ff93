"""A terminal's screen in a few lines: enough of it to see what a person would see. Sequences that it
does not know are an error, so that nothing is shown that was not understood."""

import re
import unicodedata

SEQUENCE = re.compile(r"\x1b\[([0-9;]*)([A-Za-z])")


class SmallScreen:
    """Rows of characters, a cursor, and scrolling; lines are wrapped as xterm does."""

    def __init__(self, columns, rows):
        self.columns = columns
        self.rows = rows
        self.cells = [[" "] * columns for _ in range(rows)]
        self.row = self.column = 0
        self.gone = []  # rows that were scrolled out
        self.styles = set()

    def feed(self, text):
        """Shows what a program wrote."""
        at = 0
        while at < len(text):
            character = text[at]
            if character == "\x1b":
                sequence = SEQUENCE.match(text, at)
                assert sequence, f"unknown sequence {text[at:at + 10]!r}"
                self._obey(sequence[1], sequence[2])
                at = sequence.end()
                continue
            self._show(character)
            at += 1

    def lines(self):
        """The rows as texts."""
        return ["".join(row).rstrip() for row in self.cells]

    def _show(self, character):
        if character == "\r":
            self.column = 0
        elif character == "\n":
            self._down()
        else:
            assert unicodedata.category(character) != "Cc", f"control character {character!r}"
            if self.column == self.columns:
                self.column = 0
                self._down()
            self.cells[self.row][self.column] = character
            self.column += 1

    def _down(self):
        if self.row + 1 < self.rows:
            self.row += 1
            return
        self.gone.append("".join(self.cells.pop(0)).rstrip())
        self.cells.append([" "] * self.columns)

    def _obey(self, parameters, command):
        if command == "m":
            self.styles.add(parameters)
        elif command == "A":
            self.row = max(0, self.row - int(parameters or "1"))
        elif command == "H":
            assert parameters == ""
            self.row = self.column = 0
        elif command == "J":
            assert parameters in ("", "2")
            first = 0 if parameters == "2" else self.row
            if parameters == "":
                self.cells[self.row][self.column:] = [" "] * (self.columns - self.column)
                first = self.row + 1
            for row in range(first, self.rows):
                self.cells[row] = [" "] * self.columns
        else:
            raise AssertionError(f"unknown sequence {parameters!r} {command!r}")
