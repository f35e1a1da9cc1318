"""Draws panels of bars and lines as an SVG for light and dark mode."""

import math
from xml.sax.saxutils import escape

PANEL_WIDTH, PANEL_HEIGHT = 500, 370
MARGIN = 16
# Left edge of the bars, and the length of the longest. The text of a bar is to its right.
BAR_START, BAR_LENGTH, BAR_HEIGHT, BAR_STEP = 170, 140, 18, 30
# Left, top, right and bottom of the plot in a panel of lines.
PLOT = (72, 92, PANEL_WIDTH - 24, PANEL_HEIGHT - 30)

STYLE = """
  text { font: 13px system-ui, "Segoe UI", Helvetica, Arial, sans-serif; fill: #1f2328; }
  .title { font-weight: 600; font-size: 14px; }
  .note { fill: #59636e; font-size: 12px; }
  .ground { fill: #ffffff; }
  .grid { stroke: #d1d9e0; stroke-width: 1; }
  .bar { fill: #0969da; }
  .base { fill: #818b98; }
  .line { fill: none; stroke-width: 2; }
  .line.c1 { stroke-dasharray: 6 4; }
  .c0 { stroke: #0969da; } .c1 { stroke: #1a7f37; } .c2 { stroke: #bc4c00; }
  .dot { stroke-width: 5; stroke-linecap: round; }
  @media (prefers-color-scheme: dark) {
    text { fill: #f0f6fc; }
    .note { fill: #9198a1; }
    .ground { fill: #0d1117; }
    .grid { stroke: #3d444d; }
    .bar { fill: #4493f8; }
    .base { fill: #656c76; }
    .c0 { stroke: #4493f8; } .c1 { stroke: #3fb950; } .c2 { stroke: #db6d28; }
  }
"""


def text(x, y, words, kind="", anchor="start"):
    return '<text x="{:.1f}" y="{:.1f}" class="{}" text-anchor="{}">{}</text>'.format(
        x, y, kind, anchor, escape(words)
    )


def line(x1, y1, x2, y2, kind):
    return '<line x1="{:.1f}" y1="{:.1f}" x2="{:.1f}" y2="{:.1f}" class="{}"/>'.format(
        x1, y1, x2, y2, kind
    )


def bars(title, rows, bases=()):
    """Returns a panel of bars. A row is a name, a size and the text beside the bar. `bases`
    are the names of rows in another color."""
    longest = max(size for _, size, _ in rows)
    shapes = [text(0, 14, title, "title")]
    for index, (name, size, words) in enumerate(rows):
        y = 34 + index * BAR_STEP
        length = BAR_LENGTH * size / longest
        shapes.append(text(BAR_START - 8, y + 14, name, anchor="end"))
        shapes.append(
            '<rect x="{}" y="{}" width="{:.1f}" height="{}" rx="2" class="{}"/>'.format(
                BAR_START, y, length, BAR_HEIGHT, "base" if name in bases else "bar"
            )
        )
        shapes.append(text(BAR_START + length + 8, y + 14, words, "note"))
    return shapes


def decades(values):
    """Returns the exponents of the powers of ten that enclose the values."""
    return range(math.floor(math.log10(min(values))), math.ceil(math.log10(max(values))) + 1)


def lines(title, unit, series):
    """Returns a panel of lines with logarithmic axes. A line is a text and its points."""
    left, top, right, bottom = PLOT
    across = decades([x for _, points in series for x, _ in points])
    upward = decades([y for _, points in series for _, y in points])

    def place(value, exponents, start, end):
        part = (math.log10(value) - exponents[0]) / (exponents[-1] - exponents[0])
        return start + part * (end - start)

    shapes = [text(0, 14, title, "title")]
    for exponent in upward:
        y = place(10**exponent, upward, bottom, top)
        shapes.append(line(left, y, right, y, "grid"))
        shapes.append(text(left - 8, y + 4, "{:g} {}".format(10**exponent, unit), "note", "end"))
    for exponent in across:
        x = place(10**exponent, across, left, right)
        shapes.append(text(x, bottom + 18, "{:g}".format(10**exponent), "note", "middle"))
    for index, (words, points) in enumerate(series):
        kind = "c{}".format(index)
        # The legend, above the plot.
        y = 34 + index * 18
        shapes.append(line(left, y, left + 20, y, "line " + kind))
        shapes.append(text(left + 28, y + 4, words, "note"))
        places = [(place(x, across, left, right), place(v, upward, bottom, top)) for x, v in points]
        joined = " ".join("{:.1f},{:.1f}".format(x, v) for x, v in places)
        shapes.append('<polyline points="{}" class="line {}"/>'.format(joined, kind))
        shapes.extend(line(x, v, x, v, "dot " + kind) for x, v in places)
    return shapes


def page(panels):
    """Returns the SVG of all panels, two per row."""
    width = 2 * (PANEL_WIDTH + MARGIN) + MARGIN
    height = math.ceil(len(panels) / 2) * (PANEL_HEIGHT + MARGIN) + MARGIN
    parts = [
        '<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {0} {1}" width="{0}" height="{1}"'
        ' role="img" aria-label="Benchmarks">'.format(width, height),
        "<style>{}</style>".format(STYLE),
        '<rect width="{}" height="{}" rx="6" class="ground"/>'.format(width, height),
    ]
    for index, shapes in enumerate(panels):
        x = MARGIN + (index % 2) * (PANEL_WIDTH + MARGIN)
        y = MARGIN + (index // 2) * (PANEL_HEIGHT + MARGIN)
        parts.append('<g transform="translate({} {})">'.format(x, y))
        parts.extend(shapes)
        parts.append("</g>")
    parts.append("</svg>")
    return "\n".join(parts) + "\n"
