"""Draws bar charts as SVG pictures, which look right on light and on dark pages."""

from collections.abc import Sequence
from html import escape
from typing import NamedTuple

WIDTH, MARGIN = 720, 28
LABEL_WIDTH, VALUE_WIDTH = 184, 60  # beside the bars
BAR_HEIGHT, ROW_GAP = 15, 11
TITLE_HEIGHT, PANEL_GAP, LEGEND_HEIGHT = 30, 22, 24
FADED = 0.45  # opacity of the last kind of bars; those between follow in even steps

STYLE = """
  .paper { fill: #fbfaf7; stroke: #dcd8cf }
  .axis { stroke: #8a8577 }
  .bar { fill: #c9974a }
  .bar.own { fill: #2f6fb3 }
  text { font: 13px system-ui, "DejaVu Sans", "Segoe UI", Helvetica, Arial, sans-serif; fill: #1d2733 }
  .title { font-weight: 600; font-size: 14px }
  .note { fill: #4c5561 }
  @media (prefers-color-scheme: dark) {
    .paper { fill: #14181e; stroke: #2e353f }
    .axis { stroke: #8b94a1 }
    .bar.own { fill: #5b9ade }
    text { fill: #eef2f6 }
    .note { fill: #b4bdc9 }
  }
"""


class Row(NamedTuple):
    """Bars beside one label; those of the subject of the chart have a colour of their own."""
    label: str
    values: Sequence[float]
    own: bool = False


class Panel(NamedTuple):
    """Rows on one scale, longest bar first if the caller has sorted them. Every row has a value for
    each kind; the kinds are named below the rows if there are several."""
    title: str
    kinds: Sequence[str]
    rows: Sequence[Row]

    def height(self) -> int:
        rows = sum(BAR_HEIGHT * len(row.values) + ROW_GAP for row in self.rows)
        return TITLE_HEIGHT + rows + (LEGEND_HEIGHT if len(self.kinds) > 1 else 0)


def opacity(kind: int, kinds: int) -> str:
    return f"{1 - (1 - FADED) * kind / max(1, kinds - 1):.2f}"


def draw_panel(panel: Panel, top: int) -> list[str]:
    lines = [f'<text class="title" x="{MARGIN}" y="{top + 14}">{escape(panel.title)}</text>']
    left = MARGIN + LABEL_WIDTH
    longest = max(value for row in panel.rows for value in row.values)
    scale = (WIDTH - MARGIN - VALUE_WIDTH - left) / longest
    y = begin = top + TITLE_HEIGHT
    for row in panel.rows:
        middle = y + BAR_HEIGHT * len(row.values) / 2
        lines.append(f'<text x="{left - 10}" y="{middle + 4.5:g}" text-anchor="end">'
                     f"{escape(row.label)}</text>")
        for kind, value in enumerate(row.values):
            lines += [f'<rect class="{"bar own" if row.own else "bar"}" x="{left}" y="{y}"'
                      f' width="{value * scale:.1f}" height="{BAR_HEIGHT - 2}"'
                      f' opacity="{opacity(kind, len(panel.kinds))}"/>',
                      f'<text class="note" x="{left + value * scale + 7:.1f}"'
                      f' y="{y + BAR_HEIGHT - 3.5:g}">{value:.2f}</text>']
            y += BAR_HEIGHT
        y += ROW_GAP
    lines.append(f'<path class="axis" d="M{left - 0.5} {begin - 4}V{y - ROW_GAP + 2}"/>')
    if len(panel.kinds) > 1:
        x = left
        for kind, name in enumerate(panel.kinds):
            lines += [f'<rect class="bar own" x="{x}" y="{y + 2}" width="12" height="12"'
                      f' opacity="{opacity(kind, len(panel.kinds))}"/>',
                      f'<text class="note" x="{x + 18}" y="{y + 12.5:g}">{escape(name)}</text>']
            x += 50 + 7 * len(name)
    return lines


def bar_chart(title: str, panels: Sequence[Panel]) -> str:
    """The picture. The title is for those who cannot see it."""
    height = 2 * MARGIN + sum(panel.height() for panel in panels) + PANEL_GAP * (len(panels) - 1)
    lines = [
        f'<svg xmlns="http://www.w3.org/2000/svg" width="{WIDTH}" height="{height}"'
        f' viewBox="0 0 {WIDTH} {height}" role="img" aria-labelledby="title">',
        f'<title id="title">{escape(title)}</title>',
        f"<style>{STYLE}</style>",
        f'<rect class="paper" x="0.5" y="0.5" width="{WIDTH - 1}" height="{height - 1}" rx="10"/>',
    ]
    top = MARGIN
    for panel in panels:
        lines += draw_panel(panel, top)
        top += panel.height() + PANEL_GAP
    return "\n".join([*lines, "</svg>", ""])
