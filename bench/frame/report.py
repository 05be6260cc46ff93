"""How the outcome is told: one table for people (it is Markdown too) and the same as JSON."""

import dataclasses
import json

from frame.figures import number

COLUMNS = ["figure", "ours", "floor or peer", "ratio", "goal", "reached"]


def _with_unit(value, unit):
    return f"{number(value)} {unit}".strip() if value is not None else "–"


def cells(figure):
    """A figure as the texts of its row."""
    if figure.verdict == "FAILED":
        return [figure.title, "–", "–", "–", figure.goal.text if figure.goal else "–", "FAILED"]
    peer = _with_unit(figure.peer, figure.unit)
    if figure.peer is not None:
        peer += f" ({figure.peer_name})"
    return [
        figure.title,
        _with_unit(figure.ours, figure.unit),
        peer,
        number(figure.ratio),
        figure.goal.text if figure.goal else "–",
        figure.verdict,
    ]


def table(figures):
    """The table, the reasons of failures and the notes below it, and one line that counts."""
    rows = [COLUMNS, *map(cells, figures)]
    widths = [max(map(len, column)) for column in zip(*rows)]
    lines = [
        "| " + " | ".join(text.ljust(width) for text, width in zip(row, widths)) + " |"
        for row in rows
    ]
    lines.insert(1, "|" + "|".join("-" * (width + 2) for width in widths) + "|")
    notes = [f"- {each.title}: {each.note}" for each in figures if each.note and not each.failure]
    failures = [f"FAILED: {each.title} ({each.measure}): {each.failure}" for each in figures if each.failure]
    count = {verdict: 0 for verdict in ("yes", "no", "–", "FAILED")}
    for each in figures:
        count[each.verdict] += 1
    verdict = f"{len(figures)} figures: {count['yes']} reached, {count['no']} missed, {count['FAILED']} failed"
    return "\n".join(
        [*lines, "", *notes, *([""] if notes else []), *failures, *([""] if failures else []), verdict]
    )


def as_json(figures, command, date, machine):
    """The whole run as a JSON text."""
    rows = []
    for figure in figures:
        row = dataclasses.asdict(figure)
        row["goal"] = figure.goal.text if figure.goal else None
        row["ratio"] = figure.ratio
        row["reached"] = figure.verdict
        rows.append(row)
    run = {"date": date, "command": command, "machine": machine, "figures": rows}
    return json.dumps(run, indent=2, ensure_ascii=False) + "\n"
