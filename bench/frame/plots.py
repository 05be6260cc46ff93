"""The plots, as SVG texts: each figure in relation to its goal as a bar, and growth as curves with both
axes logarithmic. Written by hand: they are a few rectangles and lines, and need no library.
"""

import math
from xml.sax.saxutils import escape

from frame.figures import number

INK, FAINT, GOOD, BAD = "#222222", "#999999", "#2b7a4b", "#b3402e"
CURVE_COLOURS = ["#1f5fa8", "#b3402e", "#2b7a4b", "#7a4fa0"]


class _Drawing:
    """An SVG under construction; lengths are in pixels."""

    def __init__(self, width, height):
        self.width, self.height, self.parts = width, height, []

    def rectangle(self, x, y, width, height, colour):
        """A filled rectangle."""
        self.parts.append(
            f'<rect x="{x:.1f}" y="{y:.1f}" width="{width:.1f}" height="{height:.1f}" fill="{colour}"/>'
        )

    def line(self, points, colour, width=1, dashes=""):
        """A line through points."""
        path = " ".join(f"{x:.1f},{y:.1f}" for x, y in points)
        self.parts.append(
            f'<polyline points="{path}" fill="none" stroke="{colour}" stroke-width="{width}"'
            + (f' stroke-dasharray="{dashes}"/>' if dashes else "/>")
        )

    def dot(self, x, y, colour):
        """A point of a curve."""
        self.parts.append(f'<circle cx="{x:.1f}" cy="{y:.1f}" r="3" fill="{colour}"/>')

    def text(self, x, y, words, anchor="start", colour=INK):
        """A text whose anchor is at a point."""
        self.parts.append(
            f'<text x="{x:.1f}" y="{y:.1f}" text-anchor="{anchor}" fill="{colour}">{escape(words)}</text>'
        )

    def done(self, title):
        """The SVG's text."""
        return (
            f'<svg xmlns="http://www.w3.org/2000/svg" width="{self.width}" height="{self.height}"'
            f' viewBox="0 0 {self.width} {self.height}" role="img" font-family="sans-serif"'
            f' font-size="12">\n<title>{escape(title)}</title>\n'
            f'<rect width="{self.width}" height="{self.height}" fill="#ffffff"/>\n'
            + "\n".join(self.parts)
            + "\n</svg>\n"
        )


def goals(figures):
    """Every figure that was measured, as a share of what its goal allows: a bar that ends left of the
    line reaches its goal. Bars of more than twice the goal are cut off there."""
    shown = [each for each in figures if each.goal and each.verdict != "FAILED"]
    label, bar, row, top = 430, 260, 22, 40
    drawing = _Drawing(label + 2 * bar + 90, top + row * len(shown) + 30)
    drawing.text(12, 22, "each figure as a share of what its goal allows")
    for index, figure in enumerate(shown):
        share = figure.judged / figure.goal.most
        y = top + index * row
        colour = GOOD if figure.verdict == "yes" else BAD
        drawing.text(label - 8, y + 14, figure.title, "end")
        drawing.rectangle(label, y + 3, max(1.0, bar * min(share, 2.0)), row - 7, colour)
        words = f"{number(figure.judged)} of {figure.goal.text.lstrip('≤= ')}"
        # Never across the line.
        drawing.text(label + bar * max(1.0, min(share, 2.0)) + 6, y + 14, words, colour=INK)
    bottom = top + row * len(shown)
    drawing.line([(label + bar, top - 8), (label + bar, bottom)], INK, 1, "4 3")
    drawing.text(label + bar, bottom + 16, "the goal", "middle")
    return drawing.done("Figures in relation to their goals")


def _decades(values):
    """The decades that hold all values, as exponents."""
    return math.floor(math.log10(min(values))), math.ceil(math.log10(max(values)))


def growth(figure):
    """The curves of one figure."""
    left, top, width, height = 90, 40, 420, 300
    drawing = _Drawing(left + width + 190, top + height + 60)
    points = [point for curve in figure.curves.values() for point in curve]
    x_first, x_last = _decades([x for x, _ in points])
    y_first, y_last = _decades([y for _, y in points])

    def place(x, y):
        return (
            left + width * (math.log10(x) - x_first) / max(1, x_last - x_first),
            top + height * (1 - (math.log10(y) - y_first) / max(1, y_last - y_first)),
        )

    drawing.text(12, 22, figure.title)
    for decade in range(x_first, x_last + 1):
        x, _ = place(10.0**decade, 10.0**y_first)
        drawing.line([(x, top), (x, top + height)], "#e4e4e4")
        drawing.text(x, top + height + 18, f"{10**decade:,}", "middle", FAINT)
    for decade in range(y_first, y_last + 1):
        _, y = place(10.0**x_first, 10.0**decade)
        drawing.line([(left, y), (left + width, y)], "#e4e4e4")
        drawing.text(left - 8, y + 4, f"{10.0**decade:,.0f}", "end", FAINT)
    for colour, (name, curve) in zip(CURVE_COLOURS, figure.curves.items()):
        places = [place(x, y) for x, y in curve]
        drawing.line(places, colour, 2)
        for x, y in places:
            drawing.dot(x, y, colour)
        drawing.text(places[-1][0] + 8, places[-1][1] + 4, name, colour=colour)
    drawing.text(left + width / 2, top + height + 42, "number", "middle", FAINT)
    return drawing.done(figure.title)


def write(figures, folder):
    """Writes all plots into a folder, without those of an earlier run; returns their file names."""
    folder.mkdir(parents=True, exist_ok=True)
    for old in folder.glob("*.svg"):
        old.unlink()
    names = []
    if any(each.goal and each.verdict != "FAILED" for each in figures):
        (folder / "goals.svg").write_text(goals(figures))
        names.append("goals.svg")
    for figure in figures:
        if figure.curves:
            name = f"growth-{figure.measure}.svg"
            (folder / name).write_text(growth(figure))
            names.append(name)
    return names
