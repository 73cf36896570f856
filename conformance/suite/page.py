"""One static page: what was drawn, what was expected, and the difference."""
import base64
import html

import numpy as np

from . import png
from .compare import FAILED, NOT_ASKED, RIGHT, WRONG, by_area

STYLE = """
body { font: 14px/1.4 sans-serif; margin: 2em; color: #222; background: #fff; }
table { border-collapse: collapse; }
th, td { padding: .3em .8em; text-align: left; vertical-align: top; border-top: 1px solid #ccc; }
img { width: 96px; image-rendering: pixelated; background: #888; border: 1px solid #888; }
.number { text-align: right; }
.right { color: #060; } .wrong, .failed { color: #b00; font-weight: bold; } .not { color: #666; }
.small { color: #555; font-size: 12px; max-width: 42em; }
"""


def image(picture):
    data = base64.b64encode(png.encode(picture)).decode()
    return f'<img alt="" src="data:image/png;base64,{data}">'


def difference(picture, expected):
    """No difference is black, the smallest one already visible."""
    if picture.shape != expected.shape:
        return ""
    apart = np.abs(picture.astype(int) - expected)
    return image(np.where(apart > 0, np.minimum(apart * 4 + 60, 255), 0).astype(np.uint8))


def row(result):
    case, expected = result.case, result.case.expected_picture()
    drawn = result.picture
    tolerance = f"tolerance {case.tolerance}"
    if case.tolerance:
        tolerance += f" ({case.tolerance_reason})"
    cells = (f'<b id="{case.name}">{html.escape(case.name)}</b><div class="small">'
             f"{html.escape(case.reason)}<br>{html.escape(case.standard)}<br>"
             f"{html.escape(tolerance)}</div>",
             f'<span class="{result.verdict.lower()}">{result.verdict}</span>'
             f'<div class="small">{html.escape(result.words)}</div>',
             image(drawn) if drawn is not None else "", image(expected),
             difference(drawn, expected) if drawn is not None else "")
    return "<tr>" + "".join(f"<td>{cell}</td>" for cell in cells) + "</tr>"


def summary(results):
    verdicts = (RIGHT, WRONG, FAILED, NOT_ASKED)
    lines = ["<tr><th>area</th>" + "".join(f"<th>{verdict}</th>" for verdict in verdicts) + "</tr>"]
    for area, counts in by_area(results).items():
        lines.append(f"<tr><td>{area}</td>" + "".join(
            f'<td class="number">{counts[verdict]}</td>' for verdict in verdicts) + "</tr>")
    return "<table>" + "".join(lines) + "</table>"


def write(path, name, results):
    order = {WRONG: 0, FAILED: 0, RIGHT: 1, NOT_ASKED: 2}
    rows = "".join(row(result) for result in sorted(results, key=lambda r: order[r.verdict]))
    path.write_text(f"""<!doctype html>
<html lang="en"><head><meta charset="utf-8"><title>Display suite: {html.escape(name)}</title>
<style>{STYLE}</style></head><body><h1>Display suite: {html.escape(name)}</h1>
{summary(results)}
<h2>Cases</h2>
<table><tr><th>case</th><th>verdict</th><th>picture</th><th>expected</th><th>difference</th></tr>
{rows}</table></body></html>
""")
